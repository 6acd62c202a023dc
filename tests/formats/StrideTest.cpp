// SPDX-License-Identifier: Apache-2.0
#include "formats/FormatRows.h"
#include "formats/FormatsFixture.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace formatstest {

namespace {

/// Codes whose lines are this many bytes a pixel, rounded up.
struct StrideRule {
    const char* codes;
    uint32_t bytes;
    uint32_t alignment;
};

constexpr StrideRule kStrideRules[] = {
    {"NV12", 1, 64},
    {"CILE CN12 CT12 IYUV TILE", 1, 128},
    {"BG8C GB8C GR8C RG8C", 1, 512},
    {"BA10 BG10 GB10 GR10 RG10 IR16 P010 P012 P01L PL12 PAFi PAFn PF8i PF1n PF2n PF4n PF6n bV0K", 2, 64},
    {"C010 C012 P412 PC10 PC12 T010 T012 V420", 2, 128},
    {"BG1C GB1C GR1C RG1C", 2, 512},
    {"PF1i PF2i PF4i PF6i CSL0 CSL1 CSL2 CSL3 CSL4 CSL5 CSL6 CSL7", 4, 64},
    {"y032", 6, 64},
};

/// Codes whose lines follow rules of another kind.
constexpr const char* kOtherRules = "CS42 C420 P01Y CIYU";

/// Codes with rows in the table, but without a rule.
constexpr const char* kRowsWithoutRule =
    "SR48 BGGR GBRG GRBG RGGB pBAA pGAA pgAA pRAA bV0G UYVY YUY2 CS40 S420 P21Y YV12 "
    "NANA M420 NV21 NV16 T01L TL12 P016 PF8n CSYI Y008 RESI MOVE";

constexpr uint32_t kWidths[] = {0,    1,    15,   16,   17,   31,   32,   33,   63,    64,    65,    84,       85,
                                127,  128,  129,  255,  256,  257,  511,  512,  513,   640,   1000,  1280,     1919,
                                1920, 1921, 3840, 4095, 4096, 4097, 4208, 8192, 65535, 65536, 65537, 100000001};

class StrideTest : public FormatsTest {
protected:
    /// All ways to ask must give @p expected and log @p lines.
    void expectStride(uint32_t fourcc, uint32_t width, uint32_t expected, const Lines& lines)
    {
        const NUXOFormats::qv_format_t format = bareFormat(fourcc);
        EXPECT_EQ(logOf([&] { EXPECT_EQ(::getBpl(fourcc, width), expected); }), lines)
            << characters(fourcc) << ", width " << width;
        EXPECT_EQ(logOf([&] { EXPECT_EQ(NUXOFormats::getBpl(format, width), expected); }), lines)
            << characters(fourcc) << ", width " << width;
    }

    void expectStrides(const char* fourcc, const std::vector<std::pair<uint32_t, uint32_t>>& strides)
    {
        for (const auto& [width, expected] : strides) expectStride(code(fourcc), width, expected, {});
    }

    static const Lines kWarning;
};

const Lines StrideTest::kWarning = {formatsLine(32, "bpl defaulting to width")};

uint32_t alignedUp(uint32_t value, uint32_t alignment)
{
    return (value + alignment - 1) / alignment * alignment;
}

TEST_F(StrideTest, LinesAreBytesAPixelRoundedUp)
{
    for (const StrideRule& rule : kStrideRules) {
        for (const uint32_t fourcc : codes(rule.codes)) {
            for (const uint32_t width : kWidths)
                expectStride(fourcc, width, alignedUp(width * rule.bytes, rule.alignment), {});
        }
    }
}

TEST_F(StrideTest, CommonWidths)
{
    expectStrides("NV12", {{1920, 1920}, {1921, 1984}, {0, 0}, {1, 64}}); // 31 * 64 = 1984
    expectStrides("BA10", {{1920, 3840}});
    expectStrides("BG1C", {{1000, 2048}}); // 2000 up to 4 * 512
    expectStrides("BG8C", {{1000, 1024}});
    expectStrides("IYUV", {{1921, 2048}});                  // 15.01 * 128
    expectStrides("CSL7", {{15, 64}, {16, 64}, {17, 128}}); // 60, 64, 68
    expectStrides("y032", {{10, 64}, {11, 128}, {1920, 11520}});
}

TEST_F(StrideTest, FormatsThatLookAlikeDiffer)
{
    expectStride(code("NV12"), 65, 128, {});
    expectStride(code("IYUV"), 129, 256, {});
    expectStride(code("bV0K"), 1000, 2048, {}); // 2000 up to 64
    expectStride(code("bV0G"), 1000, 1024, kWarning);
    expectStride(code("P01L"), 1000, 2048, {});
    expectStride(code("T01L"), 1000, 1024, kWarning);
    expectStride(code("PL12"), 1000, 2048, {});
    expectStride(code("TL12"), 1000, 1024, kWarning);
    expectStride(code("PF8i"), 1000, 2048, {});
    expectStride(code("PF8n"), 1000, 1024, kWarning);
    expectStride(code("PF1i"), 1000, 4032, {}); // 4000 up to 63 * 64
    expectStride(code("PF1n"), 1000, 2048, {});
    expectStride(code("P016"), 1000, 1024, kWarning);
    expectStride(code("S420"), 1000, 1024, kWarning);
    expectStride(code("C420"), 1000, 2048, {});
}

TEST_F(StrideTest, GroupsOf84PixelsTake128Bytes)
{
    // Half a pixel more than a whole number of groups begins another one: 0.5 / 42, 42.5 / 42.
    expectStrides("CS42",
                  {{0, 0}, {1, 128}, {2, 128}, {83, 128}, {84, 128}, {85, 256}, {86, 256}, {168, 256}, {169, 384}});
    expectStrides("CS42", {{1920, 2944}}); // 960 / 42 = 22.86, 23 * 128
    // The widest line that fits: 33554431 = 2^25 - 1 groups of 84.
    expectStrides("CS42", {{2818572204, 4294967168}, {2818572205, 0}});
}

TEST_F(StrideTest, PlanarCompressedLinesArePowersOfTwo)
{
    for (const char* fourcc : {"C420", "P01Y"}) {
        expectStrides(fourcc, {{0, 64}, {1, 256}, {128, 256}, {129, 512}, {256, 512}, {257, 1024}});
        expectStrides(fourcc, {{1920, 4096}, {2048, 4096}, {2049, 8192}}); // 3840, 4096, 4352
        expectStrides(fourcc, {{1073741824, 2147483648}, {1073741696, 2147483648}});
        expectStrides(fourcc, {{1073741825, 0}, {2147483520, 0}}); // the next power would be 2^32
        // Twice the width, rounded up, is 2^32, which is 0 in 32 bits.
        expectStrides(fourcc, {{2147483521, 64}, {2147483647, 64}, {2147483648, 64}});
        expectStrides(fourcc, {{2147483649, 256}, {4294967295, 64}, {4294967168, 0}});
    }
    expectStrides("CIYU", {{0, 64}, {1, 256}, {256, 256}, {257, 512}, {1920, 2048}, {2048, 2048}, {2049, 4096}});
    expectStrides("CIYU", {{2147483648, 2147483648}, {1073741825, 2147483648}, {2147483649, 0}, {4294967040, 0}});
    expectStrides("CIYU", {{4294967041, 64}, {4294967295, 64}});
}

TEST_F(StrideTest, LongestLinesWrap)
{
    expectStrides("NV12", {{4294967232, 4294967232}, {4294967233, 0}, {4294967295, 0}});
    expectStrides("CN12", {{4294967168, 4294967168}, {4294967169, 0}});
    expectStrides("BG8C", {{4294966784, 4294966784}, {4294966785, 0}});
    expectStrides("BA10", {{2147483616, 4294967232}, {2147483617, 0}, {2147483648, 0}, {2147483649, 64}});
    expectStrides("PC10", {{2147483584, 4294967168}, {2147483585, 0}, {2147483649, 128}});
    expectStrides("BG1C", {{2147483392, 4294966784}, {2147483393, 0}, {2147483649, 512}});
    expectStrides("CSL0", {{1073741808, 4294967232}, {1073741809, 0}, {1073741825, 64}, {4294967295, 0}});
    // 6 * 715827882 = 4294967292; 6 * 715827883 = 2^32 + 2
    expectStrides("y032", {{715827872, 4294967232}, {715827882, 0}, {715827883, 64}});
    expectStride(code("UYVY"), 4294967233, 0, kWarning);
}

TEST_F(StrideTest, CodesWithoutARuleTakeTheWidthAndWarn)
{
    const std::vector<uint32_t> rows = codes(kRowsWithoutRule);
    EXPECT_EQ(rows.size(), 28U);
    std::vector<uint32_t> all = second::codesWithoutRow();
    all.insert(all.end(), rows.begin(), rows.end());
    for (const uint32_t fourcc :
         {0U, 1U, 0x3231564EU, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU, code("nv12"), code("CSL8")})
        all.push_back(fourcc);
    for (const uint32_t fourcc : all) {
        for (const uint32_t width : {0U, 1U, 64U, 65U, 1920U})
            expectStride(fourcc, width, alignedUp(width, 64), kWarning);
    }
}

TEST_F(StrideTest, EveryRowHasARuleOrDoesNot)
{
    std::vector<uint32_t> known = codes(std::string(kOtherRules) + " " + kRowsWithoutRule);
    for (const StrideRule& rule : kStrideRules) {
        for (const uint32_t fourcc : codes(rule.codes)) known.push_back(fourcc);
    }
    EXPECT_EQ(known.size(), std::size(kFormatRows));
    for (const FormatRow& row : kFormatRows)
        EXPECT_EQ(std::count(known.begin(), known.end(), code(row.code)), 1) << row.code;
}

TEST_F(StrideTest, TableIsNotNeeded)
{
    NUXOFormats::gNUXOFormats.clear();
    expectStrides("NV12", {{1920, 1920}});
    EXPECT_TRUE(NUXOFormats::gNUXOFormats.empty());
}

TEST_F(StrideTest, OnlyTheCodeOfAFormatMatters)
{
    NUXOFormats::qv_format_t format;
    EXPECT_EQ(NUXOFormats::getFormatByName("UYVY", format), 0);
    format.fourcc = code("y032");
    EXPECT_EQ(logOf([&format] { EXPECT_EQ(NUXOFormats::getBpl(format, 11), 128U); }), Lines());
}

} // namespace

} // namespace formatstest
