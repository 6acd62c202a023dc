// SPDX-License-Identifier: Apache-2.0
#include "MalformedText.h"

#include "Text.h"

#include <algorithm>
#include <cstddef>

namespace NuxoTool {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

// What the tokenizer met, around the place where it stopped.
struct Stop {
    std::string_view line;
    std::string_view before; ///< of the line, the blanks at its end left out
    std::string_view from;   ///< the rest of the line
    bool isBehindBlanks = false;

    Stop(std::string_view text, size_t column) : line(text)
    {
        const size_t at = std::min(column > 0 ? column - 1 : 0, text.size());
        before = text.substr(0, at);
        from = text.substr(at);
        const size_t last = before.find_last_not_of(kBlanks);
        isBehindBlanks = last == std::string_view::npos || last + 1 < before.size();
        before = before.substr(0, last == std::string_view::npos ? 0 : last + 1);
    }

    bool endsWith(char character) const { return !before.empty() && before.back() == character; }
    bool startsWith(std::string_view text) const { return from.substr(0, text.size()) == text; }
    // Whether the place is in a value that starts in the line.
    bool isInValue() const
    {
        const size_t tag = before.rfind('<');
        const auto start = before.begin() + static_cast<ptrdiff_t>(tag == std::string_view::npos ? 0 : tag);
        return std::count(start, before.end(), '"') % 2 == 1;
    }
};

bool isMergeMark(std::string_view line)
{
    return startsWith(line, "<<<<<<<") || startsWith(line, "=======") || startsWith(line, ">>>>>>>") ||
           startsWith(line, "|||||||");
}

bool isCurvedQuote(const Stop& stop)
{
    constexpr std::string_view quotes[] = {"\xe2\x80\x98", "\xe2\x80\x99", "\xe2\x80\x9c", "\xe2\x80\x9d",
                                           "\xe2\x80\x9e"};
    return std::any_of(std::begin(quotes), std::end(quotes),
                       [&stop](std::string_view quote) { return stop.startsWith(quote); });
}

// The tokenizer stops at the first character that no name of a reference has.
bool isBehindAmpersand(const Stop& stop)
{
    const size_t ampersand = stop.before.rfind('&');
    return ampersand != std::string_view::npos &&
           stop.before.find_first_of(" \t<>\"';", ampersand) == std::string_view::npos;
}

// Why a token is none, "" when it does not tell.
std::string tokenText(const Stop& stop)
{
    const char first = stop.from.empty() ? '\0' : stop.from.front();
    if (first != '\0' && utf8Length(stop.from, 0) == 0)
        return "a byte that belongs to no character; expected UTF-8, or another encoding named in the XML declaration";
    if (isCurvedQuote(stop)) return "a curved quotation mark; expected a straight one";
    if (stop.before.empty() && first == '<')
        return "a '<' before the tag above it ends; expected its '>', or the quotation mark that ends a value";
    if (stop.endsWith('=') && first != '"' && first != '\'') return "a value without quotation marks; expected \"...\"";
    if (isBehindAmpersand(stop)) return "a '&' that starts no reference; expected &amp;";
    if (first == '<' && stop.isInValue())
        return "a '<' in a value; expected &lt;, or the quotation mark that ends the value";
    if (first == '<') return "a '<' inside a tag; expected the '>' that ends the tag";
    if (first == '/' || first == '>') return "an attribute without a value; expected name=\"value\"";
    const size_t length = stop.before.size();
    if (length > 1 && stop.before.substr(length - 2) == "=\"" && !stop.isBehindBlanks)
        return "a value that takes in the name of the next attribute; expected the quotation mark that ends it";
    if (stop.endsWith('"') && !stop.isBehindBlanks) return "no blank behind a value; expected one between attributes";
    if (stop.endsWith('<') || stop.endsWith('/'))
        return "a name that starts with " + quoted(stop.from.substr(0, std::max<size_t>(utf8Length(stop.from, 0), 1))) +
               "; expected a letter or '_'";
    return "";
}

} // namespace

std::string malformedText(XML_Error error, std::string_view line, size_t column, const std::string& innermost)
{
    const char* const known = XML_ErrorString(error);
    const std::string explanation = known != nullptr ? known : "unknown XML error";
    if (isMergeMark(line)) return "a mark that joining two versions left behind; expected the lines of one of them";
    const Stop stop(line, column);
    if (error == XML_ERROR_NO_ELEMENTS && !innermost.empty())
        return "the text ends too early; expected </" + printable(innermost) + '>';
    if (error == XML_ERROR_TAG_MISMATCH && !innermost.empty())
        return explanation + ": another element ends here; expected </" + printable(innermost) + "> first";
    if (error == XML_ERROR_INVALID_TOKEN && stop.endsWith('-') && line.find("<!--") < column)
        return "'--' inside a comment; expected the end of the comment, -->, or other signs";
    const std::string cause = error == XML_ERROR_INVALID_TOKEN ? tokenText(stop) : "";
    return cause.empty() ? explanation + "; expected well-formed XML" : explanation + ": " + cause;
}

} // namespace NuxoTool
