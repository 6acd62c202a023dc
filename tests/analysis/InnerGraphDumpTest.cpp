// SPDX-License-Identifier: Apache-2.0
// What readers of the log see of subgraphs and inner graphs.
#include "analysis/InnerGraphFixture.h"

namespace graphtest {

namespace {

class InnerGraphDumpTest : public GraphStepsTest {
protected:
    /// The recorded messages without their levels.
    Lines texts() const
    {
        Lines all = maskedLines();
        for (std::string& line : all) line.erase(0, line.find(' ') + 1);
        return all;
    }

    Lines dumpInner(int id)
    {
        clearLog();
        access().dumpInnerGraph(id);
        return texts();
    }

    /// A kernel in a graph by itself, dumped with @p filter.
    int dumpNode(Access::ImagingNodeType filter)
    {
        clearLog();
        return Access::dumpInnerNodeVisitor(&mNode, filter);
    }

    static Lines header(int id)
    {
        return {kDoubleLine, "Dumping Imaging graph inside subgraph " + std::to_string(id) + " of type stream_id",
                kDoubleLine, "Subgraph  0x#"};
    }

    ImagingNode mNode;
    qv_isp_zmt_run_kernels mRecord = {}; ///< for mNode to point to
};

TEST_F(InnerGraphDumpTest, SubgraphsAreListedWithTheirParts)
{
    load(smallGraph());
    EXPECT_EQ(analyze(), StatusOk);
    clearLog();
    access().dumpSubGraphInfos();
    const Lines expected = {
        kDoubleLine,
        "FOUND 2 subgraphs of type stream_id",
        kDoubleLine,
        "----> subgraph id -1 Info START",
        "KernelCount 0, Tuning Mode 0",
        "PG Count 0",
        "Input Ports 0",
        "Output Ports 1",
        "* [Output]: port[buffer_src0:port_0]",
        "<--- subgraph id -1 Info END",
        "----> subgraph id 1 Info START",
        "KernelCount 1, Tuning Mode 0",
        "PG Count 1",
        "* program_group[pg]",
        "Input Ports 1",
        "* [Input] port[pg:in]",
        "Output Ports 1",
        "* [Output]: port[pg:out]",
        "<--- subgraph id 1 Info END",
    };
    EXPECT_EQ(texts(), expected);
}

TEST_F(InnerGraphDumpTest, SubgraphsAreListedByKeyWithTheirTuningModes)
{
    load(group("pg", "exec_ctx_id='4' tuning_mode='-3'", kernel("k", 1) + kernel("l", 2)) +
         sink("video", "exec_ctx_id='4'") + graphOf(connection("pg:out", "video")));
    EXPECT_EQ(analyze(GdfVersionKVA6, NUXO_KEY_EXEC_CTX_ID), StatusOk);
    clearLog();
    access().dumpSubGraphInfos();
    const Lines all = texts();
    ASSERT_GT(all.size(), 4U);
    EXPECT_EQ(all[1], "FOUND 1 subgraphs of type exec_ctx_id");
    EXPECT_EQ(all[4], "KernelCount 2, Tuning Mode -3");
}

TEST_F(InnerGraphDumpTest, NoSubgraphsAreAHeader)
{
    access().dumpSubGraphInfos();
    EXPECT_EQ(texts(), (Lines{kDoubleLine, "FOUND 0 subgraphs of type stream_id", kDoubleLine}));
}

TEST_F(InnerGraphDumpTest, UnknownSubgraphIsSaidToBeInvalid)
{
    load(smallGraph());
    EXPECT_EQ(analyze(), StatusOk);
    EXPECT_EQ(dumpInner(99), Lines{"Invalid Subgraph id 99"});
}

TEST_F(InnerGraphDumpTest, InnerGraphIsWalkedFromItsInputPorts)
{
    load(smallGraph());
    EXPECT_EQ(init(), StatusOk);
    Lines expected = header(1);
    const Lines nodes = {
        "-->START <-- pg:in",
        kDashLine,
        "[4]pg:in ",
        kDashLine,
        "[0]k ",
        "kernel_uuid: 11 [ENABLED]",
        "stream_id 1",
        "metadata: (0 0 0 0)",
        "res info: NULL",
        "res_history: (iw: 640 ih: 480 (l: 0, t: 0, r: 0, b: 0), ow: 640, oh: 480 (l: 0, t: 0, r: 0, b: 0))",
        "bpp_info in:0 out:0",
        kDashLine,
        "[5]pg:out ",
        "--> END <-- 0",
    };
    expected.insert(expected.end(), nodes.begin(), nodes.end());
    EXPECT_EQ(dumpInner(1), expected);
    EXPECT_EQ(dumpInner(1), expected);    // leaves no marks
    EXPECT_EQ(dumpInner(-1), header(-1)); // has no input port
}

TEST_F(InnerGraphDumpTest, KernelWithoutRecordEndsTheWalk)
{
    load(smallGraph());
    EXPECT_EQ(analyze(), StatusOk);
    Lines expected = header(1);
    const Lines nodes = {
        "-->START <-- pg:in",
        kDashLine,
        "[4]pg:in ",
        kDashLine,
        "[0]k ",
        "kernel_uuid: 11 [ENABLED]",
        "INVALID output!! Error",
        "Graph traversal interrupted at node k [-16]",
        "Graph traversal interrupted at node pg:in [-16]",
        "--> END <-- -16",
    };
    expected.insert(expected.end(), nodes.begin(), nodes.end());
    EXPECT_EQ(dumpInner(1), expected);
    EXPECT_EQ(dumpInner(1), expected);
}

TEST_F(InnerGraphDumpTest, InputPortThatNoLinkUsesIsNotFound)
{
    load(bufferSource("pg:in") +
         group("pg", "stream_id='1'", input("in", "buffer_src0:port_0") + output("out", "video")) +
         sink("video", "stream_id='1' peer='pg:out'") +
         graphOf(connection("buffer_src0:port_0", "pg:in") + connection("pg:out", "video")));
    EXPECT_EQ(analyze(), StatusOk);
    const Lines all = dumpInner(1);
    ASSERT_EQ(all.size(), 5U);
    EXPECT_TRUE(
        std::regex_match(all[4], std::regex("Failed to find input port \\S*pg:in\\S* in the Imaging graph- Error")))
        << all[4];
}

TEST_F(InnerGraphDumpTest, NodesOfOtherKindsThanTheFilterAreSkipped)
{
    const Access::ImagingNodeType kinds[] = {Access::KERNEL, Access::MUX,        Access::DEMUX,
                                             Access::SPLIT,  Access::INPUT_PORT, Access::OUTPUT_PORT};
    mNode.name = "n";
    for (const auto kind : kinds) {
        mNode.type = kind;
        for (const auto filter : kinds) {
            if (filter == kind) continue;
            EXPECT_EQ(dumpNode(filter), StatusOk);
            EXPECT_TRUE(loggedExactly({}));
        }
        if (kind == Access::KERNEL) continue;
        for (const auto filter : {kind, Access::ANY}) {
            EXPECT_EQ(dumpNode(filter), StatusOk);
            EXPECT_TRUE(loggedExactly({"16 " + kDashLine, "16 [" + std::to_string(kind) + "]n "}));
        }
    }
}

TEST_F(InnerGraphDumpTest, KernelIsPrintedWithItsRecord)
{
    mNode.name = "k";
    mNode.type = Access::KERNEL;
    mNode.runKernel.kernel_uuid = 7;
    mNode.runKernel.enable = 1;
    qv_isp_zmt_resolution_info info = {1, 2, {3, 4, 5, 6}, 7, 8, {9, 10, 11, 12}};
    qv_isp_zmt_resolution_info history = {-1, -2, {-3, -4, -5, -6}, -7, -8, {-9, -10, -11, -12}};
    mRecord.stream_id = 60000;
    mRecord.kernel_uuid = 8; // the node's own values name the kernel
    mRecord.enable = 2;
    for (uint32_t i = 0; i < 4; ++i) mRecord.metadata[i] = 20 + i;
    mRecord.bpp_info = {10, 12};
    mRecord.resolution_info = &info;
    mRecord.resolution_history = &history;
    mNode.tevRunKernel = &mRecord;
    for (const auto filter : {Access::KERNEL, Access::ANY}) {
        EXPECT_EQ(dumpNode(filter), StatusOk);
        EXPECT_TRUE(loggedExactly({
            "16 " + kDashLine,
            "16 [0]k ",
            "16 kernel_uuid: 7 [ENABLED]",
            "16 stream_id 60000",
            "16 metadata: (20 21 22 23)",
            "16 res_info: (iw: 1 ih: 2 (l: 3, t: 4, r: 5, b: 6), ow: 7, oh: 8 (l: 9, t: 10, r: 11, b: 12))",
            "16 res_history: (iw: -1 ih: -2 (l: -3, t: -4, r: -5, b: -6), ow: -7, oh: -8 (l: -9, t: -10, r: -11, b: "
            "-12))",
            "16 bpp_info in:10 out:12",
        }));
    }
}

TEST_F(InnerGraphDumpTest, KernelMayHaveNoResolutions)
{
    mNode.type = Access::KERNEL;
    mNode.tevRunKernel = &mRecord;
    EXPECT_EQ(dumpNode(Access::ANY), StatusOk);
    EXPECT_TRUE(loggedExactly({"16 " + kDashLine, "16 [0] ", "16 kernel_uuid: 0 [BYPASSED]", "16 stream_id 0",
                               "16 metadata: (0 0 0 0)", "16 res info: NULL", "16 res history: NULL",
                               "16 bpp_info in:0 out:0"}));
}

TEST_F(InnerGraphDumpTest, StateOfAKernelIsAWord)
{
    mNode.name = "k";
    mNode.type = Access::KERNEL;
    const std::pair<int, const char*> words[] = {
        {1, "[ENABLED]"}, {2, "[DISABLED]"}, {0, "[BYPASSED]"}, {3, "INVALID!!"}, {-1, "INVALID!!"}};
    for (const auto& [enable, word] : words) {
        mNode.runKernel.enable = enable;
        EXPECT_EQ(dumpNode(Access::KERNEL), StatusMissingObject); // it has no record
        EXPECT_TRUE(loggedExactly(
            {"16 " + kDashLine, "16 [0]k ", std::string("16 kernel_uuid: 0 ") + word, "16 INVALID output!! Error"}));
    }
}

} // namespace

} // namespace graphtest
