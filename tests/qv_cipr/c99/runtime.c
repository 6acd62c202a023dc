/* SPDX-License-Identifier: Apache-2.0 */
#include <qv_cipr/qv_cipr_runtime.h>

qv_cipr_context_t* use_runtime(void);

qv_cipr_context_t* use_runtime(void)
{
    return qv_cipr_create();
}
