/* SPDX-License-Identifier: Apache-2.0 */
#include <qv_cipr/qv_cipr_memory_internal.h>

#include <qv_cipr/qv_cipr_alloc.h>
#include <qv_cipr/qv_cipr_internal.h>
#include <qv_cipr/qv_log_common.h>

#define SOURCE_FILE "qv_cipr/qv_cipr_buffer.c"
#define LOG(level, format, ...) qv_log_common_debug(level, QV_CIPR_MEMORY_TAG, format, __VA_ARGS__)
#define LOG_ERROR(format, ...) LOG(QV_LOG_ERROR, format, __VA_ARGS__)
#define LOG_ENTRY() LOG(QV_LOG_ENTRY, "E:%s", __func__)

static bool is_region(const qv_cipr_buffer_t* buffer)
{
    return buffer->mem.anchor != buffer;
}

/* Adding in 64 bits: offset and size of a region may be any 32-bit numbers. */
static bool fits(uint32_t parent_size, uint32_t offset, uint32_t size)
{
    return (uint64_t)offset + size <= parent_size;
}

static bool take_user_pointer(qv_cipr_memory_t* memory, uint32_t flags, const qv_cipr_memory_t* user,
                              const char* function)
{
    if (user->cpu_ptr == NULL) {
        LOG_ERROR("%s: user did not provide pointer with QV_CIPR_MEMORY_CPU_PTR", function);
        return false;
    }
    if ((user->flags & QV_CIPR_MEMORY_HANDLE) != 0) {
        LOG_ERROR("%s: QV_CIPR_MEMORY_CPU_PTR conflict with QV_CIPR_MEMORY_HANDLE", function);
        return false;
    }
    if ((flags & QV_CIPR_MEMORY_ALLOCATE_CPU_PTR) != 0 && (flags & QV_CIPR_MEMORY_COPY_FROM_USER) == 0) {
        LOG_ERROR("%s: QV_CIPR_MEMORY_CPU_PTR conflict with QV_CIPR_MEMORY_ALLOCATE_CPU_PTR", function);
        return false;
    }
    memory->cpu_ptr = user->cpu_ptr;
    memory->flags |= QV_CIPR_MEMORY_CPU_PTR | QV_CIPR_MEMORY_USER_MEMORY;
    return true;
}

static bool take_user_handle(qv_cipr_memory_t* memory, uint32_t flags, const qv_cipr_memory_t* user,
                             const char* function)
{
    if (user->handle == 0) {
        LOG_ERROR("%s: user did not provide handle with QV_CIPR_MEMORY_HANDLE", function);
        return false;
    }
    if ((flags & QV_CIPR_MEMORY_COPY_FROM_USER) != 0) {
        LOG_ERROR("%s: QV_CIPR_MEMORY_COPY_FROM_USER conflict!  Copy from user handle not implemented.", function);
        return false;
    }
    if ((flags & QV_CIPR_MEMORY_ALLOCATE_CPU_PTR) != 0) {
        LOG_ERROR("%s: QV_CIPR_MEMORY_HANDLE conflict with QV_CIPR_MEMORY_ALLOCATE_CPU_PTR", function);
        return false;
    }
    memory->handle = user->handle;
    memory->flags |= QV_CIPR_MEMORY_HANDLE | QV_CIPR_MEMORY_USER_MEMORY;
    return true;
}

static bool user_size_is_enough(uint32_t size, const qv_cipr_memory_t* user, const char* function)
{
    if (user->size > size) {
        LOG(QV_LOG_WARNING, "%s: requested bytes to allocate less than provided user memory in argument, truncating",
            function);
    }
    if (user->size >= size) return true;
    LOG_ERROR("%s: requested bytes to allocate more than provided user memory in argument", function);
    return false;
}

static bool take_user_memory(qv_cipr_memory_t* memory, uint32_t flags, const qv_cipr_memory_t* user,
                             const char* function)
{
    if (!user_size_is_enough(memory->size, user, function)) return false;

    if ((user->flags & QV_CIPR_MEMORY_CPU_PTR) != 0) {
        if (!take_user_pointer(memory, flags, user, function)) return false;
    } else if ((user->flags & QV_CIPR_MEMORY_HANDLE) != 0) {
        if (!take_user_handle(memory, flags, user, function)) return false;
    }
    if (user->anchor != NULL) {
        LOG_ERROR("%s: inheriting object from another not supported!", function);
        return false;
    }
    if ((user->flags & (QV_CIPR_MEMORY_CPU_PTR | QV_CIPR_MEMORY_HANDLE)) == 0) {
        LOG_ERROR("%s: Invalid user memory given as argument!", function);
        return false;
    }
    return true;
}

qv_cipr_buffer_t* qv_cipr_buffer_create(uint32_t size, uint32_t flags, const qv_cipr_memory_t* user)
{
    LOG_ENTRY();
    if (size == 0) return NULL;

    qv_cipr_buffer_t* buffer = (qv_cipr_buffer_t*)qv_cipr_calloc(1, sizeof(*buffer), __func__, SOURCE_FILE, __LINE__);
    if (buffer == NULL) {
        qv_log_common_debug(QV_LOG_ERROR, QV_CIPR_MEMORY_TAG, "could not allocate buf");
        return NULL;
    }
    buffer->mem.anchor = buffer;
    buffer->mem.size = size;
    bool valid = user == NULL || take_user_memory(&buffer->mem, flags, user, __func__);
    if (valid) {
        buffer->mem.flags |= flags;
        buffer->allocate = _cipr_memory_common_allocate;
        buffer->get_memory = _cipr_memory_common_get_memory;
        valid = _validate_buffer_bitfield(buffer, NULL) == QV_CIPR_OK;
    }
    if (!valid) {
        qv_cipr_free(buffer, __func__);
        return NULL;
    }
    return buffer;
}

qv_cipr_buffer_t* qv_cipr_buffer_create_region(qv_cipr_buffer_t* parent, uint32_t offset, uint32_t size)
{
    LOG_ENTRY();
    if (parent == NULL || size == 0) return NULL;

    if (!fits(parent->mem.size, offset, size)) {
        LOG_ERROR("%s: parent buffer size %d not enough for region requested (offset %d, size %d)", __func__,
                  (int)parent->mem.size, (int)offset, (int)size);
        return NULL;
    }
    if (is_region(parent)) {
        LOG_ERROR("%s: nested regions are illecal", __func__);
        return NULL;
    }
    qv_cipr_buffer_t* region = (qv_cipr_buffer_t*)qv_cipr_calloc(1, sizeof(*region), __func__, SOURCE_FILE, __LINE__);
    if (region == NULL) {
        LOG_ERROR("%s: failed to allocate buffer", __func__);
        return NULL;
    }
    /* No operations: memory is the parent's business, and only the parent may free it. */
    region->mem.size = size;
    region->mem.anchor = parent;
    region->mem.flags = parent->mem.flags;
    region->offset = offset;
    if (qv_list_append(&parent->regions, region) != QV_CIPR_OK) {
        LOG_ERROR("%s: failed to append to parent buffer regions", __func__);
        qv_cipr_free(region, __func__);
        return NULL;
    }
    return region;
}

static void leave_parent(qv_cipr_buffer_t* region, const char* function)
{
    qv_cipr_buffer_t* parent = region->mem.anchor;
    if (parent == NULL) {
        LOG(QV_LOG_WARNING, "%s: parent already released", function);
    } else if (!qv_list_remove(&parent->regions, region)) {
        LOG_ERROR("%s: region parent reference missing", function);
    }
}

static void orphan_regions(qv_cipr_buffer_t* parent, const char* function)
{
    if (parent->regions == NULL) return;

    LOG(QV_LOG_WARNING, "%s: parent buffer destroy leaves stale regions", function);
    while (parent->regions != NULL) {
        qv_list* element = parent->regions;
        qv_cipr_buffer_t* region = (qv_cipr_buffer_t*)element->data;
        region->mem.anchor = NULL;
        parent->regions = element->next;
        qv_list_destroy(element);
    }
}

void qv_cipr_buffer_destroy(qv_cipr_buffer_t* buffer)
{
    LOG_ENTRY();
    if (buffer == NULL) {
        LOG_ERROR("%s: NULL pointer given!", __func__);
        return;
    }
    if (is_region(buffer)) leave_parent(buffer, __func__);
    orphan_regions(buffer, __func__);
    if (buffer->destroy != NULL) buffer->destroy(buffer);
    qv_cipr_free(buffer, __func__);
}

int32_t qv_cipr_buffer_allocate(qv_cipr_buffer_t* buffer)
{
    LOG_ENTRY();
    if (buffer == NULL) return QV_CIPR_BAD_ARGUMENT;
    return _cipr_buffer_allocate_and_validate(buffer);
}

static int32_t narrow_to_region(qv_cipr_buffer_t* region, qv_cipr_memory_t* record, const char* function)
{
    if (!fits(record->size, region->offset, region->mem.size)) {
        LOG_ERROR("%s: memory region doesn't fit in parent store!", function);
        return QV_CIPR_MISSING_OBJECT;
    }
    if (record->cpu_ptr != NULL) record->cpu_ptr = (char*)record->cpu_ptr + region->offset;
    record->size = region->mem.size;
    record->anchor = region;
    return QV_CIPR_OK;
}

int32_t qv_cipr_buffer_get_memory(qv_cipr_buffer_t* buffer, qv_cipr_memory_t* memory)
{
    LOG_ENTRY();
    if (buffer == NULL || memory == NULL) return QV_CIPR_BAD_ARGUMENT;

    qv_cipr_buffer_t* whole = buffer->mem.anchor;
    if (whole == NULL || whole->get_memory == NULL) return QV_CIPR_MISSING_OBJECT;

    qv_cipr_memory_t record = {0, NULL, 0, 0, NULL};
    int32_t status = whole->get_memory(whole, &record);
    if (status != QV_CIPR_OK) {
        LOG_ERROR("%s: operation failed", __func__);
        return status;
    }
    status = _validate_buffer_bitfield(whole, &record);
    if (status != QV_CIPR_OK) {
        LOG_ERROR("%s: bitfield validation failed for memory returned", __func__);
        return status;
    }
    if (is_region(buffer)) status = narrow_to_region(buffer, &record, __func__);
    if (status == QV_CIPR_OK) *memory = record;
    return status;
}

bool qv_cipr_buffer_is_region(const qv_cipr_buffer_t* buffer)
{
    LOG_ENTRY();
    return buffer != NULL && is_region(buffer);
}

qv_cipr_buffer_t* qv_cipr_buffer_get_parent(const qv_cipr_buffer_t* buffer)
{
    LOG_ENTRY();
    if (buffer == NULL) return NULL;
    if (!is_region(buffer)) {
        LOG_ERROR("%s: not a child object", __func__);
        return NULL;
    }
    return buffer->mem.anchor;
}

uint8_t qv_cipr_buffer_get_device_id(const qv_cipr_buffer_t* buffer)
{
    LOG_ENTRY();
    return buffer != NULL ? buffer->device_id : 0;
}

int32_t qv_cipr_memory_device_migrate_buffer(const qv_cipr_memory_device_t* device, qv_cipr_buffer_t* buffer)
{
    LOG_ENTRY();
    if (device == NULL || buffer == NULL) return QV_CIPR_BAD_ARGUMENT;
    if (is_region(buffer)) {
        LOG_ERROR("%s: buffer regions cannot be independently migrated", __func__);
        return QV_CIPR_BAD_ARGUMENT;
    }
    if (device->allocate != NULL) buffer->allocate = device->allocate;
    if (device->migrate != NULL) buffer->migrate = device->migrate;
    if (device->get_memory != NULL) buffer->get_memory = device->get_memory;
    if (device->destroy != NULL) buffer->destroy = device->destroy;
    buffer->device_context = device->context;
    return buffer->migrate != NULL ? buffer->migrate(buffer) : QV_CIPR_BAD_ARGUMENT;
}
