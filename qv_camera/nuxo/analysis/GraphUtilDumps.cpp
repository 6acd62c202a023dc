// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/analysis/GraphUtil.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/camera/PortReading.h>
#include <nuxo/records/RunKernels.h>
#include <nuxo/tree/KeyCache.h>

#include <unordered_map>

namespace NUXO {

namespace {

const char* nameOfState(int32_t enable)
{
    switch (enable) {
    case QV_ISP_ZMT_KERNEL_BYPASS: return "[BYPASSED]";
    case QV_ISP_ZMT_KERNEL_ENABLED: return "[ENABLED]";
    case QV_ISP_ZMT_KERNEL_DISABLED: return "[DISABLED]";
    default: return "INVALID!!";
    }
}

void dumpPorts(const char* format, const std::vector<IGraphConfig*>& nodes)
{
    for (const IGraphConfig* const node : nodes)
        NUXO_LOG(LogDebug, kGraphTag, format, GraphCameraUtil::print(node).c_str());
}

void dumpResolution(const char* format, const qv_isp_zmt_resolution_info& info)
{
    const qv_rectangle& in = info.input_crop;
    const qv_rectangle& out = info.output_crop;
    NUXO_LOG(LogError, kGraphTag, format, info.input_width, info.input_height, in.left, in.top, in.right, in.bottom,
             info.output_width, info.output_height, out.left, out.top, out.right, out.bottom);
}

void dumpRecord(const qv_isp_zmt_run_kernels& record)
{
    NUXO_ERROR("stream_id %d", static_cast<int>(record.stream_id));
    NUXO_ERROR("metadata: (%d %d %d %d)", static_cast<int>(record.metadata[0]), static_cast<int>(record.metadata[1]),
               static_cast<int>(record.metadata[2]), static_cast<int>(record.metadata[3]));
    if (record.resolution_info != nullptr) {
        dumpResolution(
            "res_info: (iw: %d ih: %d (l: %d, t: %d, r: %d, b: %d), ow: %d, oh: %d (l: %d, t: %d, r: %d, b: %d))",
            *record.resolution_info);
    } else {
        NUXO_ERROR("res info: NULL");
    }
    if (record.resolution_history != nullptr) {
        dumpResolution(
            "res_history: (iw: %d ih: %d (l: %d, t: %d, r: %d, b: %d), ow: %d, oh: %d (l: %d, t: %d, r: %d, b: %d))",
            *record.resolution_history);
    } else {
        NUXO_ERROR("res history: NULL");
    }
    NUXO_ERROR("bpp_info in:%d out:%d", static_cast<int>(record.bpp_info.input_bpp),
               static_cast<int>(record.bpp_info.output_bpp));
}

template <typename OuterNode> void printOuter(const OuterNode& outer, const char* type)
{
    NUXO_ERROR("StreamId %d execCtx %d --> Node[%s]%s ", outer.streamId, outer.execCtxId, type, outer.name.c_str());
}

} // namespace

void GraphUtil::dumpOuterGraph()
{
    NUXO_DEBUG("%s", kDoubleLine);
    NUXO_DEBUG("Dumping Outer graph");
    NUXO_DEBUG("%s", kDoubleLine);
    KeyCache names; // a node has one of a few types, but finding a name in a large vocabulary takes long
    Visitor visitor = [&names](BaseGraphNode* node) {
        if (node == nullptr) return static_cast<int>(StatusMissingObject);
        const GraphNode& outer = static_cast<const GraphNode&>(*node);
        printOuter(outer, names.nameOf(outer.type));
        return static_cast<int>(StatusOk);
    };
    for (const auto& [name, node] : mGraphNodes) {
        if (node->type != NUXO_KEY_SOURCE) continue;
        NUXO_DEBUG("-->START <-- src name: %s", name.c_str());
        const int result = traverseGraph(node.get(), visitor, true);
        NUXO_DEBUG("--> END <-- %d", result);
    }
    resetGraph();
}

int GraphUtil::printOuterNode(BaseGraphNode* node)
{
    if (node == nullptr) return StatusMissingObject;
    const GraphNode& outer = static_cast<const GraphNode&>(*node);
    printOuter(outer, ItemUID::key2str(outer.type));
    return StatusOk;
}

void GraphUtil::dumpSubGraphInfos()
{
    NUXO_DEBUG("%s", kDoubleLine);
    NUXO_DEBUG("FOUND %lu subgraphs of type %s", mSubGraphs.size(), ItemUID::key2str(mSubgraphKey));
    NUXO_DEBUG("%s", kDoubleLine);
    for (const auto& [id, sg] : mSubGraphs) {
        NUXO_DEBUG("----> subgraph id %d Info START", id);
        NUXO_DEBUG("KernelCount %lu, Tuning Mode %d", static_cast<unsigned long>(sg->kernelCount), sg->tuningMode);
        NUXO_DEBUG("PG Count %lu", sg->pgs.size());
        dumpPorts("* %s", sg->pgs);
        NUXO_DEBUG("Input Ports %lu", sg->inputPorts.size());
        dumpPorts("* [Input] %s", sg->inputPorts);
        NUXO_DEBUG("Output Ports %lu", sg->outputPorts.size());
        dumpPorts("* [Output]: %s", sg->outputPorts);
        NUXO_DEBUG("<--- subgraph id %d Info END", id);
    }
}

void GraphUtil::dumpInnerGraph(int id)
{
    const auto found = mSubGraphs.find(id);
    if (found == mSubGraphs.end()) {
        NUXO_ERROR("Invalid Subgraph id %d", id);
        return;
    }
    SubGraphInfo& sg = *found->second;
    NUXO_DEBUG("%s", kDoubleLine);
    NUXO_DEBUG("Dumping Imaging graph inside subgraph %d of type %s", id, ItemUID::key2str(mSubgraphKey));
    NUXO_DEBUG("%s", kDoubleLine);
    NUXO_DEBUG("Subgraph %s %p", sg.name.c_str(), static_cast<const void*>(&sg));
    Visitor visitor = [](BaseGraphNode* node) { return dumpInnerNodeVisitor(node, ANY); };
    for (const IGraphConfig* const port : sg.inputPorts) {
        ImagingNode* const node = findPortNode(sg, *port);
        if (node == nullptr) {
            NUXO_ERROR("Failed to find input port %s in the Imaging graph- Error", fullName(*port).c_str());
            continue;
        }
        NUXO_DEBUG("-->START <-- %s", node->name.c_str());
        const int result = traverseGraph(node, visitor, true);
        NUXO_DEBUG("--> END <-- %d", result);
    }
    resetInnerGraph(sg, false);
}

int GraphUtil::dumpInnerNodeVisitor(BaseGraphNode* node, ImagingNodeType filter)
{
    if (node == nullptr) return StatusMissingObject;
    const ImagingNode& inner = static_cast<const ImagingNode&>(*node);
    if (filter != ANY && inner.type != filter) return StatusOk;
    NUXO_ERROR("%s", kDashLine);
    NUXO_ERROR("[%d]%s ", static_cast<int>(inner.type), inner.name.c_str());
    if (inner.type != KERNEL) return StatusOk;
    NUXO_ERROR("kernel_uuid: %d %s", static_cast<int>(inner.runKernel.kernel_uuid),
               nameOfState(inner.runKernel.enable));
    if (inner.tevRunKernel == nullptr) {
        NUXO_ERROR("INVALID output!! Error");
        return StatusMissingObject;
    }
    dumpRecord(*inner.tevRunKernel);
    return StatusOk;
}

void GraphUtil::dumpTevStructs()
{
    NUXO_DEBUG("%s", kDoubleLine);
    NUXO_DEBUG("Dumping run-kernels for %lu subgraphs of type %s", mSubGraphs.size(), ItemUID::key2str(mSubgraphKey));
    NUXO_DEBUG("%s", kDashLine);
    for (const auto& entry : mSubGraphs) {
        const SubGraphInfo& sg = *entry.second;
        if (sg.tevRunKernels != nullptr) dumpRunKernels(sg.tevRunKernels, static_cast<uint32_t>(sg.kernelCount));
    }
    NUXO_DEBUG("%s", kDoubleLine);
}

void GraphUtil::dumpKernels(int id)
{
    const auto found = mSubGraphs.find(id);
    if (found == mSubGraphs.end()) {
        NUXO_ERROR("subgraph id %d not FOUND", id);
        return;
    }
    SubGraphInfo& sg = *found->second;
    NUXO_DEBUG("%s", kDoubleLine);
    NUXO_DEBUG("FOUND  subgraph id %d [%s] dumping %lu kernels:", id, ItemUID::key2str(mSubgraphKey),
               static_cast<unsigned long>(sg.kernelCount));
    NUXO_DEBUG("%s", kDoubleLine);
    const int result = unlessNoMemory<int>(StatusNoMemory, [&] { return dumpFromStarts(sg); });
    resetInnerGraph(sg, false);
    if (result != StatusOk) NUXO_ERROR("Inner graph traversal failed %d", result);
}

// From the ports that other subgraphs feed, then from all other inputs, then from what hangs loose.
int GraphUtil::dumpFromStarts(SubGraphInfo& sg)
{
    std::vector<ImagingNode*> starts;
    for (const IGraphConfig* const port : sg.inputPorts) {
        if (ImagingNode* const node = findPortNode(sg, *port)) starts.push_back(node);
    }
    const auto addAll = [&](auto isStart) {
        for (const auto& entry : sg.imagingNodes) {
            if (isStart(*entry.second)) starts.push_back(entry.second.get());
        }
    };
    addAll([](const ImagingNode& node) { return node.type == INPUT_PORT; });
    addAll([](const ImagingNode& node) { return node.parents.empty(); });
    Visitor visitor = [](BaseGraphNode* node) { return dumpInnerNodeVisitor(node, KERNEL); };
    for (ImagingNode* const start : starts) {
        const int result = traverseGraph(start, visitor, true);
        if (isError(result)) return result;
    }
    return StatusOk;
}

int GraphUtil::getInnerGraph(int id, std::vector<InnerGraphNode>& nodes) const
{
    nodes.clear();
    const auto found = mSubGraphs.find(id);
    if (found == mSubGraphs.end()) return StatusBadState;
    std::vector<InnerGraphNode> result;
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        std::unordered_map<const BaseGraphNode*, size_t> indexes;
        for (const auto& entry : found->second->imagingNodes) indexes.emplace(entry.second.get(), indexes.size());
        for (const auto& [name, node] : found->second->imagingNodes) {
            InnerGraphNode shown;
            shown.name = name;
            shown.kind = static_cast<InnerGraphNode::Kind>(node->type);
            shown.node = node->node;
            const bool isOff = node->type == KERNEL && node->runKernel.enable >= QV_ISP_ZMT_KERNEL_DISABLED;
            shown.disabled = isOff || !isEnabled(*node);
            shown.record = node->tevRunKernel;
            for (const auto& [child, output] : node->children) {
                InnerGraphNode::Link link;
                link.sink = indexes.at(child);
                link.output = output;
                const auto history = node->resHistories.find(output);
                link.hasHistory = history != node->resHistories.end();
                if (link.hasHistory) link.history = history->second;
                shown.links.push_back(std::move(link));
            }
            result.push_back(std::move(shown));
        }
        nodes.swap(result);
        return static_cast<int>(StatusOk);
    });
}

} // namespace NUXO
