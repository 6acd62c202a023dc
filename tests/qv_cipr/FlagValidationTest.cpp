// SPDX-License-Identifier: Apache-2.0
#include "BufferFixture.h"

#include <qv_cipr/qv_cipr_memory_internal.h>

#include <cstdio>
#include <vector>

namespace {

class FlagValidation : public BufferFixture {
protected:
    struct Case {
        uint32_t flags;
        bool hasPointer;
        uint64_t handle;
        /// Which messages are logged, without the function's name.
        std::vector<std::string> violations;
    };

    qv_cipr_memory_t recordOf(const Case& test)
    {
        return {64, test.hasPointer ? mBytes.data() : nullptr, test.handle, test.flags, nullptr};
    }

    void expect(const Case& test)
    {
        mLog.clear();
        qv_cipr_buffer_t buffer{};
        const qv_cipr_memory_t record = recordOf(test);
        EXPECT_EQ(_validate_buffer_bitfield(&buffer, &record), test.violations.empty() ? 0 : -2) << test.flags;
        std::vector<std::string> expected;
        for (const std::string& text : test.violations) expected.push_back("_validate_buffer_bitfield: " + text);
        EXPECT_EQ(mLog.messages(LogCapture::Error), expected) << test.flags;
        EXPECT_EQ(mLog.count(), expected.size());
    }

    std::string pointerText(bool set, const void* pointer) const
    {
        char text[128];
        std::snprintf(text, sizeof(text), "QV_CIPR_MEMORY_CPU_PTR (%s) ptr = %p", set ? "set" : "not set", pointer);
        return text;
    }

    const std::string mExclusive = "Both QV_CIPR_MEMORY_CPU_ONLY and QV_CIPR_MEMORY_HW_ONLY are set at same time, "
                                   "which is the invalid case.";
    const std::string mAllocateLeft =
        "QV_CIPR_MEMORY_ALLOCATE_CPU_PTR needs to be unset to acknowledge allocation done!";
    const std::string mCopyLeft = "QV_CIPR_MEMORY_COPY_FROM_USER needs to be unset to acknowledge copy done!";
    const std::string mNoAccessor = "missing memory accessor or HW_ONLY flag for allocated memory";
    const std::string mEarlyAccessor = "memory accessor set before allocation";
};

TEST_F(FlagValidation, AcceptsWhatFitsTogether)
{
    expect({0, false, 0, {}});
    expect({kAllocate | kCopy, false, 0, {}});
    expect({kHwOnly, false, 0, {}});
    expect({kCpuOnly, false, 0, {}});
    expect({kDevice | kAllocate, false, 0, {}});
    expect({kCpuPtr | kAllocatedHere, true, 0, {}});
    expect({kCpuPtr | kUserMemory | kCpuOnly, true, 0, {}});
    expect({kHandle | kUserMemory, false, 1, {}});
    expect({kCpuPtr | kHandle | kAllocatedHere | kUserMemory, true, 1, {}});
    expect({kHwOnly | kAllocatedHere, false, 0, {}});
}

TEST_F(FlagValidation, PointerAndItsFlagBelongTogether)
{
    expect({kCpuPtr | kHandle | kUserMemory, false, 1, {pointerText(true, nullptr)}});
    expect({kAllocate, true, 0, {pointerText(false, mBytes.data())}});
}

TEST_F(FlagValidation, HandleAndItsFlagBelongTogether)
{
    expect({kHandle | kCpuPtr | kUserMemory, true, 0, {"QV_CIPR_MEMORY_HANDLE (set) handle = 0"}});
    expect({0, false, 18446744073709551615u, {"QV_CIPR_MEMORY_HANDLE (not set) handle = 18446744073709551615"}});
}

TEST_F(FlagValidation, HostOnlyAndDeviceOnlyExcludeEachOther)
{
    expect({kCpuOnly | kHwOnly, false, 0, {mExclusive}});
}

TEST_F(FlagValidation, AllocatedMemoryHasNothingLeftToDo)
{
    for (const uint32_t allocated : {kAllocatedHere, kUserMemory}) {
        expect({allocated | kCpuPtr | kAllocate, true, 0, {mAllocateLeft}});
        expect({allocated | kCpuPtr | kCopy, true, 0, {mCopyLeft}});
        expect({allocated | kCpuOnly, false, 0, {mNoAccessor}});
    }
}

TEST_F(FlagValidation, AccessorsComeWithAllocation)
{
    expect({kCpuPtr, true, 0, {mEarlyAccessor}});
    expect({kHandle, false, 1, {mEarlyAccessor}});
}

TEST_F(FlagValidation, EveryViolationIsLogged)
{
    expect({kHandle | kCpuOnly | kHwOnly | kAllocatedHere | kAllocate | kCopy,
            true,
            0,
            {pointerText(false, mBytes.data()), "QV_CIPR_MEMORY_HANDLE (set) handle = 0", mExclusive, mAllocateLeft,
             mCopyLeft}});
    expect({kCpuPtr | kHandle,
            false,
            0,
            {pointerText(true, nullptr), "QV_CIPR_MEMORY_HANDLE (set) handle = 0", mEarlyAccessor}});
}

TEST_F(FlagValidation, ChecksTheRecordIfThereIsOneOtherwiseTheBuffer)
{
    qv_cipr_buffer_t buffer{};
    buffer.mem.flags = kHwOnly | kCpuOnly;
    const qv_cipr_memory_t valid{64, nullptr, 0, 0, nullptr};
    EXPECT_EQ(_validate_buffer_bitfield(&buffer, &valid), 0);
    EXPECT_EQ(_validate_buffer_bitfield(&buffer, nullptr), -2);
}

TEST_F(FlagValidation, NullBufferIsRefusedEvenWithARecord)
{
    const qv_cipr_memory_t valid{64, nullptr, 0, 0, nullptr};
    EXPECT_EQ(_validate_buffer_bitfield(nullptr, &valid), -32);
    EXPECT_EQ(_validate_buffer_bitfield(nullptr, nullptr), -32);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(FlagValidation, ViolationsAreErrors)
{
    qv_cipr_buffer_t buffer{};
    buffer.mem.flags = kCpuPtr | kHandle;
    EXPECT_EQ(mLog.linesOfLevel(QV_LOG_ERROR, [&] { (void)_validate_buffer_bitfield(&buffer, nullptr); }).size(), 3u);
    EXPECT_EQ(mLog.linesOfLevel(0x3f, [&] { (void)_validate_buffer_bitfield(&buffer, nullptr); }).size(), 3u)
        << "no entry trace";
}

} // namespace
