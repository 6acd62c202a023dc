// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_BENCH_MEASURE_H
#define NUXO_BENCH_MEASURE_H

#include <benchmark/benchmark.h>

#include <cstddef>
#include <functional>
#include <vector>

namespace bench {

/// Gives all free memory back to the system: what comes next pays for fresh memory, like the first parse of a process.
void freeHeap();

/// Keeps all free memory in the process and joins its pieces: what comes next finds its memory at hand.
void keepHeap();

/// One side of a comparison.
struct Side {
    std::function<void()> run;                 ///< what is timed
    std::function<void()> tidyUp = [] {};      ///< what follows it untimed, for example freeing a tree
    size_t runsPerSample = 1;                  ///< short work is repeated, tidied up after each run
    std::function<void()> setUp = [] {};       ///< what comes once and untimed before all samples
    std::function<void()> prepareHeap = [] {}; ///< what comes untimed before each sample
};

/// What the samples of two sides gave.
struct Comparison {
    double ratio = 0;     ///< median of the ratios, ours to the reference's, of samples taken next to each other
    double ours = 0;      ///< median seconds of one run
    double fastest = 0;   ///< seconds of our fastest run, which others on the machine disturbed least
    double reference = 0; ///< median seconds of one run of the reference
};

/// Processor seconds of one run, tidying up not included. Time that other programs take does not count.
double timeOf(const Side& side);

/// Samples both sides in turn, once for each iteration of @p state, and sets the counters `ratio` and `reference_ms`.
///
/// Each side works in a process of its own, forked from this one: what one leaves behind in its heap, or in the vocabulary,
/// does not slow the other down. Throws std::runtime_error when a side fails.
Comparison compare(benchmark::State& state, const Side& ours, const Side& reference);

double median(std::vector<double> values);

/// Bytes that are allocated from the heap now.
size_t heapInUse();

} // namespace bench

#endif
