// SPDX-License-Identifier: Apache-2.0
// One object and several graphs: what a failed analysis leaves, and how long records live.
#include "analysis/HistoryFixture.h"

namespace historytest {

namespace {

class KernelDataLifeTest : public HistoryTest {
protected:
    /// A graph of one kernel with this uuid; frames are @p width wide.
    graphtest::Tree graphOf(int uuid, int width, const std::string& kernelSizes = "")
    {
        const Texts connections = {"buffer_src0:port_0>pg:in", "pg:out>sink"};
        const std::string id = "id='0' rcb='1' pal_uuid='" + std::to_string(uuid) + "'";
        load(
            source(width, 100) +
                group("pg", 1,
                      in("in") + out("out") + element("kernel", "k", id, kernelSizes) + klinks({"in>k:0", "k:0>out"})) +
                sink("sink", 1),
            connections);
        return std::move(mRoot);
    }
    graphtest::Tree inconsistent()
    {
        return graphOf(6, 640, "<input width='1' height='1'/><output width='1' height='1'/>");
    }

    int analyse(const graphtest::Tree& tree, int version = 7, unsigned int key = NUXO_KEY_STREAM_ID)
    {
        return mObject.init(key, tree.get(), static_cast<NUXO::GdfVersion>(version));
    }

    /// Uuid and width of what arrives, of all records of stream 1.
    std::string records()
    {
        qv_isp_zmt_program_group pg = {};
        const int status = mObject.getTevData(1, pg);
        if (status != StatusOk) return std::to_string(status);
        std::string all;
        for (uint32_t i = 0; i < pg.kernel_count; ++i) {
            const auto& kernel = pg.run_kernels[i];
            all += std::to_string(kernel.kernel_uuid) + " " + std::to_string(kernel.resolution_history->output_width) +
                   ";";
        }
        return all;
    }

    void askEverything(const graphtest::Tree& tree)
    {
        mObject.dumpTevStructs();
        std::vector<NUXO::InnerGraphNode> nodes;
        Info history = {};
        std::set<int> ids;
        mObject.getAvailableSubgraphs(ids);
        ids.insert({-5, 0, 1});
        for (const int id : ids) {
            mObject.dumpKernels(id);
            static_cast<void>(mObject.getInnerGraph(id, nodes));
            qv_isp_zmt_program_group pg = {};
            static_cast<void>(mObject.getTevData(id, pg));
        }
        qv_isp_zmt_program_group pg = {};
        static_cast<void>(mObject.getPgTevData(graphtest::find(*tree, "pg"), pg));
        EXPECT_EQ(mObject.getSourceResolutionHistory(history), StatusOk);
    }

    GraphUtil mObject;
};

TEST_F(KernelDataLifeTest, EveryInitStartsAnew)
{
    const auto first = graphOf(1, 640);
    const auto second = graphOf(2, 320);
    ASSERT_EQ(analyse(first), StatusOk);
    EXPECT_EQ(records(), "1 640;");
    ASSERT_EQ(analyse(second), StatusOk);
    EXPECT_EQ(records(), "2 320;");
    qv_isp_zmt_program_group pg = {};
    EXPECT_EQ(mObject.getPgTevData(&at(*second, "pg"), pg), StatusOk);
    EXPECT_EQ(pg.kernel_count, 1U);
    std::vector<NUXO::InnerGraphNode> nodes;
    ASSERT_EQ(mObject.getInnerGraph(1, nodes), StatusOk);
    EXPECT_EQ(nodes.size(), 3U);
    ASSERT_EQ(analyse(first), StatusOk);
    EXPECT_EQ(records(), "1 640;");
}

TEST_F(KernelDataLifeTest, SourceHistoryOfAnEarlierGraphIsForgotten)
{
    const auto good = graphOf(1, 640);
    const auto noGraph = graphtest::descriptor(source(640, 480));
    Info history = {};
    ASSERT_EQ(analyse(good), StatusOk);
    EXPECT_EQ(mObject.getSourceResolutionHistory(history), StatusOk);
    EXPECT_EQ(text(history), text(frame(640, 100)));
    ASSERT_NE(analyse(noGraph), StatusOk);
    EXPECT_EQ(mObject.getSourceResolutionHistory(history), StatusOk);
    EXPECT_EQ(text(history), text(Info{}));
}

TEST_F(KernelDataLifeTest, EarlierGraphMayBeGone)
{
    auto first = graphOf(1, 640);
    ASSERT_EQ(analyse(first), StatusOk);
    first.reset();
    const auto second = graphOf(2, 320);
    ASSERT_EQ(analyse(second), StatusOk);
    EXPECT_EQ(records(), "2 320;");
}

TEST_F(KernelDataLifeTest, WrongArgumentsLeaveWhatThereIs)
{
    const auto first = graphOf(1, 640);
    const auto second = graphOf(2, 320);
    ASSERT_EQ(analyse(first), StatusOk);
    qv_isp_zmt_program_group before = {};
    ASSERT_EQ(mObject.getTevData(1, before), StatusOk);
    for (int i = 0; i < 3; ++i) {
        clearLog();
        const int status = i == 0   ? mObject.init(NUXO_KEY_STREAM_ID, nullptr, NUXO::GdfVersionKVA7)
                           : i == 1 ? analyse(second, 7, NUXO_KEY_ID)
                                    : analyse(second, 5);
        EXPECT_EQ(status, StatusBadArgument);
        EXPECT_TRUE(loggedExactly({"16 invalid KVA version, subgraph type used or graph settings"}));
        qv_isp_zmt_program_group after = {};
        ASSERT_EQ(mObject.getTevData(1, after), StatusOk);
        EXPECT_EQ(after.run_kernels, before.run_kernels);
        EXPECT_EQ(records(), "1 640;");
        askEverything(first);
    }
}

TEST_F(KernelDataLifeTest, FailedAnalysisMayBeAskedAndRepeated)
{
    const auto good = graphOf(1, 640);
    const auto bad = inconsistent();
    const auto noGraph = graphtest::descriptor(source(640, 480) + group("pg", 1, kernel("k", 0)) + sink("sink", 1));
    auto badLink = graphOf(3, 640);
    at(*badLink, "pg:klink").removeDescendant(NUXO_KEY_SOURCE);
    const struct {
        const graphtest::Tree& tree;
        int status;
    } failures[] = {{bad, StatusMissingObject}, {noGraph, StatusMissingObject}, {badLink, StatusBadState}};
    for (const auto& failure : failures) {
        EXPECT_EQ(analyse(failure.tree), failure.status);
        askEverything(failure.tree);
        EXPECT_EQ(analyse(failure.tree), failure.status); // twice on the same graph
        askEverything(failure.tree);
        ASSERT_EQ(analyse(good), StatusOk);
        EXPECT_EQ(records(), "1 640;");
        EXPECT_EQ(analyse(failure.tree), failure.status); // after a good one
        askEverything(failure.tree);
    }
    ASSERT_EQ(analyse(good), StatusOk);
    EXPECT_EQ(records(), "1 640;");
}

TEST_F(KernelDataLifeTest, FailuresOfTheStepsAreTold)
{
    const auto noGraph = graphtest::descriptor(source(640, 480) + group("pg", 1, kernel("k", 0)) + sink("sink", 1));
    clearLog();
    EXPECT_EQ(analyse(noGraph), StatusMissingObject);
    EXPECT_TRUE(logged(kDebug, "--------- GraphSettings analysis started !!---------------"));
    EXPECT_TRUE(logged(kError, "Failed to locate graph node - Invalid settings"));
    EXPECT_EQ(lines().back(), "16 Graph settings analysis failed");

    auto badLink = graphOf(3, 640);
    at(*badLink, "pg:klink").removeDescendant(NUXO_KEY_SOURCE);
    clearLog();
    EXPECT_EQ(analyse(badLink), StatusBadState);
    EXPECT_TRUE(logged(kError, "Analysis of subgraphs failed  -8 "));
    EXPECT_EQ(lines().back(), "16 Graph settings analysis failed");
    EXPECT_TRUE(notLogged("analysis succeeded"));

    const auto good = graphOf(1, 640);
    clearLog();
    ASSERT_EQ(analyse(good), StatusOk);
    const Texts milestones = linesLike({"2 ---------", "2 TEV structure", "2 Resolution History"});
    EXPECT_EQ(milestones,
              (Texts{"2 --------- GraphSettings analysis started !!---------------",
                     "2 --------- GraphSettings analysis succeeded !!---------------",
                     "2 TEV structure allocation succeeded !!", "2 Resolution History calculation succeeded !!"}));
}

TEST_F(KernelDataLifeTest, RecordsOfAFailedWalkAreThereButEmpty)
{
    const auto bad = inconsistent();
    EXPECT_EQ(analyse(bad), StatusMissingObject);
    EXPECT_EQ(records(), "0 0;");
}

TEST_F(KernelDataLifeTest, RecordsLiveUntilTheObjectIsGone)
{
    auto tree = graphOf(1, 640, "<input width='640' height='100' left='3'/><output width='320' height='50'/>");
    qv_isp_zmt_program_group stream = {};
    qv_isp_zmt_program_group pg = {};
    auto object = std::make_unique<GraphUtil>();
    ASSERT_EQ(object->init(NUXO_KEY_STREAM_ID, tree.get(), NUXO::GdfVersionKVA7), StatusOk);
    ASSERT_EQ(object->getTevData(1, stream), StatusOk);
    ASSERT_EQ(object->getPgTevData(&at(*tree, "pg"), pg), StatusOk);
    // what the object does meanwhile does not touch them
    mLog.setMask(0);
    object->dumpTevStructs();
    object->dumpKernels(1);
    std::vector<NUXO::InnerGraphNode> nodes;
    ASSERT_EQ(object->getInnerGraph(1, nodes), StatusOk);
    ASSERT_EQ(object->init(NUXO_KEY_STREAM_ID, nullptr, NUXO::GdfVersionKVA7), StatusBadArgument);
    qv_isp_zmt_program_group again = {};
    ASSERT_EQ(object->getPgTevData(&at(*tree, "pg"), again), StatusOk);
    tree.reset(); // they do not point into the graph
    for (const auto* data : {&stream, &pg}) {
        const auto& kernel = data->run_kernels[0];
        EXPECT_EQ(kernel.kernel_uuid, 1U);
        EXPECT_EQ(text(kernel.resolution_info[0]), text(info(640, 100, 320, 50, {3, 0, 0, 0})));
        EXPECT_EQ(text(*kernel.resolution_history), text(frame(640, 100)));
    }
}

TEST_F(KernelDataLifeTest, ResultsAreTheSameFromRunToRun)
{
    const auto tree = graphOf(1, 640);
    clearLog();
    ASSERT_EQ(analyse(tree), StatusOk);
    Texts first = lines();
    for (int i = 0; i < 3; ++i) {
        auto other = std::make_unique<GraphUtil>();
        clearLog();
        ASSERT_EQ(other->init(NUXO_KEY_STREAM_ID, tree.get(), NUXO::GdfVersionKVA7), StatusOk);
        EXPECT_EQ(lines(), first);
    }
}

} // namespace

} // namespace historytest
