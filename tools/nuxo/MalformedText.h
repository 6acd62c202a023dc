// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_MALFORMED_TEXT_H
#define NUXO_TOOL_MALFORMED_TEXT_H

#include <string>
#include <string_view>

#include <expat.h>

namespace NuxoTool {

/// What most likely made the tokenizer stop, as "what was found; what was expected".
///
/// @param error      that it gave
/// @param line       in which it stopped, or the part around the place
/// @param column     of the place in @p line, from 1
/// @param innermost  the element that is open there, "" for none
std::string malformedText(XML_Error error, std::string_view line, size_t column, const std::string& innermost);

} // namespace NuxoTool

#endif
