// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_FORMATS_SECOND_COMPUTATION_H
#define NUXO_TESTS_FORMATS_SECOND_COMPUTATION_H

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

/// The arithmetic of pixel formats and compressed buffers once more, for comparison with the library's. It works in
/// another manner: whole numbers of 64 bits that are cut to 32 bits where the rules say so, rounding to single precision
/// done by hand, and questions to the code instead of tables.
namespace second {

/// A four-character code; the text must have four characters.
constexpr uint32_t code(const char* text)
{
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = value << 8 | static_cast<unsigned char>(text[i]);
    return value;
}

/// The codes that have a frame format but no row in the format table.
std::vector<uint32_t> codesWithoutRow();

/// Whether the code has a stride rule of its own.
bool hasStrideRule(uint32_t fourcc);
/// Bytes per line.
uint32_t stride(uint32_t fourcc, uint32_t width);

struct FrameFormat {
    uint32_t value;
    uint8_t raw;
    uint8_t p64;
};

std::optional<FrameFormat> frameFormat(uint32_t fourcc);

using PerPlane = std::array<uint32_t, 3>;

/// What a compressed buffer consists of.
struct Buffer {
    uint32_t size = 0;
    PerPlane offsets = {};
    PerPlane tables = {};
};

/// Whether frames with this code have tile-status tables.
bool isCompressedFrame(uint32_t fourcc);
/// Bytes of an uncompressed frame.
uint32_t plainFrameSize(uint32_t fourcc, uint32_t bpl, uint32_t height);
/// Buffer of a compressed frame; all zero for a code of no compressed frame.
Buffer compressedFrame(uint32_t fourcc, uint32_t bitDepth, uint32_t bpl, uint32_t height);

// What follows goes by frame format.

bool isFormatCompressible(uint32_t format);
bool isDepthCompressible(uint32_t format, uint32_t depth);
uint32_t impliedDepth(uint32_t format);

struct Alignment {
    uint32_t bytes;
    uint32_t factor;
};

Alignment strideAlignment(uint32_t format, bool tnr);
/// 0 when the input system cannot compress the combination.
uint32_t inputStrideAlignment(uint32_t pinType, uint32_t format, uint32_t mipiType);

uint32_t tileSize(uint32_t format, uint32_t bitDepth, uint32_t plane, bool tnr);
uint32_t planes(uint32_t format);
uint32_t chromaHeightDivisor(uint32_t format);
uint32_t chromaStrideDivisor(uint32_t format);
bool isTiled(uint32_t format);

struct Plane {
    uint32_t image;
    uint32_t table;
};

Plane planeSize(uint32_t stride, uint32_t height, uint32_t tile, bool tiled);
/// All zero for a combination without tile size.
Buffer buffer(uint32_t format, uint32_t bitDepth, bool tnr, uint32_t stride, uint32_t height, uint32_t extra);

} // namespace second

#endif
