// SPDX-License-Identifier: Apache-2.0
// Sources and kernels read with every allocation failing in turn.
#include "histories/SourceFixture.h"
#include "simulation/AllocationSweep.h"

namespace graphtest {

namespace {

/// What kernelGetValues gives.
struct KernelValues {
    int palUuid = 0;
    int id = 0;
    unsigned int metadata[4] = {};
};

using Resolutions = std::map<std::string, qv_isp_zmt_resolution_info>;

std::string describe(const qv_isp_zmt_resolution_info& info)
{
    return text(info);
}

std::string describe(const KernelValues& values)
{
    std::string all = std::to_string(values.palUuid) + " " + std::to_string(values.id);
    for (const unsigned int item : values.metadata) all += " " + std::to_string(item);
    return all;
}

std::string describe(const Resolutions& resolutions)
{
    std::string all;
    for (const auto& [name, info] : resolutions) all += name + " " + std::to_string(info.output_width) + ";";
    return all;
}

constexpr const char* kFarBackEnd = "a_back_end_whose_name_needs_the_heap";

/// A source that leads to a back end with a long name.
std::string farSource(const std::string& name, const std::string& stages, const std::string& portAttributes = "")
{
    const std::string backEnd = kFarBackEnd;
    return "<" + name + R"( width="4000" height="3000">)" + stages + R"(<port_0 type="port" name="port_0" peer=")" +
           backEnd + R"(:in" )" + portAttributes + "/></" + name + "><" + backEnd +
           R"(><in type="port" name="in"/><zmt_pixelformatter><input width="1036" height="766" left="7" top="9"/>
           </zmt_pixelformatter><output width="1020" height="740"/></)" +
           backEnd + ">";
}

constexpr const char* kPortSize = R"(width="640" height="480")";

class HistoriesAllocationTest : public AllocationSweepTest {
protected:
    /// A function of a graph that has a result; @p stated is the status that it has with enough memory.
    template <typename Result> class GraphCall : public Call {
    public:
        using Function = std::function<int(GraphConfigNode&, Result&)>;

        GraphCall(Tree graph, Function function, int stated, std::string expected)
            : mGraph(std::move(graph)), mBefore(text(*mGraph)), mFunction(std::move(function)), mStated(stated),
              mExpected(std::move(expected))
        {
        }

        int act() override
        {
            mResult = Result();
            const int status = mFunction(*mGraph, mResult);
            return status == mStated ? static_cast<int>(StatusOk) : status;
        }

        void judge(int status) override
        {
            if (status == StatusOk) {
                EXPECT_EQ(describe(mResult), mExpected);
            }
            EXPECT_EQ(text(*mGraph), mBefore);
        }

    private:
        Tree mGraph;
        std::string mBefore;
        Function mFunction;
        int mStated;
        std::string mExpected;
        Result mResult{};
    };

    template <typename Result>
    void sweepGraph(const std::string& body, const std::function<int(GraphConfigNode&, Result&)>& function, int stated,
                    const std::string& expected)
    {
        sweep([&] { return std::make_unique<GraphCall<Result>>(tree(body), function, stated, expected); });
    }

    /// The history of the source @p name, which stays zero when it has none.
    void sweepSource(const std::string& name, const std::string& body, int stated,
                     const qv_isp_zmt_resolution_info& expected)
    {
        static_cast<void>(tree(body)); // its names stay in the vocabulary
        const uint32_t nameKey = key(name);
        sweepGraph<qv_isp_zmt_resolution_info>(
            body,
            [nameKey](GraphConfigNode& root, qv_isp_zmt_resolution_info& history) {
                return ZmtTevUtils::sourceGetResolutionHistory(history, *root.getDescendant(nameKey));
            },
            stated, text(expected));
    }
};

TEST_F(HistoriesAllocationTest, SensorSurvives)
{
    // Left 8 + 16 + 2 * 4 + 2 * 11 + 4 * 3 + 4 * 7, top 4 + 10 + 2 * 2 + 2 * 6 + 4 * 5 + 4 * 9.
    sweepSource("sensor", farSource("sensor", std::string(kArray) + kBinner + kScaler), StatusOk,
                {4224, 3136, symmetric(94, 86), 1020, 740, {}});
}

TEST_F(HistoriesAllocationTest, TestPatternGeneratorSurvives)
{
    sweepSource("tpg", farSource("tpg", "", kPortSize), StatusOk, {1036, 766, symmetric(7, 9), 1020, 740, {}});
}

TEST_F(HistoriesAllocationTest, BufferSourceSurvives)
{
    const std::string name = "a_buffer_src_whose_name_needs_the_heap";
    sweepSource(name, farSource(name, "", kPortSize), StatusOk, {640, 480, {}, 640, 480, {}});
}

TEST_F(HistoriesAllocationTest, SourceThatFailsKeepsItsStatus)
{
    const std::string name = "a_buffer_src_whose_name_needs_the_heap";
    sweepSource(name, farSource(name, ""), StatusNotFound, {});
}

TEST_F(HistoriesAllocationTest, UnknownSourceIsNeverTakenForAnother)
{
    const std::string name = "a_camera_whose_name_needs_the_heap";
    sweepSource(name, farSource(name, "", kPortSize), StatusNotSupported, {});
}

TEST_F(HistoriesAllocationTest, KernelValuesSurvive)
{
    // Long enough that neither the text nor its first items stay out of the heap.
    const std::string zeros(30, '0');
    sweepGraph<KernelValues>(R"(<kernel pal_uuid="9" id="8" metadata=")" + zeros + "1," + zeros + R"(2,3,4,5"/>)",
                             [](GraphConfigNode& root, KernelValues& values) {
                                 return ZmtTevUtils::kernelGetValues(root.getDescendant(NUXO_KEY_KERNEL),
                                                                     &values.palUuid, &values.id, values.metadata,
                                                                     nullptr, nullptr, nullptr, nullptr, nullptr);
                             },
                             StatusOk, "9 8 1 2 3 4");
}

constexpr const char* kTwoOutputs = R"(<kernel><input width="100" height="50"/><output>
    <a width="90" height="40" name="an_output_whose_name_needs_the_heap"/>
    <b width="80" height="30" name="b_output_whose_name_needs_the_heap"/></output></kernel>)";

TEST_F(HistoriesAllocationTest, ResolutionsOfAllOutputsSurvive)
{
    sweepGraph<Resolutions>(
        kTwoOutputs,
        [](GraphConfigNode& root, Resolutions& all) {
            return ZmtTevUtils::kernelGetResolutions(root.getDescendant(NUXO_KEY_KERNEL), all);
        },
        StatusOk, "an_output_whose_name_needs_the_heap 90;b_output_whose_name_needs_the_heap 80;");
}

TEST_F(HistoriesAllocationTest, ResolutionsOfTheFirstOutputSurvive)
{
    sweepGraph<qv_isp_zmt_resolution_info>(
        kTwoOutputs,
        [](GraphConfigNode& root, qv_isp_zmt_resolution_info& first) {
            first = counting(1000);
            const int status = ZmtTevUtils::kernelGetResolutions(root.getDescendant(NUXO_KEY_KERNEL), first);
            EXPECT_TRUE(status == StatusOk || first.input_width == 0); // no half of a record
            return status;
        },
        StatusOk, text(qv_isp_zmt_resolution_info{100, 50, {}, 90, 40, {}}));
}

TEST_F(HistoriesAllocationTest, DumpOfPortsShowsWhatItCan)
{
    const Tree graph = descriptor("<program_group name='a_program_group_whose_name_needs_the_heap'>"
                                  "<port name='a_port_whose_name_needs_the_heap'/>"
                                  "<port name='b_port_whose_name_needs_the_heap'/></program_group>");
    const std::string group = "a_program_group_whose_name_needs_the_heap:";
    ZmtTevUtils::PortHistories histories;
    histories[&at(*graph, group + "b_port_whose_name_needs_the_heap")] = counting(1);
    histories[&at(*graph, group + "a_port_whose_name_needs_the_heap")] = counting(2);
    for (const bool forGood : {false, true}) {
        const size_t live = AllocationFailures::live();
        bool thrown = false;
        clearLog();
        AllocationFailures allocations;
        const size_t refused = allocations.sweep(
            forGood, [&] { thrown = escapes([&] { ZmtTevUtils::dumpPortResHistoryMap(histories); }); },
            [&] {
                EXPECT_FALSE(thrown);
                EXPECT_LE(mLog.count(), 3U);
                EXPECT_EQ(AllocationFailures::live(), live);
                clearLog();
            });
        EXPECT_GT(refused, 0U);
        ZmtTevUtils::dumpPortResHistoryMap(histories);
        EXPECT_TRUE(
            loggedExactly({"2 dumpPortResHistoryMap", "16 a_port_whose_name_needs_the_heap:" + text(counting(2)),
                           "16 b_port_whose_name_needs_the_heap:" + text(counting(1))}));
    }
}

} // namespace

} // namespace graphtest
