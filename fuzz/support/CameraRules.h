// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_FUZZ_SUPPORT_CAMERA_RULES_H
#define NUXO_FUZZ_SUPPORT_CAMERA_RULES_H

#include <nuxo/simulation/ZmtTevSimUtils.h>
#include <nuxo/tree/GraphConfigNode.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Ask the questions of a client of built graphs, compare every answer with what the facts about the ports demand, and end the
// program as a finding where they differ.
namespace fuzzing {

/// What questions ask for, besides a node.
struct Request {
    uint32_t key = NUXO_KEY_EXEC_CTX_ID; ///< of an integer, mostly the execution context or the stream
    int value = 0;                       ///< of that integer, also an id
    uint32_t nodeType = NUXO_KEY_PROGRAM_GROUP;
    std::string text; ///< a name, a path, a format, a number
};

/// Asks everything about one node of a tree, as a client that knows the node's kind and as one that does not.
void checkAnswers(const NUXO::GraphConfigNode& node, const Request& request);

/// The same for null, and for a node that is not the library's but answers like this one.
void checkStrangers(NUXO::GraphConfigNode& node, const Request& request);

/// Changes copies of the tree by one of the functions that edit, at one node or as a whole.
enum class Edit { Format, Value, Overrides, Descriptor };
void checkEdit(Edit edit, const std::vector<NUXO::GraphConfigNode*>& nodes, size_t node, const Request& request);

// Parts of these. A port is any node or null.

void checkPort(const NUXO::IGraphConfig* port, const Request& request);
void checkFormat(const NUXO::IGraphConfig* port);
void checkGeometry(const NUXO::IGraphConfig* node);
void checkKernel(const NUXO::IGraphConfig* kernel);
void checkContexts(const NUXO::IGraphConfig* graph);
void checkSubgraph(const NUXO::IGraphConfig* graph, const Request& request);
void checkGroups(const NUXO::IGraphConfig* graph, const Request& request);
/// Sources, sinks, kernels.
void checkMembers(const NUXO::IGraphConfig* graph, const Request& request);
void checkSensorFrame(const NUXO::IGraphConfig* graph);
void checkPortFrame(const NUXO::IGraphConfig* graph, const std::string& path);
void checkSimulation(const NUXO::GraphConfigNode& node, const Request& request);
void checkSimulationOfNull();
void requireSame(const std::vector<NUXO::ZmtTevSimUtils::KernelInfo>& found,
                 const std::vector<NUXO::ZmtTevSimUtils::KernelInfo>& expected, const char* rule);
/// On copies: asking for the groups of a descriptor's graph applies its overrides.
void checkDescriptor(const NUXO::GraphConfigNode& root, int graphId);
void checkNumber(const std::string& text);

} // namespace fuzzing

#endif
