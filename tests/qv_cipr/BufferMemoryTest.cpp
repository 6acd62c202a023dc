// SPDX-License-Identifier: Apache-2.0
#include "BufferFixture.h"

#include <unistd.h>

#include <cstring>
#include <vector>

namespace {

class BufferMemory : public BufferFixture {
protected:
    /// A buffer for memory on first use whose flags and accessors the test may then set as it likes.
    qv_cipr_buffer_t* makeBuffer(uint32_t flags = kAllocate)
    {
        mBuffer = qv_cipr_buffer_create(64, flags, nullptr);
        EXPECT_NE(mBuffer, nullptr);
        mLog.clear();
        return mBuffer;
    }

    ~BufferMemory() override
    {
        mLog.setMask(0);
        if (mBuffer != nullptr) qv_cipr_buffer_destroy(mBuffer);
    }

    static qv_cipr_memory_t untouched() { return {1, nullptr, 2, 3, nullptr}; }
    static bool isUntouched(const qv_cipr_memory_t& record)
    {
        return record.size == 1 && record.cpu_ptr == nullptr && record.handle == 2 && record.flags == 3 &&
               record.anchor == nullptr;
    }

    qv_cipr_buffer_t* mBuffer = nullptr;
};

TEST_F(BufferMemory, FirstUseAllocates)
{
    makeBuffer();
    EXPECT_EQ(mBuffer->mem.cpu_ptr, nullptr);
    qv_cipr_memory_t record = untouched();
    ASSERT_EQ(qv_cipr_buffer_get_memory(mBuffer, &record), 0);
    EXPECT_EQ(record.size, 64u);
    ASSERT_NE(record.cpu_ptr, nullptr);
    EXPECT_EQ(record.handle, 0u);
    EXPECT_EQ(record.flags, kCpuPtr | kAllocatedHere);
    EXPECT_EQ(record.anchor, mBuffer);
    std::memset(record.cpu_ptr, 0x5a, record.size);

    qv_cipr_memory_t again = untouched();
    ASSERT_EQ(qv_cipr_buffer_get_memory(mBuffer, &again), 0);
    EXPECT_EQ(again.cpu_ptr, record.cpu_ptr);
    EXPECT_EQ(g_alloc_counter, mAllocatedBefore + 2) << "record and block, each once";
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(BufferMemory, MemoryStartsAtAPage)
{
    makeBuffer();
    ASSERT_EQ(qv_cipr_buffer_allocate(mBuffer), 0);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(mBuffer->mem.cpu_ptr) % static_cast<uintptr_t>(sysconf(_SC_PAGESIZE)), 0u);
}

TEST_F(BufferMemory, AllocateWorksBeforeFirstUse)
{
    makeBuffer();
    EXPECT_EQ(qv_cipr_buffer_allocate(mBuffer), 0);
    EXPECT_EQ(mBuffer->mem.flags, kCpuPtr | kAllocatedHere);
    EXPECT_NE(mBuffer->destroy, nullptr);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(BufferMemory, AllocateWorksWithoutTheFlagForIt)
{
    makeBuffer(0);
    EXPECT_EQ(qv_cipr_buffer_allocate(mBuffer), 0);
    EXPECT_EQ(mBuffer->mem.flags, kCpuPtr | kAllocatedHere);
}

TEST_F(BufferMemory, MemoryWithoutAllocationIsHandedOutAsItIs)
{
    makeBuffer(kHwOnly);
    qv_cipr_memory_t record = untouched();
    EXPECT_EQ(qv_cipr_buffer_get_memory(mBuffer, &record), 0);
    EXPECT_EQ(record.cpu_ptr, nullptr);
    EXPECT_EQ(record.flags, kHwOnly);
}

TEST_F(BufferMemory, AllocatingTwiceFails)
{
    makeBuffer();
    ASSERT_EQ(qv_cipr_buffer_allocate(mBuffer), 0);
    EXPECT_EQ(qv_cipr_buffer_allocate(mBuffer), -32);
    EXPECT_EQ(mLog.messages(LogCapture::Error),
              (std::vector<std::string>{"_cipr_memory_common_allocate: already allocated",
                                        "qv_cipr_buffer_allocate: allocation failed"}));
    EXPECT_EQ(mLog.count(), 2u);
    EXPECT_EQ(mLog.lines()[0].tag, kTag);
}

TEST_F(BufferMemory, AllocatingUserMemoryFails)
{
    const qv_cipr_memory_t user = userPointer();
    mBuffer = qv_cipr_buffer_create(64, 0, &user);
    ASSERT_NE(mBuffer, nullptr);
    EXPECT_EQ(qv_cipr_buffer_allocate(mBuffer), -32);
    EXPECT_TRUE(mLog.has(LogCapture::Error, kTag, "_cipr_memory_common_allocate: already allocated"));
    EXPECT_EQ(mBuffer->mem.cpu_ptr, mBytes.data());
}

TEST_F(BufferMemory, UserMemoryIsHandedOutAndNotFreed)
{
    const qv_cipr_memory_t user = userPointer();
    mBuffer = qv_cipr_buffer_create(64, 0, &user);
    qv_cipr_memory_t record = untouched();
    ASSERT_EQ(qv_cipr_buffer_get_memory(mBuffer, &record), 0);
    EXPECT_EQ(record.cpu_ptr, mBytes.data());
    EXPECT_EQ(record.flags, kCpuPtr | kUserMemory);
    const uint32_t freed = g_free_counter;
    qv_cipr_buffer_destroy(mBuffer);
    mBuffer = nullptr;
    EXPECT_EQ(g_free_counter, freed + 1) << "the record only";
}

TEST_F(BufferMemory, HostMemoryIsFreedWithTheBuffer)
{
    makeBuffer();
    ASSERT_EQ(qv_cipr_buffer_allocate(mBuffer), 0);
    const uint32_t freed = g_free_counter;
    qv_cipr_buffer_destroy(mBuffer);
    mBuffer = nullptr;
    EXPECT_EQ(g_free_counter, freed + 2);
}

TEST_F(BufferMemory, HostMemoryStaysWhenItsFlagsAreGone)
{
    // Both the pointer flag and the allocation flag are needed for freeing.
    for (const uint32_t missing : {kCpuPtr, kAllocatedHere}) {
        qv_cipr_buffer_t* buffer = qv_cipr_buffer_create(64, kAllocate, nullptr);
        ASSERT_EQ(qv_cipr_buffer_allocate(buffer), 0);
        void* block = buffer->mem.cpu_ptr;
        buffer->mem.flags &= ~missing;
        const uint32_t freed = g_free_counter;
        qv_cipr_buffer_destroy(buffer);
        EXPECT_EQ(g_free_counter, freed + 1);
        qv_cipr_free(block, "test");
    }
}

TEST_F(BufferMemory, DeviceFlagsNeedMigrationFirst)
{
    makeBuffer(kDevice | kAllocate);
    EXPECT_EQ(qv_cipr_buffer_allocate(mBuffer), -32);
    EXPECT_EQ(mLog.messages(LogCapture::Error),
              (std::vector<std::string>{"_cipr_memory_common_allocate: device memory flags specified, migrate first!",
                                        "qv_cipr_buffer_allocate: allocation failed"}));
    EXPECT_EQ(mBuffer->mem.cpu_ptr, nullptr);

    mBuffer->device_id = 1;
    EXPECT_EQ(qv_cipr_buffer_allocate(mBuffer), 0);
    EXPECT_EQ(mBuffer->mem.flags, kDevice | kCpuPtr | kAllocatedHere);
}

TEST_F(BufferMemory, HighestFlagIsADeviceFlag)
{
    makeBuffer(0x80000000u);
    EXPECT_EQ(qv_cipr_buffer_allocate(mBuffer), -32);
}

TEST_F(BufferMemory, ExhaustedMemoryLeavesTheBufferUsable)
{
    makeBuffer();
    failAllocationsAfter(0);
    EXPECT_EQ(qv_cipr_buffer_allocate(mBuffer), -4);
    EXPECT_TRUE(onlyError("qv_cipr_buffer_allocate: allocation failed"));
    mLog.clear();

    qv_cipr_memory_t record = untouched();
    EXPECT_EQ(qv_cipr_buffer_get_memory(mBuffer, &record), -4);
    EXPECT_EQ(mLog.messages(LogCapture::Error),
              (std::vector<std::string>{"qv_cipr_buffer_allocate: allocation failed",
                                        "qv_cipr_buffer_get_memory: operation failed"}));
    EXPECT_TRUE(isUntouched(record));
    EXPECT_EQ(mBuffer->mem.flags, kAllocate);

    stopFailing();
    EXPECT_EQ(qv_cipr_buffer_get_memory(mBuffer, &record), 0);
}

TEST_F(BufferMemory, CopiesUserMemoryWhenAsked)
{
    makeBuffer(kCopy | kAllocate);
    // Refused when a buffer is created with user memory, so the memory is put in by hand.
    for (size_t i = 0; i < mBytes.size(); ++i) mBytes[i] = static_cast<unsigned char>(i);
    mBuffer->mem.cpu_ptr = mBytes.data();
    mBuffer->mem.flags |= kCpuPtr | kUserMemory;
    EXPECT_EQ(qv_cipr_buffer_allocate(mBuffer), 0);
    EXPECT_NE(mBuffer->mem.cpu_ptr, mBytes.data());
    EXPECT_EQ(std::memcmp(mBuffer->mem.cpu_ptr, mBytes.data(), 64), 0);
    EXPECT_EQ(mBuffer->mem.flags, kCpuPtr | kUserMemory | kAllocatedHere);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(BufferMemory, CopyFromAHandleIsNotImplemented)
{
    makeBuffer(kCopy | kAllocate);
    mBuffer->mem.handle = 0x77;
    mBuffer->mem.flags |= kHandle | kUserMemory;
    const uint32_t freed = g_free_counter;
    EXPECT_EQ(qv_cipr_buffer_allocate(mBuffer), -2);
    EXPECT_EQ(
        mLog.messages(LogCapture::Error),
        (std::vector<std::string>{"_cipr_memory_common_allocate: copy from handle to host only memory notimplemented",
                                  "qv_cipr_buffer_allocate: allocation failed"}));
    EXPECT_EQ(g_free_counter, freed + 1) << "the new block is given back";
    EXPECT_EQ(mBuffer->mem.cpu_ptr, nullptr);
    EXPECT_EQ(mBuffer->mem.flags, kCopy | kAllocate | kHandle | kUserMemory);
}

TEST_F(BufferMemory, CopyOfNothingIsNoFailure)
{
    makeBuffer(kCopy | kAllocate);
    EXPECT_EQ(qv_cipr_buffer_allocate(mBuffer), 0);
    EXPECT_EQ(mBuffer->mem.flags, kCpuPtr | kAllocatedHere);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(BufferMemory, AllocationOverAHandleKeepsTheHandle)
{
    const qv_cipr_memory_t user = userHandle();
    mBuffer = qv_cipr_buffer_create(64, 0, &user);
    EXPECT_EQ(qv_cipr_buffer_allocate(mBuffer), 0);
    EXPECT_EQ(mBuffer->mem.handle, 0x77u);
    EXPECT_EQ(mBuffer->mem.flags, kHandle | kUserMemory | kCpuPtr | kAllocatedHere);
}

TEST_F(BufferMemory, FlagsAreCheckedAfterAllocation)
{
    makeBuffer();
    mBuffer->mem.flags |= kHwOnly | kCpuOnly;
    EXPECT_EQ(qv_cipr_buffer_allocate(mBuffer), -2);
    EXPECT_EQ(mLog.messages(LogCapture::Error),
              (std::vector<std::string>{
                  "_validate_buffer_bitfield: Both QV_CIPR_MEMORY_CPU_ONLY and QV_CIPR_MEMORY_HW_ONLY are set at same "
                  "time, which is the invalid case.",
                  "qv_cipr_buffer_allocate: bitfield validation after allocate failed"}));
}

TEST_F(BufferMemory, FlagsAreCheckedAfterAllocationOnFirstUse)
{
    makeBuffer();
    mBuffer->mem.flags |= kHwOnly | kCpuOnly;
    qv_cipr_memory_t record = untouched();
    EXPECT_EQ(qv_cipr_buffer_get_memory(mBuffer, &record), -2);
    EXPECT_EQ(mLog.messages(LogCapture::Error).back(), "qv_cipr_buffer_get_memory: operation failed");
    EXPECT_TRUE(
        mLog.has(LogCapture::Error, kTag, "qv_cipr_buffer_allocate: bitfield validation after allocate failed"));
    EXPECT_TRUE(isUntouched(record));
}

TEST_F(BufferMemory, PointerBeforeItsAllocationIsAnError)
{
    makeBuffer();
    mBuffer->mem.cpu_ptr = mBytes.data();
    qv_cipr_memory_t record = untouched();
    EXPECT_EQ(qv_cipr_buffer_get_memory(mBuffer, &record), -16);
    EXPECT_EQ(
        mLog.messages(LogCapture::Error),
        (std::vector<std::string>{"_cipr_memory_common_get_memory: ALLOCATE_CPU_PTR not handled but pointer exists!",
                                  "qv_cipr_buffer_get_memory: operation failed"}));
    EXPECT_TRUE(isUntouched(record));
}

TEST_F(BufferMemory, FirstUseWithoutAllocateOperationFails)
{
    makeBuffer();
    mBuffer->allocate = nullptr;
    qv_cipr_memory_t record = untouched();
    EXPECT_EQ(qv_cipr_buffer_get_memory(mBuffer, &record), -16);
    EXPECT_TRUE(onlyError("qv_cipr_buffer_get_memory: operation failed"));
    mLog.clear();
    EXPECT_EQ(qv_cipr_buffer_allocate(mBuffer), -16);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(BufferMemory, MissingGetMemoryOperationFailsSilently)
{
    makeBuffer();
    mBuffer->get_memory = nullptr;
    qv_cipr_memory_t record = untouched();
    EXPECT_EQ(qv_cipr_buffer_get_memory(mBuffer, &record), -16);
    EXPECT_TRUE(mLog.isEmpty());
    EXPECT_TRUE(isUntouched(record));
}

TEST_F(BufferMemory, ReturnedRecordIsChecked)
{
    makeBuffer();
    mBuffer->get_memory = [](qv_cipr_buffer_t*, qv_cipr_memory_t* memory) -> int32_t {
        memory->flags = kAllocatedHere;
        return 0;
    };
    qv_cipr_memory_t record = untouched();
    EXPECT_EQ(qv_cipr_buffer_get_memory(mBuffer, &record), -2);
    EXPECT_EQ(mLog.messages(LogCapture::Error),
              (std::vector<std::string>{
                  "_validate_buffer_bitfield: missing memory accessor or HW_ONLY flag for allocated memory",
                  "qv_cipr_buffer_get_memory: bitfield validation failed for memory returned"}));
    EXPECT_TRUE(isUntouched(record));
}

TEST_F(BufferMemory, NullArgumentsAreRefused)
{
    makeBuffer();
    qv_cipr_memory_t record = untouched();
    EXPECT_EQ(qv_cipr_buffer_allocate(nullptr), -32);
    EXPECT_EQ(qv_cipr_buffer_get_memory(nullptr, &record), -32);
    EXPECT_EQ(qv_cipr_buffer_get_memory(mBuffer, nullptr), -32);
    EXPECT_EQ(mBuffer->mem.cpu_ptr, nullptr) << "nothing is allocated for nobody";
    EXPECT_EQ(qv_cipr_buffer_get_device_id(nullptr), 0);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(BufferMemory, DestroyingNullIsAnError)
{
    qv_cipr_buffer_destroy(nullptr);
    EXPECT_TRUE(onlyError("qv_cipr_buffer_destroy: NULL pointer given!"));
}

TEST_F(BufferMemory, AllMessagesAboutMemoryAreErrors)
{
    makeBuffer();
    EXPECT_TRUE(mLog.linesOfLevel(0x3f & ~QV_LOG_ERROR & ~QV_LOG_ENTRY & ~QV_LOG_ALLOCATION,
                                  [&] {
                                      mBuffer->mem.cpu_ptr = mBytes.data();
                                      qv_cipr_memory_t record{};
                                      (void)qv_cipr_buffer_get_memory(mBuffer, &record);
                                      (void)qv_cipr_buffer_allocate(mBuffer);
                                      mBuffer->mem.cpu_ptr = nullptr;
                                  })
                    .empty());
}

} // namespace
