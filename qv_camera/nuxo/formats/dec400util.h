// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_FORMATS_DEC400UTIL_H
#define NUXO_FORMATS_DEC400UTIL_H

#include <qv_tools/qv_export.h>

#include <nuxo/formats/nci_dec400.h>

#include <cstdint>

/// Geometry of compressed buffers by four-character code. A code without frame format counts as tiled semi-planar (7).
namespace dec400util {

/// Number of planes, see nci_dec400_cmpr_get_num_planes.
QV_EXPORT uint32_t numberOfPlanes(uint32_t fourcc);

/// Bytes of a whole buffer, see nci_dec400_cmprs_calc_buf_size.
///
/// @param ts_offsets  receives three byte offsets; may be null
/// @param ts_sizes    receives three byte sizes; may be null
QV_EXPORT uint32_t calcBufferSize(uint32_t fourcc, uint32_t bitDepth, bool tnr, uint32_t stride, uint32_t height,
                                  uint32_t extra_mem, uint32_t* ts_offsets, uint32_t* ts_sizes);

} // namespace dec400util

#endif
