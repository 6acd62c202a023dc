/* SPDX-License-Identifier: Apache-2.0 */
#include <nuxo/formats/nci_dec400.h>
#include <nuxo/formats/qv_css_frame_format.h>

#include "formats/c99/frame_of_c.h"

#include <stddef.h>
#include <string.h>

enum { DEPTH_UNUSED = 0, PIN = 1, MIPI_RAW8 = 42 };

frame_of_c describe_frame_in_c(uint32_t fourcc, uint32_t bit_depth, uint32_t stride, uint32_t height)
{
    frame_of_c frame;
    memset(&frame, 0, sizeof(frame));
    frame.is_compressed = qv_cipf_is_compressed_format(fourcc);
    frame.status = fourcc_to_css_frame_format(fourcc, &frame.frame_format, &frame.raw_flag, &frame.p64_flag);
    if (frame.status != 0) return frame;

    const uint32_t fmt = frame.frame_format;
    frame.is_valid =
        nci_dec400_psys_cmprs_validate_format(fmt, false) && nci_dec400_psys_cmprs_validate_bit_depth(fmt, bit_depth);
    frame.is_tiled = nci_dec400_cmprs_is_tiled(fmt);
    frame.bit_depth = nci_dec400_psys_cmprs_get_bit_depth(fmt, DEPTH_UNUSED);
    frame.alignment = nci_dec400_cmprs_get_stride_alignment(fmt, DEPTH_UNUSED, false, &frame.stride_factor, NULL);
    frame.chroma_stride = stride / nci_dec400_cmpr_get_chroma_stride_div(fmt);
    frame.chroma_height = height / nci_dec400_cmpr_get_chroma_height_div(fmt);
    frame.input_alignment = nci_dec400_isys_cmprs_get_stride_alignment(PIN, fmt, MIPI_RAW8, &frame.input_flag);
    frame.size =
        nci_dec400_cmprs_calc_buf_size(fmt, bit_depth, false, stride, height, 0, frame.ts_offsets, frame.ts_sizes);
    for (uint32_t plane = 0; plane < nci_dec400_cmpr_get_num_planes(fmt) && plane < 3; ++plane) {
        const uint32_t tile = nci_dec400_cmpr_get_tile_size(fmt, bit_depth, plane, false);
        frame.plane_sizes[plane] = nci_dec400_cmprs_calc_plane_buf_size(plane == 0 ? stride : frame.chroma_stride,
                                                                        plane == 0 ? height : frame.chroma_height, tile,
                                                                        frame.is_tiled, NULL, NULL);
    }
    return frame;
}
