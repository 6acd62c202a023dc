// SPDX-License-Identifier: Apache-2.0
// What is known of single kernels and records.
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/camera/KernelReading.h>
#include <nuxo/histories/KernelSettings.h>
#include <nuxo/kernels/KernelSteps.h>
#include <nuxo/kernels/ZmtTevUtils.h>
#include <nuxo/records/RunKernels.h>
#include <nuxo/tree/NodeReading.h>

#include <algorithm>
#include <iterator>

namespace NUXO {

int firstResolution(const IGraphConfig& kernel, qv_isp_zmt_resolution_info& resolution)
{
    resolution = {};
    std::vector<KernelResolution> resolutions;
    const int status = kernelGetResolutions(kernel, resolutions);
    if (status != StatusOk) return status;
    if (resolutions.empty()) return StatusMissingData;
    resolution = resolutions.front().second;
    return StatusOk;
}

void reportBadKernelIds()
{
    NUXO_ERROR("Error: Bad kernel id(s). Kernel ids need to run from 0 to n. Check the GDF.");
}

int noteSinkPort(const ZmtTevUtils::KernelInfo& info, std::vector<int>& disabledSinks, int kernelId)
{
    if (info.sinkPortNode == nullptr) {
        NUXO_ERROR("Kernel sink port id %d invalid", info.sinkPort);
        return StatusBadArgument;
    }
    if (integerOr(info.sinkPortNode, NUXO_KEY_ENABLED, 1) != 0) return StatusOk;
    NUXO_DEBUG("Found disabled terminal %d, going to disable its kernels.", info.sinkPort);
    disabledSinks.push_back(kernelId);
    return StatusOk;
}

int ZmtTevUtils::handleSinkPort(KernelInfo& info, const IGraphConfig* kernelNode, std::vector<int>& disabledSinks,
                                int kernelId)
{
    info.sinkPortNode = nullptr;
    if (kernelNode != nullptr) {
        info.sinkPortNode = GraphCameraUtil::nodeGetPortById(kernelNode, info.sinkPort);
        const IGraphConfig* const pg = kernelNode->getAncestor();
        if (info.sinkPortNode == nullptr && pg != nullptr)
            info.sinkPortNode = GraphCameraUtil::nodeGetPortById(pg, info.sinkPort);
    }
    return unlessNoMemory<int>(StatusNoMemory, [&] { return noteSinkPort(info, disabledSinks, kernelId); });
}

int ZmtTevUtils::kernelIdSanityCheck(unsigned int idSum, unsigned int kernelCount)
{
    const uint64_t n = kernelCount;
    if (idSum == static_cast<uint32_t>(n == 0 ? 0 : n * (n - 1) / 2)) return StatusOk;
    reportBadKernelIds();
    return StatusBadState;
}

int ZmtTevUtils::kernelGetValues(const IGraphConfig* kernel, int* palUuid, int* id, unsigned int* metadata, int* enable,
                                 int* rcb, int* branchPoint, int* sinkPort, int* restorePoint)
{
    if (kernel == nullptr) return StatusBadArgument;
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        uint32_t items[QV_ISP_ZMT_METADATA_COUNT];
        if (metadata != nullptr) {
            readKernelMetadata(*kernel, items);
            std::copy(std::begin(items), std::end(items), metadata);
        }
        return readKernelValues(*kernel, {palUuid, id, enable, rcb, branchPoint, sinkPort, restorePoint});
    });
}

bool ZmtTevUtils::kernelHasResolutions(const IGraphConfig* kernel)
{
    return kernel != nullptr && NUXO::kernelHasResolutions(*kernel);
}

int ZmtTevUtils::kernelGetResolutions(const IGraphConfig* kernel, qv_isp_zmt_resolution_info& resolution)
{
    resolution = {};
    if (kernel == nullptr) return StatusBadArgument;
    return unlessNoMemory<int>(StatusNoMemory, [&] { return firstResolution(*kernel, resolution); });
}

int ZmtTevUtils::kernelGetResolutions(const IGraphConfig* kernel,
                                      std::map<std::string, qv_isp_zmt_resolution_info>& resolutions)
{
    resolutions.clear();
    if (kernel == nullptr) return StatusBadArgument;
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        std::vector<KernelResolution> inOrder;
        const int status = NUXO::kernelGetResolutions(*kernel, inOrder);
        if (status == StatusOk) resolutions.insert(inOrder.begin(), inOrder.end());
        return status;
    });
}

int ZmtTevUtils::kernelGetBppInfo(const IGraphConfig* kernel, qv_isp_zmt_run_kernels& runKernel)
{
    if (kernel == nullptr) return StatusBadArgument;
    runKernel.bpp_info = kernelGetBpp(*kernel);
    return StatusOk;
}

char* ZmtTevUtils::resInfoToStr(qv_isp_zmt_resolution_info& info)
{
    return NUXO::resInfoToStr(info);
}

void ZmtTevUtils::accumulateCrop(qv_rectangle& total, const qv_rectangle& crop, int divisor, int multiplier)
{
    NUXO::accumulateCrop(total, crop, divisor, multiplier);
}

void ZmtTevUtils::applyKernelConfigs(const std::vector<KernelConfigContainer>& configs, qv_isp_zmt_run_kernels& kernel)
{
    NUXO::applyKernelConfigs(configs, kernel);
}

void ZmtTevUtils::dumpResInfo(qv_isp_zmt_run_kernels& kernel)
{
    NUXO::dumpResInfo(kernel);
}

void ZmtTevUtils::dumpKernels(qv_isp_zmt_run_kernels* kernels, unsigned int count)
{
    dumpRunKernels(kernels, count);
}

void ZmtTevUtils::dumpKernels(int execCtxId)
{
    if (isOnAnalysisPath()) {
        mGraphUtil->dumpKernels(execCtxId);
        return;
    }
    const auto entry = mExecCtxMap.find(execCtxId);
    if (entry == mExecCtxMap.end()) {
        NUXO_ERROR("COULD NOT FIND index for exec ctx id %d ", execCtxId);
        return;
    }
    NUXO_ERROR("%s", kDoubleLine);
    NUXO_ERROR("FOUND index for exec ctx id %d dumping %u kernels:", execCtxId, entry->second.count);
    NUXO_ERROR("%s", kDoubleLine);
    dumpRunKernels(entry->second.kernels.get(), entry->second.size());
}

} // namespace NUXO
