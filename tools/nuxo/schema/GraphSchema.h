// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_GRAPH_SCHEMA_H
#define NUXO_TOOL_GRAPH_SCHEMA_H

#include "document/XmlDocument.h"

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace NuxoTool {

/// What the text of an attribute has to be.
enum class ValueKind {
    Text,        ///< anything
    Name,        ///< of the element itself, by which others and settings speak of it
    Reference,   ///< names joined by ':', for example "vf_out:main_out"
    Integer,     ///< a decimal number of 32 bits, within the range of the attribute
    Flag,        ///< 0 or 1
    Choice,      ///< one of the attribute's choices
    Format,      ///< name of a pixel format
    IntegerList, ///< decimal numbers joined by ','
    DecimalList, ///< numbers joined by ',', which may have a decimal point
    Decimal,     ///< a number that may have a decimal point
    Hexadecimal, ///< digits behind "0x"
    KeyName,     ///< a name of the vocabulary
};

/// An attribute that an element of some kind may have.
struct AttributeKind {
    std::string name;
    ValueKind value = ValueKind::Text;
    bool required = false;
    std::string standard;                                ///< what counts without it, "" when there is no such value
    int32_t least = std::numeric_limits<int32_t>::min(); ///< of integers
    int32_t most = std::numeric_limits<int32_t>::max();  ///< likewise
    std::vector<std::string> choices;                    ///< of ValueKind::Choice
    std::string documentation;                           ///< one to three sentences

    bool isInteger() const { return value == ValueKind::Integer || value == ValueKind::Flag; }
};

/// What stands in one place of a graph file: elements of one name, or all that are named after parts of a descriptor.
struct ElementKind {
    std::string id;            ///< tells kinds apart, among those of both files; a name of letters, digits and '_'
    std::string name;          ///< of the elements; "" for kinds whose elements are named after something else
    std::string documentation; ///< one to three sentences
    std::vector<AttributeKind> attributes; ///< in the order in which they are written best
    /// Every attribute that settings can change is allowed, too (see settingsAttribute).
    bool takesSettings = false;
    std::vector<const ElementKind*> children; ///< of fixed names, in the order in which they are written best
    const ElementKind* namedChild = nullptr;  ///< elements of all other names that have a `name`, if they are special
    const ElementKind* openChild = nullptr;   ///< elements of all other names, null when there may be none
    bool single = false;                      ///< stands at most once in its parent

    /// That attribute (name in lower case), null when elements of the kind cannot have it.
    const AttributeKind* attribute(std::string_view attributeName) const;
    /// The kind of a child element of that name, of fixed name or not; null when there may be none.
    const ElementKind* childKind(const XmlElement& child) const;
    /// For suggestions.
    std::vector<std::string> childNames() const;
    std::vector<std::string> attributeNames() const;
};

/// The document's element of descriptors.
const ElementKind& descriptorSchema();
/// The document's element of settings files.
const ElementKind& settingsSchema();
/// The one of them that is named like a document's element, null when none is.
const ElementKind* kindOfRoot(const XmlElement& root);
/// All kinds of either file, the document's element first, each before its children.
const std::vector<const ElementKind*>& descriptorKinds();
const std::vector<const ElementKind*>& settingsKinds();

/// A name of the vocabulary of graph files and what it stands for.
struct VocabularyEntry {
    AttributeKind attribute;  ///< the name; as an attribute: its value; what it means
    bool isAttribute = false; ///< there are attributes of that name
    bool isElement = false;   ///< there are elements of that name
    bool isSettable = false;  ///< settings can give the attribute to a node or to a part of it
};

/// All names that files may use, in alphabetic order.
const std::vector<VocabularyEntry>& vocabulary();
/// The entry of a name in lower case, null when it is outside the vocabulary.
const VocabularyEntry* vocabularyEntry(std::string_view name);
/// Whether there are attributes of a name in lower case.
bool isVocabularyAttribute(std::string_view name);
/// An attribute that elements of settings may have whatever they are named after; null when settings cannot change it.
const AttributeKind* settingsAttribute(std::string_view name);
/// All of these, in alphabetic order.
std::vector<const AttributeKind*> settingsAttributes();

} // namespace NuxoTool

#endif
