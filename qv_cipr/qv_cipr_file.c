/* SPDX-License-Identifier: Apache-2.0 */
#include <qv_cipr/qv_cipr_file.h>

FILE* qv_cipr_fopen(const char* path, const char* mode)
{
    return fopen(path, mode);
}

int qv_cipr_fclose(FILE* file)
{
    return fclose(file);
}

size_t qv_cipr_fread(void* data, size_t size, size_t count, FILE* file)
{
    return fread(data, size, count, file);
}

size_t qv_cipr_fwrite(const void* data, size_t size, size_t count, FILE* file)
{
    return fwrite(data, size, count, file);
}

int qv_cipr_fseek(FILE* file, long offset, int whence)
{
    return fseek(file, offset, whence);
}

long qv_cipr_ftell(FILE* file)
{
    return ftell(file);
}

int qv_cipr_ferror(FILE* file)
{
    return ferror(file);
}

void qv_cipr_clearerr(FILE* file)
{
    clearerr(file);
}
