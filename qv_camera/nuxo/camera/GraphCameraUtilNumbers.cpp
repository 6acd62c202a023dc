// SPDX-License-Identifier: Apache-2.0
#include <nuxo/camera/GraphCameraUtil.h>

#include <qv_cipr/qv_cipr_alloc.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string_view>

namespace NUXO {

namespace {

constexpr const char* kTag = "numString2binary";
constexpr std::string_view kDecimalDigits = "0123456789";
constexpr std::string_view kHexDigits = "0123456789abcdefABCDEF";

std::string_view digitsOf(std::string_view text, std::string_view digits)
{
    return text.substr(0, std::min(text.find_first_not_of(digits), text.size()));
}

unsigned char* allocate(size_t length, unsigned int* size)
{
    auto* const bytes = static_cast<unsigned char*>(qv_cipr_calloc(length, 1, kTag, __FILE__, __LINE__));
    if (bytes != nullptr && size != nullptr) *size = static_cast<unsigned int>(length);
    return bytes;
}

uint32_t hexValue(char digit)
{
    if (digit <= '9') return static_cast<uint32_t>(digit - '0');
    return static_cast<uint32_t>((digit | 0x20) - 'a') + 10; // 0x20 is what lower case adds to a letter
}

unsigned char* convertHexadecimal(std::string_view digits, unsigned int* size)
{
    unsigned char* const bytes = allocate(digits.size() / 2 + 1, size);
    if (bytes == nullptr) return nullptr;
    for (size_t i = 0; i < digits.size(); ++i) {
        const uint32_t value = hexValue(digits[digits.size() - 1 - i]);
        bytes[i / 2] = static_cast<unsigned char>(bytes[i / 2] | value << (i % 2 * 4));
    }
    return bytes;
}

// False when the number is larger than, or equal to, the largest of 64 bits, which stands for all larger ones.
bool readDecimal(std::string_view digits, uint64_t& value)
{
    constexpr uint64_t limit = std::numeric_limits<uint64_t>::max();
    value = 0;
    for (const char digit : digits) {
        const auto units = static_cast<uint64_t>(digit - '0');
        if (value > (limit - units) / 10) return false;
        value = value * 10 + units;
    }
    return value != limit;
}

unsigned char* convertDecimal(std::string_view digits, unsigned int* size)
{
    constexpr size_t bytesPerDigit = 27214; // in 1/65536: log(10) / log(256)
    const size_t length = (digits.size() * bytesPerDigit >> 16U) + 1;
    unsigned char* const bytes = allocate(length, size);
    if (bytes == nullptr) return nullptr;
    uint64_t value = 0;
    if (!readDecimal(digits, value)) {
        qv_cipr_free(bytes, kTag);
        return nullptr;
    }
    for (size_t i = 0; i < length && value != 0; ++i, value >>= 8U) bytes[i] = static_cast<unsigned char>(value);
    return bytes;
}

} // namespace

unsigned char* GraphCameraUtil::numString2binary(const std::string& text, unsigned int* size)
{
    std::string_view rest = text;
    if (digitsOf(rest, kDecimalDigits).empty()) return nullptr;
    rest.remove_prefix(std::min(rest.find_first_not_of('0'), rest.size()));
    if (!rest.empty() && (rest.front() == 'x' || rest.front() == 'X')) {
        return convertHexadecimal(digitsOf(rest.substr(1), kHexDigits), size);
    }
    return convertDecimal(digitsOf(rest, kDecimalDigits), size);
}

} // namespace NUXO
