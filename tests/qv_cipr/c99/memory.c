/* SPDX-License-Identifier: Apache-2.0 */
#include <qv_cipr/qv_cipr_memory_common.h>

bool use_memory(const qv_cipr_buffer_t* buffer);

bool use_memory(const qv_cipr_buffer_t* buffer)
{
    return (buffer->mem.flags & QV_CIPR_MEMORY_CPU_PTR) != 0;
}
