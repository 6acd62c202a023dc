// SPDX-License-Identifier: Apache-2.0
#include "camera/ContextFixture.h"

namespace graphtest {

namespace {

class ContextConnectionsTest : public ContextTest {
protected:
    int ask()
    {
        clearLog();
        return GraphCameraUtil::getExecCtxConnectionPorts(mRoot.get(), mConnections, mInputPeers, mOutputPeers);
    }

    /// Asks a graph with these nodes, into empty results.
    int ask(const std::string& nodes)
    {
        load(nodes);
        clearResults();
        return ask();
    }

    /// Asks a graph in which the hardware `be` feeds the program group `a`.
    int askFed(const std::string& hardware, const std::string& programGroup, const std::string& inputPort = "")
    {
        return ask(element("hw", "be", hardware, output("out", "a:in")) +
                   group("a", programGroup, input("in", "be:out", inputPort)));
    }

    void clearResults()
    {
        mConnections.clear();
        mInputPeers.clear();
        mOutputPeers.clear();
    }

    /// "source>sink" of each connection, joined by blanks.
    std::string connections() const
    {
        std::string all;
        for (const auto& ends : mConnections) all += (all.empty() ? "" : " ") + ends.first + ">" + ends.second;
        return all;
    }

    static constexpr const char* kNoPeer = "2 getExecCtxConnectionPorts: no peer";
    static constexpr const char* kNoDirection = "16 Failed to retrieve port direction, default to input";

    std::vector<std::pair<std::string, std::string>> mConnections;
    Lines mInputPeers;
    Lines mOutputPeers;
};

const Lines kNone;

TEST_F(ContextConnectionsTest, NullGraphIsReported)
{
    mConnections = {{"a", "b"}};
    EXPECT_EQ(GraphCameraUtil::getExecCtxConnectionPorts(nullptr, mConnections, mInputPeers, mOutputPeers),
              StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 NULL pointer given"}));
    EXPECT_EQ(connections(), "a>b");
}

TEST_F(ContextConnectionsTest, GraphWithoutConnectionsHasNone)
{
    EXPECT_EQ(ask(element("hw", "be", "exec_ctx_id='0'", output("out", "s")) + sink("s")), StatusBadArgument);
    EXPECT_EQ(ask(group("a", "exec_ctx_id='1'")), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({}));
    const ForeignNode foreign;
    EXPECT_EQ(GraphCameraUtil::getExecCtxConnectionPorts(&foreign, mConnections, mInputPeers, mOutputPeers),
              StatusBadArgument);
    EXPECT_EQ(connections(), "");
}

TEST_F(ContextConnectionsTest, ConnectionOfTwoProgramGroupsIsListedAtItsInput)
{
    EXPECT_EQ(
        ask(group("a", "exec_ctx_id='1'", output("out", "b:in")) + group("b", "exec_ctx_id='2'", input("in", "a:out"))),
        StatusOk);
    EXPECT_EQ(connections(), "a:out>b:in");
    EXPECT_EQ(mInputPeers, kNone);
    EXPECT_EQ(mOutputPeers, kNone);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ContextConnectionsTest, ConnectionInsideOneContextIsNone)
{
    EXPECT_EQ(
        ask(group("a", "exec_ctx_id='1'", output("out", "b:in")) + group("b", "exec_ctx_id='1'", input("in", "a:out"))),
        StatusBadArgument);
    EXPECT_EQ(connections(), "");
    EXPECT_TRUE(loggedExactly({}));
}

// An input port of hardware is an edge in its own context too, but no connection between contexts.
TEST_F(ContextConnectionsTest, HardwareOfTheSameContextIsNoneEither)
{
    EXPECT_EQ(askFed("exec_ctx_id='1'", "exec_ctx_id='1'"), StatusBadArgument);
    EXPECT_EQ(mInputPeers, kNone);
}

TEST_F(ContextConnectionsTest, PixelsOfSourcesAndHardwareMakeInputPeers)
{
    for (const char* kind : {"hw", "source"}) {
        EXPECT_EQ(ask(element(kind, "be", "exec_ctx_id='0'", output("out", "a:in")) +
                      group("a", "exec_ctx_id='1'", input("in", "be:out"))),
                  StatusOk);
        EXPECT_EQ(connections(), "be:out>a:in") << kind;
        EXPECT_EQ(mInputPeers, Lines{"be:out"}) << kind;
        EXPECT_EQ(mOutputPeers, kNone);
        EXPECT_TRUE(loggedExactly({}));
    }
    for (const char* kind : {"external_stage", "program_group", "HW", "sink"}) {
        EXPECT_EQ(ask(element("node", "be", std::string("exec_ctx_id='0' type='") + kind + "'", output("out", "a:in")) +
                      group("a", "exec_ctx_id='1'", input("in", "be:out"))),
                  StatusOk);
        EXPECT_EQ(connections(), "be:out>a:in") << kind;
        EXPECT_EQ(mInputPeers, kNone) << kind;
    }
}

TEST_F(ContextConnectionsTest, ContentOfTheInputPortDecidesAboutInputPeersAlone)
{
    for (const char* content : {"pdaf_data", "", "Pixel_data"}) {
        const std::string attribute = std::string("content_type='") + content + "'";
        EXPECT_EQ(askFed("exec_ctx_id='0'", "exec_ctx_id='1'", attribute), StatusOk);
        EXPECT_EQ(connections(), "be:out>a:in") << content;
        EXPECT_EQ(mInputPeers, kNone) << content;
    }
    EXPECT_EQ(ask(element("hw", "be", "exec_ctx_id='0'", output("out", "a:in", "content_type='pdaf_data'")) +
                  group("a", "exec_ctx_id='1'", input("in", "be:out", "content_type='pixel_data'"))),
              StatusOk);
    EXPECT_EQ(mInputPeers, Lines{"be:out"});
}

TEST_F(ContextConnectionsTest, HardwareWithoutAContextIsInAnother)
{
    EXPECT_EQ(askFed("stream_id='1'", "exec_ctx_id='1'"), StatusOk);
    EXPECT_EQ(connections(), "be:out>a:in");
    EXPECT_EQ(mInputPeers, Lines{"be:out"});
    EXPECT_TRUE(loggedExactly({"2 No Execution Contex for ancestor of port[be:out]"}));
}

TEST_F(ContextConnectionsTest, ContextOfAnotherKindIsNone)
{
    load(element("hw", "be", "stream_id='1'", output("out", "a:in")) +
         group("a", "exec_ctx_id='1'", input("in", "be:out")));
    node("be")->addValue(NUXO_KEY_EXEC_CTX_ID, std::string("1"));
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(connections(), "be:out>a:in");
    EXPECT_TRUE(loggedExactly({"2 No Execution Contex for ancestor of port[be:out]"}));
}

// Contexts alone are compared: two nodes without one are in the same, whatever their streams.
TEST_F(ContextConnectionsTest, NodesWithoutContextsAreInTheSame)
{
    EXPECT_EQ(askFed("stream_id='0'", "stream_id='1'"), StatusBadArgument);
    EXPECT_EQ(connections(), "");
    EXPECT_TRUE(loggedExactly({"2 No Execution Contex for ancestor of port[be:out]"}));
}

TEST_F(ContextConnectionsTest, ProgramGroupWithoutAContextIsInNoneOfTheOthers)
{
    EXPECT_EQ(askFed("exec_ctx_id='0'", "stream_id='1'"), StatusOk);
    EXPECT_EQ(connections(), "be:out>a:in");
    EXPECT_EQ(mInputPeers, Lines{"be:out"});
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(askFed("exec_ctx_id='-1'", "stream_id='1'"), StatusBadArgument);
}

TEST_F(ContextConnectionsTest, ContextOfOneProgramGroupIsNotCarriedToTheNext)
{
    EXPECT_EQ(ask(element("hw", "be", "exec_ctx_id='1'", output("out", "b:in")) + group("a", "exec_ctx_id='1'") +
                  group("b", "stream_id='1'", input("in", "be:out"))),
              StatusOk);
    EXPECT_EQ(connections(), "be:out>b:in");
}

TEST_F(ContextConnectionsTest, InputFromASinkBelongsToTheRoot)
{
    EXPECT_EQ(ask(group("a", "exec_ctx_id='1'", input("in", "s")) + sink("s", "exec_ctx_id='1'")), StatusOk);
    EXPECT_EQ(connections(), "s>a:in");
    EXPECT_EQ(mInputPeers, kNone);
    EXPECT_EQ(linesBesideTypeWarnings(), Lines{"2 No Execution Contex for ancestor of sink[s]"});
}

TEST_F(ContextConnectionsTest, OutputsToSinksAreConnectionsInAnyContext)
{
    for (const char* context : {"exec_ctx_id='1'", "exec_ctx_id='2'", ""}) {
        EXPECT_EQ(ask(group("a", "exec_ctx_id='1'", output("out", "s")) + sink("s", context)), StatusOk);
        EXPECT_EQ(connections(), "a:out>s") << context;
        EXPECT_EQ(mOutputPeers, Lines{"s"}) << context;
        EXPECT_EQ(mInputPeers, kNone) << context;
        EXPECT_TRUE(loggedExactly({})) << context;
    }
}

TEST_F(ContextConnectionsTest, ContentOfTheOutputPortDecidesAboutOutputPeersAlone)
{
    EXPECT_EQ(ask(group("a", "exec_ctx_id='1'", output("out", "s", "content_type='ae_stats'")) + sink("s")), StatusOk);
    EXPECT_EQ(connections(), "a:out>s");
    EXPECT_EQ(mOutputPeers, kNone);
    EXPECT_EQ(ask(group("a", "exec_ctx_id='1'", output("out", "s")) + sink("s", "content_type='ae_stats'")), StatusOk);
    EXPECT_EQ(mOutputPeers, Lines{"s"});
}

TEST_F(ContextConnectionsTest, StreamIsEnoughForAnOutput)
{
    EXPECT_EQ(ask(group("a", "stream_id='1'", output("out", "s")) + sink("s")), StatusOk);
    EXPECT_EQ(connections(), "a:out>s");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ContextConnectionsTest, OutputOfNoContextAndNoStreamIsNoEdge)
{
    EXPECT_EQ(ask(group("a", "", output("out", "s")) + sink("s")), StatusBadArgument);
    EXPECT_EQ(connections(), "");
    EXPECT_TRUE(loggedExactly({"16 Failed to get stream_id for port port[a:out]"}));
}

// The port that the text names must be the sink, not a port of one.
TEST_F(ContextConnectionsTest, OutputsToAnythingButSinksAreNone)
{
    EXPECT_EQ(ask(group("a", "exec_ctx_id='1'", output("out", "b:in")) +
                  group("b", "exec_ctx_id='2'", port("in", "direction='0'"))),
              StatusBadArgument);
    EXPECT_EQ(ask(group("a", "exec_ctx_id='1'", output("out", "be:in")) +
                  element("hw", "be", "exec_ctx_id='2'", input("in", "a:out"))),
              StatusBadArgument);
    EXPECT_EQ(ask(group("a", "exec_ctx_id='1'", output("out", "s:in")) +
                  element("sink", "s", "exec_ctx_id='2'", port("in", "direction='0'"))),
              StatusBadArgument);
    EXPECT_EQ(mOutputPeers, kNone);
    EXPECT_EQ(ask(group("a", "exec_ctx_id='1'", output("out", "b:in")) +
                  element("node", "b", "exec_ctx_id='2'", element("node", "in"))),
              StatusBadArgument);
    EXPECT_TRUE(logged(kWarning, "Trying to find type for NODE[in], but it doesn't have one."));
}

TEST_F(ContextConnectionsTest, SinkInsideANodeIsASinkToo)
{
    EXPECT_EQ(ask(group("a", "exec_ctx_id='1'", output("out", "b:s")) + group("b", "exec_ctx_id='1'", sink("s"))),
              StatusOk);
    EXPECT_EQ(connections(), "a:out>b:s");
    EXPECT_EQ(mOutputPeers, Lines{"b:s"});
}

// Once on the way to the edge, once for the listing.
TEST_F(ContextConnectionsTest, PortWithoutADirectionIsAnInput)
{
    const std::string hardware = element("hw", "be", "exec_ctx_id='0'", output("out", "a:in"));
    EXPECT_EQ(ask(hardware + group("a", "exec_ctx_id='1'", port("in", "peer='be:out'"))), StatusOk);
    EXPECT_EQ(connections(), "be:out>a:in");
    EXPECT_TRUE(loggedExactly({kNoDirection, kNoDirection}));
    node("a:in")->addValue(NUXO_KEY_DIRECTION, std::string("1"));
    clearResults();
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(connections(), "be:out>a:in");
    EXPECT_TRUE(loggedExactly({kNoDirection, kNoDirection}));
}

TEST_F(ContextConnectionsTest, OtherDirectionsAreIgnored)
{
    for (const char* direction : {"2", "-1"}) {
        const std::string attributes = std::string("direction='") + direction + "' peer=";
        EXPECT_EQ(
            ask(element("hw", "be", "exec_ctx_id='0'", output("out", "a:in")) + sink("s") +
                group("a", "exec_ctx_id='1'", port("in", attributes + "'be:out'") + port("o", attributes + "'s'"))),
            StatusBadArgument);
        EXPECT_EQ(connections(), "") << direction;
        EXPECT_TRUE(loggedExactly({})) << direction;
    }
}

TEST_F(ContextConnectionsTest, PortsWithoutPeersAreNotedAndPassedOver)
{
    EXPECT_EQ(ask(group("a", "exec_ctx_id='1'",
                        output("off", "s", "enabled='0'") + output("own", "s", "private='1'") +
                            output("dangling", "ghost:in") + port("alone", "direction='1'") + output("out", "s")) +
                  sink("s")),
              StatusOk);
    EXPECT_EQ(connections(), "a:out>s");
    EXPECT_TRUE(loggedExactly({kNoPeer, kNoPeer, "16 Failed to find peer by name ghost:in", kNoPeer,
                               "2 Couldn't find peer value for port[a:alone]", kNoPeer}));
}

TEST_F(ContextConnectionsTest, PeerOfAnotherKindIsNone)
{
    load(group("a", "exec_ctx_id='1'", output("out", "s")) + sink("s"));
    replace(*node("a:out"), NUXO_KEY_PEER, 3);
    EXPECT_EQ(ask(), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"2 Couldn't find peer value for port[a:out]", kNoPeer}));
}

TEST_F(ContextConnectionsTest, StateOfThePeerDoesNotMatter)
{
    EXPECT_EQ(ask(group("a", "exec_ctx_id='1'", output("out", "b:in", "enabled='0'")) +
                  group("b", "exec_ctx_id='2'", input("in", "a:out"))),
              StatusOk);
    EXPECT_EQ(connections(), "a:out>b:in");
}

TEST_F(ContextConnectionsTest, FirstOfSeveralPeersIsTheConnection)
{
    load(group("a", "exec_ctx_id='1'", output("out", "s")) + sink("s") + sink("t"));
    node("a:out")->insertDescendant(new GraphConfigStrAttribute("t"), NUXO_KEY_PEER);
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(connections(), "a:out>s");
    EXPECT_EQ(mOutputPeers, Lines{"s"});
}

TEST_F(ContextConnectionsTest, NodesThatArePeersOfThemselvesOrInACircleAreListedOnce)
{
    EXPECT_EQ(ask(group("a", "exec_ctx_id='1'", input("in", "a:in") + output("out", "a:out"))), StatusBadArgument);
    EXPECT_EQ(ask(group("a", "exec_ctx_id='1'", input("in", "b:in")) +
                  group("b", "exec_ctx_id='2'", input("in", "c:in")) +
                  group("c", "exec_ctx_id='3'", input("in", "a:in"))),
              StatusOk);
    EXPECT_EQ(connections(), "b:in>a:in c:in>b:in a:in>c:in");
}

// The text is resolved as a path, and one that ends at an attribute leads to the node that holds it.
TEST_F(ContextConnectionsTest, PeerMayBeANodeOfTheRoot)
{
    EXPECT_EQ(ask(group("a", "exec_ctx_id='1'", input("in", "be:name")) + element("hw", "be", "exec_ctx_id='1'")),
              StatusOk);
    EXPECT_EQ(connections(), "be:name>a:in");
    EXPECT_EQ(mInputPeers, kNone);
    EXPECT_EQ(linesBesideTypeWarnings(), (Lines{"16 Failed to get stream ID of peer PG NODE[NA]",
                                                "2 No Execution Contex for ancestor of hw[be]"}));
}

TEST_F(ContextConnectionsTest, NamesAreThoseOfTheAttributes)
{
    load(group("a", "exec_ctx_id='1'", output("out", "s") + output("second", "s")) +
         group("b", "exec_ctx_id='1'", output("out", "s")) + group("c", "exec_ctx_id='1'", output("out", "s")) +
         sink("s"));
    replace(*node("a"), NUXO_KEY_NAME, "first");
    replace(*node("a:out"), NUXO_KEY_NAME, "x");
    node("a:second")->removeDescendant(NUXO_KEY_NAME);
    node("b")->removeDescendant(NUXO_KEY_NAME);
    replace(*node("c"), NUXO_KEY_NAME, 3);
    replace(*node("c:out"), NUXO_KEY_NAME, 3);
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(connections(), "first:x>s first:>s :out>s :>s"); // what lacks a name has an empty one
    EXPECT_EQ(mOutputPeers, (Lines{"s", "s", "s", "s"}));
}

TEST_F(ContextConnectionsTest, ConnectionsComeInTheOrderOfNodesAndPorts)
{
    // Nodes: input (22), output (32), then p, q. Ports: input, output, then x, y as they first occur.
    EXPECT_EQ(ask(sink("s") + group("p", "exec_ctx_id='1'", output("x", "s") + output("y", "s")) +
                  group("output", "exec_ctx_id='1'", output("y", "s") + output("x", "s")) +
                  group("q", "exec_ctx_id='1'", output("output", "s") + output("input", "s")) +
                  group("input", "exec_ctx_id='1'", output("y", "s"))),
              StatusOk);
    EXPECT_EQ(connections(), "input:y>s output:x>s output:y>s p:x>s p:y>s q:input>s q:output>s");
}

TEST_F(ContextConnectionsTest, ResultsAreAppendedTo)
{
    const std::string nodes = element("hw", "be", "exec_ctx_id='0'", output("out", "a:in")) + sink("s") +
                              group("a", "exec_ctx_id='1'", input("in", "be:out") + output("out", "s"));
    EXPECT_EQ(ask(nodes), StatusOk);
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(connections(), "a:out>s be:out>a:in a:out>s be:out>a:in"); // the name `out` stands before `in`
    EXPECT_EQ(mInputPeers, (Lines{"be:out", "be:out"}));
    EXPECT_EQ(mOutputPeers, (Lines{"s", "s"}));
}

TEST_F(ContextConnectionsTest, EarlierConnectionsCountAsFound)
{
    load(group("a", "exec_ctx_id='1'"));
    mConnections = {{"x", "y"}};
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(connections(), "x>y");
}

TEST_F(ContextConnectionsTest, NodesDirectlyBelowTheGivenOneAreAsked)
{
    load(group("outer", "exec_ctx_id='1'", group("a", "exec_ctx_id='1'", output("out", "s"))) + sink("s"));
    EXPECT_EQ(ask(), StatusBadArgument);
    EXPECT_EQ(GraphCameraUtil::getExecCtxConnectionPorts(node("outer"), mConnections, mInputPeers, mOutputPeers),
              StatusOk);
    EXPECT_EQ(connections(), "a:out>s");
}

TEST_F(ContextConnectionsTest, PeerOfNoNodeEndsTheWalk)
{
    load(group("a", "exec_ctx_id='1'", output("lost", "s")) + group("b", "exec_ctx_id='1'", output("later", "s")) +
         group("c", "exec_ctx_id='1'", output("later", "s")) + sink("s"));
    GraphConfigNode lost;
    addPortOfForeignGraph(*node("b"), "lost", 0, &lost); // before `later`, as the name occurs first
    EXPECT_EQ(ask(), StatusBadState);
    EXPECT_EQ(connections(), "a:lost>s"); // what came before stays, what would come after is missing
    EXPECT_EQ(mOutputPeers, Lines{"s"});
    EXPECT_EQ(lines().back(), "16 ancestor of NODE[NA] is null");
}

TEST_F(ContextConnectionsTest, PeerOfNoNodeIsNoTroubleForOutputs)
{
    load(group("a", "exec_ctx_id='1'"));
    GraphConfigNode lost;
    lost.addValue(NUXO_KEY_TYPE, std::string("sink"));
    addPortOfForeignGraph(*node("a"), "out", 1, &lost);
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(connections(), "a:out>far:out");
}

TEST_F(ContextConnectionsTest, ForeignPeersAreAskedThroughTheInterface)
{
    load(group("a", "exec_ctx_id='1'"));
    MockNode far;
    MockNode farPort;
    farPort.mAncestor = &far;
    far.mIntegers[NUXO_KEY_EXEC_CTX_ID] = 1;
    addPortOfForeignGraph(*node("a"), "in", 0, &farPort);
    EXPECT_EQ(ask(), StatusBadArgument);
    far.mIntegers[NUXO_KEY_EXEC_CTX_ID] = 2;
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(connections(), "far:in>a:in");
    EXPECT_EQ(mInputPeers, kNone); // a mock is of no type
}

} // namespace

} // namespace graphtest
