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

char lower(char c)
{
    if (c >= 'a' && c <= 'z') return c; // nearly all of them
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

} // namespace

void NameCache::clear()
{
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

void NameCache::remember(const std::string& name, uint32_t key)
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
    slotFor(name, hash) = {name.c_str(), static_cast<uint32_t>(name.size()), key};
    ++mUsed;
}

uint32_t NameCache::findHashed(std::string_view name, uint32_t hash)
{
    if (mSlots.empty()) mSlots.resize(kFirstSlots);
    const Slot& slot = slotFor(name, hash);
    if (slot.name != nullptr) return slot.key;
    const auto entry = nuxo_key_map.find(std::string(name));
    if (entry == nuxo_key_map.end()) return NUXO_KEY_NA;
    remember(entry->first, entry->second);
    return entry->second;
}

uint32_t NameCache::find(std::string_view name)
{
    uint32_t hash = kHashStart;
    for (const char c : name) hash = hashStep(hash, c);
    return findHashed(name, hash);
}

uint32_t NameCache::findLowered(const char* name)
{
    const size_t length = std::strlen(name);
    mLowered.resize(length);
    uint32_t hash = kHashStart;
    for (size_t i = 0; i < length; ++i) {
        mLowered[i] = lower(name[i]);
        hash = hashStep(hash, mLowered[i]);
    }
    return findHashed(mLowered, hash);
}

uint32_t NameCache::findOrRegister(std::string_view name)
{
    const uint32_t known = find(name);
    return known != NUXO_KEY_NA ? known : registerName(std::string(name));
}

} // namespace NUXO
