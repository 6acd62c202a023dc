// SPDX-License-Identifier: Apache-2.0
// Internal: what the steps of the kernel utilities share.
#ifndef NUXO_KERNELS_KERNEL_STEPS_H
#define NUXO_KERNELS_KERNEL_STEPS_H

#include <nuxo/Log.h>
#include <nuxo/kernels/ZmtTevUtils.h>
#include <nuxo/records/qv_isp_zmt_run_kernels.h>
#include <nuxo/tree/IGraphConfig.h>

namespace NUXO {

/// Whether the steps are logged one by one. Then chains of streams are followed to their ends each time, as the log shows
/// them; otherwise only as far as something is left to do, since together they can be as long as the square of a graph.
inline bool isTraced()
{
    return (g_qv_log_common_level & LogDebug) != 0;
}

/// What ZmtTevUtils::kernelGetResolutions gives, but lets std::bad_alloc out.
int firstResolution(const IGraphConfig& kernel, qv_isp_zmt_resolution_info& resolution);

/// What ZmtTevUtils::handleSinkPort does once the port is found, but lets std::bad_alloc out.
int noteSinkPort(const ZmtTevUtils::KernelInfo& info, std::vector<int>& disabledSinks, int kernelId);

/// Messages that more than one step gives.
void reportNotInitialized();
void reportBadKernelIds();

} // namespace NUXO

#endif
