// SPDX-License-Identifier: Apache-2.0
#include "query/GraphFixture.h"
#include "records/Resolutions.h"

#include <array>
#include <limits>

namespace graphtest {

namespace {

using NUXO::ZmtTevUtils;
using Lines = std::vector<std::string>;

class RecordDumpTest : public GraphTest {
protected:
    /// A kernel with the resolutions and a history.
    qv_isp_zmt_run_kernels complete()
    {
        qv_isp_zmt_run_kernels kernel{};
        kernel.stream_id = 60001;
        kernel.kernel_uuid = 37235;
        kernel.enable = 1;
        kernel.resolution_info = mInfos.data();
        kernel.resolution_history = &mHistory;
        for (uint32_t i = 0; i < QV_ISP_ZMT_METADATA_COUNT; ++i) kernel.metadata[i] = 21 + i;
        kernel.bpp_info = {10, 8};
        return kernel;
    }

    static Lines linesOfComplete()
    {
        return {"16 kernel_uuid: 37235 [ENABLED (1)]",
                "16 stream_id 60001",
                "16 metadata: (21 22 23 24)",
                "16 res_info: (iw: 101 ih: 102 (l: 103, t: 104, r: 105, b: 106),ow: 107, oh: 108 "
                "(l: 109, t: 110, r: 111, b: 112)",
                "16 resolution_history:(iw: 1 ih: 2 (l: 3, t: 4, r: 5, b: 6),ow: 7, oh: 8 "
                "(l: 9, t: 10, r: 11, b: 12)",
                "16 bpp_info in:10 out:8"};
    }

    static Lines linesOfBlank()
    {
        return {"16 kernel_uuid: 0 [BYPASS (0)]", "16 stream_id 0",
                "16 metadata: (0 0 0 0)",         "16 res info: NULL",
                "16 res history: NULL",           "16 bpp_info in:0 out:0"};
    }

    std::array<qv_isp_zmt_resolution_info, 3> mInfos = {counting(101), counting(201), counting(301)};
    qv_isp_zmt_resolution_info mHistory = counting(1);
};

Lines operator+(Lines first, const Lines& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

const Lines kSeparator = {"16 " + std::string(55, '-')};

TEST_F(RecordDumpTest, OneRecordIsSixLinesWithoutASeparator)
{
    qv_isp_zmt_run_kernels kernel = complete();
    ZmtTevUtils::dumpKernels(&kernel, 1);
    EXPECT_TRUE(loggedExactly(linesOfComplete()));
}

TEST_F(RecordDumpTest, RecordWithoutResolutionsSaysSo)
{
    qv_isp_zmt_run_kernels kernel{};
    ZmtTevUtils::dumpKernels(&kernel, 1);
    EXPECT_TRUE(loggedExactly(linesOfBlank()));
}

TEST_F(RecordDumpTest, RecordWithOutputsButWithoutResolutionsIsNullOnce)
{
    qv_isp_zmt_run_kernels kernel{};
    kernel.output_count = 2;
    ZmtTevUtils::dumpKernels(&kernel, 1);
    EXPECT_TRUE(loggedExactly(linesOfBlank()));
}

TEST_F(RecordDumpTest, SeparatorStandsOnlyBetweenRecords)
{
    std::array<qv_isp_zmt_run_kernels, 3> kernels = {complete(), {}, complete()};
    ZmtTevUtils::dumpKernels(kernels.data(), 3);
    EXPECT_TRUE(loggedExactly(linesOfComplete() + kSeparator + linesOfBlank() + kSeparator + linesOfComplete()));
    clearLog();
    ZmtTevUtils::dumpKernels(kernels.data(), 2);
    EXPECT_TRUE(loggedExactly(linesOfComplete() + kSeparator + linesOfBlank()));
}

TEST_F(RecordDumpTest, NoRecordsAreNoLines)
{
    qv_isp_zmt_run_kernels kernel = complete();
    ZmtTevUtils::dumpKernels(&kernel, 0);
    ZmtTevUtils::dumpKernels(nullptr, 0);
    ZmtTevUtils::dumpKernels(nullptr, 3);
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(RecordDumpTest, StatesHaveNames)
{
    const std::vector<std::pair<int32_t, std::string>> states = {
        {0, "[BYPASS (0)]"},          {1, "[ENABLED (1)]"},
        {2, "[DISABLED (2)]"},        {3, "[NOT SUPPORTED (3)]"},
        {-1, "[NOT SUPPORTED (-1)]"}, {std::numeric_limits<int32_t>::min(), "[NOT SUPPORTED (-2147483648)]"},
    };
    for (const auto& [state, shown] : states) {
        qv_isp_zmt_run_kernels kernel{};
        kernel.enable = state;
        clearLog();
        ZmtTevUtils::dumpKernels(&kernel, 1);
        EXPECT_EQ(lines().front(), "16 kernel_uuid: 0 " + shown);
    }
}

TEST_F(RecordDumpTest, UnsignedNumbersAreShownAsSignedOnes)
{
    qv_isp_zmt_run_kernels kernel{};
    kernel.stream_id = kernel.kernel_uuid = 0xffffffffU;
    kernel.metadata[0] = 0x80000000U;
    kernel.metadata[3] = 0x7fffffffU;
    kernel.bpp_info = {0xfffffffeU, 0xfffffffdU};
    ZmtTevUtils::dumpKernels(&kernel, 1);
    EXPECT_TRUE(loggedExactly({"16 kernel_uuid: -1 [BYPASS (0)]", "16 stream_id -1",
                               "16 metadata: (-2147483648 0 0 2147483647)", "16 res info: NULL", "16 res history: NULL",
                               "16 bpp_info in:-2 out:-3"}));
}

TEST_F(RecordDumpTest, ResolutionIsShownOnceWithoutAnOutputCount)
{
    qv_isp_zmt_run_kernels kernel = complete();
    ZmtTevUtils::dumpResInfo(kernel);
    EXPECT_TRUE(loggedExactly({"16 res_info: " + text(mInfos[0])}));
}

TEST_F(RecordDumpTest, EveryOutputHasItsLine)
{
    qv_isp_zmt_run_kernels kernel = complete();
    kernel.output_count = 3;
    ZmtTevUtils::dumpResInfo(kernel);
    EXPECT_TRUE(loggedExactly({"16 res_info[0]: " + text(mInfos[0]), "16 res_info[1]: " + text(mInfos[1]),
                               "16 res_info[2]: " + text(mInfos[2])}));
    clearLog();
    kernel.output_count = 1;
    ZmtTevUtils::dumpResInfo(kernel);
    EXPECT_TRUE(loggedExactly({"16 res_info[0]: " + text(mInfos[0])}));
}

TEST_F(RecordDumpTest, OutputsStandAmongTheLinesOfTheirRecord)
{
    qv_isp_zmt_run_kernels kernel = complete();
    kernel.output_count = 2;
    ZmtTevUtils::dumpKernels(&kernel, 1);
    Lines expected = linesOfComplete();
    expected[3] = "16 res_info[0]: " + text(mInfos[0]);
    expected.insert(expected.begin() + 4, "16 res_info[1]: " + text(mInfos[1]));
    EXPECT_TRUE(loggedExactly(expected));
}

TEST_F(RecordDumpTest, NoResolutionIsNoLine)
{
    qv_isp_zmt_run_kernels kernel{};
    for (const uint32_t outputs : {0U, 1U, 2U}) {
        kernel.output_count = outputs;
        ZmtTevUtils::dumpResInfo(kernel);
    }
    EXPECT_TRUE(loggedExactly({}));
}

TEST_F(RecordDumpTest, HistoryIsShownUnderTheNameGiven)
{
    ZmtTevUtils::dumpResHistory(mHistory, "sensor 100% %d");
    EXPECT_TRUE(loggedExactly({"16 sensor 100% %d:" + text(mHistory)}));
    clearLog();
    ZmtTevUtils::dumpResHistory(mHistory, "");
    EXPECT_TRUE(loggedExactly({"16 :" + text(mHistory)}));
}

TEST_F(RecordDumpTest, DumpsAreOfTheErrorClassAndLeaveRecordsAlone)
{
    qv_isp_zmt_run_kernels kernel = complete();
    const auto dump = [&] {
        ZmtTevUtils::dumpKernels(&kernel, 1);
        ZmtTevUtils::dumpResHistory(mHistory, "name");
    };
    EXPECT_EQ(mLog.linesOfLevel(16, dump).size(), 7U);
    for (const uint32_t level : {1U, 2U, 4U, 8U, 32U}) EXPECT_TRUE(mLog.linesOfLevel(level, dump).empty()) << level;
    EXPECT_EQ(text(mHistory), text(counting(1)));
    EXPECT_EQ(text(mInfos[0]), text(counting(101)));
    EXPECT_EQ(kernel.output_count, 0U);
}

TEST_F(RecordDumpTest, ContextOfAnObjectWithoutAGraphIsNotFound)
{
    ZmtTevUtils utils(true);
    utils.dumpKernels(4);
    utils.dumpKernels(-7);
    EXPECT_TRUE(loggedExactly({"16 COULD NOT FIND index for exec ctx id 4 ", // the blank at the end is part of it
                               "16 COULD NOT FIND index for exec ctx id -7 "}));
}

TEST_F(RecordDumpTest, ContextIsShownBetweenDoubleLines)
{
    const Tree graph =
        descriptor("<source name='buffer_src0'><port name='port_0' peer='pg:in' width='64' height='32'/></source>"
                   "<program_group name='pg' stream_id='7'>"
                   "<port name='in' id='1' direction='0' peer='buffer_src0:port_0'/>"
                   "<port name='out' id='2' direction='1' peer='video'/>"
                   "<kernel name='k0' id='0' pal_uuid='11'/><kernel name='k1' id='1' pal_uuid='12'/>"
                   "</program_group><sink name='video' peer='pg:out' stream_id='7'/>");
    ZmtTevUtils utils(true);
    ASSERT_EQ(utils.initTevUtils(graph.get()), StatusOk);
    clearLog();
    utils.dumpKernels(7);
    const Lines all = lines();
    // The three lines of the heading, and for two kernels six each with the separator between them.
    ASSERT_EQ(all.size(), 3U + 6U + 1U + 6U);
    const std::string doubleLine = "16 " + std::string(55, '=');
    EXPECT_EQ(all[0], doubleLine);
    EXPECT_EQ(all[1], "16 FOUND index for exec ctx id 7 dumping 2 kernels:");
    EXPECT_EQ(all[2], doubleLine);
    EXPECT_EQ(all[3], "16 kernel_uuid: 11 [ENABLED (1)]");
    EXPECT_EQ(all[4], "16 stream_id 7");
    EXPECT_EQ(all[9], kSeparator[0]);
    EXPECT_EQ(all[10], "16 kernel_uuid: 12 [ENABLED (1)]");
    clearLog();
    utils.dumpKernels(8);
    EXPECT_TRUE(loggedExactly({"16 COULD NOT FIND index for exec ctx id 8 "}));
}

} // namespace

} // namespace graphtest
