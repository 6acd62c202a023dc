// SPDX-License-Identifier: Apache-2.0
// Groups without klinks: how their kernels fork, and where they deliver.
#include "Suggestion.h"
#include "Text.h"
#include "check/rules/DescriptorRuleParts.h"
#include "check/rules/SettingsPlaces.h"

#include <algorithm>
#include <map>
#include <set>

namespace NuxoTool {

namespace {

constexpr int32_t kNone = -1; // of restore_point and sink_port

struct Step {
    const ModelPart* kernel;
    int32_t id;
    int32_t branch;
    int32_t restore;
    int32_t sink;
};

// Kernels of later generations follow klinks.
bool runsInOrder(const DescriptorModel& model, const ModelNode& node)
{
    const std::string version = model.version();
    const bool isLater = version.find("KVA5") == std::string::npos &&
                         (version.find("KVA6") != std::string::npos || version.find("KVA7") != std::string::npos);
    return !isLater && isGroup(node) && linksOf(node).empty();
}

std::vector<Step> stepsOf(const ModelNode& group)
{
    std::vector<Step> steps;
    for (const ModelPart* const kernel : distinctParts(group, "kernel")) {
        const auto number = [&](const char* attribute, int32_t standard) {
            return group.integer(kernel->name + ':' + attribute).value_or(standard);
        };
        steps.push_back({kernel, number("id", 0), number("branch_point", 0), number("restore_point", kNone),
                         number("sink_port", kNone)});
    }
    std::stable_sort(steps.begin(), steps.end(),
                     [](const Step& left, const Step& right) { return left.id < right.id; });
    return steps;
}

template <typename Visit> void forEachGroup(const DescriptorModel& model, Visit visit)
{
    for (const ModelNode* const node : effectiveNodes(model)) {
        if (runsInOrder(model, *node)) visit(*node);
    }
}

void report(RuleReporter& reporter, const ModelNode& group, const Step& step, const char* attribute,
            const std::string& text)
{
    const ValuePlace place = placeInside(group, group.value(step.kernel->name + ':' + attribute));
    reporter.report(*place.element, place.attribute,
                    "kernel " + named(fullName(group, step.kernel->name)) + ' ' + text);
}

std::string expectedBranch(const std::vector<Step>& steps, const Step& step)
{
    for (const Step& other : steps) {
        if (other.branch != step.restore) continue;
        const std::string name = named(other.kernel->name);
        if (&other == &step) return "a kernel ahead of it";
        if (other.sink >= 0) return "a kernel without sink_port, which " + name + " has, so that it keeps nothing";
        return "one ahead of it, not " + name + ", whose id is larger";
    }
    return "a branch_point that a kernel ahead of it has";
}

void checkBranchesOf(const ModelNode& group, RuleReporter& reporter)
{
    const std::vector<Step> steps = stepsOf(group);
    std::map<int32_t, const Step*> branches;
    for (const Step& step : steps) {
        if (step.restore != kNone && branches.count(step.restore) == 0) {
            report(reporter, group, step, "restore_point",
                   "goes on from branch point " + std::to_string(step.restore) +
                       ", which nothing was kept for; expected " + expectedBranch(steps, step));
        }
        if (step.branch == 0 || step.sink >= 0) continue;
        const auto [first, isNew] = branches.emplace(step.branch, &step);
        if (isNew) continue;
        report(reporter, group, step, "branch_point",
               "has branch point " + std::to_string(step.branch) + ", which " + named(first->second->kernel->name) +
                   " has already, so it does not count; expected a number of its own");
    }
}

void checkBranches(const DescriptorModel& model, RuleReporter& reporter)
{
    forEachGroup(model, [&](const ModelNode& group) { checkBranchesOf(group, reporter); });
}

// ---- sink-port

// Ports by id; of equal ones the first counts.
std::map<int32_t, const ModelPart*> portsById(const ModelNode& group)
{
    std::map<int32_t, const ModelPart*> ports;
    for (const ModelPart* const port : distinctParts(group, "port")) {
        const std::optional<int32_t> id = group.integer(port->name + ":id");
        if (id) ports.emplace(*id, port);
    }
    return ports;
}

// A kernel may have ports of its own, which count first.
bool hasPorts(const ModelPart& kernel)
{
    const std::vector<const XmlElement*>& children = kernel.element->children;
    return std::any_of(children.begin(), children.end(),
                       [](const XmlElement* child) { return typeOf(*child) == "port"; });
}

// Kernels at the end of a branch: behind them another one starts, or the group ends.
void checkBranchEnds(const ModelNode& group, const std::vector<Step>& steps,
                     const std::map<int32_t, const ModelPart*>& ports, RuleReporter& reporter)
{
    std::set<int32_t> open; // ids of the output ports that nothing delivers to
    for (const auto& [id, port] : ports) {
        if (group.integer(port->name + ":direction") == 1) open.insert(id);
    }
    for (const Step& step : steps) open.erase(step.sink);
    if (open.empty()) return;
    for (size_t i = 0; i < steps.size(); ++i) {
        const Step& step = steps[i];
        const bool isLast = i + 1 == steps.size() || steps[i + 1].restore != kNone;
        if (!isLast || step.sink >= 0 || group.value(step.kernel->name + ":source")) continue;
        std::vector<std::string> expected;
        for (const int32_t id : open) expected.push_back(std::to_string(id) + " for " + named(ports.at(id)->name));
        reporter.report(*step.kernel->element, "name",
                        "kernel " + named(fullName(group, step.kernel->name)) +
                            (i + 1 == steps.size() ? " is the last of its group"
                                                   : " is the last of a branch, since " +
                                                         named(steps[i + 1].kernel->name) + " goes on elsewhere") +
                            ", but delivers to no port; expected sink_port " + choiceOf(expected));
    }
}

void checkSinkPortsOf(const ModelNode& group, RuleReporter& reporter)
{
    const std::map<int32_t, const ModelPart*> ports = portsById(group);
    const std::vector<Step> steps = stepsOf(group);
    checkBranchEnds(group, steps, ports, reporter);
    std::map<int32_t, const Step*> feeders;
    for (const Step& step : steps) {
        if (step.sink < 0 || hasPorts(*step.kernel)) continue;
        const auto port = ports.find(step.sink);
        const auto [feeder, isFirst] = feeders.emplace(step.sink, &step);
        const std::string start = "delivers to port " + std::to_string(step.sink);
        if (port == ports.end()) {
            report(reporter, group, step, "sink_port",
                   start + ", which the group does not have; expected the id of one of its output ports");
        } else if (group.integer(port->second->name + ":direction") == 0) {
            report(reporter, group, step, "sink_port",
                   start + ", which is input port " + named(port->second->name) +
                       "; expected the id of an output port");
        } else if (!isFirst) {
            report(reporter, group, step, "sink_port",
                   start + ", as " + named(feeder->second->kernel->name) +
                       " does already, whose frames are lost; expected a port of its own");
        }
    }
}

void checkSinkPorts(const DescriptorModel& model, RuleReporter& reporter)
{
    forEachGroup(model, [&](const ModelNode& group) { checkSinkPortsOf(group, reporter); });
}

// ---- kernel-source

std::vector<std::string> portsOf(const ModelNode& node, bool isGroupItself)
{
    std::vector<std::string> ports;
    for (const ModelPart* const port : distinctParts(node, "port")) {
        const bool isOutput = node.integer(port->name + ":direction") == 1;
        if (!isGroupItself || !isOutput) ports.push_back(fullName(node, port->name));
    }
    return ports;
}

// What is wrong with the port that frames are read of. Those of other groups may be written there.
std::string sourceFault(const ModelNode& group, const ModelNode* node, const ModelPart* part)
{
    if (part == nullptr) return "which does not exist; expected 'node:port'";
    if (part->kind != "port") return "which is a " + part->kind + "; expected a port";
    if (node != &group || node->integer(part->name + ":direction") != 1) return "";
    return "an output port of its own group, where none arrive; expected an input port";
}

void checkSource(const DescriptorModel& model, const ModelNode& group, const ModelPart& kernel, RuleReporter& reporter)
{
    const std::optional<ModelValue> source = group.value(kernel.name + ":source");
    if (!source) return;
    const std::vector<std::string> names = namesOfPath(source->text);
    const ModelNode* const node = names.empty() ? nullptr : model.node(names[0]);
    const bool isKnown = node != nullptr && names.size() == 2;
    if (isKnown && !node->isWhole()) return;
    const std::string fault = sourceFault(group, node, isKnown ? node->part(names[1]) : nullptr);
    if (fault.empty()) return;
    const ValuePlace place = placeInside(group, source);
    reporter.report(*place.element, place.attribute,
                    "kernel " + named(fullName(group, kernel.name)) + " reads frames of " + named(source->text) + ", " +
                        fault +
                        (node == nullptr ? suggestionForNode(model, names)
                                         : suggestionAmong(source->text, portsOf(*node, node == &group))));
}

void checkKernelSources(const DescriptorModel& model, RuleReporter& reporter)
{
    forEachGroup(model, [&](const ModelNode& group) {
        for (const ModelPart* const kernel : distinctParts(group, "kernel"))
            checkSource(model, group, *kernel, reporter);
    });
}

} // namespace

std::vector<Rule> branchRules()
{
    return {
        {"branch-point",
         RuleSeverity::Error,
         "a kernel goes on from a branch point that was not kept",
         "In groups without klinks the kernels run in the order of their ids. A kernel with branch_point keeps what "
         "the "
         "frame went through up to there; one with restore_point further down goes on from it. The first kernel of a "
         "branch "
         "point counts, one with sink_port keeps nothing, and each group starts anew. When nothing was kept, the "
         "library "
         "logs an error and goes on with the wrong frame:\n"
         "    <kernel name=\"shade\" id=\"1\" pal_uuid=\"1001\" branch_point=\"1\"/>\n"
         "    <kernel name=\"grid\" id=\"4\" pal_uuid=\"1004\" restore_point=\"1\" sink_port=\"3\"/>",
         {"kernel-ids"},
         DescriptorRule(checkBranches)},
        {"sink-port",
         RuleSeverity::Error,
         "a kernel delivers to a wrong port, or to none where it must",
         "In groups without klinks, sink_port of a kernel is the id of the output port of its group that gets the "
         "frame. "
         "When no port has the id, the library refuses the whole context; when it is an input port, the stage behind "
         "never "
         "learns what it receives. Of two kernels with one port the last one counts. The last kernel of the group, and "
         "the "
         "last one ahead of a restore_point, must deliver somewhere unless it reads a 'source'. Write the id of an "
         "output port of the group.",
         {"duplicate-name", "duplicate-port-id", "kernel-ids", "branch-point"},
         DescriptorRule(checkSinkPorts)},
        {"kernel-source",
         RuleSeverity::Error,
         "a kernel reads frames of a port that does not exist or delivers its own",
         "In groups without klinks, a kernel with 'source' takes the size of its frames from that port, for example "
         "from a "
         "private one that reads a reference frame. A port that does not exist is ignored without a word, and the "
         "kernel gets "
         "the size of the one before it; of an output port of its own group it would get the size of frames that "
         "leave. Name node and "
         "port:\n"
         "    <kernel name=\"ref_read\" id=\"5\" pal_uuid=\"1005\" source=\"front:ref_in\"/>",
         {"duplicate-name"},
         DescriptorRule(checkKernelSources)},
    };
}

} // namespace NuxoTool
