// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/camera/PortPeer.h>
#include <nuxo/tree/PathReader.h>
#include <nuxo/tree/TreeAccess.h>

#include <algorithm>
#include <array>
#include <string>

namespace NUXO {

namespace {

constexpr const char* kNoName = "NA";

std::string attributeOr(const IGraphConfig* node, uint32_t key, const char* fallback)
{
    std::string text;
    return node != nullptr && node->getValue(key, text) == StatusOk ? text : fallback;
}

// Kinds whose own name says little without that of the node they belong to.
bool showsFullName(const std::string& type)
{
    constexpr std::array<uint32_t, 4> kKinds = {NUXO_KEY_DEMUX, NUXO_KEY_KERNEL, NUXO_KEY_MUX, NUXO_KEY_PORT};
    return std::find(kKinds.begin(), kKinds.end(), ItemUID::str2key(type)) != kKinds.end();
}

} // namespace

int resolvePeer(const IGraphConfig* port, IGraphConfig** peer, KeyCache* keys)
{
    if (port == nullptr || peer == nullptr) {
        NUXO_ERROR("Invalid Node, cannot get the peer port");
        return StatusBadArgument;
    }
    int enabled = 1;
    int isPrivate = 0;
    static_cast<void>(port->getValue(NUXO_KEY_ENABLED, enabled));   // absent: enabled
    static_cast<void>(port->getValue(NUXO_KEY_PRIVATE, isPrivate)); // absent: not private
    if (enabled == 0 || isPrivate != 0) return StatusNotFound;

    const IGraphConfig* const root = port->getRoot();
    if (root == nullptr) {
        NUXO_ERROR("Failed to get root");
        return StatusMissingObject;
    }
    std::string name;
    const int32_t status = port->getValue(NUXO_KEY_PEER, name);
    if (status == StatusNoMemory) return status;
    if (status != StatusOk) {
        NUXO_DEBUG("Couldn't find peer value for %s", GraphCameraUtil::print(port).c_str());
        return StatusBadArgument;
    }
    const GraphConfigNode* const rootNode = asNode(root);
    *peer = rootNode != nullptr ? followPath(*rootNode, name, keys) : root->getDescendant(ItemUID(name));
    if (*peer == nullptr) {
        NUXO_ERROR("Failed to find peer by name %s", name.c_str());
        return StatusBadArgument;
    }
    return StatusOk;
}

int GraphCameraUtil::portGetPeer(const IGraphConfig* port, IGraphConfig** peer)
{
    return unlessNoMemory<int>(StatusNoMemory, [&] { return resolvePeer(port, peer); });
}

std::string GraphCameraUtil::print(const IGraphConfig* node)
{
    return unlessNoMemory<std::string>({}, [node] {
        const std::string type = attributeOr(node, NUXO_KEY_TYPE, "NODE");
        std::string name = kNoName;
        if (node != nullptr) name = showsFullName(type) ? getFullName(*node) : node->getName();
        return type + "[" + name + "]";
    });
}

std::string GraphCameraUtil::getFullName(const IGraphConfig& node)
{
    return unlessNoMemory<std::string>({}, [&node] {
        return attributeOr(node.getAncestor(), NUXO_KEY_NAME, kNoName) + ":" +
               attributeOr(&node, NUXO_KEY_NAME, kNoName);
    });
}

std::string describeNode(const IGraphConfig* node)
{
    return GraphCameraUtil::print(node);
}

std::string GraphCameraUtil::portGetContentType(const IGraphConfig* port)
{
    return unlessNoMemory<std::string>({}, [port] { return attributeOr(port, NUXO_KEY_CONTENT_TYPE, kPixelData); });
}

} // namespace NUXO
