// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/histories/CropHistory.h>
#include <nuxo/records/Wrap.h>

#include <cstdint>

namespace NUXO {

namespace {

constexpr int kFractionBits = 10;

// How many pixels of the source one pixel of the frame stands for.
int64_t sourcePixels(int32_t source, int32_t cropBefore, int32_t cropAfter, int32_t frame)
{
    return (int64_t{source} - cropBefore - cropAfter) * (1 << kFractionBits) / frame;
}

void add(int32_t& total, int32_t crop, int64_t scale)
{
    // No real crop comes near 64 bits; a hostile one wraps instead of overflowing.
    const uint64_t product = static_cast<uint64_t>(int64_t{crop}) * static_cast<uint64_t>(scale);
    total = wrapTo32(total + (static_cast<int64_t>(product) >> kFractionBits));
}

} // namespace

bool hasOutputSize(const qv_isp_zmt_resolution_info& history)
{
    if (history.output_width != 0 && history.output_height != 0) return true;
    NUXO_ERROR("Resolution history output width or height is 0");
    return false;
}

void addFrameCrop(qv_isp_zmt_resolution_info& history, const qv_rectangle& crop)
{
    qv_rectangle& total = history.input_crop;
    const int64_t x = sourcePixels(history.input_width, total.left, total.right, history.output_width);
    const int64_t y = sourcePixels(history.input_height, total.top, total.bottom, history.output_height);
    add(total.left, crop.left, x);
    add(total.top, crop.top, y);
    add(total.right, crop.right, x);
    add(total.bottom, crop.bottom, y);
}

} // namespace NUXO
