// SPDX-License-Identifier: Apache-2.0
// Analyses with every allocation failing in turn: the whole result or out of memory, and an object that can be used again.
#include "analysis/AnalysisFixture.h"

#include "simulation/AllocationSweep.h"

#include <nuxo/analysis/InnerGraphNode.h>

namespace graphtest {

namespace {

using NUXO::InnerGraphNode;

// No text fits into a string object itself.
const std::string kIn = "input_port_with_a_long_name";
const std::string kOut = "output_port_with_a_long_name";
const std::string kGroup = "program_group_with_a_long_name";
const std::string kSource = "buffer_src_with_a_long_name";
const std::string kSink = "virtual_sink_with_a_long_name";
const std::string kScaler = "scaler_kernel_with_a_long_name";
const std::string kPlain = "plain_kernel_with_a_long_name";
const std::string kMux = "multiplexer_with_a_long_name";

/// Each kind of node once, two groups of one stream, one of which feeds itself, and a node that nothing needs.
std::string longGraph()
{
    const std::string size = "<input width='640' height='480' bpp='10'/><output width='320' height='240' bpp='10'/>";
    const std::string second = "second_" + kGroup;
    return bufferSource(kGroup + ":" + kIn, "", kSource) +
           group(kGroup, "stream_id='1' tuning_mode='2'",
                 input(kIn, kSource + ":port_0") + output(kOut, second + ":" + kIn) +
                     kernel(kScaler, 11, "rcb='1' metadata='100000000,2,3,4'", size) +
                     element("mux", kMux, "active_input='0'") + klink(kIn, kScaler + ":0") +
                     klink(kScaler + ":0", kMux + ":0") + klink(kMux + ":0", kOut)) +
           group(second, "stream_id='1'",
                 input(kIn, kGroup + ":" + kOut) + output(kOut, kSink) + kernel(kPlain, 12) +
                     klink(kIn, kPlain + ":0") + klink(kPlain + ":0", kOut)) +
           group("useless_" + kGroup, "stream_id='5'") +
           sink(kSink, "stream_id='1' peer='" + second + ":" + kOut + "'") +
           graphOf(connection(kSource + ":port_0", kGroup + ":" + kIn) +
                   connection(kGroup + ":" + kOut, second + ":" + kIn) + connection(second + ":" + kOut, kSink));
}

class AnalysisAllocationTest : public AllocationSweepTest {
protected:
    /// A question about longGraph; gets a group of it too.
    using Ask = std::function<int(GraphUtil&, const IGraphConfig&)>;

    void sweepAnalysis()
    {
        sweep([this] { return std::make_unique<Analysis>(*this); });
    }

    void sweepQuestion(const Ask& ask)
    {
        sweep([&ask] { return std::make_unique<Question>(ask); });
    }

    /// Asked after longGraph was analysed in peace.
    class Question : public Call {
    public:
        explicit Question(Ask ask) : mAsk(std::move(ask)), mGraph(descriptor(longGraph())), mGroup(at(*mGraph, kGroup))
        {
            EXPECT_EQ(mUtil.init(NUXO_KEY_STREAM_ID, mGraph.get(), GdfVersionKVA6), StatusOk);
        }

        int act() override { return mAsk(mUtil, mGroup); }
        void judge(int) override {}

    private:
        Ask mAsk;
        Tree mGraph;
        const IGraphConfig& mGroup;
        GraphUtil mUtil;
    };

    bool wasLogged(const std::string& line) const
    {
        const std::vector<std::string> all = lines();
        return std::find(all.begin(), all.end(), line) != all.end();
    }

    /// The step of the analysis that failed as the last line names it, empty when that does not.
    std::string failedStep() const
    {
        const std::vector<std::string> all = lines();
        const std::string last = all.empty() ? "" : all.back();
        for (const char* const step : {kAnalysis, kAllocation, kPopulation}) {
            if (last == std::string("16 ") + step + " failed") return step;
        }
        return "";
    }

    static constexpr const char* kAnalysis = "Graph settings analysis";
    static constexpr const char* kAllocation = "TEV data allocation";
    static constexpr const char* kPopulation = "TEV structures population";

    size_t mSilentFailures = 0;    ///< analyses that did not say which step failed
    size_t mDumpsWithMarks = 0;    ///< dumps that found marks of the analysis
    size_t mFailedAllocations = 0; ///< analyses that ended when records were allocated

    /// Lines that analyses which are out of memory may log, and whether one did.
    std::map<std::string, bool> mFailureLines = {
        {"16 Failed to allocate graph node structure", false},
        {"16 Failed to allocate subgraph info", false},
        {"16 Failed to allocate imaging node struct", false},
        {"16 Failed to allocate imaging node struct for port", false},
        {"16 Failed to allocate imaging node struct for port port_0", false},
        {"16 Graph settings analysis failed", false},
        {"16 TEV data allocation failed", false},
        {"16 TEV structures population failed", false},
    };

private:
    class Analysis : public Call {
    public:
        explicit Analysis(AnalysisAllocationTest& test) : mTest(test), mGraph(descriptor(longGraph())) {}

        int act() override { return mUtil.init(NUXO_KEY_STREAM_ID, mGraph.get(), GdfVersionKVA6); }

        void judge(int status) override
        {
            if (status == StatusOk) {
                judgeRecords();
            } else {
                for (auto& line : mTest.mFailureLines) line.second = line.second || mTest.wasLogged(line.first);
                const std::string step = mTest.failedStep();
                if (step.empty()) ++mTest.mSilentFailures;
                if (step == kAllocation) judgeNoRecords();
            }
            ask();
        }

    private:
        /// Without all of its records the analysis hands out none.
        void judgeNoRecords()
        {
            ++mTest.mFailedAllocations;
            for (const int id : {-1, 1}) {
                qv_isp_zmt_run_kernels other = {};
                qv_isp_zmt_program_group records = {7, &other, 8};
                ASSERT_EQ(mUtil.getTevData(id, records), StatusOk);
                EXPECT_EQ(records.kernel_count, 0U);
                EXPECT_EQ(records.run_kernels, nullptr);
            }
        }

        void judgeRecords()
        {
            qv_isp_zmt_program_group records = {};
            ASSERT_EQ(mUtil.getTevData(1, records), StatusOk);
            ASSERT_EQ(records.kernel_count, 2U);
            const qv_isp_zmt_run_kernels& scaler = records.run_kernels[0];
            EXPECT_EQ(scaler.kernel_uuid, 11U);
            EXPECT_EQ(scaler.metadata[0], 100000000U);
            ASSERT_NE(scaler.resolution_info, nullptr);
            EXPECT_EQ(scaler.resolution_info->output_width, 320);
            EXPECT_EQ(scaler.resolution_history->output_width, 640);
            const qv_isp_zmt_run_kernels& plain = records.run_kernels[1];
            EXPECT_EQ(plain.kernel_uuid, 12U);
            EXPECT_EQ(plain.resolution_history->output_width, 320);
        }

        /// Every question that must have an answer after a failure too.
        void ask()
        {
            std::set<int> ids;
            mUtil.getAvailableSubgraphs(ids);
            for (const int id : {-1, 1, 5}) {
                qv_isp_zmt_program_group records = {};
                static_cast<void>(mUtil.getTevData(id, records));
                std::vector<InnerGraphNode> nodes;
                static_cast<void>(mUtil.getInnerGraph(id, nodes));
                const std::vector<std::string> dumped = dumpedLines(id);
                if (dumpedLines(id) != dumped) ++mTest.mDumpsWithMarks;
            }
            qv_isp_zmt_program_group records = {};
            static_cast<void>(mUtil.getPgTevData(&at(*mGraph, kGroup), records));
            mUtil.dumpTevStructs();
        }

        std::vector<std::string> dumpedLines(int id)
        {
            mTest.clearLog();
            mUtil.dumpKernels(id);
            return mTest.lines();
        }

        AnalysisAllocationTest& mTest;
        Tree mGraph;
        GraphUtil mUtil;
    };
};

TEST_F(AnalysisAllocationTest, AnalysisWithLog)
{
    sweepAnalysis();
    for (const auto& [line, wasLogged] : mFailureLines) EXPECT_TRUE(wasLogged) << line;
    EXPECT_EQ(mSilentFailures, 0U);
    EXPECT_GT(mFailedAllocations, 0U);
    EXPECT_EQ(mDumpsWithMarks, 0U);
}

TEST_F(AnalysisAllocationTest, AnalysisWithoutLog)
{
    mLog.setMask(0);
    sweepAnalysis();
}

TEST_F(AnalysisAllocationTest, InnerGraph)
{
    sweepQuestion([](GraphUtil& util, const IGraphConfig&) {
        std::vector<InnerGraphNode> nodes;
        const int status = util.getInnerGraph(1, nodes);
        EXPECT_TRUE(status != StatusOk || nodes.size() == 7U); // four ports, two kernels, a mux
        return status;
    });
}

TEST_F(AnalysisAllocationTest, RecordsOfAGroup)
{
    sweepQuestion([](GraphUtil& util, const IGraphConfig& group) {
        qv_isp_zmt_program_group records = {};
        const int status = util.getPgTevData(&group, records);
        EXPECT_EQ(records.kernel_count, status == StatusOk ? 1U : 0U);
        return status;
    });
}

TEST_F(AnalysisAllocationTest, SubgraphIds)
{
    sweepQuestion([](GraphUtil& util, const IGraphConfig&) {
        std::set<int> ids;
        util.getAvailableSubgraphs(ids);
        return static_cast<int>(ids.size() == 2 ? StatusOk : StatusNoMemory);
    });
}

TEST_F(AnalysisAllocationTest, Dumps)
{
    descriptor(longGraph()); // its names stay in the vocabulary
    const size_t live = AllocationFailures::live();
    {
        Question question([](GraphUtil& util, const IGraphConfig&) {
            for (const int id : {-1, 1, 9}) util.dumpKernels(id);
            util.dumpTevStructs();
            return static_cast<int>(StatusOk);
        });
        clearLog();
        question.act();
        const std::vector<std::string> whole = lines();
        for (const bool forGood : {false, true}) {
            AllocationFailures allocations;
            allocations.sweep(
                forGood, [&] { EXPECT_FALSE(escapes([&] { question.act(); })); },
                [&] {
                    clearLog();
                    question.act();
                    EXPECT_EQ(lines(), whole); // marks are cleared whatever happens
                });
        }
    }
    EXPECT_EQ(AllocationFailures::live(), live);
}

} // namespace

} // namespace graphtest
