// SPDX-License-Identifier: Apache-2.0
#include "check/MeantNames.h"

#include "Suggestion.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace NuxoTool {

namespace {

// Whether an element could be of a kind: it has no attribute that the kind does not, and none that it needs is missing.
bool fits(const XmlElement& element, const ElementKind& kind)
{
    const bool hasNoOthers =
        std::all_of(element.attributes.begin(), element.attributes.end(), [&kind](const XmlAttribute& attribute) {
            return !isVocabularyAttribute(attribute.name) || kind.attribute(attribute.name) != nullptr;
        });
    return hasNoOthers &&
           std::all_of(kind.attributes.begin(), kind.attributes.end(), [&element](const AttributeKind& attribute) {
               return !attribute.required || element.attribute(attribute.name) != nullptr;
           });
}

// Names that exist elsewhere may well be meant as they are.
bool isKnownElsewhere(const std::string& name)
{
    const VocabularyEntry* const entry = vocabularyEntry(name);
    return entry != nullptr && entry->isElement;
}

// The name of a child that an element in a place where it must not stand most likely means, "" for none.
std::string meantElement(const ElementKind& parentKind, const XmlElement& element)
{
    std::string meant = closestOf(element.name, parentKind.childNames());
    if (meant.empty()) return meant;
    XmlElement renamed;
    renamed.name = meant;
    renamed.attributes = element.attributes;
    const ElementKind* const kind = parentKind.childKind(renamed);
    if (kind == nullptr || (isKnownElsewhere(element.name) && !fits(element, *kind))) return "";
    if (kind->single && element.parent->child(meant) != nullptr) return "";
    return meant;
}

template <typename Named> void rename(Named& named, std::string meant)
{
    named.misspelled = std::exchange(named.name, std::move(meant));
}

void readAttributesAsMeant(XmlElement& element, const ElementKind& kind)
{
    for (XmlAttribute& attribute : element.attributes) {
        if (isVocabularyAttribute(attribute.name) || attribute.name.find(':') != std::string::npos) continue;
        std::string meant = meantAttribute(kind, attribute.name);
        if (!meant.empty() && element.attribute(meant) == nullptr) rename(attribute, std::move(meant));
    }
}

const ElementKind* kindOf(const XmlElement& element, const ElementKind* parentKind)
{
    if (element.parent == nullptr) return kindOfRoot(element);
    return parentKind == nullptr ? nullptr : parentKind->childKind(element);
}

// An element around those that follow, with what may stand in it.
struct Open {
    const XmlElement* element;
    const ElementKind* kind; // null when nothing is known of it
};

// What other formats call the attribute, as far as the kind has it; "" for none.
std::string synonymOf(const ElementKind& kind, const std::string& name)
{
    constexpr std::pair<const char*, const char*> synonyms[] = {
        {"w", "width"},      {"h", "height"},      {"x", "left"},         {"y", "top"},       {"fmt", "format"},
        {"stride", "bpl"},   {"pitch", "bpl"},     {"src", "source"},     {"from", "source"}, {"dst", "destination"},
        {"dst", "sink"},     {"dest", "sink"},     {"to", "destination"}, {"to", "sink"},     {"uuid", "pal_uuid"},
        {"kernel_id", "id"}, {"dir", "direction"}, {"graph", "id"},
    };
    const auto found = std::find_if(std::begin(synonyms), std::end(synonyms), [&](const auto& synonym) {
        return name == synonym.first && kind.attribute(synonym.second) != nullptr;
    });
    return found == std::end(synonyms) ? "" : found->second;
}

} // namespace

std::string meantAttribute(const ElementKind& kind, const std::string& name)
{
    std::string closest = closestOf(name, kind.attributeNames());
    if (closest.empty()) closest = synonymOf(kind, name);
    if (!closest.empty()) return closest;
    std::vector<std::string> names; // of elements that are named alike, which differ in what they have
    for (const auto* const kinds : {&descriptorKinds(), &settingsKinds()}) {
        for (const ElementKind* const other : *kinds) {
            if (other->name != kind.name || kind.name.empty()) continue;
            for (std::string& each : other->attributeNames()) names.push_back(std::move(each));
        }
    }
    return closestOf(name, names);
}

void readAsMeant(XmlDocument& document)
{
    std::vector<Open> open; // from the document's element down
    for (XmlElement& element : document.elements()) {
        while (!open.empty() && open.back().element != element.parent) open.pop_back();
        const ElementKind* const parentKind = open.empty() ? nullptr : open.back().kind;
        if (parentKind != nullptr && parentKind->childKind(element) == nullptr) {
            std::string meant = meantElement(*parentKind, element);
            if (!meant.empty()) rename(element, std::move(meant));
        }
        const ElementKind* kind = kindOf(element, parentKind);
        if (kind != nullptr) {
            readAttributesAsMeant(element, *kind);
            kind = kindOf(element, parentKind); // which may depend on its attributes
        }
        open.push_back({&element, kind});
    }
}

} // namespace NuxoTool
