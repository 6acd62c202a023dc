// SPDX-License-Identifier: Apache-2.0
#include "records/Resolutions.h"

#include <nuxo/nuxo.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace graphtest {

namespace {

using NUXO::ZmtTevUtils;

constexpr int32_t kSmallest = std::numeric_limits<int32_t>::min();

TEST(ResolutionTextTest, TwelveNumbersStandInTheOrderOfTheRecord)
{
    qv_isp_zmt_resolution_info info = counting(1);
    EXPECT_STREQ(ZmtTevUtils::resInfoToStr(info),
                 "(iw: 1 ih: 2 (l: 3, t: 4, r: 5, b: 6),ow: 7, oh: 8 (l: 9, t: 10, r: 11, b: 12)");
    EXPECT_EQ(text(info), ZmtTevUtils::resInfoToStr(info)); // what the tests expect elsewhere
}

TEST(ResolutionTextTest, RecordIsOnlyRead)
{
    qv_isp_zmt_resolution_info info = counting(1);
    (void)ZmtTevUtils::resInfoToStr(info);
    EXPECT_EQ(text(info), text(counting(1)));
}

TEST(ResolutionTextTest, EmptyRecordIsAllZeros)
{
    qv_isp_zmt_resolution_info info{};
    EXPECT_STREQ(ZmtTevUtils::resInfoToStr(info),
                 "(iw: 0 ih: 0 (l: 0, t: 0, r: 0, b: 0),ow: 0, oh: 0 (l: 0, t: 0, r: 0, b: 0)");
}

TEST(ResolutionTextTest, LongestNumbersFit)
{
    const qv_rectangle crop = {kSmallest, kSmallest, kSmallest, kSmallest};
    qv_isp_zmt_resolution_info info = {kSmallest, kSmallest, crop, kSmallest, kSmallest, crop};
    const std::string shown = ZmtTevUtils::resInfoToStr(info);
    EXPECT_EQ(shown, text(info));
    // Twelve times the eleven characters of the smallest number instead of one zero.
    EXPECT_EQ(shown.size(), text(qv_isp_zmt_resolution_info{}).size() + 12 * 10);
    EXPECT_LT(shown.size(), 256U);
}

TEST(ResolutionTextTest, AllCallsShareOneBuffer)
{
    qv_isp_zmt_resolution_info first = counting(100);
    qv_isp_zmt_resolution_info second = counting(5);
    char* const shownFirst = ZmtTevUtils::resInfoToStr(first);
    EXPECT_EQ(shownFirst, text(first));
    char* const shownSecond = ZmtTevUtils::resInfoToStr(second);
    EXPECT_EQ(shownFirst, static_cast<void*>(shownSecond));
    EXPECT_EQ(shownFirst, text(second)); // shorter: nothing of the first is left
}

TEST(ResolutionTextTest, DumpsWriteToTheBufferToo)
{
    qv_isp_zmt_resolution_info first = counting(100);
    qv_isp_zmt_resolution_info second = counting(5);
    const char* const shown = ZmtTevUtils::resInfoToStr(first);
    ZmtTevUtils::dumpResHistory(second, "any");
    EXPECT_EQ(shown, text(second));
}

} // namespace

} // namespace graphtest
