/* SPDX-License-Identifier: Apache-2.0 */
#include <qv_cipr/qv_cipr_file.h>

FILE* use_file(void);

FILE* use_file(void)
{
    return qv_cipr_fopen("file", "r");
}
