/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NUXO_RECORDS_QV_ISP_ZMT_RUN_KERNELS_H
#define NUXO_RECORDS_QV_ISP_ZMT_RUN_KERNELS_H

#include <stddef.h>
#include <stdint.h>

/**
 * What the parameter library of the image signal processor receives for each program group: one record a kernel. Field
 * order, widths and offsets are shared with that library.
 */

/** A crop: pixels removed from each side. */
typedef struct qv_rectangle {
    int32_t left;
    int32_t top;
    int32_t right;
    int32_t bottom;
} qv_rectangle;

/**
 * What one stage takes in and gives out, in pixels and lines.
 *
 * As a history it tells what happened to the frame between the source and a kernel: input is the full size of the source,
 * input crop everything cropped so far in pixels of the source, output the size that arrives.
 */
typedef struct qv_isp_zmt_resolution_info {
    int32_t input_width;
    int32_t input_height;
    qv_rectangle input_crop;
    int32_t output_width;
    int32_t output_height;
    qv_rectangle output_crop;
} qv_isp_zmt_resolution_info;

/** Values of qv_isp_zmt_run_kernels.enable. */
enum qv_isp_zmt_kernel_state {
    QV_ISP_ZMT_KERNEL_BYPASS = 0,
    QV_ISP_ZMT_KERNEL_ENABLED = 1,
    QV_ISP_ZMT_KERNEL_DISABLED = 2
};

/** Number of free values that a record carries for the parameter library. */
#define QV_ISP_ZMT_METADATA_COUNT 4

/** Bits per pixel at a kernel's input and output, 0 where the graph does not tell. */
typedef struct qv_isp_zmt_bpp_info {
    uint32_t input_bpp;
    uint32_t output_bpp;
} qv_isp_zmt_bpp_info;

/** One kernel. The records that it points to belong to the object that filled it. */
typedef struct qv_isp_zmt_run_kernels {
    uint32_t stream_id;
    uint32_t kernel_uuid;                           /**< identity in the parameter library, `pal_uuid` of the graph */
    int32_t enable;                                 /**< one of qv_isp_zmt_kernel_state */
    uint32_t padding;                               /**< 0 */
    qv_isp_zmt_resolution_info* resolution_info;    /**< the kernel's own resolutions, null when it declares none */
    qv_isp_zmt_resolution_info* resolution_history; /**< of the frame that arrives at the kernel, or null */
    uint32_t metadata[QV_ISP_ZMT_METADATA_COUNT];
    qv_isp_zmt_bpp_info bpp_info;
    uint32_t output_count; /**< consecutive entries at resolution_info; 0 means exactly one */
    uint8_t reserved[20];  /**< belongs to the parameter library */
} qv_isp_zmt_run_kernels;

/** The kernels of one program group or of one stream, in kernel-id order. */
typedef struct qv_isp_zmt_program_group {
    uint32_t kernel_count;
    qv_isp_zmt_run_kernels* run_kernels; /**< owned by the object that filled it, until it is initialised again */
    uint32_t operation_mode;             /**< tuning mode, 0 when the graph does not tell */
} qv_isp_zmt_program_group;

#ifdef __cplusplus
static_assert(sizeof(void*) == 8, "the layout is that of machines with 64-bit pointers");
static_assert(sizeof(qv_rectangle) == 16, "layout is shared with the parameter library");
static_assert(offsetof(qv_rectangle, left) == 0, "layout");
static_assert(offsetof(qv_rectangle, top) == 4, "layout");
static_assert(offsetof(qv_rectangle, right) == 8, "layout");
static_assert(offsetof(qv_rectangle, bottom) == 12, "layout");
static_assert(sizeof(qv_isp_zmt_resolution_info) == 48, "layout is shared with the parameter library");
static_assert(offsetof(qv_isp_zmt_resolution_info, input_width) == 0, "layout");
static_assert(offsetof(qv_isp_zmt_resolution_info, input_height) == 4, "layout");
static_assert(offsetof(qv_isp_zmt_resolution_info, input_crop) == 8, "layout");
static_assert(offsetof(qv_isp_zmt_resolution_info, output_width) == 24, "layout");
static_assert(offsetof(qv_isp_zmt_resolution_info, output_height) == 28, "layout");
static_assert(offsetof(qv_isp_zmt_resolution_info, output_crop) == 32, "layout");
static_assert(sizeof(qv_isp_zmt_run_kernels) == 80, "layout is shared with the parameter library");
static_assert(offsetof(qv_isp_zmt_run_kernels, stream_id) == 0, "layout");
static_assert(offsetof(qv_isp_zmt_run_kernels, kernel_uuid) == 4, "layout");
static_assert(offsetof(qv_isp_zmt_run_kernels, enable) == 8, "layout");
static_assert(offsetof(qv_isp_zmt_run_kernels, padding) == 12, "layout");
static_assert(offsetof(qv_isp_zmt_run_kernels, resolution_info) == 16, "layout");
static_assert(offsetof(qv_isp_zmt_run_kernels, resolution_history) == 24, "layout");
static_assert(offsetof(qv_isp_zmt_run_kernels, metadata) == 32, "layout");
static_assert(offsetof(qv_isp_zmt_run_kernels, bpp_info.input_bpp) == 48, "layout");
static_assert(offsetof(qv_isp_zmt_run_kernels, bpp_info.output_bpp) == 52, "layout");
static_assert(offsetof(qv_isp_zmt_run_kernels, output_count) == 56, "layout");
static_assert(offsetof(qv_isp_zmt_run_kernels, reserved) == 60, "layout");
static_assert(sizeof(qv_isp_zmt_program_group) == 24, "layout is shared with the parameter library");
static_assert(offsetof(qv_isp_zmt_program_group, kernel_count) == 0, "layout");
static_assert(offsetof(qv_isp_zmt_program_group, run_kernels) == 8, "layout");
static_assert(offsetof(qv_isp_zmt_program_group, operation_mode) == 16, "layout");
#endif

#endif
