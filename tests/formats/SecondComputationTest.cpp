// SPDX-License-Identifier: Apache-2.0
// The library against the second computation: every code at every corner, and many random questions.
#include "formats/FormatsFixture.h"
#include "formats/LibraryComparison.h"

#include <random>

namespace formatstest {

namespace {

using second::BufferQuestion;
using second::FormatQuestion;
using second::InputQuestion;
using second::PlaneQuestion;

/// Where roundings and alignments change and 32 bits end.
const std::vector<uint32_t> kCorners = {
    0,          1,          2,          3,          31,         32,         33,         63,         64,
    65,         84,         85,         127,        128,        129,        255,        256,        257,
    511,        512,        513,        4095,       4096,       4097,       8195,       65535,      65536,
    65537,      16777215,   16777216,   16777217,   715827882,  715827883,  1073741823, 1073741824, 1073741825,
    2147483520, 2147483521, 2147483647, 2147483648, 2147483649, 2818572204, 2818572205, 2863311531, 4294967039,
    4294967040, 4294967041, 4294967232, 4294967233, 4294967294, 4294967295};

/// The codes of rows, those that have a frame format only, and some that nothing knows.
std::vector<uint32_t> allCodes()
{
    std::vector<uint32_t> result = second::codesWithoutRow();
    for (const NUXOFormats::qv_format_t& row : NUXOFormats::gNUXOFormatsInternal) result.push_back(row.fourcc);
    for (const uint32_t unknown : {0U, 1U, 0x3231564EU, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU})
        result.push_back(unknown);
    for (const char* unknown : {"NONE", "bV0D", "bV0U", "CSL8", "nv12"}) result.push_back(code(unknown));
    return result;
}

class SecondComputationTest : public FormatsTest {
protected:
    SecondComputationTest() : mCodes(allCodes()) { mLog.setMask(0); }

    template <class Question> void compare(const Question& question)
    {
        ++mQuestions;
        const char* const what = second::difference(question);
        ASSERT_TRUE(what == nullptr) << what << " of " << question;
    }

    uint32_t below(uint32_t bound) { return static_cast<uint32_t>(mRandom() % bound); }
    bool oneIn(uint32_t n) { return below(n) == 0; }
    template <class Value> Value oneOf(const std::vector<Value>& values)
    {
        return values[below(static_cast<uint32_t>(values.size()))];
    }

    /// A corner, the size of an image, or anything.
    uint32_t anyNumber()
    {
        if (oneIn(3)) return oneOf(kCorners);
        return oneIn(2) ? below(10000) : static_cast<uint32_t>(mRandom());
    }

    uint32_t anyCode() { return oneIn(20) ? static_cast<uint32_t>(mRandom()) : oneOf(mCodes); }
    uint32_t anyFrameFormat() { return oneIn(20) ? static_cast<uint32_t>(mRandom()) : below(70); }
    uint32_t anyDepth() { return oneIn(20) ? static_cast<uint32_t>(mRandom()) : below(18); }
    /// Outputs are null in a quarter of the questions.
    uint32_t anyOutputs() { return oneIn(4) ? below(32) : 0; }

    std::vector<uint32_t> mCodes;
    size_t mQuestions = 0;
    std::mt19937 mRandom{20240229}; // any number, but always the same
};

TEST_F(SecondComputationTest, EveryCodeAtEveryCorner)
{
    for (const uint32_t fourcc : mCodes) {
        for (const uint32_t length : kCorners) {
            for (const uint32_t height : kCorners) {
                // Once the line is given, once it follows from the width; depths of 8, 10 and 12 bits in turn.
                const uint32_t depth = 8 + 2 * (height % 3);
                ASSERT_NO_FATAL_FAILURE(compare(FormatQuestion{fourcc, depth, 0, height, length, 0, false, 0}));
                ASSERT_NO_FATAL_FAILURE(compare(FormatQuestion{fourcc, depth, length, height, 0, 0, false, 0}));
            }
        }
    }
    EXPECT_EQ(mQuestions, (85 + 20 + 11) * kCorners.size() * kCorners.size() * 2);
}

TEST_F(SecondComputationTest, EveryFrameFormatAtEveryCorner)
{
    for (uint32_t format = 0; format < 70; ++format) {
        for (const uint32_t stride : kCorners) {
            for (const uint32_t height : kCorners) {
                const uint32_t depth = 8 + 2 * (height % 3);
                ASSERT_NO_FATAL_FAILURE(
                    compare(BufferQuestion{format, depth, 0, stride, height, 0, stride % 2 == 0, 0}));
            }
        }
    }
}

TEST_F(SecondComputationTest, RandomFrames)
{
    for (int i = 0; i < 300000; ++i) {
        const uint32_t bpl = oneIn(3) ? 0 : anyNumber();
        ASSERT_NO_FATAL_FAILURE(compare(
            FormatQuestion{anyCode(), anyDepth(), anyNumber(), anyNumber(), bpl, anyNumber(), oneIn(2), anyOutputs()}));
    }
}

TEST_F(SecondComputationTest, RandomBuffers)
{
    for (int i = 0; i < 300000; ++i) {
        const uint32_t plane = oneIn(20) ? anyNumber() : below(4);
        ASSERT_NO_FATAL_FAILURE(compare(BufferQuestion{anyFrameFormat(), anyDepth(), plane, anyNumber(), anyNumber(),
                                                       anyNumber(), oneIn(2), anyOutputs()}));
    }
}

TEST_F(SecondComputationTest, RandomPlanes)
{
    const std::vector<uint32_t> tiles = {0, 1, 7, 8, 32, 64, 100, 128, 256, 512, 4096};
    for (int i = 0; i < 200000; ++i) {
        const uint32_t tile = oneIn(4) ? anyNumber() : oneOf(tiles);
        ASSERT_NO_FATAL_FAILURE(compare(PlaneQuestion{anyNumber(), anyNumber(), tile, oneIn(2), anyOutputs()}));
    }
}

TEST_F(SecondComputationTest, EveryInput)
{
    for (uint32_t pin = 0; pin < 8; ++pin) {
        for (uint32_t format = 0; format < 70; ++format) {
            for (uint32_t type = 0; type < 128; ++type)
                ASSERT_NO_FATAL_FAILURE(compare(InputQuestion{pin, format, type, (pin + format + type) % 2}));
        }
    }
    for (int i = 0; i < 1000; ++i)
        ASSERT_NO_FATAL_FAILURE(compare(InputQuestion{anyNumber(), anyNumber(), anyNumber(), anyOutputs()}));
}

TEST_F(SecondComputationTest, StrideRulesAreThoseThatDoNotWarn)
{
    for (const uint32_t fourcc : mCodes) {
        EXPECT_EQ(logOf([fourcc] { (void)::getBpl(fourcc, 64); }).empty(), second::hasStrideRule(fourcc))
            << characters(fourcc);
    }
}

/// The second computation has its own single precision, which is held against the compiler's where both are defined.
TEST_F(SecondComputationTest, SinglePrecisionIsThatOfTheCompiler)
{
    for (int i = 0; i < 200000; ++i) {
        const uint32_t bpl = anyNumber();
        const uint32_t height = anyNumber();
        volatile float size = static_cast<float>(bpl) * static_cast<float>(height);
        const float half = size * 1.5F;
        if (half >= 4294967296.0F) continue;
        ASSERT_EQ(second::plainFrameSize(code("NV12"), bpl, height), static_cast<uint32_t>(half))
            << bpl << " " << height;
    }
}

} // namespace

} // namespace formatstest
