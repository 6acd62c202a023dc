// SPDX-License-Identifier: Apache-2.0
#include "support/CameraRules.h"
#include "support/Fuzzing.h"
#include "support/PortFacts.h"

#include <nuxo/nuxo.h>

#include <algorithm>

namespace fuzzing {

namespace {

using NUXO::GraphCameraUtil;
using NUXO::IGraphConfig;
using Ports = std::vector<IGraphConfig*>;

// Whether a connection to this peer leaves the subgraph.
bool leads(const IGraphConfig* peer, int direction, const Request& subgraph)
{
    if (peer == nullptr) return true;
    if (direction == 1 && peer->isType(NUXO_KEY_SINK)) return true;
    const IGraphConfig* const peerNode = peer->getAncestor();
    if (peerNode == nullptr || !peerNode->isType(subgraph.nodeType)) return true;
    return integerOf(peerNode, subgraph.key).value_or(subgraph.value) != subgraph.value;
}

Ports expectPorts(const IGraphConfig& graph, const Request& subgraph, int direction)
{
    Ports ports;
    for (const IGraphConfig* const node : childrenOfType(&graph, subgraph.nodeType)) {
        if (integerOf(node, subgraph.key) != subgraph.value) continue;
        for (IGraphConfig* const port : childrenOfType(node, NUXO_KEY_PORT)) {
            const bool isWanted = directionOf(port) == direction && leads(peerOf(port).node, direction, subgraph);
            if (isWanted) ports.push_back(port);
        }
    }
    return ports;
}

void addSourcePort(IGraphConfig* port, const Request& subgraph, Ports& ports)
{
    const IGraphConfig* const peer = peerOf(port).node;
    const IGraphConfig* const peerNode = ancestorOf(peer);
    if (peer == nullptr) {
        ports.push_back(port);
    } else if (peerNode == nullptr) {
        return;
    } else if (peerNode->isType(subgraph.nodeType)) {
        if (integerOf(peerNode, subgraph.key).value_or(subgraph.value) != subgraph.value) ports.push_back(port);
    } else {
        const Ports all = childrenOfType(peerNode, NUXO_KEY_PORT);
        std::copy_if(all.begin(), all.end(), std::back_inserter(ports),
                     [](const IGraphConfig* output) { return directionOf(output) == 1; });
    }
}

Ports expectOutputs(const IGraphConfig& graph, const Request& subgraph)
{
    Ports ports = expectPorts(graph, subgraph, 1);
    if (!ports.empty()) return ports;
    for (const IGraphConfig* const source : childrenOfType(&graph, NUXO_KEY_SOURCE)) {
        for (IGraphConfig* const port : childrenOfType(source, NUXO_KEY_PORT)) addSourcePort(port, subgraph, ports);
    }
    return ports;
}

// The status that goes with the ports, which were cleared before.
void requirePorts(int status, const Ports& ports, const Ports& expected)
{
    require(ports == expected, "the boundary of a subgraph is what leads out of it");
    require(status == (expected.empty() ? StatusBadArgument : StatusOk), "a subgraph has a boundary or none");
}

void checkInputPort(const IGraphConfig& graph, const Request& subgraph)
{
    IGraphConfig* const before = const_cast<IGraphConfig*>(&graph);
    IGraphConfig* expected = before;
    int expectedStatus = StatusBadArgument;
    for (IGraphConfig* const port : expectPorts(graph, subgraph, 0)) {
        expectedStatus = peerOf(port).status;
        if (expectedStatus != StatusOk) continue;
        expected = port;
        break;
    }
    IGraphConfig* found = before;
    require(GraphCameraUtil::getInputPort(subgraph.key, subgraph.value, &graph, &found, subgraph.nodeType) ==
                expectedStatus,
            "an input has a peer, or the last status tells why not");
    require(found == expected, "the input is the first with a peer");
}

void checkNulls(const IGraphConfig* graph, const Request& subgraph)
{
    IGraphConfig* port = nullptr;
    const auto ask = [&subgraph](const IGraphConfig* node, IGraphConfig** out) {
        return GraphCameraUtil::getInputPort(subgraph.key, subgraph.value, node, out, subgraph.nodeType);
    };
    require(ask(nullptr, &port) == StatusBadArgument && ask(graph, nullptr) == StatusBadArgument,
            "an input needs a graph and a place");
}

} // namespace

void checkSubgraph(const IGraphConfig* graph, const Request& request)
{
    checkNulls(graph, request);
    if (graph == nullptr) return;
    const auto& [key, value, nodeType, text] = request;
    const Ports before = {nullptr};
    for (const int direction : {0, 1, value}) {
        Ports ports = before;
        const int status = GraphCameraUtil::getSubgraphPorts(key, value, direction, *graph, ports, nodeType);
        requirePorts(status, ports, expectPorts(*graph, request, direction));
    }
    Ports inputs = before;
    const int inputStatus = GraphCameraUtil::getInputPorts(key, value, *graph, inputs, nodeType);
    requirePorts(inputStatus, inputs, expectPorts(*graph, request, 0));
    Ports outputs = before;
    const int outputStatus = GraphCameraUtil::getOutputPorts(key, value, *graph, outputs, nodeType);
    requirePorts(outputStatus, outputs, expectOutputs(*graph, request));
    checkInputPort(*graph, request);
}

} // namespace fuzzing
