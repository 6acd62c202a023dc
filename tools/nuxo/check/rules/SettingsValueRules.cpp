// SPDX-License-Identifier: Apache-2.0
#include "check/rules/SettingsRules.h"

#include "Text.h"
#include "check/rules/NearNames.h"
#include "check/rules/SettingsPlaces.h"

#include <locale>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <utility>

namespace NuxoTool {

namespace {

using Standing = SettingPlace::Standing;

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

std::vector<std::string> itemsOf(const std::string& text)
{
    std::vector<std::string> items;
    std::istringstream stream(text);
    for (std::string item; std::getline(stream, item, ',');) items.push_back(item);
    return items;
}

// The options of an element for one of its attributes, from all lists that it has for it.
class OptionTable {
public:
    void add(const XmlElement& list)
    {
        if (mFirstList == nullptr) mFirstList = &list;
        for (const XmlElement* const option : elementsBelow(list)) {
            if (option->attribute("value") == nullptr) continue;
            for (const std::string& item : itemsOf(option->value("value"))) {
                mValues.push_back(item);
                mOptions.emplace(item, option);
            }
        }
    }

    /// Null when there is none.
    const XmlElement* firstList() const { return mFirstList; }
    /// The first that has a value, null for none.
    const XmlElement* option(const std::string& value) const
    {
        const auto found = mOptions.find(value);
        return found == mOptions.end() ? nullptr : found->second;
    }
    std::string expected(const std::string& value)
    {
        if (!mNear) mNear.emplace(mValues);
        std::vector<std::string> values;
        for (const std::string& each : mValues) values.push_back(named(each));
        return someOf(values) + mNear->suggestionFor(value);
    }

private:
    const XmlElement* mFirstList = nullptr;
    std::vector<std::string> mValues;
    std::map<std::string, const XmlElement*> mOptions;
    std::optional<NearNames> mNear;
};

// Of all elements that settings give values to, each read once.
class OptionTables {
public:
    /// Null when there are none for the attribute.
    OptionTable* find(const SettingPlace& place, const std::string& attribute)
    {
        const auto [tables, isNew] = mTables.try_emplace(keyOf(place));
        if (isNew) read(place, tables->second);
        const auto table = tables->second.find(attribute);
        return table == tables->second.end() ? nullptr : &table->second;
    }

private:
    using ByAttribute = std::map<std::string, OptionTable>;

    // A node takes those of its base node, its parts stand there themselves.
    static const void* keyOf(const SettingPlace& place)
    {
        if (place.isNode()) return place.node;
        return place.declared;
    }

    static void read(const SettingPlace& place, ByAttribute& tables)
    {
        const auto take = [&tables](const XmlElement& element) {
            if (element.name == "options") tables[element.value("attribute")].add(element);
        };
        if (place.isNode()) {
            for (const ModelPart& part : place.node->parts) take(*part.element);
        } else if (place.declared != nullptr) {
            for (const XmlElement* const child : place.declared->children) take(*child);
        }
    }

    std::map<const void*, ByAttribute> mTables; // only looked up
};

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
        if (!value || saysTheSame(*value, wanted.value)) continue;
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

void checkOption(const SettingPlace& place, const XmlAttribute& attribute, OptionTable& table, RuleReporter& reporter)
{
    const XmlElement* const option = table.option(attribute.value);
    if (option != nullptr) {
        // With the value of the descriptor stands what the descriptor gives for the rest.
        const bool isOther = option != table.option(place.declaredText(attribute.name));
        if (isOther) checkCompanions(*place.descriptor, place, attribute, *option, reporter);
        return;
    }
    if (isOpenList(attribute.name)) return;
    reporter.report(*place.written, attribute.name,
                    named(attribute.value) + " is none of the options of " + place.title() + " for " + attribute.name +
                        ", so nothing goes with it; expected " + table.expected(attribute.value));
    reporter.note(*table.firstList(), "the options");
}

void checkOptions(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    OptionTables tables;
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        if (place.standing != Standing::Declared || place.setting == nullptr) return;
        for (const XmlAttribute& attribute : place.written->attributes) {
            OptionTable* const table = tables.find(place, attribute.name);
            if (table != nullptr) checkOption(place, attribute, *table, reporter);
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

// The sides of muxes and demuxes that klinks use.
class LinkedSides {
public:
    const std::set<int32_t>& of(const SettingPlace& place, const Switch& kind)
    {
        const auto [ends, isNew] = mSides.try_emplace({place.node, &kind});
        if (isNew) read(*place.node, kind, ends->second);
        return ends->second[place.path];
    }

private:
    using ByPart = std::map<std::string, std::set<int32_t>>;

    static void read(const ModelNode& node, const Switch& kind, ByPart& sides)
    {
        for (const ModelPart* const klink : node.partsOfKind("klink")) {
            const std::vector<std::string> end = namesOfPath(klink->element->value(kind.klinkEnd));
            if (end.empty()) continue;
            const std::optional<int32_t> side = end.size() < 2 ? 0 : wholeInteger(end[1]);
            if (side) sides[end[0]].insert(*side);
        }
    }

    std::map<std::pair<const ModelNode*, const Switch*>, ByPart> mSides; // only looked up
};

void checkSwitch(const SettingPlace& place, const Switch& kind, LinkedSides& linked, RuleReporter& reporter)
{
    const std::optional<int32_t> active = place.written->integer(kind.attribute);
    if (!active) return;
    const std::set<int32_t>& sides = linked.of(place, kind);
    if (sides.empty() || sides.count(*active) > 0) return;
    std::vector<std::string> numbers;
    for (const int32_t side : sides) numbers.push_back(std::to_string(side));
    reporter.report(*place.written, kind.attribute,
                    std::string("no klink ") + kind.verb + ' ' +
                        named(place.node->name + ':' + place.path + ':' + std::to_string(*active)) +
                        ", so nothing passes; expected " + someOf(numbers));
}

void checkSwitches(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    LinkedSides sides;
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        if (!place.isPart() || place.part == nullptr || isFaulty(*place.node, reporter)) return;
        for (const Switch& kind : kSwitches) {
            if (place.part->kind == kind.kind) checkSwitch(place, kind, sides, reporter);
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
constexpr const char* kSwitchable =
    "a port, a kernel, a sink or a source; a node that a setting does not name is left out";
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
    {"enabled", " hw mux demux split program_group compute_block ", kSwitchable},
    {"active_input", " port kernel demux split sink program_group compute_block ", "a mux"},
    {"active_output", " port kernel mux split sink program_group compute_block ", "a demux"},
    {"mode_id", " port kernel mux demux split sink hw program_group compute_block ", "the sensor"},
    {"dol_mode", " port kernel mux demux split sink hw program_group compute_block ", "the sensor"},
    {"conversion_gain", " port kernel mux demux split sink hw program_group compute_block ", "the sensor"},
};

// The setting itself is no node.
void checkSettingElement(const XmlElement& setting, RuleReporter& reporter)
{
    for (const Misplaced& rule : kMisplaced) {
        if (setting.attribute(rule.attribute) == nullptr) continue;
        reporter.report(setting, rule.attribute,
                        std::string(rule.attribute) +
                            " stands at the setting itself, where it sets nothing; expected "
                            "it at " +
                            rule.home);
    }
}

void checkHomes(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    for (const ModelSetting& setting : file.settings()) checkSettingElement(*setting.element, reporter);
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
        if (declared.empty() || saysTheSame(place.written->value("id"), declared)) return;
        reporter.report(*place.written, "id",
                        "settings cannot change the id of " + place.title() + ", it stays " + named(declared) +
                            "; expected that one, or none");
    });
}

void checkContexts(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        if (!place.isNode() || place.standing != Standing::Declared) return;
        for (const char* const name : {"stream_id", "exec_ctx_id"}) {
            const std::string declared = place.declaredText(name);
            const std::string& own = place.written->value(name);
            if (declared.empty() || !place.sets(name) || saysTheSame(own, declared)) continue;
            reporter.report(*place.written, name,
                            "this setting moves " + place.title() + " from " + name + ' ' + declared + " to " +
                                printable(own) + ", while what it is connected to stays; expected " +
                                assignment(name, declared) + ", or none");
        }
    });
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
         "'active_input' to a mux and 'active_output' to a demux, 'mode_id' to the sensor. 'enabled' switches ports, "
         "kernels, sinks and sources, no whole node: that is left out by not naming it in the setting. Elsewhere such "
         "attributes are kept and never read; at the 'settings' element only a query can find them. Move the "
         "attribute.",
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
        {"setting-context",
         RuleSeverity::Warning,
         "a setting moves a node to another stream or execution context",
         "Streams and contexts are those of the descriptor: connections are made with its numbers, and sinks take "
         "theirs from the node before them. The setting is merged after that, so a node that it gives another "
         "'stream_id' or 'exec_ctx_id' moves alone, away from its sinks, and its stream may not be analysed at all. "
         "Take the attribute out of the setting; when the node belongs elsewhere, say so in the descriptor.",
         {},
         checkContexts},
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
