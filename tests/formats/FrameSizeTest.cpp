// SPDX-License-Identifier: Apache-2.0
#include "formats/FormatRows.h"
#include "formats/FormatsFixture.h"

#include <algorithm>
#include <map>

namespace formatstest {

namespace {

using NUXOFormats::calculateBufferSize;

constexpr const char* kRawFrames = "BA10 BG10 GB10 GR10 RG10 BGGR GBRG GRBG RGGB CSBA bV0K";
constexpr const char* kTiled = "T010 T012 TILE";
constexpr const char* kCompressed = "BG1C BG8C GB1C GB8C GR1C GR8C RG1C RG8C "
                                    "C010 C012 C420 CILE CIYU CN12 CT12 P01Y PC10 PC12";
/// Some of the others: they have one and a half line of bytes a line, whatever planes they have.
constexpr const char* kOneAndAHalf =
    "NV12 IYUV P010 P21Y bV0G IR16 UYVY YUY2 NV16 NANA CSL0 CSL7 Y008 MOVE RESI PAFn PAFi "
    "PF8i CS40 CS42 V420 SR48 pBAA T01L TL12 BA12 GR08 bV0E CSYP nv12";

class FrameSizeTest : public FormatsTest {
protected:
    /// Frames of an uncompressed code with a given line: they say nothing and leave table outputs alone.
    void expectSize(uint32_t fourcc, uint32_t bpl, uint32_t height, uint32_t expected)
    {
        PerPlane offsets = kAllUnwritten;
        PerPlane sizes = kAllUnwritten;
        const NUXOFormats::qv_format_t format = bareFormat(fourcc);
        EXPECT_EQ(logOf([&] {
                      EXPECT_EQ(calculateBufferSize(format, 77, height, bpl, offsets.data(), sizes.data()), expected);
                  }),
                  Lines())
            << characters(fourcc) << ", " << bpl << " x " << height;
        EXPECT_EQ(offsets, kAllUnwritten);
        EXPECT_EQ(sizes, kAllUnwritten);
        EXPECT_EQ(calculateBufferSize(format, 77, height, bpl, nullptr, nullptr), expected);
    }

    void expectSizes(const char* list, uint32_t bpl, uint32_t height, uint32_t expected)
    {
        for (const uint32_t fourcc : codes(list)) expectSize(fourcc, bpl, height, expected);
    }
};

TEST_F(FrameSizeTest, RawFramesAreLinesTimesHeight)
{
    expectSizes(kRawFrames, 1920, 1080, 2073600);
    expectSizes(kRawFrames, 3, 5, 15);
}

TEST_F(FrameSizeTest, RawFramesStayExactAndWrap)
{
    expectSizes(kRawFrames, 4097, 4097, 16785409); // more than 24 bits
    expectSizes(kRawFrames, 65536, 65536, 0);
    expectSizes(kRawFrames, 65537, 65537, 131073);      // (2^16 + 1)^2 = 2^32 + 2^17 + 1
    expectSizes(kRawFrames, 4294967295, 4294967295, 1); // (-1)^2
}

TEST_F(FrameSizeTest, TiledFramesHaveWholeTileRowsInBothPlanes)
{
    expectSizes(kTiled, 1920, 1080, 3133440); // 1920 * (544 + 1088)
    expectSizes(kTiled, 128, 0, 0);
    expectSizes(kTiled, 128, 1, 4096);   // 0 + 32 rows
    expectSizes(kTiled, 128, 2, 8192);   // 32 + 32
    expectSizes(kTiled, 128, 64, 12288); // 32 + 64
    expectSizes(kTiled, 128, 65, 16384); // 32 + 96: half of 65 is 32
    expectSizes(kTiled, 128, 66, 20480); // 64 + 96
}

TEST_F(FrameSizeTest, TiledFramesWrap)
{
    // Half is 2147483647, up to 2^31; the whole goes up to 2^32, which is 0.
    expectSizes(kTiled, 1, 4294967295, 2147483648);
    expectSizes(kTiled, 3, 4294967295, 2147483648);
    expectSizes(kTiled, 65536, 65536, 2147483648); // 2^16 * (2^15 + 2^16) = 2^31 + 2^32
}

TEST_F(FrameSizeTest, VectorisedFramesHaveHalfTheLinesInSinglePrecision)
{
    expectSizes("y032", 11520, 1080, 6220800); // 11520 * 540
    expectSizes("y032", 64, 1, 0);
    expectSizes("y032", 64, 3, 64);
    // 4097 * 4097 = 16785409 lies between two numbers of 24 bits, 16785408 = 2 * 8392704 being the even one.
    expectSizes("y032", 4097, 8195, 16785408);
    expectSizes("y032", 4097, 8194, 16785408);
    // 2^32 - 1 rounds to 2^32, which is 0 modulo 2^32, and 2^31 - 1 to 2^31.
    expectSizes("y032", 4294967295, 2, 0);
    expectSizes("y032", 1, 4294967295, 2147483648);
    expectSizes("y032", 4294967295, 4294967295, 0);
}

TEST_F(FrameSizeTest, OthersHaveOneAndAHalfLineALine)
{
    expectSizes(kOneAndAHalf, 1920, 1080, 3110400);
    expectSizes(kOneAndAHalf, 1, 1, 1); // 1.5 without its fraction
    expectSizes(kOneAndAHalf, 3, 3, 13);
    expectSizes(kOneAndAHalf, 64, 0, 0);
}

TEST_F(FrameSizeTest, SinglePrecisionShows)
{
    // 16785409 rounds to 16785408, and 1.5 times that is 25178112. Multiplying the height by 1.5 first would give 25178114,
    // exact arithmetic 25178113.
    expectSizes(kOneAndAHalf, 4097, 4097, 25178112);
    // 16801801 rounds to the even neighbour again, 16801800 = 2 * 8400900.
    expectSizes("NV12", 4099, 4099, 25202700);
    // 16793603 rounds up, to 16793604 = 2 * 8396802.
    expectSizes("NV12", 4099, 4097, 25190406);
    // A line of 2^24 + 1 bytes is 2^24 bytes in single precision.
    expectSizes("NV12", 16777217, 1, 25165824);
    expectSizes("NV12", 1, 16777217, 25165824);
}

TEST_F(FrameSizeTest, SizesAboveFourGigabytesWrap)
{
    // 1.5 * 2^32 = 2^32 + 2^31
    expectSizes(kOneAndAHalf, 65536, 65536, 2147483648);
    expectSizes(kOneAndAHalf, 4294967295, 1, 2147483648);
    // 1.5 * 2^31 = 2^31 + 2^30 fits.
    expectSizes("NV12", 32768, 65536, 3221225472);
    // 1.5 * 2^33 and 1.5 * 2^64 are multiples of 2^32.
    expectSizes("NV12", 131072, 65536, 0);
    expectSizes("NV12", 4294967295, 4294967295, 0);
    // 65537 * 65537 = 2^32 + 2^17 + 1 rounds to 2^32 + 2^17 (steps of 512); times 1.5: 2^32 + 2^31 + 196608.
    expectSizes("NV12", 65537, 65537, 2147680256);
}

TEST_F(FrameSizeTest, LineIsThatOfTheFormatWhenNoneIsGiven)
{
    const auto size = [](const char* fourcc, uint32_t width, uint32_t height) {
        return calculateBufferSize(bareFormat(code(fourcc)), width, height, 0, nullptr, nullptr);
    };
    EXPECT_EQ(logOf([&size] {
                  EXPECT_EQ(size("NV12", 1920, 1080), 3110400U);
                  EXPECT_EQ(size("NV12", 1921, 1080), 3214080U); // 1984 * 1620
                  EXPECT_EQ(size("BA10", 1920, 1080), 4147200U); // 3840 * 1080
                  EXPECT_EQ(size("TILE", 1920, 1080), 3133440U);
                  EXPECT_EQ(size("y032", 1920, 1080), 6220800U); // 11520 * 540
                  EXPECT_EQ(size("NV12", 0, 1080), 0U);
              }),
              Lines());
}

TEST_F(FrameSizeTest, MissingRuleWarnsOnlyWhenTheLineIsNotGiven)
{
    const auto size = [](const char* fourcc, uint32_t bpl) {
        return calculateBufferSize(bareFormat(code(fourcc)), 1000, 10, bpl, nullptr, nullptr);
    };
    const Lines warning = {formatsLine(32, "bpl defaulting to width")};
    EXPECT_EQ(logOf([&size] { EXPECT_EQ(size("UYVY", 0), 15360U); }), warning); // 1024 * 15
    EXPECT_EQ(logOf([&size] { EXPECT_EQ(size("UYVY", 1000), 15000U); }), Lines());
    EXPECT_EQ(logOf([&size] { EXPECT_EQ(size("BGGR", 0), 10240U); }), warning);
    EXPECT_EQ(logOf([&size] { EXPECT_EQ(size("CSBA", 0), 10240U); }), warning);
    EXPECT_EQ(logOf([&size] { EXPECT_EQ(size("P21Y", 0), 15360U); }), warning);
    EXPECT_EQ(logOf([&size] { EXPECT_EQ(size("none", 0), 15360U); }), warning);
}

TEST_F(FrameSizeTest, CompressedFramesAreCompressedBuffers)
{
    for (const uint32_t fourcc : codes(kCompressed)) {
        SCOPED_TRACE(characters(fourcc));
        NUXOFormats::qv_format_t row;
        EXPECT_EQ(NUXOFormats::getFormatByFourcc(fourcc, row), 0);
        // Once with a given line and once with that of the format.
        for (const uint32_t bpl : {8192U, 0U}) {
            const uint32_t line = bpl != 0 ? bpl : ::getBpl(fourcc, 1920);
            PerPlane offsets = kAllUnwritten;
            PerPlane sizes = kAllUnwritten;
            PerPlane expectedOffsets = {};
            PerPlane expectedSizes = {};
            const uint32_t expected = NUXOFormats::calculateDec400BufferSize(
                fourcc, 1920, 1080, line, row.bitDepth, expectedOffsets.data(), expectedSizes.data());
            EXPECT_GT(expected, line * 1080);
            EXPECT_EQ(calculateBufferSize(row, 1920, 1080, bpl, offsets.data(), sizes.data()), expected);
            EXPECT_EQ(offsets, expectedOffsets);
            EXPECT_EQ(sizes, expectedSizes);
            EXPECT_EQ(calculateBufferSize(row, 1920, 1080, bpl, nullptr, nullptr), expected);
            EXPECT_EQ(calculateBufferSize(row, 1920, 1080, bpl, offsets.data(), nullptr), expected);
            EXPECT_EQ(calculateBufferSize(row, 1920, 1080, bpl, nullptr, sizes.data()), expected);
        }
    }
}

TEST_F(FrameSizeTest, BitDepthOfTheFormatDecidesWhetherItCanBeCompressed)
{
    PerPlane offsets = kAllUnwritten;
    PerPlane sizes = kAllUnwritten;
    EXPECT_NE(calculateBufferSize(bareFormat(code("BG1C"), 10), 0, 8, 512, nullptr, nullptr), 0U);
    EXPECT_EQ(calculateBufferSize(bareFormat(code("BG1C"), 9), 0, 8, 512, offsets.data(), sizes.data()), 0U);
    EXPECT_EQ(offsets, PerPlane());
    EXPECT_EQ(sizes, PerPlane());
}

TEST_F(FrameSizeTest, EveryRowFollowsItsRule)
{
    std::map<uint32_t, uint32_t> special; // of 1920 x 1080
    for (const uint32_t fourcc : codes(kRawFrames)) special[fourcc] = 2073600;
    for (const uint32_t fourcc : codes(kTiled)) special[fourcc] = 3133440;
    special[code("y032")] = 1036800; // 1920 * 540
    const std::vector<uint32_t> compressed = codes(kCompressed);
    EXPECT_EQ(compressed.size(), 18U);
    for (const FormatRow& row : kFormatRows) {
        if (std::count(compressed.begin(), compressed.end(), code(row.code)) != 0) continue;
        const auto rule = special.find(code(row.code));
        expectSize(code(row.code), 1920, 1080, rule != special.end() ? rule->second : 3110400);
    }
}

TEST_F(FrameSizeTest, TableIsNotNeeded)
{
    NUXOFormats::gNUXOFormats.clear();
    expectSizes("NV12 BA10", 0, 0, 0);
    EXPECT_TRUE(NUXOFormats::gNUXOFormats.empty());
}

} // namespace

} // namespace formatstest
