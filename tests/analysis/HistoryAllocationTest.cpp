// SPDX-License-Identifier: Apache-2.0
// The analysis with every allocation failing in turn: the right records or out of memory, never in between.
#include "analysis/HistoryFixture.h"

#include <nuxo/analysis/InnerGraphNode.h>

#include <support/AllocationFailures.h>

#include <functional>
#include <set>

namespace historytest {

namespace {

using NUXO::InnerGraphNode;

class HistoryAllocationTest : public HistoryTest {
protected:
    HistoryAllocationTest()
    {
        // No name fits into a string object itself.
        const std::string first =
            in("input_port_of_the_first_group") + in("reference_input_of_the_group", "private='1' " + size(960, 540)) +
            out("output_port_of_the_first_group") + out("reference_output_of_the_group", "private='1'") +
            out("output_port_that_is_disabled", "enabled='0'") +
            kernel("kernel_with_two_outputs_a", 0, "rcb='1' metadata='1,2,3,4,5'",
                   "<input " + size(1920, 1080) + "left='20'/><output id='0' " + size(1280, 720) + "/><output id='1' " +
                       size(640, 360) + "/>") +
            kernel("kernel_that_has_two_inputs", 1) + kernel("kernel_that_is_disconnected", 2) +
            element("split", "split_of_the_first_group") +
            element("mux", "multiplexer_of_the_group", "active_input='1'") +
            klinks({"input_port_of_the_first_group>multiplexer_of_the_group:1",
                    "multiplexer_of_the_group:0>kernel_that_has_two_inputs:0",
                    "reference_input_of_the_group>kernel_that_has_two_inputs:1",
                    "kernel_that_has_two_inputs:0>split_of_the_first_group:0",
                    "split_of_the_first_group:0>kernel_with_two_outputs_a:0",
                    "split_of_the_first_group:1>reference_output_of_the_group",
                    "kernel_with_two_outputs_a:0>output_port_of_the_first_group",
                    "kernel_with_two_outputs_a:1>output_port_that_is_disabled",
                    "kernel_that_is_disconnected:0>multiplexer_of_the_group:0"});
        const std::string second = in("input_port_of_the_second_group") + out("output_port_of_the_second_group") +
                                   kernel("kernel_of_the_second_group", 0) +
                                   klinks({"input_port_of_the_second_group>kernel_of_the_second_group:0",
                                           "kernel_of_the_second_group:0>output_port_of_the_second_group"});
        load(source(1920, 1080) + group(kFirst, 1, first, "tuning_mode='3'") + group(kSecond, 2, second) +
                 sink("sink_behind_the_second_group", 2),
             {"buffer_src0:port_0>" + kFirst + ":input_port_of_the_first_group",
              kFirst + ":reference_output_of_the_group>" + kFirst + ":reference_input_of_the_group",
              kFirst + ":output_port_of_the_first_group>" + kSecond + ":input_port_of_the_second_group",
              kSecond + ":output_port_of_the_second_group>sink_behind_the_second_group"});
        mLog.setMask(0);
        EXPECT_EQ(init(), StatusOk);
        mGood = records(*mUtil);
    }

    /// What all records say.
    static std::string records(GraphUtil& util)
    {
        std::string all;
        for (const int id : {0, 1, 2}) {
            qv_isp_zmt_program_group pg = {};
            if (util.getTevData(id, pg) != StatusOk) continue;
            for (uint32_t i = 0; i < pg.kernel_count; ++i) {
                const auto& kernel = pg.run_kernels[i];
                all += std::to_string(kernel.kernel_uuid) + " " + std::to_string(kernel.enable) + " " +
                       std::to_string(kernel.metadata[3]) + " " + text(*kernel.resolution_history);
                for (uint32_t k = 0; k < kernel.output_count; ++k) all += " " + text(kernel.resolution_info[k]);
                all += "\n";
            }
        }
        return all;
    }

    /// Everything that an object can be asked, whatever became of its init.
    void askEverything(GraphUtil& util) const
    {
        util.dumpTevStructs();
        for (const int id : {0, 1, 2}) {
            util.dumpKernels(id);
            qv_isp_zmt_program_group pg = {};
            static_cast<void>(util.getTevData(id, pg));
            std::vector<InnerGraphNode> nodes;
            static_cast<void>(util.getInnerGraph(id, nodes));
        }
        qv_isp_zmt_program_group pg = {};
        static_cast<void>(util.getPgTevData(&at(*mRoot, kFirst), pg));
        std::set<int> ids;
        util.getAvailableSubgraphs(ids);
    }

    /// The lines of a dump of the first group's subgraph.
    Texts dumpOf(GraphUtil& util)
    {
        mLog.setMask(graphtest::kError);
        clearLog();
        util.dumpKernels(1);
        Texts all = lines();
        mLog.setMask(0);
        return all;
    }

    int initialise(GraphUtil& util) const { return util.init(NUXO_KEY_STREAM_ID, mRoot.get(), NUXO::GdfVersionKVA7); }

    /// Runs @p ask with each allocation failing once and from then on, without log lines and with all of them.
    ///
    /// @param check  told after each run whether it was out of memory
    /// @return       number of runs that were
    size_t sweep(const std::function<int()>& ask, const std::function<void(bool)>& check)
    {
        size_t failedRuns = 0;
        for (const uint32_t mask : {0U, 0x3fU}) {
            for (const bool forGood : {false, true}) {
                int status = 1;
                bool thrown = false;
                AllocationFailures failures;
                mLog.setMask(mask);
                failures.sweep(
                    forGood,
                    [&] {
                        if (escapes([&] { status = ask(); })) thrown = true;
                    },
                    [&] {
                        mLog.setMask(0);
                        mLog.clear();
                        EXPECT_FALSE(thrown);
                        EXPECT_TRUE(status == StatusOk || status == StatusNoMemory) << status;
                        if (status == StatusNoMemory) ++failedRuns;
                        check(status == StatusNoMemory);
                        mLog.setMask(mask);
                    });
            }
        }
        mLog.setMask(0);
        return failedRuns;
    }

    static inline const std::string kFirst = "first_compute_block_of_the_graph";
    static inline const std::string kSecond = "second_compute_block_of_the_graph";
    std::string mGood;
};

TEST_F(HistoryAllocationTest, InitOfAFreshObject)
{
    mUtil.reset();
    auto util = std::make_unique<GraphUtil>();
    size_t live = 0;
    const auto ask = [&] { return initialise(*util); };
    const std::function<void(bool)> check = [&](bool failed) {
        if (failed) {
            const Texts dump = dumpOf(*util);
            EXPECT_EQ(dumpOf(*util), dump); // no mark is left behind
            askEverything(*util);
            EXPECT_EQ(initialise(*util), StatusOk); // the object serves the next time
        }
        EXPECT_EQ(records(*util), mGood);
        util = std::make_unique<GraphUtil>();
        EXPECT_EQ(AllocationFailures::live(), live);
    };
    live = AllocationFailures::live();
    EXPECT_GT(sweep(ask, check), 100U);
}

TEST_F(HistoryAllocationTest, SecondInit)
{
    const auto ask = [&] { return initialise(*mUtil); };
    const auto check = [&](bool failed) {
        if (failed) {
            askEverything(*mUtil);
            EXPECT_EQ(initialise(*mUtil), StatusOk);
        }
        EXPECT_EQ(records(*mUtil), mGood);
    };
    const size_t live = AllocationFailures::live();
    EXPECT_GT(sweep(ask, check), 100U);
    EXPECT_EQ(AllocationFailures::live(), live);
}

TEST_F(HistoryAllocationTest, RecordsOfAGroup)
{
    const auto* const node = &at(*mRoot, kFirst);
    qv_isp_zmt_program_group pg = {};
    const auto ask = [&] { return mUtil->getPgTevData(node, pg); };
    qv_isp_zmt_program_group good = {};
    ASSERT_EQ(mUtil->getPgTevData(node, good), StatusOk);
    const auto check = [&](bool failed) {
        EXPECT_EQ(pg.run_kernels, failed ? nullptr : good.run_kernels);
        EXPECT_EQ(pg.kernel_count, failed ? 0U : 3U);
        EXPECT_EQ(pg.operation_mode, failed ? 0U : 3U);
        ASSERT_EQ(mUtil->getPgTevData(node, pg), StatusOk);
        for (uint32_t i = 0; i < 3; ++i) EXPECT_EQ(pg.run_kernels[i].kernel_uuid, 1000 + i);
    };
    EXPECT_GT(sweep(ask, check), 0U);
}

TEST_F(HistoryAllocationTest, GroupWithoutTuningModeOrUnknown)
{
    qv_isp_zmt_program_group pg = {};
    const auto* const withoutMode = &at(*mRoot, kSecond);
    EXPECT_GT(sweep([&] { return mUtil->getPgTevData(withoutMode, pg); },
                    [&](bool failed) { EXPECT_EQ(pg.kernel_count, failed ? 0U : 1U); }),
              0U);
    const auto* const unknown = &at(*mRoot, "sink_behind_the_second_group");
    const auto ask = [&] { // not found or out of memory
        const int status = mUtil->getPgTevData(unknown, pg);
        return status == StatusBadArgument ? static_cast<int>(StatusOk) : status == StatusOk ? 1 : status;
    };
    sweep(ask, [&](bool) { EXPECT_EQ(pg.run_kernels, nullptr); });
}

TEST_F(HistoryAllocationTest, InnerGraph)
{
    std::vector<InnerGraphNode> nodes;
    std::vector<InnerGraphNode> good;
    ASSERT_EQ(mUtil->getInnerGraph(1, good), StatusOk);
    const auto check = [&](bool failed) {
        if (!failed) {
            EXPECT_EQ(nodes.size(), good.size());
        }
        nodes = {};
    };
    EXPECT_GT(sweep([&] { return mUtil->getInnerGraph(1, nodes); }, check), 0U);
}

TEST_F(HistoryAllocationTest, DumpsAndIds)
{
    const size_t live = AllocationFailures::live();
    const auto ask = [&] {
        mUtil->dumpTevStructs();
        for (const int id : {0, 1, 2, 3}) mUtil->dumpKernels(id);
        std::set<int> ids;
        mUtil->getAvailableSubgraphs(ids);
        return static_cast<int>(StatusOk);
    };
    sweep(ask, [&](bool) {
        EXPECT_EQ(AllocationFailures::live(), live);
        EXPECT_EQ(records(*mUtil), mGood);
    });
    // the marks of an interrupted dump are gone
    mLog.setMask(graphtest::kError);
    clearLog();
    mUtil->dumpKernels(1);
    EXPECT_EQ(linesLike({"16 kernel_uuid: "}).size(), 3U);
}

} // namespace

} // namespace historytest
