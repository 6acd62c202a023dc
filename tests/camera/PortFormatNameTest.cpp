// SPDX-License-Identifier: Apache-2.0
// How the name that a port gives for its format is understood.
#include "camera/PortFormatFixture.h"

namespace graphtest {

namespace {

struct FormatRow {
    const char* name;
    uint32_t width;
    uint32_t code;
    uint32_t bpl;
    uint32_t bpp;
};

class PortFormatNameTest : public PortFormatTest {
protected:
    /// Asks a port with this format, 1000 x 750 pixels, whose peer adds nothing.
    int askFormat(const std::string& name, const std::string& more = "")
    {
        loadPair("id=\"5\" width=\"1000\" height=\"750\" " + more);
        out()->addValue(NUXO_KEY_FORMAT, name);
        return ask();
    }

    /// The lines of a name that the table lacks, up to the search by code.
    static Lines unknownName(const std::string& name)
    {
        return {"NUXOFormats[XOS]/16 Could not find format with name " + name,
                "16 Error: Couldn't find format " + name + " from the formats XML. Fallback to fourcc."};
    }

    /// The same when its first four characters are no code of the table either.
    static Lines unknownCode(const std::string& name, uint32_t code)
    {
        Lines lines = unknownName(name);
        lines.push_back("NUXOFormats[XOS]/16 Could not find format with fourcc " +
                        std::to_string(static_cast<int32_t>(code)));
        lines.push_back("16 Error: Couldn't find  format by fourcc. Try defaulting to YUV420_8_SP(NV12)");
        return lines;
    }

    /// Adds a format of the client's own to the table.
    static void addRow(const std::string& name, uint32_t code, uint32_t bpp)
    {
        NUXOFormats::initNUXOFormats();
        NUXOFormats::qv_format_t row;
        row.name = name;
        row.fourcc = code;
        row.bpp = bpp;
        NUXOFormats::gNUXOFormats.push_back(row);
    }
};

TEST_F(PortFormatNameTest, NamesAreLookedUpInTheTable)
{
    const FormatRow rows[] = {
        {"YUV420_8_SP", 1920, fourcc("NV12"), 1920, 12},    // multiples of 64: 30 * 64
        {"YUV420_8_SP", 1921, fourcc("NV12"), 1984, 12},    // 31 * 64
        {"YUV420_8_SP_C", 1930, fourcc("CN12"), 2048, 12},  // multiples of 128
        {"GRBG_10", 1920, fourcc("GR10"), 3840, 16},        // two bytes a pixel, 60 * 64
        {"BGGR_8_C", 1000, fourcc("BG8C"), 1024, 8},        // multiples of 512
        {"BGGR_10_C", 1000, fourcc("BG1C"), 2048, 16},      // two bytes a pixel, multiples of 512
        {"YUV420_10_V", 1000, fourcc("y032"), 6016, 24},    // six bytes a pixel, 94 * 64
        {"BGGR_12_LI", 1000, fourcc("CSL4"), 4032, 12},     // four bytes a pixel, 63 * 64
        {"YUV420_12_P64", 1920, fourcc("CS42"), 2944, 18},  // 128 for each 42 pairs begun: 960 / 42 -> 23
        {"YUV420_16_PL_C", 1000, fourcc("C420"), 2048, 24}, // two bytes a pixel, a power of two
    };
    for (const FormatRow& row : rows) {
        loadPair("id=\"5\" height=\"750\" format=\"" + std::string(row.name) + "\" width=\"" +
                 std::to_string(row.width) + "\"");
        EXPECT_EQ(ask(), StatusOk) << row.name;
        expectLayout(row.code, row.bpl, row.bpp);
        EXPECT_TRUE(loggedExactly({})) << row.name;
        EXPECT_EQ(informedByAsking(), Lines{"bpl set to " + std::to_string(row.bpl) + " for " + row.name});
    }
}

TEST_F(PortFormatNameTest, FormatWithoutAStrideRuleOfItsOwnIsWarnedOf)
{
    EXPECT_EQ(askFormat("MOT_VEC"), StatusOk);
    expectLayout(fourcc("MOVE"), 1024, 32); // multiples of 64
    EXPECT_TRUE(loggedExactly({"NUXOFormats[XOS]/32 bpl defaulting to width"}));
}

TEST_F(PortFormatNameTest, TableIsFilledWhenItIsEmpty)
{
    ASSERT_TRUE(NUXOFormats::gNUXOFormats.empty());
    EXPECT_EQ(askFormat("YUV420_8_SP"), StatusOk);
    EXPECT_EQ(NUXOFormats::gNUXOFormats.size(), NUXOFormats::gNUXOFormatsInternal.size());
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(PortFormatNameTest, FormatsOfTheClientCountToo)
{
    addRow("MINE", fourcc("P010"), 7); // the name is its own, the code is not
    EXPECT_EQ(askFormat("MINE"), StatusOk);
    expectLayout(fourcc("P010"), 2048, 7); // two bytes a pixel, 32 * 64
    EXPECT_EQ(informedByAsking(), Lines{"bpl set to 2048 for MINE"});
}

TEST_F(PortFormatNameTest, CodeIsUnderstoodForAName)
{
    EXPECT_EQ(askFormat("NV12"), StatusOk);
    expectLayout(0x4E563132, 1024, 12); // 'N' 'V' '1' '2'
    EXPECT_TRUE(loggedExactly(unknownName("NV12")));
    EXPECT_EQ(informedByAsking(), Lines{"bpl set to 1024 for YUV420_8_SP"});
}

TEST_F(PortFormatNameTest, FirstFourCharactersOfAnUnknownNameAreTheCode)
{
    EXPECT_EQ(askFormat("PC10_99"), StatusOk);
    expectLayout(fourcc("PC10"), 2048, 24); // two bytes a pixel, multiples of 128
    EXPECT_TRUE(loggedExactly(unknownName("PC10_99")));

    EXPECT_EQ(askFormat("GRBG_99"), StatusOk);
    expectLayout(fourcc("GRBG"), 1024, 8);
    Lines lines = unknownName("GRBG_99");
    lines.emplace_back("NUXOFormats[XOS]/32 bpl defaulting to width");
    EXPECT_TRUE(loggedExactly(lines));
}

TEST_F(PortFormatNameTest, NamesAndCodesAreCaseSensitive)
{
    EXPECT_EQ(askFormat("nv12"), StatusOk);
    expectLayout(fourcc("NV12"), 1024, 12);
    EXPECT_TRUE(loggedExactly(unknownCode("nv12", fourcc("nv12"))));
}

TEST_F(PortFormatNameTest, WhatIsNeitherNameNorCodeIsTakenForTheCommonFormat)
{
    EXPECT_EQ(askFormat("YUV420_X"), StatusOk);
    expectLayout(fourcc("NV12"), 1024, 12);
    EXPECT_TRUE(loggedExactly(unknownCode("YUV420_X", fourcc("YUV4"))));
    EXPECT_EQ(informedByAsking(), Lines{"bpl set to 1024 for YUV420_8_SP"});
}

TEST_F(PortFormatNameTest, ShortNamesAreFilledUpWithZeroBytes)
{
    for (const auto& [name, code] :
         std::map<std::string, uint32_t>{{"", 0}, {"N", 0x4E000000}, {"NV", 0x4E560000}, {"NV1", 0x4E563100}}) {
        EXPECT_EQ(askFormat(name), StatusOk) << name;
        expectLayout(fourcc("NV12"), 1024, 12);
        EXPECT_TRUE(loggedExactly(unknownCode(name, code))) << name;
    }
    addRow("short", 0x4E560000, 3);
    addRow("none", 0, 4);
    EXPECT_EQ(askFormat("NV"), StatusOk);
    EXPECT_EQ(mFormat.fourcc, 0x4E560000U);
    EXPECT_EQ(mFormat.bpp, 3U);
    EXPECT_EQ(askFormat(""), StatusOk);
    EXPECT_EQ(mFormat.fourcc, 0U);
    EXPECT_EQ(mFormat.bpp, 4U);
}

TEST_F(PortFormatNameTest, CharactersBeyondAsciiKeepTheirPlace)
{
    const std::string name = "\xC3\xA9\x80\xFFx";
    EXPECT_EQ(askFormat(name), StatusOk);
    EXPECT_TRUE(loggedExactly(unknownCode(name, 0xC3A980FF)));
    addRow("beyond", 0xC3A980FF, 3);
    EXPECT_EQ(askFormat(name), StatusOk);
    EXPECT_EQ(mFormat.fourcc, 0xC3A980FFU);
    EXPECT_EQ(mFormat.bpp, 3U);
}

TEST_F(PortFormatNameTest, NamesAreNoPatternsForTheLog)
{
    EXPECT_EQ(askFormat("%n%s"), StatusOk);
    EXPECT_TRUE(loggedExactly(unknownCode("%n%s", fourcc("%n%s"))));
}

TEST_F(PortFormatNameTest, TableWithoutTheCommonFormatLeavesNothingToTry)
{
    addRow("OTHER", fourcc("OTHR"), 8);
    NUXOFormats::gNUXOFormats.erase(NUXOFormats::gNUXOFormats.begin(), NUXOFormats::gNUXOFormats.end() - 1);
    EXPECT_EQ(askFormat("ABCDE", "bpl=\"128\""), StatusMissingData);
    const PortFormat before;
    expectLayout(fourcc("ABCD"), before.bpl, before.bpp); // the code that failed stays
    Lines lines = unknownCode("ABCDE", fourcc("ABCD"));
    lines.emplace_back("NUXOFormats[XOS]/16 Could not find format with name YUV420_8_SP");
    lines.emplace_back("16 Error: Couldn't find default format YUV420_8_SP from the formats XML.");
    EXPECT_TRUE(loggedExactly(lines));
    EXPECT_EQ(informedByAsking(), Lines());

    EXPECT_EQ(askFormat("OTHR"), StatusOk); // by its code
    expectLayout(fourcc("OTHR"), 1024, 8);
}

TEST_F(PortFormatNameTest, PrivatePortsMustGiveFormatsThatExistEither)
{
    addRow("OTHER", fourcc("OTHR"), 8);
    NUXOFormats::gNUXOFormats.erase(NUXOFormats::gNUXOFormats.begin(), NUXOFormats::gNUXOFormats.end() - 1);
    EXPECT_EQ(askFormat("ABCDE", "private=\"1\""), StatusMissingData);
}

} // namespace

} // namespace graphtest
