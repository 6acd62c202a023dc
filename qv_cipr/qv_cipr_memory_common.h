/* SPDX-License-Identifier: Apache-2.0 */
#ifndef QV_CIPR_QV_CIPR_MEMORY_COMMON_H
#define QV_CIPR_QV_CIPR_MEMORY_COMMON_H

#include <qv_tools/qv_export.h>
#include <qv_tools/qv_list.h>

#include <stdbool.h>
#include <stdint.h>

/**
 * Buffer objects: blocks of memory with a size, an optional host pointer, an optional handle and a word of flags.
 *
 * A buffer's memory is allocated when it is first asked for, or supplied by the user, or managed by a device back end
 * after migration. Regions are views into a part of a parent buffer. Sizes and offsets are bytes.
 *
 * Buffers are not locked: one owner at a time. Statuses: 0 success, -2 inconsistent flags, -4 no memory, -16 missing
 * operation or wrong state, -32 invalid argument.
 */

#ifdef __cplusplus
extern "C" {
#endif

/** The host pointer is valid. */
#define QV_CIPR_MEMORY_CPU_PTR 0x1u
/** The handle is valid. */
#define QV_CIPR_MEMORY_HANDLE 0x2u
/** Host memory is to be allocated on first use; cleared once done. */
#define QV_CIPR_MEMORY_ALLOCATE_CPU_PTR 0x4u
/** The user's memory is to be copied into the allocation; cleared once done. */
#define QV_CIPR_MEMORY_COPY_FROM_USER 0x8u
/** Memory that only a device accesses. */
#define QV_CIPR_MEMORY_HW_ONLY 0x10u
/** Memory that only the host accesses. */
#define QV_CIPR_MEMORY_CPU_ONLY 0x400u
/** The host memory was allocated by the buffer and is freed with it. */
#define QV_CIPR_MEMORY_ALLOCATED_HERE 0x2000u
/** The memory was supplied by the user and is never freed by the buffer. */
#define QV_CIPR_MEMORY_USER_MEMORY 0x4000u
/** All flags for devices: a buffer with any of them must be migrated before it can be allocated. */
#define QV_CIPR_MEMORY_DEVICE_FLAGS 0xFFFF0000u

typedef struct qv_cipr_buffer qv_cipr_buffer_t;

/** What is known about a piece of memory. */
typedef struct qv_cipr_memory {
    uint32_t size;
    /** Host address; null without QV_CIPR_MEMORY_CPU_PTR. */
    void* cpu_ptr;
    /** Handle of a device or the system; 0 without QV_CIPR_MEMORY_HANDLE. */
    uint64_t handle;
    /** QV_CIPR_MEMORY_... flags. */
    uint32_t flags;
    /** The buffer that this record belongs to; null in records that users fill. */
    qv_cipr_buffer_t* anchor;
} qv_cipr_memory_t;

/** Operations of a memory back end; each gets the whole buffer, never a region. */
typedef int32_t (*qv_cipr_allocate_op)(qv_cipr_buffer_t* buffer);
typedef int32_t (*qv_cipr_migrate_op)(qv_cipr_buffer_t* buffer);
typedef int32_t (*qv_cipr_get_memory_op)(qv_cipr_buffer_t* buffer, qv_cipr_memory_t* memory);
typedef void (*qv_cipr_destroy_op)(qv_cipr_buffer_t* buffer);

/** A buffer or a region of one. Clients read it through the functions below; back ends fill it. */
struct qv_cipr_buffer {
    /** The anchor is the buffer itself, the parent of a region, or null for a region whose parent is gone. */
    qv_cipr_memory_t mem;
    /** The device that the buffer was migrated to, set by its back end; 0 for none. */
    uint8_t device_id;
    qv_cipr_allocate_op allocate;
    qv_cipr_migrate_op migrate;
    qv_cipr_get_memory_op get_memory;
    qv_cipr_destroy_op destroy;
    /** Belongs to the back end. */
    void* device_context;
    /** Where a region starts in its parent. */
    uint32_t offset;
    /** The regions of a parent. */
    qv_list* regions;
};

/** A device back end: operations that are null leave those of the buffer in place. */
typedef struct qv_cipr_memory_device {
    qv_cipr_allocate_op allocate;
    qv_cipr_migrate_op migrate;
    qv_cipr_get_memory_op get_memory;
    qv_cipr_destroy_op destroy;
    void* context;
} qv_cipr_memory_device_t;

/**
 * Makes a buffer. Nothing is allocated for its content yet.
 *
 * @param size   bytes of the buffer, not 0
 * @param flags  requested QV_CIPR_MEMORY_... flags
 * @param user   memory that the user supplies, at least @p size bytes (what is beyond stays unused), with a host
 *               pointer or a handle as its flags say and without an anchor; null for none. The record is copied; the
 *               memory stays the user's and must outlive the buffer.
 * @return       a buffer to be released with qv_cipr_buffer_destroy, or null when arguments do not fit together or
 *               memory is exhausted
 */
QV_EXPORT qv_cipr_buffer_t* qv_cipr_buffer_create(uint32_t size, uint32_t flags, const qv_cipr_memory_t* user);

/**
 * Makes a region: a view of @p size bytes from @p offset of @p parent, which must not itself be a region.
 *
 * @return a region to be released with qv_cipr_buffer_destroy, before or after its parent; null when it does not fit
 *         or memory is exhausted
 */
QV_EXPORT qv_cipr_buffer_t* qv_cipr_buffer_create_region(qv_cipr_buffer_t* parent, uint32_t offset, uint32_t size);

/**
 * Destroys a buffer or a region. Regions of a destroyed parent stay, without memory, until they are destroyed
 * themselves.
 */
QV_EXPORT void qv_cipr_buffer_destroy(qv_cipr_buffer_t* buffer);

/**
 * Allocates the buffer's memory now.
 *
 * @return 0; -2 when the flags do not fit together afterwards; -4 when memory is exhausted; -16 for a region or
 *         another buffer that cannot allocate; -32 for null, for memory that is there already, and for device flags
 *         before migration
 */
QV_EXPORT int32_t qv_cipr_buffer_allocate(qv_cipr_buffer_t* buffer);

/**
 * Fills @p memory for a buffer or a region, after allocating memory that is to be allocated on first use. The pointer
 * in it stays valid as long as the buffer (for a region: its parent) lives.
 *
 * @return 0, or a failure status, with @p memory unchanged: -2 when flags do not fit together, -4 when memory is
 *         exhausted, -16 when there is no memory to be had or the region does not fit its parent, -32 for null
 *         arguments; others from a device back end
 */
QV_EXPORT int32_t qv_cipr_buffer_get_memory(qv_cipr_buffer_t* buffer, qv_cipr_memory_t* memory);

/** True for a region, also when its parent is gone; false for null. */
QV_EXPORT bool qv_cipr_buffer_is_region(const qv_cipr_buffer_t* buffer);

/** The parent of a region; null for a whole buffer, for null and when the parent is gone. */
QV_EXPORT qv_cipr_buffer_t* qv_cipr_buffer_get_parent(const qv_cipr_buffer_t* buffer);

/** The device that the buffer was migrated to; 0 for none and for null. */
QV_EXPORT uint8_t qv_cipr_buffer_get_device_id(const qv_cipr_buffer_t* buffer);

/**
 * Installs the operations and the context of a device back end in a buffer and lets it migrate the buffer.
 *
 * The replaced operations are not run: a back end with a destroy operation of its own takes over host memory that the
 * buffer has already allocated (QV_CIPR_MEMORY_ALLOCATED_HERE).
 *
 * @return the result of the migrate operation; -32 for null arguments, for a region and without migrate operation
 */
QV_EXPORT int32_t qv_cipr_memory_device_migrate_buffer(const qv_cipr_memory_device_t* device, qv_cipr_buffer_t* buffer);

#ifdef __cplusplus
}
#endif

#endif
