/* SPDX-License-Identifier: Apache-2.0 */
#ifndef QV_CIPR_QV_CIPR_RUNTIME_H
#define QV_CIPR_QV_CIPR_RUNTIME_H

#include <qv_tools/qv_export.h>

#include <stddef.h>

/** The runtime as a whole. */

#ifdef __cplusplus
extern "C" {
#endif

/** A runtime context: 8 bytes, all zero, for its owner only to keep and to give back. */
typedef struct qv_cipr_context qv_cipr_context_t;

/** Makes a runtime context, to be released with qv_cipr_destroy; null when memory is exhausted. */
QV_EXPORT qv_cipr_context_t* qv_cipr_create(void);

/** Releases a runtime context; null is allowed. */
QV_EXPORT void qv_cipr_destroy(qv_cipr_context_t* context);

/** Bytes of a memory page of the system. */
QV_EXPORT size_t qv_cipr_pagesize(void);

#ifdef __cplusplus
}
#endif

#endif
