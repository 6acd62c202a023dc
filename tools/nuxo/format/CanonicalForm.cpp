// SPDX-License-Identifier: Apache-2.0
#include "format/CanonicalForm.h"

#include "Text.h"
#include "format/AttributeOrder.h"
#include "format/XmlTokens.h"

#include <algorithm>
#include <map>
#include <vector>

namespace NuxoTool {

namespace {

constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
constexpr size_t kIndent = 4;
constexpr size_t kLineWidth = 120;
// Deeper levels are not indented further: otherwise a small file of many levels would become a huge one.
constexpr size_t kDeepestIndent = 24 * kIndent;

using Kind = XmlToken::Kind;

struct Attribute {
    XmlTokenAttribute written;
    std::string name; ///< in lower case
    std::string text; ///< canonical form
    size_t rank = 0;
};

// A value with double quotes unless it holds one.
std::string quotedValue(std::string_view value)
{
    const std::string_view inner = value.substr(1, value.size() - 2);
    if (inner.find('"') != std::string_view::npos) return std::string(value);
    return '"' + std::string(inner) + '"';
}

// Whether a DOCTYPE says things about elements or attributes, which it knows by their names as written.
bool governsNames(std::string_view doctype)
{
    const auto has = [doctype](const char* part) { return doctype.find(part) != std::string_view::npos; };
    return has("<!ATTLIST") || has("<!ELEMENT") || has("SYSTEM") || has("PUBLIC") || has("%");
}

// The library looks a governed attribute's name up when it meets it; an element's own name may be new to it until then.
bool looksUpBeforeName(const std::vector<Attribute>& attributes)
{
    for (const Attribute& attribute : attributes) {
        if (attribute.name == "name") return false;
        if (attribute.name == "attribute") return true;
    }
    return false;
}

bool isOneLine(std::string_view text)
{
    return text.find('\n') == std::string_view::npos;
}

std::vector<std::string_view> linesOf(std::string_view text)
{
    std::vector<std::string_view> lines;
    for (size_t at = 0; at <= text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        lines.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return lines;
}

size_t blanksAtStart(std::string_view line)
{
    return std::min(line.find_first_not_of(kXmlBlanks), line.size());
}

bool isBlank(std::string_view line)
{
    return blanksAtStart(line) == line.size();
}

size_t indentOf(std::string_view line)
{
    return columnBehind(0, line.substr(0, blanksAtStart(line)));
}

class Writer {
public:
    explicit Writer(std::string_view text) : mTokens(xmlTokens(text)) { mOut.reserve(text.size() + text.size() / 4); }

    std::string run()
    {
        for (mAt = 0; mAt < mTokens.size(); ++mAt) write(mTokens[mAt]);
        mOut += '\n';
        return std::move(mOut);
    }

private:
    void write(const XmlToken& token)
    {
        switch (token.kind) {
        case Kind::StartTag: writeElement(token); break;
        case Kind::EmptyTag:
            startLine(token);
            writeTag(token.text, "/>");
            break;
        case Kind::EndTag:
            if (mDepth > 0) --mDepth;
            startLine(token);
            writeEndTag(token);
            break;
        case Kind::Comment: writeComment(token); break;
        case Kind::Text:
            startLine(token);
            writeText(token);
            break;
        case Kind::Doctype: mKeepNames = governsNames(token.text); [[fallthrough]];
        case Kind::Instruction:
            startLine(token);
            mOut += token.text;
            break;
        }
    }

    const XmlToken* ahead(size_t count) const { return mAt + count < mTokens.size() ? &mTokens[mAt + count] : nullptr; }

    bool isAhead(size_t count, Kind kind) const { return ahead(count) != nullptr && ahead(count)->kind == kind; }

    void writeElement(const XmlToken& token)
    {
        startLine(token);
        if (isAhead(1, Kind::EndTag)) {
            writeTag(token.text, "/>");
            ++mAt;
            return;
        }
        writeTag(token.text, ">");
        if (isAhead(1, Kind::Text) && isAhead(2, Kind::EndTag) && isOneLine(ahead(1)->text)) {
            mOut += ahead(1)->text;
            writeEndTag(*ahead(2));
            mAt += 2;
            return;
        }
        ++mDepth;
    }

    size_t indent() const { return std::min(mDepth * kIndent, kDeepestIndent); }

    void startLine(const XmlToken& token)
    {
        if (mOut.empty()) return;
        mOut += '\n';
        if (token.newlines > 1 && token.kind != Kind::EndTag) mOut += '\n';
        mOut.append(indent(), ' ');
    }

    std::string elementName(const XmlToken& token) const
    {
        const std::string_view name = tagName(token.text);
        return mKeepNames ? std::string(name) : lowerCase(name);
    }

    void writeEndTag(const XmlToken& token) { mOut += "</" + elementName(token) + '>'; }

    // In canonical order, as they are to be written.
    std::vector<Attribute> attributesOf(std::string_view tag) const
    {
        std::vector<Attribute> attributes;
        std::map<std::string, size_t> uses;
        for (const XmlTokenAttribute& written : tagAttributes(tag)) {
            Attribute attribute;
            attribute.written = written;
            attribute.name = lowerCase(written.name);
            attribute.rank = attributeRank(attribute.name);
            ++uses[attribute.name];
            attributes.push_back(attribute);
        }
        if (!looksUpBeforeName(attributes)) {
            std::stable_sort(attributes.begin(), attributes.end(),
                             [](const Attribute& a, const Attribute& b) { return a.rank < b.rank; });
        }
        for (Attribute& attribute : attributes) {
            // Names that differ only in case must go on doing so.
            const bool isKept = mKeepNames || uses[attribute.name] > 1;
            attribute.text = (isKept ? std::string(attribute.written.name) : attribute.name) + '=' +
                             quotedValue(attribute.written.value);
        }
        return attributes;
    }

    void writeTag(std::string_view tag, std::string_view end)
    {
        const std::string_view name = tagName(tag);
        mOut += '<' + (mKeepNames ? std::string(name) : lowerCase(name));
        const std::vector<Attribute> attributes = attributesOf(tag);
        const size_t breakColumn = indent() + 2 * kIndent;
        size_t column = indent() + 1 + displayWidth(name);
        for (size_t i = 0; i < attributes.size(); ++i) {
            const bool isLast = i + 1 == attributes.size();
            const size_t width = displayWidth(attributes[i].text) + (isLast ? end.size() : 0);
            // A value that is too long for a line of its own may as well stay where it is.
            if (i > 0 && column + 1 + width > kLineWidth && breakColumn + width <= kLineWidth) {
                mOut += '\n' + std::string(breakColumn, ' ');
                column = breakColumn;
            } else {
                mOut += ' ';
                ++column;
            }
            mOut += attributes[i].text;
            column += width;
        }
        mOut += end;
    }

    void writeComment(const XmlToken& token)
    {
        if (!mOut.empty() && token.newlines == 0 && isOneLine(token.text)) {
            mOut += ' ';
            mOut += token.text;
            return;
        }
        startLine(token);
        writeShifted(token);
    }

    void writeText(const XmlToken& token)
    {
        if (token.hasCdata) {
            mOut += token.text;
        } else {
            writeShifted(token);
        }
    }

    // Moves the lines behind the first one along with it, all by the same number of columns.
    void writeShifted(const XmlToken& token)
    {
        const std::vector<std::string_view> lines = linesOf(token.text);
        size_t leftmost = std::string_view::npos;
        for (size_t i = 1; i < lines.size(); ++i) {
            if (!isBlank(lines[i])) leftmost = std::min(leftmost, indentOf(lines[i]));
        }
        const size_t right = indent() > token.column ? indent() - token.column : 0;
        const size_t left = token.column > indent() ? std::min(token.column - indent(), leftmost) : 0;
        for (size_t i = 0; i < lines.size(); ++i) {
            const std::string_view line = lines[i].substr(0, lines[i].find_last_not_of(kXmlBlanks) + 1);
            if (i > 0) mOut += '\n';
            if (i > 0 && !line.empty()) mOut.append(indentOf(line) + right - left, ' ');
            mOut += line.substr(i > 0 ? blanksAtStart(line) : 0);
        }
    }

    std::vector<XmlToken> mTokens;
    std::string mOut;
    size_t mAt = 0;
    size_t mDepth = 0;
    bool mKeepNames = false;
};

} // namespace

std::string canonicalForm(std::string_view text)
{
    if (startsWith(text, kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    const std::string lines = withLineFeeds(text);
    return Writer(lines).run();
}

} // namespace NuxoTool
