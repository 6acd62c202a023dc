// SPDX-License-Identifier: Apache-2.0
#include "Flow.h"

#include "TreeView.h"

#include <algorithm>

namespace NuxoTool {

namespace {

constexpr size_t kNowhere = static_cast<size_t>(-1);

bool isIn(const Flow::Node& node, int stream)
{
    return node.stream == stream && node.kind != Flow::Kind::Outside;
}

std::vector<size_t> inOrder(const Flow& flow, const std::vector<bool>& isWanted)
{
    std::vector<size_t> chosen = flow.order();
    const auto isUnwanted = [&isWanted](size_t index) { return !isWanted[index]; };
    chosen.erase(std::remove_if(chosen.begin(), chosen.end(), isUnwanted), chosen.end());
    return chosen;
}

bool differs(int32_t width, int32_t height, const qv_isp_zmt_resolution_info& history)
{
    return width != history.output_width || height != history.output_height;
}

std::optional<Mismatch> mismatchOfPort(const Flow::Node& node)
{
    const std::optional<int> width = optionalInteger(*node.item, NUXO_KEY_WIDTH);
    const std::optional<int> height = optionalInteger(*node.item, NUXO_KEY_HEIGHT);
    if (!width || !height || !differs(*width, *height, *node.arrives)) return std::nullopt;
    return Mismatch{*width, *height, false};
}

} // namespace

std::vector<bool> Flow::haveParents() const
{
    std::vector<bool> have(nodes.size());
    for (const Node& node : nodes) {
        for (const Link& link : node.links) {
            if (!link.isFeedback) have[link.to] = true;
        }
    }
    return have;
}

std::vector<size_t> Flow::order() const
{
    std::vector<size_t> waitsFor(nodes.size());
    for (const Node& node : nodes) {
        for (const Link& link : node.links) waitsFor[link.to] += link.isFeedback ? 0 : 1;
    }
    std::vector<size_t> ready;
    for (const bool isStage : {false, true}) { // taken from the back: sources come first
        for (size_t i = nodes.size(); i-- > 0;) {
            if (waitsFor[i] == 0 && (nodes[i].kind == Kind::SourceStage) == isStage) ready.push_back(i);
        }
    }
    std::vector<size_t> ordered;
    while (!ready.empty()) {
        const size_t node = ready.back();
        ready.pop_back();
        ordered.push_back(node);
        for (auto link = nodes[node].links.rbegin(); link != nodes[node].links.rend(); ++link) {
            if (!link->isFeedback && --waitsFor[link->to] == 0) ready.push_back(link->to);
        }
    }
    return ordered;
}

Flow Flow::part(const std::vector<size_t>& chosen) const
{
    std::vector<size_t> placeOf(nodes.size(), kNowhere);
    for (size_t i = 0; i < chosen.size(); ++i) placeOf[chosen[i]] = i;
    Flow result;
    result.isComplete = isComplete;
    result.isChecked = isChecked;
    for (const size_t index : chosen) {
        Node& node = result.nodes.emplace_back(nodes[index]);
        node.links.clear();
        for (Link link : nodes[index].links) {
            link.to = placeOf[link.to];
            if (link.to != kNowhere) node.links.push_back(link);
        }
    }
    return result;
}

const char* kindName(Flow::Kind kind)
{
    switch (kind) {
    case Flow::Kind::SourceStage: return "source";
    case Flow::Kind::InputPort: return "input";
    case Flow::Kind::Kernel: return "kernel";
    case Flow::Kind::Mux: return "mux";
    case Flow::Kind::Demux: return "demux";
    case Flow::Kind::Split: return "split";
    case Flow::Kind::OutputPort: return "output";
    case Flow::Kind::Sink: return "sink";
    case Flow::Kind::Outside: return "outside";
    }
    return "";
}

bool statesSize(const Flow::Node& node)
{
    return optionalInteger(*node.item, NUXO_KEY_WIDTH) && optionalInteger(*node.item, NUXO_KEY_HEIGHT);
}

std::optional<Mismatch> mismatchOf(const Flow::Node& node)
{
    if (!node.arrives || node.isDisabled() || node.kind == Flow::Kind::SourceStage) return std::nullopt;
    if (node.kind != Flow::Kind::Kernel) return mismatchOfPort(node);
    for (const Flow::Resolution& resolution : node.stated) {
        const qv_isp_zmt_resolution_info& info = resolution.info;
        if (differs(info.input_width, info.input_height, *node.arrives))
            return Mismatch{info.input_width, info.input_height, node.mustFit};
    }
    return std::nullopt;
}

Flow withUpstream(const Flow& flow, int stream)
{
    const std::vector<size_t> order = flow.order();
    std::vector<bool> isWanted(flow.nodes.size());
    for (auto index = order.rbegin(); index != order.rend(); ++index) {
        const Flow::Node& node = flow.nodes[*index];
        const auto feedsWanted = [&isWanted](const Flow::Link& link) { return !link.isFeedback && isWanted[link.to]; };
        isWanted[*index] = isIn(node, stream) || std::any_of(node.links.begin(), node.links.end(), feedsWanted);
    }
    // Where the frames of the stream go next belongs to it.
    for (const size_t index : order) {
        if (!isIn(flow.nodes[index], stream)) continue;
        for (const Flow::Link& link : flow.nodes[index].links) isWanted[link.to] = true;
    }
    return flow.part(inOrder(flow, isWanted));
}

Flow withNeighbours(const Flow& flow, int stream)
{
    std::vector<bool> isWanted(flow.nodes.size());
    for (size_t i = 0; i < flow.nodes.size(); ++i) {
        if (isIn(flow.nodes[i], stream)) isWanted[i] = true;
        for (const Flow::Link& link : flow.nodes[i].links) {
            if (isIn(flow.nodes[i], stream)) isWanted[link.to] = true;
            if (isIn(flow.nodes[link.to], stream)) isWanted[i] = true;
        }
    }
    Flow result = flow.part(inOrder(flow, isWanted));
    for (Flow::Node& node : result.nodes) {
        if (isIn(node, stream)) continue;
        // What neighbours do among themselves is not part of the stream.
        const auto isForeign = [&](const Flow::Link& link) { return !isIn(result.nodes[link.to], stream); };
        node.links.erase(std::remove_if(node.links.begin(), node.links.end(), isForeign), node.links.end());
    }
    return result;
}

} // namespace NuxoTool
