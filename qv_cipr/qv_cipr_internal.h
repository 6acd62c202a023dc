/* SPDX-License-Identifier: Apache-2.0 */
/* Internal: what the sources of the C runtime share. */
#ifndef QV_CIPR_QV_CIPR_INTERNAL_H
#define QV_CIPR_QV_CIPR_INTERNAL_H

#include <stddef.h>

/** Status numbers of the runtime; the same values as the library's NuxoStatus. */
enum qv_cipr_status {
    QV_CIPR_OK = 0,
    /** Inconsistent flags, or something needed for the operation is missing. */
    QV_CIPR_MISSING_DATA = -2,
    /** Memory is exhausted. */
    QV_CIPR_NO_MEMORY = -4,
    /** The object lacks the operation, or is in the wrong state for it. */
    QV_CIPR_MISSING_OBJECT = -16,
    /** Null argument, or an argument that the operation does not allow. */
    QV_CIPR_BAD_ARGUMENT = -32
};

static inline const char* qv_text_or_empty(const char* text)
{
    return text != NULL ? text : "";
}

#endif
