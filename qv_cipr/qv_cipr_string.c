/* SPDX-License-Identifier: Apache-2.0 */
#define _GNU_SOURCE
#include <qv_cipr/qv_cipr_string.h>

#include <qv_cipr/qv_log_common.h>

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#define STRING_TAG "CIPR_STRING[XOS]"

int qv_cipr_snprintf_s(char* dst, size_t dst_size, size_t src_size, const char* format, ...)
{
    if (dst_size < src_size) {
        qv_log_common_debug(QV_LOG_WARNING, STRING_TAG,
                            "%s: destination size is smaller than source size, potential coding error", __func__);
    }
    const size_t size = dst_size < src_size ? dst_size : src_size;
    va_list args;
    va_start(args, format);
    const int length = vsnprintf(dst, size, format, args);
    va_end(args);
    return length;
}

size_t qv_cipr_strnlen(const char* text, size_t max_size)
{
    return strnlen(text, max_size);
}
