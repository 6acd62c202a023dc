// SPDX-License-Identifier: Apache-2.0
#include "formats/FormatRows.h"
#include "formats/FormatsFixture.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/formats/qv_css_frame_format.h>

#include <algorithm>
#include <set>

namespace formatstest {

namespace {

struct Mapping {
    const char* codes;
    uint32_t frameFormat;
    uint8_t raw;
    uint8_t p64;
};

constexpr Mapping kMappings[] = {
    {"BGGR BG8C BG1C", 22, 1, 0},
    {"GBRG GB8C GB1C", 23, 1, 0},
    {"GRBG GR10 GR8C GR1C", 20, 1, 0},
    {"RGGB RG8C RG1C", 21, 1, 0},
    {"BA10 BA12 CSBA GR08", 25, 1, 0},
    {"bV0E bV0F bV0G bV0H bV0I bV0J bV0K bV0L", 43, 1, 0},
    {"bV0M bV0N bV0O bV0P bV0Q bV0R bV0S bV0T", 43, 1, 1},
    {"CSL0 CSL1 CSL2 CSL3 CSL4 CSL5 CSL6 CSL7", 42, 1, 0},
    {"PAFn PF8n PF1n PF2n PF4n PF6n", 61, 1, 0},
    {"PAFi PF8i PF1i PF2i PF4i PF6i", 62, 1, 0},
    {"CS40 CS42", 3, 0, 1},
    {"V420 P412 S420 C420 IYUV CIYU P01Y CSYI", 3, 0, 0},
    {"YV12", 4, 0, 0},
    {"NV12 CN12 CT12", 5, 0, 0},
    {"TILE CILE", 7, 0, 0},
    {"NV21", 8, 0, 0},
    {"NV16", 11, 0, 0},
    {"YUY2", 14, 0, 0},
    {"CSYP", 16, 0, 0},
    {"M420 CSYC", 24, 0, 0},
    {"BIN8", 28, 0, 0},
    {"y032", 47, 0, 0},
    {"P01L", 49, 0, 0},
    {"P010 PC10", 50, 0, 0},
    {"PL12", 51, 0, 0},
    {"P012 PC12", 52, 0, 0},
    {"T010 C010", 54, 0, 0},
    {"T012 C012", 56, 0, 0},
    {"IR16", 63, 0, 0},
};

constexpr const char* kRowsWithoutMapping =
    "SR48 BG10 GB10 RG10 pBAA pGAA pgAA pRAA UYVY P21Y NANA T01L TL12 P016 Y008 "
    "RESI MOVE";

/// What a call must log, whatever comes of it.
const Lines kEntry = {"8 XOS_PSYS_FORMAT_UTILS[XOS] E:fourcc_to_css_frame_format"};

constexpr uint8_t kUnwrittenFlag = 0xA5;

class FrameFormatTest : public FormatsTest {
protected:
    void expectMapping(uint32_t fourcc, const Mapping& expected)
    {
        SCOPED_TRACE(characters(fourcc));
        // A bit for each output that is given.
        for (int given = 0; given < 8; ++given) {
            EXPECT_EQ(logOf([&] { EXPECT_EQ(map(fourcc, given), StatusOk); }), kEntry);
            EXPECT_EQ(mFrameFormat, (given & 1) != 0 ? expected.frameFormat : kUnwritten);
            EXPECT_EQ(mRaw, (given & 2) != 0 ? expected.raw : kUnwrittenFlag);
            EXPECT_EQ(mP64, (given & 4) != 0 ? expected.p64 : kUnwrittenFlag);
        }
    }

    void expectNoMapping(uint32_t fourcc)
    {
        SCOPED_TRACE(characters(fourcc));
        EXPECT_EQ(logOf([&] { EXPECT_EQ(map(fourcc, 7), StatusBadArgument); }), kEntry);
        EXPECT_EQ(mFrameFormat, kUnwritten);
        EXPECT_EQ(mRaw, kUnwrittenFlag);
        EXPECT_EQ(mP64, kUnwrittenFlag);
        EXPECT_EQ(map(fourcc, 0), StatusBadArgument);
    }

private:
    int map(uint32_t fourcc, int given)
    {
        mFrameFormat = kUnwritten;
        mRaw = mP64 = kUnwrittenFlag;
        return fourcc_to_css_frame_format(fourcc, (given & 1) != 0 ? &mFrameFormat : nullptr,
                                          (given & 2) != 0 ? &mRaw : nullptr, (given & 4) != 0 ? &mP64 : nullptr);
    }

    uint32_t mFrameFormat = 0;
    uint8_t mRaw = 0;
    uint8_t mP64 = 0;
};

TEST_F(FrameFormatTest, EveryMappedCodeGivesItsFormatAndFlags)
{
    for (const Mapping& mapping : kMappings) {
        for (const uint32_t fourcc : codes(mapping.codes)) expectMapping(fourcc, mapping);
    }
}

TEST_F(FrameFormatTest, SomeRowsHaveNoFrameFormat)
{
    const std::vector<uint32_t> rows = codes(kRowsWithoutMapping);
    EXPECT_EQ(rows.size(), 17U);
    for (const uint32_t fourcc : rows) expectNoMapping(fourcc);
}

TEST_F(FrameFormatTest, OneOfTheTenBitBayerOrdersHasAFrameFormat)
{
    expectMapping(code("GR10"), {"", 20, 1, 0});
    for (const char* fourcc : {"BG10", "GB10", "RG10"}) expectNoMapping(code(fourcc));
}

TEST_F(FrameFormatTest, UnknownCodesHaveNoFrameFormat)
{
    for (const uint32_t fourcc : {0U, 5U, 0x3231564EU, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) expectNoMapping(fourcc);
    // Beside the ends of the runs, and in small letters.
    for (const char* fourcc : {"bV0D", "bV0U", "CSL/", "CSL8", "nv12", "BV0G", "pafn"}) expectNoMapping(code(fourcc));
}

TEST_F(FrameFormatTest, EveryRowIsMappedOrNot)
{
    std::set<uint32_t> mapped;
    size_t count = 0;
    for (const Mapping& mapping : kMappings) {
        for (const uint32_t fourcc : codes(mapping.codes)) {
            mapped.insert(fourcc);
            ++count;
        }
    }
    EXPECT_EQ(mapped.size(), count) << "no code stands twice";
    const std::vector<uint32_t> withoutMapping = codes(kRowsWithoutMapping);
    for (const FormatRow& row : kFormatRows) {
        const bool isWithout = std::count(withoutMapping.begin(), withoutMapping.end(), code(row.code)) != 0;
        EXPECT_NE(mapped.erase(code(row.code)) != 0, isWithout) << row.code;
    }
    std::set<uint32_t> withoutRow;
    for (const uint32_t fourcc : second::codesWithoutRow()) withoutRow.insert(fourcc);
    EXPECT_EQ(mapped, withoutRow);
    EXPECT_EQ(withoutRow.size(), 20U);
}

} // namespace

} // namespace formatstest
