// SPDX-License-Identifier: Apache-2.0
#include <nuxo/nuxo.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <malloc.h>
#include <memory>
#include <new>
#include <string>

// How much the library asks for, and whether it gives back what it asked for: a sized delete must name the size of the
// block, since an allocator may go by it.

namespace {

size_t gAllocated = 0;
size_t gWrongSizes = 0;

// Blocks are larger than asked for by less than this, up to where the allocator hands out whole pages.
constexpr size_t kRounding = 64;
constexpr size_t kPages = 65536;

bool isWrongSize(void* memory, size_t size)
{
    const size_t usable = malloc_usable_size(memory);
    return usable < kPages && size + kRounding < usable;
}

} // namespace

void* operator new(size_t size)
{
    gAllocated += size;
    void* const memory = std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void* operator new(size_t size, const std::nothrow_t&) noexcept
{
    gAllocated += size;
    return std::malloc(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, size_t size) noexcept
{
    if (memory != nullptr && isWrongSize(memory, size)) ++gWrongSizes;
    std::free(memory);
}

namespace {

std::unique_ptr<NUXO::IGraphConfig> parse(std::string text)
{
    NUXO::IGraphConfig* root = nullptr;
    NUXO::NUXOParser().parseNUXOXmlData(text.data(), text.size(), &root);
    return std::unique_ptr<NUXO::IGraphConfig>(root);
}

std::string repeated(const std::string& text, size_t times)
{
    std::string all;
    for (size_t i = 0; i < times; ++i) all += text;
    return all;
}

} // namespace

TEST(ElementMemory, NodesAreNotFreedByTheirOwnSize)
{
    // The node and its eight attributes share one block of 56 + 8 * 16 + 8 * 16 bytes.
    const std::string port = "<port width='1' height='2' left='3' top='4' right='5' bottom='6' bpp='7' bpl='8'/>";
    auto root = parse("<graph_settings version='1'><settings>" + repeated(port, 10) + "</settings></graph_settings>");
    ASSERT_NE(root, nullptr);
    root.reset();
    EXPECT_EQ(gWrongSizes, 0U);
}

TEST(ElementMemory, NestedElementsOfOneNameDoNotAllGetTheRoomOfALargeOne)
{
    // A hundred thousand children once make room for as many in the next element of that name, 16 bytes each; a thousand
    // elements nested in each other would take 1.6 GB if each got it.
    const std::string large = "<hw>" + repeated("<sink/>", 100000) + "</hw>";
    const std::string nested = repeated("<hw>", 1000) + repeated("</hw>", 1000);
    gAllocated = 0;
    const auto root = parse("<graph_settings version='1'>" + large + nested + "</graph_settings>");
    ASSERT_NE(root, nullptr);
    EXPECT_LT(gAllocated, 64U << 20U);
}
