// SPDX-License-Identifier: Apache-2.0
#include <nuxo/NuxoStatus.h>
#include <nuxo/tree/TreeAccess.h>

#include <new>
#include <utility>

namespace NUXO {

GraphConfigNode* TreeAccess::adopt(GraphConfigNode& parent, std::unique_ptr<GraphConfigNode> child, uint32_t key,
                                   SourcePosition position)
{
    GraphConfigNode* const node = child.get();
    adoptItem(parent, std::move(child), key, position);
    return node;
}

void TreeAccess::adoptItem(GraphConfigNode& parent, std::unique_ptr<GraphConfigItem> item, uint32_t key,
                           SourcePosition position)
{
    parent.mItems.insert(key, item.get(), position);
    GraphConfigNode* const node = asNode(item.release());
    if (node != nullptr) node->mAncestor = &parent;
}

GraphConfigNode* TreeAccess::adoptUnordered(GraphConfigNode& parent, std::unique_ptr<GraphConfigNode> child,
                                            uint32_t key, SourcePosition position)
{
    parent.mItems.append(key, child.get(), position);
    child->mAncestor = &parent;
    return child.release();
}

GraphConfigNode* TreeAccess::construct(void* storage, ItemEntry* entries, uint32_t capacity)
{
    return ::new (storage) GraphConfigNode(entries, capacity);
}

void TreeAccess::insertText(GraphConfigNode& node, uint32_t key, const std::string& text, SourcePosition position)
{
    auto attribute = std::make_unique<GraphConfigStrAttribute>(text);
    node.mItems.insert(key, attribute.get(), position);
    static_cast<void>(attribute.release()); // the node's now
}

GraphConfigItem* copyItem(const GraphConfigItem& item)
{
    switch (item.type) {
    case GraphConfigItem::INT: return static_cast<const GraphConfigIntAttribute&>(item).copy();
    case GraphConfigItem::STRING: return static_cast<const GraphConfigStrAttribute&>(item).copy();
    case GraphConfigItem::NODE: return static_cast<const GraphConfigNode&>(item).copy();
    default: return nullptr;
    }
}

GraphConfigItem* findItem(const GraphConfigNode& node, uint32_t key)
{
    const ItemMap& items = TreeAccess::items(node);
    const ItemMap::const_iterator it = items.find(key);
    return it == items.end() ? nullptr : it->second;
}

GraphConfigNode* findChild(const GraphConfigNode& node, uint32_t key)
{
    return asNode(findItem(node, key));
}

const std::string* findText(const GraphConfigNode& node, uint32_t key)
{
    const GraphConfigItem* const item = findItem(node, key);
    if (item == nullptr || item->type != GraphConfigItem::STRING) return nullptr;
    return &static_cast<const GraphConfigStrAttribute*>(item)->value;
}

bool findInteger(const GraphConfigNode& node, uint32_t key, int32_t& value)
{
    const GraphConfigItem* const item = findItem(node, key);
    if (item == nullptr || item->type != GraphConfigItem::INT) return false;
    value = static_cast<const GraphConfigIntAttribute*>(item)->value;
    return true;
}

int32_t readFailure(const GraphConfigNode& node, uint32_t key)
{
    return findItem(node, key) == nullptr ? StatusMissingData : StatusNotFound;
}

uint32_t uidOf(const GraphConfigNode& node)
{
    const GraphConfigNode* const parent = TreeAccess::ancestor(node);
    if (parent == nullptr) return NUXO_KEY_NA;
    for (const ItemEntry& entry : TreeAccess::items(*parent)) {
        if (entry.second == &node) return entry.first;
    }
    return NUXO_KEY_NA;
}

const char* nameOf(const GraphConfigNode& node)
{
    const GraphConfigNode* const parent = TreeAccess::ancestor(node);
    if (parent == nullptr) return "NA";
    for (const ItemEntry& entry : TreeAccess::items(*parent)) {
        if (entry.second == &node) return ItemUID::key2str(entry.first);
    }
    return "NA";
}

SourcePosition positionOf(const GraphConfigNode& node, uint32_t key)
{
    const ItemMap& items = TreeAccess::items(node);
    const ItemMap::const_iterator it = items.find(key);
    return it == items.end() ? SourcePosition() : ItemMap::position(*it);
}

void setPositionOf(GraphConfigNode& node, uint32_t key, SourcePosition position)
{
    ItemMap& items = TreeAccess::items(node);
    const ItemMap::const_iterator it = items.find(key);
    if (it != items.end()) items.setPosition(it, position);
}

} // namespace NUXO
