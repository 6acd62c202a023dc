// SPDX-License-Identifier: Apache-2.0
#include "Benchmarks.h"
#include "RequestCycle.h"

namespace bench {

void addGrowthBenchmark(Context& context)
{
    add(context, "growth/100000_cycles", 1, [&context](benchmark::State& state) {
        constexpr size_t kCycles = 100000;
        long long growth = 0;
        const Side cycles = {[&growth] { growth = growthOver(kCycles); }};
        for (auto _ : state) state.SetIterationTime(timeOf(cycles));
        context.bars.add("100,000 cycles of a request, bytes of heap growth", static_cast<double>(growth), atMost(0));
    });
}

} // namespace bench
