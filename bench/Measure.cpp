// SPDX-License-Identifier: Apache-2.0
#include "Measure.h"

#include "Worker.h"

#include <algorithm>
#include <ctime>

#include <malloc.h>

namespace bench {

namespace {

double processorSeconds()
{
    timespec now = {};
    static_cast<void>(clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now)); // cannot fail for this clock
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

} // namespace

void freeHeap()
{
    static_cast<void>(malloc_trim(0)); // whether there was something to give back does not matter
}

void keepHeap()
{
    // Setting an option also makes the allocator join free pieces.
    static_cast<void>(mallopt(M_TRIM_THRESHOLD, 1 << 30));
}

double timeOf(const Side& side)
{
    double total = 0;
    for (size_t i = 0; i < side.runsPerSample; ++i) {
        const double start = processorSeconds();
        side.run();
        total += processorSeconds() - start;
        side.tidyUp();
    }
    return total / static_cast<double>(side.runsPerSample);
}

Comparison compare(benchmark::State& state, const Side& ours, const Side& reference)
{
    std::vector<double> ratios;
    std::vector<double> ourTimes;
    std::vector<double> referenceTimes;
    Worker ourWorker(ours);
    Worker referenceWorker(reference);
    bool oursFirst = true;
    for (auto _ : state) {
        double ourTime = oursFirst ? ourWorker.sample() : 0;
        const double referenceTime = referenceWorker.sample();
        if (!oursFirst) ourTime = ourWorker.sample();
        oursFirst = !oursFirst;
        state.SetIterationTime(ourTime);
        ratios.push_back(ourTime / referenceTime);
        ourTimes.push_back(ourTime);
        referenceTimes.push_back(referenceTime);
    }
    const double fastest = ourTimes.empty() ? 0 : *std::min_element(ourTimes.begin(), ourTimes.end());
    const Comparison result = {median(ratios), median(ourTimes), fastest, median(referenceTimes)};
    state.counters["ratio"] = result.ratio;
    state.counters["reference_ms"] = result.reference * 1e3;
    return result;
}

double median(std::vector<double> values)
{
    if (values.empty()) return 0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

size_t heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

} // namespace bench
