// SPDX-License-Identifier: Apache-2.0
#include <qv_cipr/qv_cipr_string.h>

#include <qv_cipr/qv_log_common.h>

#include <support/LogCapture.h>

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr const char* kTag = "CIPR_STRING[XOS]";

TEST(CiprString, FormatsWhatFits)
{
    const LogCapture log;
    char text[16];
    EXPECT_EQ(qv_cipr_snprintf_s(text, sizeof(text), sizeof(text), "%s-%d", "abc", 42), 6);
    EXPECT_STREQ(text, "abc-42");
    EXPECT_TRUE(log.isEmpty());
}

TEST(CiprString, CutsAtTheDestinationAndReturnsTheWholeLength)
{
    const LogCapture log;
    char text[] = "########";
    EXPECT_EQ(qv_cipr_snprintf_s(text, 4, 4, "%s", "abcdef"), 6);
    EXPECT_EQ(std::string(text, 8), std::string("abc\0####", 8));
    EXPECT_TRUE(log.isEmpty());
}

TEST(CiprString, SmallerSourceSizeIsTheLimit)
{
    const LogCapture log;
    char text[] = "########";
    EXPECT_EQ(qv_cipr_snprintf_s(text, 8, 3, "%s", "abcdef"), 6);
    EXPECT_EQ(std::string(text, 8), std::string("ab\0#####", 8));
    EXPECT_TRUE(log.isEmpty());
}

TEST(CiprString, SmallerDestinationIsWarned)
{
    LogCapture log;
    char text[] = "########";
    EXPECT_EQ(qv_cipr_snprintf_s(text, 4, 8, "%s", "abcdef"), 6);
    EXPECT_STREQ(text, "abc");
    EXPECT_TRUE(
        log.hasOnly(LogCapture::Warning, kTag,
                    "qv_cipr_snprintf_s: destination size is smaller than source size, potential coding error"));
    EXPECT_EQ(log.linesOfLevel(QV_LOG_WARNING, [&] { (void)qv_cipr_snprintf_s(text, 4, 8, "x"); }).size(), 1u);
}

TEST(CiprString, SizeZeroWritesNothing)
{
    const LogCapture log;
    char text[] = "#";
    EXPECT_EQ(qv_cipr_snprintf_s(text, 0, 0, "%s", "abc"), 3);
    EXPECT_STREQ(text, "#");
}

TEST(CiprString, LengthIsBounded)
{
    EXPECT_EQ(qv_cipr_strnlen("abc", 10), 3u);
    EXPECT_EQ(qv_cipr_strnlen("abc", 2), 2u);
    EXPECT_EQ(qv_cipr_strnlen("", 5), 0u);
    const char open[3] = {'a', 'b', 'c'};
    EXPECT_EQ(qv_cipr_strnlen(open, 3), 3u);
}

} // namespace
