/* SPDX-License-Identifier: Apache-2.0 */
#ifndef QV_CIPR_QV_CIPR_STRING_H
#define QV_CIPR_QV_CIPR_STRING_H

#include <qv_tools/qv_export.h>

#include <stddef.h>

/** Bounded string functions. */

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Formats into at most the smaller of both sizes, the terminating NUL included. A destination smaller than the source
 * is worth a warning.
 *
 * @param dst       receives the text; always NUL-terminated unless one of the sizes is 0
 * @param dst_size  bytes of @p dst
 * @param src_size  bytes that the caller expects to need
 * @param format    printf format
 * @return          length of the whole text, as if nothing had been cut; negative when formatting fails
 */
QV_EXPORT int qv_cipr_snprintf_s(char* dst, size_t dst_size, size_t src_size, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

/** Length of @p text, at most @p max_size; no byte beyond that is read. */
QV_EXPORT size_t qv_cipr_strnlen(const char* text, size_t max_size);

#ifdef __cplusplus
}
#endif

#endif
