// SPDX-License-Identifier: Apache-2.0
// Values that the library looks up in tables or takes apart.
#include "FormatNames.h"
#include "Text.h"
#include "Suggestion.h"
#include "check/rules/DescriptorRuleParts.h"
#include "check/rules/FileRules.h"
#include "check/rules/SettingsPlaces.h"
#include "model/SettingsModel.h"

#include <nuxo/records/qv_view_mbr_limits.h>

#include <algorithm>
#include <optional>
#include <set>

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
    if (isKnown || model.document().root() == nullptr) return;
    if (version.empty()) {
        reporter.report(*model.document().root(), "version",
                        "the descriptor states no generation, so that no graph can be analysed; expected " +
                            listOf(versions, " or ") + " in its version");
        return;
    }
    reporter.report(*model.document().root(), "version",
                    named(version) + " tells no generation; expected " + listOf(versions, " or ") +
                        suggestionFor(version, versions));
}

// ---- subsystem-name

constexpr const char* kSubsystem = "subsystem";
const std::vector<std::string> kSubsystems = {"gpu"}; // those that the library knows

// The attribute that gives a subsystem, "" for none.
const char* subsystemIn(const XmlElement& element)
{
    if (element.attribute(kSubsystem) != nullptr) return kSubsystem;
    const std::vector<std::string> names = namesOfPath(element.value("target"));
    return !names.empty() && names.back() == kSubsystem && element.attribute("value") != nullptr ? "value" : "";
}

std::string sorted(std::string letters)
{
    std::sort(letters.begin(), letters.end());
    return letters;
}

// The known subsystem that has these letters, in whatever order and case; "" for none.
std::string sameLettersAs(const std::string& name)
{
    const auto found = std::find_if(kSubsystems.begin(), kSubsystems.end(), [&name](const std::string& known) {
        return sorted(lowerCase(name)) == sorted(known);
    });
    return found == kSubsystems.end() ? "" : *found;
}

// Other subsystems may be meant, but hardly ones that have the same letters.
void checkSubsystems(const DescriptorModel& model, RuleReporter& reporter)
{
    for (const XmlElement& element : model.document().elements()) {
        const std::string attribute = subsystemIn(element);
        if (attribute.empty()) continue;
        const std::string& name = element.value(attribute);
        const std::string known = sameLettersAs(name);
        if (known.empty() || known == name) continue;
        reporter.report(element, attribute,
                        named(name) +
                            " is no subsystem that the library knows, so that the stage counts as one of the "
                            "imaging processor; expected " +
                            named(known));
    }
}

// ---- mbr-data

// A comma ends a number; behind the last one there is a number only if there is text.
std::string limitsFault(const std::string& text)
{
    std::vector<std::string> items = listItems(text);
    if (items.back().empty()) items.pop_back();
    const auto wrong = std::find_if_not(items.begin(), items.end(), isDecimalNumber);
    if (wrong != items.end())
        return named(*wrong) + " is no number, so the stream gets no limits; expected decimal numbers joined by ','";
    if (items.size() == kLimitCount) return "";
    const std::string effect = items.size() > kLimitCount ? "further ones are ignored" : "the stream gets no limits";
    return std::to_string(items.size()) + (items.size() == 1 ? " limit" : " limits") + ", so " + effect +
           "; expected " + std::to_string(kLimitCount) + " numbers, " + std::to_string(QV_VIEW_MBR_ROWS) + " rows of " +
           std::to_string(QV_VIEW_MBR_ROW_LENGTH);
}

// The streams that the nodes of a graph belong to; nothing when settings or overrides may change that.
using Streams = std::optional<std::set<int32_t>>;

Streams streamsOf(const ModelSetting& setting)
{
    constexpr const char* attribute = "stream_id";
    if (setting.graph == nullptr) return std::nullopt;
    for (const XmlElement* const apply : setting.graph->overrides) {
        const std::vector<std::string> names = namesOfPath(apply->value("target"));
        if (!names.empty() && names.back() == attribute) return std::nullopt;
    }
    for (const XmlElement* const node : setting.element->children) {
        if (node->attribute(attribute) != nullptr) return std::nullopt;
    }
    std::set<int32_t> streams;
    for (const ModelNode* const node : setting.graph->nodes()) {
        if (!node->isWhole()) return std::nullopt;
        const std::optional<int32_t> stream = node->integer(attribute);
        if (stream) streams.insert(*stream);
    }
    return streams;
}

std::string streamFault(const Streams& streams, const XmlElement& limits)
{
    const std::optional<int32_t> id = limits.integer("id");
    if (!id || !streams || streams->count(*id) > 0) return "";
    std::vector<std::string> known;
    for (const int32_t stream : *streams) known.push_back(std::to_string(stream));
    return "no node of the graph belongs to stream " + std::to_string(*id) +
           ", so that nobody asks for its limits; expected " + (known.empty() ? "none" : choiceOf(known));
}

void checkLimits(const DescriptorModel&, const SettingsModel& file, RuleReporter& reporter)
{
    for (const ModelSetting& setting : file.settings()) {
        const XmlElement* const limits = setting.element->child("mbr_data");
        if (limits == nullptr) continue;
        const Streams streams = streamsOf(setting);
        for (const XmlElement* const stream : limits->children) {
            if (stream->name != "stream_id") continue;
            const std::string unused = streamFault(streams, *stream);
            if (!unused.empty()) reporter.report(*stream, "id", unused);
            if (stream->attribute("value") == nullptr) continue;
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
         "KVA7. Otherwise, and without a version, the library logs an error and guesses: it takes graphs with klinks "
         "for "
         "generation 6, others for an older one, and finds no compute blocks. Start the file with the version:\n    "
         "<graph_descriptor "
         "version=\"KVA6\">",
         {},
         DescriptorRule(checkVersion)},
        {"subsystem-name",
         RuleSeverity::Warning,
         "the name of a subsystem is not spelled as the library knows it",
         "A stage that runs outside of the imaging processor says where: subsystem=\"gpu\", in lower case, shows in "
         "the "
         "identifiers of its terminals. Any other text, GPU as well, counts as the imaging processor itself, and "
         "clients look for the terminals in the wrong place. Write the name as it is known.",
         {},
         DescriptorRule(checkSubsystems)},
        {"mbr-data",
         RuleSeverity::Error,
         "limits of a stream that are not 56 numbers, or of no stream of the graph",
         "The value of an element 'stream_id' in 'mbr_data' of a setting holds the limits of one stream, 7 rows of 8 "
         "numbers joined by ','. With fewer the library hands out no limits, further ones are ignored, both with a "
         "warning. "
         "Write all 56. The id is the stream_id of nodes of the setting's graph: limits of other streams are never "
         "asked for.",
         {"difference-target", "difference-value", "graph-id"},
         SettingsRule(checkLimits)},
    };
}

} // namespace NuxoTool
