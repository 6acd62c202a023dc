// SPDX-License-Identifier: Apache-2.0
// How often initialisation allocates tells how its work grows, the same on every machine.
#include "kernels/LargeLists.h"

#include <support/AllocationFailures.h>

namespace graphtest {

namespace {

class LargeListsAllocationTest : public KernelsTest {
protected:
    /// The allocations of initialising this graph.
    size_t allocations(const std::string& nodes)
    {
        mLog.setMask(0);
        loadGraph(nodes);
        renew();
        const size_t before = AllocationFailures::attempts();
        EXPECT_EQ(init(), StatusOk);
        return AllocationFailures::attempts() - before;
    }
};

// Twice as many streams take twice as many allocations, more or less. If each stream cost something for each other one,
// it would be close to four times as many.
TEST_F(LargeListsAllocationTest, GrowWithTheNumberOfStreams)
{
    constexpr int kSome = 400;
    for (const int step : {1, -1}) {
        const auto ofChain = [&](int count) { return allocations(streamChain(count, step > 0 ? 0 : count - 1, step)); };
        const size_t some = ofChain(kSome);
        EXPECT_GT(some, size_t{kSome});
        EXPECT_LT(ofChain(2 * kSome), some * 5 / 2) << "step " << step;
    }
}

} // namespace

} // namespace graphtest
