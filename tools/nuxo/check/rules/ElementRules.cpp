// SPDX-License-Identifier: Apache-2.0
// Elements: whether there are such, and whether they stand where somebody looks for them.
#include "Suggestion.h"
#include "Text.h"
#include "check/rules/FileRules.h"

#include <algorithm>
#include <set>

namespace NuxoTool {

namespace {

bool isIn(const std::vector<const ElementKind*>& kinds, const std::string& name)
{
    return std::any_of(kinds.begin(), kinds.end(), [&](const ElementKind* kind) { return kind->name == name; });
}

bool isOfDescriptor(const XmlElement& element)
{
    const XmlElement* const root = element.document->root();
    return root != nullptr && root->name == descriptorSchema().name;
}

const std::vector<const ElementKind*>& kindsOfFile(const XmlElement& element)
{
    return isOfDescriptor(element) ? descriptorKinds() : settingsKinds();
}

bool isKnownAnywhere(const XmlElement& element)
{
    const std::string& name = element.writtenName();
    return isIn(descriptorKinds(), name) || isIn(settingsKinds(), name);
}

// Names that all elements below would have: nothing is asked for there whatever it is called.
bool isDeadEnd(const ElementKind& parent)
{
    return parent.children.empty() && parent.openChild == nullptr && parent.name.empty();
}

std::vector<std::string> parentsOf(const std::string& name, const std::vector<const ElementKind*>& kinds)
{
    std::vector<std::string> parents;
    for (const ElementKind* const kind : kinds) {
        const bool holdsIt = isIn(kind->children, name);
        const bool isNew = std::find(parents.begin(), parents.end(), kind->name) == parents.end();
        if (holdsIt && isNew && !kind->name.empty()) parents.push_back(kind->name);
    }
    return parents;
}

// Whether an element must not stand where it does. One that is read as what it most likely means keeps its place.
bool isOutOfPlace(const PlacedElement& place)
{
    return place.parentKind != nullptr && (place.kind == nullptr || !place.element->misspelled.empty());
}

std::string expectedChildren(const ElementKind& parent)
{
    std::string text = oneOf(parent.childNames());
    if (parent.openChild != nullptr) text += ", or an element named after a part";
    return text;
}

void checkUnknown(const XmlDocument& document, RuleReporter& reporter)
{
    for (const PlacedElement& place : placedElements(document)) {
        const XmlElement& element = *place.element;
        const std::string& name = element.writtenName();
        if (!isOutOfPlace(place) || isKnownAnywhere(element) || isDeadEnd(*place.parentKind)) continue;
        std::vector<std::string> names;
        for (const ElementKind* const kind : kindsOfFile(element)) names.push_back(kind->name);
        const std::string suggestion =
            element.misspelled.empty() ? suggestionFor(name, names) : didYouMean(element.name);
        reporter.report(element, "unknown element " + named(name) + " in " + named(element.parent->writtenName()) +
                                     "; expected " + expectedChildren(*place.parentKind) + suggestion);
    }
}

std::string rightPlace(const XmlElement& element)
{
    const std::vector<std::string> parents = parentsOf(element.writtenName(), kindsOfFile(element));
    if (!parents.empty()) return "it in " + oneOf(parents);
    if (kindOfRoot(element) != nullptr) return "it as the document's element only";
    return isOfDescriptor(element) ? "it in settings files only" : "it in descriptors only";
}

void checkMisplaced(const XmlDocument& document, RuleReporter& reporter)
{
    for (const PlacedElement& place : placedElements(document)) {
        const XmlElement& element = *place.element;
        if (!isOutOfPlace(place)) continue;
        const std::string found =
            "element " + named(element.writtenName()) + " stands in " + named(element.parent->writtenName());
        if (isDeadEnd(*place.parentKind)) {
            reporter.report(element, found + "; expected nothing that deep");
        } else if (isKnownAnywhere(element)) {
            const std::string suggestion = element.misspelled.empty() ? "" : didYouMean(element.name);
            reporter.report(element, found + "; expected " + rightPlace(element) + suggestion);
        }
    }
}

// Elements of which only the first one is looked at.
void checkRepeated(const XmlDocument& document, RuleReporter& reporter)
{
    for (const PlacedElement& place : knownElements(document)) {
        if (place.parentKind == nullptr || !place.kind->single || place.kind->name.empty()) continue;
        const XmlElement* const first = place.element->parent->child(place.element->name);
        if (first == place.element) continue;
        reporter.report(*place.element, "another element " + named(place.element->name) + " in " +
                                            named(place.element->parent->name) +
                                            "; expected it once, the first one counts");
        reporter.note(*first, "the first one is here");
    }
}

void checkTexts(const XmlDocument& document, RuleReporter& reporter)
{
    for (const StrayText& text : document.texts()) {
        reporter.report(document.locate(text), "text " + quoted(text.text) + " stands in " +
                                                   named(text.parent->writtenName()) +
                                                   "; expected elements and comments only, nothing reads it");
    }
}

void checkPlaces(const XmlDocument& document, RuleReporter& reporter)
{
    checkMisplaced(document, reporter);
    checkRepeated(document, reporter);
}

} // namespace

std::vector<Rule> elementRules()
{
    return {
        {"unknown-element",
         RuleSeverity::Error,
         "an element that graph files do not have",
         "The library keeps elements of unknown names, but nothing ever reads them: what they say has no effect, and "
         "no message tells. Usually the name is misspelled. In settings, and below the apply of an option, elements "
         "are named after nodes and their parts; everywhere else only the elements of the format may stand. nuxo "
         "schema prints them all.",
         {},
         checkUnknown},
        {"misplaced-element",
         RuleSeverity::Error,
         "an element where nothing looks for it",
         "The element exists, but not in this place, or not a second time: the library finds elements by their path "
         "from the document's element and takes the first one of those that stand once, such as nodes and graphs. What "
         "this element says has no effect. Move it to where it belongs, or join it with the first one.",
         {},
         checkPlaces},
        {"stray-text",
         RuleSeverity::Warning,
         "text between elements",
         "Graph files say everything with elements and attributes. Text beside them is skipped without a message: most "
         "often it is a '>' too many, or what is left of a line that was edited. Remove it, or put it in a comment: "
         "<!-- like this -->.",
         {},
         checkTexts},
    };
}

} // namespace NuxoTool
