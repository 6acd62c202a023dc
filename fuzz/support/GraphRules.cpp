// SPDX-License-Identifier: Apache-2.0
#include "support/CameraRules.h"
#include "support/Fuzzing.h"
#include "support/PortFacts.h"
#include "support/TreeChecks.h"
#include "support/TreeCopy.h"

#include <nuxo/nuxo.h>

#include <algorithm>
#include <set>

namespace fuzzing {

namespace {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;
using NUXO::ZmtTevSimUtils;
using KernelInfos = std::vector<ZmtTevSimUtils::KernelInfo>;

constexpr size_t kMostTried = 4;

bool isGraph(const GraphConfigNode& graphs, const IGraphConfig* node)
{
    const std::vector<IGraphConfig*> typed = childrenOfType(&graphs, NUXO_KEY_GRAPH);
    return node->getUid() == NUXO_KEY_GRAPH || std::find(typed.begin(), typed.end(), node) != typed.end();
}

// The graph with the id; null with a status when there is none, or one without id before it.
GraphConfigNode* graphWithId(const GraphConfigNode& graphs, int id, int& status)
{
    NUXO::NodeIterator cursor(&graphs);
    while (IGraphConfig* const node = cursor.iterateDescendants()) {
        if (!isGraph(graphs, node)) continue;
        const std::optional<int> graphId = integerOf(node, NUXO_KEY_ID);
        status = graphId ? StatusOk : StatusBadState;
        if (!graphId) return nullptr;
        if (*graphId == id) return dynamic_cast<GraphConfigNode*>(node);
    }
    status = StatusNotFound;
    return nullptr;
}

void addGroupAt(const IGraphConfig& nodes, const std::string& end, std::vector<IGraphConfig*>& groups)
{
    const IGraphConfig* const item = nodes.getDescendantByString(end);
    const IGraphConfig* const group = ancestorOf(item);
    if (textOf(group, NUXO_KEY_TYPE) != "program_group") return;
    if (std::find(groups.begin(), groups.end(), group) == groups.end()) {
        groups.push_back(const_cast<IGraphConfig*>(group));
    }
}

int expectGroups(const GraphConfigNode& root, int graphId, std::vector<IGraphConfig*>& groups)
{
    auto* const graphs = dynamic_cast<GraphConfigNode*>(root.getDescendant(NUXO_KEY_GRAPHS));
    auto* const nodes = dynamic_cast<GraphConfigNode*>(root.getDescendant(NUXO_KEY_NODES));
    if (graphs == nullptr || nodes == nullptr) return StatusBadArgument;
    int status = StatusOk;
    GraphConfigNode* const graph = graphWithId(*graphs, graphId, status);
    if (status == StatusOk) status = applyOverrides(*graph, *nodes);
    if (status != StatusOk) return status;
    NUXO::NodeIterator cursor(graph);
    while (const IGraphConfig* const connection = cursor.iterateByUid(NUXO_KEY_CONNECTION)) {
        std::string source;
        std::string sink;
        status = connection->getValue(NUXO_KEY_SOURCE, source);
        if (status == StatusOk) status = connection->getValue(NUXO_KEY_SINK, sink);
        if (status != StatusOk) return status;
        addGroupAt(*nodes, source, groups);
        addGroupAt(*nodes, sink, groups);
    }
    return StatusOk;
}

KernelInfos kernelsOf(const std::vector<IGraphConfig*>& groups, int stream)
{
    KernelInfos kernels = {{"before", 1}};
    for (const IGraphConfig* const group : groups) {
        if (integerOf(group, NUXO_KEY_STREAM_ID) != stream) continue;
        static_cast<void>(ZmtTevSimUtils::getKernelInfoList(*group, kernels)); // what is readable counts
    }
    return kernels;
}

void checkGroupsOfGraph(const GraphConfigNode& original, int graphId)
{
    const TreeCopy expected(original);
    std::vector<IGraphConfig*> expectedGroups;
    const int expectedStatus = expectGroups(expected.root(), graphId, expectedGroups);

    const TreeCopy copy(original);
    std::set<IGraphConfig*> groups;
    require(ZmtTevSimUtils::getPgsInGraph(&copy.node(copy.size() - 1), graphId, groups) == expectedStatus,
            "the groups of a graph have a status that tells what is missing");
    checkSame(expected.root(), copy.root());
    copy.check();
    std::set<size_t> numbers;
    std::set<size_t> expectedNumbers;
    for (const IGraphConfig* const group : groups) numbers.insert(copy.numberOf(group));
    for (const IGraphConfig* const group : expectedGroups) expectedNumbers.insert(expected.numberOf(group));
    require(expectedStatus != StatusOk || numbers == expectedNumbers, "the groups of a graph are what it connects");

    const int stream = expectedGroups.empty() ? 0 : integerOf(expectedGroups.front(), NUXO_KEY_STREAM_ID).value_or(0);
    const TreeCopy forKernels(original);
    const KernelInfos expectedKernels =
        kernelsOf(expectedStatus == StatusOk ? expectedGroups : std::vector<IGraphConfig*>(), stream);
    KernelInfos kernels = {{"before", 1}};
    require(ZmtTevSimUtils::getKernelList(&forKernels.root(), graphId, stream, kernels) == expectedStatus,
            "the kernels of a graph have the status of its groups");
    requireSame(kernels, expectedKernels, "kernels come in the order of the connections, wherever they are in memory");
}

} // namespace

void checkDescriptor(const GraphConfigNode& original, int graphId)
{
    std::set<int> ids = {graphId};
    if (const IGraphConfig* const graphs = original.getDescendant(NUXO_KEY_GRAPHS)) {
        NUXO::NodeIterator cursor(graphs);
        while (const IGraphConfig* const graph = cursor.iterateDescendants()) {
            if (ids.size() < kMostTried) ids.insert(integerOf(graph, NUXO_KEY_ID).value_or(graphId));
        }
    }
    for (const int id : ids) checkGroupsOfGraph(original, id);
}

} // namespace fuzzing
