// SPDX-License-Identifier: Apache-2.0
#include "RecordText.h"

namespace NuxoTool {

namespace {

JsonValue jsonCrop(const qv_rectangle& crop)
{
    JsonValue json;
    json["left"] = crop.left;
    json["top"] = crop.top;
    json["right"] = crop.right;
    json["bottom"] = crop.bottom;
    return json;
}

} // namespace

std::string sizeText(int32_t width, int32_t height)
{
    return std::to_string(width) + 'x' + std::to_string(height);
}

std::string cropText(const qv_rectangle& crop)
{
    if (crop.left == 0 && crop.top == 0 && crop.right == 0 && crop.bottom == 0) return "-";
    std::string text;
    for (const int32_t side : {crop.left, crop.top, crop.right, crop.bottom}) {
        text += (text.empty() ? "" : ",") + std::to_string(side);
    }
    return text;
}

std::string stateText(int32_t enable)
{
    switch (enable) {
    case QV_ISP_ZMT_KERNEL_BYPASS: return "BYPASS";
    case QV_ISP_ZMT_KERNEL_ENABLED: return "ENABLED";
    case QV_ISP_ZMT_KERNEL_DISABLED: return "DISABLED";
    default: return std::to_string(enable);
    }
}

JsonValue jsonResolution(const qv_isp_zmt_resolution_info& resolution)
{
    JsonValue json;
    json["input_width"] = resolution.input_width;
    json["input_height"] = resolution.input_height;
    json["input_crop"] = jsonCrop(resolution.input_crop);
    json["output_width"] = resolution.output_width;
    json["output_height"] = resolution.output_height;
    json["output_crop"] = jsonCrop(resolution.output_crop);
    return json;
}

bool isBlank(const qv_isp_zmt_resolution_info& resolution)
{
    return resolution.input_width == 0 && resolution.input_height == 0 && resolution.output_width == 0 &&
           resolution.output_height == 0;
}

} // namespace NuxoTool
