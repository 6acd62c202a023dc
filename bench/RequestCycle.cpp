// SPDX-License-Identifier: Apache-2.0
#include "RequestCycle.h"

#include <stdexcept>
#include <utility>
#include <vector>

#include <malloc.h>

namespace bench {

namespace {

constexpr size_t kWarmUpCycles = 300;
constexpr size_t kConnections = 4;
constexpr int kSettings = 3;

long long heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<long long>(info.uordblks) + static_cast<long long>(info.hblkhd);
}

void runCycles(size_t cycles)
{
    const Request request = chainOfGroups(kConnections);
    for (size_t i = 0; i < cycles; ++i) {
        RequestTrees trees(request);
        const int settingsKey = 1 + static_cast<int>(i % kSettings);
        const Tree graph = trees.build(trees.find(settingsKey));
        checkGraph(*graph, settingsKey);
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
