// SPDX-License-Identifier: Apache-2.0
// Members that need no object: each does the work of the function behind it, here shown once.
#include "kernels/KernelsFixture.h"

#include <map>

namespace graphtest {

namespace {

class StaticMembersTest : public KernelsTest {
protected:
    /// A kernel with everything that can be read of one.
    void loadKernel()
    {
        loadGraph(group("pg", "",
                        kernel("k", 10, 2,
                               "metadata='7,8' enabled='2' rcb='1' branch_point='3' sink_port='4' restore_point='5'",
                               sizes(size(640, 480) + " left='8' bpp='10'", size(320, 240) + " id='6' bpp='12'"))));
    }

    static inline const std::string kResolutions =
        "(iw: 640 ih: 480 (l: 8, t: 0, r: 0, b: 0),ow: 320, oh: 240 (l: 0, t: 0, "
        "r: 0, b: 0)";
};

TEST_F(StaticMembersTest, ValuesOfAKernel)
{
    loadKernel();
    int values[7] = {};
    unsigned int metadata[QV_ISP_ZMT_METADATA_COUNT] = {1, 1, 1, 1};
    EXPECT_EQ(ZmtTevUtils::kernelGetValues(node("pg:k"), &values[0], &values[1], metadata, &values[2], &values[3],
                                           &values[4], &values[5], &values[6]),
              StatusOk);
    const int expected[7] = {10, 2, 2, 1, 3, 4, 5};
    EXPECT_TRUE(std::equal(std::begin(values), std::end(values), std::begin(expected)));
    EXPECT_EQ(metadata[0], 7U);
    EXPECT_EQ(metadata[1], 8U);
    EXPECT_EQ(metadata[2], 0U);
    EXPECT_EQ(metadata[3], 0U);
    const auto ask = [](const IGraphConfig* kernel) {
        return ZmtTevUtils::kernelGetValues(kernel, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                            nullptr);
    };
    EXPECT_EQ(ask(node("pg:k")), StatusOk);
    EXPECT_EQ(ask(nullptr), StatusBadArgument);
    EXPECT_EQ(ZmtTevUtils::kernelGetValues(node("pg"), &values[0], nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                           nullptr),
              StatusMissingData);
}

TEST_F(StaticMembersTest, ResolutionsOfAKernel)
{
    loadKernel();
    EXPECT_TRUE(ZmtTevUtils::kernelHasResolutions(node("pg:k")));
    EXPECT_FALSE(ZmtTevUtils::kernelHasResolutions(node("pg")));
    EXPECT_FALSE(ZmtTevUtils::kernelHasResolutions(nullptr));

    qv_isp_zmt_resolution_info first = {};
    EXPECT_EQ(ZmtTevUtils::kernelGetResolutions(node("pg:k"), first), StatusOk);
    EXPECT_EQ(ZmtTevUtils::resInfoToStr(first), kResolutions);
    EXPECT_EQ(ZmtTevUtils::kernelGetResolutions(node("pg"), first), StatusMissingData);
    EXPECT_EQ(ZmtTevUtils::resInfoToStr(first), uncropped(0, 0, 0, 0));
    EXPECT_EQ(ZmtTevUtils::kernelGetResolutions(nullptr, first), StatusBadArgument);

    std::map<std::string, qv_isp_zmt_resolution_info> all;
    all["before"] = {};
    EXPECT_EQ(ZmtTevUtils::kernelGetResolutions(node("pg:k"), all), StatusOk);
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all.begin()->first, "6");
    EXPECT_EQ(ZmtTevUtils::resInfoToStr(all.begin()->second), kResolutions);
    EXPECT_EQ(ZmtTevUtils::kernelGetResolutions(nullptr, all), StatusBadArgument);
}

TEST_F(StaticMembersTest, BitsPerPixelOfAKernel)
{
    loadKernel();
    qv_isp_zmt_run_kernels record = {};
    EXPECT_EQ(ZmtTevUtils::kernelGetBppInfo(node("pg:k"), record), StatusOk);
    EXPECT_EQ(record.bpp_info.input_bpp, 10U);
    EXPECT_EQ(record.bpp_info.output_bpp, 12U);
    EXPECT_EQ(ZmtTevUtils::kernelGetBppInfo(node("pg"), record), StatusOk);
    EXPECT_EQ(record.bpp_info.input_bpp, 0U);
    EXPECT_EQ(record.bpp_info.output_bpp, 0U);
    EXPECT_EQ(ZmtTevUtils::kernelGetBppInfo(nullptr, record), StatusBadArgument);
}

TEST_F(StaticMembersTest, HistoriesOfSources)
{
    loadGraph(bufferSource("", 100, 50) + element("source", "sensor", size(400, 300), port("port_0", size(8, 6))) +
              element("source", "tpg", "", output("port_0", "csi:in", size(40, 30))) +
              element("hw", "csi", "", input("in", "tpg:port_0") + "<output " + size(36, 28) + "/>"));
    qv_isp_zmt_resolution_info history = {};
    EXPECT_EQ(ZmtTevUtils::sourceGetResolutionHistory(history, *node("buffer_src0")), StatusOk);
    EXPECT_EQ(ZmtTevUtils::resInfoToStr(history), uncropped(100, 50, 100, 50));
    EXPECT_EQ(ZmtTevUtils::sourceGetResolutionHistory(history, *node("csi")), StatusNotSupported);
    EXPECT_EQ(ZmtTevUtils::calculateBufSrcResolutionHistory(*node("buffer_src0"), history), StatusOk);
    EXPECT_EQ(ZmtTevUtils::calculateSensorResolutionHistory(*node("sensor"), history), StatusOk);
    EXPECT_EQ(ZmtTevUtils::resInfoToStr(history), uncropped(400, 300, 0, 0)) << "no back end";
    EXPECT_EQ(ZmtTevUtils::calculateTPGResolutionHistory(*node("tpg"), history), StatusOk);
    EXPECT_EQ(ZmtTevUtils::resInfoToStr(history), uncropped(0, 0, 36, 28));
    EXPECT_EQ(ZmtTevUtils::getCsiDimensions(*node("tpg:port_0"), history), StatusOk);
    EXPECT_EQ(ZmtTevUtils::resInfoToStr(history), uncropped(0, 0, 36, 28));
    ZmtTevUtils::SensorModeInfo mode;
    EXPECT_EQ(ZmtTevUtils::getSensorModeInfo(*node("sensor"), mode), StatusOk);
    EXPECT_EQ(mode.pixelArrayInputWidth, 400);
    EXPECT_EQ(mode.scalingDenominator, 1);
}

TEST_F(StaticMembersTest, ArithmeticAndConfigurations)
{
    qv_rectangle total = {1, 2, 3, 4};
    ZmtTevUtils::accumulateCrop(total, {10, 20, 30, 40}, 2, 3);
    EXPECT_EQ(total.left, 16);
    EXPECT_EQ(total.top, 32);
    EXPECT_EQ(total.right, 48);
    EXPECT_EQ(total.bottom, 64);
    NUXO::KernelConfigContainer off;
    off.valid = NUXO::KernelConfigEnable;
    off.kernel_uuid = 10;
    off.enable = QV_ISP_ZMT_KERNEL_DISABLED;
    qv_isp_zmt_run_kernels record = {};
    record.kernel_uuid = 10;
    ZmtTevUtils::applyKernelConfigs({off}, record);
    EXPECT_EQ(record.enable, QV_ISP_ZMT_KERNEL_DISABLED);
}

TEST_F(StaticMembersTest, Dumps)
{
    qv_isp_zmt_resolution_info info = {1, 2, {}, 3, 4, {}};
    qv_isp_zmt_run_kernels record = {};
    record.resolution_info = &info;
    ZmtTevUtils::dumpResInfo(record);
    ZmtTevUtils::dumpResHistory(info, "a name");
    EXPECT_TRUE(loggedExactly({"16 res_info: " + uncropped(1, 2, 3, 4), "16 a name:" + uncropped(1, 2, 3, 4)}));
    clearLog();
    ZmtTevUtils::dumpKernels(&record, 0);
    ZmtTevUtils::dumpKernels(nullptr, 3);
    EXPECT_TRUE(loggedExactly({}));
    ZmtTevUtils::dumpKernels(&record, 1);
    EXPECT_TRUE(
        loggedExactly({"16 kernel_uuid: 0 [BYPASS (0)]", "16 stream_id 0", "16 metadata: (0 0 0 0)",
                       "16 res_info: " + uncropped(1, 2, 3, 4), "16 res history: NULL", "16 bpp_info in:0 out:0"}));
    loadGraph(group("pg", "", output("out", "")));
    ZmtTevUtils::PortHistories histories = {{node("pg:out"), info}};
    ZmtTevUtils::dumpPortResHistoryMap(histories);
    EXPECT_TRUE(loggedExactly({"2 dumpPortResHistoryMap", "16 out:" + uncropped(1, 2, 3, 4)}));
}

} // namespace

} // namespace graphtest
