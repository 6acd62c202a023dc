// SPDX-License-Identifier: Apache-2.0
#include "camera/SubgraphFixture.h"

namespace graphtest {

namespace {

class SubgraphPortsTest : public SubgraphTest {};

// Two program groups of context 1 between hardware, which has a context too, and one of context 2.
const std::string kChain = element("hw", "be", "exec_ctx_id='1'", output("out", "a:in")) +
                           group("a", "exec_ctx_id='1'", input("in", "be:out") + output("out", "b:in")) +
                           group("b", "exec_ctx_id='1'", input("in", "a:out") + output("out", "c:in")) +
                           group("c", "exec_ctx_id='2'", input("in", "b:out") + output("out", "s")) + sink("s");

TEST_F(SubgraphPortsTest, PortsThatLeadElsewhereBoundASubgraph)
{
    load(kChain);
    EXPECT_EQ(inputs(1), "a:in");
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_EQ(outputs(1), "b:out");
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_EQ(inputs(2), "c:in");
    EXPECT_EQ(outputs(2), "c:out");
}

TEST_F(SubgraphPortsTest, EveryPeerIsNoted)
{
    load(kChain);
    inputs(1);
    EXPECT_TRUE(loggedExactly({"2 getSubgraphPorts: peer for in is out", "2 getSubgraphPorts: peer for in is out"}));
    outputs(2);
    EXPECT_EQ(linesBesideTypeWarnings(), Lines{"2 getSubgraphPorts: peer for out is s"});
}

TEST_F(SubgraphPortsTest, UnknownSubgraphHasNoPorts)
{
    load(kChain);
    EXPECT_EQ(inputs(3), "");
    EXPECT_EQ(mStatus, StatusBadArgument);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(ask(NUXO_KEY_STREAM_ID, 1, 0), "");
    EXPECT_EQ(mStatus, StatusBadArgument);
    EXPECT_EQ(ask(NUXO_KEY_NAME, 1, 0), ""); // not an integer
    EXPECT_EQ(mStatus, StatusBadArgument);
}

TEST_F(SubgraphPortsTest, PortsAreThoseOfThisCallAlone)
{
    load(kChain);
    inputs(1);
    EXPECT_EQ(outputs(1), "b:out");
    EXPECT_EQ(outputs(3), "");
}

TEST_F(SubgraphPortsTest, NodeTypeZeroSelectsWhatAFreshCursorYields)
{
    load(kChain);
    GraphConfigAttribute* type = nullptr;
    ASSERT_EQ(at(*mRoot, "a").getAttribute(NUXO_KEY_TYPE, &type), StatusOk);
    ASSERT_EQ(type->setValue(std::string()), StatusOk);
    ASSERT_EQ(NUXO::NodeIterator(mRoot.get()).iterateByType(NUXO_KEY_NA), find(*mRoot, "a"));
    mType = NUXO_KEY_NA;
    EXPECT_EQ(inputs(1), "a:in");
    EXPECT_EQ(mStatus, StatusOk);
}

TEST_F(SubgraphPortsTest, NodeTypeSelectsTheNodesAndTheirNeighbours)
{
    load(element("compute_block", "a", "exec_ctx_id='1'", output("out", "b:in") + output("gpu", "e:in")) +
         element("compute_block", "b", "exec_ctx_id='1'", input("in", "a:out")) +
         element("external_stage", "e", "exec_ctx_id='1'", input("in", "a:gpu")));
    EXPECT_EQ(outputs(1), "");
    mType = NUXO_KEY_COMPUTE_BLOCK;
    EXPECT_EQ(outputs(1), "a:gpu"); // the stage is not of the type, so it is outside
    EXPECT_EQ(inputs(1), "");
    mType = NUXO_KEY_EXTERNAL_STAGE;
    EXPECT_EQ(inputs(1), "e:in");
}

TEST_F(SubgraphPortsTest, KeyAndValueSelectTheSubgraph)
{
    load(group("a", "exec_ctx_id='1' stream_id='5'", output("out", "b:in")) +
         group("b", "exec_ctx_id='1' stream_id='6'", input("in", "a:out")));
    EXPECT_EQ(outputs(1), "");
    EXPECT_EQ(ask(NUXO_KEY_STREAM_ID, 5, 1), "a:out");
    EXPECT_EQ(ask(NUXO_KEY_STREAM_ID, 6, 0), "b:in");
}

// Disabled and private ports have no peer, and neither have those whose text leads nowhere.
TEST_F(SubgraphPortsTest, PortsWithoutPeersBoundTheSubgraph)
{
    const std::string ports = output("off", "a:in", "enabled='0'") + output("own", "a:in", "private='1'") +
                              output("dangling", "ghost:in") + port("alone", "direction='1'");
    load(group("a", "exec_ctx_id='1'", ports + port("in", "direction='0' peer='a:off'")));
    EXPECT_EQ(outputs(1), "a:off a:own a:dangling a:alone");
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_TRUE(loggedExactly({noPeer("off"), noPeer("own"), "16 Failed to find peer by name ghost:in",
                               noPeer("dangling"), "2 Couldn't find peer value for port[a:alone]", noPeer("alone")}));
    EXPECT_EQ(inputs(1), ""); // its peer is off, but there
}

TEST_F(SubgraphPortsTest, PeerOfAnotherKindIsNone)
{
    load(group("a", "exec_ctx_id='1'", input("in", "a:in")));
    replace(*node("a:in"), NUXO_KEY_PEER, 3);
    EXPECT_EQ(inputs(1), "a:in");
    EXPECT_TRUE(loggedExactly({"2 Couldn't find peer value for port[a:in]", noPeer("in")}));
}

TEST_F(SubgraphPortsTest, OutputsToSinksBoundTheSubgraphWhereverTheSinkIs)
{
    load(group("a", "exec_ctx_id='1'", output("out", "b:s") + input("in", "b:s")) +
         group("b", "exec_ctx_id='1'", sink("s")));
    EXPECT_EQ(outputs(1), "a:out");
    EXPECT_EQ(inputs(1), ""); // for an input the sink is a neighbour like any other
}

TEST_F(SubgraphPortsTest, NodesOfOtherTypesAreOutsideEvenWithTheSameValue)
{
    load(group("a", "exec_ctx_id='1'", input("in", "be:out") + output("out", "be:in") + input("tap", "s")) +
         element("hw", "be", "exec_ctx_id='1'", input("in", "a:out") + output("out", "a:in")) +
         sink("s", "exec_ctx_id='1'"));
    EXPECT_EQ(outputs(1), "a:out");
    EXPECT_EQ(inputs(1), "a:in a:tap"); // a sink belongs to the root
}

TEST_F(SubgraphPortsTest, NeighboursWithoutTheKeyAreLeftOut)
{
    load(group("a", "exec_ctx_id='1'", output("out", "b:in") + output("second", "b:in")) +
         group("b", "stream_id='2'", input("in", "a:out")));
    EXPECT_EQ(outputs(1), "");
    EXPECT_EQ(mStatus, StatusBadArgument);
    EXPECT_TRUE(loggedExactly(
        {"2 getSubgraphPorts: peer for out is in", "2 getSubgraphPorts: no exec_ctx_id for peer port[b:in]",
         "2 getSubgraphPorts: peer for second is in", "2 getSubgraphPorts: no exec_ctx_id for peer port[b:in]"}));
    node("b")->addValue(NUXO_KEY_EXEC_CTX_ID, std::string("2"));
    EXPECT_EQ(outputs(1), "");
    EXPECT_TRUE(logged(kDebug, "getSubgraphPorts: no exec_ctx_id for peer port[b:in]"));
    EXPECT_EQ(ask(NUXO_KEY_STREAM_ID, 2, 0), "");
    EXPECT_TRUE(logged(kDebug, "getSubgraphPorts: no stream_id for peer port[a:out]"));
}

TEST_F(SubgraphPortsTest, NodesWithoutTheKeyBelongToNoSubgraph)
{
    load(group("a", "exec_ctx_id='1'", output("out", "s")) + group("b", "", output("out", "s")) + sink("s"));
    EXPECT_EQ(outputs(1), "a:out");
    EXPECT_EQ(outputs(-1), "");
    node("b")->addValue(NUXO_KEY_EXEC_CTX_ID, std::string("1"));
    EXPECT_EQ(outputs(1), "a:out");
    replace(*node("b"), NUXO_KEY_EXEC_CTX_ID, -1);
    EXPECT_EQ(outputs(-1), "b:out");
}

TEST_F(SubgraphPortsTest, PortsWithoutADirectionAreInputs)
{
    load(group("a", "exec_ctx_id='1'", port("in", "peer='s'")) + sink("s"));
    EXPECT_EQ(inputs(1), "a:in");
    EXPECT_EQ(count(kError, "Failed to retrieve port direction, default to input"), 1U);
    EXPECT_EQ(outputs(1), "");
    EXPECT_TRUE(loggedExactly({"16 Failed to retrieve port direction, default to input"}));
    node("a:in")->addValue(NUXO_KEY_DIRECTION, std::string("1"));
    EXPECT_EQ(outputs(1), "");
    EXPECT_EQ(count(kError, "Failed to retrieve port direction, default to input"), 1U);
}

TEST_F(SubgraphPortsTest, DirectionIsComparedAsANumber)
{
    load(group("a", "exec_ctx_id='1'", port("x", "direction='2'") + port("y", "direction='-1'")));
    EXPECT_EQ(inputs(1), "");
    EXPECT_EQ(outputs(1), "");
    EXPECT_EQ(ask(NUXO_KEY_EXEC_CTX_ID, 1, 2), "a:x");
    EXPECT_EQ(ask(NUXO_KEY_EXEC_CTX_ID, 1, -1), "a:y");
}

TEST_F(SubgraphPortsTest, FirstOfSeveralPeersCounts)
{
    load(group("a", "exec_ctx_id='1'", output("out", "a:in") + input("in", "a:out")) + sink("s"));
    node("a:out")->insertDescendant(new GraphConfigStrAttribute("s"), NUXO_KEY_PEER);
    EXPECT_EQ(outputs(1), "");
}

TEST_F(SubgraphPortsTest, CirclesAreInside)
{
    load(group("a", "exec_ctx_id='1'", input("in", "b:in") + output("out", "a:out")) +
         group("b", "exec_ctx_id='1'", input("in", "a:in")));
    EXPECT_EQ(inputs(1), "");
    EXPECT_EQ(outputs(1), "");
}

TEST_F(SubgraphPortsTest, PortsComeInTheOrderOfNodesAndPorts)
{
    load(group("p", "exec_ctx_id='1'", port("x", "direction='1'") + port("y", "direction='1'")) +
         group("output", "exec_ctx_id='1'", port("y", "direction='1'") + port("x", "direction='1'")) +
         group("input", "exec_ctx_id='1'", port("y", "direction='1'") + port("input", "direction='1'")));
    EXPECT_EQ(outputs(1), "input:input input:y output:x output:y p:x p:y");
}

TEST_F(SubgraphPortsTest, NodesDirectlyBelowTheGivenOneAreAsked)
{
    load(group("outer", "exec_ctx_id='1'", group("a", "exec_ctx_id='1'", output("out", "s"))) + sink("s"));
    EXPECT_EQ(outputs(1), "");
    std::vector<IGraphConfig*> found;
    EXPECT_EQ(GraphCameraUtil::getSubgraphPorts(NUXO_KEY_EXEC_CTX_ID, 1, 1, *node("outer"), found, mType), StatusOk);
    EXPECT_EQ(paths(found), "outer:a:out");
}

TEST_F(SubgraphPortsTest, NamesAreThoseOfTheAttributesOrElseOfTheNodes)
{
    load(group("a", "exec_ctx_id='1'", output("out", "b:in")) + group("b", "exec_ctx_id='2'", input("in", "a:out")));
    replace(*node("a:out"), NUXO_KEY_NAME, "x");
    replace(*node("b:in"), NUXO_KEY_NAME, "y");
    outputs(1);
    EXPECT_TRUE(loggedExactly({"2 getSubgraphPorts: peer for x is y"}));
    node("a:out")->removeDescendant(NUXO_KEY_NAME);
    node("b:in")->removeDescendant(NUXO_KEY_NAME);
    outputs(1);
    EXPECT_TRUE(loggedExactly({"2 getSubgraphPorts: peer for out is in"}));
    node("a:out")->removeDescendant(NUXO_KEY_PEER);
    outputs(1);
    EXPECT_TRUE(logged(kDebug, "getSubgraphPorts: no peer found for port out"));
}

TEST_F(SubgraphPortsTest, PeerOfNoNodeIsOutside)
{
    load(group("a", "exec_ctx_id='1'"));
    GraphConfigNode lost;
    addPortOfForeignGraph(*node("a"), "out", 1, &lost);
    addPortOfForeignGraph(*node("a"), "in", 0, &lost);
    EXPECT_EQ(outputs(1), "a:out");
    EXPECT_EQ(inputs(1), "a:in");
}

TEST_F(SubgraphPortsTest, ForeignPeersAreAskedThroughTheInterface)
{
    class MockGroup : public MockNode {
        bool isType(uint32_t wanted) const override { return wanted == NUXO_KEY_PROGRAM_GROUP; }
    };
    load(group("a", "exec_ctx_id='1'"));
    MockGroup far;
    MockNode farPort;
    farPort.mAncestor = &far;
    addPortOfForeignGraph(*node("a"), "in", 0, &farPort);
    EXPECT_EQ(inputs(1), "");
    EXPECT_TRUE(logged(kDebug, "getSubgraphPorts: no exec_ctx_id for peer NODE[foreign]"));
    far.mIntegers[NUXO_KEY_EXEC_CTX_ID] = 1;
    EXPECT_EQ(inputs(1), "");
    far.mIntegers[NUXO_KEY_EXEC_CTX_ID] = 2;
    EXPECT_EQ(inputs(1), "a:in");
}

TEST_F(SubgraphPortsTest, ForeignGraphHasNoPorts)
{
    const ForeignNode foreign;
    load(kChain);
    std::vector<IGraphConfig*> found = {node("a")};
    EXPECT_EQ(GraphCameraUtil::getSubgraphPorts(NUXO_KEY_EXEC_CTX_ID, 1, 0, foreign, found, mType), StatusBadArgument);
    EXPECT_TRUE(found.empty());
}

class InputPortsTest : public SubgraphTest {
protected:
    /// The path of getInputPort's result for context @p value; empty without one.
    std::string first(int value)
    {
        IGraphConfig* found = nullptr;
        clearLog();
        mStatus = GraphCameraUtil::getInputPort(NUXO_KEY_EXEC_CTX_ID, value, mRoot.get(), &found, mType);
        return found == nullptr ? "" : paths({found});
    }
};

TEST_F(InputPortsTest, InputPortsAreTheSubgraphPortsOfThatDirection)
{
    load(kChain);
    mFound = {node("s")};
    EXPECT_EQ(GraphCameraUtil::getInputPorts(NUXO_KEY_EXEC_CTX_ID, 1, *mRoot, mFound, mType), StatusOk);
    EXPECT_EQ(paths(mFound), "a:in");
    EXPECT_TRUE(loggedExactly({"2 getSubgraphPorts: peer for in is out", "2 getSubgraphPorts: peer for in is out"}));
    EXPECT_EQ(GraphCameraUtil::getInputPorts(NUXO_KEY_EXEC_CTX_ID, 3, *mRoot, mFound, mType), StatusBadArgument);
    EXPECT_TRUE(mFound.empty());
    EXPECT_EQ(GraphCameraUtil::getInputPorts(NUXO_KEY_EXEC_CTX_ID, 1, *mRoot, mFound, NUXO_KEY_COMPUTE_BLOCK),
              StatusBadArgument);
    EXPECT_EQ(GraphCameraUtil::getInputPorts(NUXO_KEY_EXEC_CTX_ID, 1, ForeignNode(), mFound, mType), StatusBadArgument);
}

TEST_F(InputPortsTest, NullArgumentsAreReported)
{
    load(kChain);
    IGraphConfig* found = node("s");
    EXPECT_EQ(GraphCameraUtil::getInputPort(NUXO_KEY_EXEC_CTX_ID, 1, nullptr, &found, mType), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 NULL pointer given"}));
    EXPECT_EQ(GraphCameraUtil::getInputPort(NUXO_KEY_EXEC_CTX_ID, 1, mRoot.get(), nullptr, mType), StatusBadArgument);
    EXPECT_EQ(GraphCameraUtil::getInputPort(NUXO_KEY_EXEC_CTX_ID, 1, nullptr, nullptr, mType), StatusBadArgument);
    EXPECT_EQ(lines(), (Lines{"16 NULL pointer given", "16 NULL pointer given", "16 NULL pointer given"}));
    EXPECT_EQ(found, static_cast<IGraphConfig*>(node("s")));
}

TEST_F(InputPortsTest, FirstInputPortWithAPeerIsGiven)
{
    load(group("a", "exec_ctx_id='1'",
               input("off", "be:out", "enabled='0'") + input("dangling", "ghost") + input("in", "be:out") +
                   input("second", "be:out")) +
         element("hw", "be", "", port("out", "direction='1'")));
    EXPECT_EQ(first(1), "a:in");
    EXPECT_EQ(mStatus, StatusOk);
}

TEST_F(InputPortsTest, InternalInputPortsDoNotCount)
{
    load(group("a", "exec_ctx_id='1'", output("out", "b:first")) +
         group("b", "exec_ctx_id='1'", input("first", "a:out") + input("second", "s")) + sink("s"));
    EXPECT_EQ(first(1), "b:second");
}

TEST_F(InputPortsTest, NodeTypeIsPassedOn)
{
    load(element("compute_block", "a", "exec_ctx_id='1'", input("in", "s")) + sink("s"));
    EXPECT_EQ(first(1), "");
    EXPECT_EQ(mStatus, StatusBadArgument);
    mType = NUXO_KEY_COMPUTE_BLOCK;
    EXPECT_EQ(first(1), "a:in");
}

TEST_F(InputPortsTest, WithoutPeersTheLastFailureIsGiven)
{
    load(group("a", "exec_ctx_id='1'", input("x", "ghost") + input("y", "s", "enabled='0'")) + sink("s"));
    EXPECT_EQ(first(1), "");
    EXPECT_EQ(mStatus, StatusNotFound);
    load(group("a", "exec_ctx_id='1'", input("x", "s", "enabled='0'") + input("y", "ghost")) + sink("s"));
    EXPECT_EQ(first(1), "");
    EXPECT_EQ(mStatus, StatusBadArgument);
}

TEST_F(InputPortsTest, PortIsUntouchedOnFailure)
{
    load(group("a", "exec_ctx_id='1'", input("off", "s", "enabled='0'") + input("dangling", "ghost")) + sink("s"));
    for (const int value : {1, 2}) { // ports without peers, no ports
        IGraphConfig* found = node("s");
        EXPECT_NE(GraphCameraUtil::getInputPort(NUXO_KEY_EXEC_CTX_ID, value, mRoot.get(), &found, mType), StatusOk);
        EXPECT_EQ(found, static_cast<IGraphConfig*>(node("s"))) << value;
    }
    const ForeignNode foreign;
    IGraphConfig* found = node("s");
    EXPECT_EQ(GraphCameraUtil::getInputPort(NUXO_KEY_EXEC_CTX_ID, 1, &foreign, &found, mType), StatusBadArgument);
    EXPECT_EQ(found, static_cast<IGraphConfig*>(node("s")));
}

} // namespace

} // namespace graphtest
