// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_FORMAT_NAMES_H
#define NUXO_TOOL_FORMAT_NAMES_H

#include <nuxo/formats/NUXOFormats.h>

#include <cstdint>
#include <string>

namespace NuxoTool {

/// Number of characters of a code.
constexpr size_t kFourccLength = 4;

/// The characters of a code, the first from the most significant byte.
std::string fourccText(uint32_t fourcc);

/// The code that up to four characters spell; those that are missing are 0.
uint32_t fourccOf(const std::string& text);

/// The format with this name, exactly so; null when there is none.
const NUXOFormats::qv_format_t* formatNamed(const std::string& name);

/// The format with this code; null when there is none.
const NUXOFormats::qv_format_t* formatCoded(uint32_t fourcc);

/// "; did you mean 'NV12'?" for the closest name or, with @p withCodes, code; "" when none is close.
std::string formatSuggestion(const std::string& name, bool withCodes);

} // namespace NuxoTool

#endif
