// SPDX-License-Identifier: Apache-2.0
// nuxo-growth CYCLES: whether the heap is, after so many cycles of a request, as after the first ones.
#include "RequestCycle.h"

#include <qv_cipr/qv_log_common.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

int main(int argc, char** argv)
{
    const unsigned long cycles = argc == 2 ? std::strtoul(argv[1], nullptr, 10) : 0;
    if (cycles == 0) {
        std::fprintf(stderr, "usage: nuxo-growth CYCLES\n");
        return 2;
    }
    g_qv_log_common_level = 0;
    try {
        const long long growth = bench::growthOver(cycles);
        std::printf("%lu cycles: the heap grew by %lld bytes\n", cycles, growth);
        return growth <= 0 ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "nuxo-growth: %s\n", problem.what());
        return EXIT_FAILURE;
    }
}
