// SPDX-License-Identifier: Apache-2.0
// Internal to GraphConfigNode: the storage of a node's items.
#ifndef NUXO_TREE_ITEM_MAP_H
#define NUXO_TREE_ITEM_MAP_H

#include <nuxo/tree/GraphConfigItem.h>
#include <nuxo/tree/SourcePosition.h>

#include <cstddef>
#include <cstdint>

namespace NUXO {

/// One entry of a node's items, named like the members of a map's value.
struct ItemEntry {
    uint32_t first;          ///< key
    uint32_t offset;         ///< offset of the item's element in its document
    GraphConfigItem* second; ///< the item, owned by the node
};

/// An ordered multimap from key to item in one contiguous array: key order, insertion order among equal keys.
///
/// Attributes that were removed stay parked behind the live entries until the node goes, because pointers to them may
/// still be in use. The map does not destroy items; its node does.
class ItemMap {
public:
    using const_iterator = const ItemEntry*;

    ItemMap() = default;
    /// Starts in @p storage, which outlives the map and holds @p capacity entries.
    ItemMap(ItemEntry* storage, uint32_t capacity) : mEntries(storage), mCapacity(capacity) {}
    ItemMap(const ItemMap&) = delete;
    ItemMap& operator=(const ItemMap&) = delete;
    ~ItemMap();

    const_iterator begin() const { return mEntries; }
    const_iterator end() const { return mEntries + mSize; }
    uint32_t size() const { return mSize; }
    bool empty() const { return mSize == 0; }
    /// The first entry with @p key, end() when there is none.
    const_iterator find(uint32_t key) const
    {
        const const_iterator it = lowerBound(key);
        return it != end() && it->first == key ? it : end();
    }

    /// Inserts behind all entries with the same key. May throw std::bad_alloc; the map is then unchanged.
    void insert(uint32_t key, GraphConfigItem* item, SourcePosition position);
    /// Appends without keeping the order: call restoreOrder before anything else looks at the map. May throw
    /// std::bad_alloc. Not to be used on a map with parked items.
    void append(uint32_t key, GraphConfigItem* item, SourcePosition position)
    {
        if (mSize == mCapacity) makeRoom();
        mOutOfOrder = mOutOfOrder || (mSize > 0 && key < mEntries[mSize - 1].first);
        appendInOrder(key, item, position);
    }
    /// Appends where there is room for sure and no key before is greater.
    void appendInOrder(uint32_t key, GraphConfigItem* item, SourcePosition position) noexcept
    {
        ItemEntry& entry = mEntries[mSize++];
        entry.first = key;
        entry.offset = position.offset;
        entry.second = item;
        item->mDocument = static_cast<uint16_t>(position.document);
    }
    /// Makes entries that were appended take their places.
    void restoreOrder() noexcept;
    /// Takes the entry out.
    void erase(const_iterator it);
    /// Takes the entry out, but keeps its item parked.
    void park(const_iterator it);
    /// Takes out a parked item or else the last entry; null when nothing is left.
    GraphConfigItem* takeLast() noexcept;

    static SourcePosition position(const ItemEntry& entry) { return {entry.second->mDocument, entry.offset}; }
    void setPosition(const_iterator it, SourcePosition position);

private:
    const_iterator lowerBound(uint32_t key) const;
    const_iterator upperBound(uint32_t key) const;
    void makeRoom();

    ItemEntry* mEntries = nullptr;
    uint32_t mSize = 0;
    uint32_t mParked = 0;      // entries behind the live ones
    uint32_t mCapacity = 0;    // entries that mEntries has room for
    bool mOwnsEntries = false; // whether mEntries is this map's own allocation
    bool mOutOfOrder = false;  // whether restoreOrder has something to do
};

} // namespace NUXO

#endif
