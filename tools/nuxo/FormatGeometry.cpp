// SPDX-License-Identifier: Apache-2.0
#include "FormatGeometry.h"

#include "FormatNames.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/formats/nci_dec400.h>

#include <algorithm>
#include <array>
#include <limits>

namespace NuxoTool {

using NUXOFormats::qv_format_t;

namespace {

constexpr size_t kTables = 3;
constexpr uint32_t kUnwritten = std::numeric_limits<uint32_t>::max();
constexpr uint32_t kTableAlignment = 4096;
constexpr uint32_t kHeightAlignment = 32;
// Frame formats whose compressed planes are rounded up to whole rows of tiles.
constexpr uint32_t kHeightAligned[] = {5, 7, 50, 52, 54, 56};

using Tables = std::array<uint32_t, kTables>;

uint32_t roundedUp(uint32_t value, uint32_t multiple)
{
    return (value + multiple - 1) / multiple * multiple;
}

// The one code whose buffers are reference frames of the temporal noise filter.
bool isReferenceFrame(const qv_format_t& format)
{
    return format.fourcc == fourccOf("CT12");
}

std::vector<PlaneGeometry> planesOf(const qv_format_t& format)
{
    std::vector<PlaneGeometry> planes;
    for (const NUXOFormats::qv_format_plane_t& plane : format.planes) {
        PlaneGeometry geometry;
        geometry.name = plane.name;
        geometry.bitsPerSample = plane.bitsPerSample;
        planes.push_back(geometry);
    }
    if (planes.empty()) planes.emplace_back();
    return planes;
}

void addTiles(const qv_format_t& format, uint32_t frameFormat, std::vector<PlaneGeometry>& planes)
{
    for (size_t i = 0; i < planes.size(); ++i) {
        const uint32_t tile = nci_dec400_cmpr_get_tile_size(frameFormat, format.bitDepth, static_cast<uint32_t>(i),
                                                            isReferenceFrame(format));
        if (tile != 0) planes[i].tileSize = tile;
    }
}

void addLines(uint32_t frameFormat, uint32_t stride, std::vector<PlaneGeometry>& planes)
{
    const uint32_t divisor = nci_dec400_cmpr_get_chroma_stride_div(frameFormat);
    for (size_t i = 0; i < planes.size(); ++i) planes[i].lineBytes = i == 0 ? stride : stride / divisor;
}

void addTables(const Tables& offsets, const Tables& sizes, std::vector<PlaneGeometry>& planes)
{
    for (size_t i = 0; i < std::min(planes.size(), kTables); ++i) {
        planes[i].tableOffset = offsets[i];
        planes[i].tableSize = sizes[i];
    }
}

// The library tells the bytes of one image of which stride and lines are known. They are shown only if all of them
// together end where the first table starts.
void addImages(uint32_t frameFormat, uint32_t height, std::vector<PlaneGeometry>& planes)
{
    const bool isAligned =
        std::find(std::begin(kHeightAligned), std::end(kHeightAligned), frameFormat) != std::end(kHeightAligned);
    std::vector<uint32_t> images;
    uint32_t total = 0;
    for (const PlaneGeometry& plane : planes) {
        const uint32_t divisor = images.empty() ? 1 : nci_dec400_cmpr_get_chroma_height_div(frameFormat);
        const uint32_t lines = isAligned ? roundedUp(height / divisor, kHeightAlignment) : height / divisor;
        uint32_t image = 0;
        nci_dec400_cmprs_calc_plane_buf_size(plane.lineBytes.value_or(0), lines, plane.tileSize.value_or(0),
                                             nci_dec400_cmprs_is_tiled(frameFormat), &image, nullptr);
        images.push_back(image);
        total += image;
    }
    if (planes.front().tableOffset != roundedUp(total, kTableAlignment)) return;
    for (size_t i = 0; i < planes.size(); ++i) planes[i].imageBytes = images[i];
}

} // namespace

std::optional<FrameFormat> frameFormatOf(uint32_t fourcc)
{
    FrameFormat format;
    uint8_t raw = 0;
    uint8_t packed = 0;
    if (fourcc_to_css_frame_format(fourcc, &format.value, &raw, &packed) != StatusOk) return std::nullopt;
    format.isRaw = raw != 0;
    format.isPacked64 = packed != 0;
    return format;
}

FormatGeometry geometryOf(const qv_format_t& format, const FrameSize& size)
{
    FormatGeometry geometry;
    geometry.planes = planesOf(format);
    const std::optional<FrameFormat> frameFormat = frameFormatOf(format.fourcc);
    const bool hasTiles = format.isCompressed && frameFormat;
    if (hasTiles) addTiles(format, frameFormat->value, geometry.planes);

    if (size.stride) {
        geometry.stride = size.stride;
    } else if (size.width) {
        geometry.stride = NUXOFormats::getBpl(format, *size.width);
    } else {
        return geometry;
    }
    geometry.planes.front().lineBytes = geometry.stride; // of other planes only compressed formats tell
    if (hasTiles) addLines(frameFormat->value, *geometry.stride, geometry.planes);
    if (!size.height) return geometry;

    Tables offsets = {kUnwritten, kUnwritten, kUnwritten};
    Tables sizes = offsets;
    geometry.bufferSize = NUXOFormats::calculateBufferSize(format, size.width.value_or(0), *size.height,
                                                           *geometry.stride, offsets.data(), sizes.data());
    if (hasTiles && offsets[0] != kUnwritten) {
        addTables(offsets, sizes, geometry.planes);
        addImages(frameFormat->value, *size.height, geometry.planes);
    }
    return geometry;
}

bool mayOverflow(const FrameSize& size, const FormatGeometry& geometry)
{
    constexpr uint64_t most = std::numeric_limits<uint32_t>::max();
    constexpr uint64_t widest = 6;        // bytes of a pixel in any rule for strides
    constexpr uint64_t margin = 1U << 20; // more than alignments and tables add
    const uint64_t lines = size.height.value_or(0);
    const uint64_t bytes = geometry.stride.value_or(0) * lines;
    return size.width.value_or(0) * widest > most || bytes + bytes / 2 + margin > most;
}

} // namespace NuxoTool
