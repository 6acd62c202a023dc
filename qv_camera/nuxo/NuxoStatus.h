// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_NUXO_STATUS_H
#define NUXO_NUXO_STATUS_H

#include <qv_tools/qv_export.h>

#include <cstdint>

/// Status of every operation that can fail: 0 for success, a negative power of two for failure.
enum NuxoStatus : int32_t {
    /// Success.
    StatusOk = 0,
    /// A value-returning query has no value. Remedy: check the graph before asking.
    StatusNoValue = -1,
    /// An item, key, setting or required datum is missing or inconsistent. Remedy: complete the graph files.
    StatusMissingData = -2,
    /// An object or allocation could not be created. Remedy: free memory; the object stays usable.
    StatusNoMemory = -4,
    /// Wrong state or broken structure: trees not set, unknown id, missing peer, bad graph data.
    StatusBadState = -8,
    /// A required object, node or facility is missing, or an argument is null where an object is needed.
    StatusMissingObject = -16,
    /// Invalid argument, item of the wrong kind, or an empty lookup.
    StatusBadArgument = -32,
    /// Not found when writing or removing; attribute absent or refusing the value.
    StatusNotFound = -64,
    /// No further match; from a traversal visitor, stop this branch.
    StatusNoMoreMatches = -256,
    /// The item is already present.
    StatusDuplicate = -512,
    /// From a traversal visitor, visit this node again later.
    StatusNotReady = -1024,
    /// Not supported: no options list, generation without the operation, unknown source kind.
    StatusNotSupported = -2048
};

namespace NUXO {

/// Name of a status code for messages, for example "StatusMissingData"; "unknown status" for any other number.
/// The text is static and never freed.
QV_EXPORT const char* statusName(int32_t status);

} // namespace NUXO

#endif
