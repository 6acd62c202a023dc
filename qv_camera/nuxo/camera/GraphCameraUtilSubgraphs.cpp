// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/camera/PortReading.h>
#include <nuxo/tree/NodeReading.h>
#include <nuxo/tree/TypeNames.h>

#include <set>
#include <string>

namespace NUXO {

namespace {

using Ports = std::vector<IGraphConfig*>;

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

// Collects what leads from sources to somewhere else, for a subgraph that has no outputs of its own.
class SourcePorts {
public:
    /// @param once  whether ports count once, however many ports of sources lead to their node
    SourcePorts(const Subgraph& subgraph, bool once, Ports& ports) : mSubgraph(subgraph), mOnce(once), mPorts(ports) {}

    void addFrom(const IGraphConfig& source)
    {
        forEachOfType(&source, kTypePort, [this](IGraphConfig& port) {
            add(port);
            return true;
        });
    }

private:
    void add(IGraphConfig& port)
    {
        const IGraphConfig* const peer = peerOf(&port);
        if (peer == nullptr) {
            NUXO_DEBUG("Source port %s has no peer found. Added to list of subgraph output ports",
                       nameOrFiledName(port).c_str());
            mPorts.push_back(&port);
            return;
        }
        const IGraphConfig* const peerNode = peer->getAncestor();
        if (peerNode == nullptr) return;
        if (!peerNode->isType(mSubgraph.nodeType)) {
            addOutputsOf(*peerNode);
            return;
        }
        int peerValue = 0;
        if (!fetch(*peerNode, mSubgraph.key, peerValue)) {
            NUXO_WARN("PG %s does not have stream id or exec ctx- FIX it!", nameOrFiledName(*peerNode).c_str());
        } else if (peerValue != mSubgraph.value) {
            NUXO_DEBUG("Source port %s crosses Subgraph boundary (%d)->(%d)", nameOrFiledName(port).c_str(),
                       mSubgraph.value, peerValue);
            mPorts.push_back(&port);
        }
    }

    void addOutputsOf(const IGraphConfig& node)
    {
        if (mOnce && !mNodes.insert(&node).second) return;
        forEachPort(node, kOutput, [this](IGraphConfig& output) { mPorts.push_back(&output); });
    }

    const Subgraph& mSubgraph;
    const bool mOnce;
    Ports& mPorts;
    std::set<const IGraphConfig*> mNodes; // only looked up
};

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

int inputPortOf(const Subgraph& subgraph, const std::vector<IGraphConfig*>& nodes, IGraphConfig** port)
{
    Ports ports;
    for (const IGraphConfig* const node : nodes) addLeavingPorts(*node, kInput, subgraph, ports);
    return ports.empty() ? static_cast<int>(StatusBadArgument) : firstWithPeer(ports, port);
}

int outputPortsOf(const Subgraph& subgraph, const std::vector<IGraphConfig*>& nodes,
                  const std::vector<IGraphConfig*>& sources, std::vector<IGraphConfig*>& ports)
{
    ports.clear();
    for (const IGraphConfig* const node : nodes) addLeavingPorts(*node, kOutput, subgraph, ports);
    if (!ports.empty()) return StatusOk;
    SourcePorts sourcePorts(subgraph, true, ports);
    for (const IGraphConfig* const source : sources) sourcePorts.addFrom(*source);
    return ports.empty() ? StatusBadArgument : StatusOk;
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
        if (collectPorts(subgraph, kOutput, graph, ports) == StatusOk) return StatusOk;
        SourcePorts sourcePorts(subgraph, false, ports);
        forEachOfType(&graph, kTypeSource, [&sourcePorts](const IGraphConfig& source) {
            sourcePorts.addFrom(source);
            return true;
        });
        return ports.empty() ? StatusBadArgument : StatusOk;
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
