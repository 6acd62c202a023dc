// SPDX-License-Identifier: Apache-2.0
// Values: what the text of an attribute has to be.
#include "Suggestion.h"
#include "Text.h"
#include "check/rules/FileRules.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace NuxoTool {

namespace {

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

// A decimal number of any size, with or without sign.
bool isWholeNumber(const std::string& text)
{
    const size_t start = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    return text.size() > start && std::all_of(text.begin() + static_cast<std::ptrdiff_t>(start), text.end(), isDigit);
}

// What the library makes of a text: it stops at the first character that is no digit and keeps 32 bits.
int32_t asRead(const std::string& text)
{
    return static_cast<int32_t>(static_cast<uint32_t>(std::strtoll(text.c_str(), nullptr, 10)));
}

// Calls the visitor with each attribute of which is known what its text has to be.
template <typename Visit> void forEachValue(const XmlDocument& document, Visit visit)
{
    for (const PlacedElement& place : knownElements(document)) {
        for (const XmlAttribute& attribute : place.element->attributes) {
            const AttributeKind* const kind = place.kind->attribute(attribute.name);
            const bool isFirst = place.element->attribute(attribute.name) == &attribute;
            if (kind != nullptr && isFirst) visit(*place.element, attribute, *kind);
        }
    }
}

std::string rangeOf(const AttributeKind& kind)
{
    if (kind.value == ValueKind::Flag) return "0 or 1";
    constexpr int32_t most = std::numeric_limits<int32_t>::max();
    if (kind.most == most && kind.least > std::numeric_limits<int32_t>::min())
        return std::to_string(kind.least) + " or more";
    return std::to_string(kind.least) + " to " + std::to_string(kind.most);
}

void checkIntegers(const XmlDocument& document, RuleReporter& reporter)
{
    forEachValue(document, [&](const XmlElement& element, const XmlAttribute& attribute, const AttributeKind& kind) {
        if (!kind.isInteger() || isWholeNumber(attribute.value)) return;
        reporter.report(element, attribute.name,
                        named(attribute.name) + " is " + quoted(attribute.value) + ", which the library reads as " +
                            std::to_string(asRead(attribute.value)) + "; expected a decimal number" +
                            (kind.value == ValueKind::Flag ? ", 0 or 1" : " without blanks, unit or fraction"));
    });
}

void checkRanges(const XmlDocument& document, RuleReporter& reporter)
{
    forEachValue(document, [&](const XmlElement& element, const XmlAttribute& attribute, const AttributeKind& kind) {
        if (!kind.isInteger() || !isWholeNumber(attribute.value)) return;
        const std::optional<int32_t> number = wholeInteger(attribute.value);
        const std::string found = named(attribute.name) + " is " + printable(attribute.value);
        if (!number) {
            reporter.report(element, attribute.name,
                            found + ", which the library cuts to " + std::to_string(asRead(attribute.value)) +
                                "; expected a number of 32 bits, " + rangeOf(kind));
        } else if (*number < kind.least || *number > kind.most) {
            reporter.report(element, attribute.name, found + "; expected " + rangeOf(kind));
        }
    });
}

// ---- value-form

// Bitmaps are handed out as text: digits behind 0x, or a plain 0.
bool isHexadecimal(const std::string& text)
{
    if (text == "0") return true;
    constexpr size_t prefix = 2;
    return text.size() > prefix && (text.compare(0, prefix, "0x") == 0 || text.compare(0, prefix, "0X") == 0) &&
           text.find_first_not_of("0123456789abcdefABCDEF", prefix) == std::string::npos;
}

bool isSettings(const XmlDocument& document)
{
    return document.root() != nullptr && document.root()->name == settingsSchema().name;
}

void checkForms(const XmlDocument& document, RuleReporter& reporter)
{
    forEachValue(document, [&](const XmlElement& element, const XmlAttribute& attribute, const AttributeKind& kind) {
        // Settings that state a gain have more to go by.
        const bool isGainOfSetting = attribute.name == "conversion_gain" && isSettings(document);
        const std::string expected = isGainOfSetting ? "" : expectedForm(kind, attribute.value);
        if (expected.empty()) return;
        reporter.report(element, attribute.name,
                        named(attribute.name) + " is " + quoted(attribute.value) + "; expected " + expected);
    });
}

bool isAttributeName(const std::string& name)
{
    const VocabularyEntry* const entry = vocabularyEntry(name);
    return entry != nullptr && entry->isAttribute;
}

void checkChoices(const XmlDocument& document, RuleReporter& reporter)
{
    forEachValue(document, [&](const XmlElement& element, const XmlAttribute& attribute, const AttributeKind& kind) {
        const std::string found = named(attribute.name) + " is " + quoted(attribute.value) + "; expected ";
        const std::vector<std::string>& choices = kind.choices;
        if (kind.value == ValueKind::KeyName && !isAttributeName(attribute.value)) {
            reporter.report(element, attribute.name,
                            found + "the name of an attribute" + suggestionFor(attribute.value));
        } else if (kind.value == ValueKind::Choice &&
                   std::find(choices.begin(), choices.end(), attribute.value) == choices.end()) {
            reporter.report(element, attribute.name, found + oneOf(choices) + suggestionFor(attribute.value, choices));
        }
    });
}

} // namespace

bool isDecimalNumber(const std::string& text)
{
    const bool isDecimal = !text.empty() && text.find_first_not_of("0123456789+-.eE") == std::string::npos;
    char* end = nullptr;
    const float number = isDecimal ? std::strtof(text.c_str(), &end) : 0;
    return isDecimal && *end == '\0' && std::isfinite(number);
}

std::string expectedForm(const AttributeKind& kind, const std::string& text)
{
    if (kind.value == ValueKind::Hexadecimal && !isHexadecimal(text))
        return "hexadecimal digits behind 0x, such as 0x07ff";
    if (kind.value == ValueKind::Decimal && !isDecimalNumber(text)) return "a decimal number, such as 4.0";
    return "";
}

std::vector<Rule> valueRules()
{
    return {
        {"integer-value",
         RuleSeverity::Error,
         "text where a whole number is expected",
         "The library reads such attributes up to the first character that is no digit, and takes 0 when there is "
         "none: width=\"1O80\" becomes 1, id=\"\" becomes 0, enabled=\"true\" switches off. No message tells. Write a "
         "decimal number without blanks; hexadecimal numbers, fractions and units are not understood.",
         {},
         checkIntegers},
        {"integer-range",
         RuleSeverity::Error,
         "a number that is out of range",
         "Numbers are kept in 32 bits: the library cuts off what does not fit, so that width=\"4294967297\" becomes 1. "
         "Some attributes allow fewer numbers: flags and directions are 0 or 1, sizes are not negative, and a pg_id "
         "has 16 bits. Write a number within the range that the finding names.",
         {},
         checkRanges},
        {"value-form",
         RuleSeverity::Error,
         "a bitmap or decimal number that is not written as one",
         "Bitmaps such as rbm are handed to clients as they are written, and decimal numbers such as conversion_gain "
         "keep their default when the text is none: no message tells of either. Write bitmaps as hexadecimal digits "
         "behind 0x, without blanks, and decimal numbers with digits and a point: <cipf rbm=\"0x07ff\"/>.",
         {},
         checkForms},
        {"choice-value",
         RuleSeverity::Error,
         "a text that is none of those that the attribute can have",
         "The attribute has a fixed set of values, written in lower case, and other texts are not refused but "
         "misunderstood: any static but \"false\" makes a connection static, even \"False\" or \"no\"; a node of "
         "unknown type is in no list of stages or sinks; options for an unknown attribute govern nothing. Write one of "
         "the values that the finding lists.",
         {},
         checkChoices},
    };
}

} // namespace NuxoTool
