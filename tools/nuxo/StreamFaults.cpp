// SPDX-License-Identifier: Apache-2.0
#include "StreamFaults.h"

#include "PortView.h"
#include "Text.h"
#include "TreeView.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>

#include <algorithm>
#include <map>
#include <set>

namespace NuxoTool {

using NUXO::GraphCameraUtil;
using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

namespace {

// Construction switches off ports without connection, where the files do not.
bool isUnconnected(Session& session, const GraphConfigNode& port)
{
    Location location;
    return GraphCameraUtil::portGetDirection(&port) == 0 && !stateOf(port).isPrivate &&
           integerOf(port, NUXO_KEY_ENABLED, 1) == 0 &&
           session.locator.locate(&port, NUXO_KEY_ENABLED, location) != StatusOk;
}

std::vector<const GraphConfigNode*> inputsOf(const GraphConfigNode& group)
{
    std::vector<const GraphConfigNode*> inputs;
    for (const GraphConfigNode* const port : childrenOfType(group, NUXO_KEY_PORT)) {
        if (GraphCameraUtil::portGetDirection(port) == 0 && !stateOf(*port).isPrivate) inputs.push_back(port);
    }
    return inputs;
}

StreamFault unconnected(const GraphConfigNode& port)
{
    return {&port, "nothing is connected to " + endName(port), StreamFault::Kind::Unconnected};
}

struct Crossing {
    const GraphConfigNode* port;
    int from;
    int to;
};

class StreamFaultFinder {
public:
    StreamFaultFinder(Session& session, const GraphConfigNode& graph, const ProgramGroups& groups)
        : mSession(session), mGraph(graph)
    {
        for (const GraphConfigNode* const group : groups.nodes) addGroup(*group);
        for (const Crossing& crossing : mCrossings) addCircle(crossing);
    }

    const std::vector<StreamFault>& faults() const { return mFaults; }

private:
    void addGroup(const GraphConfigNode& group)
    {
        const std::optional<int> stream = streamOf(group);
        if (!stream) mFaults.push_back({&group, nameOf(group) + " has no stream_id", StreamFault::Kind::NoStream});
        for (const GraphConfigNode* const port : childrenOfType(group, NUXO_KEY_PORT)) {
            if (isUnconnected(mSession, *port)) mFaults.push_back(unconnected(*port));
            const bool isOutput = GraphCameraUtil::portGetDirection(port) != 0 && stateOf(*port).isEnabled;
            if (isOutput && stream) addCrossings(*port, *stream);
        }
    }

    void addCrossings(const GraphConfigNode& port, int stream)
    {
        for (auto it = port.begin(); it != port.end(); ++it) {
            std::string peer;
            if (it->first != NUXO_KEY_PEER || it->second->getValue(peer) != StatusOk) continue;
            const IGraphConfig* const end = mGraph.getDescendantByString(peer);
            if (end == nullptr || isSink(*end) || end->getAncestor() == nullptr) continue;
            const std::optional<int> to = streamOf(*end->getAncestor());
            if (!to || *to == stream) continue;
            mCrossings.push_back({&port, stream, *to});
            mFeeds[stream].insert(*to);
        }
    }

    bool leadsTo(int from, int to)
    {
        std::set<int> seen = {from};
        std::vector<int> open = {from};
        while (!open.empty()) {
            const int stream = open.back();
            open.pop_back();
            if (stream == to) return true;
            for (const int next : mFeeds[stream]) {
                if (seen.insert(next).second) open.push_back(next);
            }
        }
        return false;
    }

    void addCircle(const Crossing& crossing)
    {
        if (!leadsTo(crossing.to, crossing.from)) return;
        mFaults.push_back({crossing.port,
                           endName(*crossing.port) + " leads from stream " + std::to_string(crossing.from) +
                               " to stream " + std::to_string(crossing.to) + ", which leads back",
                           StreamFault::Kind::Circle});
    }

    Session& mSession;
    const GraphConfigNode& mGraph;
    std::vector<Crossing> mCrossings;
    std::map<int, std::set<int>> mFeeds;
    std::vector<StreamFault> mFaults;
};

} // namespace

bool isStreamUnreached(const std::string& line)
{
    constexpr const char* starts[] = {
        "Traversal of meta graph did not reach all nodes ",
        "Could not find source node in subgraph ",
        "No resolution history stored for the input of PG ",
    };
    return std::any_of(std::begin(starts), std::end(starts),
                       [&line](const char* start) { return startsWith(line, start); });
}

std::vector<StreamFault> streamFaultsOf(Session& session, const GraphConfigNode& graph, const ProgramGroups& groups)
{
    return StreamFaultFinder(session, graph, groups).faults();
}

std::vector<StreamFault> unfedGroupsOf(Session& session, const ProgramGroups& groups)
{
    std::vector<StreamFault> unfed;
    for (const GraphConfigNode* const group : groups.nodes) {
        const std::vector<const GraphConfigNode*> inputs = inputsOf(*group);
        const auto isOff = [](const GraphConfigNode* port) { return !stateOf(*port).isEnabled; };
        const auto forgotten = std::find_if(inputs.begin(), inputs.end(),
                                            [&](const GraphConfigNode* port) { return isUnconnected(session, *port); });
        if (forgotten != inputs.end() && std::all_of(inputs.begin(), inputs.end(), isOff))
            unfed.push_back(unconnected(**forgotten));
    }
    return unfed;
}

} // namespace NuxoTool
