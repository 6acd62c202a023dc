// SPDX-License-Identifier: Apache-2.0
// What is shared with other libraries byte for byte.
#include <nuxo/nuxo.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <type_traits>

namespace {

using NUXO::KernelConfigContainer;
using NUXO::ZmtTevUtils;

/// The 32-bit number at an offset of a record.
template <typename Record> int32_t numberAt(const Record& record, size_t offset)
{
    int32_t number = 0;
    std::memcpy(&number, reinterpret_cast<const unsigned char*>(&record) + offset, sizeof(number));
    return number;
}

TEST(RecordLayoutTest, CropIsLeftTopRightBottom)
{
    EXPECT_EQ(sizeof(qv_rectangle), 16U);
    const qv_rectangle crop = {1, 2, 3, 4};
    EXPECT_EQ(numberAt(crop, 0), crop.left);
    EXPECT_EQ(numberAt(crop, 4), crop.top);
    EXPECT_EQ(numberAt(crop, 8), crop.right);
    EXPECT_EQ(numberAt(crop, 12), crop.bottom);
    EXPECT_EQ(crop.left, 1);
    EXPECT_EQ(crop.bottom, 4);
}

TEST(RecordLayoutTest, ResolutionIsInputThenOutput)
{
    EXPECT_EQ(sizeof(qv_isp_zmt_resolution_info), 48U);
    EXPECT_EQ(offsetof(qv_isp_zmt_resolution_info, input_width), 0U);
    EXPECT_EQ(offsetof(qv_isp_zmt_resolution_info, input_height), 4U);
    EXPECT_EQ(offsetof(qv_isp_zmt_resolution_info, input_crop), 8U);
    EXPECT_EQ(offsetof(qv_isp_zmt_resolution_info, output_width), 24U);
    EXPECT_EQ(offsetof(qv_isp_zmt_resolution_info, output_height), 28U);
    EXPECT_EQ(offsetof(qv_isp_zmt_resolution_info, output_crop), 32U);
}

TEST(RecordLayoutTest, RunKernelHasEightyBytes)
{
    EXPECT_EQ(sizeof(qv_isp_zmt_run_kernels), 80U);
    EXPECT_EQ(alignof(qv_isp_zmt_run_kernels), 8U);
    EXPECT_EQ(offsetof(qv_isp_zmt_run_kernels, stream_id), 0U);
    EXPECT_EQ(offsetof(qv_isp_zmt_run_kernels, kernel_uuid), 4U);
    EXPECT_EQ(offsetof(qv_isp_zmt_run_kernels, enable), 8U);
    EXPECT_EQ(offsetof(qv_isp_zmt_run_kernels, resolution_info), 16U);
    EXPECT_EQ(offsetof(qv_isp_zmt_run_kernels, resolution_history), 24U);
    EXPECT_EQ(offsetof(qv_isp_zmt_run_kernels, metadata), 32U);
    EXPECT_EQ(offsetof(qv_isp_zmt_run_kernels, bpp_info.input_bpp), 48U);
    EXPECT_EQ(offsetof(qv_isp_zmt_run_kernels, bpp_info.output_bpp), 52U);
    EXPECT_EQ(offsetof(qv_isp_zmt_run_kernels, output_count), 56U);
    EXPECT_EQ(offsetof(qv_isp_zmt_run_kernels, reserved), 60U);
    EXPECT_EQ(sizeof(qv_isp_zmt_run_kernels::reserved), 20U);
    EXPECT_EQ(sizeof(qv_isp_zmt_run_kernels::metadata), 16U);
}

TEST(RecordLayoutTest, ProgramGroupIsCountArrayMode)
{
    EXPECT_EQ(sizeof(qv_isp_zmt_program_group), 24U);
    EXPECT_EQ(offsetof(qv_isp_zmt_program_group, kernel_count), 0U);
    EXPECT_EQ(offsetof(qv_isp_zmt_program_group, run_kernels), 8U);
    EXPECT_EQ(offsetof(qv_isp_zmt_program_group, operation_mode), 16U);
}

TEST(RecordLayoutTest, NumbersHaveTheSignsOfTheContract)
{
    EXPECT_TRUE((std::is_same<decltype(qv_rectangle::left), int32_t>::value));
    EXPECT_TRUE((std::is_same<decltype(qv_isp_zmt_resolution_info::output_height), int32_t>::value));
    EXPECT_TRUE((std::is_same<decltype(qv_isp_zmt_run_kernels::stream_id), uint32_t>::value));
    EXPECT_TRUE((std::is_same<decltype(qv_isp_zmt_run_kernels::kernel_uuid), uint32_t>::value));
    EXPECT_TRUE((std::is_same<decltype(qv_isp_zmt_run_kernels::enable), int32_t>::value));
    EXPECT_TRUE((std::is_same<decltype(qv_isp_zmt_run_kernels::metadata), uint32_t[4]>::value));
    EXPECT_TRUE((std::is_same<decltype(qv_isp_zmt_run_kernels::output_count), uint32_t>::value));
    EXPECT_TRUE((std::is_same<decltype(qv_isp_zmt_program_group::operation_mode), uint32_t>::value));
}

TEST(RecordLayoutTest, RecordsAreCopiedAsBytes)
{
    EXPECT_TRUE(std::is_trivially_copyable<qv_isp_zmt_run_kernels>::value);
    EXPECT_TRUE(std::is_standard_layout<qv_isp_zmt_run_kernels>::value);
    EXPECT_TRUE(std::is_trivially_copyable<qv_isp_zmt_program_group>::value);
    EXPECT_TRUE(std::is_trivially_copyable<qv_isp_zmt_resolution_info>::value);

    qv_isp_zmt_run_kernels kernel{};
    std::fill(std::begin(kernel.reserved), std::end(kernel.reserved), uint8_t{0x5a});
    const qv_isp_zmt_run_kernels copy = kernel;
    EXPECT_TRUE(std::equal(std::begin(copy.reserved), std::end(copy.reserved), std::begin(kernel.reserved)));
}

TEST(RecordLayoutTest, KernelStatesAreNumbers)
{
    EXPECT_EQ(QV_ISP_ZMT_KERNEL_BYPASS, 0);
    EXPECT_EQ(QV_ISP_ZMT_KERNEL_ENABLED, 1);
    EXPECT_EQ(QV_ISP_ZMT_KERNEL_DISABLED, 2);
}

TEST(RecordLayoutTest, NewConfigurationChangesNothing)
{
    const KernelConfigContainer config;
    EXPECT_EQ(config.valid, 0U);
    EXPECT_EQ(config.kernel_uuid, 0U);
    EXPECT_EQ(config.enable, 0);
    EXPECT_TRUE(std::all_of(std::begin(config.metadata), std::end(config.metadata), [](uint32_t v) { return v == 0; }));
    EXPECT_EQ(config.bpp_info.input_bpp, 0U);
    EXPECT_EQ(config.bpp_info.output_bpp, 0U);
    EXPECT_EQ(NUXO::KernelConfigEnable, 2U);
    EXPECT_EQ(NUXO::KernelConfigBpp, 4U);
    EXPECT_EQ(NUXO::KernelConfigMetadata, 8U);
}

TEST(RecordLayoutTest, WhatIsKeptOfAKernelHasDefaults)
{
    const ZmtTevUtils::KernelInfo info;
    EXPECT_EQ(info.rcb, 0);
    EXPECT_EQ(info.branchPoint, 0);
    EXPECT_EQ(info.sinkPort, -1);
    EXPECT_EQ(info.restorePoint, -1);
    EXPECT_EQ(info.sinkPortNode, nullptr);
    EXPECT_EQ(info.sourceNode, nullptr);

    EXPECT_EQ(sizeof(ZmtTevUtils::KernelInfo), 32U);
    EXPECT_EQ(offsetof(ZmtTevUtils::KernelInfo, rcb), 0U);
    EXPECT_EQ(offsetof(ZmtTevUtils::KernelInfo, branchPoint), 4U);
    EXPECT_EQ(offsetof(ZmtTevUtils::KernelInfo, sinkPort), 8U);
    EXPECT_EQ(offsetof(ZmtTevUtils::KernelInfo, restorePoint), 12U);
    EXPECT_EQ(offsetof(ZmtTevUtils::KernelInfo, sinkPortNode), 16U);
    EXPECT_EQ(offsetof(ZmtTevUtils::KernelInfo, sourceNode), 24U);
}

TEST(RecordLayoutTest, SensorModeIsArrayBinnerScaler)
{
    using Mode = ZmtTevUtils::SensorModeInfo;
    EXPECT_EQ(sizeof(Mode), 160U); // forty numbers
    EXPECT_EQ(offsetof(Mode, pixelArrayInputWidth), 0U);
    EXPECT_EQ(offsetof(Mode, pixelArrayInputHeight), 4U);
    EXPECT_EQ(offsetof(Mode, pixelArrayInputCrop), 8U);
    EXPECT_EQ(offsetof(Mode, pixelArrayOutputWidth), 24U);
    EXPECT_EQ(offsetof(Mode, pixelArrayOutputHeight), 28U);
    EXPECT_EQ(offsetof(Mode, pixelArrayOutputCrop), 32U);
    EXPECT_EQ(offsetof(Mode, binnerInputWidth), 48U);
    EXPECT_EQ(offsetof(Mode, binnerInputHeight), 52U);
    EXPECT_EQ(offsetof(Mode, binnerInputCrop), 56U);
    EXPECT_EQ(offsetof(Mode, binnerOutputWidth), 72U);
    EXPECT_EQ(offsetof(Mode, binnerOutputHeight), 76U);
    EXPECT_EQ(offsetof(Mode, binnerOutputCrop), 80U);
    EXPECT_EQ(offsetof(Mode, binningHorizontal), 96U);
    EXPECT_EQ(offsetof(Mode, binningVertical), 100U);
    EXPECT_EQ(offsetof(Mode, scalerInputWidth), 104U);
    EXPECT_EQ(offsetof(Mode, scalerInputHeight), 108U);
    EXPECT_EQ(offsetof(Mode, scalerInputCrop), 112U);
    EXPECT_EQ(offsetof(Mode, scalerOutputWidth), 128U);
    EXPECT_EQ(offsetof(Mode, scalerOutputHeight), 132U);
    EXPECT_EQ(offsetof(Mode, scalerOutputCrop), 136U);
    EXPECT_EQ(offsetof(Mode, scalingNumerator), 152U);
    EXPECT_EQ(offsetof(Mode, scalingDenominator), 156U);
}

TEST(RecordLayoutTest, VersionsConvertToNumbers)
{
    const int versions[] = {NUXO::GdfVersionNone, NUXO::GdfVersionKVA5, NUXO::GdfVersionKVA6, NUXO::GdfVersionKVA7};
    const int expected[] = {0, 5, 6, 7};
    EXPECT_TRUE(std::equal(std::begin(versions), std::end(versions), std::begin(expected)));
}

} // namespace
