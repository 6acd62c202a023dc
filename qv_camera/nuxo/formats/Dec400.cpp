// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/formats/Alignment.h>
#include <nuxo/formats/dec400util.h>
#include <nuxo/formats/qv_css_frame_format.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace {

using NUXOFormats::alignUp;

constexpr const char* kTag = "QV_DEC400_UTIL_WRAPPER[XOS]";
constexpr uint32_t kMostPlanes = 3;

// Frame formats of the camera host library.
constexpr uint32_t kPlanar = 3;
constexpr uint32_t kSemiPlanar = 5;
constexpr uint32_t kTiledSemiPlanar = 7;
constexpr uint32_t kFirstBayer = 20;
constexpr uint32_t kLastBayer = 23;
constexpr uint32_t kFirstDeepSemiPlanar = 49;
constexpr uint32_t kSemiPlanar10 = 50;
constexpr uint32_t kSemiPlanar12 = 52;
constexpr uint32_t kTiledSemiPlanar10 = 54;
constexpr uint32_t kTiledSemiPlanar12 = 56;
constexpr uint32_t kLastDeepSemiPlanar = 56;

// Tile sizes in bytes.
constexpr std::array<uint32_t, kMostPlanes> kPlanarTiles = {256, 128, 128};
constexpr std::array<uint32_t, kMostPlanes> kTnrTiles = {512, 256, 0};
constexpr uint32_t kFirstBayerDepth = 8;
constexpr std::array<uint32_t, 5> kBayerTiles = {512, 0, 512, 0, 512};

constexpr bool isBayer(uint32_t fmt)
{
    return fmt >= kFirstBayer && fmt <= kLastBayer;
}

constexpr bool isDeepSemiPlanar(uint32_t fmt)
{
    return fmt >= kFirstDeepSemiPlanar && fmt <= kLastDeepSemiPlanar;
}

// Whether planes have a multiple of 32 lines.
bool hasPaddedHeight(uint32_t fmt)
{
    return fmt == kSemiPlanar || fmt == kSemiPlanar10 || fmt == kSemiPlanar12 || nci_dec400_cmprs_is_tiled(fmt);
}

template <size_t Count> uint32_t entryOrZero(const std::array<uint32_t, Count>& table, uint32_t index)
{
    return index < Count ? table[index] : 0U;
}

constexpr uint32_t alignToPage(uint32_t value)
{
    return alignUp(value, 4096);
}

uint32_t statusBitsOfTile(uint32_t tileSize, bool tiled)
{
    if (tiled) return 8;
    switch (tileSize) {
    case 64:
    case 128: return 1;
    case 256: return 2;
    default: return 4;
    }
}

// Bytes of the table with the status of all tiles. In 64 bits: small tiles are many.
uint32_t tableSize(uint32_t imageSize, uint32_t tileSize, bool tiled)
{
    if (tileSize == 0) return 0;
    return static_cast<uint32_t>((uint64_t{imageSize / tileSize} * statusBitsOfTile(tileSize, tiled) + 7) / 8);
}

void store(uint32_t* out, uint32_t value)
{
    if (out != nullptr) *out = value;
}

using PerPlane = std::array<uint32_t, kMostPlanes>;

void store(uint32_t* out, const PerPlane& values)
{
    if (out != nullptr) std::copy(values.begin(), values.end(), out);
}

struct Plane {
    uint32_t stride;
    uint32_t height;
    uint32_t tileSize;
    uint32_t imageSize;
    uint32_t tableSize;
};

Plane planeOf(uint32_t fmt, uint32_t tileSize, uint32_t stride, uint32_t height)
{
    Plane plane = {stride, hasPaddedHeight(fmt) ? alignUp(height, 32) : height, tileSize, 0, 0};
    plane.imageSize = plane.stride * plane.height;
    plane.tableSize = tableSize(plane.imageSize, tileSize, nci_dec400_cmprs_is_tiled(fmt));
    return plane;
}

// The chroma planes are computed from the height that was given, not from the padded one.
Plane planeOf(uint32_t fmt, uint32_t index, uint32_t tileSize, uint32_t stride, uint32_t height)
{
    if (index == 0) return planeOf(fmt, tileSize, stride, height);
    return planeOf(fmt, tileSize, stride / nci_dec400_cmpr_get_chroma_stride_div(fmt),
                   height / nci_dec400_cmpr_get_chroma_height_div(fmt));
}

void logPlane(uint32_t index, uint32_t total, const Plane& plane)
{
    static constexpr std::array<const char*, kMostPlanes> kLines = {
        "nci_dec400_cmprs_calc_buf_size || {img_buf_size_total: %u, stride: %u, height: %u, tile_size[0]: %u, "
        "img_buf_size[0]: %u, ts_sizes[0]: %u}\n",
        "nci_dec400_cmprs_calc_buf_size || {img_buf_size_total: %u, stride: %u, height: %u, tile_size[1]: %u, "
        "img_buf_size[1]: %u, ts_sizes[1]: %u}\n",
        "nci_dec400_cmprs_calc_buf_size || {img_buf_size_total: %u, stride: %u, height: %u, tile_size[2]: %u, "
        "img_buf_size[2]: %u, ts_sizes[2]: %u}\n"};
    NUXO_LOG(NUXO::LogError, kTag, kLines[index], total, plane.stride, plane.height, plane.tileSize, plane.imageSize,
             plane.tableSize);
}

void logTable(uint32_t index, uint32_t offset, uint32_t size)
{
    // Readers of these lines know the third by its odd end.
    static constexpr std::array<const char*, kMostPlanes> kLines = {
        "nci_dec400_cmprs_calc_buf_size || {ts_offsets[0]: %u, ts_sizes[0]: %u}\n",
        "nci_dec400_cmprs_calc_buf_size || {ts_offsets[1]: %u, ts_sizes[1]: %u}\n",
        "nci_dec400_cmprs_calc_buf_size || {ts_offsets[2]: %u, ts_sizes[2]: %u\n}"};
    NUXO_LOG(NUXO::LogError, kTag, kLines[index], offset, size);
}

} // namespace

extern "C" {

bool nci_dec400_psys_cmprs_validate_format(uint32_t fmt, bool /*reserved*/)
{
    return fmt == kPlanar || fmt == kSemiPlanar || fmt == kSemiPlanar10 || isBayer(fmt) ||
           nci_dec400_cmprs_is_tiled(fmt);
}

bool nci_dec400_psys_cmprs_validate_bit_depth(uint32_t fmt, uint32_t depth)
{
    if (fmt == kPlanar || isBayer(fmt)) return depth == 8 || depth == 10 || depth == 12;
    const uint32_t implied = nci_dec400_psys_cmprs_get_bit_depth(fmt, 0);
    return implied != 0 && depth == implied;
}

uint32_t nci_dec400_psys_cmprs_get_bit_depth(uint32_t fmt, uint32_t /*reserved*/)
{
    switch (fmt) {
    case kSemiPlanar:
    case kTiledSemiPlanar: return 8;
    case kSemiPlanar10:
    case kTiledSemiPlanar10: return 10;
    case kTiledSemiPlanar12: return 12;
    default: return 0;
    }
}

uint32_t nci_dec400_cmprs_get_stride_alignment(uint32_t fmt, uint32_t /*reserved*/, bool tnr, uint32_t* strideFactor,
                                               uint32_t* extra)
{
    uint32_t alignment = 1;
    uint32_t factor = 1;
    if (fmt == kPlanar) {
        alignment = 256;
        factor = 2;
    } else if (fmt == kSemiPlanar || fmt == kSemiPlanar10) {
        alignment = 128;
        factor = tnr ? 4 : 2;
    } else if (nci_dec400_cmprs_is_tiled(fmt)) {
        alignment = 64;
        factor = 8;
    } else if (isBayer(fmt)) {
        alignment = 512;
    }
    store(strideFactor, factor);
    store(extra, 0U);
    return alignment;
}

uint32_t nci_dec400_isys_cmprs_get_stride_alignment(uint32_t pinType, uint32_t isysFormat, uint32_t mipiType,
                                                    uint32_t* flag)
{
    const bool compressible =
        (pinType == 1 || pinType == 3) && (isysFormat == 20 || isysFormat == 24) && mipiType >= 42 && mipiType <= 44;
    store(flag, compressible ? 1U : 0U);
    return compressible ? 512 : 0;
}

uint32_t nci_dec400_cmpr_get_tile_size(uint32_t fmt, uint32_t bitDepth, uint32_t plane, bool tnr)
{
    if (isBayer(fmt)) return bitDepth < kFirstBayerDepth ? 0 : entryOrZero(kBayerTiles, bitDepth - kFirstBayerDepth);
    switch (fmt) {
    case kPlanar: return entryOrZero(kPlanarTiles, plane);
    case kSemiPlanar: return tnr ? entryOrZero(kTnrTiles, plane) : 128;
    case kSemiPlanar10:
    case kSemiPlanar12: return tnr ? entryOrZero(kTnrTiles, plane) : 256;
    case kTiledSemiPlanar:
    case kTiledSemiPlanar10:
    case kTiledSemiPlanar12: return 256;
    default: return 0;
    }
}

uint32_t nci_dec400_cmpr_get_num_planes(uint32_t fmt)
{
    if (fmt == kPlanar) return 3;
    return fmt == kSemiPlanar || fmt == kTiledSemiPlanar || isDeepSemiPlanar(fmt) ? 2 : 1;
}

uint32_t nci_dec400_cmpr_get_chroma_height_div(uint32_t fmt)
{
    return nci_dec400_cmpr_get_num_planes(fmt) > 1 ? 2 : 1;
}

uint32_t nci_dec400_cmpr_get_chroma_stride_div(uint32_t fmt)
{
    return fmt == kPlanar ? 2 : 1;
}

bool nci_dec400_cmprs_is_tiled(uint32_t fmt)
{
    return fmt == kTiledSemiPlanar || fmt == kTiledSemiPlanar10 || fmt == kTiledSemiPlanar12;
}

uint32_t nci_dec400_cmprs_calc_plane_buf_size(uint32_t stride, uint32_t height, uint32_t tileSize, bool tiled,
                                              uint32_t* imgSize, uint32_t* tsSize)
{
    const uint32_t image = stride * height;
    const uint32_t table = tableSize(image, tileSize, tiled);
    store(imgSize, image);
    store(tsSize, table);
    return image + table;
}

uint32_t nci_dec400_cmprs_calc_buf_size(uint32_t fmt, uint32_t bitDepth, bool tnr, uint32_t stride, uint32_t height,
                                        uint32_t extra_mem, uint32_t ts_offsets[3], uint32_t ts_sizes[3])
{
    const uint32_t planes = nci_dec400_cmpr_get_num_planes(fmt);
    PerPlane tiles = {};
    for (uint32_t i = 0; i < planes; ++i) tiles[i] = nci_dec400_cmpr_get_tile_size(fmt, bitDepth, i, tnr);
    PerPlane offsets = {};
    PerPlane sizes = {};
    store(ts_offsets, offsets);
    store(ts_sizes, sizes);
    if (std::find(tiles.begin(), tiles.begin() + planes, 0U) != tiles.begin() + planes) return 0;

    uint32_t total = 0;
    for (uint32_t i = 0; i < planes; ++i) {
        const Plane plane = planeOf(fmt, i, tiles[i], stride, height);
        sizes[i] = plane.tableSize;
        total += plane.imageSize;
        logPlane(i, total, plane);
    }
    total += extra_mem;
    NUXO_LOG(NUXO::LogError, kTag,
             "nci_dec400_cmprs_calc_buf_size || {img_buf_size_total after extra_mem (%u bytes): %u}\n", extra_mem,
             total);

    uint32_t end = total;
    for (uint32_t i = 0; i < planes; ++i) {
        offsets[i] = alignToPage(end);
        end = offsets[i] + sizes[i];
        logTable(i, offsets[i], sizes[i]);
    }
    const uint32_t combined = alignToPage(end);
    NUXO_LOG(NUXO::LogError, kTag,
             "nci_dec400_cmprs_calc_buf_size || {img_buf_size_total: %u, combined_buf_size: %u, num_planes: %u, "
             "ts_offsets[num_planes - 1]: %u, ts_sizes[num_planes - 1]: %u}\n",
             total, combined, planes, offsets[planes - 1], sizes[planes - 1]);
    store(ts_offsets, offsets);
    store(ts_sizes, sizes);
    return combined;
}

} // extern "C"

namespace dec400util {

namespace {

uint32_t frameFormatOf(uint32_t fourcc)
{
    uint32_t format = kTiledSemiPlanar; // stays for codes that have none
    static_cast<void>(fourcc_to_css_frame_format(fourcc, &format, nullptr, nullptr));
    return format;
}

} // namespace

uint32_t numberOfPlanes(uint32_t fourcc)
{
    return nci_dec400_cmpr_get_num_planes(frameFormatOf(fourcc));
}

uint32_t calcBufferSize(uint32_t fourcc, uint32_t bitDepth, bool tnr, uint32_t stride, uint32_t height,
                        uint32_t extra_mem, uint32_t* ts_offsets, uint32_t* ts_sizes)
{
    return nci_dec400_cmprs_calc_buf_size(frameFormatOf(fourcc), bitDepth, tnr, stride, height, extra_mem, ts_offsets,
                                          ts_sizes);
}

} // namespace dec400util
