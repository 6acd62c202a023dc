// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_EXPAT_H
#define NUXO_TOOL_EXPAT_H

#include "FileBytes.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <type_traits>

#include <expat.h>

namespace NuxoTool {

struct FreeExpat {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};
using ExpatPointer = std::unique_ptr<std::remove_pointer_t<XML_Parser>, FreeExpat>;

/// A parser that guesses the encoding, as the library's does.
ExpatPointer makeExpat();

/// Feeds a whole file; false when the parser stopped. Trouble with reading just ends it.
/// @param seen  gets each piece before the parser does
bool feedExpat(XML_Parser parser, FileBytes& bytes, const std::function<void(std::string_view)>& seen = nullptr);

/// Where the event that is being handled starts, in bytes of the file's text.
uint64_t expatOffset(XML_Parser parser);

} // namespace NuxoTool

#endif
