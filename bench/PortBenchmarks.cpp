// SPDX-License-Identifier: Apache-2.0
#include "Benchmarks.h"
#include "Examples.h"

#include <algorithm>
#include <array>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace bench {

namespace {

constexpr int kSamples = 101;
constexpr size_t kTimes = 10;   // as many ports in the large graph
constexpr size_t kRounds = 100; // of the example's ports in one run

using Nodes = std::vector<NUXO::GraphConfigNode*>;

bool isPort(const NUXO::IGraphConfig& node)
{
    std::string type;
    return node.getValue(NUXO_KEY_TYPE, type) == StatusOk && (type == "port" || type == "sink");
}

Nodes childrenOf(const NUXO::IGraphConfig& parent)
{
    Nodes children;
    NUXO::NodeIterator cursor(&parent);
    while (NUXO::IGraphConfig* const child = cursor.iterateDescendants()) {
        children.push_back(dynamic_cast<NUXO::GraphConfigNode*>(child));
    }
    return children;
}

// The ports of all nodes, virtual sinks among them.
Nodes portsOf(const NUXO::IGraphConfig& graph)
{
    Nodes ports;
    for (NUXO::GraphConfigNode* const node : childrenOf(graph)) {
        if (isPort(*node)) ports.push_back(node);
        for (NUXO::GraphConfigNode* const child : childrenOf(*node)) {
            if (isPort(*child)) ports.push_back(child);
        }
    }
    return ports;
}

Tree graphWithMostPorts()
{
    return largestExample({"kva5", "kva6", "kva7"}, [](const auto& graph) { return portsOf(graph).size(); }).graph;
}

void setText(NUXO::GraphConfigNode& node, uint32_t key, const std::string& text)
{
    if (node.setValueFromStr({key}, text) != StatusOk) throw std::runtime_error("a copied node cannot be renamed");
}

void redirectPeer(NUXO::GraphConfigNode& port, const std::string& suffix)
{
    std::string peer;
    if (port.getValue(NUXO_KEY_PEER, peer) != StatusOk) return;
    setText(port, NUXO_KEY_PEER, peer.insert(std::min(peer.find(':'), peer.size()), suffix));
}

uint32_t keyOf(const std::string& name)
{
    const uint32_t known = NUXO::ItemUID::str2key(name);
    return known != 0 ? known : NUXO::ItemUID::generateKey(name);
}

// Files a copy of a node under a name of its own, connected to nodes with the same suffix.
void addCopy(NUXO::GraphConfigNode& root, const NUXO::GraphConfigNode& node, const std::string& suffix)
{
    std::string name;
    if (node.getValue(NUXO_KEY_NAME, name) != StatusOk) return; // no node of the pipeline
    std::unique_ptr<NUXO::GraphConfigNode> copy(node.copy());
    if (copy == nullptr) throw std::runtime_error("a node cannot be copied");
    setText(*copy, NUXO_KEY_NAME, name + suffix);
    redirectPeer(*copy, suffix);
    for (NUXO::GraphConfigNode* const child : childrenOf(*copy)) redirectPeer(*child, suffix);
    if (root.insertDescendant(copy.get(), keyOf(name + suffix)) != StatusOk)
        throw std::runtime_error("a copied node cannot be filed");
    static_cast<void>(copy.release()); // the root's now
}

// Every node and connection so many times.
void multiply(NUXO::IGraphConfig& graph, size_t times)
{
    auto& root = dynamic_cast<NUXO::GraphConfigNode&>(graph);
    const Nodes originals = childrenOf(root);
    for (size_t i = 1; i < times; ++i) {
        for (const NUXO::GraphConfigNode* const node : originals) addCopy(root, *node, "_" + std::to_string(i));
    }
}

// Status, enabled, terminal, width, height, code, bytes per line, bits per pixel.
using Answers = std::array<unsigned int, 8>;

Answers ask(const NUXO::IGraphConfig& port)
{
    Answers to = {};
    to[0] = static_cast<unsigned int>(
        NUXO::GraphCameraUtil::portGetFormat(&port, to[1], to[2], to[3], to[4], to[5], to[6], to[7]));
    return to;
}

// What one side works on, made in the side's own process: only there does the vocabulary know the names of copies.
class PortGraph {
public:
    explicit PortGraph(size_t times) : mGraph(graphWithMostPorts()), mPorts(portsOf(*mGraph)), mOriginals(mPorts.size())
    {
        multiply(*mGraph, times);
        mPorts = portsOf(*mGraph);
        if (mPorts.size() != times * mOriginals) throw std::runtime_error("the large graph lacks ports");
        for (size_t port = 0; port < mPorts.size(); ++port) check(port);
    }

    const Nodes& ports() const { return mPorts; }

private:
    // Copies are told what their originals are told, with peers among their own kind.
    void check(size_t port) const
    {
        const size_t original = port % mOriginals;
        if (ask(*mPorts[port]) != ask(*mPorts[original])) throw std::runtime_error("a copied port has another format");
        const NUXO::IGraphConfig* const peer = peerOf(original);
        if (peer == nullptr) return;
        const auto place = static_cast<size_t>(std::find(mPorts.begin(), mPorts.end(), peer) - mPorts.begin());
        if (mPorts.at(place + port - original) != peerOf(port)) throw std::runtime_error("a copied port strays");
    }

    const NUXO::IGraphConfig* peerOf(size_t port) const
    {
        NUXO::IGraphConfig* peer = nullptr;
        return NUXO::GraphCameraUtil::portGetPeer(mPorts[port], &peer) == StatusOk ? peer : nullptr;
    }

    Tree mGraph;
    Nodes mPorts;
    size_t mOriginals;
};

// Asks all ports, in a large graph less often: as many questions in each run.
Side questions(size_t times)
{
    const auto graph = std::make_shared<std::unique_ptr<PortGraph>>();
    Side side;
    side.setUp = [graph, times] { *graph = std::make_unique<PortGraph>(times); };
    side.run = [graph, times] {
        unsigned int sum = 0;
        for (size_t round = 0; round < kRounds / times; ++round) {
            for (const NUXO::IGraphConfig* const port : (*graph)->ports()) sum += ask(*port)[3];
        }
        if (sum == 0) throw std::runtime_error("no port has a width");
    };
    return side;
}

} // namespace

void addPortBenchmarks(Context& context)
{
    add(context, "ports/portGetFormat", kSamples, [&context](benchmark::State& state) {
        const size_t ports = portsOf(*graphWithMostPorts()).size();
        const Comparison result = compare(state, questions(kTimes), questions(1));
        const double nanoseconds = 1e9 / static_cast<double>(kRounds * ports);
        context.bars.add("  ports of the largest example graph", static_cast<double>(ports));
        context.bars.add("  portGetFormat, ns a port", result.reference * nanoseconds);
        context.bars.add("  the same with 10 times the ports", result.ours * nanoseconds);
        context.bars.add("portGetFormat, time per port: 10 times the ports, times once", result.ratio, atMost(1.5));
    });
}

} // namespace bench
