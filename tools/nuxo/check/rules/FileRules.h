// SPDX-License-Identifier: Apache-2.0
// Internal to the rules of single files: what they share.
#ifndef NUXO_TOOL_FILE_RULES_H
#define NUXO_TOOL_FILE_RULES_H

#include "check/Rule.h"
#include "schema/GraphSchema.h"

#include <string>
#include <vector>

namespace NuxoTool {

// The rules by topic.
std::vector<Rule> elementRules();
std::vector<Rule> attributeRules();
std::vector<Rule> valueRules();
std::vector<Rule> nameRules();

/// An element with what may stand in its place.
struct PlacedElement {
    const XmlElement* element = nullptr;
    const ElementKind* parentKind = nullptr; ///< null for the document's element
    const ElementKind* kind = nullptr;       ///< null when the element must not stand there
};

/// All elements in the order of the file, but none below an element that must not stand where it does.
std::vector<PlacedElement> placedElements(const XmlDocument& document);

/// Those of them that may stand where they do.
std::vector<PlacedElement> knownElements(const XmlDocument& document);

/// Whether a text is a finite number, which may have a sign, a decimal point and an exponent.
bool isDecimalNumber(const std::string& text);

/// How a bitmap or decimal number has to be written when a text is not, "" otherwise and for other attributes.
std::string expectedForm(const AttributeKind& kind, const std::string& text);

/// "one of 'a', 'b', 'c'", "'a'" for a single name, "nothing" for none; each is named once, and of many only the
/// first.
std::string oneOf(const std::vector<std::string>& all);

} // namespace NuxoTool

#endif
