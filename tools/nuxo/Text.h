// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_TEXT_H
#define NUXO_TOOL_TEXT_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NuxoTool {

/// Length in bytes of the UTF-8 character that starts at @p at; 0 when no valid character starts there.
size_t utf8Length(std::string_view text, size_t at);

/// Number of characters; a byte that belongs to no character counts as one.
size_t displayWidth(std::string_view text);

/// @p text with control characters and invalid bytes written as "\n", "\t" or "\x1b", so that nothing read from a file can
/// steer a terminal or break a line.
std::string printable(std::string_view text);

/// printable() in double quotes; quotes and backslashes inside are escaped.
std::string quoted(std::string_view text);

/// printable() in single quotes, as texts of findings name things.
std::string named(std::string_view name);

/// "100, 101 and 102"
std::string listOf(const std::vector<std::string>& names, const char* lastJoint = " and ");

/// @p text in ASCII lower case.
std::string lowerCase(std::string_view text);

/// @p text, or "-" for an empty one, which stands in tables for what does not apply.
std::string orDash(const std::string& text);

/// The number in decimal, "-" for none.
template <typename Number> std::string orDash(const std::optional<Number>& number)
{
    return number ? std::to_string(*number) : "-";
}

bool startsWith(std::string_view text, std::string_view start);

const char* yesOrNo(bool value);

/// Eight hexadecimal digits behind "0x".
std::string hexText(uint32_t number);

/// A line of a source and the column that matters in it, made fit to print: long lines are cut around the column.
struct Excerpt {
    std::string line;
    std::string caretLine; ///< blanks (tabs kept) and a caret below the column
};

/// @param column  from 1, in bytes; one past the end is allowed
Excerpt makeExcerpt(std::string_view line, size_t column, size_t length = 1);

} // namespace NuxoTool

#endif
