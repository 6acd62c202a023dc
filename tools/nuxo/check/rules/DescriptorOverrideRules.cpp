// SPDX-License-Identifier: Apache-2.0
// What graphs set over all that nodes and settings say.
#include "Suggestion.h"
#include "Text.h"
#include "check/rules/Causes.h"
#include "check/rules/DescriptorRuleParts.h"
#include "check/rules/SettingsPlaces.h"
#include "schema/GraphSchema.h"

#include <algorithm>
#include <set>

namespace NuxoTool {

namespace {

// Where the path of an override leads, as far as that is known.
struct Override {
    std::string fault;     ///< what is wrong with the target
    std::string cause;     ///< of it, when it shows elsewhere as well
    bool isUsable = false; ///< the path ends at something that can be set
    std::string attribute; ///< then its name
};

// The nodes of a graph.
class GraphNodes {
public:
    explicit GraphNodes(const ModelGraph& graph)
    {
        for (const ModelNode* const node : graph.nodes()) {
            mNodes.insert(node);
            if (mNames.size() <= kMostCompared) mNames.push_back(node->name);
        }
        mCanRedirect =
            std::any_of(graph.connections.begin(), graph.connections.end(), [](const ModelConnection& connection) {
                return !connection.isStatic && connection.sink.portName.empty();
            });
    }

    // Settings may send frames to another sink than the one that the connection names.
    bool has(const ModelNode& node) const { return mNodes.count(&node) > 0 || (mCanRedirect && node.kind == "sink"); }
    std::string closeTo(const std::string& name) const { return suggestionAmong(name, mNames); }

private:
    std::set<const ModelNode*> mNodes;
    std::vector<std::string> mNames;
    bool mCanRedirect = false;
};

std::string nodeFault(const DescriptorModel& model, const GraphNodes& graph, const std::string& name)
{
    const ModelNode* const node = model.node(name);
    if (node != nullptr && graph.has(*node)) return "";
    const std::string what =
        node == nullptr ? "no node has the name " + named(name) : "node " + named(name) + " is not part of this graph";
    return what + ", so the override is skipped; expected a node of the graph" + graph.closeTo(name);
}

// An override of the whole graph, such as "dvs".
std::string ownAttributeFault(const DescriptorModel& model, const GraphNodes& graph, const std::string& name)
{
    if (model.node(name) != nullptr)
        return named(name) + " is a node; expected an attribute behind it, such as " + named(name + ":enabled");
    const VocabularyEntry* const entry = vocabularyEntry(name);
    if (entry != nullptr && entry->isAttribute && !entry->isSettable)
        return named(name) +
               " of the setting must stay as it is written; expected another attribute, or a node ahead " + "of it";
    if (entry != nullptr && entry->isAttribute) return "";
    return named(name) + " is no attribute; expected 'node:attribute', or a path with parts between them" +
           graph.closeTo(name);
}

// Whether the first names of a path may be meant for something that another one hides.
bool mayBeShadowed(const DescriptorModel& model, const ShadowedItems& shadowed, const std::vector<std::string>& names)
{
    const ModelNode* const node = names.empty() ? nullptr : model.node(names[0]);
    if (node == nullptr) return shadowed.hasNode();
    return names.size() > 2 && node->part(names[1]) == nullptr && shadowed.hasPart(*node);
}

Override overrideOf(const DescriptorModel& model, const GraphNodes& graph, const XmlElement& apply)
{
    const std::vector<std::string> names = namesOfPath(apply.value("target"));
    Override result;
    if (names.empty()) {
        result.fault = "the path is empty; expected names joined by ':', an attribute last";
    } else if (names.size() == 1) {
        result.fault = ownAttributeFault(model, graph, names[0]);
    } else {
        result.fault = nodeFault(model, graph, names[0]);
    }
    const ModelNode* const node = names.empty() ? nullptr : model.node(names[0]);
    if (names.size() > 1 && node == nullptr) result.cause = missingNode(names[0]);
    if (result.fault.empty() && names.size() > 1 && node->isWhole()) {
        const PathTarget target = findTarget(*node, names, 1);
        result.fault = faultText(target, "node " + named(node->name));
        const bool isPart = target.fault == PathTarget::Fault::UnknownPart && target.namesBefore.empty();
        if (isPart) result.cause = missingPart(*node, target.name);
    }
    result.isUsable = result.fault.empty() && (names.size() == 1 || node->isWhole());
    if (result.isUsable) result.attribute = names.back();
    return result;
}

template <typename Visit> void forEachOverride(const DescriptorModel& model, Visit visit)
{
    const ShadowedItems shadowed(model);
    for (const ModelGraph& graph : model.graphs()) {
        const GraphNodes nodes(graph);
        for (const XmlElement* const apply : graph.overrides) {
            if (apply->attribute("target") == nullptr) continue;
            const Override found = overrideOf(model, nodes, *apply);
            const bool isConsequence =
                !found.fault.empty() && mayBeShadowed(model, shadowed, namesOfPath(apply->value("target")));
            if (!isConsequence) visit(*apply, found);
        }
    }
}

void checkTargets(const DescriptorModel& model, RuleReporter& reporter)
{
    forEachOverride(model, [&](const XmlElement& apply, const Override& found) {
        if (!found.fault.empty()) reporter.reportCause(found.cause, apply, "target", found.fault);
    });
}

void checkValues(const DescriptorModel& model, RuleReporter& reporter)
{
    forEachOverride(model, [&](const XmlElement& apply, const Override& found) {
        const VocabularyEntry* const entry = vocabularyEntry(found.attribute);
        if (entry == nullptr || !entry->isAttribute || apply.attribute("value") == nullptr) return;
        const std::string fault = valueFault(&entry->attribute, apply.value("value"));
        if (!fault.empty()) reporter.report(apply, "value", fault);
    });
}

} // namespace

std::vector<Rule> overrideRules()
{
    return {
        {"override-target",
         RuleSeverity::Error,
         "an override of a graph names nothing that it can set",
         "An element 'apply' below a graph sets a value in every built graph, over nodes and settings. Its target "
         "starts "
         "with a node of the graph, goes on with parts of it and ends with an attribute; only the attribute may be "
         "new, and names, types, peers and klinks must stay. "
         "What leads elsewhere is skipped with a warning, or makes an element that nobody reads:\n"
         "    <apply target=\"front:shade:enabled\" value=\"1\"/>",
         {"connection-end", "base-node"},
         DescriptorRule(checkTargets)},
        {"override-value",
         RuleSeverity::Error,
         "an override of a graph gives a value wrongly",
         "When the attribute that the override sets is a number, the library makes a decimal number of the "
         "value; when the "
         "text is none, or the number does not fit 32 bits, it ends building the graph, and no message tells why. "
         "Write decimal digits, in the range of the attribute; bitmaps and fixed values as in elements.",
         {},
         DescriptorRule(checkValues)},
    };
}

} // namespace NuxoTool
