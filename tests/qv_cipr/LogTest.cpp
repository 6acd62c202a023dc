// SPDX-License-Identifier: Apache-2.0
#include <qv_cipr/qv_log_common.h>

#include <support/LogCapture.h>

#include <gtest/gtest.h>

#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr const char* kTag = "TEST[XOS]";

__attribute__((format(printf, 3, 4))) void logWithList(uint32_t level, const char* tag, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    qv_log_common_vdebug(level, tag, format, args);
    va_end(args);
}

__attribute__((format(printf, 3, 4))) void emitWithList(uint32_t level, const char* tag, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    qv_css_vdebug(level, tag, format, args);
    va_end(args);
}

/// Hides a format from the compiler, which would rightly complain about half conversions.
const char* opaque(const std::string& format)
{
    const char* volatile text = format.c_str();
    return text;
}

/// A format of @p length characters in all: filler and then @p end.
std::string formatEndingAt(size_t length, const std::string& end)
{
    return std::string(length - end.size(), 'x') + end;
}

TEST(Log, DefaultLevelEnablesErrorsAndWarningsOnly)
{
    // Read before any capture changes it: the value at load.
    EXPECT_EQ(g_qv_log_common_level, 0x30u);
    const LogCapture log(g_qv_log_common_level);
    for (const uint32_t level : {1u, 2u, 4u, 8u, 16u, 32u}) qv_log_common_debug(level, kTag, "level %u", level);
    EXPECT_EQ(log.messages(), (std::vector<std::string>{"level 16", "level 32"}));
}

TEST(Log, LevelsHaveTheirNames)
{
    EXPECT_EQ(QV_LOG_INFO, 1);
    EXPECT_EQ(QV_LOG_DEBUG, 2);
    EXPECT_EQ(QV_LOG_ALLOCATION, 4);
    EXPECT_EQ(QV_LOG_ENTRY, 8);
    EXPECT_EQ(QV_LOG_ERROR, 16);
    EXPECT_EQ(QV_LOG_WARNING, 32);
}

TEST(Log, EachLevelHasItsPriority)
{
    const LogCapture log;
    for (const uint32_t level : {1u, 2u, 4u, 8u, 16u, 32u}) qv_log_common_debug(level, kTag, "line");
    std::vector<int> priorities;
    for (const LogLine& line : log.lines()) priorities.push_back(line.priority);
    EXPECT_EQ(priorities, (std::vector<int>{7, 7, 7, 7, 3, 4}));
}

TEST(Log, EachLevelPassesItsOwnBitOnly)
{
    LogCapture log;
    for (const uint32_t enabled : {1u, 2u, 4u, 8u, 16u, 32u}) {
        const std::vector<LogLine> lines = log.linesOfLevel(enabled, [] {
            for (const uint32_t level : {1u, 2u, 4u, 8u, 16u, 32u}) qv_log_common_debug(level, kTag, "%u", level);
        });
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_EQ(lines[0].message, std::to_string(enabled));
    }
}

TEST(Log, PriorityGoesByEqualityAndTheMaskByBit)
{
    LogCapture log(16);
    qv_log_common_debug(48, kTag, "both bits");
    EXPECT_TRUE(log.hasOnly(LogCapture::Debug, kTag, "both bits"));
    log.clear();
    qv_log_common_debug(17, kTag, "error and information");
    EXPECT_TRUE(log.hasOnly(LogCapture::Debug, kTag, "error and information"));
}

TEST(Log, MaskIsReadAtEachCall)
{
    LogCapture log(0);
    qv_log_common_debug(16, kTag, "off");
    log.setMask(16);
    qv_log_common_debug(16, kTag, "on");
    EXPECT_TRUE(log.hasOnly(LogCapture::Error, kTag, "on"));
}

TEST(Log, ListFormFiltersToo)
{
    LogCapture log(16);
    logWithList(16, kTag, "%s %d", "text", 5);
    logWithList(32, kTag, "%s %d", "text", 6);
    EXPECT_TRUE(log.hasOnly(LogCapture::Error, kTag, "text 5"));
}

TEST(Log, UnconditionalFormsIgnoreTheMask)
{
    const LogCapture log(0);
    qv_css_debug(1, kTag, "number %d", 1);
    emitWithList(32, kTag, "number %d", 2);
    qv_css_debug(16, kTag, "number %d", 3);
    ASSERT_EQ(log.count(), 3u);
    EXPECT_TRUE(log.has(LogCapture::Debug, kTag, "number 1"));
    EXPECT_TRUE(log.has(LogCapture::Warning, kTag, "number 2"));
    EXPECT_TRUE(log.has(LogCapture::Error, kTag, "number 3"));
}

TEST(Log, NegativeLevelIsDebug)
{
    const LogCapture log(0);
    qv_css_debug(-1, kTag, "all bits");
    EXPECT_TRUE(log.hasOnly(LogCapture::Debug, kTag, "all bits"));
}

TEST(Log, LinesCarryTheKernelsThreadId)
{
    const LogCapture log;
    long other = 0;
    qv_log_common_debug(16, kTag, "here");
    std::thread([&] {
        other = syscall(SYS_gettid);
        qv_log_common_debug(16, kTag, "there");
    }).join();
    ASSERT_EQ(log.count(), 2u);
    EXPECT_EQ(log.lines()[0].threadId, syscall(SYS_gettid));
    EXPECT_EQ(log.lines()[1].threadId, other);
    EXPECT_NE(other, syscall(SYS_gettid));
}

TEST(Log, NullTagAndFormatPrintAsEmpty)
{
    const LogCapture log;
    qv_log_common_debug(16, nullptr, "no tag");
    qv_log_common_debug(16, kTag, opaque(std::string()), 0);
    const char* volatile none = nullptr;
    qv_log_common_debug(16, kTag, none, 0);
    EXPECT_EQ(log.count(LogCapture::Error, "", "no tag"), 1u);
    EXPECT_EQ(log.count(LogCapture::Error, kTag, ""), 2u);
}

TEST(Log, ArgumentsAreNotCut)
{
    const LogCapture log;
    const std::string longText(4096, 'a');
    qv_log_common_debug(16, kTag, "%s|", longText.c_str());
    EXPECT_TRUE(log.hasOnly(LogCapture::Error, kTag, longText + "|"));
}

class LogCut : public testing::Test {
protected:
    /// Characters of the format that still fit: 1023 less "[thread id]:TEST[XOS]:".
    size_t room() const { return 1023 - ("[" + std::to_string(syscall(SYS_gettid)) + "]:" + kTag + ":").size(); }

    std::string logged(const std::string& format)
    {
        const LogCapture log;
        qv_log_common_debug(16, kTag, opaque(format), 77L);
        EXPECT_EQ(log.count(), 1u) << "no warning about the cut, which would log again";
        return log.count() == 0 ? "nothing" : log.lines()[0].message;
    }
};

TEST_F(LogCut, FormatThatJustFitsIsWhole)
{
    const std::string fits = formatEndingAt(room(), "END");
    EXPECT_EQ(logged(fits), fits);
}

TEST_F(LogCut, LongerFormatIsCutTo1023Characters)
{
    const std::string tooLong(3000, 'y');
    EXPECT_EQ(logged(tooLong), std::string(room(), 'y'));
}

TEST_F(LogCut, ConversionThatIsCutInTwoIsDropped)
{
    // The format ends after '%', "%l" or "%-08l"; what would follow is cut off.
    for (const char* half : {"%", "%l", "%-08l"}) {
        const std::string head(room() - std::string(half).size(), 'x');
        EXPECT_EQ(logged(head + half + "d and more"), head) << half;
    }
}

TEST_F(LogCut, ConversionThatIsWholeIsKept)
{
    EXPECT_EQ(logged(formatEndingAt(room(), "%ld") + "cut off"), std::string(room() - 3, 'x') + "77");
    EXPECT_EQ(logged(formatEndingAt(room(), "%%") + "cut off"), std::string(room() - 2, 'x') + "%");
}

TEST_F(LogCut, HalfOfAPerCentSignIsDropped)
{
    EXPECT_EQ(logged(formatEndingAt(room(), "%%%") + "%"), std::string(room() - 3, 'x') + "%");
}

TEST_F(LogCut, EndOfAWholeFormatIsLeftAlone)
{
    EXPECT_EQ(logged("%ld 100%%"), "77 100%");
}

TEST(Log, LinesOfSeveralThreadsStayWhole)
{
    constexpr int kThreads = 4;
    constexpr int kLines = 500;
    const LogCapture log;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < kLines; ++i) qv_log_common_debug(16, kTag, "thread %d line %d", t, i);
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(log.count(), static_cast<size_t>(kThreads * kLines));
    EXPECT_EQ(log.count(LogCapture::Error, kTag, "thread 3 line 499"), 1u);
    std::vector<int> next(kThreads, 0);
    for (const LogLine& line : log.lines()) {
        int thread = -1;
        int number = -1;
        ASSERT_EQ(std::sscanf(line.message.c_str(), "thread %d line %d", &thread, &number), 2);
        EXPECT_EQ(number, next.at(static_cast<size_t>(thread))++);
    }
}

} // namespace
