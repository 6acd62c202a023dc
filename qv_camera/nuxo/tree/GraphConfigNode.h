// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TREE_GRAPH_CONFIG_NODE_H
#define NUXO_TREE_GRAPH_CONFIG_NODE_H

#include <nuxo/tree/GraphConfigAttribute.h>
#include <nuxo/tree/IGraphConfig.h>
#include <nuxo/tree/ItemMap.h>

#include <cstddef>
#include <cstdint>
#include <new>
#include <string>

namespace NUXO {

/// A node of a configuration tree: an ordered collection of items, each an attribute or a child node, filed under keys.
///
/// A node owns its items: destroying it destroys them, at any depth without recursion. Its own name and key are those
/// under which its parent files it.
class QV_EXPORT GraphConfigNode : public GraphConfigItem, public IGraphConfig {
public:
    /// A position in the items of a node: `it->first` is the key, `it->second` the item.
    using iterator = ItemMap::const_iterator;

    GraphConfigNode() noexcept;
    GraphConfigNode(const GraphConfigNode&) = delete;
    GraphConfigNode& operator=(const GraphConfigNode&) = delete;
    ~GraphConfigNode() override;

    using GraphConfigItem::getValue;
    using GraphConfigItem::setValue;

    /// Like getDescendant(path), and also the node that would hold the last key when only that is missing.
    virtual IGraphConfig* getGraphConfigItem(const ItemUID& path) const;
    IGraphConfig* getRoot() const override;
    IGraphConfig* getAncestor() const override;
    IGraphConfig* getDescendant(uint32_t key) const override;
    IGraphConfig* getDescendant(const ItemUID& path) const override;
    IGraphConfig* getDescendantByString(const std::string& path) const override;
    int32_t getDescendantCount() const override;
    int32_t getValue(uint32_t key, int& value) const override;
    int32_t getValue(const ItemUID& path, int& value) const override;
    int32_t getValue(uint32_t key, std::string& value) const override;
    int32_t getValue(const ItemUID& path, std::string& value) const override;
    int32_t setValue(uint32_t key, int value) override;
    int32_t setValue(const ItemUID& path, int value) override;
    int32_t setValue(uint32_t key, const std::string& value) override;
    int32_t setValue(const ItemUID& path, const std::string& value) override;
    std::string getName() const override;
    uint32_t getUid() const override;
    bool isType(uint32_t wanted) const override;

    /// The topmost node, never null.
    GraphConfigNode* getRootNode() const;
    /// Deprecated: warns on every call. Stores the parent; StatusOk, or StatusBadArgument for a null @p out.
    int32_t getAncestor(GraphConfigNode** out);
    /// StatusOk with the child node in @p out; StatusMissingData with null when @p key is absent; StatusBadArgument when it
    /// is an attribute or @p out is null.
    int32_t getDescendant(uint32_t key, GraphConfigNode** out) const;
    /// StatusOk with the node in @p out, or StatusBadArgument when there is none or @p out is null.
    int32_t getDescendantByString(const std::string& path, GraphConfigNode** out);
    /// Whether any item is filed under @p key.
    bool hasItem(uint32_t key) const;
    /// The items in order.
    iterator begin() const { return mItems.begin(); }
    iterator end() const { return mItems.end(); }

    /// Stores @p text in the attribute at @p path, creating it when missing, without regard to options lists.
    /// StatusOk; StatusNotFound when no node holds the last key, when the attribute cannot be created, or when a node is
    /// there; StatusMissingData for an empty path; StatusNoMemory. Throws std::invalid_argument or std::out_of_range when
    /// the attribute is an integer and @p text is not one; an attribute created by the call then stays with 0.
    int32_t setValueFromStr(const ItemUID& path, std::string text);

    /// Files a new attribute. StatusOk, StatusDuplicate when any item has @p key, StatusNoMemory.
    int32_t addValue(uint32_t key, int value);
    int32_t addValue(uint32_t key, const std::string& value);
    /// Files @p item behind the items with the same key and takes ownership. StatusOk; StatusMissingData for null;
    /// StatusNoMemory, and @p item then still belongs to the caller. Filing an item twice, or a node below itself, is the
    /// caller's error and not checked.
    int32_t insertDescendant(GraphConfigItem* item, uint32_t key);
    /// Removes the first item with @p key. A node is destroyed; an attribute stays valid until this node goes, so never
    /// delete it. StatusOk, or StatusNotFound when absent.
    int32_t removeDescendant(uint32_t key);
    /// Creates the attribute at @p path, and its parent node if just that is missing and has a parent on the path.
    /// StatusOk; StatusBadArgument for a null @p out; StatusMissingData when the path names something already, is empty, or
    /// lacks too many nodes; StatusNoMemory. On failure @p out holds null and the tree is unchanged.
    int32_t createAttribute(const ItemUID& path, GraphConfigAttribute** out);
    /// StatusOk with the first item with @p key, of whatever type; StatusMissingData when absent; StatusBadArgument for a
    /// null @p out.
    int32_t getAttribute(uint32_t key, GraphConfigAttribute** out) const;
    /// StatusOk with the item at @p path; StatusBadState for a null @p out; StatusNotFound with null in @p out, and a
    /// warning, when there is none.
    int32_t getAttribute(const ItemUID& path, GraphConfigAttribute** out) const;
    /// A deep copy without parent, owned by the caller; null when memory is exhausted or an item is of an unknown kind.
    GraphConfigNode* copy() const;

    /// Turns this fresh copy of a base node into the concrete @p node. StatusOk, or the status of what failed first.
    /// Throws like setValueFromStr when a difference gives an integer a text that is none.
    int32_t changeBaseNodeIntoNode(GraphConfigNode& node);
    /// Applies the option of @p node whose list governs @p attributeKey and whose values hold @p value. StatusOk;
    /// StatusNotFound when none matches; StatusNotSupported when the match has nothing to apply; StatusBadArgument for a
    /// null @p node; or the status of the merge.
    int32_t handleAttributeOptions(GraphConfigNode* node, uint32_t attributeKey, const std::string& value);

    /// Whether the child node at @p it has an attribute @p key equal to @p value (instantiated for std::string).
    /// StatusOk; StatusNoMoreMatches; the read status of the first attribute with @p key that is no text;
    /// StatusBadArgument when @p it is not at a node.
    template <typename Value> int32_t iterateAttributes(uint32_t key, const Value& value, iterator& it) const;
    /// Deprecated, use NodeIterator: warns on every call. From @p it on, the first child node with a matching attribute;
    /// @p it then stands behind it. StatusOk, StatusNoMoreMatches, or StatusBadArgument for a null @p out.
    int32_t getDescendant(uint32_t key, const std::string& value, iterator& it, GraphConfigNode** out) const;
    int32_t getDescendant(uint32_t key, int value, iterator& it, GraphConfigNode** out) const;
    /// Moves @p it to the next attribute behind it, or to the end; returns the new position.
    iterator getNextAttribute(iterator& it) const;

    /// Logs this node's address, kind, parent and item count as errors.
    void dumpNode();
    /// Logs all items below @p node as errors, indented by @p depth levels.
    static void dumpNodeTree(const GraphConfigNode* node, int depth);

    // A node's memory may be larger than the node, see ElementBuilder: it must not be freed by the node's size.
    static void* operator new(size_t size);
    static void* operator new(size_t size, const std::nothrow_t& tag) noexcept;
    static void operator delete(void* memory);

private:
    friend class TreeAccess;

    QV_LOCAL GraphConfigNode(ItemEntry* storage, uint32_t capacity) noexcept;
    template <typename Value> QV_LOCAL int32_t addAttribute(uint32_t key, const Value& value);
    QV_LOCAL int32_t fileNewAttribute(uint32_t key);
    QV_LOCAL const GraphConfigNode* holderOf(const ItemUID& path) const;
    QV_LOCAL void unlinkFromAncestor() noexcept;

    ItemMap mItems;
    GraphConfigNode* mAncestor = nullptr;
};

template <>
QV_EXPORT int32_t GraphConfigNode::iterateAttributes<std::string>(uint32_t key, const std::string& value,
                                                                  iterator& it) const;

} // namespace NUXO

#endif
