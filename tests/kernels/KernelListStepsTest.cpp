// SPDX-License-Identifier: Apache-2.0
// Steps of the set-up that clients reach only through all of it.
#include "kernels/KernelsFixture.h"
#include "kernels/ZmtTevUtilsAccess.h"

namespace graphtest {

namespace {

using Access = NUXO::ZmtTevUtilsAccess;

class KernelListStepsTest : public KernelsTest {
protected:
    /// Two streams, the second fed by the first.
    void initTwoStreams()
    {
        ASSERT_EQ(initWith(bufferSource("a:in") + stage("a", 5, "buffer_src0:port_0", "b:in", kernel("k", 10, 0)) +
                           stage("b", 2, "a:out", "video", kernel("l", 11, 0) + kernel("m", 12, 1)) +
                           streamSink("video", 2, "b:out")),
                  StatusOk);
        clearLog();
    }
};

TEST_F(KernelListStepsTest, NothingIsThereAtFirst)
{
    EXPECT_TRUE(Access::indexMap(*mUtils).empty());
    EXPECT_TRUE(Access::pools(*mUtils).empty());
    EXPECT_TRUE(Access::pgMap(*mUtils).empty());
    EXPECT_TRUE(Access::execCtxMap(*mUtils).empty());
    EXPECT_EQ(Access::root(*mUtils), nullptr);
    EXPECT_EQ(Access::version(*mUtils), 0);
    EXPECT_EQ(Access::ispUtils(*mUtils), nullptr);
}

TEST_F(KernelListStepsTest, PoolsHaveARecordOfEachKindForEachKernel)
{
    initTwoStreams();
    EXPECT_EQ(Access::indexMap(*mUtils), (std::map<int, uint32_t>{{2, 0}, {5, 1}}));
    const auto& pools = Access::pools(*mUtils);
    ASSERT_EQ(pools.size(), 2U);
    const size_t kernels[2] = {2, 1};
    for (size_t i = 0; i < pools.size(); ++i) {
        ASSERT_EQ(pools[i].histories.size(), kernels[i]);
        ASSERT_EQ(pools[i].infos.size(), kernels[i]);
        for (const auto& record : pools[i].infos) {
            ASSERT_NE(record, nullptr);
            EXPECT_EQ(ZmtTevUtils::resInfoToStr(*record), uncropped(0, 0, 0, 0)) << "no kernel has sizes";
        }
    }
    EXPECT_EQ(records(2).run_kernels[1].resolution_history, pools[0].histories[1].get());
    EXPECT_EQ(records(5).run_kernels[0].resolution_history, pools[1].histories[0].get());
}

TEST_F(KernelListStepsTest, ArrayOfAGroupIsKeptWhenItIsThereAlready)
{
    loadGraph(group("a", "stream_id='1'"));
    EXPECT_EQ(Access::createPerPgKernelListStructures(*mUtils, node("a"), 3), StatusOk);
    const auto* const first = Access::pgMap(*mUtils).at(node("a")).kernels.get();
    EXPECT_EQ(Access::createPerPgKernelListStructures(*mUtils, node("a"), 7), StatusOk);
    EXPECT_EQ(Access::pgMap(*mUtils).size(), 1U);
    EXPECT_EQ(Access::pgMap(*mUtils).at(node("a")).kernels.get(), first);
    EXPECT_EQ(Access::pgMap(*mUtils).at(node("a")).count, 3U);
    EXPECT_TRUE(logged(kDebug, "Allocated 3 kernels for pg a"));
}

TEST_F(KernelListStepsTest, IndexOfContextsIsBuiltAnew)
{
    loadGraph("");
    Access::indexMap(*mUtils) = {{9, 4}};
    Access::execCtxMap(*mUtils)[6].count = 2;
    EXPECT_EQ(Access::createKernelListStructures(*mUtils), StatusOk);
    EXPECT_EQ(Access::indexMap(*mUtils), (std::map<int, uint32_t>{{6, 0}}));
    EXPECT_TRUE(loggedExactly({"2 Allocated 2 kernels for exec ctx 6. Index: 0"}));
}

TEST_F(KernelListStepsTest, NewContextHasOneKernelAndNoArray)
{
    const auto& entry = Access::execCtxMap(*mUtils)[1];
    EXPECT_EQ(entry.count, 1U);
    EXPECT_EQ(entry.kernels, nullptr);
}

TEST_F(KernelListStepsTest, ReleaseEmptiesEverything)
{
    initTwoStreams();
    Access::deleteKernelInfo(*mUtils);
    EXPECT_TRUE(Access::pools(*mUtils).empty());
    EXPECT_TRUE(Access::pgMap(*mUtils).empty());
    EXPECT_TRUE(Access::execCtxMap(*mUtils).empty());
    EXPECT_EQ(records(2).kernel_count, 0U);
    Access::deleteKernelInfo(*mUtils);
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(recordsOf(2).size(), 2U);
}

TEST_F(KernelListStepsTest, ChainsAreListsOfContextsAndPorts)
{
    initTwoStreams();
    Access::StreamChains chains;
    EXPECT_EQ(Access::getStreamChains(*mUtils, chains), StatusOk);
    ASSERT_EQ(chains.size(), 1U);
    const std::vector<std::pair<int, IGraphConfig*>> expected = {{2, node("b:out")}, {5, node("a:out")}};
    EXPECT_EQ(chains.at(2), expected);
}

TEST_F(KernelListStepsTest, ChainOfTheFirstSinkStaysWhenALaterOneIsBroken)
{
    loadGraph(stage("a", 5, "", "video", kernel("k", 10, 0)) + streamSink("video", 5, "a:out") +
              streamSink("still", 6, ""));
    Access::root(*mUtils) = mRoot.get();
    Access::StreamChains chains;
    EXPECT_EQ(Access::getStreamChains(*mUtils, chains), StatusMissingObject);
    ASSERT_EQ(chains.size(), 1U);
    EXPECT_EQ(chains.begin()->first, 5);
}

} // namespace

} // namespace graphtest
