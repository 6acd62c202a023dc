// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/analysis/AnalysisNames.h>
#include <nuxo/analysis/GraphUtil.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/tree/NodeReading.h>

#include <atomic>
#include <unordered_set>
#include <utility>

namespace NUXO {

namespace {

uint64_t nextSequence()
{
    static std::atomic<uint64_t> sequence = {0}; // objects of several threads count together
    return sequence.fetch_add(1, std::memory_order_relaxed);
}

} // namespace

bool GraphUtil::CreationOrder::operator()(const BaseGraphNode* a, const BaseGraphNode* b) const
{
    return a->sequence < b->sequence;
}

GraphUtil::BaseGraphNode::BaseGraphNode() : sequence(nextSequence())
{
}

void GraphUtil::BaseGraphNode::addChild(BaseGraphNode* child, std::string port)
{
    children.emplace(child, std::move(port));
}

void GraphUtil::BaseGraphNode::addParent(BaseGraphNode* parent, std::string port)
{
    parents.emplace(parent, std::move(port));
}

void GraphUtil::BaseGraphNode::emanzipate()
{
    for (const auto& parent : parents) {
        if (parent.first != this) parent.first->children.erase(this);
    }
    for (const auto& child : children) {
        if (child.first != this) child.first->parents.erase(this);
    }
}

int GraphUtil::addGraphNode(IGraphConfig& node)
{
    std::string typeName;
    if (!fetch(node, NUXO_KEY_TYPE, typeName)) {
        NUXO_ERROR("Could not get type of graph node %s ignoring", GraphCameraUtil::print(&node).c_str());
        GraphCameraUtil::dumpNodeTree(&node, 0);
        return StatusOk;
    }
    const uint32_t type = ItemUID::str2key(typeName);
    if (type == NUXO_KEY_GRAPH) return StatusOk;

    const std::shared_ptr<GraphNode> graphNode = makeNode<GraphNode>();
    if (graphNode == nullptr) {
        NUXO_ERROR("Failed to allocate graph node structure");
        return StatusNoMemory;
    }
    graphNode->type = type;
    graphNode->node = &node;
    if (!fetch(node, NUXO_KEY_NAME, graphNode->name)) {
        NUXO_ERROR("Could not get name of graph node %s ignoring", GraphCameraUtil::print(&node).c_str());
        return StatusOk;
    }
    graphNode->streamId = integerOr(&node, NUXO_KEY_STREAM_ID, -1);
    graphNode->execCtxId = integerOr(&node, NUXO_KEY_EXEC_CTX_ID, -1);
    if (!mGraphNodes.emplace(graphNode->name, graphNode).second) {
        NUXO_ERROR("Graph node %s insertion failed", graphNode->name.c_str());
        return StatusBadState;
    }
    NUXO_DEBUG("Node %s of type %s stream-id %d exeCtxId %d added to graph", graphNode->name.c_str(), typeName.c_str(),
               graphNode->streamId, graphNode->execCtxId);
    return StatusOk;
}

int GraphUtil::addGraphConnection(IGraphConfig& connection)
{
    ConnectionEnds ends = {textOr(&connection, NUXO_KEY_SOURCE, ""), textOr(&connection, NUXO_KEY_SINK, "")};
    const std::string sourceName = nodePart(ends.source);
    const std::string sinkName = nodePart(ends.sink);
    const auto source = mGraphNodes.find(sourceName);
    const auto sink = mGraphNodes.find(sinkName);
    if (source == mGraphNodes.end()) {
        NUXO_WARN("Connection %s->%s skipped due to source not FOUND, Partial graph settings in use!",
                  ends.source.c_str(), ends.sink.c_str());
    } else if (sink != mGraphNodes.end()) {
        source->second->addChild(sink->second.get(), portPart(ends.sink));
        sink->second->addParent(source->second.get(), portPart(ends.source));
    }
    const size_t index = mConnectionEnds.size();
    mConnectionsBySink[sinkName].push_back(index);
    mConnectionsByPort[ends.sink].push_back(index);
    mFirstConnections.emplace(std::make_pair(sourceName, sinkName), index);
    mConnectionEnds.push_back(std::move(ends));
    return StatusOk;
}

// Whether a walk failed; stopping at a node is no failure.
bool GraphUtil::isError(int result)
{
    return result != StatusOk && result != StatusNoMoreMatches;
}

// With a stack of its own: chains of nodes are as long as files make them.
int GraphUtil::traverseGraph(BaseGraphNode* start, Visitor& visitor, bool forward)
{
    const auto linksOf = [forward](const BaseGraphNode& node) -> const Links& {
        return forward ? node.children : node.parents;
    };
    const auto report = [](const BaseGraphNode& node, int result) {
        NUXO_ERROR("Graph traversal interrupted at node %s [%d]", node.name.c_str(), result);
    };
    const auto visit = [&](BaseGraphNode& node) {
        const int result = visitor(&node);
        if (result == StatusNotReady) return static_cast<int>(StatusNoMoreMatches);
        if (isError(result)) report(node, result);
        node.visited = true;
        return result;
    };

    if (start->visited) return StatusOk;
    int result = visit(*start);
    if (result != StatusOk) return result;

    struct Level {
        const BaseGraphNode* node;
        Links::const_iterator next;
    };
    std::vector<Level> levels = {{start, linksOf(*start).begin()}};
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.next == linksOf(*level.node).end()) {
            levels.pop_back();
            continue;
        }
        BaseGraphNode& neighbour = *(level.next++)->first;
        if (neighbour.visited) continue;
        result = visit(neighbour);
        if (result == StatusOk) levels.push_back({&neighbour, linksOf(neighbour).begin()});
        if (!isError(result)) continue;
        for (auto above = levels.rbegin(); above != levels.rend(); ++above) report(*above->node, result);
        return result;
    }
    return StatusOk;
}

void GraphUtil::resetGraph()
{
    unsigned int visited = 0;
    for (const auto& entry : mGraphNodes) {
        visited += entry.second->visited ? 1U : 0U;
        entry.second->visited = false;
    }
    NUXO_DEBUG("Visited graph nodes %u/%lu", visited, mGraphNodes.size());
    if (visited != mGraphNodes.size())
        NUXO_ERROR("Traversal of graph did not reach all nodes %u/%lu", visited, mGraphNodes.size());
}

int GraphUtil::activeNodeVisitor(BaseGraphNode* node, std::vector<std::string>* activeNodes)
{
    if (node == nullptr || activeNodes == nullptr) return StatusMissingObject;
    NUXO_ERROR("Visiting  node %s ", node->name.c_str());
    if (node->visited) {
        NUXO_ERROR("node %s already visited, skipping", node->name.c_str());
        return StatusOk;
    }
    activeNodes->push_back(node->name);
    if (node->parents.empty()) {
        NUXO_ERROR("node %s is last one, stopping", node->name.c_str());
        return StatusNoMoreMatches;
    }
    return StatusOk;
}

int GraphUtil::removeUnusedNodes()
{
    std::vector<std::string> activeNodes;
    activeNodes.reserve(mGraphNodes.size());
    Visitor visitor = [&](BaseGraphNode* node) { return activeNodeVisitor(node, &activeNodes); };
    NUXO_DEBUG("Removing Unusued Nodes");
    for (const auto& [name, node] : mGraphNodes) {
        if (node->type != NUXO_KEY_SINK) continue;
        NUXO_DEBUG("Starting traversal at node %s ", name.c_str());
        static_cast<void>(traverseGraph(node.get(), visitor, false));
    }
    resetGraph();

    const size_t removed = mGraphNodes.size() - activeNodes.size();
    const std::unordered_set<std::string> active(activeNodes.begin(), activeNodes.end());
    for (auto entry = mGraphNodes.begin(); entry != mGraphNodes.end();) {
        if (active.count(entry->first) != 0) {
            ++entry;
            continue;
        }
        NUXO_DEBUG("Node %s not active, removing", entry->first.c_str());
        entry->second->emanzipate();
        entry = mGraphNodes.erase(entry);
    }
    NUXO_DEBUG("Removed %lu Unusued Nodes - Done!", removed);
    return StatusOk;
}

} // namespace NUXO
