// SPDX-License-Identifier: Apache-2.0
#include "check/rules/SettingsRules.h"
#include "Text.h"

#include "Suggestion.h"
#include "check/rules/SettingsPlaces.h"

#include <algorithm>
#include <locale>
#include <set>
#include <sstream>

namespace NuxoTool {

namespace {

using Standing = SettingPlace::Standing;

bool isSame(const std::string& a, const std::string& b)
{
    const std::optional<int32_t> number = wholeInteger(a);
    return a == b || (number && number == wholeInteger(b));
}

std::string assignment(const std::string& attribute, const std::string& value)
{
    return attribute + "=\"" + value + '"';
}

// Below an element, in the order of the file.
std::vector<const XmlElement*> elementsBelow(const XmlElement& top)
{
    std::vector<const XmlElement*> found(top.children.begin(), top.children.end());
    for (size_t i = 0; i < found.size(); ++i) {
        found.insert(found.end(), found[i]->children.begin(), found[i]->children.end());
    }
    return found;
}

// Options lists.

std::vector<const XmlElement*> optionsOf(const SettingPlace& place, const std::string& attribute)
{
    std::vector<const XmlElement*> lists;
    const auto take = [&](const XmlElement& element) {
        if (element.name == "options" && element.value("attribute") == attribute) lists.push_back(&element);
    };
    if (place.isNode()) {
        for (const ModelPart& part : place.node->parts) take(*part.element);
    } else if (place.declared != nullptr) {
        for (const XmlElement* const child : place.declared->children) take(*child);
    }
    return lists;
}

std::vector<std::string> itemsOf(const std::string& text)
{
    std::vector<std::string> items;
    std::istringstream stream(text);
    for (std::string item; std::getline(stream, item, ',');) items.push_back(item);
    return items;
}

struct Choice {
    const XmlElement* option = nullptr; ///< the first that has the value, null for none
    std::vector<std::string> values;    ///< of all options
};

Choice choiceOf(const std::vector<const XmlElement*>& lists, const std::string& value)
{
    Choice choice;
    for (const XmlElement* const list : lists) {
        for (const XmlElement* const option : elementsBelow(*list)) {
            if (option->attribute("value") == nullptr) continue;
            for (const std::string& item : itemsOf(option->value("value"))) {
                choice.values.push_back(item);
                if (choice.option == nullptr && item == value) choice.option = option;
            }
        }
    }
    return choice;
}

// A value that an option brings along, and where.
struct Companion {
    std::string node;
    std::string path; ///< below the node, may be empty
    const XmlAttribute* attribute = nullptr;
};

// Options of a base node name that in place of the node.
std::vector<Companion> companionsOf(const XmlElement& option, const ModelNode& node)
{
    struct Open {
        const XmlElement* element;
        std::string node;
        std::string path;
    };
    std::vector<Companion> companions;
    std::vector<Open> open;
    const XmlElement* const apply = option.child("apply");
    if (apply == nullptr) return companions;
    for (const XmlElement* const child : apply->children) {
        const bool isBase = node.base != nullptr && node.base->value("name") == child->name;
        open.push_back({child, isBase ? node.name : child->name, ""});
    }
    while (!open.empty()) {
        const Open next = open.back();
        open.pop_back();
        for (const XmlAttribute& attribute : next.element->attributes) {
            companions.push_back({next.node, next.path, &attribute});
        }
        for (const XmlElement* const child : next.element->children) {
            open.push_back({child, next.node, next.path.empty() ? child->name : next.path + ':' + child->name});
        }
    }
    return companions;
}

// An element of a setting, null when it is not there.
const XmlElement* writtenAt(const XmlElement& setting, const std::string& node, const std::string& path)
{
    const XmlElement* element = setting.child(node);
    for (const std::string& name : namesOfPath(path)) {
        if (element != nullptr) element = element->child(name);
    }
    return element;
}

// What the graph of a setting holds there, nothing when neither file says.
std::optional<std::string> valueInGraph(const DescriptorModel& descriptor, const XmlElement& setting,
                                        const Companion& companion)
{
    const XmlElement* const written = writtenAt(setting, companion.node, companion.path);
    const std::string& name = companion.attribute->name;
    if (written != nullptr && written->attribute(name) != nullptr) return written->value(name);
    const ModelNode* const node = descriptor.node(companion.node);
    if (node == nullptr || setting.child(companion.node) == nullptr) return std::nullopt;
    const std::optional<ModelValue> declared = node->value(companion.path.empty() ? name : companion.path + ':' + name);
    return declared ? std::optional(declared->text) : std::nullopt;
}

void checkCompanions(const DescriptorModel& descriptor, const SettingPlace& place, const XmlAttribute& attribute,
                     const XmlElement& option, RuleReporter& reporter)
{
    for (const Companion& companion : companionsOf(option, *place.node)) {
        const XmlAttribute& wanted = *companion.attribute;
        const std::optional<std::string> value = valueInGraph(descriptor, *place.setting->element, companion);
        if (!value || isSame(*value, wanted.value)) continue;
        const std::string where =
            named(companion.path.empty() ? companion.node : companion.node + ':' + companion.path);
        reporter.report(*place.written, attribute.name,
                        "the option " + named(attribute.value) + " goes with " + assignment(wanted.name, wanted.value) +
                            " at " + where + ", but options do not act in settings and the graph has " + named(*value) +
                            "; expected " + assignment(wanted.name, wanted.value) + " there in this setting, too");
        reporter.note(option, "the option");
    }
}

// Any format will do where nothing goes with it, and rules of their own look at formats and switches.
bool isOpenList(const std::string& attribute)
{
    return attribute == "format" || attribute == "active_input" || attribute == "active_output";
}

void checkOption(const DescriptorModel& descriptor, const SettingPlace& place, const XmlAttribute& attribute,
                 RuleReporter& reporter)
{
    const std::vector<const XmlElement*> lists = optionsOf(place, attribute.name);
    if (lists.empty()) return;
    const Choice choice = choiceOf(lists, attribute.value);
    const bool isOther = choice.option != choiceOf(lists, place.declaredText(attribute.name)).option;
    if (choice.option != nullptr) {
        // With the value of the descriptor stands what the descriptor gives for the rest.
        if (isOther) checkCompanions(descriptor, place, attribute, *choice.option, reporter);
        return;
    }
    if (isOpenList(attribute.name)) return;
    std::vector<std::string> values;
    for (const std::string& value : choice.values) values.push_back(named(value));
    reporter.report(*place.written, attribute.name,
                    named(attribute.value) + " is none of the options of " + place.title() + " for " + attribute.name +
                        ", so nothing goes with it; expected " + listOf(values, " or ") +
                        suggestionFor(attribute.value, choice.values));
    reporter.note(*lists.front(), "the options");
}

void checkOptions(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        if (place.standing != Standing::Declared || place.setting == nullptr) return;
        for (const XmlAttribute& attribute : place.written->attributes) {
            checkOption(descriptor, place, attribute, reporter);
        }
    });
}

// Switches.

struct Switch {
    const char* kind;
    const char* attribute; ///< that says which side is active
    const char* klinkEnd;  ///< where links name it
    const char* verb;
};
constexpr Switch kSwitches[] = {{"mux", "active_input", "destination", "leads to"},
                                {"demux", "active_output", "source", "comes from"}};

std::set<int32_t> linkedSides(const SettingPlace& place, const Switch& kind)
{
    std::set<int32_t> sides;
    for (const ModelPart* const klink : place.node->partsOfKind("klink")) {
        const std::vector<std::string> end = namesOfPath(klink->element->value(kind.klinkEnd));
        if (end.empty() || end[0] != place.path) continue;
        const std::optional<int32_t> side = end.size() < 2 ? 0 : wholeInteger(end[1]);
        if (side) sides.insert(*side);
    }
    return sides;
}

void checkSwitch(const SettingPlace& place, const Switch& kind, RuleReporter& reporter)
{
    const std::optional<int32_t> active = place.written->integer(kind.attribute);
    const std::set<int32_t> sides = linkedSides(place, kind);
    if (!active || sides.empty() || sides.count(*active) > 0) return;
    std::vector<std::string> numbers;
    for (const int32_t side : sides) numbers.push_back(std::to_string(side));
    reporter.report(*place.written, kind.attribute,
                    std::string("no klink ") + kind.verb + ' ' +
                        named(place.node->name + ':' + place.path + ':' + std::to_string(*active)) +
                        ", so nothing passes; expected " + listOf(numbers, " or "));
}

void checkSwitches(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        if (!place.isPart() || place.part == nullptr || isFaulty(*place.node, reporter)) return;
        for (const Switch& kind : kSwitches) {
            if (place.part->kind == kind.kind) checkSwitch(place, kind, reporter);
        }
    });
}

// Attributes in the wrong place.

struct Misplaced {
    const char* attribute;
    const char* kinds; ///< on which it does nothing, in blanks
    const char* home;  ///< where it belongs
};
constexpr const char* kKernelEnds = "the input or output of a kernel";
constexpr const char* kFrames = "a port, a sink, or the input or output of a kernel";
constexpr Misplaced kMisplaced[] = {
    {"width", " kernel mux demux split program_group compute_block ", kFrames},
    {"height", " kernel mux demux split program_group compute_block ", kFrames},
    {"left", " kernel mux demux split sink program_group compute_block ", kKernelEnds},
    {"top", " kernel mux demux split sink program_group compute_block ", kKernelEnds},
    {"right", " kernel mux demux split sink program_group compute_block ", kKernelEnds},
    {"bottom", " kernel mux demux split sink program_group compute_block ", kKernelEnds},
    {"format", " kernel mux demux split program_group compute_block ", "a port or a sink"},
    {"peer", " kernel mux demux split sink program_group compute_block ", "a port"},
    {"active_input", " port kernel demux split sink program_group compute_block ", "a mux"},
    {"active_output", " port kernel mux split sink program_group compute_block ", "a demux"},
    {"mode_id", " port kernel mux demux split sink hw program_group compute_block ", "the sensor"},
    {"dol_mode", " port kernel mux demux split sink hw program_group compute_block ", "the sensor"},
    {"conversion_gain", " port kernel mux demux split sink hw program_group compute_block ", "the sensor"},
};

void checkHomes(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        const bool isOfKind = place.isNode() || place.isPart();
        if (place.standing != Standing::Declared || !isOfKind) return;
        const std::string& kind = place.isNode() ? place.node->kind : place.part->kind;
        for (const Misplaced& rule : kMisplaced) {
            const bool isHere = std::string(rule.kinds).find(' ' + kind + ' ') != std::string::npos;
            if (!isHere || !place.sets(rule.attribute) || !place.declaredText(rule.attribute).empty()) continue;
            reporter.report(*place.written, rule.attribute,
                            place.title() + " is a " + kind + ", where " + rule.attribute +
                                " means nothing; expected it at " + rule.home);
        }
    });
}

// Values that do not get into the graph.

void checkIds(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        if (place.standing != Standing::Declared || !place.sets("id")) return;
        const std::string declared = place.declaredText("id");
        if (declared.empty() || isSame(place.written->value("id"), declared)) return;
        reporter.report(*place.written, "id",
                        "settings cannot change the id of " + place.title() + ", it stays " + named(declared) +
                            "; expected that one, or none");
    });
}

void checkOverrides(const ModelSetting& setting, RuleReporter& reporter)
{
    for (const XmlElement* const apply : setting.graph->overrides) {
        std::vector<std::string> names = namesOfPath(apply->value("target"));
        if (names.size() < 2) continue;
        const std::string attribute = names.back();
        names.pop_back();
        const XmlElement* written = setting.element;
        for (const std::string& name : names) {
            if (written != nullptr) written = written->child(name);
        }
        if (written == nullptr || written->attribute(attribute) == nullptr) continue;
        if (isSame(written->value(attribute), apply->value("value"))) continue;
        reporter.report(*written, attribute,
                        "graph " + std::to_string(*setting.graphId) + " overrides this value with " +
                            named(apply->value("value")) + "; expected that value, or none");
        reporter.note(*apply, "the override");
    }
}

void checkAllOverrides(const DescriptorModel&, const SettingsModel& file, RuleReporter& reporter)
{
    for (const ModelSetting& setting : file.settings()) {
        if (setting.graph != nullptr) checkOverrides(setting, reporter);
    }
}

bool isDecimal(const std::string& text)
{
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    double number = 0;
    return stream >> std::noskipws >> number && stream.peek() == std::istringstream::traits_type::eof();
}

void checkGains(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        if (!place.isNode() || place.standing != Standing::Declared || !place.sets("conversion_gain")) return;
        const std::string& gain = place.written->value("conversion_gain");
        if (isDecimal(gain)) return;
        reporter.report(*place.written, "conversion_gain",
                        named(gain) + " is no number, so the gain stays 1.0; expected one such as 4.0");
    });
}

} // namespace

std::vector<Rule> settingsValueRules()
{
    return {
        {"option-value",
         RuleSeverity::Warning,
         "what an options list ties to a value is not part of the setting",
         "An options list of the descriptor says which values an attribute takes and what else each of them sets. It "
         "acts "
         "when a program sets the attribute in a built graph, not when settings are merged. So a setting has to state "
         "both, the value and what goes with it: <main_out format=\"YUV420_10_SP\"/> and <main_fmt><output "
         "bpp=\"10\"/></main_fmt>. Of formats that no option lists nothing is expected; other values must be listed.",
         {},
         checkOptions},
        {"kernel-active-input",
         RuleSeverity::Error,
         "a setting switches a mux or demux to a side that no klink uses",
         "'active_input' and 'active_output' are the numbers behind the ':' in klinks to the mux and from the demux. A "
         "number that none of them has cuts the path: all kernels behind it are switched off. Use one of the numbers, "
         "or "
         "add the klink.",
         {},
         checkSwitches},
        {"setting-attribute",
         RuleSeverity::Warning,
         "an attribute stands in a setting where the library does not read it",
         "Sizes belong to ports, sinks and the 'input' and 'output' of kernels, formats to ports and sinks, "
         "'active_input' to a mux and 'active_output' to a demux, 'mode_id' to the sensor. Elsewhere they are kept and "
         "never read. Move the attribute.",
         {},
         checkHomes},
        {"setting-fixed-id",
         RuleSeverity::Warning,
         "a setting states another id than the descriptor",
         "Ids stay as they are when a setting is merged into the graph: the values beside the id go to the element of "
         "that "
         "name, whatever its id. So <output id=\"1\"> gives a size to the first output of a kernel, not to the one "
         "whose id "
         "is 1. Outputs are told apart by the names of elements below one 'output' in the descriptor.",
         {},
         checkIds},
        {"setting-override",
         RuleSeverity::Warning,
         "an override of the graph replaces a value of the setting",
         "The 'apply' elements of a graph have the last word, after the settings. A setting that gives another value "
         "does "
         "not get it. Take it out of the setting, or the override out of the graph.",
         {},
         checkAllOverrides},
        {"dol-gain",
         RuleSeverity::Warning,
         "the gain of a source is no number",
         "The 'conversion_gain' of a sensor or buffer source is a decimal number with a point. Anything else counts as "
         "1.0 for those who ask for it. Write conversion_gain=\"4.0\".",
         {},
         checkGains},
    };
}

} // namespace NuxoTool
