// SPDX-License-Identifier: Apache-2.0
#include "histories/SourceFixture.h"

#include "query/ForeignNode.h"

#include <algorithm>

namespace graphtest {

namespace {

class PortHistoriesDumpTest : public SourceTest {
protected:
    /// Program groups with ports, created in this order: "b:out", "a:out", "a:in".
    PortHistoriesDumpTest()
    {
        mRoot = descriptor("<program_group name='b'><port name='out'/></program_group>"
                           "<program_group name='a'><port name='out'/><port name='in'/></program_group>");
        clearLog();
    }

    ZmtTevUtils::PortHistories mHistories;
};

TEST_F(PortHistoriesDumpTest, NoHistoriesAreOnlyTheHeading)
{
    ZmtTevUtils::dumpPortResHistoryMap(mHistories);
    EXPECT_TRUE(loggedExactly({"2 dumpPortResHistoryMap"}));
}

TEST_F(PortHistoriesDumpTest, EachPortHasALineInTheOrderOfFullNames)
{
    mHistories[&node("b:out")] = counting(1);
    mHistories[&node("a:out")] = counting(101);
    mHistories[&node("a:in")] = counting(201);
    ZmtTevUtils::dumpPortResHistoryMap(mHistories);
    EXPECT_TRUE(loggedExactly({"2 dumpPortResHistoryMap", "16 in:" + text(counting(201)),
                               "16 out:" + text(counting(101)), "16 out:" + text(counting(1))}));
    EXPECT_EQ(mHistories.size(), 3U);
    EXPECT_EQ(text(mHistories[&node("a:in")]), text(counting(201)));
}

TEST_F(PortHistoriesDumpTest, OrderDoesNotDependOnWhereThePortsAre)
{
    // Nodes side by side, so that their addresses rise while their names fall, and once more the other way round.
    GraphConfigNode ports[6];
    for (const bool falling : {true, false}) {
        mHistories.clear();
        Lines expected = {"2 dumpPortResHistoryMap"};
        for (int i = 0; i < 6; ++i) {
            GraphConfigNode& port = ports[i];
            const int rank = falling ? 5 - i : i;
            port.removeDescendant(NUXO_KEY_NAME);
            port.addValue(NUXO_KEY_NAME, "p" + std::to_string(rank));
            mHistories[&port] = counting(rank);
            expected.push_back("16 p" + std::to_string(i) + ":" + text(counting(i)));
        }
        clearLog();
        ZmtTevUtils::dumpPortResHistoryMap(mHistories);
        EXPECT_TRUE(loggedExactly(expected));
    }
}

TEST_F(PortHistoriesDumpTest, PortsOfOneNameComeInTheSameOrderToo)
{
    GraphConfigNode ports[2];
    Lines said[2];
    for (const int first : {0, 1}) {
        mHistories.clear();
        mHistories[&ports[0]] = counting(first);
        mHistories[&ports[1]] = counting(1 - first);
        clearLog();
        ZmtTevUtils::dumpPortResHistoryMap(mHistories);
        said[first] = lines();
    }
    EXPECT_EQ(said[0].size(), 3U);
    EXPECT_EQ(said[0], said[1]);
}

TEST_F(PortHistoriesDumpTest, HeadingIsDebugOutputAndEntriesAreErrors)
{
    mHistories[&node("b:out")] = counting(1);
    const auto dump = [this] { ZmtTevUtils::dumpPortResHistoryMap(mHistories); };
    for (const uint32_t level : {2U, 16U}) EXPECT_EQ(mLog.linesOfLevel(level, dump).size(), 1U) << level;
    for (const uint32_t level : {1U, 4U, 8U, 32U}) EXPECT_TRUE(mLog.linesOfLevel(level, dump).empty()) << level;
}

TEST_F(PortHistoriesDumpTest, PortsOfAnotherImplementationAreNamedThroughTheInterface)
{
    ForeignNode foreign;
    mHistories[&foreign] = counting(1);
    ZmtTevUtils::dumpPortResHistoryMap(mHistories);
    EXPECT_TRUE(loggedExactly({"2 dumpPortResHistoryMap", "16 foreign:" + text(counting(1))}));
}

TEST_F(PortHistoriesDumpTest, NoPortIsNoReasonToFail)
{
    mHistories[nullptr] = counting(1);
    mHistories[&node("a:in")] = counting(201);
    ZmtTevUtils::dumpPortResHistoryMap(mHistories);
    EXPECT_TRUE(logged(kError, "in:" + text(counting(201))));
}

} // namespace

} // namespace graphtest
