// SPDX-License-Identifier: Apache-2.0
// Several program groups in one stream, and streams that feed each other.
#include "kernels/PopulationFixture.h"

namespace graphtest {

namespace {

const std::string kNothingStored = "No resolution history stored for the input of PG";

/// A kernel that scales what arrives.
std::string scaler(const std::string& name, int id, const std::string& size, const std::string& attributes = "")
{
    return kernel(name, id, attributes, resolution("1x1 > " + size));
}

class PopulationGroupsTest : public PopulationTest {
protected:
    /// Frames of 400x300 from two ports of a source, and a sink at `last`:out.
    void startBetween(const std::string& groups, const std::string& last = "pg_b")
    {
        start(element("source", "buffer_src0", "",
                      frame("port", "400x300", "name='port_0' direction='1' peer='pg_a:in'") +
                          frame("port", "40x30", "name='port_1' direction='1' peer='pg_b:in'")) +
              groups + streamSink("out_sink", 1, last + ":out"));
    }

    /// What arrives at each kernel of stream 1, told by the sizes alone.
    Lines arriving() { return sizesOf(histories(handedOut(1))); }

    static Lines sizesOf(Lines histories)
    {
        for (std::string& each : histories) each = each.substr(each.find("> ") + 2);
        return histories;
    }

    std::string groupA(const std::string& kernels, const std::string& to = "pg_b:in")
    {
        return joined("pg_a", 1, "buffer_src0:port_0", to, kernels);
    }
};

// What feeds the next group.

TEST_F(PopulationGroupsTest, NextGroupGoesOnFromThePortThatFeedsIt)
{
    // k2 comes later in the first group, but the frame leaves behind k1
    startBetween(groupA(scaler("k0", 0, "200x150") + kernel("k1", 1, "sink_port='1'") + scaler("k2", 2, "20x15")) +
                 joined("pg_b", 1, "pg_a:out", "out_sink", scaler("m0", 0, "100x75") + kernel("m1", 1)));
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(arriving(), (Lines{"400x300", "200x150", "200x150", "200x150", "100x75"}));
}

TEST_F(PopulationGroupsTest, EachGroupFindsItsOwnPort)
{
    startBetween(groupA(output("second", "pg_c:in", "id='2'") + scaler("k0", 0, "200x150", "sink_port='2'") +
                        scaler("k1", 1, "100x75", "sink_port='1'")) +
                     joined("pg_b", 1, "pg_a:out", "out_sink", kernel("m0", 0)) +
                     joined("pg_c", 1, "pg_a:second", "far_sink", kernel("n0", 0)),
                 "pg_b");
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(arriving(), (Lines{"400x300", "200x150", "100x75", "200x150"}));
}

TEST_F(PopulationGroupsTest, WholeHistoryGoesOn)
{
    startBetween(groupA(kernel("k0", 0, "sink_port='1'", resolution("400x300 10,20,30,40 > 180x120"))) +
                 joined("pg_b", 1, "pg_a:out", "out_sink", kernel("m0", 0)));
    EXPECT_EQ(text(handedOut(1).at(1).resolution_history), "400x300 10,20,30,40 > 180x120");
}

TEST_F(PopulationGroupsTest, GroupThatTheSourceFeedsBeginsWithTheStreamsHistory)
{
    startBetween(groupA(scaler("k0", 0, "200x150")) +
                 joined("pg_b", 1, "buffer_src0:port_1", "out_sink", kernel("m0", 0)));
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(arriving(), (Lines{"400x300", "400x300"}));
}

TEST_F(PopulationGroupsTest, GroupThatNothingKnownFeedsEndsTheCall)
{
    startBetween(groupA(scaler("k0", 0, "200x150")) + // leaves through no port
                 joined("pg_b", 1, "pg_a:out", "out_sink", kernel("m0", 0)));
    EXPECT_EQ(mStarted, StatusMissingObject);
    EXPECT_EQ(populate(), StatusMissingData);
    EXPECT_TRUE(oneErrorWith(kNothingStored));
    EXPECT_TRUE(oneErrorWith("pg_b"));
    EXPECT_EQ(history(0), "400x300 > 400x300");
    EXPECT_EQ(history(1), "null");
}

TEST_F(PopulationGroupsTest, GroupWithoutInputsEndsTheCall)
{
    startBetween(groupA(kernel("k0", 0, "sink_port='1'")) +
                 group("pg_b", "stream_id='1'", output("out", "out_sink", "id='1'") + kernel("m0", 0)));
    EXPECT_EQ(populate(), StatusMissingData);
    EXPECT_TRUE(oneErrorWith(kNothingStored));
}

TEST_F(PopulationGroupsTest, StoredHistoryComesBeforeAnInputFromTheSource)
{
    startBetween(groupA(scaler("k0", 0, "200x150", "sink_port='1'"), "pg_b:other") +
                 group("pg_b", "stream_id='1'",
                       input("in", "buffer_src0:port_1") + input("other", "pg_a:out") +
                           output("out", "out_sink", "id='1'") + kernel("m0", 0)));
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(arriving(), (Lines{"400x300", "200x150"}));
}

// The inputs have names that nothing before them has, so they come in this order.
TEST_F(PopulationGroupsTest, FirstInputWithAStoredHistoryCounts)
{
    startBetween(groupA(output("second", "pg_b:other", "id='2'") + output("unused", "pg_b:early", "id='3'") +
                            scaler("k0", 0, "200x150", "sink_port='1'") + scaler("k1", 1, "100x75", "sink_port='2'"),
                        "pg_b:late") +
                 group("pg_b", "stream_id='1'",
                       input("early", "pg_a:unused") + input("other", "pg_a:second") + input("late", "pg_a:out") +
                           output("out", "out_sink", "id='1'") + kernel("m0", 0)));
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(arriving(), (Lines{"400x300", "200x150", "100x75"}));
}

TEST_F(PopulationGroupsTest, InputsWithoutPeerAndOutputsAreNotAsked)
{
    startBetween(groupA(output("second", "pg_b:off", "id='2'") + output("third", "pg_b:hidden", "id='3'") +
                            scaler("k0", 0, "200x150", "sink_port='2'") + scaler("k1", 1, "100x75", "sink_port='3'") +
                            scaler("k2", 2, "50x30", "sink_port='1'"),
                        "pg_b:entry") +
                 group("pg_b", "stream_id='1'",
                       port("off", "direction='0' enabled='0' peer='pg_a:second'") +
                           port("hidden", "direction='0' private='1' peer='pg_a:third'") +
                           port("astray", "direction='0' peer='pg_a:nowhere'") +
                           port("loop", "direction='1' peer='pg_a:second'") + port("entry", "peer='pg_a:out'") +
                           output("out", "out_sink", "id='1'") + kernel("m0", 0)));
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(arriving().back(), "50x30"); // `entry` has no direction, which makes it an input
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_TRUE(notLogged("Failed to retrieve port direction"));
}

// Groups without kernels.

TEST_F(PopulationGroupsTest, GroupWithoutKernelsNeedsNoHistory)
{
    startBetween(groupA(kernel("k0", 0, "sink_port='1'")) + joined("pg_empty", 1, "pg_a:unknown", "far_sink", "") +
                 joined("pg_b", 1, "pg_a:out", "out_sink", scaler("m0", 0, "4x3")));
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_TRUE(logged(kDebug, "PG: program_group[pg_empty] got 0 kernels"));
    EXPECT_EQ(record(1).kernel_uuid, 100U); // m0
    EXPECT_EQ(info(1), "1x1 > 4x3");
}

TEST_F(PopulationGroupsTest, GroupBehindAnEmptyOneIsNotTheFirst)
{
    startBetween(groupA("") + joined("pg_b", 1, "pg_a:out", "out_sink", kernel("m0", 0)));
    EXPECT_EQ(populate(), StatusMissingData);
    EXPECT_TRUE(oneErrorWith(kNothingStored));
    // the source itself is known
    startBetween(groupA("") + joined("pg_b", 1, "buffer_src0:port_1", "out_sink", kernel("m0", 0)));
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(arriving(), (Lines{"400x300"}));
}

// Records of several groups.

TEST_F(PopulationGroupsTest, RecordsFollowEachOtherInTheOrderOfTheGraph)
{
    startBetween(groupA(kernel("k0", 700, 0) + kernel("k1", 701, 1, "sink_port='1'")) +
                     group("pg_other", "stream_id='2'", kernel("o0", 799, 0)) +
                     joined("pg_b", 1, "pg_a:out", "pg_c:in", kernel("m0", 710, 0, "sink_port='1'")) +
                     joined("pg_c", 1, "pg_b:out", "out_sink", kernel("n1", 721, 1) + kernel("n0", 720, 0)),
                 "pg_c");
    EXPECT_EQ(mStarted, StatusOk);
    std::string uuids;
    for (const Record& each : handedOut(1)) uuids += std::to_string(each.kernel_uuid) + " ";
    EXPECT_EQ(uuids, "700 701 710 720 721 ");
}

TEST_F(PopulationGroupsTest, FailureLeavesTheRecordsOfEarlierGroups)
{
    startBetween(groupA(kernel("k0", 700, 0, "sink_port='1'")) +
                 joined("pg_b", 1, "pg_a:out", "out_sink", kernel("m0", 710, 1)));
    EXPECT_EQ(mStarted, StatusMissingObject);
    EXPECT_EQ(populate(), StatusBadState);
    EXPECT_EQ(record(0).kernel_uuid, 700U);
    EXPECT_EQ(history(0), "400x300 > 400x300");
    EXPECT_EQ(portHistory("pg_a:out"), "400x300 > 400x300");
}

// Streams in a row.

class PopulationStreamsTest : public PopulationGroupsTest {
protected:
    /// Stream 1 feeds streams 3 and 4 through its second and third output; each ends in a sink for pixels.
    void startStreams(const std::string& kernels)
    {
        start(frames("400x300") +
              joined("pg_a", 1, "buffer_src0:port_0", "out_sink",
                     output("second", "pg_v:in", "id='2'") + output("third", "pg_w:in", "id='3'") + kernels) +
              joined("pg_v", 3, "pg_a:second", "view_sink", scaler("v0", 0, "40x30") + kernel("v1", 1)) +
              joined("pg_w", 4, "pg_a:third", "wide_sink", kernel("w0", 0)) + streamSink("out_sink", 1, "pg_a:out") +
              streamSink("view_sink", 3, "pg_v:out") + streamSink("wide_sink", 4, "pg_w:out"));
    }
};

TEST_F(PopulationStreamsTest, BeginWithWhatLeavesTheStreamBefore)
{
    startStreams(kernel("k0", 0, "sink_port='2'", resolution("400x300 8,8,8,8 > 192x142")) +
                 scaler("k1", 1, "100x75", "sink_port='3'") + scaler("k2", 2, "50x30", "sink_port='1'"));
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(histories(handedOut(3)), (Lines{"400x300 8,8,8,8 > 192x142", "400x300 8,8,8,8 > 40x30"}));
    EXPECT_EQ(histories(handedOut(4)), (Lines{"400x300 8,8,8,8 > 100x75"}));
    for (const Record& each : handedOut(3)) EXPECT_EQ(each.stream_id, 3U);
}

TEST_F(PopulationStreamsTest, BeginWithTheSourceWhenNothingIsStored)
{
    startStreams(scaler("k0", 0, "200x150", "sink_port='2'"));
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(sizesOf(histories(handedOut(3))), (Lines{"200x150", "40x30"}));
    EXPECT_EQ(sizesOf(histories(handedOut(4))), (Lines{"400x300"}));
}

TEST_F(PopulationStreamsTest, DisabledPortStillTellsWhatWouldLeave)
{
    startStreams(scaler("k0", 0, "200x150", "sink_port='2' branch_point='1'") +
                 scaler("k1", 1, "100x75", "sink_port='3'"));
    node("pg_a:third")->addValue(NUXO_KEY_ENABLED, 0);
    startAgain();
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(enables(handedOut(1)), "1 2");
    EXPECT_EQ(sizesOf(histories(handedOut(4))), (Lines{"100x75"}));
}

TEST_F(PopulationStreamsTest, LaterOnesFirstInTheGraphDoNotMatter)
{
    start(joined("pg_v", 3, "pg_a:second", "view_sink", kernel("v0", 0)) + streamSink("view_sink", 3, "pg_v:out") +
          frames("400x300") +
          joined("pg_a", 1, "buffer_src0:port_0", "out_sink",
                 output("second", "pg_v:in", "id='2'") + scaler("k0", 0, "200x150", "sink_port='2'")) +
          streamSink("out_sink", 1, "pg_a:out"));
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(sizesOf(histories(handedOut(3))), (Lines{"200x150"}));
    EXPECT_EQ(sizesOf(histories(handedOut(1))), (Lines{"400x300"}));
}

// A sink of the last stream alone: the walk upwards fills the others first.
TEST_F(PopulationStreamsTest, ThreeInARowAreFilledFromTheSource)
{
    start(frames("400x300") +
          joined("pg_a", 1, "buffer_src0:port_0", "pg_v:in", scaler("k0", 0, "200x150", "sink_port='1'")) +
          joined("pg_v", 3, "pg_a:out", "pg_w:in", scaler("v0", 0, "100x75", "sink_port='1'")) +
          joined("pg_w", 2, "pg_v:out", "out_sink", scaler("w0", 0, "50x30") + kernel("w1", 1)) +
          streamSink("out_sink", 2, "pg_w:out"));
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(sizesOf(histories(handedOut(1))), (Lines{"400x300"}));
    EXPECT_EQ(sizesOf(histories(handedOut(3))), (Lines{"200x150"}));
    EXPECT_EQ(sizesOf(histories(handedOut(2))), (Lines{"100x75", "50x30"}));
}

TEST_F(PopulationStreamsTest, HistoryOfTheSourceIsNotThatOfLaterStreams)
{
    startStreams(scaler("k0", 0, "200x150", "sink_port='2'") + scaler("k1", 1, "100x75", "sink_port='3'"));
    qv_isp_zmt_resolution_info source = {};
    EXPECT_EQ(mUtils->getSourceResolutionHistory(source), StatusOk);
    EXPECT_EQ(text(source), "400x300 > 400x300");
}

TEST_F(PopulationStreamsTest, StreamsThatNoPixelsLeaveAreNotFilled)
{
    start(frames("400x300") + joined("pg_a", 1, "buffer_src0:port_0", "out_sink", kernel("k0", 0)) +
          joined("pg_v", 3, "pg_a:second", "stats_sink", kernel("v0", 0)) + streamSink("out_sink", 1, "pg_a:out") +
          streamSink("stats_sink", 3, "pg_v:out", "content_type='ae_stats'"));
    EXPECT_EQ(mStarted, StatusOk);
    const Records all = handedOut(3);
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all[0].kernel_uuid, 0U);
    EXPECT_EQ(all[0].resolution_history, nullptr);
}

TEST_F(PopulationStreamsTest, NextInitialisationBeginsAnew)
{
    startStreams(scaler("k0", 0, "200x150", "sink_port='2'"));
    replace(*node("buffer_src0:port_0"), NUXO_KEY_WIDTH, 800);
    node("pg_a:k0")->removeDescendant(NUXO_KEY_SINK_PORT);
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(histories(handedOut(1)), (Lines{"800x300 > 800x300"}));
    EXPECT_EQ(histories(handedOut(3)), (Lines{"800x300 > 800x300", "800x300 > 40x30"}));
}

// Capture hardware takes part as context 0.

class PopulationCaptureTest : public PopulationTest {
protected:
    static std::string capture(const std::string& stream, const std::string& peer)
    {
        return element("source", "sensor", "width='400' height='300'", output("port_0", "csi_be:input")) +
               element("hw", "csi_be", stream,
                       input("input", "sensor:port_0") +
                           frame("port", "400x300", "name='output' direction='1' peer='" + peer + "'"));
    }

    /// The records of context 0 and 1 by their uuids, blank ones as "-".
    std::string uuids(int ctx)
    {
        std::string all;
        for (const Record& each : handedOut(ctx)) {
            const bool blank = each.kernel_uuid == 0 && each.enable == 0 && each.resolution_info == nullptr &&
                               each.resolution_history == nullptr;
            all += (all.empty() ? "" : " ") + (blank ? "-" : std::to_string(each.kernel_uuid));
        }
        return all;
    }
};

TEST_F(PopulationCaptureTest, HasOneBlankRecord)
{
    start(capture("stream_id='0'", "pg_a:in") + joined("pg_a", 1, "csi_be:output", "out_sink", kernels({"", ""})) +
          streamSink("out_sink", 1, "pg_a:out"));
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(uuids(0), "-");
    EXPECT_EQ(uuids(1), "100 101");
    EXPECT_EQ(text(handedOut(1).at(0).resolution_history), "400x300 > 400x300");
}

TEST_F(PopulationCaptureTest, AloneHasOneBlankRecord)
{
    start(capture("stream_id='0'", "raw_sink") + streamSink("raw_sink", 0, "csi_be:output"));
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(uuids(0), "-");
    EXPECT_EQ(uuids(1), "");
}

TEST_F(PopulationCaptureTest, AddsABlankRecordToTheKernelsOfContextZero)
{
    start(capture("stream_id='0'", "pg_a:in") + joined("pg_a", 0, "csi_be:output", "out_sink", kernels({"", "", ""})) +
          streamSink("out_sink", 0, "pg_a:out"));
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(uuids(0), "100 101 102 -");
}

TEST_F(PopulationCaptureTest, WithoutStreamStillHasTheRecord)
{
    start(capture("", "pg_a:in") + joined("pg_a", 1, "csi_be:output", "out_sink", kernels({""})) +
          streamSink("out_sink", 1, "pg_a:out"));
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(uuids(0), "-");
    EXPECT_EQ(uuids(1), "100");
}

} // namespace

} // namespace graphtest
