// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_BENCH_WORKER_H
#define NUXO_BENCH_WORKER_H

#include "Measure.h"

#include <sys/types.h>

namespace bench {

/// A process that takes samples of one side when it is asked to. Its first sample is taken at once and dropped.
class Worker {
public:
    /// Throws std::system_error when there can be no more processes.
    explicit Worker(const Side& side);
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// Seconds of one run. Throws std::runtime_error when the side failed.
    double sample();

private:
    int mChannel = -1; // bytes to the process ask for samples, those from it are the samples
    pid_t mProcess = -1;
};

} // namespace bench

#endif
