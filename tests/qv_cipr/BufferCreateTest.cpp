// SPDX-License-Identifier: Apache-2.0
#include "BufferFixture.h"

#include <functional>
#include <vector>

namespace {

class BufferCreate : public BufferFixture {
protected:
    void expectRefused(uint32_t flags, const qv_cipr_memory_t& user, const std::string& message)
    {
        mLog.clear();
        EXPECT_EQ(qv_cipr_buffer_create(64, flags, &user), nullptr);
        EXPECT_TRUE(onlyError("qv_cipr_buffer_create: " + message));
    }
};

TEST_F(BufferCreate, MakesAWholeBufferWithoutMemory)
{
    qv_cipr_buffer_t* buffer = qv_cipr_buffer_create(64, kAllocate | kCpuOnly, nullptr);
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(buffer->mem.size, 64u);
    EXPECT_EQ(buffer->mem.cpu_ptr, nullptr);
    EXPECT_EQ(buffer->mem.handle, 0u);
    EXPECT_EQ(buffer->mem.flags, kAllocate | kCpuOnly);
    EXPECT_EQ(buffer->mem.anchor, buffer);
    EXPECT_EQ(buffer->device_id, 0);
    EXPECT_NE(buffer->allocate, nullptr);
    EXPECT_EQ(buffer->migrate, nullptr);
    EXPECT_NE(buffer->get_memory, nullptr);
    EXPECT_EQ(buffer->destroy, nullptr);
    EXPECT_EQ(buffer->device_context, nullptr);
    EXPECT_EQ(buffer->offset, 0u);
    EXPECT_EQ(buffer->regions, nullptr);
    EXPECT_FALSE(qv_cipr_buffer_is_region(buffer));
    EXPECT_EQ(qv_cipr_buffer_get_device_id(buffer), 0);
    EXPECT_EQ(g_alloc_counter, mAllocatedBefore + 1) << "only the record itself";
    qv_cipr_buffer_destroy(buffer);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(BufferCreate, FlagsHaveTheirValues)
{
    EXPECT_EQ(QV_CIPR_MEMORY_CPU_PTR, 1u);
    EXPECT_EQ(QV_CIPR_MEMORY_HANDLE, 2u);
    EXPECT_EQ(QV_CIPR_MEMORY_ALLOCATE_CPU_PTR, 4u);
    EXPECT_EQ(QV_CIPR_MEMORY_COPY_FROM_USER, 8u);
    EXPECT_EQ(QV_CIPR_MEMORY_HW_ONLY, 16u);
    EXPECT_EQ(QV_CIPR_MEMORY_CPU_ONLY, 1024u);
    EXPECT_EQ(QV_CIPR_MEMORY_ALLOCATED_HERE, 8192u);
    EXPECT_EQ(QV_CIPR_MEMORY_USER_MEMORY, 16384u);
    EXPECT_EQ(QV_CIPR_MEMORY_DEVICE_FLAGS, 0xFFFF0000u); // 65536 and above
}

TEST_F(BufferCreate, SizeZeroIsRefusedSilently)
{
    EXPECT_EQ(qv_cipr_buffer_create(0, kAllocate, nullptr), nullptr);
    EXPECT_TRUE(mLog.isEmpty());
    EXPECT_EQ(g_alloc_counter, mAllocatedBefore);
}

TEST_F(BufferCreate, ExhaustedMemoryIsAnError)
{
    failAllocationsAfter(0);
    EXPECT_EQ(qv_cipr_buffer_create(64, kAllocate, nullptr), nullptr);
    EXPECT_TRUE(onlyError("could not allocate buf"));
}

TEST_F(BufferCreate, TakesAUserPointer)
{
    const qv_cipr_memory_t user = userPointer();
    qv_cipr_buffer_t* buffer = qv_cipr_buffer_create(64, kCpuOnly, &user);
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(buffer->mem.cpu_ptr, mBytes.data());
    EXPECT_EQ(buffer->mem.flags, kCpuPtr | kUserMemory | kCpuOnly);
    EXPECT_EQ(buffer->mem.anchor, buffer);
    qv_cipr_buffer_destroy(buffer);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(BufferCreate, TakesAUserHandle)
{
    const qv_cipr_memory_t user = userHandle();
    qv_cipr_buffer_t* buffer = qv_cipr_buffer_create(64, 0, &user);
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(buffer->mem.handle, 0x77u);
    EXPECT_EQ(buffer->mem.cpu_ptr, nullptr);
    EXPECT_EQ(buffer->mem.flags, kHandle | kUserMemory);
    qv_cipr_buffer_destroy(buffer);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(BufferCreate, LargerUserMemoryIsTruncatedWithAWarning)
{
    const qv_cipr_memory_t user = userPointer(65);
    qv_cipr_buffer_t* buffer = qv_cipr_buffer_create(64, 0, &user);
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(buffer->mem.size, 64u);
    EXPECT_TRUE(onlyWarning("qv_cipr_buffer_create: requested bytes to allocate less than provided user memory in "
                            "argument, truncating"));
    qv_cipr_buffer_destroy(buffer);
}

TEST_F(BufferCreate, SmallerUserMemoryIsRefused)
{
    expectRefused(0, userPointer(63), "requested bytes to allocate more than provided user memory in argument");
}

TEST_F(BufferCreate, UserSizeIsCheckedBeforeThePointer)
{
    qv_cipr_memory_t user = userPointer(63);
    user.cpu_ptr = nullptr;
    expectRefused(0, user, "requested bytes to allocate more than provided user memory in argument");
}

TEST_F(BufferCreate, UserPointerMustBeThere)
{
    qv_cipr_memory_t user = userPointer();
    user.cpu_ptr = nullptr;
    expectRefused(0, user, "user did not provide pointer with QV_CIPR_MEMORY_CPU_PTR");
}

TEST_F(BufferCreate, UserPointerExcludesAHandle)
{
    qv_cipr_memory_t user = userPointer();
    user.flags |= kHandle;
    user.handle = 0x77;
    expectRefused(0, user, "QV_CIPR_MEMORY_CPU_PTR conflict with QV_CIPR_MEMORY_HANDLE");
}

TEST_F(BufferCreate, UserPointerExcludesAllocationWithoutCopy)
{
    expectRefused(kAllocate, userPointer(), "QV_CIPR_MEMORY_CPU_PTR conflict with QV_CIPR_MEMORY_ALLOCATE_CPU_PTR");
}

TEST_F(BufferCreate, UserHandleMustBeThere)
{
    qv_cipr_memory_t user = userHandle();
    user.handle = 0;
    expectRefused(0, user, "user did not provide handle with QV_CIPR_MEMORY_HANDLE");
}

TEST_F(BufferCreate, UserHandleExcludesCopy)
{
    expectRefused(kCopy, userHandle(),
                  "QV_CIPR_MEMORY_COPY_FROM_USER conflict!  Copy from user handle not implemented.");
    // The copy is looked at before the allocation.
    expectRefused(kCopy | kAllocate, userHandle(),
                  "QV_CIPR_MEMORY_COPY_FROM_USER conflict!  Copy from user handle not implemented.");
}

TEST_F(BufferCreate, UserHandleExcludesAllocation)
{
    expectRefused(kAllocate, userHandle(), "QV_CIPR_MEMORY_HANDLE conflict with QV_CIPR_MEMORY_ALLOCATE_CPU_PTR");
}

TEST_F(BufferCreate, UserMemoryOfAnotherBufferIsRefused)
{
    qv_cipr_buffer_t* other = qv_cipr_buffer_create(64, kAllocate, nullptr);
    qv_cipr_memory_t record{};
    ASSERT_EQ(qv_cipr_buffer_get_memory(other, &record), 0);
    expectRefused(0, record, "inheriting object from another not supported!");

    qv_cipr_memory_t anchorOnly{64, nullptr, 0, 0, other};
    expectRefused(0, anchorOnly, "inheriting object from another not supported!");
    qv_cipr_buffer_destroy(other);
}

TEST_F(BufferCreate, UserMemoryWithoutAccessorIsRefused)
{
    // A pointer and a handle count only when their flags say so.
    expectRefused(0, {64, mBytes.data(), 0x77, 0, nullptr}, "Invalid user memory given as argument!");
    expectRefused(0, {64, nullptr, 0, kHwOnly | kAllocate, nullptr}, "Invalid user memory given as argument!");
}

TEST_F(BufferCreate, ErrorsAreOfTheErrorClassAndTheTruncationIsAWarning)
{
    qv_cipr_memory_t large = userPointer(65);
    large.cpu_ptr = nullptr;
    EXPECT_EQ(mLog.linesOfLevel(QV_LOG_WARNING, [&] { (void)qv_cipr_buffer_create(64, 0, &large); }).size(), 1u);
    EXPECT_EQ(mLog.linesOfLevel(QV_LOG_ERROR, [&] { (void)qv_cipr_buffer_create(64, 0, &large); }).size(), 1u);
}

TEST_F(BufferCreate, CopyFromUserMemoryIsRefusedByTheFlagRules)
{
    const qv_cipr_memory_t user = userPointer();
    EXPECT_EQ(qv_cipr_buffer_create(64, kCopy | kAllocate, &user), nullptr);
    EXPECT_EQ(mLog.messages(LogCapture::Error),
              (std::vector<std::string>{"_validate_buffer_bitfield: QV_CIPR_MEMORY_ALLOCATE_CPU_PTR needs to be unset "
                                        "to acknowledge allocation done!",
                                        "_validate_buffer_bitfield: QV_CIPR_MEMORY_COPY_FROM_USER needs to be unset "
                                        "to acknowledge copy done!"}));
}

TEST_F(BufferCreate, RequestedAccessorWithoutMemoryIsRefused)
{
    EXPECT_EQ(qv_cipr_buffer_create(64, kCpuPtr, nullptr), nullptr);
    EXPECT_EQ(mLog.messages(LogCapture::Error),
              (std::vector<std::string>{"_validate_buffer_bitfield: QV_CIPR_MEMORY_CPU_PTR (set) ptr = (nil)",
                                        "_validate_buffer_bitfield: memory accessor set before allocation"}));
    EXPECT_EQ(mLog.count(LogCapture::Error), mLog.count());
}

TEST_F(BufferCreate, DeviceFlagsAreAccepted)
{
    qv_cipr_buffer_t* buffer = qv_cipr_buffer_create(64, kDevice, nullptr);
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(buffer->mem.flags, kDevice);
    qv_cipr_buffer_destroy(buffer);
}

TEST_F(BufferCreate, EveryFunctionTracesItsEntryFirst)
{
    const std::vector<std::pair<const char*, std::function<void()>>> calls = {
        {"qv_cipr_buffer_create", [] { (void)qv_cipr_buffer_create(0, 0, nullptr); }},
        {"qv_cipr_buffer_create_region", [] { (void)qv_cipr_buffer_create_region(nullptr, 0, 0); }},
        {"qv_cipr_buffer_destroy", [] { qv_cipr_buffer_destroy(nullptr); }},
        {"qv_cipr_buffer_allocate", [] { (void)qv_cipr_buffer_allocate(nullptr); }},
        {"qv_cipr_buffer_get_memory", [] { (void)qv_cipr_buffer_get_memory(nullptr, nullptr); }},
        {"qv_cipr_buffer_is_region", [] { (void)qv_cipr_buffer_is_region(nullptr); }},
        {"qv_cipr_buffer_get_parent", [] { (void)qv_cipr_buffer_get_parent(nullptr); }},
        {"qv_cipr_buffer_get_device_id", [] { (void)qv_cipr_buffer_get_device_id(nullptr); }},
        {"qv_cipr_memory_device_migrate_buffer", [] { (void)qv_cipr_memory_device_migrate_buffer(nullptr, nullptr); }},
    };
    for (const auto& [name, call] : calls) {
        const std::vector<LogLine> lines = mLog.linesOfLevel(QV_LOG_ENTRY, call);
        ASSERT_EQ(lines.size(), 1u) << name;
        EXPECT_EQ(lines[0].message, std::string("E:") + name);
        EXPECT_EQ(lines[0].tag, kTag);
        EXPECT_EQ(lines[0].priority, LogCapture::Debug);
    }
    mLog.clear();
    mLog.setMask(0x3f);
    qv_cipr_buffer_destroy(nullptr);
    EXPECT_EQ(mLog.messages(),
              (std::vector<std::string>{"E:qv_cipr_buffer_destroy", "qv_cipr_buffer_destroy: NULL pointer given!"}));
}

} // namespace
