/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NUXO_TESTS_FORMATS_C99_FRAME_OF_C_H
#define NUXO_TESTS_FORMATS_C99_FRAME_OF_C_H

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** What a C program learns of a frame through every function that it can call. */
typedef struct frame_of_c {
    int status;
    bool is_compressed;
    uint32_t frame_format;
    uint8_t raw_flag;
    uint8_t p64_flag;
    bool is_valid;
    bool is_tiled;
    uint32_t bit_depth;
    uint32_t alignment;
    uint32_t stride_factor;
    uint32_t chroma_stride;
    uint32_t chroma_height;
    uint32_t input_alignment;
    uint32_t input_flag;
    uint32_t size;
    uint32_t ts_offsets[3];
    uint32_t ts_sizes[3];
    uint32_t plane_sizes[3];
} frame_of_c;

frame_of_c describe_frame_in_c(uint32_t fourcc, uint32_t bit_depth, uint32_t stride, uint32_t height);

#ifdef __cplusplus
}
#endif

#endif
