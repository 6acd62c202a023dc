// SPDX-License-Identifier: Apache-2.0
#include "format/XmlTokens.h"

#include "Text.h"

#include <algorithm>
#include <cstdint>

namespace NuxoTool {

namespace {

constexpr size_t kTabWidth = 4;

using Kind = XmlToken::Kind;

// All searches end at the end of the text, though well-formed texts never get there.
class Tokenizer {
public:
    explicit Tokenizer(std::string_view text) : mText(text) {}

    std::vector<XmlToken> run()
    {
        while (mAt < mText.size()) {
            const size_t start = mText.find_first_not_of(kXmlBlanks, mAt);
            if (start == std::string_view::npos) break;
            const std::string_view blanks = mText.substr(mAt, start - mAt);
            XmlToken token;
            token.newlines = static_cast<size_t>(std::count(blanks.begin(), blanks.end(), '\n'));
            token.column = columnAt(start);
            mAt = start;
            read(token);
            mTokens.push_back(token);
        }
        return std::move(mTokens);
    }

private:
    bool isAt(std::string_view start) const { return startsWith(mText.substr(mAt), start); }

    size_t behind(std::string_view end, size_t from) const
    {
        const size_t found = mText.find(end, from);
        return found == std::string_view::npos ? mText.size() : found + end.size();
    }

    void read(XmlToken& token)
    {
        if (isAt("<!--")) {
            take(token, Kind::Comment, behind("-->", mAt + 4));
        } else if (isAt("<?")) {
            take(token, Kind::Instruction, behind("?>", mAt + 2));
        } else if (isAt("<!D")) {
            take(token, Kind::Doctype, behindDoctype());
        } else if (isAt("<") && !isAt("<![")) {
            const size_t end = behindTag(mAt);
            const bool isEmpty = end - mAt > 2 && mText[end - 2] == '/';
            take(token, isAt("</") ? Kind::EndTag : isEmpty ? Kind::EmptyTag : Kind::StartTag, end);
        } else {
            readText(token);
        }
    }

    void take(XmlToken& token, Kind kind, size_t end)
    {
        token.kind = kind;
        token.text = mText.substr(mAt, end - mAt);
        mAt = end;
    }

    // Blanks behind the last character count as blanks before what follows.
    void readText(XmlToken& token)
    {
        size_t end = mAt;
        for (size_t at = mAt; at < mText.size();) {
            if (startsWith(mText.substr(at), "<![")) {
                token.hasCdata = true;
                at = end = behind("]]>", at);
                continue;
            }
            if (mText[at] == '<') break;
            const size_t next = std::min(mText.find('<', at), mText.size());
            const size_t last = mText.find_last_not_of(kXmlBlanks, next - 1);
            if (last != std::string_view::npos && last >= at) end = last + 1;
            at = next;
        }
        take(token, Kind::Text, end);
    }

    size_t behindTag(size_t at) const
    {
        for (;;) {
            at = mText.find_first_of("\"'>", at);
            if (at == std::string_view::npos) return mText.size();
            if (mText[at] == '>') return at + 1;
            at = behind(mText.substr(at, 1), at + 1);
        }
    }

    size_t behindDoctype() const
    {
        bool inSubset = false;
        for (size_t at = mAt + 2;;) {
            at = mText.find_first_of("\"'[]<>", at);
            if (at == std::string_view::npos) return mText.size();
            const std::string_view rest = mText.substr(at);
            if (startsWith(rest, "<!--")) {
                at = behind("-->", at + 4);
            } else if (startsWith(rest, "<?")) {
                at = behind("?>", at + 2);
            } else if (rest[0] == '"' || rest[0] == '\'') {
                at = behind(rest.substr(0, 1), at + 1);
            } else {
                if (rest[0] == '>' && !inSubset) return at + 1;
                if (rest[0] == '[' || rest[0] == ']') inSubset = rest[0] == '[';
                ++at;
            }
        }
    }

    // Goes on from the last place asked for, so that a long line is measured once.
    size_t columnAt(size_t at)
    {
        const std::string_view passed = mText.substr(mMeasured, at - mMeasured);
        const size_t lineEnd = passed.rfind('\n');
        if (lineEnd != std::string_view::npos) {
            mColumn = 0;
            mMeasured += lineEnd + 1;
        }
        mColumn = columnBehind(mColumn, mText.substr(mMeasured, at - mMeasured));
        mMeasured = at;
        return mColumn;
    }

    std::string_view mText;
    size_t mAt = 0;
    size_t mMeasured = 0;
    size_t mColumn = 0;
    std::vector<XmlToken> mTokens;
};

} // namespace

std::vector<XmlToken> xmlTokens(std::string_view text)
{
    return Tokenizer(text).run();
}

std::string_view tagName(std::string_view tag)
{
    const size_t start = startsWith(tag, "</") ? 2 : 1;
    const size_t end = std::min(tag.find_first_of(" \t\r\n/>", start), tag.size());
    return tag.substr(start, end - start);
}

std::vector<XmlTokenAttribute> tagAttributes(std::string_view tag)
{
    std::vector<XmlTokenAttribute> attributes;
    size_t at = 1 + tagName(tag).size();
    for (;;) {
        at = tag.find_first_not_of(kXmlBlanks, at);
        if (at == std::string_view::npos || tag[at] == '/' || tag[at] == '>') return attributes;
        const size_t nameEnd = tag.find_first_of(" \t\r\n=", at);
        const size_t quote = tag.find_first_of("\"'", at);
        const size_t end = quote == std::string_view::npos ? quote : tag.find(tag[quote], quote + 1);
        if (end == std::string_view::npos) return attributes;
        attributes.push_back({tag.substr(at, nameEnd - at), tag.substr(quote, end + 1 - quote)});
        at = end + 1;
    }
}

std::string withLineFeeds(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (size_t at = 0; at < text.size(); ++at) {
        const bool isReturn = text[at] == '\r';
        if (isReturn && at + 1 < text.size() && text[at + 1] == '\n') continue;
        out += isReturn ? '\n' : text[at];
    }
    return out;
}

size_t columnBehind(size_t column, std::string_view text)
{
    for (size_t tab = text.find('\t'); tab != std::string_view::npos; tab = text.find('\t')) {
        column = ((column + displayWidth(text.substr(0, tab))) / kTabWidth + 1) * kTabWidth;
        text.remove_prefix(tab + 1);
    }
    return column + displayWidth(text);
}

} // namespace NuxoTool
