// SPDX-License-Identifier: Apache-2.0
// Internal to the parser: how many items elements tend to hold.
#ifndef NUXO_PARSER_SIZE_MEMORY_H
#define NUXO_PARSER_SIZE_MEMORY_H

#include <array>
#include <cstdint>
#include <utility>

namespace NUXO {

/// Elements of one name tend to hold equally many items, so the latest one's number is the guess for the next. A wrong
/// guess wastes at most what that element really held.
class SizeMemory {
public:
    /// The guess for an element that opens. It is given once: elements nested in each other must not all get it.
    uint32_t takeExpected(uint32_t key)
    {
        Entry& entry = mEntries[key % kEntries];
        return entry.key == key ? std::exchange(entry.items, 0U) : 0U;
    }
    /// What an element that closes holds.
    void remember(uint32_t key, uint32_t items) { mEntries[key % kEntries] = {key, items}; }

private:
    struct Entry {
        uint32_t key = 0;
        uint32_t items = 0;
    };
    static constexpr uint32_t kEntries = 128;

    std::array<Entry, kEntries> mEntries;
};

} // namespace NUXO

#endif
