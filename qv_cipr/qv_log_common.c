/* SPDX-License-Identifier: Apache-2.0 */
#define _GNU_SOURCE
#include <qv_cipr/qv_log_common.h>

#include <qv_cipr/qv_cipr_alloc.h>
#include <qv_cipr/qv_cipr_internal.h>
#include <qv_cipr/qv_cipr_string.h>

#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <syslog.h>
#include <unistd.h>

#define LOG_TAG "QV_LOG[XOS]"
#define LINE_SIZE 1024

uint32_t g_qv_log_common_level = QV_LOG_ERROR | QV_LOG_WARNING;
char g_qv_log_dump_path[QV_LOG_DUMP_PATH_SIZE] = ".";

/* By equality, not by bit: a level with both the error and the warning bit is neither. */
static int priority_of(uint32_t level)
{
    if (level == QV_LOG_ERROR) return LOG_ERR;
    if (level == QV_LOG_WARNING) return LOG_WARNING;
    return LOG_DEBUG;
}

/* Cutting a format may leave half a conversion at its end, which no formatter understands. */
static void drop_unfinished_conversion(char* format)
{
    char* percent = strchr(format, '%');
    while (percent != NULL) {
        const char* conversion = percent + 1 + strspn(percent + 1, "-+ #0'I123456789.*$hlqjzLt");
        if (*conversion == '\0') {
            *percent = '\0';
            return;
        }
        percent = strchr(conversion + 1, '%');
    }
}

void qv_css_vdebug(uint32_t level, const char* tag, const char* format, va_list args)
{
    char line[LINE_SIZE];
    const long thread_id = syscall(SYS_gettid);
    /* Equal sizes: a warning from the formatter would come back here. */
    const int length = qv_cipr_snprintf_s(line, sizeof(line), sizeof(line), "[%ld]:%s:%s", thread_id,
                                          qv_text_or_empty(tag), qv_text_or_empty(format));
    if (length >= LINE_SIZE) drop_unfinished_conversion(line);
    vsyslog(priority_of(level), line, args);
}

void qv_css_debug(int32_t level, const char* tag, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    qv_css_vdebug((uint32_t)level, tag, format, args);
    va_end(args);
}

void qv_log_common_vdebug(uint32_t level, const char* tag, const char* format, va_list args)
{
    if ((g_qv_log_common_level & level) != 0) qv_css_vdebug(level, tag, format, args);
}

void qv_log_common_debug(uint32_t level, const char* tag, const char* format, ...)
{
    if ((g_qv_log_common_level & level) == 0) return;

    va_list args;
    va_start(args, format);
    qv_css_vdebug(level, tag, format, args);
    va_end(args);
}

int32_t qv_log_get_config_int32(const char* name)
{
    const char* value = name != NULL ? getenv(name) : NULL;
    return value != NULL ? (int32_t)(uint32_t)strtoul(value, NULL, 0) : 0;
}

void qv_log_common_init(void)
{
    g_qv_log_common_level |= (uint32_t)qv_log_get_config_int32("camera_css_debug");
    qv_log_common_debug(QV_LOG_INFO, LOG_TAG, "Libqvcss version: %s\n", qv_css_get_version_string());
}

static void read_dump_path(void)
{
    const char* path = getenv("camera_css_debug_dump_path");
    if (path == NULL) return;

    qv_log_common_debug(QV_LOG_INFO, LOG_TAG, "Debug dump path set to %s", path);
    memset(g_qv_log_dump_path, 0, sizeof(g_qv_log_dump_path));
    (void)qv_cipr_snprintf_s(g_qv_log_dump_path, sizeof(g_qv_log_dump_path), sizeof(g_qv_log_dump_path), "%s", path);
}

void qv_log_set_debug_level(void)
{
    qv_log_common_debug(QV_LOG_INFO, LOG_TAG, "Debug level is 0x%x", g_qv_log_common_level);
    read_dump_path();
    g_qv_trace_level = (uint32_t)qv_log_get_config_int32("camera_css_trace");
    qv_log_common_debug(QV_LOG_INFO, LOG_TAG, "qv trace level is 0x%x", g_qv_trace_level);
}

void start_logging(void)
{
    openlog("libqvcss", LOG_PID | LOG_CONS | LOG_NDELAY, LOG_USER);
    qv_log_set_debug_level();
}

void end_logging(void)
{
    closelog();
}

uint32_t qv_css_debug_level(void)
{
    qv_log_set_debug_level();
    qv_log_common_init();
    return g_qv_log_common_level;
}

const char* qv_css_debug_dump_path(void)
{
    return g_qv_log_dump_path;
}

const char* qv_css_get_version_string(void)
{
    return "libnuxo " NUXO_BUILD_VERSION;
}

void _prettify(qv_log_context* ctx, uint64_t id)
{
    if (ctx == NULL) return;

    uint64_t divisor = 1000000;
    for (int letter = 0; letter < 4; ++letter) {
        const uint64_t group = id / divisor % 100;
        ctx->buffer[letter] = (char)('A' + (int)(group % 26));
        divisor /= 100;
    }
    ctx->buffer[4] = '\0';
    ctx->name = ctx->buffer;
}

qv_log_context* qv_log_create_context(uint64_t id)
{
    qv_log_context* ctx = (qv_log_context*)qv_cipr_malloc(sizeof(qv_log_context), "qv_log_create_context",
                                                          "../../qv_cipr/qv_log_common", 52);
    if (ctx == NULL) return NULL;

    memset(ctx, 0, sizeof(*ctx));
    _prettify(ctx, id);
    return ctx;
}

void qv_log_destroy_context(qv_log_context* ctx)
{
    qv_cipr_free(ctx, "qv_log_destroy_context");
}
