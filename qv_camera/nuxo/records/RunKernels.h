// SPDX-License-Identifier: Apache-2.0
// Internal: what both producers of run-kernel records do with them.
#ifndef NUXO_RECORDS_RUN_KERNELS_H
#define NUXO_RECORDS_RUN_KERNELS_H

#include <nuxo/records/KernelConfigContainer.h>
#include <nuxo/records/qv_isp_zmt_run_kernels.h>

#include <cstdint>
#include <vector>

namespace NUXO {

constexpr const char* kDashLine = "-------------------------------------------------------";
constexpr const char* kDoubleLine = "=======================================================";

/// The record as text, in the one buffer that all calls share: format it last before it is logged, one record a line.
char* resInfoToStr(const qv_isp_zmt_resolution_info& info);

/// Adds @p crop * @p multiplier / @p divisor, computed with four fractional bits, to each side of @p total. Wraps at 32 bits;
/// a divisor of 0 counts as 1.
void accumulateCrop(qv_rectangle& total, const qv_rectangle& crop, int divisor, int multiplier);

/// Applies the configurations whose uuid is the kernel's, first to last.
void applyKernelConfigs(const std::vector<KernelConfigContainer>& configs, qv_isp_zmt_run_kernels& kernel);

/// Logs the kernel's own resolutions; nothing when it has none.
void dumpResInfo(const qv_isp_zmt_run_kernels& kernel);

/// Logs an array of records.
void dumpRunKernels(const qv_isp_zmt_run_kernels* kernels, uint32_t count);

/// Logs a history under a name.
void dumpResHistory(const qv_isp_zmt_resolution_info& history, const char* name);

} // namespace NUXO

#endif
