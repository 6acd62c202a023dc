// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_FORMATS_LIBRARY_COMPARISON_H
#define NUXO_TESTS_FORMATS_LIBRARY_COMPARISON_H

#include <cstdint>
#include <ostream>

/// Asks the library and the second computation the same questions.
namespace second {

/// About a code and frames with it.
struct FormatQuestion {
    uint32_t fourcc = 0;
    uint32_t bitDepth = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t bpl = 0;
    uint32_t extra = 0;
    bool tnr = false;
    uint32_t without = 0; ///< a bit for each output that is null: offsets, tables, frame format, raw flag, P64 flag
};

/// About a frame format and compressed buffers with it.
struct BufferQuestion {
    uint32_t format = 0;
    uint32_t bitDepth = 0;
    uint32_t plane = 0;
    uint32_t stride = 0;
    uint32_t height = 0;
    uint32_t extra = 0;
    bool tnr = false;
    uint32_t without = 0; ///< a bit for each output that is null: offsets, tables, factor, extra
};

/// About one plane of a compressed buffer.
struct PlaneQuestion {
    uint32_t stride = 0;
    uint32_t height = 0;
    uint32_t tile = 0;
    bool tiled = false;
    uint32_t without = 0; ///< a bit for each output that is null: image, table
};

/// About what the input system writes.
struct InputQuestion {
    uint32_t pinType = 0;
    uint32_t format = 0;
    uint32_t mipiType = 0;
    uint32_t without = 0; ///< 1: the flag is null
};

/// Each returns the first thing on which the two disagree, null when there is none. Outputs that must not be written are
/// part of it.
const char* difference(const FormatQuestion& question);
const char* difference(const BufferQuestion& question);
const char* difference(const PlaneQuestion& question);
const char* difference(const InputQuestion& question);

std::ostream& operator<<(std::ostream& stream, const FormatQuestion& question);
std::ostream& operator<<(std::ostream& stream, const BufferQuestion& question);
std::ostream& operator<<(std::ostream& stream, const PlaneQuestion& question);
std::ostream& operator<<(std::ostream& stream, const InputQuestion& question);

} // namespace second

#endif
