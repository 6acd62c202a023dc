// SPDX-License-Identifier: Apache-2.0
#include "TraceMarkerFake.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstring>

std::atomic<int> TraceMarkerFake::descriptor{-1};
std::atomic<int> TraceMarkerFake::opened{0};
std::atomic<int> TraceMarkerFake::flags{0};
std::atomic<bool> TraceMarkerFake::formattingFails{false};

namespace {

/// O_CREAT: the call has a third argument.
constexpr int kCreates = 0100;

int format(char* text, size_t size, const char* pattern, va_list args)
{
    return TraceMarkerFake::formattingFails ? -1 : __builtin_vsnprintf(text, size, pattern, args);
}

} // namespace

// The headers that declare these functions are not included, since they would define them inline in a fortified build.
extern "C" __attribute__((visibility("default"))) int open(const char* path, int flags, ...)
{
    if (std::strcmp(path, "/sys/kernel/debug/tracing/trace_marker") == 0) {
        ++TraceMarkerFake::opened;
        TraceMarkerFake::flags = flags;
        if (TraceMarkerFake::descriptor < 0) errno = ENOENT;
        return TraceMarkerFake::descriptor;
    }
    unsigned mode = 0;
    if ((flags & kCreates) != 0) {
        va_list args;
        va_start(args, flags);
        mode = va_arg(args, unsigned);
        va_end(args);
    }
    return static_cast<int>(syscall(SYS_open, path, flags, mode));
}

extern "C" __attribute__((visibility("default"), format(printf, 3, 4))) int snprintf(char* text, size_t size,
                                                                                     const char* pattern, ...)
{
    va_list args;
    va_start(args, pattern);
    const int length = format(text, size, pattern, args);
    va_end(args);
    return length;
}

// What a fortified build calls instead.
extern "C" __attribute__((visibility("default"), format(printf, 5, 6))) int
__snprintf_chk(char* text, size_t size, int, size_t, const char* pattern, ...)
{
    va_list args;
    va_start(args, pattern);
    const int length = format(text, size, pattern, args);
    va_end(args);
    return length;
}
