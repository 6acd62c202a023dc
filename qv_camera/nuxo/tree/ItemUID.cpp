// SPDX-License-Identifier: Apache-2.0
#include <nuxo/tree/ItemUID.h>
#include <nuxo/tree/PathReader.h>
#include <nuxo/tree/Vocabulary.h>

#include <algorithm>
#include <new>

namespace NUXO {

namespace {

constexpr char kDisplaySeparator = '.';

} // namespace

ItemUID::ItemUID(std::initializer_list<uint32_t> keys) : mUids(keys)
{
}

ItemUID::ItemUID(const std::string& path)
{
    mUids.reserve(static_cast<size_t>(std::count(path.begin(), path.end(), PathReader::kSeparator)) + 1);
    PathReader reader(path);
    for (uint32_t key = NUXO_KEY_NA; reader.next(key);) mUids.push_back(key);
}

ItemUID::ItemUID(const char* path) : ItemUID(std::string(path == nullptr ? "" : path))
{
}

uint32_t ItemUID::str2key(const std::string& str)
{
    const auto entry = nuxo_key_map.find(str);
    return entry == nuxo_key_map.end() ? static_cast<uint32_t>(NUXO_KEY_NA) : entry->second;
}

const char* ItemUID::key2str(uint32_t key)
{
    for (const auto& entry : nuxo_key_map) {
        if (entry.second == key) return entry.first.c_str();
    }
    return nuxo_key_map.empty() ? "na" : nuxo_key_map.begin()->first.c_str();
}

uint32_t ItemUID::generateKey(const std::string& str)
{
    try {
        return registerName(str);
    } catch (const std::bad_alloc&) {
        return NUXO_KEY_NA;
    }
}

bool ItemUID::isInteger(uint32_t key)
{
    return key > NUXO_KEY_NUM_START && key < NUXO_KEY_NUM_END;
}

void ItemUID::addCustomKeyMap(const std::map<std::string, uint32_t>& keys)
{
    if (&keys == &nuxo_key_map) return;
    try {
        nuxo_key_map.insert(keys.begin(), keys.end());
    } catch (const std::bad_alloc&) {
        // The names inserted so far stay: each one is complete in itself.
    }
}

std::string ItemUID::toString() const
{
    std::string text;
    for (const uint32_t& key : mUids) {
        if (&key != mUids.data()) text += kDisplaySeparator;
        text += key2str(key);
    }
    return text;
}

void ItemUID::pop_back()
{
    if (!mUids.empty()) mUids.pop_back();
}

uint32_t registerName(const std::string& name)
{
    const auto key = static_cast<uint32_t>(nuxo_key_map.size());
    nuxo_key_map.emplace(name, key);
    return key;
}

} // namespace NUXO
