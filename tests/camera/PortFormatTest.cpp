// SPDX-License-Identifier: Apache-2.0
// Where the values of a port's format come from, and what happens when they are missing.
#include "camera/PortFormatFixture.h"

namespace graphtest {

namespace {

constexpr unsigned int kNv12 = 0x4E563132;

TEST_F(PortFormatTest, PortThatSaysEverythingIsAskedAlone)
{
    // NV12: strides are multiples of 64, 1920 is one; 12 bits a pixel.
    loadPort("id=\"5\" enabled=\"1\" width=\"1920\" height=\"1080\" format=\"YUV420_8_SP\" bpl=\"2048\" "
             "peer=\"ghost\"",
             "pg_id=\"4\"");
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(mFormat.enabled, 1U);
    EXPECT_EQ(mFormat.terminalId, 0x44735U); // 4 << 16 | "0G", + 5
    expectSize(1920, 1080);
    expectLayout(kNv12, 2048, 12);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(informedByAsking(),
              (Lines{"bpl set to 1920 for YUV420_8_SP", "Overwriting bpl(1920) from settings 2048"}));
}

TEST_F(PortFormatTest, PortThatSaysNothingTakesAllFromItsPeer)
{
    // BA10: two bytes a pixel, strides are multiples of 64: 2000 -> 2048.
    loadPair("id=\"5\"", "id=\"9\" enabled=\"2\" width=\"1000\" height=\"750\" format=\"BA10\" bpl=\"4096\"");
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(mFormat.enabled, 2U);
    EXPECT_EQ(mFormat.terminalId, 5U);
    expectSize(1000, 750);
    expectLayout(fourcc("BA10"), 4096, 16);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(informedByAsking(), (Lines{kFromPeer, kFromPeer, kFromPeer, kFromPeer, "bpl set to 2048 for BA10",
                                         kFromPeer, "Overwriting bpl(2048) from settings 4096"}));
}

TEST_F(PortFormatTest, EachValueComesFromThePortOrElseFromItsPeer)
{
    const std::string own = "id=\"5\" ";
    loadPair(own + "width=\"64\" format=\"BA10\"",
             "width=\"1920\" height=\"1080\" format=\"YUV420_8_SP\" bpl=\"4096\"");
    EXPECT_EQ(ask(), StatusOk);
    expectSize(64, 1080);
    expectLayout(fourcc("BA10"), 4096, 16);
    // The stride is that of the port's format at the port's width: 2 * 64.
    EXPECT_EQ(informedByAsking(),
              (Lines{kFromPeer, "bpl set to 128 for BA10", kFromPeer, "Overwriting bpl(128) from settings 4096"}));

    loadPair(own + "height=\"3\" bpl=\"7\"", "width=\"64\" height=\"48\" format=\"YUV420_8_SP\" bpl=\"4096\"");
    EXPECT_EQ(ask(), StatusOk);
    expectSize(64, 3);
    expectLayout(kNv12, 7, 12);
}

TEST_F(PortFormatTest, ValuesOfAnotherKindCountAsAbsent)
{
    loadPair("id=\"5\"", "width=\"64\" height=\"48\" format=\"YUV420_8_SP\" bpl=\"128\"");
    for (const uint32_t number : {NUXO_KEY_WIDTH, NUXO_KEY_HEIGHT, NUXO_KEY_BPL}) {
        out()->addValue(number, std::string("7"));
    }
    out()->addValue(NUXO_KEY_FORMAT, 7);
    EXPECT_EQ(ask(), StatusOk);
    expectSize(64, 48);
    expectLayout(kNv12, 128, 12);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortFormatTest, PeerMayBeASink)
{
    load(portOf("pg", "out", "id=\"5\" peer=\"video\"") +
         "<sink name=\"video\" width=\"64\" height=\"48\" format=\"YUV420_8_SP\"/>");
    EXPECT_EQ(ask(), StatusOk);
    expectSize(64, 48);
    expectLayout(kNv12, 64, 12);
}

TEST_F(PortFormatTest, SinkHasAFormatOfItsOwn)
{
    load("<sink name=\"video\" id=\"3\" width=\"64\" height=\"48\" format=\"YUV420_8_SP\"/>");
    EXPECT_EQ(mFormat.askFor(node("video")), StatusOk);
    EXPECT_EQ(mFormat.terminalId, 3U);
    expectSize(64, 48);
    expectLayout(kNv12, 64, 12);
}

// --- disabled ports and ports that cannot be told ---

TEST_F(PortFormatTest, OfADisabledPortOnlyStateAndTerminalAreWritten)
{
    const std::string values = "width=\"64\" height=\"48\" format=\"YUV420_8_SP\" bpl=\"128\"";
    for (const auto& [port, peer] : std::map<std::string, std::string>{
             {"enabled=\"0\" " + values, values}, {values, "enabled=\"0\""}, {"enabled=\"0\"", ""}}) {
        loadPair("id=\"5\" " + port, peer);
        EXPECT_EQ(ask(), StatusOk);
        EXPECT_EQ(mFormat.enabled, 0U);
        EXPECT_EQ(mFormat.terminalId, 5U);
        expectNothingElse();
        EXPECT_TRUE(loggedExactly({}));
    }
}

TEST_F(PortFormatTest, DisabledPeerOfAnEnabledPortStillAnswers)
{
    loadPair("id=\"5\" enabled=\"1\"", "enabled=\"0\" width=\"64\" height=\"48\" format=\"YUV420_8_SP\"");
    EXPECT_EQ(ask(), StatusOk);
    expectSize(64, 48);
}

TEST_F(PortFormatTest, FailuresOfTheFirstQuestionsArePassedOn)
{
    EXPECT_EQ(mFormat.askFor(nullptr), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 Invalid parameter, could not get port format"}));
    loadPair("id=\"5\" enabled=\"-1\"", "width=\"64\"");
    EXPECT_EQ(ask(), StatusMissingData);
    EXPECT_TRUE(loggedExactly({}));
    loadPair("enabled=\"0\"", "width=\"64\"");
    EXPECT_EQ(ask(), StatusNotFound);
    EXPECT_TRUE(loggedExactly({"16 Failed to get port(port[pg:out]) id", "16 Could not get port uid"}));
    expectNothingElse();
}

// --- missing values ---

TEST_F(PortFormatTest, MissingSizeIsNotedAndInTheEndReported)
{
    loadPair("id=\"5\" width=\"64\" format=\"YUV420_8_SP\"");
    EXPECT_EQ(ask(), StatusMissingData);
    expectSize(64, PortFormat().height);
    expectLayout(kNv12, 64, 12);
    EXPECT_TRUE(loggedExactly({kIncomplete}));
    EXPECT_EQ(informedByAsking(), (Lines{kNoHeight, "bpl set to 64 for YUV420_8_SP"}));
}

TEST_F(PortFormatTest, WithoutAWidthTheStrideIsThatOfTheWidthGiven)
{
    loadPair("id=\"5\" height=\"48\" format=\"YUV420_8_SP\"");
    EXPECT_EQ(ask(), StatusMissingData);
    expectSize(PortFormat().width, 48);
    expectLayout(kNv12, 1024, 12); // 1000 as a multiple of 64
    EXPECT_TRUE(loggedExactly({kIncomplete}));
    EXPECT_EQ(informedByAsking(), (Lines{kNoWidth, "bpl set to 1024 for YUV420_8_SP"}));
}

TEST_F(PortFormatTest, MissingFormatLeavesTheLayoutAlone)
{
    loadPair("id=\"5\" width=\"64\" height=\"48\"");
    EXPECT_EQ(ask(), StatusMissingData);
    expectSize(64, 48);
    const PortFormat before;
    expectLayout(before.fourcc, before.bpl, before.bpp);
    EXPECT_TRUE(loggedExactly({kIncomplete}));
    EXPECT_EQ(informedByAsking(), Lines{kNoFormat});
}

TEST_F(PortFormatTest, StrideIsTakenOverEvenWithoutAFormat)
{
    loadPair("id=\"5\" width=\"64\" height=\"48\"", "bpl=\"128\"");
    EXPECT_EQ(ask(), StatusMissingData);
    const PortFormat before;
    expectLayout(before.fourcc, 128, before.bpp);
    EXPECT_TRUE(loggedExactly({kIncomplete}));
    EXPECT_EQ(informedByAsking(), (Lines{kNoFormat, kFromPeer, "Overwriting bpl(96) from settings 128"}));
}

TEST_F(PortFormatTest, PortThatIsAllAloneLacksEverything)
{
    loadPort("id=\"5\" enabled=\"1\"");
    EXPECT_EQ(ask(), StatusMissingData);
    EXPECT_EQ(mFormat.enabled, 1U);
    EXPECT_EQ(mFormat.terminalId, 5U);
    expectNothingElse();
    EXPECT_TRUE(logged(kError, kIncomplete + 3));
    EXPECT_EQ(informedByAsking(), (Lines{kNoWidth, kNoHeight, kNoFormat}));
}

TEST_F(PortFormatTest, DanglingPeerIsNoPeer)
{
    loadPort("id=\"5\" width=\"64\" height=\"48\" format=\"YUV420_8_SP\" peer=\"ghost\"");
    EXPECT_EQ(ask(), StatusOk); // neither enabled nor bpl is needed
    expectSize(64, 48);
    expectLayout(kNv12, 64, 12);
    EXPECT_TRUE(logged(kError, "Failed to find peer by name ghost"));
    EXPECT_TRUE(notLogged("Part of the port"));
}

TEST_F(PortFormatTest, OnlyOneConnectionIsFollowed)
{
    load(portOf("pg", "out", "id=\"5\" peer=\"next:in\"") + portOf("next", "in", "peer=\"third:in\"") +
         portOf("third", "in", "width=\"64\" height=\"48\" format=\"YUV420_8_SP\""));
    EXPECT_EQ(ask(), StatusMissingData);
    EXPECT_EQ(informedByAsking(), (Lines{kNoWidth, kNoHeight, kNoFormat}));

    load(portOf("pg", "out", "id=\"5\" peer=\"next:in\" width=\"64\"") +
         portOf("next", "in", "peer=\"pg:out\" id=\"6\" height=\"48\" format=\"YUV420_8_SP\""));
    EXPECT_EQ(ask(), StatusOk); // each completes the other
    expectSize(64, 48);
    EXPECT_EQ(mFormat.askFor(node("next:in")), StatusOk);
    expectSize(64, 48);

    loadPort("id=\"5\" peer=\"pg:out\""); // its own peer
    EXPECT_EQ(ask(), StatusMissingData);
    expectNothingElse();
}

// --- private ports ---

TEST_F(PortFormatTest, PrivatePortNeedsNoFormat)
{
    loadPair("id=\"5\" private=\"1\"", "width=\"64\" height=\"48\" format=\"YUV420_8_SP\" bpl=\"128\"");
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(mFormat.enabled, 1U);
    EXPECT_EQ(mFormat.terminalId, 5U);
    expectNothingElse(); // it has no peer
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(informedByAsking(), (Lines{kNoWidth, kNoHeight, kNoFormat}));
}

TEST_F(PortFormatTest, PrivatePortHandsOutWhatItHas)
{
    loadPair("id=\"5\" private=\"1\" height=\"48\" bpl=\"128\"", "width=\"64\"");
    EXPECT_EQ(ask(), StatusOk);
    const PortFormat before;
    expectSize(before.width, 48);
    expectLayout(before.fourcc, 128, before.bpp);
}

TEST_F(PortFormatTest, PrivatePeerExcusesThePortToo)
{
    loadPair("id=\"5\" width=\"64\"", "private=\"1\"");
    EXPECT_EQ(ask(), StatusOk);
    expectSize(64, PortFormat().height);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(informedByAsking(), (Lines{kNoHeight, kNoFormat, kFromPeer}));
}

TEST_F(PortFormatTest, OnlyOneMeansPrivateHere)
{
    for (const char* state : {"2", "-1", kLargest}) {
        loadPair(std::string("id=\"5\" height=\"48\" format=\"YUV420_8_SP\" private=\"") + state + "\"",
                 "width=\"64\" private=\"1\""); // which it cannot see
        EXPECT_EQ(ask(), StatusMissingData) << state;
        EXPECT_TRUE(loggedExactly({kIncomplete})) << state;
    }
    loadPair("id=\"5\" private=\"0\"", "private=\"1\"");
    EXPECT_EQ(ask(), StatusMissingData); // the port's own word comes first
}

TEST_F(PortFormatTest, CompletePortIsNotAskedWhetherItIsPrivate)
{
    loadPair("id=\"5\" width=\"64\" height=\"48\" format=\"YUV420_8_SP\" private=\"2\"");
    EXPECT_EQ(ask(), StatusOk);
    loadPair("id=\"5\" width=\"64\" height=\"48\" format=\"YUV420_8_SP\"", "private=\"1\"");
    EXPECT_EQ(ask(), StatusOk);
    EXPECT_EQ(informedByAsking(), Lines{"bpl set to 64 for YUV420_8_SP"});
}

// --- negative and huge values ---

TEST_F(PortFormatTest, NegativeSizesAreRefusedAtOnce)
{
    const std::string rest = " format=\"YUV420_8_SP\" bpl=\"-1\"";
    for (const char* value : {"-1", kSmallest}) {
        const std::string width = std::string(" width=\"") + value + "\"";
        const std::string height = std::string(" height=\"") + value + "\"";
        // The peer's better values do not help, and those of the peer are no better.
        loadPair("id=\"5\"" + width + rest, "width=\"64\" height=\"48\"");
        EXPECT_EQ(ask(), StatusMissingData);
        EXPECT_EQ(mFormat.height, PortFormat().height);
        EXPECT_EQ(mFormat.fourcc, PortFormat().fourcc);
        EXPECT_EQ(informedByAsking(), Lines());
        loadPair("id=\"5\"" + rest, width);
        EXPECT_EQ(ask(), StatusMissingData);
        EXPECT_EQ(informedByAsking(), Lines{kFromPeer});
        loadPair("id=\"5\" width=\"64\"" + height + rest, "height=\"48\"");
        EXPECT_EQ(ask(), StatusMissingData);
        EXPECT_EQ(mFormat.width, 64U);
        EXPECT_EQ(mFormat.fourcc, PortFormat().fourcc);
        loadPair("id=\"5\" width=\"64\"" + rest, height);
        EXPECT_EQ(ask(), StatusMissingData);
        EXPECT_EQ(informedByAsking(), Lines{kFromPeer});
        ask();
        EXPECT_TRUE(loggedExactly({}));
    }
}

TEST_F(PortFormatTest, PrivatePortsMayNotBeNegativeEither)
{
    loadPort("id=\"5\" private=\"1\" width=\"-1\"");
    EXPECT_EQ(ask(), StatusMissingData);
    loadPort("id=\"5\" private=\"1\" bpl=\"-1\"");
    EXPECT_EQ(ask(), StatusMissingData);
}

TEST_F(PortFormatTest, NegativeStrideIsRefused)
{
    const std::string values = "id=\"5\" width=\"64\" height=\"48\" format=\"YUV420_8_SP\"";
    loadPair(values + " bpl=\"-1\"", "bpl=\"128\"");
    EXPECT_EQ(ask(), StatusMissingData);
    expectLayout(kNv12, 64, 12);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(informedByAsking(), (Lines{"bpl set to 64 for YUV420_8_SP", "Overwriting bpl(64) from settings -1"}));
    loadPair(values, std::string("bpl=\"") + kSmallest + "\"");
    EXPECT_EQ(ask(), StatusMissingData);
    expectLayout(kNv12, 64, 12);
    EXPECT_EQ(informedByAsking(),
              (Lines{"bpl set to 64 for YUV420_8_SP", kFromPeer, "Overwriting bpl(64) from settings -2147483648"}));
}

TEST_F(PortFormatTest, ZeroIsASizeAndAStride)
{
    loadPair("id=\"5\" width=\"0\" height=\"0\" format=\"YUV420_8_SP\"");
    EXPECT_EQ(ask(), StatusOk);
    expectSize(0, 0);
    expectLayout(kNv12, 0, 12);
    loadPair("id=\"5\" width=\"64\" height=\"48\" format=\"YUV420_8_SP\" bpl=\"0\"", "bpl=\"128\"");
    EXPECT_EQ(ask(), StatusOk);
    expectLayout(kNv12, 0, 12); // the computed 64 is replaced
}

TEST_F(PortFormatTest, LargestSizesAreComputedUnsigned)
{
    loadPair(std::string("id=\"5\" format=\"YUV420_8_SP\" width=\"") + kLargest + "\" height=\"" + kLargest + "\"");
    EXPECT_EQ(ask(), StatusOk);
    expectSize(2147483647, 2147483647);
    expectLayout(kNv12, 0x80000000, 12); // the next multiple of 64
    EXPECT_EQ(informedByAsking(), Lines{"bpl set to -2147483648 for YUV420_8_SP"});
    out()->addValue(NUXO_KEY_BPL, 2147483647);
    EXPECT_EQ(ask(), StatusOk);
    expectLayout(kNv12, 2147483647, 12);
    EXPECT_EQ(informedByAsking(), (Lines{"bpl set to -2147483648 for YUV420_8_SP",
                                         "Overwriting bpl(-2147483648) from settings 2147483647"}));
}

} // namespace

} // namespace graphtest
