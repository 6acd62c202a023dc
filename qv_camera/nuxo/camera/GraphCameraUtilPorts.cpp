// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/camera/PortReading.h>
#include <nuxo/tree/NodeReading.h>
#include <nuxo/tree/TreeAccess.h>
#include <nuxo/tree/TypeNames.h>

#include <algorithm>
#include <array>
#include <string>

namespace NUXO {

namespace {

constexpr const char* kNoName = "NA";

// Kinds whose own name says little without that of the node they belong to.
bool showsFullName(const std::string& type)
{
    constexpr std::array<uint32_t, 4> kKinds = {NUXO_KEY_DEMUX, NUXO_KEY_KERNEL, NUXO_KEY_MUX, NUXO_KEY_PORT};
    return std::find(kKinds.begin(), kKinds.end(), ItemUID::str2key(type)) != kKinds.end();
}

} // namespace

std::string fullName(const IGraphConfig& node)
{
    return textOr(node.getAncestor(), NUXO_KEY_NAME, kNoName) + ":" + textOr(&node, NUXO_KEY_NAME, kNoName);
}

int getPgAndPortNames(const IGraphConfig& port, std::string& pgName, std::string& portName)
{
    return unlessNoMemory<int>(StatusMissingData, [&] {
        const IGraphConfig* const pg = port.getAncestor();
        const bool hasPgName = pg == nullptr || fetch(*pg, NUXO_KEY_NAME, pgName);
        const bool hasPortName = fetch(port, NUXO_KEY_NAME, portName);
        return hasPgName && hasPortName ? StatusOk : StatusMissingData;
    });
}

int resolvePeer(const IGraphConfig* port, IGraphConfig** peer, KeyCache* keys)
{
    if (port == nullptr || peer == nullptr) {
        NUXO_ERROR("Invalid Node, cannot get the peer port");
        return StatusBadArgument;
    }
    if (integerOr(port, NUXO_KEY_ENABLED, 1) == 0 || integerOr(port, NUXO_KEY_PRIVATE, 0) != 0) return StatusNotFound;

    const IGraphConfig* const root = port->getRoot();
    if (root == nullptr) {
        NUXO_ERROR("Failed to get root");
        return StatusMissingObject;
    }
    std::string name;
    if (!fetch(*port, NUXO_KEY_PEER, name)) {
        NUXO_DEBUG("Couldn't find peer value for %s", GraphCameraUtil::print(port).c_str());
        return StatusBadArgument;
    }
    *peer = descendantAt(*root, name, keys);
    if (*peer == nullptr) {
        NUXO_ERROR("Failed to find peer by name %s", name.c_str());
        return StatusBadArgument;
    }
    return StatusOk;
}

IGraphConfig* peerOf(const IGraphConfig* port)
{
    IGraphConfig* peer = nullptr;
    return resolvePeer(port, &peer) == StatusOk ? peer : nullptr;
}

int GraphCameraUtil::portGetPeer(const IGraphConfig* port, IGraphConfig** peer)
{
    return unlessNoMemory<int>(StatusNoMemory, [&] { return resolvePeer(port, peer); });
}

IGraphConfig* GraphCameraUtil::nodeGetPortById(const IGraphConfig* node, int id)
{
    if (node == nullptr) {
        NUXO_ERROR("Couldn't get port. Node is NULL");
        return nullptr;
    }
    IGraphConfig* found = nullptr;
    forEachOfType(node, kTypePort, [id, &found](IGraphConfig& port) {
        int portId = 0;
        if (fetch(port, NUXO_KEY_ID, portId) && portId == id) found = &port;
        return found == nullptr;
    });
    return found;
}

std::string GraphCameraUtil::print(const IGraphConfig* node)
{
    return unlessNoMemory<std::string>({}, [node] {
        const std::string type = textOr(node, NUXO_KEY_TYPE, "NODE");
        std::string name = kNoName;
        if (node != nullptr) name = showsFullName(type) ? fullName(*node) : filedName(*node);
        return type + "[" + name + "]";
    });
}

std::string GraphCameraUtil::getFullName(const IGraphConfig& node)
{
    return unlessNoMemory<std::string>({}, [&node] { return fullName(node); });
}

std::string describeNode(const IGraphConfig* node)
{
    return GraphCameraUtil::print(node);
}

std::string GraphCameraUtil::portGetContentType(const IGraphConfig* port)
{
    return unlessNoMemory<std::string>({}, [port] { return textOr(port, NUXO_KEY_CONTENT_TYPE, kPixelData); });
}

int GraphCameraUtil::portGetDirection(const IGraphConfig* port)
{
    int direction = 0;
    if (port == nullptr || !fetch(*port, NUXO_KEY_DIRECTION, direction)) {
        NUXO_ERROR("Failed to retrieve port direction, default to input");
        return 0;
    }
    return direction;
}

bool GraphCameraUtil::portIsVirtual(const IGraphConfig* port)
{
    return unlessNoMemory<bool>(false, [port] {
        std::string type;
        if (port == nullptr) return false;
        if (!fetch(*port, NUXO_KEY_TYPE, type)) {
            // Readers of the log know it with these words, direction's default included.
            NUXO_ERROR("Failed to retrieve port(%s) type, default to input", print(port).c_str());
            return false;
        }
        return type == kTypeSink;
    });
}

} // namespace NUXO
