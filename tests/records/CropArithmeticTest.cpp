// SPDX-License-Identifier: Apache-2.0
#include "records/Resolutions.h"

#include <nuxo/nuxo.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <ostream>

namespace graphtest {

namespace {

using NUXO::ZmtTevUtils;

constexpr int32_t kSmallest = std::numeric_limits<int32_t>::min();
constexpr int32_t kLargest = std::numeric_limits<int32_t>::max();

/// One side: what @p side adds to a total of 0.
struct Side {
    int32_t side;
    int divisor;
    int multiplier;
    int32_t added;
};

void PrintTo(const Side& row, std::ostream* stream)
{
    *stream << row.side << " * " << row.multiplier << " / " << row.divisor;
}

qv_rectangle accumulated(qv_rectangle total, const qv_rectangle& crop, int divisor, int multiplier)
{
    ZmtTevUtils::accumulateCrop(total, crop, divisor, multiplier);
    return total;
}

class CropArithmeticTest : public ::testing::TestWithParam<Side> {};

TEST_P(CropArithmeticTest, EverySideIsComputedAlike)
{
    const Side& row = GetParam();
    const qv_rectangle crop = {row.side, row.side, row.side, row.side};
    const qv_rectangle added = {row.added, row.added, row.added, row.added};
    EXPECT_EQ(text(accumulated({}, crop, row.divisor, row.multiplier)), text(added));
}

INSTANTIATE_TEST_SUITE_P(Fractions, CropArithmeticTest,
                         ::testing::Values(Side{8, 1, 1, 8},    //
                                           Side{8, 2, 1, 4},    //
                                           Side{7, 3, 1, 2},    // 112 / 3 = 37, and 37 / 16 = 2.3
                                           Side{7, 3, 2, 4},    // 4.7
                                           Side{5, 2, 3, 7},    // 7.5
                                           Side{10, 1, 4, 40},  //
                                           Side{0, 3, 5, 0},    //
                                           Side{9, 4, 0, 0},    // without a multiplier nothing is added
                                           Side{1, 17, 1, 0})); // 16 / 17 is 0 before the shift

// The quotient is cut toward zero in sixteenths, and these are rounded down afterwards.
INSTANTIATE_TEST_SUITE_P(Negative, CropArithmeticTest,
                         ::testing::Values(Side{-1, 2, 1, -1},  // -16 / 2 = -8, and -8 >> 4 = -1
                                           Side{-8, 2, 1, -4},  // -64 >> 4: exact
                                           Side{-7, 3, 1, -3},  // -112 / 3 = -37, and -37 / 16 = -2.3
                                           Side{-1, 17, 1, 0},  // -16 / 17 = 0: nothing is left to round
                                           Side{-1, 16, 1, -1}, // -16 / 16 = -1, and -1 >> 4 = -1
                                           Side{1, -2, 1, -1},  //
                                           Side{1, 2, -1, -1},  //
                                           Side{-7, -3, 1, 2},  // 37 / 16
                                           Side{-7, 3, -1, 2},  //
                                           Side{7, -1, 1, -7}));

INSTANTIATE_TEST_SUITE_P(DivisorZero, CropArithmeticTest,
                         ::testing::Values(Side{8, 0, 1, 8}, Side{-3, 0, 2, -6}, Side{0, 0, 0, 0}));

INSTANTIATE_TEST_SUITE_P(
    Overflow, CropArithmeticTest,
    ::testing::Values(Side{0x07ffffff, 1, 1, 0x07ffffff},  // 0x7ffffff0 is the largest product
                      Side{0x08000000, 1, 1, -0x08000000}, // 0x80000000 is negative
                      Side{0x10000000, 1, 1, 0},           // 2^32 is 0
                      Side{0x10000001, 1, 1, 1},           // only the low 28 bits count
                      Side{kLargest, 1, 1, -1},            // 2^35 - 16, of which the low 32 bits are -16
                      Side{kSmallest, 1, 1, 0},            // 2^31 * 16
                      Side{1, 1, 0x08000000, -0x08000000}, // the factor itself is 2^31
                      Side{1, 1, 0x10000000, 0},           // and here 2^32
                      Side{3, 1, 0x10000001, 3},           //
                      Side{1, 1, kLargest, -1},            // a factor of -16
                      Side{1, 1, kSmallest, 0},            //
                      Side{0x08000000, -1, 1,
                           0x08000000}, // -2^31 / -1 = 2^31, which 32 bits cannot hold, and then 2^27
                      Side{1, -1, 0x08000000, 0x08000000}, //
                      Side{kSmallest, -1, kSmallest, 0},   //
                      Side{16, kSmallest, 0x00800000, 0},  // 2^4 * 2^27 is -2^31, by -2^31 it is 1, and 1 >> 4 = 0
                      Side{1, kLargest, 1, 0}));

TEST(CropArithmetic, SidesStayApart)
{
    EXPECT_EQ(text(accumulated({}, {8, 4, 8, 4}, 2, 1)), "(l: 4, t: 2, r: 4, b: 2)");
    EXPECT_EQ(text(accumulated({}, {1, 2, 3, 4}, 1, 10)), "(l: 10, t: 20, r: 30, b: 40)");
}

TEST(CropArithmetic, CropIsAddedToTheTotal)
{
    EXPECT_EQ(text(accumulated({100, 200, 300, 400}, {2, 4, 6, 8}, 2, 3)), "(l: 103, t: 206, r: 309, b: 412)");
    EXPECT_EQ(text(accumulated({1, 1, 1, 1}, {-1, -2, -3, -4}, 1, 1)), "(l: 0, t: -1, r: -2, b: -3)");
}

TEST(CropArithmetic, EachContributionIsRoundedByItself)
{
    qv_rectangle total{};
    // 2.5 twice is 2 and 2.
    for (int i = 0; i < 2; ++i) ZmtTevUtils::accumulateCrop(total, {5, 5, 5, 5}, 2, 1);
    EXPECT_EQ(text(total), "(l: 4, t: 4, r: 4, b: 4)");
}

TEST(CropArithmetic, TotalWrapsAtBothEnds)
{
    EXPECT_EQ(accumulated({kLargest, 0, 0, 0}, {1, 0, 0, 0}, 1, 1).left, kSmallest);
    EXPECT_EQ(accumulated({0, 0, 0, kSmallest}, {0, 0, 0, -1}, 1, 1).bottom, kLargest);
}

TEST(CropArithmetic, CropMayBeTheTotalItself)
{
    qv_rectangle crop = {1, 2, 3, 4};
    ZmtTevUtils::accumulateCrop(crop, crop, 1, 1);
    EXPECT_EQ(text(crop), "(l: 2, t: 4, r: 6, b: 8)");
}

} // namespace

} // namespace graphtest
