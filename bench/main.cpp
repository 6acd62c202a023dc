// SPDX-License-Identifier: Apache-2.0
// nuxo-bench [options of Google Benchmark]: every benchmark and, at the end, what was measured beside what is required.
// All figures are ratios of samples taken next to each other in this run: absolute times mean nothing on a shared machine.
// The exit code is 1 when a requirement is missed.
#include "Benchmarks.h"

#include <qv_cipr/qv_log_common.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

namespace {

bool measureAll()
{
    bench::Context context;
    bench::addParseBenchmarks(context);
    bench::addTreeBenchmarks(context);
    bench::addQueryBenchmarks(context);
    bench::addConstructionBenchmarks(context);
    bench::addFormatBenchmarks(context);
    bench::addPortBenchmarks(context);
    bench::addKernelBenchmarks(context);
    bench::addToolBenchmarks(context);
    bench::addGrowthBenchmark(context);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return context.bars.print();
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    g_qv_log_common_level = 0;
    try {
        return measureAll() ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "nuxo-bench: %s\n", problem.what());
        return EXIT_FAILURE;
    }
}
