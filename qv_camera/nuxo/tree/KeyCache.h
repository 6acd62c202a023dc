// SPDX-License-Identifier: Apache-2.0
// Internal: a hash beside the vocabulary.
#ifndef NUXO_TREE_KEY_CACHE_H
#define NUXO_TREE_KEY_CACHE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace NUXO {

/// Finds keys of names faster than the ordered vocabulary does. It remembers what it looked up, so it must not live longer
/// than one parse or one call: clients may edit the vocabulary in between.
class KeyCache {
public:
    struct Entry {
        const char* name = nullptr; // a name of the vocabulary, null for a free place
        uint32_t length = 0;
        uint32_t key = 0;
    };

    /// The entry of @p name, null when the vocabulary lacks it; valid until the next call. May throw std::bad_alloc.
    const Entry* find(std::string_view name);

    /// The key of @p name, 0 when the vocabulary lacks it. May throw std::bad_alloc.
    uint32_t keyOf(std::string_view name);

    /// What ItemUID::key2str gives. May throw std::bad_alloc.
    const char* nameOf(uint32_t key);

    /// Forgets everything.
    void clear();

private:
    Entry& placeOf(std::string_view name);
    const Entry* remember(const std::string& name, uint32_t key);

    std::vector<Entry> mEntries; // a power of two, at most half full
    size_t mUsed = 0;

    struct Name {
        uint32_t key;
        const char* name;
    };
    void indexNames();

    std::vector<Name> mNames; // of all keys in key order, the first name of each in front
    size_t mIndexedSize = 0;  // size of the vocabulary when they were collected
    uint32_t mNameLookups = 0;
};

} // namespace NUXO

#endif
