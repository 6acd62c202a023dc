// SPDX-License-Identifier: Apache-2.0
#include "kernels/KernelsFixture.h"

#include <algorithm>
#include <iterator>

namespace graphtest {

namespace {

using Limits = qv_view_mbr_limits_t;

constexpr int kRows = QV_VIEW_MBR_ROWS;
constexpr int kRowLength = QV_VIEW_MBR_ROW_LENGTH;
constexpr int kCount = kRows * kRowLength;

class MbrDataTest : public KernelsTest {
protected:
    /// The numbers 1.5, 2.5 and so on, @p count of them.
    static std::string numbers(int count)
    {
        std::string all;
        for (int i = 1; i <= count; ++i) all += (i > 1 ? "," : "") + std::to_string(i) + ".5";
        return all;
    }

    /// The same with the @p index-th, counted from 1, replaced.
    static std::string numbersWith(int count, int index, const std::string& text)
    {
        std::string all;
        for (int i = 1; i <= count; ++i) all += (i > 1 ? "," : "") + (i == index ? text : std::to_string(i) + ".5");
        return all;
    }

    static std::string entry(int id, const std::string& value)
    {
        return "<stream_id id='" + std::to_string(id) + "' value='" + value + "'/>";
    }

    void initLimits(const std::string& entries)
    {
        initWith("<mbr_data>" + entries + "</mbr_data>");
        clearLog();
    }

    /// Asks for the limits of a stream; what is not written then is -1.
    int limitsOf(int stream)
    {
        for (auto& row : mLimits.values) std::fill(std::begin(row), std::end(row), -1.0F);
        return mUtils->getMbrData(stream, &mLimits);
    }

    /// Asks for the limits of stream 1 with this text.
    int limitsFrom(const std::string& value)
    {
        initLimits(entry(1, value));
        return limitsOf(1);
    }

    float at(int index) const { return mLimits.values[(index - 1) / kRowLength][(index - 1) % kRowLength]; }

    /// Whether the first @p rows rows hold 1.5, 2.5 and so on, and the others nothing.
    ::testing::AssertionResult holdsRows(int rows) const
    {
        for (int i = 1; i <= kCount; ++i) {
            const float expected = i <= rows * kRowLength ? static_cast<float>(i) + 0.5F : 0.0F;
            if (at(i) != expected) return ::testing::AssertionFailure() << "value " << i << " is " << at(i);
        }
        return ::testing::AssertionSuccess();
    }

    static std::string sizeWarning(int found)
    {
        return "32 MBR data size (" + std::to_string(found) + ") does not match expected size (56)";
    }

    Limits mLimits = {};
};

TEST_F(MbrDataTest, NothingIsKnownBeforeInitialisation)
{
    EXPECT_EQ(limitsOf(1), StatusMissingObject);
    EXPECT_TRUE(loggedExactly({kNotInitialised}));
    EXPECT_EQ(at(1), -1.0F);
    EXPECT_EQ(at(kCount), -1.0F);
}

// Readers of the log know the failure with these words.
TEST_F(MbrDataTest, NullIsReportedAsNotInitialised)
{
    EXPECT_EQ(mUtils->getMbrData(1, nullptr), StatusMissingObject);
    EXPECT_TRUE(loggedExactly({kNotInitialised}));
    initLimits(entry(1, numbers(kCount)));
    EXPECT_EQ(mUtils->getMbrData(1, nullptr), StatusMissingObject);
    EXPECT_TRUE(loggedExactly({kNotInitialised}));
}

TEST_F(MbrDataTest, AllRowsAreFilledInOrder)
{
    EXPECT_EQ(limitsFrom(numbers(kCount)), StatusOk);
    EXPECT_TRUE(holdsRows(kRows));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(MbrDataTest, GraphWithoutLimitsIsReported)
{
    initWith("");
    clearLog();
    EXPECT_EQ(limitsOf(1), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 MBR limits data not found at all"}));
    EXPECT_TRUE(holdsRows(0));
}

TEST_F(MbrDataTest, StreamWithoutLimitsIsReported)
{
    for (const std::string& entries : {std::string(), entry(2, numbers(kCount)) + entry(-1, numbers(kCount))}) {
        initLimits(entries);
        EXPECT_EQ(limitsOf(1), StatusBadState);
        EXPECT_TRUE(loggedExactly({"16 MBR limits data not found for stream-id 1"}));
        EXPECT_TRUE(holdsRows(0));
    }
}

TEST_F(MbrDataTest, FirstEntryOfTheStreamCounts)
{
    initLimits(entry(2, "7") + entry(1, numbers(kCount)) + entry(1, "8") + "<stream_id value='9'/>");
    EXPECT_EQ(limitsOf(1), StatusOk);
    EXPECT_TRUE(holdsRows(kRows));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(MbrDataTest, EntryWithoutAStreamEndsTheSearch)
{
    const std::string message = "16 MBR limits data has no stream id associated - check your settings";
    initLimits(entry(2, "7") + "<stream_id value='9'/>" + entry(1, numbers(kCount)));
    EXPECT_EQ(limitsOf(1), StatusBadState);
    EXPECT_TRUE(loggedExactly({message}));
    EXPECT_TRUE(holdsRows(0));
    initLimits(entry(1, numbers(kCount)));
    replace(*node("mbr_data:stream_id"), NUXO_KEY_ID, std::string("1"));
    EXPECT_EQ(limitsOf(1), StatusBadState);
    EXPECT_TRUE(loggedExactly({message}));
}

TEST_F(MbrDataTest, OnlyEntriesOfStreamsCount)
{
    initWith("<mbr_data stream_id='1'><port id='1' value='3'/>" + entry(1, numbers(kCount)) + "</mbr_data>");
    clearLog();
    EXPECT_EQ(limitsOf(1), StatusOk);
    EXPECT_TRUE(holdsRows(kRows));
    initWith("<mbr_data stream_id='1'/>");
    clearLog();
    EXPECT_EQ(limitsOf(1), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 MBR limits data not found for stream-id 1"}));
}

TEST_F(MbrDataTest, EntryWithoutNumbersGivesTheStatusOfTheRead)
{
    initLimits("<stream_id id='1'/>");
    EXPECT_EQ(limitsOf(1), StatusMissingData);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_TRUE(holdsRows(0));
    node("mbr_data:stream_id")->addValue(NUXO_KEY_VALUE, 5);
    EXPECT_EQ(limitsOf(1), StatusNotFound);
    EXPECT_TRUE(holdsRows(0));
}

TEST_F(MbrDataTest, NumbersBeyondTheLastOneAreIgnoredWithAWarning)
{
    EXPECT_EQ(limitsFrom(numbers(kCount + 1)), StatusOk);
    EXPECT_TRUE(holdsRows(kRows));
    EXPECT_TRUE(loggedExactly({sizeWarning(57)}));
    for (const char* const last : {"", "junk", "1e999"}) {
        EXPECT_EQ(limitsFrom(numbers(kCount) + "," + last + ","), StatusOk) << last;
        EXPECT_TRUE(holdsRows(kRows));
        EXPECT_TRUE(loggedExactly({sizeWarning(57)})) << last;
    }
    EXPECT_EQ(limitsFrom(numbers(1000)), StatusOk);
    EXPECT_TRUE(loggedExactly({sizeWarning(1000)}));
}

TEST_F(MbrDataTest, CommaAtTheEndIsNoFurtherNumber)
{
    EXPECT_EQ(limitsFrom(numbers(kCount) + ","), StatusOk);
    EXPECT_TRUE(holdsRows(kRows));
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(limitsFrom(numbers(kCount - 1) + ","), StatusBadState);
    EXPECT_TRUE(loggedExactly({sizeWarning(55)}));
    EXPECT_EQ(limitsFrom(numbers(kCount) + ", "), StatusOk);
    EXPECT_TRUE(loggedExactly({sizeWarning(57)})) << "a blank is text";
}

TEST_F(MbrDataTest, OnlyWholeRowsAreFilled)
{
    const std::pair<int, int> rowsOfCounts[] = {{1, 0}, {7, 0}, {8, 1}, {16, 2}, {20, 2}, {54, 6}, {55, 6}};
    for (const auto& [found, rows] : rowsOfCounts) {
        EXPECT_EQ(limitsFrom(numbers(found)), StatusBadState) << found;
        EXPECT_TRUE(holdsRows(rows)) << found;
        EXPECT_TRUE(loggedExactly({sizeWarning(found)}));
    }
}

TEST_F(MbrDataTest, EmptyTextHasNoNumbers)
{
    EXPECT_EQ(limitsFrom(""), StatusBadState);
    EXPECT_TRUE(loggedExactly({sizeWarning(0)}));
    EXPECT_TRUE(holdsRows(0));
    EXPECT_EQ(limitsFrom(","), StatusBadState);
    EXPECT_TRUE(loggedExactly({sizeWarning(1)}));
    EXPECT_EQ(limitsFrom(std::string(kCount, ',')), StatusBadState);
    EXPECT_TRUE(loggedExactly({})) << "56 empty texts";
    EXPECT_TRUE(holdsRows(0));
}

// 56 texts each: text i is the first of row i / 8 + 1, the last of it, or one in between.
TEST_F(MbrDataTest, RowWithTextThatIsNoNumberIsNotFilled)
{
    const std::pair<int, int> rowsBefore[] = {{1, 0}, {8, 0}, {9, 1}, {20, 2}, {49, 6}, {56, 6}};
    for (const char* const text : {"", " ", "junk", "x1", "-", "1e39", "-1e999", "e", "."}) {
        for (const auto& [index, rows] : rowsBefore) {
            EXPECT_EQ(limitsFrom(numbersWith(kCount, index, text)), StatusBadState) << "'" << text << "' " << index;
            EXPECT_TRUE(holdsRows(rows)) << "'" << text << "' " << index;
            const bool endsWithComma = index == kCount && *text == '\0';
            EXPECT_TRUE(loggedExactly(endsWithComma ? Lines({sizeWarning(55)}) : Lines()));
        }
    }
}

TEST_F(MbrDataTest, NumbersMayHaveBlanksBeforeAndAnythingBehindThem)
{
    const std::pair<const char*, float> texts[] = {
        {" 5", 5.0F},    {"+3", 3.0F}, {"-1.25", -1.25F},   {"1.5x", 1.5F},
        {"2 3", 2.0F},   {"7.", 7.0F}, {".5", 0.5F},        {"2.5e2", 250.0F},
        {"1E-2", 0.01F}, {"0", 0.0F},  {"007", 7.0F},       {"1.2.3", 1.2F},
        {"1e+1", 10.0F}, {"3e", 3.0F}, {"3.4e38", 3.4e38F}, {"16777217", 16777216.0F}};
    for (const auto& [text, expected] : texts) {
        EXPECT_EQ(limitsFrom(numbersWith(kCount, 12, text)), StatusOk) << text;
        EXPECT_EQ(at(12), expected) << text;
        EXPECT_EQ(at(11), 11.5F);
        EXPECT_EQ(at(13), 13.5F) << text;
    }
}

TEST_F(MbrDataTest, NumbersThatAreTooSmallAreAlmostZero)
{
    EXPECT_EQ(limitsFrom(numbersWith(kCount, 3, "1e-60")), StatusOk);
    EXPECT_EQ(at(3), 0.0F);
    EXPECT_EQ(limitsFrom(numbersWith(kCount, 3, "1e-40")), StatusOk); // a denormal number
    EXPECT_GT(at(3), 0.0F);
    EXPECT_LT(at(3), 1.2e-38F);
}

TEST_F(MbrDataTest, LimitsOfAnEarlierCallDoNotStay)
{
    initLimits(entry(1, numbers(kCount)) + entry(2, numbers(8)));
    EXPECT_EQ(mUtils->getMbrData(1, &mLimits), StatusOk);
    EXPECT_EQ(mUtils->getMbrData(2, &mLimits), StatusBadState);
    EXPECT_TRUE(holdsRows(1));
    EXPECT_EQ(mUtils->getMbrData(3, &mLimits), StatusBadState);
    EXPECT_TRUE(holdsRows(0));
}

TEST_F(MbrDataTest, LimitsAreKnownInAllGenerations)
{
    for (const char* const version : {"KVA4", "KVA6", "KVA7"}) {
        initWith("<mbr_data>" + entry(1, numbers(kCount)) + "</mbr_data>", version);
        EXPECT_EQ(limitsOf(1), StatusOk) << version;
    }
}

} // namespace

} // namespace graphtest
