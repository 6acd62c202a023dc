// SPDX-License-Identifier: Apache-2.0
// Internal: constant tables whose rows are found by four-character code.
#ifndef NUXO_FORMATS_FOURCC_H
#define NUXO_FORMATS_FOURCC_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace NUXOFormats {

/// The code that four characters spell, the first in the most significant byte.
constexpr uint32_t fourccOf(std::string_view text)
{
    uint32_t code = 0;
    for (size_t i = 0; i < 4; ++i) {
        const auto character = i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
        code = code << 8U | character;
    }
    return code;
}

/// A row of a table: what holds for several codes.
template <typename Value> struct CodeRow {
    std::string_view codes; ///< parted by blanks
    Value value;
};

/// Finds the row that lists a code, in constant time.
template <typename Value, size_t Rows> class CodeTable {
public:
    constexpr explicit CodeTable(const CodeRow<Value> (&rows)[Rows])
    {
        for (size_t row = 0; row < Rows; ++row) {
            mValues[row] = rows[row].value;
            for (std::string_view rest = rows[row].codes; !rest.empty();) {
                insert(fourccOf(rest.substr(0, kLength)), static_cast<uint8_t>(row));
                rest.remove_prefix(rest.size() > kLength ? kLength + 1 : rest.size());
            }
        }
    }

    /// Null when no row lists @p code.
    constexpr const Value* find(uint32_t code) const
    {
        for (size_t place = placeOf(code); mCodes[place] != kFree; place = next(place)) {
            if (mCodes[place] == code) return &mValues[mRows[place]];
        }
        return nullptr;
    }

private:
    static constexpr size_t kLength = 4;
    static constexpr size_t kPlaces = 256; // more than twice the codes of the largest table
    static constexpr uint32_t kFree = 0;

    static constexpr size_t placeOf(uint32_t code) { return (code * 0x9E3779B1U) >> 24U; } // 2^32 / golden ratio
    static constexpr size_t next(size_t place) { return (place + 1) % kPlaces; }

    constexpr void insert(uint32_t code, uint8_t row)
    {
        size_t place = placeOf(code);
        while (mCodes[place] != kFree) place = next(place);
        mCodes[place] = code;
        mRows[place] = row;
    }

    std::array<uint32_t, kPlaces> mCodes = {};
    std::array<uint8_t, kPlaces> mRows = {};
    std::array<Value, Rows> mValues = {};
};

} // namespace NUXOFormats

#endif
