// SPDX-License-Identifier: Apache-2.0
#include "check/rules/SettingsPeers.h"

#include "Text.h"

#include <algorithm>

namespace NuxoTool {

namespace {

std::vector<std::string> sinkNames(const DescriptorModel& descriptor)
{
    std::vector<std::string> names;
    for (const ModelNode& node : descriptor.nodes()) {
        if (node.kind == "sink") names.push_back(node.name);
    }
    return names;
}

// Why a peer has no effect, "" when it has one.
std::string uselessPeer(const SettingPlace& port, const SettingLinks& links)
{
    const std::vector<const SettingLink*>& own = links.from(port.fullPath());
    if (std::any_of(own.begin(), own.end(), [](const SettingLink* link) { return link->isRedirected; })) return "";
    const std::string who = "the peer of " + port.title() + " changes nothing: ";
    if (own.empty()) return who + "no connection of the graph starts there; expected a port where one does";
    return who + "its connection is static or leads to a port; expected a port whose connection leads to a sink";
}

bool hasUnknownNodes(const DescriptorModel& descriptor, const ModelSetting& setting)
{
    const auto& children = setting.element->children;
    return std::any_of(children.begin(), children.end(), [&descriptor](const XmlElement* child) {
        return descriptor.node(child->name) == nullptr && child->attribute("type") == nullptr;
    });
}

// Whether a connection gets to the sink that the peer names.
bool arrives(const SettingPlace& port, const SettingLinks& links)
{
    const std::vector<const SettingLink*>& own = links.from(port.fullPath());
    return std::any_of(own.begin(), own.end(), [](const SettingLink* link) {
        return link->isRedirected && link->state != SettingLink::State::SinkMissing;
    });
}

} // namespace

PeerCheck::PeerCheck(const DescriptorModel& descriptor) : mDescriptor(descriptor), mSinks(sinkNames(descriptor))
{
}

// "" when the text names a virtual sink.
std::string PeerCheck::wrongTarget(const std::string& peer)
{
    const ModelNode* const node = mDescriptor.node(peer);
    if (node != nullptr && node->kind == "sink") return "";
    if (node != nullptr) return named(peer) + " is of type " + named(node->kind) + "; expected a sink";
    const size_t colon = peer.find(':');
    if (colon != std::string::npos && mDescriptor.node(peer.substr(0, colon)) != nullptr)
        return named(peer) + " is a port; a port can be led to another sink only, expected the name of one";
    return named(peer) + " is no sink of the descriptor; expected the name of one" + mSinks.suggestionFor(peer);
}

// "" for nothing.
std::string PeerCheck::troubleOf(const SettingPlace& port, const SettingLinks& links)
{
    const std::string& peer = port.written->value("peer");
    std::string trouble = wrongTarget(peer);
    if (!trouble.empty() || port.setting->graph == nullptr) return trouble;
    trouble = uselessPeer(port, links);
    if (!trouble.empty() || arrives(port, links)) return trouble;
    if (mIsUnsure.first != port.setting) mIsUnsure = {port.setting, hasUnknownNodes(mDescriptor, *port.setting)};
    if (mIsUnsure.second) return ""; // one of them may be meant
    return named(peer) + " is not part of the setting, so " + port.title() + " leads nowhere; expected <" +
           printable(peer) + " .../> in the setting";
}

void PeerCheck::visitBad(const ModelSetting& setting, const SettingLinks& links, const See& see)
{
    visitPlaces(mDescriptor, setting, [&](const SettingPlace& place) {
        if (!place.isPort() || !place.sets("peer")) return;
        const std::string trouble = troubleOf(place, links);
        if (!trouble.empty()) see(*place.written, trouble);
    });
}

bool PeerCheck::hasBad(const ModelSetting& setting, const SettingLinks& links)
{
    bool found = false;
    visitBad(setting, links, [&found](const XmlElement&, const std::string&) { found = true; });
    return found;
}

} // namespace NuxoTool
