// SPDX-License-Identifier: Apache-2.0
// Stands in for the system logger: formats each line as that would, and drops it.
#include "support/Fuzzing.h"

#include <array>
#include <cctype>
#include <cstdarg>
#include <cstdio>

// The library is to find these before those of the C library.
#define NUXO_FUZZ_STAND_IN extern "C" __attribute__((visibility("default")))

namespace {

size_t lines = 0;
fuzzing::LogDigest* listener = nullptr;

__attribute__((format(printf, 1, 0))) void formatAndDrop(const char* format, va_list args)
{
    std::array<char, 1024> line;
    static_cast<void>(std::vsnprintf(line.data(), line.size(), format, args));
    ++lines;
    if (listener != nullptr) listener->add(line.data());
}

} // namespace

namespace fuzzing {

size_t linesLogged()
{
    return lines;
}

LogDigest::LogDigest()
{
    listener = this;
}

LogDigest::~LogDigest()
{
    listener = nullptr;
}

void LogDigest::add(const char* line)
{
    constexpr uint64_t prime = 0x100000001b3;
    uint64_t hash = 0xcbf29ce484222325;
    for (const char* next = line; *next != '\0'; ++next) {
        hash = (hash ^ static_cast<uint8_t>(*next)) * prime;
        if (next[0] != '0' || next[1] != 'x') continue;
        ++next;
        while (std::isxdigit(static_cast<unsigned char>(next[1])) != 0) ++next;
    }
    mInOrder = (mInOrder ^ hash) * prime;
    mInAnyOrder += hash;
}

} // namespace fuzzing

NUXO_FUZZ_STAND_IN __attribute__((format(printf, 2, 0))) void vsyslog(int priority, const char* format, va_list args);
NUXO_FUZZ_STAND_IN __attribute__((format(printf, 3, 0))) void __vsyslog_chk(int priority, int flag, const char* format,
                                                                            va_list args);

NUXO_FUZZ_STAND_IN void vsyslog(int, const char* format, va_list args)
{
    formatAndDrop(format, args);
}

// What fortified builds call.
NUXO_FUZZ_STAND_IN void __vsyslog_chk(int, int, const char* format, va_list args)
{
    formatAndDrop(format, args);
}
