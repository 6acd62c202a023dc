// SPDX-License-Identifier: Apache-2.0
#include <nuxo/tree/ItemMap.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace NUXO {

namespace {

constexpr uint32_t kFirstCapacity = 4;
constexpr uint32_t kFewEntries = 32; // up to here moving entries one by one beats a general sort

bool keyLess(const ItemEntry& left, const ItemEntry& right)
{
    return left.first < right.first;
}

} // namespace

ItemMap::~ItemMap()
{
    if (mOwnsEntries) ::operator delete(mEntries);
}

// Binary search without branches to mispredict: most lookups are in small nodes.
ItemMap::const_iterator ItemMap::lowerBound(uint32_t key) const
{
    const ItemEntry* first = mEntries;
    uint32_t count = mSize;
    while (count > 1) {
        const uint32_t half = count / 2;
        first += first[half - 1].first < key ? half : 0;
        count -= half;
    }
    return count == 1 && first->first < key ? first + 1 : first;
}

ItemMap::const_iterator ItemMap::upperBound(uint32_t key) const
{
    // Items mostly arrive in key order.
    if (mSize == 0 || mEntries[mSize - 1].first <= key) return end();
    return std::upper_bound(begin(), end(), key,
                            [](uint32_t wanted, const ItemEntry& entry) { return wanted < entry.first; });
}

void ItemMap::makeRoom()
{
    const uint32_t used = mSize + mParked;
    if (used < mCapacity) return;
    constexpr uint32_t kMost = std::numeric_limits<uint32_t>::max() / 2;
    if (used >= kMost) throw std::bad_alloc();
    const uint32_t capacity = std::max(kFirstCapacity, used + used / 2);
    auto* fresh = static_cast<ItemEntry*>(::operator new(capacity * sizeof(ItemEntry)));
    if (used > 0) std::memcpy(fresh, mEntries, used * sizeof(ItemEntry));
    if (mOwnsEntries) ::operator delete(mEntries);
    mEntries = fresh;
    mCapacity = capacity;
    mOwnsEntries = true;
}

void ItemMap::insert(uint32_t key, GraphConfigItem* item, SourcePosition position)
{
    makeRoom();
    ItemEntry* const place = mEntries + (upperBound(key) - begin());
    const size_t behind = static_cast<size_t>(mEntries + mSize + mParked - place);
    if (behind > 0) std::memmove(place + 1, place, behind * sizeof(ItemEntry));
    *place = {key, 0, item};
    ++mSize;
    setPosition(place, position);
}

void ItemMap::restoreOrder() noexcept
{
    if (!mOutOfOrder) return;
    mOutOfOrder = false;
    if (mSize > kFewEntries) {
        std::stable_sort(mEntries, mEntries + mSize, keyLess);
        return;
    }
    for (uint32_t i = 1; i < mSize; ++i) {
        const ItemEntry moved = mEntries[i];
        uint32_t place = i;
        for (; place > 0 && keyLess(moved, mEntries[place - 1]); --place) mEntries[place] = mEntries[place - 1];
        mEntries[place] = moved;
    }
}

void ItemMap::erase(const_iterator it)
{
    ItemEntry* const place = mEntries + (it - begin());
    const size_t behind = static_cast<size_t>(mEntries + mSize + mParked - place) - 1;
    std::memmove(place, place + 1, behind * sizeof(ItemEntry));
    --mSize;
}

void ItemMap::park(const_iterator it)
{
    ItemEntry* const place = mEntries + (it - begin());
    std::rotate(place, place + 1, mEntries + mSize);
    --mSize;
    ++mParked;
}

GraphConfigItem* ItemMap::takeLast() noexcept
{
    if (mParked > 0) return mEntries[mSize + --mParked].second;
    return mSize > 0 ? mEntries[--mSize].second : nullptr;
}

void ItemMap::setPosition(const_iterator it, SourcePosition position)
{
    mEntries[it - begin()].offset = position.offset;
    it->second->mDocument = static_cast<uint16_t>(position.document);
}

} // namespace NUXO
