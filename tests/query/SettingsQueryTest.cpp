// SPDX-License-Identifier: Apache-2.0
#include "query/GraphFixture.h"

#include <climits>

namespace graphtest {

namespace {

constexpr const char* kNothingFound = "No settings matching the query found";

class SettingsQueryTest : public BuildTest {
protected:
    using Criteria = std::map<ItemUID, std::string>;

    void loadSettings(const std::string& body) { load("<nodes/>", body); }

    /// Three settings that share parts of a resolution and a format.
    void loadThree()
    {
        loadSettings(R"(
            <settings key="1" id="100"><video format="NV12" width="1920" height="1080"/></settings>
            <sensor_modes/>
            <settings key="2" id="100"><video format="P010" width="1920" height="1440"/></settings>
            <settings key="3" id="101"><still format="NV12" width="4208" height="3120"/></settings>)");
    }

    /// Values of `key` of what a query finds, joined by blanks; the status goes to mStatus.
    std::string query(const Criteria& criteria, bool strict)
    {
        std::vector<IGraphConfig*> found;
        mStatus = mManager.queryGraphs(criteria, found, strict);
        return keys(found);
    }

    static std::string keys(const std::vector<IGraphConfig*>& nodes)
    {
        std::string all;
        for (IGraphConfig* node : nodes) all += (all.empty() ? "" : " ") + value(asNode(node), "key");
        return all;
    }

    int mStatus = 1;
};

TEST_F(SettingsQueryTest, WithoutTreesBothQueriesGiveBadStateAndLeaveTheResultAlone)
{
    GraphConfigNode old;
    std::vector<IGraphConfig*> result{&old};
    EXPECT_EQ(mManager.queryGraphs(Criteria{}, result, true), StatusBadState);
    EXPECT_EQ(mManager.queryGraphs(Criteria{}, {&old}, result, true), StatusBadState);
    mManager.setGraphSettings(&old);
    EXPECT_EQ(mManager.queryGraphs(Criteria{}, result, true), StatusBadState);
    mManager.setGraphSettings(nullptr);
    mManager.setGraphDescriptor(&old);
    EXPECT_EQ(mManager.queryGraphs(Criteria{}, {&old}, result, true), StatusBadState);
    EXPECT_EQ(result, std::vector<IGraphConfig*>{&old});
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(SettingsQueryTest, StrictModeWantsAllCriteriaInDocumentOrder)
{
    loadThree();
    EXPECT_EQ(query({{ItemUID("video:width"), "1920"}}, true), "1 2");
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_EQ(query({{ItemUID("video:width"), "1920"}, {ItemUID("video:height"), "1440"}}, true), "2");
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_EQ(query({{ItemUID{NUXO_KEY_ID}, "100"}, {ItemUID("video:format"), "NV12"}}, true), "1");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(SettingsQueryTest, NonStrictModeWantsAnyCriterion)
{
    loadThree();
    EXPECT_EQ(query({{ItemUID("video:height"), "1440"}, {ItemUID("still:width"), "4208"}}, false), "2 3");
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_EQ(query({{ItemUID("video:width"), "1920"}, {ItemUID("video:height"), "1080"}}, false), "1 2");
}

TEST_F(SettingsQueryTest, TwoCriteriaThatNoNodeSatisfiesTogetherFindNothingOnlyInStrictMode)
{
    loadThree();
    const Criteria criteria{{ItemUID("video:width"), "1920"}, {ItemUID("still:height"), "3120"}};
    EXPECT_EQ(query(criteria, true), "");
    EXPECT_EQ(mStatus, StatusMissingData);
    EXPECT_TRUE(loggedExactly({std::string("16 ") + kNothingFound}));
    EXPECT_EQ(query(criteria, false), "1 2 3");
    EXPECT_EQ(mStatus, StatusOk);
}

TEST_F(SettingsQueryTest, NoCriteriaSelectEverythingStrictlyAndNothingOtherwise)
{
    loadThree();
    EXPECT_EQ(query({}, true), "1 2 3");
    EXPECT_EQ(mStatus, StatusOk);
    EXPECT_TRUE(loggedExactly({}));
    EXPECT_EQ(query({}, false), "");
    EXPECT_EQ(mStatus, StatusMissingData);
    EXPECT_TRUE(loggedExactly({std::string("16 ") + kNothingFound}));
}

TEST_F(SettingsQueryTest, IntegersAreComparedThroughTheirDecimalText)
{
    loadSettings("<settings key=\"2\" left=\"-16\" top=\"-2147483648\"/>");
    EXPECT_EQ(query({{ItemUID{NUXO_KEY_KEY}, "2"}}, true), "2");
    EXPECT_EQ(query({{ItemUID{NUXO_KEY_LEFT}, "-16"}}, true), "2");
    EXPECT_EQ(query({{ItemUID{NUXO_KEY_TOP}, std::to_string(INT_MIN)}}, true), "2");
    for (const char* other : {"02", "+2", " 2", "2 ", "2.0", "0x2", ""}) {
        EXPECT_EQ(query({{ItemUID{NUXO_KEY_KEY}, other}}, true), "") << other;
        EXPECT_EQ(mStatus, StatusMissingData);
    }
}

TEST_F(SettingsQueryTest, TextsAreComparedByteForByteAndWithLength)
{
    loadSettings("<settings key=\"1\" name=\"Video\"/>");
    EXPECT_EQ(query({{ItemUID{NUXO_KEY_NAME}, "Video"}}, true), "1");
    for (const char* other : {"video", "Vide", "Videos", "", " Video"}) {
        EXPECT_EQ(query({{ItemUID{NUXO_KEY_NAME}, other}}, true), "") << other;
    }
}

TEST_F(SettingsQueryTest, PathsReachDeepAndTheFirstChildOfAKeyDecides)
{
    loadSettings(R"(<settings key="1"><pg><port width="640"/><port width="1280"/></pg></settings>)");
    EXPECT_EQ(query({{ItemUID("pg:port:width"), "640"}}, true), "1");
    EXPECT_EQ(query({{ItemUID("pg:port:width"), "1280"}}, true), "");
}

TEST_F(SettingsQueryTest, PathThatNamesANodeReadsTheAttributeOfThatNameInsideIt)
{
    loadSettings(R"(<settings key="1"><video><format format="NV12"/></video></settings>)");
    EXPECT_EQ(query({{ItemUID("video:format"), "NV12"}}, true), "1");
}

TEST_F(SettingsQueryTest, OnlyTopLevelSettingsNodesAreVisited)
{
    loadSettings(R"(<group><settings key="1"/></group><settings key="2"><settings key="3"/></settings>)");
    EXPECT_EQ(query({}, true), "2");
}

TEST_F(SettingsQueryTest, AttributeUnderTheKeyOfSettingsIsPassedOver)
{
    loadSettings("<settings key=\"1\"/>");
    mSettings->insertDescendant(new GraphConfigStrAttribute("no node"), NUXO_KEY_SETTINGS);
    auto* const last = new GraphConfigNode;
    last->addValue(NUXO_KEY_KEY, 2);
    mSettings->insertDescendant(last, NUXO_KEY_SETTINGS);
    EXPECT_EQ(query({}, true), "1 2");
}

TEST_F(SettingsQueryTest, ResultsAreAppendedAndAnOldResultHidesThatNothingMatched)
{
    loadThree();
    GraphConfigNode old;
    std::vector<IGraphConfig*> result{&old};
    EXPECT_EQ(mManager.queryGraphs({{ItemUID{NUXO_KEY_KEY}, "3"}}, result, true), StatusOk);
    EXPECT_EQ(result, (std::vector<IGraphConfig*>{&old, &setting(2)}));
    EXPECT_EQ(mManager.queryGraphs({{ItemUID{NUXO_KEY_KEY}, "99"}}, result, true), StatusOk);
    EXPECT_EQ(mManager.queryGraphs({{ItemUID{NUXO_KEY_KEY}, "99"}}, std::vector<IGraphConfig*>{}, result, true),
              StatusOk);
    EXPECT_EQ(result.size(), 2U);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(SettingsQueryTest, ResultsAreNodesOfTheSettingsTreeAndQueriesOnlyRead)
{
    loadThree();
    const std::string settingsBefore = text(*mSettings);
    const std::string descriptorBefore = text(*mDescriptor);
    std::vector<IGraphConfig*> found;
    EXPECT_EQ(mManager.queryGraphs({{ItemUID("video:format"), "P010"}}, found, true), StatusOk);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0], static_cast<IGraphConfig*>(&setting(1)));
    EXPECT_EQ(text(*mSettings), settingsBefore);
    EXPECT_EQ(text(*mDescriptor), descriptorBefore);
}

TEST_F(SettingsQueryTest, CandidatesNarrowAnEarlierResultInTheirOwnOrder)
{
    loadThree();
    const std::vector<IGraphConfig*> candidates{&setting(2), nullptr, &setting(0), &setting(2)};
    std::vector<IGraphConfig*> result;
    EXPECT_EQ(mManager.queryGraphs(Criteria{}, candidates, result, true), StatusOk);
    EXPECT_EQ(keys(result), "3 1 3");
    result.clear();
    EXPECT_EQ(mManager.queryGraphs({{ItemUID("video:width"), "1920"}}, candidates, result, false), StatusOk);
    EXPECT_EQ(keys(result), "1");
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(SettingsQueryTest, NoCandidateThatMatchesIsReported)
{
    loadThree();
    std::vector<IGraphConfig*> result;
    EXPECT_EQ(mManager.queryGraphs(Criteria{}, std::vector<IGraphConfig*>{}, result, true), StatusMissingData);
    EXPECT_TRUE(loggedExactly({std::string("16 ") + kNothingFound}));
    EXPECT_EQ(mManager.queryGraphs({{ItemUID{NUXO_KEY_KEY}, "1"}}, {&setting(1)}, result, true), StatusMissingData);
    EXPECT_EQ(count(kError, kNothingFound), 2U);
    EXPECT_TRUE(result.empty());
}

TEST_F(SettingsQueryTest, CandidatesMayBeTheResultItself)
{
    loadThree();
    std::vector<IGraphConfig*> both{&setting(0), &setting(1), &setting(2)};
    both.shrink_to_fit(); // so that appending moves the storage
    EXPECT_EQ(mManager.queryGraphs({{ItemUID("video:width"), "1920"}}, both, both, true), StatusOk);
    EXPECT_EQ(keys(both), "1 2 3 1 2");
}

// --- how one node is examined ---

class SearchItemsTest : public SettingsQueryTest {
protected:
    /// goThroughSearchItems over the first settings node after a query of this strictness.
    unsigned short matches(const Criteria& criteria, bool strict)
    {
        std::vector<IGraphConfig*> ignored;
        (void)mManager.queryGraphs(Criteria{}, std::vector<IGraphConfig*>{}, ignored, strict); // sets the mode
        unsigned short count = 0;
        mManager.goThroughSearchItems(criteria, &setting(), count);
        return count;
    }
};

TEST_F(SearchItemsTest, CountIsAddedTo)
{
    loadSettings("<settings key=\"1\"/>");
    unsigned short count = 5;
    mManager.goThroughSearchItems({{ItemUID{NUXO_KEY_KEY}, "1"}}, &setting(), count);
    EXPECT_EQ(count, 6);
}

TEST_F(SearchItemsTest, NullNodeAndEmptyPathCountNothing)
{
    loadSettings("<settings key=\"1\"/>");
    unsigned short count = 0;
    mManager.goThroughSearchItems({{ItemUID{NUXO_KEY_KEY}, "1"}}, nullptr, count);
    EXPECT_EQ(count, 0);
    // An empty path sorts first; it names no node, which ends a strict examination.
    EXPECT_EQ(matches({{ItemUID(), ""}, {ItemUID{NUXO_KEY_KEY}, "1"}}, true), 0);
    EXPECT_EQ(matches({{ItemUID(), ""}, {ItemUID{NUXO_KEY_KEY}, "1"}}, false), 1);
}

TEST_F(SearchItemsTest, UnreadableAttributeIsComparedWithTheValueOfTheCriterionBefore)
{
    // name (29) sorts before peer (33), which the node lacks.
    loadSettings("<settings key=\"1\" name=\"alpha\"/>");
    const Criteria criteria{{ItemUID{NUXO_KEY_NAME}, "alpha"}, {ItemUID{NUXO_KEY_PEER}, "alpha"}};
    EXPECT_EQ(matches(criteria, false), 2);
    EXPECT_EQ(matches(criteria, true), 2);
    EXPECT_EQ(query(criteria, true), "1");
}

TEST_F(SearchItemsTest, CarriedOverValueMayBeANumberOrOneThatDidNotMatch)
{
    // sensor (36) holds the number; settings keys `sensor:width` sorts before `source` (47).
    loadSettings("<settings key=\"1\"><sensor width=\"7\"/></settings>");
    EXPECT_EQ(matches({{ItemUID("sensor:width"), "8"}, {ItemUID{NUXO_KEY_SOURCE}, "7"}}, false), 1);
}

TEST_F(SearchItemsTest, FirstCarriedOverValueIsEmptyInEachCall)
{
    loadSettings("<settings key=\"1\" name=\"alpha\"/>");
    EXPECT_EQ(matches({{ItemUID{NUXO_KEY_NAME}, "alpha"}}, false), 1);
    EXPECT_EQ(matches({{ItemUID{NUXO_KEY_PEER}, "alpha"}}, false), 0);
    EXPECT_EQ(matches({{ItemUID{NUXO_KEY_PEER}, ""}}, false), 1);
}

TEST_F(SearchItemsTest, ItemOfAnotherKindIsUnreadableToo)
{
    loadSettings("<settings key=\"1\" name=\"alpha\"><peer/></settings>");
    EXPECT_EQ(matches({{ItemUID{NUXO_KEY_NAME}, "alpha"}, {ItemUID{NUXO_KEY_PEER}, "alpha"}}, false), 2);
}

TEST_F(SearchItemsTest, PathThatDoesNotExistIsNeverCompared)
{
    loadSettings("<settings key=\"1\" name=\"alpha\"><peer/></settings>");
    EXPECT_EQ(matches({{ItemUID{NUXO_KEY_NAME}, "alpha"}, {ItemUID("port:name"), "alpha"}}, false), 1);
    // The node exists, but not the attribute: no node is found either.
    EXPECT_EQ(matches({{ItemUID{NUXO_KEY_NAME}, "alpha"}, {ItemUID("peer:name"), "alpha"}}, false), 1);
    // An attribute before the end of the path.
    EXPECT_EQ(matches({{ItemUID{NUXO_KEY_NAME}, "alpha"}, {ItemUID("name:peer"), "alpha"}}, false), 1);
}

TEST_F(SearchItemsTest, StrictModeStopsBehindTheFirstNodeThatIsMissing)
{
    // In map order: name (29), port:name (34, 29), sensor:width (36, 8232).
    loadSettings("<settings key=\"1\" name=\"alpha\"><sensor width=\"7\"/></settings>");
    const Criteria criteria{
        {ItemUID{NUXO_KEY_NAME}, "alpha"}, {ItemUID("port:name"), "x"}, {ItemUID("sensor:width"), "7"}};
    EXPECT_EQ(matches(criteria, false), 2);
    EXPECT_EQ(matches(criteria, true), 1);
}

TEST_F(SearchItemsTest, StrictModeStopsBehindTheComparisonOfAnUnreadableAttribute)
{
    // In map order: name (29), peer (33, absent), sensor:width.
    loadSettings("<settings key=\"1\" name=\"alpha\"><sensor width=\"7\"/></settings>");
    const Criteria carried{
        {ItemUID{NUXO_KEY_NAME}, "alpha"}, {ItemUID{NUXO_KEY_PEER}, "alpha"}, {ItemUID("sensor:width"), "7"}};
    EXPECT_EQ(matches(carried, false), 3);
    EXPECT_EQ(matches(carried, true), 2);
}

TEST_F(SearchItemsTest, StrictModeGoesOnBehindAValueThatDiffers)
{
    loadSettings("<settings key=\"1\" name=\"alpha\" peer=\"beta\"/>");
    EXPECT_EQ(matches({{ItemUID{NUXO_KEY_NAME}, "other"}, {ItemUID{NUXO_KEY_PEER}, "beta"}}, true), 1);
}

TEST_F(SearchItemsTest, ModeIsThatOfTheLatestQueryEvenOfOneThatFailed)
{
    loadSettings("<settings key=\"1\" name=\"alpha\"/>");
    const Criteria criteria{{ItemUID{NUXO_KEY_MODE_ID}, "x"}, {ItemUID{NUXO_KEY_NAME}, "alpha"}}; // 27 before 29
    unsigned short count = 0;
    mManager.goThroughSearchItems(criteria, &setting(), count); // a new manager is not strict
    EXPECT_EQ(count, 1);

    std::vector<IGraphConfig*> ignored;
    mManager.setGraphDescriptor(nullptr);
    EXPECT_EQ(mManager.queryGraphs(Criteria{}, ignored, true), StatusBadState);
    count = 0;
    mManager.goThroughSearchItems(criteria, &setting(), count);
    EXPECT_EQ(count, 0);

    EXPECT_EQ(mManager.queryGraphs(Criteria{}, ignored, ignored, false), StatusBadState);
    count = 0;
    mManager.goThroughSearchItems(criteria, &setting(), count);
    EXPECT_EQ(count, 1);
}

} // namespace

} // namespace graphtest
