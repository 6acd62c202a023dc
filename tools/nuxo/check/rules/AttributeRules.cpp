// SPDX-License-Identifier: Apache-2.0
// Attributes: whether there are such, where they count, and which ones an element cannot do without.
#include "Suggestion.h"
#include "Text.h"
#include "check/MeantNames.h"
#include "check/rules/FileRules.h"

#include <algorithm>

namespace NuxoTool {

namespace {

bool isXmlOwn(const std::string& name)
{
    return name == "xmlns" || name.find(':') != std::string::npos; // schema locations and the like
}

// Calls the visitor with each attribute but those of XML itself and repeated ones.
template <typename Visit> void forEachAttribute(const XmlDocument& document, Visit visit)
{
    for (const PlacedElement& place : knownElements(document)) {
        for (const XmlAttribute& attribute : place.element->attributes) {
            if (isXmlOwn(attribute.name) || attribute.isRepeated) continue;
            visit(place, attribute);
        }
    }
}

void checkUnknown(const XmlDocument& document, RuleReporter& reporter)
{
    forEachAttribute(document, [&](const PlacedElement& place, const XmlAttribute& attribute) {
        const std::string& name = attribute.writtenName();
        if (isVocabularyAttribute(name)) return;
        const std::string meant = meantAttribute(*place.kind, name);
        const std::string expected =
            place.kind->takesSettings ? "a name of the vocabulary" : oneOf(place.kind->attributeNames());
        reporter.report(*place.element, attribute.name,
                        "unknown attribute " + named(name) + " of " + named(place.element->writtenName()) +
                            ", which no query can find; expected " + expected +
                            (meant.empty() ? "" : didYouMean(meant)));
    });
}

// Why an attribute that exists must not stand in an element, when that is more than that nothing reads it.
std::string reasonAgainst(const PlacedElement& place, const XmlAttribute& attribute)
{
    const bool isNamed = place.kind->attribute("name") != nullptr;
    const bool isInDescriptor = place.element->document->root()->name == descriptorSchema().name;
    if (!isInDescriptor && place.kind->takesSettings) return "settings cannot change";
    if (isInDescriptor && attribute.name == "name" && place.parentKind != nullptr)
        return "files the element under that name, where nothing looks for it";
    if (attribute.name == "type" && isNamed) return "does nothing: the element's name is its type";
    if (place.kind->id == "derived_node") return "does nothing beside a base_node";
    return "nothing reads there";
}

std::string expectedInstead(const PlacedElement& place, const XmlAttribute& attribute)
{
    if (place.kind->id == "derived_node") {
        return "<attribute target=\"" + attribute.name + "\" value=\"" + printable(attribute.value) +
               "\"/> in the node";
    }
    const std::string expected = oneOf(place.kind->attributeNames());
    return place.kind->takesSettings ? "no such attribute" : expected;
}

void checkMisplaced(const XmlDocument& document, RuleReporter& reporter)
{
    forEachAttribute(document, [&](const PlacedElement& place, const XmlAttribute& attribute) {
        const bool isUnknown = !isVocabularyAttribute(attribute.writtenName());
        const bool isBaseOfBase = place.kind->id == "base_node" && attribute.name == "base_node"; // has its own rule
        if (isUnknown || isBaseOfBase || place.kind->attribute(attribute.name) != nullptr) return;
        reporter.report(*place.element, attribute.name,
                        named(place.element->name) + " has the attribute " + named(attribute.name) + ", which " +
                            reasonAgainst(place, attribute) + "; expected " + expectedInstead(place, attribute));
    });
}

// An attribute of the same name in other case; the parser itself refuses exact repeats.
void checkDuplicates(const XmlDocument& document, RuleReporter& reporter)
{
    for (const XmlElement& element : document.elements()) {
        for (const XmlAttribute& attribute : element.attributes) {
            if (!attribute.isRepeated) continue;
            reporter.report(document.locate(element, attribute),
                            "attribute " + named(attribute.name) + " stands twice in " + named(element.name) +
                                ": case does not matter; expected it once, the first one counts");
            reporter.note(document.locate(element, *element.attribute(attribute.name)), "the first one is here");
        }
    }
}

// What an attribute says, as it stands in brackets.
std::string meaningOf(const AttributeKind& attribute)
{
    if (attribute.value == ValueKind::Choice) return oneOf(attribute.choices);
    std::string text = attribute.documentation.substr(0, attribute.documentation.find(". "));
    if (!text.empty() && text.back() == '.') text.pop_back();
    const bool isShouted = text.size() > 1 && text[1] >= 'A' && text[1] <= 'Z';
    return isShouted ? text : lowerCase(text.substr(0, 1)) + text.substr(std::min<size_t>(text.size(), 1));
}

void checkMissing(const XmlDocument& document, RuleReporter& reporter)
{
    for (const PlacedElement& place : knownElements(document)) {
        for (const AttributeKind& attribute : place.kind->attributes) {
            if (!attribute.required || place.element->attribute(attribute.name) != nullptr) continue;
            const bool isNode = place.kind->id == "node" && attribute.name == "type";
            reporter.report(*place.element, named(place.element->name) + " has no attribute " + named(attribute.name) +
                                                (isNode ? " and no 'base_node'" : "") + "; expected " + attribute.name +
                                                "=\"...\" (" + meaningOf(attribute) + ')');
        }
    }
}

} // namespace

std::vector<Rule> attributeRules()
{
    return {
        {"unknown-attribute",
         RuleSeverity::Error,
         "an attribute that graph files do not have",
         "Attributes are found by the names of a fixed vocabulary. One of another name is kept without its name: no "
         "query finds it, no part of the library reads it, and of several in one element all but the first are "
         "dropped. Usually the name is misspelled: widht=\"1920\" sets no width. nuxo schema prints all names with "
         "what they mean.",
         {},
         checkUnknown},
        {"misplaced-attribute",
         RuleSeverity::Warning,
         "an attribute where it does nothing",
         "The attribute exists, but elements of this kind do not have it, so it has no effect here. Some do harm: a "
         "name on a connection or on an options element of a descriptor files it under that name, and the library no "
         "longer sees it. Settings cannot change what an element is: its name, id, type and direction. A node that is "
         "made from a base node takes its differences from attribute elements only.",
         {"type-before-name"},
         checkMisplaced},
        {"missing-attribute",
         RuleSeverity::Error,
         "an element without an attribute that it needs",
         "Without the attribute the library cannot find the element, cannot tell what it is for, or ends building with "
         "an error: a port needs a direction, a connection both of its ends, a kernel its id and its uuid. Add the "
         "attribute that the finding names; nuxo schema tells for each element which ones are required.",
         {},
         checkMissing},
        {"duplicate-attribute",
         RuleSeverity::Error,
         "an attribute that stands twice in an element",
         "XML allows every attribute once in an element, and a file that repeats one exactly is not well-formed. Graph "
         "files do not tell upper and lower case apart either: of width=\"1\" Width=\"2\" only the first counts, and "
         "nothing tells of the second. Remove one of them.",
         {},
         checkDuplicates},
    };
}

} // namespace NuxoTool
