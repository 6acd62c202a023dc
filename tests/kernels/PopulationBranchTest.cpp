// SPDX-License-Identifier: Apache-2.0
// Histories that are kept at branch points and restored, and those that leave through sink ports.
#include "kernels/PopulationFixture.h"

namespace graphtest {

namespace {

const std::string kNoBranch = "Found restore_point attribute, but no branch points. Ignoring attribute and continuing.";
const std::string kAtTheEdge = "Branch point with kernel at edge has no effect";

/// A kernel with these attributes that scales what arrives to this size, to none for "".
struct Step {
    std::string attributes;
    std::string size = "";
};

std::string chain(const std::vector<Step>& steps, const std::string& prefix = "k")
{
    std::string all;
    int id = 0;
    for (const Step& step : steps) {
        const std::string own = step.size.empty() ? "" : resolution("1x1 > " + step.size);
        all += kernel(prefix + std::to_string(id), id, step.attributes, own);
        ++id;
    }
    return all;
}

class PopulationBranchTest : public PopulationTest {
protected:
    int fillSteps(const std::vector<Step>& steps)
    {
        return fill(output("second", "second_sink", "id='2'") + chain(steps), "400x300");
    }

    /// The size that arrives at each kernel.
    Lines arriving() const
    {
        Lines all;
        for (size_t i = 0; i < mCapacity; ++i) {
            const std::string whole = history(i);
            all.push_back(whole.substr(whole.find("> ") + 2));
        }
        return all;
    }
};

// Branches.

TEST_F(PopulationBranchTest, RestoreGoesBackToWhatLeftTheBranchPoint)
{
    EXPECT_EQ(fillSteps({{"branch_point='1'", "200x150"}, {"", "100x75"}, {""}, {"restore_point='1'"}, {""}}),
              StatusOk);
    EXPECT_EQ(arriving(), (Lines{"400x300", "200x150", "100x75", "200x150", "200x150"}));
    EXPECT_TRUE(notLogged(kNoBranch));
}

TEST_F(PopulationBranchTest, WholeHistoryComesBack)
{
    // sx = sy = 1024 throughout
    EXPECT_EQ(fill(kernel("k0", 0, "branch_point='1'", resolution("400x300 1,2,3,4 > 396x294")) +
                       kernel("k1", 1, "", resolution("396x294 5,6,7,8 > 384x280")) +
                       kernel("k2", 2, "restore_point='1'"),
                   "400x300"),
              StatusOk);
    EXPECT_EQ(history(2), "400x300 1,2,3,4 > 396x294");
}

TEST_F(PopulationBranchTest, RestoringKernelAdvancesTheRestoredHistory)
{
    EXPECT_EQ(fillSteps({{"branch_point='1'", "200x150"}, {"", "100x75"}, {"restore_point='1' rcb='1'"}, {""}}),
              StatusOk);
    EXPECT_EQ(info(2), "200x150 > 200x150");
    EXPECT_EQ(arriving().back(), "200x150");
}

TEST_F(PopulationBranchTest, BranchesAreToldApartByTheirValue)
{
    EXPECT_EQ(fillSteps({{"branch_point='7'", "200x150"},
                         {"branch_point='-2'", "100x75"},
                         {"", "50x30"},
                         {"restore_point='7'"},
                         {"restore_point='-2'"},
                         {"restore_point='7'"}}),
              StatusOk);
    EXPECT_EQ(arriving(), (Lines{"400x300", "200x150", "100x75", "200x150", "100x75", "200x150"}));
    EXPECT_TRUE(notLogged(kNoBranch));
}

TEST_F(PopulationBranchTest, FirstSaveOfABranchWins)
{
    EXPECT_EQ(fillSteps({{"branch_point='1'", "200x150"}, {"branch_point='1'", "100x75"}, {"restore_point='1'"}}),
              StatusOk);
    EXPECT_EQ(arriving(), (Lines{"400x300", "200x150", "200x150"}));
}

// A kernel may continue one branch and begin another.
TEST_F(PopulationBranchTest, RestoringKernelSavesWhatLeavesIt)
{
    EXPECT_EQ(fillSteps({{"branch_point='1'", "200x150"},
                         {"", "100x75"},
                         {"restore_point='1' branch_point='2'", "20x15"},
                         {"", "10x7"},
                         {"restore_point='2'"}}),
              StatusOk);
    EXPECT_EQ(arriving(), (Lines{"400x300", "200x150", "200x150", "20x15", "20x15"}));
}

TEST_F(PopulationBranchTest, UnknownBranchKeepsTheRunningHistory)
{
    EXPECT_EQ(
        fillSteps({{"", "200x150"}, {"restore_point='2'"}, {"branch_point='2'", "100x75"}, {"restore_point='2'"}}),
        StatusOk);
    EXPECT_EQ(arriving(), (Lines{"400x300", "200x150", "200x150", "100x75"}));
    EXPECT_EQ(count(kError, kNoBranch), 1U); // of k1 alone
}

// Nothing is saved under 0, so whoever restores it gets the message.
TEST_F(PopulationBranchTest, BranchZeroIsNone)
{
    EXPECT_EQ(fillSteps({{"branch_point='0'", "200x150"}, {"", "100x75"}, {"restore_point='0'"}}), StatusOk);
    EXPECT_EQ(arriving(), (Lines{"400x300", "200x150", "100x75"}));
    EXPECT_EQ(count(kError, kNoBranch), 1U);
}

TEST_F(PopulationBranchTest, MinusOneRestoresNothing)
{
    EXPECT_EQ(fillSteps({{"branch_point='-1'", "200x150"}, {"", "100x75"}, {"restore_point='-1'"}}), StatusOk);
    EXPECT_EQ(arriving(), (Lines{"400x300", "200x150", "100x75"}));
    EXPECT_TRUE(notLogged(kNoBranch));
}

TEST_F(PopulationBranchTest, BranchesEndWithTheirGroup)
{
    start(
        frames("400x300") +
        joined("pg_a", 1, "buffer_src0:port_0", "pg_b:in",
               chain({{"branch_point='1'", "200x150"}, {"sink_port='1'", "100x75"}})) +
        joined("pg_b", 1, "pg_a:out", "out_sink", chain({{"restore_point='1'"}, {"branch_point='1'", "50x30"}}, "m")) +
        streamSink("out_sink", 1, "pg_b:out"));
    EXPECT_EQ(mStarted, StatusOk);
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_EQ(arriving(), (Lines{"400x300", "200x150", "100x75", "100x75"}));
    EXPECT_EQ(count(kError, kNoBranch), 1U);
}

TEST_F(PopulationBranchTest, BranchesEndWithTheCall)
{
    EXPECT_EQ(fillSteps({{"restore_point='1'"}, {"branch_point='1'", "200x150"}}), StatusOk);
    EXPECT_EQ(populate(), StatusOk);
    EXPECT_EQ(arriving(), (Lines{"400x300", "400x300"}));
    EXPECT_EQ(count(kError, kNoBranch), 1U);
}

// Sink ports.

TEST_F(PopulationBranchTest, SinkPortKeepsWhatLeavesTheKernel)
{
    EXPECT_EQ(fillSteps({{"sink_port='1'", "200x150"}, {"sink_port='2'"}, {"", "100x75"}}), StatusOk);
    EXPECT_EQ(mPortHistories.size(), 2U);
    EXPECT_EQ(portHistory("pg_a:out"), "400x300 > 200x150");
    EXPECT_EQ(portHistory("pg_a:second"), "400x300 > 200x150");
    EXPECT_TRUE(logged(kDebug, "Sink port out info stored"));
    EXPECT_TRUE(logged(kDebug, "Sink port second info stored"));
}

TEST_F(PopulationBranchTest, LastKernelOfASinkPortCounts)
{
    EXPECT_EQ(fillSteps({{"sink_port='1'", "200x150"}, {"sink_port='1'", "100x75"}}), StatusOk);
    EXPECT_EQ(portHistory("pg_a:out"), "400x300 > 100x75");
    EXPECT_EQ(populate(), StatusOk); // with the entry of the first call
    EXPECT_EQ(portHistory("pg_a:out"), "400x300 > 100x75");
    EXPECT_EQ(mPortHistories.size(), 1U);
}

TEST_F(PopulationBranchTest, SinkPortZeroIsOne)
{
    EXPECT_EQ(fill(output("zeroth", "far_sink", "id='0'") + kernel("k0", 0, "sink_port='0'")), StatusOk);
    // the group's input has that id too and comes first
    EXPECT_EQ(portHistory("pg_a:in"), "4000x3000 > 4000x3000");
    EXPECT_EQ(portHistory("pg_a:zeroth"), "none");
}

TEST_F(PopulationBranchTest, KernelsOwnPortComesBeforeThatOfItsGroup)
{
    EXPECT_EQ(fill(kernel("k0", 0, "sink_port='1'", output("own", "far_sink", "id='1'"))), StatusOk);
    EXPECT_EQ(portHistory("pg_a:k0:own"), "4000x3000 > 4000x3000");
    EXPECT_EQ(portHistory("pg_a:out"), "none");
    EXPECT_TRUE(logged(kDebug, "Sink port own info stored"));
}

TEST_F(PopulationBranchTest, BranchPointAtTheEdgeKeepsThePortsHistoryOnly)
{
    EXPECT_EQ(fillSteps({{"branch_point='1' sink_port='1'", "200x150"}, {"", "100x75"}, {"restore_point='1'"}}),
              StatusOk);
    EXPECT_EQ(count(kDebug, kAtTheEdge), 1U);
    EXPECT_EQ(portHistory("pg_a:out"), "400x300 > 200x150");
    EXPECT_EQ(count(kError, kNoBranch), 1U);
    EXPECT_EQ(arriving(), (Lines{"400x300", "200x150", "100x75"}));
}

TEST_F(PopulationBranchTest, OtherKernelsAreNotAtTheEdge)
{
    EXPECT_EQ(fillSteps({{"branch_point='1'"}, {"sink_port='1'"}, {"branch_point='0' sink_port='2'"}}), StatusOk);
    EXPECT_TRUE(notLogged(kAtTheEdge));
}

TEST_F(PopulationBranchTest, UnknownSinkPortEndsTheCall)
{
    EXPECT_EQ(fillSteps({{"sink_port='1'"}, {"sink_port='9'"}, {""}}), StatusBadArgument);
    EXPECT_TRUE(logged(kError, "Kernel sink port id 9 invalid"));
    EXPECT_EQ(record(0).kernel_uuid, 100U);
    EXPECT_EQ(record(1).kernel_uuid, 0U);
    EXPECT_TRUE(mPortHistories.empty()); // they come with the second walk
}

} // namespace

} // namespace graphtest
