// SPDX-License-Identifier: Apache-2.0
// Set-up and questions of the kernel utilities with every allocation failing in turn: the whole result or out of memory,
// never in between.
#include "kernels/KernelsFixture.h"
#include "simulation/AllocationSweep.h"

#include <array>
#include <tuple>

namespace graphtest {

namespace {

// No text fits into a string object itself.
const std::string kIn = "input_port_with_a_long_name";
const std::string kOut = "output_port_with_a_long_name";
const std::string kEdge = "output_port_at_the_edge_of_the_group";
const std::string kCapture = "capture_back_end_with_a_long_name";
const std::string kFirst = "first_program_group_in_the_graph";
const std::string kSecond = "second_program_group_in_the_graph";
const std::string kSink = "virtual_sink_with_a_long_name";
const std::string kKernel = "kernel_of_a_program_group_";
const std::string kTag = "calibration_tag_that_needs_the_heap";

std::string longStage(const std::string& name, int stream, const std::string& from, const std::string& to,
                      const std::string& body)
{
    return group(name,
                 "stream_id='" + std::to_string(stream) + "' exec_ctx_id='" + std::to_string(stream) + "' pg_id='3'",
                 input(kIn, from) + output(kOut, to, "id='9'") + "<cipf rbm='" + kTag + "'/>" + body);
}

std::string sourceAndSink()
{
    std::string limits;
    for (int i = 0; i < 56; ++i) limits += std::to_string(1000000 + i) + ",";
    return element("source", "sensor",
                   size(4000, 3000) + " cmc_tag='" + kTag + "' conversion_gain='" + std::string(40, '0') +
                       "2.5' dol_mode='" + kTag + "'",
                   output("port_0", kCapture + ":" + kIn, size(4000, 3000))) +
           element("hw", kCapture, "",
                   input(kIn, "sensor:port_0") + output(kOut, kFirst + ":" + kIn) + "<output " + size(4000, 3000) +
                       "/>") +
           sink(kSink, "stream_id='2' exec_ctx_id='2' peer='" + kSecond + ":" + kOut + "'") +
           "<mbr_data><stream_id id='2' value='" + limits + "'/></mbr_data>";
}

/// Two streams, the second fed from the edge of the first.
std::string unlinkedGraph()
{
    const std::string first = kernel(kKernel + "a", 10, 0, "metadata='1000000000,2000000000,3,4,5' branch_point='1'",
                                     sizes(size(4000, 3000) + " left='8'", size(2000, 1500))) +
                              kernel(kKernel + "b", 11, 1, "sink_port='5'") +
                              kernel(kKernel + "c", 12, 2, "restore_point='1' sink_port='6'") +
                              output(kEdge, kSecond + ":" + kIn, "id='5'") +
                              output(kEdge + "_off", kSink, "id='6' enabled='0'");
    const std::string second =
        kernel(kKernel + "d", 20, 0, "source='" + kCapture + ":output'") + kernel(kKernel + "e", 37235, 1, "rcb='1'");
    return graphElement("KVA5") + sourceAndSink() + longStage(kFirst, 1, kCapture + ":" + kOut, kSink, first) +
           longStage(kSecond, 2, kFirst + ":" + kEdge, kSink, second);
}

std::string link(const std::string& source, const std::string& destination)
{
    return "<klink source='" + source + "' destination='" + destination + "'/>";
}

/// The same groups with links instead of branches, for the graph analysis.
std::string linkedGraph(const std::string& version)
{
    const std::string first = kernel(kKernel + "a", 10, 0, "rcb='1'", sizes(size(4000, 3000), size(2000, 1500))) +
                              link(kIn, kKernel + "a:0") + link(kKernel + "a:0", kOut);
    const std::string second = kernel(kKernel + "d", 20, 0) + kernel(kKernel + "e", 21, 1) +
                               link(kIn, kKernel + "d:0") + link(kKernel + "d:0", kKernel + "e:0") +
                               link(kKernel + "e:0", kOut);
    const std::string connections =
        connection("sensor:port_0", kCapture + ":" + kIn) + connection(kCapture + ":" + kOut, kFirst + ":" + kIn) +
        connection(kFirst + ":" + kOut, kSecond + ":" + kIn) + connection(kSecond + ":" + kOut, kSink);
    return graphElement(version, connections) + sourceAndSink() +
           longStage(kFirst, 1, kCapture + ":" + kOut, kSecond + ":" + kIn, first) +
           longStage(kSecond, 2, kFirst + ":" + kOut, kSink, second);
}

class KernelUtilsAllocationTest : public AllocationSweepTest {
protected:
    /// A graph and utilities for it.
    struct Subject {
        explicit Subject(const std::string& body)
            : root(descriptor(body)), group(&at(*root, kFirst)), lastKernel(find(*group, kKernel + "c"))
        {
        }

        /// The records of both streams and the latest history of a source.
        Lines results()
        {
            Lines all;
            for (const int stream : {1, 2}) {
                qv_isp_zmt_program_group pg = {};
                utils.getProgramGroup(stream, pg);
                for (const std::string& record : recordTexts(pg)) all.push_back(record);
            }
            qv_isp_zmt_resolution_info history = {};
            utils.getSourceResolutionHistory(history);
            all.emplace_back(ZmtTevUtils::resInfoToStr(history));
            return all;
        }

        Tree root;
        const GraphConfigNode* group;
        const GraphConfigNode* lastKernel;
        ZmtTevUtils utils{true};
    };

    /// Something that a subject is asked for; a status comes back.
    using Question = std::function<int(Subject&)>;

    /// Asks a subject whose records must be @p expected whenever the answer is StatusOk.
    class SetUp : public Call {
    public:
        SetUp(const KernelUtilsAllocationTest& test, const std::string& body, Question question, Lines expected)
            : mTest(test), mSubject(body), mQuestion(std::move(question)), mExpected(std::move(expected))
        {
        }

        int act() override
        {
            mStatus = mQuestion(mSubject);
            return mStatus == StatusMissingObject ? static_cast<int>(StatusNoMemory) : mStatus;
        }

        void judge(int) override
        {
            if (mStatus == StatusOk) {
                EXPECT_EQ(mSubject.results(), mExpected);
            } else if (mStatus == StatusMissingObject) { // without memory there are no version utilities, either
                EXPECT_GE(mTest.count(kError, "ISP utils init failed"), 1U);
            }
            mSubject.utils.dumpKernels(1);
            mSubject.utils.dumpKernels(2);
        }

    private:
        const KernelUtilsAllocationTest& mTest;
        Subject mSubject;
        Question mQuestion;
        Lines mExpected;
        int mStatus = 1;
    };

    /// Asks an initialised subject for something that is stored in a Result.
    template <class Result> class Answer : public Call {
    public:
        using Reading = std::function<int(Subject&, Result&)>;

        Answer(const std::string& body, Reading reading, const Result& expected)
            : mSubject(body), mReading(std::move(reading)), mExpected(expected)
        {
            mSubject.utils.initTevUtils(mSubject.root.get());
        }

        int act() override
        {
            mResult = Result();
            return mReading(mSubject, mResult);
        }

        void judge(int status) override
        {
            if (status == StatusOk) {
                EXPECT_TRUE(mResult == mExpected);
            }
        }

    private:
        Subject mSubject;
        Reading mReading;
        Result mExpected;
        Result mResult{};
    };

    void sweepSetUp(const std::string& body, const Question& question, const Lines& expected)
    {
        Subject good(body);
        ASSERT_EQ(question(good), StatusOk);
        ASSERT_EQ(good.results(), expected);
        sweep([&] { return std::make_unique<SetUp>(*this, body, question, expected); });
    }

    template <class Result>
    void sweepAnswer(const typename Answer<Result>::Reading& reading, const Result& expected,
                     const std::string& body = unlinkedGraph())
    {
        sweep([&] { return std::make_unique<Answer<Result>>(body, reading, expected); });
    }

    static int init(Subject& subject) { return subject.utils.initTevUtils(subject.root.get()); }

    // Kernel a halves the frame; c restores what left a, and is off as its port is. Stream 2 is given another source by its
    // first kernel; the second one, off for want of stabilisation, takes the size that arrives.
    static inline const Lines kUnlinked = {"1:10 1 info 4000x3000>2000x1500 history 4000x3000>4000x3000",
                                           "1:11 1 history 4000x3000>2000x1500",
                                           "1:12 2 history 4000x3000>2000x1500",
                                           "2:20 1 history 4000x3000>4000x3000",
                                           "2:37235 2 info 4000x3000>4000x3000 history 4000x3000>4000x3000",
                                           uncropped(4000, 3000, 4000, 3000)};
};

TEST_F(KernelUtilsAllocationTest, SetUpOfAnOlderGraph)
{
    sweepSetUp(unlinkedGraph(), init, kUnlinked);
}

TEST_F(KernelUtilsAllocationTest, SetUpOfAnOlderGraphThatLogsErrorsOnly)
{
    sweepSetUp(
        unlinkedGraph(),
        [this](Subject& subject) {
            mLog.setMask(kError);
            return init(subject);
        },
        kUnlinked);
}

TEST_F(KernelUtilsAllocationTest, SetUpAfterAnotherGraph)
{
    const Tree other = descriptor(linkedGraph("KVA6"));
    sweepSetUp(
        unlinkedGraph(),
        [&other](Subject& subject) {
            const int status = subject.utils.initTevUtils(other.get());
            return status == StatusOk ? init(subject) : status;
        },
        kUnlinked);
}

TEST_F(KernelUtilsAllocationTest, SecondGeneration)
{
    sweepSetUp(
        unlinkedGraph(),
        [](Subject& subject) {
            const int status = init(subject);
            return status == StatusOk ? subject.utils.generateKernelListsForExecCtxs() : status;
        },
        kUnlinked);
}

TEST_F(KernelUtilsAllocationTest, SetUpOfAnAnalysedGraph)
{
    for (const char* const version : {"KVA6", "KVA5"}) { // by its version, by its links
        const std::string body = linkedGraph(version);
        Subject good(body);
        ASSERT_EQ(init(good), StatusOk);
        const Lines expected = good.results();
        ASSERT_EQ(expected.size(), 4U);
        EXPECT_EQ(expected.front(), "1:10 1 info 4000x3000>2000x1500 history 4000x3000>4000x3000");
        sweepSetUp(body, init, expected);
    }
}

TEST_F(KernelUtilsAllocationTest, NothingIsSetUpWithoutMemoryForVersionUtilities)
{
    Subject subject(unlinkedGraph());
    int status = 1;
    size_t without = 0;
    AllocationFailures failures;
    failures.sweep(
        true, [&] { status = init(subject); },
        [&] {
            if (status == StatusMissingObject) {
                ++without;
                EXPECT_TRUE(logged(kError, "ISP utils init failed"));
                std::string tag;
                EXPECT_EQ(subject.utils.getSensorCmcId(tag), StatusMissingObject);
                EXPECT_TRUE(logged(kError, "Error: ZmtTevUtils not initialized."));
                EXPECT_EQ(subject.results(), Lines({uncropped(0, 0, 0, 0)}));
            }
            clearLog();
        });
    EXPECT_GT(without, 0U);
    EXPECT_EQ(subject.results(), kUnlinked);
}

TEST_F(KernelUtilsAllocationTest, DumpsAndVersionsOfBothPaths)
{
    for (const std::string& body : {unlinkedGraph(), linkedGraph("KVA6")}) {
        Subject subject(body);
        ASSERT_EQ(init(subject), StatusOk);
        const Lines before = subject.results();
        for (const bool forGood : {false, true}) {
            const size_t live = AllocationFailures::live();
            bool thrown = false;
            AllocationFailures failures;
            failures.sweep(
                forGood,
                [&] {
                    const auto ask = [&subject] {
                        subject.utils.dumpKernels(1);
                        subject.utils.detectNewGraphVersion();
                        subject.utils.nodesHaveKernelLinks();
                    };
                    if (escapes(ask)) thrown = true;
                },
                [&] {
                    EXPECT_FALSE(thrown);
                    clearLog();
                    EXPECT_EQ(AllocationFailures::live(), live);
                });
        }
        EXPECT_EQ(subject.results(), before);
    }
}

using Ids = std::vector<int>;

TEST_F(KernelUtilsAllocationTest, StreamIds)
{
    sweepAnswer<Ids>([](Subject& subject, Ids& ids) { return subject.utils.getStreamIds(ids, false); }, {1, 2});
    sweepAnswer<Ids>([](Subject& subject, Ids& ids) { return subject.utils.getStreamIds(ids, true); }, {2});
}

TEST_F(KernelUtilsAllocationTest, IntegersOfNodes)
{
    sweepAnswer<Ids>(
        [](Subject& subject, Ids& ids) {
            return subject.utils.collectNodesIntAttribute(ids, NUXO_KEY_EXEC_CTX_ID, NUXO_KEY_PROGRAM_GROUP);
        },
        {1, 2});
}

TEST_F(KernelUtilsAllocationTest, StreamUpstream)
{
    sweepAnswer<int>(
        [](Subject& subject, int& upstream) -> int {
            upstream = subject.utils.getUpstreamStreamId(2, nullptr);
            return upstream == -1 ? StatusNoMemory : StatusOk;
        },
        1);
}

TEST_F(KernelUtilsAllocationTest, RecordsOfAGroup)
{
    using Uuids = std::array<uint32_t, 3>;
    const auto ask = [](Subject& subject, Uuids& uuids) {
        qv_isp_zmt_program_group pg = {};
        const int status = subject.utils.getProgramGroup(subject.group, pg);
        for (uint32_t i = 0; i < pg.kernel_count; ++i) uuids.at(i) = pg.run_kernels[i].kernel_uuid;
        return status;
    };
    sweepAnswer<Uuids>(ask, {10, 11, 12});
}

TEST_F(KernelUtilsAllocationTest, CalibrationTag)
{
    sweepAnswer<std::string>([](Subject& subject, std::string& tag) { return subject.utils.getSensorCmcId(tag); },
                             kTag);
}

TEST_F(KernelUtilsAllocationTest, ExposureMode)
{
    using Exposures = std::pair<float, std::string>;
    sweepAnswer<Exposures>(
        [](Subject& subject, Exposures& found) { return subject.utils.getDolInfo(found.first, found.second); },
        {2.5F, kTag});
}

TEST_F(KernelUtilsAllocationTest, Limits)
{
    sweepAnswer<float>(
        [](Subject& subject, float& last) {
            qv_view_mbr_limits_t limits = {};
            const int status = subject.utils.getMbrData(2, &limits);
            last = limits.values[6][7];
            return status;
        },
        1000055.0F);
}

TEST_F(KernelUtilsAllocationTest, Routing)
{
    using Table = std::map<int, std::vector<std::tuple<int, std::string>>>;
    sweepAnswer<Table>([](Subject& subject, Table& routing) { return subject.utils.getRoutingInfo(routing); },
                       {{1, {{3, kTag}}}, {2, {{3, kTag}}}});
}

TEST_F(KernelUtilsAllocationTest, NotingAKernel)
{
    sweepAnswer<Ids>(
        [](Subject& subject, Ids& disabled) {
            ZmtTevUtils::KernelInfo info;
            info.sinkPort = 6;
            return subject.utils.handleSinkPort(info, subject.lastKernel, disabled, 2);
        },
        {2});
}

} // namespace

} // namespace graphtest
