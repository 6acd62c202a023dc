// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/analysis/GraphUtil.h>
#include <nuxo/tree/NodeReading.h>
#include <nuxo/tree/TypeNames.h>

namespace NUXO {

GraphUtil::GraphUtil() = default;

GraphUtil::~GraphUtil()
{
    deleteTevStructs();
}

int GraphUtil::init(unsigned int subgraphKey, const IGraphConfig* settings, GdfVersion version)
{
    const bool isKnownKey = subgraphKey == NUXO_KEY_STREAM_ID || subgraphKey == NUXO_KEY_EXEC_CTX_ID;
    if (settings == nullptr || !isKnownKey || version < GdfVersionKVA6) {
        NUXO_ERROR("invalid KVA version, subgraph type used or graph settings");
        return StatusBadArgument;
    }
    mGdfVersion = version;
    mPgKey = version == GdfVersionKVA7 ? NUXO_KEY_COMPUTE_BLOCK : NUXO_KEY_PROGRAM_GROUP;
    releaseGraph();
    mSubgraphKey = subgraphKey;
    mSettings = settings;
    const int status = analyze();
    if (status != StatusOk) clearMarks();
    return status;
}

int GraphUtil::analyze()
{
    const auto run = [this](int (GraphUtil::*step)(), const char* failureMessage) {
        const int status = unlessNoMemory<int>(StatusNoMemory, [this, step] { return (this->*step)(); });
        if (status != StatusOk) NUXO_ERROR("%s", failureMessage);
        return status;
    };
    int status = run(&GraphUtil::analyzeGraphSettings, "Graph settings analysis failed");
    if (status != StatusOk) return status;
    status = run(&GraphUtil::allocateTevData, "TEV data allocation failed");
    if (status != StatusOk) {
        deleteTevStructs();
        return status;
    }
    return run(&GraphUtil::populateTevData, "TEV structures population failed");
}

// A walk that breaks off leaves marks, which would keep the dumps from what they show.
void GraphUtil::clearMarks()
{
    for (const auto& entry : mGraphNodes) entry.second->visited = false;
    for (const auto& entry : mSubGraphs) {
        entry.second->visited = false;
        for (const auto& node : entry.second->imagingNodes) node.second->visited = false;
    }
}

// Subgraphs point into the outer graph, so they go first.
void GraphUtil::releaseGraph()
{
    deleteTevStructs();
    mSources.clear();
    mPgsBySubGraph.clear();
    mPgSubGraphs.clear();
    mSubGraphs.clear();
    mGraphNodes.clear();
    mConnections.clear();
    mConnectionEnds.clear();
    mConnectionsBySink.clear();
    mConnectionsByPort.clear();
    mFirstConnections.clear();
    mSourceHistory = {};
}

int GraphUtil::analyzeGraphSettings()
{
    NUXO_DEBUG("--------- GraphSettings analysis started !!---------------");
    NodeIterator nodes(mSettings);
    while (IGraphConfig* const node = nodes.iterateDescendants()) {
        const int status = addGraphNode(*node);
        if (status != StatusOk) return status;
        indexNode(*node);
    }
    const IGraphConfig* const graph = mSettings->getDescendant(NUXO_KEY_GRAPH);
    if (graph == nullptr) {
        NUXO_ERROR("Failed to locate graph node - Invalid settings");
        return StatusMissingObject;
    }
    NodeIterator connections(graph);
    while (IGraphConfig* const connection = connections.iterateByUid(NUXO_KEY_CONNECTION)) {
        static_cast<void>(addGraphConnection(*connection)); // never fails
        mConnections.push_back(connection);
    }
    static_cast<void>(removeUnusedNodes()); // never fails
    dumpOuterGraph();
    const int status = analyzeSubGraphs(mSubGraphs);
    if (status != StatusOk) {
        NUXO_ERROR("Analysis of subgraphs failed  %d ", status);
    } else {
        NUXO_DEBUG("--------- GraphSettings analysis succeeded !!---------------");
    }
    return status;
}

// Also those that are not fit for the outer graph, or go from there for lack of a sink: their ports count.
void GraphUtil::indexNode(IGraphConfig& node)
{
    const char* const groupType = mPgKey == NUXO_KEY_COMPUTE_BLOCK ? kTypeComputeBlock : kTypeProgramGroup;
    const std::string type = textOr(&node, NUXO_KEY_TYPE, "");
    int id = 0;
    if (type == kTypeSource) mSources.push_back(&node);
    if (type == groupType && fetch(node, mSubgraphKey, id)) mPgsBySubGraph[id].push_back(&node);
}

int GraphUtil::subgraphIdOf(const GraphNode& node) const
{
    return mSubgraphKey == NUXO_KEY_STREAM_ID ? node.streamId : node.execCtxId;
}

void GraphUtil::getAvailableSubgraphs(std::set<int>& ids)
{
    static_cast<void>(unlessNoMemory<bool>(false, [&] {
        for (const auto& entry : mGraphNodes) ids.insert(subgraphIdOf(*entry.second));
        return true;
    }));
}

int GraphUtil::getSourceResolutionHistory(qv_isp_zmt_resolution_info& history) const
{
    history = mSourceHistory;
    return StatusOk;
}

} // namespace NUXO
