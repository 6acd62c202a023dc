// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_RECORDS_KERNEL_CONFIG_CONTAINER_H
#define NUXO_RECORDS_KERNEL_CONFIG_CONTAINER_H

#include <nuxo/records/qv_isp_zmt_run_kernels.h>

#include <cstdint>

namespace NUXO {

/// Bits of KernelConfigContainer::valid. Bit 1 has no meaning.
enum KernelConfigField : uint32_t { KernelConfigEnable = 2, KernelConfigBpp = 4, KernelConfigMetadata = 8 };

/// Replaces values of the run-kernel records that have one uuid.
struct KernelConfigContainer {
    uint32_t valid = 0;       ///< which fields apply, bits of KernelConfigField
    uint32_t kernel_uuid = 0; ///< `pal_uuid` of the kernel
    int32_t enable = 0;
    uint32_t metadata[QV_ISP_ZMT_METADATA_COUNT] = {};
    qv_isp_zmt_bpp_info bpp_info = {};
};

} // namespace NUXO

#endif
