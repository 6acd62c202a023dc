// SPDX-License-Identifier: Apache-2.0
#include "Benchmarks.h"
#include "Examples.h"
#include "KernelGraphs.h"

#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace bench {

namespace {

constexpr int kSamples = 31;
constexpr size_t kManyKernels = 10000;
constexpr size_t kFewKernels = 100;

// A way to get the records of a graph, and how many kernels they tell of.
using Way = size_t (*)(const NUXO::IGraphConfig& graph);

void requireOk(int status)
{
    if (status != StatusOk) throw std::runtime_error("a graph cannot be analysed");
}

// The kernels whose history says that a frame arrives.
size_t reached(const qv_isp_zmt_program_group& group)
{
    size_t count = 0;
    for (uint32_t i = 0; i < group.kernel_count; ++i) {
        const qv_isp_zmt_resolution_info* const history = group.run_kernels[i].resolution_history;
        if (history != nullptr && history->output_width > 0) ++count;
    }
    return count;
}

template <NUXO::GdfVersion version> size_t analyse(const NUXO::IGraphConfig& graph)
{
    NUXO::GraphUtil analysis;
    requireOk(analysis.init(NUXO_KEY_STREAM_ID, &graph, version));
    std::set<int> ids;
    analysis.getAvailableSubgraphs(ids);
    size_t kernels = 0;
    for (const int id : ids) {
        qv_isp_zmt_program_group group = {};
        requireOk(analysis.getTevData(id, group));
        kernels += reached(group);
    }
    return kernels;
}

size_t fillLists(const NUXO::IGraphConfig& graph)
{
    NUXO::ZmtTevUtils utils(true);
    requireOk(utils.initTevUtils(&graph));
    std::vector<int> ids;
    requireOk(utils.getStreamIds(ids, false));
    size_t kernels = 0;
    for (const int id : ids) {
        qv_isp_zmt_program_group group = {};
        utils.getProgramGroup(id, group);
        kernels += reached(group);
    }
    return kernels;
}

// The graph comes to be in the side's own process: the vocabulary there knows no other names.
Side sideOf(const KernelGraphShape& shape, Way way, bool tellsKernels)
{
    const auto graph = std::make_shared<Tree>();
    const size_t kernels = shape.allKernels();
    const size_t told = tellsKernels ? kernels : 0;
    Side side;
    side.setUp = [graph, shape] { *graph = kernelGraph(shape); };
    side.run = [graph, way, told] {
        if (way(**graph) != told) throw std::runtime_error("a kernel is not reached");
    };
    side.runsPerSample = kManyKernels / kernels;
    side.prepareHeap = keepHeap;
    return side;
}

size_t copyOnly(const NUXO::IGraphConfig& graph)
{
    const auto& root = dynamic_cast<const NUXO::GraphConfigNode&>(graph);
    if (std::unique_ptr<NUXO::GraphConfigNode>(root.copy()) == nullptr)
        throw std::runtime_error("a graph cannot be copied");
    return 0;
}

struct Growth {
    std::string name;
    Way way;
    KernelGraphShape large;
    KernelGraphShape small;
    std::string what;
};

// Caches make every node of a large tree dearer, whatever is done with it: copying the same trees says by how much, and the
// records are held to that. Both are done in turn, first with the large tree, then with the small one.
void addGrowth(Context& context, const Growth& growth)
{
    const auto againstCopy = [&growth](const KernelGraphShape& shape) {
        return [shape, way = growth.way](benchmark::State& state) {
            return compare(state, sideOf(shape, way, true), sideOf(shape, copyOnly, false));
        };
    };
    const auto large = std::make_shared<Comparison>();
    const std::string name = "kernels/growth/" + growth.name;
    add(context, name + "/large", kSamples,
        [compareLarge = againstCopy(growth.large), large](benchmark::State& state) { *large = compareLarge(state); });
    add(context, name + "/small", kSamples,
        [&context, growth, compareSmall = againstCopy(growth.small), large](benchmark::State& state) {
            const Comparison small = compareSmall(state);
            if (large->ratio <= 0) return; // left out
            const auto few = static_cast<double>(growth.small.allKernels());
            const auto many = static_cast<double>(growth.large.allKernels());
            context.bars.add("  " + growth.name + ": ns a kernel of the small graph", small.ours * 1e9 / few);
            context.bars.add("  time per kernel: " + growth.what, large->ours / small.ours * few / many);
            context.bars.add("  the same of copying the graph", large->reference / small.reference * few / many);
            context.bars.add(growth.name + ": growth, times that of a copy", large->ratio / small.ratio, atMost(1.5));
        });
}

// Streams are fed by the first one; in a row, the last one is as many streams away from the sensor.
void addGrowths(Context& context, const std::string& name, Way way, int generation)
{
    const auto shape = [generation](size_t streams, size_t groups, bool isChain) {
        return KernelGraphShape{generation, streams, groups, 10, isChain};
    };
    addGrowth(context, {name, way, shape(1, kManyKernels / 10, false), shape(1, kFewKernels / 10, false),
                        "10,000 kernels, times 100"});
    const std::string subgraphs = "200 subgraphs, times 2";
    addGrowth(context, {name + ", streams", way, shape(199, 5, false), shape(1, 5, false), subgraphs});
    addGrowth(context, {name + ", streams in a row", way, shape(199, 5, true), shape(1, 5, true), subgraphs});
}

size_t kernelsOf(const NUXO::IGraphConfig& graph)
{
    size_t kernels = 0;
    NUXO::NodeIterator nodes(&graph);
    while (const NUXO::IGraphConfig* const node = nodes.iterateDescendants()) {
        unsigned int count = 0;
        if (NUXO::GraphCameraUtil::getKernelCountInPg(node, count) == StatusOk) kernels += count;
    }
    return kernels;
}

ExampleGraph exampleWithMostKernels()
{
    return largestExample({"kva6", "kva7"}, kernelsOf);
}

// What is done with the example that has the most kernels.
Side exampleSide(std::function<void(ExampleGraph& example)> work)
{
    const auto example = std::make_shared<ExampleGraph>();
    Side side;
    side.setUp = [example] { *example = exampleWithMostKernels(); };
    side.run = [example, work] { work(*example); };
    side.runsPerSample = 20;
    side.prepareHeap = keepHeap;
    return side;
}

NUXO::GdfVersion versionOf(const NUXO::IGraphConfig& graph)
{
    return NUXO::IspUtils::Factory(&graph)->getKvaVersion();
}

void addExample(Context& context)
{
    add(context, "kernels/example", 2 * kSamples, [&context](benchmark::State& state) {
        const Side analysis = exampleSide([](ExampleGraph& example) {
            NUXO::GraphUtil graphUtil;
            requireOk(graphUtil.init(NUXO_KEY_STREAM_ID, example.graph.get(), versionOf(*example.graph)));
        });
        const Side construction =
            exampleSide([](ExampleGraph& example) { example.pair->build(*example.setting).reset(); });
        const Comparison result = compare(state, analysis, construction);
        context.bars.add("  kernels of the largest example graph", static_cast<double>(exampleWithMostKernels().size));
        context.bars.add("  its construction, ms", result.reference * 1e3);
        context.bars.add("  GraphUtil::init, ms", result.ours * 1e3);
        context.bars.add("GraphUtil::init, times the construction of the graph", result.ratio, atMost(5, 3));
    });
}

} // namespace

void addKernelBenchmarks(Context& context)
{
    addGrowths(context, "GraphUtil::init", analyse<NUXO::GdfVersionKVA6>, 6);
    addGrowths(context, "initTevUtils (7)", fillLists, 7);
    addGrowths(context, "initTevUtils (5)", fillLists, 5);
    addExample(context);
}

} // namespace bench
