// SPDX-License-Identifier: Apache-2.0
#include "document/Expat.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <vector>

namespace NuxoTool {

ExpatPointer makeExpat()
{
    ExpatPointer parser(XML_ParserCreate(nullptr));
    if (parser == nullptr) throw std::bad_alloc();
    return parser;
}

namespace {

// How much of a file the parser gets next. With each piece it scans an unfinished token again from its start, so while one
// goes on the pieces double: the time for a huge comment or text grows with its length, not with its square.
class PieceSize {
public:
    size_t bytes() const { return mBytes; }

    // @param fed  bytes that the parser has got by now
    void adapt(XML_Parser parser, uint64_t fed)
    {
        const uint64_t unfinished = fed - std::min(expatOffset(parser), fed);
        const bool goesOn = unfinished >= mBytes;
        mBytes = goesOn ? std::min(2 * mBytes, kMost) : FileBytes::kPieceSize;
    }

private:
    static constexpr size_t kMost = size_t{64} << 20U;

    size_t mBytes = FileBytes::kPieceSize;
};

// Reads up to @p size bytes; fewer at the end of the file and before trouble.
size_t fill(std::vector<char>& piece, size_t size, FileBytes& bytes)
{
    size_t filled = 0;
    while (filled < size) {
        if (piece.size() < filled + FileBytes::kPieceSize) piece.resize(filled + FileBytes::kPieceSize);
        const size_t count = bytes.read(piece.data() + filled);
        if (count == 0) break;
        filled += count;
    }
    return filled;
}

} // namespace

bool feedExpat(XML_Parser parser, FileBytes& bytes, const std::function<void(std::string_view)>& seen)
{
    std::vector<char> piece;
    PieceSize size;
    uint64_t fed = 0;
    for (;;) {
        const size_t count = fill(piece, size.bytes(), bytes);
        if (count == 0 && !bytes.trouble().empty()) return true;
        if (seen) seen({piece.data(), count});
        const int isFinal = count == 0 ? 1 : 0;
        if (XML_Parse(parser, piece.data(), static_cast<int>(count), isFinal) != XML_STATUS_OK) return false;
        if (isFinal == 1) return true;
        fed += count;
        size.adapt(parser, fed);
    }
}

uint64_t expatOffset(XML_Parser parser)
{
    const XML_Index index = XML_GetCurrentByteIndex(parser);
    return index > 0 ? static_cast<uint64_t>(index) : 0;
}

} // namespace NuxoTool
