// SPDX-License-Identifier: Apache-2.0
#include "ContextView.h"

#include "LibraryFindings.h"
#include "LibraryLog.h"
#include "ProgramGroups.h"
#include "TreeView.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace NuxoTool {

using NUXO::GraphCameraUtil;
using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

namespace {

using NamePair = std::pair<std::string, std::string>;

class ContextViewer {
public:
    ContextViewer(Session& session, const GraphConfigNode& graph) : mSession(session), mGraph(graph)
    {
        chooseNodeType();
        chooseKey();
    }

    ContextView view()
    {
        takeLibraryLog();
        addNodes(mGroups);
        addNodes(childrenOfType(mGraph, NUXO_KEY_EXTERNAL_STAGE));
        setTuning();
        for (auto& [id, context] : mContexts) addBoundaries(id, context);

        ContextView view;
        view.isByStream = mKey == NUXO_KEY_STREAM_ID;
        addCrossings(view);
        expectFeedersOutside();
        reportLogLines(mSession, {"contexts", nullptr, "", 0});
        for (auto& [id, context] : mContexts) {
            setStates(context);
            view.contexts.push_back(std::move(context));
        }
        if (!mOutside.nodes.empty()) view.contexts.push_back(std::move(mOutside));
        return view;
    }

private:
    void chooseNodeType()
    {
        const ProgramGroups groups = programGroupsOf(mGraph);
        mNodeType = groups.type;
        mGroups = groups.nodes;
    }

    void chooseKey()
    {
        const bool hasContexts = std::any_of(mGroups.begin(), mGroups.end(), [](const GraphConfigNode* group) {
            return optionalInteger(*group, NUXO_KEY_EXEC_CTX_ID).has_value();
        });
        mKey = hasContexts ? NUXO_KEY_EXEC_CTX_ID : NUXO_KEY_STREAM_ID;
    }

    void addNodes(const std::vector<const GraphConfigNode*>& nodes)
    {
        for (const GraphConfigNode* const node : nodes) {
            const std::optional<int> id = optionalInteger(*node, mKey);
            ContextView::Context& context = id ? mContexts[*id] : mOutside;
            context.id = id;
            context.nodes.push_back(nodeOf(*node));
        }
    }

    static ContextView::Node nodeOf(const GraphConfigNode& item)
    {
        ContextView::Node node;
        node.item = &item;
        node.name = nameOf(item);
        node.type = textOf(item, NUXO_KEY_TYPE);
        node.stream = optionalInteger(item, NUXO_KEY_STREAM_ID);
        node.tuning = optionalInteger(item, NUXO_KEY_TUNING_MODE);
        node.pgId = optionalInteger(item, NUXO_KEY_PG_ID);
        static_cast<void>(GraphCameraUtil::getKernelCountInPg(&item, node.kernels)); // fails for null only
        return node;
    }

    // The first node of a context decides. The library says so for execution contexts of program groups, with a warning
    // about the others.
    void setTuning()
    {
        for (auto& [id, context] : mContexts) context.tuning = context.nodes.front().tuning;
        if (!isKnownToLibrary()) return;
        std::map<int, int> modes;
        static_cast<void>(
            GraphCameraUtil::getExecCtxIdsTuningMap(mGraph, modes)); // the status is that of the last read
        for (const auto& [id, mode] : modes) {
            if (mode >= 0) mContexts[id].tuning = mode;
        }
    }

    // What delivers frames may be outside of all contexts, which is an error only to the library's test for edges.
    void expectFeedersOutside()
    {
        for (const uint32_t type : {uint32_t{NUXO_KEY_SOURCE}, uint32_t{NUXO_KEY_HW}}) {
            for (const GraphConfigNode* const feeder : childrenOfType(mGraph, type)) {
                mSession.reportedLines.insert("Failed to get stream ID of peer PG " + GraphCameraUtil::print(feeder));
            }
        }
    }

    bool isKnownToLibrary() const { return mNodeType == NUXO_KEY_PROGRAM_GROUP && mKey == NUXO_KEY_EXEC_CTX_ID; }

    void addBoundaries(int id, ContextView::Context& context) const
    {
        for (const uint32_t type : {mNodeType, uint32_t{NUXO_KEY_EXTERNAL_STAGE}}) {
            const std::string typeName = NUXO::ItemUID::key2str(type);
            const bool hasType = std::any_of(context.nodes.begin(), context.nodes.end(),
                                             [&typeName](const auto& node) { return node.type == typeName; });
            if (hasType) addBoundariesOf(type, id, context); // otherwise the library would tell of the sources instead
        }
    }

    void addBoundariesOf(uint32_t type, int id, ContextView::Context& context) const
    {
        std::vector<IGraphConfig*> ports;
        static_cast<void>(GraphCameraUtil::getInputPorts(mKey, id, mGraph, ports, type)); // fails when there is none
        for (const IGraphConfig* const port : ports) context.inputs.push_back(boundaryOf(*port));
        ports.clear();
        static_cast<void>(GraphCameraUtil::getOutputPorts(mKey, id, mGraph, ports, type)); // likewise
        for (const IGraphConfig* const port : ports) context.outputs.push_back(boundaryOf(*port));
    }

    static ContextView::Boundary boundaryOf(const IGraphConfig& port)
    {
        ContextView::Boundary boundary;
        boundary.item = &port;
        boundary.port = endName(port);
        boundary.content = GraphCameraUtil::portGetContentType(&port);
        IGraphConfig* peer = nullptr;
        if (GraphCameraUtil::portGetPeer(&port, &peer) == StatusOk) boundary.peer = endName(*peer);
        return boundary;
    }

    // The library also looks for a terminal, whose lack is no matter here.
    static void setStates(ContextView::Context& context)
    {
        for (auto* const boundaries : {&context.inputs, &context.outputs}) {
            for (ContextView::Boundary& boundary : *boundaries) boundary.state = stateOf(*boundary.item);
        }
        takeLibraryLog();
    }

    void addCrossings(ContextView& view) const
    {
        for (const NamePair& names : isKnownToLibrary() ? crossingsOfLibrary() : crossingsOfBoundaries()) {
            ContextView::Crossing crossing;
            crossing.source = names.first;
            crossing.sink = names.second;
            crossing.from = contextOf(names.first);
            crossing.to = contextOf(names.second);
            crossing.content = GraphCameraUtil::portGetContentType(mGraph.getDescendantByString(names.first));
            view.crossings.push_back(crossing);
        }
    }

    std::vector<NamePair> crossingsOfLibrary() const
    {
        std::vector<NamePair> connections;
        std::vector<std::string> inputs;
        std::vector<std::string> outputs;
        static_cast<void>(GraphCameraUtil::getExecCtxConnectionPorts(&mGraph, connections, inputs,
                                                                     outputs)); // fails when there is none
        return connections;
    }

    // What the library tells of program groups in execution contexts, for the other graphs.
    std::vector<NamePair> crossingsOfBoundaries() const
    {
        std::vector<NamePair> crossings;
        std::set<NamePair> known;
        const auto add = [&](const std::string& source, const std::string& sink, const ContextView::Context& context) {
            const bool isInside =
                holds(context, source) && holds(context, sink); // between a group and an external stage
            if (!isInside && known.emplace(source, sink).second) crossings.emplace_back(source, sink);
        };
        for (const auto& [id, context] : mContexts) {
            for (const ContextView::Boundary& input : context.inputs) {
                if (!input.peer.empty()) add(input.peer, input.port, context);
            }
            for (const ContextView::Boundary& output : context.outputs) {
                const bool isOwn = holds(context, output.port); // the library may tell of the sources instead
                if (isOwn && !output.peer.empty()) add(output.port, output.peer, context);
            }
        }
        return crossings;
    }

    // The node that an end of a connection belongs to, null when there is none.
    const IGraphConfig* nodeAt(const std::string& endName) const
    {
        const IGraphConfig* const end = mGraph.getDescendantByString(endName);
        return end == nullptr || isSink(*end) ? end : end->getAncestor();
    }

    bool holds(const ContextView::Context& context, const std::string& endName) const
    {
        const IGraphConfig* const node = nodeAt(endName);
        return std::any_of(context.nodes.begin(), context.nodes.end(),
                           [node](const ContextView::Node& candidate) { return candidate.item == node; });
    }

    std::optional<int> contextOf(const std::string& endName) const
    {
        const IGraphConfig* const node = nodeAt(endName);
        return node == nullptr ? std::nullopt : optionalInteger(*node, mKey);
    }

    Session& mSession;
    const GraphConfigNode& mGraph;
    uint32_t mNodeType = NUXO_KEY_PROGRAM_GROUP;
    uint32_t mKey = NUXO_KEY_EXEC_CTX_ID;
    std::vector<const GraphConfigNode*> mGroups;
    std::map<int, ContextView::Context> mContexts;
    ContextView::Context mOutside;
};

} // namespace

ContextView viewContexts(Session& session, const GraphConfigNode& graph)
{
    return ContextViewer(session, graph).view();
}

} // namespace NuxoTool
