// SPDX-License-Identifier: Apache-2.0
// Nodes as a whole: that their type goes with their parts, and that switching them off does something.
#include "Text.h"
#include "check/rules/DescriptorRuleParts.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace NuxoTool {

namespace {

// ---- node-type

std::string fittingTypes(const DescriptorModel& model, const ModelPart& part)
{
    if (part.kind == "port") return "'source', 'hw', 'program_group' or another type that has ports";
    return isBeforeGeneration7(model) ? "'program_group'" : "'compute_block'";
}

// Groups of another generation are nodes that nobody asks for.
void checkGeneration(const DescriptorModel& model, const ModelNode& node, RuleReporter& reporter)
{
    const bool isOld = isBeforeGeneration7(model);
    const std::string& type = node.isBase ? node.element->value("base_type") : node.kind;
    if (type != (isOld ? "compute_block" : "program_group")) return;
    reporter.report(*node.element, node.isBase ? "base_type" : "type",
                    "node " + named(node.name) + " is a " + type + ", which descriptors of version " +
                        named(model.version()) + " do not have, so that nothing in it is looked at; expected " +
                        (isOld ? "'program_group'" : "'compute_block'"));
}

bool tellsGeneration(const DescriptorModel& model)
{
    const std::string version = model.version();
    constexpr const char* known[] = {"KVA5", "KVA6", "KVA7"};
    return std::any_of(std::begin(known), std::end(known),
                       [&version](const char* word) { return version.find(word) != std::string::npos; });
}

void checkTypes(const DescriptorModel& model, RuleReporter& reporter)
{
    const bool isTold = tellsGeneration(model);
    for (const ModelNode* const node : writtenNodes(model)) {
        if (isTold) checkGeneration(model, *node, reporter);
        const char* const attribute = node->isBase ? "base_type" : "type";
        const ModelPart* const misfit = node->element->attribute(attribute) == nullptr ? nullptr : misfitIn(*node);
        if (misfit == nullptr) continue;
        reporter.report(*node->element, attribute,
                        named(node->name) + " is of the type " + named(node->element->value(attribute)) +
                            ", but holds the " + misfit->kind + ' ' + named(misfit->name) + "; expected " +
                            fittingTypes(model, *misfit));
        reporter.note(*misfit->element, "what such a node cannot have");
    }
}

// ---- node-enabled

// Of stages only ports and kernels are switched off; sources are left out, and sinks switch off the port ahead of them.
bool cannotBeOff(const ModelNode& node)
{
    const std::string& type = node.isBase ? node.element->value("base_type") : node.kind;
    return isGroup(node) || type == "hw" || type == "external_stage";
}

bool isZero(const std::string& text)
{
    return wholeInteger(text) == 0;
}

void report(const ModelNode& node, const XmlElement& element, const char* attribute, RuleReporter& reporter)
{
    reporter.report(element, attribute,
                    "node " + named(node.name) +
                        " stays on: nothing reads its 'enabled'; expected enabled=\"0\" at its "
                        "ports or kernels, or settings without the node");
}

void checkEnabled(const DescriptorModel& model, RuleReporter& reporter)
{
    for (const ModelNode& node : model.nodes()) {
        if (!cannotBeOff(node)) continue;
        if (!node.namesBase() && isZero(node.element->value("enabled")))
            report(node, *node.element, "enabled", reporter);
        const auto difference = node.differences.find("enabled");
        if (difference != node.differences.end() && isZero(difference->second.text))
            report(node, *difference->second.element, "value", reporter);
    }
    for (const ModelGraph& graph : model.graphs()) {
        for (const XmlElement* const apply : graph.overrides) {
            const std::vector<std::string> names = namesOfPath(apply->value("target"));
            if (names.size() != 2 || names[1] != "enabled" || !isZero(apply->value("value"))) continue;
            const ModelNode* const node = model.node(names[0]);
            if (node != nullptr && cannotBeOff(*node)) report(*node, *apply, "value", reporter);
        }
    }
}

} // namespace

std::vector<Rule> nodeRules()
{
    return {
        {"node-type",
         RuleSeverity::Error,
         "the type of a node does not go with its parts, or with the generation",
         "The type of a node tells what the library looks for in it: sinks have no ports, and only groups and external "
         "stages have kernels, routing elements and klinks. Parts that do not go with the type are never asked for, "
         "and "
         "connections to the node are read as if they led somewhere else. Groups are of the type program_group in "
         "generations 5 and 6, and compute_block "
         "in generation 7; the library asks for no others. Correct the type, or take the parts out:\n"
         "    <base_node name=\"scale_base\" base_type=\"program_group\"> ... </base_node>",
         {},
         DescriptorRule(checkTypes)},
        {"node-enabled",
         RuleSeverity::Warning,
         "a stage is switched off as a whole, which has no effect",
         "enabled=\"0\" switches off a port, a kernel, a source or a sink. For groups, external stages and capture "
         "back "
         "ends the library never asks for it, so they stay in the graph and run. Switch their ports or kernels off, or "
         "leave the node out of the settings that do without it.",
         {"base-node"},
         DescriptorRule(checkEnabled)},
    };
}

} // namespace NuxoTool
