// SPDX-License-Identifier: Apache-2.0
#include "Worker.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <system_error>

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

namespace {

void serve(int channel, const Side& side)
{
    side.setUp();
    side.prepareHeap();
    static_cast<void>(timeOf(side)); // warms caches and heap
    char request = 0;
    while (read(channel, &request, 1) == 1) {
        side.prepareHeap();
        const double seconds = timeOf(side);
        if (write(channel, &seconds, sizeof(seconds)) != static_cast<ssize_t>(sizeof(seconds))) return;
    }
}

// Leaves without the exit handlers, which are the parent's.
[[noreturn]] void runWorker(int channel, const Side& side)
{
    try {
        serve(channel, side);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "%s\n", problem.what());
        std::_Exit(EXIT_FAILURE);
    }
    std::_Exit(EXIT_SUCCESS);
}

} // namespace

Worker::Worker(const Side& side)
{
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        throw std::system_error(errno, std::generic_category(), "socketpair");
    mProcess = fork();
    if (mProcess == 0) {
        close(ends[0]);
        runWorker(ends[1], side);
    }
    const int problem = errno;
    close(ends[1]);
    mChannel = ends[0];
    if (mProcess < 0) {
        close(mChannel);
        throw std::system_error(problem, std::generic_category(), "fork");
    }
}

Worker::~Worker()
{
    // A worker that another one was forked after also holds its channel: ask it to end instead of waiting for it to notice.
    static_cast<void>(shutdown(mChannel, SHUT_RDWR));
    close(mChannel);
    static_cast<void>(waitpid(mProcess, nullptr, 0));
}

double Worker::sample()
{
    constexpr char kRequest = 'r';
    double seconds = 0;
    const bool asked = send(mChannel, &kRequest, 1, MSG_NOSIGNAL) == 1;
    const bool answered =
        asked && recv(mChannel, &seconds, sizeof(seconds), MSG_WAITALL) == static_cast<ssize_t>(sizeof(seconds));
    if (!answered) throw std::runtime_error("one side of the comparison failed");
    return seconds;
}

} // namespace bench
