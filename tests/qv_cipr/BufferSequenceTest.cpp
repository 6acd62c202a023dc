// SPDX-License-Identifier: Apache-2.0
#include "BufferFixture.h"

#include <vector>

namespace {

/// A client's whole use of buffers: two buffers, regions, memory of all, destruction in a mixed order.
void useBuffers(qv_cipr_memory_t user)
{
    qv_cipr_buffer_t* owned = qv_cipr_buffer_create(64, QV_CIPR_MEMORY_ALLOCATE_CPU_PTR, nullptr);
    qv_cipr_buffer_t* borrowed = qv_cipr_buffer_create(64, 0, &user);
    std::vector<qv_cipr_buffer_t*> regions;
    for (uint32_t i = 0; i < 4; ++i) {
        regions.push_back(qv_cipr_buffer_create_region(owned, 16 * i, 16));
        regions.push_back(qv_cipr_buffer_create_region(borrowed, 8 * i, 8));
    }
    for (qv_cipr_buffer_t* region : regions) {
        qv_cipr_memory_t part{};
        if (region != nullptr) (void)qv_cipr_buffer_get_memory(region, &part);
    }
    if (regions[0] != nullptr) qv_cipr_buffer_destroy(regions[0]);
    if (owned != nullptr) qv_cipr_buffer_destroy(owned);
    for (size_t i = 1; i < regions.size(); ++i) {
        if (regions[i] != nullptr) qv_cipr_buffer_destroy(regions[i]);
    }
    if (borrowed != nullptr) qv_cipr_buffer_destroy(borrowed);
}

class BufferSequence : public BufferFixture {
protected:
    uint32_t allocationsOfOneUse()
    {
        const uint32_t before = g_alloc_counter;
        useBuffers(userPointer());
        return g_alloc_counter - before;
    }
};

TEST_F(BufferSequence, SurvivesExhaustedMemoryAtEveryPoint)
{
    mLog.setMask(0);
    // 2 buffers, 8 regions with a list element each, 1 block.
    const uint32_t all = allocationsOfOneUse();
    EXPECT_EQ(all, 19u);
    for (uint32_t successes = 0; successes < all; ++successes) {
        failAllocationsAfter(successes);
        useBuffers(userPointer());
        stopFailing();
        ASSERT_EQ(g_alloc_counter - mAllocatedBefore, g_free_counter - mFreedBefore) << successes;
    }
    EXPECT_EQ(allocationsOfOneUse(), all) << "works as before afterwards";
}

} // namespace
