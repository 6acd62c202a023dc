// SPDX-License-Identifier: Apache-2.0
// Fills the records of one context and carries the history of the frame through its kernels.
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/camera/PortReading.h>
#include <nuxo/histories/CropHistory.h>
#include <nuxo/histories/KernelSettings.h>
#include <nuxo/histories/SourceHistories.h>
#include <nuxo/kernels/KernelSteps.h>
#include <nuxo/kernels/ZmtTevUtils.h>
#include <nuxo/records/RunKernels.h>
#include <nuxo/records/Wrap.h>
#include <nuxo/tree/NodeReading.h>
#include <nuxo/tree/TypeNames.h>

#include <algorithm>
#include <iterator>
#include <optional>

namespace NUXO {

namespace {

using KernelConfigs = std::vector<KernelConfigContainer>;

// What a kernel does to the history: it crops at its input and delivers frames of its output's size. Unlike in graphs with
// kernel links, what it crops at its output does not count.
void advance(qv_isp_zmt_resolution_info& history, const qv_isp_zmt_resolution_info& kernel)
{
    addFrameCrop(history, kernel.input_crop);
    history.output_width = kernel.output_width;
    history.output_height = kernel.output_height;
}

// The resolutions of a kernel that leaves the frame as it is.
qv_isp_zmt_resolution_info passThrough(const qv_isp_zmt_resolution_info& history)
{
    return {history.output_width, history.output_height, {}, history.output_width, history.output_height, {}};
}

// The frame starts anew at a source; crops stay.
void restartAt(const IGraphConfig& source, qv_isp_zmt_resolution_info& history)
{
    int width = 0;
    int height = 0;
    if (GraphCameraUtil::getDimensions(&source, &width, &height) != StatusOk) return;
    history.input_width = history.output_width = width;
    history.input_height = history.output_height = height;
}

} // namespace

/// One call of populateKernelArray.
class ZmtTevUtils::ArrayPopulation {
public:
    ArrayPopulation(ZmtTevUtils& utils, int context, qv_isp_zmt_run_kernels* records, ResolutionMemPool& pool,
                    PortHistories& portHistories)
        : mUtils(utils), mContext(context), mRecords(records), mPool(pool), mPortHistories(portHistories),
          mCapacity(pool.histories.size()), mInfos(mCapacity), mDisabled(mCapacity), mHistory(utils.mInputHistory)
    {
    }

    int run(const StreamIndex& streams);

private:
    int handleGroup(const IGraphConfig& pg);
    int readKernels(const IGraphConfig& pg);
    int readKernel(const IGraphConfig& kernel);
    int findSinkPort(const IGraphConfig& kernel, int64_t index, KernelInfo& info);
    IGraphConfig* portOfGroup(const IGraphConfig* pg, int id);
    IGraphConfig* sourceOf(const IGraphConfig& kernel) const;
    int fillRecord(size_t index, const IGraphConfig& kernel, const KernelSettings& settings);
    int checkIds() const;
    KernelConfigs configurations() const;
    int finishKernels(const KernelConfigs& configs);
    int finishKernel(size_t index, const KernelConfigs& configs);
    void disableUpTo(size_t index);
    void restoreBranch(const KernelInfo& info);
    int pass(size_t index);
    void keepHistory(const KernelInfo& info);
    void blankRest();

    bool isOutside(int64_t index) const { return index < 0 || index >= static_cast<int64_t>(mCapacity); }

    ZmtTevUtils& mUtils;
    const int mContext;
    qv_isp_zmt_run_kernels* const mRecords;
    ResolutionMemPool& mPool;
    PortHistories& mPortHistories;
    const size_t mCapacity; // of the pool and the records
    std::vector<KernelInfo> mInfos;
    std::vector<bool> mDisabled;         // kernels that feed a port which is off
    std::optional<size_t> mLastDisabled; // of these the last one that was reached
    qv_isp_zmt_resolution_info mHistory;
    bool mIsFirstGroup = true;
    size_t mBase = 0; // of the current group's records

    // Of the current program group.
    size_t mCount = 0;
    uint32_t mIdSum = 0;
    bool mHasStrayId = false; // one without a record
    std::map<int, qv_isp_zmt_resolution_info> mBranches;
    const IGraphConfig* mPortsOf = nullptr; // the group whose ports these are
    std::map<int, IGraphConfig*> mPorts;
};

int ZmtTevUtils::ArrayPopulation::run(const StreamIndex& streams)
{
    const auto entry = streams.groups.find(mContext);
    const size_t readable = entry == streams.groups.end() ? 0 : entry->second.readableCount;
    for (size_t i = 0; i < readable; ++i) {
        const int status = handleGroup(*entry->second.all[i]);
        if (status != StatusOk) return status;
    }
    if (streams.unreadable != nullptr) {
        NUXO_ERROR("Failed to get stream id from node %s", GraphCameraUtil::print(streams.unreadable).c_str());
        return streams.status;
    }
    blankRest();
    return StatusOk;
}

int ZmtTevUtils::ArrayPopulation::handleGroup(const IGraphConfig& pg)
{
    NUXO_DEBUG("Handling PG: %s", GraphCameraUtil::print(&pg).c_str());
    int status = readKernels(pg);
    if (status == StatusOk) status = checkIds();
    if (status != StatusOk) return status;

    const KernelConfigs configs = configurations();
    if (!mIsFirstGroup && mCount > 0) status = mUtils.getResHistoryForIntermediatePg(&pg, mPortHistories, mHistory);
    if (status == StatusOk) status = finishKernels(configs);
    if (status != StatusOk) return status;

    mBase += mCount;
    mIsFirstGroup = false;
    mBranches.clear();
    return StatusOk;
}

int ZmtTevUtils::ArrayPopulation::readKernels(const IGraphConfig& pg)
{
    mCount = 0;
    mIdSum = 0;
    mHasStrayId = false;
    int status = StatusOk;
    forEachOfType(&pg, kTypeKernel, [this, &status](const IGraphConfig& kernel) {
        status = readKernel(kernel);
        return status == StatusOk;
    });
    if (status == StatusOk)
        NUXO_DEBUG("PG: %s got %d kernels", GraphCameraUtil::print(&pg).c_str(), static_cast<int>(mCount));
    return status;
}

int ZmtTevUtils::ArrayPopulation::readKernel(const IGraphConfig& kernel)
{
    KernelSettings settings;
    if (readKernelSettings(kernel, settings) != StatusOk) {
        NUXO_ERROR("Failed to fetch kernel values '%s'", nameOrFiledName(kernel).c_str());
        return StatusBadArgument;
    }
    KernelInfo info = {settings.rcb, settings.branchPoint, settings.sinkPort, settings.restorePoint,
                       nullptr,      sourceOf(kernel)};
    const int64_t index = static_cast<int64_t>(mBase) + settings.id;
    const int status = findSinkPort(kernel, index, info);
    if (status != StatusOk) return status;
    NUXO_DEBUG("storing info for '%s': id: %d, rcb %d, branch-point %d sink-id 0x%x restore-point %d",
               GraphCameraUtil::print(&kernel).c_str(), wrapTo32(index), info.rcb, info.branchPoint,
               static_cast<unsigned int>(info.sinkPort), info.restorePoint);
    ++mCount;
    mIdSum += static_cast<uint32_t>(settings.id);
    if (settings.id < 0 || isOutside(index)) {
        mHasStrayId = true; // reported when all kernels are counted
        return StatusOk;
    }
    mInfos[static_cast<size_t>(index)] = info;
    return fillRecord(static_cast<size_t>(index), kernel, settings);
}

IGraphConfig* ZmtTevUtils::ArrayPopulation::sourceOf(const IGraphConfig& kernel) const
{
    std::string path;
    return fetch(kernel, NUXO_KEY_SOURCE, path) ? descendantAt(*mUtils.mRoot, path) : nullptr;
}

int ZmtTevUtils::ArrayPopulation::findSinkPort(const IGraphConfig& kernel, int64_t index, KernelInfo& info)
{
    if (info.sinkPort < 0) return StatusOk;
    info.sinkPortNode = GraphCameraUtil::nodeGetPortById(&kernel, info.sinkPort);
    if (info.sinkPortNode == nullptr) info.sinkPortNode = portOfGroup(kernel.getAncestor(), info.sinkPort);
    std::vector<int> disabledSinks;
    const int status = noteSinkPort(info, disabledSinks, wrapTo32(index));
    if (!disabledSinks.empty() && !isOutside(index)) mDisabled[static_cast<size_t>(index)] = true;
    return status;
}

// Many kernels may feed ports of one group.
IGraphConfig* ZmtTevUtils::ArrayPopulation::portOfGroup(const IGraphConfig* pg, int id)
{
    if (mPortsOf != pg) {
        mPorts.clear();
        forEachOfType(pg, kTypePort, [this](IGraphConfig& port) {
            int portId = 0;
            if (fetch(port, NUXO_KEY_ID, portId)) mPorts.emplace(portId, &port); // of equal ones the first counts
            return true;
        });
        mPortsOf = pg;
    }
    const auto port = mPorts.find(id);
    return port == mPorts.end() ? nullptr : port->second;
}

int ZmtTevUtils::ArrayPopulation::fillRecord(size_t index, const IGraphConfig& kernel, const KernelSettings& settings)
{
    qv_isp_zmt_run_kernels& record = mRecords[index];
    record.resolution_info = nullptr;
    if (NUXO::kernelHasResolutions(kernel)) {
        record.resolution_info = mPool.infos[index].get();
        if (firstResolution(kernel, *record.resolution_info) != StatusOk) return StatusBadArgument;
    }
    record.bpp_info = kernelGetBpp(kernel);
    record.stream_id = static_cast<uint32_t>(mContext);
    record.kernel_uuid = static_cast<uint32_t>(settings.palUuid);
    record.enable = settings.enable;
    std::copy(std::begin(settings.metadata), std::end(settings.metadata), record.metadata);
    return StatusOk;
}

int ZmtTevUtils::ArrayPopulation::checkIds() const
{
    const int status = mUtils.kernelIdSanityCheck(mIdSum, static_cast<unsigned int>(mCount));
    if (status != StatusOk || !mHasStrayId) return status;
    reportBadKernelIds(); // their sum is right all the same
    return StatusBadState;
}

KernelConfigs ZmtTevUtils::ArrayPopulation::configurations() const
{
    KernelConfigs configs;
    const int status = mUtils.mIspUtils == nullptr
                           ? static_cast<int>(StatusMissingObject)
                           : unlessExhausted(mUtils.mIspUtils->getKernelConfigurations(configs));
    if (status != StatusOk) NUXO_ERROR("Getting kernel configurations failed(%d)", status);
    return configs;
}

int ZmtTevUtils::ArrayPopulation::finishKernels(const KernelConfigs& configs)
{
    for (size_t index = mBase; index < mBase + mCount; ++index) {
        if (index >= mCapacity) {
            NUXO_ERROR("Error: We run out out resolution history items - BUG");
            return StatusBadState;
        }
        const int status = finishKernel(index, configs);
        if (status != StatusOk) return status;
    }
    return StatusOk;
}

// In the order of ids, which is that of the data.
int ZmtTevUtils::ArrayPopulation::finishKernel(size_t index, const KernelConfigs& configs)
{
    qv_isp_zmt_run_kernels& record = mRecords[index];
    const KernelInfo& info = mInfos[index];
    if (mDisabled[index]) disableUpTo(index);
    NUXO::applyKernelConfigs(configs, record);
    restoreBranch(info);
    if (info.sourceNode != nullptr) restartAt(*info.sourceNode, mHistory);
    record.resolution_history = mPool.histories[index].get();
    *record.resolution_history = mHistory; // before the kernel itself changes it
    const int status = pass(index);
    if (status == StatusOk) keepHistory(info);
    return status;
}

// Disables the kernel and those before it that feed nothing else; bypassed ones stay bypassed. Where an earlier walk started,
// the rest is done.
void ZmtTevUtils::ArrayPopulation::disableUpTo(size_t index)
{
    for (size_t i = index;; --i) {
        int32_t& enable = mRecords[i].enable;
        if (enable != QV_ISP_ZMT_KERNEL_BYPASS) enable = QV_ISP_ZMT_KERNEL_DISABLED;
        const bool isWalkedFrom = mLastDisabled && *mLastDisabled == i;
        if (i == 0 || isWalkedFrom || mInfos[i].restorePoint > 0 || mInfos[i - 1].branchPoint > 0) break;
    }
    mLastDisabled = index;
}

void ZmtTevUtils::ArrayPopulation::restoreBranch(const KernelInfo& info)
{
    if (info.restorePoint == KernelInfo().restorePoint) return;
    const auto branch = mBranches.find(info.restorePoint);
    if (branch != mBranches.end()) {
        mHistory = branch->second;
    } else {
        NUXO_ERROR("Found restore_point attribute, but no branch points. Ignoring attribute and continuing.");
    }
}

// The frame passes the kernel. Any kernel with resolutions changes it here, also one that is bypassed or disabled.
int ZmtTevUtils::ArrayPopulation::pass(size_t index)
{
    qv_isp_zmt_run_kernels& record = mRecords[index];
    if (record.resolution_info == nullptr && mInfos[index].rcb == 1) {
        record.resolution_info = mPool.infos[index].get();
        *record.resolution_info = passThrough(mHistory);
    }
    if (record.resolution_info == nullptr) return StatusOk;
    if (!hasOutputSize(mHistory)) return StatusMissingObject;
    advance(mHistory, *record.resolution_info);
    return StatusOk;
}

void ZmtTevUtils::ArrayPopulation::keepHistory(const KernelInfo& info)
{
    const bool isBranchPoint = info.branchPoint != 0;
    if (info.sinkPortNode == nullptr) {
        if (isBranchPoint) mBranches.emplace(info.branchPoint, mHistory); // the first one of a branch counts
        return;
    }
    if (isBranchPoint) NUXO_DEBUG("Branch point with kernel at edge has no effect");
    mPortHistories[info.sinkPortNode] = mHistory;
    NUXO_DEBUG("Sink port %s info stored", nameOrFiledName(*info.sinkPortNode).c_str());
}

void ZmtTevUtils::ArrayPopulation::blankRest()
{
    for (size_t index = mBase; index < mCapacity; ++index) {
        qv_isp_zmt_run_kernels& record = mRecords[index];
        record.kernel_uuid = 0;
        record.enable = QV_ISP_ZMT_KERNEL_BYPASS;
        record.resolution_info = nullptr;
        record.resolution_history = nullptr;
    }
}

int ZmtTevUtils::populateKernelArray(int ctx, qv_isp_zmt_run_kernels* kernels, unsigned int index,
                                     PortHistories& portHistories)
{
    return unlessNoMemory<int>(StatusNoMemory, [&] { return populate(ctx, kernels, index, portHistories, nullptr); });
}

int ZmtTevUtils::populate(int ctx, qv_isp_zmt_run_kernels* kernels, unsigned int index, PortHistories& portHistories,
                          const StreamIndex* streams)
{
    ++mFilling;
    NUXO_DEBUG("Enter %s for ctx %d, index %d", "populateKernelArray", ctx, static_cast<int>(index));
    if (kernels == nullptr || index >= mPools.size()) {
        NUXO_ERROR("Cannot fill kernels of ctx %d: no array, or no pool at index %d", ctx, static_cast<int>(index));
        return StatusBadArgument;
    }
    NUXO::dumpResHistory(mInputHistory, "inputHistory");
    NUXO::dumpPortResHistoryMap(portHistories);
    ArrayPopulation population(*this, ctx, kernels, mPools[index], portHistories);
    return streams == nullptr ? population.run(indexStreams()) : population.run(*streams);
}

// What arrives at a program group that is not the first one of its context.
int ZmtTevUtils::getResHistoryForIntermediatePg(const IGraphConfig* pg, const PortHistories& portHistories,
                                                qv_isp_zmt_resolution_info& history) const
{
    const qv_isp_zmt_resolution_info* found = nullptr;
    bool isFedFromOutside = false;
    forEachOfType(pg, kTypePort, [&](const IGraphConfig& port) {
        IGraphConfig* peer = nullptr;
        if (integerOr(&port, NUXO_KEY_DIRECTION, kInput) != kInput || resolvePeer(&port, &peer) != StatusOk)
            return true;
        const auto stored = portHistories.find(peer);
        if (stored != portHistories.end()) found = &stored->second;
        const IGraphConfig* const feeder = peer->getAncestor();
        if (feeder != nullptr && textOr(feeder, NUXO_KEY_TYPE, "") != kTypeProgramGroup) isFedFromOutside = true;
        return found == nullptr;
    });
    if (found == nullptr && isFedFromOutside) found = &mInputHistory; // another port of the source or hardware block
    if (found == nullptr) {
        NUXO_ERROR("No resolution history stored for the input of PG %s",
                   pg == nullptr ? "NA" : nameOrFiledName(*pg).c_str());
        return StatusMissingData;
    }
    history = *found;
    return StatusOk;
}

} // namespace NUXO
