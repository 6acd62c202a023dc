/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NUXO_FORMATS_QV_CSS_FRAME_FORMAT_H
#define NUXO_FORMATS_QV_CSS_FRAME_FORMAT_H

#include <qv_tools/qv_export.h>

#include <stdbool.h>
#include <stdint.h>

/** Four-character codes and the frame formats of the camera host library (values of its qv_css_frame_format_type). */

#ifdef __cplusplus
extern "C" {
#endif

/**
 * The frame format that a four-character code stands for.
 *
 * @param fourcc       first character in the most significant byte
 * @param frameFormat  receives the frame format; may be null
 * @param rawFlag      receives 1 for raw formats, else 0; may be null
 * @param p64Flag      receives 1 for formats packed into 64-bit words, else 0; may be null
 * @return             0; -32 (StatusBadArgument), with nothing written, for a code that has no frame format
 */
QV_EXPORT int fourcc_to_css_frame_format(uint32_t fourcc, uint32_t* frameFormat, uint8_t* rawFlag, uint8_t* p64Flag);

/**
 * Whether the format with this code is compressed; false, with an error line, when there is none. The first call fills the
 * working table of formats, so it must not run while other threads use that.
 */
QV_EXPORT bool qv_cipf_is_compressed_format(uint32_t fourcc);

#ifdef __cplusplus
}
#endif

#endif
