// SPDX-License-Identifier: Apache-2.0
#include "check/rules/SettingsRules.h"

#include "Text.h"
#include "check/rules/SettingsPlaces.h"

#include <map>
#include <set>
#include <utility>

namespace NuxoTool {

namespace {

// The klinks of a node against their direction: from the names where they end to those where they start.
using WaysBack = std::map<std::string, std::vector<std::string>>;

WaysBack waysBackOf(const ModelNode& node)
{
    WaysBack ways;
    for (const ModelPart* const klink : node.partsOfKind("klink")) {
        const std::vector<std::string> source = namesOfPath(klink->element->value("source"));
        const std::vector<std::string> end = namesOfPath(klink->element->value("destination"));
        if (!source.empty() && !end.empty()) ways[end[0]].push_back(source[0]);
    }
    return ways;
}

bool isInput(const ModelNode& node, const std::string& part)
{
    const ModelPart* const found = node.part(part);
    return found != nullptr && found->kind == "port" && node.integer(part + ":direction") != 1;
}

// Where the way back from a port ends without coming to an input: the part that no klink leads to. Null when the way
// goes all through, or round in a circle.
const ModelPart* gapBehind(const ModelNode& node, const WaysBack& ways, const std::string& port)
{
    const ModelPart* gap = nullptr;
    std::set<std::string> seen = {port};
    std::vector<std::string> open = {port};
    while (!open.empty()) {
        const std::string name = open.back();
        open.pop_back();
        if (isInput(node, name)) return nullptr;
        const auto way = ways.find(name);
        if (way == ways.end()) {
            if (gap == nullptr) gap = node.part(name);
            continue;
        }
        for (const std::string& before : way->second) {
            if (seen.insert(before).second) open.push_back(before);
        }
    }
    return gap;
}

// The gaps behind the output ports of nodes, each looked for once.
class Gaps {
public:
    const ModelPart* behind(const ModelNode& node, const std::string& port)
    {
        const auto [gap, isNew] = mGaps.try_emplace(std::pair(&node, port), nullptr);
        if (!isNew) return gap->second;
        const auto [ways, isNewNode] = mWays.try_emplace(&node);
        if (isNewNode) ways->second = waysBackOf(node);
        if (!ways->second.empty()) gap->second = gapBehind(node, ways->second, port);
        return gap->second;
    }

private:
    std::map<const ModelNode*, WaysBack> mWays;                                 // only looked up
    std::map<std::pair<const ModelNode*, std::string>, const ModelPart*> mGaps; // likewise
};

void checkPort(const SettingPlace& port, Gaps& gaps, RuleReporter& reporter)
{
    const ModelNode& node = *port.node;
    const bool isOutput = port.integer("direction") == 1;
    if (!isOutput || !port.isEnabled() || port.integer("private").value_or(0) != 0 || isFaulty(node, reporter)) return;
    const ModelPart* const gap = gaps.behind(node, port.path);
    if (gap == nullptr) return;
    reporter.report(*gap->element, "no klink leads to " + named(node.name + ':' + gap->name) +
                                       (gap->name == port.path ? "" : ", so no frame gets to " + port.title()) +
                                       "; expected a klink from an input port or from a kernel behind one");
    reporter.note(*port.written, "a setting uses the port");
}

void checkPaths(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    Gaps gaps;
    visitPlaces(descriptor, file, [&](const SettingPlace& place) {
        const bool isUsed = place.isPort() && place.setting != nullptr && place.setting->graph != nullptr;
        if (isUsed) checkPort(place, gaps, reporter);
    });
}

} // namespace

std::vector<Rule> settingsPathRules()
{
    return {
        {"klink-gap",
         RuleSeverity::Warning,
         "a setting uses an output port that no klinks join to an input",
         "Inside a node with klinks, frames go from its input ports along the klinks. An output port that cannot be "
         "traced "
         "back to an input gets none: a klink was forgotten. Kernels beside the gap are switched off silently. Add the "
         "klink, or switch the port off with enabled=\"0\".",
         {"klink-end"},
         checkPaths},
    };
}

} // namespace NuxoTool
