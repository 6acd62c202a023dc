// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_SETTINGS_STRAYS_H
#define NUXO_TOOL_SETTINGS_STRAYS_H

#include "model/DescriptorModel.h"
#include "model/SettingsModel.h"

#include <string>
#include <vector>

namespace NuxoTool {

/// Nodes of a setting that its graph does not have.
struct StrayNodes {
    std::vector<const XmlElement*> strays;
    /// Ids of the graphs that have all nodes of the setting. Empty when a single node is astray.
    std::vector<std::string> betterGraphs;
};

/// None where the descriptor has no such graph, or a faulty one.
StrayNodes strayNodesOf(const DescriptorModel& descriptor, const ModelSetting& setting);

/// Ids of the graphs that have all of these nodes.
std::vector<std::string> graphsWith(const DescriptorModel& descriptor, const std::vector<std::string>& nodes);

} // namespace NuxoTool

#endif
