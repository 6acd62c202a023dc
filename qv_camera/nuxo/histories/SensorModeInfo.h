// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_HISTORIES_SENSOR_MODE_INFO_H
#define NUXO_HISTORIES_SENSOR_MODE_INFO_H

#include <nuxo/records/qv_isp_zmt_run_kernels.h>

#include <cstdint>

namespace NUXO {

/// The geometry of one sensor mode, in pixels of the stage in question. Crops are symmetric: right is left, bottom is top.
struct SensorModeInfo {
    int32_t pixelArrayInputWidth = 0;
    int32_t pixelArrayInputHeight = 0;
    qv_rectangle pixelArrayInputCrop = {};
    int32_t pixelArrayOutputWidth = 0;
    int32_t pixelArrayOutputHeight = 0;
    qv_rectangle pixelArrayOutputCrop = {}; ///< not read
    int32_t binnerInputWidth = 0;
    int32_t binnerInputHeight = 0;
    qv_rectangle binnerInputCrop = {};
    int32_t binnerOutputWidth = 0;
    int32_t binnerOutputHeight = 0;
    qv_rectangle binnerOutputCrop = {};
    int32_t binningHorizontal = 1;
    int32_t binningVertical = 1;
    int32_t scalerInputWidth = 0;
    int32_t scalerInputHeight = 0;
    qv_rectangle scalerInputCrop = {};
    int32_t scalerOutputWidth = 0;
    int32_t scalerOutputHeight = 0;
    qv_rectangle scalerOutputCrop = {};
    int32_t scalingNumerator = 1;
    int32_t scalingDenominator = 1;
};

} // namespace NUXO

#endif
