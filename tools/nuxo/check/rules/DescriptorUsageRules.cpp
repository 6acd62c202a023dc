// SPDX-License-Identifier: Apache-2.0
// What is declared and never used, and numbers that are given twice.
#include "check/rules/DescriptorRuleParts.h"
#include "Text.h"
#include "check/rules/SettingsPlaces.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace NuxoTool {

namespace {

using NodeSet = std::set<const ModelNode*>;

NodeSet connectedNodes(const DescriptorModel& model)
{
    NodeSet nodes;
    for (const ModelGraph& graph : model.graphs()) {
        for (const ModelNode* const node : graph.nodes()) nodes.insert(node);
    }
    return nodes;
}

// ---- unconnected-port

using NodeAndPort = std::pair<const ModelNode*, std::string>;

std::set<NodeAndPort> connectedPorts(const DescriptorModel& model)
{
    std::set<NodeAndPort> ports;
    for (const ModelGraph& graph : model.graphs()) {
        for (const ModelConnection& connection : graph.connections) {
            for (const ModelEnd* const end : {&connection.source, &connection.sink})
                ports.emplace(end->node, end->portName);
        }
    }
    return ports;
}

std::string textOf(const ModelNode& node, const std::string& path, const char* standard)
{
    const std::optional<ModelValue> value = node.value(path);
    return value ? value->text : standard;
}

// Those that the library switches off with a warning when they have no peer.
bool needsPeer(const ModelNode& node, const std::string& port)
{
    return textOf(node, port + ":content_type", "pixel_data") == "pixel_data" &&
           textOf(node, port + ":private", "0") == "0" && textOf(node, port + ":enabled", "1") == "1";
}

void checkPorts(const DescriptorModel& model, RuleReporter& reporter)
{
    const NodeSet nodes = connectedNodes(model);
    const std::set<NodeAndPort> connected = connectedPorts(model);
    for (const ModelNode* const node : usableNodes(model)) {
        if (nodes.count(node) == 0) continue;
        std::vector<std::string> open;
        for (const ModelPart* const port : distinctParts(*node, "port")) {
            if (connected.count({node, port->name}) > 0 || !needsPeer(*node, port->name)) continue;
            open.push_back(named(port->name));
            if (node->base == nullptr)
                reporter.report(*port->element, "no graph connects port " + named(fullName(*node, port->name)) +
                                                    "; expected a connection, or enabled=\"0\"");
        }
        // Nodes made from one base node share the element of the port.
        if (node->base != nullptr && !open.empty())
            reporter.report(*node->element, "no graph connects " + listOf(open) + " of node " + named(node->name) +
                                                "; expected a connection, or a difference that sets enabled to 0");
    }
}

// ---- unused-node

// Settings may send a port that is connected to a sink to any other sink instead.
bool canRedirect(const DescriptorModel& model)
{
    const auto isDefault = [](const ModelConnection& connection) {
        return !connection.isStatic && connection.sink.portName.empty();
    };
    return std::any_of(model.graphs().begin(), model.graphs().end(), [&](const ModelGraph& graph) {
        return std::any_of(graph.connections.begin(), graph.connections.end(), isDefault);
    });
}

void checkNodes(const DescriptorModel& model, RuleReporter& reporter)
{
    if (model.graphs().empty()) return;
    NodeSet used = connectedNodes(model);
    for (const ModelNode& node : model.nodes()) {
        used.insert(model.baseOf(node));
        used.insert(model.node(node.element->value("base_node"))); // of base nodes, too, which is told of there
    }
    const bool areSinksUsed = canRedirect(model);
    for (const ModelNode& node : model.nodes()) {
        const bool isFirst = model.node(node.name) == &node;
        if (used.count(&node) > 0 || !isFirst || (node.kind == "sink" && areSinksUsed)) continue;
        reporter.report(*node.element, node.isBase ? "no node is made from base node " + named(node.name) +
                                                         "; expected a node with base_node=\"" + node.name + "\""
                                                   : "no graph connects node " + named(node.name) +
                                                         "; expected a connection from or to it");
    }
}

// ---- numbers that stand for something else already

// Tells of the second one that has a number.
class Numbers {
public:
    Numbers(RuleReporter& reporter, std::string what) : mReporter(reporter), mWhat(std::move(what)) {}

    void add(const ModelNode& node, const std::string& part, const char* attribute)
    {
        const std::string path = part.empty() ? attribute : part + ':' + attribute;
        const std::optional<int32_t> number = node.integer(path);
        if (!number) return;
        const auto [first, isNew] = mFirst.emplace(*number, Holder{&node, part, node.value(path)});
        if (isNew) return;
        const Holder& other = first->second;
        const bool isInside = other.node == &node;
        const ValuePlace place = isInside ? placeInside(node, node.value(path)) : placeOf(node, node.value(path));
        mReporter.report(*place.element, place.attribute,
                         named(fullName(node, part)) + " has " + attribute + ' ' + std::to_string(*number) + ", as " +
                             named(fullName(*other.node, other.part)) + "; expected " + mWhat);
        const ValuePlace before = isInside ? placeInside(node, other.value) : placeOf(*other.node, other.value);
        mReporter.note(*before.element, before.attribute, "the first one");
    }

private:
    struct Holder {
        const ModelNode* node;
        std::string part;
        std::optional<ModelValue> value;
    };

    RuleReporter& mReporter;
    std::string mWhat;
    std::map<int32_t, Holder> mFirst;
};

void checkPortIds(const DescriptorModel& model, RuleReporter& reporter)
{
    for (const ModelNode* const node : effectiveNodes(model)) {
        Numbers numbers(reporter, "an id for each port of the node");
        for (const ModelPart* const port : distinctParts(*node, "port")) numbers.add(*node, port->name, "id");
    }
}

void checkGroupIds(const DescriptorModel& model, RuleReporter& reporter)
{
    for (const ModelGraph& graph : model.graphs()) {
        Numbers numbers(reporter, "a pg_id for each group of a graph");
        for (const ModelNode* const node : graph.nodes()) {
            if (isGroup(*node) && node->isWhole() && !node->isBase) numbers.add(*node, "", "pg_id");
        }
    }
}

} // namespace

std::vector<Rule> usageRules()
{
    return {
        {"unconnected-port",
         RuleSeverity::Warning,
         "no graph connects a pixel port",
         "A port for pixel data that is neither private nor switched off is meant to be connected. When it is not, the "
         "library switches it off with a warning, in every graph that has its node. Connect it, or say that it is off "
         "until somebody needs it:\n"
         "    <port name=\"aux_out\" id=\"2\" direction=\"1\" enabled=\"0\"/>",
         {"unknown-element", "unknown-attribute", "connection-end", "connection-direction", "port-connected-twice",
          "base-node", "difference-target", "difference-value"},
         DescriptorRule(checkPorts)},
        {"unused-node",
         RuleSeverity::Warning,
         "a node is part of no graph",
         "Nodes become part of a graph through connections, and base nodes through the nodes that are made from them. "
         "What "
         "nothing leads to is never read; often a connection was forgotten or a name is wrong. Sinks are let pass "
         "where "
         "settings can send frames to another sink than the one that the connection names. Connect the node, or delete "
         "it.",
         {"unknown-element", "connection-end", "connection-direction", "base-node"},
         DescriptorRule(checkNodes)},
        {"duplicate-port-id",
         RuleSeverity::Error,
         "two ports of a node have one id",
         "The id of a port is part of its terminal identifier, and sink_port of a kernel names a port by it. With one "
         "id "
         "for two ports their terminals cannot be told apart, and the first port gets what belongs to the other. "
         "Number "
         "the ports of a node from 0.",
         {"difference-target", "difference-value"},
         DescriptorRule(checkPortIds)},
        {"duplicate-pg-id",
         RuleSeverity::Error,
         "two groups of a graph have one pg_id",
         "The pg_id of a program group or compute block is part of the identifiers of its stage and of all its "
         "terminals. "
         "Two groups of one graph with the same number get the same identifiers, so that clients mix them up. Groups "
         "that "
         "never stand in one graph may share a number.",
         {"difference-target", "difference-value"},
         DescriptorRule(checkGroupIds)},
    };
}

} // namespace NuxoTool
