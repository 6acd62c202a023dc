// SPDX-License-Identifier: Apache-2.0
// Internal to the parser: a hash beside the vocabulary.
#ifndef NUXO_PARSER_NAME_CACHE_H
#define NUXO_PARSER_NAME_CACHE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace NUXO {

/// Stores @p name in lower case in @p lowered. May throw std::bad_alloc.
void lowerInto(std::string& lowered, const char* name);

/// Finds keys of names faster than the ordered vocabulary does. It remembers what it looked up, so it must not live longer
/// than one parse: clients may edit the vocabulary between parses.
class NameCache {
public:
    /// The key of @p name as it stands, 0 when the vocabulary lacks it. May throw std::bad_alloc.
    uint32_t find(std::string_view name);

    /// The key of @p name in lower case, 0 when the vocabulary lacks it. May throw std::bad_alloc.
    uint32_t findLowered(const char* name);

    /// The key of @p name; a new one when the vocabulary lacks it.
    uint32_t findOrRegister(std::string_view name);

    /// Forgets everything.
    void clear();

private:
    struct Slot {
        const char* name = nullptr; // a name of the vocabulary, null for a free slot
        uint32_t length = 0;
        uint32_t key = 0;
    };

    const Slot* findHashed(std::string_view name, uint32_t hash);
    Slot& remember(const std::string& name, uint32_t key);
    Slot& slotFor(std::string_view name, uint32_t hash);

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
    std::array<Slot, kRecent> mRecent;
    std::vector<Slot> mSlots; // a power of two, at most half full
    size_t mUsed = 0;
    std::string mLowered; // scratch
};

} // namespace NUXO

#endif
