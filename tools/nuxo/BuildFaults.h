// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_BUILD_FAULTS_H
#define NUXO_TOOL_BUILD_FAULTS_H

#include "LibraryLog.h"
#include "Session.h"

#include <nuxo/query/GraphQueryManager.h>
#include <nuxo/tree/GraphConfigNode.h>

#include <string>
#include <vector>

namespace NuxoTool {

/// A graph that could not be built.
struct FailedBuild {
    NUXO::GraphQueryManager& manager; ///< that tried
    const NUXO::GraphConfigNode& descriptor;
    NUXO::GraphConfigNode& settings;              ///< the `settings` node
    const NUXO::GraphConfigNode* graph = nullptr; ///< what there is of it
    int status = 0;
    std::vector<LogLine> lines; ///< what the library said
};

/// What keeps a graph from being built, and where it stands.
struct BuildFault {
    struct Note {
        Location where;
        std::string text;
    };

    Location where;
    std::string text;        ///< what was found; what was expected
    std::vector<Note> notes; ///< what else belongs to it
};

/// Looks for the connection, difference, override or mode at fault by taking the steps of the library one by one.
BuildFault buildFaultOf(Session& session, const FailedBuild& failed);

/// Ends of connections that name no node of the descriptor. The library leaves such connections out.
///
/// @param graph  a built graph
std::vector<BuildFault> unknownEndsOf(Session& session, const NUXO::IGraphConfig& descriptor,
                                      const NUXO::GraphConfigNode& graph);

} // namespace NuxoTool

#endif
