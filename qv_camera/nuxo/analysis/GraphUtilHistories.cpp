// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/analysis/AnalysisNames.h>
#include <nuxo/analysis/GraphUtil.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/camera/PortReading.h>
#include <nuxo/histories/CropHistory.h>
#include <nuxo/histories/KernelSettings.h>
#include <nuxo/records/RunKernels.h>
#include <nuxo/records/Wrap.h>
#include <nuxo/tree/NodeReading.h>

#include <algorithm>

namespace NUXO {

namespace {

int32_t rest(int32_t length, int32_t cropBefore, int32_t cropAfter)
{
    return wrapTo32(int64_t{length} - cropBefore - cropAfter);
}

// What leaves a kernel that takes a frame of this history: both crops of its own resolutions count.
qv_isp_zmt_resolution_info compose(const qv_isp_zmt_resolution_info& history, const qv_isp_zmt_resolution_info& info)
{
    qv_isp_zmt_resolution_info result = history;
    addFrameCrop(result, info.input_crop);
    result.output_width = rest(info.output_width, info.output_crop.left, info.output_crop.right);
    result.output_height = rest(info.output_height, info.output_crop.top, info.output_crop.bottom);
    return result;
}

bool fits(const std::string& kernel, const qv_isp_zmt_resolution_info& info, const qv_isp_zmt_resolution_info& history)
{
    if (info.input_width == history.output_width && info.input_height == history.output_height) return true;
    NUXO_ERROR("Consistency error in kernel %s, res info input(%dx%d) is different than res history output(%dx%d)- "
               "check your settings!",
               kernel.c_str(), info.input_width, info.input_height, history.output_width, history.output_height);
    return false;
}

} // namespace

template <typename IsNeedless>
const GraphUtil::BaseGraphNode* GraphUtil::BaseGraphNode::findPendingParent(IsNeedless isNeedless)
{
    auto parent = pendingParent == nullptr ? parents.begin() : parents.find(pendingParent);
    while (parent != parents.end() && (parent->first->visited || isNeedless(*parent->first))) ++parent;
    pendingParent = parent == parents.end() ? nullptr : parent->first;
    return pendingParent;
}

int GraphUtil::resHistoryCalcVisitor(BaseGraphNode* subgraph)
{
    if (subgraph == nullptr) return StatusMissingObject;
    SubGraphInfo& sg = static_cast<SubGraphInfo&>(*subgraph);
    const bool isSource = sg.inputPorts.empty();
    const auto isNeedless = [](const BaseGraphNode&) { return false; };
    if (!isSource && sg.findPendingParent(isNeedless) != nullptr) return StatusNotReady;

    return calculateHistories(sg, isSource);
}

int GraphUtil::calculateHistories(SubGraphInfo& sg, bool isSource)
{
    int status = disableKernelsToDisabledTerminals(sg);
    if (status != StatusOk) {
        NUXO_WARN("Disablement of kernels in subgraph %d failed[%d]", sg.id, status);
        return status;
    }
    NUXO_DEBUG("---- Starting Res-history graph traversal for subgraph %d ----", sg.id);
    if (isSource) {
        qv_isp_zmt_resolution_info history = {};
        return calculateSourceResHistory(sg, history);
    }
    NUXO_DEBUG("-- Starting graph traversal from main input ports --");
    for (const IGraphConfig* const port : sg.inputPorts) {
        ImagingNode* const node = findPortNode(sg, *port);
        if (node == nullptr) {
            NUXO_ERROR("Failed to find input port %s in the Imaging graph- Error", fullName(*port).c_str());
            return StatusMissingObject;
        }
        status = passHistoryFromInput(sg, *node);
        if (status != StatusOk) return status;
    }
    NUXO_DEBUG("-- Starting graph traversal from secondary input ports -- ");
    std::vector<ImagingNode*> secondary;
    static_cast<void>(getUnvisitedInputPortsPeers(sg, secondary)); // never fails
    for (ImagingNode* const node : secondary) {
        status = seedInput(*node);
        if (status != StatusOk) return status;
    }
    for (ImagingNode* const node : secondary) {
        status = passHistoryFrom(sg, *node);
        if (status != StatusOk) return status;
    }
    return finishHistories(sg);
}

int GraphUtil::finishHistories(SubGraphInfo& sg)
{
    NUXO_DEBUG("---- Res-history graph traversal for subgraph %d done! ----", sg.id);
    resetInnerGraph(sg, true);
    return fillTevRunKernels(sg);
}

GraphUtil::ImagingNode* GraphUtil::findPortNode(const SubGraphInfo& sg, const IGraphConfig& port)
{
    const auto found = sg.imagingNodes.find(fullName(port));
    return found != sg.imagingNodes.end() && found->second->node == &port ? found->second.get() : nullptr;
}

int GraphUtil::seedInput(ImagingNode& port)
{
    if (getUpstreamResHistory(port) == StatusOk) return StatusOk;
    NUXO_ERROR("Failed to get res history for input port %s", port.name.c_str());
    return StatusMissingObject;
}

int GraphUtil::passHistoryFromInput(SubGraphInfo& sg, ImagingNode& port)
{
    if (port.visited) return StatusOk; // another input leads there, too
    const int status = seedInput(port);
    return status == StatusOk ? passHistoryFrom(sg, port) : status;
}

int GraphUtil::passHistoryFrom(SubGraphInfo& sg, ImagingNode& start)
{
    Visitor visitor = [this](BaseGraphNode* node) { return resHistoryINodeVisitor(node); };
    const int result = traverseGraph(&start, visitor, true);
    if (!isError(result)) return StatusOk;
    NUXO_ERROR("subgraph %d inner graph traversal stopped with error %d", sg.id, result);
    return result;
}

int GraphUtil::resHistoryINodeVisitor(BaseGraphNode* node)
{
    ImagingNode& inner = static_cast<ImagingNode&>(*node);
    NUXO_DEBUG("--- Visiting node %s ---", inner.name.c_str());
    if ((inner.flags & DisabledNode) != 0) {
        NUXO_DEBUG("--- Res history Visit of node %s  SKIPPED node disabled ---", inner.name.c_str());
        return StatusNoMoreMatches;
    }
    qv_isp_zmt_resolution_info history = {};
    int status = getParentHistory(inner, history);
    if (status == StatusNotReady) {
        NUXO_DEBUG("--- Res history node %s  SKIPPED, will try again later ---", inner.name.c_str());
        return status;
    }
    if (status != StatusOk) {
        NUXO_ERROR("Could not find parent history for node %s", inner.name.c_str());
        return status;
    }
    inner.resHistory = history;
    for (const auto& child : inner.children) inner.resHistories[child.second] = history;
    if (inner.type == OUTPUT_PORT) inner.resHistories[inner.name] = history; // for the subgraph behind it
    if (inner.type != KERNEL) {
        NUXO_DEBUG("Resolution history: %s", resInfoToStr(history));
    } else if (kernelHasResolutions(*inner.node)) {
        status = applyKernelResolutions(inner, history);
        if (status != StatusOk) return status;
    }
    NUXO_DEBUG("--- Res history Visit of node %s  DONE ---", inner.name.c_str());
    return StatusOk;
}

// Only kernels that change the resolution change the history; of the others the resolutions are noted.
int GraphUtil::applyKernelResolutions(ImagingNode& kernel, const qv_isp_zmt_resolution_info& history)
{
    const char* const name = kernel.name.c_str();
    if (getKernelResolutionInfos(kernel) != StatusOk) {
        NUXO_ERROR("Retrieval of resolution info for RCB kernel %s Failed", name);
        return StatusMissingObject;
    }
    NUXO_DEBUG("node %s has %ld resinfo(s)", name, static_cast<long>(kernel.resInfos.size()));
    for (const auto& [key, info] : kernel.resInfos) NUXO_DEBUG("[%s]: %s", key.c_str(), resInfoToStr(info));
    if ((kernel.flags & RcbKernel) == 0) return StatusOk;

    if (!hasOutputSize(history)) return StatusMissingObject;
    NUXO_DEBUG("RCB node %s history", name);
    for (const auto& [key, info] : kernel.resInfos) {
        if (!fits(kernel.name, info, history)) return StatusMissingObject;
        qv_isp_zmt_resolution_info& result = kernel.resHistories[key];
        result = compose(history, info);
        NUXO_DEBUG("[%s]: %s", key.c_str(), resInfoToStr(result));
    }
    return StatusOk;
}

int GraphUtil::getParentHistory(ImagingNode& node, qv_isp_zmt_resolution_info& history)
{
    NUXO_DEBUG("Getting parent history for node %s", node.name.c_str());
    const qv_isp_zmt_resolution_info* found = nullptr;
    const int status = chooseHistory(node, found);
    if (status != StatusOk) return status;
    history = *found;
    NUXO_DEBUG("Parent history for node %s found: %s", node.name.c_str(), resInfoToStr(history));
    return StatusOk;
}

bool GraphUtil::isEnabled(const BaseGraphNode& node)
{
    return (static_cast<const ImagingNode&>(node).flags & DisabledNode) == 0;
}

int GraphUtil::chooseHistory(ImagingNode& node, const qv_isp_zmt_resolution_info*& found)
{
    const char* const name = node.name.c_str();
    const auto isVisited = [](const auto& parent) { return parent.first->visited; };
    const auto feeds = [](const auto& parent) { return parent.first->visited && isEnabled(*parent.first); };
    const auto isFed = [&] { return std::any_of(node.parents.begin(), node.parents.end(), feeds); };
    const bool isFedBySelf = node.type == INPUT_PORT && (node.flags & SameNodeEnd) != 0;
    const bool isSeeded = !node.resHistories.empty();
    const auto useSeed = [&] {
        found = &node.resHistories.begin()->second;
        return static_cast<int>(StatusOk);
    };

    if (node.parents.empty()) NUXO_DEBUG("node %s has no parent, looking inside", name);
    if (node.parents.empty() || isFedBySelf) {
        if (isSeeded) return useSeed();
        if (!isFed()) {
            NUXO_ERROR("Node %s with no parents has not been seeded with initial reshistory- BUG", name);
            return StatusMissingObject;
        }
    }
    const auto isNeedless = [](const BaseGraphNode& parent) { return !isEnabled(parent); };
    if (const BaseGraphNode* const pending = node.findPendingParent(isNeedless)) {
        NUXO_DEBUG("Node %s not ready to be visited, not all active parents have been visited yet ex: %s", name,
                   pending->name.c_str());
        return StatusNotReady;
    }
    if (isFed()) return largestOffer(node, found);
    const bool isReached = std::any_of(node.parents.begin(), node.parents.end(), isVisited);
    if (isReached && node.type == INPUT_PORT && isSeeded) return useSeed(); // only disabled nodes lead here
    NUXO_ERROR("No parent of node %s has been visited, cannot get res-history", name);
    return StatusMissingObject;
}

// Of what the node's parents offer, the first that none surpasses in both width and height.
int GraphUtil::largestOffer(ImagingNode& node, const qv_isp_zmt_resolution_info*& found)
{
    for (const auto& link : node.parents) {
        const ImagingNode& parent = static_cast<const ImagingNode&>(*link.first);
        if (!parent.visited || !isEnabled(parent)) continue;
        const std::string& output = parent.children.find(&node)->second; // links go both ways
        const auto offer = parent.resHistories.find(output);
        if (offer == parent.resHistories.end()) {
            NUXO_ERROR("Could not find the res history for  parent output port %s ", output.c_str());
            return StatusMissingObject;
        }
        const qv_isp_zmt_resolution_info& history = offer->second;
        if (found == nullptr ||
            (history.output_width > found->output_width && history.output_height > found->output_height))
            found = &history;
    }
    return StatusOk;
}

int GraphUtil::getUnvisitedInputPortsPeers(SubGraphInfo& sg, std::vector<ImagingNode*>& nodes)
{
    std::string peer;
    for (const auto& entry : sg.imagingNodes) {
        ImagingNode& node = *entry.second;
        if (node.type != INPUT_PORT || node.visited) continue;
        if (fetch(*node.node, NUXO_KEY_PEER, peer)) nodes.push_back(&node);
    }
    return StatusOk;
}

} // namespace NUXO
