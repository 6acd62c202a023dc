/* SPDX-License-Identifier: Apache-2.0 */
/* A client of the C runtime: uses each of its modules once and succeeds when they do what they say. */
#include <qv_cipr/qv_cipr_alloc.h>
#include <qv_cipr/qv_cipr_memory_common.h>
#include <qv_cipr/qv_cipr_string.h>
#include <qv_cipr/qv_log_common.h>
#include <qv_tools/qv_list.h>

#include <stdio.h>
#include <string.h>

static int list_works(void)
{
    int data = 0;
    qv_list* list = NULL;
    if (qv_list_append(&list, &data) != 0) return 0;
    return qv_list_contains(list, &data) && qv_list_remove(&list, &data) && list == NULL;
}

static int buffer_works(void)
{
    qv_cipr_memory_t memory;
    qv_cipr_buffer_t* buffer = qv_cipr_buffer_create(64, QV_CIPR_MEMORY_ALLOCATE_CPU_PTR, NULL);
    const int works = buffer != NULL && qv_cipr_buffer_get_memory(buffer, &memory) == 0 && memory.size == 64 &&
                      memory.cpu_ptr != NULL;
    if (works) memset(memory.cpu_ptr, 0xA5, memory.size);
    if (buffer != NULL) qv_cipr_buffer_destroy(buffer);
    return works;
}

static int text_works(void)
{
    char text[16];
    /* The text is 7 characters and its end. */
    return qv_cipr_snprintf_s(text, sizeof text, 15, "%s %d", "nuxo", 42) == 7 && strcmp(text, "nuxo 42") == 0;
}

int main(void)
{
    start_logging();
    qv_log_common_debug(QV_LOG_ERROR, "CLIENT", "%s", "a line for the system logger");
    end_logging();

    const int works = list_works() && buffer_works() && text_works();
    /* Whatever was allocated is freed. */
    const int balanced = g_alloc_counter == g_free_counter;
    printf("runtime %s, %s\n", works ? "works" : "fails", balanced ? "nothing leaks" : "something leaks");
    return works && balanced ? 0 : 1;
}
