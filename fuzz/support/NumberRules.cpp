// SPDX-License-Identifier: Apache-2.0
#include "support/CameraRules.h"
#include "support/Fuzzing.h"

#include <nuxo/camera/GraphCameraUtil.h>
#include <qv_cipr/qv_cipr_alloc.h>

#include <cerrno>
#include <cstdlib>
#include <optional>

namespace fuzzing {

namespace {

using Bytes = std::vector<unsigned char>;

constexpr unsigned int kUntouched = 4711;

std::string leading(const std::string& text, const char* digits)
{
    return text.substr(0, text.find_first_not_of(digits));
}

// From pairs of digits, the last pair first.
Bytes fromHexadecimal(std::string digits)
{
    Bytes bytes;
    const size_t length = digits.size() / 2 + 1;
    while (digits.size() > 2) {
        bytes.push_back(static_cast<unsigned char>(std::stoul(digits.substr(digits.size() - 2), nullptr, 16)));
        digits.resize(digits.size() - 2);
    }
    if (!digits.empty()) bytes.push_back(static_cast<unsigned char>(std::stoul(digits, nullptr, 16)));
    bytes.resize(length);
    return bytes;
}

// What a 64-bit conversion of the digits gives; nothing when it does not fit.
std::optional<Bytes> fromDecimal(const std::string& digits)
{
    errno = 0;
    unsigned long long value = std::strtoull(digits.c_str(), nullptr, 10);
    if (errno == ERANGE || value + 1 == 0) return std::nullopt;
    Bytes bytes(digits.size() * 27214 / 65536 + 1);
    for (unsigned char& byte : bytes) {
        byte = static_cast<unsigned char>(value % 256);
        value /= 256;
    }
    require(value == 0, "a number has room");
    return bytes;
}

struct Expected {
    std::optional<Bytes> bytes;
    unsigned int size = kUntouched;
};

Expected expectBytes(const std::string& text)
{
    if (leading(text, "0123456789").empty()) return {};
    const std::string rest = text.substr(leading(text, "0").size());
    const bool isHexadecimal = !rest.empty() && (rest[0] == 'x' || rest[0] == 'X');
    const std::string digits =
        isHexadecimal ? leading(rest.substr(1), "0123456789abcdefABCDEF") : leading(rest, "0123456789");
    const bool hasMemory = g_alloc_error != g_alloc_counter;
    if (!hasMemory) return {};
    if (isHexadecimal) return {fromHexadecimal(digits), static_cast<unsigned int>(digits.size() / 2 + 1)};
    return {fromDecimal(digits), static_cast<unsigned int>(digits.size() * 27214 / 65536 + 1)};
}

} // namespace

void checkNumber(const std::string& text)
{
    const Expected expected = expectBytes(text);
    const uint32_t liveBefore = g_alloc_counter - g_free_counter;
    unsigned int size = kUntouched;
    unsigned char* const bytes = NUXO::GraphCameraUtil::numString2binary(text, &size);
    require((bytes != nullptr) == expected.bytes.has_value(), "a text that starts with a digit is a number");
    require(size == expected.size, "the size is that of the digits");
    if (bytes != nullptr) {
        require(Bytes(bytes, bytes + size) == *expected.bytes, "the bytes are those of the number");
        qv_cipr_free(bytes, "checkNumber");
    }
    require(g_alloc_counter - g_free_counter == liveBefore, "the bytes are all there is to release");
    qv_cipr_free(NUXO::GraphCameraUtil::numString2binary(text, nullptr), "checkNumber");
}

} // namespace fuzzing
