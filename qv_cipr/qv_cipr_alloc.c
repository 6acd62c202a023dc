/* SPDX-License-Identifier: Apache-2.0 */
#define _GNU_SOURCE
#include <qv_cipr/qv_cipr_alloc.h>

#include <qv_cipr/qv_cipr_internal.h>
#include <qv_cipr/qv_log_common.h>

#include <stdbool.h>
#include <stdlib.h>
#include <string.h>

#define ALLOC_TAG "CIPR_ALLOC[XOS]"

uint32_t g_alloc_counter = 0;
uint32_t g_free_counter = 0;
uint32_t g_alloc_error = UINT32_MAX;

static bool failure_is_forced(void)
{
    return __atomic_load_n(&g_alloc_counter, __ATOMIC_SEQ_CST) == __atomic_load_n(&g_alloc_error, __ATOMIC_SEQ_CST);
}

static void count(uint32_t* counter, const void* ptr)
{
    if (ptr != NULL) (void)__atomic_add_fetch(counter, 1, __ATOMIC_SEQ_CST);
}

void* qv_cipr_malloc(size_t size, const char* tag, const char* file, uint32_t line)
{
    (void)file;
    (void)line;
    if (failure_is_forced()) return NULL;

    void* ptr = malloc(size);
    count(&g_alloc_counter, ptr);
    qv_log_common_debug(QV_LOG_ALLOCATION, ALLOC_TAG, "E:%s size %lu from %s res ptr: %p", __func__,
                        (unsigned long)size, qv_text_or_empty(tag), ptr);
    return ptr;
}

void* qv_cipr_calloc(size_t nmemb, size_t size, const char* tag, const char* file, uint32_t line)
{
    (void)file;
    (void)line;
    if (failure_is_forced()) return NULL;

    void* ptr = calloc(nmemb, size);
    count(&g_alloc_counter, ptr);
    qv_log_common_debug(QV_LOG_ALLOCATION, ALLOC_TAG, "E:%s nmemb %lu size %lu from %s res ptr: %p", __func__,
                        (unsigned long)nmemb, (unsigned long)size, qv_text_or_empty(tag), ptr);
    return ptr;
}

void* qv_cipr_alloc_aligned(size_t size, size_t alignment, const char* tag, const char* file, uint32_t line)
{
    (void)file;
    (void)line;
    if (failure_is_forced()) return NULL;

    void* ptr = NULL;
    if (posix_memalign(&ptr, alignment, size) != 0) return NULL;

    count(&g_alloc_counter, ptr);
    qv_log_common_debug(QV_LOG_ALLOCATION, ALLOC_TAG, "E:%s size %ld with alignment %lu from %s res ptr: %p", __func__,
                        (long)size, (unsigned long)alignment, qv_text_or_empty(tag), ptr);
    return ptr;
}

void qv_cipr_free(void* ptr, const char* tag)
{
    qv_log_common_debug(QV_LOG_ALLOCATION, ALLOC_TAG, "E:%s ptr %p from %s", __func__, ptr, qv_text_or_empty(tag));
    count(&g_free_counter, ptr);
    free(ptr);
}

void qv_cipr_memcopy(void* dst, size_t dst_size, const void* src, size_t src_size)
{
    if (dst_size < src_size) {
        qv_log_common_debug(QV_LOG_WARNING, ALLOC_TAG,
                            "%s: destination size is smaller than source size, potential coding error", __func__);
    }
    const size_t size = dst_size < src_size ? dst_size : src_size;
    if (size > 0) memcpy(dst, src, size);
}
