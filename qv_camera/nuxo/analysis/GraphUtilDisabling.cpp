// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/analysis/GraphUtil.h>
#include <nuxo/tree/NodeReading.h>

#include <algorithm>
#include <unordered_set>

namespace NUXO {

namespace {

bool isOff(const IGraphConfig& port)
{
    return integerOr(&port, NUXO_KEY_ENABLED, 1) == 0;
}

} // namespace

// Marks are cleared after each walk, so that the walks in the other direction see all nodes; those in the same direction
// find nothing new behind a node that one of them passed.
int GraphUtil::disableDisconnectedKernels(SubGraphInfo& sg)
{
    if (mGdfVersion < GdfVersionKVA7) return StatusOk;
    NUXO_DEBUG("Starting to disable disconnected kernels!");
    std::vector<BaseGraphNode*> visited;
    std::unordered_set<const BaseGraphNode*> passedDownstream; // only looked up
    std::unordered_set<const BaseGraphNode*> passedUpstream;
    const auto walk = [&](BaseGraphNode* start, bool downstream) {
        std::unordered_set<const BaseGraphNode*>& passed = downstream ? passedDownstream : passedUpstream;
        Visitor visitor = [&](BaseGraphNode* node) {
            visited.push_back(node);
            return passed.insert(node).second ? kernelDisconectedVisitor(node, downstream)
                                              : static_cast<int>(StatusNoMoreMatches);
        };
        const int result = traverseGraph(start, visitor, downstream);
        for (BaseGraphNode* const node : visited) node->visited = false;
        visited.clear();
        return isError(result) ? result : static_cast<int>(StatusOk);
    };
    int status = StatusOk;
    for (const auto& entry : sg.imagingNodes) {
        ImagingNode& node = *entry.second;
        if (node.type > SPLIT) continue;
        if (node.parents.empty()) {
            NUXO_DEBUG("disabling downstream kernels from disconnected node  %s", node.name.c_str());
            status = walk(&node, true);
        }
        if (status == StatusOk && node.children.empty()) {
            NUXO_DEBUG("disabling upstream kernels from disconnected node  %s", node.name.c_str());
            status = walk(&node, false);
        }
        if (status == StatusOk) continue;
        NUXO_ERROR("subgraph %d inner graph traversal stopped with error %d", sg.id, status);
        break;
    }
    NUXO_DEBUG("Finished to disable disconnected kernels!");
    return status;
}

int GraphUtil::kernelDisconectedVisitor(BaseGraphNode* node, bool downstream)
{
    if (node == nullptr) return StatusMissingObject;
    ImagingNode& inner = static_cast<ImagingNode&>(*node);
    const bool isEnd = downstream ? inner.type == OUTPUT_PORT : inner.type == SPLIT || inner.type == INPUT_PORT;
    if (isEnd) return StatusNoMoreMatches;
    if (inner.type != KERNEL) return StatusOk;
    const bool feedsOthers = !downstream && inner.children.size() > 1;
    if (feedsOthers || inner.runKernel.enable == QV_ISP_ZMT_KERNEL_DISABLED) return StatusNoMoreMatches;
    inner.runKernel.enable = QV_ISP_ZMT_KERNEL_DISABLED;
    NUXO_DEBUG(downstream ? "disable disconnected kernel -> %s " : "disable disconnected kernel <- %s ",
               inner.name.c_str());
    return StatusOk;
}

// From all terminals of one kind that are off. The walks share their marks, so that a split waits for all its branches.
int GraphUtil::disableFromTerminals(SubGraphInfo& sg, bool downstream)
{
    Visitor visitor = [this, downstream](BaseGraphNode* node) { return kernelDisableVisitor(node, downstream); };
    bool walked = false;
    int status = StatusOk;
    for (const auto& entry : sg.imagingNodes) {
        ImagingNode& node = *entry.second;
        if (node.type != (downstream ? INPUT_PORT : OUTPUT_PORT) || !isOff(*node.node)) continue;
        NUXO_DEBUG(downstream ? "disabling kernels from port %s " : "disabling kernels to port %s ", node.name.c_str());
        walked = true;
        status = traverseGraph(&node, visitor, downstream);
        if (isError(status)) break;
        status = StatusOk;
    }
    if (walked) resetInnerGraph(sg, false);
    if (status != StatusOk) NUXO_ERROR("subgraph %d inner graph traversal stopped with error %d", sg.id, status);
    return status;
}

int GraphUtil::disableKernelsToDisabledTerminals(SubGraphInfo& sg)
{
    NUXO_DEBUG("disableKernelsToDisabledTerminals stream id %d has %ld output ports to check", sg.streamId,
               static_cast<long>(sg.outputPorts.size()));
    const int status = disableFromTerminals(sg, false);
    if (status != StatusOk) return status;
    NUXO_DEBUG("disableKernelsToDisabledTerminals - Processing input ports");
    return disableFromTerminals(sg, true);
}

int GraphUtil::kernelDisableVisitor(BaseGraphNode* node, bool downstream)
{
    if (node == nullptr) return StatusMissingObject;
    ImagingNode& inner = static_cast<ImagingNode&>(*node);
    inner.flags |= DisabledNode;
    const auto keep = [&inner](int result) {
        inner.flags &= ~static_cast<uint32_t>(DisabledNode);
        return result;
    };
    if (inner.type == KERNEL) {
        const size_t branches = downstream ? inner.parents.size() : inner.children.size();
        if (branches > 1) return keep(StatusNoMoreMatches); // it serves another branch, too
        NUXO_DEBUG("kernel %s disabled", inner.name.c_str());
        inner.runKernel.enable = QV_ISP_ZMT_KERNEL_DISABLED;
        return StatusOk;
    }
    if (downstream) {
        const bool isLast = inner.type == OUTPUT_PORT && inner.children.empty();
        return isLast ? StatusNoMoreMatches : StatusOk;
    }
    const bool waits = inner.type == SPLIT && std::any_of(inner.children.begin(), inner.children.end(),
                                                          [](const auto& child) { return !child.first->visited; });
    return waits ? keep(StatusNotReady) : StatusOk;
}

} // namespace NUXO
