// SPDX-License-Identifier: Apache-2.0
#include "Drawing.h"

#include "TreeView.h"

#include <nuxo/NuxoStatus.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

namespace {

constexpr int kNoDirection = -1;
constexpr int kInput = 0;
constexpr int kOutput = 1;

bool isKind(const GraphConfigNode& node, const char* kind)
{
    return textOf(node, NUXO_KEY_TYPE) == kind;
}

bool isEnabled(const IGraphConfig& node)
{
    return integerOf(node, NUXO_KEY_ENABLED, 1) != 0;
}

class Drawer {
public:
    explicit Drawer(const GraphConfigNode& graph) : mGraph(graph) {}

    Drawing draw()
    {
        for (const ChildView& child : mView.children(mGraph)) {
            const bool isPart = child.node->getUid() != NUXO_KEY_GRAPH && !textOf(*child.node, NUXO_KEY_TYPE).empty();
            if (isPart) addBox(child);
        }
        for (const auto& [node, end] : mEnds) connect(*node, end);
        return std::move(mDrawing);
    }

private:
    using NodeAndEnd = std::pair<const GraphConfigNode*, Drawing::End>;

    void addBox(const ChildView& child)
    {
        Drawing::Box box;
        box.name = child.name;
        box.kind = textOf(*child.node, NUXO_KEY_TYPE);
        box.isEnabled = isEnabled(*child.node);
        int stream = 0;
        if (child.node->getValue(NUXO_KEY_STREAM_ID, stream) == StatusOk) box.stream = stream;

        const size_t index = mDrawing.boxes.size();
        addEnd(*child.node, {index, std::nullopt});
        size_t kernels = 0;
        for (const ChildView& part : mView.children(*child.node)) {
            if (isKind(*part.node, "kernel")) ++kernels;
            if (!isKind(*part.node, "port")) continue;
            addEnd(*part.node, {index, box.ports.size()});
            box.ports.push_back(portOf(part));
        }
        box.details = detailsOf(*child.node, kernels);
        mDrawing.boxes.push_back(box);
    }

    static Drawing::Port portOf(const ChildView& part)
    {
        Drawing::Port port;
        port.name = part.name;
        port.details = dimensionsOf(*part.node);
        port.isOutput = integerOf(*part.node, NUXO_KEY_DIRECTION, kInput) == kOutput;
        port.isEnabled = isEnabled(*part.node);
        return port;
    }

    static std::vector<std::string> detailsOf(const GraphConfigNode& node, size_t kernels)
    {
        std::vector<std::string> details;
        int id = 0;
        const std::string mode = textOf(node, NUXO_KEY_MODE_ID);
        if (!mode.empty()) details.push_back("mode " + mode);
        if (node.getValue(NUXO_KEY_PG_ID, id) == StatusOk) details.push_back("pg " + std::to_string(id));
        if (node.getValue(NUXO_KEY_EXEC_CTX_ID, id) == StatusOk) details.push_back("context " + std::to_string(id));
        if (kernels > 0) details.push_back(std::to_string(kernels) + (kernels == 1 ? " kernel" : " kernels"));
        const std::string dimensions = dimensionsOf(node);
        if (!dimensions.empty()) details.push_back(dimensions);
        return details;
    }

    void addEnd(const GraphConfigNode& node, const Drawing::End& end)
    {
        mEnds.emplace_back(&node, end);
        mEndOf.emplace(static_cast<const IGraphConfig*>(&node), mEnds.size() - 1);
    }

    void connect(const GraphConfigNode& node, const Drawing::End& end)
    {
        for (const AttributeView& attribute : mView.attributes(node)) {
            if (attribute.key != NUXO_KEY_PEER || attribute.isInteger) continue;
            const auto peer = mEndOf.find(mGraph.getDescendantByString(attribute.text));
            if (peer == mEndOf.end()) {
                mDrawing.looseEnds.push_back({end, attribute.text});
            } else {
                connectOnce(node, end, *mEnds[peer->second].first, mEnds[peer->second].second);
            }
        }
    }

    void connectOnce(const GraphConfigNode& node, const Drawing::End& end, const GraphConfigNode& peer,
                     const Drawing::End& peerEnd)
    {
        const size_t self = mEndOf.at(&node);
        const size_t other = mEndOf.at(&peer);
        if (!mConnected.insert(std::minmax(self, other)).second) return;
        const int direction = integerOf(node, NUXO_KEY_DIRECTION, kNoDirection);
        const int peerDirection = integerOf(peer, NUXO_KEY_DIRECTION, kNoDirection);
        const bool startsHere = direction == kOutput || (direction == kNoDirection && peerDirection != kOutput);
        const bool enabled = isEndEnabled(end) && isEndEnabled(peerEnd);
        mDrawing.connections.push_back({startsHere ? end : peerEnd, startsHere ? peerEnd : end, enabled});
    }

    bool isEndEnabled(const Drawing::End& end) const
    {
        const Drawing::Box& box = mDrawing.boxes[end.box];
        return box.isEnabled && (!end.port || box.ports[*end.port].isEnabled);
    }

    const GraphConfigNode& mGraph;
    TreeView mView;
    Drawing mDrawing;
    std::vector<NodeAndEnd> mEnds;
    std::map<const IGraphConfig*, size_t> mEndOf; // only looked up: its order depends on addresses
    std::set<std::pair<size_t, size_t>> mConnected;
};

} // namespace

Drawing makeDrawing(const GraphConfigNode& graph)
{
    return Drawer(graph).draw();
}

} // namespace NuxoTool
