// SPDX-License-Identifier: Apache-2.0
#include "check/rules/SettingsRules.h"

#include "FormatNames.h"
#include "Text.h"
#include "check/rules/SettingsLinks.h"
#include "check/rules/SettingsPeers.h"
#include "check/rules/SettingsPlaces.h"

#include <algorithm>
#include <optional>
#include <set>

namespace NuxoTool {

namespace {

using State = SettingLink::State;

std::string tag(const std::string& name)
{
    return '<' + printable(name) + '>';
}

std::string sourceOf(const SettingLink& link)
{
    return named(link.connection->source.text);
}

void checkPeers(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    LinkTable links(descriptor);
    PeerCheck peers(descriptor);
    for (const ModelSetting& setting : file.settings()) {
        peers.visitBad(setting, links.linksOf(setting),
                       [&reporter](const XmlElement& port, const std::string& trouble) {
                           reporter.report(port, "peer", trouble);
                       });
    }
}

// Connections of which one end is missing.

class HalfConnections {
public:
    HalfConnections(const ModelSetting& setting, const SettingLinks& links, RuleReporter& reporter)
        : mSetting(setting), mReporter(reporter), mLinks(links)
    {
    }

    void check()
    {
        for (const SettingLink& link : mLinks.all()) checkSource(link);
        for (const XmlElement* const node : mSetting.element->children) checkNode(*node);
    }

private:
    // A port that is on, with nowhere to go.
    void checkSource(const SettingLink& link)
    {
        if (link.state != State::SinkMissing || link.isRedirected || !isOn(link)) return;
        const std::string source = link.sourcePath();
        if (!mSources.insert(source).second) return; // told already, or made
        const std::vector<const SettingLink*>& own = mLinks.from(source);
        if (std::any_of(own.begin(), own.end(), [](const auto* other) { return other->state == State::Made; })) return;
        std::vector<std::string> sinks;
        bool isNew = false;
        for (const SettingLink* const other : own) {
            sinks.push_back(other->sinkName);
            isNew = mMissing.insert(other->sinkName).second || isNew;
        }
        if (isNew) reportSource(link, sinks);
    }

    void reportSource(const SettingLink& link, const std::vector<std::string>& sinks)
    {
        std::vector<std::string> names;
        std::vector<std::string> tags;
        for (const std::string& sink : sinks) {
            names.push_back(named(sink));
            tags.push_back(tag(sink + " .../"));
        }
        const bool isOne = sinks.size() == 1;
        mReporter.report(*link.source, sourceOf(link) + " is part of the setting, but " + listOf(names) +
                                           (isOne ? ", where it leads, is not" : ", where it leads, are not") +
                                           ", so nothing connects it; expected " + listOf(tags, " or ") + ", or " +
                                           tag(link.source->name + " enabled=\"0\"/") + " to switch it off");
    }

    // The descriptor may have it switched off.
    static bool isOn(const SettingLink& link)
    {
        if (link.source->attribute("enabled") != nullptr) return true;
        const ModelEnd& source = link.connection->source;
        if (source.node == nullptr) return false;
        const std::string path = source.portName.empty() ? "enabled" : source.portName + ":enabled";
        return source.node->integer(path).value_or(1) != 0;
    }

    // A node that connections lead to, none of which is made.
    void checkNode(const XmlElement& node)
    {
        const SettingLink* broken = nullptr;
        for (const SettingLink* const link : mLinks.to(node.name)) {
            if (link->connection->source.nodeName == node.name) continue;
            if (link->sinkName == node.name && link->state == State::Made) return;
            if (broken == nullptr || rank(*link) < rank(*broken)) broken = link;
        }
        if (broken == nullptr || node.integer("enabled") == 0) return;
        const std::string& feeder = broken->connection->source.nodeName;
        if (broken->state == State::SourceMissing && !mMissing.insert(feeder).second) return;
        mReporter.report(node, "nothing leads to " + named(node.name) + ": " + reasonOf(*broken, node.name));
    }

    // The reason that is told of several: the one that takes least to mend.
    static int rank(const SettingLink& link)
    {
        switch (link.state) {
        case State::Disabled: return 0;
        case State::PortMissing: return 1;
        case State::Made:
        case State::SinkMissing: return 2;
        case State::SourceMissing: return 3;
        }
        return 3;
    }

    std::string reasonOf(const SettingLink& link, const std::string& node) const
    {
        const ModelEnd& source = link.connection->source;
        if (link.sinkName != node)
            return sourceOf(link) + " goes to " + named(link.sinkName) + " instead; expected one of the two";
        switch (link.state) {
        case State::Disabled:
            return sourceOf(link) + " is switched off; expected " + tag(source.portName) + " without enabled=\"0\"";
        case State::PortMissing:
            return named(source.nodeName) + " does not mention its port " + named(source.portName) + "; expected " +
                   tag(source.portName + " .../") + " below it";
        default:
            return named(source.nodeName) + ", from which it comes, is not part of the setting; expected " +
                   tag(source.nodeName + ">...</" + source.nodeName);
        }
    }

    const ModelSetting& mSetting;
    RuleReporter& mReporter;
    const SettingLinks& mLinks;
    std::set<std::string> mSources; // ports that were looked at
    std::set<std::string> mMissing; // nodes that were found to be missing
};

void checkHalves(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    LinkTable table(descriptor);
    PeerCheck peers(descriptor);
    for (const ModelSetting& setting : file.settings()) {
        const SettingLinks links = table.linksOf(setting);
        // A connection that is at fault itself may well be what is missing.
        const bool isSound = table.namesAreKnown(setting, links) && !peers.hasBad(setting, links) &&
                             (setting.graph == nullptr || !reporter.hasErrors(*setting.graph->element));
        if (isSound) HalfConnections(setting, links, reporter).check();
    }
}

// Formats that a port hands on to the next one.

void checkHandover(const ModelSetting& setting, const SettingLink& link, RuleReporter& reporter)
{
    const ModelConnection& connection = *link.connection;
    const bool isKnown = connection.sink.node != nullptr && connection.sink.port != nullptr && link.source != nullptr;
    if (!isKnown || link.state != State::Made || link.source->attribute("format") == nullptr) return;
    const std::string& given = link.source->value("format");
    // The sensor's formats come from its mode, and names of none are told of already.
    if (connection.source.nodeName == "sensor" || formatNamed(given) == nullptr) return;
    if (reporter.hasErrors(*setting.graph->element) || isFaulty(*connection.sink.node, reporter)) return;
    const std::optional<ModelValue> taken = connection.sink.node->value(connection.sink.portName + ":format");
    if (!taken || taken->text == given) return;
    reporter.reportOnce(*link.source, "format",
                        sourceOf(link) + " hands on " + named(given) + ", but " + named(connection.sink.text) +
                            " takes " + named(taken->text) + "; expected " + named(taken->text));
    reporter.note(*taken->element, taken->attribute, "what the next node takes");
}

void checkHandovers(const DescriptorModel& descriptor, const SettingsModel& file, RuleReporter& reporter)
{
    NUXOFormats::initNUXOFormats();
    LinkTable table(descriptor);
    for (const ModelSetting& setting : file.settings()) {
        const SettingLinks links = table.linksOf(setting);
        for (const SettingLink& link : links.all()) checkHandover(setting, link, reporter);
    }
}

} // namespace

std::vector<Rule> settingsConnectionRules()
{
    return {
        {"peer-target",
         RuleSeverity::Error,
         "the peer of a port is no sink of the setting",
         "With 'peer' a setting leads a port to another sink than the one of the graph's connection. It must be the "
         "name of a sink of the descriptor that is itself an element of the setting; otherwise the connection is left "
         "out without an error. Connections between ports and static ones cannot be changed. Write <aux_out "
         "peer=\"encoder_sink\"/> and <encoder_sink/>.",
         {},
         checkPeers},
        {"half-connection",
         RuleSeverity::Error,
         "one end of a connection is part of the setting, the other is not",
         "A connection is made only if the setting has an element for its source node and port, which is not switched "
         "off, and one for the node where it leads. Otherwise it is left out silently: frames go nowhere, or a node "
         "never gets any. Add the other end, or take this one out; a port is switched off with enabled=\"0\".",
         {},
         checkHalves},
        {"input-format",
         RuleSeverity::Warning,
         "a setting gives a port another format than the next node takes",
         "A port passes its format on to the input where it leads, over the format that the descriptor states for that "
         "input. A node that is made for one format gets another one then, and no later stage can tell. Give the port "
         "the format of the input, or change the descriptor when the node takes both.",
         {},
         checkHandovers},
    };
}

} // namespace NuxoTool
