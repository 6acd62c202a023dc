// SPDX-License-Identifier: Apache-2.0
#include "TreeTestSupport.h"

#include <nuxo/tree/GraphConfigAttribute.h>
#include <nuxo/tree/GraphConfigItem.h>
#include <nuxo/tree/GraphConfigNode.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

namespace {

using NUXO::GraphConfigAttribute;
using NUXO::GraphConfigIntAttribute;
using NUXO::GraphConfigItem;
using NUXO::GraphConfigNode;
using NUXO::GraphConfigStrAttribute;
using NUXO::IGraphConfig;

TEST(GraphConfigItem, TypesAreDistinctBits)
{
    EXPECT_EQ(1, static_cast<int32_t>(GraphConfigItem::NA));
    EXPECT_EQ(2, static_cast<int32_t>(GraphConfigItem::STRING));
    EXPECT_EQ(4, static_cast<int32_t>(GraphConfigItem::INT));
    EXPECT_EQ(8, static_cast<int32_t>(GraphConfigItem::NODE));
}

TEST(GraphConfigItem, EveryKindCarriesItsType)
{
    EXPECT_EQ(1, GraphConfigItem().type);
    EXPECT_EQ(2, GraphConfigStrAttribute().type);
    EXPECT_EQ(4, GraphConfigIntAttribute().type);
    EXPECT_EQ(8, GraphConfigNode().type);
}

void expectNoValueOfAnyKind(GraphConfigItem& item)
{
    int number = 41;
    std::string text = "before";
    EXPECT_EQ(-64, item.getValue(number));
    EXPECT_EQ(-64, item.getValue(text));
    EXPECT_EQ(-64, item.setValue(std::string("x")));
    EXPECT_EQ(-64, item.setValue(7));
    EXPECT_EQ(41, number);
    EXPECT_EQ("before", text);
}

TEST(GraphConfigItem, UntypedItemRefusesValues)
{
    GraphConfigItem item;
    expectNoValueOfAnyKind(item);
}

TEST(GraphConfigItem, NodeAsItemRefusesValues)
{
    GraphConfigNode node;
    ASSERT_EQ(0, node.addValue(NUXO_KEY_WIDTH, 1920));
    expectNoValueOfAnyKind(node);
    EXPECT_EQ("8232=1920 ", contentOf(node));
}

TEST(GraphConfigItem, KindsDeriveFromOneAnother)
{
    EXPECT_TRUE((std::is_base_of_v<GraphConfigItem, GraphConfigAttribute>));
    EXPECT_TRUE((std::is_base_of_v<GraphConfigAttribute, GraphConfigIntAttribute>));
    EXPECT_TRUE((std::is_base_of_v<GraphConfigAttribute, GraphConfigStrAttribute>));
    EXPECT_TRUE((std::is_base_of_v<GraphConfigItem, GraphConfigNode>));
    EXPECT_TRUE((std::is_base_of_v<IGraphConfig, GraphConfigNode>));
    EXPECT_TRUE(std::has_virtual_destructor_v<GraphConfigItem>);
    EXPECT_TRUE(std::has_virtual_destructor_v<IGraphConfig>);
}

TEST(GraphConfigItem, NodesAreNeverCopiedByValue)
{
    EXPECT_FALSE(std::is_copy_constructible_v<GraphConfigNode>);
    EXPECT_FALSE(std::is_copy_assignable_v<GraphConfigNode>);
}

TEST(GraphConfigItem, ItemIsTheFirstBaseOfANodeAndTheInterfaceTheSecond)
{
    GraphConfigNode node;
    const void* const self = &node;
    EXPECT_EQ(self, static_cast<void*>(static_cast<GraphConfigItem*>(&node)));
    EXPECT_NE(self, static_cast<void*>(static_cast<IGraphConfig*>(&node)));
    EXPECT_EQ(&node, dynamic_cast<GraphConfigNode*>(static_cast<IGraphConfig*>(&node)));
}

TEST(GraphConfigIntAttribute, HoldsA32BitSignedInteger)
{
    GraphConfigIntAttribute attribute;
    EXPECT_EQ(0, attribute.value);
    for (const int value : {1920, -1, INT_MIN, INT_MAX}) {
        int out = 0;
        EXPECT_EQ(0, attribute.setValue(value));
        EXPECT_EQ(value, attribute.value);
        EXPECT_EQ(0, attribute.getValue(out));
        EXPECT_EQ(value, out);
    }
    EXPECT_EQ(sizeof(int32_t), sizeof(attribute.value));
}

TEST(GraphConfigIntAttribute, StoresThroughInsertInteger)
{
    GraphConfigIntAttribute attribute(5);
    EXPECT_EQ(5, attribute.value);
    EXPECT_EQ(0, attribute.insertInteger(-7));
    EXPECT_EQ(-7, attribute.value);
}

TEST(GraphConfigIntAttribute, RefusesTexts)
{
    GraphConfigIntAttribute attribute(5);
    std::string text = "before";
    EXPECT_EQ(-64, attribute.getValue(text));
    EXPECT_EQ("before", text);
    EXPECT_EQ(-64, attribute.setValue(std::string("7")));
    EXPECT_EQ(5, attribute.value);
}

TEST(GraphConfigIntAttribute, CopyIsIndependent)
{
    GraphConfigIntAttribute attribute(5);
    const std::unique_ptr<GraphConfigIntAttribute> copy(attribute.copy());
    ASSERT_NE(nullptr, copy);
    attribute.value = 6;
    EXPECT_EQ(5, copy->value);
    EXPECT_EQ(4, copy->type);
}

TEST(GraphConfigStrAttribute, HoldsAText)
{
    GraphConfigStrAttribute attribute;
    EXPECT_EQ("", attribute.value);
    const std::string zeroInside("a\0b", 3);
    for (const std::string& value : {std::string("NV12"), std::string(), zeroInside, std::string(100000, 'x')}) {
        std::string out = "before";
        EXPECT_EQ(0, attribute.setValue(value));
        EXPECT_EQ(value, attribute.value);
        EXPECT_EQ(0, attribute.getValue(out));
        EXPECT_EQ(value, out);
    }
}

TEST(GraphConfigStrAttribute, StoresThroughInsertString)
{
    GraphConfigStrAttribute attribute(std::string("old"));
    EXPECT_EQ("old", attribute.value);
    EXPECT_EQ(0, attribute.insertString("new"));
    EXPECT_EQ("new", attribute.value);
    EXPECT_EQ(0, attribute.insertString(attribute.value)); // its own text
    EXPECT_EQ("new", attribute.value);
}

TEST(GraphConfigStrAttribute, RefusesIntegers)
{
    GraphConfigStrAttribute attribute(std::string("5"));
    int number = 41;
    EXPECT_EQ(-64, attribute.getValue(number));
    EXPECT_EQ(41, number);
    EXPECT_EQ(-64, attribute.setValue(7));
    EXPECT_EQ("5", attribute.value);
}

TEST(GraphConfigStrAttribute, CopyIsIndependent)
{
    GraphConfigStrAttribute attribute(std::string("old"));
    const std::unique_ptr<GraphConfigStrAttribute> copy(attribute.copy());
    ASSERT_NE(nullptr, copy);
    attribute.value = "new";
    EXPECT_EQ("old", copy->value);
    EXPECT_EQ(2, copy->type);
}

TEST(GraphConfigNode, DestroyingThroughEitherBaseDestroysEveryItem)
{
    for (const bool throughItem : {true, false}) {
        int destroyed = 0;
        auto* const root = new CountedNode(destroyed);
        GraphConfigNode* const child = addChild(*root, NUXO_KEY_PORT);
        fileItem(*child, std::make_unique<CountedNode>(destroyed), NUXO_KEY_PORT);
        fileItem(*child, std::make_unique<CountedItem>(destroyed), NUXO_KEY_PORT);
        fileItem(*root, std::make_unique<CountedText>(destroyed), NUXO_KEY_NAME);
        if (throughItem) delete static_cast<GraphConfigItem*>(root);
        else delete static_cast<IGraphConfig*>(root);
        EXPECT_EQ(4, destroyed);
    }
}

} // namespace
