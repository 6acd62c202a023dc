// SPDX-License-Identifier: Apache-2.0
#include <nuxo/tree/GraphConfigAttribute.h>
#include <nuxo/tree/ItemMap.h>

#include <support/AllocationFailures.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace {

using NUXO::GraphConfigIntAttribute;
using NUXO::GraphConfigItem;
using NUXO::ItemEntry;
using NUXO::ItemMap;
using NUXO::SourcePosition;

/// Key and the number of the item, in map order.
using Content = std::vector<std::pair<uint32_t, int>>;

/// A map and the items in it: each is numbered in the order of filing. The map itself destroys nothing.
class ItemMapTest : public ::testing::Test {
protected:
    GraphConfigItem* nextItem()
    {
        mItems.push_back(std::make_unique<GraphConfigIntAttribute>(static_cast<int>(mItems.size())));
        return mItems.back().get();
    }

    void insert(uint32_t key) { mMap.insert(key, nextItem(), SourcePosition()); }
    void append(uint32_t key) { mMap.append(key, nextItem(), SourcePosition()); }

    static int numberOf(GraphConfigItem* item) { return static_cast<GraphConfigIntAttribute*>(item)->value; }

    Content content() const
    {
        Content result;
        for (const ItemEntry& entry : mMap) result.emplace_back(entry.first, numberOf(entry.second));
        return result;
    }

    ItemMap mMap;
    std::vector<std::unique_ptr<GraphConfigIntAttribute>> mItems;
};

TEST_F(ItemMapTest, StartsEmpty)
{
    EXPECT_TRUE(mMap.empty());
    EXPECT_EQ(0U, mMap.size());
    EXPECT_EQ(mMap.begin(), mMap.end());
    EXPECT_EQ(mMap.end(), mMap.find(0));
    EXPECT_EQ(nullptr, mMap.takeLast());
    mMap.restoreOrder();
    EXPECT_TRUE(mMap.empty());
}

TEST_F(ItemMapTest, KeepsKeyOrderAndInsertionOrderAmongEqualKeys)
{
    for (const uint32_t key : {5U, 3U, 5U, 9U, 3U, 5U, 0U}) insert(key);
    EXPECT_EQ((Content{{0, 6}, {3, 1}, {3, 4}, {5, 0}, {5, 2}, {5, 5}, {9, 3}}), content());
    EXPECT_EQ(7U, mMap.size());
    EXPECT_FALSE(mMap.empty());
}

TEST_F(ItemMapTest, FindsTheFirstOfAKey)
{
    for (const uint32_t key : {5U, 3U, 5U, UINT32_MAX}) insert(key);
    EXPECT_EQ(mMap.begin(), mMap.find(3));
    EXPECT_EQ(0, numberOf(mMap.find(5)->second));
    EXPECT_EQ(3, numberOf(mMap.find(UINT32_MAX)->second));
    EXPECT_EQ(mMap.end(), mMap.find(4));
    EXPECT_EQ(mMap.end(), mMap.find(0));
}

TEST_F(ItemMapTest, AlternatingKeysEndUpGrouped)
{
    constexpr int kPairs = 5000;
    for (int i = 0; i < kPairs; ++i) {
        append(45);
        append(37);
    }
    mMap.restoreOrder();
    const Content result = content();
    ASSERT_EQ(static_cast<size_t>(2 * kPairs), result.size());
    for (int i = 0; i < kPairs; ++i) {
        EXPECT_EQ((std::pair<uint32_t, int>(37, 2 * i + 1)), result[static_cast<size_t>(i)]);
        EXPECT_EQ((std::pair<uint32_t, int>(45, 2 * i)), result[static_cast<size_t>(kPairs + i)]);
    }
}

TEST_F(ItemMapTest, AppendedItemsStandWhereInsertedOnesWould)
{
    std::multimap<uint32_t, int> reference; // equal keys keep their order of insertion there too
    uint32_t random = 1;
    for (int i = 0; i < 3000; ++i) {
        random = random * 1103515245U + 12345U;
        const uint32_t key = (random >> 16) % 40;
        append(key);
        reference.emplace(key, i);
    }
    mMap.restoreOrder();
    EXPECT_EQ(Content(reference.begin(), reference.end()), content());
}

TEST_F(ItemMapTest, RestoringOrderTwiceChangesNothing)
{
    for (const uint32_t key : {5U, 3U, 5U, 1U}) append(key);
    mMap.restoreOrder();
    const Content before = content();
    mMap.restoreOrder();
    EXPECT_EQ(before, content());
    EXPECT_EQ((Content{{1, 3}, {3, 1}, {5, 0}, {5, 2}}), before);
}

TEST_F(ItemMapTest, InsertingGoesOnAfterOrderIsRestored)
{
    for (const uint32_t key : {5U, 3U}) append(key);
    mMap.restoreOrder();
    for (const uint32_t key : {3U, 4U, 5U}) insert(key);
    EXPECT_EQ((Content{{3, 1}, {3, 2}, {4, 3}, {5, 0}, {5, 4}}), content());
}

TEST_F(ItemMapTest, EraseTakesOutExactlyOneEntry)
{
    for (const uint32_t key : {3U, 5U, 5U, 5U, 9U}) insert(key);
    mMap.erase(mMap.find(5));
    EXPECT_EQ((Content{{3, 0}, {5, 2}, {5, 3}, {9, 4}}), content());
    mMap.erase(mMap.begin() + 2);
    mMap.erase(mMap.find(9));
    mMap.erase(mMap.begin());
    EXPECT_EQ((Content{{5, 2}}), content());
    mMap.erase(mMap.begin());
    EXPECT_TRUE(mMap.empty());
}

TEST_F(ItemMapTest, ParkedItemsAreOutOfSight)
{
    for (const uint32_t key : {3U, 5U, 9U}) insert(key);
    mMap.park(mMap.find(5));
    EXPECT_EQ((Content{{3, 0}, {9, 2}}), content());
    EXPECT_EQ(mMap.end(), mMap.find(5));
    mMap.park(mMap.find(3));
    mMap.park(mMap.find(9));
    EXPECT_TRUE(mMap.empty());
    EXPECT_EQ(mMap.end(), mMap.find(9));
}

TEST_F(ItemMapTest, ParkedItemsAreHandedOutBeforeTheLiveOnesAtTheEnd)
{
    for (const uint32_t key : {3U, 5U, 9U, 11U}) insert(key);
    mMap.park(mMap.find(3));
    mMap.park(mMap.find(9));
    std::vector<int> parked = {numberOf(mMap.takeLast()), numberOf(mMap.takeLast())};
    std::sort(parked.begin(), parked.end());
    EXPECT_EQ((std::vector<int>{0, 2}), parked);
    EXPECT_EQ((Content{{5, 1}, {11, 3}}), content());
    EXPECT_EQ(3, numberOf(mMap.takeLast()));
    EXPECT_EQ(1, numberOf(mMap.takeLast()));
    EXPECT_EQ(nullptr, mMap.takeLast());
}

TEST_F(ItemMapTest, ParkedItemsSurviveEveryOtherChange)
{
    std::multimap<uint32_t, int> live;
    std::vector<int> parked;
    uint32_t random = 7;
    for (int i = 0; i < 2000; ++i) {
        random = random * 1103515245U + 12345U;
        const uint32_t key = (random >> 16) % 30;
        const uint32_t choice = (random >> 24) % 4;
        const auto victim = live.lower_bound(key);
        if (choice < 2 || victim == live.end()) {
            live.emplace(key, static_cast<int>(mItems.size()));
            insert(key);
        } else if (choice == 2) {
            mMap.erase(mMap.find(victim->first));
            live.erase(victim);
        } else {
            parked.push_back(victim->second);
            mMap.park(mMap.find(victim->first));
            live.erase(victim);
        }
        ASSERT_EQ(live.size(), mMap.size());
    }
    ASSERT_FALSE(parked.empty());
    EXPECT_EQ(Content(live.begin(), live.end()), content());
    std::vector<int> handedOut;
    while (handedOut.size() < parked.size()) handedOut.push_back(numberOf(mMap.takeLast()));
    std::sort(handedOut.begin(), handedOut.end());
    std::sort(parked.begin(), parked.end());
    EXPECT_EQ(parked, handedOut);
    EXPECT_EQ(Content(live.begin(), live.end()), content());
}

TEST_F(ItemMapTest, BorrowedStorageIsLeftAloneWhenItIsOutgrown)
{
    ItemEntry storage[2];
    ItemMap map(storage, 2);
    map.insert(5, nextItem(), SourcePosition());
    map.insert(3, nextItem(), SourcePosition());
    EXPECT_EQ(storage, map.begin());
    map.insert(4, nextItem(), SourcePosition()); // no room any more
    EXPECT_NE(static_cast<const ItemEntry*>(storage), map.begin());
    ASSERT_EQ(3U, map.size());
    EXPECT_EQ(3U, map.begin()[0].first);
    EXPECT_EQ(4U, map.begin()[1].first);
    EXPECT_EQ(5U, map.begin()[2].first);
}

TEST_F(ItemMapTest, PositionsTravelWithTheirEntries)
{
    mMap.insert(9, nextItem(), SourcePosition{1, 900});
    mMap.insert(3, nextItem(), SourcePosition{2, 300});
    mMap.insert(3, nextItem(), SourcePosition{65535, UINT32_MAX});
    EXPECT_EQ(2U, mMap.position(*mMap.begin()).document);
    EXPECT_EQ(300U, mMap.position(*mMap.begin()).offset);
    EXPECT_EQ(65535U, mMap.position(mMap.begin()[1]).document);
    EXPECT_EQ(UINT32_MAX, mMap.position(mMap.begin()[1]).offset);
    mMap.setPosition(mMap.begin() + 2, SourcePosition{4, 44});
    mMap.erase(mMap.begin());
    EXPECT_EQ(4U, mMap.position(mMap.begin()[1]).document);
    EXPECT_EQ(44U, mMap.position(mMap.begin()[1]).offset);
}

TEST_F(ItemMapTest, FailedInsertionChangesNothing)
{
    for (uint32_t key = 0; key < 200; ++key) {
        const Content before = content();
        GraphConfigItem* const item = nextItem();
        AllocationFailures failures;
        failures.failFrom(1);
        bool inserted = true;
        try {
            mMap.insert(key % 7, item, SourcePosition());
        } catch (const std::bad_alloc&) {
            inserted = false;
        }
        failures.stop();
        if (inserted) continue;
        EXPECT_EQ(before, content());
        mMap.insert(key % 7, item, SourcePosition());
        EXPECT_EQ(before.size() + 1, mMap.size());
    }
    EXPECT_EQ(200U, mMap.size());
}

TEST_F(ItemMapTest, FailedAppendingChangesNothing)
{
    size_t refused = 0;
    for (uint32_t key = 0; key < 200; ++key) {
        GraphConfigItem* const item = nextItem();
        AllocationFailures failures;
        failures.failFrom(1);
        try {
            mMap.append(key, item, SourcePosition());
        } catch (const std::bad_alloc&) {
            ++refused;
            failures.stop();
            mMap.append(key, item, SourcePosition());
        }
    }
    EXPECT_GT(refused, 0U);
    ASSERT_EQ(200U, mMap.size());
    for (uint32_t key = 0; key < 200; ++key) EXPECT_EQ(static_cast<int>(key), numberOf(mMap.find(key)->second));
}

TEST_F(ItemMapTest, OrderIsRestoredAndItemsLeaveWithoutMemory)
{
    for (int i = 0; i < 500; ++i) {
        append(45);
        append(37);
    }
    AllocationFailures failures;
    failures.failFrom(1);
    mMap.restoreOrder();
    mMap.park(mMap.begin());
    mMap.erase(mMap.begin());
    GraphConfigItem* const parked = mMap.takeLast();
    failures.stop();
    EXPECT_EQ(1, numberOf(parked)); // the first item of key 37
    const Content result = content();
    ASSERT_EQ(998U, result.size());
    EXPECT_EQ((std::pair<uint32_t, int>(37, 5)), result[0]);
    EXPECT_EQ((std::pair<uint32_t, int>(45, 0)), result[498]);
    EXPECT_EQ((std::pair<uint32_t, int>(45, 998)), result[997]);
}

} // namespace
