// SPDX-License-Identifier: Apache-2.0
#include <support/AllocationFailures.h>
#include <support/LogCapture.h>

#include <qv_cipr/qv_cipr_alloc.h>
#include <qv_cipr/qv_log_common.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <new>

namespace {

/// Keeps the optimiser from leaving out an allocation that nobody looks at.
void* volatile seen = nullptr;

template <class Pointer> void look(const Pointer& pointer)
{
    seen = pointer.get();
}

bool canAllocate()
{
    void* block = operator new(16, std::nothrow);
    seen = block;
    operator delete(block);
    return block != nullptr;
}

struct alignas(64) Wide {
    char bytes[64];
};

TEST(AllocationFailures, FailsTheNthOnce)
{
    AllocationFailures failures;
    failures.failOnce(2);
    const bool first = canAllocate();
    const bool second = canAllocate();
    const bool third = canAllocate();
    failures.stop();
    EXPECT_TRUE(first);
    EXPECT_FALSE(second);
    EXPECT_TRUE(third);
    EXPECT_EQ(failures.failures(), 1u);
}

TEST(AllocationFailures, FailsFromTheNthOnUntilStopped)
{
    AllocationFailures failures;
    failures.failFrom(2);
    const bool first = canAllocate();
    const bool second = canAllocate();
    const bool third = canAllocate();
    failures.stop();
    EXPECT_TRUE(first);
    EXPECT_FALSE(second);
    EXPECT_FALSE(third);
    EXPECT_TRUE(canAllocate());
}

TEST(AllocationFailures, SwitchesOffWhenItGoesAway)
{
    {
        AllocationFailures failures;
        failures.failFrom(1);
        failures.failCountedFrom(1);
    }
    EXPECT_TRUE(canAllocate());
    EXPECT_EQ(g_alloc_error, UINT32_MAX);
}

TEST(AllocationFailures, ThrowsFromEveryThrowingForm)
{
    AllocationFailures failures;
    int thrown = 0;
    const auto attempt = [&](auto allocate) {
        failures.failOnce(1);
        try {
            allocate();
        } catch (const std::bad_alloc&) {
            ++thrown;
        }
        failures.stop();
    };
    attempt([] { look(std::make_unique<int>(1)); });
    attempt([] { look(std::make_unique<int[]>(4)); });
    attempt([] { look(std::make_unique<Wide>()); });
    attempt([] { look(std::make_unique<Wide[]>(2)); });
    EXPECT_EQ(thrown, 4);
}

TEST(AllocationFailures, ReturnsNullFromEveryNothrowForm)
{
    AllocationFailures failures;
    failures.failFrom(1);
    const bool none = operator new(8, std::nothrow) == nullptr&& operator new[](8, std::nothrow) ==
                      nullptr&& operator new (64, std::align_val_t{64}, std::nothrow) ==
                      nullptr&& operator new[](64, std::align_val_t{64}, std::nothrow) == nullptr;
    failures.stop();
    EXPECT_TRUE(none);
    EXPECT_EQ(failures.failures(), 4u);
}

TEST(AllocationFailures, CountsLiveBlocks)
{
    const size_t before = AllocationFailures::live();
    auto one = std::make_unique<int>(1);
    auto wide = std::make_unique<Wide>();
    look(one);
    look(wide);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(wide.get()) % 64, 0u);
    EXPECT_EQ(AllocationFailures::live(), before + 2);
    one.reset();
    wide.reset();
    EXPECT_EQ(AllocationFailures::live(), before);
}

TEST(AllocationFailures, DrivesTheCountedAllocator)
{
    AllocationFailures failures;
    failures.failCountedFrom(2);
    void* first = qv_cipr_malloc(8, "test", "test", 1);
    void* second = qv_cipr_malloc(8, "test", "test", 1);
    void* third = qv_cipr_malloc(8, "test", "test", 1);
    failures.stop();
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(third, nullptr);
    qv_cipr_free(first, "test");
}

TEST(AllocationFailures, SweepsUntilNothingFails)
{
    AllocationFailures failures;
    size_t runs = 0;
    const auto threeAllocations = [&] {
        ++runs;
        try {
            const auto a = std::make_unique<int>(1);
            const auto b = std::make_unique<int>(2);
            const auto c = std::make_unique<int>(3);
            look(a);
            look(b);
            look(c);
        } catch (const std::bad_alloc&) {
        }
    };
    const size_t live = AllocationFailures::live();
    const auto nothingLeaked = [&] { EXPECT_EQ(AllocationFailures::live(), live); };
    EXPECT_EQ(failures.sweep(false, threeAllocations, nothingLeaked), 3u);
    EXPECT_EQ(runs, 4u);
    EXPECT_EQ(failures.sweep(true, threeAllocations, nothingLeaked), 3u);
}

TEST(AllocationFailures, LeavesTheLogCaptureAlone)
{
    const LogCapture log;
    AllocationFailures failures;
    failures.failFrom(1);
    qv_log_common_debug(QV_LOG_ERROR, "TAG[XOS]", "while memory is exhausted");
    failures.stop();
    EXPECT_EQ(failures.failures(), 0u);
    EXPECT_TRUE(log.hasOnly(LogCapture::Error, "TAG[XOS]", "while memory is exhausted"));
}

} // namespace
