// SPDX-License-Identifier: Apache-2.0
// Where the histories of a subgraph start: at its source, or at what feeds its input ports.
#include <nuxo/Log.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/analysis/AnalysisNames.h>
#include <nuxo/analysis/GraphUtil.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/camera/PortReading.h>
#include <nuxo/histories/SourceHistories.h>
#include <nuxo/tree/NodeReading.h>

#include <algorithm>
#include <set>

namespace NUXO {

namespace {

// Puts the port's own size in place of the history's output, if the port has one.
bool takeSize(int width, int height, qv_isp_zmt_resolution_info& history)
{
    if (width <= 0 || height <= 0) return false;
    history.output_width = width;
    history.output_height = height;
    return true;
}

bool takeStatedSize(const IGraphConfig& port, qv_isp_zmt_resolution_info& history)
{
    int width = 0;
    int height = 0;
    return GraphCameraUtil::getDimensions(&port, &width, &height) == StatusOk && takeSize(width, height, history);
}

// The same for ports that need not state a size.
void takeSizeIfStated(const IGraphConfig& port, qv_isp_zmt_resolution_info& history)
{
    static_cast<void>(takeSize(integerOr(&port, NUXO_KEY_WIDTH, 0), integerOr(&port, NUXO_KEY_HEIGHT, 0), history));
}

bool isOn(const IGraphConfig& source)
{
    return integerOr(&source, NUXO_KEY_ENABLED, 1) != 0;
}

} // namespace

int GraphUtil::calculateSourceResHistory(SubGraphInfo& sg, qv_isp_zmt_resolution_info& history)
{
    const auto isSource = [](const GraphNode* node) { return node->type == NUXO_KEY_SOURCE && isOn(*node->node); };
    const auto first = std::find_if(sg.nodes.begin(), sg.nodes.end(), isSource);
    if (first == sg.nodes.end()) {
        NUXO_ERROR("Could not find source node in subgraph %d", sg.id);
        return StatusMissingObject;
    }
    const auto read = [](const GraphNode& source, qv_isp_zmt_resolution_info& result) {
        const int status = sourceGetResolutionHistory(result, *source.node);
        if (status != StatusOk) NUXO_ERROR("Failed to get source resolution history");
        return status;
    };
    int status = read(**first, history);
    if (status != StatusOk) return status;
    mSourceHistory = history;

    const bool isOnly = std::find_if(first + 1, sg.nodes.end(), isSource) == sg.nodes.end();
    std::map<const GraphNode*, qv_isp_zmt_resolution_info> known = {{*first, history}}; // only looked up
    for (IGraphConfig* const port : sg.outputPorts) {
        const GraphNode* const source = isOnly ? *first : sourceAbove(sg, *port, **first);
        const auto [entry, isNew] = known.emplace(source, qv_isp_zmt_resolution_info());
        if (isNew) status = read(*source, entry->second);
        if (status != StatusOk) return status;
        seedOutput(sg, *port, entry->second);
    }
    for (const IGraphConfig* const port : sg.outputPorts) {
        ImagingNode* const node = findPortNode(sg, *port);
        if (node == nullptr || !node->parents.empty()) continue;
        status = passHistoryFrom(sg, *node);
        if (status != StatusOk) return status;
    }
    return finishHistories(sg);
}

void GraphUtil::seedOutput(SubGraphInfo& sg, const IGraphConfig& port, const qv_isp_zmt_resolution_info& sourceHistory)
{
    ImagingNode* const node = findPortNode(sg, port);
    if (node == nullptr) return;
    qv_isp_zmt_resolution_info history = sourceHistory;
    if (!takeStatedSize(port, history))
        NUXO_WARN("Failed to get dimensions for port %s using default resolution history", node->name.c_str());
    node->resHistories[node->name] = history;
}

// The source of the subgraph from which the port's data comes.
GraphUtil::GraphNode* GraphUtil::sourceAbove(const SubGraphInfo& sg, const IGraphConfig& port,
                                             GraphNode& fallback) const
{
    const auto owner = mGraphNodes.find(textOr(port.getAncestor(), NUXO_KEY_NAME, ""));
    if (owner == mGraphNodes.end()) return &fallback;
    std::vector<BaseGraphNode*> pending = {owner->second.get()};
    std::set<const BaseGraphNode*> seen = {pending.front()}; // only looked up
    while (!pending.empty()) {
        GraphNode* const node = static_cast<GraphNode*>(pending.back());
        pending.pop_back();
        const bool isOwn = subgraphIdOf(*node) == sg.id;
        if (isOwn && node->type == NUXO_KEY_SOURCE && isOn(*node->node)) return node;
        for (auto parent = node->parents.rbegin(); parent != node->parents.rend(); ++parent) {
            if (seen.insert(parent->first).second) pending.push_back(parent->first);
        }
    }
    return &fallback;
}

// The inner node that delivers the data of an input port.
struct GraphUtil::Upstream {
    const SubGraphInfo* ownSubGraph = nullptr;
    const ImagingNode* node = nullptr;
    bool isOwn = false; // in the port's own subgraph
};

int GraphUtil::findUpstream(const ImagingNode& port, Upstream& upstream) const
{
    const auto owner = mGraphNodes.find(textOr(port.node->getAncestor(), NUXO_KEY_NAME, ""));
    const auto indexes = mConnectionsByPort.find(port.name);
    if (owner == mGraphNodes.end() || indexes == mConnectionsByPort.end()) return StatusNotFound;

    const int ownId = subgraphIdOf(*owner->second);
    const std::string* sourceText = nullptr;
    int id = ownId;
    for (const size_t index : indexes->second) {
        const ConnectionEnds& ends = mConnectionEnds[index];
        const auto source = mGraphNodes.find(nodePart(ends.source));
        if (source == mGraphNodes.end()) continue;
        const bool leavesAnother = subgraphIdOf(*source->second) != ownId;
        if (sourceText != nullptr && !leavesAnother) continue;
        sourceText = &ends.source;
        id = subgraphIdOf(*source->second);
        if (leavesAnother) break; // what comes from outside counts
    }
    if (sourceText == nullptr) return StatusNotFound;

    const auto own = mSubGraphs.find(ownId);
    upstream.ownSubGraph = own == mSubGraphs.end() ? nullptr : own->second.get();
    upstream.isOwn = id == ownId;
    const auto subGraph = mSubGraphs.find(id);
    if (subGraph != mSubGraphs.end()) {
        const auto node = subGraph->second->imagingNodes.find(*sourceText);
        if (node != subGraph->second->imagingNodes.end()) upstream.node = node->second.get();
    }
    if (upstream.node != nullptr) return StatusOk;
    NUXO_ERROR("Could not find inner node %s in subgraph %d- Error", sourceText->c_str(), id);
    return StatusMissingObject;
}

const qv_isp_zmt_resolution_info* GraphUtil::historyLeaving(const ImagingNode& node)
{
    const auto own = node.resHistories.find(node.name);
    if (own != node.resHistories.end()) return &own->second;
    return node.resHistories.empty() ? nullptr : &node.resHistories.begin()->second;
}

// What the subgraph's first main input received: for frames that come back from where none went yet.
const qv_isp_zmt_resolution_info* GraphUtil::defaultHistory(const SubGraphInfo& sg)
{
    for (const IGraphConfig* const port : sg.inputPorts) {
        const ImagingNode* const node = findPortNode(sg, *port);
        const qv_isp_zmt_resolution_info* const seed = node == nullptr ? nullptr : historyLeaving(*node);
        if (seed != nullptr) return seed;
    }
    return nullptr;
}

int GraphUtil::getUpstreamResHistory(ImagingNode& port)
{
    port.resHistories.clear();
    if (!isEnabled(port)) return StatusOk;
    Upstream upstream;
    if (findUpstream(port, upstream) != StatusOk) return StatusMissingObject;

    const qv_isp_zmt_resolution_info* history = historyLeaving(*upstream.node);
    if (history == nullptr && !isEnabled(*upstream.node)) {
        port.flags |= DisabledNode;
        return StatusOk;
    }
    if (history == nullptr && upstream.isOwn && upstream.ownSubGraph != nullptr)
        history = defaultHistory(*upstream.ownSubGraph);
    if (history == nullptr) return StatusMissingObject;

    qv_isp_zmt_resolution_info seed = *history;
    if (integerOr(port.node, NUXO_KEY_PRIVATE, 0) != 0) {
        if (!takeStatedSize(*port.node, seed))
            NUXO_WARN("Failed to get dimensions for private port %s using default resolution history",
                      port.name.c_str());
    } else if (upstream.isOwn && (port.flags & SameNodeEnd) != 0) {
        takeSizeIfStated(*port.node, seed);
    }
    port.resHistories[port.name] = seed;
    return StatusOk;
}

} // namespace NUXO
