// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_BENCH_BENCHMARKS_H
#define NUXO_BENCH_BENCHMARKS_H

#include "Bars.h"
#include "Measure.h"
#include "TemporaryFiles.h"

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace bench {

/// What every benchmark may use and where its figures go.
struct Context {
    TemporaryFiles files;
    Bars bars;
};

/// Registers a benchmark of @p samples samples. An exception from it fails the run.
template <typename Body> void add(Context& context, const std::string& name, int samples, Body body)
{
    const auto guarded = [&context, name, body](benchmark::State& state) {
        try {
            body(state);
        } catch (const std::exception& problem) {
            context.bars.addFailure(name, problem.what());
            state.SkipWithError(problem.what());
        }
    };
    benchmark::RegisterBenchmark(name.c_str(), guarded)
        ->Iterations(samples)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

void addParseBenchmarks(Context& context);
void addTreeBenchmarks(Context& context);
void addQueryBenchmarks(Context& context);
void addConstructionBenchmarks(Context& context);
void addFormatBenchmarks(Context& context);
void addPortBenchmarks(Context& context);
void addKernelBenchmarks(Context& context);
/// What the tool takes on large files.
void addToolBenchmarks(Context& context);
void addGrowthBenchmark(Context& context);

} // namespace bench

#endif
