// SPDX-License-Identifier: Apache-2.0
// Internal to the parser: integers of attributes.
#ifndef NUXO_PARSER_DECIMAL_H
#define NUXO_PARSER_DECIMAL_H

#include <cstdint>
#include <limits>

namespace NUXO {

/// The value of a run of decimal digits, or @p limit when it is larger.
inline uint64_t saturatingDigits(const char* text, uint64_t limit)
{
    uint64_t value = 0;
    for (; *text >= '0' && *text <= '9'; ++text) {
        const auto digit = static_cast<uint64_t>(*text - '0');
        value = value <= (limit - digit) / 10 ? value * 10 + digit : limit;
    }
    return value;
}

/// What `strtol(text, nullptr, 10)` gives, cut to 32 bits: leading white space and a sign are allowed, what follows the
/// digits is ignored, no digits give 0, and values beyond 64 bits saturate before they are cut.
inline int32_t parseDecimal(const char* text)
{
    while (*text == ' ' || (*text >= '\t' && *text <= '\r')) ++text;
    const bool negative = *text == '-';
    if (*text == '-' || *text == '+') ++text;
    const char* const digits = text;
    uint64_t value = 0;
    for (uint32_t digit = 0; (digit = static_cast<unsigned char>(*text) - static_cast<uint32_t>('0')) <= 9; ++text)
        value = value * 10 + digit;
    constexpr int kSafeDigits = 18; // as many always stay below the limit
    if (text - digits > kSafeDigits) {
        constexpr auto kMost = static_cast<uint64_t>(std::numeric_limits<int64_t>::max());
        value = saturatingDigits(digits, negative ? kMost + 1 : kMost);
    }
    return static_cast<int32_t>(static_cast<uint32_t>(negative ? 0 - value : value));
}

} // namespace NUXO

#endif
