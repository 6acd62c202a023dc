// SPDX-License-Identifier: Apache-2.0
#include "Benchmarks.h"
#include "RequestCycle.h"

#include <memory>
#include <stdexcept>

namespace bench {

namespace {

constexpr size_t kFewConnections = 100;
constexpr size_t kManyConnections = 10000;
constexpr int kSamples = 15;
constexpr int kKey = 2;

// What one side works on. It comes to be in the side's own process: the vocabulary there knows no other names, and its trees
// lie in a heap that nothing else has used.
struct Chain {
    explicit Chain(size_t connections)
        : trees(chainOfGroups(connections)), setting(trees.find(kKey)), original(trees.build(setting)),
          root(dynamic_cast<const NUXO::GraphConfigNode*>(original.get()))
    {
        checkGraph(*original, kKey);
        if (root == nullptr) throw std::runtime_error("a graph is not made of nodes");
    }

    RequestTrees trees;
    NUXO::IGraphConfig& setting;
    Tree original;
    const NUXO::GraphConfigNode* root;
    Tree fresh; // what a run makes
};

using ChainPointer = std::shared_ptr<Chain>;

// One run makes a graph out of the chain; it is freed untimed.
Side sideOf(size_t connections, void (*make)(Chain& chain))
{
    const auto chain = std::make_shared<ChainPointer>();
    Side side;
    side.setUp = [chain, connections] {
        freeHeap();
        *chain = std::make_shared<Chain>(connections);
    };
    side.run = [chain, make] { make(**chain); };
    side.tidyUp = [chain] { (*chain)->fresh.reset(); };
    side.runsPerSample = 2 * kManyConnections / connections; // long enough to be timed
    return side;
}

void build(Chain& chain)
{
    chain.fresh = chain.trees.build(chain.setting);
}

void copy(Chain& chain)
{
    chain.fresh.reset(chain.root->copy());
    if (chain.fresh == nullptr) throw std::runtime_error("a graph cannot be copied");
}

void addAgainstCopy(Context& context, size_t connections, const std::string& count)
{
    const std::string name = "construction/copy/" + std::to_string(connections);
    add(context, name, kSamples, [&context, connections, count](benchmark::State& state) {
        const Comparison result = compare(state, sideOf(connections, build), sideOf(connections, copy));
        context.bars.add("construction, " + count + " connections, times a copy of the result", result.ratio,
                         atMost(4, 2.5));
    });
}

// Time per connection of many connections against few. Both find their memory at hand: what the system takes for fresh
// memory, which only a large graph needs, is no matter of how construction scales.
double growthPerConnection(benchmark::State& state, void (*make)(Chain& chain))
{
    Side many = sideOf(kManyConnections, make);
    Side few = sideOf(kFewConnections, make);
    many.prepareHeap = few.prepareHeap = keepHeap;
    return compare(state, many, few).ratio * kFewConnections / kManyConnections;
}

// Caches make every node of a large tree dearer, whatever is done with it: copying the same trees says by how much, and
// construction is held to that.
void addGrowth(Context& context)
{
    const auto ofBuilding = std::make_shared<double>(0);
    add(context, "construction/growth/build", kSamples, [&context, ofBuilding](benchmark::State& state) {
        *ofBuilding = growthPerConnection(state, build);
        context.bars.add("  construction, time per connection: 10,000, times 100", *ofBuilding);
    });
    add(context, "construction/growth/copy", kSamples, [&context, ofBuilding](benchmark::State& state) {
        const double ofCopying = growthPerConnection(state, copy);
        context.bars.add("  the same of copying the result", ofCopying);
        if (*ofBuilding > 0)
            context.bars.add("construction, growth per connection, times that of a copy", *ofBuilding / ofCopying,
                             atMost(1.5));
    });
}

} // namespace

void addConstructionBenchmarks(Context& context)
{
    addAgainstCopy(context, kFewConnections, "100");
    addAgainstCopy(context, 1000, "1,000");
    addAgainstCopy(context, kManyConnections, "10,000");
    addGrowth(context);
}

} // namespace bench
