// SPDX-License-Identifier: Apache-2.0
// What graphs set over all that nodes and settings say.
#include "Suggestion.h"
#include "Text.h"
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
            mNames.push_back(node->name);
        }
        mCanRedirect =
            std::any_of(graph.connections.begin(), graph.connections.end(), [](const ModelConnection& connection) {
                return !connection.isStatic && connection.sink.portName.empty();
            });
    }

    // Settings may send frames to another sink than the one that the connection names.
    bool has(const ModelNode& node) const { return mNodes.count(&node) > 0 || (mCanRedirect && node.kind == "sink"); }
    const std::vector<std::string>& names() const { return mNames; }

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
    return what + ", so the override is skipped; expected a node of the graph" + suggestionFor(name, graph.names());
}

// An override of the whole graph, such as "dvs".
std::string ownAttributeFault(const DescriptorModel& model, const GraphNodes& graph, const std::string& name)
{
    if (model.node(name) != nullptr)
        return named(name) + " is a node; expected an attribute behind it, such as " + named(name + ":enabled");
    const VocabularyEntry* const entry = vocabularyEntry(name);
    if (entry != nullptr && entry->isAttribute) return "";
    return named(name) + " is no attribute; expected 'node:attribute', or a path with parts between them" +
           suggestionFor(name, graph.names());
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
    if (result.fault.empty() && names.size() > 1 && node->isWhole())
        result.fault = faultText(findTarget(bodyOf(*node), names, 1), "node " + named(node->name));
    result.isUsable = result.fault.empty() && (names.size() == 1 || node->isWhole());
    if (result.isUsable) result.attribute = names.back();
    return result;
}

template <typename Visit> void forEachOverride(const DescriptorModel& model, Visit visit)
{
    for (const ModelGraph& graph : model.graphs()) {
        const GraphNodes nodes(graph);
        for (const XmlElement* const apply : graph.overrides) {
            if (apply->attribute("target") != nullptr) visit(*apply, overrideOf(model, nodes, *apply));
        }
    }
}

void checkTargets(const DescriptorModel& model, RuleReporter& reporter)
{
    forEachOverride(model, [&](const XmlElement& apply, const Override& found) {
        if (!found.fault.empty()) reporter.report(apply, "target", found.fault);
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
         "new. "
         "What leads elsewhere is skipped with a warning, or makes an element that nobody reads:\n"
         "    <apply target=\"front:shade:enabled\" value=\"1\"/>",
         {"connection-end", "base-node"},
         DescriptorRule(checkTargets)},
        {"override-value",
         RuleSeverity::Error,
         "an override of a graph gives a number wrongly",
         "The attribute that the override sets is a number. The library makes a decimal number of the value; when the "
         "text is none, or the number does not fit 32 bits, it ends building the graph, and no message tells why. "
         "Write decimal digits, in the range of the attribute.",
         {},
         DescriptorRule(checkValues)},
    };
}

} // namespace NuxoTool
