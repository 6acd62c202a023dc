// SPDX-License-Identifier: Apache-2.0
#include <nuxo/parser/NameCache.h>
#include <nuxo/tree/NuxoKeys.h>
#include <nuxo/tree/Vocabulary.h>

#include <cctype>
#include <cstring>

namespace NUXO {

namespace {

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
    mKeys.clear();
}

uint32_t NameCache::findLowered(const char* name)
{
    Addressed& addressed = mAddressed[(reinterpret_cast<uintptr_t>(name) >> 3U) % kAddressed];
    if (addressed.address == name && std::strcmp(addressed.name, name) == 0) return addressed.key;

    const size_t length = std::strlen(name);
    if (length == 0) return NUXO_KEY_NA;
    KeyCache::Entry& recent = mRecent[recentIndex(name, length)];
    if (recent.length == length && std::memcmp(recent.name, name, length) == 0) {
        addressed = {name, recent.name, recent.key};
        return recent.key;
    }
    lowerInto(mLowered, name);
    const KeyCache::Entry* const entry = mKeys.find(mLowered);
    if (entry == nullptr) return NUXO_KEY_NA;
    recent = *entry;
    return entry->key;
}

uint32_t NameCache::findOrRegister(std::string_view name)
{
    const uint32_t known = find(name);
    return known != NUXO_KEY_NA ? known : registerName(std::string(name));
}

} // namespace NUXO
