// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_KERNELS_ZMT_TEV_UTILS_H
#define NUXO_KERNELS_ZMT_TEV_UTILS_H

#include <qv_tools/qv_export.h>

#include <nuxo/analysis/GraphUtil.h>
#include <nuxo/histories/SensorModeInfo.h>
#include <nuxo/isp/IspUtils.h>
#include <nuxo/records/KernelConfigContainer.h>
#include <nuxo/records/qv_isp_zmt_run_kernels.h>
#include <nuxo/records/qv_view_mbr_limits.h>
#include <nuxo/tree/IGraphConfig.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace NUXO {

/// The run-kernel records of a built graph, for the parameter library.
///
/// Graphs of generation 5 and earlier are filled here, one array an execution context (or stream); newer ones, and those
/// whose program groups carry kernel links, by an embedded GraphUtil, to which the questions then forward.
///
/// Records that are handed out belong to the object and stay valid until its next initialisation (generating the lists
/// again is one) or its destruction; asking for a program group again refills its records. The
/// graph must live as long as the object is in use. One object belongs to one thread at a time; the dumps share one buffer of
/// the process. Nothing is thrown.
class QV_EXPORT ZmtTevUtils {
public:
    using SensorModeInfo = NUXO::SensorModeInfo;

    /// What is kept of a kernel while the array of its context is filled.
    struct KernelInfo {
        int32_t rcb = 0;           ///< changes the resolution
        int32_t branchPoint = 0;   ///< names the branch that starts behind the kernel, 0 when none does
        int32_t sinkPort = -1;     ///< `id` of the port that the kernel feeds, -1 when it feeds none
        int32_t restorePoint = -1; ///< branch that the kernel continues, -1 for the kernel before it
        IGraphConfig* sinkPortNode = nullptr;
        IGraphConfig* sourceNode = nullptr; ///< what `source` names
    };

    /// Histories of the frames that leave program groups and sources, by port.
    using PortHistories = std::map<IGraphConfig*, qv_isp_zmt_resolution_info>;

    /// @param useStreamId  whether program groups are told apart by `stream_id` or by `exec_ctx_id`
    explicit ZmtTevUtils(bool useStreamId);
    ~ZmtTevUtils();
    ZmtTevUtils(const ZmtTevUtils&) = delete;
    ZmtTevUtils& operator=(const ZmtTevUtils&) = delete;

    // Set-up.

    /// Analyses a graph and fills its records; what an earlier call built is released.
    ///
    /// @param graph  the root of a built graph, not owned
    /// @return       StatusOk; StatusBadArgument for null, without a root, or when a chain of streams leads to a context
    ///               without kernels; StatusMissingObject without version utilities (also when memory for them is exhausted),
    ///               for a sink without peer, or when an array could not be filled; StatusMissingData for a program group
    ///               without the attribute that groups them (StatusNotFound if it is of another kind), for a sink without
    ///               stream, or for a missing history; StatusBadState without a source; the status of GraphUtil::init;
    ///               StatusNoMemory
    int initTevUtils(const IGraphConfig* graph);

    /// Asks the version utilities for the version and keeps it; tells whether it is greater than 5. False, with an error,
    /// before initTevUtils.
    bool detectNewGraphVersion();

    /// Whether a program group has a child `klink`; the version is then 6 from now on.
    bool nodesHaveKernelLinks();

    /// Finds the streams from their sinks upwards, allocates the arrays and fills them. What was there is released.
    ///
    /// @return as initTevUtils
    int generateKernelListsForExecCtxs();

    // Questions about streams.

    /// Appends the `stream_id` values that are not yet in @p ids, of sinks or of program groups (in generation 7 compute
    /// blocks). StatusOk; StatusNoMemory.
    int getStreamIds(std::vector<int>& ids, bool fromSinks) const;

    /// Appends the values of one integer attribute of all nodes of a type that are not yet in @p out. StatusOk;
    /// StatusNoMemory.
    int collectNodesIntAttribute(std::vector<int>& out, unsigned int key, unsigned int nodeType) const;

    /// The `stream_id` of what feeds the program groups of a stream.
    ///
    /// @param peer  receives the port upstream as soon as it is known; may be null
    /// @return      -1 when there is none, and when memory is exhausted
    int getUpstreamStreamId(int streamId, IGraphConfig** peer);

    // Records.

    /// The records of one stream or execution context. Without it the `kernel_count` is 0 and the rest untouched.
    void getProgramGroup(int id, qv_isp_zmt_program_group& pg);

    /// The records of one program group. After a failure that concerns a context or kernel @p pg holds what is known so far.
    ///
    /// @return StatusOk; StatusBadArgument for null, an unknown group or context; StatusBadState for a kernel without
    ///         `pal_uuid` or `id`, or with an `id` outside of the group; StatusNoMemory
    int getProgramGroup(const IGraphConfig* pgNode, qv_isp_zmt_program_group& pg);

    /// Fills the records of one context.
    ///
    /// @param ctx            `stream_id` of the program groups
    /// @param kernels        the records
    /// @param index          number of the context's pool, whose size bounds the records
    /// @param portHistories  histories of ports; those of sink ports are added
    /// @return               StatusOk; StatusBadArgument for null, an unknown pool, kernels without values or sizes, or an
    ///                       unknown sink port; StatusBadState for bad kernel ids; StatusMissingObject for a history of size
    ///                       0; StatusMissingData when nothing is known of what feeds a group; the status of reading
    ///                       `stream_id`; StatusNoMemory
    int populateKernelArray(int ctx, qv_isp_zmt_run_kernels* kernels, unsigned int index, PortHistories& portHistories);

    /// Finds the port that a kernel feeds, below the kernel or else its program group; notes the kernel if the port is off.
    ///
    /// @return StatusOk; StatusBadArgument without such a port; StatusNoMemory
    int handleSinkPort(KernelInfo& info, const IGraphConfig* kernelNode, std::vector<int>& disabledSinks, int kernelId);

    /// Whether kernel ids can be 0..n-1, told by their sum modulo 2^32. StatusOk or StatusBadState.
    int kernelIdSanityCheck(unsigned int idSum, unsigned int kernelCount);

    // Reading kernels.

    /// The values of a kernel. Null outputs are skipped; those before a failure stay written.
    ///
    /// @param metadata      four entries: receives the integers of the comma-separated text `metadata`, 0 for what is
    ///                      absent or no number; further ones are left out with a warning
    /// @param enable        receives `enabled`, 1 when absent
    /// @param rcb           receives `rcb`, 0 when absent
    /// @param branchPoint   receives `branch_point`, 0 when absent
    /// @param sinkPort      receives `sink_port`, -1 when absent
    /// @param restorePoint  receives `restore_point`, -1 when absent
    /// @return              StatusOk; StatusBadArgument for null; the status of reading `pal_uuid` or `id`; StatusNoMemory
    static int kernelGetValues(const IGraphConfig* kernel, int* palUuid, int* id, unsigned int* metadata, int* enable,
                               int* rcb, int* branchPoint, int* sinkPort, int* restorePoint);

    /// Whether the kernel states its own sizes: `input` has a `width`, and `output` has one or has child nodes.
    static bool kernelHasResolutions(const IGraphConfig* kernel);

    /// The resolutions of the first output: zero on failure.
    ///
    /// @return StatusOk; StatusBadArgument for null; StatusMissingData when a size is missing; StatusNoMemory
    static int kernelGetResolutions(const IGraphConfig* kernel, qv_isp_zmt_resolution_info& resolution);

    /// The resolutions of all outputs by their `id`, else `name`, else "0"; of equal ones the first counts.
    ///
    /// @return as above, but StatusOk without any output
    static int kernelGetResolutions(const IGraphConfig* kernel,
                                    std::map<std::string, qv_isp_zmt_resolution_info>& resolutions);

    /// Stores the bits per pixel of the kernel's `input` and `output`, 0 when absent. StatusOk; StatusBadArgument for null.
    static int kernelGetBppInfo(const IGraphConfig* kernel, qv_isp_zmt_run_kernels& runKernel);

    // Histories of sources.

    /// The history of a sensor, a test pattern generator or a buffer source, told by the name under which it is filed.
    ///
    /// @return StatusOk; StatusNotSupported for another name; otherwise the status of the calculation
    static int sourceGetResolutionHistory(qv_isp_zmt_resolution_info& history, IGraphConfig& source);

    /// Histories between the pixel array and the first program group.
    ///
    /// @return StatusOk; StatusMissingObject without `port_0` or without the back end's `output`; the status of reading a
    ///         size; StatusNoMemory
    static int calculateSensorResolutionHistory(IGraphConfig& sensor, qv_isp_zmt_resolution_info& history);
    static int calculateTPGResolutionHistory(IGraphConfig& tpg, qv_isp_zmt_resolution_info& history);
    static int calculateBufSrcResolutionHistory(IGraphConfig& bufferSource, qv_isp_zmt_resolution_info& history);

    /// What the capture back end behind a source's port takes in and gives out; zero without one.
    ///
    /// @return StatusOk; StatusMissingObject when the back end lacks `output`; the status of reading a size; StatusNoMemory
    static int getCsiDimensions(IGraphConfig& sourcePort, qv_isp_zmt_resolution_info& csi);

    /// The sensor mode that was merged into the sensor. A stage that lacks its input or output ends the read with StatusOk.
    ///
    /// @return StatusOk; the status of reading a size or factor; StatusNoMemory
    static int getSensorModeInfo(IGraphConfig& sensor, SensorModeInfo& info);

    /// The latest history of a source computed during initialisation, zero before. StatusOk.
    int getSourceResolutionHistory(qv_isp_zmt_resolution_info& history);

    // Calibration, exposures, limits and routing.

    /// The source's `cmc_tag`.
    ///
    /// @return StatusOk; StatusMissingObject before initTevUtils or without a source; StatusBadState without a tag;
    ///         StatusNoMemory
    int getSensorCmcId(std::string& cmcId);

    /// The source's `conversion_gain` and `dol_mode`. Without a gain the mode is empty; without a mode the gain is 1.
    ///
    /// @return StatusOk; StatusMissingObject before initTevUtils or without a source; StatusNoMemory
    int getDolInfo(float& conversionGain, std::string& dolMode);

    /// The 56 MBR limits of one stream. Values that the graph does not give are 0.
    ///
    /// @return StatusOk; StatusMissingObject before initTevUtils or for null; StatusBadState without limits for the stream,
    ///         with fewer numbers or with text that is none; the status of reading `value`; StatusNoMemory
    int getMbrData(int streamId, qv_view_mbr_limits_t* limits);

    /// For each stream id the `pg_id` and RBM text of its program groups (in generation 7 compute blocks).
    ///
    /// @return StatusOk; StatusNoMemory
    int getRoutingInfo(std::map<int, std::vector<std::tuple<int, std::string>>>& routing);

    // Arithmetic and text of records.

    /// The record as text, in a buffer that every dump overwrites.
    static char* resInfoToStr(qv_isp_zmt_resolution_info& info);

    /// Adds @p crop * @p multiplier / @p divisor to each side of @p total: in sixteenths, rounded down at the end.
    static void accumulateCrop(qv_rectangle& total, const qv_rectangle& crop, int divisor, int multiplier);

    /// Applies the configurations whose uuid is the kernel's, first to last.
    static void applyKernelConfigs(const std::vector<KernelConfigContainer>& configs, qv_isp_zmt_run_kernels& kernel);

    /// Log the resolutions of one kernel, an array of records, the records of one context, a history, histories of ports.
    static void dumpResInfo(qv_isp_zmt_run_kernels& kernel);
    static void dumpKernels(qv_isp_zmt_run_kernels* kernels, unsigned int count);
    void dumpKernels(int execCtxId);
    static void dumpResHistory(qv_isp_zmt_resolution_info& history, const char* name);
    static void dumpPortResHistoryMap(PortHistories& map);

private:
    friend struct ZmtTevUtilsAccess; // the tests' way to the single steps

    /// The resolution records of one context, one of each kind a kernel. Run-kernel records point into it.
    struct QV_LOCAL ResolutionMemPool {
        std::vector<std::unique_ptr<qv_isp_zmt_resolution_info>> histories;
        std::vector<std::unique_ptr<qv_isp_zmt_resolution_info>> infos;
    };

    struct QV_LOCAL KernelArray {
        std::unique_ptr<qv_isp_zmt_run_kernels[]> kernels; ///< null until all kernels are counted
        uint32_t count = 1;
        std::map<uint32_t, const qv_isp_zmt_run_kernels*> byUuid; ///< the first record of each uuid
        uint64_t indexedFilling = 0;                              ///< the filling that byUuid shows

        uint32_t size() const { return kernels == nullptr ? 0 : count; }
    };

    /// From the context that feeds a sink upwards: each context and the port through which it feeds the one before.
    using StreamChain = std::vector<std::pair<int, IGraphConfig*>>;
    using StreamChains = std::map<int, StreamChain>;

    /// The program groups of one stream.
    struct QV_LOCAL StreamGroups {
        std::vector<IGraphConfig*> all;
        size_t readableCount = 0; ///< those before the graph's first group without a stream
    };

    /// The program groups of a graph by stream.
    struct QV_LOCAL StreamIndex {
        std::map<int, StreamGroups> groups;
        const IGraphConfig* unreadable = nullptr; ///< the first group without a stream
        int status = 0;                           ///< of reading its stream
    };

    class QV_LOCAL ArrayPopulation;
    struct QV_LOCAL ChainWalk;

    // Set-up. These steps and those below let std::bad_alloc out.
    QV_LOCAL int setUp(const IGraphConfig& graph);
    QV_LOCAL void forgetGraph();
    QV_LOCAL int startAnalysis();
    QV_LOCAL int startKernelLists();
    QV_LOCAL uint32_t groupingKey() const { return mUseStreamId ? NUXO_KEY_STREAM_ID : NUXO_KEY_EXEC_CTX_ID; }
    QV_LOCAL bool isOnAnalysisPath() const { return mVersion > 5; }
    QV_LOCAL bool isInitialized() const;

    // Kernel lists.
    QV_LOCAL void deleteKernelInfo();
    QV_LOCAL int generateKernelLists();
    QV_LOCAL int countKernels();
    QV_LOCAL int countKernelsOf(const IGraphConfig& pg);
    QV_LOCAL int createKernelListStructures();
    QV_LOCAL int createPerPgKernelListStructures(const IGraphConfig* pgNode, unsigned int kernelCount);
    QV_LOCAL const std::map<uint32_t, const qv_isp_zmt_run_kernels*>& recordsByUuid(KernelArray& array) const;
    QV_LOCAL int collectProgramGroup(const IGraphConfig& pgNode, qv_isp_zmt_program_group& pg);

    // Streams.
    QV_LOCAL StreamIndex indexStreams() const;
    QV_LOCAL int getStreamChains(const StreamIndex& streams, StreamChains& chains) const;
    QV_LOCAL static int addStreamChain(const IGraphConfig& sink, const StreamIndex& streams, StreamChains& chains);
    QV_LOCAL static void extendUpstream(const StreamIndex& streams, const std::set<int>& knownContexts,
                                        StreamChain& chain);
    QV_LOCAL static int findInputPort(const StreamIndex& streams, int streamId, IGraphConfig** port);
    QV_LOCAL int fillStreamChains(const StreamIndex& streams, StreamChains& chains, IGraphConfig& source);
    QV_LOCAL int fillContext(int context, IGraphConfig* port, ChainWalk& walk);
    QV_LOCAL int findInputHistory(int context, IGraphConfig* port, ChainWalk& walk);
    QV_LOCAL bool takeSourceHistory(IGraphConfig* port, ChainWalk& walk);

    // Population.
    QV_LOCAL int populate(int ctx, qv_isp_zmt_run_kernels* kernels, unsigned int index, PortHistories& portHistories,
                          const StreamIndex* streams);
    QV_LOCAL int getResHistoryForIntermediatePg(const IGraphConfig* pg, const PortHistories& portHistories,
                                                qv_isp_zmt_resolution_info& history) const;

    // Limits and routing.
    QV_LOCAL const IGraphConfig* findSource() const;

    std::map<int, uint32_t> mIndexMap; ///< from execution context to its pool
    std::vector<ResolutionMemPool> mPools;
    std::map<const IGraphConfig*, KernelArray> mPgMap;
    std::map<int, KernelArray> mExecCtxMap;
    qv_isp_zmt_resolution_info mSourceHistory = {};
    const IGraphConfig* mRoot = nullptr;
    bool mUseStreamId;
    std::optional<GraphUtil> mGraphUtil; ///< always there; renewed with each graph
    int32_t mVersion = 0;
    std::shared_ptr<IspUtils> mIspUtils;
    uint64_t mFilling = 1;                         ///< number of the latest filling of an array
    qv_isp_zmt_resolution_info mInputHistory = {}; ///< of the stream whose array is being filled
};

} // namespace NUXO

#endif
