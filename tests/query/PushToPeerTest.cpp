// SPDX-License-Identifier: Apache-2.0
#include "query/GraphFixture.h"

namespace graphtest {

namespace {

/// Merges with the push bit into a graph of nodes with ports; `a` is filed before `b` before `sink0`.
class PushToPeerTest : public GraphTest {
protected:
    void loadGraph(const std::string& nodes)
    {
        mRoot = tree("<a/><b/><sink0/>"); // fixes the order of the keys
        mRoot = tree(nodes);
        clearLog();
    }

    /// Merges a setting over the graph as graph construction does.
    int mergeSetting(const std::string& setting, signed char options = 13)
    {
        mSetting = tree(setting);
        clearLog();
        return GraphQueryUtils::addDescendantsFromNode(mRoot.get(), mSetting.get(), options);
    }

    Tree mRoot;
    Tree mSetting;
};

TEST_F(PushToPeerTest, OutputGivesAVirtualSinkWhatItLacks)
{
    loadGraph(R"(<a><out direction="1" peer="sink0" format="NV12" width="1"><options attribute="format"/></out></a>
                 <sink0 type="sink" peer="a:out" direction="0" width="640"/>)");
    EXPECT_EQ(mergeSetting("<a><out width=\"1920\" height=\"1080\"/></a>"), StatusOk);
    EXPECT_EQ(text(at(*mRoot, "sink0")),
              "format='NV12' peer='a:out' type='sink' options{attribute=16} direction=0 height=1080 width=640");
    EXPECT_EQ(value(*mRoot, "a:out:width"), "1920");
    EXPECT_TRUE(linked(*mRoot));
}

TEST_F(PushToPeerTest, OutputOverwritesThePortOfAnotherNodeButAddsNoNodes)
{
    loadGraph(R"(<a><out direction="1" peer="b:in" format="NV12"><input left="1"/><output left="2"/></out></a>
                 <b><in type="port" direction="0" peer="a:out" format="RAW" width="640">
                   <input left="0" top="5"/></in></b>)");
    EXPECT_EQ(mergeSetting("<a><out width=\"1920\"/></a>"), StatusOk);
    EXPECT_EQ(text(at(*mRoot, "b:in")),
              "format='NV12' input{left=1 top=5} peer='a:out' type='port' direction=0 width=1920");
}

TEST_F(PushToPeerTest, PeerWithoutATypeIsOverwrittenToo)
{
    loadGraph("<a><out direction=\"1\" peer=\"sink0\"/></a><sink0 width=\"640\"/>");
    at(*mRoot, "sink0").addValue(NUXO_KEY_TYPE, 46); // not a text
    EXPECT_EQ(mergeSetting("<a><out width=\"1920\"/></a>"), StatusOk);
    EXPECT_EQ(value(*mRoot, "sink0:width"), "1920");

    loadGraph("<a><out direction=\"1\" peer=\"sink0\"/></a><sink0 width=\"640\"/>");
    EXPECT_EQ(mergeSetting("<a><out width=\"1920\"/></a>"), StatusOk);
    EXPECT_EQ(value(*mRoot, "sink0:width"), "1920");
}

TEST_F(PushToPeerTest, OnlyOutputsPushAndOnlyWithTheBit)
{
    for (const char* direction : {"direction=\"0\"", "", "direction=\"2\""}) {
        loadGraph(std::string("<a><out ") + direction + " peer=\"b:in\"/></a><b><in/></b>");
        EXPECT_EQ(mergeSetting("<a><out width=\"1920\"/></a>"), StatusOk);
        EXPECT_EQ(value(*mRoot, "b:in:width"), "absent") << direction;
    }
    loadGraph("<a><out direction=\"1\" peer=\"b:in\"/></a><b><in/></b>");
    EXPECT_EQ(mergeSetting("<a><out width=\"1920\"/></a>", 9), StatusOk);
    EXPECT_EQ(value(*mRoot, "b:in:width"), "absent");
    at(*mRoot, "a:out").removeDescendant(NUXO_KEY_DIRECTION);
    at(*mRoot, "a:out").addValue(NUXO_KEY_DIRECTION, std::string("1"));
    EXPECT_EQ(mergeSetting("<a><out width=\"1920\"/></a>"), StatusOk);
    EXPECT_EQ(value(*mRoot, "b:in:width"), "absent");
}

TEST_F(PushToPeerTest, DirectionGivenByTheSettingCountsForTheSameMerge)
{
    loadGraph("<a><out peer=\"b:in\"/></a><b><in/></b>");
    EXPECT_EQ(mergeSetting("<a><out direction=\"1\" width=\"1920\"/></a>"), StatusOk);
    EXPECT_EQ(value(*mRoot, "b:in:width"), "1920");
}

TEST_F(PushToPeerTest, PortsThatTheSettingDoesNotNameDoNotPush)
{
    loadGraph("<a><out direction=\"1\" peer=\"b:in\" width=\"7\"/></a><b><in/></b>");
    EXPECT_EQ(mergeSetting("<a/>"), StatusOk);
    EXPECT_EQ(value(*mRoot, "b:in:width"), "absent");
    EXPECT_EQ(mergeSetting("<a><out/></a>"), StatusOk);
    EXPECT_EQ(value(*mRoot, "b:in:width"), "7");
}

TEST_F(PushToPeerTest, PushGoesToTheFirstPeerOnly)
{
    loadGraph("<a><out direction=\"1\" peer=\"b:in\"/></a><b><in/></b><sink0/>");
    at(*mRoot, "a:out").insertDescendant(new GraphConfigStrAttribute("sink0"), NUXO_KEY_PEER);
    EXPECT_EQ(mergeSetting("<a><out width=\"1920\"/></a>"), StatusOk);
    EXPECT_EQ(value(*mRoot, "b:in:width"), "1920");
    EXPECT_EQ(value(*mRoot, "sink0:width"), "absent");
}

TEST_F(PushToPeerTest, DisabledAndPrivatePortsPushAllTheSame)
{
    loadGraph("<a><out direction=\"1\" peer=\"b:in\" enabled=\"0\" private=\"1\"/></a><b><in enabled=\"1\"/></b>");
    EXPECT_EQ(mergeSetting("<a><out width=\"1920\"/></a>"), StatusOk);
    EXPECT_EQ(text(at(*mRoot, "b:in")), "peer='b:in' direction=1 enabled=0 private=1 width=1920");
}

TEST_F(PushToPeerTest, PortWithoutAPeerIsNoFailure)
{
    for (const char* peer : {"", "peer=\"\"", "peer=\"b:out\"", "peer=\"nosuchword\"", "peer=\"b:in:in\""}) {
        loadGraph(std::string("<a><out direction=\"1\" ") + peer + "/></a><b><in/></b>");
        EXPECT_EQ(mergeSetting("<a><out width=\"1920\"/></a>"), StatusOk) << peer;
        EXPECT_EQ(text(at(*mRoot, "b")), "in{}") << peer;
        EXPECT_TRUE(loggedExactly({})) << peer;
    }
}

TEST_F(PushToPeerTest, PushReachesOneLevelOnly)
{
    loadGraph(R"(<a><out direction="1" peer="b:in"/></a><b><in direction="1" peer="sink0"/></b><sink0 type="sink"/>)");
    EXPECT_EQ(mergeSetting("<a><out width=\"1920\"/></a>"), StatusOk);
    EXPECT_EQ(value(*mRoot, "b:in:width"), "1920");
    EXPECT_EQ(value(*mRoot, "sink0:width"), "absent");
}

TEST_F(PushToPeerTest, OrderOfTheNodesDecidesBetweenPushedAndOwnValues)
{
    // b is merged after a: its own value comes last.
    loadGraph("<a><out direction=\"1\" peer=\"b:in\"/></a><b><in peer=\"a:out\"/></b>");
    EXPECT_EQ(mergeSetting("<b><in width=\"2\"/></b><a><out width=\"1\"/></a>"), StatusOk);
    EXPECT_EQ(value(*mRoot, "b:in:width"), "2");

    // a is merged before b: the value that b pushes comes last.
    loadGraph("<b><out direction=\"1\" peer=\"a:in\"/></b><a><in peer=\"b:out\"/></a>");
    EXPECT_EQ(mergeSetting("<b><out width=\"2\"/></b><a><in width=\"1\"/></a>"), StatusOk);
    EXPECT_EQ(value(*mRoot, "a:in:width"), "2");
}

TEST_F(PushToPeerTest, OutputsThatNameEachOtherEnd)
{
    loadGraph("<a><out direction=\"1\" peer=\"b:in\"/></a><b><in direction=\"1\" peer=\"a:out\"/></b>");
    EXPECT_EQ(mergeSetting("<a><out width=\"1\"/></a><b><in width=\"2\" left=\"3\"/></b>"), StatusOk);
    EXPECT_EQ(value(*mRoot, "a:out:width"), "2");
    EXPECT_EQ(value(*mRoot, "a:out:left"), "3");
    EXPECT_EQ(value(*mRoot, "b:in:width"), "2");
}

TEST_F(PushToPeerTest, OutputThatIsItsOwnPeerStaysAsItIs)
{
    loadGraph("<a><out direction=\"1\" peer=\"a:out\"/></a>");
    EXPECT_EQ(mergeSetting("<a><out width=\"1\"/></a>"), StatusOk);
    EXPECT_EQ(text(at(*mRoot, "a:out")), "peer='a:out' direction=1 width=1");
}

TEST_F(PushToPeerTest, OutputWhosePeerIsItsOwnNodeEnds)
{
    loadGraph("<a type=\"sink\"><out direction=\"1\" peer=\"a\"><input left=\"1\"/></out></a>");
    EXPECT_EQ(mergeSetting("<a><out width=\"1\"/></a>"), StatusOk);
    EXPECT_EQ(value(*mRoot, "a:width"), "1");
    EXPECT_EQ(value(*mRoot, "a:input:left"), "1");
    EXPECT_TRUE(linked(*mRoot));
}

TEST_F(PushToPeerTest, NodeOfDirectionOneWhosePeerLiesInsideItEnds)
{
    loadGraph("<a direction=\"1\" peer=\"a:out\" bpp=\"8\"><out type=\"sink\"/></a>");
    EXPECT_EQ(mergeSetting("<a width=\"1\"/>"), StatusOk);
    EXPECT_EQ(value(*mRoot, "a:out:width"), "1");
    EXPECT_EQ(value(*mRoot, "a:out:bpp"), "8");
    EXPECT_TRUE(linked(*mRoot));
}

TEST_F(PushToPeerTest, PeerOfTheGraphsOwnRootIsFound)
{
    loadGraph("<sink0 type=\"sink\"/>");
    mRoot->addValue(NUXO_KEY_PEER, std::string("sink0"));
    EXPECT_EQ(mergeSetting("<b/>", 13), StatusOk);
    EXPECT_EQ(value(*mRoot, "sink0:b"), "absent");
    mRoot->addValue(NUXO_KEY_DIRECTION, 1);
    EXPECT_EQ(mergeSetting("<b/>", 13), StatusOk);
    EXPECT_EQ(value(*mRoot, "sink0:b"), "node");
}

TEST_F(PushToPeerTest, FailureOfThePushIsTheResult)
{
    loadGraph("<a><out direction=\"1\" peer=\"sink0\"><input/></out></a><sink0 type=\"sink\"/>");
    at(*mRoot, "a:out:input").insertDescendant(new GraphConfigItem, NUXO_KEY_FORMAT); // cannot be copied
    EXPECT_EQ(mergeSetting("<a><out width=\"1\"/></a>"), StatusNoMemory);
    EXPECT_TRUE(loggedExactly({"16 Error creating GraphConfigItem: No memory"}));
    EXPECT_EQ(value(*mRoot, "a:out:width"), "1");
}

// --- how a port's peer is found ---

TEST_F(PushToPeerTest, PeerIsANodeOrThePortOfANode)
{
    loadGraph("<a><out peer=\"b:in\"/><aux peer=\"sink0\"/></a><b><in/></b><sink0/>");
    EXPECT_EQ(GraphQueryUtils::getPortPeer(&at(*mRoot, "a:out")), &at(*mRoot, "b:in"));
    EXPECT_EQ(GraphQueryUtils::getPortPeer(&at(*mRoot, "a:aux")), &at(*mRoot, "sink0"));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PushToPeerTest, PeerIsFoundFromAnyDepthWhateverIsDisabled)
{
    loadGraph(
        "<a><out><input peer=\"b:in\" enabled=\"0\" private=\"1\"/></out></a><b enabled=\"0\"><in enabled=\"0\"/></b>");
    EXPECT_EQ(GraphQueryUtils::getPortPeer(&at(*mRoot, "a:out:input")), &at(*mRoot, "b:in"));
}

TEST_F(PushToPeerTest, FirstOfSeveralPeersCounts)
{
    loadGraph("<a><out peer=\"b:in\"/></a><b><in/></b><sink0/>");
    at(*mRoot, "a:out").insertDescendant(new GraphConfigStrAttribute("sink0"), NUXO_KEY_PEER);
    EXPECT_EQ(GraphQueryUtils::getPortPeer(&at(*mRoot, "a:out")), &at(*mRoot, "b:in"));
}

TEST_F(PushToPeerTest, WhatNamesNoNodeIsNoPeer)
{
    EXPECT_EQ(GraphQueryUtils::getPortPeer(nullptr), nullptr);
    loadGraph("<a format=\"x\"><out/></a><b><in width=\"1\"/></b>");
    GraphConfigNode& port = at(*mRoot, "a:out");
    EXPECT_EQ(GraphQueryUtils::getPortPeer(&port), nullptr);
    for (const char* peer :
         {"", ":", ":in", "a:", "b:in:in", "nosuch", "nosuch:in", "b:nosuch", "a:format", "b:width"}) {
        port.removeDescendant(NUXO_KEY_PEER);
        port.addValue(NUXO_KEY_PEER, std::string(peer));
        EXPECT_EQ(GraphQueryUtils::getPortPeer(&port), nullptr) << peer;
    }
    port.removeDescendant(NUXO_KEY_PEER);
    port.addValue(NUXO_KEY_PEER, 5);
    EXPECT_EQ(GraphQueryUtils::getPortPeer(&port), nullptr);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PushToPeerTest, AttributeHidesAPeerOfItsKey)
{
    loadGraph("<a><out peer=\"sensor\"/><aux peer=\"b:format\"/></a><sensor/><b format=\"x\"><format/></b>");
    EXPECT_EQ(GraphQueryUtils::getPortPeer(&at(*mRoot, "a:aux")), nullptr);
    EXPECT_NE(GraphQueryUtils::getPortPeer(&at(*mRoot, "a:out")), nullptr);
}

} // namespace

} // namespace graphtest
