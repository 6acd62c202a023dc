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

// A port on one side of a connection.
struct Crossing {
    int context;          // of the port's program group
    std::string fullName; // of the port
    std::string peerName; // as the port spells it
    bool isEdge;
    bool carriesPixels;
};

struct CrossingLists {
    std::vector<std::pair<std::string, std::string>>& connections;
    std::vector<std::string>& inputPeers;
    std::vector<std::string>& outputPeers;
};

int addInput(const Crossing& crossing, const IGraphConfig& peer, const CrossingLists& lists)
{
    const IGraphConfig* const peerNode = peer.getAncestor();
    if (peerNode == nullptr) {
        NUXO_ERROR("ancestor of %s is null", GraphCameraUtil::print(&peer).c_str());
        return StatusBadState;
    }
    int peerContext = kNoContext;
    if (!fetch(*peerNode, NUXO_KEY_EXEC_CTX_ID, peerContext)) {
        NUXO_DEBUG("No Execution Contex for ancestor of %s", GraphCameraUtil::print(&peer).c_str());
    }
    if (peerContext == crossing.context) return StatusOk;
    lists.connections.emplace_back(crossing.peerName, crossing.fullName);
    const bool isOrigin =
        crossing.carriesPixels && (peerNode->isType(NUXO_KEY_SOURCE) || peerNode->isType(NUXO_KEY_HW));
    if (isOrigin) lists.inputPeers.push_back(crossing.peerName);
    return StatusOk;
}

void addOutput(const Crossing& crossing, const IGraphConfig& peer, const CrossingLists& lists)
{
    if (!crossing.isEdge || !peer.isType(NUXO_KEY_SINK)) return;
    lists.connections.emplace_back(crossing.fullName, crossing.peerName);
    if (crossing.carriesPixels) lists.outputPeers.push_back(crossing.peerName);
}

int addPort(const IGraphConfig& port, int context, const std::string& groupName, const CrossingLists& lists)
{
    const IGraphConfig* const peer = peerOf(&port);
    if (peer == nullptr) {
        NUXO_DEBUG("%s: no peer", "getExecCtxConnectionPorts");
        return StatusOk;
    }
    const Crossing crossing = {context, groupName + ":" + textOr(&port, NUXO_KEY_NAME, ""),
                               textOr(&port, NUXO_KEY_PEER, ""), isEdge(&port),
                               textOr(&port, NUXO_KEY_CONTENT_TYPE, kPixelData) == kPixelData};
    switch (GraphCameraUtil::portGetDirection(&port)) {
    case kInput: return addInput(crossing, *peer, lists);
    case kOutput: addOutput(crossing, *peer, lists); return StatusOk;
    default: return StatusOk;
    }
}

int addGroup(const IGraphConfig& group, const CrossingLists& lists)
{
    const int context = integerOr(&group, NUXO_KEY_EXEC_CTX_ID, kNoContext);
    const std::string name = textOr(&group, NUXO_KEY_NAME, "");
    int status = StatusOk;
    forEachOfType(&group, kTypePort, [&](const IGraphConfig& port) {
        status = addPort(port, context, name, lists);
        return status == StatusOk;
    });
    return status;
}

} // namespace

int GraphCameraUtil::getExecCtxConnectionPorts(const IGraphConfig* graph,
                                               std::vector<std::pair<std::string, std::string>>& connections,
                                               std::vector<std::string>& inputPeers,
                                               std::vector<std::string>& outputPeers)
{
    if (graph == nullptr) {
        NUXO_ERROR("NULL pointer given");
        return StatusBadArgument;
    }
    return unlessNoMemory<int>(StatusNoMemory, [&]() -> int {
        int status = StatusOk;
        forEachOfType(graph, kTypeProgramGroup, [&](const IGraphConfig& group) {
            status = addGroup(group, {connections, inputPeers, outputPeers});
            return status == StatusOk;
        });
        if (status != StatusOk) return status;
        return connections.empty() ? StatusBadArgument : StatusOk;
    });
}

} // namespace NUXO
