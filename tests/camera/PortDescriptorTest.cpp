// SPDX-License-Identifier: Apache-2.0
#include "camera/PortFixture.h"

namespace graphtest {

namespace {

using PortDescriptor = GraphCameraUtil::PortDescriptor;

/// Attributes that a port needs besides its size and format.
constexpr const char* kPort = "id=\"5\" direction=\"1\"";

class PortDescriptorTest : public PortTest {
protected:
    /// Fills what is there with values that no graph here has.
    PortDescriptorTest()
    {
        mPort.name = "old port";
        mPort.pgName = "old group";
        mPort.direction = 71;
        mPort.enabled = 72;
        mPort.terminalId = 73;
        mPort.width = 74;
        mPort.height = 75;
        mPort.format = "old format";
    }

    int ask(const IGraphConfig* port) { return GraphCameraUtil::portGetDescriptor(port, mPort); }
    int ask() { return ask(out()); }

    void expectSize(int width, int height, const std::string& format) const
    {
        EXPECT_EQ(mPort.width, width);
        EXPECT_EQ(mPort.height, height);
        EXPECT_EQ(mPort.format, format);
    }

    /// Expects the failure of a port whose own and whose peer's attributes are these, with these lines.
    void expectFailure(const std::string& port, const std::string& peer, const std::vector<std::string>& lines)
    {
        loadPair(std::string(kPort) + ' ' + port, peer);
        EXPECT_EQ(ask(), StatusBadState) << port << " | " << peer;
        EXPECT_TRUE(loggedExactly(lines)) << port << " | " << peer;
    }

    PortDescriptor mPort;
};

TEST_F(PortDescriptorTest, FieldsStartEmpty)
{
    const PortDescriptor fresh;
    EXPECT_EQ(fresh.name + fresh.pgName + fresh.format, "");
    EXPECT_EQ(fresh.direction, 0);
    EXPECT_EQ(fresh.enabled, 0);
    EXPECT_EQ(fresh.terminalId, 0U);
    EXPECT_EQ(fresh.width, 0);
    EXPECT_EQ(fresh.height, 0);
}

TEST_F(PortDescriptorTest, PortThatSaysEverythingIsDescribedByItself)
{
    loadPair("id=\"5\" direction=\"1\" enabled=\"2\" width=\"1920\" height=\"1080\" format=\"YUV420_8_SP\"",
             "enabled=\"0\" width=\"1\" height=\"2\" format=\"RAW\"", "pg_id=\"4\"");
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(mPort.name, "out");
    EXPECT_EQ(mPort.pgName, "pg");
    EXPECT_EQ(mPort.direction, 1);
    EXPECT_EQ(mPort.enabled, 2);
    EXPECT_EQ(mPort.terminalId, 0x44735U); // 4 << 16 | "0G", + 5
    expectSize(1920, 1080, "YUV420_8_SP");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortDescriptorTest, PortThatHasItsOwnSizeNeedsNoPeer)
{
    for (const char* peer : {"", "peer=\"ghost:in\""}) {
        loadPort(std::string(kPort) + " width=\"4\" height=\"3\" format=\"F\" " + peer);
        EXPECT_EQ(ask(), StatusOk);
        expectSize(4, 3, "F");
        EXPECT_TRUE(loggedExactly({}));
    }
}

TEST_F(PortDescriptorTest, EnabledIsOneWhenThePortDoesNotSay)
{
    loadPair(std::string(kPort) + " width=\"4\" height=\"3\" format=\"F\"", "enabled=\"0\"");
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(mPort.enabled, 1); // the peer is not asked
    out()->addValue(NUXO_KEY_ENABLED, std::string("0"));
    mPort.enabled = 72;
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(mPort.enabled, 1);
}

TEST_F(PortDescriptorTest, WidthOfThePeerBringsItsHeightAndFormat)
{
    // The port's own height and format do not count then.
    loadPair(std::string(kPort) + " height=\"9\" format=\"OWN\"", "width=\"640\" height=\"480\" format=\"PEER\"");
    EXPECT_EQ(ask(), StatusOk);
    expectSize(640, 480, "PEER");
    EXPECT_EQ(mPort.name, "out");
    EXPECT_EQ(mPort.pgName, "pg");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortDescriptorTest, WidthOfAnotherKindCountsAsAbsent)
{
    loadPair(kPort, "width=\"640\" height=\"480\" format=\"PEER\"");
    out()->addValue(NUXO_KEY_WIDTH, std::string("4"));
    EXPECT_EQ(ask(), StatusOk);
    expectSize(640, 480, "PEER");
}

TEST_F(PortDescriptorTest, PeerMayBeASinkOrDisabled)
{
    load(portOf("pg", "out", std::string(kPort) + " peer=\"video\"") +
         "<sink name=\"video\" enabled=\"0\" width=\"640\" height=\"480\" format=\"F\"/>");
    EXPECT_EQ(ask(), StatusOk);
    expectSize(640, 480, "F");
    EXPECT_EQ(mPort.enabled, 1);
}

TEST_F(PortDescriptorTest, SinkIsDescribedWithTheRootAsItsNode)
{
    load("<sink name=\"video\" id=\"3\" direction=\"0\" width=\"4\" height=\"3\" format=\"F\"/>");
    EXPECT_EQ(ask(node("video")), StatusBadState); // the root has no name
    EXPECT_TRUE(loggedExactly({"16 Could not get port(video) and ancestor()"}));
    mRoot->addValue(NUXO_KEY_NAME, std::string("root"));
    EXPECT_EQ(ask(node("video")), StatusOk);
    EXPECT_EQ(mPort.pgName, "root");
    EXPECT_EQ(mPort.terminalId, 3U);
    expectSize(4, 3, "F");
}

TEST_F(PortDescriptorTest, SizeAndFormatOfADisabledPortAreLeftAsTheyWere)
{
    loadPair("id=\"5\" direction=\"0\" enabled=\"0\" width=\"4\" height=\"3\" format=\"F\"", "width=\"1\"");
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(mPort.name, "out");
    EXPECT_EQ(mPort.pgName, "pg");
    EXPECT_EQ(mPort.direction, 0);
    EXPECT_EQ(mPort.enabled, 0);
    EXPECT_EQ(mPort.terminalId, 5U);
    expectSize(74, 75, "old format");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortDescriptorTest, NegativeEnabledIsNotDisabled)
{
    loadPort("id=\"5\" direction=\"0\" enabled=\"-1\" width=\"4\" height=\"3\" format=\"F\"");
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(mPort.enabled, -1);
    expectSize(4, 3, "F");
}

TEST_F(PortDescriptorTest, NumbersAreHandedOutAsTheyAre)
{
    loadPort(std::string("id=\"0\" direction=\"-9\" enabled=\"") + kLargest + "\" width=\"" + kSmallest +
             "\" height=\"" + kLargest + "\" format=\"\"");
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(mPort.direction, -9);
    EXPECT_EQ(mPort.enabled, 2147483647);
    EXPECT_EQ(mPort.terminalId, 0U);
    expectSize(-2147483647 - 1, 2147483647, "");
}

// --- failures ---

TEST_F(PortDescriptorTest, PortNeedsANode)
{
    EXPECT_EQ(ask(nullptr), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 Could not get ancestor"}));

    GraphConfigNode alone;
    alone.addValue(NUXO_KEY_NAME, std::string("out"));
    clearLog();
    EXPECT_EQ(ask(&alone), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 Could not get ancestor"}));
    EXPECT_EQ(mPort.enabled, 1);
    EXPECT_EQ(mPort.name, "old port");
}

TEST_F(PortDescriptorTest, BothNamesAreNeeded)
{
    loadPair(kPort);
    node("pg")->removeDescendant(NUXO_KEY_NAME);
    EXPECT_EQ(ask(), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 Could not get port(out) and ancestor()"}));

    out()->removeDescendant(NUXO_KEY_NAME);
    clearLog();
    EXPECT_EQ(ask(), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 Could not get port() and ancestor()"}));

    node("pg")->addValue(NUXO_KEY_NAME, std::string("pg"));
    out()->addValue(NUXO_KEY_NAME, 4); // no text
    clearLog();
    EXPECT_EQ(ask(), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 Could not get port() and ancestor(pg)"}));
    EXPECT_EQ(mPort.direction, 71);
}

TEST_F(PortDescriptorTest, DirectionIsNeeded)
{
    loadPair("id=\"5\" width=\"4\" height=\"3\" format=\"F\"");
    EXPECT_EQ(ask(), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 Could not get port direction"}));
    EXPECT_EQ(mPort.name, "out");
    EXPECT_EQ(mPort.pgName, "pg");
    EXPECT_EQ(mPort.terminalId, 73U);
    out()->addValue(NUXO_KEY_DIRECTION, std::string("1"));
    clearLog();
    EXPECT_EQ(ask(), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 Could not get port direction"}));
}

TEST_F(PortDescriptorTest, TerminalIsNeededAlsoOfADisabledPort)
{
    for (const char* enabled : {"0", "1"}) {
        loadPort(std::string("direction=\"1\" width=\"4\" height=\"3\" format=\"F\" enabled=\"") + enabled + "\"");
        EXPECT_EQ(ask(), StatusBadState);
        EXPECT_TRUE(loggedExactly({"16 Failed to get port(port[pg:out]) id", "16 Could not get port uid"}));
        EXPECT_EQ(mPort.direction, 1);
        expectSize(74, 75, "old format");
    }
}

TEST_F(PortDescriptorTest, PortWithoutAWidthNeedsAPeer)
{
    const std::string line = "16 Could not find peer port - Fix your graph";
    loadPort(std::string(kPort) + " height=\"3\" format=\"F\"");
    EXPECT_EQ(ask(), StatusBadState);
    EXPECT_TRUE(loggedExactly({"2 Couldn't find peer value for port[pg:out]", line}));
    expectSize(0, 0, "old format"); // both sizes are cleared first

    loadPort(std::string(kPort) + " peer=\"ghost:in\"");
    EXPECT_EQ(ask(), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 Failed to find peer by name ghost:in", line}));

    loadPair(std::string(kPort) + " private=\"1\"", "width=\"640\" height=\"480\" format=\"F\"");
    EXPECT_EQ(ask(), StatusBadState);
    EXPECT_TRUE(loggedExactly({line})); // that private ports have no peer is not worth a line
}

TEST_F(PortDescriptorTest, PeerMustHaveTheWidth)
{
    expectFailure("height=\"3\" format=\"F\"", "height=\"480\" format=\"G\"",
                  {"16 Could not find port portDescriptor info: width (from peer)"});
    expectSize(0, 0, "old format");
}

TEST_F(PortDescriptorTest, HeightAndFormatAreNeededWhereTheWidthIs)
{
    const std::string noHeight = "16 Could not find port portDescriptor info: height";
    const std::string noFormat = "16 Could not find format for port out";
    struct Case {
        const char* port;
        const char* peer;
        const std::string& line;
        int width;
        int height;
    };
    // What the other side has does not help.
    const Case cases[] = {
        {"width=\"4\" format=\"F\"", "width=\"640\" height=\"480\" format=\"G\"", noHeight, 4, 0},
        {"height=\"3\" format=\"F\"", "width=\"640\" format=\"G\"", noHeight, 640, 0},
        {"width=\"4\" height=\"3\"", "width=\"640\" height=\"480\" format=\"G\"", noFormat, 4, 3},
        {"format=\"F\"", "width=\"640\" height=\"480\"", noFormat, 640, 480},
    };
    for (const Case& missing : cases) {
        expectFailure(missing.port, missing.peer, {missing.line});
        expectSize(missing.width, missing.height, "old format");
    }
}

TEST_F(PortDescriptorTest, OnlyOneConnectionIsFollowed)
{
    // Both ports wait for the other, though a third one at the first has a width.
    load(portOf("pg", "out", std::string(kPort) + " peer=\"next:in\"") + portOf("next", "in", "peer=\"pg:out\"") +
         portOf("third", "in", "width=\"4\" height=\"3\" format=\"F\" peer=\"next:in\""));
    EXPECT_EQ(ask(), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 Could not find port portDescriptor info: width (from peer)"}));
}

TEST_F(PortDescriptorTest, PortMayBeItsOwnPeer)
{
    loadPort(std::string(kPort) + " peer=\"pg:out\"");
    EXPECT_EQ(ask(), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 Could not find port portDescriptor info: width (from peer)"}));
    loadPort(std::string(kPort) + " peer=\"pg:out\" width=\"4\" height=\"3\" format=\"F\"");
    EXPECT_EQ(ask(), StatusOk);
    expectSize(4, 3, "F");
}

TEST_F(PortDescriptorTest, PeerMayBeTheNodeOfThePort)
{
    // A peer text that ends at an attribute names the node that holds it.
    loadPort(std::string(kPort) + " peer=\"pg:name\"", "width=\"4\" height=\"3\" format=\"F\"");
    EXPECT_EQ(ask(), StatusOk);
    expectSize(4, 3, "F");
}

} // namespace

} // namespace graphtest
