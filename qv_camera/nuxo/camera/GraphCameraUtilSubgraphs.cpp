// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/camera/PortReading.h>
#include <nuxo/tree/NodeReading.h>
#include <nuxo/tree/TypeNames.h>

#include <string>

namespace NUXO {

namespace {

using Ports = std::vector<IGraphConfig*>;

// The nodes of one type whose integer attribute has one value.
struct Subgraph {
    uint32_t key;
    int value;
    uint32_t nodeType;
};

template <typename Visit> void forEachPort(const IGraphConfig& node, int direction, Visit visit)
{
    forEachOfType(&node, kTypePort, [direction, &visit](IGraphConfig& port) {
        if (GraphCameraUtil::portGetDirection(&port) == direction) visit(port);
        return true;
    });
}

bool leavesSubgraph(const IGraphConfig& port, int direction, const Subgraph& subgraph)
{
    constexpr const char* function = "getSubgraphPorts";
    const IGraphConfig* const peer = peerOf(&port);
    if (peer == nullptr) {
        NUXO_DEBUG("%s: no peer found for port %s", function, nameOrFiledName(port).c_str());
        return true;
    }
    NUXO_DEBUG("%s: peer for %s is %s", function, nameOrFiledName(port).c_str(), nameOrFiledName(*peer).c_str());
    if (direction == kOutput && peer->isType(NUXO_KEY_SINK)) return true;
    const IGraphConfig* const peerNode = peer->getAncestor();
    if (peerNode == nullptr || !peerNode->isType(subgraph.nodeType)) return true;
    int peerValue = 0;
    if (!fetch(*peerNode, subgraph.key, peerValue)) {
        NUXO_DEBUG("%s: no %s for peer %s", function, ItemUID::key2str(subgraph.key),
                   GraphCameraUtil::print(peer).c_str());
        return false;
    }
    return peerValue != subgraph.value;
}

// Of one node of the subgraph.
void addLeavingPorts(const IGraphConfig& node, int direction, const Subgraph& subgraph, Ports& ports)
{
    forEachPort(node, direction, [&](IGraphConfig& port) {
        if (leavesSubgraph(port, direction, subgraph)) ports.push_back(&port);
    });
}

int collectPorts(const Subgraph& subgraph, int direction, const IGraphConfig& graph, Ports& ports)
{
    ports.clear();
    forEachOfType(&graph, typeText(subgraph.nodeType), [&](const IGraphConfig& node) {
        int value = 0;
        if (fetch(node, subgraph.key, value) && value == subgraph.value)
            addLeavingPorts(node, direction, subgraph, ports);
        return true;
    });
    return ports.empty() ? StatusBadArgument : StatusOk;
}

// What leads from a source's port to somewhere else.
void addSourcePort(IGraphConfig& port, const Subgraph& subgraph, Ports& ports)
{
    const IGraphConfig* const peer = peerOf(&port);
    if (peer == nullptr) {
        NUXO_DEBUG("Source port %s has no peer found. Added to list of subgraph output ports",
                   nameOrFiledName(port).c_str());
        ports.push_back(&port);
        return;
    }
    const IGraphConfig* const peerNode = peer->getAncestor();
    if (peerNode == nullptr) return;
    if (!peerNode->isType(subgraph.nodeType)) {
        forEachPort(*peerNode, kOutput, [&ports](IGraphConfig& output) { ports.push_back(&output); });
        return;
    }
    int peerValue = 0;
    if (!fetch(*peerNode, subgraph.key, peerValue)) {
        NUXO_WARN("PG %s does not have stream id or exec ctx- FIX it!", nameOrFiledName(*peerNode).c_str());
    } else if (peerValue != subgraph.value) {
        NUXO_DEBUG("Source port %s crosses Subgraph boundary (%d)->(%d)", nameOrFiledName(port).c_str(), subgraph.value,
                   peerValue);
        ports.push_back(&port);
    }
}

// For a subgraph that has no outputs of its own.
int addSourcePorts(const Subgraph& subgraph, const IGraphConfig& graph, Ports& ports)
{
    forEachOfType(&graph, kTypeSource, [&](const IGraphConfig& source) {
        forEachOfType(&source, kTypePort, [&](IGraphConfig& port) {
            addSourcePort(port, subgraph, ports);
            return true;
        });
        return true;
    });
    return ports.empty() ? StatusBadArgument : StatusOk;
}

// The first of the ports that is connected; else the status of the last try.
int firstWithPeer(const Ports& ports, IGraphConfig** port)
{
    int status = StatusOk;
    for (IGraphConfig* const candidate : ports) {
        IGraphConfig* peer = nullptr;
        status = resolvePeer(candidate, &peer);
        if (status != StatusOk) continue;
        *port = candidate;
        break;
    }
    return status;
}

} // namespace

int inputPortOf(const std::vector<IGraphConfig*>& nodes, uint32_t key, int value, IGraphConfig** port,
                uint32_t nodeType)
{
    Ports ports;
    for (const IGraphConfig* const node : nodes) addLeavingPorts(*node, kInput, {key, value, nodeType}, ports);
    return ports.empty() ? static_cast<int>(StatusBadArgument) : firstWithPeer(ports, port);
}

int outputPortsOf(const std::vector<IGraphConfig*>& nodes, uint32_t key, int value, const IGraphConfig& graph,
                  std::vector<IGraphConfig*>& ports, uint32_t nodeType)
{
    const Subgraph subgraph = {key, value, nodeType};
    ports.clear();
    for (const IGraphConfig* const node : nodes) addLeavingPorts(*node, kOutput, subgraph, ports);
    return ports.empty() ? addSourcePorts(subgraph, graph, ports) : static_cast<int>(StatusOk);
}

int GraphCameraUtil::getSubgraphPorts(unsigned int key, int value, int direction, const IGraphConfig& graph,
                                      std::vector<IGraphConfig*>& ports, unsigned int nodeType)
{
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        return collectPorts({key, value, nodeType}, direction, graph, ports);
    });
}

int GraphCameraUtil::getInputPorts(unsigned int key, int value, const IGraphConfig& graph,
                                   std::vector<IGraphConfig*>& ports, unsigned int nodeType)
{
    return getSubgraphPorts(key, value, kInput, graph, ports, nodeType);
}

int GraphCameraUtil::getOutputPorts(unsigned int key, int value, const IGraphConfig& graph,
                                    std::vector<IGraphConfig*>& ports, unsigned int nodeType)
{
    return unlessNoMemory<int>(StatusNoMemory, [&]() -> int {
        const Subgraph subgraph = {key, value, nodeType};
        const int status = collectPorts(subgraph, kOutput, graph, ports);
        return status == StatusOk ? status : addSourcePorts(subgraph, graph, ports);
    });
}

int GraphCameraUtil::getInputPort(unsigned int key, int value, const IGraphConfig* graph, IGraphConfig** port,
                                  unsigned int nodeType)
{
    if (graph == nullptr || port == nullptr) {
        NUXO_ERROR("NULL pointer given");
        return StatusBadArgument;
    }
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        Ports ports;
        const int status = collectPorts({key, value, nodeType}, kInput, *graph, ports);
        return status == StatusOk ? firstWithPeer(ports, port) : status;
    });
}

} // namespace NUXO
