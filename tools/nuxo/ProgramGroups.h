// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_PROGRAM_GROUPS_H
#define NUXO_TOOL_PROGRAM_GROUPS_H

#include "Session.h"

#include <nuxo/isp/GdfVersion.h>
#include <nuxo/tree/GraphConfigNode.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace NuxoTool {

/// The program groups of a built graph; in generation 7 compute blocks take their place.
struct ProgramGroups {
    NUXO::GdfVersion version = NUXO::GdfVersionNone;
    uint32_t type = NUXO_KEY_PROGRAM_GROUP;
    std::vector<const NUXO::GraphConfigNode*> nodes; ///< in the order of the graph

    /// Whether the library analyses links between kernels; otherwise kernels run in the order of their ids.
    bool areLinked() const;
};

ProgramGroups programGroupsOf(const NUXO::GraphConfigNode& graph);

/// The links between the kernels of a program group.
std::vector<const NUXO::GraphConfigNode*> linksOf(const NUXO::GraphConfigNode& group);

/// The `stream_id` of a node.
std::optional<int> streamOf(const NUXO::IGraphConfig& node);

/// Reports a `--stream` that no node of the graph has. True without the option.
bool checkStream(Session& session, const NUXO::GraphConfigNode& graph);

/// Reports a `--group` that is none. True without the option.
bool checkGroup(Session& session, const ProgramGroups& groups);

} // namespace NuxoTool

#endif
