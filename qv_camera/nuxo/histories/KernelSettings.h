// SPDX-License-Identifier: Apache-2.0
// Internal: what the graph says about one kernel, as both producers of run-kernel records read it. These functions let
// std::bad_alloc out.
#ifndef NUXO_HISTORIES_KERNEL_SETTINGS_H
#define NUXO_HISTORIES_KERNEL_SETTINGS_H

#include <nuxo/records/qv_isp_zmt_run_kernels.h>
#include <nuxo/tree/IGraphConfig.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace NUXO {

/// The attributes of a kernel, with the values that stand for absent ones.
struct KernelSettings {
    int palUuid = 0;
    int id = 0;
    int enable = QV_ISP_ZMT_KERNEL_ENABLED;
    int rcb = 0;
    int branchPoint = 0;
    int sinkPort = -1;
    int restorePoint = -1;
    uint32_t metadata[QV_ISP_ZMT_METADATA_COUNT] = {};
};

/// Reads the integers of the text `metadata`: 0 for what is absent or no number; further ones are left out with a warning.
void readKernelMetadata(const IGraphConfig& kernel, uint32_t (&metadata)[QV_ISP_ZMT_METADATA_COUNT]);

/// Reads the attributes of a kernel. StatusOk, or the status of reading `pal_uuid` or `id`.
int readKernelSettings(const IGraphConfig& kernel, KernelSettings& settings);

/// Whether the kernel states its own sizes: `input` has a `width`, and `output` has one or has child nodes.
bool kernelHasResolutions(const IGraphConfig& kernel);

/// One output of a kernel: how the graph calls it (`id`, else `name`, else "0") and its resolutions.
using KernelResolution = std::pair<std::string, qv_isp_zmt_resolution_info>;

/// The resolutions of all outputs: every child `output` that has a `width`, or else its child nodes that have one. Crops that
/// are absent are 0.
///
/// @param resolutions  cleared, then filled in the order of the graph
/// @return             StatusOk, also when there is none; StatusMissingData when `width` or `height` of the input or the
///                     `height` of an output is missing
int kernelGetResolutions(const IGraphConfig& kernel, std::vector<KernelResolution>& resolutions);

/// Bits per pixel of the kernel's `input` and `output`, 0 when absent.
qv_isp_zmt_bpp_info kernelGetBpp(const IGraphConfig& kernel);

} // namespace NUXO

#endif
