// SPDX-License-Identifier: Apache-2.0
#include "formats/FormatsFixture.h"

#include <nuxo/formats/nci_dec400.h>

#include <algorithm>
#include <functional>
#include <set>

namespace formatstest {

namespace {

using Formats = std::set<uint32_t>;

const Formats kBayer = {20, 21, 22, 23};
const Formats kTiledFormats = {7, 54, 56};
const Formats kSemiPlanar = {5, 7, 49, 50, 51, 52, 53, 54, 55, 56};

/// The frame formats that exist, those beside them, and numbers that would be negative.
std::vector<uint32_t> allFormats()
{
    std::vector<uint32_t> result = {255, 256, 65535, 65536, 2147483647, 2147483648, 4294967240, 4294967291, 4294967295};
    for (uint32_t format = 0; format < 130; ++format) result.push_back(format);
    return result;
}

bool contains(const Formats& formats, uint32_t format)
{
    return formats.count(format) != 0;
}

/// The rules say nothing.
class Dec400RulesTest : public FormatsTest {
protected:
    ~Dec400RulesTest() override { EXPECT_TRUE(mLog.isEmpty()); }

    /// The frame formats for which @p holds.
    static Formats formatsWith(const std::function<bool(uint32_t)>& holds)
    {
        Formats result;
        for (const uint32_t format : allFormats()) {
            if (holds(format)) result.insert(format);
        }
        return result;
    }

    static Formats formatsOfDepth(uint32_t depth)
    {
        return formatsWith(
            [depth](uint32_t format) { return nci_dec400_psys_cmprs_validate_bit_depth(format, depth); });
    }
};

TEST_F(Dec400RulesTest, ValidFormats)
{
    for (const bool reserved : {false, true}) {
        EXPECT_EQ(formatsWith(
                      [reserved](uint32_t format) { return nci_dec400_psys_cmprs_validate_format(format, reserved); }),
                  (Formats{3, 5, 7, 20, 21, 22, 23, 50, 54, 56}));
    }
}

TEST_F(Dec400RulesTest, ValidBitDepths)
{
    EXPECT_EQ(formatsOfDepth(8), (Formats{3, 5, 7, 20, 21, 22, 23}));
    EXPECT_EQ(formatsOfDepth(10), (Formats{3, 20, 21, 22, 23, 50, 54}));
    EXPECT_EQ(formatsOfDepth(12), (Formats{3, 20, 21, 22, 23, 56}));
    for (const uint32_t depth : {0U, 1U, 7U, 9U, 11U, 13U, 14U, 16U, 264U, 4294967295U})
        EXPECT_EQ(formatsOfDepth(depth), Formats()) << depth;
}

TEST_F(Dec400RulesTest, BitDepths)
{
    for (const uint32_t reserved : {0U, 12U}) {
        const auto formatsImplying = [reserved](uint32_t depth) {
            return formatsWith([depth, reserved](uint32_t format) {
                return nci_dec400_psys_cmprs_get_bit_depth(format, reserved) == depth;
            });
        };
        EXPECT_EQ(formatsImplying(8), (Formats{5, 7}));
        EXPECT_EQ(formatsImplying(10), (Formats{50, 54}));
        EXPECT_EQ(formatsImplying(12), (Formats{56}));
        EXPECT_EQ(formatsImplying(0).size(), allFormats().size() - 5);
    }
}

struct Alignment {
    uint32_t bytes;
    uint32_t factor;
};

Alignment documentedAlignment(uint32_t format, bool tnr)
{
    if (format == 3) return {256, 2};
    if (contains({5, 50}, format)) return {128, tnr ? 4U : 2U};
    if (contains(kTiledFormats, format)) return {64, 8};
    if (contains(kBayer, format)) return {512, 1};
    return {1, 1};
}

TEST_F(Dec400RulesTest, StrideAlignments)
{
    for (const uint32_t format : allFormats()) {
        for (const bool tnr : {false, true}) {
            SCOPED_TRACE(std::to_string(format) + (tnr ? " tnr" : ""));
            const Alignment expected = documentedAlignment(format, tnr);
            for (const uint32_t reserved : {0U, 10U, 4294967295U}) {
                uint32_t factor = kUnwritten;
                uint32_t extra = kUnwritten;
                EXPECT_EQ(nci_dec400_cmprs_get_stride_alignment(format, reserved, tnr, &factor, &extra),
                          expected.bytes);
                EXPECT_EQ(factor, expected.factor);
                EXPECT_EQ(extra, 0U);
            }
        }
    }
}

TEST_F(Dec400RulesTest, StrideAlignmentSkipsNullOutputs)
{
    for (const uint32_t format : {0U, 3U, 5U, 7U, 20U}) {
        const uint32_t expected = documentedAlignment(format, true).bytes;
        uint32_t factor = kUnwritten;
        uint32_t extra = kUnwritten;
        EXPECT_EQ(nci_dec400_cmprs_get_stride_alignment(format, 0, true, nullptr, nullptr), expected);
        EXPECT_EQ(nci_dec400_cmprs_get_stride_alignment(format, 0, true, &factor, nullptr), expected);
        EXPECT_EQ(factor, documentedAlignment(format, true).factor);
        EXPECT_EQ(nci_dec400_cmprs_get_stride_alignment(format, 0, true, nullptr, &extra), expected);
        EXPECT_EQ(extra, 0U);
    }
}

TEST_F(Dec400RulesTest, InputSystemCompressesSomeCombinations)
{
    constexpr uint32_t kPins[] = {0, 1, 2, 3, 4, 257, 4294967295};
    constexpr uint32_t kFrames[] = {0, 19, 20, 21, 23, 24, 25, 32, 36, 4294967295};
    constexpr uint32_t kTypes[] = {0, 41, 42, 43, 44, 45, 66, 67, 68, 4294967295}; // 66 is 0x42
    int compressed = 0;
    for (const uint32_t pin : kPins) {
        for (const uint32_t frame : kFrames) {
            for (const uint32_t type : kTypes) {
                SCOPED_TRACE(std::to_string(pin) + " " + std::to_string(frame) + " " + std::to_string(type));
                const bool expected =
                    (pin == 1 || pin == 3) && (frame == 20 || frame == 24) && type >= 42 && type <= 44;
                uint32_t flag = kUnwritten;
                EXPECT_EQ(nci_dec400_isys_cmprs_get_stride_alignment(pin, frame, type, &flag), expected ? 512U : 0U);
                EXPECT_EQ(flag, expected ? 1U : 0U);
                EXPECT_EQ(nci_dec400_isys_cmprs_get_stride_alignment(pin, frame, type, nullptr), expected ? 512U : 0U);
                if (expected) ++compressed;
            }
        }
    }
    EXPECT_EQ(compressed, 2 * 2 * 3);
}

/// Expects the tile sizes of planes 0 to 3, and of all above as of 3.
void expectTiles(uint32_t format, uint32_t bitDepth, bool tnr, const std::array<uint32_t, 4>& expected)
{
    SCOPED_TRACE(std::to_string(format) + " of depth " + std::to_string(bitDepth) + (tnr ? " tnr" : ""));
    for (uint32_t plane = 0; plane < 4; ++plane)
        EXPECT_EQ(nci_dec400_cmpr_get_tile_size(format, bitDepth, plane, tnr), expected[plane]) << plane;
    for (const uint32_t plane : {4U, 7U, 2147483648U, 4294967295U})
        EXPECT_EQ(nci_dec400_cmpr_get_tile_size(format, bitDepth, plane, tnr), expected[3]) << plane;
}

TEST_F(Dec400RulesTest, TilesOfPlanarFormats)
{
    for (const uint32_t depth : {0U, 8U, 9U, 16U}) {
        for (const bool tnr : {false, true}) expectTiles(3, depth, tnr, {256, 128, 128, 0});
    }
}

TEST_F(Dec400RulesTest, TilesOfSemiPlanarFormats)
{
    for (const uint32_t depth : {0U, 8U, 9U, 16U}) {
        // Without temporal noise reduction the plane does not matter, not even one that does not exist.
        expectTiles(5, depth, false, {128, 128, 128, 128});
        expectTiles(5, depth, true, {512, 256, 0, 0});
        for (const uint32_t format : {50U, 52U}) {
            expectTiles(format, depth, false, {256, 256, 256, 256});
            expectTiles(format, depth, true, {512, 256, 0, 0});
        }
    }
}

TEST_F(Dec400RulesTest, TilesOfTiledFormats)
{
    for (const uint32_t format : kTiledFormats) {
        for (const uint32_t depth : {0U, 8U, 10U, 12U, 16U}) {
            for (const bool tnr : {false, true}) expectTiles(format, depth, tnr, {256, 256, 256, 256});
        }
    }
}

TEST_F(Dec400RulesTest, TilesOfBayerFormats)
{
    for (const uint32_t format : kBayer) {
        for (const bool tnr : {false, true}) {
            for (const uint32_t depth : {8U, 10U, 12U}) expectTiles(format, depth, tnr, {512, 512, 512, 512});
            for (const uint32_t depth : {0U, 1U, 7U, 9U, 11U, 13U, 14U, 16U, 2147483656U, 4294967295U})
                expectTiles(format, depth, tnr, {0, 0, 0, 0});
        }
    }
}

TEST_F(Dec400RulesTest, OtherFormatsHaveNoTiles)
{
    const Formats withTiles = {3, 5, 7, 20, 21, 22, 23, 50, 52, 54, 56};
    for (const uint32_t format : allFormats()) {
        if (contains(withTiles, format)) continue;
        for (const uint32_t depth : {0U, 8U, 10U, 12U}) {
            for (const bool tnr : {false, true}) expectTiles(format, depth, tnr, {0, 0, 0, 0});
        }
    }
}

TEST_F(Dec400RulesTest, BayerFormatOfOddDepthHasNoTilesAndIsInvalid)
{
    EXPECT_EQ(nci_dec400_cmpr_get_tile_size(20, 9, 0, false), 0U);
    EXPECT_FALSE(nci_dec400_psys_cmprs_validate_bit_depth(20, 9));
}

TEST_F(Dec400RulesTest, PlanesAndTheirSizes)
{
    for (const uint32_t format : allFormats()) {
        const bool semiPlanar = contains(kSemiPlanar, format);
        const bool planar = format == 3;
        EXPECT_EQ(nci_dec400_cmpr_get_num_planes(format), planar ? 3U : semiPlanar ? 2U : 1U) << format;
        EXPECT_EQ(nci_dec400_cmpr_get_chroma_height_div(format), planar || semiPlanar ? 2U : 1U) << format;
        EXPECT_EQ(nci_dec400_cmpr_get_chroma_stride_div(format), planar ? 2U : 1U) << format;
    }
}

TEST_F(Dec400RulesTest, TiledFormats)
{
    EXPECT_EQ(formatsWith(nci_dec400_cmprs_is_tiled), kTiledFormats);
}

struct PlaneCase {
    uint32_t stride;
    uint32_t height;
    uint32_t tile;
    bool tiled;
    uint32_t image;
    uint32_t table;
};

constexpr PlaneCase kPlaneCases[] = {
    // 6400 bytes are 100 tiles of 64, 50 of 128, 25 of 256 and 12 of 512.
    {640, 10, 64, false, 6400, 13},  // 100 bits, (100 + 7) / 8
    {640, 10, 128, false, 6400, 7},  // 50 bits
    {640, 10, 256, false, 6400, 7},  // 25 * 2 bits
    {640, 10, 512, false, 6400, 6},  // 12 * 4 bits
    {640, 10, 32, false, 6400, 100}, // 200 * 4 bits: small tiles count as large ones
    {640, 10, 100, false, 6400, 32}, // 64 * 4 bits
    {640, 10, 64, true, 6400, 100},  // 8 bits each
    {640, 10, 256, true, 6400, 25},
    // Begun tiles do not count.
    {127, 1, 128, false, 127, 0},
    {128, 1, 128, false, 128, 1},
    {255, 1, 128, false, 255, 1},
    {511, 1, 256, true, 511, 1},
    {0, 1080, 128, false, 0, 0},
    {1920, 0, 128, false, 0, 0},
    {1920, 1088, 128, false, 2088960, 2040}, // 16320 bits
    // The image wraps before its tiles are counted.
    {65536, 65536, 128, false, 0, 0},
    {65537, 65537, 128, false, 131073, 128},          // 2^17 + 1: 1024 bits
    {4294967295, 1, 128, false, 4294967295, 4194304}, // 2^25 - 1 bits and 7 are 2^25 + 6
    // Status bits of the smallest tiles have more than 32 bits.
    {4294967295, 1, 1, true, 4294967295, 4294967295},
    {4294967295, 1, 1, false, 4294967295, 2147483648}, // (2^34 - 4 + 7) / 8 = 2^31 and 3 / 8
    {4294967295, 1, 4294967295, false, 4294967295, 1}, // (4 + 7) / 8
};

TEST_F(Dec400RulesTest, PlaneHasAnImageAndATable)
{
    for (const PlaneCase& plane : kPlaneCases) {
        SCOPED_TRACE(std::to_string(plane.stride) + " x " + std::to_string(plane.height) + " in " +
                     std::to_string(plane.tile) + (plane.tiled ? " tiled" : ""));
        const auto calculate = [&plane](uint32_t* image, uint32_t* table) {
            return nci_dec400_cmprs_calc_plane_buf_size(plane.stride, plane.height, plane.tile, plane.tiled, image,
                                                        table);
        };
        const uint32_t sum = plane.image + plane.table;
        uint32_t image = kUnwritten;
        uint32_t table = kUnwritten;
        EXPECT_EQ(calculate(&image, &table), sum);
        EXPECT_EQ(image, plane.image);
        EXPECT_EQ(table, plane.table);
        image = table = kUnwritten;
        EXPECT_EQ(calculate(nullptr, nullptr), sum);
        EXPECT_EQ(calculate(&image, nullptr), sum);
        EXPECT_EQ(calculate(nullptr, &table), sum);
        EXPECT_EQ(image, plane.image);
        EXPECT_EQ(table, plane.table);
    }
}

TEST_F(Dec400RulesTest, PlaneWithoutTileSizeHasNoTable)
{
    for (const bool tiled : {false, true}) {
        uint32_t image = kUnwritten;
        uint32_t table = kUnwritten;
        (void)nci_dec400_cmprs_calc_plane_buf_size(640, 10, 0, tiled, &image, &table); // its result is not settled
        EXPECT_EQ(image, 6400U);
        EXPECT_EQ(table, 0U);
        (void)nci_dec400_cmprs_calc_plane_buf_size(640, 10, 0, tiled, nullptr, nullptr);
    }
}

} // namespace

} // namespace formatstest
