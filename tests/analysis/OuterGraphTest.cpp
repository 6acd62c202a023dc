// SPDX-License-Identifier: Apache-2.0
#include "analysis/InnerGraphFixture.h"

namespace graphtest {

namespace {

class OuterGraphTest : public GraphStepsTest {
protected:
    int add(const std::string& path) { return access().addGraphNode(*node(path)); }

    int connect(const std::string& source, const std::string& sink)
    {
        return connectBy("source='" + source + "' sink='" + sink + "'");
    }

    /// Adds a connection with the given attributes.
    int connectBy(const std::string& attributes)
    {
        const Tree connections = tree("<connection " + attributes + "/>");
        clearLog();
        return access().addGraphConnection(at(*connections, "connection"));
    }

    /// The outer graph holds a -> b and knows nothing of their connection yet.
    void addTwoNodes()
    {
        load(element("source", "a") + sink("b"));
        add("a");
        add("b");
        clearLog();
    }

    std::string names() const
    {
        std::string all;
        for (const auto& entry : access().graphNodes()) all += (all.empty() ? "" : " ") + entry.first;
        return all;
    }
};

TEST_F(OuterGraphTest, StartsEmpty)
{
    EXPECT_EQ(access().settings(), nullptr);
    EXPECT_EQ(access().subgraphKey(), 8228U);
    EXPECT_EQ(access().gdfVersion(), NUXO::GdfVersionNone);
    EXPECT_EQ(access().pgKey(), 35U);
    EXPECT_TRUE(access().subGraphs().empty());
    EXPECT_TRUE(access().graphNodes().empty());
    EXPECT_TRUE(access().connections().empty());
    EXPECT_TRUE(access().kernelInfoMemPools().empty());
    EXPECT_TRUE(access().pgKernelInfoMemPools().empty());
    EXPECT_TRUE(availableSubgraphs().empty());
}

TEST_F(OuterGraphTest, FreshNodeIsAnUnvisitedProgramGroupWithoutIds)
{
    const GraphNode fresh;
    EXPECT_EQ(fresh.type, 35U);
    EXPECT_EQ(fresh.streamId, -1);
    EXPECT_EQ(fresh.execCtxId, -1);
    EXPECT_EQ(fresh.node, nullptr);
    EXPECT_EQ(fresh.name, "");
    EXPECT_FALSE(fresh.visited);
    EXPECT_TRUE(fresh.parents.empty());
    EXPECT_TRUE(fresh.children.empty());
}

TEST_F(OuterGraphTest, NodeIsFiledUnderItsNameWithTypeAndIds)
{
    load(element("source", "cam", "stream_id='3' exec_ctx_id='4'"));
    EXPECT_EQ(add("cam"), StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Node cam of type source stream-id 3 exeCtxId 4 added to graph"}));
    EXPECT_EQ(names(), "cam");
    const GraphNode& cam = outerNode("cam");
    EXPECT_EQ(cam.name, "cam");
    EXPECT_EQ(cam.type, 47U);
    EXPECT_EQ(cam.streamId, 3);
    EXPECT_EQ(cam.execCtxId, 4);
    EXPECT_EQ(cam.node, node("cam"));
    EXPECT_FALSE(cam.visited);
    EXPECT_TRUE(cam.parents.empty());
    EXPECT_TRUE(cam.children.empty());
}

TEST_F(OuterGraphTest, TypeIsTheKeyOfTheTypeText)
{
    load(group("pg", "") + element("compute_block", "cb") + sink("video") + element("sensor", "eye") +
         element("strange_kind", "odd") + element("node", "own", "type='hw'"));
    for (const char* const name : {"pg", "cb", "video", "eye", "odd", "own"}) EXPECT_EQ(add(name), StatusOk) << name;
    EXPECT_EQ(outerNode("pg").type, 35U);
    EXPECT_EQ(outerNode("cb").type, 7U);
    EXPECT_EQ(outerNode("video").type, 46U);
    EXPECT_EQ(outerNode("eye").type, 36U);
    EXPECT_EQ(outerNode("odd").type, ItemUID::str2key("strange_kind"));
    EXPECT_EQ(outerNode("own").type, 21U);
    EXPECT_TRUE(logged(2, "Node odd of type strange_kind stream-id -1 exeCtxId -1 added to graph"));
}

TEST_F(OuterGraphTest, EachIdStandsForItself)
{
    load(element("hw", "a", "stream_id='-5'") + element("hw", "b", "exec_ctx_id='0'") + element("hw", "c"));
    EXPECT_EQ(add("a"), StatusOk);
    EXPECT_EQ(add("b"), StatusOk);
    EXPECT_EQ(add("c"), StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Node a of type hw stream-id -5 exeCtxId -1 added to graph",
                               "2 Node b of type hw stream-id -1 exeCtxId 0 added to graph",
                               "2 Node c of type hw stream-id -1 exeCtxId -1 added to graph"}));
}

TEST_F(OuterGraphTest, IdOfAnotherKindIsNone)
{
    load(element("hw", "a"));
    replace(*node("a"), NUXO_KEY_STREAM_ID, "3");
    replace(*node("a"), NUXO_KEY_EXEC_CTX_ID, "4");
    EXPECT_EQ(add("a"), StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Node a of type hw stream-id -1 exeCtxId -1 added to graph"}));
}

TEST_F(OuterGraphTest, NodeWithoutTypeIsDumpedAndSkipped)
{
    load("<node name='cam' stream_id='3'>" + port("out", "direction='1'") + "</node>");
    EXPECT_EQ(add("cam"), StatusOk);
    const std::string keyOfPort = std::to_string(key("out"));
    const auto expected = Lines{"16 Could not get type of graph node NODE[cam] ignoring",
                                "16 'name' str [Attr] 'cam'",
                                "16 'out'(" + keyOfPort + ") [Node]",
                                "16   'name' str [Attr] 'out'",
                                "16   'type' str [Attr] 'port'",
                                "16   'direction'(8203) int [Attr] '1'",
                                "16 'stream_id'(8228) int [Attr] '3'"};
    // Generated keys lie between those of texts and those of integers.
    EXPECT_TRUE(loggedExactly(expected));
    EXPECT_EQ(names(), "");
}

TEST_F(OuterGraphTest, TypeOfAnotherKindIsNone)
{
    load("<node name='cam'/>");
    replace(*node("cam"), NUXO_KEY_TYPE, 47);
    EXPECT_EQ(add("cam"), StatusOk);
    EXPECT_TRUE(loggedExactly({"16 Could not get type of graph node NODE[cam] ignoring", "16 'name' str [Attr] 'cam'",
                               "16 'type'(51) int [Attr] '47'"}));
    EXPECT_EQ(names(), "");
}

TEST_F(OuterGraphTest, GraphIsPassedOverInSilence)
{
    load(graphOf("") + element("graph", "another"));
    EXPECT_EQ(add("graph"), StatusOk);
    EXPECT_EQ(add("another"), StatusOk);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(names(), "");
}

TEST_F(OuterGraphTest, NodeWithoutNameIsSkipped)
{
    load("<node type='source' stream_id='1'/>");
    EXPECT_EQ(add("node"), StatusOk);
    EXPECT_TRUE(loggedExactly({"16 Could not get name of graph node source[node] ignoring"}));
    EXPECT_EQ(names(), "");
}

TEST_F(OuterGraphTest, NameOfAnotherKindIsNone)
{
    load("<node type='source'/>");
    replace(*node("node"), NUXO_KEY_NAME, 5);
    EXPECT_EQ(add("node"), StatusOk);
    EXPECT_TRUE(loggedExactly({"16 Could not get name of graph node source[node] ignoring"}));
    EXPECT_EQ(names(), "");
}

TEST_F(OuterGraphTest, SecondNodeOfANameIsRefused)
{
    load(element("source", "cam", "stream_id='1'") + "<node name='twin' type='sink' stream_id='2'/>");
    EXPECT_EQ(add("cam"), StatusOk);
    clearLog();
    replace(*node("twin"), NUXO_KEY_NAME, "cam");
    EXPECT_EQ(add("twin"), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 Graph node cam insertion failed"}));
    EXPECT_EQ(outerNode("cam").streamId, 1);
    EXPECT_EQ(outerNode("cam").type, 47U);
}

TEST_F(OuterGraphTest, ConnectionLinksBothNodesByTheNeighboursPort)
{
    addTwoNodes();
    EXPECT_EQ(connect("a:out", "b:in"), StatusOk);
    EXPECT_EQ(text(outerNode("a").children), "b[in]");
    EXPECT_EQ(text(outerNode("a").parents), "");
    EXPECT_EQ(text(outerNode("b").parents), "a[out]");
    EXPECT_EQ(text(outerNode("b").children), "");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(OuterGraphTest, TextWithoutColonIsTheNode)
{
    addTwoNodes();
    EXPECT_EQ(connect("a", "b"), StatusOk);
    EXPECT_EQ(text(outerNode("a").children), "b[]");
    EXPECT_EQ(text(outerNode("b").parents), "a[]");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(OuterGraphTest, FirstColonEndsTheNode)
{
    addTwoNodes();
    EXPECT_EQ(connect("a:out:0", "b::in:"), StatusOk);
    EXPECT_EQ(text(outerNode("a").children), "b[:in:]");
    EXPECT_EQ(text(outerNode("b").parents), "a[out:0]");
}

TEST_F(OuterGraphTest, ConnectionListedTwiceKeepsTheFirstPorts)
{
    addTwoNodes();
    EXPECT_EQ(connect("a:out", "b:in"), StatusOk);
    EXPECT_EQ(connect("a:out", "b:in"), StatusOk);
    EXPECT_EQ(connect("a:second_out", "b:second_in"), StatusOk);
    EXPECT_EQ(text(outerNode("a").children), "b[in]");
    EXPECT_EQ(text(outerNode("b").parents), "a[out]");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(OuterGraphTest, NodeMayFeedItself)
{
    addTwoNodes();
    EXPECT_EQ(connect("a:out", "a:in"), StatusOk);
    EXPECT_EQ(text(outerNode("a").children), "a[in]");
    EXPECT_EQ(text(outerNode("a").parents), "a[out]");
}

TEST_F(OuterGraphTest, ConnectionFromAnUnknownNodeIsSkippedWithAWarning)
{
    addTwoNodes();
    const std::string tail = " skipped due to source not FOUND, Partial graph settings in use!";
    EXPECT_EQ(connect("x:out", "b:in"), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 Connection x:out->b:in" + tail}));
    EXPECT_EQ(connect("x", "y"), StatusOk); // the source is looked for first
    EXPECT_TRUE(loggedExactly({"32 Connection x->y" + tail}));
    EXPECT_EQ(connect(":a", "b:in"), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 Connection :a->b:in" + tail}));
    EXPECT_EQ(connect("A:out", "b:in"), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 Connection A:out->b:in" + tail}));
    EXPECT_EQ(connectBy("sink='b:in'"), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 Connection ->b:in" + tail}));
    EXPECT_EQ(connectBy(""), StatusOk);
    EXPECT_TRUE(loggedExactly({"32 Connection ->" + tail}));
    EXPECT_TRUE(outerNode("b").parents.empty());
}

TEST_F(OuterGraphTest, ConnectionToAnUnknownNodeIsSkippedInSilence)
{
    addTwoNodes();
    EXPECT_EQ(connect("a:out", "y:in"), StatusOk);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(connectBy("source='a:out'"), StatusOk);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_TRUE(outerNode("a").children.empty());
}

TEST_F(OuterGraphTest, NeighboursStandInTheOrderOfTheirCreation)
{
    load(element("hw", "hub") + element("hw", "a") + element("hw", "b") + element("hw", "c"));
    for (const char* const name : {"c", "hub", "a", "b"}) add(name);
    for (const char* const name : {"b", "a", "c"}) {
        connect("hub:out", std::string(name) + ":in");
        connect(std::string(name) + ":out", "hub:in");
    }
    EXPECT_EQ(text(outerNode("hub").children), "c[in] a[in] b[in]");
    EXPECT_EQ(text(outerNode("hub").parents), "c[out] a[out] b[out]");
}

TEST_F(OuterGraphTest, ExistingLinkKeepsItsPort)
{
    BaseGraphNode a;
    BaseGraphNode b;
    b.name = "b";
    a.addChild(&b, "first");
    a.addChild(&b, "second");
    EXPECT_EQ(text(a.children), "b[first]");
    EXPECT_TRUE(a.parents.empty());
    a.addParent(&b, "third");
    a.addParent(&b, "fourth");
    EXPECT_EQ(text(a.parents), "b[third]");
    EXPECT_TRUE(b.parents.empty()); // the other end is the caller's business
    EXPECT_TRUE(b.children.empty());
}

TEST_F(OuterGraphTest, NodeThatIsCutOutLeavesItsNeighboursAndKeepsItsOwnLinks)
{
    BaseGraphNode above;
    BaseGraphNode below;
    BaseGraphNode middle;
    BaseGraphNode other;
    above.name = "above";
    below.name = "below";
    middle.name = "middle";
    other.name = "other";
    const auto link = [](BaseGraphNode& source, BaseGraphNode& sink) {
        source.addChild(&sink, "in");
        sink.addParent(&source, "out");
    };
    link(above, middle);
    link(middle, below);
    link(above, below);
    link(middle, other);
    link(other, middle);
    middle.emanzipate();
    EXPECT_EQ(text(above.children), "below[in]");
    EXPECT_EQ(text(below.parents), "above[out]");
    EXPECT_EQ(text(other.children), "");
    EXPECT_EQ(text(other.parents), "");
    EXPECT_EQ(text(middle.parents), "above[out] other[out]");
    EXPECT_EQ(text(middle.children), "below[in] other[in]");
}

TEST_F(OuterGraphTest, NodeThatFeedsItselfCanBeCutOut)
{
    BaseGraphNode above;
    BaseGraphNode loop;
    above.name = "above";
    loop.name = "loop";
    above.addChild(&loop, "in");
    loop.addParent(&above, "out");
    loop.addChild(&loop, "in");
    loop.addParent(&loop, "out");
    loop.emanzipate();
    EXPECT_TRUE(above.children.empty());
    EXPECT_EQ(text(loop.parents), "above[out] loop[out]"); // its own links stay, as those to others do
    EXPECT_EQ(text(loop.children), "loop[in]");
}

} // namespace

} // namespace graphtest
