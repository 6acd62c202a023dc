// SPDX-License-Identifier: Apache-2.0
// Frame parameters with every allocation failing in turn.
#include "frame_params/FrameParamsFixture.h"

#include "simulation/AllocationSweep.h"

namespace graphtest {

namespace {

/// Text of a record that nobody wrote.
constexpr const char* kUnwritten = "0,0 0x0 0/0 0/0";

class FrameParamsAllocationTest : public AllocationSweepTest {
protected:
    using Function = std::function<int(qv_lum_frame_params&, const SharedGraph&)>;

    class FrameCall : public Call {
    public:
        FrameCall(const std::string& body, Function function, std::string expected)
            : mGraph(sharedGraph(body)), mBefore(text(*mGraph)), mFunction(std::move(function)),
              mExpected(std::move(expected))
        {
        }

        int act() override
        {
            mParams = {};
            return mFunction(mParams, mGraph);
        }

        void judge(int status) override
        {
            EXPECT_EQ(text(mParams), status == StatusOk ? mExpected : kUnwritten);
            EXPECT_EQ(text(*mGraph), mBefore);
            EXPECT_EQ(mGraph.use_count(), 1);
        }

    private:
        std::shared_ptr<GraphConfigNode> mGraph;
        std::string mBefore;
        Function mFunction;
        std::string mExpected;
        qv_lum_frame_params mParams{};
    };

    void sweepFrames(const std::string& body, const Function& function, const std::string& expected)
    {
        sweep([&] { return std::make_unique<FrameCall>(body, function, expected); });
    }
};

TEST_F(FrameParamsAllocationTest, PortSurvives)
{
    const std::string node = "a_program_group_with_a_name_that_needs_the_heap";
    const std::string path = node + ":main_out";
    sweepFrames(
        "<" + node + "><main_out width=\"1920\" height=\"1080\"/></" + node + ">",
        [&path](qv_lum_frame_params& params, const SharedGraph& graph) {
            return GraphLumUtil::getPortFrameParams(params, graph, path);
        },
        "0,0 1920x1080 1/1 1/1");
}

TEST_F(FrameParamsAllocationTest, SensorSurvives)
{
    const Sensor sensor{{4208, 3120, 8, 4}, Stage{2, 2, {2104, 1560, 16, 8}}, Stage{1, 2, {1000, 750, 0, 0}}};
    sweepFrames(
        sensor.element(),
        [](qv_lum_frame_params& params, const SharedGraph& graph) {
            return GraphLumUtil::getSensorFrameParams(params, graph);
        },
        "40,20 4000x3000 1/4 1/4");
}

} // namespace

} // namespace graphtest
