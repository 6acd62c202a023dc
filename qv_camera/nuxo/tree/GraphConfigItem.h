// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TREE_GRAPH_CONFIG_ITEM_H
#define NUXO_TREE_GRAPH_CONFIG_ITEM_H

#include <qv_tools/qv_export.h>

#include <cstdint>
#include <string>

namespace NUXO {

/// One item of a node: an attribute or a child node. The value operations of this base refuse with StatusNotFound;
/// each kind of attribute overrides those of its own kind.
class QV_EXPORT GraphConfigItem {
public:
    /// What an item is. The values are distinct bits and are tested by equality.
    enum ItemType : int32_t { NA = 1, STRING = 2, INT = 4, NODE = 8 };

    /// An untyped item.
    GraphConfigItem() noexcept : GraphConfigItem(NA) {}
    GraphConfigItem(const GraphConfigItem&) = delete;
    GraphConfigItem& operator=(const GraphConfigItem&) = delete;

    /// Copies the value out. StatusOk, or StatusNotFound when the item holds no integer; @p value is then untouched.
    virtual int32_t getValue(int& value);
    /// Copies the text out. StatusOk, StatusNotFound when the item holds no text, StatusNoMemory; @p value is untouched
    /// unless StatusOk.
    virtual int32_t getValue(std::string& value);
    /// Stores a text. StatusOk, StatusNotFound when the item holds no text, StatusNoMemory.
    virtual int32_t setValue(const std::string& value);
    /// Stores an integer. StatusOk, or StatusNotFound when the item holds no integer.
    virtual int32_t setValue(int value);

    virtual ~GraphConfigItem();

    /// One of ItemType. Stored in 16 bits, so that the document of the item's position shares its word.
    int32_t type : 16;

protected:
    explicit GraphConfigItem(ItemType itemType) noexcept : type(static_cast<int16_t>(itemType)), mDocument(0) {}

private:
    friend class ItemMap;
    uint32_t mDocument : 16; // where the item was read from, see SourcePosition
};

/// The common type in which attributes are handed out. It is the item itself: an item found under a key may also turn
/// out to be a node, so test `type` before going further.
using GraphConfigAttribute = GraphConfigItem;

} // namespace NUXO

#endif
