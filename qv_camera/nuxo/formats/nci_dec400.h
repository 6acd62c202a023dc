/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NUXO_FORMATS_NCI_DEC400_H
#define NUXO_FORMATS_NCI_DEC400_H

#include <qv_tools/qv_export.h>

#include <stdbool.h>
#include <stdint.h>

/**
 * Geometry of buffers that the DEC400 compressor writes: image planes cut into tiles, and behind them a table for each
 * plane with some bits of status for each tile.
 *
 * Frame formats are those of fourcc_to_css_frame_format; 3 is planar 4:2:0, 5 semi-planar, 7 its tiled variant, 20 to 23
 * are the Bayer orders, 49 to 56 semi-planar with 10 or 12 bits. All functions are pure except that
 * nci_dec400_cmprs_calc_buf_size logs its steps. All sizes are modulo 2^32. Null outputs are skipped.
 */

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Whether program groups accept this frame format compressed. The second argument is not read. Sizes can be computed for
 * more than is accepted, here and below: for 52, and for 3 with 16 bits.
 */
QV_EXPORT bool nci_dec400_psys_cmprs_validate_format(uint32_t fmt, bool reserved);

/** Whether program groups accept this frame format compressed at @p depth significant bits. */
QV_EXPORT bool nci_dec400_psys_cmprs_validate_bit_depth(uint32_t fmt, uint32_t depth);

/** Significant bits that the frame format implies, 0 when it implies none. The second argument is not read. */
QV_EXPORT uint32_t nci_dec400_psys_cmprs_get_bit_depth(uint32_t fmt, uint32_t reserved);

/**
 * Alignment of the stride of a compressed buffer that program groups access.
 *
 * @param fmt           frame format
 * @param reserved      not read
 * @param tnr           whether it is a reference frame of the temporal noise filter
 * @param strideFactor  receives the factor of strides that goes with the alignment, 1 to 8
 * @param extra         receives 0
 * @return              bytes; 1 for frame formats without alignment
 */
QV_EXPORT uint32_t nci_dec400_cmprs_get_stride_alignment(uint32_t fmt, uint32_t reserved, bool tnr,
                                                         uint32_t* strideFactor, uint32_t* extra);

/**
 * Alignment of the stride of a compressed buffer that the input system writes.
 *
 * @param pinType     kind of the input system's pin
 * @param isysFormat  frame format of the pin
 * @param mipiType    data type of the MIPI packets
 * @param flag        receives 1 when the combination can be compressed, else 0
 * @return            bytes; 0 when it cannot
 */
QV_EXPORT uint32_t nci_dec400_isys_cmprs_get_stride_alignment(uint32_t pinType, uint32_t isysFormat, uint32_t mipiType,
                                                              uint32_t* flag);

/** Bytes of a tile; 0 for a combination that has none. @p plane counts from 0. */
QV_EXPORT uint32_t nci_dec400_cmpr_get_tile_size(uint32_t fmt, uint32_t bitDepth, uint32_t plane, bool tnr);

/** Number of planes, 1 for unknown frame formats. */
QV_EXPORT uint32_t nci_dec400_cmpr_get_num_planes(uint32_t fmt);

/** By how much chroma planes have fewer lines than the luma plane. */
QV_EXPORT uint32_t nci_dec400_cmpr_get_chroma_height_div(uint32_t fmt);

/** By how much lines of chroma planes are shorter than those of the luma plane. */
QV_EXPORT uint32_t nci_dec400_cmpr_get_chroma_stride_div(uint32_t fmt);

/** Whether pixels are stored tile by tile. */
QV_EXPORT bool nci_dec400_cmprs_is_tiled(uint32_t fmt);

/**
 * Bytes of one plane and its tile-status table.
 *
 * @param stride    bytes per line
 * @param height    lines
 * @param tileSize  bytes of a tile; for 0 there is no table
 * @param tiled     whether pixels are stored tile by tile
 * @param imgSize   receives the bytes of the image
 * @param tsSize    receives the bytes of the table
 * @return          their sum
 */
QV_EXPORT uint32_t nci_dec400_cmprs_calc_plane_buf_size(uint32_t stride, uint32_t height, uint32_t tileSize, bool tiled,
                                                        uint32_t* imgSize, uint32_t* tsSize);

/**
 * Bytes of a whole buffer: all image planes, then the tile-status tables, each from a multiple of 4096 bytes on; the end
 * is rounded up to 4096 as well. Logs its steps as errors.
 *
 * @param fmt         frame format
 * @param bitDepth    significant bits of a sample
 * @param tnr         whether it is a reference frame of the temporal noise filter
 * @param stride      bytes per line of the first plane
 * @param height      lines of the first plane
 * @param extra_mem   bytes to leave between the image and the tables
 * @param ts_offsets  receives where each table starts, 0 for planes that do not exist
 * @param ts_sizes    receives the bytes of each table, likewise
 * @return            bytes; 0, with cleared outputs, for a combination that has no tile size
 */
QV_EXPORT uint32_t nci_dec400_cmprs_calc_buf_size(uint32_t fmt, uint32_t bitDepth, bool tnr, uint32_t stride,
                                                  uint32_t height, uint32_t extra_mem, uint32_t ts_offsets[3],
                                                  uint32_t ts_sizes[3]);

#ifdef __cplusplus
}
#endif

#endif
