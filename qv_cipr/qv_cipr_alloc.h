/* SPDX-License-Identifier: Apache-2.0 */
#ifndef QV_CIPR_QV_CIPR_ALLOC_H
#define QV_CIPR_QV_CIPR_ALLOC_H

#include <qv_tools/qv_export.h>

#include <stddef.h>
#include <stdint.h>

/**
 * Counted heap allocation with a switch that makes it fail, for rehearsing the exhaustion of memory.
 *
 * All functions may be called from any thread.
 */

#ifdef __cplusplus
extern "C" {
#endif

/** Number of successful allocations, modulo 2^32. */
QV_EXPORT extern uint32_t g_alloc_counter;

/** Number of releases of non-null pointers, modulo 2^32. */
QV_EXPORT extern uint32_t g_free_counter;

/**
 * While this equals g_alloc_counter, every allocation fails, without a log line and without being counted. So N lets
 * allocations succeed until N have, and every later one fail until the value is changed. Initially 4294967295.
 */
QV_EXPORT extern uint32_t g_alloc_error;

/**
 * Allocates @p size bytes, uninitialised.
 *
 * @param tag   name of the calling function, for diagnostics
 * @param file  source file of the call, for diagnostics
 * @param line  source line of the call, for diagnostics
 * @return      memory to be released with qv_cipr_free, or null
 */
QV_EXPORT void* qv_cipr_malloc(size_t size, const char* tag, const char* file, uint32_t line);

/** Allocates @p nmemb objects of @p size bytes, all zero; null also when the product overflows. See qv_cipr_malloc. */
QV_EXPORT void* qv_cipr_calloc(size_t nmemb, size_t size, const char* tag, const char* file, uint32_t line);

/**
 * Allocates @p size bytes, uninitialised, at a multiple of @p alignment bytes. See qv_cipr_malloc.
 *
 * @param alignment  a power of two and a multiple of the size of a pointer; anything else gives null
 */
QV_EXPORT void* qv_cipr_alloc_aligned(size_t size, size_t alignment, const char* tag, const char* file, uint32_t line);

/** Releases memory of the functions above; null is allowed. @p tag names the calling function. */
QV_EXPORT void qv_cipr_free(void* ptr, const char* tag);

/**
 * Copies bytes between two blocks that do not overlap: as many as the smaller of both sizes. A destination smaller
 * than the source is worth a warning.
 */
QV_EXPORT void qv_cipr_memcopy(void* dst, size_t dst_size, const void* src, size_t src_size);

#ifdef __cplusplus
}
#endif

#endif
