// SPDX-License-Identifier: Apache-2.0
#include "ExpectLog.h"
#include "TreeTestSupport.h"

#include <nuxo/tree/GraphConfigNode.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using NUXO::GraphConfigItem;
using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

TEST(NodeCopy, KeepsEveryItemAndTheOrderOfEqualKeys)
{
    GraphConfigNode root;
    for (int i = 0; i < 5; ++i) {
        GraphConfigNode* const port = addChild(root, NUXO_KEY_PORT);
        fileText(*port, NUXO_KEY_PEER, "a" + std::to_string(i));
        fileText(*port, NUXO_KEY_PEER, "b" + std::to_string(i));
        fileInteger(*port, NUXO_KEY_WIDTH, i);
        fileInteger(root, NUXO_KEY_PORT, i); // attributes between nodes of the same key
    }
    fileText(root, NUXO_KEY_WIDTH, "text under an integer key");
    fileInteger(root, NUXO_KEY_NAME, 1);
    addChild(root, NUXO_KEY_SENSOR);
    const NodePtr copy(root.copy());
    ASSERT_NE(nullptr, copy);
    EXPECT_EQ(contentOf(root), contentOf(*copy));
    EXPECT_EQ(0U, contentOf(*copy).find("29=1 34{33='a0' 33='b0' 8232=0 } 34=0 34{33='a1' "));
}

TEST(NodeCopy, IsANewRoot)
{
    GraphConfigNode root;
    GraphConfigNode* const sensor = addChild(root, NUXO_KEY_SENSOR);
    addChild(*sensor, NUXO_KEY_PORT);
    const NodePtr copy(sensor->copy());
    ASSERT_NE(nullptr, copy);
    EXPECT_EQ(nullptr, copy->getAncestor());
    EXPECT_EQ("NA", copy->getName());
    IGraphConfig* const port = copy->getDescendant(NUXO_KEY_PORT);
    ASSERT_NE(nullptr, port);
    EXPECT_EQ(static_cast<IGraphConfig*>(copy.get()), port->getAncestor());
    EXPECT_EQ("port", port->getName());
}

TEST(NodeCopy, IsIndependentOfItsOriginal)
{
    NodePtr root = makeNode();
    root->addValue(NUXO_KEY_NAME, std::string("old"));
    addChild(*root, NUXO_KEY_PORT)->addValue(NUXO_KEY_WIDTH, 1);
    const NodePtr copy(root->copy());
    ASSERT_NE(nullptr, copy);
    EXPECT_EQ(0, copy->setValueFromStr(NUXO::ItemUID{NUXO_KEY_PORT, NUXO_KEY_WIDTH}, "2"));
    EXPECT_EQ(0, copy->addValue(NUXO_KEY_FORMAT, std::string("NV12")));
    EXPECT_EQ("29='old' 34{8232=1 } ", contentOf(*root));
    root.reset();
    EXPECT_EQ("16='NV12' 29='old' 34{8232=2 } ", contentOf(*copy));
}

TEST(NodeCopy, CanBeEditedAndCopiedAgain)
{
    GraphConfigNode root;
    root.addValue(NUXO_KEY_NAME, std::string(100, 'n'));
    root.addValue(NUXO_KEY_WIDTH, 7);
    addChild(root, NUXO_KEY_PORT);
    NodePtr copy(root.copy());
    for (int round = 0; round < 3; ++round) {
        ASSERT_NE(nullptr, copy);
        EXPECT_EQ(0, copy->removeDescendant(NUXO_KEY_NAME));
        EXPECT_EQ(0, copy->removeDescendant(NUXO_KEY_PORT));
        EXPECT_EQ(0, copy->addValue(NUXO_KEY_NAME, std::string(100, 'm')));
        addChild(*copy, NUXO_KEY_PORT);
        copy.reset(copy->copy());
    }
    EXPECT_EQ("29='" + std::string(100, 'm') + "' 34{} 8232=7 ", contentOf(*copy));
}

TEST(NodeCopy, OfAnEmptyNodeIsEmpty)
{
    const NodePtr copy(GraphConfigNode().copy());
    ASSERT_NE(nullptr, copy);
    EXPECT_EQ(0, copy->getDescendantCount());
    EXPECT_EQ(8, copy->type);
}

TEST(NodeCopy, GivesNothingWhenAnItemCannotBeCopied)
{
    GraphConfigNode root;
    root.addValue(NUXO_KEY_NAME, std::string(100, 'n'));
    GraphConfigNode* const child = addChild(root, NUXO_KEY_PORT);
    addChild(*child, NUXO_KEY_PORT)->addValue(NUXO_KEY_WIDTH, 1);
    fileItem(*child, std::make_unique<GraphConfigItem>(), NUXO_KEY_SENSOR);
    EXPECT_EQ(nullptr, root.copy());
    EXPECT_EQ(nullptr, child->copy());
}

std::string addressText(const void* address)
{
    char text[32];
    std::snprintf(text, sizeof text, "%p", address);
    return text;
}

TEST(NodeDump, DescribesTheNode)
{
    GraphConfigNode root;
    GraphConfigNode* const child = addChild(root, NUXO_KEY_PORT);
    child->addValue(NUXO_KEY_WIDTH, 1);
    child->addValue(NUXO_KEY_HEIGHT, 2);
    LogCapture log;
    child->dumpNode();
    root.dumpNode();
    expectLines(
        log, {{kError, "Node " + addressText(child) + " type:  NODE ancestor " + addressText(&root) + " map size 2"},
              {kError, "Node number of descendants : 2"},
              {kError, "Node " + addressText(&root) + " type:  NODE ancestor " + addressText(nullptr) + " map size 1"},
              {kError, "Node number of descendants : 1"}});
}

TEST(NodeDump, NamesOtherTypesAndCountsOnlyForNodes)
{
    struct Row {
        int16_t type;
        const char* name;
    };
    const Row rows[] = {{1, "NA"}, {2, "STRING"}, {4, "INT"}, {3, " NODE"}, {0, " NODE"}};
    GraphConfigNode node;
    for (const Row& row : rows) {
        LogCapture log;
        node.type = row.type;
        node.dumpNode();
        node.type = GraphConfigItem::NODE;
        expectLines(log, {{kError, "Node " + addressText(&node) + " type: " + row.name + " ancestor " +
                                       addressText(nullptr) + " map size 0"}});
    }
}

TEST(NodeDump, IsLoggedInTheErrorClassAlone)
{
    GraphConfigNode node;
    node.addValue(NUXO_KEY_WIDTH, 1);
    for (const uint32_t level : {1U, 2U, 4U, 8U, 32U}) {
        const LogCapture log(level);
        node.dumpNode();
        GraphConfigNode::dumpNodeTree(&node, 0);
        expectNoLines(log);
    }
}

/// An integer attribute that refuses to be read.
class UnreadableInteger : public NUXO::GraphConfigIntAttribute {
public:
    using GraphConfigIntAttribute::getValue;
    int32_t getValue(int&) override { return StatusNotFound; }
};

TEST(NodeDumpTree, PrintsEveryKindIndentedByDepth)
{
    GraphConfigNode root;
    GraphConfigNode* const sensor = addChild(root, NUXO_KEY_SENSOR);
    GraphConfigNode* const port = addChild(*sensor, NUXO_KEY_PORT);
    port->addValue(NUXO_KEY_FORMAT, std::string("NV12"));
    port->addValue(NUXO_KEY_WIDTH, -4208);
    sensor->addValue(NUXO_KEY_NAME, std::string());
    addChild(root, NUXO_KEY_HW);
    fileItem(root, std::make_unique<GraphConfigItem>(), NUXO_KEY_WIDTH);
    LogCapture log;
    GraphConfigNode::dumpNodeTree(&root, 0);
    expectLines(log, {{kError, "'hw'(21) [Node]"},
                      {kError, "'sensor'(36) [Node]"},
                      {kError, "  'name' str [Attr] ''"},
                      {kError, "  'port'(34) [Node]"},
                      {kError, "    'format' str [Attr] 'NV12'"},
                      {kError, "    'width'(8232) int [Attr] '-4208'"},
                      {kError, "type?"}});
}

TEST(NodeDumpTree, StartsAtTheGivenDepth)
{
    GraphConfigNode node;
    node.addValue(NUXO_KEY_WIDTH, 7);
    LogCapture log;
    GraphConfigNode::dumpNodeTree(&node, 3);
    GraphConfigNode::dumpNodeTree(&node, -3); // like 0
    expectLines(log, {{kError, "      'width'(8232) int [Attr] '7'"}, {kError, "'width'(8232) int [Attr] '7'"}});
}

TEST(NodeDumpTree, PrintsNothingForNothing)
{
    const GraphConfigNode empty;
    LogCapture log;
    GraphConfigNode::dumpNodeTree(&empty, 0);
    GraphConfigNode::dumpNodeTree(nullptr, 0);
    expectNoLines(log);
}

TEST(NodeDumpTree, SkipsIntegersThatCannotBeRead)
{
    GraphConfigNode node;
    fileItem(node, std::make_unique<UnreadableInteger>(), NUXO_KEY_HEIGHT);
    node.addValue(NUXO_KEY_WIDTH, 7);
    LogCapture log;
    GraphConfigNode::dumpNodeTree(&node, 0);
    expectLines(log, {{kError, "'width'(8232) int [Attr] '7'"}});
}

TEST(NodeDumpTree, PrintsTextsVerbatim)
{
    GraphConfigNode node;
    node.addValue(NUXO_KEY_NAME, std::string("100%s %n'\n"));
    LogCapture log;
    GraphConfigNode::dumpNodeTree(&node, 0);
    expectLines(log, {{kError, "'name' str [Attr] '100%s %n'\n'"}});
}

TEST(NodeDumpTree, PrintsUnknownKeysAsTheFirstNameOfTheVocabulary)
{
    GraphConfigNode node;
    addChild(node, 5000);
    LogCapture log;
    GraphConfigNode::dumpNodeTree(&node, 0);
    expectLines(log, {{kError, "'active_input'(5000) [Node]"}});
}

TEST(NodeDumpTree, DoesNotPrintRemovedAttributes)
{
    GraphConfigNode node;
    node.addValue(NUXO_KEY_NAME, std::string("gone"));
    node.removeDescendant(NUXO_KEY_NAME);
    LogCapture log;
    GraphConfigNode::dumpNodeTree(&node, 0);
    expectNoLines(log);
}

/// A chain of @p levels nodes, one below the other, with an attribute in the innermost. Built from the inside out, as
/// filing a tree costs no walk through it.
NodePtr makeChain(size_t levels)
{
    NodePtr outer = makeNode();
    outer->addValue(NUXO_KEY_NAME, std::string("innermost"));
    for (size_t i = 1; i < levels; ++i) {
        NodePtr inner = std::move(outer);
        outer = makeNode();
        if (outer->insertDescendant(inner.get(), NUXO_KEY_NODE) == StatusOk) inner.release();
    }
    return outer;
}

size_t depthOf(const GraphConfigNode& root)
{
    size_t depth = 1;
    const IGraphConfig* node = &root;
    while ((node = node->getDescendant(NUXO_KEY_NODE)) != nullptr) ++depth;
    return depth;
}

TEST(NodeDepth, MillionLevelsAreDestroyedCopiedAndDumped)
{
    constexpr size_t kLevels = 1000000;
    const NodePtr chain = makeChain(kLevels);
    EXPECT_EQ(kLevels, depthOf(*chain));
    const NodePtr copy(chain->copy());
    ASSERT_NE(nullptr, copy);
    EXPECT_EQ(kLevels, depthOf(*copy));
    const LogCapture log(0); // no class enabled: a dump must not build what nobody reads
    GraphConfigNode::dumpNodeTree(copy.get(), 0);
    expectNoLines(log);
}

TEST(NodeDepth, MillionLevelsAreRemovedFromTheirParent)
{
    GraphConfigNode root;
    fileItem(root, makeChain(1000000), NUXO_KEY_NODE);
    EXPECT_EQ(0, root.removeDescendant(NUXO_KEY_NODE));
    EXPECT_EQ(0, root.getDescendantCount());
}

TEST(NodeDepth, WideLevelsBelowADeepChainGoToo)
{
    int destroyed = 0;
    {
        NodePtr chain = makeNode();
        for (int i = 0; i < 2000; ++i) {
            NodePtr outer = makeNode();
            fileItem(*outer, std::make_unique<CountedNode>(destroyed), NUXO_KEY_PORT);
            fileItem(*outer, std::make_unique<CountedText>(destroyed), NUXO_KEY_NAME);
            fileItem(*outer, std::move(chain), NUXO_KEY_NODE);
            fileItem(*outer, std::make_unique<CountedItem>(destroyed), NUXO_KEY_WIDTH);
            chain = std::move(outer);
        }
    }
    EXPECT_EQ(3 * 2000, destroyed);
}

TEST(NodeDumpTree, IndentsDeepTrees)
{
    constexpr size_t kLevels = 200; // indents up to 398 blanks fit the log's line
    const NodePtr chain = makeChain(kLevels);
    LogCapture log;
    GraphConfigNode::dumpNodeTree(chain.get(), 0);
    const std::vector<std::string> messages = log.messages();
    ASSERT_EQ(kLevels, messages.size()); // a line for each node but the root, one for the attribute
    for (size_t level = 0; level + 1 < kLevels; ++level)
        EXPECT_EQ(std::string(2 * level, ' ') + "'node'(30) [Node]", messages[level]);
    EXPECT_EQ(std::string(2 * (kLevels - 1), ' ') + "'name' str [Attr] 'innermost'", messages.back());
}

TEST(NodeDumpTree, ManyLevelsGiveALineEach)
{
    constexpr size_t kLevels = 5000; // indents beyond the log's line of 1023 characters
    const NodePtr chain = makeChain(kLevels);
    LogCapture log;
    GraphConfigNode::dumpNodeTree(chain.get(), 0);
    EXPECT_EQ(kLevels, log.count(kError));
}

} // namespace
