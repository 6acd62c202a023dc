// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_RECORD_TEXT_H
#define NUXO_TOOL_RECORD_TEXT_H

#include "JsonRenderer.h"

#include <nuxo/records/qv_isp_zmt_run_kernels.h>

#include <cstdint>
#include <string>

namespace NuxoTool {

/// "1920x1080"
std::string sizeText(int32_t width, int32_t height);

/// "left,top,right,bottom", "-" without any crop.
std::string cropText(const qv_rectangle& crop);

/// "BYPASS", "ENABLED" or "DISABLED", otherwise the number.
std::string stateText(int32_t enable);

/// An object with input_width, input_height, input_crop and the same of the output.
JsonValue jsonResolution(const qv_isp_zmt_resolution_info& resolution);

/// Whether a record of no size stands for none.
bool isBlank(const qv_isp_zmt_resolution_info& resolution);

} // namespace NuxoTool

#endif
