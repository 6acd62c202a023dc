// SPDX-License-Identifier: Apache-2.0
// The ends of connections: that they exist, point the right way and meet once.
#include "Suggestion.h"
#include "Text.h"
#include "check/rules/Causes.h"
#include "check/rules/DescriptorRuleParts.h"
#include "check/rules/SettingsPlaces.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>

namespace NuxoTool {

namespace {

constexpr int32_t kInput = 0;
constexpr int32_t kOutput = 1;

const char* const kSourceSide = "source";
const char* const kSinkSide = "sink";

template <typename Visit> void forEachConnection(const DescriptorModel& model, Visit visit)
{
    for (const ModelGraph& graph : model.graphs()) {
        for (const ModelConnection& connection : graph.connections) visit(graph, connection);
    }
}

bool isVirtualSink(const ModelEnd& end)
{
    return end.node != nullptr && end.node->kind == "sink" && end.portName.empty();
}

// Whether there is such a port.
bool isPort(const ModelEnd& end)
{
    return end.port != nullptr && end.port->kind == "port";
}

std::optional<int32_t> directionOf(const ModelEnd& end)
{
    return isPort(end) ? end.node->integer(end.portName + ":direction") : std::nullopt;
}

std::vector<std::string> portsOf(const ModelNode& node, std::optional<int32_t> direction = std::nullopt)
{
    std::vector<std::string> names;
    for (const ModelPart* const port : distinctParts(node, "port")) {
        if (direction && node.integer(port->name + ":direction") != direction) continue;
        names.push_back(fullName(node, port->name));
    }
    return names;
}

// ---- connection-end

// Tells of ends that lead nowhere.
class EndChecker {
public:
    EndChecker(const DescriptorModel& model, RuleReporter& reporter)
        : mModel(model), mShadowed(model), mReporter(reporter)
    {
    }

    void check(const ModelConnection& connection, const ModelEnd& end, const char* side)
    {
        if (connection.element->attribute(side) == nullptr) return;
        mCause.clear();
        const std::string fault = faultOf(end);
        if (!fault.empty()) mReporter.reportCause(mCause, *connection.element, side, fault);
    }

private:
    std::string faultOf(const ModelEnd& end)
    {
        const size_t names = namesOfPath(end.text).size();
        if (names > 2) return named(end.text) + " has more than two names; expected 'node:port', or the name of a sink";
        if (end.nodeName.empty())
            return named(end.text) + " names no node; expected 'node:port', or the name of a sink";
        if (end.node == nullptr) return unknownNode(end);
        if (end.node->isBase)
            return named(end.nodeName) + " is a base node, which is part of no graph; expected a node made from it";
        if (end.text.back() == ':')
            return named(end.text) + " names no port; expected 'node:port', or a sink without ':'";
        if (!end.node->isWhole() || end.portName.empty() || isPort(end)) return "";
        return unknownPort(end);
    }

    std::string unknownNode(const ModelEnd& end)
    {
        if (mShadowed.hasNodeWith(end.portName)) return "";
        mCause = missingNode(end.nodeName);
        return "no node has the name " + named(end.nodeName) + "; expected one below 'nodes'" +
               suggestionForNode(mModel, namesOfPath(end.text));
    }

    std::string unknownPort(const ModelEnd& end)
    {
        const ModelNode& node = *end.node;
        if (end.port != nullptr && !isKnownElement(end.port->kind)) return ""; // misspelled, which is told there
        if (end.port != nullptr) return named(end.text) + " is a " + end.port->kind + "; expected a port";
        if (mShadowed.hasPart(node, {"port"})) return "";
        mCause = missingPart(node, end.portName);
        const auto [known, isNew] = mPorts.try_emplace(&node);
        std::vector<std::string>& ports = known->second;
        if (isNew) ports = portsOf(node);
        if (ports.empty()) {
            return named(node.name) + " has no ports; expected " +
                   (node.kind == "sink" ? named(node.name) + " alone" : "a port " + named(end.portName) + " in it");
        }
        return "node " + named(node.name) + " has no port " + named(end.portName) + "; expected " + choiceOf(ports) +
               suggestionAmong(fullName(node, end.portName), ports);
    }

    const DescriptorModel& mModel;
    const ShadowedItems mShadowed;
    RuleReporter& mReporter;
    std::string mCause;                                          // of what is being told
    std::map<const ModelNode*, std::vector<std::string>> mPorts; // of nodes that were asked for others; only looked up
};

void checkEnds(const DescriptorModel& model, RuleReporter& reporter)
{
    EndChecker checker(model, reporter);
    forEachConnection(model, [&checker](const ModelGraph&, const ModelConnection& connection) {
        checker.check(connection, connection.source, kSourceSide);
        checker.check(connection, connection.sink, kSinkSide);
    });
}

// ---- connection-direction

// An end that names a node alone, where only a virtual sink may stand.
std::string withoutPort(const ModelNode& node, int32_t direction)
{
    const std::vector<std::string> ports = portsOf(node, direction);
    const char* const what = direction == kOutput ? "an output port" : "an input port, or a sink";
    return named(node.name) + " names no port; expected " + what +
           (ports.size() == 1 ? "; did you mean '" + ports.front() + "'?" : "");
}

std::string sourceFault(const ModelEnd& end)
{
    if (end.node->kind == "sink") return "frames end at sink " + named(end.nodeName) + "; expected an output port";
    if (end.portName.empty()) return withoutPort(*end.node, kOutput);
    if (directionOf(end) != kInput) return "";
    return named(end.text) + " is an input port; expected an output port";
}

std::string sinkFault(const ModelEnd& end)
{
    if (end.node->kind == "source")
        return "frames start at source " + named(end.nodeName) + "; expected an input port, or a sink";
    if (isVirtualSink(end)) return "";
    if (end.portName.empty()) return withoutPort(*end.node, kInput);
    if (directionOf(end) != kOutput) return "";
    return named(end.text) + " is an output port; expected an input port, or a sink";
}

bool isUsable(const ModelEnd& end)
{
    return end.node != nullptr && !end.node->isBase && end.node->isWhole() && hasFittingType(*end.node) &&
           (end.portName.empty() || isPort(end));
}

// Ports that several connections use, all of them against the direction: the port is wrong rather than they.
using Contradicted = std::map<const ModelPart*, size_t>;

Contradicted contradictedPorts(const DescriptorModel& model)
{
    Contradicted wrong;
    std::set<const ModelPart*> right;
    forEachConnection(model, [&](const ModelGraph&, const ModelConnection& connection) {
        for (const ModelEnd* const end : {&connection.source, &connection.sink}) {
            if (!isUsable(*end) || !isPort(*end)) continue;
            const int32_t against = end == &connection.source ? kInput : kOutput;
            if (directionOf(*end) == against) {
                ++wrong[end->port];
            } else {
                right.insert(end->port);
            }
        }
    });
    for (auto port = wrong.begin(); port != wrong.end();) {
        port = port->second < 2 || right.count(port->first) > 0 ? wrong.erase(port) : std::next(port);
    }
    return wrong;
}

bool reportPort(const ModelEnd& end, bool isSource, const Contradicted& ports, RuleReporter& reporter)
{
    const auto port = ports.find(end.port);
    if (port == ports.end()) return false;
    const ValuePlace place = placeInside(*end.node, end.node->value(end.portName + ":direction"));
    reporter.report(*place.element, place.attribute,
                    "port " + named(end.text) + (isSource ? " is an input port, but " : " is an output port, but ") +
                        std::to_string(port->second) + (isSource ? " connections start" : " connections end") +
                        " there; expected direction " + (isSource ? "1" : "0"));
    return true;
}

void checkDirections(const DescriptorModel& model, RuleReporter& reporter)
{
    const Contradicted ports = contradictedPorts(model);
    forEachConnection(model, [&](const ModelGraph&, const ModelConnection& connection) {
        const bool isSourceDone = reportPort(connection.source, true, ports, reporter);
        const bool isSinkDone = reportPort(connection.sink, false, ports, reporter);
        const std::string source = isUsable(connection.source) && !isSourceDone ? sourceFault(connection.source) : "";
        const std::string sink = isUsable(connection.sink) && !isSinkDone ? sinkFault(connection.sink) : "";
        const bool isReversed = !source.empty() && !sink.empty() && sourceFault(connection.sink).empty() &&
                                sinkFault(connection.source).empty();
        if (isReversed) {
            reporter.report(*connection.element, kSourceSide,
                            "the connection runs backwards, from " + named(connection.source.text) + " to " +
                                named(connection.sink.text) + "; expected source and sink the other way round");
            return;
        }
        if (!source.empty()) reporter.report(*connection.element, kSourceSide, source);
        if (!sink.empty()) reporter.report(*connection.element, kSinkSide, sink);
    });
}

// ---- port-connected-twice

bool isCapture(const ModelEnd& end)
{
    return end.node->kind == "source" || end.node->kind == "hw";
}

// Settings choose between captures by naming one of them; they name all the stages behind.
bool canMeet(const ModelConnection& one, const ModelConnection& other)
{
    if (one.source.text == other.source.text) return true;
    return one.isStatic || other.isStatic || !isCapture(one.source) || !isCapture(other.source);
}

void checkMeetings(const DescriptorModel& model, RuleReporter& reporter)
{
    for (const ModelGraph& graph : model.graphs()) {
        std::map<std::string, const ModelConnection*> bySink;
        for (const ModelConnection& connection : graph.connections) {
            if (!isUsable(connection.source) || !isUsable(connection.sink)) continue;
            const auto [place, isFirst] = bySink.emplace(connection.sink.text, &connection);
            const ModelConnection& other = *place->second;
            if (isFirst || !canMeet(connection, other)) continue;
            const bool isSame = connection.source.text == other.source.text;
            const std::string what = isVirtualSink(connection.sink) ? "sink " : "input port ";
            reporter.report(*connection.element, kSinkSide,
                            isSame ? "the connection from " + named(connection.source.text) + " to " +
                                         named(connection.sink.text) + " is there already; expected it once"
                                   : what + named(connection.sink.text) + " is connected to " +
                                         named(other.source.text) + " already; expected one connection to it");
            reporter.note(*other.element, kSinkSide, "the first connection");
        }
    }
}

// ---- sink-stream

void checkNumber(const ModelConnection& connection, const char* attribute, RuleReporter& reporter)
{
    const ModelNode& source = *connection.source.node;
    const ModelNode& sink = *connection.sink.node;
    const std::optional<int32_t> fed = source.integer(attribute);
    const std::optional<int32_t> own = sink.integer(attribute);
    if (!fed || !own || *fed == *own) return;
    const ValuePlace place = placeOf(sink, sink.value(attribute));
    reporter.report(*place.element, place.attribute,
                    "sink " + named(sink.name) + " has " + attribute + ' ' + std::to_string(*own) + ", but " +
                        named(source.name) + ", which feeds it, has " + std::to_string(*fed) + "; expected the same");
    reporter.note(*connection.element, "the connection to the sink");
}

bool has(const ModelNode& node, const char* attribute)
{
    return node.value(attribute).has_value();
}

using Nodes = std::set<const ModelNode*>;

// Sinks that get their stream in a dynamic connection.
Nodes dynamicSinks(const DescriptorModel& model)
{
    Nodes sinks;
    forEachConnection(model, [&](const ModelGraph&, const ModelConnection& connection) {
        if (!connection.isStatic && isVirtualSink(connection.sink)) sinks.insert(connection.sink.node);
    });
    return sinks;
}

// The sink is not known to be at fault when other connections give it its stream.
void reportStatic(const ModelConnection& connection, const Nodes& otherwiseFed, RuleReporter& reporter)
{
    const ModelNode& sink = *connection.sink.node;
    const std::string text = "sink " + named(sink.name) +
                             " belongs to no stream, and a static connection gives it none; expected stream_id on the ";
    if (otherwiseFed.count(&sink) > 0) {
        reporter.report(*connection.element, kSinkSide, text + "sink, or a connection that is not static");
    } else {
        reporter.report(*sink.element, text + "sink");
        reporter.note(*connection.element, "the connection to the sink");
    }
}

// A sink takes over the number that it lacks, stream_id in dynamic connections, exec_ctx_id in static ones.
void checkStream(const ModelConnection& connection, const Nodes& otherwiseFed, RuleReporter& reporter)
{
    const ModelNode& source = *connection.source.node;
    const ModelNode& sink = *connection.sink.node;
    if (has(sink, "stream_id")) {
        checkNumber(connection, "stream_id", reporter);
    } else if (connection.isStatic) {
        reportStatic(connection, otherwiseFed, reporter);
    } else if (!has(source, "stream_id")) {
        reporter.report(*source.element, "sink " + named(sink.name) + " takes its stream from " + named(source.name) +
                                             ", which has none; expected stream_id on " + named(source.name) +
                                             ", or on the sink");
        reporter.note(*connection.element, "the connection to the sink");
    }
}

void checkStreams(const DescriptorModel& model, RuleReporter& reporter)
{
    const Nodes sinks = dynamicSinks(model);
    forEachConnection(model, [&](const ModelGraph&, const ModelConnection& connection) {
        if (isUsable(connection.source) && isVirtualSink(connection.sink)) checkStream(connection, sinks, reporter);
    });
}

// ---- sink-context

void checkSinkContexts(const DescriptorModel& model, RuleReporter& reporter)
{
    forEachConnection(model, [&](const ModelGraph&, const ModelConnection& connection) {
        if (isUsable(connection.source) && isVirtualSink(connection.sink))
            checkNumber(connection, "exec_ctx_id", reporter);
    });
}

// ---- content-mismatch

std::optional<ModelValue> contentOf(const ModelEnd& end)
{
    return end.node->value(end.portName.empty() ? "content_type" : end.portName + ":content_type");
}

// How often a kind of data is named. A rare one is more likely misspelled.
std::map<std::string, size_t> contentCounts(const DescriptorModel& model)
{
    std::map<std::string, size_t> counts;
    for (const XmlElement& element : model.document().elements()) ++counts[element.value("content_type")];
    return counts;
}

void checkContents(const DescriptorModel& model, RuleReporter& reporter)
{
    const std::string standard = "pixel_data";
    std::map<std::string, size_t> counts = contentCounts(model);
    forEachConnection(model, [&](const ModelGraph&, const ModelConnection& connection) {
        if (!isUsable(connection.source) || !isUsable(connection.sink)) return;
        const std::optional<ModelValue> from = contentOf(connection.source);
        const std::optional<ModelValue> to = contentOf(connection.sink);
        const std::string sent = from ? from->text : standard;
        const std::string taken = to ? to->text : isVirtualSink(connection.sink) ? sent : standard;
        if (sent == taken) return;
        const bool isSourceOdd = from && (!to || counts[sent] < counts[taken]);
        const ModelNode& node = isSourceOdd ? *connection.source.node : *connection.sink.node;
        const ValuePlace place = placeInside(node, isSourceOdd ? from : to);
        reporter.report(*place.element, place.attribute,
                        named(connection.source.text) + " delivers " + named(sent) + ", but " +
                            named(connection.sink.text) + " takes " + named(taken) +
                            "; expected the same content_type");
        reporter.note(*connection.element, "the connection between them");
    });
}

// ---- graph-source

void checkSources(const DescriptorModel& model, RuleReporter& reporter)
{
    for (const ModelGraph& graph : model.graphs()) {
        const auto& all = graph.connections;
        const bool isKnown = std::all_of(all.begin(), all.end(), [](const ModelConnection& connection) {
            return isUsable(connection.source) && isUsable(connection.sink);
        });
        const std::vector<const ModelNode*> nodes = graph.nodes();
        const bool hasSource =
            std::any_of(nodes.begin(), nodes.end(), [](const ModelNode* node) { return node->kind == "source"; });
        if (hasSource || !isKnown || all.empty()) continue;
        reporter.report(*graph.element, "no connection of the graph starts at a source; expected a node of type "
                                        "source, such as a sensor, at one of them");
    }
}

} // namespace

std::vector<Rule> connectionRules()
{
    return {
        {"connection-end",
         RuleSeverity::Error,
         "a connection names a node or port that does not exist",
         "The source and the sink of a connection name a port as 'node:port', or a virtual sink by its name alone. "
         "Names "
         "are those below 'nodes', in the same case. As soon as a setting uses the connection, the library cannot "
         "build "
         "its graph. Write a name that exists, or add the node or port:\n"
         "    <connection source=\"front:main_out\" sink=\"video:input\"/>",
         {},
         DescriptorRule(checkEnds)},
        {"connection-direction",
         RuleSeverity::Error,
         "a connection starts at an input or ends at an output",
         "Frames leave a node at an output port (direction 1) and arrive at an input port (direction 0) or at a "
         "virtual "
         "sink, the only node that is named without a port. The library joins the ends as they are written, and what "
         "it "
         "then tells about peers, streams and sizes is wrong; a dynamic connection to a node without port that is no "
         "sink ends the build. Swap the ends, name the other port, or correct the direction of the port.",
         {},
         DescriptorRule(checkDirections)},
        {"port-connected-twice",
         RuleSeverity::Error,
         "two connections of a graph lead to one input port or sink",
         "An output port may feed several others, but an input port gets its frames from one: the library keeps both "
         "connections and reads the first, so that the second stage waits for a peer that never looks at it. At a "
         "virtual "
         "sink the second connection ends the build. Connections from sources and capture back ends are let pass when "
         "they "
         "are dynamic: settings name one of them. Delete one of the connections, or lead it elsewhere.",
         {"connection-end"},
         DescriptorRule(checkMeetings)},
        {"sink-stream",
         RuleSeverity::Error,
         "a virtual sink gets no stream, or the wrong one",
         "Whoever asks for outputs finds the sinks of a stream by their stream_id, which is that of the node ahead of "
         "them. "
         "The sink of a dynamic connection takes it from that node; when neither has one, the graph cannot be built. "
         "The "
         "sink of a static connection takes only exec_ctx_id, so it states its stream itself. A stream that the sink "
         "states "
         "is kept: when it is not that of the node, frames are looked for where none are made:\n"
         "    <sink name=\"stats_sink\" stream_id=\"1\"/>",
         {"duplicate-name", "connection-end", "connection-direction", "difference-target", "difference-value"},
         DescriptorRule(checkStreams)},
        {"sink-context",
         RuleSeverity::Warning,
         "a sink belongs to another execution context than the node that feeds it",
         "A sink and the last stage ahead of it run in one execution context. When their exec_ctx_id differs, whoever "
         "goes "
         "by contexts finds an output in a context that never makes a frame for it. Give the sink the number of the "
         "stage, "
         "or none when the connection is static, which hands it on.",
         {"duplicate-name", "connection-end", "connection-direction", "difference-target", "difference-value"},
         DescriptorRule(checkSinkContexts)},
        {"content-mismatch",
         RuleSeverity::Warning,
         "the ends of a connection carry different kinds of data",
         "The content_type of a port or sink tells what arrives there: pixel_data when it says nothing, otherwise "
         "statistics or other data such as ae_stats. Both ends of a connection carry the same. When they differ, "
         "clients "
         "take statistics for pixels, or the other way round, and the library may switch a port off that is in use. A "
         "sink "
         "without content_type takes that of the port.",
         {"duplicate-name", "connection-end", "connection-direction", "difference-target"},
         DescriptorRule(checkContents)},
        {"graph-source",
         RuleSeverity::Error,
         "a graph has no source",
         "Every graph starts at a node of type source: a sensor, a test pattern generator or a buffer that clients "
         "fill. "
         "The library looks for it at the end of the build and gives up when there is none. Connect a source to the "
         "first "
         "stage:\n"
         "    <connection source=\"sensor:port_0\" sink=\"csi_be:input\" static=\"true\"/>",
         {"connection-end", "connection-direction"},
         DescriptorRule(checkSources)},
    };
}

} // namespace NuxoTool
