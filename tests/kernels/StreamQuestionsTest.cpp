// SPDX-License-Identifier: Apache-2.0
#include "kernels/KernelsFixture.h"

namespace graphtest {

namespace {

using Ids = std::vector<int>;

class StreamQuestionsTest : public KernelsTest {
protected:
    Ids streamIds(bool fromSinks)
    {
        Ids ids;
        EXPECT_EQ(mUtils->getStreamIds(ids, fromSinks), StatusOk);
        return ids;
    }

    Ids collected(uint32_t attribute, uint32_t type)
    {
        Ids ids;
        EXPECT_EQ(mUtils->collectNodesIntAttribute(ids, attribute, type), StatusOk);
        return ids;
    }

    /// Groups, compute blocks and sinks of many streams.
    static std::string manyStreams()
    {
        return group("a", "stream_id='9'") + group("b", "stream_id='2'") + group("c", "") +
               group("d", "stream_id='9'") + group("e", "stream_id='-4'") +
               element("compute_block", "f", "stream_id='7'") + element("compute_block", "g", "stream_id='6'") +
               element("compute_block", "h", "stream_id='7'") + sink("s", "stream_id='5'") +
               sink("t", "stream_id='3' content_type='ae_stats'") + sink("u", "") + sink("v", "stream_id='5'") +
               element("hw", "w", "stream_id='8'");
    }

    /// Answer of the question about stream @p stream; the port is in mPeer, which is null beforehand.
    int upstreamOf(int stream)
    {
        mPeer = nullptr;
        return mUtils->getUpstreamStreamId(stream, &mPeer);
    }

    IGraphConfig* mPeer = nullptr;
};

TEST_F(StreamQuestionsTest, StreamsOfProgramGroupsComeOnceInTheOrderOfTheGraph)
{
    for (const char* const version : {"KVA4", "KVA5", "KVA6"}) {
        initWith(manyStreams(), version);
        EXPECT_EQ(streamIds(false), Ids({9, 2, -4})) << version;
    }
}

TEST_F(StreamQuestionsTest, StreamsOfGenerationSevenAreThoseOfComputeBlocks)
{
    initWith(manyStreams(), "KVA7");
    EXPECT_EQ(streamIds(false), Ids({7, 6}));
}

TEST_F(StreamQuestionsTest, StreamsOfSinksAreThoseOfAllSinksInAllGenerations)
{
    for (const char* const version : {"KVA4", "KVA5", "KVA6", "KVA7"}) {
        initWith(manyStreams(), version);
        EXPECT_EQ(streamIds(true), Ids({5, 3})) << version;
    }
}

TEST_F(StreamQuestionsTest, StreamsAreAppended)
{
    initWith(manyStreams());
    Ids ids = {2, 5, 2};
    EXPECT_EQ(mUtils->getStreamIds(ids, false), StatusOk);
    EXPECT_EQ(ids, Ids({2, 5, 2, 9, -4}));
    EXPECT_EQ(mUtils->getStreamIds(ids, true), StatusOk);
    EXPECT_EQ(ids, Ids({2, 5, 2, 9, -4, 3}));
}

TEST_F(StreamQuestionsTest, StreamsAreNotThoseOfExecutionContexts)
{
    renew(false);
    initWith(group("a", "stream_id='1' exec_ctx_id='6'") + group("b", "exec_ctx_id='7'"));
    EXPECT_EQ(streamIds(false), Ids({1}));
}

TEST_F(StreamQuestionsTest, NothingHasStreamsBeforeInitialisation)
{
    EXPECT_EQ(streamIds(true), Ids());
    EXPECT_EQ(streamIds(false), Ids());
    EXPECT_EQ(collected(NUXO_KEY_STREAM_ID, NUXO_KEY_SINK), Ids());
}

TEST_F(StreamQuestionsTest, AnyIntegerOfAnyTypeCanBeCollected)
{
    initWith(manyStreams() + element("hw", "x", "pg_id='4' stream_id='8'") + element("hw", "y", "pg_id='3'"));
    EXPECT_EQ(collected(NUXO_KEY_STREAM_ID, NUXO_KEY_HW), Ids({8}));
    EXPECT_EQ(collected(NUXO_KEY_PG_ID, NUXO_KEY_HW), Ids({4, 3}));
    EXPECT_EQ(collected(NUXO_KEY_STREAM_ID, NUXO_KEY_COMPUTE_BLOCK), Ids({7, 6}));
    EXPECT_EQ(collected(NUXO_KEY_STREAM_ID, NUXO_KEY_KERNEL), Ids());
    EXPECT_EQ(collected(NUXO_KEY_WIDTH, NUXO_KEY_SINK), Ids());
}

TEST_F(StreamQuestionsTest, CollectionAppendsWhatIsNotYetThere)
{
    initWith(manyStreams());
    Ids ids = {-4, 1};
    EXPECT_EQ(mUtils->collectNodesIntAttribute(ids, NUXO_KEY_STREAM_ID, NUXO_KEY_PROGRAM_GROUP), StatusOk);
    EXPECT_EQ(ids, Ids({-4, 1, 9, 2}));
}

TEST_F(StreamQuestionsTest, ValuesOfAnotherKindAreSkipped)
{
    initWith(manyStreams());
    replace(*node("a"), NUXO_KEY_STREAM_ID, std::string("1"));
    EXPECT_EQ(collected(NUXO_KEY_STREAM_ID, NUXO_KEY_PROGRAM_GROUP), Ids({2, 9, -4}));
    EXPECT_EQ(collected(NUXO_KEY_NAME, NUXO_KEY_PROGRAM_GROUP), Ids());
}

TEST_F(StreamQuestionsTest, StreamUpstreamIsThatOfTheGroupThatFeeds)
{
    initWith(stage("a", 3, "", "b:in") + stage("b", 1, "a:out", "c:in") + stage("c", 1, "b:out", "d:in") +
             stage("d", 0, "c:out", ""));
    EXPECT_EQ(upstreamOf(1), 3);
    EXPECT_EQ(mPeer, node("a:out"));
    EXPECT_EQ(upstreamOf(0), 1);
    EXPECT_EQ(mPeer, node("c:out"));
    EXPECT_EQ(mUtils->getUpstreamStreamId(0, nullptr), 1);
}

TEST_F(StreamQuestionsTest, StreamUpstreamIsAskedForByStreamIdWhateverGroupsTheKernels)
{
    renew(false);
    initWith(group("a", "stream_id='3' exec_ctx_id='1'", output("out", "b:in")) +
             group("b", "stream_id='1' exec_ctx_id='3'", input("in", "a:out")));
    EXPECT_EQ(upstreamOf(1), 3);
    EXPECT_EQ(upstreamOf(3), -1);
}

TEST_F(StreamQuestionsTest, StreamUpstreamMayBeThatOfHardware)
{
    initWith(element("hw", "csi", "stream_id='6'", output("csi_out", "a:in")) + stage("a", 3, "csi:csi_out", ""));
    EXPECT_EQ(upstreamOf(3), 6);
    EXPECT_EQ(mPeer, node("csi:csi_out"));
}

TEST_F(StreamQuestionsTest, NothingIsUpstreamOfAStreamWithoutInputs)
{
    initWith(group("a", "stream_id='3'", output("out", "b:in")) + stage("b", 2, "ghost:out", ""));
    for (const int stream : {3, 2, 77, -1}) {
        EXPECT_EQ(upstreamOf(stream), -1) << stream;
        EXPECT_EQ(mPeer, nullptr) << stream;
        EXPECT_EQ(mUtils->getUpstreamStreamId(stream, nullptr), -1);
    }
}

TEST_F(StreamQuestionsTest, PortUpstreamIsToldAlsoWhenItsNodeHasNoStream)
{
    initWith(bufferSource("a:in") + stage("a", 3, "buffer_src0:port_0", ""));
    EXPECT_EQ(upstreamOf(3), -1);
    EXPECT_EQ(mPeer, node("buffer_src0:port_0"));
    EXPECT_EQ(mUtils->getUpstreamStreamId(3, nullptr), -1);
}

TEST_F(StreamQuestionsTest, PortUpstreamIsToldAlsoWhenItBelongsToNoNode)
{
    loadGraph(group("a", "stream_id='3'"));
    MockNode peer;
    addPortOfForeignGraph(*node("a"), "in", 0, &peer);
    init();
    EXPECT_EQ(upstreamOf(3), -1);
    EXPECT_EQ(mPeer, &peer);
}

TEST_F(StreamQuestionsTest, NothingIsUpstreamBeforeInitialisation)
{
    MockNode untouched;
    mPeer = &untouched;
    EXPECT_EQ(mUtils->getUpstreamStreamId(1, &mPeer), -1);
    EXPECT_EQ(mPeer, &untouched);
    EXPECT_EQ(mUtils->getUpstreamStreamId(1, nullptr), -1);
}

TEST_F(StreamQuestionsTest, QuestionsDoNotDependOnTheKernelLists)
{
    // Kernels with bad ids, without a source.
    ASSERT_NE(initWith(stage("a", 3, "", "b:in", kernel("k", 1, 5)) + stage("b", 1, "a:out", "")), StatusOk);
    EXPECT_EQ(streamIds(false), Ids({3, 1}));
    EXPECT_EQ(upstreamOf(1), 3);
}

} // namespace

} // namespace graphtest
