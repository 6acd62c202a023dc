// SPDX-License-Identifier: Apache-2.0
#include "camera/SubgraphFixture.h"

namespace graphtest {

namespace {

class OutputPortsTest : public SubgraphTest {
protected:
    std::string outputPorts(int value)
    {
        clearLog();
        mStatus = GraphCameraUtil::getOutputPorts(NUXO_KEY_EXEC_CTX_ID, value, *mRoot, mFound, mType);
        return paths(mFound);
    }

    static std::string sourcePortAlone(const std::string& port)
    {
        return "2 Source port " + port + " has no peer found. Added to list of subgraph output ports";
    }

    static std::string crossing(const std::string& port, int from, int to)
    {
        return "2 Source port " + port + " crosses Subgraph boundary (" + std::to_string(from) + ")->(" +
               std::to_string(to) + ")";
    }

    static constexpr const char* kNoDirection = "16 Failed to retrieve port direction, default to input";
};

// A source that feeds context 1, and no output of that context.
const std::string kNoOutput =
    element("source", "cam", "", output("o", "a:in")) + group("a", "exec_ctx_id='1'", input("in", "cam:o"));

TEST_F(OutputPortsTest, OutputsOfTheSubgraphSuffice)
{
    load(element("source", "cam", "", port("o", "direction='1'")) + sink("s") +
         group("a", "exec_ctx_id='1'", output("out", "s") + output("next", "b:in")) +
         group("b", "exec_ctx_id='2'", input("in", "a:next")));
    EXPECT_EQ(outputPorts(1), "a:out a:next");
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_EQ(linesBesideTypeWarnings(),
              (Lines{"2 getSubgraphPorts: peer for out is s", "2 getSubgraphPorts: peer for next is in"}));
}

TEST_F(OutputPortsTest, NeitherOutputsNorSourcesGiveNothing)
{
    load(group("a", "exec_ctx_id='1'", input("in", "s")) + sink("s"));
    mFound = {node("s")};
    EXPECT_EQ(outputPorts(1), "");
    EXPECT_EQ(mStatus, StatusBadArgument);
    EXPECT_TRUE(loggedExactly({}));
    load(element("source", "cam"));
    EXPECT_EQ(outputPorts(1), "");
    EXPECT_EQ(mStatus, StatusBadArgument);
    EXPECT_EQ(GraphCameraUtil::getOutputPorts(NUXO_KEY_EXEC_CTX_ID, 1, ForeignNode(), mFound, mType),
              StatusBadArgument);
}

TEST_F(OutputPortsTest, SourceThatLeadsIntoTheSubgraphItselfIsNoOutput)
{
    load(kNoOutput);
    EXPECT_EQ(outputPorts(1), "");
    EXPECT_EQ(mStatus, StatusBadArgument);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(OutputPortsTest, SourceThatLeadsIntoAnotherSubgraphIs)
{
    load(kNoOutput);
    EXPECT_EQ(outputPorts(2), "cam:o");
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_TRUE(loggedExactly({crossing("o", 2, 1)}));
}

TEST_F(OutputPortsTest, SourcePortsWithoutPeersAreOutputs)
{
    load(element("source", "cam", "",
                 output("off", "a:in", "enabled='0'") + output("own", "a:in", "private='1'") +
                     output("dangling", "ghost:in") + port("alone", "direction='1'")) +
         group("a", "exec_ctx_id='1'", input("in", "cam:off")));
    EXPECT_EQ(outputPorts(1), "cam:off cam:own cam:dangling cam:alone");
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_TRUE(loggedExactly({sourcePortAlone("off"), sourcePortAlone("own"),
                               "16 Failed to find peer by name ghost:in", sourcePortAlone("dangling"),
                               "2 Couldn't find peer value for port[cam:alone]", sourcePortAlone("alone")}));
}

TEST_F(OutputPortsTest, DirectionOfSourcePortsDoesNotMatter)
{
    load(element("source", "cam", "", port("x", "direction='0'") + port("y", "") + input("z", "a:in")) +
         group("a", "exec_ctx_id='1'", input("in", "cam:z")));
    EXPECT_EQ(outputPorts(2), "cam:x cam:y cam:z");
    EXPECT_EQ(count(kError, "Failed to retrieve port direction, default to input"), 0U);
}

TEST_F(OutputPortsTest, DisabledSourcesCountToo)
{
    load(element("source", "cam", "enabled='0'", port("x", "direction='1'")));
    EXPECT_EQ(outputPorts(1), "cam:x");
}

TEST_F(OutputPortsTest, OutputsOfOtherNodesThatASourceFeedsCount)
{
    const std::string ports = input("in", "cam:o") + output("off", "a:in", "enabled='0'") + output("out", "a:in") +
                              port("odd", "direction='2'");
    load(element("source", "cam", "", output("o", "be:in")) + element("hw", "be", "exec_ctx_id='1'", ports) +
         group("a", "exec_ctx_id='1'", input("in", "be:out")));
    for (const int value : {1, 2}) { // the node is of another type, so its own value says nothing
        EXPECT_EQ(outputPorts(value), "be:off be:out") << value;
        EXPECT_EQ(mStatus, StatusOk);
        EXPECT_EQ(linesBesideTypeWarnings(), Lines{});
    }
}

TEST_F(OutputPortsTest, OutputsOfFedNodesNeedADirection)
{
    load(element("source", "cam", "", output("o", "be:in")) +
         element("hw", "be", "", input("in", "cam:o") + port("undirected", "") + port("texted", "")));
    node("be:texted")->addValue(NUXO_KEY_DIRECTION, std::string("1"));
    EXPECT_EQ(outputPorts(1), "");
    EXPECT_EQ(mStatus, StatusBadArgument);
    EXPECT_TRUE(loggedExactly({kNoDirection, kNoDirection}));
}

TEST_F(OutputPortsTest, NodeThatTwoSourcePortsFeedIsListedTwice)
{
    load(element("source", "cam", "", output("x", "be:in") + output("y", "be:second")) +
         element("hw", "be", "", input("in", "cam:x") + input("second", "cam:y") + port("out", "direction='1'")));
    EXPECT_EQ(outputPorts(1), "be:out be:out");
}

TEST_F(OutputPortsTest, FedProgramGroupWithoutTheKeyIsReported)
{
    load(element("source", "cam", "", output("o", "b:in")) + group("b", "stream_id='1'", input("in", "cam:o")));
    EXPECT_EQ(outputPorts(1), "");
    EXPECT_EQ(mStatus, StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"32 PG b does not have stream id or exec ctx- FIX it!"}));
    node("b")->addValue(NUXO_KEY_EXEC_CTX_ID, std::string("1"));
    EXPECT_EQ(outputPorts(2), "");
    EXPECT_TRUE(loggedExactly({"32 PG b does not have stream id or exec ctx- FIX it!"}));
    EXPECT_EQ(mStatus, StatusBadArgument);
}

TEST_F(OutputPortsTest, SourceThatFeedsASinkLeadsNowhere)
{
    load(element("source", "cam", "", output("o", "s")) + sink("s"));
    EXPECT_EQ(outputPorts(1), "");
    EXPECT_EQ(mStatus, StatusBadArgument);
    EXPECT_EQ(linesBesideTypeWarnings(), Lines{});
}

TEST_F(OutputPortsTest, NodeTypeIsPassedOn)
{
    load(element("source", "cam", "", output("o", "a:in")) +
         element("compute_block", "a", "exec_ctx_id='1'", input("in", "cam:o") + output("out", "s")) + sink("s"));
    EXPECT_EQ(outputPorts(2), "a:out"); // an output of a node of another type that a source feeds
    mType = NUXO_KEY_COMPUTE_BLOCK;
    EXPECT_EQ(outputPorts(1), "a:out");
    EXPECT_EQ(outputPorts(2), "cam:o");
    EXPECT_TRUE(loggedExactly({crossing("o", 2, 1)}));
}

TEST_F(OutputPortsTest, SourcesComeInTheOrderOfKeys)
{
    load(element("source", "tpg", "", port("y", "") + port("x", "")) + element("source", "sensor", "", port("x", "")) +
         element("node", "buffer_src0", "type='source'", port("x", "")) + element("hw", "tap", "", port("x", "")));
    EXPECT_EQ(outputPorts(1), "buffer_src0:x sensor:x tpg:y tpg:x"); // 6, 36 and 57
}

TEST_F(OutputPortsTest, PeerOfNoNodeLeadsNowhere)
{
    load(element("source", "cam"));
    GraphConfigNode lost;
    addPortOfForeignGraph(*node("cam"), "o", 1, &lost);
    EXPECT_EQ(outputPorts(1), "");
    EXPECT_EQ(mStatus, StatusBadArgument);
}

TEST_F(OutputPortsTest, ForeignNodesThatASourceFeedsHaveNoPorts)
{
    load(element("source", "cam"));
    MockNode far;
    MockNode farPort;
    farPort.mAncestor = &far;
    far.mIntegers[NUXO_KEY_EXEC_CTX_ID] = 2;
    addPortOfForeignGraph(*node("cam"), "o", 1, &farPort);
    EXPECT_EQ(outputPorts(1), "");
    EXPECT_EQ(mStatus, StatusBadArgument);
}

} // namespace

} // namespace graphtest
