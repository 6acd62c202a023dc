// SPDX-License-Identifier: Apache-2.0
#include "query/GraphFixture.h"

namespace graphtest {

namespace {

class PortDisablingTest : public GraphTest {
protected:
    /// A graph whose nodes and ports are filed under their names, as in a built one; `a` is filed before `b`.
    void loadGraph(const std::string& nodes)
    {
        mRoot = descriptor("<hw name=\"a\"/><hw name=\"b\"/>");
        mRoot = descriptor(nodes);
        clearLog();
    }

    /// Runs the pass over a graph with these attributes on the port `a:out`, and gives its `enabled`.
    std::string enabledAfter(const std::string& attributes)
    {
        loadGraph("<hw name=\"a\"><port name=\"out\" " + attributes +
                  "/></hw><hw name=\"b\"><port name=\"in\" "
                  "peer=\"a:out\"/></hw><sink name=\"s\"/>");
        GraphQueryUtils::disableUnusedPorts(mRoot.get());
        return value(*mRoot, "a:out:enabled");
    }

    Tree mRoot;
};

TEST_F(PortDisablingTest, PassIsFramedByTwoLines)
{
    const std::vector<std::string> frame{"2 disableUnusedPorts", "2 disableUnusedPorts done!"};
    GraphConfigNode empty;
    GraphQueryUtils::disableUnusedPorts(&empty);
    EXPECT_TRUE(loggedExactly(frame));
    clearLog();
    GraphQueryUtils::disableUnusedPorts(nullptr);
    EXPECT_TRUE(loggedExactly(frame));
}

TEST_F(PortDisablingTest, ConnectedPortsStayAsTheyAre)
{
    loadGraph(R"(<hw name="a"><port name="out" direction="1" peer="b:in"/></hw>
                 <hw name="b"><port name="in" direction="0" peer="a:out"/></hw>)");
    const std::string before = text(*mRoot);
    GraphQueryUtils::disableUnusedPorts(mRoot.get());
    EXPECT_EQ(text(*mRoot), before);
    EXPECT_TRUE(loggedExactly({"2 disableUnusedPorts", "2 disableUnusedPorts done!"}));
}

TEST_F(PortDisablingTest, PortWithoutAPeerIsDisabled)
{
    EXPECT_EQ(enabledAfter(""), "0");
    EXPECT_TRUE(loggedExactly({"2 disableUnusedPorts", "2 Couldn't find peer value for port[a:out]",
                               "32 port out has no peer, disabling it.", "32 peer disabled, disabling port in",
                               "2 disableUnusedPorts done!"}));
}

TEST_F(PortDisablingTest, PortWhosePeerIsAbsentIsDisabled)
{
    EXPECT_EQ(enabledAfter("peer=\"ghost:in\" enabled=\"1\""), "0");
    EXPECT_TRUE(logged(kError, "Failed to find peer by name ghost:in"));
    EXPECT_TRUE(logged(kWarning, "port out has no peer, disabling it."));
}

TEST_F(PortDisablingTest, OnlyPixelPortsAreConsidered)
{
    EXPECT_EQ(enabledAfter("content_type=\"pixel_data\""), "0");
    EXPECT_EQ(enabledAfter("content_type=\"metadata\""), "absent");
    EXPECT_EQ(enabledAfter("content_type=\"Pixel_data\""), "absent");
    EXPECT_EQ(enabledAfter("content_type=\"\""), "absent");
}

TEST_F(PortDisablingTest, PrivatePortsAreSkipped)
{
    EXPECT_EQ(enabledAfter("private=\"1\""), "absent");
    EXPECT_EQ(enabledAfter("private=\"-1\""), "absent");
    EXPECT_EQ(enabledAfter("private=\"0\""), "0");
}

TEST_F(PortDisablingTest, DisabledPortsAreSkippedSilently)
{
    EXPECT_EQ(enabledAfter("enabled=\"0\""), "0");
    EXPECT_TRUE(notLogged("disabling it"));
    EXPECT_EQ(enabledAfter("enabled=\"2\""), "0");
    EXPECT_TRUE(logged(kWarning, "port out has no peer, disabling it."));
}

TEST_F(PortDisablingTest, PortOfADisabledPeerIsDisabled)
{
    loadGraph(R"(<hw name="a"><port name="out" peer="b:in"/></hw><hw name="b"><port name="in" enabled="0"/></hw>)");
    GraphQueryUtils::disableUnusedPorts(mRoot.get());
    EXPECT_EQ(value(*mRoot, "a:out:enabled"), "0");
    EXPECT_TRUE(
        loggedExactly({"2 disableUnusedPorts", "32 peer disabled, disabling port out", "2 disableUnusedPorts done!"}));
}

TEST_F(PortDisablingTest, PeersEnabledMustBeTheIntegerZero)
{
    for (const char* enabled : {"", "enabled=\"1\"", "enabled=\"-1\""}) {
        loadGraph("<hw name=\"a\"><port name=\"out\" peer=\"s\"/></hw><sink name=\"s\" " + std::string(enabled) + "/>");
        GraphQueryUtils::disableUnusedPorts(mRoot.get());
        EXPECT_EQ(value(*mRoot, "a:out:enabled"), "absent") << enabled;
    }
    loadGraph("<hw name=\"a\"><port name=\"out\" peer=\"s\"/></hw><sink name=\"s\"/>");
    at(*mRoot, "s").addValue(NUXO_KEY_ENABLED, std::string("0"));
    GraphQueryUtils::disableUnusedPorts(mRoot.get());
    EXPECT_EQ(value(*mRoot, "a:out:enabled"), "absent");
}

TEST_F(PortDisablingTest, DisabledVirtualSinkDisablesThePortThatFeedsIt)
{
    loadGraph("<hw name=\"a\"><port name=\"out\" peer=\"s\"/></hw><sink name=\"s\" peer=\"a:out\" enabled=\"0\"/>");
    GraphQueryUtils::disableUnusedPorts(mRoot.get());
    EXPECT_EQ(value(*mRoot, "a:out:enabled"), "0");
}

TEST_F(PortDisablingTest, OnePassInOrderOfTheNodes)
{
    // b:in is found unused after a:out was looked at, which therefore stays.
    loadGraph(R"(<hw name="a"><port name="out" peer="b:in"/></hw><hw name="b"><port name="in"/></hw>)");
    GraphQueryUtils::disableUnusedPorts(mRoot.get());
    EXPECT_EQ(value(*mRoot, "a:out:enabled"), "absent");
    EXPECT_EQ(value(*mRoot, "b:in:enabled"), "0");

    // a:in is found unused first, and b:out follows.
    loadGraph(R"(<hw name="b"><port name="out" peer="a:in"/></hw><hw name="a"><port name="in"/></hw>)");
    GraphQueryUtils::disableUnusedPorts(mRoot.get());
    EXPECT_EQ(value(*mRoot, "a:in:enabled"), "0");
    EXPECT_EQ(value(*mRoot, "b:out:enabled"), "0");
}

TEST_F(PortDisablingTest, OnlyPortsOneLevelBelowTheNodesAreLookedAt)
{
    loadGraph(R"(<port name="top"/><hw name="a"><kernel name="k"><port name="deep"/></kernel><sink name="s"/></hw>)");
    const std::string before = text(*mRoot);
    GraphQueryUtils::disableUnusedPorts(mRoot.get());
    EXPECT_EQ(text(*mRoot), before);
}

TEST_F(PortDisablingTest, TypeMustBeExactlyPort)
{
    loadGraph(
        R"(<hw name="a"><node name="x" type="Port"/><node name="y" type="ports"/><node name="z" type="port"/></hw>)");
    GraphQueryUtils::disableUnusedPorts(mRoot.get());
    EXPECT_EQ(value(*mRoot, "a:x:enabled"), "absent");
    EXPECT_EQ(value(*mRoot, "a:y:enabled"), "absent");
    EXPECT_EQ(value(*mRoot, "a:z:enabled"), "0");
}

TEST_F(PortDisablingTest, AttributesBetweenTheNodesAreHarmless)
{
    loadGraph("<hw name=\"a\" pg_id=\"1\"><port name=\"out\"/></hw>");
    mRoot->addValue(NUXO_KEY_NAME, std::string("graph"));
    mRoot->addValue(NUXO_KEY_KEY, 1);
    GraphQueryUtils::disableUnusedPorts(mRoot.get());
    EXPECT_EQ(value(*mRoot, "a:out:enabled"), "0");
}

// --- disabling one node ---

TEST_F(PortDisablingTest, DisablingCreatesOrSetsTheAttribute)
{
    GraphConfigNode node;
    EXPECT_EQ(GraphQueryUtils::disableNode(&node), StatusOk);
    EXPECT_EQ(text(node), "enabled=0");
    GraphConfigNode enabled;
    enabled.addValue(NUXO_KEY_ENABLED, 1);
    EXPECT_EQ(GraphQueryUtils::disableNode(&enabled), StatusOk);
    EXPECT_EQ(text(enabled), "enabled=0");
    EXPECT_EQ(GraphQueryUtils::disableNode(&enabled), StatusOk);
    EXPECT_EQ(text(enabled), "enabled=0");
    EXPECT_TRUE(loggedExactly({})); // no list of options is asked
}

TEST_F(PortDisablingTest, DisablingWhatCannotBeDisabledIsNoFailure)
{
    EXPECT_EQ(GraphQueryUtils::disableNode(nullptr), StatusOk);
    GraphConfigNode text_;
    text_.addValue(NUXO_KEY_ENABLED, std::string("1"));
    EXPECT_EQ(GraphQueryUtils::disableNode(&text_), StatusOk);
    EXPECT_EQ(text(text_), "enabled='1'");
    GraphConfigNode child;
    child.insertDescendant(new GraphConfigNode, NUXO_KEY_ENABLED);
    EXPECT_EQ(GraphQueryUtils::disableNode(&child), StatusOk);
    EXPECT_EQ(text(child), "enabled{}");
}

} // namespace

} // namespace graphtest
