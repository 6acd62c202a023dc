// SPDX-License-Identifier: Apache-2.0
#include "TraceMarkerFake.h"

#include <qv_cipr/qv_log_common.h>

#include <support/LogCapture.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr const char* kTag = "QV_LOG[XOS]";
constexpr uint64_t kInitialTag = 0x8000000000000000u;

/// Tracing as it is after loading, but switched on, with a pipe at hand for the marker to write into.
class Trace : public testing::Test {
protected:
    Trace()
    {
        EXPECT_EQ(pipe2(mPipe, O_NONBLOCK), 0);
        reset();
        g_qv_trace_level = 1;
    }

    ~Trace() override
    {
        close(mPipe[0]);
        close(mPipe[1]);
        reset();
    }

    static void reset()
    {
        TraceMarkerFake::descriptor = -1;
        TraceMarkerFake::opened = 0;
        g_qv_trace_level = 0;
        qv_trace_enabled_tags = kInitialTag;
        qv_trace_marker_fd = -1;
        qv_trace_is_ready = 0;
        qv_trace_once = PTHREAD_ONCE_INIT;
    }

    void markerExists() { TraceMarkerFake::descriptor = mPipe[1]; }

    std::string written() const
    {
        char bytes[8192];
        const ssize_t length = read(mPipe[0], bytes, sizeof(bytes));
        return length > 0 ? std::string(bytes, static_cast<size_t>(length)) : std::string();
    }

    static std::string begin(const std::string& name) { return "B|" + std::to_string(getpid()) + "|" + name; }

    int mPipe[2] = {-1, -1};
    LogCapture mLog;
};

TEST(TraceGlobals, HaveTheirInitialValues)
{
    EXPECT_EQ(qv_trace_enabled_tags, kInitialTag);
    EXPECT_EQ(qv_trace_marker_fd, -1);
    EXPECT_EQ(g_qv_trace_level, 0u);
    EXPECT_EQ(qv_trace_is_ready, 0);
    const pthread_once_t initial = PTHREAD_ONCE_INIT;
    EXPECT_EQ(std::memcmp(&qv_trace_once, &initial, sizeof(initial)), 0);
}

TEST_F(Trace, LevelZeroNeverOpensTheMarker)
{
    markerExists();
    g_qv_trace_level = 0;
    qv_css_trace_begin(1, "span");
    qv_css_trace_begin(kInitialTag, "span");
    qv_css_trace_end(1);
    EXPECT_EQ(TraceMarkerFake::opened, 0);
    EXPECT_EQ(qv_trace_is_ready, 0);
    EXPECT_EQ(written(), "");
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(Trace, MarkerIsOpenedForWritingOnTheFirstCall)
{
    markerExists();
    qv_css_trace_begin(1, "span");
    EXPECT_EQ(TraceMarkerFake::opened, 1);
    EXPECT_EQ(TraceMarkerFake::flags & O_ACCMODE, O_WRONLY);
    EXPECT_EQ(qv_trace_marker_fd, mPipe[1]);
    EXPECT_EQ(qv_trace_enabled_tags, 1u);
    EXPECT_EQ(qv_trace_is_ready, 1);
    EXPECT_EQ(written(), begin("span"));
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(Trace, MarkerIsOpenedByTraceEndToo)
{
    markerExists();
    qv_css_trace_end(1);
    EXPECT_EQ(TraceMarkerFake::opened, 1);
    EXPECT_EQ(written(), "E");
}

TEST_F(Trace, SpansNestInTheOrderOfTheCalls)
{
    markerExists();
    qv_css_trace_begin(1, "outer");
    qv_css_trace_begin(1, "inner");
    qv_css_trace_end(1);
    qv_css_trace_end(1);
    EXPECT_EQ(written(), begin("outer") + begin("inner") + "EE");
    EXPECT_EQ(TraceMarkerFake::opened, 1);
}

TEST_F(Trace, BeginCarriesTheProcessIdNotTheThreadId)
{
    markerExists();
    std::thread([] { qv_css_trace_begin(1, "elsewhere"); }).join();
    EXPECT_EQ(written(), begin("elsewhere"));
}

TEST_F(Trace, OpenMarkerLeavesTagBitZeroOnly)
{
    markerExists();
    qv_trace_setup();
    qv_css_trace_begin(kInitialTag, "bit 63");
    qv_css_trace_begin(2, "bit 1");
    qv_css_trace_end(kInitialTag);
    qv_css_trace_end(2);
    EXPECT_EQ(written(), "");
    qv_css_trace_begin(3, "bits 0 and 1");
    EXPECT_EQ(written(), begin("bits 0 and 1"));
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(Trace, MissingMarkerIsTriedOnce)
{
    qv_css_trace_begin(1, "span");
    qv_css_trace_end(1);
    qv_trace_setup();
    EXPECT_EQ(TraceMarkerFake::opened, 1);
    EXPECT_EQ(qv_trace_marker_fd, -1);
    EXPECT_EQ(qv_trace_enabled_tags, kInitialTag);
    EXPECT_EQ(qv_trace_is_ready, 0);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(Trace, MissingMarkerIsAWriteErrorForBit63)
{
    qv_css_trace_begin(kInitialTag, "span");
    EXPECT_TRUE(mLog.hasOnly(LogCapture::Error, kTag, "write error!"));
    mLog.clear();
    qv_css_trace_end(kInitialTag);
    EXPECT_TRUE(mLog.hasOnly(LogCapture::Error, kTag, "write error!"));
    EXPECT_EQ(mLog.linesOfLevel(QV_LOG_ERROR, [] { qv_css_trace_end(kInitialTag); }).size(), 1u);
}

TEST_F(Trace, NullNameIsEmpty)
{
    markerExists();
    qv_css_trace_begin(1, nullptr);
    EXPECT_EQ(written(), begin(""));
}

TEST_F(Trace, NameIsNoFormat)
{
    markerExists();
    qv_css_trace_begin(1, "%s%n 100%");
    EXPECT_EQ(written(), begin("%s%n 100%"));
}

TEST_F(Trace, LongRecordIsCutTo1023Characters)
{
    markerExists();
    const std::string name(2000, 'n');
    qv_css_trace_begin(1, name.c_str());
    EXPECT_EQ(written(), begin(name).substr(0, 1023));
    EXPECT_TRUE(mLog.isEmpty());

    const std::string fits = std::string(1023 - begin("").size(), 'm');
    qv_css_trace_begin(1, fits.c_str());
    EXPECT_EQ(written(), begin(fits));
}

TEST_F(Trace, GlobalsAreReadAtEachCall)
{
    qv_trace_is_ready = 1;
    qv_trace_enabled_tags = 4;
    qv_trace_marker_fd = mPipe[1];
    qv_css_trace_begin(4, "poked");
    EXPECT_EQ(TraceMarkerFake::opened, 0);
    EXPECT_EQ(written(), begin("poked"));
    g_qv_trace_level = 0;
    qv_css_trace_end(4);
    EXPECT_EQ(written(), "");
}

TEST_F(Trace, RefusedWriteIsAnError)
{
    // The reading end cannot be written to.
    TraceMarkerFake::descriptor = mPipe[0];
    qv_css_trace_begin(1, "span");
    EXPECT_TRUE(mLog.hasOnly(LogCapture::Error, kTag, "write error!"));
    mLog.clear();
    qv_css_trace_end(1);
    EXPECT_TRUE(mLog.hasOnly(LogCapture::Error, kTag, "write error!"));
}

TEST_F(Trace, ShortWriteIsAnError)
{
    FILE* file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    TraceMarkerFake::descriptor = fileno(file);
    // Files may grow to 4 bytes: of a record with more than that, 4 bytes are written.
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit four{4, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &four), 0);
    qv_css_trace_begin(1, "span");
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_TRUE(mLog.hasOnly(LogCapture::Error, kTag, "write error!"));
    EXPECT_EQ(lseek(fileno(file), 0, SEEK_CUR), 4);
    std::fclose(file);
}

TEST_F(Trace, RecordThatCannotBeFormattedIsAnError)
{
    markerExists();
    TraceMarkerFake::formattingFails = true;
    qv_css_trace_begin(1, "span");
    TraceMarkerFake::formattingFails = false;
    EXPECT_TRUE(mLog.hasOnly(LogCapture::Error, kTag, "snprintf error!"));
    EXPECT_EQ(written(), "");
}

TEST_F(Trace, ConcurrentFirstCallsOpenTheMarkerOnce)
{
    markerExists();
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) threads.emplace_back([] { qv_css_trace_end(1); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(TraceMarkerFake::opened, 1);
    EXPECT_EQ(written(), "EEEEEEEE");
}

} // namespace
