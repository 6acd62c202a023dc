// SPDX-License-Identifier: Apache-2.0
#include "analysis/InnerGraphFixture.h"

#include <deque>

namespace graphtest {

namespace {

/// Walks over graphs whose nodes are called by letters.
class TraversalTest : public GraphStepsTest {
protected:
    /// Creates the nodes in the order of their letters in @p links, which are written "ab ac bd" for a->b, a->c, b->d.
    void build(const std::string& links)
    {
        for (size_t i = 0; i + 1 < links.size(); i += 3) {
            BaseGraphNode& source = letter(links[i]);
            BaseGraphNode& sink = letter(links[i + 1]);
            source.addChild(&sink, "");
            sink.addParent(&source, "");
        }
    }

    BaseGraphNode& letter(char name)
    {
        auto& node = mLetters[name];
        if (node == nullptr) {
            node = std::make_unique<BaseGraphNode>();
            node->name = name;
        }
        return *node;
    }

    /// Walks with a visitor that notes the nodes and answers what mAnswers holds for them, 0 otherwise.
    int walk(char start, bool forward = true)
    {
        Access::Visitor visitor = [this](BaseGraphNode* node) {
            mWay += node->name;
            const auto answer = mAnswers.find(node->name[0]);
            return answer == mAnswers.end() ? 0 : answer->second;
        };
        return access().traverseGraph(&letter(start), visitor, forward);
    }

    std::string visited() const
    {
        std::string all;
        for (const auto& entry : mLetters) {
            if (entry.second->visited) all += entry.first;
        }
        return all;
    }

    static std::string interrupted(char name, int status)
    {
        return std::string("16 Graph traversal interrupted at node ") + name + " [" + std::to_string(status) + "]";
    }

    std::map<char, std::unique_ptr<BaseGraphNode>> mLetters;
    std::map<char, int> mAnswers;
    std::string mWay;
};

TEST_F(TraversalTest, GoesDeepFirstAndVisitsEachNodeOnce)
{
    build("ab ac bd be cd cf");
    EXPECT_EQ(walk('a'), StatusOk);
    EXPECT_EQ(mWay, "abdecf");
    EXPECT_EQ(visited(), "abcdef");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(TraversalTest, BackwardFollowsParents)
{
    build("ab ac bd be cd cf");
    EXPECT_EQ(walk('d', false), StatusOk);
    EXPECT_EQ(mWay, "dbac");
    EXPECT_EQ(visited(), "abcd");
}

TEST_F(TraversalTest, NeighboursComeInTheOrderOfTheirCreation)
{
    for (const char name : {'z', 'b', 'y', 'c'}) letter(name);
    build("ac ay ab az");
    EXPECT_EQ(walk('a'), StatusOk);
    EXPECT_EQ(mWay, "azbyc");
}

TEST_F(TraversalTest, NodesUpstreamAreOutOfReach)
{
    build("ab bc xb");
    EXPECT_EQ(walk('b'), StatusOk);
    EXPECT_EQ(mWay, "bc");
    EXPECT_EQ(visited(), "bc");
}

TEST_F(TraversalTest, VisitedStartIsNotVisitedAgain)
{
    build("ab");
    letter('a').visited = true;
    mAnswers['a'] = StatusBadArgument;
    EXPECT_EQ(walk('a'), StatusOk);
    EXPECT_EQ(mWay, "");
    EXPECT_EQ(visited(), "a");
}

TEST_F(TraversalTest, WalksShareTheirMarks)
{
    build("ac bc cd");
    EXPECT_EQ(walk('a'), StatusOk);
    EXPECT_EQ(walk('b'), StatusOk);
    EXPECT_EQ(mWay, "acdb");
    EXPECT_EQ(visited(), "abcd");
}

TEST_F(TraversalTest, LoopsEnd)
{
    build("ab bc ca bb");
    EXPECT_EQ(walk('a'), StatusOk);
    EXPECT_EQ(mWay, "abc");
    EXPECT_EQ(walk('c', false), StatusOk); // all marked
    EXPECT_EQ(mWay, "abc");
}

TEST_F(TraversalTest, BranchStopsWithoutError)
{
    build("ab ac bd ce");
    mAnswers['b'] = StatusNoMoreMatches;
    EXPECT_EQ(walk('a'), StatusOk);
    EXPECT_EQ(mWay, "abce");
    EXPECT_EQ(visited(), "abce");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(TraversalTest, StartThatStopsSaysSo)
{
    build("ab");
    mAnswers['a'] = StatusNoMoreMatches;
    EXPECT_EQ(walk('a'), StatusNoMoreMatches);
    EXPECT_EQ(mWay, "a");
    EXPECT_EQ(visited(), "a");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(TraversalTest, NodeThatIsNotReadyStaysUnvisitedForALaterPath)
{
    build("ab ac bd cd de");
    int calls = 0;
    Access::Visitor visitor = [&](BaseGraphNode* node) {
        mWay += node->name;
        return node->name == "d" && ++calls == 1 ? static_cast<int>(StatusNotReady) : 0;
    };
    EXPECT_EQ(access().traverseGraph(&letter('a'), visitor, true), StatusOk);
    EXPECT_EQ(mWay, "abdcde");
    EXPECT_EQ(visited(), "abcde");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(TraversalTest, NodeThatIsNeverReadyIsNoError)
{
    build("ab ac bd cd de");
    mAnswers['d'] = StatusNotReady;
    EXPECT_EQ(walk('a'), StatusOk);
    EXPECT_EQ(mWay, "abdcd");
    EXPECT_EQ(visited(), "abc");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(TraversalTest, StartThatIsNotReadyStaysUnvisitedAndStops)
{
    build("ab");
    mAnswers['a'] = StatusNotReady;
    EXPECT_EQ(walk('a'), StatusNoMoreMatches);
    EXPECT_EQ(walk('a'), StatusNoMoreMatches);
    EXPECT_EQ(mWay, "aa");
    EXPECT_EQ(visited(), "");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(TraversalTest, ErrorAbandonsTheWalkWithOneLineALevel)
{
    build("ab bc bd ce cf ag");
    mAnswers['e'] = StatusMissingObject;
    EXPECT_EQ(walk('a'), StatusMissingObject);
    EXPECT_EQ(mWay, "abce");
    EXPECT_EQ(visited(), "abce");
    EXPECT_TRUE(
        loggedExactly({interrupted('e', -16), interrupted('c', -16), interrupted('b', -16), interrupted('a', -16)}));
}

TEST_F(TraversalTest, ErrorOfTheStartIsReportedOnce)
{
    build("ab");
    mAnswers['a'] = StatusNoMemory;
    EXPECT_EQ(walk('a'), StatusNoMemory);
    EXPECT_EQ(mWay, "a");
    EXPECT_EQ(visited(), "a");
    EXPECT_TRUE(loggedExactly({interrupted('a', -4)}));
}

TEST_F(TraversalTest, EveryOtherNumberIsAnError)
{
    for (const int status : {1, 7, -1, -255, -257, -512, -1023, -1025, -2048}) {
        mLetters.clear();
        build("ab bc");
        mAnswers['b'] = status;
        clearLog();
        EXPECT_EQ(walk('a'), status);
        EXPECT_EQ(visited(), "ab");
        EXPECT_TRUE(loggedExactly({interrupted('b', status), interrupted('a', status)}));
    }
}

TEST_F(TraversalTest, ErrorUpstreamNamesTheNodesOnTheWayBack)
{
    build("ab bc");
    mAnswers['a'] = StatusBadState;
    EXPECT_EQ(walk('c', false), StatusBadState);
    EXPECT_TRUE(loggedExactly({interrupted('a', -8), interrupted('b', -8), interrupted('c', -8)}));
}

/// A chain that no stack holds with one frame a node.
class LongChainTest : public GraphStepsTest {
protected:
    explicit LongChainTest(size_t length = 1000000) : mChain(length)
    {
        for (size_t i = 1; i < length; ++i) {
            mChain[i - 1].addChild(&mChain[i], "");
            mChain[i].addParent(&mChain[i - 1], "");
        }
    }

    size_t visitedNodes() const
    {
        return static_cast<size_t>(
            std::count_if(mChain.begin(), mChain.end(), [](const BaseGraphNode& node) { return node.visited; }));
    }

    std::deque<BaseGraphNode> mChain;
};

TEST_F(LongChainTest, IsWalkedInBothDirections)
{
    size_t calls = 0;
    Access::Visitor visitor = [&calls](BaseGraphNode*) {
        ++calls;
        return 0;
    };
    EXPECT_EQ(access().traverseGraph(&mChain.front(), visitor, true), StatusOk);
    EXPECT_EQ(calls, mChain.size());
    EXPECT_EQ(visitedNodes(), mChain.size());
    for (BaseGraphNode& node : mChain) node.visited = false;
    EXPECT_EQ(access().traverseGraph(&mChain.back(), visitor, false), StatusOk);
    EXPECT_EQ(calls, 2 * mChain.size());
    EXPECT_EQ(visitedNodes(), mChain.size());
}

TEST_F(LongChainTest, ErrorAtItsEndComesBackToItsStart)
{
    const BaseGraphNode* const last = &mChain.back();
    mChain.front().name = "first";
    Access::Visitor visitor = [last](BaseGraphNode* node) {
        return node == last ? static_cast<int>(StatusBadState) : 0;
    };
    mLog.setMask(0);
    EXPECT_EQ(access().traverseGraph(&mChain.front(), visitor, true), StatusBadState);
    EXPECT_EQ(visitedNodes(), mChain.size());
}

/// Reports and visitors of the outer graph.
class OuterGraphReportTest : public GraphStepsTest {
protected:
    /// Two sources feed the group, which feeds the sink; the third source feeds nothing.
    void addNodes()
    {
        load(element("source", "cam", "stream_id='3' exec_ctx_id='4'") + element("source", "buf") +
             element("source", "alone") + group("pg", "stream_id='1'") + sink("video", "exec_ctx_id='7'") +
             graphOf(connection("cam:out", "pg:in") + connection("buf:out", "pg:in") + connection("pg:out", "video")));
        addOuterGraph();
    }

    void mark(const Lines& names)
    {
        for (const std::string& name : names) outerNode(name).visited = true;
    }
};

TEST_F(OuterGraphReportTest, ResetClearsAllMarks)
{
    addNodes();
    mark({"cam", "buf", "alone", "pg", "video"});
    access().resetGraph();
    EXPECT_TRUE(loggedExactly({"2 Visited graph nodes 5/5"}));
    for (const auto& entry : access().graphNodes()) EXPECT_FALSE(entry.second->visited) << entry.first;
}

TEST_F(OuterGraphReportTest, ResetTellsOfNodesThatWereNotReached)
{
    addNodes();
    mark({"cam", "pg"});
    access().resetGraph();
    EXPECT_TRUE(loggedExactly({"2 Visited graph nodes 2/5", "16 Traversal of graph did not reach all nodes 2/5"}));
    clearLog();
    access().resetGraph();
    EXPECT_TRUE(loggedExactly({"2 Visited graph nodes 0/5", "16 Traversal of graph did not reach all nodes 0/5"}));
}

TEST_F(OuterGraphReportTest, NothingToResetIsNoError)
{
    access().resetGraph();
    EXPECT_TRUE(loggedExactly({"2 Visited graph nodes 0/0"}));
}

TEST_F(OuterGraphReportTest, ActiveNodeIsNotedAndGoesOnUpstream)
{
    addNodes();
    std::vector<std::string> active{"earlier"};
    EXPECT_EQ(access().activeNodeVisitor(&outerNode("pg"), &active), StatusOk);
    EXPECT_EQ(active, (Lines{"earlier", "pg"}));
    EXPECT_TRUE(loggedExactly({"16 Visiting  node pg "}));
    EXPECT_FALSE(outerNode("pg").visited);
}

TEST_F(OuterGraphReportTest, ActiveNodeWithoutParentsIsTheLastOne)
{
    addNodes();
    std::vector<std::string> active;
    EXPECT_EQ(access().activeNodeVisitor(&outerNode("cam"), &active), StatusNoMoreMatches);
    EXPECT_EQ(active, Lines{"cam"});
    EXPECT_TRUE(loggedExactly({"16 Visiting  node cam ", "16 node cam is last one, stopping"}));
}

TEST_F(OuterGraphReportTest, ActiveNodeIsNotNotedAgain)
{
    addNodes();
    std::vector<std::string> active;
    for (const char* const name : {"cam", "pg"}) {
        clearLog();
        mark({name});
        EXPECT_EQ(access().activeNodeVisitor(&outerNode(name), &active), StatusOk);
        EXPECT_TRUE(loggedExactly({std::string("16 Visiting  node ") + name + " ",
                                   std::string("16 node ") + name + " already visited, skipping"}));
    }
    EXPECT_TRUE(active.empty());
}

TEST_F(OuterGraphReportTest, ActiveNodeVisitorNeedsNodeAndList)
{
    addNodes();
    std::vector<std::string> active;
    EXPECT_EQ(access().activeNodeVisitor(nullptr, &active), StatusMissingObject);
    EXPECT_EQ(access().activeNodeVisitor(&outerNode("pg"), nullptr), StatusMissingObject);
    EXPECT_EQ(access().activeNodeVisitor(nullptr, nullptr), StatusMissingObject);
    EXPECT_TRUE(active.empty());
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(OuterGraphReportTest, NodeIsPrintedWithIdsTypeAndName)
{
    addNodes();
    EXPECT_EQ(Access::printOuterNode(&outerNode("cam")), StatusOk);
    EXPECT_EQ(Access::printOuterNode(&outerNode("video")), StatusOk);
    outerNode("buf").type = NUXO_KEY_NA;
    EXPECT_EQ(Access::printOuterNode(&outerNode("buf")), StatusOk);
    EXPECT_TRUE(
        loggedExactly({"16 StreamId 3 execCtx 4 --> Node[source]cam ", "16 StreamId -1 execCtx 7 --> Node[sink]video ",
                       "16 StreamId -1 execCtx -1 --> Node[na]buf "}));
}

TEST_F(OuterGraphReportTest, DumpShowsEachNodeUnderItsFirstSource)
{
    addNodes();
    access().dumpOuterGraph();
    EXPECT_TRUE(loggedExactly({
        "2 " + kDoubleLine,
        "2 Dumping Outer graph",
        "2 " + kDoubleLine,
        "2 -->START <-- src name: alone",
        "16 StreamId -1 execCtx -1 --> Node[source]alone ",
        "2 --> END <-- 0",
        "2 -->START <-- src name: buf",
        "16 StreamId -1 execCtx -1 --> Node[source]buf ",
        "16 StreamId 1 execCtx -1 --> Node[program_group]pg ",
        "16 StreamId -1 execCtx 7 --> Node[sink]video ",
        "2 --> END <-- 0",
        "2 -->START <-- src name: cam",
        "16 StreamId 3 execCtx 4 --> Node[source]cam ",
        "2 --> END <-- 0",
        "2 Visited graph nodes 5/5",
    }));
    const Lines first = lines();
    clearLog();
    access().dumpOuterGraph();
    EXPECT_EQ(lines(), first);
}

TEST_F(OuterGraphReportTest, DumpWithoutSourcesReachesNothing)
{
    load(group("pg", "") + graphOf(""));
    addOuterGraph();
    access().dumpOuterGraph();
    EXPECT_TRUE(loggedExactly({"2 " + kDoubleLine, "2 Dumping Outer graph", "2 " + kDoubleLine,
                               "2 Visited graph nodes 0/1", "16 Traversal of graph did not reach all nodes 0/1"}));
}

} // namespace

} // namespace graphtest
