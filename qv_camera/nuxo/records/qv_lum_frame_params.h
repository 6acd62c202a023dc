/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NUXO_RECORDS_QV_LUM_FRAME_PARAMS_H
#define NUXO_RECORDS_QV_LUM_FRAME_PARAMS_H

#include <stddef.h>
#include <stdint.h>

/**
 * The frame that statistics refer to, as the 3A library reads it: where the final image lies in the sensor's pixel array,
 * how large it is there, and by which fractions it was scaled. Offsets and sizes are in pixels of the pixel array.
 */
typedef struct qv_lum_frame_params {
    uint16_t horizontal_crop_offset; /**< left edge of the final image */
    uint16_t vertical_crop_offset;   /**< top edge */
    uint16_t cropped_image_width;
    uint16_t cropped_image_height;
    uint8_t horizontal_scaling_numerator;
    uint8_t horizontal_scaling_denominator;
    uint8_t vertical_scaling_numerator;
    uint8_t vertical_scaling_denominator;
} qv_lum_frame_params;

#ifdef __cplusplus
static_assert(sizeof(qv_lum_frame_params) == 12, "layout is shared with the 3A library");
static_assert(offsetof(qv_lum_frame_params, horizontal_crop_offset) == 0, "layout");
static_assert(offsetof(qv_lum_frame_params, vertical_crop_offset) == 2, "layout");
static_assert(offsetof(qv_lum_frame_params, cropped_image_width) == 4, "layout");
static_assert(offsetof(qv_lum_frame_params, cropped_image_height) == 6, "layout");
static_assert(offsetof(qv_lum_frame_params, horizontal_scaling_numerator) == 8, "layout");
static_assert(offsetof(qv_lum_frame_params, horizontal_scaling_denominator) == 9, "layout");
static_assert(offsetof(qv_lum_frame_params, vertical_scaling_numerator) == 10, "layout");
static_assert(offsetof(qv_lum_frame_params, vertical_scaling_denominator) == 11, "layout");
#endif

#endif
