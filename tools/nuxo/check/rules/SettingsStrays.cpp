// SPDX-License-Identifier: Apache-2.0
#include "check/rules/SettingsStrays.h"

#include "check/rules/SettingsLinks.h"
#include "check/rules/SettingsPeers.h"
#include "check/rules/SettingsPlaces.h"

#include <algorithm>
#include <set>

namespace NuxoTool {

std::vector<std::string> graphsWith(const DescriptorModel& descriptor, const std::vector<std::string>& nodes)
{
    std::vector<std::string> graphs;
    for (const ModelGraph& graph : descriptor.graphs()) {
        std::set<std::string> names;
        for (const ModelNode* const node : graph.nodes()) names.insert(node->name);
        const bool hasAll = std::all_of(nodes.begin(), nodes.end(),
                                        [&names](const std::string& name) { return names.count(name) > 0; });
        if (hasAll && graph.id) graphs.push_back(std::to_string(*graph.id));
    }
    return graphs;
}

StrayNodes strayNodesOf(const DescriptorModel& descriptor, const ModelSetting& setting)
{
    StrayNodes nodes;
    if (setting.graph == nullptr || !isWhole(*setting.graph)) return nodes;
    std::vector<std::string> all; // that a graph must have
    const std::vector<SettingLink> links = linksOf(setting);
    const bool hasLostSinks = hasBadPeers(descriptor, setting);
    visitPlaces(descriptor, setting, [&](const SettingPlace& place) {
        if (!place.isNode() || place.node == nullptr || (hasLostSinks && place.isSink())) return;
        if (!isOnPath(links, place.node->name)) nodes.strays.push_back(place.written);
        const bool isPeer = std::any_of(links.begin(), links.end(), [&](const SettingLink& link) {
            return link.isRedirected && link.sinkName == place.node->name;
        });
        if (!isPeer) all.push_back(place.node->name);
    });
    if (nodes.strays.size() > 1) nodes.betterGraphs = graphsWith(descriptor, all);
    return nodes;
}

} // namespace NuxoTool
