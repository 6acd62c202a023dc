/* SPDX-License-Identifier: Apache-2.0 */
#include <qv_cipr/qv_log_common.h>

void use_log(void);

void use_log(void)
{
    qv_log_common_debug(QV_LOG_ERROR, "TAG[XOS]", "%d", 1);
}
