// SPDX-License-Identifier: Apache-2.0
// Internal: what the steps of the kernel utilities share.
#ifndef NUXO_KERNELS_KERNEL_STEPS_H
#define NUXO_KERNELS_KERNEL_STEPS_H

#include <nuxo/NuxoStatus.h>
#include <nuxo/records/qv_isp_zmt_run_kernels.h>
#include <nuxo/tree/IGraphConfig.h>

#include <new>

namespace NUXO {

/// The status of a public question, but throws std::bad_alloc for StatusNoMemory, so that what memory could not hold does
/// not count as missing.
inline int unlessExhausted(int status)
{
    if (status == StatusNoMemory) throw std::bad_alloc();
    return status;
}

/// What ZmtTevUtils::kernelGetResolutions gives, but lets std::bad_alloc out.
int firstResolution(const IGraphConfig& kernel, qv_isp_zmt_resolution_info& resolution);

/// Messages that more than one step gives.
void reportNotInitialized();
void reportBadKernelIds();

} // namespace NUXO

#endif
