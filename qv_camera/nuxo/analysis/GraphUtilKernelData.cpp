// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/analysis/AnalysisNames.h>
#include <nuxo/analysis/GraphUtil.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/tree/NodeReading.h>
#include <nuxo/tree/TypeNames.h>

#include <algorithm>
#include <utility>

namespace NUXO {

namespace {

qv_isp_zmt_run_kernels* arrayOf(std::vector<qv_isp_zmt_run_kernels>& kernels)
{
    return kernels.empty() ? nullptr : kernels.data();
}

} // namespace

int GraphUtil::allocateTevData()
{
    if (!mKernelInfoMemPools.empty() || !mPgKernelInfoMemPools.empty()) {
        NUXO_WARN("Allocating kernel structures before deleting.");
        deleteTevStructs();
    }
    for (const auto& entry : mSubGraphs) {
        if (allocateSubGraph(*entry.second) && allocateProgramGroups(*entry.second)) continue;
        deleteTevStructs();
        return StatusMissingData;
    }
    NUXO_DEBUG("TEV structure allocation succeeded !!");
    return StatusOk;
}

// Of a kernel that changes the resolution each output has an entry of its own, of the others there is one.
uint32_t GraphUtil::resolutionCountOf(const ImagingNode& kernel)
{
    if ((kernel.flags & RcbKernel) == 0) return 1;
    return std::max(static_cast<uint32_t>(outputLabels(kernel).size()), 1U);
}

bool GraphUtil::allocateSubGraph(SubGraphInfo& sg)
{
    std::vector<ImagingNode*> kernels;
    size_t resolutions = 0;
    for (const auto& entry : sg.imagingNodes) {
        if (entry.second->type != KERNEL) continue;
        kernels.push_back(entry.second.get());
        resolutions += resolutionCountOf(*entry.second);
    }
    if (kernels.size() > sg.kernelCount) {
        NUXO_ERROR("FATAL: number of subgraph kernels inconsistent with number of imaging nodes");
        return false;
    }
    KernelInfoMemPool& pool = mKernelInfoMemPools[sg.id];
    pool.kernels.resize(sg.kernelCount);
    pool.resInfos.resize(resolutions);
    pool.histories.resize(kernels.size());
    sg.tevRunKernels = arrayOf(pool.kernels);
    qv_isp_zmt_resolution_info* nextInfo = pool.resInfos.data();
    for (size_t i = 0; i < kernels.size(); ++i) {
        qv_isp_zmt_run_kernels& record = pool.kernels[i];
        record.output_count = resolutionCountOf(*kernels[i]);
        record.resolution_info = nextInfo;
        record.resolution_history = &pool.histories[i];
        nextInfo += record.output_count;
        kernels[i]->tevRunKernel = &record;
    }
    return true;
}

// Pools go by the group's id; groups that lack one or share it get negative numbers.
bool GraphUtil::allocateProgramGroups(const SubGraphInfo& sg)
{
    for (const IGraphConfig* const pg : sg.pgs) {
        unsigned int count = 0;
        if (GraphCameraUtil::getKernelCountInPg(pg, count) != StatusOk) return false;
        int id = 0;
        if (!fetch(*pg, NUXO_KEY_PG_ID, id) || mPgKernelInfoMemPools.count(id) != 0) id = mNextPgPool--;
        while (mPgKernelInfoMemPools.count(id) != 0) id = mNextPgPool--;
        KernelInfoMemPool& pool = mPgKernelInfoMemPools[id];
        pool.kernels.resize(count);
        mPgPools[pg] = &pool;
    }
    return true;
}

void GraphUtil::deleteTevStructs()
{
    for (const auto& subGraph : mSubGraphs) {
        subGraph.second->tevRunKernels = nullptr;
        for (const auto& node : subGraph.second->imagingNodes) node.second->tevRunKernel = nullptr;
    }
    mPgPools.clear();
    mPgKernelInfoMemPools.clear();
    mKernelInfoMemPools.clear();
    mNextPgPool = -1;
}

int GraphUtil::populateTevData()
{
    Visitor visitor = [this](BaseGraphNode* subgraph) { return resHistoryCalcVisitor(subgraph); };
    for (const auto& [id, sg] : mSubGraphs) {
        if (!sg->inputPorts.empty()) continue;
        const int status = traverseGraph(sg.get(), visitor, true);
        if (!isError(status)) continue;
        NUXO_ERROR("Traversal of subgraphs failed on subgraph %d", id);
        return status;
    }
    resetMetaGraph();
    NUXO_DEBUG("Resolution History calculation succeeded !!");
    return StatusOk;
}

int GraphUtil::fillTevRunKernels(SubGraphInfo& sg)
{
    NUXO_DEBUG("Filling TEV run_kernels for subgraph %d", sg.streamId);
    for (const auto& entry : sg.imagingNodes) {
        ImagingNode& node = *entry.second;
        if (node.type != KERNEL) continue;
        const int status = fillTevRunKernel(node);
        if (status != StatusOk) return status;
    }
    return StatusOk;
}

int GraphUtil::fillTevRunKernel(const ImagingNode& node)
{
    qv_isp_zmt_run_kernels& record = *node.tevRunKernel;
    record.stream_id = node.runKernel.stream_id;
    record.kernel_uuid = node.runKernel.kernel_uuid;
    record.enable = node.runKernel.enable;
    std::copy(std::begin(node.runKernel.metadata), std::end(node.runKernel.metadata), record.metadata);
    record.bpp_info = node.runKernel.bpp_info;
    *record.resolution_history = node.resHistory;
    if (node.resInfos.empty()) { // states no sizes, or no frame reaches it
        record.resolution_info = nullptr;
        record.output_count = 0;
        return StatusOk;
    }
    if (node.resInfos.size() != record.output_count) {
        NUXO_ERROR("Calculated number of res Infos (%ld) for kernel %s does not match allocated(%u) - BUG",
                   static_cast<long>(node.resInfos.size()), node.name.c_str(), record.output_count);
        return StatusMissingObject;
    }
    std::transform(node.resInfos.begin(), node.resInfos.end(), record.resolution_info,
                   [](const auto& info) { return info.second; });
    return StatusOk;
}

int GraphUtil::getTevData(int id, qv_isp_zmt_program_group& pg)
{
    const auto found = mSubGraphs.find(id);
    if (found == mSubGraphs.end()) {
        NUXO_ERROR("Invalid subgraph(%s) id %d", ItemUID::key2str(mSubgraphKey), id);
        return StatusBadState;
    }
    const SubGraphInfo& sg = *found->second;
    pg = {};
    pg.kernel_count = sg.tevRunKernels == nullptr ? 0 : static_cast<uint32_t>(sg.kernelCount);
    pg.run_kernels = sg.tevRunKernels;
    pg.operation_mode = static_cast<uint32_t>(sg.tuningMode);
    return StatusOk;
}

// The node of the analysed graph: clients may ask with that of another copy, which is then found by its name.
const IGraphConfig& GraphUtil::ownPg(const IGraphConfig& pgNode) const
{
    if (mPgSubGraphs.count(&pgNode) != 0) return pgNode;
    const auto node = mGraphNodes.find(textOr(&pgNode, NUXO_KEY_NAME, ""));
    return node == mGraphNodes.end() ? pgNode : *node->second->node;
}

int GraphUtil::findPg(const IGraphConfig& pgNode, const SubGraphInfo*& sg, KernelInfoMemPool*& pool) const
{
    const auto subGraph = mPgSubGraphs.find(&pgNode);
    if (subGraph == mPgSubGraphs.end()) {
        NUXO_ERROR("Could not find the PG %s in the Subgraphs map", GraphCameraUtil::print(&pgNode).c_str());
        return StatusBadArgument;
    }
    const auto entry = mPgPools.find(&pgNode);
    if (entry == mPgPools.end()) {
        NUXO_ERROR("Could not find the PG %s in the PG memory pool map", GraphCameraUtil::print(&pgNode).c_str());
        return StatusBadArgument;
    }
    sg = subGraph->second;
    pool = entry->second;
    return StatusOk;
}

// Collects copies of the kernels' records with the kernels' ids.
int GraphUtil::collectRecords(const IGraphConfig& pgNode, const SubGraphInfo& sg, size_t limit,
                              std::vector<NumberedRecord>& records)
{
    const std::string prefix = fileNameOf(pgNode) + ":";
    int status = StatusOk;
    forEachOfType(&pgNode, kTypeKernel, [&](const IGraphConfig& kernel) {
        status = StatusBadArgument;
        int palUuid = 0;
        if (!fetch(kernel, NUXO_KEY_PAL_UUID, palUuid)) {
            NUXO_ERROR("Could not find the pal uuid for kernel %s", nameOrFiledName(kernel).c_str());
            return false;
        }
        if (records.size() == limit) {
            NUXO_ERROR("over the max kernel number");
            return false;
        }
        const auto node = sg.imagingNodes.find(prefix + nameOrFiledName(kernel));
        if (node == sg.imagingNodes.end() || node->second->tevRunKernel == nullptr) {
            NUXO_ERROR("Could not find the record of %s", GraphCameraUtil::print(&kernel).c_str());
            return false;
        }
        records.push_back({integerOr(&kernel, NUXO_KEY_ID, 0), *node->second->tevRunKernel});
        records.back().record.kernel_uuid = static_cast<uint32_t>(palUuid);
        status = StatusOk;
        return true;
    });
    return status;
}

int GraphUtil::getPgTevData(const IGraphConfig* pgNode, qv_isp_zmt_program_group& pg)
{
    pg = {};
    if (pgNode == nullptr) return StatusBadArgument;
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        const SubGraphInfo* sg = nullptr;
        KernelInfoMemPool* pool = nullptr;
        const IGraphConfig& ownNode = ownPg(*pgNode);
        int status = findPg(ownNode, sg, pool);
        if (status != StatusOk) return status;
        int tuningMode = 0;
        if (!fetch(ownNode, NUXO_KEY_TUNING_MODE, tuningMode))
            NUXO_WARN("Could not find the tuning mode for PG %s default to 0",
                      GraphCameraUtil::print(&ownNode).c_str());
        std::vector<NumberedRecord> records;
        status = collectRecords(ownNode, *sg, pool->kernels.size(), records);
        if (status != StatusOk) return status;
        std::stable_sort(records.begin(), records.end(),
                         [](const NumberedRecord& a, const NumberedRecord& b) { return a.id < b.id; });
        std::transform(records.begin(), records.end(), pool->kernels.begin(),
                       [](const NumberedRecord& numbered) { return numbered.record; });
        pg.kernel_count = static_cast<uint32_t>(records.size());
        pg.run_kernels = arrayOf(pool->kernels);
        pg.operation_mode = static_cast<uint32_t>(tuningMode);
        return static_cast<int>(StatusOk);
    });
}

} // namespace NUXO
