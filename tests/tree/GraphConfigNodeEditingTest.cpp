// SPDX-License-Identifier: Apache-2.0
#include "ExpectLog.h"
#include "TreeTestSupport.h"

#include <nuxo/tree/GraphConfigNode.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace {

using NUXO::GraphConfigAttribute;
using NUXO::GraphConfigItem;
using NUXO::GraphConfigNode;
using NUXO::GraphConfigStrAttribute;
using NUXO::IGraphConfig;

TEST(NodeAddValue, FilesAttributesOfBothKinds)
{
    GraphConfigNode node;
    LogCapture log;
    EXPECT_EQ(0, node.addValue(NUXO_KEY_WIDTH, -7));
    EXPECT_EQ(0, node.addValue(NUXO_KEY_NAME, std::string("imx")));
    EXPECT_EQ("29='imx' 8232=-7 ", contentOf(node));
    EXPECT_EQ(GraphConfigItem::STRING, node.begin()->second->type);
    EXPECT_EQ(GraphConfigItem::INT, (node.begin() + 1)->second->type);
    expectNoLines(log);
}

TEST(NodeAddValue, KindFollowsTheArgumentNotTheKey)
{
    GraphConfigNode node;
    EXPECT_EQ(0, node.addValue(NUXO_KEY_NAME, 5));
    EXPECT_EQ(0, node.addValue(NUXO_KEY_WIDTH, std::string("wide")));
    EXPECT_EQ("29=5 8232='wide' ", contentOf(node));
}

TEST(NodeAddValue, RefusesAKeyThatAnyItemHas)
{
    GraphConfigNode node;
    node.addValue(NUXO_KEY_WIDTH, 1);
    addChild(node, NUXO_KEY_PORT);
    const std::string before = contentOf(node);
    LogCapture log;
    EXPECT_EQ(-512, node.addValue(NUXO_KEY_WIDTH, 2));
    EXPECT_EQ(-512, node.addValue(NUXO_KEY_WIDTH, std::string("2")));
    EXPECT_EQ(-512, node.addValue(NUXO_KEY_PORT, 2)); // a child node
    EXPECT_EQ(-512, node.addValue(NUXO_KEY_PORT, std::string("2")));
    expectNoLines(log);
    EXPECT_EQ(before, contentOf(node));
}

TEST(NodeInsertDescendant, RefusesNull)
{
    GraphConfigNode node;
    LogCapture log;
    EXPECT_EQ(-2, node.insertDescendant(nullptr, NUXO_KEY_PORT));
    EXPECT_EQ(0, node.getDescendantCount());
    expectNoLines(log);
}

TEST(NodeInsertDescendant, FilesBehindItemsWithTheSameKey)
{
    GraphConfigNode node;
    fileInteger(node, NUXO_KEY_PORT, 1);
    fileInteger(node, NUXO_KEY_WIDTH, 9);
    GraphConfigNode* const second = addChild(node, NUXO_KEY_PORT);
    fileInteger(node, NUXO_KEY_PORT, 3);
    EXPECT_EQ("34=1 34{} 34=3 8232=9 ", contentOf(node));
    EXPECT_EQ(static_cast<IGraphConfig*>(&node), second->getAncestor());
}

TEST(NodeInsertDescendant, TakesOverAWholeTree)
{
    GraphConfigNode node;
    NodePtr tree = makeNode();
    GraphConfigNode* const leaf = addChild(*tree, NUXO_KEY_PORT);
    EXPECT_EQ(static_cast<IGraphConfig*>(tree.get()), leaf->getRoot());
    EXPECT_EQ(0, node.insertDescendant(tree.get(), NUXO_KEY_SENSOR));
    EXPECT_EQ(static_cast<IGraphConfig*>(&node), leaf->getRoot());
    EXPECT_EQ("sensor", tree.release()->getName());
}

TEST(NodeRemoveDescendant, IsNotFoundWithoutSuchAnItem)
{
    GraphConfigNode node;
    LogCapture log;
    EXPECT_EQ(-64, node.removeDescendant(NUXO_KEY_PORT));
    addChild(node, NUXO_KEY_PORT);
    EXPECT_EQ(-64, node.removeDescendant(NUXO_KEY_NAME));
    EXPECT_EQ(1, node.getDescendantCount());
    expectNoLines(log);
}

TEST(NodeRemoveDescendant, DestroysOnlyTheFirstOfSeveralNodes)
{
    GraphConfigNode node;
    int firstDestroyed = 0;
    int secondDestroyed = 0;
    fileItem(node, std::make_unique<CountedNode>(firstDestroyed), NUXO_KEY_PORT);
    CountedNode* const second = fileItem(node, std::make_unique<CountedNode>(secondDestroyed), NUXO_KEY_PORT);
    EXPECT_EQ(0, node.removeDescendant(NUXO_KEY_PORT));
    EXPECT_EQ(1, firstDestroyed);
    EXPECT_EQ(0, secondDestroyed);
    EXPECT_EQ(1, node.getDescendantCount());
    EXPECT_EQ(static_cast<IGraphConfig*>(second), node.getDescendant(NUXO_KEY_PORT));
    EXPECT_EQ(0, node.removeDescendant(NUXO_KEY_PORT));
    EXPECT_EQ(-64, node.removeDescendant(NUXO_KEY_PORT));
    EXPECT_EQ(1, secondDestroyed);
}

TEST(NodeRemoveDescendant, DestroysTheWholeTreeBelowTheNode)
{
    GraphConfigNode node;
    int destroyed = 0;
    GraphConfigNode* const child = addChild(node, NUXO_KEY_PORT);
    fileItem(*child, std::make_unique<CountedNode>(destroyed), NUXO_KEY_PORT);
    fileItem(*child, std::make_unique<CountedText>(destroyed), NUXO_KEY_NAME);
    EXPECT_EQ(0, node.removeDescendant(NUXO_KEY_PORT));
    EXPECT_EQ(2, destroyed);
}

TEST(NodeRemoveDescendant, RemovedAttributeStaysValidUntilTheNodeGoes)
{
    int destroyed = 0;
    {
        GraphConfigNode node;
        GraphConfigStrAttribute* const name = fileItem(node, std::make_unique<CountedText>(destroyed), NUXO_KEY_NAME);
        name->value = "imx";
        EXPECT_EQ(0, node.removeDescendant(NUXO_KEY_NAME));
        EXPECT_FALSE(node.hasItem(NUXO_KEY_NAME));
        EXPECT_EQ(0, node.getDescendantCount());
        EXPECT_EQ(0, destroyed);
        EXPECT_EQ("imx", name->value);
        EXPECT_EQ(0, name->setValue(std::string(1000, 'x'))); // still a whole attribute
        EXPECT_EQ(0, destroyed);
    }
    EXPECT_EQ(1, destroyed);
}

TEST(NodeRemoveDescendant, RemovedUntypedItemStaysValidUntilTheNodeGoes)
{
    int destroyed = 0;
    {
        GraphConfigNode node;
        const CountedItem* const item = fileItem(node, std::make_unique<CountedItem>(destroyed), NUXO_KEY_NAME);
        EXPECT_EQ(0, node.removeDescendant(NUXO_KEY_NAME));
        EXPECT_EQ(0, destroyed);
        EXPECT_EQ(1, item->type);
    }
    EXPECT_EQ(1, destroyed);
}

TEST(NodeRemoveDescendant, ManyRemovedAttributesOutliveLaterEditing)
{
    constexpr int kCount = 50;
    GraphConfigNode node;
    std::vector<GraphConfigAttribute*> removed;
    for (int i = 0; i < kCount; ++i) {
        // Add, remove and add again under the same key: every removed attribute keeps its own value.
        ASSERT_EQ(0, node.addValue(NUXO_KEY_NAME, std::string(40, 'x') + std::to_string(i)));
        GraphConfigAttribute* attribute = nullptr;
        ASSERT_EQ(0, node.getAttribute(NUXO_KEY_NAME, &attribute));
        removed.push_back(attribute);
        ASSERT_EQ(0, node.removeDescendant(NUXO_KEY_NAME));
        addChild(node, i % 2 == 0 ? NUXO_KEY_PORT : NUXO_KEY_WIDTH); // in front of and behind the gap
    }
    EXPECT_EQ(kCount, node.getDescendantCount());
    for (int i = 0; i < kCount; ++i) {
        std::string value;
        EXPECT_EQ(0, removed[static_cast<size_t>(i)]->getValue(value));
        EXPECT_EQ(std::string(40, 'x') + std::to_string(i), value);
    }
}

TEST(NodeRemoveDescendant, RemovedAttributesAreNotSeenAnyMore)
{
    GraphConfigNode node;
    fileText(node, NUXO_KEY_NAME, "first");
    fileText(node, NUXO_KEY_NAME, "second");
    EXPECT_EQ(0, node.removeDescendant(NUXO_KEY_NAME));
    EXPECT_EQ("29='second' ", contentOf(node));
    const NodePtr copy(node.copy());
    ASSERT_NE(nullptr, copy);
    EXPECT_EQ("29='second' ", contentOf(*copy));
    EXPECT_EQ(0, node.removeDescendant(NUXO_KEY_NAME));
    EXPECT_EQ(node.begin(), node.end());
    EXPECT_EQ(0, node.addValue(NUXO_KEY_NAME, std::string("third"))); // the key is free again
}

TEST(NodeRemoveDescendant, ADestroyedSubtreeMayStillHoldRemovedAttributes)
{
    int destroyed = 0;
    GraphConfigNode node;
    GraphConfigNode* const child = addChild(node, NUXO_KEY_PORT);
    fileItem(*child, std::make_unique<CountedText>(destroyed), NUXO_KEY_NAME);
    child->removeDescendant(NUXO_KEY_NAME);
    EXPECT_EQ(0, destroyed);
    node.removeDescendant(NUXO_KEY_PORT);
    EXPECT_EQ(1, destroyed);
}

TEST(NodeRemoveDescendant, RemovedAttributeOfACopyStaysValidUntilTheCopyGoes)
{
    GraphConfigNode original;
    original.addValue(NUXO_KEY_NAME, std::string(100, 'n'));
    original.addValue(NUXO_KEY_WIDTH, 7);
    const NodePtr node(original.copy());
    ASSERT_NE(nullptr, node);
    GraphConfigAttribute* name = nullptr;
    GraphConfigAttribute* width = nullptr;
    ASSERT_EQ(0, node->getAttribute(NUXO_KEY_NAME, &name));
    ASSERT_EQ(0, node->getAttribute(NUXO_KEY_WIDTH, &width));
    EXPECT_EQ(0, node->removeDescendant(NUXO_KEY_WIDTH));
    EXPECT_EQ(0, node->removeDescendant(NUXO_KEY_NAME));
    for (uint32_t key = 1; key <= 20; ++key) EXPECT_EQ(0, node->addValue(key, static_cast<int>(key)));
    std::string text;
    int number = 0;
    EXPECT_EQ(0, name->getValue(text));
    EXPECT_EQ(std::string(100, 'n'), text);
    EXPECT_EQ(0, width->getValue(number));
    EXPECT_EQ(7, number);
}

TEST(NodeDestruction, OfAChildTakesItOutOfItsParent)
{
    GraphConfigNode node;
    int destroyed = 0;
    addChild(node, NUXO_KEY_PORT)->addValue(NUXO_KEY_WIDTH, 1);
    auto* const second = fileItem(node, std::make_unique<CountedNode>(destroyed), NUXO_KEY_PORT);
    fileItem(*second, std::make_unique<CountedText>(destroyed), NUXO_KEY_NAME);
    addChild(node, NUXO_KEY_PORT)->addValue(NUXO_KEY_WIDTH, 3);
    delete static_cast<IGraphConfig*>(second); // a client may destroy a part of its tree
    EXPECT_EQ(2, destroyed);
    EXPECT_EQ("34{8232=1 } 34{8232=3 } ", contentOf(node));
}

TEST(NodeGetAttribute, ByKeyGivesTheFirstItemWhateverItIs)
{
    GraphConfigNode node;
    fileText(node, NUXO_KEY_NAME, "first");
    fileInteger(node, NUXO_KEY_NAME, 2);
    GraphConfigNode* const child = addChild(node, NUXO_KEY_PORT);
    LogCapture log;
    GraphConfigAttribute* out = nullptr;
    EXPECT_EQ(0, node.getAttribute(NUXO_KEY_NAME, &out));
    ASSERT_NE(nullptr, out);
    EXPECT_EQ(GraphConfigItem::STRING, out->type);
    EXPECT_EQ(0, out->setValue(std::string("changed"))); // straight into the attribute: no options list needed
    EXPECT_EQ(0, node.getAttribute(NUXO_KEY_PORT, &out));
    EXPECT_EQ(static_cast<GraphConfigItem*>(child), out);
    EXPECT_EQ("29='changed' 29=2 34{} ", contentOf(node));
    expectNoLines(log);
}

TEST(NodeGetAttribute, ByKeyMissing)
{
    GraphConfigNode node;
    GraphConfigAttribute* out = nullptr;
    EXPECT_EQ(-2, node.getAttribute(NUXO_KEY_NAME, &out));
    addChild(node, NUXO_KEY_PORT);
    LogCapture log;
    EXPECT_EQ(-2, node.getAttribute(NUXO_KEY_NAME, &out));
    EXPECT_EQ(-32, node.getAttribute(NUXO_KEY_PORT, nullptr));
    EXPECT_EQ(-32, node.getAttribute(NUXO_KEY_NAME, nullptr));
    expectNoLines(log);
}

/// root { sensor { port { format = "NV12" }, width = 4208 }, name = "root" }
class Attributes : public ::testing::Test {
protected:
    Attributes()
        : mRoot(makeNode()), mSensor(addChild(*mRoot, NUXO_KEY_SENSOR)), mPort(addChild(*mSensor, NUXO_KEY_PORT))
    {
        mRoot->addValue(NUXO_KEY_NAME, std::string("root"));
        mSensor->addValue(NUXO_KEY_WIDTH, 4208);
        mPort->addValue(NUXO_KEY_FORMAT, std::string("NV12"));
        mBefore = contentOf(*mRoot);
    }

    void expectUnchanged() const { EXPECT_EQ(mBefore, contentOf(*mRoot)); }

    /// The path is refused with @p status and @p line, and the output is null afterwards.
    void expectNoAttribute(const NUXO::ItemUID& path, const std::string& line)
    {
        GraphConfigAttribute* out = &mUnrelated;
        LogCapture log;
        EXPECT_EQ(-64, mRoot->getAttribute(path, &out)) << path.toString();
        EXPECT_EQ(nullptr, out);
        expectLines(log, {{kWarning, line}});
    }

    void expectNotCreated(const NUXO::ItemUID& path, int priority, const std::string& line)
    {
        GraphConfigAttribute* out = &mUnrelated;
        LogCapture log;
        EXPECT_EQ(-2, mRoot->createAttribute(path, &out)) << path.toString();
        EXPECT_EQ(nullptr, out);
        expectLines(log, {{priority, line}});
        expectUnchanged();
    }

    GraphConfigAttribute* create(const NUXO::ItemUID& path)
    {
        GraphConfigAttribute* out = nullptr;
        LogCapture log;
        EXPECT_EQ(0, mRoot->createAttribute(path, &out)) << path.toString();
        expectNoLines(log);
        return out;
    }

    NodePtr mRoot;
    GraphConfigNode* mSensor;
    GraphConfigNode* mPort;
    GraphConfigItem mUnrelated;
    std::string mBefore;
};

using NUXO::ItemUID;

TEST_F(Attributes, FoundByPath)
{
    LogCapture log;
    GraphConfigAttribute* out = nullptr;
    EXPECT_EQ(0, mRoot->getAttribute(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_WIDTH}, &out));
    ASSERT_NE(nullptr, out);
    int width = 0;
    EXPECT_EQ(0, out->getValue(width));
    EXPECT_EQ(4208, width);
    EXPECT_EQ(0, mRoot->getAttribute(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_PORT, NUXO_KEY_FORMAT}, &out));
    EXPECT_EQ(GraphConfigItem::STRING, out->type);
    expectNoLines(log);
}

TEST_F(Attributes, PathRefusesANullOutput)
{
    LogCapture log;
    GraphConfigAttribute** const none = nullptr;
    EXPECT_EQ(-8, mRoot->getAttribute(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_WIDTH}, none));
    EXPECT_EQ(-8, mRoot->getAttribute(ItemUID(), none));
    expectNoLines(log);
}

TEST_F(Attributes, PathWithoutHoldingNodeIsNotFound)
{
    expectNoAttribute(ItemUID{NUXO_KEY_HW, NUXO_KEY_WIDTH}, "Warning: Failed to get descendant hw.width for attribute");
    expectNoAttribute(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_HEIGHT},
                      "Warning: Failed to get descendant sensor.height for attribute");
    expectNoAttribute(ItemUID{NUXO_KEY_HEIGHT}, "Warning: Failed to get descendant height for attribute");
    expectNoAttribute(ItemUID(), "Warning: Failed to get descendant  for attribute");
}

TEST_F(Attributes, PathOfOneKeyNeverFindsAnAttributeOfThisNode)
{
    // A one-key path that names an attribute has no node before it.
    expectNoAttribute(ItemUID{NUXO_KEY_NAME}, "Warning: Failed to get descendant name for attribute");
}

TEST_F(Attributes, PathThatNamesANodeLooksInsideIt)
{
    expectNoAttribute(ItemUID{NUXO_KEY_SENSOR}, "warning: Failed to get attribute object for sensor");
    expectNoAttribute(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_PORT},
                      "warning: Failed to get attribute object for sensor.port");
    mSensor->addValue(NUXO_KEY_SENSOR, std::string("inside"));
    GraphConfigAttribute* out = nullptr;
    EXPECT_EQ(0, mRoot->getAttribute(ItemUID{NUXO_KEY_SENSOR}, &out));
    std::string text;
    ASSERT_NE(nullptr, out);
    EXPECT_EQ(0, out->getValue(text));
    EXPECT_EQ("inside", text);
}

TEST_F(Attributes, CreatedInThisNode)
{
    GraphConfigAttribute* const attribute = create(ItemUID{NUXO_KEY_FORMAT});
    ASSERT_NE(nullptr, attribute);
    EXPECT_EQ(0, attribute->setValue(std::string("P010")));
    std::string text;
    EXPECT_EQ(0, mRoot->getValue(NUXO_KEY_FORMAT, text));
    EXPECT_EQ("P010", text);
}

TEST_F(Attributes, CreatedInAnExistingNode)
{
    ASSERT_NE(nullptr, create(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_PORT, NUXO_KEY_HEIGHT}));
    EXPECT_EQ("16='NV12' 8211=0 ", contentOf(*mPort));
}

TEST_F(Attributes, KindFollowsTheLastKey)
{
    EXPECT_EQ(GraphConfigItem::INT, create(ItemUID{NUXO_KEY_HEIGHT})->type);
    EXPECT_EQ(GraphConfigItem::INT, create(ItemUID{8193})->type);
    EXPECT_EQ(GraphConfigItem::INT, create(ItemUID{12286})->type);
    EXPECT_EQ(GraphConfigItem::STRING, create(ItemUID{NUXO_KEY_FORMAT})->type);
    EXPECT_EQ(GraphConfigItem::STRING, create(ItemUID{NUXO_KEY_ATTRIBUTE})->type);
    EXPECT_EQ(GraphConfigItem::STRING, create(ItemUID{5000})->type);
    EXPECT_EQ(GraphConfigItem::STRING, create(ItemUID{8192})->type);
    EXPECT_EQ(GraphConfigItem::STRING, create(ItemUID{12287})->type);
    mRoot->removeDescendant(NUXO_KEY_NAME);
    mRoot->removeDescendant(NUXO_KEY_SENSOR);
    EXPECT_EQ("16='' 54='' 5000='' 8192='' 8193=0 8211=0 12286=0 12287='' ", contentOf(*mRoot));
}

TEST_F(Attributes, CreatedTogetherWithTheOneMissingNode)
{
    ASSERT_NE(nullptr, create(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_HW, NUXO_KEY_WIDTH}));
    IGraphConfig* const hw = mSensor->getDescendant(NUXO_KEY_HW);
    ASSERT_NE(nullptr, hw);
    EXPECT_EQ(static_cast<IGraphConfig*>(mSensor), hw->getAncestor());
    EXPECT_EQ(1, hw->getDescendantCount());
    EXPECT_EQ("21{8232=0 } 34{16='NV12' } 8232=4208 ", contentOf(*mSensor));
}

TEST_F(Attributes, CreatedTogetherWithTheMissingNodeDeeperDown)
{
    GraphConfigAttribute* const attribute = create(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_PORT, NUXO_KEY_HW, NUXO_KEY_NAME});
    ASSERT_NE(nullptr, attribute);
    EXPECT_EQ(GraphConfigItem::STRING, attribute->type);
    EXPECT_EQ("16='NV12' 21{29='' } ", contentOf(*mPort));
}

TEST_F(Attributes, NewNodeGoesBehindAnAttributeThatTakesItsPlaceOnThePath)
{
    // The walk stops at the attribute sensor.width, one step before the last key: a node is filed behind it.
    ASSERT_NE(nullptr, create(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_WIDTH, NUXO_KEY_NAME}));
    EXPECT_EQ("34{16='NV12' } 8232=4208 8232{29='' } ", contentOf(*mSensor));
}

TEST_F(Attributes, CreationRefusesANullOutput)
{
    LogCapture log;
    EXPECT_EQ(-32, mRoot->createAttribute(ItemUID{NUXO_KEY_FORMAT}, nullptr));
    EXPECT_EQ(-32, mRoot->createAttribute(ItemUID(), nullptr));
    expectLines(log, {{kError, "Invalid argument (nullptr) to create an attribute"},
                      {kError, "Invalid argument (nullptr) to create an attribute"}});
    expectUnchanged();
}

TEST_F(Attributes, CreationRefusesAnEmptyPath)
{
    expectNotCreated(ItemUID(), kError, "Error: item  is not an attribute it is an existing node");
}

TEST_F(Attributes, CreationRefusesAnExistingNode)
{
    expectNotCreated(ItemUID{NUXO_KEY_SENSOR}, kError, "Error: item sensor is not an attribute it is an existing node");
    expectNotCreated(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_PORT}, kError,
                     "Error: item sensor.port is not an attribute it is an existing node");
}

TEST_F(Attributes, CreationRefusesAnExistingAttribute)
{
    expectNotCreated(ItemUID{NUXO_KEY_NAME}, kError, "Failed to add attribute name to node");
    expectNotCreated(ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_WIDTH}, kError, "Failed to add attribute sensor.width to node");
}

TEST_F(Attributes, CreationNeverBuildsANodeDirectlyUnderTheStartingNode)
{
    expectNotCreated(ItemUID{NUXO_KEY_PORT, NUXO_KEY_FORMAT}, kWarning,
                     "Warning: Failed to create attribute port.format: Too many missing nodes, stopped at depth 0");
    // An attribute stands where the node should be.
    expectNotCreated(ItemUID{NUXO_KEY_NAME, NUXO_KEY_FORMAT}, kWarning,
                     "Warning: Failed to create attribute name.format: Too many missing nodes, stopped at depth 0");
}

TEST_F(Attributes, CreationNeverBuildsTwoNodes)
{
    expectNotCreated(
        ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_HW, NUXO_KEY_PORT, NUXO_KEY_FORMAT}, kWarning,
        "Warning: Failed to create attribute sensor.hw.port.format: Too many missing nodes, stopped at depth 1");
    expectNotCreated(ItemUID{NUXO_KEY_HW, NUXO_KEY_PORT, NUXO_KEY_FORMAT}, kWarning,
                     "Warning: Failed to create attribute hw.port.format: Too many missing nodes, stopped at depth 0");
    expectNotCreated(
        ItemUID{NUXO_KEY_SENSOR, NUXO_KEY_PORT, NUXO_KEY_HW, NUXO_KEY_HW, NUXO_KEY_FORMAT}, kWarning,
        "Warning: Failed to create attribute sensor.port.hw.hw.format: Too many missing nodes, stopped at depth 2");
}

} // namespace
