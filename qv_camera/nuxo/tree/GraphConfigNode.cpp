// SPDX-License-Identifier: Apache-2.0
#include <nuxo/NuxoStatus.h>
#include <nuxo/Log.h>
#include <nuxo/tree/GraphConfigNode.h>
#include <nuxo/tree/TreeAccess.h>

#include <new>

namespace NUXO {

GraphConfigNode::GraphConfigNode() noexcept : GraphConfigItem(NODE)
{
}

GraphConfigNode::GraphConfigNode(ItemEntry* storage, uint32_t capacity) noexcept
    : GraphConfigItem(NODE), mItems(storage, capacity)
{
}

void* GraphConfigNode::operator new(size_t size)
{
    return ::operator new(size);
}

void* GraphConfigNode::operator new(size_t size, const std::nothrow_t& tag) noexcept
{
    return ::operator new(size, tag);
}

void GraphConfigNode::operator delete(void* memory)
{
    ::operator delete(memory);
}

// Walks down to the last item and back up through the parents, so that any depth needs no stack and no memory.
GraphConfigNode::~GraphConfigNode()
{
    unlinkFromAncestor();
    GraphConfigNode* node = this;
    for (;;) {
        GraphConfigItem* const item = node->mItems.takeLast();
        GraphConfigNode* const child = asNode(item);
        if (child != nullptr) {
            child->mAncestor = node;
            node = child;
        } else if (item != nullptr) {
            delete item;
        } else if (node == this) {
            return;
        } else {
            GraphConfigNode* const done = node;
            node = done->mAncestor;
            done->mAncestor = nullptr;
            delete done;
        }
    }
}

// A node that is destroyed on its own must not stay behind in its parent.
void GraphConfigNode::unlinkFromAncestor() noexcept
{
    if (mAncestor == nullptr) return;
    ItemMap& siblings = mAncestor->mItems;
    for (ItemMap::const_iterator it = siblings.begin(); it != siblings.end(); ++it) {
        if (it->second == this) {
            siblings.erase(it);
            return;
        }
    }
}

GraphConfigNode* GraphConfigNode::getRootNode() const
{
    const GraphConfigNode* node = this;
    while (node->mAncestor != nullptr) node = node->mAncestor;
    return const_cast<GraphConfigNode*>(node);
}

IGraphConfig* GraphConfigNode::getRoot() const
{
    return getRootNode();
}

IGraphConfig* GraphConfigNode::getAncestor() const
{
    return mAncestor;
}

int32_t GraphConfigNode::getAncestor(GraphConfigNode** out)
{
    NUXO_WARN("WARNING: GraphConfigNode implementation of getAncestor is deprecated.");
    if (out == nullptr) return StatusBadArgument;
    *out = mAncestor;
    return StatusOk;
}

IGraphConfig* GraphConfigNode::getDescendant(uint32_t key) const
{
    return findChild(*this, key);
}

int32_t GraphConfigNode::getDescendant(uint32_t key, GraphConfigNode** out) const
{
    if (out == nullptr) return StatusBadArgument;
    GraphConfigItem* const item = findItem(*this, key);
    if (item == nullptr) {
        *out = nullptr;
        return StatusMissingData;
    }
    GraphConfigNode* const node = asNode(item);
    if (node == nullptr) return StatusBadArgument;
    *out = node;
    return StatusOk;
}

// The node that holds the last key of the path, whether or not that key is there.
const GraphConfigNode* GraphConfigNode::holderOf(const ItemUID& path) const
{
    const GraphConfigNode* node = this;
    for (size_t i = 0; node != nullptr && i + 1 < path.size(); ++i) node = findChild(*node, path[i]);
    return node;
}

IGraphConfig* GraphConfigNode::getDescendant(const ItemUID& path) const
{
    if (path.empty()) return nullptr;
    const GraphConfigNode* const holder = holderOf(path);
    GraphConfigItem* const item = holder == nullptr ? nullptr : findItem(*holder, path.back());
    if (item == nullptr) return nullptr;
    GraphConfigNode* const node = asNode(item);
    if (node != nullptr) return node;
    return path.size() > 1 ? const_cast<GraphConfigNode*>(holder) : nullptr;
}

IGraphConfig* GraphConfigNode::getGraphConfigItem(const ItemUID& path) const
{
    if (path.empty()) return nullptr;
    const GraphConfigNode* const holder = holderOf(path);
    if (holder == nullptr) return nullptr;
    GraphConfigNode* const node = findChild(*holder, path.back());
    if (node != nullptr) return node;
    return path.size() > 1 ? const_cast<GraphConfigNode*>(holder) : nullptr;
}

IGraphConfig* GraphConfigNode::getDescendantByString(const std::string& path) const
{
    try {
        return getDescendant(ItemUID(path));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

int32_t GraphConfigNode::getDescendantByString(const std::string& path, GraphConfigNode** out)
{
    if (out == nullptr) return StatusBadArgument;
    auto* const node = static_cast<GraphConfigNode*>(getDescendantByString(path));
    if (node == nullptr) return StatusBadArgument;
    *out = node;
    return StatusOk;
}

int32_t GraphConfigNode::getDescendantCount() const
{
    return static_cast<int32_t>(mItems.size());
}

bool GraphConfigNode::hasItem(uint32_t key) const
{
    return findItem(*this, key) != nullptr;
}

std::string GraphConfigNode::getName() const
{
    try {
        return nameOf(*this);
    } catch (const std::bad_alloc&) {
        return {};
    }
}

uint32_t GraphConfigNode::getUid() const
{
    return uidOf(*this);
}

bool GraphConfigNode::isType(uint32_t wanted) const
{
    const std::string* const text = findText(*this, NUXO_KEY_TYPE);
    if (text == nullptr) {
        NUXO_WARN("Trying to find type for %s, but it doesn't have one.", describeNode(this).c_str());
        return false;
    }
    return ItemUID::str2key(*text) == wanted;
}

} // namespace NUXO
