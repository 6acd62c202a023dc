// SPDX-License-Identifier: Apache-2.0
// Nodes that are made from base nodes, and what they change.
#include "Suggestion.h"
#include "Text.h"
#include "check/rules/Causes.h"
#include "check/rules/DescriptorRuleParts.h"
#include "check/rules/SettingsPlaces.h"
#include "schema/GraphSchema.h"

#include <algorithm>
#include <map>

namespace NuxoTool {

namespace {

// ---- base-node

// For suggestions, so of many nodes none.
std::vector<std::string> baseNames(const DescriptorModel& model)
{
    std::vector<std::string> names;
    if (model.nodes().size() > kMostCompared) return names;
    for (const ModelNode& node : model.nodes()) {
        if (node.isBase) names.push_back(node.name);
    }
    return names;
}

std::string missingBase(const DescriptorModel& model, const ModelNode& node, const std::string& base)
{
    if (base == node.name) return "node " + named(base) + " names itself as its base node; expected another one";
    const ModelNode* const other = model.node(base);
    if (other != nullptr) {
        return named(base) + " is a " + (other->namesBase() ? "node" : other->kind) +
               "; expected an element 'base_node'" + suggestionFor(base, baseNames(model));
    }
    return "no base node has the name " + named(base) + "; expected one below 'nodes'" +
           suggestionFor(base, baseNames(model));
}

void checkBaseOf(const DescriptorModel& model, const ModelNode& node, const ShadowedItems& shadowed,
                 RuleReporter& reporter)
{
    const XmlElement& element = *node.element;
    if (node.namesBase() && node.base == nullptr) {
        const std::string& base = element.value("base_node");
        if (model.node(base) != nullptr || !shadowed.hasBaseNode())
            reporter.reportCause(missingBaseNode(base), element, "base_node", missingBase(model, node, base));
    } else if (node.isBase && element.attribute("base_node") != nullptr) {
        reporter.report(element, "base_node",
                        "base node " + named(node.name) +
                            " names a base node itself, which is not followed; expected all parts in one base node");
    }
}

void checkBases(const DescriptorModel& model, RuleReporter& reporter)
{
    const ShadowedItems shadowed(model);
    for (const ModelNode& node : model.nodes()) checkBaseOf(model, node, shadowed, reporter);
}

// ---- differences

template <typename Visit> void forEachDifference(const DescriptorModel& model, Visit visit)
{
    for (const ModelNode& node : model.nodes()) {
        if (node.base == nullptr) continue;
        for (const XmlElement* const difference : node.element->children) visit(node, *difference);
    }
}

PathTarget targetOf(const ModelNode& node, const XmlElement& difference)
{
    return findTarget(node, namesOfPath(difference.value("target")), 0);
}

void checkTargets(const DescriptorModel& model, RuleReporter& reporter)
{
    const ShadowedItems shadowed(model);
    forEachDifference(model, [&](const ModelNode& node, const XmlElement& difference) {
        if (difference.attribute("target") == nullptr) return;
        const PathTarget target = targetOf(node, difference);
        if (target.fault == PathTarget::Fault::UnknownPart && shadowed.hasPart(node)) return;
        const std::string fault = faultText(target, "base node " + named(node.base->value("name")));
        if (fault.empty()) return;
        const bool isPart = target.fault == PathTarget::Fault::UnknownPart && target.namesBefore.empty();
        reporter.reportCause(isPart ? missingPart(node, target.name) : "", difference, "target", fault);
    });
}

void checkValues(const DescriptorModel& model, RuleReporter& reporter)
{
    forEachDifference(model, [&](const ModelNode& node, const XmlElement& difference) {
        if (difference.attribute("target") == nullptr || difference.attribute("value") == nullptr) return;
        const PathTarget target = targetOf(node, difference);
        if (target.fault != PathTarget::Fault::None) return;
        const std::string fault = valueFault(target.attribute, difference.value("value"));
        if (!fault.empty()) reporter.report(difference, "value", fault);
    });
}

void checkRepeats(const DescriptorModel& model, RuleReporter& reporter)
{
    for (const ModelNode& node : model.nodes()) {
        if (node.base == nullptr) continue;
        std::map<std::vector<std::string>, const XmlElement*> first;
        for (const XmlElement* const difference : node.element->children) {
            if (difference->attribute("target") == nullptr) continue;
            const auto [place, isNew] = first.emplace(namesOfPath(difference->value("target")), difference);
            if (isNew) continue;
            reporter.report(*difference, "target",
                            named(difference->value("target")) +
                                " is set already, only the last value counts; expected one difference for it");
            reporter.note(*place->second, "target", "the first one");
        }
    }
}

} // namespace

std::vector<Rule> baseNodeRules()
{
    return {
        {"base-node",
         RuleSeverity::Error,
         "a node cannot be made from the base node that it names",
         "A node with base_node is a copy of that base node, an element 'base_node' below 'nodes', with differences. "
         "When "
         "there is none of that name, no graph with the node can be built. A base node cannot build on another one: "
         "the "
         "library copies it as it is. Correct the name, or write the base node:\n"
         "    <base_node name=\"scale_base\" base_type=\"program_group\"> ... </base_node>\n"
         "    <node name=\"video\" base_node=\"scale_base\"> ... </node>",
         {},
         DescriptorRule(checkBases)},
        {"difference-target",
         RuleSeverity::Error,
         "a difference from a base node names nothing that can be set",
         "The target of a difference is a path from the node to an attribute: names of parts joined by ':', the "
         "attribute "
         "last. The parts must be there in the base node; the attribute may be new, but its name must be one that the "
         "library knows. A path that leads nowhere ends the build of every graph with the node; an attribute that "
         "nobody "
         "knows is lost. Names and types must stay, since everything is found by them, peers are set by connections, "
         "and klinks have no names by which to tell them apart:\n"
         "    <attribute target=\"scl:pal_uuid\" value=\"2100\"/>",
         {},
         DescriptorRule(checkTargets)},
        {"difference-value",
         RuleSeverity::Error,
         "a difference from a base node gives a value wrongly",
         "When the attribute that the difference sets is a number, the library makes a decimal number of the "
         "value; when "
         "the text is none, or the number does not fit 32 bits, it ends building every graph with the node, and no "
         "message tells why. Write decimal digits, in the range of the attribute; bitmaps and fixed values as in "
         "elements:\n    <attribute target=\"stream_id\" "
         "value=\"1\"/>",
         {},
         DescriptorRule(checkValues)},
        {"difference-twice",
         RuleSeverity::Warning,
         "a node sets one attribute of its base node twice",
         "Differences are applied one after the other, so the last one of a target counts and those before it do "
         "nothing. "
         "Most often one of them was meant for another part. Delete one, or correct its target.",
         {},
         DescriptorRule(checkRepeats)},
    };
}

} // namespace NuxoTool
