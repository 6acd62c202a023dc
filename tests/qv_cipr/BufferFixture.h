// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_QV_CIPR_BUFFER_FIXTURE_H
#define NUXO_TESTS_QV_CIPR_BUFFER_FIXTURE_H

#include <qv_cipr/qv_cipr_alloc.h>
#include <qv_cipr/qv_cipr_memory_common.h>
#include <qv_cipr/qv_log_common.h>

#include <support/LogCapture.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>

/// Watches the log (without allocation and entry traces) and that all counted memory is freed in the end.
class BufferFixture : public testing::Test {
protected:
    static constexpr const char* kTag = "MEMORY_COMMON[XOS]";
    static constexpr uint32_t kCpuPtr = 0x1;
    static constexpr uint32_t kHandle = 0x2;
    static constexpr uint32_t kAllocate = 0x4;
    static constexpr uint32_t kCopy = 0x8;
    static constexpr uint32_t kHwOnly = 0x10;
    static constexpr uint32_t kCpuOnly = 0x400;
    static constexpr uint32_t kAllocatedHere = 0x2000;
    static constexpr uint32_t kUserMemory = 0x4000;
    static constexpr uint32_t kDevice = 0x10000;

    ~BufferFixture() override
    {
        g_alloc_error = UINT32_MAX;
        EXPECT_EQ(g_alloc_counter - mAllocatedBefore, g_free_counter - mFreedBefore) << "counted memory leaked";
    }

    /// The next counted allocation but @p successes fails, and all later ones.
    static void failAllocationsAfter(uint32_t successes) { g_alloc_error = g_alloc_counter + successes; }
    static void stopFailing() { g_alloc_error = UINT32_MAX; }

    qv_cipr_memory_t userPointer(uint32_t size = 64) { return {size, mBytes.data(), 0, kCpuPtr, nullptr}; }
    static qv_cipr_memory_t userHandle(uint32_t size = 64) { return {size, nullptr, 0x77, kHandle, nullptr}; }

    testing::AssertionResult onlyError(const std::string& message) const
    {
        return mLog.hasOnly(LogCapture::Error, kTag, message);
    }

    testing::AssertionResult onlyWarning(const std::string& message) const
    {
        return mLog.hasOnly(LogCapture::Warning, kTag, message);
    }

    uint32_t mAllocatedBefore = g_alloc_counter;
    uint32_t mFreedBefore = g_free_counter;
    std::array<unsigned char, 256> mBytes{};
    LogCapture mLog{QV_LOG_INFO | QV_LOG_DEBUG | QV_LOG_ERROR | QV_LOG_WARNING};
};

#endif
