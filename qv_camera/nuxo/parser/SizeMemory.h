// SPDX-License-Identifier: Apache-2.0
// Internal to the parser: how many items elements tend to hold.
#ifndef NUXO_PARSER_SIZE_MEMORY_H
#define NUXO_PARSER_SIZE_MEMORY_H

#include <array>
#include <cstdint>

namespace NUXO {

/// Elements of one name tend to hold equally many items, so the latest one's number is the guess for the next. A wrong
/// guess wastes at most what that element really held.
class SizeMemory {
public:
    uint32_t expected(uint32_t key) const
    {
        const Entry& entry = mEntries[key % kEntries];
        return entry.key == key ? entry.items : 0U;
    }
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
