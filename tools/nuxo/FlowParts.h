// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_FLOW_PARTS_H
#define NUXO_TOOL_FLOW_PARTS_H

#include "Flow.h"
#include "ProgramGroups.h"

#include <map>

namespace NuxoTool {

/// A flow in the making.
struct FlowDraft {
    Flow flow;
    std::map<const NUXO::IGraphConfig*, size_t> indexOf; ///< only looked up: its order depends on addresses

    size_t add(Flow::Node node);
    /// Links two nodes unless they are linked already.
    void link(size_t from, const Flow::Link& link);
};

/// A node for a part of a node of the graph: names, element, stream, state.
Flow::Node flowNode(Flow::Kind kind, const NUXO::IGraphConfig& item);

/// The inside of the program groups as the library analyses links between kernels.
///
/// @return the status of the analysis, whose log lines wait to be taken
int addLinkedGroups(FlowDraft& draft, const BuiltGraph& built, const ProgramGroups& groups);

/// The inside of the program groups whose kernels run in the order of their ids. Status as above.
int addOrderedGroups(FlowDraft& draft, const BuiltGraph& built, const ProgramGroups& groups);

/// Links ports that connections lead to from other groups, and what ports lead to outside of the groups.
void addConnections(FlowDraft& draft, const NUXO::GraphConfigNode& graph);

/// The stages of the sources ahead of what nothing else feeds.
void addSources(FlowDraft& draft);

} // namespace NuxoTool

#endif
