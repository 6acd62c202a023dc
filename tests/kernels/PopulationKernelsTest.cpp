// SPDX-License-Identifier: Apache-2.0
// What the record of each kernel takes from the graph.
#include "kernels/PopulationFixture.h"

#include <climits>

namespace graphtest {

namespace {

class PopulationKernelsTest : public PopulationTest {
protected:
    static Lines metadata(const Record& record)
    {
        Lines all;
        for (const uint32_t value : record.metadata) all.push_back(std::to_string(value));
        return all;
    }

    /// Bits per pixel in and out of the first record.
    std::string bpp() const
    {
        return std::to_string(record(0).bpp_info.input_bpp) + " " + std::to_string(record(0).bpp_info.output_bpp);
    }
};

TEST_F(PopulationKernelsTest, ValuesAreThoseOfTheGraph)
{
    mFill = 0xa5; // what the record held before is gone
    EXPECT_EQ(fill(kernel("k0", 37007, 0, "metadata='5,6,7,8' enabled='0'", "<input bpp='10'/><output bpp='12'/>") +
                   kernel("k1", 37008, 1)),
              StatusOk);
    EXPECT_EQ(record(0).stream_id, 1U);
    EXPECT_EQ(record(0).kernel_uuid, 37007U);
    EXPECT_EQ(record(0).enable, QV_ISP_ZMT_KERNEL_BYPASS);
    EXPECT_EQ(metadata(record(0)), (Lines{"5", "6", "7", "8"}));
    EXPECT_EQ(bpp(), "10 12");
    EXPECT_EQ(info(0), "null");
    EXPECT_EQ(history(0), "4000x3000 > 4000x3000");
    EXPECT_EQ(record(1).stream_id, 1U);
    EXPECT_EQ(record(1).kernel_uuid, 37008U);
    EXPECT_EQ(record(1).enable, QV_ISP_ZMT_KERNEL_ENABLED); // when absent
    EXPECT_EQ(metadata(record(1)), Lines(4, "0"));
    EXPECT_EQ(record(1).bpp_info.input_bpp, 0U);
    EXPECT_EQ(record(1).bpp_info.output_bpp, 0U);
}

TEST_F(PopulationKernelsTest, StateIsCopiedWhateverItIs)
{
    EXPECT_EQ(fill(kernels({"enabled='0'", "enabled='1'", "enabled='2'", "enabled='3'", "enabled='-1'"})), StatusOk);
    EXPECT_EQ(enables(), "0 1 2 3 -1");
}

TEST_F(PopulationKernelsTest, RecordsAreInTheOrderOfIdsAndNotOfTheGraph)
{
    EXPECT_EQ(
        fill(kernel("third", 2) + kernel("first", 0, "", resolution("4000x3000 > 2000x1500")) + kernel("second", 1)),
        StatusOk);
    EXPECT_EQ(record(0).kernel_uuid, 100U);
    EXPECT_EQ(record(1).kernel_uuid, 101U);
    EXPECT_EQ(record(2).kernel_uuid, 102U);
    EXPECT_EQ(history(0), "4000x3000 > 4000x3000");
    EXPECT_EQ(history(2), "4000x3000 > 2000x1500");
}

TEST_F(PopulationKernelsTest, InitialisationHandsOutTheSameRecords)
{
    EXPECT_EQ(fill(kernel("k0", 0, "metadata='1,2,3,4'", resolution("4000x3000 8,4,8,4 > 1000x750")) +
                   kernel("k1", 1, "rcb='1'", "<output bpp='8'/>")),
              StatusOk);
    const Records all = handedOut(1);
    ASSERT_EQ(all.size(), 2U);
    for (size_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ(std::memcmp(&all[i], &record(i), sizeof(Record)), 0) << i; // also where they point to
    }
}

TEST_F(PopulationKernelsTest, EachRecordPointsToItsOwnResolutions)
{
    EXPECT_EQ(fill(kernels({"rcb='1'", "rcb='1'"})), StatusOk);
    EXPECT_NE(record(0).resolution_info, record(1).resolution_info);
    EXPECT_NE(record(0).resolution_history, record(1).resolution_history);
    EXPECT_NE(record(0).resolution_info, record(0).resolution_history);
}

// Metadata.

TEST_F(PopulationKernelsTest, MetadataIsZeroForEachKernelThatDoesNotGiveIt)
{
    mFill = 0xa5;
    EXPECT_EQ(fill(kernels({"metadata='1,2,3,4'", "metadata='9'", "", "metadata=''", "metadata='1,x,,-1'"})), StatusOk);
    EXPECT_EQ(metadata(record(0)), (Lines{"1", "2", "3", "4"}));
    EXPECT_EQ(metadata(record(1)), (Lines{"9", "0", "0", "0"}));
    EXPECT_EQ(metadata(record(2)), Lines(4, "0"));
    EXPECT_EQ(metadata(record(3)), Lines(4, "0"));
    EXPECT_EQ(metadata(record(4)), (Lines{"1", "0", "0", "4294967295"}));
    EXPECT_EQ(mLog.count(LogCapture::Warning), 0U);
}

TEST_F(PopulationKernelsTest, MetadataBeyondTheFourthIsLeftOutWithOneWarning)
{
    std::string many = "1,2,3,4,5";
    for (int i = 6; i <= 2000; ++i) many += "," + std::to_string(i);
    EXPECT_EQ(fill(kernels({"metadata='" + many + "'", ""})), StatusOk);
    EXPECT_EQ(metadata(record(0)), (Lines{"1", "2", "3", "4"}));
    EXPECT_EQ(record(0).bpp_info.input_bpp, 0U); // what stands behind the metadata
    EXPECT_EQ(metadata(record(1)), Lines(4, "0"));
    EXPECT_EQ(mLog.count(LogCapture::Warning), 1U);
}

// Bits per pixel.

TEST_F(PopulationKernelsTest, BitsPerPixelAreReadFromEachEnd)
{
    mFill = 0xa5;
    EXPECT_EQ(fill(kernel("k0", 0, "", "<input bpp='10'/>")), StatusOk);
    EXPECT_EQ(bpp(), "10 0");
    EXPECT_EQ(fill(kernel("k0", 0, "", "<output bpp='12'/><input/>")), StatusOk);
    EXPECT_EQ(bpp(), "0 12");
    EXPECT_EQ(fill(kernel("k0", 0, "bpp='7'")), StatusOk);
    EXPECT_EQ(bpp(), "0 0");
}

TEST_F(PopulationKernelsTest, BitsPerPixelOfAnotherKindAreNone)
{
    startStream(kernel("k0", 0, "", "<input bpp='10'/><output bpp='12'/>"));
    replace(*node("pg_a:k0:input"), NUXO_KEY_BPP, "ten");
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_EQ(bpp(), "0 12");
}

// Own resolutions.

struct Own {
    const char* name;
    std::string body;
    std::string info; ///< "fails" when the kernel ends the call
};

const Own kOwn[] = {
    {"None", "", "null"},
    {"InputAlone", "<input width='4' height='3'/>", "null"},
    {"OutputAlone", "<output width='4' height='3'/>", "null"},
    {"InputWithoutWidth", "<input height='3'/><output width='2' height='1'/>", "null"},
    {"OutputOfAttributesOnly", "<input width='4' height='3'/><output bpp='8' height='1'/>", "null"},
    {"Both", resolution("4x3 > 2x1"), "4x3 > 2x1"},
    {"CropsOfEachSide", resolution("4x3 1,2,3,4 > 2x1 5,6,7,8"), "4x3 1,2,3,4 > 2x1 5,6,7,8"},
    {"NegativeCrops", resolution("4x3 -1,-2,-3,-4 > 2x1"), "4x3 -1,-2,-3,-4 > 2x1"},
    {"OneSideOfCrops", "<input width='4' height='3' top='9'/><output width='2' height='1' right='7'/>",
     "4x3 0,9,0,0 > 2x1 0,0,7,0"},
    {"OutputOfAChild", "<input width='4' height='3'/><output><main width='2' height='1' left='5'/></output>",
     "4x3 > 2x1 5,0,0,0"},
    {"OwnWidthBeforeThatOfAChild",
     "<input width='4' height='3'/><output width='9' height='8'><main width='2' height='1'/></output>", "4x3 > 9x8"},
    {"FirstChildWithAWidth",
     "<input width='4' height='3'/><output><bare id='0'/><main width='2' height='1'/><aux width='7' "
     "height='6'/></output>",
     "4x3 > 2x1"},
    {"InputWithoutHeight", "<input width='4'/><output width='2' height='1'/>", "fails"},
    {"OutputWithoutHeight", "<input width='4' height='3'/><output width='2'/>", "fails"},
    {"ChildWithoutHeight", "<input width='4' height='3'/><output><main width='2'/></output>", "fails"},
    {"ChildWithoutWidth", "<input width='4' height='3'/><output><main height='1'/></output>", "fails"},
};

class PopulationOwnResolutionsTest : public PopulationKernelsTest, public ::testing::WithParamInterface<Own> {};

TEST_P(PopulationOwnResolutionsTest, AreReadFromInputAndOutput)
{
    mFill = 0xa5;
    const bool fails = GetParam().info == "fails";
    EXPECT_EQ(fill(kernel("k0", 0, "", GetParam().body)), fails ? StatusBadArgument : StatusOk);
    if (!fails) {
        EXPECT_EQ(info(0), GetParam().info);
    }
}

INSTANTIATE_TEST_SUITE_P(Kernels, PopulationOwnResolutionsTest, ::testing::ValuesIn(kOwn),
                         [](const auto& own) { return std::string(own.param.name); });

TEST_F(PopulationKernelsTest, WidthOfAnotherKindIsNone)
{
    startStream(kernel("k0", 0, "", resolution("4x3 > 2x1")));
    replace(*node("pg_a:k0:output"), NUXO_KEY_WIDTH, "2");
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_EQ(info(0), "null");
}

TEST_F(PopulationKernelsTest, ResolutionsThatAreGoneAreClearedFromTheRecord)
{
    startStream(kernel("k0", 0, "", resolution("4000x3000 > 2000x1500")));
    EXPECT_EQ(populate(), StatusOk);
    Record again = record(0);
    ASSERT_NE(again.resolution_info, nullptr);
    node("pg_a:k0")->removeDescendant(NUXO_KEY_INPUT);
    EXPECT_EQ(mUtils->populateKernelArray(1, &again, 0, mPortHistories), StatusOk);
    EXPECT_EQ(again.resolution_info, nullptr);
}

TEST_F(PopulationKernelsTest, RecordsBeforeTheFailureStayFilled)
{
    EXPECT_EQ(fill(kernel("k0", 0, "", resolution("4x3 > 2x1")) +
                   kernel("k1", 1, "", "<input width='4'/>" + frame("output", "2x1"))),
              StatusBadArgument);
    EXPECT_EQ(record(0).kernel_uuid, 100U);
    EXPECT_EQ(info(0), "4x3 > 2x1");
    EXPECT_EQ(history(0), "null"); // comes with the second walk
}

TEST_F(PopulationKernelsTest, IdentityOfAnotherKindFails)
{
    for (const uint32_t which : {NUXO_KEY_PAL_UUID, NUXO_KEY_ID}) {
        startStream(kernels({""}));
        replace(*node("pg_a:k0"), which, "0");
        EXPECT_EQ(populate(), StatusBadArgument) << which;
        EXPECT_TRUE(logged(kError, "Failed to fetch kernel values 'k0'"));
    }
}

// Ids.

struct Ids {
    const char* name;
    std::vector<int> ids;
    bool accepted;
};

const Ids kIds[] = {
    {"InOrder", {0, 1, 2}, true},
    {"AnyOrder", {2, 0, 1}, true},
    {"Single", {0}, true},
    {"EqualOnesOfTheRightSum", {1, 1, 1}, true}, // 3 = 3 * 2 / 2; only the sum is checked
    {"Gap", {0, 1, 3}, false},
    {"FromOne", {1, 2, 3}, false},
    {"SingleOne", {1}, false},
    {"SingleNegative", {-1}, false},
    {"AllZero", {0, 0, 0}, false},
    // Sums of 3 with ids for which there is no record.
    {"NegativeInTheRightSum", {-1, 1, 3}, false},
    {"BehindTheRecordsInTheRightSum", {0, 0, 3}, false},
    {"FarNegative", {-1000000, 1000001, 2}, false},
    // 2147483647 + 2147483647 + 5 = 2^32 + 3
    {"SumThatWraps", {INT_MAX, INT_MAX, 5}, false},
    // -2147483648 * 2 = -2^32
    {"NegativeSumThatWraps", {INT_MIN, INT_MIN, 3}, false},
    {"Huge", {0, 1, INT_MAX}, false},
};

class PopulationIdsTest : public PopulationTest, public ::testing::WithParamInterface<Ids> {};

TEST_P(PopulationIdsTest, AreCheckedByTheirSumAndTheNumberOfRecords)
{
    std::string body;
    for (const int id : GetParam().ids) body += kernel("k" + std::to_string(body.size()), 500, id);
    EXPECT_EQ(fill(body), GetParam().accepted ? StatusOk : StatusBadState);
    EXPECT_EQ(count(kError, "Error: Bad kernel id(s). Kernel ids need to run from 0 to n. Check the GDF."),
              GetParam().accepted ? 0U : 1U);
    EXPECT_TRUE(logged(kDebug, "PG: program_group[pg_a] got " + std::to_string(GetParam().ids.size()) + " kernels"));
}

INSTANTIATE_TEST_SUITE_P(Kernels, PopulationIdsTest, ::testing::ValuesIn(kIds),
                         [](const auto& ids) { return std::string(ids.param.name); });

TEST_F(PopulationKernelsTest, RecordsThatNoIdNamesOnlyCarryTheHistory)
{
    EXPECT_EQ(fill(kernel("k0", 200, 1) + kernel("k1", 201, 1) +
                   kernel("k2", 202, 1, "", resolution("4000x3000 > 2000x1500"))),
              StatusOk);
    EXPECT_EQ(record(0).kernel_uuid, 0U);
    EXPECT_EQ(info(0), "null");
    EXPECT_EQ(history(0), "4000x3000 > 4000x3000");
    EXPECT_EQ(record(1).kernel_uuid, 202U); // the last one
    EXPECT_EQ(info(1), "4000x3000 > 2000x1500");
    EXPECT_EQ(record(2).kernel_uuid, 0U);
    EXPECT_EQ(history(2), "4000x3000 > 2000x1500");
}

class PopulationTwoGroupsIdsTest : public PopulationTest {
protected:
    void startGroups(const std::string& first, const std::string& second)
    {
        start(frames("4000x3000") + joined("pg_a", 1, "buffer_src0:port_0", "pg_b:in", first) +
              joined("pg_b", 1, "pg_a:out", "out_sink", second) + streamSink("out_sink", 1, "pg_b:out"));
    }
};

TEST_F(PopulationTwoGroupsIdsTest, NegativeIdDoesNotReachTheGroupBefore)
{
    startGroups(kernels({"", "", "sink_port='1'"}),
                kernel("m0", 300, -1) + kernel("m1", 301, 1) + kernel("m2", 302, 3));
    EXPECT_EQ(populate(), StatusBadState);
    EXPECT_EQ(record(2).kernel_uuid, 102U);
}

// A kernel of the first group has the id of the first record of the second group. What it said is gone then.
TEST_F(PopulationTwoGroupsIdsTest, StrayKernelIsReplacedByTheOneOfTheNextGroup)
{
    startGroups(kernel("k0", 200, 0, "sink_port='1'") + kernel("k1", 201, 0, "sink_port='1'") +
                    kernel("k2", 202, 3, "rcb='1' sink_port='1' metadata='1,2,3,4'", resolution("4x3 > 2x1")),
                kernel("m0", 300, 0) + kernel("m1", 301, 1) + kernel("m2", 302, 2));
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_EQ(record(3).kernel_uuid, 300U);
    EXPECT_EQ(info(3), "null");
    EXPECT_EQ(record(3).metadata[0], 0U);
    EXPECT_EQ(count(kDebug, "Sink port out info stored"), 1U); // of record 0 alone
}

// The bound of an id is that of the whole context.
TEST_F(PopulationTwoGroupsIdsTest, IdsCountFromTheGroupsFirstRecord)
{
    startGroups(kernels({"", "sink_port='1'"}), kernel("m0", 300, 0) + kernel("m1", 301, INT_MAX));
    EXPECT_EQ(populate(), StatusBadState);
    startGroups(kernels({"", "sink_port='1'"}), kernel("m0", 300, 1) + kernel("m1", 301, 0));
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_EQ(record(2).kernel_uuid, 301U);
    EXPECT_EQ(record(3).kernel_uuid, 300U);
}

// Arrays that do not fit the graph.

TEST_F(PopulationKernelsTest, MoreKernelsThanRecordsEndWhereTheHistoriesEnd)
{
    startStream(kernels({"", "", ""}));
    // ids 0, 2, 2, 2: the sum of four kernels, and each has a record
    replace(*node("pg_a:k1"), NUXO_KEY_ID, 2);
    node("pg_a")->insertDescendant(node("pg_a:k2")->copy(), ItemUID::generateKey("k2_again"));
    EXPECT_EQ(populate(), StatusBadState);
    EXPECT_TRUE(logged(kError, "Error: We run out out resolution history items - BUG"));
    EXPECT_TRUE(notLogged("Bad kernel id(s)"));
    EXPECT_EQ(history(2), "4000x3000 > 4000x3000");
}

TEST_F(PopulationKernelsTest, PoolOfAnotherContextBoundsTheRecords)
{
    start(frames("4000x3000") + joined("pg_a", 1, "buffer_src0:port_0", "pg_v:in", kernels({"", "sink_port='1'"})) +
          joined("pg_v", 3, "pg_a:out", "out_sink", kernel("m0", 0)) + streamSink("out_sink", 3, "pg_v:out"));
    EXPECT_EQ(mStarted, StatusOk);
    mCapacity = 1;                             // the pool of stream 3 is the second one
    EXPECT_EQ(populate(1, 1), StatusBadState); // stream 1 has two kernels
    EXPECT_EQ(populate(3, 1), StatusOk);
    EXPECT_EQ(record(0).stream_id, 3U);
}

TEST_F(PopulationKernelsTest, RecordsWithoutKernelsAreBlanked)
{
    startStream(kernels({"", "", ""}));
    node("pg_a")->removeDescendant(key("k2"));
    mFill = 0xa5;
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_EQ(record(1).kernel_uuid, 101U);
    EXPECT_EQ(history(1), "4000x3000 > 4000x3000");
    const Record& blank = record(2);
    EXPECT_EQ(blank.kernel_uuid, 0U);
    EXPECT_EQ(blank.enable, 0);
    EXPECT_EQ(blank.resolution_info, nullptr);
    EXPECT_EQ(blank.resolution_history, nullptr);
    EXPECT_EQ(blank.stream_id, filled(mFill).stream_id); // nothing else is touched
    EXPECT_EQ(blank.metadata[0], filled(mFill).metadata[0]);
}

TEST_F(PopulationKernelsTest, StreamWithoutGroupsHasBlankRecordsOnly)
{
    startStream(kernels({"", ""}));
    mFill = 0xa5;
    EXPECT_EQ(populate(2), StatusOk);
    for (size_t i = 0; i < mCapacity; ++i) {
        EXPECT_EQ(record(i).kernel_uuid, 0U);
        EXPECT_EQ(record(i).enable, 0);
        EXPECT_EQ(info(i) + " " + history(i), "null null");
    }
}

TEST_F(PopulationKernelsTest, WithoutRecordsOrPoolNothingIsFilled)
{
    startStream(kernels({""}));
    EXPECT_EQ(mUtils->populateKernelArray(1, nullptr, 0, mPortHistories), StatusBadArgument);
    EXPECT_GT(mLog.count(LogCapture::Error), 0U);
    for (const unsigned int index : {1U, UINT_MAX}) {
        EXPECT_EQ(populate(1, index), StatusBadArgument) << index;
        EXPECT_GT(mLog.count(LogCapture::Error), 0U);
        EXPECT_EQ(record(0).kernel_uuid, 0U);
    }
    renew(); // not initialised
    EXPECT_EQ(populate(), StatusBadArgument);
    EXPECT_TRUE(mPortHistories.empty());
}

// Groups without a stream.

TEST_F(PopulationKernelsTest, StatusOfReadingTheStreamIsReturned)
{
    startStream(kernels({""}));
    replace(*node("pg_a"), NUXO_KEY_STREAM_ID, "1");
    EXPECT_EQ(populate(), StatusNotFound);
    EXPECT_TRUE(logged(kError, "Failed to get stream id from node program_group[pg_a]"));
    EXPECT_EQ(record(0).kernel_uuid, 0U);
}

TEST_F(PopulationKernelsTest, GroupWithoutStreamBehindTheOwnOnesFailsAfterThese)
{
    startStream(kernels({""}));
    GraphConfigNode* const late = node("pg_a")->copy();
    late->removeDescendant(NUXO_KEY_STREAM_ID);
    mRoot->insertDescendant(late, ItemUID::generateKey("pg_late"));
    EXPECT_EQ(populate(), StatusMissingData);
    EXPECT_EQ(record(0).kernel_uuid, 100U);
    EXPECT_EQ(history(0), "4000x3000 > 4000x3000");
    EXPECT_TRUE(logged(kError, "Failed to get stream id from node program_group[pg_late]"));
}

// Grouping by execution context does not change what is read here.
TEST_F(PopulationKernelsTest, ContextsAreFilledByStreamToo)
{
    loadGraph(frames("4000x3000") +
              group("pg_a", "stream_id='1' exec_ctx_id='1'",
                    input("in", "buffer_src0:port_0") + output("out", "out_sink", "id='1'") + kernels({"", ""})) +
              streamSink("out_sink", 1, "pg_a:out"));
    renew(false);
    EXPECT_EQ(init(), StatusOk);
    mCapacity = handedOut(1).size();
    EXPECT_EQ(mCapacity, 2U);
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_EQ(record(1).stream_id, 1U);
    node("pg_a")->removeDescendant(NUXO_KEY_STREAM_ID);
    EXPECT_EQ(populate(), StatusMissingData);
}

} // namespace

} // namespace graphtest
