// SPDX-License-Identifier: Apache-2.0
// Internal to the parser: keys of element and attribute names.
#ifndef NUXO_PARSER_NAME_CACHE_H
#define NUXO_PARSER_NAME_CACHE_H

#include <nuxo/tree/KeyCache.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace NUXO {

/// Stores @p name in lower case in @p lowered. May throw std::bad_alloc.
void lowerInto(std::string& lowered, const char* name);

/// Finds keys of names in any case. Must not live longer than one parse, see KeyCache. All members may throw
/// std::bad_alloc.
class NameCache {
public:
    /// The key of @p name as it stands, 0 when the vocabulary lacks it.
    uint32_t find(std::string_view name) { return mKeys.keyOf(name); }

    /// The key of @p name in lower case, 0 when the vocabulary lacks it.
    uint32_t findLowered(const char* name);

    /// The key of @p name; a new one when the vocabulary lacks it.
    uint32_t findOrRegister(std::string_view name);

    /// Forgets everything.
    void clear();

private:
    // Names found lately by where the caller had them: expat hands an attribute's name out at one address throughout.
    struct Addressed {
        const char* address = nullptr;
        const char* name = nullptr;
        uint32_t key = 0;
    };
    static constexpr size_t kAddressed = 64;
    std::array<Addressed, kAddressed> mAddressed;

    // Names found lately, by a few of their bytes: most need no lower-casing and no hashing of their whole length.
    static constexpr size_t kRecent = 512; // as many as recentIndex tells apart
    std::array<KeyCache::Entry, kRecent> mRecent;

    KeyCache mKeys;
    std::string mLowered; // scratch
};

} // namespace NUXO

#endif
