// SPDX-License-Identifier: Apache-2.0
#include "simulation/SimulationFixture.h"

namespace graphtest {

namespace {

class CloneSettingsTest : public GraphTest {
protected:
    int clone(const IGraphConfig* original)
    {
        clearLog();
        return ZmtTevSimUtils::cloneSettings(original, &mCopy);
    }

    static constexpr int kNullArgument = 32; // positive, unlike any other status

    const Tree mSettings = settings(R"(<settings key="7" id="100"><sensor mode_id="full"/><port width="1"/>
                                       <port width="2" description="two"/></settings>)");
    GraphConfigNode mMark;
    IGraphConfig* mCopy = &mMark;
};

TEST_F(CloneSettingsTest, CopyHoldsEverythingAndBelongsToTheCaller)
{
    const std::string before = text(*mSettings);
    ASSERT_EQ(clone(mSettings.get()), StatusOk);
    const Tree copy(&asNode(mCopy));
    EXPECT_EQ(text(*copy), before);
    EXPECT_TRUE(linked(*copy));
    EXPECT_TRUE(loggedExactly({}));

    at(*copy, "settings").removeDescendant(NUXO_KEY_SENSOR);
    EXPECT_EQ(text(*mSettings), before);
}

TEST_F(CloneSettingsTest, CopyOfANodeIsARoot)
{
    const GraphConfigNode& setting = at(*mSettings, "settings");
    ASSERT_EQ(clone(&setting), StatusOk);
    const Tree copy(&asNode(mCopy));
    EXPECT_EQ(copy->getAncestor(), nullptr);
    EXPECT_EQ(text(*copy), text(setting));
}

TEST_F(CloneSettingsTest, CopyOutlivesTheOriginal)
{
    Tree original(mSettings->copy());
    ASSERT_EQ(clone(original.get()), StatusOk);
    original.reset();
    const Tree copy(&asNode(mCopy));
    EXPECT_EQ(text(*copy), text(*mSettings));
}

TEST_F(CloneSettingsTest, NullArgumentsGiveAPositiveStatus)
{
    EXPECT_EQ(clone(nullptr), kNullArgument);
    EXPECT_EQ(mCopy, &mMark);
    EXPECT_EQ(ZmtTevSimUtils::cloneSettings(mSettings.get(), nullptr), kNullArgument);
    EXPECT_EQ(ZmtTevSimUtils::cloneSettings(nullptr, nullptr), kNullArgument);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(CloneSettingsTest, WhatCannotBeCopiedIsReported)
{
    const ForeignNode foreign;
    EXPECT_EQ(clone(&foreign), StatusNoMemory);
    EXPECT_EQ(mCopy, &mMark);
    EXPECT_TRUE(loggedExactly({sim("16 Error copying: No memory")}));

    mSettings->insertDescendant(new GraphConfigItem, NUXO_KEY_NODE); // an item of no kind that could be copied
    EXPECT_EQ(clone(mSettings.get()), StatusNoMemory);
    EXPECT_EQ(mCopy, &mMark);
    EXPECT_TRUE(loggedExactly({sim("16 Error copying: No memory")}));
}

} // namespace

} // namespace graphtest
