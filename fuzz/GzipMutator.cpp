// SPDX-License-Identifier: Apache-2.0
// Changes gzip inputs at two levels: their bytes as they are, and the text inside, compressed again. Without the second
// nearly every change would break the compression and the text would stay the same.
#include "support/Fuzzing.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include <zlib.h>

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned int seed);

namespace {

constexpr int kGzipWindow = 15 + 16; // the largest window, with a gzip header
constexpr size_t kMostText = 16384;  // several chunks of the parser

// The text inside, as far as it can be read; its length is returned.
size_t inflateInto(std::vector<uint8_t>& text, uint8_t* data, size_t size)
{
    z_stream stream = {};
    if (inflateInit2(&stream, kGzipWindow) != Z_OK) return 0;
    stream.next_in = data;
    stream.avail_in = static_cast<uInt>(size);
    stream.next_out = text.data();
    stream.avail_out = static_cast<uInt>(text.size());
    static_cast<void>(inflate(&stream, Z_FINISH));
    const size_t length = text.size() - stream.avail_out;
    static_cast<void>(inflateEnd(&stream));
    return length;
}

// The compressed length; 0 when it does not fit.
size_t deflateInto(uint8_t* data, size_t maxSize, std::vector<uint8_t>& text, size_t length)
{
    z_stream stream = {};
    if (deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, kGzipWindow, 8, Z_DEFAULT_STRATEGY) != Z_OK) return 0;
    stream.next_in = text.data();
    stream.avail_in = static_cast<uInt>(length);
    stream.next_out = data;
    stream.avail_out = static_cast<uInt>(maxSize);
    const bool complete = deflate(&stream, Z_FINISH) == Z_STREAM_END;
    const size_t written = complete ? maxSize - stream.avail_out : 0;
    static_cast<void>(deflateEnd(&stream));
    return written;
}

} // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned int seed)
{
    if (seed % 4 == 0) return LLVMFuzzerMutate(data, size, maxSize);
    std::vector<uint8_t> text(kMostText);
    const size_t length = LLVMFuzzerMutate(text.data(), inflateInto(text, data, size), text.size());
    std::vector<uint8_t> compressed(maxSize);
    const size_t written = deflateInto(compressed.data(), maxSize, text, length);
    if (written == 0) return LLVMFuzzerMutate(data, size, maxSize);
    std::memcpy(data, compressed.data(), written);
    return written;
}
