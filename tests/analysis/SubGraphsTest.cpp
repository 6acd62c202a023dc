// SPDX-License-Identifier: Apache-2.0
#include "analysis/InnerGraphFixture.h"

namespace graphtest {

namespace {

/// A program group between @p source and @p sink, without kernels.
std::string pipe(const std::string& name, const std::string& attributes, const std::string& source,
                 const std::string& sink)
{
    return group(name, attributes, input("in", source) + output("out", sink));
}

/// source -> first (stream 1) -> second (stream 2) -> video (stream 2).
std::string twoStreams()
{
    return bufferSource("first:in", "stream_id='0'") +
           pipe("first", "stream_id='1' exec_ctx_id='11' tuning_mode='3'", "buffer_src0:port_0", "second:in") +
           pipe("second", "stream_id='2' exec_ctx_id='12' tuning_mode='4'", "first:out", "video") +
           sink("video", "stream_id='2' exec_ctx_id='12' peer='second:out'") +
           graphOf(connection("buffer_src0:port_0", "first:in") + connection("first:out", "second:in") +
                   connection("second:out", "video"));
}

class SubGraphsTest : public GraphStepsTest {
protected:
    /// What a subgraph holds, as text.
    std::string contents(int id) const
    {
        const SubGraphInfo& sg = subGraph(id);
        std::string all = "nodes:";
        for (const GraphNode* const node : sg.nodes) all += " " + node->name;
        return all + " groups: " + paths(sg.pgs) + " in: " + paths(sg.inputPorts) + " out: " + paths(sg.outputPorts);
    }

    std::string ids() const
    {
        std::string all;
        for (const auto& entry : access().subGraphs()) all += (all.empty() ? "" : " ") + std::to_string(entry.first);
        return all;
    }

    /// The neighbours of a subgraph in the meta graph as ids, in order.
    static std::string neighbours(const Access::Links& links)
    {
        std::string all;
        for (const auto& link : links) {
            all += (all.empty() ? "" : " ") + std::to_string(static_cast<const SubGraphInfo*>(link.first)->id);
        }
        return all;
    }
};

TEST_F(SubGraphsTest, FreshSubgraphIsEmpty)
{
    const SubGraphInfo fresh;
    EXPECT_EQ(fresh.type, 8228U);
    EXPECT_EQ(fresh.id, 0);
    EXPECT_EQ(fresh.streamId, -1);
    EXPECT_EQ(fresh.tuningMode, 0);
    EXPECT_EQ(fresh.name, "");
    EXPECT_EQ(fresh.kernelCount, 0U);
    EXPECT_EQ(fresh.tevRunKernels, nullptr);
    EXPECT_TRUE(fresh.nodes.empty() && fresh.pgs.empty() && fresh.inputPorts.empty() && fresh.outputPorts.empty());
    EXPECT_TRUE(fresh.imagingNodes.empty());
}

TEST_F(SubGraphsTest, NodesOfOneStreamMakeASubgraph)
{
    load(twoStreams());
    EXPECT_EQ(analyze(), StatusOk);
    EXPECT_EQ(ids(), "0 1 2");
    EXPECT_TRUE(logged(2, "Found 3 subgraphs of type stream_id"));
    EXPECT_EQ(contents(0), "nodes: buffer_src0 groups:  in:  out: buffer_src0:port_0");
    EXPECT_EQ(contents(1), "nodes: first groups: first in: first:in out: first:out");
    EXPECT_EQ(contents(2), "nodes: second video groups: second in: second:in out: second:out");
    for (const int id : {0, 1, 2}) {
        EXPECT_EQ(subGraph(id).id, id);
        EXPECT_EQ(subGraph(id).type, 8228U);
        EXPECT_EQ(subGraph(id).kernelCount, 0U);
        EXPECT_EQ(subGraph(id).name, "");
    }
    EXPECT_EQ(subGraph(0).streamId, -1); // only program groups count
    EXPECT_EQ(subGraph(1).streamId, 1);
    EXPECT_EQ(subGraph(2).streamId, 2);
    EXPECT_EQ(subGraph(0).tuningMode, 0);
    EXPECT_EQ(subGraph(1).tuningMode, 3);
    EXPECT_EQ(subGraph(2).tuningMode, 4);
}

TEST_F(SubGraphsTest, NodesOfOneContextMakeASubgraph)
{
    load(twoStreams());
    EXPECT_EQ(analyze(GdfVersionKVA6, NUXO_KEY_EXEC_CTX_ID), StatusOk);
    EXPECT_EQ(ids(), "-1 11 12");
    EXPECT_TRUE(logged(2, "Found 3 subgraphs of type exec_ctx_id"));
    EXPECT_EQ(contents(-1), "nodes: buffer_src0 groups:  in:  out: buffer_src0:port_0");
    EXPECT_EQ(contents(11), "nodes: first groups: first in: first:in out: first:out");
    EXPECT_EQ(contents(12), "nodes: second video groups: second in: second:in out: second:out");
    EXPECT_EQ(subGraph(11).type, 8206U);
    EXPECT_EQ(subGraph(11).streamId, 1); // the group's stream whatever the key
    EXPECT_EQ(subGraph(12).streamId, 2);
}

TEST_F(SubGraphsTest, ParentInAnotherSubgraphIsNamedWithItsStream)
{
    load(twoStreams());
    EXPECT_EQ(analyze(GdfVersionKVA6, NUXO_KEY_EXEC_CTX_ID), StatusOk);
    EXPECT_TRUE(
        loggedInOrder({"2 found parent buffer_src0 in different subgraph id 0", "2 found input port port[first:in]",
                       "2 found parent first in different subgraph id 1", "2 found input port port[second:in]"}));
}

TEST_F(SubGraphsTest, NodesComeInTheOrderOfTheirNamesAndTheLastOneDecides)
{
    load(group("zulu", "stream_id='1' exec_ctx_id='5' tuning_mode='7'") +
         group("alpha", "stream_id='2' exec_ctx_id='5' tuning_mode='8'") + group("mike", "exec_ctx_id='5'") +
         sink("video", "exec_ctx_id='5'") +
         graphOf(connection("zulu:out", "video") + connection("alpha:out", "video") + connection("mike:out", "video")));
    EXPECT_EQ(analyze(GdfVersionKVA6, NUXO_KEY_EXEC_CTX_ID), StatusOk);
    EXPECT_EQ(contents(5), "nodes: alpha mike video zulu groups: alpha mike zulu in:  out: ");
    EXPECT_EQ(subGraph(5).streamId, 1);
    EXPECT_EQ(subGraph(5).tuningMode, 7);
}

TEST_F(SubGraphsTest, EveryKindOfNodeMaySetTheTuningMode)
{
    load(group("alpha", "stream_id='1' tuning_mode='8'") + sink("video", "stream_id='1' tuning_mode='-4'") +
         graphOf(connection("alpha:out", "video")));
    EXPECT_EQ(analyze(), StatusOk);
    EXPECT_EQ(subGraph(1).tuningMode, -4);
}

TEST_F(SubGraphsTest, GroupWithoutStreamLeavesTheSubgraphWithoutOne)
{
    load(group("alpha", "stream_id='4' exec_ctx_id='1'") + group("beta", "exec_ctx_id='1'") +
         sink("video", "exec_ctx_id='1' stream_id='6'") +
         graphOf(connection("alpha:out", "video") + connection("beta:out", "video")));
    EXPECT_EQ(analyze(GdfVersionKVA6, NUXO_KEY_EXEC_CTX_ID), StatusOk);
    EXPECT_EQ(subGraph(1).streamId, -1);
}

TEST_F(SubGraphsTest, InGeneration7ComputeBlocksAreTheGroups)
{
    const std::string attributes = "stream_id='1' exec_ctx_id='2'";
    load(element("compute_block", "cb", attributes, output("out", "video")) +
         group("pg", attributes, output("out", "video")) + sink("video", attributes + " peer='cb:out'") +
         graphOf(connection("cb:out", "video") + connection("pg:out", "video")));
    for (const uint32_t byKey : {NUXO_KEY_STREAM_ID, NUXO_KEY_EXEC_CTX_ID}) {
        const int id = byKey == NUXO_KEY_STREAM_ID ? 1 : 2;
        EXPECT_EQ(analyze(GdfVersionKVA7, byKey), StatusOk);
        EXPECT_EQ(contents(id), "nodes: cb pg video groups: cb in:  out: cb:out");
        EXPECT_EQ(analyze(GdfVersionKVA6, byKey), StatusOk);
        EXPECT_EQ(contents(id), "nodes: cb pg video groups: pg in:  out: pg:out");
    }
}

TEST_F(SubGraphsTest, PrunedNodesBelongToNoSubgraph)
{
    load(twoStreams() + pipe("idle", "stream_id='9'", "buffer_src0:port_0", "nothing"));
    EXPECT_EQ(analyze(), StatusOk);
    EXPECT_EQ(ids(), "0 1 2");
    EXPECT_EQ(availableSubgraphs(), (std::set<int>{0, 1, 2}));
}

TEST_F(SubGraphsTest, GraphWithoutSinkHasNoSubgraphs)
{
    load(bufferSource("x:in") + graphOf(""));
    access().subGraphs()[7] = std::make_shared<SubGraphInfo>();
    EXPECT_EQ(analyze(), StatusOk);
    EXPECT_EQ(ids(), "");
    EXPECT_TRUE(logged(2, "Found 0 subgraphs of type stream_id"));
}

TEST_F(SubGraphsTest, AnalysisStartsFromEmptySubgraphs)
{
    load(twoStreams());
    EXPECT_EQ(analyze(), StatusOk);
    Access::SubGraphs subGraphs;
    subGraphs[7] = std::make_shared<SubGraphInfo>();
    EXPECT_EQ(access().analyzeSubGraphs(subGraphs), StatusOk);
    EXPECT_EQ(subGraphs.size(), 3U);
    EXPECT_EQ(subGraphs.count(7), 0U);
}

/// A source whose @p sourcePorts ports all lead to one hardware block, the @p outputs ports of which leave it, and @p sinks
/// sinks of a stream each. The streams have no groups, so the block's ports are their outputs.
std::string manyOutputs(int sourcePorts, int outputs, int sinks)
{
    std::string ports;
    for (int i = 0; i < sourcePorts; ++i) ports += output("port_" + std::to_string(i), "csi:in");
    std::string blockPorts = input("in", "buffer_src0:port_0");
    for (int i = 0; i < outputs; ++i) blockPorts += output("out" + std::to_string(i), "far:in");
    std::string nodes = element("source", "buffer_src0", "", ports) + element("hw", "csi", "", blockPorts);
    std::string connections = connection("buffer_src0:port_0", "csi:in");
    for (int i = 0; i < sinks; ++i) {
        const std::string number = std::to_string(i);
        nodes += sink("video" + number, "stream_id='" + number + "'");
        connections += connection("csi:out0", "video" + number);
    }
    return nodes + graphOf(connections);
}

TEST_F(SubGraphsTest, PortsOfABlockThatSeveralSourcePortsFeedCountOnce)
{
    load(manyOutputs(3, 2, 1));
    EXPECT_EQ(analyze(), StatusOk);
    for (const int id : {-1, 0}) EXPECT_EQ(paths(subGraph(id).outputPorts), "csi:out0 csi:out1");
    EXPECT_EQ(innerGraph(0), (Lines{"csi:out0 output", "csi:out1 output"}));
}

TEST_F(SubGraphsTest, OutputPortsDoNotMultiplyWithThePortsOfTheSource)
{
    constexpr int kMany = 300;
    mLog.setMask(0);
    load(manyOutputs(kMany, kMany, kMany));
    EXPECT_EQ(analyze(), StatusOk);
    size_t ports = 0;
    for (const auto& entry : access().subGraphs()) ports += entry.second->outputPorts.capacity();
    ASSERT_EQ(access().subGraphs().size(), kMany + 1U); // of each stream, and of what has none
    EXPECT_EQ(subGraph(0).outputPorts.size(), size_t{kMany});
    EXPECT_LE(ports, 2U * kMany * (kMany + 1U)); // a vector that grows is at most twice as large as it needs
}

/// Ports through which another subgraph feeds a node.
class CrossPortsTest : public SubGraphsTest {
protected:
    int find(const std::string& name)
    {
        clearLog();
        return access().getCrossSgInPorts(outerNode(name), mPorts);
    }

    std::vector<IGraphConfig*> mPorts;
};

TEST_F(CrossPortsTest, AreAppendedInTheOrderOfTheParents)
{
    load(element("source", "late", "stream_id='5'") + element("source", "early", "stream_id='6'") +
         group("pg", "stream_id='1'", port("a", "") + port("b", "")) +
         graphOf(connection("early:out", "pg:a") + connection("late:out", "pg:b")));
    addOuterGraph();
    mPorts = {mRoot.get()};
    EXPECT_EQ(find("pg"), StatusOk);
    ASSERT_EQ(mPorts.size(), 3U);
    EXPECT_EQ(mPorts[0], mRoot.get());
    EXPECT_EQ(mPorts[1], node("pg:b"));
    EXPECT_EQ(mPorts[2], node("pg:a"));
    // Both parents are looked for before both ports.
    EXPECT_TRUE(loggedExactly({"2 found parent late in different subgraph id 5",
                               "2 found parent early in different subgraph id 6", "2 found input port port[pg:b]",
                               "2 found input port port[pg:a]"}));
}

TEST_F(CrossPortsTest, ParentsInTheSameSubgraphHaveNone)
{
    load(element("source", "a", "stream_id='1'") + group("pg", "stream_id='1'") +
         graphOf(connection("a:out", "pg:nowhere") + connection("pg:out", "pg:nowhere")));
    addOuterGraph();
    EXPECT_EQ(find("pg"), StatusOk);
    EXPECT_EQ(find("a"), StatusOk);
    EXPECT_TRUE(mPorts.empty());
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(CrossPortsTest, NodeWithoutStreamIsInASubgraphOfItsOwn)
{
    load(element("source", "a", "exec_ctx_id='1'") + group("pg", "stream_id='1' exec_ctx_id='1'", port("in", "")) +
         graphOf(connection("a:out", "pg:in")));
    addOuterGraph();
    EXPECT_EQ(find("pg"), StatusOk);
    EXPECT_EQ(paths(mPorts), "pg:in");
    EXPECT_TRUE(logged(2, "found parent a in different subgraph id -1"));
}

TEST_F(CrossPortsTest, OneNodeFeedsThroughOnePort)
{
    load(element("source", "a") + group("pg", "stream_id='1'", port("first", "") + port("second", "")) +
         graphOf(connection("a:out", "pg:second") + connection("a:out2", "pg:first")));
    addOuterGraph();
    EXPECT_EQ(find("pg"), StatusOk);
    EXPECT_EQ(paths(mPorts), "pg:second");
}

TEST_F(CrossPortsTest, PortThatTwoNodesFeedIsListedOnce)
{
    load(element("source", "a") + element("source", "b") + group("pg", "stream_id='1'", port("in", "")) +
         graphOf(connection("a:out", "pg:in") + connection("b:out", "pg:in")));
    addOuterGraph();
    EXPECT_EQ(find("pg"), StatusOk);
    EXPECT_EQ(paths(mPorts), "pg:in");
}

TEST_F(CrossPortsTest, MissingPortIsAnError)
{
    load(element("source", "a") + group("pg", "stream_id='1'", port("in", "")) +
         graphOf(connection("a:out", "pg:nowhere")));
    addOuterGraph();
    EXPECT_EQ(find("pg"), StatusMissingObject);
    EXPECT_TRUE(loggedExactly(
        {"2 found parent a in different subgraph id -1", "16 Could not find input port nowhere - impossible"}));
    EXPECT_TRUE(mPorts.empty());
}

TEST_F(CrossPortsTest, AttributeIsNoPort)
{
    load(element("source", "a") + group("pg", "stream_id='1'") + graphOf(connection("a:out", "pg:name")));
    addOuterGraph();
    EXPECT_EQ(find("pg"), StatusMissingObject);
    EXPECT_TRUE(logged(16, "Could not find input port name - impossible"));
}

TEST_F(CrossPortsTest, NodeThatIsFedWithoutPortIsAnErrorUnlessItIsASink)
{
    load(element("source", "a") + group("pg", "stream_id='1'") + sink("video", "stream_id='1'") +
         graphOf(connection("a:out", "pg") + connection("a:out", "video")));
    addOuterGraph();
    EXPECT_EQ(find("pg"), StatusMissingObject);
    EXPECT_TRUE(logged(16, "Could not find input port  - impossible"));
    EXPECT_EQ(find("video"), StatusOk);
    EXPECT_TRUE(loggedExactly({"2 found parent a in different subgraph id -1"}));
    EXPECT_TRUE(mPorts.empty());
}

TEST_F(CrossPortsTest, SinkMayHavePorts)
{
    load(element("source", "a") + element("sink", "video", "stream_id='1'", port("in", "")) +
         graphOf(connection("a:out", "video:in")));
    addOuterGraph();
    EXPECT_EQ(find("video"), StatusOk);
    EXPECT_EQ(paths(mPorts), "video:in");
}

/// Failures of single subgraphs.
class SubGraphFailureTest : public SubGraphsTest {};

TEST_F(SubGraphFailureTest, MissingInputPortEndsTheAnalysis)
{
    load(bufferSource("pg:in") + group("pg", "stream_id='1'") + sink("video", "stream_id='1'") +
         graphOf(connection("buffer_src0:port_0", "pg:in") + connection("pg:out", "video")));
    EXPECT_EQ(analyze(), StatusMissingObject);
    EXPECT_EQ(ids(), "-1"); // what was finished stays
    EXPECT_TRUE(
        loggedInOrder({"16 Could not find input port in - impossible", "16 Analysis of subgraphs failed  -16 "}));
    EXPECT_TRUE(notLogged("Looking for connections between subgraphs"));
    EXPECT_TRUE(notLogged("GraphSettings analysis succeeded"));
}

TEST_F(SubGraphFailureTest, GroupThatCannotBeReadIsNamed)
{
    load(group("pg", "stream_id='1'", element("kernel", "k")) + sink("video", "stream_id='1'") +
         group("zulu", "stream_id='2'") + sink("still", "stream_id='2'") +
         graphOf(connection("pg:out", "video") + connection("zulu:out", "still")));
    EXPECT_EQ(analyze(), StatusBadState);
    EXPECT_EQ(ids(), "");
    EXPECT_TRUE(loggedInOrder({"16 Failed to retrieve kernel info from IGraphConfig",
                               "16 Failed to collect imaging graph info from program_group[pg]",
                               "16 Analysis of subgraphs failed  -8 "}));
    EXPECT_TRUE(notLogged("zulu]"));
}

TEST_F(SubGraphFailureTest, ConnectionsNeedTheGraphNode)
{
    load(sink("video", "stream_id='4'"));
    start();
    EXPECT_EQ(access().addGraphNode(*node("video")), StatusOk);
    Access::SubGraphs subGraphs;
    EXPECT_EQ(access().analyzeSubGraphs(subGraphs), StatusBadState);
    EXPECT_TRUE(subGraphs.empty());
    EXPECT_TRUE(logged(16, "Failed to add graph connections to imaging graph info 4"));
}

/// Which subgraph feeds which.
class MetaGraphTest : public SubGraphsTest {};

TEST_F(MetaGraphTest, OuterConnectionsThatCrossSubgraphsLinkThem)
{
    load(twoStreams());
    EXPECT_EQ(analyze(), StatusOk);
    EXPECT_EQ(neighbours(subGraph(0).children), "1");
    EXPECT_EQ(neighbours(subGraph(0).parents), "");
    EXPECT_EQ(neighbours(subGraph(1).children), "2");
    EXPECT_EQ(neighbours(subGraph(1).parents), "0");
    EXPECT_EQ(neighbours(subGraph(2).children), "");
    EXPECT_EQ(neighbours(subGraph(2).parents), "1");
    EXPECT_TRUE(loggedInOrder({"2 Looking for connections between subgraphs",
                               "2 Connection buffer_src0 (0)-->first(1) crosses subgraphs",
                               "2 Connection first (1)-->second(2) crosses subgraphs", "2 Visited graph nodes 4/4",
                               "2 Connections between subgraphs analysis completed!!",
                               "2 --------- GraphSettings analysis succeeded !!---------------"}));
    for (const auto& entry : access().graphNodes()) EXPECT_FALSE(entry.second->visited) << entry.first;
}

TEST_F(MetaGraphTest, IdsAreThoseOfTheKey)
{
    load(twoStreams());
    EXPECT_EQ(analyze(GdfVersionKVA6, NUXO_KEY_EXEC_CTX_ID), StatusOk);
    EXPECT_TRUE(loggedInOrder({"2 Connection buffer_src0 (-1)-->first(11) crosses subgraphs",
                               "2 Connection first (11)-->second(12) crosses subgraphs"}));
    EXPECT_EQ(neighbours(subGraph(-1).children), "11");
    EXPECT_EQ(neighbours(subGraph(12).parents), "11");
}

TEST_F(MetaGraphTest, OnlyWhatSourcesReachIsLinked)
{
    load(group("first", "stream_id='1'") + element("sink", "video", "stream_id='2'", port("in", "")) +
         graphOf(connection("first:out", "video:in")));
    EXPECT_EQ(analyze(), StatusOk);
    EXPECT_EQ(neighbours(subGraph(1).children), "");
    EXPECT_EQ(neighbours(subGraph(2).parents), "");
    EXPECT_TRUE(loggedInOrder({"2 Looking for connections between subgraphs", "2 Visited graph nodes 0/2",
                               "16 Traversal of graph did not reach all nodes 0/2",
                               "2 Connections between subgraphs analysis completed!!"}));
}

TEST_F(MetaGraphTest, SubgraphsAreLinkedOnceAndMayFeedEachOther)
{
    load(element("source", "buffer_src0", "stream_id='1'") +
         group("a", "stream_id='2'", port("in", "") + port("back", "")) + group("b", "stream_id='3'", port("in", "")) +
         element("sink", "video", "stream_id='3'", port("in", "")) +
         graphOf(connection("buffer_src0:port_0", "a:in") + connection("a:out", "b:in") +
                 connection("a:out", "video:in") + connection("b:out", "a:back")));
    EXPECT_EQ(analyze(), StatusOk);
    EXPECT_EQ(neighbours(subGraph(1).children), "2");
    EXPECT_EQ(neighbours(subGraph(2).children), "3");
    EXPECT_EQ(neighbours(subGraph(2).parents), "1 3");
    EXPECT_EQ(neighbours(subGraph(3).children), "2");
    EXPECT_EQ(neighbours(subGraph(3).parents), "2");
}

TEST_F(MetaGraphTest, VisitorNeedsANode)
{
    load(twoStreams());
    EXPECT_EQ(analyze(), StatusOk);
    clearLog();
    EXPECT_EQ(access().subgraphConnectionVisitor(nullptr), StatusMissingObject);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(access().subgraphConnectionVisitor(&outerNode("video")), StatusOk);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(access().subgraphConnectionVisitor(&outerNode("first")), StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Connection first (1)-->second(2) crosses subgraphs"}));
}

TEST_F(MetaGraphTest, ResetTellsOfSubgraphsThatWereNotReached)
{
    load(twoStreams());
    EXPECT_EQ(analyze(), StatusOk);
    clearLog();
    subGraph(0).visited = subGraph(1).visited = subGraph(2).visited = true;
    access().resetMetaGraph();
    EXPECT_TRUE(loggedExactly({}));
    for (const int id : {0, 1, 2}) EXPECT_FALSE(subGraph(id).visited);
    subGraph(2).visited = true;
    access().resetMetaGraph();
    EXPECT_TRUE(loggedExactly({"16 Traversal of meta graph did not reach all nodes 1/3"}));
    EXPECT_FALSE(subGraph(2).visited);
}

TEST_F(MetaGraphTest, NothingToResetIsNoError)
{
    access().resetMetaGraph();
    EXPECT_TRUE(loggedExactly({}));
}

} // namespace

} // namespace graphtest
