/* SPDX-License-Identifier: Apache-2.0 */
#include <qv_cipr/qv_cipr_string.h>

int use_string(char* text, size_t size);

int use_string(char* text, size_t size)
{
    return qv_cipr_snprintf_s(text, size, size, "%d", 1);
}
