// SPDX-License-Identifier: Apache-2.0
#include "check/rules/SettingsLinks.h"

#include "check/rules/SettingsPlaces.h"

#include <algorithm>

namespace NuxoTool {

namespace {

SettingLink linkOf(const ModelConnection& connection, const XmlElement& setting)
{
    SettingLink link;
    link.connection = &connection;
    link.sinkName = connection.sink.nodeName;
    const XmlElement* const node = setting.child(connection.source.nodeName);
    const bool namesPort = !connection.source.portName.empty();
    link.source = node == nullptr || !namesPort ? node : node->child(connection.source.portName);
    if (connection.isStatic) return link;

    using State = SettingLink::State;
    if (link.source == nullptr) {
        link.state = node == nullptr ? State::SourceMissing : State::PortMissing;
        return link;
    }
    const XmlAttribute* const peer = link.source->attribute("peer");
    if (peer != nullptr && connection.sink.portName.empty()) {
        link.sinkName = peer->value;
        link.isRedirected = true;
    }
    if (link.source->integer("enabled") == 0) {
        link.state = State::Disabled;
    } else if (setting.child(link.sinkName) == nullptr) {
        link.state = State::SinkMissing;
    }
    return link;
}

} // namespace

std::vector<SettingLink> linksOf(const ModelSetting& setting)
{
    std::vector<SettingLink> links;
    if (setting.graph == nullptr) return links;
    for (const ModelConnection& connection : setting.graph->connections) {
        links.push_back(linkOf(connection, *setting.element));
    }
    return links;
}

bool isOnPath(const std::vector<SettingLink>& links, std::string_view node)
{
    return std::any_of(links.begin(), links.end(), [node](const SettingLink& link) {
        return link.sinkName == node || link.connection->sink.nodeName == node ||
               link.connection->source.nodeName == node;
    });
}

bool isWhole(const ModelGraph& graph)
{
    const auto exists = [](const ModelEnd& end) {
        return end.node != nullptr && end.node->isWhole() && (end.portName.empty() || end.port != nullptr);
    };
    return std::all_of(graph.connections.begin(), graph.connections.end(),
                       [&exists](const ModelConnection& each) { return exists(each.source) && exists(each.sink); });
}

bool namesAreKnown(const DescriptorModel& descriptor, const ModelSetting& setting)
{
    if (setting.graph == nullptr || !isWhole(*setting.graph)) return false;
    const std::vector<SettingLink> links = linksOf(setting);
    bool areKnown = true;
    visitPlaces(descriptor, setting, [&](const SettingPlace& place) {
        if (place.standing == SettingPlace::Standing::Unknown) areKnown = false;
        if (place.isNode() && place.node != nullptr && !isOnPath(links, place.node->name)) areKnown = false;
    });
    return areKnown;
}

} // namespace NuxoTool
