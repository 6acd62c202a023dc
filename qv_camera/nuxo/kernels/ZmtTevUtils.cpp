// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/kernels/KernelSteps.h>
#include <nuxo/kernels/ZmtTevUtils.h>
#include <nuxo/tree/NodeReading.h>
#include <nuxo/tree/TypeNames.h>

#include <algorithm>

namespace NUXO {

namespace {

constexpr const char* kKernelLink = "klink";

bool hasKernelLink(const IGraphConfig& programGroup)
{
    NodeIterator byKey(&programGroup);
    NodeIterator byType(&programGroup); // a link with a name is filed under that
    return byKey.iterateByUid(NUXO_KEY_KLINK) != nullptr || byType.iterateNodes(NUXO_KEY_TYPE, kKernelLink) != nullptr;
}

bool anyKernelLink(const IGraphConfig& root)
{
    bool found = false;
    forEachOfType(&root, kTypeProgramGroup, [&found](const IGraphConfig& programGroup) {
        found = hasKernelLink(programGroup);
        return !found;
    });
    return found;
}

using RecordsByUuid = std::map<uint32_t, const qv_isp_zmt_run_kernels*>;

// Copies the record of a kernel to the place that its id names.
int copyRecord(const IGraphConfig& kernel, const RecordsByUuid& records, const qv_isp_zmt_program_group& pg)
{
    int uuid = 0;
    int id = 0;
    if (!fetch(kernel, NUXO_KEY_PAL_UUID, uuid) || !fetch(kernel, NUXO_KEY_ID, id) || id < 0 ||
        static_cast<uint32_t>(id) >= pg.kernel_count) {
        NUXO_ERROR("Failed to get pal uuid or kernel id.");
        return StatusBadState;
    }
    const auto record = records.find(static_cast<uint32_t>(uuid));
    if (record != records.end()) {
        pg.run_kernels[id] = *record->second;
    } else {
        NUXO_WARN("Could not find the record of the kernel with pal uuid %d", uuid);
    }
    return StatusOk;
}

} // namespace

void reportNotInitialized()
{
    NUXO_ERROR("Error: ZmtTevUtils not initialized.");
}

ZmtTevUtils::ZmtTevUtils(bool useStreamId) : mUseStreamId(useStreamId), mGraphUtil(std::in_place)
{
}

ZmtTevUtils::~ZmtTevUtils() = default;

int ZmtTevUtils::initTevUtils(const IGraphConfig* graph)
{
    if (graph == nullptr) {
        NUXO_ERROR("GC Handle NULL");
        return StatusBadArgument;
    }
    return unlessNoMemory<int>(StatusNoMemory, [this, graph] { return setUp(*graph); });
}

int ZmtTevUtils::setUp(const IGraphConfig& graph)
{
    forgetGraph();
    const IGraphConfig* const root = graph.getRoot();
    if (root == nullptr) {
        NUXO_ERROR("GC Handle root is NULL");
        return StatusBadArgument;
    }
    mIspUtils = IspUtils::Factory(&graph);
    if (mIspUtils == nullptr) {
        NUXO_ERROR("ISP utils init failed");
        return StatusMissingObject;
    }
    mRoot = root; // from here on questions about the graph work, even if its records cannot be filled
    mVersion = mIspUtils->getKvaVersion();
    if (!isOnAnalysisPath() && anyKernelLink(*mRoot)) mVersion = GdfVersionKVA6;
    return isOnAnalysisPath() ? startAnalysis() : startKernelLists();
}

void ZmtTevUtils::forgetGraph()
{
    deleteKernelInfo();
    mGraphUtil.emplace();
    mIspUtils.reset();
    mRoot = nullptr;
    mVersion = GdfVersionNone;
    mSourceHistory = {};
    mInputHistory = {};
}

int ZmtTevUtils::startAnalysis()
{
    return mGraphUtil->init(groupingKey(), mRoot, static_cast<GdfVersion>(mVersion));
}

int ZmtTevUtils::startKernelLists()
{
    const int status = generateKernelListsForExecCtxs();
    if (status != StatusOk) NUXO_ERROR("Generating kernel lists failed");
    NUXO_DEBUG("TEV utils initialized with %lu exec contexts", static_cast<unsigned long>(mExecCtxMap.size()));
    for (const auto& [context, array] : mExecCtxMap)
        NUXO_DEBUG("TEV utils exec-context %d has %d kernels", context, static_cast<int>(array.count));
    return status;
}

bool ZmtTevUtils::isInitialized() const
{
    if (mRoot == nullptr) reportNotInitialized();
    return mRoot != nullptr;
}

bool ZmtTevUtils::detectNewGraphVersion()
{
    if (mIspUtils == nullptr) {
        reportNotInitialized();
        return false;
    }
    mVersion = mIspUtils->getKvaVersion();
    return isOnAnalysisPath();
}

bool ZmtTevUtils::nodesHaveKernelLinks()
{
    const bool found = mRoot != nullptr && unlessNoMemory<bool>(false, [this] { return anyKernelLink(*mRoot); });
    if (found) mVersion = GdfVersionKVA6;
    return found;
}

void ZmtTevUtils::getProgramGroup(int id, qv_isp_zmt_program_group& pg)
{
    pg.kernel_count = 0;
    if (isOnAnalysisPath()) {
        static_cast<void>(mGraphUtil->getTevData(id, pg)); // on failure the count stays 0
        return;
    }
    if (id < 0) {
        NUXO_ERROR("Invalid stream id %d", id);
        return;
    }
    const auto entry = mExecCtxMap.find(id);
    if (entry == mExecCtxMap.end()) {
        NUXO_ERROR("No kernels found with stream id %d", id);
        return;
    }
    pg = {entry->second.size(), entry->second.kernels.get(), 0};
}

int ZmtTevUtils::getProgramGroup(const IGraphConfig* pgNode, qv_isp_zmt_program_group& pg)
{
    if (pgNode == nullptr) {
        NUXO_ERROR("Invalid parameter provided (nullptr)");
        return StatusBadArgument;
    }
    pg = {};
    if (isOnAnalysisPath()) return mGraphUtil->getPgTevData(pgNode, pg);
    return unlessNoMemory<int>(StatusNoMemory, [&] { return collectProgramGroup(*pgNode, pg); });
}

// Of records with one uuid the first counts.
const std::map<uint32_t, const qv_isp_zmt_run_kernels*>& ZmtTevUtils::recordsByUuid(KernelArray& array) const
{
    if (array.indexedFilling == mFilling) return array.byUuid;
    array.byUuid.clear();
    for (uint32_t i = 0; i < array.size(); ++i) array.byUuid.emplace(array.kernels[i].kernel_uuid, &array.kernels[i]);
    array.indexedFilling = mFilling;
    return array.byUuid;
}

int ZmtTevUtils::collectProgramGroup(const IGraphConfig& pgNode, qv_isp_zmt_program_group& pg)
{
    const auto entry = mPgMap.find(&pgNode);
    if (entry == mPgMap.end()) {
        NUXO_ERROR("Could not find the PG %s in the PG memory pool map", nameOrFiledName(pgNode).c_str());
        return StatusBadArgument;
    }
    pg = {entry->second.size(), entry->second.kernels.get(), 0};
    std::fill_n(pg.run_kernels, pg.kernel_count, qv_isp_zmt_run_kernels{}); // nothing stays from an earlier call

    int stream = -1;
    const bool hasStream = fetch(pgNode, NUXO_KEY_STREAM_ID, stream);
    const auto context = mExecCtxMap.find(stream);
    if (!hasStream || context == mExecCtxMap.end()) {
        NUXO_ERROR("Could not find the stream id %d. Cannot get kernel count.", stream);
        return StatusBadArgument;
    }
    const RecordsByUuid& records = recordsByUuid(context->second);
    int status = StatusOk;
    forEachOfType(&pgNode, kTypeKernel, [&](const IGraphConfig& kernel) {
        status = copyRecord(kernel, records, pg);
        return status == StatusOk;
    });
    return status;
}

} // namespace NUXO
