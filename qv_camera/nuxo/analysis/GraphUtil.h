// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_ANALYSIS_GRAPH_UTIL_H
#define NUXO_ANALYSIS_GRAPH_UTIL_H

#include <qv_tools/qv_export.h>

#include <nuxo/analysis/InnerGraphNode.h>
#include <nuxo/isp/GdfVersion.h>
#include <nuxo/records/qv_isp_zmt_run_kernels.h>
#include <nuxo/tree/IGraphConfig.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace NUXO {

/// Analyses a built graph of generation 6 or later, or one whose program groups carry kernel links, and fills the run-kernel
/// records of its subgraphs and program groups.
///
/// A subgraph is the nodes with one stream id (or execution-context id). Inside it kernels, muxes, demuxes, splits and ports
/// form an inner graph, through which the resolution history travels from the sources to the sinks.
///
/// Init once per graph; the object may be used again for other graphs. It belongs to one thread at a time and keeps pointers
/// into the graph, which must live as long. Nothing is thrown.
class QV_EXPORT GraphUtil {
public:
    GraphUtil();
    ~GraphUtil();
    GraphUtil(const GraphUtil&) = delete;
    GraphUtil& operator=(const GraphUtil&) = delete;

    /// Analyses a graph, allocates and fills its records. What an earlier call built is released.
    ///
    /// @param subgraphKey  NUXO_KEY_STREAM_ID or NUXO_KEY_EXEC_CTX_ID: what tells subgraphs apart
    /// @param settings     root of the built graph, not owned
    /// @param version      6 or later: in generation 7 compute blocks take the place of program groups
    /// @return             StatusOk; StatusBadArgument for wrong arguments, with nothing changed; StatusMissingObject without
    ///                     `graph` or source, for an inconsistent size or a link to the inactive input of a mux (generation
    ///                     6); StatusBadState for two nodes of one name, a kernel without identity, or a link to nothing;
    ///                     StatusMissingData when records and kernels do not agree; what reading the source gives, such as
    ///                     StatusNotSupported for one of another kind or StatusNotFound without sizes; StatusNoMemory
    int init(unsigned int subgraphKey, const IGraphConfig* settings, GdfVersion version);

    /// Adds the subgraph ids of the graph's nodes; a node without one adds -1. Stops early when memory is exhausted.
    void getAvailableSubgraphs(std::set<int>& ids);

    /// The records of one subgraph, in the order of the texts "group:kernel".
    ///
    /// @param pg  receives pointers that stay valid until the next init or the destructor; untouched on failure
    /// @return    StatusOk; StatusBadState for an unknown id
    int getTevData(int id, qv_isp_zmt_program_group& pg);

    /// The records of one program group, in kernel-id order.
    ///
    /// @param pgNode  a program group of the graph
    /// @param pg      receives pointers that stay valid until the next init or the destructor
    /// @return        StatusOk; StatusBadArgument for null, an unknown program group, or a kernel without `pal_uuid`;
    ///                StatusNoMemory
    int getPgTevData(const IGraphConfig* pgNode, qv_isp_zmt_program_group& pg);

    /// The history that the latest source of the graph hands to its subgraph, zero before init. StatusOk always.
    int getSourceResolutionHistory(qv_isp_zmt_resolution_info& history) const;

    /// The kernels, routing elements and ports of one subgraph with their links, in name order. After a failed init: what was
    /// built so far, with the histories up to the failure.
    ///
    /// @param nodes  cleared, then filled
    /// @return       StatusOk; StatusBadState for an unknown id; StatusNoMemory
    int getInnerGraph(int id, std::vector<InnerGraphNode>& nodes) const;

    /// Logs all records, or those of one subgraph in data-flow order.
    void dumpTevStructs();
    void dumpKernels(int id);

private:
    friend struct GraphUtilAccess; // the tests' way to the single steps

    struct BaseGraphNode;

    /// Neighbours in the order of their creation, which unlike their addresses is the same on every run.
    struct QV_LOCAL CreationOrder {
        bool operator()(const BaseGraphNode* a, const BaseGraphNode* b) const;
    };
    using Links = std::map<BaseGraphNode*, std::string, CreationOrder>;

    /// What outer, meta and inner graph have in common. Links are plain pointers; the maps that hold the nodes own them.
    struct QV_LOCAL BaseGraphNode {
        BaseGraphNode();
        BaseGraphNode(const BaseGraphNode&) = delete;
        BaseGraphNode& operator=(const BaseGraphNode&) = delete;

        /// Links that exist already keep their port.
        void addChild(BaseGraphNode* child, std::string port);
        void addParent(BaseGraphNode* parent, std::string port);

        /// The first parent that is neither visited nor needless, null when there is none. Parents only come to be visited
        /// during a walk, so the search goes on where it last stopped.
        template <typename IsNeedless> const BaseGraphNode* findPendingParent(IsNeedless isNeedless);

        /// Removes this node from its neighbours' links; its own stay.
        void emanzipate();

        std::string name;
        IGraphConfig* node = nullptr; ///< what it stands for
        bool visited = false;
        BaseGraphNode* pendingParent = nullptr; ///< the last one that a walk waited for
        Links parents;                          ///< in the outer graph with the neighbours' ports
        Links children;                         ///< in the outer graph with the neighbours' ports
        const uint64_t sequence;
    };

    /// A node of the settings graph.
    struct QV_LOCAL GraphNode : BaseGraphNode {
        uint32_t type = NUXO_KEY_PROGRAM_GROUP;
        int32_t streamId = -1;
        int32_t execCtxId = -1;
    };

    enum ImagingNodeType : int { KERNEL, MUX, DEMUX, SPLIT, INPUT_PORT, OUTPUT_PORT, ANY };

    /// Bits of ImagingNode::flags.
    enum ImagingNodeFlag : uint32_t {
        RcbKernel = 1,    ///< changes the resolution
        SameNodeEnd = 2,  ///< end of a connection from a program group to itself
        DisabledNode = 4, ///< histories do not pass
    };

    using ResolutionMap = std::map<std::string, qv_isp_zmt_resolution_info>;

    /// A node of an inner graph. A kernel link labels both ends with the node's own port, a connection with the whole text.
    struct QV_LOCAL ImagingNode : BaseGraphNode {
        ImagingNodeType type = ANY;
        uint32_t flags = 0;
        ResolutionMap resInfos;                     ///< of a kernel, by output
        ResolutionMap resHistories;                 ///< what leaves the node, by output
        qv_isp_zmt_resolution_info resHistory = {}; ///< what arrives
        qv_isp_zmt_run_kernels runKernel = {};
        qv_isp_zmt_run_kernels* tevRunKernel = nullptr; ///< its record in the subgraph's array
        int32_t activePort = -1;                        ///< of a mux or demux
    };

    /// A subgraph, as a node of the graph of subgraphs.
    struct QV_LOCAL SubGraphInfo : BaseGraphNode {
        uint32_t type = NUXO_KEY_STREAM_ID;
        int32_t id = 0;
        int32_t streamId = -1;
        int32_t tuningMode = 0;
        std::vector<GraphNode*> nodes;
        std::vector<IGraphConfig*> pgs;
        std::vector<IGraphConfig*> inputPorts; ///< through which other subgraphs feed this one
        std::vector<IGraphConfig*> outputPorts;
        uint64_t kernelCount = 0;
        qv_isp_zmt_run_kernels* tevRunKernels = nullptr;
        std::map<std::string, std::shared_ptr<ImagingNode>> imagingNodes;
    };

    /// A `klink` taken apart. An end without port is a port of the program group itself.
    struct QV_LOCAL KernelLink {
        explicit KernelLink(IGraphConfig& klink);
        std::string toStr() const;

        std::string srcNode;
        std::string srcPort;
        std::string dstNode;
        std::string dstPort;
    };

    /// The records of one subgraph or one program group. The vectors keep their sizes while records point into them.
    struct QV_LOCAL KernelInfoMemPool {
        std::vector<qv_isp_zmt_run_kernels> kernels;
        std::vector<qv_isp_zmt_resolution_info> resInfos; ///< the arrays of all kernels, one after another
        std::vector<qv_isp_zmt_resolution_info> histories;
    };

    /// A record with the id of its kernel.
    struct QV_LOCAL NumberedRecord {
        int id = 0;
        qv_isp_zmt_run_kernels record = {};
    };

    /// Both ends of a `connection`, as texts.
    struct QV_LOCAL ConnectionEnds {
        std::string source;
        std::string sink;
    };

    using Visitor = std::function<int(BaseGraphNode*)>;
    using SubGraphs = std::map<int, std::shared_ptr<SubGraphInfo>>;

    // Outer graph.
    QV_LOCAL int addGraphNode(IGraphConfig& node);
    QV_LOCAL void indexNode(IGraphConfig& node);
    QV_LOCAL int addGraphConnection(IGraphConfig& connection);
    QV_LOCAL int removeUnusedNodes();
    QV_LOCAL static bool isError(int result);
    QV_LOCAL int traverseGraph(BaseGraphNode* start, Visitor& visitor, bool forward);
    QV_LOCAL void resetGraph();
    QV_LOCAL int activeNodeVisitor(BaseGraphNode* node, std::vector<std::string>* activeNodes);
    QV_LOCAL void dumpOuterGraph();
    QV_LOCAL static int printOuterNode(BaseGraphNode* node);
    QV_LOCAL int subgraphIdOf(const GraphNode& node) const;

    // Subgraphs and inner graphs.
    QV_LOCAL int analyzeSubGraphs(SubGraphs& subGraphs);
    QV_LOCAL int analyzeSubGraph(int id, const std::vector<GraphNode*>& nodes, SubGraphs& subGraphs);
    QV_LOCAL int collectNode(SubGraphInfo& sg, GraphNode& node);
    QV_LOCAL int collectInnerGraph(SubGraphInfo& sg);
    QV_LOCAL int getCrossSgInPorts(GraphNode& node, std::vector<IGraphConfig*>& inPorts);
    QV_LOCAL int findCrossSgInPort(const GraphNode& node, const GraphNode& parent, IGraphConfig*& port) const;
    QV_LOCAL int collectPgInnerGraph(SubGraphInfo& sg, IGraphConfig& pg);
    QV_LOCAL int addImagingNode(SubGraphInfo& sg, IGraphConfig& kernel, std::string pgName);
    QV_LOCAL int addRoutingNode(SubGraphInfo& sg, IGraphConfig& node, ImagingNodeType type, std::string pgName);
    QV_LOCAL int addImagingLink(SubGraphInfo& sg, IGraphConfig& klink, IGraphConfig& pg);
    QV_LOCAL std::shared_ptr<ImagingNode> addPortNode(SubGraphInfo& sg, IGraphConfig& port, ImagingNodeType type);
    struct LinkEnd;
    QV_LOCAL int findLinkEnd(SubGraphInfo& sg, IGraphConfig& pg, const LinkEnd& end,
                             std::shared_ptr<ImagingNode>& found);
    QV_LOCAL int collectSourceInnerGraph(SubGraphInfo& sg);
    QV_LOCAL std::vector<size_t> connectionsInto(const SubGraphInfo& sg) const;
    QV_LOCAL int collectInterPgConnections(SubGraphInfo& sg);
    QV_LOCAL int collectSubgraphConnections();
    QV_LOCAL int subgraphConnectionVisitor(BaseGraphNode* node);
    QV_LOCAL void resetInnerGraph(SubGraphInfo& sg, bool checkActive);
    QV_LOCAL void resetMetaGraph();
    QV_LOCAL void dumpSubGraphInfos();
    QV_LOCAL void dumpInnerGraph(int id);
    QV_LOCAL int dumpFromStarts(SubGraphInfo& sg);
    QV_LOCAL static int dumpInnerNodeVisitor(BaseGraphNode* node, ImagingNodeType filter);

    // Resolution histories and disablement.
    QV_LOCAL int resHistoryCalcVisitor(BaseGraphNode* subgraph);
    QV_LOCAL int resHistoryINodeVisitor(BaseGraphNode* node);
    QV_LOCAL int calculateHistories(SubGraphInfo& sg, bool isSource);
    QV_LOCAL int finishHistories(SubGraphInfo& sg);
    QV_LOCAL static ImagingNode* findPortNode(const SubGraphInfo& sg, const IGraphConfig& port);
    QV_LOCAL int seedInput(ImagingNode& port);
    QV_LOCAL int passHistoryFromInput(SubGraphInfo& sg, ImagingNode& port);
    QV_LOCAL int passHistoryFrom(SubGraphInfo& sg, ImagingNode& start);
    QV_LOCAL int applyKernelResolutions(ImagingNode& kernel, const qv_isp_zmt_resolution_info& history);
    QV_LOCAL int calculateSourceResHistory(SubGraphInfo& sg, qv_isp_zmt_resolution_info& history);
    QV_LOCAL int getUpstreamResHistory(ImagingNode& port);
    struct Upstream;
    QV_LOCAL GraphNode* sourceAbove(const SubGraphInfo& sg, const IGraphConfig& port, GraphNode& fallback) const;
    QV_LOCAL static void seedOutput(SubGraphInfo& sg, const IGraphConfig& port,
                                    const qv_isp_zmt_resolution_info& sourceHistory);
    QV_LOCAL int findUpstream(const ImagingNode& port, Upstream& upstream) const;
    QV_LOCAL static const qv_isp_zmt_resolution_info* historyLeaving(const ImagingNode& node);
    QV_LOCAL static const qv_isp_zmt_resolution_info* defaultHistory(const SubGraphInfo& sg);
    QV_LOCAL int getParentHistory(ImagingNode& node, qv_isp_zmt_resolution_info& history);
    QV_LOCAL static bool isEnabled(const BaseGraphNode& node);
    QV_LOCAL static int chooseHistory(ImagingNode& node, const qv_isp_zmt_resolution_info*& found);
    QV_LOCAL static int largestOffer(ImagingNode& node, const qv_isp_zmt_resolution_info*& found);
    QV_LOCAL static std::vector<std::string> outputLabels(const ImagingNode& node);
    QV_LOCAL int getKernelResolutionInfos(ImagingNode& node);
    QV_LOCAL int getUnvisitedInputPortsPeers(SubGraphInfo& sg, std::vector<ImagingNode*>& nodes);
    QV_LOCAL int disableDisconnectedKernels(SubGraphInfo& sg);
    QV_LOCAL int kernelDisconectedVisitor(BaseGraphNode* node, bool downstream);
    QV_LOCAL int disableKernelsToDisabledTerminals(SubGraphInfo& sg);
    QV_LOCAL int disableFromTerminals(SubGraphInfo& sg, bool downstream);
    QV_LOCAL int kernelDisableVisitor(BaseGraphNode* node, bool downstream);

    // Kernel data.
    QV_LOCAL int analyze();
    QV_LOCAL void clearMarks();
    QV_LOCAL void releaseGraph();
    QV_LOCAL int analyzeGraphSettings();
    QV_LOCAL int allocateTevData();
    QV_LOCAL static uint32_t resolutionCountOf(const ImagingNode& kernel);
    QV_LOCAL bool allocateSubGraph(SubGraphInfo& sg);
    QV_LOCAL bool allocateProgramGroups(const SubGraphInfo& sg);
    QV_LOCAL static int collectRecords(const IGraphConfig& pgNode, const SubGraphInfo& sg, size_t limit,
                                       std::vector<NumberedRecord>& records);
    QV_LOCAL const IGraphConfig& ownPg(const IGraphConfig& pgNode) const;
    QV_LOCAL int findPg(const IGraphConfig& pgNode, const SubGraphInfo*& sg, KernelInfoMemPool*& pool) const;
    QV_LOCAL int populateTevData();
    QV_LOCAL int fillTevRunKernels(SubGraphInfo& sg);
    QV_LOCAL static int fillTevRunKernel(const ImagingNode& node);
    QV_LOCAL void deleteTevStructs();

    const IGraphConfig* mSettings = nullptr;
    uint32_t mSubgraphKey = NUXO_KEY_STREAM_ID;
    SubGraphs mSubGraphs;
    std::map<std::string, std::shared_ptr<GraphNode>> mGraphNodes;
    std::vector<IGraphConfig*> mConnections;
    std::map<int, KernelInfoMemPool> mKernelInfoMemPools;
    std::map<int, KernelInfoMemPool> mPgKernelInfoMemPools;
    GdfVersion mGdfVersion = GdfVersionNone;
    uint32_t mPgKey = NUXO_KEY_PROGRAM_GROUP;
    std::vector<ConnectionEnds> mConnectionEnds;                               ///< of mConnections
    std::unordered_map<std::string, std::vector<size_t>> mConnectionsBySink;   ///< by the name of the node they lead to
    std::unordered_map<std::string, std::vector<size_t>> mConnectionsByPort;   ///< by the whole text of the sink
    std::map<std::pair<std::string, std::string>, size_t> mFirstConnections;   ///< by the names of source and sink
    std::vector<IGraphConfig*> mSources;                                       ///< of the whole graph, in its order
    std::map<int, std::vector<IGraphConfig*>> mPgsBySubGraph;                  ///< of the whole graph, in its order
    std::unordered_map<const IGraphConfig*, const SubGraphInfo*> mPgSubGraphs; ///< by program group
    std::unordered_map<const IGraphConfig*, KernelInfoMemPool*> mPgPools;      ///< by program group
    int mNextPgPool = -1; ///< key of the next program group's pool without an id of its own
    qv_isp_zmt_resolution_info mSourceHistory = {};
};

} // namespace NUXO

#endif
