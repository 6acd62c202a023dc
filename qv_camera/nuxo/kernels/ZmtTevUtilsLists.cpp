// SPDX-License-Identifier: Apache-2.0
// From the streams of a graph to arrays of records.
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/camera/PortReading.h>
#include <nuxo/histories/SourceHistories.h>
#include <nuxo/kernels/KernelSteps.h>
#include <nuxo/kernels/ZmtTevUtils.h>
#include <nuxo/tree/NodeReading.h>
#include <nuxo/tree/TypeNames.h>

#include <set>

namespace NUXO {

namespace {

// Where hardware blocks count, which belong to no context of their own.
constexpr int kHardwareContext = 0;

using Records = std::vector<std::unique_ptr<qv_isp_zmt_resolution_info>>;

Records createRecords(uint32_t count)
{
    Records records(count);
    for (auto& record : records) record = std::make_unique<qv_isp_zmt_resolution_info>();
    return records;
}

// The first active source, null without one.
IGraphConfig* firstSource(const IGraphConfig& root)
{
    std::vector<IGraphConfig*> sources;
    const int status = unlessExhausted(GraphCameraUtil::getSourceNode(&root, sources));
    return status == StatusOk && !sources.empty() ? sources.front() : nullptr;
}

} // namespace

/// What one walk over all chains collects.
struct ZmtTevUtils::ChainWalk {
    IGraphConfig& source;
    const StreamIndex& streams;
    PortHistories histories;
    std::set<int> handledContexts;
};

void ZmtTevUtils::deleteKernelInfo()
{
    mExecCtxMap.clear();
    mPgMap.clear();
    mIndexMap.clear();
    mPools.clear();
}

int ZmtTevUtils::generateKernelListsForExecCtxs()
{
    return unlessNoMemory<int>(StatusNoMemory, [this] { return generateKernelLists(); });
}

int ZmtTevUtils::generateKernelLists()
{
    deleteKernelInfo();
    if (mRoot == nullptr) {
        NUXO_ERROR("GC Handle root is NULL");
        return StatusBadArgument;
    }
    const StreamIndex streams = indexStreams();
    StreamChains chains;
    int status = getStreamChains(streams, chains);
    if (status == StatusOk) status = countKernels();
    if (status == StatusOk) status = createKernelListStructures();
    if (status != StatusOk) return status;

    IGraphConfig* const source = firstSource(*mRoot);
    return source == nullptr ? static_cast<int>(StatusBadState) : fillStreamChains(streams, chains, *source);
}

int ZmtTevUtils::countKernels()
{
    forEachOfType(mRoot, kTypeHw, [this](const IGraphConfig&) {
        mExecCtxMap.try_emplace(kHardwareContext);
        return false; // further ones do not count
    });
    int status = StatusOk;
    forEachOfType(mRoot, kTypeProgramGroup, [this, &status](const IGraphConfig& pg) {
        status = countKernelsOf(pg);
        return status == StatusOk;
    });
    return status;
}

int ZmtTevUtils::countKernelsOf(const IGraphConfig& pg)
{
    int context = 0;
    const int status = pg.getValue(groupingKey(), context);
    if (status != StatusOk) {
        NUXO_ERROR("Couldn't get stream id or exec ctx id for pg %s", nameOrFiledName(pg).c_str());
        return status;
    }
    unsigned int count = 0;
    forEachOfType(&pg, kTypeKernel, [&](const IGraphConfig&) {
        const auto [entry, isNew] = mExecCtxMap.try_emplace(context); // the first one is counted by that
        if (!isNew) ++entry->second.count;
        ++count;
        return true;
    });
    return createPerPgKernelListStructures(&pg, count);
}

int ZmtTevUtils::createKernelListStructures()
{
    mIndexMap.clear();
    mPools.clear();
    for (auto& [context, array] : mExecCtxMap) {
        const auto index = static_cast<uint32_t>(mPools.size());
        array.kernels = std::make_unique<qv_isp_zmt_run_kernels[]>(array.count);
        mPools.push_back({createRecords(array.count), createRecords(array.count)});
        NUXO_DEBUG("Allocated %d kernels for exec ctx %d. Index: %d", static_cast<int>(array.count), context,
                   static_cast<int>(index));
        mIndexMap.emplace(context, index);
    }
    return StatusOk;
}

int ZmtTevUtils::createPerPgKernelListStructures(const IGraphConfig* pgNode, unsigned int kernelCount)
{
    KernelArray array;
    array.kernels = std::make_unique<qv_isp_zmt_run_kernels[]>(kernelCount);
    array.count = kernelCount;
    NUXO_DEBUG("Allocated %d kernels for pg %s", static_cast<int>(kernelCount), nameOrFiledName(*pgNode).c_str());
    mPgMap.emplace(pgNode, std::move(array));
    return StatusOk;
}

int ZmtTevUtils::fillStreamChains(const StreamIndex& streams, StreamChains& chains, IGraphConfig& source)
{
    ChainWalk walk{source, streams, {}, {}};
    for (auto& [sinkContext, chain] : chains) {
        NUXO_DEBUG("Handling stream-chain ctx %d", sinkContext);
        if (!isTraced()) extendUpstream(streams, walk.handledContexts, chain);
        for (auto link = chain.rbegin(); link != chain.rend(); ++link) {
            const auto [context, port] = *link;
            NUXO_DEBUG("Handling stream port ctx-%d - %s", context, nameOrFiledName(*port).c_str());
            if (walk.handledContexts.count(context) != 0) continue;
            const int status = fillContext(context, port, walk);
            if (status != StatusOk) return status;
            walk.handledContexts.insert(context);
        }
    }
    return StatusOk;
}

int ZmtTevUtils::fillContext(int context, IGraphConfig* port, ChainWalk& walk)
{
    const int found = findInputHistory(context, port, walk);
    if (found != StatusOk) return found;
    const auto array = mExecCtxMap.find(context);
    if (array == mExecCtxMap.end()) {
        NUXO_ERROR("Could not find the exec ctx %d in the run kernels map", context);
        return StatusBadArgument;
    }
    const int populated =
        populate(context, array->second.kernels.get(), mIndexMap.at(context), walk.histories, &walk.streams);
    if (populated == StatusOk) return StatusOk;
    NUXO_ERROR("Creating kernel list for exec ctx id %d failed", context);
    return StatusMissingObject;
}

// The frame comes from another context, whose port has a history by then, or from the source.
int ZmtTevUtils::findInputHistory(int context, IGraphConfig* port, ChainWalk& walk)
{
    IGraphConfig* input = nullptr;
    if (findInputPort(walk.streams, context, &input) != StatusOk) {
        if (takeSourceHistory(port, walk)) return StatusOk;
        NUXO_ERROR("No Input port or source in stream %d", context);
        return StatusMissingData;
    }
    IGraphConfig* peer = nullptr;
    if (resolvePeer(input, &peer) != StatusOk) {
        NUXO_ERROR("No input peer for stream %d", context);
        return StatusMissingData;
    }
    const auto stored = walk.histories.find(peer);
    if (stored != walk.histories.end()) {
        mInputHistory = stored->second;
        return StatusOk;
    }
    if (takeSourceHistory(peer, walk)) return StatusOk;
    NUXO_ERROR("No kernel history or source in stream %d", context);
    return StatusMissingData;
}

// Lets the source feed the context through the port.
bool ZmtTevUtils::takeSourceHistory(IGraphConfig* port, ChainWalk& walk)
{
    qv_isp_zmt_resolution_info history = {};
    if (NUXO::sourceGetResolutionHistory(history, walk.source) != StatusOk) return false;
    walk.histories[port] = history;
    mSourceHistory = history;
    mInputHistory = history;
    return true;
}

} // namespace NUXO
