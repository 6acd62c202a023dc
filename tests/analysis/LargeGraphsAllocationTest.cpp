// SPDX-License-Identifier: Apache-2.0
// How often an analysis allocates tells how its work grows, the same on every machine.
#include "analysis/LargeGraphs.h"

#include <support/AllocationFailures.h>

namespace graphtest {

namespace {

/// A graph of any size.
struct Kind {
    const char* name;
    std::string (*make)(int count);
    GdfVersion version = GdfVersionKVA6;
    int status = StatusOk;
};

const Kind kKinds[] = {
    {"LooseKernels", looseKernels, GdfVersionKVA7},
    {"WideKernel", wideKernel},
    {"FanIn", fanIn},
    {"InputPorts", inputPorts},
    {"GroupsBehindTheSource", groupsBehindTheSource},
    {"SplitToDisabledPorts", splitToDisabledPorts},
    {"SinksWithoutGroups", sinksWithoutGroups, GdfVersionKVA6, StatusMissingObject},
    {"SubgraphsIntoOne",
     [](int count) {
         return groupsIntoOne(
             count, [](int i) { return 10 + i; }, true);
     }},
    {"GroupsIntoOne",
     [](int count) {
         return groupsIntoOne(
             count, [](int) { return 10; }, false);
     }},
};

class LargeGraphsAllocationTest : public AnalysisTest, public ::testing::WithParamInterface<Kind> {
protected:
    /// The allocations of analysing a graph of this size.
    size_t allocations(int count)
    {
        mLog.setMask(0);
        load(GetParam().make(count));
        GraphUtil util;
        const size_t before = AllocationFailures::attempts();
        EXPECT_EQ(util.init(NUXO_KEY_STREAM_ID, mRoot.get(), GetParam().version), GetParam().status);
        return AllocationFailures::attempts() - before;
    }
};

// Twice as many elements take twice as many allocations, more or less. If each cost something for each other one, it
// would be close to four times as many.
TEST_P(LargeGraphsAllocationTest, GrowWithTheGraph)
{
    constexpr int kSome = 400;
    const size_t some = allocations(kSome);
    EXPECT_GT(some, size_t{kSome});
    EXPECT_LT(allocations(2 * kSome), some * 5 / 2);
}

INSTANTIATE_TEST_SUITE_P(Kinds, LargeGraphsAllocationTest, ::testing::ValuesIn(kKinds),
                         [](const auto& kind) { return std::string(kind.param.name); });

} // namespace

} // namespace graphtest
