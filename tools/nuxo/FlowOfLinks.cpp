// SPDX-License-Identifier: Apache-2.0
#include "FlowParts.h"
#include "RecordText.h"
#include "TreeView.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/analysis/GraphUtil.h>
#include <nuxo/kernels/ZmtTevUtils.h>

#include <algorithm>
#include <map>
#include <set>

namespace NuxoTool {

using NUXO::GraphUtil;
using NUXO::InnerGraphNode;
using NUXO::ZmtTevUtils;

namespace {

Flow::Kind kindOf(InnerGraphNode::Kind kind)
{
    switch (kind) {
    case InnerGraphNode::Kind::Kernel: return Flow::Kind::Kernel;
    case InnerGraphNode::Kind::Mux: return Flow::Kind::Mux;
    case InnerGraphNode::Kind::Demux: return Flow::Kind::Demux;
    case InnerGraphNode::Kind::Split: return Flow::Kind::Split;
    case InnerGraphNode::Kind::InputPort: return Flow::Kind::InputPort;
    case InnerGraphNode::Kind::OutputPort: return Flow::Kind::OutputPort;
    }
    return Flow::Kind::Kernel;
}

// Only records that were filled say something.
bool isFilled(const InnerGraphNode& inner)
{
    return inner.record != nullptr &&
           static_cast<int>(inner.record->kernel_uuid) == integerOf(*inner.node, NUXO_KEY_PAL_UUID, 0) &&
           inner.record->kernel_uuid != 0;
}

void fillKernel(Flow::Node& node, const InnerGraphNode& inner)
{
    node.mustFit = integerOf(*inner.node, NUXO_KEY_RCB, 0) != 0;
    if (ZmtTevUtils::kernelHasResolutions(inner.node)) {
        std::map<std::string, qv_isp_zmt_resolution_info> resolutions;
        static_cast<void>(ZmtTevUtils::kernelGetResolutions(inner.node, resolutions)); // what is missing shows as none
        for (const auto& [output, info] : resolutions) node.stated.push_back({output, info});
    }
    if (!isFilled(inner)) return;
    node.enable = inner.record->enable;
    const qv_isp_zmt_resolution_info* const history = inner.record->resolution_history;
    if (history != nullptr && !isBlank(*history)) node.arrives = *history;
}

// A frame arrives from one node; where several meet the library takes the largest, or else the first.
void offer(std::optional<qv_isp_zmt_resolution_info>& arrives, const qv_isp_zmt_resolution_info& history)
{
    const bool isLarger =
        arrives && history.output_width > arrives->output_width && history.output_height > arrives->output_height;
    if (!arrives || isLarger) arrives = history;
}

// The library lists the ports of all sources with each subgraph that has one: what is known is not added again.
std::vector<size_t> addNodes(FlowDraft& draft, const std::vector<InnerGraphNode>& inner)
{
    std::vector<size_t> places;
    for (const InnerGraphNode& node : inner) {
        const auto known = draft.indexOf.find(node.node);
        if (known != draft.indexOf.end()) {
            places.push_back(known->second);
            continue;
        }
        Flow::Node view = flowNode(kindOf(node.kind), *node.node);
        if (node.kind == InnerGraphNode::Kind::Kernel) fillKernel(view, node);
        if (node.disabled) view.enable = QV_ISP_ZMT_KERNEL_DISABLED;
        places.push_back(draft.add(std::move(view)));
    }
    return places;
}

void addSubgraph(FlowDraft& draft, const std::vector<InnerGraphNode>& inner)
{
    const std::vector<size_t> places = addNodes(draft, inner);
    std::vector<std::optional<qv_isp_zmt_resolution_info>> arriving(inner.size());
    for (size_t i = 0; i < inner.size(); ++i) {
        for (const InnerGraphNode::Link& link : inner[i].links) {
            Flow::Link view = {places[link.sink], link.output, std::nullopt, false};
            if (link.hasHistory) view.history = link.history;
            if (link.hasHistory) offer(arriving[link.sink], link.history);
            draft.link(places[i], view);
        }
    }
    for (size_t i = 0; i < inner.size(); ++i) {
        Flow::Node& node = draft.flow.nodes[places[i]];
        if (node.arrives) continue;
        node.arrives = arriving[i];
        // What comes from elsewhere leaves a port as it arrives.
        if (!node.arrives && node.kind == Flow::Kind::InputPort && !node.links.empty())
            node.arrives = node.links.front().history;
    }
}

} // namespace

int addLinkedGroups(FlowDraft& draft, const BuiltGraph& built, const ProgramGroups& groups)
{
    GraphUtil util;
    const int status = util.init(NUXO_KEY_STREAM_ID, built.graph, std::max(groups.version, NUXO::GdfVersionKVA6));
    std::set<int> streams;
    util.getAvailableSubgraphs(streams);
    for (const int stream : streams) {
        std::vector<InnerGraphNode> inner;
        if (util.getInnerGraph(stream, inner) == StatusOk) addSubgraph(draft, inner);
    }
    return status;
}

} // namespace NuxoTool
