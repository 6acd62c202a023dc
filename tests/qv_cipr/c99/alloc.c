/* SPDX-License-Identifier: Apache-2.0 */
#include <qv_cipr/qv_cipr_alloc.h>

void* use_alloc(void);

void* use_alloc(void)
{
    return qv_cipr_malloc(1, "use_alloc", "alloc.c", 1);
}
