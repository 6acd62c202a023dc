// SPDX-License-Identifier: Apache-2.0
#include "document/Expat.h"

#include <new>
#include <vector>

namespace NuxoTool {

ExpatPointer makeExpat()
{
    ExpatPointer parser(XML_ParserCreate(nullptr));
    if (parser == nullptr) throw std::bad_alloc();
    return parser;
}

bool feedExpat(XML_Parser parser, FileBytes& bytes, const std::function<void(std::string_view)>& seen)
{
    std::vector<char> piece(FileBytes::kPieceSize);
    for (;;) {
        const size_t count = bytes.read(piece.data());
        if (count == 0 && !bytes.trouble().empty()) return true;
        if (seen) seen({piece.data(), count});
        const int isFinal = count == 0 ? 1 : 0;
        if (XML_Parse(parser, piece.data(), static_cast<int>(count), isFinal) != XML_STATUS_OK) return false;
        if (isFinal == 1) return true;
    }
}

uint64_t expatOffset(XML_Parser parser)
{
    const XML_Index index = XML_GetCurrentByteIndex(parser);
    return index > 0 ? static_cast<uint64_t>(index) : 0;
}

} // namespace NuxoTool
