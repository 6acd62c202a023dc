// SPDX-License-Identifier: Apache-2.0
#include "check/rules/SettingsRules.h"

#include "Suggestion.h"
#include "Text.h"
#include "check/rules/SettingsLinks.h"
#include "check/rules/SettingsPlaces.h"
#include "check/rules/SettingsStrays.h"

#include <algorithm>
#include <cstdlib>

namespace NuxoTool {

namespace {

constexpr const char* kSensor = "sensor";
constexpr const char* kFirstBufferSource = "buffer_src0";

void checkVersion(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    const std::string wanted = descriptor.version();
    const std::string version = file.version();
    if (wanted.empty() || version.empty() || version.substr(0, version.find('.')) == wanted) return;
    const XmlElement& root = *file.document().root();
    const size_t dot = wanted.find('.');
    if (dot != std::string::npos) {
        reporter.report(*descriptor.document().root(), "version",
                        "the descriptor's version is " + quoted(wanted) +
                            ", which no settings match; expected one without a '.', " + quoted(wanted.substr(0, dot)));
        reporter.note(root, "version", "the settings' version, of which the part up to the first '.' counts");
        return;
    }
    reporter.report(root, "version",
                    "these settings are for version " + quoted(version.substr(0, version.find('.'))) +
                        " of a descriptor, not for " + quoted(wanted) + "; expected " + quoted(wanted) + " or " +
                        quoted(wanted + ".0") + ", or the descriptor that they were made for");
    reporter.note(*descriptor.document().root(), "version", "the descriptor's version");
}

// Of graphs that stand equally near the first one.
std::string nearestGraph(int32_t id, const DescriptorModel& descriptor, const std::vector<std::string>& ids)
{
    const std::string similar = suggestionFor(std::to_string(id), ids);
    if (!similar.empty()) return similar;
    int64_t best = -1;
    std::string nearest;
    for (const ModelGraph& graph : descriptor.graphs()) {
        if (!graph.id) continue;
        const int64_t distance = std::abs(int64_t{*graph.id} - id);
        if (best >= 0 && distance >= best) continue;
        best = distance;
        nearest = std::to_string(*graph.id);
    }
    return nearest.empty() ? "" : "; the nearest is " + nearest;
}

// The graph exists, but nodes of the setting are part of another one.
void checkNodesOfGraph(const DescriptorModel& descriptor, const ModelSetting& setting, RuleReporter& reporter)
{
    const StrayNodes nodes = strayNodesOf(descriptor, setting);
    const std::vector<std::string>& better = nodes.betterGraphs;
    if (better.empty()) return;
    constexpr size_t listed = 4;
    std::vector<std::string> names;
    const bool isCut = nodes.strays.size() > listed + 1;
    for (const XmlElement* const stray : nodes.strays) {
        if (!isCut || names.size() < listed) names.push_back(named(stray->name));
    }
    reporter.report(*setting.element, "id",
                    "graph " + std::to_string(*setting.graphId) + " has no " +
                        (isCut
                             ? listOf(names, ", ") + " and " + std::to_string(nodes.strays.size() - listed) + " others"
                             : listOf(names, " or ")) +
                        ", which this setting configures; expected a graph with all of its nodes; did you mean " +
                        (better.size() == 1 ? '\'' + better[0] + "'?" : listOf(better, " or ") + '?'));
}

void checkGraphIds(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    std::vector<std::string> ids;
    for (const ModelGraph& graph : descriptor.graphs()) {
        if (graph.id && descriptor.graph(*graph.id) == &graph) ids.push_back(std::to_string(*graph.id));
    }
    for (const ModelSetting& setting : file.settings()) {
        if (setting.graph != nullptr) checkNodesOfGraph(descriptor, setting, reporter);
        if (!setting.graphId || setting.graph != nullptr) continue;
        const std::string expected =
            ids.empty() ? "a descriptor with graphs" : "one of its graphs: " + listOf(ids, " or ");
        reporter.report(*setting.element, "id",
                        "the descriptor has no graph " + std::to_string(*setting.graphId) + "; expected " + expected +
                            nearestGraph(*setting.graphId, descriptor, ids));
    }
}

// Whether the sensor is in the graph of a setting, as its first source: then its mode is looked up.
bool isFedBySensor(const ModelSetting& setting)
{
    bool hasSensor = setting.element->child(kSensor) != nullptr;
    for (const SettingLink& link : linksOf(setting)) {
        const bool isMade = link.state == SettingLink::State::Made;
        const std::string& source = link.connection->source.nodeName;
        if (isMade && source == kFirstBufferSource) return false;
        if (isMade && source == kSensor) hasSensor = true;
    }
    return hasSensor;
}

class ModeCheck {
public:
    ModeCheck(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
        : mFile(file), mReporter(reporter), mSensor(descriptor.node(kSensor))
    {
        for (const ModelSensorMode& mode : file.sensorModes()) {
            if (std::find(mModes.begin(), mModes.end(), mode.id) == mModes.end()) mModes.push_back(mode.id);
        }
    }

    void check(const ModelSetting& setting)
    {
        if (mSensor == nullptr || setting.graph == nullptr || !isFedBySensor(setting)) return;
        const XmlElement* const sensor = setting.element->child(kSensor);
        const XmlElement& place = sensor == nullptr ? *setting.element : *sensor;
        const XmlAttribute* const own = place.attribute("mode_id");
        const std::optional<ModelValue> inherited = mSensor->value("mode_id");
        if (own == nullptr && !inherited) {
            mReporter.report(place, "graph " + std::to_string(*setting.graphId) +
                                        " is fed by the sensor, but this setting gives it no mode; expected <" +
                                        kSensor + " mode_id=\"...\">" + modesText());
            return;
        }
        checkMode(place, own == nullptr ? inherited->text : own->value);
    }

private:
    void checkMode(const XmlElement& place, const std::string& mode)
    {
        if (mFile.sensorModesElement() == nullptr) {
            mReporter.report(place, "mode_id",
                             "mode " + named(mode) +
                                 " is looked up in 'sensor_modes', which this file does not have; "
                                 "expected <sensor_modes> with the modes beside the settings");
            return;
        }
        for (const std::string& known : mModes) {
            if (known == mode) return;
        }
        mReporter.report(place, "mode_id",
                         named(mode) + " is none of the sensor modes; expected one of them" + modesText() +
                             suggestionFor(mode, mModes));
    }

    std::string modesText() const
    {
        constexpr size_t listed = 12;
        if (mModes.empty()) return "";
        std::vector<std::string> some;
        for (size_t i = 0; i < mModes.size() && i < listed; ++i) some.push_back(named(mModes[i]));
        const bool isCut = mModes.size() > listed;
        return ": " + (isCut ? listOf(some, ", ") + ", ..." : listOf(some, " or "));
    }

    const SettingsModel& mFile;
    RuleReporter& mReporter;
    const ModelNode* mSensor;
    std::vector<std::string> mModes;
};

void checkModeIds(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    ModeCheck check(descriptor, file, reporter);
    for (const ModelSetting& setting : file.settings()) check.check(setting);
}

} // namespace

std::vector<Rule> settingsGraphRules()
{
    return {
        {"version-mismatch",
         RuleSeverity::Error,
         "the settings are made for another version of the descriptor",
         "The 'version' of a settings file begins with the version of the descriptor that it belongs to: up to the "
         "first '.' both must be the same, byte for byte. The library only warns and builds on, with names and numbers "
         "that may mean something else. Use the descriptor that belongs to the settings, or go through the settings "
         "and then correct their version: \"KVA7\" in the descriptor, \"KVA7.0\" in the settings.",
         {"version-text"},
         checkVersion},
        {"graph-id",
         RuleSeverity::Error,
         "a setting asks for a graph that does not exist, or that has other nodes",
         "The 'id' of a setting is the id of the graph, below 'graphs' of the descriptor, that it configures. Without "
         "such a graph nothing can be built of the setting; with a wrong one, what the setting says of the nodes of "
         "another graph configures nothing.",
         {},
         checkGraphIds},
        {"sensor-mode",
         RuleSeverity::Error,
         "the sensor of a setting has no mode, or one that does not exist",
         "A graph that the sensor feeds needs a mode, which gives the sizes that the sensor sends: the 'mode_id' of "
         "the setting's 'sensor' must be the 'name' of an element below 'sensor_modes' of the same file, in the same "
         "case. Without it no graph is built. Write <sensor mode_id=\"full\"> for <mode name=\"full\" ...>.",
         {},
         checkModeIds},
    };
}

} // namespace NuxoTool
