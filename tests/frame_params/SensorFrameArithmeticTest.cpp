// SPDX-License-Identifier: Apache-2.0
// Rounding, signs and numbers beyond the widths of the record's fields. What is stored are the low bits of the exact
// result; only the division rounds.
#include "frame_params/FrameParamsFixture.h"

#include <limits>

namespace graphtest {

namespace {

constexpr int kMax = std::numeric_limits<int>::max(); // 2^31 - 1: -1 in any number of low bits
constexpr int kMin = std::numeric_limits<int>::min(); // -2^31: 0 in up to 31 low bits

class SensorFrameArithmeticTest : public FrameParamsTest {
protected:
    /// Numerator, denominator, binning and the scaler's output; the pixel array has no part in size and scaling.
    struct Scaling {
        int numerator = 1;
        int denominator = 1;
        int horizontal = 1;
        int vertical = 1;
        int width = 0;
        int height = 0;
    };

    std::string recordOf(const Scaling& scaling)
    {
        const Stage binner{scaling.horizontal, scaling.vertical, {}};
        const Stage scaler{scaling.numerator, scaling.denominator, {scaling.width, scaling.height, 0, 0}};
        return FrameParamsTest::recordOf({{}, binner, scaler});
    }

    /// The record when only the crops of pixel array and binner and the binning matter; no size.
    std::string recordOfCrops(int left, int top, int horizontal, int vertical, int binnerLeft, int binnerTop)
    {
        return FrameParamsTest::recordOf(
            {{0, 0, left, top}, Stage{horizontal, vertical, {0, 0, binnerLeft, binnerTop}}, {}});
    }
};

TEST_F(SensorFrameArithmeticTest, DivisionRoundsBeforeBinningMultiplies)
{
    // 1001 * 3 / 2 = 1501.5, and 2 * 1501 is not 3003; 7 * 3 / 2 = 10.5, and 4 * 10 is not 42.
    EXPECT_EQ(recordOf({2, 3, 2, 4, 1001, 7}), "0,0 3002x40 2/6 2/12");
}

TEST_F(SensorFrameArithmeticTest, MultiplicationByTheDenominatorComesBeforeTheDivision)
{
    EXPECT_EQ(recordOf({4, 8, 1, 1, 101, 3}), "0,0 202x6 4/8 4/8"); // not 101 / 4 * 8
}

TEST_F(SensorFrameArithmeticTest, DivisionRoundsTowardZero)
{
    // -7 / 2 is -3, stored as 65536 - 3; twice that after binning by 2.
    EXPECT_EQ(recordOf({2, 1, 1, 2, -7, -7}), "0,0 65533x65530 2/1 2/2");
    EXPECT_EQ(recordOf({-2, 1, 1, 2, 7, 7}), "0,0 65533x65530 254/1 254/2");
    EXPECT_EQ(recordOf({-2, 1, 1, 2, -7, -7}), "0,0 3x6 254/1 254/2");
}

TEST_F(SensorFrameArithmeticTest, NegativeFactorsCountAsTheyStand)
{
    // 100 * 3 / 1 * -2 = -600 and 50 * 3 / 1 * -1 = -150; denominators -2 * 3 and -1 * 3.
    EXPECT_EQ(recordOf({1, 3, -2, -1, 100, 50}), "0,0 64936x65386 1/250 1/253");
    // 10 - 2 * 8 = -6 and 20 - 3 * 5 = 5; no size; denominators -2 and -3.
    EXPECT_EQ(recordOfCrops(10, 20, -2, -3, 8, 5), "65530,5 0x0 1/254 1/253");
    EXPECT_EQ(recordOfCrops(-10, -20, 1, 1, 3, -4), "65529,65512 0x0 1/1 1/1");
}

TEST_F(SensorFrameArithmeticTest, SizesAndOffsetsAreCutToSixteenBits)
{
    EXPECT_EQ(recordOf({1, 1, 1, 1, 65535, 65536}), "0,0 65535x0 1/1 1/1");
    EXPECT_EQ(recordOf({1, 2, 1, 1, 40000, 32769}), "0,0 14464x2 1/2 1/2"); // 80000 - 65536, 65538 - 65536
    EXPECT_EQ(recordOfCrops(65535, 65536, 1, 1, 0, 0), "65535,0 0x0 1/1 1/1");
    EXPECT_EQ(recordOfCrops(65535, 65535, 4, 4, 1, 20000), "3,14463 0x0 1/4 1/4"); // 65539, 145535 - 2 * 65536
}

TEST_F(SensorFrameArithmeticTest, ScalingIsCutToEightBits)
{
    EXPECT_EQ(recordOf({255, 1, 255, 256, 0, 0}), "0,0 0x0 255/255 255/0");
    EXPECT_EQ(recordOf({256, 16, 16, 17, 0, 0}), "0,0 0x0 0/0 0/16");       // 16 * 16 and 17 * 16 = 272
    EXPECT_EQ(recordOf({300, 20, 20, -20, 0, 0}), "0,0 0x0 44/144 44/112"); // 300, 400, -400 = 112 - 2 * 256
    EXPECT_EQ(recordOf({-1, 1, 1, 1, 0, 0}), "0,0 0x0 255/1 255/1");
    EXPECT_EQ(recordOf({kMax, kMax, kMax, kMin, 0, 0}), "0,0 0x0 255/1 255/0");
}

TEST_F(SensorFrameArithmeticTest, SizesBeyondThirtyTwoBitsKeepTheirLowBits)
{
    // (2^31 - 1) * 2 = 2^32 - 2 and (2^31 - 1) * (2^31 - 1) = 2^62 - 2^32 + 1.
    EXPECT_EQ(recordOf({1, 1, 2, kMax, kMax, kMax}), "0,0 65534x1 1/2 1/255");
    // (2^31 - 1)^3 and (2^31 - 1)^2 * -2^31: beyond 64 bits too.
    EXPECT_EQ(recordOf({1, kMax, kMax, kMin, kMax, kMax}), "0,0 65535x0 1/1 1/0");
    EXPECT_EQ(recordOf({1, kMin, kMin, kMax, kMin, kMin + 1}), "0,0 0x0 1/0 1/0");
}

TEST_F(SensorFrameArithmeticTest, NothingIsLostBeforeTheDivision)
{
    // (2^31 - 1) * 3 / 3 is 2^31 - 1, and (2^31 - 1)^2 / (2^31 - 1) as well.
    EXPECT_EQ(recordOf({3, 3, 1, 2, kMax, kMax}), "0,0 65535x65534 3/3 3/6");
    EXPECT_EQ(recordOf({kMax, kMax, 1, 3, kMax, 12345}), "0,0 65535x37035 255/255 255/253"); // 3 * 12345; -1 * 3
    // 1500000000 * 3 / 7 = 642857142 = 9809 * 65536 + 14518, and one more for 1500000001.
    EXPECT_EQ(recordOf({7, 3, 1, 1, 1500000000, 1500000001}), "0,0 14518x14519 7/3 7/3");
}

TEST_F(SensorFrameArithmeticTest, SmallestNumberMayBeDividedByMinusOne)
{
    EXPECT_EQ(recordOf({-1, 1, 1, 1, kMin, kMin + 1}), "0,0 0x65535 255/1 255/1"); // 2^31 and 2^31 - 1
    EXPECT_EQ(recordOf({-1, kMin, 1, -1, kMin, kMin}), "0,0 0x0 255/0 255/0");
    EXPECT_EQ(recordOf({kMin, 1, 1, 1, kMin, kMax}), "0,0 1x0 0/1 0/1");
}

TEST_F(SensorFrameArithmeticTest, OffsetsBeyondThirtyTwoBitsKeepTheirLowBits)
{
    // 3 * (2^31 - 1), and (2^31 - 1) + (2^31 - 1)^2.
    EXPECT_EQ(recordOfCrops(kMax, kMax, 2, kMax, kMax, kMax), "65533,0 0x0 1/2 1/255");
    // -2^31 - 2^31 * 7 and -2^31 + 2^62.
    EXPECT_EQ(recordOfCrops(kMin, kMin, 7, kMin, kMin, kMin), "0,0 0x0 1/7 1/0");
    EXPECT_EQ(recordOfCrops(kMax, kMin, -1, -1, kMin, kMax), "65535,1 0x0 1/255 1/255"); // 2^32 - 1, -2^32 + 1
}

} // namespace

} // namespace graphtest
