// SPDX-License-Identifier: Apache-2.0
// Internal: the attributes of kernels, for all who read them.
#ifndef NUXO_CAMERA_KERNEL_READING_H
#define NUXO_CAMERA_KERNEL_READING_H

#include <nuxo/tree/IGraphConfig.h>

#include <cstddef>
#include <string>

namespace NUXO {

/// Converts decimal items that are parted by commas; nothing follows the last one, and text that is no number counts as 0.
///
/// @param items  at least @p limit entries; those without an item are untouched
/// @return       false when the text holds more than @p limit items
bool convertItems(const std::string& text, unsigned int* items, size_t limit);

/// Where to put the integers of a kernel; null for what nobody asks for.
struct KernelOutputs {
    int* palUuid;
    int* id;
    int* enable;       ///< 1 when absent
    int* rcb;          ///< 0 when absent
    int* branchPoint;  ///< 0 when absent
    int* sinkPort;     ///< -1 when absent
    int* restorePoint; ///< -1 when absent
};

/// Reads them; those before a failure stay written. StatusOk, or the status of reading `pal_uuid` or `id`.
int readKernelValues(const IGraphConfig& kernel, const KernelOutputs& out);

} // namespace NUXO

#endif
