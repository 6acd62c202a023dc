// SPDX-License-Identifier: Apache-2.0
// The parts of the graph analysis that clients cannot reach. Only for programs that link the library's objects.
#ifndef NUXO_TESTS_ANALYSIS_GRAPH_UTIL_ACCESS_H
#define NUXO_TESTS_ANALYSIS_GRAPH_UTIL_ACCESS_H

#include <nuxo/analysis/GraphUtil.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace NUXO {

/// Types, members and single steps of one GraphUtil, under their own names (members without the leading m).
struct GraphUtilAccess {
    using BaseGraphNode = GraphUtil::BaseGraphNode;
    using CreationOrder = GraphUtil::CreationOrder;
    using Links = GraphUtil::Links;
    using GraphNode = GraphUtil::GraphNode;
    using ImagingNode = GraphUtil::ImagingNode;
    using ImagingNodeType = GraphUtil::ImagingNodeType;
    using SubGraphInfo = GraphUtil::SubGraphInfo;
    using KernelLink = GraphUtil::KernelLink;
    using KernelInfoMemPool = GraphUtil::KernelInfoMemPool;
    using ConnectionEnds = GraphUtil::ConnectionEnds;
    using ResolutionMap = GraphUtil::ResolutionMap;
    using Visitor = GraphUtil::Visitor;
    using SubGraphs = GraphUtil::SubGraphs;
    using GraphNodes = std::map<std::string, std::shared_ptr<GraphNode>>;
    using ImagingNodes = std::map<std::string, std::shared_ptr<ImagingNode>>;
    using Pools = std::map<int, KernelInfoMemPool>;

    static constexpr ImagingNodeType KERNEL = GraphUtil::KERNEL;
    static constexpr ImagingNodeType MUX = GraphUtil::MUX;
    static constexpr ImagingNodeType DEMUX = GraphUtil::DEMUX;
    static constexpr ImagingNodeType SPLIT = GraphUtil::SPLIT;
    static constexpr ImagingNodeType INPUT_PORT = GraphUtil::INPUT_PORT;
    static constexpr ImagingNodeType OUTPUT_PORT = GraphUtil::OUTPUT_PORT;
    static constexpr ImagingNodeType ANY = GraphUtil::ANY;

    static constexpr uint32_t RcbKernel = GraphUtil::RcbKernel;
    static constexpr uint32_t SameNodeEnd = GraphUtil::SameNodeEnd;
    static constexpr uint32_t DisabledNode = GraphUtil::DisabledNode;

    explicit GraphUtilAccess(GraphUtil& analysed) : util(analysed) {}

    const IGraphConfig*& settings() const { return util.mSettings; }
    uint32_t& subgraphKey() const { return util.mSubgraphKey; }
    SubGraphs& subGraphs() const { return util.mSubGraphs; }
    GraphNodes& graphNodes() const { return util.mGraphNodes; }
    std::vector<IGraphConfig*>& connections() const { return util.mConnections; }
    Pools& kernelInfoMemPools() const { return util.mKernelInfoMemPools; }
    Pools& pgKernelInfoMemPools() const { return util.mPgKernelInfoMemPools; }
    GdfVersion& gdfVersion() const { return util.mGdfVersion; }
    uint32_t& pgKey() const { return util.mPgKey; }
    std::vector<ConnectionEnds>& connectionEnds() const { return util.mConnectionEnds; }
    std::unordered_map<std::string, std::vector<size_t>>& connectionsBySink() const { return util.mConnectionsBySink; }
    std::unordered_map<const IGraphConfig*, const SubGraphInfo*>& pgSubGraphs() const { return util.mPgSubGraphs; }
    qv_isp_zmt_resolution_info& sourceHistory() const { return util.mSourceHistory; }

    // Outer graph.
    int addGraphNode(IGraphConfig& node) const { return util.addGraphNode(node); }
    int addGraphConnection(IGraphConfig& connection) const { return util.addGraphConnection(connection); }
    int removeUnusedNodes() const { return util.removeUnusedNodes(); }
    int traverseGraph(BaseGraphNode* start, Visitor& visitor, bool forward) const
    {
        return util.traverseGraph(start, visitor, forward);
    }
    void resetGraph() const { util.resetGraph(); }
    int activeNodeVisitor(BaseGraphNode* node, std::vector<std::string>* activeNodes) const
    {
        return util.activeNodeVisitor(node, activeNodes);
    }
    void dumpOuterGraph() const { util.dumpOuterGraph(); }
    static int printOuterNode(BaseGraphNode* node) { return GraphUtil::printOuterNode(node); }
    int subgraphIdOf(const GraphNode& node) const { return util.subgraphIdOf(node); }

    // Subgraphs and inner graphs.
    int analyzeSubGraphs(SubGraphs& subGraphs) const { return util.analyzeSubGraphs(subGraphs); }
    int analyzeSubGraph(int id, const std::vector<GraphNode*>& nodes, SubGraphs& subGraphs) const
    {
        return util.analyzeSubGraph(id, nodes, subGraphs);
    }
    int collectNode(SubGraphInfo& sg, GraphNode& node) const { return util.collectNode(sg, node); }
    int getCrossSgInPorts(GraphNode& node, std::vector<IGraphConfig*>& inPorts) const
    {
        return util.getCrossSgInPorts(node, inPorts);
    }
    int collectPgInnerGraph(SubGraphInfo& sg, IGraphConfig& pg) const { return util.collectPgInnerGraph(sg, pg); }
    int addImagingNode(SubGraphInfo& sg, IGraphConfig& kernel, std::string pgName) const
    {
        return util.addImagingNode(sg, kernel, std::move(pgName));
    }
    int addRoutingNode(SubGraphInfo& sg, IGraphConfig& node, ImagingNodeType type, std::string pgName) const
    {
        return util.addRoutingNode(sg, node, type, std::move(pgName));
    }
    int addImagingLink(SubGraphInfo& sg, IGraphConfig& klink, IGraphConfig& pg) const
    {
        return util.addImagingLink(sg, klink, pg);
    }
    int collectSourceInnerGraph(SubGraphInfo& sg) const { return util.collectSourceInnerGraph(sg); }
    int collectInterPgConnections(SubGraphInfo& sg) const { return util.collectInterPgConnections(sg); }
    int collectSubgraphConnections() const { return util.collectSubgraphConnections(); }
    int subgraphConnectionVisitor(BaseGraphNode* node) const { return util.subgraphConnectionVisitor(node); }
    void resetInnerGraph(SubGraphInfo& sg, bool checkActive) const { util.resetInnerGraph(sg, checkActive); }
    void resetMetaGraph() const { util.resetMetaGraph(); }
    void dumpSubGraphInfos() const { util.dumpSubGraphInfos(); }
    void dumpInnerGraph(int id) const { util.dumpInnerGraph(id); }
    static int dumpInnerNodeVisitor(BaseGraphNode* node, ImagingNodeType filter)
    {
        return GraphUtil::dumpInnerNodeVisitor(node, filter);
    }

    // Resolution histories and disablement.
    int resHistoryCalcVisitor(BaseGraphNode* subgraph) const { return util.resHistoryCalcVisitor(subgraph); }
    int resHistoryINodeVisitor(BaseGraphNode* node) const { return util.resHistoryINodeVisitor(node); }
    int calculateSourceResHistory(SubGraphInfo& sg, qv_isp_zmt_resolution_info& history) const
    {
        return util.calculateSourceResHistory(sg, history);
    }
    int getUpstreamResHistory(ImagingNode& port) const { return util.getUpstreamResHistory(port); }
    int getParentHistory(ImagingNode& node, qv_isp_zmt_resolution_info& history) const
    {
        return util.getParentHistory(node, history);
    }
    int getKernelResolutionInfos(ImagingNode& node) const { return util.getKernelResolutionInfos(node); }
    int getUnvisitedInputPortsPeers(SubGraphInfo& sg, std::vector<ImagingNode*>& nodes) const
    {
        return util.getUnvisitedInputPortsPeers(sg, nodes);
    }
    int disableDisconnectedKernels(SubGraphInfo& sg) const { return util.disableDisconnectedKernels(sg); }
    int kernelDisconectedVisitor(BaseGraphNode* node, bool downstream) const
    {
        return util.kernelDisconectedVisitor(node, downstream);
    }
    int disableKernelsToDisabledTerminals(SubGraphInfo& sg) const { return util.disableKernelsToDisabledTerminals(sg); }
    int kernelDisableVisitor(BaseGraphNode* node, bool downstream) const
    {
        return util.kernelDisableVisitor(node, downstream);
    }

    // Kernel data.
    int analyzeGraphSettings() const { return util.analyzeGraphSettings(); }
    int allocateTevData() const { return util.allocateTevData(); }
    int populateTevData() const { return util.populateTevData(); }
    int fillTevRunKernels(SubGraphInfo& sg) const { return util.fillTevRunKernels(sg); }
    void deleteTevStructs() const { util.deleteTevStructs(); }

    GraphUtil& util;
};

} // namespace NUXO

#endif
