// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_XML_TOKENS_H
#define NUXO_TOOL_XML_TOKENS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace NuxoTool {

/// A piece of an XML text as its writer left it. Views point into the text.
struct XmlToken {
    enum class Kind {
        Text, ///< characters, references and CDATA sections in one, blanks around them left out
        Comment,
        Instruction, ///< a processing instruction or the XML declaration
        Doctype,
        StartTag,
        EmptyTag,
        EndTag
    };
    Kind kind = Kind::Text;
    std::string_view text;
    bool hasCdata = false; ///< of a Text
    size_t newlines = 0;   ///< line ends in the blanks before it
    size_t column = 0;     ///< width of the line before it
};

/// An attribute of a tag as it is written.
struct XmlTokenAttribute {
    std::string_view name;
    std::string_view value; ///< with its quotes
};

/// Cuts a well-formed XML text with plain line feeds into its pieces. Blanks between them are none.
std::vector<XmlToken> xmlTokens(std::string_view text);

/// The name in a start, empty or end tag.
std::string_view tagName(std::string_view tag);

/// The attributes in a start or empty tag.
std::vector<XmlTokenAttribute> tagAttributes(std::string_view tag);

/// @p text with every line end as a single line feed, as XML readers see it.
std::string withLineFeeds(std::string_view text);

/// The blanks of XML.
constexpr std::string_view kXmlBlanks = " \t\r\n";

/// The column behind @p text when it starts at @p column; a tab goes on to the next multiple of four.
size_t columnBehind(size_t column, std::string_view text);

} // namespace NuxoTool

#endif
