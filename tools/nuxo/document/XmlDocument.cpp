// SPDX-License-Identifier: Apache-2.0
#include "document/XmlDocument.h"

#include "FileBytes.h"
#include "Text.h"
#include "document/Expat.h"

#include <nuxo/parser/NUXOParser.h>

#include <algorithm>
#include <charconv>
#include <new>
#include <unordered_set>

namespace NuxoTool {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr size_t kShownText = 60; // bytes of a text that somebody may want to see

// Gives the places of the attributes in the bytes of a start tag one by one.
class StartTagScan {
public:
    /// @param bytes  from the tag's '<' on; anything else, also in encodings that are no superset of ASCII, has no places
    explicit StartTagScan(std::string_view bytes) : mBytes(bytes)
    {
        const bool isTag = bytes.size() > 1 && bytes[0] == '<' && bytes[1] != '\0';
        mAt = isTag ? bytes.find_first_of(" \t\r\n/>") : std::string_view::npos;
    }

    /// Offset of the next attribute's name, 0 when there is none.
    uint32_t next()
    {
        mAt = mBytes.find_first_not_of(" \t\r\n", mAt);
        if (mAt == std::string_view::npos || mBytes[mAt] == '/' || mBytes[mAt] == '>') return 0;
        const size_t name = mAt;
        const size_t quote = mBytes.find_first_of("\"'", name);
        const size_t end = quote == std::string_view::npos ? quote : mBytes.find(mBytes[quote], quote + 1);
        mAt = end == std::string_view::npos ? end : end + 1;
        return static_cast<uint32_t>(name);
    }

private:
    std::string_view mBytes;
    size_t mAt = 0;
};

// What the parser holds of the file from the current event on, "" when it does not tell.
std::string_view bytesOfEvent(XML_Parser parser)
{
    int offset = 0;
    int size = 0;
    const char* const bytes = XML_GetInputContext(parser, &offset, &size);
    if (bytes == nullptr || offset < 0 || offset >= size) return {};
    return {bytes + offset, static_cast<size_t>(size - offset)};
}

} // namespace

/// Fills a document from the events of the parser.
struct XmlDocumentReader {
    XmlDocumentReader(XmlDocument& toFill, XML_Parser xmlParser) : document(toFill), parser(xmlParser) {}

    void addLineStarts(std::string_view piece)
    {
        for (size_t at = piece.find('\n'); at != std::string_view::npos; at = piece.find('\n', at + 1)) {
            document.mLineStarts.push_back(bytesSeen + at + 1);
        }
        bytesSeen += piece.size();
    }

    void addElement(const char* name, const char** attributes)
    {
        XmlElement* const parent = open.empty() ? nullptr : open.back();
        XmlElement& element = document.mElements.emplace_back();
        element.name = lowerCase(name);
        element.document = &document;
        element.parent = parent;
        element.offset = expatOffset(parser);
        addAttributes(element, attributes);
        if (parent != nullptr) parent->children.push_back(&element);
        open.push_back(&element);
    }

    // Expat gives the text between two marks in pieces: the first one that is not blank gives the place.
    void addText(std::string_view piece)
    {
        const size_t start = piece.find_first_not_of(kBlanks);
        if (start == std::string_view::npos && !isInText) return;
        if (!isInText) {
            const bool isPlain =
                bytesOfEvent(parser).substr(0, piece.size()) == piece; // no reference to something else
            document.mTexts.push_back({"", open.back(), expatOffset(parser) + (isPlain ? start : 0)});
            piece.remove_prefix(start);
            isInText = true;
        }
        std::string& text = document.mTexts.back().text;
        if (text.size() < kShownText) text += piece.substr(0, kShownText - text.size());
    }

    void endText()
    {
        if (!isInText) return;
        isInText = false;
        std::string& text = document.mTexts.back().text;
        text.erase(text.find_last_not_of(kBlanks) + 1);
        // The limit may have parted a character.
        size_t last = text.size() - 1;
        while (last > 0 && (static_cast<unsigned char>(text[last]) & 0xc0U) == 0x80U) --last;
        if (utf8Length(text, last) == 0) text.erase(last);
    }

    // Those that a DOCTYPE adds stand behind the ones of the tag and have no place.
    void addAttributes(XmlElement& element, const char** attributes) const
    {
        size_t count = 0;
        while (attributes[2 * count] != nullptr) ++count;
        element.attributes.reserve(count);
        const auto written = static_cast<size_t>(std::max(XML_GetSpecifiedAttributeCount(parser), 0)) / 2;
        StartTagScan scan(bytesOfEvent(parser));
        for (size_t i = 0; i < count; ++i) {
            const uint32_t offset = i < written ? scan.next() : 0;
            element.attributes.push_back({lowerCase(attributes[2 * i]), attributes[2 * i + 1], offset, false, ""});
        }
        markRepeated(element.attributes);
    }

    static void markRepeated(std::vector<XmlAttribute>& attributes)
    {
        std::unordered_set<std::string_view> names;
        for (XmlAttribute& attribute : attributes) attribute.isRepeated = !names.insert(attribute.name).second;
    }

    static void onStart(void* data, const char* name, const char** attributes)
    {
        XmlDocumentReader& reader = *static_cast<XmlDocumentReader*>(data);
        if (reader.open.size() >= NUXO::NUXOParser::kMaxDepth) {
            XML_StopParser(reader.parser, XML_FALSE);
            return;
        }
        reader.guarded([&] {
            reader.endText();
            reader.addElement(name, attributes);
        });
    }

    static void onText(void* data, const char* text, int size)
    {
        XmlDocumentReader& reader = *static_cast<XmlDocumentReader*>(data);
        if (reader.open.empty()) return;
        reader.guarded([&] { reader.addText({text, static_cast<size_t>(size)}); });
    }

    // No exception may pass through the parser's frames.
    template <typename Action> void guarded(Action action)
    {
        try {
            action();
        } catch (const std::bad_alloc&) {
            outOfMemory = true;
            XML_StopParser(parser, XML_FALSE);
        }
    }

    static void onEnd(void* data, const char* /*name*/)
    {
        XmlDocumentReader& reader = *static_cast<XmlDocumentReader*>(data);
        reader.endText();
        if (!reader.open.empty()) reader.open.pop_back();
    }

    XmlDocument& document;
    XML_Parser parser;
    std::vector<XmlElement*> open;
    uint64_t bytesSeen = 0;
    bool isInText = false;
    bool outOfMemory = false;
};

const XmlAttribute* XmlElement::attribute(std::string_view wanted) const
{
    const auto found = std::find_if(attributes.begin(), attributes.end(),
                                    [wanted](const XmlAttribute& candidate) { return candidate.name == wanted; });
    return found == attributes.end() ? nullptr : &*found;
}

const std::string& XmlElement::value(std::string_view wanted) const
{
    static const std::string none;
    const XmlAttribute* const found = attribute(wanted);
    return found == nullptr ? none : found->value;
}

std::optional<int32_t> XmlElement::integer(std::string_view wanted) const
{
    const XmlAttribute* const found = attribute(wanted);
    return found == nullptr ? std::nullopt : wholeInteger(found->value);
}

const XmlElement* XmlElement::child(std::string_view wanted) const
{
    const auto found = std::find_if(children.begin(), children.end(),
                                    [wanted](const XmlElement* candidate) { return candidate->name == wanted; });
    return found == children.end() ? nullptr : *found;
}

std::string XmlElement::path() const
{
    std::string text = name;
    for (const XmlElement* above = parent; above != nullptr; above = above->parent) {
        text.insert(0, above->name + '/');
    }
    return text;
}

XmlDocument::XmlDocument(const std::string& path) : mPath(path), mLineStarts{0}
{
    const ExpatPointer parser = makeExpat();
    XmlDocumentReader reader(*this, parser.get());
    XML_SetUserData(parser.get(), &reader);
    XML_SetElementHandler(parser.get(), XmlDocumentReader::onStart, XmlDocumentReader::onEnd);
    XML_SetCharacterDataHandler(parser.get(), XmlDocumentReader::onText);
    FileBytes bytes(path);
    const bool parsed =
        feedExpat(parser.get(), bytes, [&reader](std::string_view piece) { reader.addLineStarts(piece); });
    if (reader.outOfMemory || (!parsed && XML_GetErrorCode(parser.get()) == XML_ERROR_NO_MEMORY))
        throw std::bad_alloc();
}

Location XmlDocument::locate(const XmlElement& element) const
{
    return locateByte(element.offset);
}

Location XmlDocument::locate(const XmlElement& element, const XmlAttribute& attribute) const
{
    return locateByte(element.offset + attribute.offset);
}

Location XmlDocument::locate(const StrayText& text) const
{
    return locateByte(text.offset);
}

Location XmlDocument::locateByte(uint64_t offset) const
{
    const auto behind = std::upper_bound(mLineStarts.begin(), mLineStarts.end(), offset);
    Location place;
    place.file = mPath;
    place.line = static_cast<uint32_t>(behind - mLineStarts.begin());
    place.column = static_cast<uint32_t>(offset - *std::prev(behind) + 1);
    return place;
}

std::optional<int32_t> wholeInteger(std::string_view text)
{
    const bool hasPlus = text.size() > 1 && text[0] == '+' && text[1] != '-';
    if (hasPlus) text.remove_prefix(1);
    int32_t number = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    if (text.empty() || result.ec != std::errc() || result.ptr != end) return std::nullopt;
    return number;
}

} // namespace NuxoTool
