// SPDX-License-Identifier: Apache-2.0
#include <nuxo/NuxoStatus.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>

namespace {

struct StatusRow {
    NuxoStatus status;
    int32_t value;
    const char* name;
};

constexpr StatusRow kStatusRows[] = {
    {StatusOk, 0, "StatusOk"},
    {StatusNoValue, -1, "StatusNoValue"},
    {StatusMissingData, -2, "StatusMissingData"},
    {StatusNoMemory, -4, "StatusNoMemory"},
    {StatusBadState, -8, "StatusBadState"},
    {StatusMissingObject, -16, "StatusMissingObject"},
    {StatusBadArgument, -32, "StatusBadArgument"},
    {StatusNotFound, -64, "StatusNotFound"},
    {StatusNoMoreMatches, -256, "StatusNoMoreMatches"},
    {StatusDuplicate, -512, "StatusDuplicate"},
    {StatusNotReady, -1024, "StatusNotReady"},
    {StatusNotSupported, -2048, "StatusNotSupported"},
};

TEST(NuxoStatus, CodesHaveTheirDocumentedValues)
{
    for (const StatusRow& row : kStatusRows) {
        EXPECT_EQ(row.value, static_cast<int32_t>(row.status)) << row.name;
    }
}

TEST(NuxoStatus, IsA32BitSignedNumber)
{
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<NuxoStatus>, int32_t>));
    const int32_t plain = StatusNotFound; // unscoped: results are plain integers
    EXPECT_EQ(-64, plain);
}

TEST(NuxoStatus, EveryCodeHasItsName)
{
    for (const StatusRow& row : kStatusRows) {
        EXPECT_STREQ(row.name, NUXO::statusName(row.value));
    }
}

TEST(NuxoStatus, OtherNumbersHaveNoName)
{
    for (const int32_t other : {1, 64, -3, -128, -4096, INT32_MIN, INT32_MAX}) {
        EXPECT_STREQ("unknown status", NUXO::statusName(other)) << other;
    }
}

} // namespace
