// SPDX-License-Identifier: Apache-2.0
#include "check/rules/SettingsRules.h"

#include "Suggestion.h"
#include "Text.h"
#include "check/rules/NearNames.h"
#include "check/rules/SettingsLinks.h"
#include "check/rules/SettingsPlaces.h"
#include "check/rules/SettingsStrays.h"

#include <iterator>
#include <map>
#include <set>

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

// What is said of ids that no graph has.
class MissingGraphs {
public:
    MissingGraphs(const DescriptorModel& descriptor, const StrayCheck& nodes)
        : mDescriptor(descriptor), mNodes(nodes), mIds(idsOf(descriptor))
    {
        for (const ModelGraph& graph : descriptor.graphs()) {
            if (graph.id) mNumbers.insert(*graph.id);
        }
        const std::vector<std::string>& ids = mIds.candidates();
        mExpected = ids.empty() ? "a descriptor with graphs" : "one of its graphs: " + someOf(ids);
    }

    std::string text(const ModelSetting& setting)
    {
        const int32_t id = *setting.graphId;
        const std::set<int32_t>& fitting = graphsFor(setting);
        return "the descriptor has no graph " + std::to_string(id) + "; expected " + mExpected +
               (fitting.empty() ? nearest(id) : didYouMean(std::to_string(neighbourOf(id, fitting))));
    }

private:
    static std::vector<std::string> idsOf(const DescriptorModel& descriptor)
    {
        std::vector<std::string> ids;
        for (const ModelGraph& graph : descriptor.graphs()) {
            if (graph.id && descriptor.graph(*graph.id) == &graph) ids.push_back(std::to_string(*graph.id));
        }
        return ids;
    }

    // Graphs that have all nodes of a setting but for sinks, which any graph may get.
    const std::set<int32_t>& graphsFor(const ModelSetting& setting)
    {
        std::vector<std::string> names;
        for (const XmlElement* const child : setting.element->children) {
            const ModelNode* const node = mDescriptor.node(child->name);
            if (node != nullptr && node->kind != "sink") names.push_back(node->name);
        }
        const auto [found, isNew] = mFitting.try_emplace(names);
        if (isNew) {
            for (const int32_t id : mNodes.graphsWith(names)) found->second.insert(id);
        }
        return found->second;
    }

    // The nearest number, unless another one looks more like this one.
    std::string nearest(int32_t id)
    {
        if (mNumbers.empty()) return "";
        const std::string text = std::to_string(id);
        const std::string byNumber = std::to_string(neighbourOf(id, mNumbers));
        const std::string similar = closestOf(text, {byNumber, mIds.closest(text)});
        return similar.empty() ? "; the nearest is " + byNumber : didYouMean(similar);
    }

    // Of two that stand equally near the lower one.
    static int32_t neighbourOf(int32_t id, const std::set<int32_t>& numbers)
    {
        const auto above = numbers.lower_bound(id);
        if (above == numbers.begin()) return *above;
        const auto below = std::prev(above);
        const bool isAbove = above != numbers.end() && int64_t{*above} - id < int64_t{id} - *below;
        return isAbove ? *above : *below;
    }

    const DescriptorModel& mDescriptor;
    const StrayCheck& mNodes;
    std::set<int32_t> mNumbers;
    NearNames mIds;
    std::string mExpected;
    std::map<std::vector<std::string>, std::set<int32_t>> mFitting; ///< by the nodes of settings
};

// The graph exists, but nodes of the setting are part of another one.
void checkNodesOfGraph(const ModelSetting& setting, StrayCheck& strays, RuleReporter& reporter)
{
    const StrayNodes nodes = strays.straysOf(setting);
    const std::vector<int32_t>& better = nodes.betterGraphs;
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
                        (better.size() == 1 ? '\'' + std::to_string(better[0]) + "'?" : someOf(better) + '?'));
}

void checkGraphIds(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    StrayCheck strays(descriptor);
    MissingGraphs missing(descriptor, strays);
    for (const ModelSetting& setting : file.settings()) {
        if (setting.graph != nullptr) checkNodesOfGraph(setting, strays, reporter);
        if (setting.graphId && setting.graph == nullptr)
            reporter.reportOnce(*setting.element, "id", missing.text(setting));
    }
}

// Whether the sensor is in the graph of a setting, as its first source: then its mode is looked up.
bool isFedBySensor(const ModelSetting& setting, const SettingLinks& links)
{
    bool hasSensor = setting.element->child(kSensor) != nullptr;
    for (const SettingLink& link : links.all()) {
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
        : mFile(file), mReporter(reporter), mSensor(descriptor.node(kSensor)), mLinks(descriptor), mModes(modesOf(file))
    {
        std::vector<std::string> names;
        for (const std::string& mode : mModes.candidates()) names.push_back(named(mode));
        if (!names.empty()) mModesText = ": " + someOf(names);
    }

    void check(const ModelSetting& setting)
    {
        if (mSensor == nullptr || setting.graph == nullptr || !isFedBySensor(setting, mLinks.linksOf(setting))) return;
        const XmlElement* const sensor = setting.element->child(kSensor);
        const XmlElement& place = sensor == nullptr ? *setting.element : *sensor;
        const XmlAttribute* const own = place.attribute("mode_id");
        const std::optional<ModelValue> inherited = mSensor->value("mode_id");
        if (own == nullptr && !inherited) {
            mReporter.reportOnce(place, "",
                                 "graph " + std::to_string(*setting.graphId) +
                                     " is fed by the sensor, but this setting gives it no mode; expected <" + kSensor +
                                     " mode_id=\"...\">" + mModesText);
            return;
        }
        checkMode(place, own == nullptr ? inherited->text : own->value);
    }

private:
    void checkMode(const XmlElement& place, const std::string& mode)
    {
        if (mFile.sensorModesElement() == nullptr) {
            mReporter.reportCause(place.document->path() + " has no sensor modes", place, "mode_id",
                                  "mode " + named(mode) +
                                      " is looked up in 'sensor_modes', which this file does not have; "
                                      "expected <sensor_modes> with the modes beside the settings");
            return;
        }
        if (mFile.sensorMode(mode) != nullptr) return;
        mReporter.reportOnce(place, "mode_id",
                             named(mode) + " is none of the sensor modes; expected one of them" + mModesText +
                                 mModes.suggestionFor(mode));
    }

    static std::vector<std::string> modesOf(const SettingsModel& file)
    {
        std::vector<std::string> modes;
        for (const ModelSensorMode& mode : file.sensorModes()) {
            if (file.sensorMode(mode.id) == &mode) modes.push_back(mode.id);
        }
        return modes;
    }

    const SettingsModel& mFile;
    RuleReporter& mReporter;
    const ModelNode* mSensor;
    LinkTable mLinks;
    NearNames mModes;
    std::string mModesText; ///< all of them, for what was expected
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
