// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/query/ConnectionBuilder.h>
#include <nuxo/tree/TreeAccess.h>

#include <memory>
#include <utility>

// Nodes of the descriptor on their way into a graph.

namespace NUXO {

namespace {

const GraphConfigNode* findBase(const GraphConfigNode& descriptorNodes, const std::string& baseName, KeyCache& keys)
{
    const char* const baseType = keys.nameOf(NUXO_KEY_BASE_NODE);
    const GraphConfigNode* found = nullptr;
    forEachChild(descriptorNodes, [&](const GraphConfigNode& child, uint32_t) {
        const std::string* const name = findText(child, NUXO_KEY_NAME);
        const bool isBase = hasText(child, NUXO_KEY_TYPE, baseType);
        if (isBase && name != nullptr && *name == baseName) found = &child;
        return found == nullptr;
    });
    return found;
}

// An attribute of a node that the receiver lacks; it keeps where its value came from.
int insertPropagated(const IGraphConfig& from, IGraphConfig& to, uint32_t key,
                     std::unique_ptr<GraphConfigItem> attribute)
{
    GraphConfigNode* const node = asNode(&to);
    if (node == nullptr) return StatusBadArgument;
    TreeAccess::adoptItem(*node, std::move(attribute), key, getSourcePosition(&from, key));
    return StatusOk;
}

// Sets an attribute that the receiver has, as far as its options allow; it takes over where the value came from.
template <typename Value>
int overwriteByKey(const IGraphConfig& from, IGraphConfig& to, uint32_t key, const Value& value)
{
    const int32_t status = to.setValue(key, value);
    GraphConfigNode* const node = asNode(&to);
    if (status == StatusOk && node != nullptr) setPositionOf(*node, key, getSourcePosition(&from, key));
    return status;
}

} // namespace

GraphConfigNode* copyDescriptorNode(GraphConfigNode& descriptorNodes, uint32_t key, GraphConfigNode& result,
                                    KeyCache& keys)
{
    const ItemMap& nodes = TreeAccess::items(descriptorNodes);
    const ItemMap::const_iterator entry = nodes.find(key);
    const GraphConfigNode* const node = entry == nodes.end() ? nullptr : asNode(entry->second);
    if (node == nullptr) {
        NUXO_ERROR("Node(%s) not found from descriptor", ItemUID::key2str(key));
        return nullptr;
    }
    GraphConfigItem* const present = findItem(result, key);
    if (asNode(present) != nullptr) return asNode(present);

    const SourcePosition position = ItemMap::position(*entry);
    std::unique_ptr<GraphConfigNode> fresh;
    const std::string* const baseName = findText(*node, NUXO_KEY_BASE_NODE);
    if (baseName != nullptr) {
        fresh.reset(buildFromBase(*node, NodeIdentity(keys.nameOf(key), position), *baseName, descriptorNodes, keys));
        if (fresh == nullptr) {
            NUXO_ERROR("Node(%s) could not be built from base node %s", ItemUID::key2str(key), baseName->c_str());
            return nullptr;
        }
    } else {
        fresh.reset(node->copy());
        if (fresh == nullptr) return nullptr;
    }
    GraphConfigNode* const adopted = TreeAccess::adopt(result, std::move(fresh), key, position);
    return present == nullptr ? adopted : nullptr; // an attribute with this key hides the node
}

GraphConfigNode* buildFromBase(const GraphConfigNode& node, const NodeIdentity& identity, const std::string& baseName,
                               const GraphConfigNode& descriptorNodes, KeyCache& keys)
{
    const char* const name = identity.name.c_str();
    const GraphConfigNode* const base = findBase(descriptorNodes, baseName, keys);
    if (base == nullptr) {
        NUXO_ERROR("Failed to find base node %s for node %s", baseName.c_str(), name);
        return nullptr;
    }
    std::unique_ptr<GraphConfigNode> fresh(base->copy());
    if (fresh == nullptr) {
        NUXO_ERROR("Failed to copy base node %s to create node %s", baseName.c_str(), name);
        return nullptr;
    }
    const int32_t status = convertBaseNode(*fresh, node, identity);
    if (status != StatusOk) {
        NUXO_ERROR("Failed to change base node %s into node %s", baseName.c_str(), name);
        return nullptr;
    }
    return fresh.release();
}

int propagateInteger(const IGraphConfig& from, IGraphConfig& to, uint32_t key)
{
    int value = 0;
    const bool present = to.getValue(key, value) == StatusOk;
    const int32_t status = from.getValue(key, value);
    if (status != StatusOk) return status;
    if (present) return overwriteByKey(from, to, key, value);
    return insertPropagated(from, to, key, std::make_unique<GraphConfigIntAttribute>(value));
}

int propagateText(const IGraphConfig& from, IGraphConfig& to, uint32_t key)
{
    std::string value;
    const int32_t presence = to.getValue(key, value);
    if (presence == StatusNoMemory) return presence;
    const int32_t status = from.getValue(key, value);
    if (status != StatusOk) return status;
    if (presence == StatusOk) return overwriteByKey(from, to, key, value);
    return insertPropagated(from, to, key, std::make_unique<GraphConfigStrAttribute>(value));
}

} // namespace NUXO
