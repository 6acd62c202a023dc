// SPDX-License-Identifier: Apache-2.0
// Questions about contexts, subgraphs and kernels with every allocation failing in turn: the right answer or out of
// memory, never in between.
#include "camera/ContextFixture.h"

#include <support/AllocationFailures.h>

#include <functional>
#include <optional>
#include <set>
#include <tuple>

namespace graphtest {

namespace {

using Nodes = std::vector<IGraphConfig*>;

class ContextAllocationTest : public ContextTest {
protected:
    ContextAllocationTest()
    {
        // No text fits into a string object itself.
        const std::string front =
            element("source", "sensor", "exec_ctx_id='0' sensor_type='" + kLong + "'",
                    output(kOut, kBackEnd + ":" + kIn) + port("spare_port_of_the_sensor", "")) +
            element("hw", kBackEnd, "exec_ctx_id='0'", input(kIn, "sensor:" + kOut) + output(kOut, kFirst + ":" + kIn));
        const std::string kernels =
            element("kernel", "kernel", "pal_uuid='1' id='2' metadata='100000000,200000000,3'") +
            element("kernel", "another_kernel_of_the_group");
        const std::string first =
            group(kFirst, "exec_ctx_id='1' tuning_mode='1'",
                  kernels + input(kIn, kBackEnd + ":" + kOut) + output(kOut, kSecond + ":" + kIn) +
                      output("statistics_output_port", kSink, "content_type='" + kLong + "'") +
                      output("dangling_output_port", "a_node_that_is_not_there:port") +
                      output("disabled_output_port", kSink, "enabled='0'"));
        const std::string second = group(kSecond, "exec_ctx_id='1' tuning_mode='2'",
                                         input(kIn, kFirst + ":" + kOut) + output(kOut, kThird + ":" + kIn));
        const std::string third =
            group(kThird, "exec_ctx_id='2'", input(kIn, kSecond + ":" + kOut) + output(kOut, kSink));
        const std::string strange =
            element("node", kStrange, "type='" + kLong + "'", input(kIn, kThird + ":" + kOut)) +
            group("program_group_without_outputs", "exec_ctx_id='9'", input(kIn, kStrange + ":" + kIn));
        load(front + first + second + third + strange + sink(kSink) + sink(kSink + "_too"));
        mText = text(*mRoot);
    }

    /// Runs @p ask on copies of @p before with each allocation failing once and from then on, without log lines and with
    /// all of them.
    ///
    /// @return number of runs that were out of memory
    template <class Results> size_t sweep(const Results& before, const std::function<int(Results&)>& ask)
    {
        Results good = before;
        const int goodStatus = ask(good);
        size_t failedRuns = 0;
        for (const uint32_t mask : {0U, 0x3fU}) {
            mLog.setMask(mask);
            for (const bool forGood : {false, true}) failedRuns += sweep(forGood, before, ask, goodStatus, good);
        }
        EXPECT_EQ(text(*mRoot), mText);
        return failedRuns;
    }

    static inline const std::string kLong = "a text that is much too long for the object itself";
    static inline const std::string kIn = "input_port_with_a_long_name";
    static inline const std::string kOut = "output_port_with_a_long_name";
    static inline const std::string kBackEnd = "capture_back_end_with_a_long_name";
    static inline const std::string kFirst = "first_program_group_in_the_graph";
    static inline const std::string kSecond = "second_program_group_in_the_graph";
    static inline const std::string kThird = "third_program_group_in_the_graph";
    static inline const std::string kStrange = "node_of_a_type_that_nobody_knows";
    static inline const std::string kSink = "virtual_sink_with_a_long_name";

private:
    template <class Results>
    size_t sweep(bool forGood, const Results& before, const std::function<int(Results&)>& ask, int goodStatus,
                 const Results& good)
    {
        const size_t live = AllocationFailures::live();
        std::optional<Results> results(before);
        int status = 1;
        bool thrown = false;
        size_t failedRuns = 0;
        AllocationFailures failures;
        failures.sweep(
            forGood,
            [&] {
                if (escapes([&] { status = ask(*results); })) thrown = true;
            },
            [&] {
                EXPECT_FALSE(thrown);
                if (status == StatusNoMemory) {
                    ++failedRuns;
                } else {
                    EXPECT_EQ(status, goodStatus);
                    EXPECT_TRUE(*results == good);
                }
                results.reset();
                EXPECT_EQ(AllocationFailures::live(), live);
                results.emplace(before); // the graph serves the next question
                EXPECT_EQ(ask(*results), goodStatus);
                EXPECT_TRUE(*results == good);
                results.emplace(before);
                clearLog();
            });
        return failedRuns;
    }

    std::string mText;
};

TEST_F(ContextAllocationTest, Contexts)
{
    EXPECT_GT(sweep<std::set<int>>({7}, [this](auto& ids) { return GraphCameraUtil::getExecCtxIds(*mRoot, ids); }), 0U);
}

TEST_F(ContextAllocationTest, TuningModes)
{
    const auto ask = [this](auto& tuning) { return GraphCameraUtil::getExecCtxIdsTuningMap(*mRoot, tuning); };
    EXPECT_GT((sweep<std::map<int, int>>({{7, 7}}, ask)), 0U);
}

TEST_F(ContextAllocationTest, Connections)
{
    using Pairs = std::vector<std::pair<std::string, std::string>>;
    using Results = std::tuple<Pairs, Lines, Lines>;
    const auto ask = [this](Results& results) {
        auto& [connections, inputPeers, outputPeers] = results;
        return GraphCameraUtil::getExecCtxConnectionPorts(mRoot.get(), connections, inputPeers, outputPeers);
    };
    EXPECT_GT(sweep<Results>({}, ask), 0U);
    EXPECT_GT(sweep<Results>({{{kLong, kLong}}, {kLong}, {kLong}}, ask), 0U);
}

TEST_F(ContextAllocationTest, SubgraphPorts)
{
    for (const int direction : {0, 1}) {
        const auto ask = [this, direction](Nodes& ports) {
            return GraphCameraUtil::getSubgraphPorts(NUXO_KEY_EXEC_CTX_ID, 1, direction, *mRoot, ports,
                                                     NUXO_KEY_PROGRAM_GROUP);
        };
        EXPECT_GT(sweep<Nodes>({mRoot.get()}, ask), 0U);
    }
}

TEST_F(ContextAllocationTest, InputPorts)
{
    for (const int value : {1, 2, 9}) {
        const auto all = [this, value](Nodes& ports) {
            return GraphCameraUtil::getInputPorts(NUXO_KEY_EXEC_CTX_ID, value, *mRoot, ports, NUXO_KEY_PROGRAM_GROUP);
        };
        EXPECT_GT(sweep<Nodes>({}, all), 0U);
        const auto first = [this, value](IGraphConfig*& port) {
            return GraphCameraUtil::getInputPort(NUXO_KEY_EXEC_CTX_ID, value, mRoot.get(), &port,
                                                 NUXO_KEY_PROGRAM_GROUP);
        };
        EXPECT_GT(sweep<IGraphConfig*>(nullptr, first), 0U);
    }
}

TEST_F(ContextAllocationTest, OutputPorts)
{
    for (const int value : {1, 2, 9, 0}) { // the last two are reckoned from the source
        const auto ask = [this, value](Nodes& ports) {
            return GraphCameraUtil::getOutputPorts(NUXO_KEY_EXEC_CTX_ID, value, *mRoot, ports, NUXO_KEY_PROGRAM_GROUP);
        };
        EXPECT_GT(sweep<Nodes>({}, ask), 0U);
    }
    const auto crossing = [this](Nodes& ports) { // the source feeds a node of the type, in another context
        return GraphCameraUtil::getOutputPorts(NUXO_KEY_EXEC_CTX_ID, 4, *mRoot, ports, NUXO_KEY_HW);
    };
    EXPECT_GT(sweep<Nodes>({}, crossing), 0U);
    const auto keyless = [this](Nodes& ports) { // and lacks the key
        return GraphCameraUtil::getOutputPorts(NUXO_KEY_STREAM_ID, 4, *mRoot, ports, NUXO_KEY_HW);
    };
    EXPECT_GT(sweep<Nodes>({}, keyless), 0U);
}

TEST_F(ContextAllocationTest, ProgramGroups)
{
    for (const int value : {1, -3}) {
        const auto ask = [this, value](Nodes& groups) {
            return GraphCameraUtil::getProgramGroups(NUXO_KEY_EXEC_CTX_ID, value, mRoot.get(), groups);
        };
        const size_t failedRuns = sweep<Nodes>({mRoot.get()}, ask);
        if (value == 1) {
            EXPECT_GT(failedRuns, 0U);
        }
    }
}

TEST_F(ContextAllocationTest, Kernels)
{
    const auto count = [group = node(kFirst)](unsigned int& kernels) {
        return GraphCameraUtil::getKernelCountInPg(group, kernels);
    };
    sweep<unsigned int>(9, count);

    using Values = std::tuple<int, int, std::vector<unsigned int>, int, int, int, int>;
    for (const char* const path : {"kernel", "another_kernel_of_the_group"}) {
        const IGraphConfig* const kernel = node(kFirst + ":" + path);
        const auto read = [kernel](Values& values) {
            auto& [palUuid, id, metadata, enable, rcb, branchPoint, sinkPort] = values;
            return GraphCameraUtil::kernelGetValues(kernel, &palUuid, &id, metadata.data(), &enable, &rcb, &branchPoint,
                                                    &sinkPort);
        };
        sweep<Values>({0, 0, std::vector<unsigned int>(4), 0, 0, 0, 0}, read);
    }
}

TEST_F(ContextAllocationTest, Sources)
{
    const auto sources = [this](Nodes& found) { return GraphCameraUtil::getSourceNode(mRoot.get(), found); };
    EXPECT_GT(sweep<Nodes>({}, sources), 0U);
    const auto type = [this](std::string& found) { return GraphCameraUtil::sensorGetType(mRoot.get(), found); };
    EXPECT_GT(sweep<std::string>("", type), 0U);
    sweep<std::string>(kLong, type); // has the room already
}

TEST_F(ContextAllocationTest, Sinks)
{
    for (const std::string& name : {std::string(), kSink, kLong}) {
        const auto ask = [this, &name](Nodes& found) {
            return GraphCameraUtil::graphGetSinksByName(name, mRoot.get(), found);
        };
        const size_t failedRuns = sweep<Nodes>({mRoot.get()}, ask);
        if (name != kLong) {
            EXPECT_GT(failedRuns, 0U);
        }
    }
}

} // namespace

} // namespace graphtest
