/* SPDX-License-Identifier: Apache-2.0 */
#ifndef QV_TOOLS_QV_LIST_H
#define QV_TOOLS_QV_LIST_H

#include <qv_tools/qv_export.h>

#include <stdbool.h>
#include <stdint.h>

/**
 * A singly linked list of untyped pointers.
 *
 * A list is a pointer to its first element; null is the empty list. The data pointers belong to the caller: the list
 * neither follows nor frees them. To free a list, walk it and destroy each element.
 */

#ifdef __cplusplus
extern "C" {
#endif

typedef struct qv_list {
    void* data;
    /** The next element, null at the end. */
    struct qv_list* next;
} qv_list;

/** Makes one element without data: a list of length 1. Null when memory is exhausted. */
QV_EXPORT qv_list* qv_list_create(void);

/** Frees this one element, not those after it; null is ignored. */
QV_EXPORT void qv_list_destroy(qv_list* element);

/** Puts @p data first. 0; -4 when memory is exhausted and -32 for a null @p list, with nothing changed. */
QV_EXPORT int32_t qv_list_prepend(qv_list** list, void* data);

/** Puts @p data last. 0; -4 when memory is exhausted and -32 for a null @p list, with nothing changed. */
QV_EXPORT int32_t qv_list_append(qv_list** list, void* data);

/** True when some element holds this very pointer. */
QV_EXPORT bool qv_list_contains(const qv_list* list, const void* data);

/** The data at a position counted from 0; null when the list is shorter. */
QV_EXPORT void* qv_list_data_at(const qv_list* list, uint32_t index);

/** Unlinks and frees the first element that holds this very pointer; false when there is none. */
QV_EXPORT bool qv_list_remove(qv_list** list, const void* data);

/** Number of elements. */
QV_EXPORT uint32_t qv_list_length(const qv_list* list);

#ifdef __cplusplus
}
#endif

#endif
