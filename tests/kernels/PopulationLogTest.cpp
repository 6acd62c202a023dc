// SPDX-License-Identifier: Apache-2.0
// What filling an array reports, in which order.
#include "kernels/PopulationFixture.h"

#include <climits>

namespace graphtest {

namespace {

const std::string kEnter = "2 Enter populateKernelArray for ctx 1, index 0";
const std::string kGroup = "2 Handling PG: program_group[pg_a]";
const std::string kPortHistories = "2 dumpPortResHistoryMap";

std::string got(int count, const std::string& name = "pg_a")
{
    return "2 PG: program_group[" + name + "] got " + std::to_string(count) + " kernels";
}

/// The line about a kernel without attributes.
std::string stored(const std::string& name, int index)
{
    return "2 storing info for 'kernel[" + name + "]': id: " + std::to_string(index) +
           ", rcb 0, branch-point 0 sink-id 0xffffffff restore-point -1";
}

class PopulationLogTest : public PopulationTest {
protected:
    /// How each call begins when 4000x3000 pixels arrive and no port has a history.
    Lines beginning(const std::string& enter = kEnter) const
    {
        return {enter, "16 inputHistory:" + uncropped(4000, 3000, 4000, 3000), kPortHistories};
    }

    /// The beginning and @p more.
    ::testing::AssertionResult loggedBehindBeginning(const Lines& more) const
    {
        Lines all = beginning();
        all.insert(all.end(), more.begin(), more.end());
        return loggedExactly(all);
    }
};

TEST_F(PopulationLogTest, FollowsTheSteps)
{
    startStream(output("off", "far_sink", "id='5' enabled='0'") +
                kernels({"rcb='1' branch_point='1'", "sink_port='1'",
                         "branch_point='3' restore_point='1' sink_port='5'", "restore_point='7'"}));
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_TRUE(loggedBehindBeginning({
        kGroup,
        "2 storing info for 'kernel[pg_a:k0]': id: 0, rcb 1, branch-point 1 sink-id 0xffffffff restore-point -1",
        "2 storing info for 'kernel[pg_a:k1]': id: 1, rcb 0, branch-point 0 sink-id 0x1 restore-point -1",
        "2 Found disabled terminal 5, going to disable its kernels.",
        "2 storing info for 'kernel[pg_a:k2]': id: 2, rcb 0, branch-point 3 sink-id 0x5 restore-point 1",
        "2 storing info for 'kernel[pg_a:k3]': id: 3, rcb 0, branch-point 0 sink-id 0xffffffff restore-point 7",
        got(4),
        "2 Sink port out info stored",
        "2 Branch point with kernel at edge has no effect",
        "2 Sink port off info stored",
        "16 Found restore_point attribute, but no branch points. Ignoring attribute and continuing.",
    }));
}

TEST_F(PopulationLogTest, BeginsWithTheHistoriesOfPorts)
{
    startStream(kernels({""}));
    mPortHistories[node("pg_a:in")] = {9, 8, {1, 2, 3, 4}, 7, 6, {5, 6, 7, 8}};
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_TRUE(loggedBehindBeginning({
        "16 in:(iw: 9 ih: 8 (l: 1, t: 2, r: 3, b: 4),ow: 7, oh: 6 (l: 5, t: 6, r: 7, b: 8)",
        kGroup,
        stored("pg_a:k0", 0),
        got(1),
    }));
}

TEST_F(PopulationLogTest, NumbersOtherThanTheKernelsOwnAreThoseOfTheRecord)
{
    start(frames("4000x3000") + joined("pg_a", 1, "buffer_src0:port_0", "pg_b:in", kernels({"", "sink_port='1'"})) +
          joined("pg_b", 1, "pg_a:out", "out_sink", kernel("m0", 0)) + streamSink("out_sink", 1, "pg_b:out"));
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_TRUE(loggedBehindBeginning({
        kGroup,
        stored("pg_a:k0", 0),
        "2 storing info for 'kernel[pg_a:k1]': id: 1, rcb 0, branch-point 0 sink-id 0x1 restore-point -1",
        got(2),
        "2 Sink port out info stored",
        "2 Handling PG: program_group[pg_b]",
        stored("pg_b:m0", 2),
        got(1, "pg_b"),
    }));
}

TEST_F(PopulationLogTest, GroupsOfOtherStreamsAreNotMentioned)
{
    start(frames("4000x3000") + group("pg_other", "stream_id='2'", kernel("other", 0)) +
          joined("pg_a", 1, "buffer_src0:port_0", "out_sink", kernels({""})) + streamSink("out_sink", 1, "pg_a:out"));
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_TRUE(loggedBehindBeginning({kGroup, stored("pg_a:k0", 0), got(1)}));
}

TEST_F(PopulationLogTest, GroupWithoutKernelsGotNone)
{
    startStream(kernels({""}));
    node("pg_a")->removeDescendant(key("k0"));
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_TRUE(loggedBehindBeginning({kGroup, got(0)}));
}

TEST_F(PopulationLogTest, StreamWithoutGroupsIsEnteredAndNothingElse)
{
    startStream(kernels({""}));
    EXPECT_EQ(populate(-3), StatusOk);
    EXPECT_TRUE(loggedExactly(beginning("2 Enter populateKernelArray for ctx -3, index 0")));
}

TEST_F(PopulationLogTest, MissingConfigurationsAreReportedOnceAGroup)
{
    start(frames("4000x3000") + joined("pg_a", 1, "buffer_src0:port_0", "pg_b:in", kernels({"sink_port='1'"})) +
              joined("pg_b", 1, "pg_a:out", "out_sink", kernel("m0", 0)) + streamSink("out_sink", 1, "pg_b:out"),
          "of no generation");
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_TRUE(loggedBehindBeginning({
        kGroup,
        "2 storing info for 'kernel[pg_a:k0]': id: 0, rcb 0, branch-point 0 sink-id 0x1 restore-point -1",
        got(1),
        "16 Getting kernel configurations failed(-2048)",
        "2 Sink port out info stored",
        "2 Handling PG: program_group[pg_b]",
        stored("pg_b:m0", 1),
        got(1, "pg_b"),
        "16 Getting kernel configurations failed(-2048)",
    }));
}

TEST_F(PopulationLogTest, EndsWithTheGroupThatHasNoStream)
{
    startStream(kernels({""}));
    node("pg_a")->removeDescendant(NUXO_KEY_STREAM_ID);
    EXPECT_EQ(populate(), StatusMissingData);
    EXPECT_TRUE(loggedBehindBeginning({"16 Failed to get stream id from node program_group[pg_a]"}));
}

TEST_F(PopulationLogTest, EndsWithTheKernelThatHasNoIdentity)
{
    startStream(kernels({"", ""}));
    node("pg_a:k1")->removeDescendant(NUXO_KEY_PAL_UUID);
    EXPECT_EQ(populate(), StatusBadArgument);
    EXPECT_TRUE(loggedBehindBeginning({
        kGroup,
        stored("pg_a:k0", 0),
        "16 ERROR: Couldn't get pal_uuid",
        "16 Failed to fetch kernel values 'k1'",
    }));
}

TEST_F(PopulationLogTest, EndsWithTheKernelThatHasNoId)
{
    startStream(kernels({""}));
    node("pg_a:k0")->removeDescendant(NUXO_KEY_ID);
    EXPECT_EQ(populate(), StatusBadArgument);
    EXPECT_TRUE(loggedBehindBeginning({kGroup, "16 Couldn't get kernel id", "16 Failed to fetch kernel values 'k0'"}));
}

TEST_F(PopulationLogTest, EndsWithTheUnknownSinkPortBeforeTheKernelIsStored)
{
    startStream(kernels({"sink_port='9'"}));
    EXPECT_EQ(populate(), StatusBadArgument);
    EXPECT_TRUE(loggedBehindBeginning({kGroup, "16 Kernel sink port id 9 invalid"}));
}

TEST_F(PopulationLogTest, EndsWithBadIdsBehindTheCount)
{
    startStream(kernel("k0", 0) + kernel("k1", 1) + kernel("k3", 3));
    EXPECT_EQ(populate(), StatusBadState);
    Lines all = lines();
    ASSERT_GE(all.size(), 2U);
    all.erase(all.begin(), all.end() - 2);
    EXPECT_EQ(all, (Lines{got(3), "16 Error: Bad kernel id(s). Kernel ids need to run from 0 to n. Check the GDF."}));
}

TEST_F(PopulationLogTest, EndsWithTheFrameOfNoSize)
{
    startStream(kernel("k0", 0, "", resolution("4000x3000 > 0x3000")) + kernel("k1", 1, "rcb='1'"));
    EXPECT_EQ(populate(), StatusMissingObject);
    EXPECT_TRUE(loggedBehindBeginning({
        kGroup,
        stored("pg_a:k0", 0),
        "2 storing info for 'kernel[pg_a:k1]': id: 1, rcb 1, branch-point 0 sink-id 0xffffffff restore-point -1",
        got(2),
        "16 Resolution history output width or height is 0",
    }));
}

// Two signed values have more than 31 bits when they are shown in hexadecimal.
TEST_F(PopulationLogTest, ValuesAreShownAsTheyStand)
{
    startStream(kernel("k0", 0, "rcb='-2147483648' branch_point='-1' sink_port='-5' restore_point='2147483647'"));
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_TRUE(logged(2, "storing info for 'kernel[pg_a:k0]': id: 0, rcb -2147483648, branch-point -1 sink-id "
                          "0xfffffffb restore-point 2147483647"));
}

TEST_F(PopulationLogTest, LevelsAreDebugAndError)
{
    startStream(kernels({"sink_port='1'"}));
    const auto fillAgain = [this] { populate(); };
    EXPECT_EQ(mLog.linesOfLevel(kError, fillAgain).size(), 1U); // the input history
    EXPECT_EQ(mLog.linesOfLevel(kDebug, fillAgain).size(), 6U); // enter, ports, group, kernel, count, sink port
    for (const uint32_t level : {1U, 4U, 8U, 32U}) EXPECT_EQ(mLog.linesOfLevel(level, fillAgain).size(), 0U) << level;
}

} // namespace

} // namespace graphtest
