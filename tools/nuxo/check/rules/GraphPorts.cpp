// SPDX-License-Identifier: Apache-2.0
#include "FormatNames.h"
#include "PortView.h"
#include "Suggestion.h"
#include "Text.h"
#include "TreeView.h"
#include "check/rules/GraphInspection.h"
#include "check/rules/GraphInspections.h"
#include "check/rules/GraphPorts.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/tree/NodeIterator.h>

#include <algorithm>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

std::vector<Peer> peersOf(const GraphConfigNode& end)
{
    std::vector<Peer> peers;
    const IGraphConfig* const root = end.getRoot();
    for (auto it = end.begin(); it != end.end(); ++it) {
        std::string text;
        if (it->first != NUXO_KEY_PEER || it->second->getValue(text) != StatusOk) continue;
        const IGraphConfig* const named = root->getDescendantByString(text);
        peers.push_back({text, dynamic_cast<const GraphConfigNode*>(named), it});
    }
    return peers;
}

bool carriesPixels(const IGraphConfig& end)
{
    const std::string content = textOf(end, NUXO_KEY_CONTENT_TYPE);
    return content.empty() || content == "pixel_data";
}

bool isOn(const IGraphConfig& end)
{
    return integerOf(end, NUXO_KEY_ENABLED, 1) != 0;
}

bool isOutput(const IGraphConfig& port)
{
    return integerOf(port, NUXO_KEY_DIRECTION, 0) == 1;
}

bool isPrivate(const IGraphConfig& port)
{
    return integerOf(port, NUXO_KEY_PRIVATE, 0) != 0;
}

namespace {

class PortInspection {
public:
    explicit PortInspection(GraphInspection& inspection) : mInspection(inspection) {}

    void run()
    {
        for (const GraphConfigNode* const node : mInspection.nodes()) {
            if (isSink(*node)) inspectPeers(*node);
            for (const GraphConfigNode* const port : childrenOfType(*node, NUXO_KEY_PORT)) {
                inspectPeers(*port);
                inspectState(*port);
            }
        }
    }

private:
    void inspectPeers(const GraphConfigNode& end)
    {
        const bool isInUse = isOn(end) || mInspection.isSwitchedOff(end);
        if (!isInUse || isPrivate(end)) return;
        for (const Peer& peer : peersOf(end)) {
            if (peer.end != nullptr) continue;
            std::vector<std::string> names = mInspection.setting().descriptor.nodeNames();
            const bool isDeclared = std::find(names.begin(), names.end(), peer.text) != names.end();
            const std::string expected =
                isDeclared ? "an element '" + printable(peer.text) + "' in the setting, so that it is"
                           : "the name of a sink, or of a port with its node" + suggestionFor(peer.text, names);
            mInspection.report(kPeerRule, end, NUXO_KEY_PEER,
                               endName(end) + " has the peer " + named(peer.text) +
                                   ", which is not part of the graph; expected " + expected);
            mInspection.explain(end);
        }
    }

    // A port that the setting wants, and that leads nowhere.
    void inspectState(const GraphConfigNode& port)
    {
        if (!carriesPixels(port) || isPrivate(port) || !mInspection.isSwitchedOff(port)) return;
        const GraphConfigNode* const own = mInspection.inSettings(port);
        if (own == nullptr || mInspection.isExplained(port) || mInspection.isHalfConnected(port)) return;
        const std::vector<Peer> peers = peersOf(port);
        if (peers.empty() && isConsequence()) return;
        const std::string why = peers.empty() ? "nothing in this graph is connected to it"
                                              : printable(peers.front().text) + ", at its other end, is switched off";
        mInspection.report(kPortDisabledRule, *own, 0,
                           "the setting names " + endName(port) + ", but " + why +
                               ", so the port is switched off as well; expected " +
                               (peers.empty() ? "a connection of the graph, or enabled=\"0\""
                                              : "both ends on, or enabled=\"0\" at both"));
        mInspection.explain(port);
    }

    // Where the graph has no connection to a node of the setting, that is told instead of the port that should feed it.
    bool isConsequence() const
    {
        if (mInspection.isLeftOpen()) return true;
        return std::any_of(mInspection.nodes().begin(), mInspection.nodes().end(), [this](const GraphConfigNode* node) {
            const bool isSource = textOf(*node, NUXO_KEY_TYPE) == "source";
            return !isSource && mInspection.inSettings(*node) != nullptr && !mInspection.isFedByGraph(*node);
        });
    }

    GraphInspection& mInspection;
};

} // namespace

void inspectPorts(GraphInspection& inspection)
{
    PortInspection(inspection).run();
}

} // namespace NuxoTool
