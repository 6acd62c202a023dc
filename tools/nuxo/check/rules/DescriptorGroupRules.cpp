// SPDX-License-Identifier: Apache-2.0
// Groups that share a context.
#include "check/rules/DescriptorRuleParts.h"
#include "Text.h"
#include "check/rules/SettingsPlaces.h"

#include <map>

namespace NuxoTool {

namespace {

void checkTuning(const ModelGraph& graph, RuleReporter& reporter)
{
    std::map<int32_t, const ModelNode*> first;
    for (const ModelNode* const node : graph.nodes()) {
        const std::optional<int32_t> context = node->integer("exec_ctx_id");
        const std::optional<int32_t> mode = node->integer("tuning_mode");
        if (!isGroup(*node) || node->isBase || !context || !mode) continue;
        const ModelNode& other = *first.emplace(*context, node).first->second;
        const int32_t otherMode = *other.integer("tuning_mode");
        if (otherMode == *mode) continue;
        const ValuePlace place = placeOf(*node, node->value("tuning_mode"));
        reporter.report(*place.element, place.attribute,
                        named(node->name) + " has tuning_mode " + std::to_string(*mode) + ", but " + named(other.name) +
                            " of the same context " + std::to_string(*context) + " has " + std::to_string(otherMode) +
                            "; expected one tuning_mode for all groups of a context");
        const ValuePlace before = placeOf(other, other.value("tuning_mode"));
        reporter.note(*before.element, before.attribute, "the other one");
    }
}

void checkTunings(const DescriptorModel& model, RuleReporter& reporter)
{
    for (const ModelGraph& graph : model.graphs()) checkTuning(graph, reporter);
}

} // namespace

std::vector<Rule> groupRules()
{
    return {
        {"tuning-mode",
         RuleSeverity::Error,
         "two groups of one execution context have different tuning modes",
         "All groups with one exec_ctx_id run together, with one set of tuning parameters. When their tuning_mode "
         "differs, "
         "the library warns and keeps the mode of one of them, so that the others run with parameters that were made "
         "for "
         "something else. Give all groups of the context the same tuning_mode. Overrides of a graph are not looked at: "
         "they "
         "may change the mode of a single group on purpose.",
         {"difference-target", "difference-value"},
         DescriptorRule(checkTunings)},
    };
}

} // namespace NuxoTool
