// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_XML_DOCUMENT_H
#define NUXO_TOOL_XML_DOCUMENT_H

#include "Findings.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NuxoTool {

class XmlDocument;

struct XmlElement;

/// An attribute as it is written in a file.
struct XmlAttribute {
    std::string name;        ///< in lower case, as graph files are matched
    std::string value;       ///< references to characters and entities replaced
    uint32_t offset = 0;     ///< bytes from the element's '<' to the attribute's name; 0 when it is not known
    bool isRepeated = false; ///< the element has one of this name before it
    std::string misspelled;  ///< what is written instead when `name` is only what is meant, "" otherwise

    const std::string& writtenName() const { return misspelled.empty() ? name : misspelled; }
};

/// Text between elements, where graph files have none.
struct StrayText {
    std::string text;                   ///< without blanks around it; only its beginning when it is long
    const XmlElement* parent = nullptr; ///< that it stands in
    uint64_t offset = 0;                ///< of its first byte that is not blank, in bytes of the file's text
};

/// An element as it is written in a file.
struct XmlElement {
    std::string name;                        ///< in lower case, as graph files are matched
    const XmlDocument* document = nullptr;   ///< the document that holds it
    const XmlElement* parent = nullptr;      ///< null for the document's element
    std::vector<XmlAttribute> attributes;    ///< in the order of the file
    std::vector<const XmlElement*> children; ///< likewise
    uint64_t offset = 0;                     ///< of the '<', in bytes of the file's text
    std::string misspelled; ///< what is written instead when `name` is only what is meant, "" otherwise

    const std::string& writtenName() const { return misspelled.empty() ? name : misspelled; }
    /// The first attribute of that name (in lower case), null when there is none.
    const XmlAttribute* attribute(std::string_view name) const;
    /// Its value, "" when there is none.
    const std::string& value(std::string_view name) const;
    /// Its value when it is all of a decimal number of 32 bits, nothing otherwise.
    std::optional<int32_t> integer(std::string_view name) const;
    /// The first child element of that name, null when there is none.
    const XmlElement* child(std::string_view name) const;
    /// Names from the document's element down, for example "graph_settings/settings/video_sink".
    std::string path() const;
};

/// The elements of an XML file with their places: what its writer sees, before the library makes a tree of it.
class XmlDocument {
public:
    /// Reads a whole file. Trouble is for others to report: what was read before it is kept.
    explicit XmlDocument(const std::string& path);
    XmlDocument(const XmlDocument&) = delete;
    XmlDocument& operator=(const XmlDocument&) = delete;

    const std::string& path() const { return mPath; }
    /// The document's element, null when there is none.
    const XmlElement* root() const { return mElements.empty() ? nullptr : &mElements.front(); }
    /// All elements in the order of the file.
    const std::deque<XmlElement>& elements() const { return mElements; }
    /// The same, to be told what misspelled names mean.
    std::deque<XmlElement>& elements() { return mElements; }
    /// All texts between elements that are more than blanks, in the order of the file.
    const std::vector<StrayText>& texts() const { return mTexts; }

    /// Where an element starts.
    Location locate(const XmlElement& element) const;
    /// Where an attribute of it starts.
    Location locate(const XmlElement& element, const XmlAttribute& attribute) const;
    /// Where a text starts.
    Location locate(const StrayText& text) const;

private:
    friend struct XmlDocumentReader;
    Location locateByte(uint64_t offset) const;

    std::string mPath;
    std::deque<XmlElement> mElements;
    std::vector<StrayText> mTexts;
    std::vector<uint64_t> mLineStarts;
};

/// The 32-bit number that all of @p text spells in decimal (a sign is allowed, blanks are not), nothing otherwise.
std::optional<int32_t> wholeInteger(std::string_view text);

} // namespace NuxoTool

#endif
