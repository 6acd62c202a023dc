// SPDX-License-Identifier: Apache-2.0
#include "check/rules/GraphInspection.h"

#include "LibraryFindings.h"
#include "PortView.h"
#include "TreeView.h"
#include "check/rules/GraphInspections.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/tree/NodeIterator.h>

#include <algorithm>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

GraphInspection::GraphInspection(const BuiltSetting& setting, LinkTable& links, Session& scratch)
    : mSetting(setting), mScratch(scratch), mGroups(programGroupsOf(*setting.built.graph)),
      mLinks(links.linksOf(setting.setting))
{
    NUXO::NodeIterator nodes(setting.built.graph);
    while (const IGraphConfig* const node = nodes.iterateDescendants()) {
        // What the setting says of a node that the graph does not use is copied too, but has no type.
        const std::string type = textOf(*node, NUXO_KEY_TYPE);
        const bool isNode = !type.empty() && type != "graph" && setting.descriptor.node(nameOf(*node)) != nullptr;
        if (isNode) mNodes.push_back(dynamic_cast<const GraphConfigNode*>(node));
    }
    for (size_t i = 0; i < setting.flow.nodes.size(); ++i) {
        const Flow::Node& node = setting.flow.nodes[i];
        if (node.kind != Flow::Kind::SourceStage) mInFlow.emplace(node.item, i);
    }
}

void GraphInspection::report(const char* rule, const IGraphConfig& item, uint32_t attribute, const std::string& text)
{
    report(rule, atValue(NuxoTool::placeOf(mScratch, {rule, &item, "", attribute})), text);
}

// What an override writes stands at its element, as far as the library knows: of that, the value.
Location GraphInspection::atValue(const Location& where)
{
    const ModelGraph* const declared = setting().setting.graph;
    const XmlDocument& document = setting().descriptor.document();
    if (declared == nullptr || where.file != document.path()) return where;
    if (mOverrides.empty()) {
        for (const XmlElement* const apply : declared->overrides) {
            const Location place = document.locate(*apply);
            mOverrides.emplace(std::pair(place.line, place.column), apply);
        }
    }
    const auto found = mOverrides.find({where.line, where.column});
    const XmlAttribute* const value = found == mOverrides.end() ? nullptr : found->second->attribute("value");
    return value == nullptr ? where : document.locate(*found->second, *value);
}

void GraphInspection::report(const char* rule, const Location& where, const std::string& text)
{
    mScratch.findings.error(rule, where, text);
    mFound.insert(rule);
}

void GraphInspection::note(const IGraphConfig& item, uint32_t attribute, const std::string& text)
{
    mScratch.findings.note(NuxoTool::placeOf(mScratch, {"", &item, "", attribute}), text);
}

std::optional<Location> GraphInspection::placeOf(const IGraphConfig& item, uint32_t attribute) const
{
    Location location;
    const int status =
        attribute == 0 ? mSetting.locator.locate(&item, location) : mSetting.locator.locate(&item, attribute, location);
    if (status != StatusOk) return std::nullopt;
    return location;
}

std::optional<Extent> GraphInspection::allowedAt(const IGraphConfig& item) const
{
    const auto found = mAllowed.find(&item);
    if (found == mAllowed.end()) return std::nullopt;
    return found->second;
}

std::optional<size_t> GraphInspection::inFlow(const IGraphConfig& item) const
{
    const auto found = mInFlow.find(&item);
    if (found == mInFlow.end()) return std::nullopt;
    return found->second;
}

const GraphConfigNode* GraphInspection::inSettings(const IGraphConfig& item) const
{
    const IGraphConfig* const holder = item.getAncestor();
    if (holder == nullptr) return &settings();
    const auto* const around = inSettings(*holder); // nodes of a graph lie a few levels deep
    if (around == nullptr) return nullptr;
    return dynamic_cast<const GraphConfigNode*>(around->getDescendantByString(nameOf(item)));
}

const IGraphConfig& GraphInspection::nearestInSettings(const IGraphConfig& item) const
{
    for (const IGraphConfig* around = &item; around != nullptr; around = around->getAncestor()) {
        if (const GraphConfigNode* const own = inSettings(*around)) return *own;
    }
    return settings();
}

bool GraphInspection::isSwitchedOff(const IGraphConfig& port) const
{
    return integerOf(port, NUXO_KEY_ENABLED, 1) == 0 && !placeOf(port, NUXO_KEY_ENABLED);
}

bool GraphInspection::isHalfConnected(const IGraphConfig& item) const
{
    const bool isNode = item.getAncestor() == &graph();
    return isNode ? isStarved(nameOf(item)) : isOpenEnded(endName(item));
}

// Whether connections lead to a node, none of which is made.
bool GraphInspection::isStarved(const std::string& node) const
{
    bool isBroken = false;
    for (const SettingLink* const link : mLinks.to(node)) {
        if (link->connection->source.nodeName == node) continue;
        if (link->sinkName == node && link->state == SettingLink::State::Made) return false;
        isBroken = true;
    }
    return isBroken;
}

// Whether connections start at a port, none of which is made for want of the other end.
bool GraphInspection::isOpenEnded(const std::string& port) const
{
    const std::vector<const SettingLink*>& links = mLinks.from(port);
    const auto hasState = [](SettingLink::State state) {
        return [state](const SettingLink* link) { return link->state == state; };
    };
    return std::none_of(links.begin(), links.end(), hasState(SettingLink::State::Made)) &&
           std::any_of(links.begin(), links.end(), hasState(SettingLink::State::SinkMissing));
}

bool GraphInspection::isLeftOpen() const
{
    const std::vector<SettingLink>& links = mLinks.all();
    const auto isEnd = [this](const SettingLink& link) { return isOpenEnded(link.sourcePath()); };
    if (std::any_of(links.begin(), links.end(), isEnd)) return true;
    const auto& elements = setting().setting.element->children;
    return std::any_of(elements.begin(), elements.end(), [this](const XmlElement* element) {
        return element->integer("enabled") != 0 && (isStarved(element->name) || isOutside(element->name));
    });
}

bool GraphInspection::isOutside(const std::string& node) const
{
    return setting().descriptor.node(node) != nullptr && !mLinks.isOnPath(node);
}

bool GraphInspection::isFedByGraph(const IGraphConfig& node) const
{
    const std::string name = nameOf(node);
    const std::vector<const SettingLink*>& links = mLinks.to(name);
    return std::any_of(links.begin(), links.end(),
                       [&name](const SettingLink* link) { return link->connection->source.nodeName != name; });
}

bool GraphInspection::isRedirected(const IGraphConfig& port) const
{
    const std::vector<const SettingLink*>& links = mLinks.from(endName(port));
    return std::any_of(links.begin(), links.end(), [](const SettingLink* link) {
        return link->isRedirected && link->sinkName != link->connection->sink.nodeName;
    });
}

void inspectGraph(GraphInspection& inspection)
{
    constexpr void (*steps[])(GraphInspection&) = {inspectPorts,   inspectFeeding,  inspectRouting,     inspectLimits,
                                                   inspectCapture, inspectChains,   inspectConnections, inspectNumbers,
                                                   inspectOptions, inspectContexts, inspectAnalysis};
    for (const auto step : steps) step(inspection);
}

} // namespace NuxoTool
