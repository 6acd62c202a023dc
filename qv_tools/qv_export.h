/* SPDX-License-Identifier: Apache-2.0 */
#ifndef QV_TOOLS_QV_EXPORT_H
#define QV_TOOLS_QV_EXPORT_H

/** Marks what clients of the library may use; everything else stays hidden inside it. */
#define QV_EXPORT __attribute__((visibility("default")))

#endif
