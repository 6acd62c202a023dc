// SPDX-License-Identifier: Apache-2.0
// The numbers of groups, and groups that share a context.
#include "check/rules/DescriptorRuleParts.h"
#include "Text.h"
#include "check/rules/SettingsPlaces.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace NuxoTool {

namespace {

// ---- tuning-mode

struct TunedGroup {
    const ModelNode* node;
    int32_t context;
    int32_t mode;
};

// How many groups of a context have a mode, in the whole descriptor.
using ModeCounts = std::map<std::pair<int32_t, int32_t>, size_t>;

std::optional<TunedGroup> tunedGroup(const ModelNode& node)
{
    const std::optional<int32_t> context = node.integer("exec_ctx_id");
    const std::optional<int32_t> mode = node.integer("tuning_mode");
    if (!isGroup(node) || node.isBase || !context || !mode) return std::nullopt;
    return TunedGroup{&node, *context, *mode};
}

ModeCounts countModes(const DescriptorModel& model)
{
    ModeCounts counts;
    for (const ModelNode* const node : usableNodes(model)) {
        const std::optional<TunedGroup> group = tunedGroup(*node);
        if (group) ++counts[{group->context, group->mode}];
    }
    return counts;
}

// The group whose mode most groups have, of equally frequent ones the first.
const TunedGroup& usualGroup(const std::vector<TunedGroup>& groups, const ModeCounts& counts)
{
    const auto countOf = [&counts](const TunedGroup& group) {
        const auto found = counts.find({group.context, group.mode});
        return found == counts.end() ? 0 : found->second;
    };
    return *std::max_element(groups.begin(), groups.end(), [&](const TunedGroup& left, const TunedGroup& right) {
        return countOf(left) < countOf(right);
    });
}

void checkContext(const std::vector<TunedGroup>& groups, const ModeCounts& counts, RuleReporter& reporter)
{
    const TunedGroup& usual = usualGroup(groups, counts);
    for (const TunedGroup& group : groups) {
        if (group.mode == usual.mode) continue;
        const ModelNode& node = *group.node;
        const ValuePlace place = placeOf(node, node.value("tuning_mode"));
        reporter.report(*place.element, place.attribute,
                        named(node.name) + " has tuning_mode " + std::to_string(group.mode) + ", but " +
                            named(usual.node->name) + " of the same context " + std::to_string(group.context) +
                            " has " + std::to_string(usual.mode) +
                            "; expected one tuning_mode for all groups of a context");
        const ValuePlace known = placeOf(*usual.node, usual.node->value("tuning_mode"));
        reporter.note(*known.element, known.attribute, "the other one");
    }
}

void checkTuning(const ModelGraph& graph, const ModeCounts& counts, RuleReporter& reporter)
{
    std::map<int32_t, std::vector<TunedGroup>> contexts;
    for (const ModelNode* const node : graph.nodes()) {
        const std::optional<TunedGroup> group = tunedGroup(*node);
        if (group) contexts[group->context].push_back(*group);
    }
    for (const auto& [context, groups] : contexts) checkContext(groups, counts, reporter);
}

void checkTunings(const DescriptorModel& model, RuleReporter& reporter)
{
    const ModeCounts counts = countModes(model);
    for (const ModelGraph& graph : model.graphs()) checkTuning(graph, counts, reporter);
}

// ---- group-number

struct GroupNumber {
    const char* attribute;
    bool isAlwaysNeeded; // otherwise where other groups have it
    const char* effect;
};

constexpr GroupNumber kGroupNumbers[] = {
    {"pg_id", true, "its terminals have identifiers that those of other nodes have, too"},
    {"stream_id", true, "its kernels are records of no stream"},
    {"exec_ctx_id", false, "it runs in no context"},
    {"tuning_mode", false, "it is tuned as if that were 0"},
};

bool isGiven(const ModelNode& group, const char* attribute, const std::set<std::string>& overridden)
{
    return group.value(attribute) || overridden.count(fullName(group, attribute)) > 0;
}

std::set<std::string> overriddenPaths(const DescriptorModel& model)
{
    std::set<std::string> paths;
    for (const ModelGraph& graph : model.graphs()) {
        for (const XmlElement* const apply : graph.overrides) paths.insert(apply->value("target"));
    }
    return paths;
}

// The groups of all graphs, each once, in the order of the file.
std::vector<const ModelNode*> connectedGroups(const DescriptorModel& model)
{
    std::set<const ModelNode*> connected;
    for (const ModelGraph& graph : model.graphs()) connected.insert(graph.nodes().begin(), graph.nodes().end());
    std::vector<const ModelNode*> groups = usableNodes(model);
    groups.erase(std::remove_if(groups.begin(), groups.end(),
                                [&](const ModelNode* node) { return !isGroup(*node) || connected.count(node) == 0; }),
                 groups.end());
    return groups;
}

std::string expectedNumber(const ModelNode& group, const std::string& attribute)
{
    return group.base == nullptr ? attribute + "=\"...\"" : "<attribute target=\"" + attribute + "\" value=\"...\"/>";
}

// Of several missing numbers one finding: they stand in one place.
void reportMissing(const ModelNode& group, const std::vector<const GroupNumber*>& missing, RuleReporter& reporter)
{
    std::vector<std::string> names;
    std::vector<std::string> effects;
    std::vector<std::string> expected;
    for (const GroupNumber* const number : missing) {
        names.emplace_back(number->attribute);
        effects.emplace_back(number->effect);
        expected.push_back(expectedNumber(group, number->attribute));
    }
    reporter.report(*group.element, "group " + named(group.name) + " has no " + listOf(names, " and no ") +
                                        ", so that " + listOf(effects) + "; expected " + listOf(expected));
}

void checkNumbers(const DescriptorModel& model, RuleReporter& reporter)
{
    const std::vector<const ModelNode*> groups = connectedGroups(model);
    const std::set<std::string> overridden = overriddenPaths(model);
    std::vector<const GroupNumber*> needed;
    for (const GroupNumber& number : kGroupNumbers) {
        const auto has = [&](const ModelNode* group) { return isGiven(*group, number.attribute, overridden); };
        if (number.isAlwaysNeeded || std::any_of(groups.begin(), groups.end(), has)) needed.push_back(&number);
    }
    for (const ModelNode* const group : groups) {
        std::vector<const GroupNumber*> missing = needed;
        const auto isStated = [&](const GroupNumber* number) { return isGiven(*group, number->attribute, overridden); };
        missing.erase(std::remove_if(missing.begin(), missing.end(), isStated), missing.end());
        if (!missing.empty()) reportMissing(*group, missing, reporter);
    }
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
        {"group-number",
         RuleSeverity::Warning,
         "a group does not say its number, stream, context or tuning mode",
         "A program group or compute block states by which numbers others know it: pg_id in the identifiers of its "
         "terminals, stream_id for the stream of its records, exec_ctx_id for the groups that run with it, and "
         "tuning_mode for its parameters. The library takes what is missing for 0 or for none, mostly without a "
         "message. The last two may be left out when no group of the descriptor has them:\n"
         "    <program_group name=\"front\" pg_id=\"1\" stream_id=\"1\" exec_ctx_id=\"1\" tuning_mode=\"0\">",
         {"difference-target", "difference-value"},
         DescriptorRule(checkNumbers)},
    };
}

} // namespace NuxoTool
