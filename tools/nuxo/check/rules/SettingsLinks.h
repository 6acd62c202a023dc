// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_SETTINGS_LINKS_H
#define NUXO_TOOL_SETTINGS_LINKS_H

#include "model/DescriptorModel.h"
#include "model/SettingsModel.h"

#include <string>
#include <string_view>
#include <vector>

namespace NuxoTool {

/// What becomes of a connection of the graph in one setting.
struct SettingLink {
    enum class State {
        Made,
        SourceMissing, ///< the setting lacks the node that it comes from
        PortMissing,   ///< the setting has that node, but not its port
        Disabled,      ///< the setting switches the port off
        SinkMissing    ///< the setting lacks the node where it leads
    };

    const ModelConnection* connection = nullptr;
    State state = State::Made;
    const XmlElement* source = nullptr; ///< the port, or the node where no port is named; null when it is missing
    std::string sinkName;               ///< node where it leads, which may be the `peer` of the port
    bool isRedirected = false;
};

/// All connections of the setting's graph, in its order; none when there is no such graph.
std::vector<SettingLink> linksOf(const ModelSetting& setting);

/// Whether the connections lead to a node or come from it.
bool isOnPath(const std::vector<SettingLink>& links, std::string_view node);

/// Whether all ends of a graph's connections exist.
bool isWhole(const ModelGraph& graph);

/// Whether each element of the setting names something that the descriptor has, in the setting's graph, which is whole.
/// What is said of connections makes no sense otherwise.
bool namesAreKnown(const DescriptorModel& descriptor, const ModelSetting& setting);

} // namespace NuxoTool

#endif
