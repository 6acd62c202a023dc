// SPDX-License-Identifier: Apache-2.0
#include <qv_cipr/qv_cipr_runtime.h>

#include <qv_cipr/qv_cipr_alloc.h>
#include <qv_cipr/qv_log_common.h>

#include <support/LogCapture.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstring>

namespace {

constexpr const char* kTag = "QV_CIPR_ANDROID[XOS]";

TEST(Runtime, PageSizeIsTheSystems)
{
    EXPECT_EQ(qv_cipr_pagesize(), static_cast<size_t>(sysconf(_SC_PAGESIZE)));
}

TEST(Runtime, ContextIsEightZeroBytes)
{
    const LogCapture log(QV_LOG_ALLOCATION);
    qv_cipr_context_t* context = qv_cipr_create();
    ASSERT_NE(context, nullptr);
    const char zeroes[8] = {};
    EXPECT_EQ(std::memcmp(context, zeroes, sizeof(zeroes)), 0);
    ASSERT_EQ(log.count(), 1u);
    EXPECT_EQ(log.lines()[0].message.rfind("E:qv_cipr_calloc nmemb 1 size 8 from qv_cipr_create res ptr: 0x", 0), 0u);
    qv_cipr_destroy(context);
}

TEST(Runtime, CreateAndDestroyTraceTheirEntry)
{
    LogCapture log(QV_LOG_ENTRY);
    qv_cipr_context_t* context = qv_cipr_create();
    EXPECT_TRUE(log.hasOnly(LogCapture::Debug, kTag, "E:qv_cipr_create"));
    log.clear();
    qv_cipr_destroy(context);
    EXPECT_TRUE(log.hasOnly(LogCapture::Debug, kTag, "E:qv_cipr_destroy"));
}

TEST(Runtime, ContextIsFreed)
{
    const uint32_t freed = g_free_counter;
    qv_cipr_destroy(qv_cipr_create());
    EXPECT_EQ(g_free_counter, freed + 1);
    qv_cipr_destroy(nullptr);
    EXPECT_EQ(g_free_counter, freed + 1);
}

TEST(Runtime, CreateReturnsNullWhenMemoryIsExhausted)
{
    g_alloc_error = g_alloc_counter;
    EXPECT_EQ(qv_cipr_create(), nullptr);
    g_alloc_error = UINT32_MAX;
}

} // namespace
