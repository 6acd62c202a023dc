// SPDX-License-Identifier: Apache-2.0
#include "AnalysisFindings.h"
#include "FlowParts.h"
#include "LibraryLog.h"
#include "PortView.h"
#include "TreeView.h"

#include <nuxo/NuxoStatus.h>

#include <algorithm>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

namespace {

// Marks links that close a circle. Those from a group to itself, for the next frame, are known before the walk.
class FeedbackFinder {
public:
    explicit FeedbackFinder(Flow& flow) : mFlow(flow), mStates(flow.nodes.size(), State::New) {}

    void find()
    {
        markOwnConnections();
        const std::vector<bool> haveParents = mFlow.haveParents();
        for (size_t i = 0; i < mStates.size(); ++i) {
            if (!haveParents[i]) walkFrom(i);
        }
        for (size_t i = 0; i < mStates.size(); ++i) walkFrom(i);
    }

private:
    enum class State { New, Open, Done };
    struct Step {
        size_t node;
        size_t link;
    };

    void markOwnConnections()
    {
        for (Flow::Node& node : mFlow.nodes) {
            for (Flow::Link& link : node.links) {
                const Flow::Node& to = mFlow.nodes[link.to];
                link.isFeedback =
                    node.kind == Flow::Kind::OutputPort && to.kind == Flow::Kind::InputPort && node.group == to.group;
            }
        }
    }

    // Depth first, with a stack of its own: chains may be long.
    void walkFrom(size_t start)
    {
        if (mStates[start] != State::New) return;
        mStates[start] = State::Open;
        std::vector<Step> path = {{start, 0}};
        while (!path.empty()) {
            Step& step = path.back();
            std::vector<Flow::Link>& links = mFlow.nodes[step.node].links;
            if (step.link == links.size()) {
                mStates[step.node] = State::Done;
                path.pop_back();
                continue;
            }
            Flow::Link& link = links[step.link++];
            if (link.isFeedback) continue;
            if (mStates[link.to] == State::Open) link.isFeedback = true;
            if (mStates[link.to] != State::New) continue;
            mStates[link.to] = State::Open;
            path.push_back({link.to, 0});
        }
    }

    Flow& mFlow;
    std::vector<State> mStates;
};

// A sink that is in no stream belongs to what feeds it.
void adoptSinks(Flow& flow)
{
    for (const Flow::Node& node : flow.nodes) {
        for (const Flow::Link& link : node.links) {
            Flow::Node& to = flow.nodes[link.to];
            if (to.kind == Flow::Kind::Sink) to.stream = node.stream;
        }
    }
}

// All port nodes exist by now.
void connect(FlowDraft& draft, size_t output, const IGraphConfig& end)
{
    const auto known = draft.indexOf.find(&end);
    size_t to = 0;
    if (known != draft.indexOf.end()) {
        to = known->second;
    } else {
        Flow::Node node = flowNode(isSink(end) ? Flow::Kind::Sink : Flow::Kind::Outside, end);
        node.arrives = draft.flow.nodes[output].arrives;
        to = draft.add(std::move(node));
    }
    Flow::Node& target = draft.flow.nodes[to];
    const std::optional<qv_isp_zmt_resolution_info>& leaving = draft.flow.nodes[output].arrives;
    if (target.isDisabled()) return;
    draft.link(output, {to, "", leaving ? leaving : target.arrives, false});
    if (!draft.flow.nodes[output].arrives) draft.flow.nodes[output].arrives = target.arrives;
    if (!target.arrives) target.arrives = leaving;
}

// Where the library stopped, links still hold what it would have passed on.
void forgetBehindBreaks(Flow& flow)
{
    std::vector<bool> isReached = flow.haveParents();
    isReached.flip(); // what has no parents is where frames start
    for (const size_t index : flow.order()) {
        Flow::Node& node = flow.nodes[index];
        if (!isReached[index]) node.arrives.reset();
        const std::optional<Mismatch> mismatch = mismatchOf(node);
        const bool isStage = node.kind == Flow::Kind::SourceStage;
        const bool passesOn = isReached[index] && (node.arrives || isStage) && !(mismatch && mismatch->isBreak);
        for (Flow::Link& link : node.links) {
            if (!passesOn) link.history.reset();
            if (passesOn && !link.isFeedback) isReached[link.to] = true;
        }
    }
}

} // namespace

size_t FlowDraft::add(Flow::Node node)
{
    indexOf.emplace(node.item, flow.nodes.size());
    flow.nodes.push_back(std::move(node));
    return flow.nodes.size() - 1;
}

void FlowDraft::link(size_t from, const Flow::Link& link)
{
    std::vector<Flow::Link>& links = flow.nodes[from].links;
    const bool isKnown =
        std::any_of(links.begin(), links.end(), [&link](const Flow::Link& other) { return other.to == link.to; });
    if (!isKnown) links.push_back(link);
}

Flow::Node flowNode(Flow::Kind kind, const IGraphConfig& item)
{
    Flow::Node node;
    node.kind = kind;
    node.item = dynamic_cast<const GraphConfigNode*>(&item);
    node.name = nameOf(item);
    const IGraphConfig* const holder = isSink(item) ? nullptr : item.getAncestor();
    if (holder != nullptr) node.group = nameOf(*holder);
    node.stream = streamOf(holder == nullptr ? item : *holder);
    if (integerOf(item, NUXO_KEY_ENABLED, 1) == 0)
        node.enable = kind == Flow::Kind::Kernel ? QV_ISP_ZMT_KERNEL_BYPASS : QV_ISP_ZMT_KERNEL_DISABLED;
    return node;
}

void addConnections(FlowDraft& draft, const GraphConfigNode& graph)
{
    const size_t count = draft.flow.nodes.size();
    for (size_t i = 0; i < count; ++i) {
        if (draft.flow.nodes[i].kind != Flow::Kind::OutputPort || draft.flow.nodes[i].isDisabled()) continue;
        const GraphConfigNode& port = *draft.flow.nodes[i].item;
        for (auto it = port.begin(); it != port.end(); ++it) {
            std::string peer;
            if (it->first != NUXO_KEY_PEER || it->second->getValue(peer) != StatusOk) continue;
            if (const IGraphConfig* const end = graph.getDescendantByString(peer)) connect(draft, i, *end);
        }
    }
    // A port that nothing is known to feed passes on what arrives behind it.
    for (Flow::Node& node : draft.flow.nodes) {
        if (node.kind != Flow::Kind::InputPort || node.arrives || node.links.empty()) continue;
        node.arrives = node.links.front().history;
    }
}

Flow makeFlow(Session& session, const BuiltGraph& built)
{
    const ProgramGroups groups = programGroupsOf(*built.graph);
    FlowDraft draft;
    takeLibraryLog();
    const int status =
        groups.areLinked() ? addLinkedGroups(draft, built, groups) : addOrderedGroups(draft, built, groups);
    reportAnalysis(session, built, status, false);
    draft.flow.isComplete = status == StatusOk;
    draft.flow.isChecked = groups.areLinked();
    addConnections(draft, *built.graph);
    FeedbackFinder(draft.flow).find();
    addSources(draft);
    adoptSinks(draft.flow);
    if (draft.flow.isChecked && !draft.flow.isComplete) forgetBehindBreaks(draft.flow);
    takeLibraryLog(); // what cannot be told of ports and sources shows by itself
    return std::move(draft.flow);
}

} // namespace NuxoTool
