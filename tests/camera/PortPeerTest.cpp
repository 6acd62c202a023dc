// SPDX-License-Identifier: Apache-2.0
#include "query/ForeignNode.h"
#include "query/GraphFixture.h"

namespace graphtest {

namespace {

using NUXO::GraphCameraUtil;

class PortPeerTest : public GraphTest {
protected:
    /// A graph whose port `a:out` has these attributes, beside `b:in` and the sink `s`.
    void loadGraph(const std::string& attributes)
    {
        mRoot =
            descriptor("<hw name=\"a\"><port name=\"out\" " + attributes +
                       "/></hw><hw name=\"b\"><port name=\"in\" enabled=\"0\" private=\"1\"/></hw><sink name=\"s\"/>");
        clearLog();
    }

    int peerOfOut()
    {
        mPeer = nullptr;
        return GraphCameraUtil::portGetPeer(&at(*mRoot, "a:out"), &mPeer);
    }

    IGraphConfig* node(const std::string& path) const { return &at(*mRoot, path); }

    Tree mRoot;
    IGraphConfig* mPeer = nullptr;
};

TEST_F(PortPeerTest, NullArgumentsAreReported)
{
    const std::string message = "Invalid Node, cannot get the peer port";
    loadGraph("peer=\"b:in\"");
    EXPECT_EQ(GraphCameraUtil::portGetPeer(nullptr, &mPeer), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 " + message}));
    EXPECT_EQ(GraphCameraUtil::portGetPeer(node("a:out"), nullptr), StatusBadArgument);
    EXPECT_EQ(GraphCameraUtil::portGetPeer(nullptr, nullptr), StatusBadArgument);
    EXPECT_EQ(count(kError, message), 3U);
}

TEST_F(PortPeerTest, PeerIsAPortOrASinkWhateverItsOwnState)
{
    loadGraph("peer=\"b:in\"");
    EXPECT_EQ(peerOfOut(), StatusOk);
    EXPECT_EQ(mPeer, node("b:in"));
    loadGraph("peer=\"s\"");
    EXPECT_EQ(peerOfOut(), StatusOk);
    EXPECT_EQ(mPeer, node("s"));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortPeerTest, DisabledAndPrivatePortsHaveNoPeerAndSayNothing)
{
    for (const char* state : {"enabled=\"0\"", "private=\"1\"", "private=\"-1\"", "enabled=\"0\" private=\"1\""}) {
        loadGraph(std::string("peer=\"b:in\" ") + state);
        EXPECT_EQ(peerOfOut(), StatusNotFound) << state;
        EXPECT_TRUE(loggedExactly({})) << state;
    }
    for (const char* state : {"enabled=\"1\"", "enabled=\"-1\"", "private=\"0\""}) {
        loadGraph(std::string("peer=\"b:in\" ") + state);
        EXPECT_EQ(peerOfOut(), StatusOk) << state;
    }
}

TEST_F(PortPeerTest, StateOfAnotherKindCountsAsAbsent)
{
    loadGraph("peer=\"b:in\"");
    at(*mRoot, "a:out").addValue(NUXO_KEY_ENABLED, std::string("0"));
    at(*mRoot, "a:out").addValue(NUXO_KEY_PRIVATE, std::string("1"));
    EXPECT_EQ(peerOfOut(), StatusOk);
}

TEST_F(PortPeerTest, PortWithoutPeerTextIsNoted)
{
    loadGraph("");
    EXPECT_EQ(peerOfOut(), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"2 Couldn't find peer value for port[a:out]"}));
    at(*mRoot, "a:out").addValue(NUXO_KEY_PEER, 3);
    EXPECT_EQ(peerOfOut(), StatusBadArgument);
    EXPECT_EQ(count(kDebug, "Couldn't find peer value for port[a:out]"), 2U);
}

TEST_F(PortPeerTest, PeerThatIsNotThereIsReportedAndNull)
{
    for (const char* peer : {"ghost", "ghost:in", "b:ghost", "", "s:in", "type"}) {
        loadGraph(std::string("peer=\"") + peer + "\"");
        IGraphConfig* found = node("s");
        EXPECT_EQ(GraphCameraUtil::portGetPeer(node("a:out"), &found), StatusBadArgument) << peer;
        EXPECT_EQ(found, nullptr) << peer;
        EXPECT_TRUE(loggedExactly({std::string("16 Failed to find peer by name ") + peer}));
    }
}

TEST_F(PortPeerTest, TextThatEndsAtAnAttributeGivesTheNodeThatHoldsIt)
{
    loadGraph("peer=\"b:name\"");
    EXPECT_EQ(peerOfOut(), StatusOk);
    EXPECT_EQ(mPeer, node("b"));
}

TEST_F(PortPeerTest, FirstOfSeveralPeersCounts)
{
    loadGraph("peer=\"b:in\"");
    at(*mRoot, "a:out").insertDescendant(new GraphConfigStrAttribute("s"), NUXO_KEY_PEER);
    EXPECT_EQ(peerOfOut(), StatusOk);
    EXPECT_EQ(mPeer, node("b:in"));
}

TEST_F(PortPeerTest, NodeWithoutARootIsReported)
{
    const ForeignNode foreign;
    EXPECT_EQ(GraphCameraUtil::portGetPeer(&foreign, &mPeer), StatusMissingObject);
    EXPECT_TRUE(loggedExactly({"16 Failed to get root"}));
}

TEST_F(PortPeerTest, ContentIsPixelDataUnlessThePortSaysOtherwise)
{
    loadGraph("");
    EXPECT_EQ(GraphCameraUtil::portGetContentType(node("a:out")), "pixel_data");
    loadGraph("content_type=\"metadata\"");
    EXPECT_EQ(GraphCameraUtil::portGetContentType(node("a:out")), "metadata");
    loadGraph("content_type=\"\"");
    EXPECT_EQ(GraphCameraUtil::portGetContentType(node("a:out")), "");
    loadGraph("");
    at(*mRoot, "a:out").addValue(NUXO_KEY_CONTENT_TYPE, 1);
    EXPECT_EQ(GraphCameraUtil::portGetContentType(node("a:out")), "pixel_data");
    EXPECT_TRUE(loggedExactly({}));
}

} // namespace

} // namespace graphtest
