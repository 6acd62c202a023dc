// SPDX-License-Identifier: Apache-2.0
#include "simulation/SimulationFixture.h"

namespace graphtest {

namespace {

/// Two program groups, one of them with its type as an attribute of its own, and what else stands in a descriptor.
constexpr const char* kNodes = R"(
    <source name="sensor"><port name="port_0"/></source>
    <hw name="csi_be"><port name="in"/><port name="out"/></hw>
    <program_group name="pg_a" stream_id="1"><port name="in"/><port name="out"/><port name="aux"/></program_group>
    <node name="pg_b" type="program_group"><port name="in"/><port name="out"/></node>
    <node name="pg_c" base_node="pg_base"><attribute target="stream_id" value="1"/></node>
    <base_node name="pg_base" base_type="program_group"><port name="in"/></base_node>
    <compute_block name="cb"><port name="in"/></compute_block>
    <sink name="video_sink"/>)";

std::string connection(const std::string& source, const std::string& sink)
{
    return "<connection source=\"" + source + "\" sink=\"" + sink + "\"/>";
}

class ProgramGroupsInGraphTest : public GraphTest {
protected:
    /// A descriptor with the nodes above and these graphs.
    void load(const std::string& graphs)
    {
        mRoot = descriptor(std::string("<nodes>") + kNodes + "</nodes><graphs>" + graphs + "</graphs>");
    }

    /// A descriptor with one graph, 100, that holds @p content.
    void loadGraph(const std::string& content) { load("<graph id=\"100\">" + content + "</graph>"); }

    int ask(const IGraphConfig* node, int id)
    {
        clearLog();
        mGroups.clear();
        return ZmtTevSimUtils::getPgsInGraph(node, id, mGroups);
    }

    /// The program groups of graph 100, which must be found.
    std::string groups()
    {
        EXPECT_EQ(ask(mRoot.get(), 100), StatusOk);
        return names(mGroups);
    }

    /// Graph 100 must give this status, these lines and no group.
    void expectFailure(int status, const std::vector<std::string>& lines, int id = 100)
    {
        EXPECT_EQ(ask(mRoot.get(), id), status);
        EXPECT_TRUE(loggedExactly(lines));
        EXPECT_TRUE(mGroups.empty());
    }

    Tree mRoot;
    std::set<IGraphConfig*> mGroups;
};

TEST_F(ProgramGroupsInGraphTest, BothEndsOfAConnectionCountOnceEach)
{
    loadGraph(connection("pg_a:out", "pg_b:in") + connection("pg_a:aux", "pg_b:in"));
    EXPECT_EQ(groups(), "pg_a pg_b");
    const std::set<IGraphConfig*> expected{&at(*mRoot, "nodes:pg_a"), &at(*mRoot, "nodes:pg_b")};
    EXPECT_EQ(mGroups, expected);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ProgramGroupsInGraphTest, OneEndIsEnough)
{
    loadGraph(connection("csi_be:out", "pg_a:in"));
    EXPECT_EQ(groups(), "pg_a");
    loadGraph(connection("pg_b:out", "video_sink"));
    EXPECT_EQ(groups(), "pg_b");
}

TEST_F(ProgramGroupsInGraphTest, OtherNodesAreLeftOutInSilence)
{
    loadGraph(connection("sensor:port_0", "csi_be:in") + connection("csi_be:out", "cb:in") +
              connection("pg_base:in", "video_sink"));
    EXPECT_EQ(groups(), "");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ProgramGroupsInGraphTest, EndsThatLeadNowhereAreSkippedInSilence)
{
    // The node built on a base node has no ports of its own yet.
    loadGraph(connection("ghost:out", "ghost") + connection("pg_a:ghost", "") + connection("pg_c:in", "pg_a") +
              connection(":", "::in") + connection("pg_a:out", "video_sink"));
    EXPECT_EQ(groups(), "pg_a");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ProgramGroupsInGraphTest, NodeThatHoldsTheEndIsTheOneThatCounts)
{
    mRoot = descriptor(R"(<nodes><hw name="outer"><program_group name="inner"><port name="in"/></program_group></hw>
        <program_group name="group"><hw name="part"><port name="in"/></hw></program_group></nodes>
        <graphs><graph id="100">)" +
                       connection("outer:inner:in", "group:part:in") + "</graph></graphs>");
    EXPECT_EQ(groups(), "inner");
}

TEST_F(ProgramGroupsInGraphTest, TypeMustBeTheTextOfAProgramGroup)
{
    loadGraph(connection("pg_a:out", "pg_b:in"));
    at(*mRoot, "nodes:pg_a").removeDescendant(NUXO_KEY_TYPE);
    at(*mRoot, "nodes:pg_b").removeDescendant(NUXO_KEY_TYPE);
    at(*mRoot, "nodes:pg_a").addValue(NUXO_KEY_TYPE, NUXO_KEY_PROGRAM_GROUP);
    at(*mRoot, "nodes:pg_b").addValue(NUXO_KEY_TYPE, std::string("Program_Group"));
    EXPECT_EQ(groups(), "");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ProgramGroupsInGraphTest, GroupsAreAdded)
{
    loadGraph(connection("pg_a:out", "pg_b:in"));
    GraphConfigNode earlier;
    mGroups.insert(&earlier);
    EXPECT_EQ(ZmtTevSimUtils::getPgsInGraph(mRoot.get(), 100, mGroups), StatusOk);
    EXPECT_EQ(mGroups.size(), 3U);
    EXPECT_EQ(mGroups.count(&earlier), 1U);
    EXPECT_EQ(ZmtTevSimUtils::getPgsInGraph(mRoot.get(), 100, mGroups), StatusOk);
    EXPECT_EQ(mGroups.size(), 3U);
}

TEST_F(ProgramGroupsInGraphTest, GraphIsChosenByItsId)
{
    load("<graph id=\"100\">" + connection("pg_a:out", "video_sink") + "</graph><graph id=\"101\">" +
         connection("pg_b:out", "video_sink") + "</graph><graph id=\"-7\">" + connection("pg_a:in", "pg_b:in") +
         "</graph>");
    EXPECT_EQ(groups(), "pg_a");
    EXPECT_EQ(ask(mRoot.get(), 101), StatusOk);
    EXPECT_EQ(names(mGroups), "pg_b");
    EXPECT_EQ(ask(mRoot.get(), -7), StatusOk);
    EXPECT_EQ(names(mGroups), "pg_a pg_b");
}

TEST_F(ProgramGroupsInGraphTest, FirstOfSeveralGraphsWithTheIdIsTaken)
{
    load("<graph id=\"100\">" + connection("pg_a:out", "video_sink") + "</graph><graph id=\"100\">" +
         connection("pg_b:out", "video_sink") + "</graph>");
    EXPECT_EQ(groups(), "pg_a");
}

TEST_F(ProgramGroupsInGraphTest, GraphMayHaveAName)
{
    load("<graph id=\"99\"/><graph name=\"video\" id=\"100\">" + connection("pg_a:out", "pg_b:in") + "</graph>");
    EXPECT_EQ(groups(), "pg_a pg_b");
}

TEST_F(ProgramGroupsInGraphTest, OtherItemsBesideTheGraphsAreNone)
{
    load("<hw id=\"100\"/><settings id=\"100\"/><graph id=\"99\"/>");
    at(*mRoot, "graphs").addValue(NUXO_KEY_TYPE, std::string("graph"));
    expectFailure(StatusNotFound, {sim("32 Graph id 100 not found")});
}

TEST_F(ProgramGroupsInGraphTest, UnknownGraphIsAWarning)
{
    load("<graph id=\"100\"/><graph id=\"101\"/>");
    expectFailure(StatusNotFound, {sim("32 Graph id 7 not found")}, 7);
    expectFailure(StatusNotFound, {sim("32 Graph id -2147483648 not found")}, -2147483647 - 1);
    load("");
    expectFailure(StatusNotFound, {sim("32 Graph id 100 not found")});
}

TEST_F(ProgramGroupsInGraphTest, GraphWithoutAnIdIsInvalid)
{
    const std::vector<std::string> lines{sim("16 Graph without id attribute, invalid")};
    load("<graph/><graph id=\"100\"/>");
    expectFailure(StatusBadState, lines);
    load("<graph id=\"99\"/><graph name=\"nameless_no_more\"/>");
    expectFailure(StatusBadState, lines);
    load("<graph/>");
    at(*mRoot, "graphs:graph").addValue(NUXO_KEY_ID, std::string("100"));
    expectFailure(StatusBadState, lines);
}

TEST_F(ProgramGroupsInGraphTest, GraphsBehindTheChosenOneAreNotLookedAt)
{
    load("<graph id=\"100\">" + connection("pg_a:out", "pg_b:in") + "</graph><graph/>");
    EXPECT_EQ(groups(), "pg_a pg_b");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ProgramGroupsInGraphTest, GraphsAndNodesAreDemandedInThisOrder)
{
    const std::string noGraphs = sim("16 No Graphs found from input GDF node");
    const std::string noNodes = sim("16 No Nodes found from input GDF node");
    mRoot = descriptor("<settings/>");
    expectFailure(StatusBadArgument, {noGraphs});
    mRoot = descriptor("<nodes/>");
    expectFailure(StatusBadArgument, {noGraphs});
    mRoot->addValue(NUXO_KEY_GRAPHS, std::string("text"));
    expectFailure(StatusBadArgument, {noGraphs});
    mRoot = descriptor("<graphs><graph/></graphs>");
    expectFailure(StatusBadArgument, {noNodes});
    mRoot->addValue(NUXO_KEY_NODES, std::string("text"));
    expectFailure(StatusBadArgument, {noNodes});
}

TEST_F(ProgramGroupsInGraphTest, AnyNodeLeadsToTheRoot)
{
    loadGraph(connection("pg_a:out", "pg_b:in"));
    for (const char* path : {"nodes", "graphs:graph", "nodes:pg_a:out"}) {
        EXPECT_EQ(ask(&at(*mRoot, path), 100), StatusOk) << path;
        EXPECT_EQ(names(mGroups), "pg_a pg_b") << path;
    }
}

TEST_F(ProgramGroupsInGraphTest, EndsOfAConnectionMustBeTexts)
{
    const std::vector<std::string> lines{sim("16 Connection without src or sink attribute, invalid!")};
    for (const char* incomplete :
         {"<connection/>", "<connection source=\"csi_be:out\"/>", "<connection sink=\"csi_be:in\"/>"}) {
        loadGraph(incomplete);
        expectFailure(StatusMissingData, lines);
    }
    for (const uint32_t wrong : {NUXO_KEY_SOURCE, NUXO_KEY_SINK}) {
        loadGraph("<connection/>");
        GraphConfigNode& only = at(*mRoot, "graphs:graph:connection");
        only.addValue(wrong, 1);
        only.addValue(wrong == NUXO_KEY_SOURCE ? NUXO_KEY_SINK : NUXO_KEY_SOURCE, std::string("csi_be:in"));
        expectFailure(StatusNotFound, lines);
    }
}

TEST_F(ProgramGroupsInGraphTest, OtherItemsOfTheGraphAreNoConnections)
{
    loadGraph("<port source=\"pg_a:out\" sink=\"pg_b:in\"/><hw/>");
    at(*mRoot, "graphs:graph").addValue(NUXO_KEY_CONNECTION, std::string("text"));
    EXPECT_EQ(groups(), "");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ProgramGroupsInGraphTest, OverridesOfTheGraphAreAppliedToTheNodes)
{
    load(
        R"(<graph id="100"><apply target="pg_a:stream_id" value="9"/><apply target="pg_b:exec_ctx_id" value="4"/></graph>
            <graph id="101"><apply target="pg_a:stream_id" value="8"/></graph>)");
    EXPECT_EQ(groups(), "");
    EXPECT_EQ(value(*mRoot, "nodes:pg_a:stream_id"), "9");
    EXPECT_EQ(value(*mRoot, "nodes:pg_b:exec_ctx_id"), "4"); // was not there
    EXPECT_EQ(count(kWarning, "Adding the missing attribute pg_b.exec_ctx_id required in graph override."), 1U);
    EXPECT_EQ(ask(mRoot.get(), 101), StatusOk);
    EXPECT_EQ(value(*mRoot, "nodes:pg_a:stream_id"), "8");
    EXPECT_EQ(value(*mRoot, "nodes:pg_b:exec_ctx_id"), "4");
}

TEST_F(ProgramGroupsInGraphTest, OverridesMayEvenMakeAProgramGroup)
{
    loadGraph("<apply target=\"csi_be:type\" value=\"program_group\"/>" + connection("csi_be:out", "video_sink"));
    EXPECT_EQ(groups(), "csi_be");
}

TEST_F(ProgramGroupsInGraphTest, NothingIsOverriddenWithoutTheGraph)
{
    loadGraph("<apply target=\"pg_a:stream_id\" value=\"9\"/>");
    const std::string before = text(*mRoot);
    EXPECT_EQ(ask(mRoot.get(), 101), StatusNotFound);
    EXPECT_EQ(text(*mRoot), before);
}

TEST_F(ProgramGroupsInGraphTest, StatusOfAFailingOverrideIsReturned)
{
    loadGraph("<apply value=\"1\"/>" + connection("pg_a:out", "pg_b:in"));
    expectFailure(StatusMissingData, {"16 Error: override tag with no attribute target node"});
    // `twin` is a node below a node of its own name, which an override cannot set.
    mRoot = descriptor(R"(<nodes><hw name="hw"><hw name="twin"><hw name="twin"/></hw></hw></nodes>
        <graphs><graph id="100"><apply target="hw:twin" value="5"/></graph></graphs>)");
    expectFailure(StatusNotFound, {"16 Error: Failed to set override of attribute hw.twin to 5"});
}

TEST_F(ProgramGroupsInGraphTest, OverrideThatIsNoNumberIsAFailureAndNoException)
{
    loadGraph("<apply target=\"pg_a:stream_id\" value=\"many\"/>" + connection("pg_a:out", "pg_b:in"));
    int status = StatusOk;
    EXPECT_NO_THROW(status = ask(mRoot.get(), 100));
    EXPECT_EQ(status, StatusBadArgument);
    EXPECT_TRUE(mGroups.empty());
    EXPECT_EQ(value(*mRoot, "nodes:pg_a:stream_id"), "1");
}

TEST_F(ProgramGroupsInGraphTest, NoDescriptorIsABadArgument)
{
    EXPECT_EQ(ask(nullptr, 100), StatusBadArgument);
    EXPECT_TRUE(mGroups.empty());
}

TEST_F(ProgramGroupsInGraphTest, RootMayBeOfAnotherImplementation)
{
    loadGraph("<apply target=\"pg_a:stream_id\" value=\"9\"/>" + connection("pg_a:out", "pg_b:in"));
    IGraphConfig* const graphs = &at(*mRoot, "graphs");
    const ForeignRoot whole({{NUXO_KEY_GRAPHS, graphs}, {NUXO_KEY_NODES, &at(*mRoot, "nodes")}});
    EXPECT_EQ(ask(&whole, 100), StatusOk);
    EXPECT_EQ(names(mGroups), "pg_a pg_b");
    const ForeignRoot withoutNodes({{NUXO_KEY_GRAPHS, graphs}});
    EXPECT_EQ(ask(&withoutNodes, 100), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({sim("16 No Nodes found from input GDF node")}));
}

TEST_F(ProgramGroupsInGraphTest, NodesOfAnotherImplementationCannotBeOverridden)
{
    loadGraph(connection("pg_a:out", "pg_b:in"));
    ForeignNode foreign;
    const ForeignRoot foreignNodes({{NUXO_KEY_GRAPHS, &at(*mRoot, "graphs")}, {NUXO_KEY_NODES, &foreign}});
    EXPECT_EQ(ask(&foreignNodes, 100), StatusBadArgument);
    EXPECT_TRUE(mGroups.empty());
    const ForeignRoot foreignGraphs({{NUXO_KEY_GRAPHS, &foreign}, {NUXO_KEY_NODES, &at(*mRoot, "nodes")}});
    EXPECT_LT(ask(&foreignGraphs, 100), StatusOk);
    EXPECT_TRUE(mGroups.empty());
}

TEST_F(ProgramGroupsInGraphTest, NodeWithoutARootHasNoGraphs)
{
    const ForeignNode rootless;
    EXPECT_EQ(ask(&rootless, 100), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({sim("16 No Graphs found from input GDF node")}));
}

} // namespace

} // namespace graphtest
