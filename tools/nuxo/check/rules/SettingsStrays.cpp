// SPDX-License-Identifier: Apache-2.0
#include "check/rules/SettingsStrays.h"

#include "check/rules/SettingsPlaces.h"

#include <algorithm>

namespace NuxoTool {

StrayCheck::StrayCheck(const DescriptorModel& descriptor)
    : mDescriptor(descriptor), mLinks(descriptor), mPeers(descriptor)
{
    for (const ModelGraph& graph : descriptor.graphs()) {
        for (const ModelNode* const node : graph.nodes()) mGraphs[node->name].insert(&graph);
    }
}

const std::set<const ModelGraph*>& StrayCheck::graphsOf(const std::string& node) const
{
    static const std::set<const ModelGraph*> none;
    const auto found = mGraphs.find(node);
    return found == mGraphs.end() ? none : found->second;
}

std::vector<int32_t> StrayCheck::graphsWith(const std::vector<std::string>& nodes) const
{
    std::vector<const std::set<const ModelGraph*>*> all;
    for (const std::string& node : nodes) all.push_back(&graphsOf(node));
    std::sort(all.begin(), all.end(), [](const auto* a, const auto* b) { return a->size() < b->size(); });
    std::vector<int32_t> ids;
    if (all.empty()) return {};
    for (const ModelGraph* const graph : *all.front()) {
        const bool hasAll =
            std::all_of(all.begin(), all.end(), [graph](const auto* graphs) { return graphs->count(graph) > 0; });
        if (hasAll && graph->id) ids.push_back(*graph->id);
    }
    std::sort(ids.begin(), ids.end());
    return ids;
}

StrayNodes StrayCheck::straysOf(const ModelSetting& setting)
{
    StrayNodes nodes;
    if (setting.graph == nullptr || !mLinks.isWhole(*setting.graph)) return nodes;
    std::vector<std::string> all; // that a graph must have
    const SettingLinks links = mLinks.linksOf(setting);
    const bool hasLostSinks = mPeers.hasBad(setting, links);
    visitPlaces(mDescriptor, setting, [&](const SettingPlace& place) {
        if (!place.isNode() || place.node == nullptr || (hasLostSinks && place.isSink())) return;
        if (!links.isOnPath(place.node->name)) nodes.strays.push_back(place.written);
        if (!links.isPeer(place.node->name)) all.push_back(place.node->name);
    });
    if (nodes.strays.size() > 1) nodes.betterGraphs = graphsWith(all);
    return nodes;
}

} // namespace NuxoTool
