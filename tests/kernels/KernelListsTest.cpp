// SPDX-License-Identifier: Apache-2.0
// Which contexts exist, and how many records they get.
#include "kernels/KernelsFixture.h"

#include <algorithm>

namespace graphtest {

namespace {

class KernelListsTest : public KernelsTest {
protected:
    /// Kernels 0 to @p count - 1 named after @p prefix, with uuids from @p firstUuid.
    static std::string kernels(const std::string& prefix, int count, int firstUuid)
    {
        std::string all;
        for (int id = 0; id < count; ++id) all += kernel(prefix + std::to_string(id), firstUuid + id, id);
        return all;
    }

    /// A group of one stream without connections.
    static std::string loose(const std::string& name, const std::string& attributes, const std::string& body)
    {
        return group(name, attributes, body);
    }

    /// The lines about what was allocated.
    Lines allocated() const { return picked({"2 Allocated"}); }

    static bool isZero(const qv_isp_zmt_run_kernels& record)
    {
        const auto* const bytes = reinterpret_cast<const unsigned char*>(&record);
        return std::all_of(bytes, bytes + sizeof(record), [](unsigned char byte) { return byte == 0; });
    }
};

TEST_F(KernelListsTest, HardwareAloneGivesContextZeroWithOneRecord)
{
    EXPECT_EQ(initWith(bufferSource("csi:in") + element("hw", "csi", "")), StatusOk);
    EXPECT_EQ(allocated(), Lines({"2 Allocated 1 kernels for exec ctx 0. Index: 0"}));
    EXPECT_EQ(picked({"2 TEV"}),
              Lines({"2 TEV utils initialized with 1 exec contexts", "2 TEV utils exec-context 0 has 1 kernels"}));
    const qv_isp_zmt_program_group pg = records(0);
    ASSERT_EQ(pg.kernel_count, 1U);
    EXPECT_TRUE(isZero(pg.run_kernels[0]));
}

TEST_F(KernelListsTest, MoreHardwareDoesNotRaiseTheCount)
{
    EXPECT_EQ(initWith(bufferSource("csi:in") + element("hw", "csi", "") + element("hw", "soc", "stream_id='0'") +
                       element("hw", "other", "stream_id='4'")),
              StatusOk);
    EXPECT_EQ(allocated(), Lines({"2 Allocated 1 kernels for exec ctx 0. Index: 0"}));
}

// The record for the hardware is there before the kernels of context 0 are counted.
TEST_F(KernelListsTest, KernelsOfContextZeroAddToTheRecordOfTheHardware)
{
    EXPECT_EQ(initWith(element("hw", "csi", "") + bufferSource("isp:in") +
                       stage("isp", 0, "buffer_src0:port_0", "video", kernels("k", 2, 10)) +
                       streamSink("video", 0, "isp:out")),
              StatusOk);
    EXPECT_EQ(allocated(),
              Lines({"2 Allocated 2 kernels for pg isp", "2 Allocated 3 kernels for exec ctx 0. Index: 0"}));
    EXPECT_EQ(recordsOf(0), Lines({"0:10 1 history 640x480>640x480", "0:11 1 history 640x480>640x480", "0:0 0"}));
}

TEST_F(KernelListsTest, GroupsOfOneStreamShareAContext)
{
    EXPECT_EQ(initWith(bufferSource("") + loose("a", "stream_id='1'", kernels("k", 2, 10)) +
                       loose("b", "stream_id='2'", kernels("l", 4, 20)) +
                       loose("c", "stream_id='1'", kernels("m", 3, 30))),
              StatusOk);
    EXPECT_EQ(allocated(), Lines({"2 Allocated 2 kernels for pg a", "2 Allocated 4 kernels for pg b",
                                  "2 Allocated 3 kernels for pg c", "2 Allocated 5 kernels for exec ctx 1. Index: 0",
                                  "2 Allocated 4 kernels for exec ctx 2. Index: 1"}));
    EXPECT_EQ(records(1).kernel_count, 5U);
    EXPECT_EQ(records(2).kernel_count, 4U);
}

TEST_F(KernelListsTest, ContextsAreNumberedInAscendingOrder)
{
    EXPECT_EQ(initWith(bufferSource("") + loose("a", "stream_id='9'", kernels("k", 1, 10)) +
                       loose("b", "stream_id='-1'", kernels("l", 2, 20)) +
                       loose("c", "stream_id='3'", kernels("m", 3, 30)) + element("hw", "csi", "")),
              StatusOk);
    EXPECT_EQ(
        picked({"2 Allocated 1 kernels for exec", "2 Allocated 2 kernels for exec", "2 Allocated 3 kernels for exec"}),
        Lines({"2 Allocated 2 kernels for exec ctx -1. Index: 0", "2 Allocated 1 kernels for exec ctx 0. Index: 1",
               "2 Allocated 3 kernels for exec ctx 3. Index: 2", "2 Allocated 1 kernels for exec ctx 9. Index: 3"}));
}

TEST_F(KernelListsTest, GroupWithoutKernelsMakesNoContext)
{
    EXPECT_EQ(initWith(bufferSource("") + loose("empty", "stream_id='1'", port("in", "direction='0'"))), StatusOk);
    EXPECT_EQ(allocated(), Lines({"2 Allocated 0 kernels for pg empty"}));
    clearLog();
    EXPECT_EQ(records(1).kernel_count, 0U);
    EXPECT_TRUE(loggedExactly({"16 No kernels found with stream id 1"}));
}

TEST_F(KernelListsTest, OnlyKernelsThatAreChildrenOfAGroupCount)
{
    const std::string others =
        element("mux", "m", "") + element("port", "p", "") + element("split", "s", "", kernel("deep", 30, 0));
    EXPECT_EQ(initWith(bufferSource("") + loose("a", "stream_id='1'", kernels("k", 1, 10) + others) +
                       element("hw", "csi", "stream_id='1'", kernels("h", 2, 20))),
              StatusOk);
    EXPECT_EQ(allocated(), Lines({"2 Allocated 1 kernels for pg a", "2 Allocated 1 kernels for exec ctx 0. Index: 0",
                                  "2 Allocated 1 kernels for exec ctx 1. Index: 1"}));
}

TEST_F(KernelListsTest, GroupsCanBeToldApartByExecutionContext)
{
    renew(false);
    EXPECT_EQ(initWith(bufferSource("") + loose("a", "stream_id='1' exec_ctx_id='6'", kernels("k", 2, 10)) +
                       loose("b", "stream_id='2' exec_ctx_id='6'", kernels("l", 1, 20)) +
                       loose("c", "stream_id='1' exec_ctx_id='5'", kernels("m", 1, 30))),
              StatusOk);
    EXPECT_EQ(picked({"2 TEV"}),
              Lines({"2 TEV utils initialized with 2 exec contexts", "2 TEV utils exec-context 5 has 1 kernels",
                     "2 TEV utils exec-context 6 has 3 kernels"}));
}

TEST_F(KernelListsTest, GroupWithoutItsKeyEndsTheAllocation)
{
    const std::string missing = "16 Couldn't get stream id or exec ctx id for pg b";
    for (const bool useStreamId : {true, false}) {
        renew(useStreamId);
        const std::string key = useStreamId ? "stream_id" : "exec_ctx_id";
        const std::string other = useStreamId ? "exec_ctx_id" : "stream_id";
        EXPECT_EQ(initWith(bufferSource("") + loose("a", key + "='1'", kernels("k", 2, 10)) +
                           loose("b", other + "='1'", kernels("l", 1, 20)) +
                           loose("c", key + "='3'", kernels("m", 1, 30))),
                  StatusMissingData);
        EXPECT_EQ(complaints(), Lines({missing, "16 Generating kernel lists failed"}));
        EXPECT_EQ(allocated(), Lines({"2 Allocated 2 kernels for pg a"}));
        EXPECT_EQ(picked({"2 TEV"}),
                  Lines({"2 TEV utils initialized with 1 exec contexts", "2 TEV utils exec-context 1 has 2 kernels"}));
    }
}

TEST_F(KernelListsTest, KeyOfAnotherKindEndsTheAllocationWithItsOwnStatus)
{
    loadGraph(bufferSource("") + loose("b", "", kernels("l", 1, 20)));
    node("b")->addValue(NUXO_KEY_STREAM_ID, std::string("1"));
    EXPECT_EQ(init(), StatusNotFound);
    EXPECT_TRUE(logged(kError, "Couldn't get stream id or exec ctx id for pg b"));
}

TEST_F(KernelListsTest, RecordsOfAStreamThatFeedsNoSinkStayBlank)
{
    EXPECT_EQ(initWith(bufferSource("") + loose("a", "stream_id='1'", kernels("k", 3, 10))), StatusOk);
    const qv_isp_zmt_program_group pg = records(1);
    ASSERT_EQ(pg.kernel_count, 3U);
    for (uint32_t i = 0; i < pg.kernel_count; ++i) EXPECT_TRUE(isZero(pg.run_kernels[i])) << i;
}

TEST_F(KernelListsTest, GraphWithoutAnActiveSourceKeepsItsArraysButFails)
{
    const std::string groups = loose("a", "stream_id='1'", kernels("k", 3, 10));
    for (const std::string& source : {std::string(), bufferSource("", 640, 480, "enabled='0'")}) {
        EXPECT_EQ(initWith(source + groups), StatusBadState);
        EXPECT_TRUE(logged(kError, "Generating kernel lists failed"));
        EXPECT_TRUE(logged(kDebug, "Allocated 3 kernels for exec ctx 1. Index: 0"));
        EXPECT_EQ(records(1).kernel_count, 3U);
        EXPECT_TRUE(isZero(records(1).run_kernels[2]));
    }
}

TEST_F(KernelListsTest, SecondGenerationGivesTheSameCounts)
{
    const Lines expected = {"1:10 1 history 640x480>640x480", "1:11 1 history 640x480>640x480"};
    ASSERT_EQ(initWith(element("hw", "csi", "") + bufferSource("isp:in") +
                       stage("isp", 1, "buffer_src0:port_0", "video", kernels("k", 2, 10)) +
                       streamSink("video", 1, "isp:out")),
              StatusOk);
    const Lines first = allocated();
    EXPECT_EQ(first.size(), 3U);
    for (int run = 0; run < 2; ++run) {
        clearLog();
        EXPECT_EQ(mUtils->generateKernelListsForExecCtxs(), StatusOk);
        EXPECT_EQ(allocated(), first);
        EXPECT_EQ(recordsOf(1), expected);
        EXPECT_EQ(records(0).kernel_count, 1U);
    }
}

TEST_F(KernelListsTest, GenerationSeesWhatTheGraphHasBecome)
{
    ASSERT_EQ(initWith(bufferSource("isp:in") + stage("isp", 1, "buffer_src0:port_0", "video", kernels("k", 2, 10)) +
                       streamSink("video", 1, "isp:out")),
              StatusOk);
    node("isp")->removeDescendant(key("k1"));
    EXPECT_EQ(mUtils->generateKernelListsForExecCtxs(), StatusOk);
    EXPECT_EQ(recordsOf(1), Lines({"1:10 1 history 640x480>640x480"}));
}

TEST_F(KernelListsTest, GenerationNeedsAGraph)
{
    EXPECT_EQ(mUtils->generateKernelListsForExecCtxs(), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 GC Handle root is NULL"}));
}

} // namespace

} // namespace graphtest
