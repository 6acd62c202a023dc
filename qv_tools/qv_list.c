/* SPDX-License-Identifier: Apache-2.0 */
#include <qv_tools/qv_list.h>

#include <qv_cipr/qv_cipr_alloc.h>
#include <qv_cipr/qv_cipr_internal.h>
#include <qv_cipr/qv_log_common.h>

#define LIST_TAG "QV_LIST[XOS]"

qv_list* qv_list_create(void)
{
    return (qv_list*)qv_cipr_calloc(1, sizeof(qv_list), __func__, "qv_tools/qv_list.c", __LINE__);
}

void qv_list_destroy(qv_list* element)
{
    if (element != NULL) qv_cipr_free(element, __func__);
}

/* Links a new element in at @p link, before what stands there. */
static int32_t insert_at(qv_list** link, void* data)
{
    qv_list* element = qv_list_create();
    if (element == NULL) {
        qv_log_common_debug(QV_LOG_ERROR, LIST_TAG, "could not create new list element");
        return QV_CIPR_NO_MEMORY;
    }
    element->data = data;
    element->next = *link;
    *link = element;
    return QV_CIPR_OK;
}

int32_t qv_list_prepend(qv_list** list, void* data)
{
    if (list == NULL) return QV_CIPR_BAD_ARGUMENT;
    return insert_at(list, data);
}

int32_t qv_list_append(qv_list** list, void* data)
{
    if (list == NULL) return QV_CIPR_BAD_ARGUMENT;

    qv_list** link = list;
    while (*link != NULL) link = &(*link)->next;
    return insert_at(link, data);
}

bool qv_list_contains(const qv_list* list, const void* data)
{
    for (; list != NULL; list = list->next) {
        if (list->data == data) return true;
    }
    return false;
}

void* qv_list_data_at(const qv_list* list, uint32_t index)
{
    for (; list != NULL && index > 0; --index) list = list->next;
    return list != NULL ? list->data : NULL;
}

bool qv_list_remove(qv_list** list, const void* data)
{
    if (list == NULL) return false;

    for (qv_list** link = list; *link != NULL; link = &(*link)->next) {
        qv_list* element = *link;
        if (element->data != data) continue;
        *link = element->next;
        qv_list_destroy(element);
        return true;
    }
    return false;
}

uint32_t qv_list_length(const qv_list* list)
{
    uint32_t length = 0;
    for (; list != NULL; list = list->next) ++length;
    return length;
}
