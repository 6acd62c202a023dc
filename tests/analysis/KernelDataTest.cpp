// SPDX-License-Identifier: Apache-2.0
// The records: how many there are, what is in them, who gets them.
#include "analysis/HistoryFixture.h"

#include <set>

namespace historytest {

namespace {

class KernelDataTest : public HistoryTest {
protected:
    /// A group of three kernels whose ids, names and places differ in order.
    void loadThree(const std::string& groupAttributes = "tuning_mode='5'")
    {
        load(source(1920, 1080) + group("pg", 1, kBody, "pg_id='10' " + groupAttributes) + sink("sink", 1),
             {"buffer_src0:port_0>pg:in", "pg:out>sink"});
    }

    qv_isp_zmt_program_group groupData(const std::string& name) const
    {
        qv_isp_zmt_program_group pg = kUntouched;
        EXPECT_EQ(mUtil->getPgTevData(&at(*mRoot, name), pg), StatusOk);
        return pg;
    }

    qv_isp_zmt_program_group streamData(int id) const
    {
        qv_isp_zmt_program_group pg = kUntouched;
        EXPECT_EQ(mUtil->getTevData(id, pg), StatusOk);
        return pg;
    }

    static Texts uuids(const qv_isp_zmt_program_group& pg)
    {
        Texts all;
        for (uint32_t i = 0; i < pg.kernel_count; ++i) all.push_back(std::to_string(pg.run_kernels[i].kernel_uuid));
        return all;
    }

    static inline const qv_isp_zmt_program_group kUntouched = {77, nullptr, 88};
    static inline const std::string kBody = in("in") + out("out") +
                                            kernel("mid", 2, "rcb='1' metadata='7,8,9,10' enabled='0'",
                                                   "<input width='1920' height='1080' left='2' bpp='12'/><output "
                                                   "id='0' width='1280' height='720' bpp='10'/>") +
                                            kernel("zoom", 0) +
                                            kernel("alpha", 1, "metadata='1,x,-1'", "<input bpp='8'/>") +
                                            klinks({"in>zoom:0", "zoom:0>alpha:0", "alpha:0>mid:0", "mid:0>out"});
};

TEST_F(KernelDataTest, RecordHoldsWhatTheKernelStates)
{
    loadThree();
    ASSERT_EQ(init(), StatusOk);
    const auto& mid = record("pg:mid");
    EXPECT_EQ(mid.stream_id, 1U);
    EXPECT_EQ(mid.kernel_uuid, 1002U);
    EXPECT_EQ(mid.enable, 0);
    EXPECT_EQ((std::vector<uint32_t>(mid.metadata, mid.metadata + 4)), (std::vector<uint32_t>{7, 8, 9, 10}));
    EXPECT_EQ(mid.bpp_info.input_bpp, 12U);
    EXPECT_EQ(mid.bpp_info.output_bpp, 10U);
    ASSERT_EQ(mid.output_count, 1U);
    EXPECT_EQ(text(*mid.resolution_info), text(info(1920, 1080, 1280, 720, {2, 0, 0, 0})));
    EXPECT_EQ(text(*mid.resolution_history), text(frame(1920, 1080)));
    EXPECT_EQ((std::set<uint8_t>(mid.reserved, mid.reserved + sizeof(mid.reserved))), std::set<uint8_t>{0});

    const auto& alpha = record("pg:alpha");
    EXPECT_EQ(alpha.enable, 1);
    EXPECT_EQ((std::vector<uint32_t>(alpha.metadata, alpha.metadata + 4)),
              (std::vector<uint32_t>{1, 0, UINT32_MAX, 0}));
    EXPECT_EQ(alpha.bpp_info.input_bpp, 8U);
    EXPECT_EQ(alpha.bpp_info.output_bpp, 0U);
    EXPECT_EQ(alpha.resolution_info, nullptr); // it states no sizes
    EXPECT_EQ(alpha.output_count, 0U);
    EXPECT_EQ(text(*alpha.resolution_history), text(frame(1920, 1080)));
}

TEST_F(KernelDataTest, RecordsOfAStreamAreInOrderOfNames)
{
    loadThree();
    ASSERT_EQ(init(), StatusOk);
    const auto pg = streamData(1);
    EXPECT_EQ(uuids(pg), (Texts{"1001", "1002", "1000"})); // alpha, mid, zoom
    EXPECT_EQ(pg.operation_mode, 5U);
    EXPECT_EQ(pg.run_kernels, subgraph(1).tevRunKernels);
    EXPECT_EQ(pg.run_kernels, &record("pg:alpha"));
}

TEST_F(KernelDataTest, RecordsOfAGroupAreInOrderOfIds)
{
    loadThree();
    ASSERT_EQ(init(), StatusOk);
    const auto pg = groupData("pg");
    EXPECT_EQ(uuids(pg), (Texts{"1000", "1001", "1002"}));
    EXPECT_EQ(pg.operation_mode, 5U);
    const auto& mid = pg.run_kernels[2];
    EXPECT_NE(&mid, &record("pg:mid"));
    EXPECT_EQ(mid.stream_id, 1U);
    EXPECT_EQ(mid.enable, 0);
    EXPECT_EQ(mid.metadata[3], 10U);
    EXPECT_EQ(mid.bpp_info.input_bpp, 12U);
    EXPECT_EQ(mid.output_count, 1U);
    EXPECT_EQ(mid.resolution_info, record("pg:mid").resolution_info);
    EXPECT_EQ(mid.resolution_history, record("pg:mid").resolution_history);
}

TEST_F(KernelDataTest, AskingAgainChangesNothing)
{
    loadThree();
    ASSERT_EQ(init(), StatusOk);
    const auto first = groupData("pg");
    const Texts before = uuids(first);
    const auto second = groupData("pg");
    EXPECT_EQ(second.run_kernels, first.run_kernels);
    EXPECT_EQ(second.kernel_count, first.kernel_count);
    EXPECT_EQ(uuids(first), before);
    EXPECT_EQ(streamData(1).run_kernels, streamData(1).run_kernels);
}

TEST_F(KernelDataTest, TuningModeIsZeroWhenAGroupHasNone)
{
    loadThree("");
    ASSERT_EQ(init(), StatusOk);
    clearLog();
    EXPECT_EQ(groupData("pg").operation_mode, 0U);
    EXPECT_TRUE(loggedLike(kWarning, "Could not find the tuning mode for PG ", "pg", " default to 0"));
    EXPECT_EQ(streamData(1).operation_mode, 0U);
}

TEST_F(KernelDataTest, KernelsOfSeveralGroupsAreKeptApart)
{
    // the uuids of the two are the same
    load(source(1920, 1080) +
             group("pg", 1, in("in") + out("out") + kernel("k", 0, "metadata='1'") + klinks({"in>k:0", "k:0>out"}),
                   "tuning_mode='1'") +
             group("ag", 1,
                   in("in") + out("out") + kernel("k", 0, "metadata='2'") + kernel("l", 1) +
                       klinks({"in>k:0", "k:0>l:0", "l:0>out"}),
                   "tuning_mode='2'") +
             sink("sink", 1),
         {"buffer_src0:port_0>pg:in", "pg:out>ag:in", "ag:out>sink"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(uuids(streamData(1)), (Texts{"1000", "1001", "1000"})); // ag:k ag:l pg:k
    const auto pg = groupData("pg");
    const auto ag = groupData("ag");
    ASSERT_EQ(pg.kernel_count, 1U);
    ASSERT_EQ(ag.kernel_count, 2U);
    EXPECT_EQ(pg.run_kernels[0].metadata[0], 1U);
    EXPECT_EQ(ag.run_kernels[0].metadata[0], 2U);
    EXPECT_EQ(pg.operation_mode, 1U);
    EXPECT_EQ(ag.operation_mode, 2U);
}

TEST_F(KernelDataTest, GroupsOfTwoStreamsMayShareTheirId)
{
    const auto one = [](const std::string& name, int stream, int id) {
        return group(name, stream,
                     in("in") + out("out") + kernel("k_" + name, id) +
                         klinks({"in>k_" + name + ":0", "k_" + name + ":0>out"}),
                     "pg_id='10' tuning_mode='" + std::to_string(stream) + "'");
    };
    load(source(1920, 1080) + one("pg", 1, 0) + one("qg", 2, 1) + sink("sink", 1) + sink("other", 2),
         {"buffer_src0:port_0>pg:in", "buffer_src0:port_0>qg:in", "pg:out>sink", "qg:out>other"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(uuids(groupData("pg")), Texts{"1000"});
    EXPECT_EQ(uuids(groupData("qg")), Texts{"1001"});
    EXPECT_EQ(groupData("qg").operation_mode, 2U);
    EXPECT_EQ(access().pgKernelInfoMemPools().size(), 2U);
}

TEST_F(KernelDataTest, GroupWithoutKernelsHasNoRecords)
{
    load(source(1920, 1080) + group("pg", 1, in("in") + out("out") + klinks({"in>out"}), "tuning_mode='1'") +
             sink("sink", 1),
         {"buffer_src0:port_0>pg:in", "pg:out>sink"});
    ASSERT_EQ(init(), StatusOk);
    EXPECT_EQ(streamData(1).kernel_count, 0U);
    EXPECT_EQ(groupData("pg").kernel_count, 0U);
    EXPECT_EQ(streamData(0).kernel_count, 0U); // the source's
}

TEST_F(KernelDataTest, RcbKernelHasOneRecordOfSizesForEachOutput)
{
    const std::string outputs = "<output id='0' width='1280' height='720'/><output id='1' width='640' height='360'/>";
    const std::string input = "<input width='1920' height='1080'/>";
    loadGroup(out("two") + kernel("rcb", 0, "rcb='1'", input + outputs) + kernel("plain", 1, "", input + outputs) +
                  kernel("once", 2, "rcb='1'", input + "<output id='0' width='1920' height='1080'/>") + kernel("a", 3) +
                  kernel("b", 4),
              {"in>once:0", "once:0>plain:0", "once:0>rcb:0", "plain:0>a:0", "plain:1>b:0", "a:0>b:1", "b:0>out",
               "rcb:0>out", "rcb:1>two"},
              {"pg:two>other"}, sink("other", 1));
    ASSERT_EQ(init(), StatusOk);
    const auto& rcb = record("pg:rcb");
    ASSERT_EQ(rcb.output_count, 2U);
    EXPECT_EQ(text(rcb.resolution_info[0]), text(info(1920, 1080, 1280, 720)));
    EXPECT_EQ(text(rcb.resolution_info[1]), text(info(1920, 1080, 640, 360)));
    EXPECT_EQ(inner("pg:plain").children.size(), 2U);
    EXPECT_EQ(record("pg:plain").output_count, 1U); // it changes nothing
    EXPECT_EQ(inner("pg:once").children.size(), 2U);
    EXPECT_EQ(record("pg:once").output_count, 1U); // both take the same output
}

TEST_F(KernelDataTest, RcbKernelWithoutChildrenHasOneRecordOfSizes)
{
    load(source(1920, 1080) +
             group("pg", 1,
                   in("in") + out("out") + kernel("k", 0) +
                       sized("end", 1, "rcb='1'", size(1920, 1080), size(640, 360)) +
                       klinks({"in>k:0", "k:0>out", "in>end:0"}),
                   "", "program_group") +
             sink("sink", 1),
         {"buffer_src0:port_0>pg:in", "pg:out>sink"});
    ASSERT_EQ(init(NUXO::GdfVersionKVA6), StatusOk);
    ASSERT_EQ(record("pg:end").output_count, 1U);
    EXPECT_EQ(text(*record("pg:end").resolution_info), text(info(1920, 1080, 640, 360)));
}

TEST_F(KernelDataTest, UnknownSubgraphIsAnError)
{
    loadThree();
    ASSERT_EQ(init(), StatusOk);
    std::set<int> ids;
    mUtil->getAvailableSubgraphs(ids);
    EXPECT_EQ(ids, (std::set<int>{0, 1}));
    for (const int id : {2, -1}) {
        qv_isp_zmt_program_group pg = kUntouched;
        clearLog();
        EXPECT_EQ(mUtil->getTevData(id, pg), StatusBadState);
        EXPECT_TRUE(loggedExactly({"16 Invalid subgraph(stream_id) id " + std::to_string(id)}));
        EXPECT_EQ(pg.kernel_count, 77U);
    }
    GraphUtil fresh;
    qv_isp_zmt_program_group pg = {};
    EXPECT_EQ(fresh.getTevData(0, pg), StatusBadState);
}

TEST_F(KernelDataTest, SubgraphsMayBeExecutionContexts)
{
    load(element("source", "buffer_src0", "stream_id='0' exec_ctx_id='4'", out("port_0", size(1920, 1080))) +
             group("pg", 1, in("in") + out("out") + kernel("k", 0) + klinks({"in>k:0", "k:0>out"}), "exec_ctx_id='3'") +
             element("sink", "sink", "exec_ctx_id='3'"),
         {"buffer_src0:port_0>pg:in", "pg:out>sink"});
    clearLog();
    ASSERT_EQ(mUtil->init(NUXO_KEY_EXEC_CTX_ID, mRoot.get(), NUXO::GdfVersionKVA7), StatusOk);
    EXPECT_EQ(uuids(streamData(3)), Texts{"1000"});
    EXPECT_EQ(streamData(3).run_kernels[0].stream_id, 1U);
    EXPECT_TRUE(logged(kDebug, "Filling TEV run_kernels for subgraph 1")); // told by stream
    clearLog();
    qv_isp_zmt_program_group pg = {};
    EXPECT_EQ(mUtil->getTevData(1, pg), StatusBadState);
    EXPECT_TRUE(loggedExactly({"16 Invalid subgraph(exec_ctx_id) id 1"}));
}

TEST_F(KernelDataTest, UnknownGroupIsAnError)
{
    // nothing connects `unused`, so it is no part of the analysis
    load(source(1920, 1080) + group("pg", 1, kBody) + group("unused", 1, kernel("k_unused", 0)) + sink("sink", 1),
         {"buffer_src0:port_0>pg:in", "pg:out>sink"});
    ASSERT_EQ(init(), StatusOk);
    qv_isp_zmt_program_group pg = kUntouched;
    clearLog();
    EXPECT_EQ(mUtil->getPgTevData(&at(*mRoot, "unused"), pg), StatusBadArgument);
    EXPECT_TRUE(loggedLike(kError, "Could not find the PG ", "unused", " in the Subgraphs map"));
    EXPECT_EQ(mUtil->getPgTevData(nullptr, pg), StatusBadArgument);
    EXPECT_EQ(mUtil->getPgTevData(&at(*mRoot, "buffer_src0"), pg), StatusBadArgument);
    GraphUtil fresh;
    EXPECT_EQ(fresh.getPgTevData(&at(*mRoot, "pg"), pg), StatusBadArgument);
}

TEST_F(KernelDataTest, GroupWithoutPoolIsAnError)
{
    loadThree();
    ASSERT_EQ(init(), StatusOk);
    access().deleteTevStructs();
    clearLog();
    qv_isp_zmt_program_group pg = {};
    EXPECT_EQ(mUtil->getPgTevData(&at(*mRoot, "pg"), pg), StatusBadArgument);
    EXPECT_TRUE(loggedLike(kError, "Could not find the PG ", "pg", " in the PG memory pool map"));
}

TEST_F(KernelDataTest, KernelThatLostItsUuidIsAnError)
{
    loadThree();
    ASSERT_EQ(init(), StatusOk);
    at(*mRoot, "pg:alpha").removeDescendant(NUXO_KEY_PAL_UUID);
    clearLog();
    qv_isp_zmt_program_group pg = {};
    EXPECT_EQ(mUtil->getPgTevData(&at(*mRoot, "pg"), pg), StatusBadArgument);
    EXPECT_TRUE(loggedLike(kError, "Could not find the pal uuid for kernel ", "alpha"));
}

TEST_F(KernelDataTest, KernelThatChangedItsNameIsAnError)
{
    loadThree();
    ASSERT_EQ(init(), StatusOk);
    auto& kernel = at(*mRoot, "pg:alpha");
    kernel.removeDescendant(NUXO_KEY_NAME);
    ASSERT_EQ(kernel.addValue(NUXO_KEY_NAME, std::string("beta")), StatusOk);
    qv_isp_zmt_program_group pg = kUntouched;
    EXPECT_EQ(mUtil->getPgTevData(&at(*mRoot, "pg"), pg), StatusBadArgument);
    EXPECT_EQ(pg.run_kernels, nullptr);
}

TEST_F(KernelDataTest, KernelWithoutInnerNodeIsReported)
{
    loadThree();
    ASSERT_EQ(init(), StatusOk);
    ASSERT_EQ(subgraph(1).imagingNodes.erase("pg:alpha"), 1U);
    clearLog();
    qv_isp_zmt_program_group pg = kUntouched;
    EXPECT_EQ(mUtil->getPgTevData(&at(*mRoot, "pg"), pg), StatusBadArgument);
    EXPECT_TRUE(loggedExactly({"16 Could not find the record of kernel[pg:alpha]"}));
    EXPECT_EQ(pg.kernel_count, 0U);
    EXPECT_EQ(pg.run_kernels, nullptr);
}

TEST_F(KernelDataTest, GroupOfACopyIsAnsweredFromTheAnalysedGraph)
{
    loadThree();
    ASSERT_EQ(init(), StatusOk);
    const auto own = groupData("pg");
    const std::unique_ptr<NUXO::GraphConfigItem> graph(mRoot->copy());
    const std::unique_ptr<NUXO::GraphConfigItem> detached(at(*mRoot, "pg").copy());
    auto& copied = at(static_cast<graphtest::GraphConfigNode&>(*graph), "pg");
    auto& alone = static_cast<graphtest::GraphConfigNode&>(*detached);
    ASSERT_EQ(alone.getAncestor(), nullptr);
    for (graphtest::GraphConfigNode* const other : {&copied, &alone}) {
        // what the copy says does not count
        other->removeDescendant(NUXO_KEY_TUNING_MODE);
        at(*other, "alpha").removeDescendant(NUXO_KEY_PAL_UUID);
        qv_isp_zmt_program_group pg = kUntouched;
        clearLog();
        EXPECT_EQ(mUtil->getPgTevData(other, pg), StatusOk);
        EXPECT_TRUE(loggedExactly({}));
        EXPECT_EQ(pg.run_kernels, own.run_kernels);
        EXPECT_EQ(uuids(pg), (Texts{"1000", "1001", "1002"}));
        EXPECT_EQ(pg.operation_mode, 5U);
    }
}

TEST_F(KernelDataTest, MoreKernelsThanAtInitAreAnError)
{
    loadThree();
    ASSERT_EQ(init(), StatusOk);
    auto& pgNode = at(*mRoot, "pg");
    ASSERT_EQ(pgNode.insertDescendant(at(*mRoot, "pg:zoom").copy(), NUXO::ItemUID::generateKey("one_too_many")),
              StatusOk);
    clearLog();
    qv_isp_zmt_program_group pg = {};
    EXPECT_EQ(mUtil->getPgTevData(&pgNode, pg), StatusBadArgument);
    EXPECT_TRUE(logged(kError, "over the max kernel number"));
}

TEST_F(KernelDataTest, ValuesOfTheGraphAreReadAtInit)
{
    loadThree();
    ASSERT_EQ(init(), StatusOk);
    at(*mRoot, "pg:zoom").removeDescendant(NUXO_KEY_ENABLED);
    static_cast<void>(at(*mRoot, "pg:zoom").addValue(NUXO_KEY_ENABLED, 0));
    EXPECT_EQ(groupData("pg").run_kernels[0].enable, 1);
    EXPECT_EQ(init(), StatusOk);
    EXPECT_EQ(groupData("pg").run_kernels[0].enable, 0);
}

class AllocationTest : public KernelDataTest {};

TEST_F(AllocationTest, RecordsAreAllocatedZeroedWithTheirSizes)
{
    loadThree();
    ASSERT_EQ(init(), StatusOk);
    clearLog();
    ASSERT_EQ(access().allocateTevData(), StatusOk);
    EXPECT_TRUE(
        loggedExactly({"32 Allocating kernel structures before deleting.", "2 TEV structure allocation succeeded !!"}));
    ASSERT_EQ(access().kernelInfoMemPools().size(), 2U); // also one of the source
    ASSERT_EQ(access().pgKernelInfoMemPools().count(10), 1U);
    for (const char* name : {"pg:alpha", "pg:mid", "pg:zoom"}) {
        const auto& kernel = record(name);
        EXPECT_EQ(kernel.kernel_uuid, 0U) << name;
        EXPECT_EQ(kernel.output_count, 1U) << name;
        ASSERT_NE(kernel.resolution_info, nullptr) << name;
        EXPECT_EQ(text(*kernel.resolution_info), text(Info{})) << name;
        ASSERT_NE(kernel.resolution_history, nullptr) << name;
        EXPECT_EQ(text(*kernel.resolution_history), text(Info{})) << name;
    }
}

TEST_F(AllocationTest, RoutingNodesAndPortsHaveNoRecord)
{
    loadGroup(kernel("k", 0) + element("split", "fork"), {"in>fork:0", "fork:0>k:0", "k:0>out"});
    ASSERT_EQ(init(), StatusOk);
    for (const char* name : {"pg:fork", "pg:in", "pg:out"}) EXPECT_EQ(inner(name).tevRunKernel, nullptr) << name;
    EXPECT_EQ(streamData(1).kernel_count, 1U);
}

TEST_F(AllocationTest, FewerRecordsThanKernelsAreAnError)
{
    loadThree();
    ASSERT_EQ(init(), StatusOk);
    subgraph(1).kernelCount = 2;
    clearLog();
    EXPECT_EQ(access().allocateTevData(), StatusMissingData);
    EXPECT_TRUE(logged(kError, "FATAL: number of subgraph kernels inconsistent with number of imaging nodes"));
    EXPECT_TRUE(notLogged("succeeded"));
    EXPECT_TRUE(access().kernelInfoMemPools().empty());
    EXPECT_TRUE(access().pgKernelInfoMemPools().empty());
    EXPECT_EQ(inner("pg:alpha").tevRunKernel, nullptr);
    const auto pg = streamData(1);
    EXPECT_EQ(pg.kernel_count, 0U);
    EXPECT_EQ(pg.run_kernels, nullptr);
}

TEST_F(AllocationTest, RecordsBeyondTheKernelsStayBlank)
{
    loadThree();
    ASSERT_EQ(init(), StatusOk);
    subgraph(1).kernelCount = 4;
    EXPECT_EQ(access().allocateTevData(), StatusOk);
    const auto pg = streamData(1);
    ASSERT_EQ(pg.kernel_count, 4U);
    EXPECT_EQ(pg.run_kernels[3].resolution_info, nullptr);
    EXPECT_EQ(pg.run_kernels[3].resolution_history, nullptr);
    mUtil->dumpTevStructs();
    EXPECT_TRUE(logged(kError, "res history: NULL"));
}

TEST_F(AllocationTest, GroupThatCannotBeCountedIsAnError)
{
    loadThree();
    ASSERT_EQ(init(), StatusOk);
    subgraph(1).pgs.push_back(nullptr);
    EXPECT_EQ(access().allocateTevData(), StatusMissingData);
    EXPECT_TRUE(access().kernelInfoMemPools().empty());
    EXPECT_TRUE(access().pgKernelInfoMemPools().empty());
    EXPECT_EQ(streamData(1).kernel_count, 0U);
}

TEST_F(AllocationTest, DeletingLeavesNothingAndMayBeRepeated)
{
    loadThree();
    access().deleteTevStructs(); // nothing is there yet
    ASSERT_EQ(init(), StatusOk);
    for (int i = 0; i < 2; ++i) {
        access().deleteTevStructs();
        EXPECT_TRUE(access().kernelInfoMemPools().empty());
        EXPECT_TRUE(access().pgKernelInfoMemPools().empty());
        EXPECT_EQ(subgraph(1).tevRunKernels, nullptr);
        EXPECT_EQ(inner("pg:alpha").tevRunKernel, nullptr);
        EXPECT_EQ(streamData(1).kernel_count, 0U);
    }
}

TEST_F(AllocationTest, FirstAllocationDoesNotWarn)
{
    loadThree();
    ASSERT_EQ(init(), StatusOk);
    ASSERT_EQ(init(), StatusOk); // the second init deletes first
    EXPECT_TRUE(notLogged("before deleting"));
    EXPECT_TRUE(logged(kDebug, "TEV structure allocation succeeded !!"));
}

class FillingTest : public KernelDataTest {};

TEST_F(FillingTest, NumberOfSizesMustBeTheOneAllocated)
{
    loadThree();
    ASSERT_EQ(init(), StatusOk);
    inner("pg:mid").resInfos["1"] = frame(1, 1);
    clearLog();
    EXPECT_EQ(access().fillTevRunKernels(subgraph(1)), StatusMissingObject);
    EXPECT_TRUE(
        loggedExactly({"2 Filling TEV run_kernels for subgraph 1",
                       "16 Calculated number of res Infos (2) for kernel mid does not match allocated(1) - BUG"}));
}

TEST_F(FillingTest, HistoriesAndSizesAreCopied)
{
    loadThree();
    ASSERT_EQ(init(), StatusOk);
    auto& mid = inner("pg:mid");
    mid.resHistory = frame(64, 48);
    mid.resInfos["0"] = frame(32, 24);
    mid.runKernel.enable = 2;
    clearLog();
    EXPECT_EQ(access().fillTevRunKernels(subgraph(1)), StatusOk);
    EXPECT_TRUE(loggedExactly({"2 Filling TEV run_kernels for subgraph 1"}));
    EXPECT_EQ(arriving("pg:mid"), text(frame(64, 48)));
    EXPECT_EQ(text(*record("pg:mid").resolution_info), text(frame(32, 24)));
    EXPECT_EQ(record("pg:mid").enable, 2);
}

} // namespace

} // namespace historytest
