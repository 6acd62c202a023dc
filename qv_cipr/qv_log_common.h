/* SPDX-License-Identifier: Apache-2.0 */
#ifndef QV_CIPR_QV_LOG_COMMON_H
#define QV_CIPR_QV_LOG_COMMON_H

#include <qv_tools/qv_export.h>

#include <pthread.h>
#include <stdarg.h>
#include <stdint.h>

/**
 * The library's one diagnostic channel: log lines to the system logger, timeline records to the kernel's trace
 * marker file, and the environment variables that steer both.
 *
 * All functions may be called from any thread and take no lock. Changing the globals while other threads log is not
 * synchronised. Log and trace calls never fail.
 */

#ifdef __cplusplus
extern "C" {
#endif

/** Message classes. A log call passes exactly one of them; g_qv_log_common_level holds the enabled ones. */
enum qv_log_level {
    /** Version line, notes about the settings of this channel, notes on formats; logged as LOG_DEBUG. */
    QV_LOG_INFO = 1,
    /** Detail of graph work; logged as LOG_DEBUG. */
    QV_LOG_DEBUG = 2,
    /** Every allocation and release of the counted allocator; logged as LOG_DEBUG. */
    QV_LOG_ALLOCATION = 4,
    /** Function entries, "E:" and the function's name; logged as LOG_DEBUG. */
    QV_LOG_ENTRY = 8,
    /** Failures; logged as LOG_ERR. */
    QV_LOG_ERROR = 16,
    /** Recoverable oddities; logged as LOG_WARNING. */
    QV_LOG_WARNING = 32
};

/** Bytes of g_qv_log_dump_path, the terminating NUL included. */
#define QV_LOG_DUMP_PATH_SIZE 256

/** Enabled message classes; initially errors and warnings (0x30). */
QV_EXPORT extern uint32_t g_qv_log_common_level;

/** Directory in which callers place debug dumps; initially ".", always NUL-terminated. */
QV_EXPORT extern char g_qv_log_dump_path[QV_LOG_DUMP_PATH_SIZE];

/** Trace tags that are written; initially bit 63 alone, 1 once the trace marker file is open. */
QV_EXPORT extern uint64_t qv_trace_enabled_tags;

/** Descriptor of the trace marker file; -1 while it is not open. */
QV_EXPORT extern int32_t qv_trace_marker_fd;

/** Tracing switch; 0 means no tracing at all. */
QV_EXPORT extern uint32_t g_qv_trace_level;

/** 1 once the trace marker file has been opened successfully. */
QV_EXPORT extern int32_t qv_trace_is_ready;

/** Guards the single attempt to open the trace marker file. */
QV_EXPORT extern pthread_once_t qv_trace_once;

/** A numeric identifier with a short printable name. It points into itself, so it must not be copied or moved. */
typedef struct qv_log_context {
    /** Points at buffer. */
    char* name;
    /** Four upper-case letters and a NUL. */
    char buffer[8];
} qv_log_context;

/**
 * Logs a message if its class is enabled; otherwise does nothing.
 *
 * The line reads "[thread id]:tag:message". The format is cut so that thread id, tag and format together have at most
 * 1023 characters; the arguments are not cut.
 *
 * @param level   one message class; anything but exactly QV_LOG_ERROR or QV_LOG_WARNING is logged as LOG_DEBUG
 * @param tag     name of the logging module, printed as it stands (no per cent sign); null counts as ""
 * @param format  printf format of the message; null counts as ""
 */
QV_EXPORT void qv_log_common_debug(uint32_t level, const char* tag, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

/** qv_log_common_debug with an argument list. */
QV_EXPORT void qv_log_common_vdebug(uint32_t level, const char* tag, const char* format, va_list args)
    __attribute__((format(printf, 3, 0)));

/** Logs a message whatever classes are enabled; see qv_log_common_debug. */
QV_EXPORT void qv_css_debug(int32_t level, const char* tag, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

/** qv_css_debug with an argument list. */
QV_EXPORT void qv_css_vdebug(uint32_t level, const char* tag, const char* format, va_list args)
    __attribute__((format(printf, 3, 0)));

/**
 * Value of an environment variable as a number: decimal, hexadecimal with "0x" or octal with a leading zero.
 *
 * @return the lowest 32 bits of the number; 0 when the variable is absent, no number, or @p name is null
 */
QV_EXPORT int32_t qv_log_get_config_int32(const char* name);

/** Adds the classes in environment variable "camera_css_debug" to the enabled ones and logs the version line. */
QV_EXPORT void qv_log_common_init(void);

/**
 * Reads "camera_css_debug_dump_path" into g_qv_log_dump_path (cut to 255 characters; kept when the variable is absent)
 * and "camera_css_trace" into g_qv_trace_level (0 when absent), and logs what is in force as information.
 */
QV_EXPORT void qv_log_set_debug_level(void);

/** Opens the system logger under the name "libqvcss" and reads the environment. For the host to call, once. */
QV_EXPORT void start_logging(void);

/** Closes the system logger. */
QV_EXPORT void end_logging(void);

/** Reads the whole environment again, logs the version line and returns the enabled message classes. */
QV_EXPORT uint32_t qv_css_debug_level(void);

/** Directory for debug dumps: g_qv_log_dump_path, never null. */
QV_EXPORT const char* qv_css_debug_dump_path(void);

/** Build identifier of the library: a static text, never empty. */
QV_EXPORT const char* qv_css_get_version_string(void);

/**
 * Opens a span in the kernel's trace; spans nest in the order of the calls.
 *
 * Does nothing while g_qv_trace_level is 0 or no bit of @p tag is in qv_trace_enabled_tags. Tag 1 is the one that is
 * enabled once the marker file is open. The record has at most 1023 characters.
 *
 * @param tag   trace tags of the span
 * @param name  what the span is called; null counts as ""
 */
QV_EXPORT void qv_css_trace_begin(uint64_t tag, const char* name);

/** Closes the span opened last; under the same conditions as qv_css_trace_begin. */
QV_EXPORT void qv_css_trace_end(uint64_t tag);

/** Opens the trace marker file unless that was tried before. */
QV_EXPORT void qv_trace_setup(void);

/**
 * Makes a context named after the lowest eight decimal digits of @p id (see _prettify).
 *
 * @return a context to be released with qv_log_destroy_context, or null when memory is exhausted
 */
QV_EXPORT qv_log_context* qv_log_create_context(uint64_t id);

/**
 * Names an existing context: each pair of the lowest eight decimal digits of @p id, the most significant pair first,
 * gives one letter, 00 an A, 01 a B and so on, starting over after Z. A null context is ignored.
 */
QV_EXPORT void _prettify(qv_log_context* ctx, uint64_t id);

/** Releases a context made by qv_log_create_context; null is allowed. */
QV_EXPORT void qv_log_destroy_context(qv_log_context* ctx);

#ifdef __cplusplus
}
#endif

#endif
