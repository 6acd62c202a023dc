// SPDX-License-Identifier: Apache-2.0
// Internal: how a kernel's crop counts in pixels of the source.
#ifndef NUXO_HISTORIES_CROP_HISTORY_H
#define NUXO_HISTORIES_CROP_HISTORY_H

#include <nuxo/records/qv_isp_zmt_run_kernels.h>

namespace NUXO {

/// Whether the history's output has a size by which crops can be scaled; says so when it has none.
bool hasOutputSize(const qv_isp_zmt_resolution_info& history);

/// Adds a crop of the frame that arrives to what was cropped before. One pixel of that frame stands for
/// (input - input crop) / output pixels of the source, with ten fractional bits cut off; results wrap at 32 bits.
///
/// @param history  has an output size
void addFrameCrop(qv_isp_zmt_resolution_info& history, const qv_rectangle& crop);

} // namespace NUXO

#endif
