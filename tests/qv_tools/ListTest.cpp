// SPDX-License-Identifier: Apache-2.0
#include <qv_tools/qv_list.h>

#include <qv_cipr/qv_cipr_alloc.h>
#include <qv_cipr/qv_log_common.h>
#include <support/LogCapture.h>

#include <gtest/gtest.h>

#include <vector>

namespace {

constexpr const char* kTag = "QV_LIST[XOS]";
constexpr const char* kAllocTag = "CIPR_ALLOC[XOS]";

class List : public testing::Test {
protected:
    ~List() override
    {
        g_alloc_error = UINT32_MAX;
        while (mList != nullptr) {
            qv_list* element = mList;
            mList = element->next;
            qv_list_destroy(element);
        }
        EXPECT_EQ(g_alloc_counter - mAllocatedBefore, g_free_counter - mFreedBefore) << "every element is freed";
    }

    std::vector<void*> contents() const
    {
        std::vector<void*> result;
        for (const qv_list* element = mList; element != nullptr; element = element->next)
            result.push_back(element->data);
        return result;
    }

    void makeAllocationsFail() { g_alloc_error = g_alloc_counter; }

    uint32_t mAllocatedBefore = g_alloc_counter;
    uint32_t mFreedBefore = g_free_counter;
    qv_list* mList = nullptr;
    int mA = 0;
    int mB = 0;
    int mC = 0;
};

TEST_F(List, CreateGivesOneElementWithoutData)
{
    mList = qv_list_create();
    ASSERT_NE(mList, nullptr);
    EXPECT_EQ(mList->data, nullptr);
    EXPECT_EQ(mList->next, nullptr);
    EXPECT_EQ(qv_list_length(mList), 1u);
    EXPECT_TRUE(qv_list_contains(mList, nullptr));
}

TEST_F(List, CreateIsCountedUnderItsName)
{
    const LogCapture log;
    mList = qv_list_create();
    ASSERT_EQ(log.count(), 1u);
    EXPECT_EQ(log.lines()[0].tag, kAllocTag);
    // One element is two pointers: 16 bytes.
    EXPECT_EQ(log.lines()[0].message.rfind("E:qv_cipr_calloc nmemb 1 size 16 from qv_list_create res ptr: 0x", 0), 0u);
    EXPECT_EQ(g_alloc_counter, mAllocatedBefore + 1);
}

TEST_F(List, CreateReturnsNullSilentlyWhenMemoryIsExhausted)
{
    const LogCapture log;
    makeAllocationsFail();
    EXPECT_EQ(qv_list_create(), nullptr);
    EXPECT_TRUE(log.isEmpty());
}

TEST_F(List, DestroyIsCountedUnderItsName)
{
    qv_list* element = qv_list_create();
    const LogCapture log;
    qv_list_destroy(element);
    ASSERT_EQ(log.count(), 1u);
    const std::string message = log.lines()[0].message;
    EXPECT_EQ(message.rfind("E:qv_cipr_free ptr 0x", 0), 0u);
    EXPECT_NE(message.find(" from qv_list_destroy"), std::string::npos);
    EXPECT_EQ(g_free_counter, mFreedBefore + 1);
}

TEST_F(List, DestroyIgnoresNullSilently)
{
    const LogCapture log;
    qv_list_destroy(nullptr);
    EXPECT_TRUE(log.isEmpty());
    EXPECT_EQ(g_free_counter, mFreedBefore);
}

TEST_F(List, DestroyFreesOneElementOnly)
{
    ASSERT_EQ(qv_list_append(&mList, &mA), 0);
    ASSERT_EQ(qv_list_append(&mList, &mB), 0);
    ASSERT_EQ(qv_list_append(&mList, &mC), 0);
    qv_list* rest = mList->next;
    qv_list_destroy(mList);
    mList = rest;
    EXPECT_EQ(g_free_counter, mFreedBefore + 1);
    EXPECT_EQ(contents(), (std::vector<void*>{&mB, &mC}));
}

TEST_F(List, AppendToAnEmptyListMakesTheFirstElement)
{
    EXPECT_EQ(qv_list_append(&mList, &mA), 0);
    EXPECT_EQ(contents(), std::vector<void*>{&mA});
}

TEST_F(List, AppendPutsLastAndPrependPutsFirst)
{
    EXPECT_EQ(qv_list_append(&mList, &mA), 0);
    EXPECT_EQ(qv_list_append(&mList, &mB), 0);
    EXPECT_EQ(qv_list_prepend(&mList, &mC), 0);
    EXPECT_EQ(contents(), (std::vector<void*>{&mC, &mA, &mB}));
}

TEST_F(List, PrependToAnEmptyListMakesTheFirstElement)
{
    EXPECT_EQ(qv_list_prepend(&mList, &mA), 0);
    EXPECT_EQ(contents(), std::vector<void*>{&mA});
}

TEST_F(List, AppendRefusesANullAddressBeforeAllocating)
{
    EXPECT_EQ(qv_list_append(nullptr, &mA), -32);
    EXPECT_EQ(g_alloc_counter, mAllocatedBefore);
}

TEST_F(List, PrependRefusesANullAddress)
{
    EXPECT_EQ(qv_list_prepend(nullptr, &mA), -32);
    EXPECT_EQ(g_alloc_counter, mAllocatedBefore);
}

TEST_F(List, AppendWithoutMemoryLeavesTheListAlone)
{
    ASSERT_EQ(qv_list_append(&mList, &mA), 0);
    LogCapture log;
    makeAllocationsFail();
    EXPECT_EQ(qv_list_append(&mList, &mB), -4);
    EXPECT_TRUE(log.hasOnly(LogCapture::Error, kTag, "could not create new list element"));
    EXPECT_EQ(contents(), std::vector<void*>{&mA});
    EXPECT_EQ(log.linesOfLevel(QV_LOG_ERROR, [&] { (void)qv_list_append(&mList, &mB); }).size(), 1u);
}

TEST_F(List, PrependWithoutMemoryLeavesTheListAlone)
{
    ASSERT_EQ(qv_list_append(&mList, &mA), 0);
    const LogCapture log;
    makeAllocationsFail();
    EXPECT_EQ(qv_list_prepend(&mList, &mB), -4);
    EXPECT_TRUE(log.hasOnly(LogCapture::Error, kTag, "could not create new list element"));
    EXPECT_EQ(contents(), std::vector<void*>{&mA});
}

TEST_F(List, ContainsComparesPointers)
{
    EXPECT_FALSE(qv_list_contains(mList, &mA));
    ASSERT_EQ(qv_list_append(&mList, &mA), 0);
    ASSERT_EQ(qv_list_append(&mList, &mB), 0);
    EXPECT_TRUE(qv_list_contains(mList, &mA));
    EXPECT_TRUE(qv_list_contains(mList, &mB));
    // mC holds the same value as mA, but stands elsewhere.
    EXPECT_FALSE(qv_list_contains(mList, &mC));
    EXPECT_FALSE(qv_list_contains(mList, nullptr));
}

TEST_F(List, DataAtCountsFromZero)
{
    EXPECT_EQ(qv_list_data_at(mList, 0), nullptr);
    ASSERT_EQ(qv_list_append(&mList, &mA), 0);
    EXPECT_EQ(qv_list_data_at(mList, 0), &mA);
    EXPECT_EQ(qv_list_data_at(mList, 1), nullptr);
    ASSERT_EQ(qv_list_append(&mList, &mB), 0);
    EXPECT_EQ(qv_list_data_at(mList, 1), &mB);
    EXPECT_EQ(qv_list_data_at(mList, UINT32_MAX), nullptr);
}

TEST_F(List, RemoveTakesTheFirstOccurrenceOnly)
{
    ASSERT_EQ(qv_list_append(&mList, &mA), 0);
    ASSERT_EQ(qv_list_append(&mList, &mB), 0);
    ASSERT_EQ(qv_list_append(&mList, &mC), 0);
    ASSERT_EQ(qv_list_append(&mList, &mB), 0);
    EXPECT_TRUE(qv_list_remove(&mList, &mB));
    EXPECT_EQ(contents(), (std::vector<void*>{&mA, &mC, &mB}));
    EXPECT_EQ(g_free_counter, mFreedBefore + 1);
}

TEST_F(List, RemoveOfTheFirstElementMovesTheList)
{
    ASSERT_EQ(qv_list_append(&mList, &mA), 0);
    ASSERT_EQ(qv_list_append(&mList, &mB), 0);
    EXPECT_TRUE(qv_list_remove(&mList, &mA));
    EXPECT_EQ(contents(), std::vector<void*>{&mB});
    EXPECT_TRUE(qv_list_remove(&mList, &mB));
    EXPECT_EQ(mList, nullptr);
}

TEST_F(List, RemoveFindsNothing)
{
    EXPECT_FALSE(qv_list_remove(nullptr, &mA));
    EXPECT_FALSE(qv_list_remove(&mList, &mA));
    ASSERT_EQ(qv_list_append(&mList, &mA), 0);
    EXPECT_FALSE(qv_list_remove(&mList, &mB));
    EXPECT_EQ(contents(), std::vector<void*>{&mA});
}

TEST_F(List, LengthCountsElements)
{
    EXPECT_EQ(qv_list_length(nullptr), 0u);
    for (uint32_t n = 1; n <= 5; ++n) {
        ASSERT_EQ(qv_list_append(&mList, &mA), 0);
        EXPECT_EQ(qv_list_length(mList), n);
    }
}

} // namespace
