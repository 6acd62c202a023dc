// SPDX-License-Identifier: Apache-2.0
#include "camera/ContextFixture.h"

#include <set>

namespace graphtest {

namespace {

class ExecutionContextsTest : public ContextTest {
protected:
    int ids() { return GraphCameraUtil::getExecCtxIds(*mRoot, mIds); }

    std::set<int> mIds;
};

TEST_F(ExecutionContextsTest, ContextsOfAllProgramGroupsAreCollected)
{
    load(group("a", "exec_ctx_id='4'") + group("b", "exec_ctx_id='0'") + group("c", "exec_ctx_id='4'") +
         group("d", "exec_ctx_id='-7'"));
    EXPECT_EQ(ids(), StatusOk);
    EXPECT_EQ(mIds, (std::set<int>{-7, 0, 4}));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ExecutionContextsTest, IdsAreAddedToThoseThatAreThere)
{
    load(group("a", "exec_ctx_id='4'"));
    mIds = {4, 9};
    EXPECT_EQ(ids(), StatusOk);
    EXPECT_EQ(mIds, (std::set<int>{4, 9}));
}

TEST_F(ExecutionContextsTest, OnlyProgramGroupsHaveIdsThatCount)
{
    load(element("hw", "a", "exec_ctx_id='1'") + element("compute_block", "b", "exec_ctx_id='2'") +
         element("source", "c", "exec_ctx_id='3'") + element("node", "d", "type='Program_group' exec_ctx_id='4'"));
    mRoot->addValue(NUXO_KEY_PROGRAM_GROUP, std::string("program_group")); // a text under the key of the kind
    EXPECT_EQ(ids(), StatusOk);
    EXPECT_TRUE(mIds.empty());
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ExecutionContextsTest, TypeAloneMakesAProgramGroup)
{
    load(element("node", "d", "type='program_group' exec_ctx_id='4'"));
    EXPECT_EQ(ids(), StatusOk);
    EXPECT_EQ(mIds, std::set<int>{4});
}

TEST_F(ExecutionContextsTest, NodesDirectlyBelowTheGivenOneAreAsked)
{
    load(group("outer", "exec_ctx_id='1'", group("inner", "exec_ctx_id='2'")));
    EXPECT_EQ(ids(), StatusOk);
    EXPECT_EQ(mIds, std::set<int>{1});
    mIds.clear();
    EXPECT_EQ(GraphCameraUtil::getExecCtxIds(*node("outer"), mIds), StatusOk);
    EXPECT_EQ(mIds, std::set<int>{2});
}

TEST_F(ExecutionContextsTest, StatusIsThatOfTheLastProgramGroup)
{
    load(group("a", "exec_ctx_id='1'") + group("b", ""));
    EXPECT_EQ(ids(), StatusMissingData);
    EXPECT_EQ(mIds, std::set<int>{1});
    load(group("a", "") + group("b", "exec_ctx_id='2'"));
    EXPECT_EQ(ids(), StatusOk);
    EXPECT_EQ(mIds, (std::set<int>{1, 2}));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(ExecutionContextsTest, LastMeansTheOrderOfKeys)
{
    load(group("output", "") + group("input", "exec_ctx_id='1'")); // 32 and 22
    EXPECT_EQ(ids(), StatusMissingData);
    EXPECT_EQ(mIds, std::set<int>{1});
}

TEST_F(ExecutionContextsTest, IdOfAnotherKindIsNone)
{
    load(group("a", "exec_ctx_id='1'") + group("b", ""));
    node("b")->addValue(NUXO_KEY_EXEC_CTX_ID, std::string("2"));
    EXPECT_EQ(ids(), StatusNotFound);
    EXPECT_EQ(mIds, std::set<int>{1});
}

TEST_F(ExecutionContextsTest, ForeignGraphHasNoProgramGroups)
{
    const ForeignNode foreign;
    std::map<int, int> tuning;
    EXPECT_EQ(GraphCameraUtil::getExecCtxIds(foreign, mIds), StatusOk);
    EXPECT_EQ(GraphCameraUtil::getExecCtxIdsTuningMap(foreign, tuning), StatusOk);
    EXPECT_TRUE(mIds.empty());
    EXPECT_TRUE(tuning.empty());
}

using Modes = std::map<int, int>;

class TuningModesTest : public ContextTest {
protected:
    int modes() { return GraphCameraUtil::getExecCtxIdsTuningMap(*mRoot, mModes); }

    static std::string mismatch(int stored, int current, int context)
    {
        return "32 Mismatch in tuning mode (" + std::to_string(stored) + " vs " + std::to_string(current) +
               ") for same execution Context " + std::to_string(context) + "!!!" + std::string(28, ' ') +
               "Discard current tuning Mode";
    }

    static constexpr const char* kNoMode = "2 Failed to get tuning mode";
    static constexpr const char* kNoContext = "2 Failed to get exec ctx ID";

    Modes mModes;
};

TEST_F(TuningModesTest, EachContextHasOneMode)
{
    load(group("a", "exec_ctx_id='4' tuning_mode='1'") + group("b", "exec_ctx_id='0' tuning_mode='2'") +
         group("c", "exec_ctx_id='4' tuning_mode='1'") + element("hw", "d", "exec_ctx_id='5' tuning_mode='3'"));
    EXPECT_EQ(modes(), StatusOk);
    EXPECT_EQ(mModes, (Modes{{0, 2}, {4, 1}}));
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(TuningModesTest, NothingToAskIsFine)
{
    load(element("hw", "a"));
    EXPECT_EQ(modes(), StatusOk);
    EXPECT_TRUE(mModes.empty());
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(TuningModesTest, FirstProgramGroupOfAContextDecides)
{
    load(group("a", "exec_ctx_id='7' tuning_mode='1'") + group("b", "exec_ctx_id='7' tuning_mode='2'"));
    EXPECT_EQ(modes(), StatusOk);
    EXPECT_EQ(mModes, (Modes{{7, 1}}));
    EXPECT_TRUE(loggedExactly({mismatch(1, 2, 7)}));
}

TEST_F(TuningModesTest, FirstMeansTheOrderOfKeys)
{
    load(group("output", "exec_ctx_id='7' tuning_mode='1'") + group("input", "exec_ctx_id='7' tuning_mode='2'"));
    EXPECT_EQ(modes(), StatusOk);
    EXPECT_EQ(mModes, (Modes{{7, 2}}));
    EXPECT_TRUE(loggedExactly({mismatch(2, 1, 7)}));
}

TEST_F(TuningModesTest, DiscardedModesLeaveNoTrace)
{
    load(group("a", "exec_ctx_id='7' tuning_mode='1'") + group("b", "exec_ctx_id='7' tuning_mode='2'") +
         group("c", "exec_ctx_id='7' tuning_mode='2'") + group("d", "exec_ctx_id='7' tuning_mode='1'"));
    EXPECT_EQ(modes(), StatusOk);
    EXPECT_EQ(mModes, (Modes{{7, 1}}));
    EXPECT_TRUE(loggedExactly({mismatch(1, 2, 7), mismatch(1, 2, 7)}));
}

TEST_F(TuningModesTest, MissingModeIsMinusOneAndAMismatchLikeAnyOther)
{
    load(group("a", "exec_ctx_id='1'") + group("b", "exec_ctx_id='1' tuning_mode='3'") +
         group("c", "exec_ctx_id='2' tuning_mode='4'") + group("d", "exec_ctx_id='2'"));
    EXPECT_EQ(modes(), StatusMissingData);
    EXPECT_EQ(mModes, (Modes{{1, -1}, {2, 4}}));
    EXPECT_TRUE(loggedExactly({kNoMode, mismatch(-1, 3, 1), kNoMode, mismatch(4, -1, 2)}));
}

TEST_F(TuningModesTest, MissingModeIsTheSameAsMinusOne)
{
    load(group("a", "exec_ctx_id='1' tuning_mode='-1'") + group("b", "exec_ctx_id='1'"));
    EXPECT_EQ(modes(), StatusMissingData);
    EXPECT_EQ(mModes, (Modes{{1, -1}}));
    EXPECT_TRUE(loggedExactly({kNoMode}));
}

TEST_F(TuningModesTest, ModeOfAnotherKindIsMissing)
{
    load(group("a", "exec_ctx_id='1'"));
    node("a")->addValue(NUXO_KEY_TUNING_MODE, std::string("3"));
    EXPECT_EQ(modes(), StatusNotFound);
    EXPECT_EQ(mModes, (Modes{{1, -1}}));
    EXPECT_TRUE(loggedExactly({kNoMode}));
}

TEST_F(TuningModesTest, ProgramGroupWithoutAContextIsSkipped)
{
    load(group("a", "tuning_mode='1'") + group("b", "exec_ctx_id='2' tuning_mode='3'"));
    EXPECT_EQ(modes(), StatusOk);
    EXPECT_EQ(mModes, (Modes{{2, 3}}));
    EXPECT_TRUE(loggedExactly({kNoContext}));
}

TEST_F(TuningModesTest, StatusIsThatOfTheLastRead)
{
    load(group("a", "exec_ctx_id='2' tuning_mode='3'") + group("b", "tuning_mode='1'"));
    EXPECT_EQ(modes(), StatusMissingData);
    node("b")->addValue(NUXO_KEY_EXEC_CTX_ID, std::string("2"));
    EXPECT_EQ(modes(), StatusNotFound);
    load(group("a", "exec_ctx_id='2'") + group("b", "exec_ctx_id='3' tuning_mode='1'"));
    EXPECT_EQ(modes(), StatusOk);
}

TEST_F(TuningModesTest, ModesThatAreThereCountAsTheFirst)
{
    load(group("a", "exec_ctx_id='7' tuning_mode='1'"));
    mModes = {{7, 5}, {8, 6}};
    EXPECT_EQ(modes(), StatusOk);
    EXPECT_EQ(mModes, (Modes{{7, 5}, {8, 6}}));
    EXPECT_TRUE(loggedExactly({mismatch(5, 1, 7)}));
}

TEST_F(TuningModesTest, FindingsAreOfTheClassesDebugAndWarning)
{
    load(group("a", "exec_ctx_id='1'") + group("b", "exec_ctx_id='1' tuning_mode='3'") + group("c", ""));
    const auto ask = [this] { modes(); };
    EXPECT_EQ(mLog.linesOfLevel(kDebug, ask).size(), 2U);
    mModes.clear();
    EXPECT_EQ(mLog.linesOfLevel(kWarning, ask).size(), 1U);
    mModes.clear();
    for (const uint32_t other : {1U, 4U, 8U, 16U}) {
        EXPECT_TRUE(mLog.linesOfLevel(other, ask).empty()) << other;
    }
}

TEST_F(TuningModesTest, NodesDirectlyBelowTheGivenOneAreAsked)
{
    load(group("outer", "exec_ctx_id='1' tuning_mode='1'", group("inner", "exec_ctx_id='1' tuning_mode='2'")));
    EXPECT_EQ(modes(), StatusOk);
    EXPECT_EQ(mModes, (Modes{{1, 1}}));
    mModes.clear();
    EXPECT_EQ(GraphCameraUtil::getExecCtxIdsTuningMap(*node("outer"), mModes), StatusOk);
    EXPECT_EQ(mModes, (Modes{{1, 2}}));
}

} // namespace

} // namespace graphtest
