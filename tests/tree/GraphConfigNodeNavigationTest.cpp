// SPDX-License-Identifier: Apache-2.0
#include "ExpectLog.h"
#include "TreeTestSupport.h"
#include "VocabularyGuard.h"

#include <nuxo/tree/GraphConfigNode.h>

#include <support/LogCapture.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;
using NUXO::ItemUID;

constexpr const char* kAncestorWarning = "WARNING: GraphConfigNode implementation of getAncestor is deprecated.";

/// root { sensor { name, width, port { format } }, name }
class Navigation : public ::testing::Test {
protected:
    Navigation()
        : mRoot(makeNode()), mSensor(addChild(*mRoot, NUXO_KEY_SENSOR)), mPort(addChild(*mSensor, NUXO_KEY_PORT))
    {
        mRoot->addValue(NUXO_KEY_NAME, std::string("root"));
        mSensor->addValue(NUXO_KEY_NAME, std::string("imx"));
        mSensor->addValue(NUXO_KEY_WIDTH, 4208);
        mPort->addValue(NUXO_KEY_FORMAT, std::string("NV12"));
    }

    NodePtr mRoot;
    GraphConfigNode* mSensor;
    GraphConfigNode* mPort;
};

TEST_F(Navigation, RootIsTheTopmostNode)
{
    EXPECT_EQ(mRoot.get(), mPort->getRoot());
    EXPECT_EQ(mRoot.get(), mSensor->getRoot());
    EXPECT_EQ(mRoot.get(), mRoot->getRoot());
    const GraphConfigNode& port = *mPort;
    GraphConfigNode* const root = port.getRootNode();
    EXPECT_EQ(mRoot.get(), root);
    EXPECT_EQ(mRoot.get(), mRoot->getRootNode());
}

TEST_F(Navigation, AncestorIsTheParentAndNullForARoot)
{
    EXPECT_EQ(static_cast<IGraphConfig*>(mSensor), mPort->getAncestor());
    EXPECT_EQ(static_cast<IGraphConfig*>(mRoot.get()), mSensor->getAncestor());
    EXPECT_EQ(nullptr, mRoot->getAncestor());
}

TEST_F(Navigation, DeprecatedAncestorWarnsOnEveryCall)
{
    GraphConfigNode* parent = mPort;
    LogCapture log;
    EXPECT_EQ(0, mPort->getAncestor(&parent));
    EXPECT_EQ(mSensor, parent);
    EXPECT_EQ(0, mRoot->getAncestor(&parent));
    EXPECT_EQ(nullptr, parent);
    EXPECT_EQ(-32, mPort->getAncestor(nullptr));
    expectLines(log, {{kWarning, kAncestorWarning}, {kWarning, kAncestorWarning}, {kWarning, kAncestorWarning}});
}

TEST_F(Navigation, DescendantByKeyIsTheFirstItemIfItIsANode)
{
    LogCapture log;
    EXPECT_EQ(static_cast<IGraphConfig*>(mSensor), mRoot->getDescendant(NUXO_KEY_SENSOR));
    EXPECT_EQ(nullptr, mRoot->getDescendant(NUXO_KEY_NAME)); // an attribute
    EXPECT_EQ(nullptr, mRoot->getDescendant(NUXO_KEY_PORT)); // not a direct child
    EXPECT_EQ(nullptr, GraphConfigNode().getDescendant(NUXO_KEY_PORT));
    expectNoLines(log);
}

TEST_F(Navigation, FirstOfSeveralItemsWithAKeyCounts)
{
    GraphConfigNode* const second = addChild(*mSensor, NUXO_KEY_PORT);
    EXPECT_EQ(static_cast<IGraphConfig*>(mPort), mSensor->getDescendant(NUXO_KEY_PORT));
    EXPECT_EQ(static_cast<IGraphConfig*>(mSensor), second->getAncestor());
    EXPECT_EQ(4, mSensor->getDescendantCount());
}

TEST_F(Navigation, AttributeFiledFirstHidesANodeWithTheSameKey)
{
    GraphConfigNode node;
    fileText(node, NUXO_KEY_PORT, "first");
    addChild(node, NUXO_KEY_PORT);
    GraphConfigNode* out = mPort;
    EXPECT_EQ(nullptr, node.getDescendant(NUXO_KEY_PORT));
    EXPECT_EQ(-32, node.getDescendant(NUXO_KEY_PORT, &out));
    EXPECT_EQ(nullptr, node.getDescendant(ItemUID{NUXO_KEY_PORT, NUXO_KEY_NAME}));
}

TEST_F(Navigation, StatusFormTellsMissingFromWrongKind)
{
    LogCapture log;
    GraphConfigNode* out = nullptr;
    EXPECT_EQ(0, mRoot->getDescendant(NUXO_KEY_SENSOR, &out));
    EXPECT_EQ(mSensor, out);
    EXPECT_EQ(-32, mRoot->getDescendant(NUXO_KEY_NAME, &out)); // an attribute: out stays
    EXPECT_EQ(mSensor, out);
    EXPECT_EQ(-2, mRoot->getDescendant(NUXO_KEY_PORT, &out));
    EXPECT_EQ(nullptr, out);
    out = mSensor;
    EXPECT_EQ(-2, GraphConfigNode().getDescendant(NUXO_KEY_PORT, &out));
    EXPECT_EQ(nullptr, out);
    expectNoLines(log);
}

TEST_F(Navigation, StatusFormRefusesANullOutput)
{
    GraphConfigNode** const none = nullptr;
    EXPECT_EQ(-32, mRoot->getDescendant(NUXO_KEY_SENSOR, none));
    EXPECT_EQ(-32, mRoot->getDescendant(NUXO_KEY_PORT, none));
    EXPECT_EQ(-32, GraphConfigNode().getDescendant(NUXO_KEY_PORT, none));
}

TEST_F(Navigation, PathOfNodesGivesTheNamedNode)
{
    EXPECT_EQ(static_cast<IGraphConfig*>(mSensor), mRoot->getDescendant(ItemUID{NUXO_KEY_SENSOR}));
    EXPECT_EQ(static_cast<IGraphConfig*>(mPort), mRoot->getDescendant(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_PORT}));
}

TEST_F(Navigation, PathToAnAttributeGivesTheNodeThatHoldsIt)
{
    EXPECT_EQ(static_cast<IGraphConfig*>(mPort), mSensor->getDescendant(ItemUID{NUXO_KEY_PORT, NUXO_KEY_FORMAT}));
    EXPECT_EQ(static_cast<IGraphConfig*>(mPort),
              mRoot->getDescendant(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_PORT, NUXO_KEY_FORMAT}));
    EXPECT_EQ(static_cast<IGraphConfig*>(mSensor), mRoot->getDescendant(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_WIDTH}));
}

TEST_F(Navigation, PathThatNamesNothingGivesNull)
{
    LogCapture log;
    EXPECT_EQ(nullptr, mRoot->getDescendant(ItemUID()));
    EXPECT_EQ(nullptr, mRoot->getDescendant(ItemUID{NUXO_KEY_NAME}));                    // one key, an attribute
    EXPECT_EQ(nullptr, mRoot->getDescendant(ItemUID{NUXO_KEY_PORT}));                    // absent
    EXPECT_EQ(nullptr, mRoot->getDescendant(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_HEIGHT})); // last key absent
    EXPECT_EQ(nullptr, mRoot->getDescendant(ItemUID{NUXO_KEY_PORT, NUXO_KEY_FORMAT}));   // first key absent
    EXPECT_EQ(nullptr, mRoot->getDescendant(ItemUID{NUXO_KEY_NAME, NUXO_KEY_FORMAT}));   // attribute before the end
    EXPECT_EQ(nullptr, mRoot->getDescendant(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_NAME, NUXO_KEY_FORMAT}));
    EXPECT_EQ(nullptr, GraphConfigNode().getDescendant(ItemUID{NUXO_KEY_PORT}));
    expectNoLines(log);
}

TEST_F(Navigation, HoldingNodeIsFoundEvenWhenTheLastKeyIsMissing)
{
    LogCapture log;
    EXPECT_EQ(static_cast<IGraphConfig*>(mSensor),
              mRoot->getGraphConfigItem(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_HEIGHT}));
    EXPECT_EQ(static_cast<IGraphConfig*>(mPort),
              mRoot->getGraphConfigItem(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_PORT, NUXO_KEY_WIDTH}));
    expectNoLines(log);
}

TEST_F(Navigation, HoldingNodeOtherwiseFollowsThePathRules)
{
    LogCapture log;
    EXPECT_EQ(static_cast<IGraphConfig*>(mSensor), mRoot->getGraphConfigItem(ItemUID{NUXO_KEY_SENSOR}));
    EXPECT_EQ(static_cast<IGraphConfig*>(mPort), mRoot->getGraphConfigItem(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_PORT}));
    EXPECT_EQ(static_cast<IGraphConfig*>(mPort), mSensor->getGraphConfigItem(ItemUID{NUXO_KEY_PORT, NUXO_KEY_FORMAT}));
    EXPECT_EQ(nullptr, mRoot->getGraphConfigItem(ItemUID()));
    EXPECT_EQ(nullptr, mRoot->getGraphConfigItem(ItemUID{NUXO_KEY_PORT})); // one key, absent
    EXPECT_EQ(nullptr, mRoot->getGraphConfigItem(ItemUID{NUXO_KEY_NAME})); // one key, an attribute
    EXPECT_EQ(nullptr, mRoot->getGraphConfigItem(ItemUID{NUXO_KEY_PORT, NUXO_KEY_FORMAT}));
    EXPECT_EQ(nullptr, mRoot->getGraphConfigItem(ItemUID{NUXO_KEY_NAME, NUXO_KEY_FORMAT}));
    EXPECT_EQ(nullptr, mRoot->getGraphConfigItem(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_HW, NUXO_KEY_WIDTH}));
    expectNoLines(log);
}

TEST_F(Navigation, TextPathWorksLikeTheKeyPath)
{
    EXPECT_EQ(static_cast<IGraphConfig*>(mPort), mRoot->getDescendantByString("sensor:port"));
    EXPECT_EQ(static_cast<IGraphConfig*>(mPort), mRoot->getDescendantByString("sensor:port:format"));
    EXPECT_EQ(static_cast<IGraphConfig*>(mSensor), mRoot->getDescendantByString("sensor:"));
    EXPECT_EQ(nullptr, mRoot->getDescendantByString("sensor.port"));
    EXPECT_EQ(nullptr, mRoot->getDescendantByString(""));
    EXPECT_EQ(nullptr, mRoot->getDescendantByString("no_such_name"));
}

TEST_F(Navigation, TextPathWithStatus)
{
    LogCapture log;
    GraphConfigNode* out = nullptr;
    EXPECT_EQ(0, mRoot->getDescendantByString("sensor:port", &out));
    EXPECT_EQ(mPort, out);
    EXPECT_EQ(-32, mRoot->getDescendantByString("sensor:height", &out));
    EXPECT_EQ(mPort, out);
    EXPECT_EQ(-32, mRoot->getDescendantByString("", &out));
    EXPECT_EQ(mPort, out);
    EXPECT_EQ(-32, mRoot->getDescendantByString("sensor", nullptr));
    expectNoLines(log);
}

TEST_F(Navigation, UnknownNamesInATextPathFindItemsUnderKeyZero)
{
    GraphConfigNode* const unknown = addChild(*mRoot, NUXO_KEY_NA);
    EXPECT_EQ(static_cast<IGraphConfig*>(unknown), mRoot->getDescendantByString("no_such_name"));
}

TEST_F(Navigation, CountIncludesAttributes)
{
    EXPECT_EQ(2, mRoot->getDescendantCount());   // sensor, name
    EXPECT_EQ(3, mSensor->getDescendantCount()); // port, name, width
    EXPECT_EQ(0, GraphConfigNode().getDescendantCount());
}

TEST_F(Navigation, HasItemSeesAttributesAndNodes)
{
    EXPECT_TRUE(mRoot->hasItem(NUXO_KEY_SENSOR));
    EXPECT_TRUE(mRoot->hasItem(NUXO_KEY_NAME));
    EXPECT_FALSE(mRoot->hasItem(NUXO_KEY_PORT));
    EXPECT_FALSE(GraphConfigNode().hasItem(NUXO_KEY_NA));
}

TEST_F(Navigation, ItemsStandInKeyOrderAndInInsertionOrderAmongEqualKeys)
{
    GraphConfigNode node;
    fileInteger(node, NUXO_KEY_WIDTH, 1);
    fileInteger(node, NUXO_KEY_PORT, 2);
    fileInteger(node, NUXO_KEY_WIDTH, 3);
    fileInteger(node, NUXO_KEY_NA, 4);
    fileInteger(node, NUXO_KEY_PORT, 5);
    EXPECT_EQ("0=4 34=2 34=5 8232=1 8232=3 ", contentOf(node));
}

TEST_F(Navigation, NameAndKeyAreThoseUnderWhichTheParentFilesTheNode)
{
    EXPECT_EQ("sensor", mSensor->getName()); // not the attribute `name`, which is imx
    EXPECT_EQ(36U, mSensor->getUid());
    EXPECT_EQ("port", mPort->getName());
    EXPECT_EQ(34U, mPort->getUid());
}

TEST_F(Navigation, RootHasNoNameAndNoKey)
{
    EXPECT_EQ("NA", mRoot->getName());
    EXPECT_EQ(0U, mRoot->getUid());
}

TEST_F(Navigation, NodesWithEqualKeysShareTheirName)
{
    GraphConfigNode* const second = addChild(*mSensor, NUXO_KEY_PORT);
    EXPECT_EQ("port", second->getName());
    EXPECT_EQ(34U, second->getUid());
}

TEST_F(Navigation, NameComesFromTheVocabulary)
{
    const VocabularyGuard guard;
    const uint32_t key = ItemUID::generateKey("BB_PS");
    EXPECT_EQ("BB_PS", addChild(*mRoot, key)->getName());
    EXPECT_EQ("BB_PS", addChild(*mRoot, 5000)->getName()); // unknown key: the first name, upper case sorts first
}

TEST_F(Navigation, NodeUnderAnUnknownNameIsCalledNa)
{
    GraphConfigNode* const unknown = addChild(*mRoot, NUXO_KEY_NA);
    EXPECT_EQ("na", unknown->getName()); // a root gives "NA"
    EXPECT_EQ(0U, unknown->getUid());
}

TEST_F(Navigation, TypeIsComparedThroughTheVocabulary)
{
    LogCapture log;
    mSensor->addValue(NUXO_KEY_TYPE, std::string("sensor"));
    EXPECT_TRUE(mSensor->isType(NUXO_KEY_SENSOR));
    EXPECT_FALSE(mSensor->isType(NUXO_KEY_PORT));
    expectNoLines(log);
}

TEST_F(Navigation, UnknownTypeTextMatchesKeyZero)
{
    mSensor->addValue(NUXO_KEY_TYPE, std::string("no_such_name"));
    mPort->addValue(NUXO_KEY_TYPE, std::string("Port"));
    EXPECT_TRUE(mSensor->isType(NUXO_KEY_NA));
    EXPECT_FALSE(mSensor->isType(NUXO_KEY_SENSOR));
    EXPECT_TRUE(mPort->isType(NUXO_KEY_NA)); // case matters
}

TEST_F(Navigation, TypeTestWarnsWhenThereIsNoType)
{
    LogCapture log;
    EXPECT_FALSE(mSensor->isType(NUXO_KEY_SENSOR));
    EXPECT_FALSE(mRoot->isType(NUXO_KEY_NA));
    expectLines(log, {{kWarning, "Trying to find type for NODE[sensor], but it doesn't have one."},
                      {kWarning, "Trying to find type for NODE[NA], but it doesn't have one."}});
}

TEST_F(Navigation, TypeTestWarnsWhenTheTypeIsNoText)
{
    fileInteger(*mSensor, NUXO_KEY_TYPE, 36);
    addChild(*mPort, NUXO_KEY_TYPE);
    LogCapture log;
    EXPECT_FALSE(mSensor->isType(NUXO_KEY_SENSOR));
    EXPECT_FALSE(mPort->isType(NUXO_KEY_PORT));
    expectLines(log, {{kWarning, "Trying to find type for NODE[sensor], but it doesn't have one."},
                      {kWarning, "Trying to find type for NODE[port], but it doesn't have one."}});
}

TEST_F(Navigation, EverythingWorksThroughTheInterface)
{
    const IGraphConfig* const root = mRoot.get();
    const IGraphConfig* const sensor = root->getDescendant(NUXO_KEY_SENSOR);
    ASSERT_NE(nullptr, sensor);
    EXPECT_EQ(root, sensor->getRoot());
    EXPECT_EQ(root, sensor->getAncestor());
    EXPECT_EQ(3, sensor->getDescendantCount());
    EXPECT_EQ("sensor", sensor->getName());
    EXPECT_EQ(36U, sensor->getUid());
    EXPECT_NE(nullptr, root->getDescendant(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_WIDTH}));
    EXPECT_NE(nullptr, root->getDescendantByString("sensor:port"));
    int width = 0;
    EXPECT_EQ(0, sensor->getValue(NUXO_KEY_WIDTH, width));
    EXPECT_EQ(4208, width);
}

} // namespace
