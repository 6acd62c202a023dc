/* SPDX-License-Identifier: Apache-2.0 */
/* Internal: the flag rules of buffer objects. */
#ifndef QV_CIPR_QV_CIPR_MEMORY_INTERNAL_H
#define QV_CIPR_QV_CIPR_MEMORY_INTERNAL_H

#include <qv_cipr/qv_cipr_memory_common.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Tag of all log lines about buffers. */
#define QV_CIPR_MEMORY_TAG "MEMORY_COMMON[XOS]"

/**
 * Checks that flags and accessors fit together, in @p record if there is one, otherwise in @p buffer. Every violation
 * is logged. 0, -2 when any rule is violated, -32 for a null buffer.
 */
int32_t _validate_buffer_bitfield(const qv_cipr_buffer_t* buffer, const qv_cipr_memory_t* record);

/** Allocate operation of buffers without a back end: host memory, page-aligned. */
int32_t _cipr_memory_common_allocate(qv_cipr_buffer_t* buffer);

/** Get-memory operation of buffers without a back end. */
int32_t _cipr_memory_common_get_memory(qv_cipr_buffer_t* buffer, qv_cipr_memory_t* memory);

/**
 * Runs the allocate operation of a buffer and checks the flags that it leaves: qv_cipr_buffer_allocate without the
 * entry trace, and the name in its messages.
 */
int32_t _cipr_buffer_allocate_and_validate(qv_cipr_buffer_t* buffer);

#ifdef __cplusplus
}
#endif

#endif
