// SPDX-License-Identifier: Apache-2.0
// Inner graphs as a whole: ports of sources, connections between groups, marks.
#include "analysis/InnerGraphFixture.h"

namespace graphtest {

namespace {

class InnerConnectionsTest : public GraphStepsTest {
protected:
    /// Gives mSg the output ports at these paths and collects them.
    int collectPorts(const std::vector<std::string>& outputPorts)
    {
        for (const std::string& path : outputPorts) mSg.outputPorts.push_back(node(path));
        clearLog();
        return access().collectSourceInnerGraph(mSg);
    }

    /// Collects these groups and then the connections of the loaded graph.
    int connectGroups(const Lines& groups)
    {
        addOuterGraph();
        mSg.imagingNodes.clear();
        for (const std::string& name : groups) {
            EXPECT_EQ(access().collectPgInnerGraph(mSg, *node(name)), StatusOk);
        }
        clearLog();
        return access().collectInterPgConnections(mSg);
    }

    static std::string added(const std::string& connectionText)
    {
        return "2 Adding internal connection to Imaging graph " + connectionText;
    }

    SubGraphInfo mSg;
};

TEST_F(InnerConnectionsTest, OutputPortsOfASourceAreNodes)
{
    load(element("source", "cam", "", port("out", "") + port("meta", "")));
    start();
    EXPECT_EQ(collectPorts({"cam:out", "cam:meta"}), StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Collecting source output port", "2 Collecting source output port cam:out",
                               "2 Collecting source output port cam:meta"}));
    EXPECT_EQ(innerGraph(mSg), (Lines{"cam:meta output", "cam:out output"}));
    const ImagingNode& out = *mSg.imagingNodes.at("cam:out");
    EXPECT_EQ(out.name, "cam:out");
    EXPECT_EQ(out.node, node("cam:out"));
    EXPECT_EQ(out.activePort, -1);
    EXPECT_EQ(out.tevRunKernel, nullptr);
}

TEST_F(InnerConnectionsTest, SourceWithoutOutputPortsHasNoNodes)
{
    load(element("source", "cam"));
    start();
    EXPECT_EQ(collectPorts({}), StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Collecting source output port"}));
    EXPECT_TRUE(mSg.imagingNodes.empty());
}

TEST_F(InnerConnectionsTest, PortThatIsANodeAlreadyKeepsItsLinks)
{
    load(group("pg", "", kernel("k", 1) + port("out", "") + klink("k:0", "out")));
    start();
    EXPECT_EQ(access().collectPgInnerGraph(mSg, *node("pg")), StatusOk);
    EXPECT_EQ(collectPorts({"pg:out", "pg:out"}), StatusOk);
    EXPECT_EQ(innerGraph(mSg), (Lines{"pg:k kernel > pg:out[0]", "pg:out output < pg:k[]"}));
}

TEST_F(InnerConnectionsTest, AnotherPortOfTheNameCutsTheEarlierOneOut)
{
    load(group("pg", "", kernel("k", 1) + port("out", "") + klink("k:0", "out")) + "<program_group name='twin'>" +
         port("out", "") + "</program_group>");
    start();
    EXPECT_EQ(access().collectPgInnerGraph(mSg, *node("pg")), StatusOk);
    replace(*node("twin"), NUXO_KEY_NAME, "pg");
    EXPECT_EQ(collectPorts({"twin:out"}), StatusOk);
    EXPECT_EQ(innerGraph(mSg), (Lines{"pg:k kernel", "pg:out output"}));
    EXPECT_EQ(mSg.imagingNodes.at("pg:out")->node, node("twin:out"));
}

TEST_F(InnerConnectionsTest, OnlySubgraphsThatNothingFeedsGetNodesForTheirOutputPorts)
{
    load(smallGraph());
    EXPECT_EQ(analyze(), StatusOk);
    EXPECT_EQ(innerGraph(-1), Lines{"buffer_src0:port_0 output"});
    EXPECT_EQ(innerGraph(1),
              (Lines{"pg:in input > pg:k[]", "pg:k kernel > pg:out[0] < pg:in[0]", "pg:out output < pg:k[]"}));
    EXPECT_TRUE(
        loggedInOrder({"2 Collecting source output port", "2 Collecting source output port buffer_src0:port_0"}));
    EXPECT_TRUE(notLogged("Collecting source output port pg:out"));
}

TEST_F(InnerConnectionsTest, SourceSubgraphWithGroupsKeepsTheirLinks)
{
    load(group("pg", "stream_id='1'",
               output("out", "video") + output("spare", "nothing") + kernel("k", 1) + klink("k:0", "out")) +
         sink("video", "stream_id='1' peer='pg:out'") + graphOf(connection("pg:out", "video")));
    EXPECT_EQ(analyze(), StatusOk);
    EXPECT_EQ(innerGraph(1), (Lines{"pg:k kernel > pg:out[0]", "pg:out output < pg:k[]", "pg:spare output"}));
}

TEST_F(InnerConnectionsTest, GroupsAreLinkedByWholeTexts)
{
    load(group("first", "", kernel("k", 1) + port("out", "") + klink("k:0", "out")) +
         group("second", "", kernel("k", 2) + port("in", "") + klink("in", "k:0")) +
         graphOf(connection("first:out", "second:in")));
    EXPECT_EQ(connectGroups({"first", "second"}), StatusOk);
    EXPECT_TRUE(loggedExactly({added("first:out->second:in")}));
    EXPECT_EQ(innerGraph(mSg),
              (Lines{"first:k kernel > first:out[0]", "first:out output > second:in[second:in] < first:k[]",
                     "second:in input > second:k[] < first:out[first:out]", "second:k kernel < second:in[0]"}));
}

TEST_F(InnerConnectionsTest, ConnectionOfAGroupWithItselfIsMarked)
{
    load(group("pg", "",
               kernel("k", 1) + port("in", "") + port("back", "") + port("out", "") + klink("in", "k:0") +
                   klink("back", "k:1") + klink("k:0", "out")) +
         graphOf(connection("pg:out", "pg:back")));
    EXPECT_EQ(connectGroups({"pg"}), StatusOk);
    EXPECT_TRUE(loggedExactly({added("pg:out->pg:back")}));
    EXPECT_EQ(innerGraph(mSg), (Lines{"pg:back input flags=2 > pg:k[] < pg:out[pg:out]", "pg:in input > pg:k[]",
                                      "pg:k kernel > pg:out[0] < pg:in[0] < pg:back[1]",
                                      "pg:out output flags=2 > pg:back[pg:back] < pg:k[]"}));
}

TEST_F(InnerConnectionsTest, MarkIsAddedToOtherFlags)
{
    load(group("pg", "", kernel("k", 1, "rcb='1'")) + graphOf(connection("pg:k", "pg:k")));
    EXPECT_EQ(connectGroups({"pg"}), StatusOk);
    EXPECT_EQ(innerGraph(mSg), Lines{"pg:k kernel flags=3 > pg:k[pg:k] < pg:k[pg:k]"});
}

TEST_F(InnerConnectionsTest, ConnectionsThatLeaveTheInnerGraphAreSkipped)
{
    load(element("source", "cam") + group("pg", "", kernel("k", 1) + port("in", "") + klink("in", "k:0")) +
         sink("video") +
         graphOf(connection("cam:out", "pg:in") + connection("pg:in", "video") + connection("pg", "pg:in") +
                 connection("pg:in", "pg") + "<connection source='pg:in'/><connection sink='pg:in'/><connection/>"));
    EXPECT_EQ(connectGroups({"pg"}), StatusOk);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(innerGraph(mSg), (Lines{"pg:in input > pg:k[]", "pg:k kernel < pg:in[0]"}));
}

TEST_F(InnerConnectionsTest, ConnectionsComeInTheOrderOfTheGraphAndLinkOnce)
{
    load(group("a", "", port("o", "") + port("i", "") + klink("i", "o")) +
         group("b", "", port("o", "") + port("i", "") + klink("i", "o")) +
         graphOf(connection("b:o", "a:i") + connection("a:o", "b:i") + connection("b:o", "a:i")));
    EXPECT_EQ(connectGroups({"a", "b"}), StatusOk);
    EXPECT_TRUE(loggedExactly({added("b:o->a:i"), added("a:o->b:i"), added("b:o->a:i")}));
    EXPECT_EQ(innerGraph(mSg), (Lines{"a:i input > a:o[] < b:o[b:o]", "a:o output > b:i[b:i] < a:i[]",
                                      "b:i input > b:o[] < a:o[a:o]", "b:o output > a:i[a:i] < b:i[]"}));
}

TEST_F(InnerConnectionsTest, ExistingLinkKeepsItsLabel)
{
    load(group("pg", "", port("i", "") + port("o", "") + klink("i", "o")) + graphOf(connection("pg:i", "pg:o")));
    EXPECT_EQ(connectGroups({"pg"}), StatusOk);
    EXPECT_EQ(innerGraph(mSg), (Lines{"pg:i input flags=2 > pg:o[]", "pg:o output flags=2 < pg:i[]"}));
}

TEST_F(InnerConnectionsTest, ConnectionsNeedTheGraphNode)
{
    load(group("pg", ""));
    start();
    EXPECT_EQ(access().collectInterPgConnections(mSg), StatusBadState);
    EXPECT_TRUE(loggedExactly({}));
}

/// Marks of inner graphs. Letters of mSg's nodes: k, l kernels; m mux; i input port.
class InnerMarksTest : public GraphStepsTest {
protected:
    InnerMarksTest()
    {
        mSg.id = 5;
        add("k", Access::KERNEL).runKernel.enable = 1;
        add("l", Access::KERNEL).runKernel.enable = 0;
        add("m", Access::MUX);
        add("i", Access::INPUT_PORT);
    }

    ImagingNode& add(const std::string& name, Access::ImagingNodeType type)
    {
        auto node = std::make_shared<ImagingNode>();
        node->name = name;
        node->type = type;
        mSg.imagingNodes["pg:" + name] = node;
        return *node;
    }

    ImagingNode& inner(const std::string& name) const { return *mSg.imagingNodes.at("pg:" + name); }

    /// Marks these letters and resets.
    void reset(const std::string& visited, bool checkActive = true)
    {
        for (const char letter : visited) inner(std::string(1, letter)).visited = true;
        clearLog();
        access().resetInnerGraph(mSg, checkActive);
        for (const auto& entry : mSg.imagingNodes) EXPECT_FALSE(entry.second->visited) << entry.first;
    }

    static std::string missed(const std::string& counts)
    {
        return "32 Traversal of inner graph 5 did not reach all ACTIVE nodes " + counts;
    }

    static std::string notReached(const std::string& name) { return "32 Imaging Node " + name + " not reached"; }

    SubGraphInfo mSg;
};

TEST_F(InnerMarksTest, AreClearedInSilenceWhenAllActiveNodesWereReached)
{
    reset("iklm");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(InnerMarksTest, ActiveNodesThatWereNotReachedAreNamedInOrder)
{
    reset("i");
    EXPECT_TRUE(loggedExactly({missed("1/4"), notReached("k"), notReached("l"), notReached("m")}));
    reset("");
    EXPECT_TRUE(loggedExactly({missed("0/4"), notReached("i"), notReached("k"), notReached("l"), notReached("m")}));
}

TEST_F(InnerMarksTest, AreClearedInSilenceWithoutCheck)
{
    reset("i", false);
    EXPECT_TRUE(loggedExactly({}));
    reset("", false);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(InnerMarksTest, DisabledNodesAreNotActive)
{
    inner("m").flags = Access::DisabledNode;
    inner("i").flags = Access::DisabledNode | Access::SameNodeEnd;
    inner("k").flags = Access::DisabledNode | Access::RcbKernel;
    reset("l");
    EXPECT_TRUE(loggedExactly({}));
    inner("k").flags = Access::RcbKernel | Access::SameNodeEnd;
    reset("l");
    EXPECT_TRUE(loggedExactly({missed("1/2"), notReached("k")}));
}

TEST_F(InnerMarksTest, SwitchedOffKernelsAreNotActive)
{
    inner("k").runKernel.enable = 2;
    inner("l").runKernel.enable = 3;
    reset("im");
    EXPECT_TRUE(loggedExactly({}));
    inner("k").runKernel.enable = -1;
    reset("im");
    EXPECT_TRUE(loggedExactly({missed("2/3"), notReached("k")}));
}

TEST_F(InnerMarksTest, EnableCountsOnlyForKernels)
{
    inner("m").runKernel.enable = 2;
    inner("i").runKernel.enable = 2;
    reset("kl");
    EXPECT_TRUE(loggedExactly({missed("2/4"), notReached("i"), notReached("m")}));
}

TEST_F(InnerMarksTest, CountsAreCompared)
{
    inner("k").runKernel.enable = 2;
    reset("kim"); // l is missing, but three nodes were visited and three are active
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(InnerMarksTest, EmptyGraphHasNothingToReset)
{
    mSg.imagingNodes.clear();
    reset("");
    EXPECT_TRUE(loggedExactly({}));
}

} // namespace

} // namespace graphtest
