// SPDX-License-Identifier: Apache-2.0
#include "check/rules/SettingsLinks.h"

#include "check/rules/SettingsPlaces.h"

#include <algorithm>

namespace NuxoTool {

namespace {

// Children by their names: the first one of a name.
class Children {
public:
    const XmlElement* find(const XmlElement& parent, const std::string& name)
    {
        constexpr size_t few = 16;
        if (parent.children.size() <= few) return parent.child(name);
        const auto [known, isNew] = mByName.try_emplace(&parent);
        if (isNew) {
            for (const XmlElement* const child : parent.children) known->second.emplace(child->name, child);
        }
        const auto found = known->second.find(name);
        return found == known->second.end() ? nullptr : found->second;
    }

private:
    std::map<const XmlElement*, std::map<std::string_view, const XmlElement*>> mByName; // only looked up
};

SettingLink linkOf(const ModelConnection& connection, const XmlElement& setting, Children& children)
{
    SettingLink link;
    link.connection = &connection;
    link.sinkName = connection.sink.nodeName;
    const XmlElement* const node = children.find(setting, connection.source.nodeName);
    const bool namesPort = !connection.source.portName.empty();
    link.source = node == nullptr || !namesPort ? node : children.find(*node, connection.source.portName);
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
    } else if (children.find(setting, link.sinkName) == nullptr) {
        link.state = State::SinkMissing;
    }
    return link;
}

bool exists(const ModelEnd& end)
{
    return end.node != nullptr && end.node->isWhole() && (end.portName.empty() || end.port != nullptr);
}

} // namespace

std::string SettingLink::sourcePath() const
{
    const ModelEnd& end = connection->source;
    return end.portName.empty() ? end.nodeName : end.nodeName + ':' + end.portName;
}

SettingLinks::SettingLinks(const ModelSetting& setting, const std::vector<const ModelConnection*>& connections)
{
    Children children;
    for (const ModelConnection* const connection : connections) {
        mLinks.push_back(linkOf(*connection, *setting.element, children));
    }
    for (const SettingLink& link : mLinks) {
        const ModelConnection& connection = *link.connection;
        mBySource[link.sourcePath()].push_back(&link);
        mBySink[link.sinkName].push_back(&link);
        if (link.sinkName != connection.sink.nodeName) mBySink[connection.sink.nodeName].push_back(&link);
        mOnPath.insert({link.sinkName, connection.sink.nodeName, connection.source.nodeName});
        if (link.isRedirected) mPeers.insert(link.sinkName);
    }
}

const std::vector<const SettingLink*>& SettingLinks::at(const ByEnd& links, std::string_view end)
{
    static const std::vector<const SettingLink*> none;
    const auto found = links.find(end);
    return found == links.end() ? none : found->second;
}

const LinkTable::GraphIndex& LinkTable::indexOf(const ModelGraph& graph)
{
    const auto [found, isNew] = mIndexes.try_emplace(&graph);
    GraphIndex& index = found->second;
    if (!isNew) return index;
    index.isWhole = true;
    for (size_t i = 0; i < graph.connections.size(); ++i) {
        const ModelConnection& connection = graph.connections[i];
        index.isWhole = index.isWhole && exists(connection.source) && exists(connection.sink);
        if (connection.isStatic) {
            index.always.push_back(i);
        } else {
            index.ofNode[connection.source.nodeName].push_back(i);
            index.ofNode[connection.sink.nodeName].push_back(i);
        }
    }
    return index;
}

SettingLinks LinkTable::linksOf(const ModelSetting& setting)
{
    std::vector<const ModelConnection*> connections;
    if (setting.graph != nullptr) {
        const GraphIndex& index = indexOf(*setting.graph);
        std::set<size_t> chosen(index.always.begin(), index.always.end());
        for (const XmlElement* const node : setting.element->children) {
            const auto found = index.ofNode.find(node->name);
            if (found != index.ofNode.end()) chosen.insert(found->second.begin(), found->second.end());
        }
        for (const size_t i : chosen) connections.push_back(&setting.graph->connections[i]);
    }
    return SettingLinks(setting, connections);
}

bool LinkTable::namesAreKnown(const ModelSetting& setting, const SettingLinks& links)
{
    if (setting.graph == nullptr || !isWhole(*setting.graph)) return false;
    bool areKnown = true;
    visitPlaces(mDescriptor, setting, [&](const SettingPlace& place) {
        if (place.standing == SettingPlace::Standing::Unknown) areKnown = false;
        if (place.isNode() && place.node != nullptr && !links.isOnPath(place.node->name)) areKnown = false;
    });
    return areKnown;
}

} // namespace NuxoTool
