// SPDX-License-Identifier: Apache-2.0
#include "ExpectLog.h"
#include "TreeTestSupport.h"
#include "VocabularyGuard.h"

#include <nuxo/tree/NodeIterator.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

namespace {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;
using NUXO::ItemUID;
using NUXO::NodeIterator;

constexpr const char* kNullNode = "NodeIterator was constructed with NULL.";

GraphConfigNode* addTyped(GraphConfigNode& parent, uint32_t key, const std::string& type)
{
    GraphConfigNode* const child = addChild(parent, key);
    child->addValue(NUXO_KEY_TYPE, type);
    return child;
}

TEST(NodeIterator, VisitsChildNodesInOrderThenStartsAgain)
{
    GraphConfigNode node;
    IGraphConfig* const first = addChild(node, NUXO_KEY_PORT);
    IGraphConfig* const second = addChild(node, NUXO_KEY_PORT);
    node.addValue(NUXO_KEY_NAME, std::string("n"));
    IGraphConfig* const third = addChild(node, NUXO_KEY_PORT);
    LogCapture log;
    NodeIterator cursor(&node);
    EXPECT_EQ(first, cursor.iterateDescendants());
    EXPECT_EQ(second, cursor.iterateDescendants());
    EXPECT_EQ(third, cursor.iterateDescendants());
    EXPECT_EQ(nullptr, cursor.iterateDescendants());
    EXPECT_EQ(first, cursor.iterateDescendants());
    expectNoLines(log);
}

TEST(NodeIterator, VisitsInKeyOrderNotInFilingOrder)
{
    GraphConfigNode node;
    IGraphConfig* const sensor = addChild(node, NUXO_KEY_SENSOR); // 36
    IGraphConfig* const port = addChild(node, NUXO_KEY_PORT);     // 34
    NodeIterator cursor(&node);
    EXPECT_EQ(port, cursor.iterateDescendants());
    EXPECT_EQ(sensor, cursor.iterateDescendants());
}

TEST(NodeIterator, StaysAmongDirectChildren)
{
    GraphConfigNode node;
    GraphConfigNode* const child = addChild(node, NUXO_KEY_PORT);
    addChild(*child, NUXO_KEY_PORT);
    NodeIterator cursor(&node);
    EXPECT_EQ(static_cast<IGraphConfig*>(child), cursor.iterateDescendants());
    EXPECT_EQ(nullptr, cursor.iterateDescendants());
}

TEST(NodeIterator, FindsNothingInANodeWithoutChildNodes)
{
    GraphConfigNode empty;
    NodeIterator overEmpty(&empty);
    EXPECT_EQ(nullptr, overEmpty.iterateDescendants());
    GraphConfigNode attributesOnly;
    attributesOnly.addValue(NUXO_KEY_NAME, std::string("n"));
    NodeIterator cursor(&attributesOnly);
    EXPECT_EQ(nullptr, cursor.iterateDescendants());
    EXPECT_EQ(nullptr, cursor.iterateDescendants());
}

TEST(NodeIterator, NullNodeIsAnErrorOnEveryCall)
{
    NodeIterator cursor(nullptr);
    LogCapture log;
    EXPECT_EQ(nullptr, cursor.iterateDescendants());
    EXPECT_EQ(nullptr, cursor.iterateByUid(NUXO_KEY_PORT));
    EXPECT_EQ(nullptr, cursor.iterateByType(NUXO_KEY_PORT));
    EXPECT_EQ(nullptr, cursor.iterateNodes(NUXO_KEY_NAME, "n"));
    EXPECT_EQ(nullptr, cursor.iterateDescendants());
    expectLines(
        log, {{kError, kNullNode}, {kError, kNullNode}, {kError, kNullNode}, {kError, kNullNode}, {kError, kNullNode}});
    EXPECT_EQ(0, cursor.reset());
}

/// An implementation of the interface that is not the library's.
class ForeignNode : public IGraphConfig {
public:
    IGraphConfig* getRoot() const override { return nullptr; }
    IGraphConfig* getAncestor() const override { return nullptr; }
    int32_t getDescendantCount() const override { return 1; }
    IGraphConfig* getDescendant(uint32_t) const override { return nullptr; }
    IGraphConfig* getDescendant(const ItemUID&) const override { return nullptr; }
    IGraphConfig* getDescendantByString(const std::string&) const override { return nullptr; }
    int32_t getValue(uint32_t, int&) const override { return -2; }
    int32_t getValue(const ItemUID&, int&) const override { return -2; }
    int32_t getValue(uint32_t, std::string&) const override { return -2; }
    int32_t getValue(const ItemUID&, std::string&) const override { return -2; }
    int32_t setValue(uint32_t, int) override { return -64; }
    int32_t setValue(const ItemUID&, int) override { return -64; }
    int32_t setValue(uint32_t, const std::string&) override { return -64; }
    int32_t setValue(const ItemUID&, const std::string&) override { return -64; }
    std::string getName() const override { return "NA"; }
    uint32_t getUid() const override { return 0; }
    bool isType(uint32_t) const override { return false; }
};

TEST(NodeIterator, ForeignNodeIsTreatedLikeNone)
{
    const ForeignNode foreign;
    NodeIterator cursor(&foreign);
    LogCapture log;
    EXPECT_EQ(nullptr, cursor.iterateDescendants());
    expectLines(log, {{kError, kNullNode}});
}

TEST(NodeIterator, IsAPlainCursor)
{
    EXPECT_FALSE(std::is_polymorphic_v<NodeIterator>);
    EXPECT_TRUE((std::is_constructible_v<NodeIterator, const IGraphConfig*>));
    EXPECT_TRUE((std::is_constructible_v<NodeIterator, std::nullptr_t>));
}

TEST(NodeIterator, FindsChildrenByKey)
{
    GraphConfigNode node;
    addChild(node, NUXO_KEY_KERNEL);
    IGraphConfig* const first = addChild(node, NUXO_KEY_PORT);
    IGraphConfig* const second = addChild(node, NUXO_KEY_PORT);
    addChild(node, NUXO_KEY_SENSOR);
    NodeIterator cursor(&node);
    EXPECT_EQ(first, cursor.iterateByUid(NUXO_KEY_PORT));
    EXPECT_EQ(second, cursor.iterateByUid(NUXO_KEY_PORT));
    EXPECT_EQ(nullptr, cursor.iterateByUid(NUXO_KEY_PORT));
    EXPECT_EQ(first, cursor.iterateByUid(NUXO_KEY_PORT));
}

TEST(NodeIterator, AbsentKeyGivesNullAtOnceAndRewinds)
{
    GraphConfigNode node;
    IGraphConfig* const port = addChild(node, NUXO_KEY_PORT);
    addChild(node, NUXO_KEY_PORT);
    NodeIterator cursor(&node);
    EXPECT_EQ(port, cursor.iterateDescendants());
    EXPECT_EQ(nullptr, cursor.iterateByUid(NUXO_KEY_SENSOR));
    EXPECT_EQ(port, cursor.iterateDescendants()); // from the start
}

TEST(NodeIterator, ItemsThatAreNoNodesArePassedOverByKey)
{
    GraphConfigNode node;
    fileText(node, NUXO_KEY_PORT, "an attribute");
    IGraphConfig* const port = addChild(node, NUXO_KEY_PORT);
    fileItem(node, std::make_unique<NUXO::GraphConfigItem>(), NUXO_KEY_PORT);
    fileInteger(node, NUXO_KEY_WIDTH, 1);
    NodeIterator cursor(&node);
    EXPECT_EQ(port, cursor.iterateByUid(NUXO_KEY_PORT));
    EXPECT_EQ(nullptr, cursor.iterateByUid(NUXO_KEY_PORT));
    EXPECT_EQ(nullptr, cursor.iterateByUid(NUXO_KEY_WIDTH));
}

TEST(NodeIterator, FindsChildrenByType)
{
    GraphConfigNode node;
    IGraphConfig* const in = addTyped(node, 200, "port");
    addTyped(node, 201, "kernel");
    addChild(node, 202); // no type at all
    IGraphConfig* const out = addTyped(node, 203, "port");
    node.addValue(NUXO_KEY_TYPE, std::string("port")); // the node's own type does not matter
    LogCapture log;
    NodeIterator cursor(&node);
    EXPECT_EQ(in, cursor.iterateByType(NUXO_KEY_PORT));
    EXPECT_EQ(out, cursor.iterateByType(NUXO_KEY_PORT));
    EXPECT_EQ(nullptr, cursor.iterateByType(NUXO_KEY_PORT));
    EXPECT_EQ(in, cursor.iterateByType(NUXO_KEY_PORT));
    expectNoLines(log);
}

TEST(NodeIterator, TypeIsComparedExactly)
{
    GraphConfigNode node;
    addTyped(node, 200, "Port");
    addTyped(node, 201, "ports");
    addTyped(node, 202, "");
    fileInteger(*addChild(node, 203), NUXO_KEY_TYPE, 34);
    NodeIterator cursor(&node);
    EXPECT_EQ(nullptr, cursor.iterateByType(NUXO_KEY_PORT));
}

TEST(NodeIterator, AnotherTypeGoesOnFromWhereTheCursorStands)
{
    GraphConfigNode node;
    addTyped(node, 200, "kernel");
    IGraphConfig* const port = addTyped(node, 201, "port");
    IGraphConfig* const kernel = addTyped(node, 202, "kernel");
    addTyped(node, 203, "port");
    NodeIterator cursor(&node);
    EXPECT_EQ(port, cursor.iterateByType(NUXO_KEY_PORT));
    EXPECT_EQ(kernel, cursor.iterateByType(NUXO_KEY_KERNEL)); // the kernel in front is not seen
    EXPECT_EQ(nullptr, cursor.iterateByType(NUXO_KEY_KERNEL));
}

TEST(NodeIterator, UnknownTypeKeySearchesTheFirstNameOfTheVocabulary)
{
    GraphConfigNode node;
    IGraphConfig* const found = addTyped(node, 200, "active_input");
    NodeIterator cursor(&node);
    EXPECT_EQ(found, cursor.iterateByType(5000));
}

TEST(NodeIterator, NameOfTheTypeIsKeptUntilTheTypeChanges)
{
    const VocabularyGuard guard;
    GraphConfigNode node;
    IGraphConfig* const first = addTyped(node, 200, "mine");
    IGraphConfig* const second = addTyped(node, 201, "mine");
    nuxo_key_map["mine"] = 600;
    NodeIterator cursor(&node);
    EXPECT_EQ(first, cursor.iterateByType(600));
    nuxo_key_map.erase("mine");
    EXPECT_EQ(second, cursor.iterateByType(600)); // still the name looked up before
    EXPECT_EQ(nullptr, cursor.iterateByType(600));
    EXPECT_EQ(nullptr, cursor.iterateByType(600)); // after the rewind the name is looked up anew
}

TEST(NodeIterator, TypeZeroSearchesTheTextThatIsKept)
{
    GraphConfigNode node;
    IGraphConfig* const empty = addTyped(node, 200, "");
    IGraphConfig* const port = addTyped(node, 201, "port");
    NodeIterator fresh(&node);
    EXPECT_EQ(empty, fresh.iterateByType(NUXO_KEY_NA)); // nothing looked up yet: an empty text
    EXPECT_EQ(nullptr, fresh.iterateByType(NUXO_KEY_NA));
    EXPECT_EQ(port, fresh.iterateByType(NUXO_KEY_PORT));
    EXPECT_EQ(nullptr, fresh.iterateByType(NUXO_KEY_PORT));
    EXPECT_EQ(port, fresh.iterateByType(NUXO_KEY_NA)); // a rewind forgets the key, not the text
    EXPECT_EQ(0, fresh.reset());
    EXPECT_EQ(port, fresh.iterateByType(NUXO_KEY_NA));
}

TEST(NodeIterator, FindsChildrenByTextAttribute)
{
    GraphConfigNode node;
    addChild(node, 200)->addValue(NUXO_KEY_NAME, std::string("in"));
    GraphConfigNode* const out = addChild(node, 201);
    out->addValue(NUXO_KEY_NAME, std::string("out"));
    LogCapture log;
    NodeIterator cursor(&node);
    EXPECT_EQ(static_cast<IGraphConfig*>(out), cursor.iterateNodes(NUXO_KEY_NAME, "out"));
    EXPECT_EQ(nullptr, cursor.iterateNodes(NUXO_KEY_NAME, "out"));
    EXPECT_EQ(nullptr, cursor.iterateNodes(NUXO_KEY_NAME, "Out"));
    EXPECT_EQ(nullptr, cursor.iterateNodes(NUXO_KEY_NAME, "ou"));
    EXPECT_EQ(nullptr, cursor.iterateNodes(NUXO_KEY_FORMAT, "out"));
    expectNoLines(log);
}

TEST(NodeIterator, AnySecondAttributeOfTheKeyMayMatch)
{
    GraphConfigNode node;
    GraphConfigNode* const child = addChild(node, 200);
    fileText(*child, NUXO_KEY_PEER, "first");
    fileText(*child, NUXO_KEY_PEER, "second");
    NodeIterator cursor(&node);
    EXPECT_EQ(static_cast<IGraphConfig*>(child), cursor.iterateNodes(NUXO_KEY_PEER, "second"));
}

TEST(NodeIterator, IntegerAttributesNeverMatch)
{
    GraphConfigNode node;
    addChild(node, 200)->addValue(NUXO_KEY_WIDTH, 1920);
    GraphConfigNode* const mixed = addChild(node, 201);
    fileInteger(*mixed, NUXO_KEY_WIDTH, 1920);
    fileText(*mixed, NUXO_KEY_WIDTH, "1920"); // behind an integer: not reached
    NodeIterator cursor(&node);
    EXPECT_EQ(nullptr, cursor.iterateNodes(NUXO_KEY_WIDTH, "1920"));
}

TEST(NodeIterator, MixedSearchesShareTheirPlace)
{
    GraphConfigNode node;
    addTyped(node, NUXO_KEY_PORT, "a");
    IGraphConfig* const second = addTyped(node, NUXO_KEY_PORT, "sensor");
    IGraphConfig* const third = addTyped(node, NUXO_KEY_PORT, "c");
    IGraphConfig* const fourth = addTyped(node, NUXO_KEY_SENSOR, "d");
    NodeIterator cursor(&node);
    EXPECT_EQ(second, cursor.iterateByType(NUXO_KEY_SENSOR));
    EXPECT_EQ(third, cursor.iterateByUid(NUXO_KEY_PORT));
    EXPECT_EQ(fourth, cursor.iterateDescendants());
    EXPECT_EQ(nullptr, cursor.iterateNodes(NUXO_KEY_TYPE, "a"));
    EXPECT_EQ(second, cursor.iterateNodes(NUXO_KEY_TYPE, "sensor"));
}

TEST(NodeIterator, ResetRewinds)
{
    GraphConfigNode node;
    IGraphConfig* const first = addChild(node, NUXO_KEY_PORT);
    addChild(node, NUXO_KEY_PORT);
    NodeIterator cursor(&node);
    EXPECT_EQ(first, cursor.iterateDescendants());
    EXPECT_EQ(0, cursor.reset());
    EXPECT_EQ(first, cursor.iterateDescendants());
}

TEST(NodeIterator, ResetForgetsTheType)
{
    const VocabularyGuard guard;
    GraphConfigNode node;
    IGraphConfig* const old = addTyped(node, 200, "old_name");
    IGraphConfig* const renamed = addTyped(node, 201, "new_name");
    nuxo_key_map["old_name"] = 600;
    NodeIterator cursor(&node);
    EXPECT_EQ(old, cursor.iterateByType(600));
    nuxo_key_map.erase("old_name");
    nuxo_key_map["new_name"] = 600;
    EXPECT_EQ(0, cursor.reset());
    EXPECT_EQ(renamed, cursor.iterateByType(600));
}

TEST(NodeIterator, CountsItemsSoThatEditingShiftsWhatItSees)
{
    GraphConfigNode node;
    addChild(node, NUXO_KEY_PORT);
    addChild(node, NUXO_KEY_PORT);
    IGraphConfig* const third = addChild(node, NUXO_KEY_PORT);
    NodeIterator cursor(&node);
    (void)cursor.iterateDescendants();
    node.removeDescendant(NUXO_KEY_PORT); // one passed item is gone: the next one slips past
    EXPECT_EQ(third, cursor.iterateDescendants());
}

TEST(NodeIterator, PassedAttributesCountToo)
{
    GraphConfigNode node;
    node.addValue(NUXO_KEY_FORMAT, std::string("x")); // position 0
    IGraphConfig* const first = addChild(node, NUXO_KEY_PORT);
    IGraphConfig* const second = addChild(node, NUXO_KEY_PORT);
    NodeIterator cursor(&node);
    EXPECT_EQ(first, cursor.iterateDescendants()); // two items are passed now
    node.removeDescendant(NUXO_KEY_FORMAT);        // the second child now stands at position 1
    EXPECT_EQ(nullptr, cursor.iterateDescendants());
    EXPECT_EQ(first, cursor.iterateDescendants());
    EXPECT_EQ(second, cursor.iterateDescendants());
}

TEST(NodeIterator, NodeThatShrankBelowTheCursorEndsTheWalk)
{
    GraphConfigNode node;
    for (int i = 0; i < 4; ++i) addChild(node, NUXO_KEY_PORT);
    NodeIterator cursor(&node);
    for (int i = 0; i < 3; ++i) EXPECT_NE(nullptr, cursor.iterateDescendants());
    for (int i = 0; i < 3; ++i) node.removeDescendant(NUXO_KEY_PORT);
    EXPECT_EQ(nullptr, cursor.iterateDescendants());
    EXPECT_EQ(node.getDescendant(NUXO_KEY_PORT), cursor.iterateDescendants());
}

} // namespace
