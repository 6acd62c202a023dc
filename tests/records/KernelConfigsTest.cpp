// SPDX-License-Identifier: Apache-2.0
#include <nuxo/nuxo.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

namespace {

using NUXO::KernelConfigContainer;
using NUXO::ZmtTevUtils;

constexpr uint32_t kUuid = 37235;
constexpr const char* kUnchanged = "stream 3 uuid 37235 enable 1 bpp 10/8 metadata 1 2 3 4 outputs 2";

/// A configuration for the kernel that replaces everything by numbers of its own.
KernelConfigContainer configOf(uint32_t valid, uint32_t uuid = kUuid, int32_t first = 50)
{
    const auto number = static_cast<uint32_t>(first);
    return {valid, uuid, first, {number + 1, number + 2, number + 3, number + 4}, {number + 5, number + 6}};
}

class KernelConfigsTest : public ::testing::Test {
protected:
    KernelConfigsTest()
    {
        mKernel.stream_id = 3;
        mKernel.kernel_uuid = kUuid;
        mKernel.enable = 1;
        mKernel.resolution_info = &mInfo;
        mKernel.resolution_history = &mHistory;
        for (uint32_t i = 0; i < QV_ISP_ZMT_METADATA_COUNT; ++i) mKernel.metadata[i] = i + 1;
        mKernel.bpp_info = {10, 8};
        mKernel.output_count = 2;
        std::fill(std::begin(mKernel.reserved), std::end(mKernel.reserved), uint8_t{0x5a});
    }

    std::string applied(const std::vector<KernelConfigContainer>& configs)
    {
        ZmtTevUtils::applyKernelConfigs(configs, mKernel);
        EXPECT_EQ(mKernel.resolution_info, &mInfo);
        EXPECT_EQ(mKernel.resolution_history, &mHistory);
        EXPECT_EQ(std::count(std::begin(mKernel.reserved), std::end(mKernel.reserved), 0x5a), 20);
        std::string all = "stream " + std::to_string(mKernel.stream_id) + " uuid " +
                          std::to_string(mKernel.kernel_uuid) + " enable " + std::to_string(mKernel.enable) + " bpp " +
                          std::to_string(mKernel.bpp_info.input_bpp) + "/" +
                          std::to_string(mKernel.bpp_info.output_bpp) + " metadata";
        for (const uint32_t item : mKernel.metadata) all += " " + std::to_string(item);
        return all + " outputs " + std::to_string(mKernel.output_count);
    }

    qv_isp_zmt_run_kernels mKernel{};
    qv_isp_zmt_resolution_info mInfo{};
    qv_isp_zmt_resolution_info mHistory{};
};

TEST_F(KernelConfigsTest, NoConfigurationChangesNothing)
{
    EXPECT_EQ(applied({}), kUnchanged);
}

TEST_F(KernelConfigsTest, ConfigurationWithoutValidFieldsChangesNothing)
{
    EXPECT_EQ(applied({configOf(0)}), kUnchanged);
}

TEST_F(KernelConfigsTest, BitsThatMeanNothingChangeNothing)
{
    EXPECT_EQ(applied({configOf(1)}), kUnchanged);
    EXPECT_EQ(applied({configOf(0xfffffff1U)}), kUnchanged);
}

TEST_F(KernelConfigsTest, OtherKernelsConfigurationsChangeNothing)
{
    EXPECT_EQ(applied({configOf(0xffffffffU, kUuid + 1), configOf(0xffffffffU, 0)}), kUnchanged);
}

TEST_F(KernelConfigsTest, EachBitReplacesItsFieldOnly)
{
    EXPECT_EQ(applied({configOf(8)}), "stream 3 uuid 37235 enable 1 bpp 10/8 metadata 51 52 53 54 outputs 2");
    EXPECT_EQ(applied({configOf(4)}), "stream 3 uuid 37235 enable 1 bpp 55/56 metadata 51 52 53 54 outputs 2");
    EXPECT_EQ(applied({configOf(2)}), "stream 3 uuid 37235 enable 50 bpp 55/56 metadata 51 52 53 54 outputs 2");
}

TEST_F(KernelConfigsTest, BitsCombine)
{
    EXPECT_EQ(applied({configOf(0xffffffffU)}),
              "stream 3 uuid 37235 enable 50 bpp 55/56 metadata 51 52 53 54 outputs 2");
}

TEST_F(KernelConfigsTest, LaterConfigurationsWinFieldByField)
{
    KernelConfigContainer off = configOf(2);
    KernelConfigContainer on = configOf(2);
    off.enable = 2;
    on.enable = 1;
    EXPECT_EQ(applied({off, on}), kUnchanged);
    EXPECT_EQ(applied({on, off}), "stream 3 uuid 37235 enable 2 bpp 10/8 metadata 1 2 3 4 outputs 2");
    // Only what the later one declares valid; those of other kernels between them do not count.
    EXPECT_EQ(applied({configOf(14), configOf(14, 7, 90), configOf(4, kUuid, 70)}),
              "stream 3 uuid 37235 enable 50 bpp 75/76 metadata 51 52 53 54 outputs 2");
}

} // namespace
