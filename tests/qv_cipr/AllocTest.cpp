// SPDX-License-Identifier: Apache-2.0
#include <qv_cipr/qv_cipr_alloc.h>

#include <qv_cipr/qv_log_common.h>

#include <support/LogCapture.h>

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>
#include <vector>

// In a sanitized build, too, an impossible request gives null, as it does for clients.
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1";
}

namespace {

constexpr const char* kTag = "CIPR_ALLOC[XOS]";

__attribute__((format(printf, 1, 2))) std::string formatted(const char* format, ...)
{
    char text[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof(text), format, args);
    va_end(args);
    return text;
}

class Alloc : public testing::Test {
protected:
    ~Alloc() override { g_alloc_error = UINT32_MAX; }

    uint32_t allocated() const { return g_alloc_counter - mAllocatedBefore; }
    uint32_t freed() const { return g_free_counter - mFreedBefore; }

    uint32_t mAllocatedBefore = g_alloc_counter;
    uint32_t mFreedBefore = g_free_counter;
    LogCapture mLog;
};

TEST(AllocGlobals, HaveTheirInitialValues)
{
    EXPECT_EQ(g_alloc_error, 4294967295u);
    EXPECT_EQ(sizeof(g_alloc_counter), 4u);
    EXPECT_EQ(sizeof(g_free_counter), 4u);
}

TEST_F(Alloc, MallocCountsAndLogs)
{
    void* ptr = qv_cipr_malloc(24, "caller", "file.c", 7);
    ASSERT_NE(ptr, nullptr);
    EXPECT_EQ(allocated(), 1u);
    EXPECT_TRUE(
        mLog.hasOnly(LogCapture::Debug, kTag, formatted("E:qv_cipr_malloc size 24 from caller res ptr: %p", ptr)));
    qv_cipr_free(ptr, "caller");
}

TEST_F(Alloc, CallocZeroesCountsAndLogs)
{
    auto* bytes = static_cast<unsigned char*>(qv_cipr_calloc(3, 100, "caller", "file.c", 7));
    ASSERT_NE(bytes, nullptr);
    for (int i = 0; i < 300; ++i) ASSERT_EQ(bytes[i], 0);
    EXPECT_EQ(allocated(), 1u);
    EXPECT_TRUE(mLog.hasOnly(
        LogCapture::Debug, kTag,
        formatted("E:qv_cipr_calloc nmemb 3 size 100 from caller res ptr: %p", static_cast<void*>(bytes))));
    qv_cipr_free(bytes, "caller");
}

TEST_F(Alloc, AlignedAllocationIsAlignedCountsAndLogs)
{
    void* ptr = qv_cipr_alloc_aligned(100, 4096, "caller", "file.c", 7);
    ASSERT_NE(ptr, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(ptr) % 4096, 0u);
    EXPECT_EQ(allocated(), 1u);
    EXPECT_TRUE(
        mLog.hasOnly(LogCapture::Debug, kTag,
                     formatted("E:qv_cipr_alloc_aligned size 100 with alignment 4096 from caller res ptr: %p", ptr)));
    qv_cipr_free(ptr, "caller");
}

TEST_F(Alloc, FreeLogsAndCounts)
{
    void* ptr = qv_cipr_malloc(1, "caller", "file.c", 7);
    const std::string expected = formatted("E:qv_cipr_free ptr %p from other", ptr);
    mLog.clear();
    qv_cipr_free(ptr, "other");
    EXPECT_TRUE(mLog.hasOnly(LogCapture::Debug, kTag, expected));
    EXPECT_EQ(freed(), 1u);
}

TEST_F(Alloc, FreeOfNullLogsButDoesNotCount)
{
    qv_cipr_free(nullptr, "caller");
    EXPECT_TRUE(mLog.hasOnly(LogCapture::Debug, kTag, "E:qv_cipr_free ptr (nil) from caller"));
    EXPECT_EQ(freed(), 0u);
}

TEST_F(Alloc, AllLinesAreAllocationTrace)
{
    EXPECT_EQ(mLog.linesOfLevel(QV_LOG_ALLOCATION,
                                [] {
                                    qv_cipr_free(qv_cipr_malloc(1, "t", "f", 1), "t");
                                    qv_cipr_free(qv_cipr_calloc(1, 1, "t", "f", 1), "t");
                                    qv_cipr_free(qv_cipr_alloc_aligned(1, 16, "t", "f", 1), "t");
                                })
                  .size(),
              6u);
}

TEST_F(Alloc, NullTagIsEmpty)
{
    qv_cipr_free(nullptr, nullptr);
    EXPECT_TRUE(mLog.hasOnly(LogCapture::Debug, kTag, "E:qv_cipr_free ptr (nil) from "));
}

TEST_F(Alloc, RealFailureLogsANullResultButDoesNotCount)
{
    // More than half of the address space cannot be had; volatile keeps the compiler from saying so.
    volatile size_t huge = SIZE_MAX / 2 + 1;
    EXPECT_EQ(qv_cipr_malloc(huge, "caller", "f", 1), nullptr);
    EXPECT_EQ(qv_cipr_calloc(huge, 2, "caller", "f", 1), nullptr);
    EXPECT_EQ(allocated(), 0u);
    ASSERT_EQ(mLog.count(), 2u);
    EXPECT_TRUE(mLog.has(LogCapture::Debug, kTag,
                         formatted("E:qv_cipr_malloc size %zu from caller res ptr: (nil)", size_t{huge})));
    EXPECT_TRUE(mLog.has(LogCapture::Debug, kTag,
                         formatted("E:qv_cipr_calloc nmemb %zu size 2 from caller res ptr: (nil)", size_t{huge})));
}

TEST_F(Alloc, FailedAlignedAllocationIsSilent)
{
    // 24 is no power of two.
    EXPECT_EQ(qv_cipr_alloc_aligned(8, 24, "caller", "f", 1), nullptr);
    EXPECT_EQ(allocated(), 0u);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(Alloc, ForcedFailureNeitherAllocatesNorLogsNorCounts)
{
    const std::vector<std::function<void*()>> functions = {
        [] { return qv_cipr_malloc(8, "t", "f", 1); },
        [] { return qv_cipr_calloc(1, 8, "t", "f", 1); },
        [] { return qv_cipr_alloc_aligned(8, 16, "t", "f", 1); },
    };
    g_alloc_error = g_alloc_counter;
    for (const auto& function : functions) EXPECT_EQ(function(), nullptr);
    EXPECT_EQ(allocated(), 0u);
    EXPECT_TRUE(mLog.isEmpty());

    g_alloc_error = UINT32_MAX;
    for (const auto& function : functions) {
        void* ptr = function();
        EXPECT_NE(ptr, nullptr);
        qv_cipr_free(ptr, "t");
    }
}

TEST_F(Alloc, AllocationsFailAfterTheNthSuccessUntilTheValueChanges)
{
    g_alloc_error = g_alloc_counter + 2;
    std::vector<void*> blocks;
    for (int i = 0; i < 5; ++i) blocks.push_back(qv_cipr_malloc(8, "t", "f", 1));
    EXPECT_NE(blocks[0], nullptr);
    EXPECT_NE(blocks[1], nullptr);
    for (size_t i = 2; i < 5; ++i) EXPECT_EQ(blocks[i], nullptr);
    EXPECT_EQ(allocated(), 2u);

    // Equality, not "at least": a value that has been passed has no effect.
    g_alloc_error = mAllocatedBefore;
    void* more = qv_cipr_malloc(8, "t", "f", 1);
    EXPECT_NE(more, nullptr);
    for (void* block : {blocks[0], blocks[1], more}) qv_cipr_free(block, "t");
    EXPECT_EQ(freed(), 3u);
}

TEST_F(Alloc, CountersAreAtomic)
{
    mLog.setMask(0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < 10000; ++i) qv_cipr_free(qv_cipr_malloc(1, "t", "f", 1), "t");
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(allocated(), 40000u);
    EXPECT_EQ(freed(), 40000u);
}

TEST_F(Alloc, MemcopyCopiesTheSourceIntoALargerDestination)
{
    char destination[] = "........";
    qv_cipr_memcopy(destination, 8, "abc", 3);
    EXPECT_STREQ(destination, "abc.....");
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(Alloc, MemcopyIntoASmallerDestinationIsCutAndWarned)
{
    char destination[] = "........";
    qv_cipr_memcopy(destination, 2, "abc", 3);
    EXPECT_STREQ(destination, "ab......");
    EXPECT_TRUE(mLog.hasOnly(LogCapture::Warning, kTag,
                             "qv_cipr_memcopy: destination size is smaller than source size, potential coding error"));
    EXPECT_EQ(mLog.linesOfLevel(QV_LOG_WARNING, [&] { qv_cipr_memcopy(destination, 2, "abc", 3); }).size(), 1u);
}

TEST_F(Alloc, MemcopyOfNothingTouchesNothing)
{
    qv_cipr_memcopy(nullptr, 0, nullptr, 0);
    EXPECT_TRUE(mLog.isEmpty());
    char destination = '.';
    qv_cipr_memcopy(&destination, 1, nullptr, 0);
    qv_cipr_memcopy(nullptr, 0, "a", 1);
    EXPECT_EQ(destination, '.');
    EXPECT_EQ(mLog.count(LogCapture::Warning), 1u);
}

} // namespace
