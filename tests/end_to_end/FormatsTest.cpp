// SPDX-License-Identifier: Apache-2.0
#include "GraphVerbTest.h"

#include <set>

namespace {

class FormatsTest : public ToolTest {
protected:
    ToolRun formats(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), "formats");
        return run(arguments);
    }

    // The value behind a name at the start of a line.
    static std::string fact(const ToolRun& result, const std::string& name)
    {
        const std::string text = '\n' + result.out;
        const size_t start = text.find('\n' + name + "  ");
        if (start == std::string::npos) return "(none)";
        const size_t value = text.find_first_not_of(' ', start + 1 + name.size());
        return text.substr(value, text.find('\n', value) - value);
    }

    void expectSizes(const std::vector<std::string>& arguments, const std::string& stride,
                     const std::string& size) const
    {
        const ToolRun result = formats(arguments);
        EXPECT_EQ(result.exitCode, 0) << arguments[0];
        EXPECT_EQ(fact(result, "stride"), stride) << arguments[0];
        EXPECT_EQ(fact(result, "buffer size"), size) << arguments[0];
    }

    void expectUnknown(const std::string& name, const std::string& suggestion) const
    {
        const ToolRun result = formats({name});
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.find("nuxo: error[unknown-format]: '" + name +
                                  "' is neither name nor code of a format; "
                                  "expected one that nuxo formats lists" +
                                  suggestion + "\n    " + name + "\n    ^"),
                  0U)
            << result.err;
    }
};

TEST_F(FormatsTest, ListsEveryFormat)
{
    const ToolRun result = formats({});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    std::set<std::string> codes;
    for (const auto& row : rowsOf(result.out)) codes.insert(row.at("CODE"));
    EXPECT_EQ(codes.size(), 85U);
    expectGolden(result.out, "formats.txt");
}

TEST_F(FormatsTest, ListsEveryFormatAsJson)
{
    const ToolRun result = formats({"--format", "json"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.out.find("{\n  \"version\": 1,\n  \"kind\": \"formats\",\n  \"formats\": [\n    {\n"
                              "      \"name\": \"SRGB48\",\n      \"fourcc\": \"SR48\",\n"),
              std::string::npos)
        << result.out.substr(0, 300);
    size_t found = 0;
    for (size_t at = 0; (at = result.out.find("\"fourcc\"", at)) != std::string::npos; ++at) ++found;
    EXPECT_EQ(found, 85U);
}

TEST_F(FormatsTest, ShowsACompressedFormatWithItsPlanes)
{
    const ToolRun result = formats({"YUV420_8_SP_C", "--width", "1920", "--height", "1080"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    expectGolden(result.out, "formats_cn12.txt");
}

TEST_F(FormatsTest, ShowsAFormatAsJson)
{
    const ToolRun result = formats({"C420", "--width", "1920", "--height", "1080", "--format", "json"});
    EXPECT_EQ(result.exitCode, 0);
    expectGolden(result.out, "formats_c420.json");
}

TEST_F(FormatsTest, NameAndCodeAskForTheSame)
{
    EXPECT_EQ(formats({"NV12"}).out, formats({"YUV420_8_SP"}).out);
    EXPECT_EQ(fact(formats({"NV12"}), "code"), "NV12  0x4e563132");
}

TEST_F(FormatsTest, CaseTellsCodesApart)
{
    EXPECT_EQ(fact(formats({"pGAA"}), "name"), "GBRG_10_P");
    EXPECT_EQ(fact(formats({"pgAA"}), "name"), "GRBG_10_P");
}

TEST_F(FormatsTest, FrameFormatIsToldWithItsFlags)
{
    EXPECT_EQ(fact(formats({"GRBG_10"}), "frame format"), "20, raw");
    EXPECT_EQ(fact(formats({"BGGR_10"}), "frame format"), "-");
    EXPECT_EQ(fact(formats({"CS42"}), "frame format"), "3, packed into 64-bit words");
    EXPECT_EQ(fact(formats({"NV12"}), "frame format"), "5");
}

TEST_F(FormatsTest, SizesFollowTheFormat)
{
    // Up to a multiple of 64: 1921 to 1984; 1.5 * 1984 * 1080.
    expectSizes({"NV12", "--width", "1921", "--height", "1080"}, "1984", "3214080");
    // 2 * 1000 up to a multiple of 512; one plane of 2048 * 100 bytes, 50 * 4096; a table of 4 bits for each 512 bytes.
    expectSizes({"BG1C", "--width", "1000", "--height", "100"}, "2048", "208896");
    // 1920 / 2 / 42 is 22.86: 23 * 128; 1.5 * 2944 * 1080.
    expectSizes({"CS42", "--width", "1920", "--height", "1080"}, "2944", "4769280");
    // Rows of tiles: 1920 * (544 + 1088).
    expectSizes({"TILE", "--width", "1920", "--height", "1080"}, "1920", "3133440");
    // Six bytes a pixel, half of the lines: 11520 * 540.
    expectSizes({"y032", "--width", "1920", "--height", "1080"}, "11520", "6220800");
}

TEST_F(FormatsTest, WidthAloneTellsTheStride)
{
    expectSizes({"RGGB_10", "--width", "1920"}, "3840", "-");
}

TEST_F(FormatsTest, GivenStrideReplacesTheFormatsOwn)
{
    expectSizes({"NV12", "--width", "1920", "--bpl", "2048", "--height", "1080"}, "2048",
                "3317760"); // 1.5 * 2048 * 1080
    expectSizes({"NV12", "--bpl", "2048", "--height", "1080"}, "2048", "3317760");
}

TEST_F(FormatsTest, WithoutASizeNoneIsTold)
{
    const ToolRun result = formats({"NV12"});
    EXPECT_EQ(fact(result, "stride"), "(none)");
    EXPECT_EQ(result.out.find("PLANE"), std::string::npos) << result.out;
}

TEST_F(FormatsTest, ReferenceFramesHaveTilesOfTheirOwn)
{
    const ToolRun result = formats({"CT12"});
    const TableRows planes = rowsOf(result.out.substr(result.out.find("PLANE")));
    ASSERT_EQ(planes.size(), 2U);
    EXPECT_EQ(planes[0].at("TILE"), "512");
    EXPECT_EQ(planes[1].at("TILE"), "256");
}

TEST_F(FormatsTest, ImagesOfAPlaneReachToWholeTiles)
{
    // 65 lines up to 96, and half of 65, rounded down, to 32; 2 * 100 up to a multiple of 128.
    const ToolRun result = formats({"PC12", "--width", "100", "--height", "65"});
    const TableRows planes = rowsOf(result.out.substr(result.out.find("PLANE")));
    ASSERT_EQ(planes.size(), 2U);
    EXPECT_EQ(planes[0].at("IMAGE"), "24576"); // 256 * 96
    EXPECT_EQ(planes[1].at("IMAGE"), "8192");  // 256 * 32
    EXPECT_EQ(planes[0].at("TABLE OFFSET"), "32768");
    EXPECT_EQ(planes[0].at("TABLE SIZE"), "24"); // 2 bits for each of 96 tiles
    EXPECT_EQ(planes[1].at("TABLE OFFSET"), "36864");
    EXPECT_EQ(planes[1].at("TABLE SIZE"), "8");
}

TEST_F(FormatsTest, LinesOfUncompressedChromaAreNotDefined)
{
    const ToolRun result = formats({"IYUV", "--width", "1000"});
    const TableRows planes = rowsOf(result.out.substr(result.out.find("PLANE")));
    ASSERT_EQ(planes.size(), 3U);
    EXPECT_EQ(planes[0].at("LINE"), "1024");
    EXPECT_EQ(planes[1].at("LINE"), "-");
}

TEST_F(FormatsTest, CompressedFormatWithoutFrameFormatHasNoGeometry)
{
    const ToolRun result = formats({"P21Y", "--width", "100", "--height", "10"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(fact(result, "buffer size"), "1920"); // 1.5 * 128 * 10
    const TableRows planes = rowsOf(result.out.substr(result.out.find("PLANE")));
    ASSERT_EQ(planes.size(), 3U);
    EXPECT_EQ(planes[0].at("TILE"), "-");
    EXPECT_EQ(planes[0].at("TABLE SIZE"), "-");
}

TEST_F(FormatsTest, FormatWithoutAStrideOfItsOwnIsAWarning)
{
    const ToolRun result = formats({"NV21", "--width", "640"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "nuxo: warning[format]: YUV420_8_SP_REV: bpl defaulting to width\n");
}

TEST_F(FormatsTest, SizeBeyond32BitsIsAWarning)
{
    const std::string text =
        "nuxo: warning[overflow]: sizes of this frame may exceed 32 bits, where the library starts "
        "again from 0; expected a smaller frame\n";
    EXPECT_EQ(formats({"NV12", "--width", "65536", "--height", "65536"}).err, text);
    EXPECT_EQ(formats({"CSL0", "--width", "1073741824"}).err, text);
    EXPECT_EQ(formats({"NV12", "--width", "40000", "--height", "40000"}).err, ""); // 2.4 * 10^9
}

TEST_F(FormatsTest, NearMissGetsASuggestion)
{
    expectUnknown("nv12", "; did you mean 'NV12'?");
    expectUnknown("YUV420_8SP", "; did you mean 'YUV420_8_SP'?");
    expectUnknown("GRBG10", "; did you mean 'GRBG_10'?");
    expectUnknown("PGAA", "; did you mean 'pGAA'?");
    expectUnknown("xylophone", "");
}

TEST_F(FormatsTest, CodeWithoutAFormatIsExplained)
{
    const ToolRun result = formats({"CSBA"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_NE(result.err.find("\nnuxo: note: the code stands for frame format 25, but no format describes it\n"),
              std::string::npos)
        << result.err;
}

} // namespace
