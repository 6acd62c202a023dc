/* SPDX-License-Identifier: Apache-2.0 */
#include <qv_tools/qv_list.h>

bool use_list(const qv_list* list);

bool use_list(const qv_list* list)
{
    return qv_list_contains(list, 0);
}
