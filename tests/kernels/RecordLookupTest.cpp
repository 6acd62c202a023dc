// SPDX-License-Identifier: Apache-2.0
// How records are handed out, for a context and for a program group, and how they are dumped.
#include "kernels/KernelsFixture.h"

namespace graphtest {

namespace {

using Group = qv_isp_zmt_program_group;

const std::string kDoubleLine = "16 " + std::string(55, '=');
const std::string kDashes = "16 " + std::string(55, '-');

class RecordLookupTest : public KernelsTest {
protected:
    /// The records of a program group; the status is in mStatus.
    Group ofGroup(const std::string& path)
    {
        Group pg = {};
        mStatus = mUtils->getProgramGroup(node(path), pg);
        return pg;
    }

    /// Two groups in stream 1 whose kernels do not stand in the order of their ids, and one in stream 2.
    static std::string threeGroups()
    {
        return bufferSource("a:in") +
               stage("a", 1, "buffer_src0:port_0", "b:in",
                     kernel("a1", 11, 1, "enabled='0'") + kernel("a0", 10, 0, "sink_port='5'") +
                         port("edge", "direction='1' id='5' peer='b:in'")) +
               group("b", "stream_id='1' tuning_mode='9'",
                     input("in", "a:edge") + output("out", "video") + kernel("b0", 20, 0) + kernel("b2", 22, 2) +
                         kernel("b1", 21, 1, "enabled='2'")) +
               streamSink("video", 1, "b:out") + group("c", "stream_id='2'", kernel("c0", 30, 0));
    }

    static inline const std::string kHistory = " history 640x480>640x480";

    int mStatus = 1;
};

TEST_F(RecordLookupTest, ContextGivesTheRecordsOfAllItsGroups)
{
    ASSERT_EQ(initWith(threeGroups()), StatusOk);
    Group pg = {7, nullptr, 7};
    clearLog();
    mUtils->getProgramGroup(1, pg);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(recordTexts(pg), Lines({"1:10 1" + kHistory, "1:11 0" + kHistory, "1:20 1" + kHistory,
                                      "1:21 2" + kHistory, "1:22 1" + kHistory}));
    EXPECT_EQ(pg.operation_mode, 0U) << "whatever tuning modes the groups have";
}

TEST_F(RecordLookupTest, ContextThatDoesNotExistHasNoKernels)
{
    qv_isp_zmt_run_kernels own = {};
    for (const bool initialised : {false, true}) {
        if (initialised) {
            ASSERT_EQ(initWith(threeGroups()), StatusOk);
        }
        for (const int id : {3, 0, 1000000, -1, -1000000}) {
            Group pg = {7, &own, 8};
            clearLog();
            mUtils->getProgramGroup(id, pg);
            EXPECT_EQ(pg.kernel_count, 0U);
            EXPECT_EQ(pg.run_kernels, &own);
            EXPECT_EQ(pg.operation_mode, 8U);
            EXPECT_TRUE(loggedExactly(
                {(id < 0 ? "16 Invalid stream id " : "16 No kernels found with stream id ") + std::to_string(id)}));
        }
    }
}

// Such contexts are filled, but nobody gets at them.
TEST_F(RecordLookupTest, NegativeContextIsNotHandedOut)
{
    ASSERT_EQ(initWith(bufferSource("") + group("a", "stream_id='-2'", kernel("k", 1, 0))), StatusOk);
    clearLog();
    EXPECT_EQ(records(-2).kernel_count, 0U);
    EXPECT_TRUE(loggedExactly({"16 Invalid stream id -2"}));
}

TEST_F(RecordLookupTest, GroupGivesItsRecordsInKernelIdOrder)
{
    ASSERT_EQ(initWith(threeGroups()), StatusOk);
    clearLog();
    const Group a = ofGroup("a");
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_EQ(recordTexts(a), Lines({"1:10 1" + kHistory, "1:11 0" + kHistory}));
    const Group b = ofGroup("b");
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_EQ(recordTexts(b), Lines({"1:20 1" + kHistory, "1:21 2" + kHistory, "1:22 1" + kHistory}));
    EXPECT_EQ(b.operation_mode, 0U);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(recordTexts(a), Lines({"1:10 1" + kHistory, "1:11 0" + kHistory})) << "each group has its own array";
}

TEST_F(RecordLookupTest, RecordsOfAGroupAreWholeCopiesOfThoseOfTheContext)
{
    const std::string body = sizes("width='640' height='480' left='2' bpp='10'", "width='320' height='240' bpp='12'");
    ASSERT_EQ(initWith(bufferSource("a:in") +
                       stage("a", 1, "buffer_src0:port_0", "video", kernel("k", 10, 0, "metadata='1,2,3,4'", body)) +
                       streamSink("video", 1, "a:out")),
              StatusOk);
    const Group context = records(1);
    const Group pg = ofGroup("a");
    ASSERT_EQ(pg.kernel_count, 1U);
    const qv_isp_zmt_run_kernels& copy = pg.run_kernels[0];
    EXPECT_NE(pg.run_kernels, context.run_kernels);
    EXPECT_EQ(recordText(copy), "1:10 1 info 640x480>320x240" + kHistory);
    EXPECT_EQ(copy.resolution_info, context.run_kernels[0].resolution_info);
    EXPECT_EQ(copy.resolution_history, context.run_kernels[0].resolution_history);
    EXPECT_EQ(copy.metadata[0], 1U);
    EXPECT_EQ(copy.metadata[3], 4U);
    EXPECT_EQ(copy.bpp_info.input_bpp, 10U);
    EXPECT_EQ(copy.bpp_info.output_bpp, 12U);
    EXPECT_EQ(copy.output_count, 0U);
}

TEST_F(RecordLookupTest, NullGroupIsRefusedAndNothingWritten)
{
    Group pg = {7, nullptr, 8};
    EXPECT_EQ(mUtils->getProgramGroup(nullptr, pg), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 Invalid parameter provided (nullptr)"}));
    EXPECT_EQ(pg.kernel_count, 7U);
    EXPECT_EQ(pg.operation_mode, 8U);
}

TEST_F(RecordLookupTest, UnknownGroupIsReportedAndTheResultZero)
{
    loadGraph(threeGroups());
    qv_isp_zmt_run_kernels own = {};
    for (const bool initialised : {false, true}) {
        if (initialised) {
            ASSERT_EQ(init(), StatusOk);
        }
        Group pg = {7, &own, 8};
        clearLog();
        const char* const name = initialised ? "video" : "a";
        EXPECT_EQ(mUtils->getProgramGroup(node(name), pg), StatusBadArgument);
        EXPECT_EQ(picked({"16 "}),
                  Lines({std::string("16 Could not find the PG ") + name + " in the PG memory pool map"}));
        EXPECT_EQ(pg.kernel_count, 0U);
        EXPECT_EQ(pg.run_kernels, nullptr);
        EXPECT_EQ(pg.operation_mode, 0U);
    }
}

TEST_F(RecordLookupTest, GroupNeedsTheContextOfItsStream)
{
    renew(false);
    initWith(bufferSource("") + group("a", "stream_id='1' exec_ctx_id='7'", kernel("k", 10, 0)) +
             group("b", "exec_ctx_id='7'", kernel("l", 11, 0)));
    clearLog();
    const Group pg = ofGroup("a");
    EXPECT_EQ(mStatus, StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 Could not find the stream id 1. Cannot get kernel count."}));
    EXPECT_EQ(pg.kernel_count, 1U);
    EXPECT_NE(pg.run_kernels, nullptr);
    clearLog();
    ofGroup("b");
    EXPECT_EQ(mStatus, StatusBadArgument);
    EXPECT_EQ(picked({"16 Could not find the stream id "}).size(), 1U);
}

TEST_F(RecordLookupTest, GroupWithoutAStreamHasNoRecordsWhateverContextsThereAre)
{
    renew(false);
    for (const char* const context : {"exec_ctx_id='0'", "exec_ctx_id='-1'"}) {
        initWith(bufferSource("") + element("hw", "csi", "") + group("a", context, kernel("k", 10, 0)));
        clearLog();
        ofGroup("a");
        EXPECT_EQ(mStatus, StatusBadArgument) << context;
        EXPECT_EQ(picked({"16 Could not find the stream id "}).size(), 1U) << context;
    }
}

TEST_F(RecordLookupTest, KernelsWithoutIdentityAreReported)
{
    for (const char* const attributes : {"id='1'", "pal_uuid='11'", ""}) {
        ASSERT_EQ(initWith(bufferSource("a:in") +
                           stage("a", 1, "buffer_src0:port_0", "video",
                                 kernel("k", 10, 0) + element("kernel", "l", attributes)) +
                           streamSink("video", 1, "a:out")),
                  StatusMissingObject);
        clearLog();
        ofGroup("a");
        EXPECT_EQ(mStatus, StatusBadState) << attributes;
        EXPECT_EQ(picked({"16 Failed"}), Lines({"16 Failed to get pal uuid or kernel id."}));
    }
}

TEST_F(RecordLookupTest, IdentityOfAnotherKindIsReported)
{
    ASSERT_EQ(initWith(threeGroups()), StatusOk);
    replace(*node("a:a1"), NUXO_KEY_PAL_UUID, std::string("11"));
    clearLog();
    ofGroup("a");
    EXPECT_EQ(mStatus, StatusBadState);
    EXPECT_TRUE(logged(kError, "Failed to get pal uuid or kernel id."));
}

// The ids of a group with the right sum; the array of the group has no place for the outer ones.
TEST_F(RecordLookupTest, IdsOutsideOfTheGroupAreReported)
{
    ASSERT_EQ(initWith(bufferSource("a:in") +
                       stage("a", 1, "buffer_src0:port_0", "video",
                             kernel("k", 10, 1) + kernel("l", 11, -1) + kernel("m", 12, 3)) +
                       streamSink("video", 1, "a:out")),
              StatusMissingObject);
    clearLog();
    ofGroup("a");
    EXPECT_EQ(mStatus, StatusBadState);
    EXPECT_TRUE(logged(kError, "Failed to get pal uuid or kernel id."));
    for (const int id : {3, 1000000, -1, -2147483647}) {
        ASSERT_EQ(initWith(threeGroups()), StatusOk);
        replace(*node("b:b0"), NUXO_KEY_ID, id);
        ofGroup("b");
        EXPECT_EQ(mStatus, StatusBadState) << id;
    }
}

TEST_F(RecordLookupTest, FirstRecordWithAnIdentityServesAllThatShareIt)
{
    ASSERT_EQ(initWith(bufferSource("a:in") +
                       stage("a", 1, "buffer_src0:port_0", "",
                             kernel("k", 10, 0) + kernel("l", 10, 1, "enabled='0'", sizes(size(640, 480), size(8, 6))) +
                                 kernel("m", 12, 2)) +
                       streamSink("video", 1, "a:out")),
              StatusOk);
    EXPECT_EQ(recordsOf(1),
              Lines({"1:10 1" + kHistory, "1:10 0 info 640x480>8x6" + kHistory, "1:12 1 history 640x480>8x6"}));
    EXPECT_EQ(recordTexts(ofGroup("a")),
              Lines({"1:10 1" + kHistory, "1:10 1" + kHistory, "1:12 1 history 640x480>8x6"}));
    EXPECT_EQ(mStatus, StatusOk);
}

// The group was asked about before, and its kernels then changed their identities with each other.
TEST_F(RecordLookupTest, RecordsThatWereFilledAgainAreLookedUpAnew)
{
    ASSERT_EQ(
        initWith(bufferSource("a:in") +
                 stage("a", 1, "buffer_src0:port_0", "video", kernel("k", 10, 0) + kernel("l", 20, 1, "enabled='0'")) +
                 streamSink("video", 1, "a:out")),
        StatusOk);
    EXPECT_EQ(recordTexts(ofGroup("a")), Lines({"1:10 1" + kHistory, "1:20 0" + kHistory}));
    replace(*node("a:k"), NUXO_KEY_PAL_UUID, 20);
    replace(*node("a:l"), NUXO_KEY_PAL_UUID, 10);
    ZmtTevUtils::PortHistories portHistories;
    ASSERT_EQ(mUtils->populateKernelArray(1, records(1).run_kernels, 0, portHistories), StatusOk);
    EXPECT_EQ(recordTexts(ofGroup("a")), Lines({"1:20 1" + kHistory, "1:10 0" + kHistory}));
}

TEST_F(RecordLookupTest, IdentityIsLookedForInTheWholeContextOfTheStream)
{
    const std::string first =
        stage("a", 1, "buffer_src0:port_0", "b:in",
              kernel("k", 10, 0, "sink_port='5'") + port("edge", "direction='1' id='5' peer='b:in'"));
    ASSERT_EQ(initWith(bufferSource("a:in") + first +
                       stage("b", 1, "a:edge", "video", kernel("l", 10, 0, "enabled='0'")) +
                       stage("c", 2, "buffer_src0:port_0", "stills", kernel("m", 10, 0, "enabled='2'")) +
                       streamSink("video", 1, "b:out") + streamSink("stills", 2, "c:out")),
              StatusOk);
    EXPECT_EQ(recordTexts(ofGroup("b")), Lines({"1:10 1" + kHistory})) << "the record of group a";
    EXPECT_EQ(recordTexts(ofGroup("c")), Lines({"2:10 2" + kHistory})) << "not one of another stream";
}

// Stream 2 feeds no sink, so that its records were never filled.
TEST_F(RecordLookupTest, IdentityThatIsNotThereLeavesABlankRecord)
{
    ASSERT_EQ(initWith(threeGroups()), StatusOk);
    const Group pg = ofGroup("c");
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_EQ(recordTexts(pg), Lines({"0:0 0"}));
    EXPECT_EQ(picked({"32 "}).size(), 1U);
}

TEST_F(RecordLookupTest, IdentityZeroIsThatOfBlankRecords)
{
    ASSERT_EQ(initWith(bufferSource("") + group("c", "stream_id='2'", kernel("k", 0, 0))), StatusOk);
    clearLog();
    EXPECT_EQ(recordTexts(ofGroup("c")), Lines({"0:0 0"}));
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(RecordLookupTest, SlotsAreFilledAgainByEachCall)
{
    ASSERT_EQ(initWith(threeGroups()), StatusOk);
    EXPECT_EQ(recordTexts(ofGroup("a")), Lines({"1:10 1" + kHistory, "1:11 0" + kHistory}));
    replace(*node("a:a1"), NUXO_KEY_PAL_UUID, 99);
    replace(*node("a:a0"), NUXO_KEY_PAL_UUID, 20);
    EXPECT_EQ(recordTexts(ofGroup("a")), Lines({"1:20 1" + kHistory, "0:0 0"}));
    EXPECT_EQ(mStatus, StatusOk);
}

TEST_F(RecordLookupTest, GroupWithoutKernelsHasNoRecords)
{
    ASSERT_EQ(initWith(bufferSource("") + group("a", "stream_id='1'", kernel("k", 1, 0)) + group("b", "stream_id='1'")),
              StatusOk);
    clearLog();
    const Group pg = ofGroup("b");
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_EQ(pg.kernel_count, 0U);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(RecordLookupTest, ContextIsDumpedBetweenItsLines)
{
    ASSERT_EQ(initWith(bufferSource("a:in") +
                       stage("a", 4, "buffer_src0:port_0", "video",
                             kernel("k", 10, 0, "metadata='5,6'") +
                                 kernel("l", 11, 1, "enabled='0'", sizes(size(640, 480) + " bpp='8'", size(8, 6)))) +
                       streamSink("video", 4, "a:out")),
              StatusOk);
    clearLog();
    mUtils->dumpKernels(4);
    const std::string history = "16 resolution_history:" + uncropped(640, 480, 640, 480);
    EXPECT_TRUE(loggedExactly({kDoubleLine, "16 FOUND index for exec ctx id 4 dumping 2 kernels:", kDoubleLine,
                               "16 kernel_uuid: 10 [ENABLED (1)]", "16 stream_id 4", "16 metadata: (5 6 0 0)",
                               "16 res info: NULL", history, "16 bpp_info in:0 out:0", kDashes,
                               "16 kernel_uuid: 11 [BYPASS (0)]", "16 stream_id 4", "16 metadata: (0 0 0 0)",
                               "16 res_info: " + uncropped(640, 480, 8, 6), history, "16 bpp_info in:8 out:0"}));
}

TEST_F(RecordLookupTest, ContextThatDoesNotExistIsNotDumped)
{
    for (const bool initialised : {false, true}) {
        if (initialised) {
            ASSERT_EQ(initWith(threeGroups()), StatusOk);
        }
        for (const int id : {5, 0, -1}) {
            clearLog();
            mUtils->dumpKernels(id);
            EXPECT_TRUE(loggedExactly({"16 COULD NOT FIND index for exec ctx id " + std::to_string(id) + " "}));
        }
    }
}

TEST_F(RecordLookupTest, NegativeContextIsDumped)
{
    ASSERT_EQ(initWith(bufferSource("") + group("a", "stream_id='-2'", kernel("k", 1, 0))), StatusOk);
    clearLog();
    mUtils->dumpKernels(-2);
    EXPECT_TRUE(loggedExactly({kDoubleLine, "16 FOUND index for exec ctx id -2 dumping 1 kernels:", kDoubleLine,
                               "16 kernel_uuid: 0 [BYPASS (0)]", "16 stream_id 0", "16 metadata: (0 0 0 0)",
                               "16 res info: NULL", "16 res history: NULL", "16 bpp_info in:0 out:0"}));
}

TEST_F(RecordLookupTest, ContextsOfAnAllocationThatEndedEarlyHaveNothingToDump)
{
    ASSERT_EQ(initWith(bufferSource("") + group("a", "stream_id='1'", kernel("k", 1, 0)) + group("b", "")),
              StatusMissingData);
    clearLog();
    mUtils->dumpKernels(1);
    EXPECT_EQ(lines().size(), 3U);
    EXPECT_EQ(picked({kDoubleLine, "16 FOUND index for exec ctx id 1 dumping "}).size(), 3U);
}

TEST_F(RecordLookupTest, SourceHistoryIsZeroBeforeInitialisation)
{
    qv_isp_zmt_resolution_info history = {1, 2, {3, 4, 5, 6}, 7, 8, {9, 10, 11, 12}};
    EXPECT_EQ(mUtils->getSourceResolutionHistory(history), StatusOk);
    EXPECT_EQ(std::string(ZmtTevUtils::resInfoToStr(history)), uncropped(0, 0, 0, 0));
    EXPECT_TRUE(loggedExactly({}));
}

} // namespace

} // namespace graphtest
