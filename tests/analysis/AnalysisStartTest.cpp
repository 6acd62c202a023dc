// SPDX-License-Identifier: Apache-2.0
// Starting and repeating the analysis of a graph.
#include "analysis/AnalysisFixture.h"

namespace graphtest {

namespace {

constexpr const char* kBadArguments = "16 invalid KVA version, subgraph type used or graph settings";

class AnalysisStartTest : public AnalysisTest {
protected:
    /// Number of records of a subgraph, -1 when it is unknown.
    int kernelCount(int id)
    {
        qv_isp_zmt_program_group records = {};
        return mUtil->getTevData(id, records) == StatusOk ? static_cast<int>(records.kernel_count) : -1;
    }
};

TEST_F(AnalysisStartTest, AnalysesGraphsOfBothGenerations)
{
    load(smallGraph());
    EXPECT_EQ(init(GdfVersionKVA6), StatusOk);
    EXPECT_EQ(availableSubgraphs(), (std::set<int>{-1, 1}));
    EXPECT_EQ(kernelCount(1), 1);
    load(smallGraph("compute_block"));
    EXPECT_EQ(init(GdfVersionKVA7), StatusOk);
    EXPECT_EQ(availableSubgraphs(), (std::set<int>{-1, 1}));
    EXPECT_EQ(kernelCount(1), 1);
}

TEST_F(AnalysisStartTest, GenerationDecidesWhatAProgramGroupIs)
{
    for (const unsigned int byKey : {NUXO_KEY_STREAM_ID, NUXO_KEY_EXEC_CTX_ID}) {
        const int id = byKey == NUXO_KEY_STREAM_ID ? 1 : 2;
        load(smallGraph("compute_block"));
        EXPECT_EQ(init(GdfVersionKVA7, byKey), StatusOk);
        EXPECT_EQ(kernelCount(id), 1);
        // Later generations than 7 have program groups, and so no kernels here; the port that the group would have linked
        // is then missing.
        EXPECT_EQ(init(static_cast<GdfVersion>(8), byKey), StatusMissingObject);
        EXPECT_EQ(kernelCount(id), 0);
        load(smallGraph());
        EXPECT_EQ(init(static_cast<GdfVersion>(8), byKey), StatusOk);
        EXPECT_EQ(kernelCount(id), 1);
    }
}

TEST_F(AnalysisStartTest, WrongArgumentsAreRefused)
{
    load(smallGraph());
    const struct {
        unsigned int key;
        const IGraphConfig* graph;
        GdfVersion version;
    } cases[] = {
        {NUXO_KEY_STREAM_ID, nullptr, GdfVersionKVA6},
        {NUXO_KEY_NA, mRoot.get(), GdfVersionKVA6},
        {NUXO_KEY_PROGRAM_GROUP, mRoot.get(), GdfVersionKVA6},
        {NUXO_KEY_STREAM_ID - 1, mRoot.get(), GdfVersionKVA6},
        {NUXO_KEY_STREAM_ID + 1, mRoot.get(), GdfVersionKVA7},
        {NUXO_KEY_STREAM_ID, mRoot.get(), NUXO::GdfVersionNone},
        {NUXO_KEY_STREAM_ID, mRoot.get(), NUXO::GdfVersionKVA5},
        {NUXO_KEY_EXEC_CTX_ID, mRoot.get(), static_cast<GdfVersion>(-7)},
    };
    for (const auto& each : cases) {
        clearLog();
        EXPECT_EQ(mUtil->init(each.key, each.graph, each.version), StatusBadArgument);
        EXPECT_TRUE(loggedExactly({kBadArguments}));
        EXPECT_TRUE(availableSubgraphs().empty());
    }
}

TEST_F(AnalysisStartTest, WrongArgumentsChangeNothing)
{
    load(smallGraph("compute_block"));
    EXPECT_EQ(init(GdfVersionKVA7), StatusOk);
    qv_isp_zmt_program_group before = {};
    EXPECT_EQ(mUtil->getTevData(1, before), StatusOk);
    EXPECT_EQ(mUtil->init(NUXO_KEY_EXEC_CTX_ID, nullptr, GdfVersionKVA6), StatusBadArgument);
    EXPECT_EQ(mUtil->init(NUXO_KEY_PORT, mRoot.get(), GdfVersionKVA6), StatusBadArgument);
    EXPECT_EQ(mUtil->init(NUXO_KEY_EXEC_CTX_ID, mRoot.get(), NUXO::GdfVersionKVA5), StatusBadArgument);
    EXPECT_EQ(availableSubgraphs(), (std::set<int>{-1, 1}));
    qv_isp_zmt_program_group after = {};
    EXPECT_EQ(mUtil->getTevData(1, after), StatusOk);
    EXPECT_EQ(after.run_kernels, before.run_kernels);
    EXPECT_EQ(after.kernel_count, 1U);
    EXPECT_EQ(after.run_kernels[0].kernel_uuid, 11U);
}

TEST_F(AnalysisStartTest, GraphWithoutConnectionsNodeIsNone)
{
    load(sink("video"));
    EXPECT_EQ(init(), StatusMissingObject);
    EXPECT_TRUE(
        loggedExactly({"2 --------- GraphSettings analysis started !!---------------",
                       "2 Node video of type sink stream-id -1 exeCtxId -1 added to graph",
                       "16 Failed to locate graph node - Invalid settings", "16 Graph settings analysis failed"}));
}

TEST_F(AnalysisStartTest, AttributeCalledGraphIsNoGraph)
{
    load(sink("video"));
    mRoot->addValue(NUXO_KEY_GRAPH, std::string("graph"));
    EXPECT_EQ(init(), StatusMissingObject);
    EXPECT_TRUE(logged(16, "Failed to locate graph node - Invalid settings"));
}

TEST_F(AnalysisStartTest, GraphOfAnotherKindHasNothingToAnalyse)
{
    const ForeignNode foreign;
    EXPECT_EQ(mUtil->init(NUXO_KEY_STREAM_ID, &foreign, GdfVersionKVA6), StatusMissingObject);
    EXPECT_TRUE(logged(16, "Failed to locate graph node - Invalid settings"));
    EXPECT_TRUE(availableSubgraphs().empty());
}

TEST_F(AnalysisStartTest, AttributesUnderTheKeysOfNodesAreNoNodes)
{
    load(smallGraph());
    node("graph")->addValue(NUXO_KEY_SINK, std::string("video"));
    node("pg")->addValue(NUXO_KEY_KLINK, std::string("k:0"));
    node("pg")->addValue(NUXO_KEY_KERNEL, std::string("k"));
    node("pg:k")->addValue(NUXO_KEY_INPUT, std::string("640"));
    node("pg:k")->addValue(NUXO_KEY_OUTPUT, 480);
    mRoot->addValue(NUXO_KEY_PROGRAM_GROUP, std::string("pg"));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(kernelCount(1), 1);
    load(graphOf(""));
    node("graph")->addValue(NUXO_KEY_CONNECTION, std::string("a:b"));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_TRUE(notLogged("skipped due to source not FOUND"));
}

TEST_F(AnalysisStartTest, FailedAnalysisIsReportedWithItsStatus)
{
    load(sink("video") + sink("video") + graphOf(""));
    EXPECT_EQ(init(), StatusBadState);
    EXPECT_EQ(linesStarting("16 "),
              (Lines{"16 Graph node video insertion failed", "16 Graph settings analysis failed"}));
}

TEST_F(AnalysisStartTest, FailedPopulationIsReportedWithItsStatus)
{
    load(element("source", "strange_source", "", output("port_0", "pg:in", "width='640' height='480'")) +
         group("pg", "stream_id='1'", input("in", "strange_source:port_0") + kernel("k", 1) + klink("in", "k:0")) +
         sink("video", "stream_id='1'") +
         graphOf(connection("strange_source:port_0", "pg:in") + connection("pg:out", "video")));
    EXPECT_EQ(init(), StatusNotSupported); // no such kind of source
    EXPECT_TRUE(
        loggedInOrder({"2 --------- GraphSettings analysis succeeded !!---------------",
                       "2 TEV structure allocation succeeded !!", "16 Failed to get source resolution history",
                       "16 Traversal of subgraphs failed on subgraph -1", "16 TEV structures population failed"}));
    EXPECT_EQ(lines().back(), "16 TEV structures population failed");
    EXPECT_EQ(availableSubgraphs(), (std::set<int>{-1, 1})); // what was built stays
}

TEST_F(AnalysisStartTest, StepsComeInOrder)
{
    load(smallGraph());
    EXPECT_EQ(init(), StatusOk);
    EXPECT_TRUE(
        loggedInOrder({"2 --------- GraphSettings analysis started !!---------------",
                       "2 --------- GraphSettings analysis succeeded !!---------------",
                       "2 TEV structure allocation succeeded !!", "2 Resolution History calculation succeeded !!"}));
    EXPECT_TRUE(linesStarting("32 ").empty());
    // Progress of the pruning and of the dump comes at the level of errors, and nothing else does.
    EXPECT_EQ(
        linesStarting("16 "),
        (Lines{"16 Visiting  node video ", "16 Visiting  node pg ", "16 Visiting  node buffer_src0 ",
               "16 node buffer_src0 is last one, stopping", "16 StreamId -1 execCtx -1 --> Node[source]buffer_src0 ",
               "16 StreamId 1 execCtx 2 --> Node[program_group]pg ", "16 StreamId 1 execCtx 2 --> Node[sink]video "}));
}

TEST_F(AnalysisStartTest, AnalysisIsLoggedStepByStep)
{
    load(smallGraph());
    EXPECT_EQ(init(), StatusOk);
    Lines all = maskedLines();
    const auto end =
        std::find(all.begin(), all.end(), "2 --------- GraphSettings analysis succeeded !!---------------");
    ASSERT_NE(end, all.end());
    all.erase(end, all.end());
    // The list of subgraphs is a text for readers of its own.
    const auto isListed = [](const std::string& line) { return line.find("FOUND 2 subgraphs") != std::string::npos; };
    const auto list = std::find_if(all.begin(), all.end(), isListed);
    const auto behindList = std::find(all.begin(), all.end(), "2 Looking for connections between subgraphs");
    ASSERT_LT(list, behindList);
    all.erase(list - 1, behindList);
    const Lines expected = {
        "2 --------- GraphSettings analysis started !!---------------",
        "2 Node buffer_src0 of type source stream-id -1 exeCtxId -1 added to graph",
        "2 Node pg of type program_group stream-id 1 exeCtxId 2 added to graph",
        "2 Node video of type sink stream-id 1 exeCtxId 2 added to graph",
        "2 Removing Unusued Nodes",
        "2 Starting traversal at node video ",
        "16 Visiting  node video ",
        "16 Visiting  node pg ",
        "16 Visiting  node buffer_src0 ",
        "16 node buffer_src0 is last one, stopping",
        "2 Visited graph nodes 3/3",
        "2 Removed 0 Unusued Nodes - Done!",
        "2 " + kDoubleLine,
        "2 Dumping Outer graph",
        "2 " + kDoubleLine,
        "2 -->START <-- src name: buffer_src0",
        "16 StreamId -1 execCtx -1 --> Node[source]buffer_src0 ",
        "16 StreamId 1 execCtx 2 --> Node[program_group]pg ",
        "16 StreamId 1 execCtx 2 --> Node[sink]video ",
        "2 --> END <-- 0",
        "2 Visited graph nodes 3/3",
        "2 Found 2 subgraphs of type stream_id",
        "2 Source port port_0 crosses Subgraph boundary (-1)->(1)",
        "2 Collecting source output port",
        "2 Collecting source output port buffer_src0:port_0",
        "2 found parent buffer_src0 in different subgraph id -1",
        "2 found input port port[pg:in]",
        "2 getSubgraphPorts: peer for out is video",
        "2 Added Imaging node k uuid 11 rcb 0",
        "2 Adding klink port[pg:in]:program_group[pg]  IgraphConfig 0x#",
        "2 Addded link in:->k:0",
        "2 Adding klink port[pg:out]:program_group[pg]  IgraphConfig 0x#",
        "2 Addded link k:0->out:",
        "2 Looking for connections between subgraphs",
        "2 Connection buffer_src0 (-1)-->pg(1) crosses subgraphs",
        "2 Visited graph nodes 3/3",
        "2 Connections between subgraphs analysis completed!!",
    };
    EXPECT_EQ(all, expected);
}

TEST_F(AnalysisStartTest, AnotherGraphReplacesTheFirst)
{
    load(smallGraph());
    const Tree first = std::move(mRoot);
    EXPECT_EQ(mUtil->init(NUXO_KEY_STREAM_ID, first.get(), GdfVersionKVA6), StatusOk);
    load(bufferSource("other:in", "stream_id='7'") +
         group("other", "stream_id='8'",
               input("in", "buffer_src0:port_0") + output("out", "still") + kernel("k", 21) + kernel("l", 22) +
                   klink("in", "k:0") + klink("k:0", "l:0") + klink("l:0", "out")) +
         sink("still", "stream_id='8' peer='other:out'") +
         graphOf(connection("buffer_src0:port_0", "other:in") + connection("other:out", "still")));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_TRUE(logged(2, "Node other of type program_group stream-id 8 exeCtxId -1 added to graph"));
    EXPECT_TRUE(notLogged("insertion failed"));
    EXPECT_TRUE(notLogged("Allocating kernel structures before deleting."));
    EXPECT_TRUE(notLogged("video"));
    EXPECT_EQ(availableSubgraphs(), (std::set<int>{7, 8}));
    EXPECT_EQ(kernelCount(8), 2);
    EXPECT_EQ(kernelCount(1), -1);
    EXPECT_TRUE(logged(16, "Invalid subgraph(stream_id) id 1"));
    qv_isp_zmt_program_group records = {};
    EXPECT_EQ(mUtil->getPgTevData(&at(*first, "pg"), records), StatusBadArgument);
}

TEST_F(AnalysisStartTest, ConnectionsOfTheEarlierGraphAreForgotten)
{
    // The same nodes, but the group's input port has another name.
    load(std::regex_replace(smallGraph(), std::regex("\\bin\\b"), "entry"));
    const Tree first = std::move(mRoot);
    EXPECT_EQ(mUtil->init(NUXO_KEY_STREAM_ID, first.get(), GdfVersionKVA6), StatusOk);
    EXPECT_TRUE(logged(2, "found input port port[pg:entry]"));
    load(smallGraph());
    EXPECT_EQ(init(), StatusOk);
    EXPECT_TRUE(logged(2, "found input port port[pg:in]"));
    EXPECT_TRUE(notLogged("entry"));
}

TEST_F(AnalysisStartTest, SameGraphCanBeAnalysedAgainByAnotherKey)
{
    load(smallGraph());
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(init(GdfVersionKVA6, NUXO_KEY_EXEC_CTX_ID), StatusOk);
    EXPECT_EQ(availableSubgraphs(), (std::set<int>{-1, 2}));
    EXPECT_EQ(kernelCount(2), 1);
    EXPECT_EQ(kernelCount(1), -1);
    EXPECT_TRUE(logged(16, "Invalid subgraph(exec_ctx_id) id 1"));
}

TEST_F(AnalysisStartTest, ObjectCanBeUsedAgainAfterAFailure)
{
    load(smallGraph() + sink("twin") + sink("twin"));
    EXPECT_EQ(init(), StatusBadState);
    load(sink("video"));
    EXPECT_EQ(init(), StatusMissingObject);
    load(smallGraph());
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(availableSubgraphs(), (std::set<int>{-1, 1}));
    EXPECT_EQ(kernelCount(1), 1);
}

TEST_F(AnalysisStartTest, FailureLeavesNothingOfTheEarlierGraph)
{
    load(smallGraph());
    const Tree first = std::move(mRoot);
    EXPECT_EQ(mUtil->init(NUXO_KEY_STREAM_ID, first.get(), GdfVersionKVA6), StatusOk);
    load(sink("only", "stream_id='9'"));
    EXPECT_EQ(init(), StatusMissingObject);
    EXPECT_EQ(availableSubgraphs(), std::set<int>{9});
    EXPECT_EQ(kernelCount(1), -1);
}

TEST_F(AnalysisStartTest, SubgraphIdsAreAddedToThoseThatAreThere)
{
    load(smallGraph());
    std::set<int> ids{5};
    mUtil->getAvailableSubgraphs(ids);
    EXPECT_EQ(ids, std::set<int>{5});
    EXPECT_EQ(init(), StatusOk);
    mUtil->getAvailableSubgraphs(ids);
    EXPECT_EQ(ids, (std::set<int>{-1, 1, 5})); // the source has no stream
    mUtil->getAvailableSubgraphs(ids);
    EXPECT_EQ(ids.size(), 3U);
}

TEST_F(AnalysisStartTest, EmptyGraphIsFine)
{
    load(graphOf(""));
    EXPECT_EQ(init(), StatusOk);
    EXPECT_TRUE(availableSubgraphs().empty());
    EXPECT_EQ(kernelCount(0), -1);
    EXPECT_TRUE(logged(2, "Found 0 subgraphs of type stream_id"));
    EXPECT_TRUE(logged(2, "Resolution History calculation succeeded !!"));
}

TEST_F(AnalysisStartTest, NodesWithoutTypeOrNameArePassedOver)
{
    load(smallGraph() + "<node name='untyped'/><node type='sink'/>");
    EXPECT_EQ(init(), StatusOk);
    EXPECT_TRUE(logged(16, "Could not get type of graph node NODE[untyped] ignoring"));
    EXPECT_TRUE(logged(16, "Could not get name of graph node sink[node] ignoring"));
    EXPECT_EQ(availableSubgraphs(), (std::set<int>{-1, 1}));
}

} // namespace

} // namespace graphtest
