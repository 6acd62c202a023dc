// SPDX-License-Identifier: Apache-2.0
#include <qv_cipr/qv_cipr_alloc.h>
#include <qv_cipr/qv_log_common.h>

#include <support/LogCapture.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace {

TEST(LogContext, NamesComeFromTheLowestEightDigits)
{
    const std::vector<std::pair<uint64_t, const char*>> cases = {
        {0, "AAAA"},
        {12345678, "MIEA"},  // 12 M, 34 - 26 = 8 I, 56 - 52 = 4 E, 78 - 78 = 0 A
        {100000000, "AAAA"}, // the ninth digit does not count
        {99, "AAAV"},        // 99 - 78 = 21 V
        {99999999, "VVVV"},
        {1000000, "BAAA"},
        {10000, "ABAA"},
        {100, "AABA"},
        {1, "AAAB"},
        {25262728, "ZABC"},             // 25 Z, 26 A, 27 B, 28 C
        {18446744073709551615u, "JDQP"} // ...09551615: 09 J, 55 - 52 = 3 D, 16 Q, 15 P
    };
    for (const auto& [id, name] : cases) {
        qv_log_context ctx{};
        _prettify(&ctx, id);
        EXPECT_STREQ(ctx.buffer, name) << id;
        EXPECT_EQ(ctx.name, ctx.buffer) << id;
    }
}

TEST(LogContext, PrettifyWritesNothingElse)
{
    qv_log_context ctx;
    std::memset(&ctx, '#', sizeof(ctx));
    _prettify(&ctx, 12345678);
    EXPECT_EQ(std::string(ctx.buffer, 8), std::string("MIEA\0###", 8));
    _prettify(nullptr, 1);
}

TEST(LogContext, RecordHasSixteenBytes)
{
    EXPECT_EQ(sizeof(qv_log_context), 16u);
}

TEST(LogContext, CreateAllocatesFillsAndZeroesTheRest)
{
    const LogCapture log;
    const uint32_t allocated = g_alloc_counter;
    const uint32_t freed = g_free_counter;
    qv_log_context* ctx = qv_log_create_context(12345678);
    ASSERT_NE(ctx, nullptr);
    EXPECT_EQ(g_alloc_counter, allocated + 1);
    EXPECT_EQ(ctx->name, ctx->buffer);
    EXPECT_EQ(std::string(ctx->buffer, 8), std::string("MIEA\0\0\0\0", 8));
    ASSERT_EQ(log.count(), 1u);
    EXPECT_EQ(log.lines()[0].tag, "CIPR_ALLOC[XOS]");
    EXPECT_EQ(log.lines()[0].message.rfind("E:qv_cipr_malloc size 16 from qv_log_create_context res ptr: 0x", 0), 0u);

    qv_log_destroy_context(ctx);
    EXPECT_EQ(g_free_counter, freed + 1);
    ASSERT_EQ(log.count(), 2u);
    EXPECT_NE(log.lines()[1].message.find(" from qv_log_destroy_context"), std::string::npos);
}

TEST(LogContext, CreateReturnsNullWhenMemoryIsExhausted)
{
    g_alloc_error = g_alloc_counter;
    EXPECT_EQ(qv_log_create_context(1), nullptr);
    g_alloc_error = UINT32_MAX;
}

TEST(LogContext, DestroyPassesNullOn)
{
    const LogCapture log;
    const uint32_t freed = g_free_counter;
    qv_log_destroy_context(nullptr);
    EXPECT_EQ(g_free_counter, freed);
    EXPECT_TRUE(
        log.hasOnly(LogCapture::Debug, "CIPR_ALLOC[XOS]", "E:qv_cipr_free ptr (nil) from qv_log_destroy_context"));
}

} // namespace
