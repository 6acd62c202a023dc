// SPDX-License-Identifier: Apache-2.0
#include "formats/FormatRows.h"
#include "formats/FormatsFixture.h"

#include <algorithm>

namespace formatstest {

namespace {

using NUXOFormats::gNUXOFormats;

/// One of the ways to ask, and what is logged about a format that does not exist.
struct Form {
    const char* label;
    bool (*ask)(const FormatRow& row);
    const char* unknown;
};

bool byName(const FormatRow& row)
{
    return NUXOFormats::isCompressedFormat(row.name);
}

bool byCode(const FormatRow& row)
{
    return ::isCompressedFormat(code(row.code));
}

bool byCodeForC(const FormatRow& row)
{
    return qv_cipf_is_compressed_format(code(row.code));
}

constexpr FormatRow kCompressed = {"YUV420_8_SP_C", "CN12", "", 0, 0, 0, 0, true, ""};
constexpr FormatRow kUnknown = {"marked", "????", "", 0, 0, 0, 0, false, ""};

// 0x3F3F3F3F = 63 * 16843009
constexpr const char* kUnknownCodeMessage = "Could not find format with fourcc 1061109567";
constexpr Form kForms[] = {
    {"ByName", byName, "Could not find format with name marked"},
    {"ByCode", byCode, kUnknownCodeMessage},
    {"ByCodeForC", byCodeForC, kUnknownCodeMessage},
};

class CompressedFormatTest : public FormatsTest, public ::testing::WithParamInterface<Form> {
protected:
    static bool ask(const FormatRow& row) { return GetParam().ask(row); }
};

INSTANTIATE_TEST_SUITE_P(EveryForm, CompressedFormatTest, ::testing::ValuesIn(kForms),
                         [](const auto& form) { return form.param.label; });

TEST_P(CompressedFormatTest, RowsTellIt)
{
    for (const FormatRow& row : kFormatRows)
        EXPECT_EQ(logOf([&] { EXPECT_EQ(ask(row), row.compressed); }), Lines()) << row.name;
}

TEST_P(CompressedFormatTest, EmptyTableIsFilledFirst)
{
    EXPECT_EQ(logOf([] {
                  gNUXOFormats.clear();
                  EXPECT_TRUE(ask(kCompressed));
              }),
              Lines());
    EXPECT_EQ(gNUXOFormats.size(), 85U);
    gNUXOFormats.clear();
    EXPECT_FALSE(ask(kUnknown));
    EXPECT_EQ(gNUXOFormats.size(), 85U);
}

TEST_P(CompressedFormatTest, WorkingTableDecides)
{
    for (NUXOFormats::qv_format_t& row : gNUXOFormats) row.isCompressed = !row.isCompressed;
    for (const FormatRow& row : kFormatRows) EXPECT_NE(ask(row), row.compressed) << row.name;
    gNUXOFormats.erase(std::remove_if(gNUXOFormats.begin(), gNUXOFormats.end(),
                                      [](const auto& row) { return row.name == kCompressed.name; }),
                       gNUXOFormats.end());
    EXPECT_FALSE(ask(kCompressed));
    EXPECT_EQ(gNUXOFormats.size(), 84U) << "a table with rows is not filled again";
}

TEST_P(CompressedFormatTest, UnknownFormatIsNotCompressedAndReported)
{
    EXPECT_EQ(logOf([] { EXPECT_FALSE(ask(kUnknown)); }), Lines{formatsLine(16, GetParam().unknown)});
}

using CompressedNameTest = FormatsTest;

TEST_F(CompressedNameTest, NamesNotCodesAreCompared)
{
    EXPECT_TRUE(NUXOFormats::isCompressedFormat("YUV420_8_SP_C"));
    for (const char* name : {"NV12", "CN12"}) {
        EXPECT_EQ(logOf([name] { EXPECT_FALSE(NUXOFormats::isCompressedFormat(name)); }),
                  Lines{formatsLine(16, std::string("Could not find format with name ") + name)});
    }
    // The only names that are codes as well.
    for (const char* name : {"BA10", "UYVY", "PAFn", "PAFi"})
        EXPECT_EQ(logOf([name] { EXPECT_FALSE(NUXOFormats::isCompressedFormat(name)); }), Lines());
}

TEST_F(CompressedNameTest, CodeIsReportedAsADecimalNumber)
{
    for (const auto& ask : {&::isCompressedFormat, &qv_cipf_is_compressed_format}) {
        EXPECT_EQ(logOf([ask] { EXPECT_FALSE(ask(0xFFFFFFFE)); }),
                  Lines{formatsLine(16, "Could not find format with fourcc -2")});
    }
}

TEST_F(CompressedNameTest, FormatWithoutAStrideRuleMayBeCompressed)
{
    EXPECT_TRUE(::isCompressedFormat(code("P21Y")));
    EXPECT_TRUE(NUXOFormats::isCompressedFormat("YUV420_12_PL_C"));
}

} // namespace

} // namespace formatstest
