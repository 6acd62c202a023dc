// SPDX-License-Identifier: Apache-2.0
#include "analysis/InnerGraphFixture.h"

namespace graphtest {

namespace {

class UnusedNodesTest : public GraphStepsTest {
protected:
    /// Builds the outer graph of @p nodes, with connections from first to second.
    void build(const std::string& nodes, const std::vector<std::pair<std::string, std::string>>& connections)
    {
        std::string all;
        for (const auto& ends : connections) all += connection(ends.first, ends.second);
        load(nodes + graphOf(all));
        addOuterGraph();
    }

    std::string prune()
    {
        clearLog();
        EXPECT_EQ(access().removeUnusedNodes(), StatusOk);
        std::string left;
        for (const auto& entry : access().graphNodes()) {
            left += (left.empty() ? "" : " ") + entry.first;
            EXPECT_FALSE(entry.second->visited) << entry.first;
        }
        return left;
    }

    static std::string removed(size_t count) { return "2 Removed " + std::to_string(count) + " Unusued Nodes - Done!"; }
};

TEST_F(UnusedNodesTest, NodesOnTheWayToASinkStay)
{
    build(element("source", "cam") + group("pg", "") + sink("video"), {{"cam:out", "pg:in"}, {"pg:out", "video"}});
    EXPECT_EQ(prune(), "cam pg video");
    EXPECT_TRUE(loggedExactly({
        "2 Removing Unusued Nodes",
        "2 Starting traversal at node video ",
        "16 Visiting  node video ",
        "16 Visiting  node pg ",
        "16 Visiting  node cam ",
        "16 node cam is last one, stopping",
        "2 Visited graph nodes 3/3",
        removed(0),
    }));
    EXPECT_EQ(text(outerNode("pg").parents), "cam[out]");
    EXPECT_EQ(text(outerNode("pg").children), "video[]");
}

TEST_F(UnusedNodesTest, NodesThatFeedNoSinkAreCutOutAndRemoved)
{
    build(element("source", "cam") + group("dead", "") + group("end", "") + group("pg", "") + sink("video"),
          {{"cam:out", "pg:in"}, {"pg:out", "video"}, {"cam:out", "dead:in"}, {"dead:out", "end:in"}});
    EXPECT_EQ(prune(), "cam pg video");
    EXPECT_TRUE(loggedExactly({
        "2 Removing Unusued Nodes",
        "2 Starting traversal at node video ",
        "16 Visiting  node video ",
        "16 Visiting  node pg ",
        "16 Visiting  node cam ",
        "16 node cam is last one, stopping",
        "2 Visited graph nodes 3/5",
        "16 Traversal of graph did not reach all nodes 3/5",
        "2 Node dead not active, removing",
        "2 Node end not active, removing",
        removed(2),
    }));
    EXPECT_EQ(text(outerNode("cam").children), "pg[in]");
}

TEST_F(UnusedNodesTest, EverythingUpstreamOfAGapIsRemoved)
{
    build(element("source", "cam") + group("first", "") + group("gap", "") + group("last", "") + sink("video"),
          {{"cam:out", "first:in"}, {"first:out", "gap:in"}, {"last:out", "video"}});
    EXPECT_EQ(prune(), "last video");
    EXPECT_TRUE(logged(2, "Node cam not active, removing"));
    EXPECT_TRUE(logged(2, "Node first not active, removing"));
    EXPECT_TRUE(logged(2, "Node gap not active, removing"));
    EXPECT_TRUE(logged(16, "node last is last one, stopping"));
    EXPECT_EQ(lines().back(), removed(3));
}

TEST_F(UnusedNodesTest, WithoutSinkNothingStays)
{
    build(element("source", "cam") + group("pg", ""), {{"cam:out", "pg:in"}});
    EXPECT_EQ(prune(), "");
    EXPECT_TRUE(loggedExactly({
        "2 Removing Unusued Nodes",
        "2 Visited graph nodes 0/2",
        "16 Traversal of graph did not reach all nodes 0/2",
        "2 Node cam not active, removing",
        "2 Node pg not active, removing",
        removed(2),
    }));
}

TEST_F(UnusedNodesTest, EmptyGraphHasNothingToRemove)
{
    EXPECT_EQ(prune(), "");
    EXPECT_TRUE(loggedExactly({"2 Removing Unusued Nodes", "2 Visited graph nodes 0/0", removed(0)}));
}

TEST_F(UnusedNodesTest, SinkThatNothingFeedsStays)
{
    build(sink("lonely"), {});
    EXPECT_EQ(prune(), "lonely");
    EXPECT_TRUE(loggedExactly({
        "2 Removing Unusued Nodes",
        "2 Starting traversal at node lonely ",
        "16 Visiting  node lonely ",
        "16 node lonely is last one, stopping",
        "2 Visited graph nodes 1/1",
        removed(0),
    }));
}

TEST_F(UnusedNodesTest, SinksStartInTheOrderOfTheirNamesAndShareWhatFeedsThem)
{
    build(element("source", "cam") + group("pg", "") + sink("video") + sink("still") + sink("zoom"),
          {{"cam:out", "pg:in"}, {"pg:out", "video"}, {"pg:out2", "still"}, {"cam:out", "zoom"}});
    EXPECT_EQ(prune(), "cam pg still video zoom");
    EXPECT_TRUE(loggedExactly({
        "2 Removing Unusued Nodes",
        "2 Starting traversal at node still ",
        "16 Visiting  node still ",
        "16 Visiting  node pg ",
        "16 Visiting  node cam ",
        "16 node cam is last one, stopping",
        "2 Starting traversal at node video ",
        "16 Visiting  node video ",
        "2 Starting traversal at node zoom ",
        "16 Visiting  node zoom ",
        "2 Visited graph nodes 5/5",
        removed(0),
    }));
}

TEST_F(UnusedNodesTest, LoopOnTheWayStaysWhole)
{
    build(group("a", "") + group("b", "") + sink("video"), {{"a:out", "b:in"}, {"b:back", "a:in"}, {"b:out", "video"}});
    EXPECT_EQ(prune(), "a b video");
    EXPECT_EQ(lines().back(), removed(0));
}

TEST_F(UnusedNodesTest, NodesBehindASinkStayOnlyForAnotherSink)
{
    build(sink("first") + group("pg", "") + group("rest", "") + sink("second"),
          {{"first:out", "pg:in"}, {"pg:out", "second"}, {"second:out", "rest:in"}});
    EXPECT_EQ(prune(), "first pg second");
    EXPECT_EQ(text(outerNode("second").children), "");
}

TEST_F(UnusedNodesTest, OnlyTheTypeSinkMakesASink)
{
    build(group("sink_by_name", "") + element("hw", "sink") + element("node", "real", "type='sink'"), {});
    EXPECT_EQ(prune(), "real");
}

TEST_F(UnusedNodesTest, PruningAgainRemovesNothing)
{
    build(element("source", "cam") + group("pg", "") + sink("video"), {{"pg:out", "video"}});
    EXPECT_EQ(prune(), "pg video");
    EXPECT_EQ(lines().back(), removed(1));
    EXPECT_EQ(prune(), "pg video");
    EXPECT_EQ(lines().back(), removed(0));
}

} // namespace

} // namespace graphtest
