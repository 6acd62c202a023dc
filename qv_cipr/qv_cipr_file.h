/* SPDX-License-Identifier: Apache-2.0 */
#ifndef QV_CIPR_QV_CIPR_FILE_H
#define QV_CIPR_QV_CIPR_FILE_H

#include <qv_tools/qv_export.h>

#include <stddef.h>
#include <stdio.h>

/** File access. Each function is the C library's of the same name: same arguments, same results, same errno. */

#ifdef __cplusplus
extern "C" {
#endif

/** Opens a file; null on failure. The caller closes it with qv_cipr_fclose. */
QV_EXPORT FILE* qv_cipr_fopen(const char* path, const char* mode);

/** Closes a file; 0, or EOF on failure. */
QV_EXPORT int qv_cipr_fclose(FILE* file);

/** Reads up to @p count objects of @p size bytes; the number of objects read. */
QV_EXPORT size_t qv_cipr_fread(void* data, size_t size, size_t count, FILE* file);

/** Writes @p count objects of @p size bytes; the number of objects written. */
QV_EXPORT size_t qv_cipr_fwrite(const void* data, size_t size, size_t count, FILE* file);

/** Moves the position by @p offset bytes from @p whence (SEEK_SET, SEEK_CUR or SEEK_END); 0 on success. */
QV_EXPORT int qv_cipr_fseek(FILE* file, long offset, int whence);

/** Position in bytes from the start of the file; -1 on failure. */
QV_EXPORT long qv_cipr_ftell(FILE* file);

/** Non-zero when an operation on the file has failed. */
QV_EXPORT int qv_cipr_ferror(FILE* file);

/** Forgets the failure and the end of file that the file remembers. */
QV_EXPORT void qv_cipr_clearerr(FILE* file);

#ifdef __cplusplus
}
#endif

#endif
