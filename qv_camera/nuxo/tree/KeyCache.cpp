// SPDX-License-Identifier: Apache-2.0
#include <nuxo/tree/KeyCache.h>
#include <nuxo/tree/ItemUID.h>

#include <algorithm>
#include <cstring>

namespace NUXO {

namespace {

constexpr size_t kFirstEntries = 256;
constexpr uint32_t kFewLookups = 16; // of names: as many searches cost less than an index

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
    mNames.clear();
    mIndexedSize = 0;
    mNameLookups = 0;
}

// Names of one key stay in name order.
void KeyCache::indexNames()
{
    mNames.clear();
    mNames.reserve(nuxo_key_map.size());
    for (const auto& entry : nuxo_key_map) mNames.push_back({entry.second, entry.first.c_str()});
    std::stable_sort(mNames.begin(), mNames.end(),
                     [](const Name& left, const Name& right) { return left.key < right.key; });
    mIndexedSize = nuxo_key_map.size();
}

const char* KeyCache::nameOf(uint32_t key)
{
    if (++mNameLookups <= kFewLookups) return ItemUID::key2str(key);
    if (mIndexedSize != nuxo_key_map.size()) indexNames();
    const auto place = std::lower_bound(mNames.begin(), mNames.end(), key,
                                        [](const Name& name, uint32_t wanted) { return name.key < wanted; });
    return place != mNames.end() && place->key == key ? place->name : ItemUID::key2str(key);
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
