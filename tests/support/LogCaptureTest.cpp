// SPDX-License-Identifier: Apache-2.0
#include <support/LogCapture.h>

#include <qv_cipr/qv_log_common.h>

#include <gtest/gtest.h>

#include <cstdarg>
#include <string>

// What a fortified build of the library calls instead of vsyslog.
extern "C" void __vsyslog_chk(int priority, int flag, const char* format, va_list args);

namespace {

void logFortified(int priority, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    __vsyslog_chk(priority, 1, format, args);
    va_end(args);
}

TEST(LogCapture, TakesLinesApart)
{
    const LogCapture log;
    qv_log_common_debug(QV_LOG_ERROR, "TAG[XOS]", "first: %d", 1);
    ASSERT_EQ(log.count(), 1u);
    const LogLine line = log.lines().front();
    EXPECT_EQ(line.priority, LogCapture::Error);
    EXPECT_EQ(line.tag, "TAG[XOS]");
    EXPECT_EQ(line.message, "first: 1");
}

TEST(LogCapture, SeesTheCallOfAFortifiedBuild)
{
    const LogCapture log;
    logFortified(LogCapture::Warning, "[%ld]:%s:%s", 7L, "TAG[XOS]", "text");
    ASSERT_TRUE(log.hasOnly(LogCapture::Warning, "TAG[XOS]", "text"));
    EXPECT_EQ(log.lines().front().threadId, 7);
}

TEST(LogCapture, KeepsLinesOfAnotherShapeWhole)
{
    const LogCapture log;
    for (const char* text : {"", "plain", "[", "[12", "[12]", "[12]:", "[12]:no end"}) {
        logFortified(LogCapture::Debug, "%s", text);
        EXPECT_EQ(log.lines().back().message, text);
        EXPECT_EQ(log.lines().back().tag, "");
    }
}

TEST(LogCapture, StartsEmptyAndRestoresTheMask)
{
    const uint32_t before = g_qv_log_common_level;
    {
        const LogCapture log(QV_LOG_INFO);
        EXPECT_EQ(g_qv_log_common_level, 1u);
        qv_log_common_debug(QV_LOG_INFO, "TAG[XOS]", "kept");
        EXPECT_EQ(log.count(), 1u);
    }
    EXPECT_EQ(g_qv_log_common_level, before);
    qv_log_common_debug(QV_LOG_ERROR, "TAG[XOS]", "dropped");
    const LogCapture log;
    EXPECT_TRUE(log.isEmpty());
    EXPECT_EQ(g_qv_log_common_level, 0x3fu);
}

TEST(LogCapture, TellsLevelsOfOnePriorityApart)
{
    LogCapture log;
    const auto action = [] {
        qv_log_common_debug(QV_LOG_INFO, "TAG[XOS]", "one");
        qv_log_common_debug(QV_LOG_DEBUG, "TAG[XOS]", "two");
    };
    ASSERT_EQ(log.linesOfLevel(QV_LOG_DEBUG, action).size(), 1u);
    EXPECT_EQ(log.messages(), std::vector<std::string>{"two"});
    EXPECT_EQ(g_qv_log_common_level, 0x3fu);
}

TEST(LogCapture, SaysWhatWasLoggedWhenALineIsMissing)
{
    const LogCapture log;
    qv_log_common_debug(QV_LOG_ERROR, "TAG[XOS]", "something else");
    const testing::AssertionResult result = log.has(LogCapture::Error, "TAG[XOS]", "wanted");
    EXPECT_FALSE(result);
    EXPECT_NE(std::string(result.message()).find("error (3) TAG[XOS]: \"something else\""), std::string::npos);
    EXPECT_FALSE(log.isEmpty());
    EXPECT_FALSE(log.hasOnly(LogCapture::Warning, "TAG[XOS]", "something else"));
    EXPECT_FALSE(log.has(LogCapture::Error, "OTHER[XOS]", "something else"));
}

} // namespace
