// SPDX-License-Identifier: Apache-2.0
#include "BuildFaults.h"

#include "LibraryFindings.h"
#include "LibraryWords.h"
#include "PortView.h"
#include "Suggestion.h"
#include "Text.h"
#include "TreeView.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/tree/NodeIterator.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <optional>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

namespace {

constexpr const char* kRule = "build";

std::vector<std::string> childNames(const IGraphConfig* node, const std::string& type)
{
    std::vector<std::string> names;
    NUXO::NodeIterator children(node);
    while (const IGraphConfig* const child = node == nullptr ? nullptr : children.iterateDescendants()) {
        const std::string name = textOf(*child, NUXO_KEY_NAME);
        if (!name.empty() && (type.empty() || textOf(*child, NUXO_KEY_TYPE) == type)) names.push_back(name);
    }
    return names;
}

/// One end of a connection.
struct End {
    End(const GraphConfigNode& connection, uint32_t itsAttribute)
        : attribute(itsAttribute), text(textOf(connection, itsAttribute)), node(text.substr(0, text.find(':'))),
          port(node.size() == text.size() ? "" : text.substr(node.size() + 1))
    {
    }

    std::string kind() const { return attribute == NUXO_KEY_SOURCE ? "source " : "sink "; }

    uint32_t attribute;
    std::string text;
    std::string node;
    std::string port;
};

std::string namesNoNode(const End& end, const IGraphConfig* nodes)
{
    return end.kind() + named(end.text) + " names no node of the descriptor; expected one that it declares" +
           suggestionFor(end.node, childNames(nodes, ""));
}

// Repeats the steps of construction; what it makes is thrown away.
class FaultFinder {
public:
    FaultFinder(Session& session, const FailedBuild& failed) : mSession(session), mFailed(failed)
    {
        if (failed.graph != nullptr) mElement = failed.graph->getDescendant(NUXO_KEY_GRAPH);
        mNodes = failed.descriptor.getDescendant(NUXO_KEY_NODES);
    }

    BuildFault find()
    {
        std::optional<BuildFault> fault = mElement == nullptr ? std::nullopt : inConnections();
        if (!fault && mElement != nullptr) fault = inOverrides();
        if (!fault && mElement != nullptr) fault = inSource();
        takeLibraryLog(); // of the repetition
        return fault ? *fault : unexplained();
    }

private:
    BuildFault at(const IGraphConfig& item, uint32_t attribute, const std::string& text)
    {
        return {placeOf(mSession, {kRule, &item, "", attribute}), text, {}};
    }

    BuildFault unexplained()
    {
        std::string found = "the graph cannot be built: " + std::string(NUXO::statusName(mFailed.status));
        const auto& lines = mFailed.lines;
        const auto cause = std::find_if(lines.begin(), lines.end(), [](const LogLine& line) { return line.isError; });
        if (cause != lines.end()) found = "the graph cannot be built, and the library says: " + quietText(cause->text);
        return at(mFailed.settings, 0, found + "; expected a setting that makes a complete graph");
    }

    std::optional<BuildFault> inConnections()
    {
        GraphConfigNode result;
        NUXO::NodeIterator connections(mElement);
        while (const IGraphConfig* const item = connections.iterateByUid(NUXO_KEY_CONNECTION)) {
            const auto& connection = dynamic_cast<const GraphConfigNode&>(*item);
            const std::optional<int> status = connect(connection, result);
            if (status == StatusOk) continue;
            return inConnection(connection, result, status);
        }
        return std::nullopt;
    }

    // Nothing when a text was no number.
    std::optional<int> connect(const GraphConfigNode& connection, GraphConfigNode& result)
    {
        const std::string source = textOf(connection, NUXO_KEY_SOURCE);
        const std::string sink = textOf(connection, NUXO_KEY_SINK);
        const std::string isStatic = textOf(connection, NUXO_KEY_STATIC);
        try {
            return isStatic.empty() || isStatic == "false"
                       ? mFailed.manager.getConnectionData(source, sink, &mFailed.settings, &result)
                       : mFailed.manager.getStaticConnectionData(source, sink, &result);
        } catch (const std::exception&) {
            return std::nullopt;
        }
    }

    std::optional<BuildFault> inConnection(const GraphConfigNode& connection, const GraphConfigNode& result,
                                           std::optional<int> status)
    {
        const End source(connection, NUXO_KEY_SOURCE);
        const End sink(connection, NUXO_KEY_SINK);
        for (const End* const end : {&source, &sink}) {
            if (std::optional<BuildFault> fault = inEnd(connection, *end, result)) return fault;
        }
        if (std::optional<BuildFault> fault = inSink(connection, source, sink, result, status)) return fault;
        return at(connection, 0,
                  "the connection from " + named(source.text) + " to " + named(sink.text) +
                      " cannot be made; expected ports that exist");
    }

    std::optional<BuildFault> inEnd(const GraphConfigNode& connection, const End& end, const GraphConfigNode& result)
    {
        const IGraphConfig* const declared = mNodes == nullptr ? nullptr : mNodes->getDescendantByString(end.node);
        if (declared == nullptr) return at(connection, end.attribute, namesNoNode(end, mNodes));
        const IGraphConfig* const node = result.getDescendantByString(end.node);
        if (node == nullptr) return inBase(*declared, end.node);
        if (end.port.empty() || node->getDescendantByString(end.port) != nullptr) return std::nullopt;
        return at(connection, end.attribute,
                  end.kind() + named(end.text) + " names no port of " + printable(end.node) +
                      "; expected one that the node has" + suggestionFor(end.port, childNames(node, "port")));
    }

    // Why a node could not be made of its base node.
    std::optional<BuildFault> inBase(const IGraphConfig& node, const std::string& name)
    {
        const std::string baseName = textOf(node, NUXO_KEY_BASE_NODE);
        if (baseName.empty()) return std::nullopt;
        const IGraphConfig* const base = baseNamed(baseName);
        if (base == nullptr) {
            return at(node, NUXO_KEY_BASE_NODE,
                      named(baseName) + " names no base node; expected one of the descriptor" +
                          suggestionFor(baseName, childNames(mNodes, "base_node")));
        }
        if (textOf(*base, NUXO_KEY_BASE_TYPE).empty())
            return at(*base, 0, "base node " + named(baseName) + " has no base_type; expected the type of its nodes");
        std::unique_ptr<GraphConfigNode> copied(dynamic_cast<const GraphConfigNode&>(*base).copy());
        NUXO::NodeIterator differences(&node);
        while (const IGraphConfig* const difference = differences.iterateDescendants()) {
            if (applies(*copied, *difference)) continue;
            return at(*difference, NUXO_KEY_VALUE,
                      "the difference of " + printable(name) +
                          " from its base node cannot be applied: " + named(textOf(*difference, NUXO_KEY_TARGET)) +
                          " = " + named(textOf(*difference, NUXO_KEY_VALUE)) +
                          "; expected a path below the base node, and a number where the attribute is one");
        }
        return std::nullopt;
    }

    static bool applies(GraphConfigNode& target, const IGraphConfig& difference)
    {
        try {
            const NUXO::ItemUID path(textOf(difference, NUXO_KEY_TARGET));
            return target.setValueFromStr(path, textOf(difference, NUXO_KEY_VALUE)) == StatusOk;
        } catch (const std::exception&) {
            return false;
        }
    }

    const IGraphConfig* baseNamed(const std::string& name) const
    {
        NUXO::NodeIterator nodes(mNodes);
        while (const IGraphConfig* const node = nodes.iterateDescendants()) {
            if (textOf(*node, NUXO_KEY_TYPE) == "base_node" && textOf(*node, NUXO_KEY_NAME) == name) return node;
        }
        return nullptr;
    }

    // The port that the setting leads to a sink by `peer`; null for none.
    const IGraphConfig* redirectedTo(const std::string& sink) const
    {
        NUXO::NodeIterator nodes(&mFailed.settings);
        while (const IGraphConfig* const node = nodes.iterateDescendants()) {
            NUXO::NodeIterator ports(node);
            while (const IGraphConfig* const port = ports.iterateDescendants()) {
                if (textOf(*port, NUXO_KEY_PEER) == sink) return port;
            }
        }
        return nullptr;
    }

    // Connections from one port that lead to sinks: a `peer` leads all of them to one.
    std::vector<const GraphConfigNode*> toSinksFrom(const End& source) const
    {
        std::vector<const GraphConfigNode*> found;
        NUXO::NodeIterator connections(mElement);
        while (const IGraphConfig* const item = connections.iterateByUid(NUXO_KEY_CONNECTION)) {
            const auto* const connection = dynamic_cast<const GraphConfigNode*>(item);
            const bool isOwn = connection != nullptr && textOf(*connection, NUXO_KEY_SOURCE) == source.text;
            if (isOwn && End(*connection, NUXO_KEY_SINK).port.empty()) found.push_back(connection);
        }
        return found;
    }

    // A sink that is fed twice.
    BuildFault inTakenSink(const IGraphConfig& place, uint32_t attribute, const End& source, const std::string& name)
    {
        const IGraphConfig* const port = redirectedTo(name);
        const bool isOwn = port != nullptr && port == mFailed.settings.getDescendantByString(source.text);
        const std::vector<const GraphConfigNode*> connections = toSinksFrom(source);
        if (isOwn && connections.size() > 1) return inForkedPeer(*port, source, name, connections);
        constexpr const char* expected = " as well; expected a sink of its own";
        if (port != nullptr && !isOwn)
            return at(*port, NUXO_KEY_PEER, named(name) + " is fed by " + named(source.text) + expected);
        return at(place, attribute, named(name) + " is fed by another connection" + expected);
    }

    BuildFault inForkedPeer(const IGraphConfig& port, const End& source, const std::string& sink,
                            const std::vector<const GraphConfigNode*>& connections)
    {
        BuildFault fault = at(port, NUXO_KEY_PEER,
                              "the graph has " + std::to_string(connections.size()) + " connections from " +
                                  named(source.text) + " to sinks, and peer leads all of them to " + named(sink) +
                                  "; expected one connection to a sink from a port with a peer");
        for (const GraphConfigNode* const connection : connections)
            fault.notes.push_back({placeOf(mSession, {kRule, connection, "", NUXO_KEY_SINK}),
                                   "the connection to " + named(textOf(*connection, NUXO_KEY_SINK))});
        return fault;
    }

    // What a connection asks of a sink, which has no ports.
    std::optional<BuildFault> inSink(const GraphConfigNode& connection, const End& source, const End& sink,
                                     const GraphConfigNode& result, std::optional<int> status)
    {
        // A setting may lead the connection to another sink.
        const IGraphConfig* const settingsEnd = mFailed.settings.getDescendantByString(source.text);
        const std::string redirected = settingsEnd == nullptr ? "" : textOf(*settingsEnd, NUXO_KEY_PEER);
        const bool isRedirected = sink.port.empty() && !redirected.empty() && redirected != sink.text;
        const std::string name = isRedirected ? redirected : sink.node;
        const IGraphConfig* const node = result.getDescendantByString(name);
        if (!sink.port.empty() || node == nullptr) return std::nullopt;

        const IGraphConfig& place = isRedirected ? *settingsEnd : connection;
        const uint32_t attribute = isRedirected ? NUXO_KEY_PEER : NUXO_KEY_SINK;
        if (status == StatusDuplicate) {
            Location stated; // a connection's own direction stands in no file
            if (mSession.locator.locate(node, NUXO_KEY_DIRECTION, stated) != StatusOk)
                return inTakenSink(place, attribute, source, name);
            return at(*node, NUXO_KEY_DIRECTION,
                      "sink " + printable(name) +
                          " states a direction, which it gets from its connection; expected no such attribute");
        }
        const std::string type = textOf(*node, NUXO_KEY_TYPE);
        if (type != "sink") {
            return at(place, attribute,
                      named(name) + " is " + (type.empty() ? "without type" : "of type " + named(type)) +
                          " and not a sink; expected a sink, or a port of the node" + portOf(*node));
        }
        const IGraphConfig* const feeder = result.getDescendantByString(source.node);
        if (feeder == nullptr || optionalInteger(*feeder, NUXO_KEY_STREAM_ID)) return std::nullopt;
        return at(connection, NUXO_KEY_SINK,
                  "sink " + printable(name) + " is in no stream, and neither is " + printable(source.node) +
                      ", which leads there; expected a stream_id at one of them");
    }

    static std::string portOf(const IGraphConfig& node)
    {
        for (const std::string& port : childNames(&node, "port")) {
            const IGraphConfig* const item = node.getDescendantByString(port);
            if (item != nullptr && integerOf(*item, NUXO_KEY_DIRECTION, 1) == 0)
                return ", such as '" + printable(nameOf(node)) + ':' + printable(port) + '\'';
        }
        return "";
    }

    std::optional<BuildFault> inOverrides()
    {
        NUXO::NodeIterator overrides(mElement);
        while (const IGraphConfig* const item = overrides.iterateDescendants()) {
            if (item->getUid() != NUXO_KEY_APPLY && textOf(*item, NUXO_KEY_TYPE) != "apply") continue;
            const std::string target = textOf(*item, NUXO_KEY_TARGET);
            const std::string value = textOf(*item, NUXO_KEY_VALUE);
            int known = 0;
            const bool isInteger = mFailed.graph->getValue(NUXO::ItemUID(target), known) == StatusOk;
            if (!target.empty() && !value.empty() && (!isInteger || startsWithNumber(value))) continue;
            return at(*item, NUXO_KEY_VALUE,
                      "the override of " + named(target) + " with " + named(value) +
                          " cannot be applied; expected a target, and a number where the attribute is one");
        }
        return std::nullopt;
    }

    static bool startsWithNumber(const std::string& text)
    {
        try {
            static_cast<void>(std::stoi(text)); // as the library reads it
            return true;
        } catch (const std::exception&) {
            return false;
        }
    }

    std::optional<BuildFault> inSource()
    {
        NUXO::NodeIterator sources(mFailed.graph);
        const IGraphConfig* source = sources.iterateNodes(NUXO_KEY_TYPE, "source");
        const IGraphConfig* switchedOff = nullptr;
        while (source != nullptr && integerOf(*source, NUXO_KEY_ENABLED, 1) == 0) {
            switchedOff = source;
            source = sources.iterateNodes(NUXO_KEY_TYPE, "source");
        }
        if (source == nullptr && switchedOff != nullptr)
            return at(*switchedOff, NUXO_KEY_ENABLED,
                      "the only source of the setting, " + printable(nameOf(*switchedOff)) +
                          ", is switched off; expected a source that delivers frames");
        if (source == nullptr)
            return at(mFailed.settings, 0,
                      "no source takes part in the setting; expected the sensor, or another source of the graph" +
                          sourcesOfGraph());
        if (nameOf(*source) != "sensor") return std::nullopt;
        return inMode(*source);
    }

    // ", which are 'sensor' and 'tpg'"
    std::string sourcesOfGraph() const
    {
        std::vector<std::string> known;
        NUXO::NodeIterator connections(mElement);
        while (const IGraphConfig* const connection = connections.iterateByUid(NUXO_KEY_CONNECTION)) {
            const std::string text = textOf(*connection, NUXO_KEY_SOURCE);
            const std::string name = text.substr(0, text.find(':'));
            const IGraphConfig* const node = mNodes == nullptr ? nullptr : mNodes->getDescendantByString(name);
            const bool isSource = node != nullptr && textOf(*node, NUXO_KEY_TYPE) == "source";
            if (isSource && std::find(known.begin(), known.end(), name) == known.end()) known.push_back(name);
        }
        std::string text;
        for (const std::string& name : known) text += (text.empty() ? ": " : ", ") + named(name);
        return text;
    }

    std::optional<BuildFault> inMode(const IGraphConfig& sensor)
    {
        const std::string mode = textOf(sensor, NUXO_KEY_MODE_ID);
        if (mode.empty())
            return at(inSettings(sensor), 0, "the sensor has no mode_id; expected the name of one of the sensor modes");
        const IGraphConfig* const root = mFailed.settings.getRoot();
        const IGraphConfig* const modes = root == nullptr ? nullptr : root->getDescendant(NUXO_KEY_SENSOR_MODES);
        if (modes == nullptr)
            return at(sensor, NUXO_KEY_MODE_ID,
                      "the setting asks for sensor mode " + named(mode) +
                          ", but the file has no sensor_modes; expected a list of modes with that name");
        const std::vector<std::string> known = childNames(modes, "");
        if (std::find(known.begin(), known.end(), mode) != known.end()) return std::nullopt;
        return at(sensor, NUXO_KEY_MODE_ID,
                  named(mode) + " names no sensor mode of the file; expected one of its modes" +
                      suggestionFor(mode, known));
    }

    // A node of the graph as the setting has it, if it does.
    const IGraphConfig& inSettings(const IGraphConfig& node) const
    {
        const IGraphConfig* const own = mFailed.settings.getDescendantByString(nameOf(node));
        return own == nullptr ? mFailed.settings : *own;
    }

    Session& mSession;
    const FailedBuild& mFailed;
    const IGraphConfig* mElement = nullptr; // of the graph, with its connections
    const IGraphConfig* mNodes = nullptr;
};

} // namespace

BuildFault buildFaultOf(Session& session, const FailedBuild& failed)
{
    return FaultFinder(session, failed).find();
}

std::vector<BuildFault> unknownEndsOf(Session& session, const IGraphConfig& descriptor, const GraphConfigNode& graph)
{
    std::vector<BuildFault> faults;
    const IGraphConfig* const nodes = descriptor.getDescendant(NUXO_KEY_NODES);
    const IGraphConfig* const element = graph.getDescendant(NUXO_KEY_GRAPH);
    if (nodes == nullptr || element == nullptr) return faults;
    NUXO::NodeIterator connections(element);
    while (const IGraphConfig* const item = connections.iterateByUid(NUXO_KEY_CONNECTION)) {
        const auto& connection = dynamic_cast<const GraphConfigNode&>(*item);
        for (const uint32_t attribute : {uint32_t{NUXO_KEY_SOURCE}, uint32_t{NUXO_KEY_SINK}}) {
            const End end(connection, attribute);
            if (end.text.empty() || nodes->getDescendantByString(end.node) != nullptr) continue;
            faults.push_back({placeOf(session, {kRule, &connection, "", attribute}), namesNoNode(end, nodes), {}});
        }
    }
    return faults;
}

} // namespace NuxoTool
