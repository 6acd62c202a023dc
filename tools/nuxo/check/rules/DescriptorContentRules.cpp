// SPDX-License-Identifier: Apache-2.0
// Values that the library looks up in tables or takes apart.
#include "FormatNames.h"
#include "Text.h"
#include "Suggestion.h"
#include "check/rules/DescriptorRuleParts.h"
#include "check/rules/SettingsPlaces.h"
#include "model/SettingsModel.h"

#include <nuxo/records/qv_view_mbr_limits.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace NuxoTool {

namespace {

constexpr size_t kLimitCount = size_t{QV_VIEW_MBR_ROWS} * QV_VIEW_MBR_ROW_LENGTH;

// ---- format-name

std::string formatFault(const std::string& format)
{
    if (formatNamed(format) != nullptr) return "";
    const NUXOFormats::qv_format_t* const coded =
        format.size() == kFourccLength ? formatCoded(fourccOf(format)) : nullptr;
    const std::string suggestion =
        coded == nullptr ? formatSuggestion(format, false) : "; did you mean '" + std::string(coded->name) + "'?";
    return named(format) + " is no pixel format" + (coded == nullptr ? "" : " but the code of one") +
           "; expected a name that nuxo formats lists" + suggestion;
}

bool setsFormat(const XmlElement& element)
{
    const std::vector<std::string> names = namesOfPath(element.value("target"));
    return !names.empty() && names.back() == "format";
}

bool isOptionOfFormat(const XmlElement& element)
{
    return element.parent != nullptr && filedName(*element.parent) == "options" &&
           element.parent->value("attribute") == "format";
}

void reportFormat(const XmlElement& element, const char* attribute, const std::string& format, RuleReporter& reporter)
{
    const std::string fault = formatFault(format);
    if (!fault.empty()) reporter.report(element, attribute, fault);
}

// Items with blanks or without text are told of as options.
bool isItem(const std::string& item)
{
    return !item.empty() && item.find_first_of(" \t\r\n") == std::string::npos;
}

void checkFormats(const DescriptorModel& model, RuleReporter& reporter)
{
    NUXOFormats::initNUXOFormats();
    for (const XmlElement& element : model.document().elements()) {
        if (element.attribute("format") != nullptr) reportFormat(element, "format", element.value("format"), reporter);
        if (element.attribute("value") == nullptr) continue;
        if (setsFormat(element)) reportFormat(element, "value", element.value("value"), reporter);
        if (!isOptionOfFormat(element)) continue;
        for (const std::string& item : listItems(element.value("value"))) {
            if (isItem(item)) reportFormat(element, "value", item, reporter);
        }
    }
}

// ---- version-text

void checkVersion(const DescriptorModel& model, RuleReporter& reporter)
{
    static const std::vector<std::string> versions = {"KVA5", "KVA6", "KVA7"};
    const std::string version = model.version();
    const bool isKnown = std::any_of(versions.begin(), versions.end(), [&version](const std::string& known) {
        return version.find(known) != std::string::npos;
    });
    if (version.empty() || isKnown) return;
    reporter.report(*model.document().root(), "version",
                    named(version) + " tells no generation; expected " + listOf(versions, " or ") +
                        suggestionFor(version, versions));
}

// ---- mbr-data

// Numbers may have a sign, a decimal point and an exponent.
bool isNumber(const std::string& text)
{
    const bool isDecimal = !text.empty() && text.find_first_not_of("0123456789+-.eE") == std::string::npos;
    char* end = nullptr;
    const float number = isDecimal ? std::strtof(text.c_str(), &end) : 0;
    return isDecimal && *end == '\0' && std::isfinite(number);
}

// A comma ends a number; behind the last one there is a number only if there is text.
std::string limitsFault(const std::string& text)
{
    std::vector<std::string> items = listItems(text);
    if (items.back().empty()) items.pop_back();
    const auto wrong = std::find_if_not(items.begin(), items.end(), isNumber);
    if (wrong != items.end())
        return named(*wrong) + " is no number, so the stream gets no limits; expected decimal numbers joined by ','";
    if (items.size() == kLimitCount) return "";
    const std::string effect = items.size() > kLimitCount ? "further ones are ignored" : "the stream gets no limits";
    return std::to_string(items.size()) + (items.size() == 1 ? " limit" : " limits") + ", so " + effect +
           "; expected " + std::to_string(kLimitCount) + " numbers, " + std::to_string(QV_VIEW_MBR_ROWS) + " rows of " +
           std::to_string(QV_VIEW_MBR_ROW_LENGTH);
}

void checkLimits(const DescriptorModel&, const SettingsModel& file, RuleReporter& reporter)
{
    for (const ModelSetting& setting : file.settings()) {
        const XmlElement* const limits = setting.element->child("mbr_data");
        if (limits == nullptr) continue;
        for (const XmlElement* const stream : limits->children) {
            if (stream->name != "stream_id" || stream->attribute("value") == nullptr) continue;
            const std::string fault = limitsFault(stream->value("value"));
            if (!fault.empty()) reporter.report(*stream, "value", fault);
        }
    }
}

} // namespace

std::vector<Rule> contentRules()
{
    return {
        {"format-name",
         RuleSeverity::Error,
         "a pixel format that nobody knows",
         "A format is the name of a row of the table that 'nuxo formats' lists, for example YUV420_8_SP; it gives the "
         "four-character code, the bits of a pixel and the bytes of a line. For an unknown name the library logs an "
         "error, "
         "tries its first four characters as a code and then takes YUV420_8_SP, so that buffers come out with the "
         "wrong "
         "size. Write the name as the table has it, in the same case.",
         {},
         DescriptorRule(checkFormats)},
        {"version-text",
         RuleSeverity::Error,
         "the version of the descriptor tells no generation",
         "The version of a descriptor tells the generation that its graphs are made for: it contains KVA5, KVA6 or "
         "KVA7. Otherwise the library logs an error and guesses: it takes graphs with klinks for generation 6, others "
         "for an older one, and finds no compute blocks. Start the file with the version:\n    <graph_descriptor "
         "version=\"KVA6\">",
         {},
         DescriptorRule(checkVersion)},
        {"mbr-data",
         RuleSeverity::Error,
         "the limits of a stream are not 56 numbers",
         "The value of an element 'stream_id' in 'mbr_data' of a setting holds the limits of one stream, 7 rows of 8 "
         "numbers joined by ','. With fewer the library hands out no limits, further ones are ignored, both with a "
         "warning. "
         "Write all 56.",
         {},
         SettingsRule(checkLimits)},
    };
}

} // namespace NuxoTool
