// SPDX-License-Identifier: Apache-2.0
#include "check/rules/SettingsRules.h"

#include "Suggestion.h"
#include "Text.h"
#include "check/rules/SettingsStrays.h"
#include "check/rules/SettingsPlaces.h"

#include <nuxo/tree/ItemUID.h>
#include <nuxo/tree/NuxoKeys.h>

#include <algorithm>
#include <set>

namespace NuxoTool {

namespace {

using Standing = SettingPlace::Standing;

// An element that should have been an attribute of the one around it.
bool isAttributeOf(const SettingPlace& place)
{
    if (place.standing != Standing::Unknown) return false;
    const std::string& name = place.written->name;
    constexpr const char* texts[] = {"format",   "peer",         "mode_id",         "dol_mode",
                                     "cmc_tag",  "content_type", "conversion_gain", "sensor_type",
                                     "metadata", "description"};
    if (std::find(std::begin(texts), std::end(texts), name) != std::end(texts)) return true;
    const bool isInteger = NUXO::ItemUID::isInteger(NUXO::ItemUID::str2key(name));
    const bool isDeclared = place.declaredParent != nullptr && place.declaredParent->attribute(name) != nullptr;
    return (isInteger && place.written->children.empty()) || isDeclared;
}

// An attribute whose name is that of an element below its counterpart.
bool isElementBelow(const SettingPlace& place, const std::string& attribute)
{
    if (place.declared == nullptr || place.declared->attribute(attribute) != nullptr) return false;
    if (place.isNode()) return place.node->part(attribute) != nullptr;
    return childFiled(*place.declared, attribute) != nullptr;
}

void checkTypes(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        const XmlElement& written = *place.written;
        if (isAttributeOf(place)) {
            reporter.report(written, named(written.name) + " is an element here; expected an attribute of " +
                                         named(written.parent->name) + ": " + written.name + "=\"...\"");
        }
        for (const XmlAttribute& attribute : written.attributes) {
            if (!isElementBelow(place, attribute.name)) continue;
            reporter.report(written, attribute.name,
                            named(attribute.name) + " is an attribute here; expected an element below " +
                                named(written.name) + ": <" + attribute.name + " .../>");
        }
    });
}

// Names with capitals, which settings cannot speak of, are faults of the descriptor.
bool differsInCase(const std::string& name, const std::vector<std::string>& names)
{
    return std::any_of(names.begin(), names.end(),
                       [&name](const std::string& each) { return lowerCase(each) == name; });
}

std::string basesText(const DescriptorModel& descriptor, const ModelNode& base)
{
    std::vector<std::string> users;
    for (const ModelNode& node : descriptor.nodes()) {
        if (node.base == base.element) users.push_back(named(node.name));
    }
    return named(base.name) + " is a base node, of which no graph is made; expected a node that is built on it" +
           (users.empty() ? "" : ": " + listOf(users, " or "));
}

std::string unknownNodeText(const DescriptorModel& descriptor, const SettingPlace& place)
{
    const std::string& name = place.written->name;
    const ModelNode* const base = descriptor.node(name);
    if (base != nullptr) return basesText(descriptor, *base);
    return named(name) + " is no node of the descriptor; expected the name of one" +
           suggestionFor(name, namesBeside(place, descriptor));
}

void checkNodes(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        if (!place.isNode() || place.standing != Standing::Unknown || isAttributeOf(place)) return;
        if (differsInCase(place.written->name, namesBeside(place, descriptor))) return;
        reporter.report(*place.written, unknownNodeText(descriptor, place));
    });
}

std::string quotedList(const std::vector<std::string>& names)
{
    std::vector<std::string> quotedNames;
    for (const std::string& name : names) quotedNames.push_back(named(name));
    return listOf(quotedNames, " or ");
}

// What kind of part an element can only be, going by what it holds; "" when that does not tell.
const char* likelyKind(const XmlElement& written)
{
    if (written.child("input") != nullptr || written.child("output") != nullptr) return "kernel";
    if (written.attribute("active_input") != nullptr) return "mux";
    if (written.attribute("active_output") != nullptr) return "demux";
    for (const char* const name : {"width", "height", "format", "peer"}) {
        if (written.attribute(name) != nullptr) return "port";
    }
    return "";
}

// The one other node of the setting that has a part of that name.
std::string holderOf(const SettingPlace& place)
{
    std::vector<std::string> holders;
    if (place.setting == nullptr) return "";
    for (const XmlElement* const other : place.setting->element->children) {
        const ModelNode* const node = place.descriptor->node(other->name);
        if (node != nullptr && node->part(place.written->name) != nullptr) holders.push_back(named(node->name));
    }
    return holders.size() == 1 ? "; " + holders.front() + " has one of that name" : "";
}

// Parts of the likely kind are asked first: all of them are listed when none is near.
std::string expectedPart(const SettingPlace& place, const std::vector<std::string>& all)
{
    const std::string& name = place.written->name;
    const std::string kind = likelyKind(*place.written);
    const std::vector<std::string> likely = NuxoTool::namesOf(place.node->partsOfKind(kind));
    constexpr size_t listed = 12;
    const std::string holder = holderOf(place);
    const std::string suggestion = holder.empty() ? suggestionFor(name, likely) : holder;
    if (!likely.empty() && likely.size() <= listed)
        return (likely.size() > 1 ? "one of " : "") + quotedList(likely) + suggestion;
    if (!suggestion.empty()) return "the name of a " + (kind.empty() ? "part" : kind) + suggestion;
    return "the name of a port, a kernel or another part" + suggestionFor(name, all);
}

// Where the misspelled element stands, and what it could have been.
std::string unknownPartText(const DescriptorModel& descriptor, const SettingPlace& place)
{
    const std::string name = named(place.written->name);
    const std::vector<std::string> names = namesBeside(place, descriptor);
    if (place.isPart())
        return name + " is no part of " + named(place.node->name) + "; expected " + expectedPart(place, names);
    const std::string title = place.title();
    return name + " is no part of " + title.substr(0, title.rfind(':')) + "'; expected " +
           (names.empty() ? "no element here" : quotedList(names)) + suggestionFor(place.written->name, names);
}

void checkParts(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        if (place.isNode() || place.standing != Standing::Unknown || isAttributeOf(place)) return;
        if (isFaulty(*place.node, reporter)) return;
        reporter.report(*place.written, unknownPartText(descriptor, place));
    });
}

// The second element of a name is merged over the first, and only the first is looked at for connections.
void checkTwins(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    std::set<std::pair<const XmlElement*, std::string>> seen;
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        const XmlElement& written = *place.written;
        if (seen.emplace(written.parent, written.name).second) return;
        reporter.report(written, place.title() + " stands here a second time; expected one element for it");
        reporter.note(*written.parent->child(written.name), "the first one");
    });
}

std::string graphsText(const std::vector<std::string>& graphs)
{
    if (graphs.empty()) return "";
    return graphs.size() == 1 ? " (graph " + graphs[0] + " has it)" : " (graphs " + listOf(graphs) + " have it)";
}

void checkStrays(const DescriptorModel& descriptor, const ModelSetting& setting, RuleReporter& reporter)
{
    const StrayNodes nodes = strayNodesOf(descriptor, setting);
    if (!nodes.betterGraphs.empty()) return; // the graph is wrong, not the nodes
    for (const XmlElement* const stray : nodes.strays) {
        reporter.report(*stray, named(stray->name) + " is not part of graph " + std::to_string(*setting.graphId) +
                                    ", so its values configure nothing; expected a node of that graph" +
                                    graphsText(graphsWith(descriptor, {stray->name})));
    }
}

void checkUnusedNodes(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    for (const ModelSetting& setting : file.settings()) {
        checkStrays(descriptor, setting, reporter);
    }
}

} // namespace

std::vector<Rule> settingsNameRules()
{
    return {
        {"setting-node",
         RuleSeverity::Error,
         "a setting configures a node that the descriptor does not have",
         "Each element below 'settings' carries the name of the descriptor's node that it configures. An element of "
         "another name is copied into the graph as it stands, where nothing reads it, and the node that was meant "
         "keeps the values of the descriptor; a connection from or to it is left out. Write the name as in the "
         "descriptor: <video_sink width=\"1920\" height=\"1080\"/> for <sink name=\"video_sink\"/>.",
         {},
         checkNodes},
        {"setting-type",
         RuleSeverity::Error,
         "an attribute is written as an element, or an element as an attribute",
         "Values are attributes, parts of a node are elements. Written the other way round they stand beside what "
         "they should replace, and the value of the descriptor stays. Write <main_out width=\"1920\"/>, not "
         "<main_out><width>1920</width></main_out>.",
         {},
         checkTypes},
        {"setting-part",
         RuleSeverity::Error,
         "a setting configures a part that the node does not have",
         "Elements below a node carry the names of its ports, kernels, muxes and other parts in the descriptor, those "
         "of its base node included; below a kernel stand 'input' and 'output'. An element of another name becomes a "
         "part of its own that nothing reads: a port that was meant counts as not mentioned, and its connection is "
         "left out. Correct the name.",
         {"setting-type"},
         checkParts},
        {"setting-twice",
         RuleSeverity::Error,
         "a setting has two elements for one thing",
         "The second element of a name is merged over the first, so its values win; ports that stand in the second "
         "alone are not found when connections are made. Join the two. Outputs of a kernel are told apart by the names "
         "of elements below one 'output'.",
         {},
         checkTwins},
        {"setting-node-unused",
         RuleSeverity::Warning,
         "a setting configures a node that its graph does not have",
         "A graph is made of the nodes at the ends of its connections. A setting that names another node of the "
         "descriptor adds an element that no connection reaches, with the values of the setting and none of the "
         "descriptor. Take the element out, or let 'id' name the graph that has the node.",
         {},
         checkUnusedNodes},
    };
}

} // namespace NuxoTool
