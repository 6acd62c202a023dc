/* SPDX-License-Identifier: Apache-2.0 */
#ifndef QV_TOOLS_QV_EXPORT_H
#define QV_TOOLS_QV_EXPORT_H

/** Marks what clients of the library may use; everything else stays hidden inside it. */
#define QV_EXPORT __attribute__((visibility("default")))

/** Marks private parts of what is exported: clients cannot call them, so they are no part of the interface. */
#define QV_LOCAL __attribute__((visibility("hidden")))

#endif
