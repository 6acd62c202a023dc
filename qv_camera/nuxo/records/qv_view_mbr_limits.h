/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NUXO_RECORDS_QV_VIEW_MBR_LIMITS_H
#define NUXO_RECORDS_QV_VIEW_MBR_LIMITS_H

#define QV_VIEW_MBR_ROWS 7
#define QV_VIEW_MBR_ROW_LENGTH 8

/** The MBR limits of one stream, as the imaging libraries read them: in the order of the graph's text. */
typedef struct qv_view_mbr_limits_t {
    float values[QV_VIEW_MBR_ROWS][QV_VIEW_MBR_ROW_LENGTH];
} qv_view_mbr_limits_t;

#ifdef __cplusplus
static_assert(sizeof(qv_view_mbr_limits_t) == 224, "layout is shared with the imaging libraries");
#endif

#endif
