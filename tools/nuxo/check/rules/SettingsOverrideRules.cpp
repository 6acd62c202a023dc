// SPDX-License-Identifier: Apache-2.0
// Overrides of graphs, and the settings that they have the last word over.
#include "check/rules/SettingsRules.h"

#include "Text.h"
#include "check/rules/SettingsPlaces.h"

#include <map>

namespace NuxoTool {

namespace {

// The overrides of a graph by their targets; of one target the last, which counts.
using Overrides = std::map<std::string, const XmlElement*>;

std::string pathOf(const std::vector<std::string>& names)
{
    std::string path;
    for (const std::string& name : names) path += (path.empty() ? "" : ":") + name;
    return path;
}

Overrides overridesOf(const ModelGraph& graph)
{
    Overrides overrides;
    for (const XmlElement* const apply : graph.overrides) {
        overrides[pathOf(namesOfPath(apply->value("target")))] = apply;
    }
    return overrides;
}

void checkTwice(const DescriptorModel& model, RuleReporter& reporter)
{
    for (const ModelGraph& graph : model.graphs()) {
        Overrides first;
        for (const XmlElement* const apply : graph.overrides) {
            const std::string path = pathOf(namesOfPath(apply->value("target")));
            const auto [place, isNew] = first.emplace(path, apply);
            if (isNew || path.empty()) continue;
            reporter.report(*apply, "target",
                            named(apply->value("target")) +
                                " is overridden a second time in this graph, so the value before is lost; expected one "
                                "override for it");
            reporter.note(*place->second, "target", "the first one");
        }
    }
}

void checkOverride(const SettingPlace& place, const Overrides& overrides, RuleReporter& reporter)
{
    for (const XmlAttribute& attribute : place.written->attributes) {
        const auto found = overrides.find(place.fullPath() + ':' + attribute.name);
        if (found == overrides.end() || saysTheSame(attribute.value, found->second->value("value"))) continue;
        reporter.reportOnce(*place.written, attribute.name,
                            "graph " + std::to_string(*place.setting->graphId) + " overrides this value with " +
                                named(found->second->value("value")) + "; expected that value, or none");
        reporter.note(*found->second, "the override");
    }
}

void checkOverrides(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    std::map<const ModelGraph*, Overrides> overrides;
    for (const ModelSetting& setting : file.settings()) {
        if (setting.graph == nullptr || setting.graph->overrides.empty()) continue;
        const auto [ofGraph, isNew] = overrides.try_emplace(setting.graph);
        if (isNew) ofGraph->second = overridesOf(*setting.graph);
        visitPlaces(descriptor, setting, [overridesHere = &ofGraph->second, &reporter](const SettingPlace& place) {
            checkOverride(place, *overridesHere, reporter);
        });
    }
}

} // namespace

std::vector<Rule> settingsOverrideRules()
{
    return {
        {"override-twice",
         RuleSeverity::Warning,
         "a graph overrides one value twice",
         "The 'apply' elements of a graph are worked off in their order, so the last one for a target wins and those "
         "before it do nothing. Most likely one was copied and its target not changed. Correct the target, or take "
         "out the one that does not count.",
         {"override-target"},
         DescriptorRule(checkTwice)},
        {"setting-override",
         RuleSeverity::Warning,
         "an override of the graph replaces a value of the setting",
         "The 'apply' elements of a graph have the last word, after the settings. A setting that gives another value "
         "does not get it. Take it out of the setting, or the override out of the graph.",
         {},
         SettingsRule(checkOverrides)},
    };
}

} // namespace NuxoTool
