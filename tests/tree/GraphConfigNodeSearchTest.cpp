// SPDX-License-Identifier: Apache-2.0
#include "ExpectLog.h"
#include "TreeTestSupport.h"

#include <nuxo/tree/GraphConfigNode.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

namespace {

using NUXO::GraphConfigItem;
using NUXO::GraphConfigNode;

constexpr const char* kDeprecated = "WARNING: deprecated funtion getDescendant(). Use NodeIterator instead";

TEST(NodeIterateAttributes, FindsATextOfTheChildAtThePosition)
{
    GraphConfigNode node;
    GraphConfigNode* const child = addChild(node, NUXO_KEY_PORT);
    fileText(*child, NUXO_KEY_PEER, "first");
    fileText(*child, NUXO_KEY_PEER, "second");
    GraphConfigNode::iterator it = node.begin();
    LogCapture log;
    EXPECT_EQ(0, node.iterateAttributes<std::string>(NUXO_KEY_PEER, "first", it));
    EXPECT_EQ(0, node.iterateAttributes<std::string>(NUXO_KEY_PEER, "second", it));
    EXPECT_EQ(-256, node.iterateAttributes<std::string>(NUXO_KEY_PEER, "third", it));
    EXPECT_EQ(-256, node.iterateAttributes<std::string>(NUXO_KEY_PEER, "First", it));
    EXPECT_EQ(-256, node.iterateAttributes<std::string>(NUXO_KEY_NAME, "first", it));
    EXPECT_EQ(node.begin(), it); // the position stays
    expectNoLines(log);
}

TEST(NodeIterateAttributes, StopsAtAnAttributeThatIsNoText)
{
    GraphConfigNode node;
    GraphConfigNode* const child = addChild(node, NUXO_KEY_PORT);
    fileText(*child, NUXO_KEY_WIDTH, "before");
    fileInteger(*child, NUXO_KEY_WIDTH, 1920);
    fileText(*child, NUXO_KEY_WIDTH, "behind");
    GraphConfigNode::iterator it = node.begin();
    EXPECT_EQ(0, node.iterateAttributes<std::string>(NUXO_KEY_WIDTH, "before", it));
    EXPECT_EQ(-64, node.iterateAttributes<std::string>(NUXO_KEY_WIDTH, "behind", it));
    EXPECT_EQ(-64, node.iterateAttributes<std::string>(NUXO_KEY_WIDTH, "1920", it));
    EXPECT_EQ(node.begin(), it);
}

TEST(NodeIterateAttributes, PassesOverChildNodesWithTheKey)
{
    GraphConfigNode node;
    GraphConfigNode* const child = addChild(node, NUXO_KEY_PORT);
    addChild(*child, NUXO_KEY_NAME);
    fileText(*child, NUXO_KEY_NAME, "out");
    GraphConfigNode::iterator it = node.begin();
    EXPECT_EQ(0, node.iterateAttributes<std::string>(NUXO_KEY_NAME, "out", it));
}

TEST(NodeIterateAttributes, RefusesAPositionWithoutANode)
{
    GraphConfigNode node;
    fileText(node, NUXO_KEY_NAME, "out");
    GraphConfigNode::iterator it = node.begin();
    EXPECT_EQ(-32, node.iterateAttributes<std::string>(NUXO_KEY_NAME, "out", it));
    it = node.end();
    EXPECT_EQ(-32, node.iterateAttributes<std::string>(NUXO_KEY_NAME, "out", it));
    EXPECT_EQ(node.end(), it);
    const GraphConfigNode empty;
    it = empty.end();
    EXPECT_EQ(-32, empty.iterateAttributes<std::string>(NUXO_KEY_NAME, "out", it));
}

/// Children: name = "n", port { name = "in", width = 1 }, port { name = "out", width = 2 }, sensor { name = "in" }.
class DeprecatedSearch : public ::testing::Test {
protected:
    DeprecatedSearch()
    {
        mNode.addValue(NUXO_KEY_NAME, std::string("in"));
        mIn = addChild(mNode, NUXO_KEY_PORT);
        mIn->addValue(NUXO_KEY_NAME, std::string("in"));
        mIn->addValue(NUXO_KEY_WIDTH, 1);
        mOut = addChild(mNode, NUXO_KEY_PORT);
        mOut->addValue(NUXO_KEY_NAME, std::string("out"));
        mOut->addValue(NUXO_KEY_WIDTH, 2);
        mSensor = addChild(mNode, NUXO_KEY_SENSOR);
        mSensor->addValue(NUXO_KEY_NAME, std::string("in"));
        mIt = mNode.begin();
    }

    template <typename Value> int32_t search(uint32_t key, const Value& value)
    {
        LogCapture log;
        const int32_t status = mNode.getDescendant(key, value, mIt, &mFound);
        expectLines(log, {{kWarning, kDeprecated}});
        return status;
    }

    GraphConfigNode mNode;
    GraphConfigNode* mIn;
    GraphConfigNode* mOut;
    GraphConfigNode* mSensor;
    GraphConfigNode* mFound = nullptr;
    GraphConfigNode::iterator mIt;
};

TEST_F(DeprecatedSearch, FindsTextsOneAfterTheOther)
{
    const std::string wanted = "in";
    EXPECT_EQ(0, search(NUXO_KEY_NAME, wanted)); // the attribute at the start is no node and is passed over
    EXPECT_EQ(mIn, mFound);
    EXPECT_EQ(mNode.begin() + 2, mIt);
    EXPECT_EQ(0, search(NUXO_KEY_NAME, wanted));
    EXPECT_EQ(mSensor, mFound);
    EXPECT_EQ(mNode.end(), mIt);
    EXPECT_EQ(-256, search(NUXO_KEY_NAME, wanted));
    EXPECT_EQ(mSensor, mFound); // untouched
    EXPECT_EQ(mNode.end(), mIt);
}

TEST_F(DeprecatedSearch, WithoutATextMatchEndsBehindTheLastItem)
{
    EXPECT_EQ(-256, search(NUXO_KEY_NAME, std::string("none")));
    EXPECT_EQ(nullptr, mFound);
    EXPECT_EQ(mNode.end(), mIt);
}

TEST_F(DeprecatedSearch, FindsIntegers)
{
    EXPECT_EQ(0, search(NUXO_KEY_WIDTH, 2));
    EXPECT_EQ(mOut, mFound);
    EXPECT_EQ(mNode.begin() + 3, mIt);
    EXPECT_EQ(-256, search(NUXO_KEY_WIDTH, 2));
    EXPECT_EQ(mNode.end(), mIt);
    mIt = mNode.begin();
    EXPECT_EQ(-256, search(NUXO_KEY_NAME, 2)); // texts are no integers
}

TEST_F(DeprecatedSearch, ScanOfAChildEndsAtAnAttributeOfTheOtherKind)
{
    fileText(*mIn, NUXO_KEY_HEIGHT, "no number");
    fileInteger(*mIn, NUXO_KEY_HEIGHT, 7);
    fileInteger(*mOut, NUXO_KEY_HEIGHT, 6);
    fileInteger(*mOut, NUXO_KEY_HEIGHT, 7);
    EXPECT_EQ(0, search(NUXO_KEY_HEIGHT, 7));
    EXPECT_EQ(mOut, mFound);
    mIt = mNode.begin();
    EXPECT_EQ(-256, search(NUXO_KEY_HEIGHT, std::string("7")));
}

TEST_F(DeprecatedSearch, StartingAtTheEndFindsNothing)
{
    mIt = mNode.end();
    EXPECT_EQ(-256, search(NUXO_KEY_NAME, std::string("in")));
    EXPECT_EQ(-256, search(NUXO_KEY_WIDTH, 1));
    EXPECT_EQ(mNode.end(), mIt);
    EXPECT_EQ(nullptr, mFound);
}

TEST_F(DeprecatedSearch, RefusesANullOutputAfterItsWarning)
{
    LogCapture log;
    GraphConfigNode** const none = nullptr;
    EXPECT_EQ(-32, mNode.getDescendant(NUXO_KEY_NAME, std::string("in"), mIt, none));
    EXPECT_EQ(-32, mNode.getDescendant(NUXO_KEY_WIDTH, 1, mIt, none));
    expectLines(log, {{kWarning, kDeprecated}, {kWarning, kDeprecated}});
    EXPECT_EQ(mNode.begin(), mIt);
}

TEST(NodeNextAttribute, SkipsTheItemAtThePositionAndNodes)
{
    GraphConfigNode node;
    fileText(node, NUXO_KEY_FORMAT, "first");                             // 16
    fileText(node, NUXO_KEY_NAME, "second");                              // 29
    addChild(node, NUXO_KEY_PORT);                                        // 34
    fileItem(node, std::make_unique<GraphConfigItem>(), NUXO_KEY_SENSOR); // 36, no attribute
    fileInteger(node, NUXO_KEY_WIDTH, 3);                                 // 8232
    LogCapture log;
    GraphConfigNode::iterator it = node.begin();
    EXPECT_EQ(node.begin() + 1, node.getNextAttribute(it));
    EXPECT_EQ(node.begin() + 1, it);
    EXPECT_EQ(node.begin() + 4, node.getNextAttribute(it));
    EXPECT_EQ(node.begin() + 4, it);
    EXPECT_EQ(node.end(), node.getNextAttribute(it)); // from the last attribute
    EXPECT_EQ(node.end(), it);
    EXPECT_EQ(node.end(), node.getNextAttribute(it)); // the end is the end
    EXPECT_EQ(node.end(), it);
    expectNoLines(log);
}

TEST(NodeNextAttribute, EndsWhenOnlyNodesFollow)
{
    GraphConfigNode node;
    fileText(node, NUXO_KEY_NAME, "only");
    addChild(node, NUXO_KEY_PORT);
    GraphConfigNode::iterator it = node.begin();
    EXPECT_EQ(node.end(), node.getNextAttribute(it));
    const GraphConfigNode empty;
    it = empty.begin();
    EXPECT_EQ(empty.end(), empty.getNextAttribute(it));
}

} // namespace
