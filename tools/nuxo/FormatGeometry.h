// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_FORMAT_GEOMETRY_H
#define NUXO_TOOL_FORMAT_GEOMETRY_H

#include <nuxo/formats/NUXOFormats.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NuxoTool {

/// What a format is to the camera host library.
struct FrameFormat {
    uint32_t value = 0;
    bool isRaw = false;
    bool isPacked64 = false; ///< packed into 64-bit words
};

/// The frame format of a code, nothing when it has none.
std::optional<FrameFormat> frameFormatOf(uint32_t fourcc);

/// A frame whose buffer is asked for, as far as it is known.
struct FrameSize {
    std::optional<uint32_t> width;
    std::optional<uint32_t> height;
    std::optional<uint32_t> stride; ///< otherwise the format's own for the width
};

/// One plane of a buffer. What no rule defines is missing.
struct PlaneGeometry {
    std::string name; ///< empty for packed formats
    std::optional<uint32_t> bitsPerSample;
    std::optional<uint32_t> lineBytes;
    // Of compressed formats.
    std::optional<uint32_t> tileSize;
    std::optional<uint32_t> imageBytes;
    std::optional<uint32_t> tableOffset;
    std::optional<uint32_t> tableSize;
};

/// How the buffer of one frame is laid out.
struct FormatGeometry {
    std::optional<uint32_t> stride;
    std::optional<uint32_t> bufferSize;
    std::vector<PlaneGeometry> planes;
};

FormatGeometry geometryOf(const NUXOFormats::qv_format_t& format, const FrameSize& size);

/// Whether sizes of this frame may exceed 32 bits, where the library's arithmetic starts again from 0.
bool mayOverflow(const FrameSize& size, const FormatGeometry& geometry);

} // namespace NuxoTool

#endif
