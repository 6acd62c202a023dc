// SPDX-License-Identifier: Apache-2.0
#include <nuxo/tree/KeyCache.h>
#include <nuxo/tree/NuxoKeys.h>

#include <cstring>

namespace NUXO {

namespace {

constexpr size_t kFirstEntries = 256;

// FNV-1a, 32 bits (Fowler, Noll, Vo): the offset basis and prime of the published function.
constexpr uint32_t kHashStart = 2166136261U;
constexpr uint32_t kHashPrime = 16777619U;

uint32_t hashOf(std::string_view name)
{
    uint32_t hash = kHashStart;
    for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * kHashPrime;
    return hash;
}

} // namespace

void KeyCache::clear()
{
    mEntries.clear();
    mUsed = 0;
}

// The entry of the name, or the free place where it belongs.
KeyCache::Entry& KeyCache::placeOf(std::string_view name)
{
    const size_t mask = mEntries.size() - 1;
    for (size_t index = hashOf(name) & mask;; index = (index + 1) & mask) {
        Entry& entry = mEntries[index];
        if (entry.name == nullptr) return entry;
        if (entry.length == name.size() && std::memcmp(entry.name, name.data(), name.size()) == 0) return entry;
    }
}

const KeyCache::Entry* KeyCache::remember(const std::string& name, uint32_t key)
{
    if ((mUsed + 1) * 2 > mEntries.size()) {
        std::vector<Entry> old(mEntries.size() * 2);
        old.swap(mEntries);
        for (const Entry& entry : old) {
            if (entry.name != nullptr) placeOf({entry.name, entry.length}) = entry;
        }
    }
    Entry& entry = placeOf(name);
    entry = {name.c_str(), static_cast<uint32_t>(name.size()), key};
    ++mUsed;
    return &entry;
}

const KeyCache::Entry* KeyCache::find(std::string_view name)
{
    if (mEntries.empty()) mEntries.resize(kFirstEntries);
    const Entry& entry = placeOf(name);
    if (entry.name != nullptr) return &entry;
    const auto known = nuxo_key_map.find(std::string(name));
    return known == nuxo_key_map.end() ? nullptr : remember(known->first, known->second);
}

uint32_t KeyCache::keyOf(std::string_view name)
{
    const Entry* const entry = find(name);
    return entry == nullptr ? static_cast<uint32_t>(NUXO_KEY_NA) : entry->key;
}

} // namespace NUXO
