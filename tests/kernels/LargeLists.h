// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_KERNELS_LARGE_LISTS_H
#define NUXO_TESTS_KERNELS_LARGE_LISTS_H

#include "kernels/KernelsFixture.h"

#include <string>

namespace graphtest {

/// A chain of @p count streams with a sink each, from stream @p first on in steps of @p step. Each has one kernel
/// that names the port that it feeds; that of the first stream halves the frame.
inline std::string streamChain(int count, int first, int step)
{
    const auto name = [](int i) { return "s" + std::to_string(i); };
    const std::string half = sizes(size(640, 480), size(320, 240));
    std::string all = bufferSource("s0:in");
    for (int i = 0; i < count; ++i) {
        const int stream = first + i * step;
        all += group(name(i), "stream_id='" + std::to_string(stream) + "'",
                     input("in", i == 0 ? "buffer_src0:port_0" : name(i - 1) + ":out") +
                         output("out", name(i + 1) + ":in", "id='1'") +
                         kernel("k", i, 0, "sink_port='1'", i == 0 ? half : ""));
        all += streamSink("video" + std::to_string(stream), stream, name(i) + ":out");
    }
    return all;
}

} // namespace graphtest

#endif
