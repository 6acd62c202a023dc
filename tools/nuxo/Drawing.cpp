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
        std::vector<ChildView> parts = mView.children(mGraph);
        const auto isOther = [](const ChildView& child) {
            return child.node->getUid() == NUXO_KEY_GRAPH || textOf(*child.node, NUXO_KEY_TYPE).empty();
        };
        parts.erase(std::remove_if(parts.begin(), parts.end(), isOther), parts.end());
        mDrawing.isByContext = haveContexts(parts);
        for (const ChildView& part : parts) addBox(part);
        for (const auto& [node, end] : mEnds) connect(*node, end);
        return std::move(mDrawing);
    }

private:
    using NodeAndEnd = std::pair<const GraphConfigNode*, Drawing::End>;

    // Contexts tell the parts apart as long as none with a stream is left out.
    static bool haveContexts(const std::vector<ChildView>& parts)
    {
        const auto has = [](const ChildView& part, uint32_t key) {
            return optionalInteger(*part.node, key).has_value();
        };
        const auto hasContext = [&has](const ChildView& part) { return has(part, NUXO_KEY_EXEC_CTX_ID); };
        const auto isLeftOut = [&has](const ChildView& part) {
            return has(part, NUXO_KEY_STREAM_ID) && !has(part, NUXO_KEY_EXEC_CTX_ID);
        };
        return std::any_of(parts.begin(), parts.end(), hasContext) &&
               std::none_of(parts.begin(), parts.end(), isLeftOut);
    }

    void addBox(const ChildView& child)
    {
        Drawing::Box box;
        box.item = child.node;
        box.name = child.name;
        box.kind = textOf(*child.node, NUXO_KEY_TYPE);
        box.isEnabled = isEnabled(*child.node);
        box.cluster = optionalInteger(*child.node, mDrawing.isByContext ? NUXO_KEY_EXEC_CTX_ID : NUXO_KEY_STREAM_ID);

        const size_t index = mDrawing.boxes.size();
        addEnd(*child.node, {index, std::nullopt});
        for (const ChildView& part : mView.children(*child.node)) {
            if (isKind(*part.node, "kernel")) ++box.kernels;
            if (!isKind(*part.node, "port")) continue;
            addEnd(*part.node, {index, box.ports.size()});
            box.ports.push_back(portOf(part));
        }
        box.details = detailsOf(box);
        mDrawing.boxes.push_back(box);
    }

    static Drawing::Port portOf(const ChildView& part)
    {
        Drawing::Port port;
        port.item = part.node;
        port.name = part.name;
        port.details = dimensionsOf(*part.node);
        port.isOutput = integerOf(*part.node, NUXO_KEY_DIRECTION, kInput) == kOutput;
        port.isEnabled = isEnabled(*part.node);
        return port;
    }

    std::vector<std::string> detailsOf(const Drawing::Box& box) const
    {
        std::vector<std::string> details;
        const std::string mode = textOf(*box.item, NUXO_KEY_MODE_ID);
        if (!mode.empty()) details.push_back("mode " + mode);
        addNumber(details, "pg ", optionalInteger(*box.item, NUXO_KEY_PG_ID));
        // The other number than the one of the cluster around it.
        if (mDrawing.isByContext) {
            addNumber(details, "stream ", optionalInteger(*box.item, NUXO_KEY_STREAM_ID));
        } else {
            addNumber(details, "context ", optionalInteger(*box.item, NUXO_KEY_EXEC_CTX_ID));
        }
        if (box.kernels > 0) {
            details.push_back(std::to_string(box.kernels) + (box.kernels == 1 ? " kernel" : " kernels"));
        }
        const std::string dimensions = dimensionsOf(*box.item);
        if (!dimensions.empty()) details.push_back(dimensions);
        return details;
    }

    static void addNumber(std::vector<std::string>& details, const char* label, const std::optional<int>& number)
    {
        if (number) details.push_back(label + std::to_string(*number));
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

std::string clusterName(const Drawing& drawing, int cluster)
{
    return (drawing.isByContext ? "context " : "stream ") + std::to_string(cluster);
}

Drawing makeDrawing(const GraphConfigNode& graph)
{
    return Drawer(graph).draw();
}

} // namespace NuxoTool
