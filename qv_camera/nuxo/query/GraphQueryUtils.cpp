// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/PortReading.h>
#include <nuxo/query/GraphQueryUtils.h>
#include <nuxo/query/GraphEditing.h>
#include <nuxo/tree/TreeAccess.h>
#include <nuxo/tree/TypeNames.h>

#include <memory>
#include <new>
#include <string>
#include <string_view>

namespace NUXO {

namespace {

constexpr int32_t kDisabled = 0;

// Whether the port takes part: pixel ports that are neither private nor disabled already.
bool needsPeer(const GraphConfigNode& port)
{
    const std::string* const type = findText(port, NUXO_KEY_TYPE);
    if (type == nullptr || *type != kTypePort) return false;
    const std::string* const contentType = findText(port, NUXO_KEY_CONTENT_TYPE);
    if (contentType != nullptr && *contentType != kPixelData) return false;
    int32_t isPrivate = 0;
    int32_t enabled = 1;
    findInteger(port, NUXO_KEY_PRIVATE, isPrivate);
    findInteger(port, NUXO_KEY_ENABLED, enabled);
    return isPrivate == 0 && enabled != kDisabled;
}

// The name that a port is filed under in its node.
const char* nameOfKey(uint32_t key, KeyCache* keys)
{
    return keys != nullptr ? keys->nameOf(key) : ItemUID::key2str(key);
}

void disableIfUnused(GraphConfigNode& port, uint32_t key, KeyCache* keys)
{
    if (!needsPeer(port)) return;
    IGraphConfig* peer = nullptr;
    if (resolvePeer(&port, &peer, keys) != StatusOk) {
        NUXO_WARN("port %s has no peer, disabling it.", nameOfKey(key, keys));
        switchOff(port);
        return;
    }
    int enabled = 1;
    static_cast<void>(peer->getValue(NUXO_KEY_ENABLED, enabled)); // absent: enabled
    if (enabled != kDisabled) return;
    NUXO_WARN("peer disabled, disabling port %s", nameOfKey(key, keys));
    switchOff(port);
}

} // namespace

void switchOff(GraphConfigNode& node)
{
    GraphConfigItem* const item = findItem(node, NUXO_KEY_ENABLED);
    if (item == nullptr) {
        TreeAccess::adoptItem(node, std::make_unique<GraphConfigIntAttribute>(kDisabled), NUXO_KEY_ENABLED, {});
        return;
    }
    if (item->setValue(kDisabled) == StatusOk) setPositionOf(node, NUXO_KEY_ENABLED, {});
}

void switchOffUnusedPorts(GraphConfigNode& root, KeyCache* keys)
{
    NUXO_DEBUG("disableUnusedPorts");
    forEachChild(root, [keys](const GraphConfigNode& node, uint32_t) {
        forEachChild(node, [keys](GraphConfigNode& port, uint32_t key) {
            disableIfUnused(port, key, keys);
            return true;
        });
        return true;
    });
    NUXO_DEBUG("disableUnusedPorts done!");
}

GraphConfigNode* findPortPeer(const GraphConfigNode& port, KeyCache* keys)
{
    const std::string* const peer = findText(port, NUXO_KEY_PEER);
    if (peer == nullptr) return nullptr;
    const auto keyOf = [keys](std::string_view name) {
        return keys != nullptr ? keys->keyOf(name) : ItemUID::str2key(std::string(name));
    };
    const std::string_view text = *peer;
    const size_t colon = text.find(':');
    GraphConfigNode* const node = findChild(*port.getRootNode(), keyOf(text.substr(0, colon)));
    if (node == nullptr || colon == std::string_view::npos) return node;
    return findChild(*node, keyOf(text.substr(colon + 1)));
}

GraphConfigNode* GraphQueryUtils::getPortPeer(GraphConfigNode* port)
{
    if (port == nullptr) return nullptr;
    return unlessNoMemory<GraphConfigNode*>(nullptr, [port] { return findPortPeer(*port); });
}

int GraphQueryUtils::disableNode(GraphConfigNode* node)
{
    return unlessNoMemory<int>(StatusOk, [node]() -> int {
        if (node != nullptr) switchOff(*node);
        return StatusOk;
    });
}

void GraphQueryUtils::disableUnusedPorts(GraphConfigNode* root)
{
    if (root == nullptr) {
        NUXO_DEBUG("disableUnusedPorts");
        NUXO_DEBUG("disableUnusedPorts done!");
        return;
    }
    static_cast<void>(unlessNoMemory<bool>(false, [root] {
        switchOffUnusedPorts(*root);
        return true;
    }));
}

} // namespace NUXO
