// SPDX-License-Identifier: Apache-2.0
#include <nuxo/NuxoStatus.h>

namespace NUXO {

namespace {

struct StatusRow {
    int32_t status;
    const char* name;
};

constexpr StatusRow kStatusRows[] = {
    {StatusOk, "StatusOk"},
    {StatusNoValue, "StatusNoValue"},
    {StatusMissingData, "StatusMissingData"},
    {StatusNoMemory, "StatusNoMemory"},
    {StatusBadState, "StatusBadState"},
    {StatusMissingObject, "StatusMissingObject"},
    {StatusBadArgument, "StatusBadArgument"},
    {StatusNotFound, "StatusNotFound"},
    {StatusNoMoreMatches, "StatusNoMoreMatches"},
    {StatusDuplicate, "StatusDuplicate"},
    {StatusNotReady, "StatusNotReady"},
    {StatusNotSupported, "StatusNotSupported"},
};

} // namespace

const char* statusName(int32_t status)
{
    for (const StatusRow& row : kStatusRows) {
        if (row.status == status) return row.name;
    }
    return "unknown status";
}

} // namespace NUXO
