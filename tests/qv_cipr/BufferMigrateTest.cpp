// SPDX-License-Identifier: Apache-2.0
#include "BufferFixture.h"

#include <vector>

namespace {

/// What the device back end below was asked for.
struct DeviceCalls {
    int allocated = 0;
    int migrated = 0;
    int asked = 0;
    int destroyed = 0;
    int32_t migrateResult = 0;
};

DeviceCalls& callsOf(qv_cipr_buffer_t* buffer)
{
    return *static_cast<DeviceCalls*>(buffer->device_context);
}

int32_t deviceAllocate(qv_cipr_buffer_t* buffer)
{
    ++callsOf(buffer).allocated;
    return -8;
}

int32_t deviceMigrate(qv_cipr_buffer_t* buffer)
{
    buffer->device_id = 5;
    ++callsOf(buffer).migrated;
    return callsOf(buffer).migrateResult;
}

int32_t deviceGetMemory(qv_cipr_buffer_t* buffer, qv_cipr_memory_t* memory)
{
    ++callsOf(buffer).asked;
    *memory = buffer->mem;
    memory->handle = 0x99;
    memory->flags = QV_CIPR_MEMORY_HANDLE | QV_CIPR_MEMORY_ALLOCATED_HERE;
    return 0;
}

void deviceDestroy(qv_cipr_buffer_t* buffer)
{
    ++callsOf(buffer).destroyed;
}

class BufferMigrate : public BufferFixture {
protected:
    BufferMigrate() : mBuffer(qv_cipr_buffer_create(64, kDevice, nullptr)) { EXPECT_NE(mBuffer, nullptr); }

    ~BufferMigrate() override
    {
        mLog.setMask(0);
        if (mBuffer != nullptr) qv_cipr_buffer_destroy(mBuffer);
    }

    DeviceCalls mCalls;
    qv_cipr_memory_device_t mDevice = {deviceAllocate, deviceMigrate, deviceGetMemory, deviceDestroy, &mCalls};
    qv_cipr_buffer_t* mBuffer;
};

TEST_F(BufferMigrate, InstallsTheDeviceAndMigrates)
{
    EXPECT_EQ(qv_cipr_memory_device_migrate_buffer(&mDevice, mBuffer), 0);
    EXPECT_EQ(mCalls.migrated, 1);
    EXPECT_EQ(mBuffer->device_context, &mCalls);
    EXPECT_EQ(qv_cipr_buffer_get_device_id(mBuffer), 5);

    qv_cipr_memory_t record{};
    EXPECT_EQ(qv_cipr_buffer_get_memory(mBuffer, &record), 0);
    EXPECT_EQ(record.handle, 0x99u);
    EXPECT_EQ(mCalls.asked, 1);

    qv_cipr_buffer_destroy(mBuffer);
    mBuffer = nullptr;
    EXPECT_EQ(mCalls.destroyed, 1);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(BufferMigrate, ReturnsWhatTheMigrateOperationReturns)
{
    mCalls.migrateResult = -1024;
    EXPECT_EQ(qv_cipr_memory_device_migrate_buffer(&mDevice, mBuffer), -1024);
}

TEST_F(BufferMigrate, PassesTheStatusOfAFailedDeviceAllocationOn)
{
    ASSERT_EQ(qv_cipr_memory_device_migrate_buffer(&mDevice, mBuffer), 0);
    EXPECT_EQ(qv_cipr_buffer_allocate(mBuffer), -8);
    EXPECT_EQ(mCalls.allocated, 1);
    EXPECT_TRUE(onlyError("qv_cipr_buffer_allocate: allocation failed"));
}

TEST_F(BufferMigrate, NullOperationsLeaveTheBuffersInPlace)
{
    const auto allocate = mBuffer->allocate;
    const auto getMemory = mBuffer->get_memory;
    const qv_cipr_memory_device_t device = {nullptr, deviceMigrate, nullptr, nullptr, &mCalls};
    EXPECT_EQ(qv_cipr_memory_device_migrate_buffer(&device, mBuffer), 0);
    EXPECT_EQ(mBuffer->allocate, allocate);
    EXPECT_EQ(mBuffer->get_memory, getMemory);
    EXPECT_EQ(mBuffer->destroy, nullptr);
    // With a device identifier the common allocate operation accepts device flags.
    EXPECT_EQ(qv_cipr_buffer_allocate(mBuffer), 0);
}

TEST_F(BufferMigrate, WithoutMigrateOperationFailsButInstalls)
{
    qv_cipr_memory_device_t device = mDevice;
    device.migrate = nullptr;
    EXPECT_EQ(qv_cipr_memory_device_migrate_buffer(&device, mBuffer), -32);
    EXPECT_EQ(mBuffer->allocate, deviceAllocate);
    EXPECT_EQ(mBuffer->device_context, &mCalls);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(BufferMigrate, EarlierMigrateOperationIsUsedAgainAndTheContextIsAlwaysCopied)
{
    ASSERT_EQ(qv_cipr_memory_device_migrate_buffer(&mDevice, mBuffer), 0);
    DeviceCalls others;
    const qv_cipr_memory_device_t device = {nullptr, nullptr, nullptr, nullptr, &others};
    EXPECT_EQ(qv_cipr_memory_device_migrate_buffer(&device, mBuffer), 0);
    EXPECT_EQ(others.migrated, 1);
    EXPECT_EQ(mCalls.migrated, 1);
    mBuffer->device_context = &mCalls;
}

TEST_F(BufferMigrate, NullArgumentsAreRefused)
{
    EXPECT_EQ(qv_cipr_memory_device_migrate_buffer(nullptr, mBuffer), -32);
    EXPECT_EQ(qv_cipr_memory_device_migrate_buffer(&mDevice, nullptr), -32);
    EXPECT_EQ(mCalls.migrated, 0);
    EXPECT_TRUE(mLog.isEmpty());
}

TEST_F(BufferMigrate, RegionsAreRefused)
{
    qv_cipr_buffer_t* region = qv_cipr_buffer_create_region(mBuffer, 0, 8);
    EXPECT_EQ(qv_cipr_memory_device_migrate_buffer(&mDevice, region), -32);
    EXPECT_TRUE(onlyError("qv_cipr_memory_device_migrate_buffer: buffer regions cannot be independently migrated"));
    EXPECT_EQ(region->migrate, nullptr);
    EXPECT_EQ(mCalls.migrated, 0);
    qv_cipr_buffer_destroy(region);
}

TEST_F(BufferMigrate, RegionsTakeTheirMemoryFromTheDevice)
{
    ASSERT_EQ(qv_cipr_memory_device_migrate_buffer(&mDevice, mBuffer), 0);
    qv_cipr_buffer_t* region = qv_cipr_buffer_create_region(mBuffer, 4, 8);
    qv_cipr_memory_t part{};
    EXPECT_EQ(qv_cipr_buffer_get_memory(region, &part), 0);
    EXPECT_EQ(part.handle, 0x99u);
    EXPECT_EQ(part.size, 8u);
    EXPECT_EQ(part.anchor, region);
    qv_cipr_buffer_destroy(region);
    EXPECT_EQ(mCalls.destroyed, 0);
}

} // namespace
