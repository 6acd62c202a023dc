// SPDX-License-Identifier: Apache-2.0
#include "formats/FormatRows.h"
#include "formats/FormatsFixture.h"

#include <iterator>

namespace formatstest {

namespace {

using NUXOFormats::gNUXOFormats;
using NUXOFormats::gNUXOFormatsInternal;
using NUXOFormats::initNUXOFormats;
using NUXOFormats::qv_format_t;

class FormatTableTest : public FormatsTest {};

std::string planesText(const qv_format_t& format)
{
    std::string result;
    for (const NUXOFormats::qv_format_plane_t& plane : format.planes)
        result += (result.empty() ? "" : " ") + plane.name + ":" + std::to_string(plane.bitsPerSample);
    return result;
}

bool endsWith(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

void expectRow(const FormatRow& expected, const qv_format_t& row)
{
    EXPECT_EQ(row.name, expected.name);
    EXPECT_EQ(row.fourcc, code(expected.code));
    EXPECT_EQ(row.family, expected.family);
    EXPECT_EQ(row.bpp, expected.bpp);
    EXPECT_EQ(row.bitDepth, expected.bitDepth);
    EXPECT_EQ(row.sampleBits, expected.sampleBits);
    EXPECT_EQ(row.layoutHint, expected.layoutHint);
    EXPECT_TRUE(row.supported);
    EXPECT_EQ(row.isCompressed, expected.compressed);
    EXPECT_EQ(planesText(row), expected.planes);
    EXPECT_EQ(row.id, 0U);
}

void expectDocumentedTable(const std::vector<qv_format_t>& table)
{
    ASSERT_EQ(table.size(), std::size(kFormatRows));
    for (size_t i = 0; i < table.size(); ++i) {
        SCOPED_TRACE(kFormatRows[i].name);
        expectRow(kFormatRows[i], table[i]);
    }
}

TEST_F(FormatTableTest, BuiltInTableHasEveryRowInOrder)
{
    EXPECT_EQ(std::size(kFormatRows), 85U);
    expectDocumentedTable(gNUXOFormatsInternal);
}

TEST_F(FormatTableTest, CodeHasItsFirstCharacterInTheMostSignificantByte)
{
    // "SRGB48" is the first row; 'S' is 0x53, 'R' 0x52, '4' 0x34, '8' 0x38.
    EXPECT_EQ(gNUXOFormatsInternal.front().fourcc, 0x53523438U);
    qv_format_t format;
    EXPECT_EQ(NUXOFormats::getFormatByName("YUV420_8_SP", format), 0);
    EXPECT_EQ(format.fourcc, 0x4E563132U);
}

TEST_F(FormatTableTest, NamesTellWhichFormatsAreCompressed)
{
    int compressed = 0;
    for (const qv_format_t& row : gNUXOFormatsInternal) {
        EXPECT_EQ(row.isCompressed, endsWith(row.name, "_C") || endsWith(row.name, "_C_TNR")) << row.name;
        if (row.isCompressed) ++compressed;
    }
    EXPECT_EQ(compressed, 19);
}

TEST_F(FormatTableTest, NewFormatIsNothing)
{
    const qv_format_t format = {};
    EXPECT_EQ(format.fourcc + format.bpp + format.bitDepth + format.sampleBits + format.layoutHint + format.id, 0U);
    EXPECT_FALSE(format.supported || format.isCompressed);
    EXPECT_EQ(format.name + format.family + planesText(format), "");
    EXPECT_EQ(NUXOFormats::qv_format_plane_t().bitsPerSample, 0U);
}

TEST_F(FormatTableTest, InitialisingFillsTheEmptyWorkingTable)
{
    EXPECT_EQ(logOf([] {
                  gNUXOFormats.clear();
                  initNUXOFormats();
              }),
              Lines());
    expectDocumentedTable(gNUXOFormats);
    expectDocumentedTable(gNUXOFormatsInternal);
}

TEST_F(FormatTableTest, IdsSurviveInitialisingAgain)
{
    EXPECT_EQ(NUXOFormats::setFormatId("IR", 7), 0);
    initNUXOFormats();
    qv_format_t format;
    EXPECT_EQ(NUXOFormats::getFormatByName("IR", format), 0);
    EXPECT_EQ(format.id, 7U);
    EXPECT_EQ(gNUXOFormats.size(), 85U);
}

TEST_F(FormatTableTest, IdsAreLostWithTheWorkingTable)
{
    EXPECT_EQ(NUXOFormats::setFormatId("IR", 7), 0);
    gNUXOFormats.clear();
    initNUXOFormats();
    expectDocumentedTable(gNUXOFormats); // ids are 0 in it
}

TEST_F(FormatTableTest, InitialisingLeavesAClientsOwnTableAlone)
{
    gNUXOFormats.assign(1, bareFormat(code("MINE")));
    initNUXOFormats();
    ASSERT_EQ(gNUXOFormats.size(), 1U);
    EXPECT_EQ(gNUXOFormats.front().fourcc, code("MINE"));
}

} // namespace

} // namespace formatstest
