// SPDX-License-Identifier: Apache-2.0
#include "check/rules/SettingsPeers.h"

#include "Suggestion.h"
#include "Text.h"
#include "check/rules/SettingsLinks.h"
#include "check/rules/SettingsPlaces.h"

#include <algorithm>

namespace NuxoTool {

namespace {

using Links = std::vector<SettingLink>;

std::vector<std::string> sinkNames(const DescriptorModel& descriptor)
{
    std::vector<std::string> names;
    for (const ModelNode& node : descriptor.nodes()) {
        if (node.kind == "sink") names.push_back(node.name);
    }
    return names;
}

// "" when the text names a virtual sink.
std::string wrongTarget(const DescriptorModel& descriptor, const std::string& peer)
{
    const std::vector<std::string> sinks = sinkNames(descriptor);
    const ModelNode* const node = descriptor.node(peer);
    if (node != nullptr && node->kind == "sink") return "";
    if (node != nullptr) return named(peer) + " is of type " + named(node->kind) + "; expected a sink";
    const size_t colon = peer.find(':');
    if (colon != std::string::npos && descriptor.node(peer.substr(0, colon)) != nullptr)
        return named(peer) + " is a port; a port can be led to another sink only, expected the name of one";
    return named(peer) + " is no sink of the descriptor; expected the name of one" + suggestionFor(peer, sinks);
}

// Why a peer has no effect, "" when it has one.
std::string uselessPeer(const SettingPlace& port, const Links& links)
{
    bool isConnected = false;
    for (const SettingLink& link : links) {
        const ModelEnd& source = link.connection->source;
        if (source.nodeName != port.node->name || source.portName != port.path) continue;
        isConnected = true;
        if (link.isRedirected) return "";
    }
    const std::string who = "the peer of " + port.title() + " changes nothing: ";
    if (!isConnected) return who + "no connection of the graph starts there; expected a port where one does";
    return who + "its connection is static or leads to a port; expected a port whose connection leads to a sink";
}

bool hasUnknownNodes(const DescriptorModel& descriptor, const ModelSetting& setting)
{
    const auto& children = setting.element->children;
    return std::any_of(children.begin(), children.end(), [&descriptor](const XmlElement* child) {
        return descriptor.node(child->name) == nullptr && child->attribute("type") == nullptr;
    });
}

// What is wrong with the peer of a port, "" for nothing.
std::string peerTrouble(const DescriptorModel& descriptor, const SettingPlace& place, const Links& links)
{
    const std::string& peer = place.written->value("peer");
    std::string trouble = wrongTarget(descriptor, peer);
    if (!trouble.empty() || place.setting->graph == nullptr) return trouble;
    trouble = uselessPeer(place, links);
    const bool isOff = place.written->integer("enabled") == 0;
    if (!trouble.empty() || isOff || place.setting->element->child(peer) != nullptr) return trouble;
    if (hasUnknownNodes(descriptor, *place.setting)) return ""; // one of them may be meant
    return named(peer) + " is not part of the setting, so " + place.title() + " leads nowhere; expected <" +
           printable(peer) + " .../> in the setting";
}

} // namespace

void visitBadPeers(const DescriptorModel& descriptor, const ModelSetting& setting, const SeePeer& see)
{
    const Links links = linksOf(setting);
    visitPlaces(descriptor, setting, [&](const SettingPlace& place) {
        if (!place.isPort() || !place.sets("peer")) return;
        const std::string trouble = peerTrouble(descriptor, place, links);
        if (!trouble.empty()) see(*place.written, trouble);
    });
}

bool hasBadPeers(const DescriptorModel& descriptor, const ModelSetting& setting)
{
    bool found = false;
    visitBadPeers(descriptor, setting, [&found](const XmlElement&, const std::string&) { found = true; });
    return found;
}

} // namespace NuxoTool
