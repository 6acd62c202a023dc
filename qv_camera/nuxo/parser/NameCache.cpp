// SPDX-License-Identifier: Apache-2.0
#include <nuxo/parser/NameCache.h>
#include <nuxo/tree/NuxoKeys.h>
#include <nuxo/tree/Vocabulary.h>

#include <cctype>
#include <cstring>

namespace NUXO {

namespace {

constexpr size_t kFirstSlots = 256;

// FNV-1a, 32 bits (Fowler, Noll, Vo): the offset basis and prime of the published function.
constexpr uint32_t kHashStart = 2166136261U;
constexpr uint32_t kHashPrime = 16777619U;

uint32_t hashStep(uint32_t hash, char c)
{
    return (hash ^ static_cast<unsigned char>(c)) * kHashPrime;
}

// Spreads names by their length and three of their bytes (multiplicative hashing with the golden ratio, Knuth).
size_t recentIndex(const char* name, size_t length)
{
    const auto byte = [name](size_t at) { return static_cast<uint32_t>(static_cast<unsigned char>(name[at])); };
    const uint32_t ends = byte(0) | byte(length / 2) << 8U | byte(length - 1) << 16U;
    return ((ends ^ static_cast<uint32_t>(length) << 24U) * 2654435769U) >> 23U;
}

} // namespace

void lowerInto(std::string& lowered, const char* name)
{
    lowered = name;
    for (char& c : lowered) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

void NameCache::clear()
{
    mAddressed.fill({});
    mRecent.fill({});
    mSlots.clear();
    mUsed = 0;
}

NameCache::Slot& NameCache::slotFor(std::string_view name, uint32_t hash)
{
    size_t index = hash & (mSlots.size() - 1);
    for (;;) {
        Slot& slot = mSlots[index];
        if (slot.name == nullptr) return slot;
        if (slot.length == name.size() && std::memcmp(slot.name, name.data(), name.size()) == 0) return slot;
        index = (index + 1) & (mSlots.size() - 1);
    }
}

NameCache::Slot& NameCache::remember(const std::string& name, uint32_t key)
{
    if ((mUsed + 1) * 2 > mSlots.size()) {
        std::vector<Slot> old(mSlots.size() * 2);
        old.swap(mSlots);
        for (const Slot& slot : old) {
            if (slot.name == nullptr) continue;
            uint32_t hash = kHashStart;
            for (uint32_t i = 0; i < slot.length; ++i) hash = hashStep(hash, slot.name[i]);
            slotFor({slot.name, slot.length}, hash) = slot;
        }
    }
    uint32_t hash = kHashStart;
    for (const char c : name) hash = hashStep(hash, c);
    Slot& slot = slotFor(name, hash);
    slot = {name.c_str(), static_cast<uint32_t>(name.size()), key};
    ++mUsed;
    return slot;
}

// The slot of a name of the vocabulary, null when the vocabulary lacks it.
const NameCache::Slot* NameCache::findHashed(std::string_view name, uint32_t hash)
{
    if (mSlots.empty()) mSlots.resize(kFirstSlots);
    const Slot& slot = slotFor(name, hash);
    if (slot.name != nullptr) return &slot;
    const auto entry = nuxo_key_map.find(std::string(name));
    return entry == nuxo_key_map.end() ? nullptr : &remember(entry->first, entry->second);
}

uint32_t NameCache::find(std::string_view name)
{
    uint32_t hash = kHashStart;
    for (const char c : name) hash = hashStep(hash, c);
    const Slot* const slot = findHashed(name, hash);
    return slot == nullptr ? static_cast<uint32_t>(NUXO_KEY_NA) : slot->key;
}

uint32_t NameCache::findLowered(const char* name)
{
    Addressed& addressed = mAddressed[(reinterpret_cast<uintptr_t>(name) >> 3U) % kAddressed];
    if (addressed.address == name && std::strcmp(addressed.name, name) == 0) return addressed.key;

    const size_t length = std::strlen(name);
    if (length == 0) return NUXO_KEY_NA;
    Slot& recent = mRecent[recentIndex(name, length)];
    if (recent.length == length && std::memcmp(recent.name, name, length) == 0) {
        addressed = {name, recent.name, recent.key};
        return recent.key;
    }

    lowerInto(mLowered, name);
    uint32_t hash = kHashStart;
    for (const char c : mLowered) hash = hashStep(hash, c);
    const Slot* const slot = findHashed(mLowered, hash);
    if (slot == nullptr) return NUXO_KEY_NA;
    recent = *slot;
    return slot->key;
}

uint32_t NameCache::findOrRegister(std::string_view name)
{
    const uint32_t known = find(name);
    return known != NUXO_KEY_NA ? known : registerName(std::string(name));
}

} // namespace NUXO
