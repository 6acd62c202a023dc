// SPDX-License-Identifier: Apache-2.0
#include "Text.h"

#include <algorithm>

namespace NuxoTool {

namespace {

constexpr size_t kShownWhole = 120;   // longer lines are cut
constexpr size_t kExcerptBefore = 60; // to these bytes left of the column
constexpr size_t kExcerptAfter = 60;  // and these from it on
constexpr std::string_view kCut = "...";

unsigned char byteAt(std::string_view text, size_t at)
{
    return static_cast<unsigned char>(text[at]);
}

bool isControl(unsigned char byte)
{
    return byte < 0x20U || byte == 0x7fU;
}

// C1 controls (U+0080 to U+009F) steer terminals as well. Marks that turn the direction of writing (U+200E to U+200F, U+202A
// to U+202E, U+2066 to U+2069) make a line look like another.
bool isWideControl(std::string_view text, size_t at, size_t length)
{
    if (length == 2) return byteAt(text, at) == 0xc2U && byteAt(text, at + 1) < 0xa0U;
    if (length != 3 || byteAt(text, at) != 0xe2U) return false;
    const unsigned low = byteAt(text, at + 2);
    if (byteAt(text, at + 1) == 0x80U) return low == 0x8eU || low == 0x8fU || (low >= 0xaaU && low <= 0xaeU);
    return byteAt(text, at + 1) == 0x81U && low >= 0xa6U && low <= 0xa9U;
}

void appendHexDigits(std::string& out, unsigned byte)
{
    constexpr char digits[] = "0123456789abcdef";
    out += digits[byte >> 4U & 0xfU];
    out += digits[byte & 0xfU];
}

void appendHex(std::string& out, unsigned char byte)
{
    out += "\\x";
    appendHexDigits(out, byte);
}

void appendEscaped(std::string& out, unsigned char byte)
{
    if (byte == '\n') {
        out += "\\n";
    } else if (byte == '\t') {
        out += "\\t";
    } else {
        appendHex(out, byte);
    }
}

// Moves @p at back to the start of the character it is in.
size_t characterStart(std::string_view text, size_t at)
{
    size_t start = at;
    while (start > 0 && at - start < 3 && (byteAt(text, start) & 0xc0U) == 0x80U) --start;
    return start;
}

void appendVisible(std::string& out, std::string_view text)
{
    for (size_t at = 0; at < text.size();) {
        const size_t length = utf8Length(text, at);
        const bool shown =
            length > 0 && (text[at] == '\t' || !isControl(byteAt(text, at))) && !isWideControl(text, at, length);
        if (shown) {
            out += text.substr(at, length);
        } else {
            out += '?';
        }
        at += std::max<size_t>(length, 1);
    }
}

} // namespace

size_t utf8Length(std::string_view text, size_t at)
{
    if (at >= text.size()) return 0;
    const unsigned char first = byteAt(text, at);
    if (first < 0x80U) return 1;
    size_t length = 0;
    if (first >= 0xc2U && first <= 0xdfU) length = 2;
    if ((first & 0xf0U) == 0xe0U) length = 3;
    if (first >= 0xf0U && first <= 0xf4U) length = 4;
    if (length == 0 || at + length > text.size()) return 0;
    for (size_t i = 1; i < length; ++i) {
        if ((byteAt(text, at + i) & 0xc0U) != 0x80U) return 0;
    }
    return length;
}

size_t displayWidth(std::string_view text)
{
    size_t width = 0;
    for (size_t at = 0; at < text.size(); ++width) at += std::max<size_t>(utf8Length(text, at), 1);
    return width;
}

std::string printable(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (size_t at = 0; at < text.size();) {
        const size_t length = utf8Length(text, at);
        if (length == 0 || isControl(byteAt(text, at))) {
            appendEscaped(out, byteAt(text, at));
            ++at;
        } else if (isWideControl(text, at, length)) {
            for (const size_t end = at + length; at < end; ++at) appendHex(out, byteAt(text, at));
        } else {
            out += text.substr(at, length);
            at += length;
        }
    }
    return out;
}

std::string quoted(std::string_view text)
{
    std::string marked;
    marked.reserve(text.size());
    for (const char c : text) {
        if (c == '"' || c == '\\') marked += '\\';
        marked += c;
    }
    return '"' + printable(marked) + '"';
}

std::string named(std::string_view name)
{
    return '\'' + printable(name) + '\'';
}

std::string listOf(const std::vector<std::string>& names, const char* lastJoint)
{
    std::string text;
    for (size_t i = 0; i < names.size(); ++i) {
        if (i != 0) text += i + 1 == names.size() ? lastJoint : ", ";
        text += names[i];
    }
    return text;
}

std::string lowerCase(std::string_view text)
{
    std::string out(text);
    for (char& c : out) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return out;
}

std::string orDash(const std::string& text)
{
    return text.empty() ? "-" : text;
}

bool startsWith(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

const char* yesOrNo(bool value)
{
    return value ? "yes" : "no";
}

std::string hexText(uint32_t number)
{
    std::string text = "0x";
    for (const unsigned shift : {24U, 16U, 8U, 0U}) appendHexDigits(text, number >> shift);
    return text;
}

Excerpt makeExcerpt(std::string_view line, size_t column, size_t length)
{
    const size_t at = std::min(column > 0 ? column - 1 : 0, line.size());
    const bool whole = line.size() <= kShownWhole;
    const size_t from = !whole && at > kExcerptBefore ? characterStart(line, at - kExcerptBefore) : 0;
    const bool cutBehind = !whole && line.size() - at > kExcerptAfter;
    const size_t to = cutBehind ? characterStart(line, at + kExcerptAfter) : line.size();

    Excerpt excerpt;
    if (from > 0) excerpt.line = kCut;
    appendVisible(excerpt.line, line.substr(from, at - from));
    for (size_t i = 0; i < excerpt.line.size(); i += std::max<size_t>(utf8Length(excerpt.line, i), 1)) {
        excerpt.caretLine += excerpt.line[i] == '\t' ? '\t' : ' ';
    }
    excerpt.caretLine += '^';
    if (length > 1) excerpt.caretLine.append(std::min(length, kExcerptAfter) - 1, '~');
    appendVisible(excerpt.line, line.substr(at, to - at));
    if (to < line.size()) excerpt.line += kCut;
    return excerpt;
}

} // namespace NuxoTool
