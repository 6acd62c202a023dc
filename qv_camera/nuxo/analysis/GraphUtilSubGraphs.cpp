// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/analysis/AnalysisNames.h>
#include <nuxo/analysis/GraphUtil.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/camera/PortReading.h>
#include <nuxo/tree/NodeReading.h>

#include <set>

namespace NUXO {

int GraphUtil::analyzeSubGraphs(SubGraphs& subGraphs)
{
    subGraphs.clear();
    std::map<int, std::vector<GraphNode*>> nodesById;
    for (const auto& entry : mGraphNodes) nodesById[subgraphIdOf(*entry.second)].push_back(entry.second.get());
    NUXO_DEBUG("Found %lu subgraphs of type %s", nodesById.size(), ItemUID::key2str(mSubgraphKey));
    for (const auto& [id, nodes] : nodesById) {
        const int status = analyzeSubGraph(id, nodes, subGraphs);
        if (status != StatusOk) return status;
    }
    dumpSubGraphInfos();
    const int status = collectSubgraphConnections();
    if (status != StatusOk) NUXO_ERROR("Failed to add graph connections to imaging graph info from");
    return status;
}

int GraphUtil::analyzeSubGraph(int id, const std::vector<GraphNode*>& nodes, SubGraphs& subGraphs)
{
    const std::shared_ptr<SubGraphInfo> sg = makeNode<SubGraphInfo>();
    if (sg == nullptr) {
        NUXO_ERROR("Failed to allocate subgraph info");
        return StatusNoMemory;
    }
    sg->type = mSubgraphKey;
    sg->id = id;
    for (GraphNode* const node : nodes) {
        const int status = collectNode(*sg, *node);
        if (status != StatusOk) return status;
    }
    static_cast<void>( // a subgraph may have no outputs
        outputPortsOf({mSubgraphKey, id, mPgKey}, mPgsBySubGraph[id], mSources, sg->outputPorts));
    const int status = collectInnerGraph(*sg);
    if (status != StatusOk) return status;
    subGraphs[id] = sg;
    for (const IGraphConfig* const pg : sg->pgs) mPgSubGraphs[pg] = sg.get();
    return StatusOk;
}

int GraphUtil::collectNode(SubGraphInfo& sg, GraphNode& node)
{
    sg.nodes.push_back(&node);
    if (node.type == mPgKey) {
        sg.pgs.push_back(node.node);
        sg.streamId = node.streamId;
    }
    const int status = getCrossSgInPorts(node, sg.inputPorts);
    if (status == StatusOk) static_cast<void>(fetch(*node.node, NUXO_KEY_TUNING_MODE, sg.tuningMode));
    return status;
}

int GraphUtil::collectInnerGraph(SubGraphInfo& sg)
{
    sg.kernelCount = 0;
    int status = StatusOk;
    for (IGraphConfig* const pg : sg.pgs) {
        if (pg == nullptr) return StatusMissingObject;
        status = collectPgInnerGraph(sg, *pg);
        if (status == StatusOk) continue;
        NUXO_ERROR("Failed to collect imaging graph info from %s", GraphCameraUtil::print(pg).c_str());
        return status;
    }
    // Before groups are linked with each other: only what hangs loose inside a group counts.
    status = disableDisconnectedKernels(sg);
    if (status != StatusOk) {
        NUXO_ERROR("Failed to disable disconnected filters");
        return status;
    }
    if (sg.inputPorts.empty()) status = collectSourceInnerGraph(sg);
    if (status != StatusOk) {
        NUXO_ERROR("Failed to collect imaging graph info from source");
        return status;
    }
    status = collectInterPgConnections(sg);
    if (status != StatusOk) NUXO_ERROR("Failed to add graph connections to imaging graph info %d", sg.id);
    return status;
}

int GraphUtil::getCrossSgInPorts(GraphNode& node, std::vector<IGraphConfig*>& inPorts)
{
    std::vector<const GraphNode*> parents;
    for (const auto& link : node.parents) {
        const GraphNode& parent = static_cast<const GraphNode&>(*link.first);
        if (subgraphIdOf(parent) == subgraphIdOf(node)) continue;
        NUXO_DEBUG("found parent %s in different subgraph id %d", parent.name.c_str(), parent.streamId);
        parents.push_back(&parent);
    }
    std::set<const IGraphConfig*> known; // only looked up
    for (const GraphNode* const parent : parents) {
        IGraphConfig* port = nullptr;
        const int status = findCrossSgInPort(node, *parent, port);
        if (status != StatusOk) return status;
        if (port == nullptr || !known.insert(port).second) continue;
        inPorts.push_back(port);
        NUXO_DEBUG("found input port %s", GraphCameraUtil::print(port).c_str());
    }
    return StatusOk;
}

// The port of the first connection between both; none for a sink that is node and port in one.
int GraphUtil::findCrossSgInPort(const GraphNode& node, const GraphNode& parent, IGraphConfig*& port) const
{
    const auto connection = mFirstConnections.find({parent.name, node.name});
    if (connection == mFirstConnections.end()) return StatusOk;
    const std::string portName = portPart(mConnectionEnds[connection->second].sink);
    if (portName.empty() && node.type == NUXO_KEY_SINK) return StatusOk;
    port = portName.empty() ? nullptr : descendantAt(*node.node, portName);
    if (port != nullptr) return StatusOk;
    NUXO_ERROR("Could not find input port %s - impossible", portName.c_str());
    return StatusMissingObject;
}

int GraphUtil::collectSubgraphConnections()
{
    NUXO_DEBUG("Looking for connections between subgraphs");
    Visitor visitor = [this](BaseGraphNode* node) { return subgraphConnectionVisitor(node); };
    int result = StatusOk;
    for (const auto& entry : mGraphNodes) {
        if (entry.second->type == NUXO_KEY_SOURCE) result = traverseGraph(entry.second.get(), visitor, true);
    }
    resetGraph();
    NUXO_DEBUG("Connections between subgraphs analysis completed!!");
    return result;
}

int GraphUtil::subgraphConnectionVisitor(BaseGraphNode* node)
{
    if (node == nullptr) return StatusMissingObject;
    const GraphNode& source = static_cast<const GraphNode&>(*node);
    const int sourceId = subgraphIdOf(source);
    for (const auto& [child, inputPort] : source.children) {
        const GraphNode& sink = static_cast<const GraphNode&>(*child);
        const int sinkId = subgraphIdOf(sink);
        if (sinkId == sourceId) continue;
        NUXO_DEBUG("Connection %s (%d)-->%s(%d) crosses subgraphs", source.name.c_str(), sourceId, sink.name.c_str(),
                   sinkId);
        const auto from = mSubGraphs.find(sourceId);
        const auto to = mSubGraphs.find(sinkId);
        if (from == mSubGraphs.end() || to == mSubGraphs.end()) continue;
        from->second->addChild(to->second.get(), inputPort);
        to->second->addParent(from->second.get(), sink.parents.at(node));
    }
    return StatusOk;
}

void GraphUtil::resetMetaGraph()
{
    unsigned int visited = 0;
    for (const auto& entry : mSubGraphs) {
        visited += entry.second->visited ? 1U : 0U;
        entry.second->visited = false;
    }
    if (visited != mSubGraphs.size())
        NUXO_ERROR("Traversal of meta graph did not reach all nodes %u/%lu", visited, mSubGraphs.size());
}

} // namespace NUXO
