// SPDX-License-Identifier: Apache-2.0
#include "kernels/KernelsFixture.h"
#include "kernels/ZmtTevUtilsAccess.h"

namespace graphtest {

namespace {

using NUXO::ZmtTevUtilsAccess;

class ReinitialisationTest : public KernelsTest {
protected:
    /// A graph of one stream whose kernels have the uuids @p uuid, @p uuid + 1.
    static std::string streamOf(int stream, int uuid, int width = 640)
    {
        return bufferSource("isp:in", width, 480) +
               stage("isp", stream, "buffer_src0:port_0", "video",
                     kernel("first", uuid, 0) + kernel("second", uuid + 1, 1)) +
               streamSink("video", stream, "isp:out");
    }

    static Lines recordsOfStream(int stream, int uuid, int width = 640)
    {
        const std::string id = std::to_string(stream);
        const std::string side = std::to_string(width) + "x480";
        const std::string rest = " 1 history " + side + ">" + side;
        return {id + ":" + std::to_string(uuid) + rest, id + ":" + std::to_string(uuid + 1) + rest};
    }

    /// Whether nothing is left of the arrays of any graph.
    void expectNoArrays()
    {
        EXPECT_TRUE(ZmtTevUtilsAccess::indexMap(*mUtils).empty());
        EXPECT_TRUE(ZmtTevUtilsAccess::pools(*mUtils).empty());
        EXPECT_TRUE(ZmtTevUtilsAccess::pgMap(*mUtils).empty());
        EXPECT_TRUE(ZmtTevUtilsAccess::execCtxMap(*mUtils).empty());
    }

    static inline const std::string kLinks =
        "<klink source='in' destination='first:0'/><klink source='first:0' destination='out'/>";

    /// A graph for the analysis with one kernel.
    static std::string linkedStream(int stream, int uuid)
    {
        return bufferSource("isp:in") +
               stage("isp", stream, "buffer_src0:port_0", "video", kernel("first", uuid, 0) + kLinks) +
               streamSink("video", stream, "isp:out");
    }

    int initLinked(int stream, int uuid, const std::string& version = "KVA6")
    {
        return initWith(linkedStream(stream, uuid), version,
                        connection("buffer_src0:port_0", "isp:in") + connection("isp:out", "video"));
    }
};

TEST_F(ReinitialisationTest, OtherGraphReplacesAllContexts)
{
    ASSERT_EQ(initWith(streamOf(1, 10)), StatusOk);
    const GraphConfigNode* const earlier = node("isp");
    ASSERT_EQ(initWith(streamOf(2, 20)), StatusOk);
    EXPECT_EQ(recordsOf(2), recordsOfStream(2, 20));
    EXPECT_EQ(recordsOf(1), Lines());
    qv_isp_zmt_program_group pg = {};
    EXPECT_EQ(mUtils->getProgramGroup(earlier, pg), StatusBadArgument);
    EXPECT_TRUE(logged(kError, "Could not find the PG isp in the PG memory pool map"));
    EXPECT_EQ(ZmtTevUtilsAccess::pools(*mUtils).size(), 1U);
    EXPECT_EQ(ZmtTevUtilsAccess::indexMap(*mUtils).size(), 1U);
}

TEST_F(ReinitialisationTest, CountsDoNotAddUp)
{
    ASSERT_EQ(initWith(streamOf(1, 10)), StatusOk);
    for (int run = 0; run < 3; ++run) {
        clearLog();
        ASSERT_EQ(init(), StatusOk);
        EXPECT_TRUE(logged(kDebug, "Allocated 2 kernels for exec ctx 1. Index: 0"));
        EXPECT_EQ(recordsOf(1), recordsOfStream(1, 10));
    }
}

TEST_F(ReinitialisationTest, RecordsStayValidUntilTheNextGraph)
{
    ASSERT_EQ(initWith(streamOf(1, 10)), StatusOk);
    const qv_isp_zmt_program_group pg = records(1);
    qv_isp_zmt_program_group ofGroup = {};
    ASSERT_EQ(mUtils->getProgramGroup(node("isp"), ofGroup), StatusOk);
    std::vector<int> ids;
    mUtils->getStreamIds(ids, true);
    mUtils->dumpKernels(1);
    mUtils->detectNewGraphVersion();
    mUtils->nodesHaveKernelLinks();
    mUtils->initTevUtils(nullptr);
    IGraphConfig* peer = nullptr;
    mUtils->getUpstreamStreamId(1, &peer);
    EXPECT_EQ(recordTexts(pg), recordsOfStream(1, 10));
    EXPECT_EQ(recordTexts(ofGroup), recordsOfStream(1, 10));
}

TEST_F(ReinitialisationTest, FailedGenerationCanBeFollowedByAGoodOneAndBack)
{
    const std::string sourceless = group("isp", "stream_id='5'", kernel("k", 1, 0));
    ASSERT_EQ(initWith(sourceless), StatusBadState);
    ASSERT_EQ(initWith(streamOf(1, 10)), StatusOk);
    EXPECT_EQ(recordsOf(5), Lines());
    EXPECT_EQ(recordsOf(1), recordsOfStream(1, 10));
    ASSERT_EQ(initWith(sourceless), StatusBadState);
    EXPECT_EQ(recordsOf(1), Lines());
    EXPECT_EQ(sourceHistory(), uncropped(0, 0, 0, 0));
    ASSERT_EQ(initWith(streamOf(2, 20)), StatusOk);
    EXPECT_EQ(recordsOf(5), Lines());
    EXPECT_EQ(recordsOf(2), recordsOfStream(2, 20));
}

TEST_F(ReinitialisationTest, HistoryOfTheSourceBelongsToTheLatestGraph)
{
    ASSERT_EQ(initWith(streamOf(1, 10, 640)), StatusOk);
    EXPECT_EQ(sourceHistory(), uncropped(640, 480, 640, 480));
    ASSERT_EQ(initWith(streamOf(1, 10, 320)), StatusOk);
    EXPECT_EQ(sourceHistory(), uncropped(320, 480, 320, 480));
    EXPECT_EQ(recordsOf(1), recordsOfStream(1, 10, 320));
    // No sink, so that no history is asked for.
    ASSERT_EQ(initWith(bufferSource("") + group("isp", "stream_id='1'", kernel("k", 1, 0))), StatusOk);
    EXPECT_EQ(sourceHistory(), uncropped(0, 0, 0, 0));
}

TEST_F(ReinitialisationTest, ArraysAreReleasedForAGraphThatIsAnalysed)
{
    ASSERT_EQ(initWith(streamOf(1, 10)), StatusOk);
    ASSERT_EQ(initLinked(3, 30), StatusOk);
    expectNoArrays();
    EXPECT_EQ(records(3).kernel_count, 1U);
    EXPECT_EQ(records(1).kernel_count, 0U);
    EXPECT_TRUE(logged(kError, "Invalid subgraph(stream_id) id 1"));
}

TEST_F(ReinitialisationTest, AnalysedGraphCanBeFollowedByAnOlderOne)
{
    for (const char* const version : {"KVA6", "KVA5"}) {
        ASSERT_EQ(initLinked(3, 30, version), StatusOk);
        clearLog();
        ASSERT_EQ(initWith(streamOf(1, 10)), StatusOk);
        EXPECT_EQ(recordsOf(1), recordsOfStream(1, 10));
        EXPECT_EQ(recordsOf(3), Lines());
        EXPECT_TRUE(logged(kError, "No kernels found with stream id 3"));
        EXPECT_EQ(sourceHistory(), uncropped(640, 480, 640, 480));
    }
}

TEST_F(ReinitialisationTest, AnalysedGraphCanBeFollowedByAnotherAndByAFailedOne)
{
    ASSERT_EQ(initLinked(3, 30), StatusOk);
    ASSERT_EQ(initLinked(4, 40), StatusOk);
    EXPECT_EQ(records(3).kernel_count, 0U);
    ASSERT_EQ(records(4).kernel_count, 1U);
    EXPECT_EQ(records(4).run_kernels[0].kernel_uuid, 40U);
    load(linkedStream(5, 50)); // links without a graph element; the earlier tree is gone
    EXPECT_EQ(init(), StatusMissingObject);
    EXPECT_EQ(records(4).kernel_count, 0U);
    ASSERT_EQ(initLinked(6, 60), StatusOk);
    EXPECT_EQ(records(6).kernel_count, 1U);
}

TEST_F(ReinitialisationTest, EarlierGraphMayBeGone)
{
    ASSERT_EQ(initWith(streamOf(1, 10)), StatusOk);
    mRoot.reset();
    mEarlier.clear();
    ASSERT_EQ(initWith(streamOf(2, 20)), StatusOk);
    EXPECT_EQ(recordsOf(2), recordsOfStream(2, 20));
    ASSERT_EQ(initLinked(3, 30), StatusOk);
    mRoot.reset();
    mEarlier.clear();
    ASSERT_EQ(initLinked(4, 40), StatusOk);
    mRoot.reset();
    mEarlier.clear();
    ASSERT_EQ(initWith(streamOf(2, 20)), StatusOk);
    EXPECT_EQ(recordsOf(2), recordsOfStream(2, 20));
}

TEST_F(ReinitialisationTest, ObjectsDoNotShareAnything)
{
    ASSERT_EQ(initWith(streamOf(1, 10)), StatusOk);
    ZmtTevUtils other(true);
    ASSERT_EQ(other.initTevUtils(mRoot.get()), StatusOk);
    qv_isp_zmt_program_group pg = {};
    other.getProgramGroup(1, pg);
    EXPECT_NE(pg.run_kernels, records(1).run_kernels);
    EXPECT_NE(pg.run_kernels[0].resolution_history, records(1).run_kernels[0].resolution_history);
    renew();
    EXPECT_EQ(recordTexts(pg), recordsOfStream(1, 10));
}

} // namespace

} // namespace graphtest
