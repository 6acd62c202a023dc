// SPDX-License-Identifier: Apache-2.0
#include "camera/PortFixture.h"

namespace graphtest {

namespace {

constexpr unsigned int kOldEnabled = 91;
constexpr unsigned int kOldTerminal = 92;

class PortInfoTest : public PortTest {
protected:
    int ask(const IGraphConfig* port)
    {
        mEnabled = kOldEnabled;
        mTerminal = kOldTerminal;
        return GraphCameraUtil::portGetInfo(port, mEnabled, mTerminal);
    }
    int ask() { return ask(out()); }

    std::vector<std::string> informedByAsking()
    {
        return informed([this] { ask(); });
    }

    using Lines = std::vector<std::string>;

    unsigned int mEnabled = 0;
    unsigned int mTerminal = 0;
};

constexpr const char* kInfo = "Getting port info for port[pg:out]";
constexpr const char* kFromPeer = "Using the peer's attribute value";

TEST_F(PortInfoTest, NoPortIsReported)
{
    EXPECT_EQ(ask(nullptr), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 Invalid parameter, could not get port format"}));
    EXPECT_EQ(informed([this] { ask(nullptr); }), Lines());
    EXPECT_EQ(mEnabled, kOldEnabled);
    EXPECT_EQ(mTerminal, kOldTerminal);
}

TEST_F(PortInfoTest, PortItselfIsAskedFirst)
{
    loadPair("id=\"5\" enabled=\"1\"", "enabled=\"0\"", "pg_id=\"4\"");
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(mEnabled, 1U);
    EXPECT_EQ(mTerminal, 0x44735U); // 4 << 16 | "0G", + 5
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(informedByAsking(), Lines{kInfo});
}

TEST_F(PortInfoTest, PortThatAnswersNeedsNoPeer)
{
    loadPort("id=\"5\" enabled=\"0\" peer=\"ghost\"");
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(mEnabled, 0U);
    EXPECT_EQ(mTerminal, 5U);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortInfoTest, PeerIsAskedNext)
{
    for (const std::string enabled : {"0", "1", "3"}) {
        loadPair("id=\"5\"", "enabled=\"" + enabled + "\" id=\"9\"");
        EXPECT_EQ(ask(), StatusOk);
        EXPECT_EQ(std::to_string(mEnabled), enabled);
        EXPECT_EQ(mTerminal, 5U);
        EXPECT_TRUE(loggedExactly({}));
        EXPECT_EQ(informedByAsking(), (Lines{kInfo, kFromPeer}));
    }
}

TEST_F(PortInfoTest, EnabledOfAnotherKindCountsAsAbsent)
{
    loadPair("id=\"5\"", "enabled=\"3\"");
    out()->addValue(NUXO_KEY_ENABLED, std::string("0"));
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(mEnabled, 3U);
    node("next:in")->removeDescendant(NUXO_KEY_ENABLED);
    node("next:in")->addValue(NUXO_KEY_ENABLED, std::string("0"));
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(mEnabled, 1U);
}

TEST_F(PortInfoTest, PortIsEnabledWhenNeitherSaysOtherwise)
{
    loadPair("id=\"5\"");
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(mEnabled, 1U);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(informedByAsking(), Lines{kInfo});
}

TEST_F(PortInfoTest, PortWithoutAPeerIsEnabled)
{
    for (const char* peer : {"", "peer=\"ghost\"", "peer=\"next:in\" private=\"1\""}) {
        load(portOf("pg", "out", std::string("id=\"5\" ") + peer) + portOf("next", "in", "enabled=\"0\""));
        EXPECT_EQ(ask(), StatusOk) << peer;
        EXPECT_EQ(mEnabled, 1U) << peer;
        EXPECT_EQ(mTerminal, 5U) << peer;
    }
    EXPECT_TRUE(loggedExactly({})); // that private ports have no peer is not worth a line
}

TEST_F(PortInfoTest, OnlyOneConnectionIsFollowed)
{
    load(portOf("pg", "out", "id=\"5\" peer=\"next:in\"") + portOf("next", "in", "peer=\"third:in\"") +
         portOf("third", "in", "enabled=\"0\""));
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(mEnabled, 1U);
    loadPort("id=\"5\" peer=\"pg:out\""); // its own peer
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(mEnabled, 1U);
}

TEST_F(PortInfoTest, LargestNumberIsEnabled)
{
    loadPort(std::string("id=\"5\" enabled=\"") + kLargest + "\"");
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(mEnabled, 2147483647U);
}

TEST_F(PortInfoTest, NegativeEnabledIsRefused)
{
    for (const char* enabled : {"-1", kSmallest}) {
        loadPair(std::string("enabled=\"") + enabled + "\"", "enabled=\"1\""); // nor is there an id
        EXPECT_EQ(ask(), StatusMissingData);
        EXPECT_EQ(mEnabled, kOldEnabled);
        EXPECT_EQ(mTerminal, kOldTerminal);
        EXPECT_TRUE(loggedExactly({}));
        EXPECT_EQ(informedByAsking(), Lines{kInfo});
    }
}

TEST_F(PortInfoTest, NegativeEnabledOfThePeerIsRefused)
{
    loadPair("id=\"5\"", "enabled=\"-1\"");
    EXPECT_EQ(ask(), StatusMissingData);
    EXPECT_EQ(mEnabled, kOldEnabled);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(informedByAsking(), (Lines{kInfo, kFromPeer}));
}

TEST_F(PortInfoTest, TerminalIsNeeded)
{
    loadPair("enabled=\"0\"", "id=\"9\"");
    EXPECT_EQ(ask(), StatusNotFound);
    EXPECT_EQ(mEnabled, 0U);
    EXPECT_TRUE(loggedExactly({"16 Failed to get port(port[pg:out]) id", "16 Could not get port uid"}));

    GraphConfigNode alone;
    alone.addValue(NUXO_KEY_ENABLED, 1);
    alone.addValue(NUXO_KEY_ID, 5);
    clearLog();
    EXPECT_EQ(ask(&alone), StatusNotFound);
    EXPECT_TRUE(loggedExactly({"16 Failed to get port ancestor", "16 Could not get port uid"}));
    EXPECT_EQ(informed([&] { ask(&alone); }), Lines{"Getting port info for NODE[NA]"});
}

} // namespace

} // namespace graphtest
