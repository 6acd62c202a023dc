// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_GRAPH_INSPECTIONS_H
#define NUXO_TOOL_GRAPH_INSPECTIONS_H

namespace NuxoTool {

class GraphInspection;

/// Looks for all that is wrong with a graph that was built.
void inspectGraph(GraphInspection& inspection);

// The parts of it, in the order in which they run: each one passes over what those before it explained.

/// Peers that name nothing, and ports that construction switched off.
void inspectPorts(GraphInspection& inspection);
/// Nodes and sinks that no frame reaches.
void inspectFeeding(GraphInspection& inspection);
/// Switches that lead nowhere.
void inspectRouting(GraphInspection& inspection);
/// Sizes that overflow, and crops that add too much.
void inspectLimits(GraphInspection& inspection);
/// Sizes from the pixel array to the first program groups.
void inspectCapture(GraphInspection& inspection);
/// Sizes along the kernels of program groups.
void inspectChains(GraphInspection& inspection);
/// Sizes and formats of the two ends of each connection, and strides.
void inspectConnections(GraphInspection& inspection);
/// Numbers of kernels and groups that are not those of the descriptor.
void inspectNumbers(GraphInspection& inspection);
/// Options whose effect is lost.
void inspectOptions(GraphInspection& inspection);
/// Tuning modes of execution contexts.
void inspectContexts(GraphInspection& inspection);
/// What the library's analysis found and nothing before explains.
void inspectAnalysis(GraphInspection& inspection);

} // namespace NuxoTool

#endif
