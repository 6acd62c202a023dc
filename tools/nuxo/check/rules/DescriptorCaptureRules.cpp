// SPDX-License-Identifier: Apache-2.0
// Sources and the capture back ends behind them: the parts that the library looks for by name.
#include "Suggestion.h"
#include "Text.h"
#include "check/rules/DescriptorRuleParts.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace NuxoTool {

namespace {

constexpr const char* kSourcePort = "port_0";
constexpr const char* kBackEndPort = "output";

using NodeSet = std::set<const ModelNode*>;

// A port that most likely was meant for one that is missing: of a close name, or the only one. Null for none.
const ModelPart* meantPort(const ModelNode& node, const char* missing)
{
    const std::vector<const ModelPart*> ports = distinctParts(node, "port");
    if (ports.size() == 1) return ports.front();
    const std::string close = closestOf(missing, namesOf(ports));
    return close.empty() ? nullptr : node.part(close);
}

void reportPort(const ModelNode& node, const char* missing, const std::string& what, RuleReporter& reporter)
{
    const ModelPart* const meant = meantPort(node, missing);
    const std::string text = what + named(node.name) + " has no port " + named(missing);
    if (meant == nullptr || node.base != nullptr) {
        reporter.report(*node.element, text + ", the only one that sizes are taken from; expected such a port");
    } else {
        reporter.report(*meant->element, "name",
                        text + ", the only one that sizes are taken from; expected that name for " +
                            named(meant->name) + ", or another port");
    }
}

// Nodes of a kind that connections of graphs name.
std::vector<const ModelNode*> connectedNodes(const DescriptorModel& model, const char* kind)
{
    NodeSet connected;
    for (const ModelGraph& graph : model.graphs()) connected.insert(graph.nodes().begin(), graph.nodes().end());
    std::vector<const ModelNode*> nodes = usableNodes(model);
    nodes.erase(std::remove_if(nodes.begin(), nodes.end(),
                               [&](const ModelNode* node) {
                                   return node->kind != kind || connected.count(node) == 0 || !hasFittingType(*node);
                               }),
                nodes.end());
    return nodes;
}

// ---- source-port

void checkSourcePorts(const DescriptorModel& model, RuleReporter& reporter)
{
    const ShadowedItems shadowed(model);
    for (const ModelNode* const source : connectedNodes(model, "source")) {
        const ModelPart* const port = source->part(kSourcePort);
        if ((port != nullptr && port->kind == "port") || shadowed.hasPart(*source, {"port"})) continue;
        reportPort(*source, kSourcePort, "source ", reporter);
    }
}

// ---- capture-part

// Back ends from which the size of what a sensor or test pattern sends is taken. Frames from memory come without them.
NodeSet measuredBackEnds(const DescriptorModel& model)
{
    NodeSet nodes;
    for (const ModelGraph& graph : model.graphs()) {
        for (const ModelConnection& connection : graph.connections) {
            const ModelNode* const source = connection.source.node;
            const ModelNode* const sink = connection.sink.node;
            const bool isCapture = source != nullptr && source->kind == "source" &&
                                   source->name.find("buffer_src") == std::string::npos &&
                                   connection.source.portName == kSourcePort;
            if (isCapture && sink != nullptr && sink->kind == "hw" && sink->isWhole()) nodes.insert(sink);
        }
    }
    return nodes;
}

bool hasFormatter(const ModelNode& backEnd)
{
    constexpr const char* formatters[] = {"zmt_pixelformatter", "stream2mmio"};
    return std::any_of(std::begin(formatters), std::end(formatters), [&backEnd](const char* name) {
        const ModelPart* const formatter = backEnd.part(name);
        return formatter != nullptr && childFiled(*formatter->element, "input") != nullptr;
    });
}

void checkBackEnds(const DescriptorModel& model, RuleReporter& reporter)
{
    const ShadowedItems shadowed(model);
    const NodeSet measured = measuredBackEnds(model);
    const std::string formatter = isGeneration5(model) ? "stream2mmio" : "zmt_pixelformatter";
    for (const ModelNode* const backEnd : usableNodes(model)) {
        if (measured.count(backEnd) == 0) continue;
        const ModelPart* const output = backEnd->part(kBackEndPort);
        if (output == nullptr && !shadowed.hasPart(*backEnd, {"port"}))
            reportPort(*backEnd, kBackEndPort, "capture back end ", reporter);
        if (hasFormatter(*backEnd)) continue;
        reporter.report(*backEnd->element,
                        "capture back end " + named(backEnd->name) +
                            " has no formatter with an input, so that 0x0 counts for what arrives at "
                            "it; expected <" +
                            formatter + "><input .../></" + formatter + "> in it");
    }
}

} // namespace

std::vector<Rule> captureRules()
{
    return {
        {"source-port",
         RuleSeverity::Error,
         "a source has no port named port_0",
         "The library takes the size of what a source delivers from its port named port_0, and finds the capture back "
         "end behind a sensor through the connection of that port. Without it no history of sizes can be worked out "
         "for "
         "any graph with the source. Further ports may have any name:\n"
         "    <source name=\"sensor\"><port name=\"port_0\" id=\"0\" direction=\"1\"/></source>",
         {"connection-end"},
         DescriptorRule(checkSourcePorts)},
        {"capture-part",
         RuleSeverity::Error,
         "a capture back end lacks its formatter, or its port named output",
         "Behind port_0 of a sensor or test pattern generator the library looks for two parts of the back end by name: "
         "the input of its zmt_pixelformatter (stream2mmio in generation 5) tells what arrives and which crop is made, "
         "the port named output what leaves it. Without the formatter all sizes start at 0x0, without the port the "
         "analysis ends. Back ends behind other ports need neither:\n"
         "    <hw name=\"csi_be\"><zmt_pixelformatter><input left=\"0\" top=\"0\" right=\"0\" bottom=\"0\"/>"
         "</zmt_pixelformatter> ... </hw>",
         {"unknown-element", "connection-end"},
         DescriptorRule(checkBackEnds)},
    };
}

} // namespace NuxoTool
