// SPDX-License-Identifier: Apache-2.0
#include "RequestCycle.h"

#include "KernelGraphs.h"

#include <stdexcept>
#include <utility>
#include <vector>

#include <malloc.h>

namespace bench {

namespace {

constexpr size_t kWarmUpCycles = 300;
constexpr size_t kConnections = 4;
constexpr int kSettings = 3;
constexpr int kFirstGeneration = 5;
constexpr size_t kStreams = 2;

long long heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<long long>(info.uordblks) + static_cast<long long>(info.hblkhd);
}

// Twice, so that the object lets go of what it had before.
void fillRecords(NUXO::ZmtTevUtils& utils, const NUXO::IGraphConfig& graph, uint32_t kernels)
{
    for (int time = 0; time < 2; ++time) {
        qv_isp_zmt_program_group group = {};
        if (utils.initTevUtils(&graph) == StatusOk) utils.getProgramGroup(kStreams, group);
        if (group.kernel_count != kernels) throw std::runtime_error("a stream has no records");
    }
}

// In a graph of another generation each time.
void analyseKernels(size_t cycle)
{
    KernelGraphShape shape;
    shape.generation = kFirstGeneration + static_cast<int>(cycle % 3);
    shape.streams = kStreams;
    const Tree graph = kernelGraph(shape);
    NUXO::ZmtTevUtils utils(true);
    fillRecords(utils, *graph, static_cast<uint32_t>(shape.groups * shape.kernels));
}

void runCycles(size_t cycles)
{
    const Request request = chainOfGroups(kConnections);
    for (size_t i = 0; i < cycles; ++i) {
        RequestTrees trees(request);
        const int settingsKey = 1 + static_cast<int>(i % kSettings);
        const Tree graph = trees.build(trees.find(settingsKey));
        checkGraph(*graph, settingsKey);
        analyseKernels(i);
    }
}

} // namespace

RequestTrees::RequestTrees(Request request)
    : mRequest(std::move(request)), mDescriptor(parseText(mRequest.descriptor)), mSettings(parseText(mRequest.settings))
{
    mManager.setGraphDescriptor(mDescriptor.get());
    mManager.setGraphSettings(mSettings.get());
}

NUXO::IGraphConfig& RequestTrees::find(int settingsKey)
{
    std::vector<NUXO::IGraphConfig*> found;
    const std::string width = std::to_string(sinkWidth(settingsKey));
    const int status = mManager.queryGraphs({{"video_sink:width", width}}, found, true);
    if (status != StatusOk || found.size() != 1) throw std::runtime_error("the setting is not found");
    return *found.front();
}

Tree RequestTrees::build(NUXO::IGraphConfig& setting)
{
    return buildGraph(mManager, setting);
}

void checkGraph(const NUXO::IGraphConfig& graph, int settingsKey)
{
    int width = 0;
    const int32_t status = graph.getValue(NUXO::ItemUID("video_sink:width"), width);
    if (status != StatusOk || width != sinkWidth(settingsKey)) throw std::runtime_error("the graph has no proper sink");
}

long long growthOver(size_t cycles)
{
    runCycles(kWarmUpCycles);
    const long long before = heapInUse();
    runCycles(cycles);
    return heapInUse() - before;
}

} // namespace bench
