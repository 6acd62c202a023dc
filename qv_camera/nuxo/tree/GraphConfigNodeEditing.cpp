// SPDX-License-Identifier: Apache-2.0
#include <nuxo/NuxoStatus.h>
#include <nuxo/Log.h>
#include <nuxo/tree/ElementBuilder.h>
#include <nuxo/tree/GraphConfigNode.h>
#include <nuxo/tree/TreeAccess.h>

#include <memory>
#include <new>
#include <string>
#include <vector>

namespace NUXO {

namespace {

std::unique_ptr<GraphConfigItem> makeAttribute(int32_t value)
{
    return std::make_unique<GraphConfigIntAttribute>(value);
}

std::unique_ptr<GraphConfigItem> makeAttribute(const std::string& value)
{
    return std::make_unique<GraphConfigStrAttribute>(value);
}

constexpr size_t kUsualDepth = 8; // of trees; deeper ones just cost a reallocation

ElementBuilder builderLike(const GraphConfigNode& node)
{
    size_t integers = 0;
    size_t texts = 0;
    for (const ItemEntry& entry : TreeAccess::items(node)) {
        integers += entry.second->type == GraphConfigItem::INT ? 1U : 0U;
        texts += entry.second->type == GraphConfigItem::STRING ? 1U : 0U;
    }
    return ElementBuilder(integers, texts, TreeAccess::items(node).size());
}

// One level of a deep copy: how far the original's items have been copied.
struct CopyLevel {
    explicit CopyLevel(const GraphConfigNode& node) : original(&node), builder(builderLike(node)) {}

    const GraphConfigNode* original;
    ElementBuilder builder;
    uint32_t next = 0;
};

// Copies attributes up to the next child node and returns that, null at the end. Sets @p known to false at an item of
// unknown kind.
const GraphConfigNode* copyUpToChild(CopyLevel& level, bool& known)
{
    const ItemMap& items = TreeAccess::items(*level.original);
    for (; level.next < items.size(); ++level.next) {
        const ItemMap::const_iterator it = items.begin() + level.next;
        const SourcePosition position = ItemMap::position(*it);
        if (it->second->type == GraphConfigItem::INT) {
            level.builder.addInteger(it->first, static_cast<GraphConfigIntAttribute*>(it->second)->value, position);
        } else if (it->second->type == GraphConfigItem::STRING) {
            level.builder.addText(it->first, static_cast<GraphConfigStrAttribute*>(it->second)->value, position);
        } else {
            const GraphConfigNode* const child = asNode(it->second);
            known = child != nullptr;
            return child;
        }
    }
    return nullptr;
}

// The levels stand in a vector, not on the stack: trees may be of any depth.
std::unique_ptr<GraphConfigNode> copyTree(const GraphConfigNode& root)
{
    std::vector<CopyLevel> levels;
    levels.reserve(kUsualDepth);
    levels.emplace_back(root);
    for (;;) {
        bool known = true;
        const GraphConfigNode* const child = copyUpToChild(levels.back(), known);
        if (!known) return nullptr;
        if (child != nullptr) {
            levels.emplace_back(*child);
            continue;
        }
        std::unique_ptr<GraphConfigNode> done = levels.back().builder.take();
        levels.pop_back();
        if (levels.empty()) return done;
        CopyLevel& parent = levels.back();
        const ItemMap& items = TreeAccess::items(*parent.original);
        const ItemMap::const_iterator it = items.begin() + parent.next;
        TreeAccess::adoptUnordered(parent.builder.node(), std::move(done), it->first, ItemMap::position(*it));
        ++parent.next;
    }
}

} // namespace

template <typename Value> int32_t GraphConfigNode::addAttribute(uint32_t key, const Value& value)
{
    if (hasItem(key)) return StatusDuplicate;
    try {
        std::unique_ptr<GraphConfigItem> attribute = makeAttribute(value);
        mItems.insert(key, attribute.get(), {});
        static_cast<void>(attribute.release()); // the map's now
    } catch (const std::bad_alloc&) {
        return StatusNoMemory;
    }
    return StatusOk;
}

int32_t GraphConfigNode::addValue(uint32_t key, int value)
{
    return addAttribute(key, value);
}

int32_t GraphConfigNode::addValue(uint32_t key, const std::string& value)
{
    return addAttribute(key, value);
}

int32_t GraphConfigNode::insertDescendant(GraphConfigItem* item, uint32_t key)
{
    if (item == nullptr) return StatusMissingData;
    try {
        mItems.insert(key, item, {});
    } catch (const std::bad_alloc&) {
        return StatusNoMemory;
    }
    GraphConfigNode* const node = asNode(item);
    if (node != nullptr) node->mAncestor = this;
    return StatusOk;
}

int32_t GraphConfigNode::removeDescendant(uint32_t key)
{
    const ItemMap::const_iterator it = mItems.find(key);
    if (it == mItems.end()) return StatusNotFound;
    GraphConfigNode* const node = asNode(it->second);
    if (node == nullptr) {
        mItems.park(it);
        return StatusOk;
    }
    mItems.erase(it);
    node->mAncestor = nullptr;
    delete node;
    return StatusOk;
}

// Files an empty attribute of the kind that goes with the key.
int32_t GraphConfigNode::fileNewAttribute(uint32_t key)
{
    return ItemUID::isInteger(key) ? addValue(key, 0) : addValue(key, std::string());
}

int32_t GraphConfigNode::createAttribute(const ItemUID& path, GraphConfigAttribute** out)
{
    if (out == nullptr) {
        NUXO_ERROR("Invalid argument (nullptr) to create an attribute");
        return StatusBadArgument;
    }
    *out = nullptr;

    GraphConfigNode* holder = this;
    size_t depth = 0;
    while (depth < path.size()) {
        GraphConfigNode* const child = findChild(*holder, path[depth]);
        if (child == nullptr) break;
        holder = child;
        ++depth;
    }
    try {
        if (depth == path.size()) {
            NUXO_ERROR("Error: item %s is not an attribute it is an existing node", path.toString().c_str());
            return StatusMissingData;
        }
        int32_t status = StatusOk;
        if (depth + 1 == path.size()) {
            status = holder->fileNewAttribute(path.back());
        } else if (depth >= 1 && depth + 2 == path.size()) {
            auto parent = std::make_unique<GraphConfigNode>();
            status = parent->fileNewAttribute(path.back());
            if (status == StatusOk) holder = TreeAccess::adopt(*holder, std::move(parent), path[depth], {});
        } else {
            NUXO_WARN("Warning: Failed to create attribute %s: Too many missing nodes, stopped at depth %lu",
                      path.toString().c_str(), static_cast<unsigned long>(depth));
            return StatusMissingData;
        }
        if (status != StatusOk) {
            NUXO_ERROR("Failed to add attribute %s to node", path.toString().c_str());
            return status == StatusNoMemory ? StatusNoMemory : StatusMissingData;
        }
    } catch (const std::bad_alloc&) {
        return StatusNoMemory;
    }
    *out = findItem(*holder, path.back());
    return *out == nullptr ? StatusMissingData : StatusOk;
}

int32_t GraphConfigNode::getAttribute(uint32_t key, GraphConfigAttribute** out) const
{
    if (out == nullptr) return StatusBadArgument;
    GraphConfigItem* const item = findItem(*this, key);
    if (item == nullptr) return StatusMissingData;
    *out = item;
    return StatusOk;
}

int32_t GraphConfigNode::getAttribute(const ItemUID& path, GraphConfigAttribute** out) const
{
    if (out == nullptr) return StatusBadState;
    *out = nullptr;
    try {
        const auto* const holder = static_cast<const GraphConfigNode*>(getDescendant(path));
        if (holder == nullptr) {
            NUXO_WARN("Warning: Failed to get descendant %s for attribute", path.toString().c_str());
            return StatusNotFound;
        }
        GraphConfigItem* const item = findItem(*holder, path.back());
        if (item == nullptr) {
            NUXO_WARN("warning: Failed to get attribute object for %s", path.toString().c_str());
            return StatusNotFound;
        }
        *out = item;
    } catch (const std::bad_alloc&) {
        return StatusNotFound; // there was none; only the warning could not be worded
    }
    return StatusOk;
}

GraphConfigNode* GraphConfigNode::copy() const
{
    try {
        return copyTree(*this).release();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

} // namespace NUXO
