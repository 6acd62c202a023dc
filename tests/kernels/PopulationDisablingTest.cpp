// SPDX-License-Identifier: Apache-2.0
// Kernels that a graph or its generation switches off: those that lead only to a disabled sink port, and stabilisation.
#include "kernels/PopulationFixture.h"

namespace graphtest {

namespace {

class PopulationDisablingTest : public PopulationTest {
protected:
    static std::string disabledPort() { return output("off", "far_sink", "id='5' enabled='0'"); }

    int fillStates(const Lines& attributes) { return fill(disabledPort() + kernels(attributes)); }

    /// Two groups in a row; the second has the disabled port.
    void startGroups(const Lines& first, const std::string& second)
    {
        start(frames("4000x3000") + joined("pg_a", 1, "buffer_src0:port_0", "pg_b:in", kernels(first)) +
              joined("pg_b", 1, "pg_a:out", "out_sink", disabledPort() + second) +
              streamSink("out_sink", 1, "pg_b:out"));
        EXPECT_EQ(mStarted, StatusOk);
    }
};

/// Kernels by their attributes and the states that they get. Sink port 5 is off, 1 is on.
struct Walk {
    const char* name;
    Lines attributes;
    std::string states;
};

const Walk kWalks[] = {
    {"EndsBehindTheBranchPoint", {"", "branch_point='1'", "", "sink_port='5'"}, "1 1 2 2"},
    {"EndsBehindTheNearestBranchPoint", {"branch_point='1'", "", "branch_point='2'", "", "sink_port='5'"}, "1 1 1 2 2"},
    {"EndsWithTheFirstKernel", {"", "", "", "sink_port='5'"}, "2 2 2 2"},
    {"EndsWithTheRestorePoint", {"branch_point='1'", "sink_port='1'", "restore_point='1'", "sink_port='5'"}, "1 1 2 2"},
    {"EndsAtOnceBehindABranchPoint", {"", "", "branch_point='1'", "sink_port='5'"}, "1 1 1 2"},
    {"EndsAtOnceWithARestoringKernel",
     {"branch_point='1'", "sink_port='1'", "", "restore_point='1' sink_port='5'"},
     "1 1 1 2"},
    {"EndsBehindABranchPointAtTheEdge", {"", "branch_point='1' sink_port='1'", "", "sink_port='5'"}, "1 1 2 2"},
    {"DoesNotEndWithTheKernelsOwnBranchPoint", {"", "", "branch_point='1' sink_port='5'"}, "2 2 2"},
    {"DoesNotEndWithRestorePointZero", {"", "restore_point='0'", "", "sink_port='5'"}, "2 2 2 2"},
    {"DoesNotEndWithNegativeRestorePoints", {"", "restore_point='-7'", "", "sink_port='5'"}, "2 2 2 2"},
    {"DoesNotEndBehindBranchPointZero", {"", "branch_point='0'", "", "sink_port='5'"}, "2 2 2 2"},
    {"DoesNotEndBehindNegativeBranchPoints", {"", "branch_point='-1'", "", "sink_port='5'"}, "2 2 2 2"},
    {"DoesNotEndBehindEnabledSinkPorts", {"", "sink_port='1'", "", "sink_port='5'"}, "2 2 2 2"},
    {"PassesBypassedKernels", {"branch_point='1'", "", "enabled='0'", "sink_port='5'"}, "1 2 0 2"},
    {"PassesABypassedKernelThatRestores",
     {"branch_point='1'", "", "enabled='0' restore_point='1'", "sink_port='5'"},
     "1 1 0 2"},
    {"BeginsWithABypassedKernel", {"", "", "enabled='0' sink_port='5'"}, "2 2 0"},
    {"MakesAnyOtherStateDisabled", {"enabled='3'", "enabled='-1'", "enabled='2'", "sink_port='5'"}, "2 2 2 2"},
    {"BeginsWithTheFirstKernel", {"sink_port='5'", "", ""}, "2 1 1"},
    {"LeavesTheKernelsBehindIt", {"", "sink_port='5'", "", ""}, "2 2 1 1"},
    {"HappensForEachKernel",
     {"branch_point='1'", "sink_port='5'", "restore_point='1'", "sink_port='5'", ""},
     "1 2 2 2 1"},
    {"HappensOnceWithoutEffectOnTheSecond", {"sink_port='5'", "sink_port='5'", ""}, "2 2 1"},
    {"IsNotForEnabledPorts", {"", "sink_port='1'", ""}, "1 1 1"},
};

class PopulationWalkTest : public PopulationDisablingTest, public ::testing::WithParamInterface<Walk> {};

TEST_P(PopulationWalkTest, FromADisabledSinkPort)
{
    EXPECT_EQ(fillStates(GetParam().attributes), StatusOk);
    EXPECT_EQ(enables(), GetParam().states);
    EXPECT_EQ(enables(handedOut(1)), GetParam().states);
}

INSTANTIATE_TEST_SUITE_P(Kernels, PopulationWalkTest, ::testing::ValuesIn(kWalks),
                         [](const auto& walk) { return std::string(walk.param.name); });

TEST_F(PopulationDisablingTest, OnlyZeroDisablesAPort)
{
    const auto stateWith = [this](const std::string& enabled) {
        EXPECT_EQ(fill(output("off", "far_sink", "id='5' " + enabled) + kernels({"sink_port='5'"})), StatusOk);
        return enables() +
               (count(kDebug, "Found disabled terminal 5, going to disable its kernels.") > 0 ? " found" : "");
    };
    EXPECT_EQ(stateWith("enabled='0'"), "2 found");
    EXPECT_EQ(stateWith(""), "1");
    EXPECT_EQ(stateWith("enabled='1'"), "1");
    EXPECT_EQ(stateWith("enabled='-1'"), "1");
    EXPECT_EQ(stateWith("private='1'"), "1");
}

TEST_F(PopulationDisablingTest, FirstOfTwoPortsOfOneIdCounts)
{
    const std::string on = "id='5'";
    const std::string off = "id='5' enabled='0'";
    const std::string kernel = kernels({"sink_port='5'"});
    const auto ports = [](const std::string& one, const std::string& two) {
        return output("one", "far_sink", one) + output("two", "far_sink", two);
    };
    EXPECT_EQ(fill(ports(off, on) + kernel), StatusOk);
    EXPECT_EQ(enables(), "2");
    EXPECT_EQ(portHistory("pg_a:one"), "4000x3000 > 4000x3000");
    EXPECT_EQ(portHistory("pg_a:two"), "none");
    EXPECT_EQ(fill(ports(on, off) + kernel), StatusOk);
    EXPECT_EQ(enables(), "1");
    EXPECT_EQ(portHistory("pg_a:two"), "none");
}

TEST_F(PopulationDisablingTest, HistoriesGoOnThroughDisabledKernels)
{
    EXPECT_EQ(fill(disabledPort() + kernel("k0", 0, "", resolution("4000x3000 8,8,8,8 > 2000x1500")) +
                   kernel("k1", 1, "sink_port='5'")),
              StatusOk);
    EXPECT_EQ(enables(), "2 2");
    EXPECT_EQ(history(1), "4000x3000 8,8,8,8 > 2000x1500");
    EXPECT_EQ(portHistory("pg_a:off"), "4000x3000 8,8,8,8 > 2000x1500");
}

TEST_F(PopulationDisablingTest, WalkGoesOnInTheGroupBefore)
{
    startGroups({"", "branch_point='1'", "", "sink_port='1'"}, kernel("m0", 0) + kernel("m1", 1, "sink_port='5'"));
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_EQ(enables(), "1 1 2 2 2 2");
}

TEST_F(PopulationDisablingTest, WalkEndsWhereTheGroupBeforeBranches)
{
    startGroups({"", "branch_point='1' sink_port='1'"}, kernel("m0", 0) + kernel("m1", 1, "sink_port='5'"));
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_EQ(enables(), "1 1 2 2");
}

// Both groups name the kernel with id 1, but the records are 1 and 3.
TEST_F(PopulationDisablingTest, DisabledKernelsAreThoseOfTheirGroup)
{
    startGroups({"", "sink_port='1'"}, kernel("m0", 0, "restore_point='9'") + kernel("m1", 1, "sink_port='5'"));
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_EQ(enables(), "1 1 2 2");
}

TEST_F(PopulationDisablingTest, NextCallBeginsWithoutDisabledKernels)
{
    EXPECT_EQ(fillStates({"", "sink_port='5'"}), StatusOk);
    EXPECT_EQ(enables(), "2 2");
    replace(*node("pg_a:off"), NUXO_KEY_ENABLED, 1);
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_EQ(enables(), "1 1");
}

// Stabilisation.

class PopulationStabilisationTest : public PopulationDisablingTest {
protected:
    static std::string stabilisation(const std::string& attributes = "", int id = 1)
    {
        return kernel("warp" + std::to_string(id), kStabilisation, id, attributes);
    }

    /// The states of three kernels, the second of which is the one in question.
    std::string states(const std::string& attributes = "", const std::string& last = "")
    {
        startStream(disabledPort() + kernel("k0", 0) + stabilisation(attributes) + kernel("k2", 2, last));
        return fillAgain();
    }

    std::string fillAgain()
    {
        EXPECT_EQ(mStarted, StatusOk);
        EXPECT_EQ(populate(), StatusOk);
        return enables();
    }

    /// The same when the setting says so.
    std::string statesWithDvs(int dvs, const std::string& attributes = "", const std::string& last = "")
    {
        states(attributes, last);
        EXPECT_EQ(mRoot->addValue(NUXO_KEY_DVS, dvs), StatusOk);
        startAgain();
        return fillAgain();
    }
};

TEST_F(PopulationStabilisationTest, IsDisabledUnlessTheSettingAsksForIt)
{
    EXPECT_EQ(states(), "1 2 1");
    EXPECT_EQ(statesWithDvs(0), "1 2 1");
    EXPECT_EQ(statesWithDvs(1), "1 1 1");
    EXPECT_EQ(statesWithDvs(-1), "1 1 1");
}

TEST_F(PopulationStabilisationTest, IsDisabledAlsoWhenBypassed)
{
    EXPECT_EQ(states("enabled='0'"), "1 2 1");
    EXPECT_EQ(statesWithDvs(1, "enabled='0'"), "1 0 1");
}

// The walk leaves the bypassed kernel, the generation does not.
TEST_F(PopulationStabilisationTest, IsDisabledAfterTheWalk)
{
    EXPECT_EQ(states("enabled='0' sink_port='5'"), "2 2 1");
    EXPECT_EQ(statesWithDvs(1, "enabled='0' sink_port='5'"), "2 0 1");
    EXPECT_EQ(states("enabled='0'", "sink_port='5'"), "2 2 2");
    EXPECT_EQ(statesWithDvs(1, "enabled='0'", "sink_port='5'"), "2 0 2");
    EXPECT_EQ(statesWithDvs(1, "", "sink_port='5'"), "2 2 2");
}

TEST_F(PopulationStabilisationTest, IsDisabledInEveryGroup)
{
    startGroups({"", "sink_port='1'"}, kernel("m0", 0) + stabilisation());
    EXPECT_EQ(fillAgain(), "1 1 1 2");
    startStream(stabilisation("", 0) + stabilisation("", 1));
    EXPECT_EQ(fillAgain(), "2 2");
}

TEST_F(PopulationStabilisationTest, NothingElseOfTheRecordIsReplaced)
{
    startStream(kernel("warp", kStabilisation, 0, "metadata='1,2,3,4'",
                       "<input width='4000' height='3000' bpp='10'/><output width='2000' height='1500' bpp='12'/>"));
    EXPECT_EQ(fillAgain(), "2");
    EXPECT_EQ(record(0).metadata[3], 4U);
    EXPECT_EQ(record(0).bpp_info.input_bpp, 10U);
    EXPECT_EQ(record(0).bpp_info.output_bpp, 12U);
    EXPECT_EQ(info(0), "4000x3000 > 2000x1500");
}

TEST_F(PopulationStabilisationTest, IsLeftAloneInGraphsOfNoGeneration)
{
    start(frames("4000x3000") + joined("pg_a", 1, "buffer_src0:port_0", "out_sink", stabilisation("", 0)) +
              streamSink("out_sink", 1, "pg_a:out"),
          "");
    EXPECT_EQ(fillAgain(), "1");
    EXPECT_TRUE(logged(kError, "Getting kernel configurations failed(-2048)"));
}

} // namespace

} // namespace graphtest
