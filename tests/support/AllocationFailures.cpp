// SPDX-License-Identifier: Apache-2.0
#include <support/AllocationFailures.h>

#include <qv_cipr/qv_cipr_alloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<size_t> allAttempts{0};
std::atomic<size_t> liveBlocks{0};
/// Number of the attempt that fails; 0 for none.
std::atomic<size_t> failAt{0};
std::atomic<bool> failForGood{false};
std::atomic<size_t> failed{0};

bool mustFail()
{
    const size_t attempt = ++allAttempts;
    const size_t first = failAt;
    const bool fails = first != 0 && (attempt == first || (attempt > first && failForGood));
    if (fails) ++failed;
    return fails;
}

void* counted(void* block)
{
    if (block != nullptr) ++liveBlocks;
    return block;
}

void* allocate(size_t size)
{
    return mustFail() ? nullptr : counted(std::malloc(std::max<size_t>(size, 1)));
}

void* allocateAligned(size_t size, std::align_val_t alignment)
{
    if (mustFail()) return nullptr;
    void* block = nullptr;
    const size_t bytes = std::max(static_cast<size_t>(alignment), sizeof(void*));
    return posix_memalign(&block, bytes, std::max<size_t>(size, 1)) == 0 ? counted(block) : nullptr;
}

void* orThrow(void* block)
{
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void release(void* block)
{
    if (block == nullptr) return;
    --liveBlocks;
    std::free(block);
}

void arm(size_t n, bool forGood)
{
    failAt = 0;
    failed = 0;
    failForGood = forGood;
    failAt = allAttempts + n;
}

} // namespace

// clang-format off
void* operator new(size_t size) { return orThrow(allocate(size)); }
void* operator new[](size_t size) { return orThrow(allocate(size)); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new(size_t size, std::align_val_t alignment) { return orThrow(allocateAligned(size, alignment)); }
void* operator new[](size_t size, std::align_val_t alignment) { return orThrow(allocateAligned(size, alignment)); }
void* operator new(size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept { return allocateAligned(size, alignment); }
void* operator new[](size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept { return allocateAligned(size, alignment); }

void operator delete(void* block) noexcept { release(block); }
void operator delete[](void* block) noexcept { release(block); }
void operator delete(void* block, size_t) noexcept { release(block); }
void operator delete[](void* block, size_t) noexcept { release(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { release(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { release(block); }
void operator delete(void* block, std::align_val_t) noexcept { release(block); }
void operator delete[](void* block, std::align_val_t) noexcept { release(block); }
void operator delete(void* block, size_t, std::align_val_t) noexcept { release(block); }
void operator delete[](void* block, size_t, std::align_val_t) noexcept { release(block); }
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept { release(block); }
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept { release(block); }
// clang-format on

AllocationFailures::AllocationFailures() : mCountedBefore(g_alloc_error)
{
}

AllocationFailures::~AllocationFailures()
{
    stop();
}

void AllocationFailures::failOnce(size_t n)
{
    arm(n, false);
}

void AllocationFailures::failFrom(size_t n)
{
    arm(n, true);
}

void AllocationFailures::failCountedFrom(uint32_t n)
{
    g_alloc_error = g_alloc_counter + n - 1;
}

void AllocationFailures::stop()
{
    failAt = 0;
    failForGood = false;
    g_alloc_error = mCountedBefore;
}

size_t AllocationFailures::failures() const
{
    return failed;
}

size_t AllocationFailures::live()
{
    return liveBlocks;
}

size_t AllocationFailures::attempts()
{
    return allAttempts;
}
