// SPDX-License-Identifier: Apache-2.0
#include "ScopedEnvironment.h"

#include <support/LogCapture.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

constexpr const char* kTag = "QV_LOG[XOS]";

std::string versionLine()
{
    return std::string("Libqvcss version: ") + qv_css_get_version_string() + "\n";
}

class LogEnvironment : public testing::Test {
protected:
    ScopedEnvironment mEnvironment;
};

TEST_F(LogEnvironment, NumbersAreDecimalHexadecimalOrOctal)
{
    const std::vector<std::pair<std::string, int32_t>> cases = {
        {"0", 0},
        {"48", 48},
        {"0x3f", 63},
        {"017", 15}, // 1 * 8 + 7
        {"12abc", 12},
        {"abc", 0},
        {"", 0},
        {"0xFFFFFFFF", -1},  // all 32 bits set
        {"0x1FFFFFFFE", -2}, // the lowest 32 bits are 0xFFFFFFFE
        {"-1", -1},
        {"99999999999999999999", -1} // saturates to 64 set bits
    };
    for (const auto& [text, value] : cases) {
        mEnvironment.set("camera_test_number", text);
        EXPECT_EQ(qv_log_get_config_int32("camera_test_number"), value) << '"' << text << '"';
    }
}

TEST_F(LogEnvironment, AbsentNumberIsZero)
{
    EXPECT_EQ(qv_log_get_config_int32("camera_test_number"), 0);
    EXPECT_EQ(qv_log_get_config_int32(nullptr), 0);
}

TEST_F(LogEnvironment, InitAddsClassesAndLogsTheVersion)
{
    mEnvironment.set("camera_css_debug", "0x3f");
    const LogCapture log(0x30);
    qv_log_common_init();
    EXPECT_EQ(g_qv_log_common_level, 0x3fu);
    EXPECT_TRUE(log.hasOnly(LogCapture::Debug, kTag, versionLine()));
}

TEST_F(LogEnvironment, InitNeverRemovesClasses)
{
    mEnvironment.set("camera_css_debug", "0");
    LogCapture log(0x30);
    qv_log_common_init();
    EXPECT_EQ(g_qv_log_common_level, 0x30u);
    EXPECT_TRUE(log.isEmpty()) << "the version line is information, which is not enabled";

    mEnvironment.set("camera_css_debug", "4");
    qv_log_common_init();
    EXPECT_EQ(g_qv_log_common_level, 0x34u);
}

TEST_F(LogEnvironment, VersionLineIsInformation)
{
    LogCapture log;
    const std::vector<LogLine> lines = log.linesOfLevel(QV_LOG_INFO, [] { qv_log_common_init(); });
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].message, versionLine());
}

TEST_F(LogEnvironment, VersionIsAFixedText)
{
    ASSERT_NE(qv_css_get_version_string(), nullptr);
    EXPECT_STRNE(qv_css_get_version_string(), "");
    EXPECT_EQ(qv_css_get_version_string(), qv_css_get_version_string());
}

TEST_F(LogEnvironment, SettingsAreLoggedInOrder)
{
    mEnvironment.set("camera_css_debug_dump_path", "/var/dumps");
    mEnvironment.set("camera_css_trace", "0x10");
    LogCapture log;
    const std::vector<LogLine> lines = log.linesOfLevel(QV_LOG_INFO, [] { qv_log_set_debug_level(); });
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0].message, "Debug level is 0x1");
    EXPECT_EQ(lines[1].message, "Debug dump path set to /var/dumps");
    EXPECT_EQ(lines[2].message, "qv trace level is 0x10");
    for (const LogLine& line : lines) {
        EXPECT_EQ(line.tag, kTag);
        EXPECT_EQ(line.priority, LogCapture::Debug);
    }
}

TEST_F(LogEnvironment, DumpPathStartsAsTheCurrentDirectory)
{
    EXPECT_STREQ(qv_css_debug_dump_path(), ".");
    EXPECT_EQ(qv_css_debug_dump_path(), g_qv_log_dump_path);
}

TEST_F(LogEnvironment, DumpPathIsReplacedWhole)
{
    const LogCapture log;
    mEnvironment.set("camera_css_debug_dump_path", "/a/long/directory");
    qv_log_set_debug_level();
    EXPECT_STREQ(qv_css_debug_dump_path(), "/a/long/directory");
    mEnvironment.set("camera_css_debug_dump_path", "/b");
    qv_log_set_debug_level();
    EXPECT_STREQ(g_qv_log_dump_path, "/b");
    for (size_t i = 2; i < sizeof(g_qv_log_dump_path); ++i) EXPECT_EQ(g_qv_log_dump_path[i], '\0') << i;
}

TEST_F(LogEnvironment, AbsentDumpPathKeepsTheOldOne)
{
    const LogCapture log;
    mEnvironment.set("camera_css_debug_dump_path", "/kept");
    qv_log_set_debug_level();
    unsetenv("camera_css_debug_dump_path");
    qv_log_set_debug_level();
    EXPECT_STREQ(qv_css_debug_dump_path(), "/kept");
    EXPECT_EQ(log.count(LogCapture::Debug, kTag, "Debug dump path set to /kept"), 1u);
}

TEST_F(LogEnvironment, EmptyDumpPathIsAPath)
{
    const LogCapture log;
    mEnvironment.set("camera_css_debug_dump_path", "");
    qv_log_set_debug_level();
    EXPECT_STREQ(qv_css_debug_dump_path(), "");
    EXPECT_TRUE(log.has(LogCapture::Debug, kTag, "Debug dump path set to "));
}

TEST_F(LogEnvironment, DumpPathIsCutTo255CharactersWithoutAWarning)
{
    const LogCapture log;
    const std::string path(300, 'd');
    mEnvironment.set("camera_css_debug_dump_path", path);
    qv_log_set_debug_level();
    EXPECT_EQ(std::string(qv_css_debug_dump_path()), std::string(255, 'd'));
    EXPECT_TRUE(log.has(LogCapture::Debug, kTag, "Debug dump path set to " + path));
    EXPECT_EQ(log.count(LogCapture::Warning), 0u);
}

TEST_F(LogEnvironment, DumpPathIsNoFormat)
{
    const LogCapture log;
    mEnvironment.set("camera_css_debug_dump_path", "/100%s%n");
    qv_log_set_debug_level();
    EXPECT_STREQ(qv_css_debug_dump_path(), "/100%s%n");
}

TEST_F(LogEnvironment, TraceLevelIsReplaced)
{
    const LogCapture log;
    mEnvironment.set("camera_css_trace", "010");
    qv_log_set_debug_level();
    EXPECT_EQ(g_qv_trace_level, 8u);
    EXPECT_TRUE(log.has(LogCapture::Debug, kTag, "qv trace level is 0x8"));
    unsetenv("camera_css_trace");
    qv_log_set_debug_level();
    EXPECT_EQ(g_qv_trace_level, 0u);
    EXPECT_TRUE(log.has(LogCapture::Debug, kTag, "qv trace level is 0x0"));
}

TEST_F(LogEnvironment, SetDebugLevelDoesNotReadTheClasses)
{
    mEnvironment.set("camera_css_debug", "0x3f");
    const LogCapture log(0x30);
    qv_log_set_debug_level();
    EXPECT_EQ(g_qv_log_common_level, 0x30u);
    EXPECT_TRUE(log.isEmpty());
}

TEST_F(LogEnvironment, DebugLevelReadsSettingsBeforeItAddsClasses)
{
    mEnvironment.set("camera_css_debug", "0x3f");
    mEnvironment.set("camera_css_trace", "2");
    LogCapture log(0x30);
    EXPECT_EQ(qv_css_debug_level(), 0x3fu);
    EXPECT_EQ(g_qv_trace_level, 2u);
    EXPECT_TRUE(log.hasOnly(LogCapture::Debug, kTag, versionLine()));

    log.clear();
    EXPECT_EQ(qv_css_debug_level(), 0x3fu);
    EXPECT_EQ(log.messages(),
              (std::vector<std::string>{"Debug level is 0x3f", "qv trace level is 0x2", versionLine()}));
}

TEST_F(LogEnvironment, StartOpensTheSystemLoggerAndReadsTheSettings)
{
    mEnvironment.set("camera_css_trace", "3");
    const LogCapture log;
    start_logging();
    const SystemLogCalls calls = log.systemLogCalls();
    EXPECT_EQ(calls.opened, 1);
    EXPECT_EQ(calls.closed, 0);
    EXPECT_EQ(calls.ident, "libqvcss");
    EXPECT_EQ(calls.option, 11);  // pid 1, console 2, no delay 8
    EXPECT_EQ(calls.facility, 8); // user
    EXPECT_EQ(g_qv_trace_level, 3u);
    EXPECT_EQ(log.messages(), (std::vector<std::string>{"Debug level is 0x3f", "qv trace level is 0x3"}));
}

TEST_F(LogEnvironment, EndClosesTheSystemLogger)
{
    const LogCapture log;
    end_logging();
    EXPECT_EQ(log.systemLogCalls().closed, 1);
    EXPECT_EQ(log.systemLogCalls().opened, 0);
    EXPECT_TRUE(log.isEmpty());
}

} // namespace
