// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_BENCH_KERNEL_GRAPHS_H
#define NUXO_BENCH_KERNEL_GRAPHS_H

#include "Trees.h"

#include <cstddef>

namespace bench {

/// What a generated graph is made of. Kernels of different groups share their names, as those of groups with one base node do;
/// every fifth is one that may change the size.
struct KernelGraphShape {
    int generation = 6;
    size_t streams = 1;
    size_t groups = 1;    ///< of each stream, one behind the other
    size_t kernels = 10;  ///< of each group, one behind the other
    bool isChain = false; ///< each stream is fed by the one before it, otherwise all others by the first

    size_t allKernels() const { return streams * groups * kernels; }
};

/// A graph as it comes out of a setting: a sensor with its capture back end in stream 0, then the streams, each with a sink.
Tree kernelGraph(const KernelGraphShape& shape);

} // namespace bench

#endif
