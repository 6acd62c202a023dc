// SPDX-License-Identifier: Apache-2.0
// Internal: how the library itself reads and builds nodes. Reading allocates nothing and logs nothing.
#ifndef NUXO_TREE_TREE_ACCESS_H
#define NUXO_TREE_TREE_ACCESS_H

#include <nuxo/tree/GraphConfigNode.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace NUXO {

/// The parts of a node that only the library touches.
class TreeAccess {
public:
    static ItemMap& items(GraphConfigNode& node) { return node.mItems; }
    static const ItemMap& items(const GraphConfigNode& node) { return node.mItems; }
    static GraphConfigNode* ancestor(const GraphConfigNode& node) { return node.mAncestor; }

    /// Files @p child behind its equals, or, unordered, at the end: restoreOrder must follow. May throw std::bad_alloc;
    /// @p child is then destroyed.
    static GraphConfigNode* adopt(GraphConfigNode& parent, std::unique_ptr<GraphConfigNode> child, uint32_t key,
                                  SourcePosition position);
    static GraphConfigNode* adoptUnordered(GraphConfigNode& parent, std::unique_ptr<GraphConfigNode> child,
                                           uint32_t key, SourcePosition position);

    /// As adopt, for any item.
    static void adoptItem(GraphConfigNode& parent, std::unique_ptr<GraphConfigItem> item, uint32_t key,
                          SourcePosition position);

    /// Files a new text attribute behind the items with the same key. May throw std::bad_alloc.
    static void insertText(GraphConfigNode& node, uint32_t key, const std::string& text, SourcePosition position);

    /// A new node in @p storage that holds no items yet.
    static GraphConfigNode* construct(void* storage, ItemEntry* entries, uint32_t capacity);
};

/// The item as a node, null when it is none.
inline GraphConfigNode* asNode(GraphConfigItem* item)
{
    return item != nullptr && item->type == GraphConfigItem::NODE ? static_cast<GraphConfigNode*>(item) : nullptr;
}

/// The library's node behind the interface, null for null and for foreign implementations.
inline GraphConfigNode* asNode(IGraphConfig* node)
{
    return dynamic_cast<GraphConfigNode*>(node);
}

inline const GraphConfigNode* asNode(const IGraphConfig* node)
{
    return dynamic_cast<const GraphConfigNode*>(node);
}

/// The first item with @p key, null when there is none.
GraphConfigItem* findItem(const GraphConfigNode& node, uint32_t key);
/// The first item with @p key if it is a node, else null.
GraphConfigNode* findChild(const GraphConfigNode& node, uint32_t key);
/// The text of the first item with @p key, null when it is absent or holds none.
const std::string* findText(const GraphConfigNode& node, uint32_t key);
/// The integer of the first item with @p key; false, with @p value untouched, when it is absent or holds none.
bool findInteger(const GraphConfigNode& node, uint32_t key, int32_t& value);
/// The status of a read that found no value: StatusMissingData when nothing has @p key, StatusNotFound when the item is of
/// another kind.
int32_t readFailure(const GraphConfigNode& node, uint32_t key);

/// Whether the node has a text attribute @p key equal to @p value and no attribute of another kind before it.
bool hasText(const GraphConfigNode& node, uint32_t key, std::string_view value);

/// A deep copy of any item, owned by the caller; null when memory is exhausted or its kind is unknown.
GraphConfigItem* copyItem(const GraphConfigItem& item);

/// The name under which the parent files @p node, "NA" for a root. The text belongs to the vocabulary.
const char* nameOf(const GraphConfigNode& node);
/// The key under which the parent files @p node, 0 for a root.
uint32_t uidOf(const GraphConfigNode& node);

/// The position of the first item with @p key.
SourcePosition positionOf(const GraphConfigNode& node, uint32_t key);
/// Gives the first item with @p key a position.
void setPositionOf(GraphConfigNode& node, uint32_t key, SourcePosition position);

/// Calls @p visit for each child node in order until it returns false. Items are looked up by position anew in each step,
/// so the visitor may change the node.
template <typename Visit> void forEachChild(const GraphConfigNode& node, Visit visit)
{
    const ItemMap& items = TreeAccess::items(node);
    for (uint32_t i = 0; i < items.size(); ++i) {
        const ItemEntry entry = items.begin()[i];
        GraphConfigNode* const child = asNode(entry.second);
        if (child != nullptr && !visit(*child, entry.first)) return;
    }
}

/// Display text of a node for messages; empty when memory is exhausted.
std::string describeNode(const IGraphConfig* node);

} // namespace NUXO

#endif
