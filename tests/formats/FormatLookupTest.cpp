// SPDX-License-Identifier: Apache-2.0
#include "formats/FormatRows.h"
#include "formats/FormatsFixture.h"

#include <nuxo/NuxoStatus.h>

#include <functional>
#include <utility>

namespace formatstest {

namespace {

using NUXOFormats::getFormatByFourcc;
using NUXOFormats::getFormatByName;
using NUXOFormats::getPlaneCountByFourcc;
using NUXOFormats::gNUXOFormats;
using NUXOFormats::qv_format_t;
using NUXOFormats::setFormatId;

class FormatLookupTest : public FormatsTest {
protected:
    /// A row that no lookup gives.
    static qv_format_t marked()
    {
        qv_format_t format = bareFormat(kUnwritten, 99);
        format.name = "marked";
        format.planes.resize(5);
        return format;
    }

    static bool isMarked(const qv_format_t& format)
    {
        return format.name == "marked" && format.fourcc == kUnwritten && format.bitDepth == 99 &&
               format.planes.size() == 5;
    }

    /// A lookup must fail with this status and line and leave its output alone.
    void expectNoRow(const std::function<int(qv_format_t&)>& lookup, int status, const std::string& message)
    {
        qv_format_t out = marked();
        EXPECT_EQ(logOf([&] { EXPECT_EQ(lookup(out), status); }), Lines{formatsLine(16, message)});
        EXPECT_TRUE(isMarked(out));
    }

    void expectNoName(const std::string& name)
    {
        expectNoRow([&name](qv_format_t& out) { return getFormatByName(name, out); }, StatusBadState,
                    "Could not find format with name " + name);
    }

    void expectNoCode(uint32_t fourcc, const std::string& number)
    {
        expectNoRow([fourcc](qv_format_t& out) { return getFormatByFourcc(fourcc, out); }, StatusBadState,
                    "Could not find format with fourcc " + number);
    }

    void expectNoPlaneCount(uint32_t fourcc, const std::string& number)
    {
        EXPECT_EQ(logOf([fourcc] { EXPECT_EQ(getPlaneCountByFourcc(fourcc), 4294967295U); }),
                  Lines{formatsLine(16, "Format not found " + number)});
    }

    void expectNoIdFor(const std::string& name)
    {
        EXPECT_EQ(logOf([&name] { EXPECT_EQ(setFormatId(name, 5), StatusBadArgument); }),
                  Lines{formatsLine(16, "Failed to set format id for " + name)});
    }
};

/// Codes without a row and how "%d" prints them: the upper half of the numbers comes out negative.
const std::vector<std::pair<uint32_t, std::string>> kUnknownCodes = {
    {0, "0"},
    {code("NONE"), "1313820229"}, // 0x4E4F4E45 = ((78 * 256 + 79) * 256 + 78) * 256 + 69
    {0x7FFFFFFF, "2147483647"},
    {0x80000000, "-2147483648"},
    {0xFFFFFFFF, "-1"},
};

TEST_F(FormatLookupTest, EveryRowIsFoundByNameAndByCode)
{
    for (const FormatRow& row : kFormatRows) {
        qv_format_t byName;
        qv_format_t byCode;
        EXPECT_EQ(logOf([&] { EXPECT_EQ(getFormatByName(row.name, byName), StatusOk); }), Lines()) << row.name;
        EXPECT_EQ(logOf([&] { EXPECT_EQ(getFormatByFourcc(code(row.code), byCode), StatusOk); }), Lines()) << row.code;
        EXPECT_EQ(byName.fourcc, code(row.code));
        EXPECT_EQ(byCode.name, row.name);
    }
}

TEST_F(FormatLookupTest, WholeRowIsCopied)
{
    qv_format_t out = marked();
    EXPECT_EQ(setFormatId("YUV420_8_SP_REV", 12), StatusOk);
    EXPECT_EQ(getFormatByName("YUV420_8_SP_REV", out), StatusOk);
    EXPECT_EQ(out.name, "YUV420_8_SP_REV");
    EXPECT_EQ(out.fourcc, code("NV21"));
    EXPECT_EQ(out.family, "YUV");
    EXPECT_EQ(out.bpp, 12U);
    EXPECT_EQ(out.bitDepth, 8U);
    EXPECT_EQ(out.sampleBits, 8U);
    EXPECT_EQ(out.layoutHint, 0U);
    EXPECT_TRUE(out.supported);
    EXPECT_FALSE(out.isCompressed);
    ASSERT_EQ(out.planes.size(), 2U);
    EXPECT_EQ(out.planes[1].name, "VU");
    EXPECT_EQ(out.planes[1].bitsPerSample, 8U);
    EXPECT_EQ(out.id, 12U);

    out.planes.clear();
    EXPECT_EQ(getPlaneCountByFourcc(code("NV21")), 2U) << "it is a copy";
}

TEST_F(FormatLookupTest, NameMayBeThatOfTheOutput)
{
    qv_format_t format;
    format.name = "TileYUV420_10_SP_LSB";
    EXPECT_EQ(getFormatByName(format.name, format), StatusOk);
    EXPECT_EQ(format.name, "TileYUV420_10_SP_LSB");
    EXPECT_EQ(format.fourcc, code("T01L"));
}

TEST_F(FormatLookupTest, OutputMayBeARowOfTheTable)
{
    qv_format_t& first = gNUXOFormats.front(); // "SRGB48", without planes
    EXPECT_EQ(getFormatByFourcc(code("SR48"), first), StatusOk);
    EXPECT_EQ(first.name, "SRGB48");
    EXPECT_EQ(getFormatByName("YUV420_8_PL_REV", first), StatusOk);
    EXPECT_EQ(first.fourcc, code("YV12"));
    ASSERT_EQ(first.planes.size(), 3U);
    EXPECT_EQ(first.planes[1].name, "V");
    EXPECT_EQ(getFormatByFourcc(code("NV21"), first), StatusOk);
    ASSERT_EQ(first.planes.size(), 2U);
    EXPECT_EQ(first.planes[1].name, "VU");
    EXPECT_EQ(getPlaneCountByFourcc(code("YV12")), 3U) << "its own row is still there";
}

TEST_F(FormatLookupTest, UnknownNamesAreReported)
{
    // Codes are no names, names are compared exactly, and what looks like a format text is printed as it stands.
    for (const char* name : {"", "NV12", "yuv420_8_sp", "YUV420_8_S", "YUV420_8_SP ", " YUV420_8_SP", "%s%n%d", "Tile"})
        expectNoName(name);
}

TEST_F(FormatLookupTest, NameWithAnEmbeddedNulIsAnother)
{
    qv_format_t out = marked();
    EXPECT_EQ(getFormatByName(std::string("IR\0x", 4), out), StatusBadState);
    EXPECT_TRUE(isMarked(out));
}

TEST_F(FormatLookupTest, UnknownCodesAreReportedAsDecimalNumbers)
{
    for (const auto& [fourcc, number] : kUnknownCodes) expectNoCode(fourcc, number);
    expectNoCode(0x3231564E, "842094158"); // "NV12" the wrong way round
}

TEST_F(FormatLookupTest, MappedCodesWithoutRowAreNotFound)
{
    for (const uint32_t fourcc : second::codesWithoutRow()) expectNoCode(fourcc, std::to_string(fourcc));
}

TEST_F(FormatLookupTest, FirstOfSeveralRowsCounts)
{
    qv_format_t other = gNUXOFormats.front();
    other.bpp = 1;
    other.planes.resize(4);
    gNUXOFormats.push_back(other);
    qv_format_t out;
    EXPECT_EQ(getFormatByName("SRGB48", out), StatusOk);
    EXPECT_EQ(out.bpp, 48U);
    EXPECT_EQ(getFormatByFourcc(code("SR48"), out), StatusOk);
    EXPECT_EQ(out.bpp, 48U);
    EXPECT_EQ(getPlaneCountByFourcc(code("SR48")), 0U);
    EXPECT_EQ(setFormatId("SRGB48", 3), StatusOk);
    EXPECT_EQ(gNUXOFormats.front().id, 3U);
    EXPECT_EQ(gNUXOFormats.back().id, 0U);
}

TEST_F(FormatLookupTest, LookupsReadTheWorkingTable)
{
    gNUXOFormats.assign(1, marked());
    qv_format_t out;
    EXPECT_EQ(getFormatByName("marked", out), StatusOk);
    EXPECT_EQ(getFormatByFourcc(kUnwritten, out), StatusOk);
    EXPECT_EQ(getPlaneCountByFourcc(kUnwritten), 5U);
    expectNoName("IR");
    expectNoCode(code("IR16"), "1230123318"); // 0x49523136
}

TEST_F(FormatLookupTest, LookupsFindNothingInAnEmptyTableAndDoNotFillIt)
{
    gNUXOFormats.clear();
    expectNoName("YUV420_8_SP");
    expectNoCode(code("NV12"), "1314271538"); // 0x4E563132
    expectNoPlaneCount(code("NV12"), "1314271538");
    expectNoIdFor("YUV420_8_SP");
    EXPECT_TRUE(gNUXOFormats.empty());
}

TEST_F(FormatLookupTest, IdIsStoredInTheWorkingTableOnly)
{
    for (const uint32_t id : {5U, 0U, 4294967295U}) {
        EXPECT_EQ(logOf([id] { EXPECT_EQ(setFormatId("MOT_VEC", id), StatusOk); }), Lines());
        EXPECT_EQ(gNUXOFormats.back().id, id); // the last row
    }
    EXPECT_EQ(NUXOFormats::gNUXOFormatsInternal.back().id, 0U);
    for (size_t i = 0; i + 1 < gNUXOFormats.size(); ++i) EXPECT_EQ(gNUXOFormats[i].id, 0U) << i;
}

TEST_F(FormatLookupTest, IdForAnUnknownNameIsReported)
{
    for (const char* name : {"", "NV12", "Y_8 ", "%s"}) expectNoIdFor(name);
    for (const qv_format_t& row : gNUXOFormats) EXPECT_EQ(row.id, 0U) << row.name;
}

TEST_F(FormatLookupTest, PlanesAreCountedByCode)
{
    for (const FormatRow& row : kFormatRows) {
        // One colon a plane.
        size_t planes = 0;
        for (const char c : std::string(row.planes)) planes += c == ':' ? 1 : 0;
        EXPECT_EQ(logOf([&] { EXPECT_EQ(getPlaneCountByFourcc(code(row.code)), planes); }), Lines()) << row.code;
    }
    EXPECT_EQ(getPlaneCountByFourcc(code("NV12")), 2U);
    EXPECT_EQ(getPlaneCountByFourcc(code("BGGR")), 0U);
    EXPECT_EQ(getPlaneCountByFourcc(code("IYUV")), 3U);
}

TEST_F(FormatLookupTest, PlaneCountOfAnUnknownCodeIsReported)
{
    for (const auto& [fourcc, number] : kUnknownCodes) expectNoPlaneCount(fourcc, number);
}

} // namespace

} // namespace formatstest
