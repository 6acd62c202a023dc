// SPDX-License-Identifier: Apache-2.0
#include "formats/FormatsFixture.h"

#include <nuxo/formats/dec400util.h>
#include <nuxo/formats/nci_dec400.h>

#include <functional>

namespace formatstest {

namespace {

using NUXOFormats::calculateDec400BufferSize;

constexpr PerPlane kNone = {0, 0, 0};

struct Buffer {
    uint32_t size;
    PerPlane offsets;
    PerPlane tables;
};

/// The arguments of a calculation by frame format.
struct Arguments {
    uint32_t format;
    uint32_t bitDepth;
    bool tnr;
    uint32_t stride;
    uint32_t height;
    uint32_t extra;
};

/// The arguments of a calculation by code.
struct Frame {
    const char* code;
    uint32_t bitDepth;
    uint32_t bpl;
    uint32_t height;
};

class Dec400BufferTest : public FormatsTest {
protected:
    using Calculation = std::function<uint32_t(uint32_t*, uint32_t*)>;

    /// With all, some and no outputs.
    static void expectBuffer(const Calculation& calculate, const Buffer& expected)
    {
        PerPlane offsets = kAllUnwritten;
        PerPlane tables = kAllUnwritten;
        EXPECT_EQ(calculate(offsets.data(), tables.data()), expected.size);
        EXPECT_EQ(offsets, expected.offsets);
        EXPECT_EQ(tables, expected.tables);
        offsets = tables = kAllUnwritten;
        EXPECT_EQ(calculate(nullptr, nullptr), expected.size);
        EXPECT_EQ(calculate(offsets.data(), nullptr), expected.size);
        EXPECT_EQ(calculate(nullptr, tables.data()), expected.size);
        EXPECT_EQ(offsets, expected.offsets);
        EXPECT_EQ(tables, expected.tables);
    }

    static uint32_t calculate(const Arguments& arguments, uint32_t* offsets, uint32_t* tables)
    {
        return nci_dec400_cmprs_calc_buf_size(arguments.format, arguments.bitDepth, arguments.tnr, arguments.stride,
                                              arguments.height, arguments.extra, offsets, tables);
    }

    static void expectBuffer(const Arguments& arguments, const Buffer& expected)
    {
        SCOPED_TRACE("frame format " + std::to_string(arguments.format) + ", " + std::to_string(arguments.stride) +
                     " x " + std::to_string(arguments.height));
        expectBuffer([&](uint32_t* offsets, uint32_t* tables) { return calculate(arguments, offsets, tables); },
                     expected);
    }

    /// By code; the width, which is not read, is another each time.
    static void expectBuffer(const Frame& frame, const Buffer& expected)
    {
        SCOPED_TRACE(frame.code);
        for (const uint32_t width : {0U, 1920U, 4294967295U}) {
            expectBuffer(
                [&](uint32_t* offsets, uint32_t* tables) {
                    return calculateDec400BufferSize(code(frame.code), width, frame.height, frame.bpl, frame.bitDepth,
                                                     offsets, tables);
                },
                expected);
        }
    }

    Lines linesOf(const Arguments& arguments)
    {
        PerPlane offsets;
        PerPlane tables;
        return logOf([&] { calculate(arguments, offsets.data(), tables.data()); });
    }
};

std::string step(const std::string& text)
{
    return "16 QV_DEC400_UTIL_WRAPPER[XOS] nci_dec400_cmprs_calc_buf_size || {" + text;
}

TEST_F(Dec400BufferTest, SemiPlanarFrame)
{
    // 1088 lines: 16320 tiles of 128 bytes with a bit each; 544 lines of chroma: 8160 tiles.
    expectBuffer(Frame{"CN12", 8, 1920, 1080}, {3141632, {3133440, 3137536, 0}, {2040, 1020, 0}});
}

TEST_F(Dec400BufferTest, NoiseFilterFrameHasLargerTiles)
{
    // 4080 tiles of 512 bytes with 4 bits each, 4080 of 256 with 2: the tables are as large as without the filter.
    expectBuffer(Frame{"CT12", 8, 1920, 1080}, {3141632, {3133440, 3137536, 0}, {2040, 1020, 0}});
    // Where they differ: 100 * 32 bytes are 25 tiles of 128, 6 of 512 (24 bits) or 12 of 256 (24 bits).
    expectBuffer(Frame{"CN12", 8, 100, 2}, {16384, {8192, 12288, 0}, {4, 4, 0}});
    expectBuffer(Frame{"CT12", 8, 100, 2}, {16384, {8192, 12288, 0}, {3, 3, 0}});
    // By code alone nothing else is such a frame: 100 * 32 bytes are 12 tiles of 256 with 2 bits each.
    expectBuffer(Frame{"PC10", 10, 100, 2}, {16384, {8192, 12288, 0}, {3, 3, 0}});
    expectBuffer(Arguments{5, 8, true, 100, 2, 0}, {16384, {8192, 12288, 0}, {3, 3, 0}});
    // 200 * 32 bytes: 25 tiles of 256 (50 bits); 12 of 512 (48 bits) and 25 of 256.
    expectBuffer(Arguments{50, 10, false, 200, 2, 0}, {24576, {16384, 20480, 0}, {7, 7, 0}});
    expectBuffer(Arguments{50, 10, true, 200, 2, 0}, {24576, {16384, 20480, 0}, {6, 7, 0}});
    expectBuffer(Arguments{52, 12, true, 200, 2, 0}, {24576, {16384, 20480, 0}, {6, 7, 0}});
}

TEST_F(Dec400BufferTest, TiledFrames)
{
    // 8160 and 4080 tiles of 256 bytes with a byte each; 3133440 = 765 * 4096, 767 and 768 follow.
    expectBuffer(Frame{"CILE", 8, 1920, 1080}, {3145728, {3133440, 3141632, 0}, {8160, 4080, 0}});
    // Twice as long lines: 16320 and 8160 tiles; pages 1530, 1530 + 4 (16320 bytes), and 2 more (8160 bytes).
    for (const char* fourcc : {"C010", "C012"})
        expectBuffer(Frame{fourcc, 10, 3840, 1080}, {6291456, {6266880, 6283264, 0}, {16320, 8160, 0}});
}

TEST_F(Dec400BufferTest, DeepSemiPlanarFrames)
{
    // 16320 and 8160 tiles of 256 bytes with 2 bits each; pages 1530, 1531, 1532.
    for (const char* fourcc : {"PC10", "PC12"})
        expectBuffer(Frame{fourcc, 12, 3840, 1080}, {6275072, {6266880, 6270976, 0}, {4080, 2040, 0}});
}

TEST_F(Dec400BufferTest, PlanarFramesKeepTheirHeight)
{
    // 4096 * 1080 = 4423680: 17280 tiles with 2 bits. Chroma 2048 * 540 = 1105920: 8640 tiles of 128 with a bit. The image
    // has 1620 pages, the first table two, the others one.
    for (const char* fourcc : {"C420", "CIYU", "P01Y"})
        expectBuffer(Frame{fourcc, 16, 4096, 1080}, {6651904, {6635520, 6643712, 6647808}, {4320, 1080, 1080}});
    // Half of 257 is 128 and half of 3 is 1: 771 + 2 * 128 bytes; 3 tiles of 256, one of 128.
    expectBuffer(Frame{"CIYU", 8, 257, 3}, {16384, {4096, 8192, 12288}, {1, 1, 1}});
    expectBuffer(Arguments{3, 8, true, 257, 3, 0}, {16384, {4096, 8192, 12288}, {1, 1, 1}});
}

TEST_F(Dec400BufferTest, BayerFramesHaveOnePlane)
{
    // 2048 * 1080 = 2211840 = 540 pages: 4320 tiles with 4 bits.
    for (const char* fourcc : {"BG8C", "GB8C", "GR8C", "RG8C", "BG1C", "GB1C", "GR1C", "RG1C"}) {
        for (const uint32_t depth : {8U, 10U, 12U})
            expectBuffer(Frame{fourcc, depth, 2048, 1080}, {2215936, {2211840, 0, 0}, {2160, 0, 0}});
        for (const uint32_t depth : {0U, 9U, 11U, 16U})
            expectBuffer(Frame{fourcc, depth, 2048, 1080}, {0, kNone, kNone});
    }
    // Lines are not added: one tile, 4 bits.
    expectBuffer(Frame{"BG8C", 8, 512, 1}, {8192, {4096, 0, 0}, {1, 0, 0}});
}

TEST_F(Dec400BufferTest, ChromaHeightIsHalfTheHeightBeforeItWasRounded)
{
    // 65 lines are 96 of luma, and 32 of chroma: 96 and 32 tiles of 128 bytes.
    expectBuffer(Arguments{5, 8, false, 128, 65, 0}, {24576, {16384, 20480, 0}, {12, 4, 0}});
    // The same with tiles of 256 bytes, 2 bits for each or a byte.
    expectBuffer(Arguments{50, 10, false, 256, 65, 0}, {40960, {32768, 36864, 0}, {24, 8, 0}});
    expectBuffer(Arguments{52, 12, false, 256, 65, 0}, {40960, {32768, 36864, 0}, {24, 8, 0}});
    for (const uint32_t format : {7U, 54U, 56U})
        expectBuffer(Arguments{format, 8, false, 256, 65, 0}, {40960, {32768, 36864, 0}, {96, 32, 0}});
    // One line has no chroma at all.
    expectBuffer(Arguments{5, 8, false, 512, 1, 0}, {20480, {16384, 20480, 0}, {16, 0, 0}});
    expectBuffer(Arguments{52, 12, false, 256, 1, 0}, {12288, {8192, 12288, 0}, {8, 0, 0}});
}

TEST_F(Dec400BufferTest, TablesBeginAtPagesBehindExtraMemory)
{
    const Buffer next = {3145728, {3137536, 3141632, 0}, {2040, 1020, 0}};
    expectBuffer(Arguments{5, 8, false, 1920, 1080, 1}, next);
    expectBuffer(Arguments{5, 8, false, 1920, 1080, 4096}, next);
    expectBuffer(Arguments{20, 8, false, 512, 1, 3584}, {8192, {4096, 0, 0}, {1, 0, 0}});
    expectBuffer(Arguments{20, 8, false, 512, 1, 3585}, {12288, {8192, 0, 0}, {1, 0, 0}});
}

TEST_F(Dec400BufferTest, NothingTakesNothing)
{
    for (const uint32_t format : {3U, 5U, 7U, 20U, 52U}) {
        expectBuffer(Arguments{format, 8, false, 0, 1080, 0}, {0, kNone, kNone});
        expectBuffer(Arguments{format, 8, false, 1920, 0, 0}, {0, kNone, kNone});
        expectBuffer(Arguments{format, 8, false, 0, 0, 0}, {0, kNone, kNone});
    }
}

TEST_F(Dec400BufferTest, SizesWrap)
{
    // Luma is 2^32 bytes, which is 0, chroma 2^31: 2^24 bits of table, which are 512 pages.
    const Buffer chromaOnly = {2149580800, {2147483648, 2147483648, 0}, {0, 2097152, 0}};
    expectBuffer(Arguments{5, 8, false, 65536, 65536, 0}, chromaOnly);
    // The height goes up to 2^32, that of chroma to 2^31.
    expectBuffer(Arguments{5, 8, false, 1, 4294967295, 0}, chromaOnly);
    // 512 - 1 bytes with the extra memory.
    expectBuffer(Arguments{20, 8, false, 512, 1, 4294967295}, {8192, {4096, 0, 0}, {1, 0, 0}});
    // The image ends at the end of all memory, so the table (2^23 - 1 tiles, 4 bits each) begins at 0.
    expectBuffer(Arguments{20, 8, false, 4294967295, 1, 0}, {4194304, kNone, {4194304, 0, 0}});
}

TEST_F(Dec400BufferTest, CombinationsWithoutTileSizeGiveNothing)
{
    const auto expectNothing = [this](uint32_t format, uint32_t depth) {
        for (const bool tnr : {false, true}) {
            const Arguments arguments = {format, depth, tnr, 1920, 1080, 4096};
            expectBuffer(arguments, {0, kNone, kNone});
            const Lines lines = linesOf(arguments);
            EXPECT_LE(lines.size(), 1U) << "at most one line tells it";
            for (const std::string& line : lines)
                EXPECT_EQ(line.rfind("16 QV_DEC400_UTIL_WRAPPER[XOS] ", 0), 0U) << line;
        }
    };
    for (const uint32_t format : {0U,  1U,  2U,  4U,  6U,  8U,  19U, 24U,  25U,         42U,        43U,
                                  48U, 49U, 51U, 53U, 55U, 57U, 63U, 256U, 2147483653U, 4294967295U})
        expectNothing(format, 8);
    for (const uint32_t depth : {0U, 7U, 9U, 11U, 13U, 16U, 4294967295U}) expectNothing(21, depth);
}

TEST_F(Dec400BufferTest, StepsOfTwoPlanesAreLoggedAsErrors)
{
    EXPECT_EQ(linesOf({5, 8, false, 1920, 1080, 0}),
              (Lines{step("img_buf_size_total: 2088960, stride: 1920, height: 1088, tile_size[0]: 128, "
                          "img_buf_size[0]: 2088960, ts_sizes[0]: 2040}\n"),
                     step("img_buf_size_total: 3133440, stride: 1920, height: 544, tile_size[1]: 128, "
                          "img_buf_size[1]: 1044480, ts_sizes[1]: 1020}\n"),
                     step("img_buf_size_total after extra_mem (0 bytes): 3133440}\n"),
                     step("ts_offsets[0]: 3133440, ts_sizes[0]: 2040}\n"),
                     step("ts_offsets[1]: 3137536, ts_sizes[1]: 1020}\n"),
                     step("img_buf_size_total: 3133440, combined_buf_size: 3141632, num_planes: 2, "
                          "ts_offsets[num_planes - 1]: 3137536, ts_sizes[num_planes - 1]: 1020}\n")}));
}

TEST_F(Dec400BufferTest, StepsOfThreePlanesAreLoggedAsErrors)
{
    // The frame above with five bytes more, which move the tables by a page.
    EXPECT_EQ(linesOf({3, 16, false, 4096, 1080, 5}),
              (Lines{step("img_buf_size_total: 4423680, stride: 4096, height: 1080, tile_size[0]: 256, "
                          "img_buf_size[0]: 4423680, ts_sizes[0]: 4320}\n"),
                     step("img_buf_size_total: 5529600, stride: 2048, height: 540, tile_size[1]: 128, "
                          "img_buf_size[1]: 1105920, ts_sizes[1]: 1080}\n"),
                     step("img_buf_size_total: 6635520, stride: 2048, height: 540, tile_size[2]: 128, "
                          "img_buf_size[2]: 1105920, ts_sizes[2]: 1080}\n"),
                     step("img_buf_size_total after extra_mem (5 bytes): 6635525}\n"),
                     step("ts_offsets[0]: 6639616, ts_sizes[0]: 4320}\n"),
                     step("ts_offsets[1]: 6647808, ts_sizes[1]: 1080}\n"),
                     step("ts_offsets[2]: 6651904, ts_sizes[2]: 1080\n}"), // the brace stands behind the newline
                     step("img_buf_size_total: 6635525, combined_buf_size: 6656000, num_planes: 3, "
                          "ts_offsets[num_planes - 1]: 6651904, ts_sizes[num_planes - 1]: 1080}\n")}));
}

TEST_F(Dec400BufferTest, StepsOfOnePlaneAreLoggedAsErrors)
{
    // More than 2^31 bytes: 4294967040 = 8388607 tiles of 512 (and 256 bytes), 4 bits each.
    EXPECT_EQ(linesOf({23, 12, true, 4294967040, 1, 4294967295}),
              (Lines{step("img_buf_size_total: 4294967040, stride: 4294967040, height: 1, tile_size[0]: 512, "
                          "img_buf_size[0]: 4294967040, ts_sizes[0]: 4194304}\n"),
                     step("img_buf_size_total after extra_mem (4294967295 bytes): 4294967039}\n"),
                     step("ts_offsets[0]: 0, ts_sizes[0]: 4194304}\n"),
                     step("img_buf_size_total: 4294967039, combined_buf_size: 4194304, num_planes: 1, "
                          "ts_offsets[num_planes - 1]: 0, ts_sizes[num_planes - 1]: 4194304}\n")}));
}

TEST_F(Dec400BufferTest, UnsupportedCodesGiveNothingAndWarn)
{
    // Codes of frames that are not compressed, one that is but has no geometry, and none at all.
    const std::vector<std::pair<uint32_t, std::string>> unsupported = {
        {code("NV12"), "0x4e563132"},
        {code("P21Y"), "0x50323159"},
        {code("GR10"), "0x47523130"},
        {code("TILE"), "0x54494c45"},
        {0, "0x0"},
        {0xFFFFFFFF, "0xffffffff"},
    };
    for (const auto& [fourcc, number] : unsupported) {
        const auto calculate = [value = fourcc](uint32_t* offsets, uint32_t* tables) {
            return calculateDec400BufferSize(value, 1920, 1080, 1920, 8, offsets, tables);
        };
        expectBuffer(calculate, {0, kNone, kNone});
        const std::string message = "Unsupported compressed format " + number + ", not calculating buffer size.";
        EXPECT_EQ(logOf([&calculate] { calculate(nullptr, nullptr); }), Lines{formatsLine(32, message)});
    }
}

TEST_F(Dec400BufferTest, CalculationByCodeLogsTheMappingThenTheSteps)
{
    const Arguments arguments = {5, 8, false, 1920, 1080, 0};
    Lines expected = {"8 XOS_PSYS_FORMAT_UTILS[XOS] E:fourcc_to_css_frame_format"};
    for (const std::string& line : linesOf(arguments)) expected.push_back(line);
    EXPECT_EQ(logOf([] { calculateDec400BufferSize(code("CN12"), 0, 1080, 1920, 8, nullptr, nullptr); }), expected);
    EXPECT_EQ(logOf([] { dec400util::calcBufferSize(code("NV12"), 8, false, 1920, 1080, 0, nullptr, nullptr); }),
              expected);
}

class Dec400UtilityTest : public Dec400BufferTest {
protected:
    static void expectSame(uint32_t fourcc, const Arguments& arguments)
    {
        SCOPED_TRACE(characters(fourcc));
        PerPlane offsets;
        PerPlane tables;
        const uint32_t size = calculate(arguments, offsets.data(), tables.data());
        expectBuffer(
            [&](uint32_t* ownOffsets, uint32_t* ownTables) {
                return dec400util::calcBufferSize(fourcc, arguments.bitDepth, arguments.tnr, arguments.stride,
                                                  arguments.height, arguments.extra, ownOffsets, ownTables);
            },
            {size, offsets, tables});
    }
};

TEST_F(Dec400UtilityTest, PlanesGoByTheFrameFormat)
{
    for (const uint32_t fourcc : codes("C420 IYUV CS40 CSYI")) EXPECT_EQ(dec400util::numberOfPlanes(fourcc), 3U);
    for (const uint32_t fourcc : codes("NV12 CN12 CILE P01L PC10 PL12 PC12 C010 C012"))
        EXPECT_EQ(dec400util::numberOfPlanes(fourcc), 2U);
    // Among them formats that have chroma planes but no compressed form.
    for (const uint32_t fourcc : codes("BG8C GR10 BA10 YV12 NV21 NV16 M420 y032 IR16"))
        EXPECT_EQ(dec400util::numberOfPlanes(fourcc), 1U);
    EXPECT_EQ(logOf([] { dec400util::numberOfPlanes(code("NV12")); }),
              Lines{"8 XOS_PSYS_FORMAT_UTILS[XOS] E:fourcc_to_css_frame_format"});
}

TEST_F(Dec400UtilityTest, CodeWithoutFrameFormatIsTakenForTiledSemiPlanar)
{
    for (const uint32_t fourcc : {code("NANA"), code("P21Y"), code("BG10"), 0U, 0xFFFFFFFFU}) {
        EXPECT_EQ(dec400util::numberOfPlanes(fourcc), 2U);
        expectSame(fourcc, {7, 10, true, 1920, 1080, 100});
    }
    expectBuffer(
        [](uint32_t* offsets, uint32_t* tables) {
            return dec400util::calcBufferSize(0, 8, false, 1920, 1080, 0, offsets, tables);
        },
        {3145728, {3133440, 3141632, 0}, {8160, 4080, 0}}); // as for "CILE"
}

TEST_F(Dec400UtilityTest, ArgumentsArePassedOn)
{
    for (const bool tnr : {false, true}) {
        for (const uint32_t extra : {0U, 4097U}) {
            expectSame(code("CN12"), {5, 8, tnr, 200, 67, extra});
            expectSame(code("CT12"), {5, 8, tnr, 200, 67, extra}); // its own filter flag is another function's matter
            expectSame(code("C420"), {3, 16, tnr, 257, 67, extra});
            expectSame(code("PC12"), {52, 12, tnr, 200, 67, extra});
            expectSame(code("GR10"), {20, 10, tnr, 1000, 67, extra});
            expectSame(code("GR10"), {20, 9, tnr, 1000, 67, extra});
        }
    }
}

TEST_F(Dec400UtilityTest, FrameFormatsWithoutTileSizeGiveNothing)
{
    for (const uint32_t fourcc : codes("P01L PL12 BA10 bV0G NV21 IR16")) {
        expectBuffer(
            [fourcc](uint32_t* offsets, uint32_t* tables) {
                return dec400util::calcBufferSize(fourcc, 10, false, 1920, 1080, 0, offsets, tables);
            },
            {0, kNone, kNone});
    }
}

} // namespace

} // namespace formatstest
