// SPDX-License-Identifier: Apache-2.0
#include "check/rules/SettingsRules.h"

#include "Suggestion.h"
#include "Text.h"
#include "check/rules/Causes.h"
#include "check/rules/NearNames.h"
#include "check/rules/SettingsPlaces.h"
#include "check/rules/SettingsStrays.h"

#include <nuxo/tree/ItemUID.h>
#include <nuxo/tree/NuxoKeys.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>

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

// Tells what is wrong with the name of a node, for many names.
class UnknownNodes {
public:
    explicit UnknownNodes(const DescriptorModel& descriptor) : mDescriptor(descriptor), mNames(namesOf(descriptor))
    {
        for (const std::string& name : mNames.candidates()) {
            if (lowerCase(name) != name) mWithCapitals.insert(lowerCase(name));
        }
        for (const ModelNode& node : descriptor.nodes()) {
            if (node.base != nullptr) mUsers[node.base].push_back(named(node.name));
        }
    }

    // Names with capitals, which settings cannot speak of, are faults of the descriptor.
    bool differsInCase(const std::string& name) const { return mWithCapitals.count(name) > 0; }

    std::string text(const std::string& name)
    {
        const ModelNode* const base = mDescriptor.node(name);
        if (base != nullptr) return baseText(*base);
        return named(name) + " is no node of the descriptor; expected the name of one" + mNames.suggestionFor(name);
    }

private:
    static std::vector<std::string> namesOf(const DescriptorModel& descriptor)
    {
        std::vector<std::string> names;
        for (const ModelNode& node : descriptor.nodes()) {
            if (!node.isBase) names.push_back(node.name);
        }
        return names;
    }

    std::string baseText(const ModelNode& base) const
    {
        const auto users = mUsers.find(base.element);
        return named(base.name) + " is a base node, of which no graph is made; expected a node that is built on it" +
               (users == mUsers.end() ? "" : ": " + someOf(users->second));
    }

    const DescriptorModel& mDescriptor;
    NearNames mNames;
    std::set<std::string> mWithCapitals;
    std::map<const XmlElement*, std::vector<std::string>> mUsers; // of base nodes; only looked up
};

void checkNodes(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    UnknownNodes unknown(descriptor);
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        if (!place.isNode() || place.standing != Standing::Unknown || isAttributeOf(place)) return;
        const std::string& name = place.written->name;
        if (!unknown.differsInCase(name))
            reporter.reportCause(missingNode(name), *place.written, "", unknown.text(name));
    });
}

std::vector<std::string> quotedNames(const std::vector<std::string>& names)
{
    std::vector<std::string> all;
    for (const std::string& name : names) all.push_back(named(name));
    return all;
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

// Tells what is wrong with the name of a part, for many names.
class UnknownParts {
public:
    std::string text(const SettingPlace& place)
    {
        const std::string name = named(place.written->name);
        if (place.declared != nullptr)
            return name + " elements have no names, so settings cannot tell which one is meant; expected values of "
                          "ports, kernels, muxes and other named parts only, such as the active_input of a mux";
        if (place.written->name == "mbr_data")
            return "'mbr_data' stands in " + named(place.written->parent->name) +
                   ", where nothing looks for it; expected it at the top of the setting, beside the nodes";
        if (place.isPart()) return name + " is no part of " + named(place.node->name) + "; expected " + expected(place);
        const std::vector<std::string> names = namesBeside(place, *place.descriptor);
        const std::string title = place.title();
        return name + " is no part of " + title.substr(0, title.rfind(':')) + "'; expected " +
               (names.empty() ? "no element here" : someOf(quotedNames(names))) +
               NuxoTool::suggestionFor(place.written->name, names);
    }

private:
    // Parts of the likely kind are asked first: all of them are listed when none is near.
    std::string expected(const SettingPlace& place)
    {
        const std::string& name = place.written->name;
        const std::string kind = likelyKind(*place.written);
        NearNames& likely = partsOf(*place.node, kind);
        const std::vector<std::string>& names = likely.candidates();
        constexpr size_t listed = 12;
        const std::string holder = holderOf(place);
        const std::string suggestion = holder.empty() ? likely.suggestionFor(name) : holder;
        if (!names.empty() && names.size() <= listed)
            return (names.size() > 1 ? "one of " : "") + someOf(quotedNames(names)) + suggestion;
        if (!suggestion.empty()) return "the name of a " + (kind.empty() ? "part" : kind) + suggestion;
        return "the name of a port, a kernel or another part" + allPartsOf(place).suggestionFor(name);
    }

    NearNames& partsOf(const ModelNode& node, const std::string& kind)
    {
        const auto found = mParts.find({&node, kind});
        if (found != mParts.end()) return found->second;
        return mParts.emplace(std::pair(&node, kind), NuxoTool::namesOf(node.partsOfKind(kind))).first->second;
    }

    NearNames& allPartsOf(const SettingPlace& place)
    {
        const auto found = mAllParts.find(place.node);
        if (found != mAllParts.end()) return found->second;
        return mAllParts.emplace(place.node, namesBeside(place, *place.descriptor)).first->second;
    }

    // The one other node of the setting that has a part of that name.
    std::string holderOf(const SettingPlace& place)
    {
        if (place.setting == nullptr) return "";
        if (mHoldersIn != place.setting) collectHolders(place);
        const auto holders = mHolders.find(place.written->name);
        const bool isOne = holders != mHolders.end() && holders->second.size() == 1;
        return isOne ? "; " + named((*holders->second.begin())->name) + " has one of that name" : "";
    }

    void collectHolders(const SettingPlace& place)
    {
        mHoldersIn = place.setting;
        mHolders.clear();
        for (const XmlElement* const written : place.setting->element->children) {
            const ModelNode* const node = place.descriptor->node(written->name);
            if (node == nullptr) continue;
            for (const ModelPart& part : node->parts) mHolders[part.name].insert(node);
        }
    }

    std::map<std::pair<const ModelNode*, std::string>, NearNames> mParts; ///< by node and kind; only looked up
    std::map<const ModelNode*, NearNames> mAllParts;                      // likewise
    const ModelSetting* mHoldersIn = nullptr;
    std::map<std::string, std::set<const ModelNode*>> mHolders; ///< nodes of that setting by names of parts
};

void checkParts(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    UnknownParts unknown;
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        if (place.isNode() || place.standing != Standing::Unknown || isAttributeOf(place)) return;
        if (isFaulty(*place.node, reporter)) return;
        if (place.isPart() && place.declared == nullptr) {
            reporter.reportCause(missingPart(*place.node, place.written->name), *place.written, "",
                                 unknown.text(place));
        } else {
            reporter.reportOnce(*place.written, "", unknown.text(place));
        }
    });
}

// The second element of a name is merged over the first, and only the first is looked at for connections.
void checkTwins(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    std::map<std::pair<const XmlElement*, std::string>, const XmlElement*> seen; // only looked up
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        const XmlElement& written = *place.written;
        const auto [first, isNew] = seen.emplace(std::pair(written.parent, written.name), &written);
        if (isNew) return;
        reporter.report(written, place.title() + " stands here a second time; expected one element for it");
        reporter.note(*first->second, "the first one");
    });
}

std::string graphsText(const std::vector<int32_t>& graphs)
{
    if (graphs.empty()) return "";
    return (graphs.size() == 1 ? " (graph " : " (graphs ") + someOf(graphs, " and ") +
           (graphs.size() == 1 ? " has it)" : " have it)");
}

void checkStrays(const ModelSetting& setting, StrayCheck& check, RuleReporter& reporter)
{
    const StrayNodes nodes = check.straysOf(setting);
    if (!nodes.betterGraphs.empty()) return; // the graph is wrong, not the nodes
    for (const XmlElement* const stray : nodes.strays) {
        reporter.reportOnce(*stray, "",
                            named(stray->name) + " is not part of graph " + std::to_string(*setting.graphId) +
                                ", so its values configure nothing; expected a node of that graph" +
                                graphsText(check.graphsWith({stray->name})));
    }
}

void checkUnusedNodes(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    StrayCheck check(descriptor);
    for (const ModelSetting& setting : file.settings()) checkStrays(setting, check, reporter);
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
