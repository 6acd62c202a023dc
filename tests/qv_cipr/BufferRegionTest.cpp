// SPDX-License-Identifier: Apache-2.0
#include "BufferFixture.h"

#include <vector>

namespace {

class BufferRegion : public BufferFixture {
protected:
    BufferRegion()
    {
        mParent = qv_cipr_buffer_create(64, kAllocate, nullptr);
        EXPECT_NE(mParent, nullptr);
    }

    ~BufferRegion() override
    {
        mLog.setMask(0);
        for (qv_cipr_buffer_t* region : mRegions) qv_cipr_buffer_destroy(region);
        if (mParent != nullptr) qv_cipr_buffer_destroy(mParent);
    }

    qv_cipr_buffer_t* makeRegion(uint32_t offset, uint32_t size)
    {
        qv_cipr_buffer_t* region = qv_cipr_buffer_create_region(mParent, offset, size);
        if (region != nullptr) mRegions.push_back(region);
        return region;
    }

    void destroyParent()
    {
        qv_cipr_buffer_destroy(mParent);
        mParent = nullptr;
    }

    void destroyRegion(size_t index)
    {
        qv_cipr_buffer_destroy(mRegions.at(index));
        mRegions.erase(mRegions.begin() + static_cast<std::ptrdiff_t>(index));
    }

    qv_cipr_buffer_t* mParent = nullptr;
    std::vector<qv_cipr_buffer_t*> mRegions;
};

TEST_F(BufferRegion, KnowsItsParentAndPlace)
{
    qv_cipr_buffer_t* region = makeRegion(16, 32);
    ASSERT_NE(region, nullptr);
    EXPECT_EQ(region->mem.size, 32u);
    EXPECT_EQ(region->offset, 16u);
    EXPECT_EQ(region->mem.anchor, mParent);
    EXPECT_EQ(region->mem.flags, kAllocate);
    EXPECT_EQ(region->mem.cpu_ptr, nullptr);
    EXPECT_EQ(region->allocate, nullptr);
    EXPECT_EQ(region->get_memory, nullptr);
    EXPECT_EQ(region->destroy, nullptr);
    EXPECT_TRUE(qv_cipr_buffer_is_region(region));
    EXPECT_FALSE(qv_cipr_buffer_is_region(mParent));
    EXPECT_EQ(qv_cipr_buffer_get_parent(region), mParent);
    EXPECT_EQ(qv_list_length(mParent->regions), 1u);
    EXPECT_TRUE(qv_list_contains(mParent->regions, region));
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(BufferRegion, MemoryIsAPartOfTheParents)
{
    qv_cipr_buffer_t* region = makeRegion(16, 32);
    qv_cipr_memory_t whole{};
    qv_cipr_memory_t part{};
    // The first use through the region allocates the parent.
    ASSERT_EQ(qv_cipr_buffer_get_memory(region, &part), 0);
    ASSERT_EQ(qv_cipr_buffer_get_memory(mParent, &whole), 0);
    EXPECT_EQ(part.cpu_ptr, static_cast<char*>(whole.cpu_ptr) + 16);
    EXPECT_EQ(part.size, 32u);
    EXPECT_EQ(part.anchor, region);
    EXPECT_EQ(part.flags, kCpuPtr | kAllocatedHere) << "the parent's flags of now, not of the region's creation";
    EXPECT_EQ(region->mem.flags, kAllocate);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(BufferRegion, HandleAndFlagsAreTheParents)
{
    const qv_cipr_memory_t user = userHandle();
    qv_cipr_buffer_t* parent = qv_cipr_buffer_create(64, 0, &user);
    qv_cipr_buffer_t* region = qv_cipr_buffer_create_region(parent, 8, 8);
    qv_cipr_memory_t part{};
    ASSERT_EQ(qv_cipr_buffer_get_memory(region, &part), 0);
    EXPECT_EQ(part.handle, 0x77u);
    EXPECT_EQ(part.flags, kHandle | kUserMemory);
    EXPECT_EQ(part.cpu_ptr, nullptr) << "no pointer, nothing to advance";
    EXPECT_EQ(part.size, 8u);
    qv_cipr_buffer_destroy(region);
    qv_cipr_buffer_destroy(parent);
}

TEST_F(BufferRegion, MayFillTheParent)
{
    EXPECT_NE(makeRegion(0, 64), nullptr);
    EXPECT_NE(makeRegion(63, 1), nullptr);
    EXPECT_EQ(qv_list_length(mParent->regions), 2u);
}

TEST_F(BufferRegion, MustFitTheParent)
{
    EXPECT_EQ(makeRegion(16, 64), nullptr);
    EXPECT_TRUE(onlyError("qv_cipr_buffer_create_region: parent buffer size 64 not enough for region requested "
                          "(offset 16, size 64)"));
    EXPECT_EQ(mParent->regions, nullptr);
}

TEST_F(BufferRegion, OffsetAndSizeDoNotWrapAround)
{
    // 4294967288 + 16 is 8 in 32 bits; the message prints the offset as a signed number: 4294967288 - 2^32 = -8.
    EXPECT_EQ(makeRegion(4294967288u, 16), nullptr);
    EXPECT_TRUE(onlyError("qv_cipr_buffer_create_region: parent buffer size 64 not enough for region requested "
                          "(offset -8, size 16)"));
}

TEST_F(BufferRegion, NullParentAndSizeZeroAreRefusedSilently)
{
    EXPECT_EQ(qv_cipr_buffer_create_region(nullptr, 0, 8), nullptr);
    EXPECT_EQ(makeRegion(0, 0), nullptr);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(BufferRegion, CannotHaveRegions)
{
    qv_cipr_buffer_t* region = makeRegion(0, 32);
    EXPECT_EQ(qv_cipr_buffer_create_region(region, 0, 8), nullptr);
    EXPECT_TRUE(onlyError("qv_cipr_buffer_create_region: nested regions are illecal"));
    mLog.clear();
    // The size is looked at first.
    EXPECT_EQ(qv_cipr_buffer_create_region(region, 0, 33), nullptr);
    EXPECT_TRUE(onlyError("qv_cipr_buffer_create_region: parent buffer size 32 not enough for region requested "
                          "(offset 0, size 33)"));
}

TEST_F(BufferRegion, ExhaustedMemoryIsAnError)
{
    failAllocationsAfter(0);
    EXPECT_EQ(makeRegion(0, 8), nullptr);
    EXPECT_TRUE(onlyError("qv_cipr_buffer_create_region: failed to allocate buffer"));
}

TEST_F(BufferRegion, FailedListElementFreesTheRegion)
{
    failAllocationsAfter(1);
    EXPECT_EQ(makeRegion(0, 8), nullptr);
    EXPECT_TRUE(mLog.has(LogCapture::Error, "QV_LIST[XOS]", "could not create new list element"));
    EXPECT_TRUE(
        mLog.has(LogCapture::Error, kTag, "qv_cipr_buffer_create_region: failed to append to parent buffer regions"));
    EXPECT_EQ(mLog.count(), 2u);
    EXPECT_EQ(mParent->regions, nullptr);
}

TEST_F(BufferRegion, NoLongerFitsAShrunkenParent)
{
    qv_cipr_buffer_t* region = makeRegion(32, 32);
    mParent->mem.size = 63;
    qv_cipr_memory_t part{1, nullptr, 2, 3, nullptr};
    EXPECT_EQ(qv_cipr_buffer_get_memory(region, &part), -16);
    EXPECT_TRUE(onlyError("qv_cipr_buffer_get_memory: memory region doesn't fit in parent store!"));
    EXPECT_EQ(part.size, 1u);
    mLog.clear();
    // 4294967264 + 32 is 0 in 32 bits.
    region->offset = 4294967264u;
    EXPECT_EQ(qv_cipr_buffer_get_memory(region, &part), -16);
    EXPECT_TRUE(onlyError("qv_cipr_buffer_get_memory: memory region doesn't fit in parent store!"));
}

TEST_F(BufferRegion, CannotBeAllocated)
{
    EXPECT_EQ(qv_cipr_buffer_allocate(makeRegion(0, 8)), -16);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(BufferRegion, DestroyingARegionLeavesParentAndSiblings)
{
    makeRegion(0, 8);
    qv_cipr_buffer_t* second = makeRegion(8, 8);
    ASSERT_EQ(qv_cipr_buffer_allocate(mParent), 0);
    const uint32_t freed = g_free_counter;
    destroyRegion(0);
    EXPECT_EQ(g_free_counter, freed + 2) << "the region and its list element, not the parent's block";
    EXPECT_EQ(qv_list_length(mParent->regions), 1u);
    EXPECT_EQ(qv_list_data_at(mParent->regions, 0), second);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(BufferRegion, RegionCreatedAfterAllocationDoesNotFreeTheBlock)
{
    ASSERT_EQ(qv_cipr_buffer_allocate(mParent), 0);
    qv_cipr_buffer_t* region = makeRegion(0, 8);
    EXPECT_EQ(region->mem.flags, kCpuPtr | kAllocatedHere);
    const uint32_t freed = g_free_counter;
    destroyRegion(0);
    EXPECT_EQ(g_free_counter, freed + 2);
}

TEST_F(BufferRegion, MissingFromTheParentsListIsAnError)
{
    qv_cipr_buffer_t* region = makeRegion(0, 8);
    ASSERT_TRUE(qv_list_remove(&mParent->regions, region));
    destroyRegion(0);
    EXPECT_TRUE(onlyError("qv_cipr_buffer_destroy: region parent reference missing"));
}

TEST_F(BufferRegion, DestroyedParentOrphansItsRegions)
{
    qv_cipr_buffer_t* first = makeRegion(0, 8);
    qv_cipr_buffer_t* second = makeRegion(8, 8);
    const uint32_t freed = g_free_counter;
    destroyParent();
    EXPECT_TRUE(onlyWarning("qv_cipr_buffer_destroy: parent buffer destroy leaves stale regions"));
    EXPECT_EQ(g_free_counter, freed + 3) << "the parent and two list elements, no region";
    EXPECT_EQ(first->mem.anchor, nullptr);
    EXPECT_EQ(second->mem.anchor, nullptr);
}

TEST_F(BufferRegion, OrphanIsDestroyedWithAWarning)
{
    makeRegion(0, 8);
    destroyParent();
    mLog.clear();
    destroyRegion(0);
    EXPECT_TRUE(onlyWarning("qv_cipr_buffer_destroy: parent already released"));
}

TEST_F(BufferRegion, OrphanHasNoMemoryAndNoParent)
{
    qv_cipr_buffer_t* region = makeRegion(0, 8);
    destroyParent();
    mLog.clear();
    qv_cipr_memory_t part{1, nullptr, 2, 3, nullptr};
    EXPECT_EQ(qv_cipr_buffer_get_memory(region, &part), -16);
    EXPECT_EQ(part.size, 1u);
    EXPECT_TRUE(qv_cipr_buffer_is_region(region));
    EXPECT_EQ(qv_cipr_buffer_get_parent(region), nullptr);
    EXPECT_EQ(qv_cipr_buffer_allocate(region), -16);
    EXPECT_TRUE(mLog.isEmpty());
    EXPECT_EQ(qv_cipr_buffer_create_region(region, 0, 4), nullptr);
    EXPECT_TRUE(onlyError("qv_cipr_buffer_create_region: nested regions are illecal"));
}

TEST_F(BufferRegion, WarningsAboutRegionsAreOfTheWarningClass)
{
    makeRegion(0, 8);
    EXPECT_EQ(mLog.linesOfLevel(QV_LOG_WARNING,
                                [&] {
                                    destroyParent();
                                    destroyRegion(0);
                                })
                  .size(),
              2u);
}

TEST_F(BufferRegion, WholeBufferHasNoParent)
{
    EXPECT_EQ(qv_cipr_buffer_get_parent(mParent), nullptr);
    EXPECT_TRUE(onlyError("qv_cipr_buffer_get_parent: not a child object"));
    mLog.clear();
    EXPECT_EQ(qv_cipr_buffer_get_parent(nullptr), nullptr);
    EXPECT_FALSE(qv_cipr_buffer_is_region(nullptr));
    EXPECT_TRUE(mLog.isEmpty());
}

} // namespace
