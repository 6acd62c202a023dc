/* SPDX-License-Identifier: Apache-2.0 */
#include <qv_cipr/qv_cipr_memory_internal.h>

#include <qv_cipr/qv_cipr_alloc.h>
#include <qv_cipr/qv_cipr_internal.h>
#include <qv_cipr/qv_cipr_runtime.h>
#include <qv_cipr/qv_log_common.h>

#define LOG_ERROR(format, ...) qv_log_common_debug(QV_LOG_ERROR, QV_CIPR_MEMORY_TAG, format, __VA_ARGS__)

static const char* set_or_not(bool is_set)
{
    return is_set ? "set" : "not set";
}

static bool accessors_match_flags(const qv_cipr_memory_t* memory, const char* function)
{
    const bool has_pointer = (memory->flags & QV_CIPR_MEMORY_CPU_PTR) != 0;
    const bool has_handle = (memory->flags & QV_CIPR_MEMORY_HANDLE) != 0;
    bool valid = true;
    if (has_pointer != (memory->cpu_ptr != NULL)) {
        LOG_ERROR("%s: QV_CIPR_MEMORY_CPU_PTR (%s) ptr = %p", function, set_or_not(has_pointer), memory->cpu_ptr);
        valid = false;
    }
    if (has_handle != (memory->handle != 0)) {
        LOG_ERROR("%s: QV_CIPR_MEMORY_HANDLE (%s) handle = %llu", function, set_or_not(has_handle),
                  (unsigned long long)memory->handle);
        valid = false;
    }
    return valid;
}

static bool allocated_flags_are_valid(uint32_t flags, const char* function)
{
    const uint32_t accessors = QV_CIPR_MEMORY_CPU_PTR | QV_CIPR_MEMORY_HANDLE | QV_CIPR_MEMORY_HW_ONLY;
    bool valid = true;
    if ((flags & QV_CIPR_MEMORY_ALLOCATE_CPU_PTR) != 0) {
        LOG_ERROR("%s: QV_CIPR_MEMORY_ALLOCATE_CPU_PTR needs to be unset to acknowledge allocation done!", function);
        valid = false;
    }
    if ((flags & QV_CIPR_MEMORY_COPY_FROM_USER) != 0) {
        LOG_ERROR("%s: QV_CIPR_MEMORY_COPY_FROM_USER needs to be unset to acknowledge copy done!", function);
        valid = false;
    }
    if ((flags & accessors) == 0) {
        LOG_ERROR("%s: missing memory accessor or HW_ONLY flag for allocated memory", function);
        valid = false;
    }
    return valid;
}

static bool unallocated_flags_are_valid(uint32_t flags, const char* function)
{
    if ((flags & (QV_CIPR_MEMORY_CPU_PTR | QV_CIPR_MEMORY_HANDLE)) == 0) return true;
    LOG_ERROR("%s: memory accessor set before allocation", function);
    return false;
}

int32_t _validate_buffer_bitfield(const qv_cipr_buffer_t* buffer, const qv_cipr_memory_t* record)
{
    if (buffer == NULL) return QV_CIPR_BAD_ARGUMENT;

    const qv_cipr_memory_t* memory = record != NULL ? record : &buffer->mem;
    const uint32_t exclusive = QV_CIPR_MEMORY_CPU_ONLY | QV_CIPR_MEMORY_HW_ONLY;
    const uint32_t allocated = QV_CIPR_MEMORY_ALLOCATED_HERE | QV_CIPR_MEMORY_USER_MEMORY;

    bool valid = accessors_match_flags(memory, __func__);
    if ((memory->flags & exclusive) == exclusive) {
        LOG_ERROR("%s: Both QV_CIPR_MEMORY_CPU_ONLY and QV_CIPR_MEMORY_HW_ONLY are set at same time, "
                  "which is the invalid case.",
                  __func__);
        valid = false;
    }
    if ((memory->flags & allocated) != 0) {
        valid = allocated_flags_are_valid(memory->flags, __func__) && valid;
    } else {
        valid = unallocated_flags_are_valid(memory->flags, __func__) && valid;
    }
    return valid ? QV_CIPR_OK : QV_CIPR_MISSING_DATA;
}

static void _cipr_memory_common_destroy(qv_cipr_buffer_t* buffer)
{
    const uint32_t own_host_memory = QV_CIPR_MEMORY_CPU_PTR | QV_CIPR_MEMORY_ALLOCATED_HERE;
    if ((buffer->mem.flags & own_host_memory) == own_host_memory) qv_cipr_free(buffer->mem.cpu_ptr, __func__);
}

/* Without user memory there is nothing to copy, which is no failure. */
static int32_t copy_from_user(const qv_cipr_memory_t* user, void* block, const char* function)
{
    if (user->cpu_ptr != NULL) {
        qv_cipr_memcopy(block, user->size, user->cpu_ptr, user->size);
    } else if (user->handle != 0) {
        LOG_ERROR("%s: copy from handle to host only memory notimplemented", function);
        return QV_CIPR_MISSING_DATA;
    }
    return QV_CIPR_OK;
}

int32_t _cipr_memory_common_allocate(qv_cipr_buffer_t* buffer)
{
    qv_cipr_memory_t* memory = &buffer->mem;
    if ((memory->flags & QV_CIPR_MEMORY_DEVICE_FLAGS) != 0 && buffer->device_id == 0) {
        LOG_ERROR("%s: device memory flags specified, migrate first!", __func__);
        return QV_CIPR_BAD_ARGUMENT;
    }
    const bool copies = (memory->flags & QV_CIPR_MEMORY_COPY_FROM_USER) != 0;
    if (!copies && memory->cpu_ptr != NULL) {
        LOG_ERROR("%s: already allocated", __func__);
        return QV_CIPR_BAD_ARGUMENT;
    }
    void* block =
        qv_cipr_alloc_aligned(memory->size, qv_cipr_pagesize(), __func__, "qv_cipr/qv_cipr_memory_common.c", __LINE__);
    if (block == NULL) return QV_CIPR_NO_MEMORY;

    const int32_t status = copies ? copy_from_user(memory, block, __func__) : QV_CIPR_OK;
    if (status != QV_CIPR_OK) {
        qv_cipr_free(block, __func__);
        return status;
    }
    memory->cpu_ptr = block;
    memory->flags &= ~(QV_CIPR_MEMORY_COPY_FROM_USER | QV_CIPR_MEMORY_ALLOCATE_CPU_PTR);
    memory->flags |= QV_CIPR_MEMORY_CPU_PTR | QV_CIPR_MEMORY_ALLOCATED_HERE;
    buffer->destroy = _cipr_memory_common_destroy;
    return QV_CIPR_OK;
}

int32_t _cipr_buffer_allocate_and_validate(qv_cipr_buffer_t* buffer)
{
    static const char function[] = "qv_cipr_buffer_allocate";
    if (buffer->allocate == NULL) return QV_CIPR_MISSING_OBJECT;

    int32_t status = buffer->allocate(buffer);
    if (status != QV_CIPR_OK) {
        LOG_ERROR("%s: allocation failed", function);
        return status;
    }
    status = _validate_buffer_bitfield(buffer, NULL);
    if (status != QV_CIPR_OK) LOG_ERROR("%s: bitfield validation after allocate failed", function);
    return status;
}

int32_t _cipr_memory_common_get_memory(qv_cipr_buffer_t* buffer, qv_cipr_memory_t* memory)
{
    if ((buffer->mem.flags & QV_CIPR_MEMORY_ALLOCATE_CPU_PTR) != 0) {
        if (buffer->mem.cpu_ptr != NULL) {
            LOG_ERROR("%s: ALLOCATE_CPU_PTR not handled but pointer exists!", __func__);
            return QV_CIPR_MISSING_OBJECT;
        }
        const int32_t status = _cipr_buffer_allocate_and_validate(buffer);
        if (status != QV_CIPR_OK) return status;
    }
    *memory = buffer->mem;
    return QV_CIPR_OK;
}
