// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/records/RunKernels.h>
#include <nuxo/records/Wrap.h>

#include <qv_cipr/qv_cipr_string.h>

#include <algorithm>
#include <iterator>

namespace NUXO {

namespace {

constexpr int kFractionBits = 4;
constexpr int64_t kSixteenths = 1 << kFractionBits;

int32_t scaled(int32_t side, int64_t divisor, int32_t factor)
{
    const int64_t quotient = int64_t{wrapTo32(int64_t{side} * factor)} / divisor;
    return wrapTo32(quotient >> kFractionBits);
}

void add(int32_t& total, int32_t side, int64_t divisor, int32_t factor)
{
    total = wrapTo32(int64_t{total} + scaled(side, divisor, factor));
}

const char* nameOfState(int32_t enable)
{
    switch (enable) {
    case QV_ISP_ZMT_KERNEL_BYPASS: return "BYPASS";
    case QV_ISP_ZMT_KERNEL_ENABLED: return "ENABLED";
    case QV_ISP_ZMT_KERNEL_DISABLED: return "DISABLED";
    default: return "NOT SUPPORTED";
    }
}

void dumpRunKernel(const qv_isp_zmt_run_kernels& kernel)
{
    NUXO_ERROR("kernel_uuid: %d [%s (%d)]", static_cast<int>(kernel.kernel_uuid), nameOfState(kernel.enable),
               kernel.enable);
    NUXO_ERROR("stream_id %d", static_cast<int>(kernel.stream_id));
    NUXO_ERROR("metadata: (%d %d %d %d)", static_cast<int>(kernel.metadata[0]), static_cast<int>(kernel.metadata[1]),
               static_cast<int>(kernel.metadata[2]), static_cast<int>(kernel.metadata[3]));
    if (kernel.resolution_info != nullptr) {
        dumpResInfo(kernel);
    } else {
        NUXO_ERROR("res info: NULL");
    }
    if (kernel.resolution_history != nullptr) {
        dumpResHistory(*kernel.resolution_history, "resolution_history");
    } else {
        NUXO_ERROR("res history: NULL");
    }
    NUXO_ERROR("bpp_info in:%d out:%d", static_cast<int>(kernel.bpp_info.input_bpp),
               static_cast<int>(kernel.bpp_info.output_bpp));
}

} // namespace

char* resInfoToStr(const qv_isp_zmt_resolution_info& info)
{
    static char text[256]; // one for all, as clients of the dumps know it
    const qv_rectangle& in = info.input_crop;
    const qv_rectangle& out = info.output_crop;
    static_cast<void>(qv_cipr_snprintf_s( // twelve numbers always fit
        text, sizeof(text), sizeof(text),
        "(iw: %d ih: %d (l: %d, t: %d, r: %d, b: %d),ow: %d, oh: %d (l: %d, t: %d, r: %d, b: %d)", info.input_width,
        info.input_height, in.left, in.top, in.right, in.bottom, info.output_width, info.output_height, out.left,
        out.top, out.right, out.bottom));
    return text;
}

void accumulateCrop(qv_rectangle& total, const qv_rectangle& crop, int divisor, int multiplier)
{
    const int32_t factor = wrapTo32(multiplier * kSixteenths);
    const int64_t nonZero = divisor == 0 ? 1 : divisor;
    add(total.top, crop.top, nonZero, factor);
    add(total.left, crop.left, nonZero, factor);
    add(total.bottom, crop.bottom, nonZero, factor);
    add(total.right, crop.right, nonZero, factor);
}

void applyKernelConfigs(const std::vector<KernelConfigContainer>& configs, qv_isp_zmt_run_kernels& kernel)
{
    for (const KernelConfigContainer& config : configs) {
        if (config.kernel_uuid != kernel.kernel_uuid) continue;
        if ((config.valid & KernelConfigEnable) != 0) kernel.enable = config.enable;
        if ((config.valid & KernelConfigBpp) != 0) kernel.bpp_info = config.bpp_info;
        if ((config.valid & KernelConfigMetadata) != 0)
            std::copy(std::begin(config.metadata), std::end(config.metadata), kernel.metadata);
    }
}

void dumpResInfo(const qv_isp_zmt_run_kernels& kernel)
{
    if (kernel.resolution_info == nullptr) return;
    if (kernel.output_count == 0) NUXO_ERROR("res_info: %s", resInfoToStr(*kernel.resolution_info));
    for (uint32_t i = 0; i < kernel.output_count; ++i)
        NUXO_ERROR("res_info[%d]: %s", static_cast<int>(i), resInfoToStr(kernel.resolution_info[i]));
}

void dumpRunKernels(const qv_isp_zmt_run_kernels* kernels, uint32_t count)
{
    if (kernels == nullptr) return;
    for (uint32_t i = 0; i < count; ++i) {
        if (i > 0) NUXO_ERROR("%s", kDashLine);
        dumpRunKernel(kernels[i]);
    }
}

void dumpResHistory(const qv_isp_zmt_resolution_info& history, const char* name)
{
    NUXO_ERROR("%s:%s", name == nullptr ? "NA" : name, resInfoToStr(history));
}

} // namespace NUXO
