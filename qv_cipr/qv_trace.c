/* SPDX-License-Identifier: Apache-2.0 */
#define _GNU_SOURCE
#include <qv_cipr/qv_log_common.h>

#include <qv_cipr/qv_cipr_internal.h>

#include <fcntl.h>
#include <stdbool.h>
#include <stdio.h>
#include <sys/types.h>
#include <unistd.h>

#define TRACE_TAG "QV_LOG[XOS]"
#define RECORD_SIZE 1024

uint64_t qv_trace_enabled_tags = 0x8000000000000000u;
int32_t qv_trace_marker_fd = -1;
uint32_t g_qv_trace_level = 0;
int32_t qv_trace_is_ready = 0;
pthread_once_t qv_trace_once = PTHREAD_ONCE_INIT;

static void qv_trace_open_marker(void)
{
    qv_trace_marker_fd = open("/sys/kernel/debug/tracing/trace_marker", O_WRONLY | O_CLOEXEC);
    if (qv_trace_marker_fd < 0) return;

    qv_trace_enabled_tags = 1;
    /* Other threads test this one without going through the once-flag. */
    __atomic_store_n(&qv_trace_is_ready, 1, __ATOMIC_RELEASE);
}

void qv_trace_setup(void)
{
    (void)pthread_once(&qv_trace_once, qv_trace_open_marker);
}

/* When the marker cannot be opened, the initial bit 63 stays enabled: such calls go on and report a write error. */
static bool is_traced(uint64_t tag)
{
    if (g_qv_trace_level == 0) return false;
    if (__atomic_load_n(&qv_trace_is_ready, __ATOMIC_ACQUIRE) == 0) qv_trace_setup();
    return (qv_trace_enabled_tags & tag) != 0;
}

static void write_record(const char* record, ssize_t length)
{
    if (write(qv_trace_marker_fd, record, (size_t)length) < length)
        qv_log_common_debug(QV_LOG_ERROR, TRACE_TAG, "write error!");
}

void qv_css_trace_begin(uint64_t tag, const char* name)
{
    if (!is_traced(tag)) return;

    char record[RECORD_SIZE];
    const int length = snprintf(record, sizeof(record), "B|%d|%s", (int)getpid(), qv_text_or_empty(name));
    if (length < 0) {
        qv_log_common_debug(QV_LOG_ERROR, TRACE_TAG, "snprintf error!");
        return;
    }
    write_record(record, length < RECORD_SIZE ? length : RECORD_SIZE - 1);
}

void qv_css_trace_end(uint64_t tag)
{
    if (is_traced(tag)) write_record("E", 1);
}
