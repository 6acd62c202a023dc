// SPDX-License-Identifier: Apache-2.0
#include <nuxo/tree/ElementBuilder.h>

#include <cstdint>
#include <limits>
#include <new>
#include <type_traits>

namespace NUXO {

namespace {

constexpr uintptr_t kNewAlignment = 16;
constexpr uintptr_t kAttributeOffset = 8;

static_assert(__STDCPP_DEFAULT_NEW_ALIGNMENT__ >= kNewAlignment, "attributes are told apart by their alignment");
static_assert(sizeof(GraphConfigNode) % kNewAlignment == kAttributeOffset, "attributes follow the node directly");
static_assert(sizeof(GraphConfigIntAttribute) % kNewAlignment == 0, "attributes keep their offset");
static_assert(sizeof(GraphConfigStrAttribute) % kNewAlignment == 0, "attributes keep their offset");
static_assert(std::is_trivially_copyable<ItemEntry>::value, "entries are moved as bytes");

} // namespace

void releaseAttributeMemory(void* memory)
{
    if (reinterpret_cast<uintptr_t>(memory) % kNewAlignment == kAttributeOffset) return;
    ::operator delete(memory);
}

ElementBuilder::ElementBuilder(size_t integers, size_t texts, size_t entries) : mFree(nullptr)
{
    if (entries > std::numeric_limits<uint32_t>::max() / 2) throw std::bad_alloc();
    const size_t attributes = integers * sizeof(GraphConfigIntAttribute) + texts * sizeof(GraphConfigStrAttribute);
    const size_t size = sizeof(GraphConfigNode) + attributes + entries * sizeof(ItemEntry);
    char* const block = static_cast<char*>(::operator new(size));
    mFree = block + sizeof(GraphConfigNode);
    auto* const entryPlace = reinterpret_cast<ItemEntry*>(mFree + attributes);
    mNode.reset(TreeAccess::construct(block, entryPlace, static_cast<uint32_t>(entries)));
}

} // namespace NUXO
