/* SPDX-License-Identifier: Apache-2.0 */
#define _GNU_SOURCE
#include <qv_cipr/qv_cipr_runtime.h>

#include <qv_cipr/qv_cipr_alloc.h>
#include <qv_cipr/qv_log_common.h>

#include <stdint.h>
#include <unistd.h>

#define RUNTIME_TAG "QV_CIPR_ANDROID[XOS]"

struct qv_cipr_context {
    uint64_t reserved;
};

qv_cipr_context_t* qv_cipr_create(void)
{
    qv_log_common_debug(QV_LOG_ENTRY, RUNTIME_TAG, "E:%s", __func__);
    return (qv_cipr_context_t*)qv_cipr_calloc(1, sizeof(qv_cipr_context_t), __func__, "qv_cipr/qv_cipr_runtime.c",
                                              __LINE__);
}

void qv_cipr_destroy(qv_cipr_context_t* context)
{
    qv_log_common_debug(QV_LOG_ENTRY, RUNTIME_TAG, "E:%s", __func__);
    qv_cipr_free(context, __func__);
}

size_t qv_cipr_pagesize(void)
{
    return (size_t)sysconf(_SC_PAGESIZE);
}
