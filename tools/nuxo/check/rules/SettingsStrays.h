// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_SETTINGS_STRAYS_H
#define NUXO_TOOL_SETTINGS_STRAYS_H

#include "check/rules/SettingsLinks.h"
#include "check/rules/SettingsPeers.h"
#include "model/DescriptorModel.h"
#include "model/SettingsModel.h"

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace NuxoTool {

/// Nodes of a setting that its graph does not have.
struct StrayNodes {
    std::vector<const XmlElement*> strays;
    /// Ids of the graphs that have all nodes of the setting. Empty when a single node is astray.
    std::vector<int32_t> betterGraphs;
};

/// Looks for such nodes in many settings.
class StrayCheck {
public:
    explicit StrayCheck(const DescriptorModel& descriptor);

    /// None where the descriptor has no such graph, or a faulty one.
    StrayNodes straysOf(const ModelSetting& setting);
    /// Ids of the graphs that have all of these nodes, in ascending order; none for no nodes.
    std::vector<int32_t> graphsWith(const std::vector<std::string>& nodes) const;

private:
    const std::set<const ModelGraph*>& graphsOf(const std::string& node) const;

    const DescriptorModel& mDescriptor;
    LinkTable mLinks;
    PeerCheck mPeers;
    std::map<std::string, std::set<const ModelGraph*>> mGraphs; ///< by their nodes
};

} // namespace NuxoTool

#endif
