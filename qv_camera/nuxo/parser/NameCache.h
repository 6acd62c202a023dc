// SPDX-License-Identifier: Apache-2.0
// Internal to the parser: a hash beside the vocabulary.
#ifndef NUXO_PARSER_NAME_CACHE_H
#define NUXO_PARSER_NAME_CACHE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace NUXO {

/// Finds keys of names faster than the ordered vocabulary does. It remembers what it looked up, so it must not live longer
/// than one parse: clients may edit the vocabulary between parses.
class NameCache {
public:
    /// The key of @p name as it stands, 0 when the vocabulary lacks it. May throw std::bad_alloc.
    uint32_t find(std::string_view name);

    /// The key of @p name in lower case; the lower-case text is then in lowered() until the next call.
    uint32_t findLowered(const char* name);
    std::string_view lowered() const { return mLowered; }

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

    uint32_t findHashed(std::string_view name, uint32_t hash);
    void remember(const std::string& name, uint32_t key);
    Slot& slotFor(std::string_view name, uint32_t hash);

    std::vector<Slot> mSlots; // a power of two, at most half full
    size_t mUsed = 0;
    std::string mLowered;
};

} // namespace NUXO

#endif
