// SPDX-License-Identifier: Apache-2.0
// Every allocation of the tree's operations fails in turn, once and for good.
#include "ExpectLog.h"
#include "TreeTestSupport.h"
#include "VocabularyGuard.h"

#include <nuxo/tree/GraphConfigNode.h>
#include <nuxo/tree/NodeIterator.h>

#include <support/AllocationFailures.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <utility>

namespace {

using NUXO::GraphConfigAttribute;
using NUXO::GraphConfigItem;
using NUXO::GraphConfigNode;
using NUXO::GraphConfigStrAttribute;
using NUXO::IGraphConfig;
using NUXO::ItemUID;

const std::string kLong(200, 'x'); // too long to be kept inside a std::string

/// root { port { peer x 4, format }, name }, both nodes with some more items.
NodePtr makeTree(int extraItems)
{
    NodePtr root = makeNode();
    GraphConfigNode* const port = addChild(*root, NUXO_KEY_PORT);
    for (int i = 0; i < 4; ++i) fileText(*port, NUXO_KEY_PEER, kLong + std::to_string(i));
    port->addValue(NUXO_KEY_FORMAT, kLong);
    for (int i = 0; i < extraItems; ++i) {
        fileInteger(*port, NUXO_KEY_ID, i);
        fileInteger(*root, NUXO_KEY_ID, i);
    }
    root->addValue(NUXO_KEY_NAME, kLong);
    return root;
}

/// Operations on trees of several sizes, as growth of the item arrays comes at some sizes only.
class TreeAllocation : public ::testing::TestWithParam<bool> {
protected:
    /// Runs @p action on a tree, each of its allocations failing in turn. It returns the status of the operation; what
    /// fails must return -4 and leave the tree unchanged. @return number of failing runs
    size_t expectNoMemory(const std::function<int32_t(GraphConfigNode&)>& action)
    {
        return expectStatus(action, [](int32_t status) { return status == StatusNoMemory; });
    }

    size_t expectStatus(const std::function<int32_t(GraphConfigNode&)>& action,
                        const std::function<bool(int32_t)>& isFailure)
    {
        size_t failed = 0;
        const size_t liveBefore = AllocationFailures::live();
        for (int extra = 0; extra < 8; ++extra) {
            for (size_t n = 1;; ++n) {
                const NodePtr root = makeTree(extra);
                const std::string before = contentOf(*root);
                int32_t status = 1;
                AllocationFailures failures;
                GetParam() ? failures.failFrom(n) : failures.failOnce(n);
                const bool threw = escapes([&] { status = action(*root); });
                const bool reached = failures.failures() > 0;
                failures.stop();
                EXPECT_FALSE(threw) << "allocation " << n;
                if (!reached) {
                    EXPECT_EQ(0, status);
                    break;
                }
                ++failed;
                if (status == 0) continue;
                EXPECT_TRUE(isFailure(status)) << "allocation " << n << " gives " << status;
                EXPECT_EQ(before, contentOf(*root)) << "allocation " << n;
            }
        }
        EXPECT_EQ(liveBefore, AllocationFailures::live());
        return failed;
    }

    /// Like expectNoMemory for operations that only have to come back without throwing.
    void expectNoThrow(const std::function<void(GraphConfigNode&)>& action)
    {
        (void)expectStatus(
            [&action](GraphConfigNode& root) {
                action(root);
                return 0;
            },
            [](int32_t) { return true; });
    }

    LogCapture mLog;
};

INSTANTIATE_TEST_SUITE_P(OnceAndForGood, TreeAllocation, ::testing::Bool(),
                         [](const auto& run) { return run.param ? "ForGood" : "Once"; });

TEST_P(TreeAllocation, AddValueOfAnInteger)
{
    EXPECT_GT(expectNoMemory([](GraphConfigNode& root) { return root.addValue(NUXO_KEY_WIDTH, 1); }), 0U);
}

TEST_P(TreeAllocation, AddValueOfAText)
{
    EXPECT_GT(expectNoMemory([](GraphConfigNode& root) { return root.addValue(NUXO_KEY_FORMAT, kLong); }), 0U);
}

TEST_P(TreeAllocation, InsertDescendantLeavesTheItemToItsCaller)
{
    const size_t failed = expectNoMemory([](GraphConfigNode& root) {
        NodePtr item;
        try {
            item = makeNode();
        } catch (const std::bad_alloc&) {
            return static_cast<int32_t>(StatusNoMemory);
        }
        const int32_t status = root.insertDescendant(item.get(), NUXO_KEY_SENSOR);
        if (status == StatusOk) (void)item.release(); // else it goes with this scope: a second owner would crash
        return status;
    });
    EXPECT_GT(failed, 0U);
}

TEST_P(TreeAllocation, CopyGivesNothing)
{
    const size_t failed = expectNoMemory([](GraphConfigNode& root) {
        const NodePtr copy(root.copy());
        return static_cast<int32_t>(copy != nullptr ? StatusOk : StatusNoMemory);
    });
    EXPECT_GT(failed, 0U);
}

TEST_P(TreeAllocation, CreateAttributeInThisNode)
{
    const ItemUID path{NUXO_KEY_WIDTH};
    const size_t failed = expectNoMemory([&path](GraphConfigNode& root) {
        GraphConfigItem unrelated;
        GraphConfigAttribute* out = &unrelated;
        const int32_t status = root.createAttribute(path, &out);
        EXPECT_EQ(status == 0, out != nullptr);
        return status;
    });
    EXPECT_GT(failed, 0U);
}

TEST_P(TreeAllocation, CreateAttributeInAChild)
{
    const ItemUID path{NUXO_KEY_PORT, NUXO_KEY_CONTENT_TYPE};
    const size_t failed = expectNoMemory([&path](GraphConfigNode& root) {
        GraphConfigAttribute* out = nullptr;
        return root.createAttribute(path, &out);
    });
    EXPECT_GT(failed, 0U);
}

TEST_P(TreeAllocation, CreateAttributeWithItsNode)
{
    for (const uint32_t last : {NUXO_KEY_WIDTH, NUXO_KEY_FORMAT}) {
        const ItemUID path{NUXO_KEY_PORT, NUXO_KEY_HW, last};
        const size_t failed = expectNoMemory([&path](GraphConfigNode& root) {
            GraphConfigAttribute* out = nullptr;
            return root.createAttribute(path, &out);
        });
        EXPECT_GT(failed, 0U);
    }
}

TEST_P(TreeAllocation, RefusedCreationKeepsItsStatus)
{
    for (const ItemUID& path : {ItemUID{NUXO_KEY_PORT, NUXO_KEY_FORMAT}, ItemUID{NUXO_KEY_PORT},
                                ItemUID{NUXO_KEY_HW, NUXO_KEY_GRAPH_DESCRIPTOR, NUXO_KEY_PSYS_FREQUENCY}}) {
        expectNoThrow([&path](GraphConfigNode& root) {
            GraphConfigAttribute* out = nullptr;
            const int32_t status = root.createAttribute(path, &out);
            EXPECT_TRUE(status == StatusMissingData || status == StatusNoMemory) << status;
            EXPECT_EQ(nullptr, out);
        });
    }
}

TEST_P(TreeAllocation, RefusedLookupKeepsItsStatus)
{
    for (const ItemUID& path :
         {ItemUID{NUXO_KEY_HW, NUXO_KEY_GRAPH_DESCRIPTOR, NUXO_KEY_PSYS_FREQUENCY}, ItemUID{NUXO_KEY_PORT}}) {
        expectNoThrow([&path](GraphConfigNode& root) {
            GraphConfigAttribute* out = nullptr;
            EXPECT_EQ(StatusNotFound, root.getAttribute(path, &out));
            EXPECT_EQ(nullptr, out);
        });
    }
}

TEST_P(TreeAllocation, SetValueFromStrOnAnExistingText)
{
    const ItemUID path{NUXO_KEY_PORT, NUXO_KEY_FORMAT};
    const size_t failed = expectNoMemory([&path](GraphConfigNode& root) {
        std::string text;
        try {
            text.assign(1000, 'y');
        } catch (const std::bad_alloc&) {
            return static_cast<int32_t>(StatusNoMemory);
        }
        return root.setValueFromStr(path, std::move(text));
    });
    EXPECT_GT(failed, 0U);
}

TEST_P(TreeAllocation, SetValueFromStrOnAMissingAttribute)
{
    for (const ItemUID& path : {ItemUID{NUXO_KEY_WIDTH}, ItemUID{NUXO_KEY_PORT, NUXO_KEY_CONTENT_TYPE}}) {
        mLog.clear();
        const size_t failed =
            expectStatus([&path](GraphConfigNode& root) { return root.setValueFromStr(path, "12"); },
                         [](int32_t status) { return status == StatusNoMemory || status == StatusNotFound; });
        EXPECT_GT(failed, 0U);
        EXPECT_GT(mLog.count(kError, "NUXO[XOS]", "Could not create attribute"), 0U);
    }
}

TEST_P(TreeAllocation, ReadingATextLeavesTheOutputOnFailure)
{
    const ItemUID path{NUXO_KEY_PORT, NUXO_KEY_FORMAT};
    const ItemUID own{NUXO_KEY_NAME};
    const uint32_t key = NUXO_KEY_NAME;
    const std::function<int32_t(GraphConfigNode&, std::string&)> reads[] = {
        [&](GraphConfigNode& root, std::string& out) { return root.getValue(path, out); },
        [&](GraphConfigNode& root, std::string& out) { return root.getValue(own, out); },
        [&](GraphConfigNode& root, std::string& out) { return root.getValue(key, out); },
        [&](GraphConfigNode& root, std::string& out) { return root.begin()->second->getValue(out); },
    };
    for (const auto& read : reads) {
        const size_t failed = expectNoMemory([&read](GraphConfigNode& root) {
            std::string out = "before";
            const int32_t status = read(root, out);
            EXPECT_TRUE(status == 0 ? out == kLong : out == "before");
            return status;
        });
        EXPECT_GT(failed, 0U);
    }
}

TEST_P(TreeAllocation, StoringATextKeepsTheOldOneOnFailure)
{
    const std::string longer(1000, 'y');
    const size_t failed = expectNoMemory([&longer](GraphConfigNode& root) {
        auto* const name = static_cast<GraphConfigStrAttribute*>(root.begin()->second);
        return name->setValue(longer);
    });
    EXPECT_GT(failed, 0U);
}

TEST_P(TreeAllocation, CopyOfAnAttributeGivesNothing)
{
    const size_t failed = expectNoMemory([](GraphConfigNode& root) {
        auto* const name = static_cast<GraphConfigStrAttribute*>(root.begin()->second);
        const std::unique_ptr<GraphConfigStrAttribute> copy(name->copy());
        return static_cast<int32_t>(copy != nullptr ? StatusOk : StatusNoMemory);
    });
    EXPECT_GT(failed, 0U);
}

TEST_P(TreeAllocation, ByKeySettersLetNothingOut)
{
    expectNoThrow([](GraphConfigNode& root) {
        const int32_t status = root.setValue(NUXO_KEY_NAME, kLong);
        EXPECT_TRUE(status == StatusNotFound || status == StatusNoMemory) << status;
    });
    expectNoThrow([](GraphConfigNode& root) { EXPECT_NE(0, root.setValue(NUXO_KEY_ID, -2000000000)); });
}

TEST_P(TreeAllocation, NavigationByTextLetsNothingOut)
{
    const std::string path = "port:port:port:port:port:port:port:port:port";
    expectNoThrow([&path](GraphConfigNode& root) {
        EXPECT_EQ(nullptr, root.getDescendantByString(path));
        GraphConfigNode* out = nullptr;
        const int32_t status = root.getDescendantByString(path, &out);
        EXPECT_TRUE(status == StatusBadArgument || status == StatusNoMemory) << status;
        EXPECT_EQ(nullptr, out);
    });
}

TEST_P(TreeAllocation, NamesTypesAndDumpsLetNothingOut)
{
    const VocabularyGuard guard;
    nuxo_key_map[kLong] = 600;
    expectNoThrow([](GraphConfigNode& root) {
        IGraphConfig* const port = root.getDescendant(NUXO_KEY_PORT);
        (void)port->isType(NUXO_KEY_PORT);
        GraphConfigNode::dumpNodeTree(&root, 40);
        root.dumpNode();
    });
    const NodePtr parent = makeNode();
    const GraphConfigNode* const child = addChild(*parent, 600);
    expectNoThrow([child](GraphConfigNode&) { (void)child->getName(); });
    expectNoThrow([child](GraphConfigNode&) { EXPECT_FALSE(child->isType(NUXO_KEY_PORT)); });
}

TEST_P(TreeAllocation, SearchesLetNothingOut)
{
    const VocabularyGuard guard;
    nuxo_key_map[kLong] = 600;
    expectNoThrow([](GraphConfigNode& root) {
        NUXO::NodeIterator cursor(&root);
        EXPECT_EQ(nullptr, cursor.iterateByType(600));
        (void)cursor.iterateNodes(NUXO_KEY_PEER, kLong);
        GraphConfigNode::iterator it = root.begin();
        GraphConfigNode* out = nullptr;
        (void)root.getDescendant(NUXO_KEY_PEER, kLong, it, &out);
    });
}

TEST_P(TreeAllocation, VocabularyGrowsOrStaysAsItIs)
{
    const VocabularyGuard guard;
    std::map<std::string, uint32_t> original = guard.saved();
    for (size_t n = 1;; ++n) {
        AllocationFailures failures;
        GetParam() ? failures.failFrom(n) : failures.failOnce(n);
        const uint32_t key = ItemUID::generateKey(kLong);
        const bool reached = failures.failures() > 0;
        failures.stop();
        if (!reached) {
            EXPECT_EQ(original.size(), key);
            EXPECT_EQ(key, ItemUID::str2key(kLong));
            EXPECT_GT(n, 1U);
            break;
        }
        EXPECT_EQ(0U, key) << "allocation " << n;
        EXPECT_EQ(original, nuxo_key_map) << "allocation " << n;
        NUXO::copyNuxoKeys(original);
    }
}

TEST_P(TreeAllocation, ReplacingTheVocabularyLetsNothingOut)
{
    const VocabularyGuard guard;
    std::map<std::string, uint32_t> original = guard.saved();
    std::map<std::string, uint32_t> other = {{kLong + "1", 1}, {kLong + "2", 2}, {kLong + "3", 3}};
    for (size_t n = 1; n <= 8; ++n) {
        std::map<std::string, uint32_t> out;
        AllocationFailures failures;
        GetParam() ? failures.failFrom(n) : failures.failOnce(n);
        const bool threw = escapes([&] {
            ItemUID::addCustomKeyMap(other);
            NUXO::getNuxoKeys(out);
            NUXO::copyNuxoKeys(other);
        });
        failures.stop();
        EXPECT_FALSE(threw) << "allocation " << n;
        NUXO::copyNuxoKeys(original);
        EXPECT_EQ(original, nuxo_key_map);
    }
}

TEST(TreeWithoutMemory, RemovingAndDestroyingNeedNoMemory)
{
    const size_t liveBefore = AllocationFailures::live();
    NodePtr root = makeTree(10);
    NodePtr tree = makeTree(10);
    for (int i = 0; i < 1000; ++i) {
        NodePtr outer = makeTree(3);
        fileItem(*outer, std::move(tree), NUXO_KEY_NODE);
        tree = std::move(outer);
    }
    fileItem(*root, std::move(tree), NUXO_KEY_NODE);
    AllocationFailures failures;
    failures.failFrom(1);
    const int32_t attribute = root->removeDescendant(NUXO_KEY_NAME);
    const int32_t node = root->removeDescendant(NUXO_KEY_NODE);
    const size_t asked = failures.failures();
    root.reset();
    const size_t askedInAll = failures.failures();
    failures.stop();
    EXPECT_EQ(0, attribute);
    EXPECT_EQ(0, node);
    EXPECT_EQ(0U, asked);
    EXPECT_EQ(0U, askedInAll);
    EXPECT_EQ(liveBefore, AllocationFailures::live());
}

} // namespace
