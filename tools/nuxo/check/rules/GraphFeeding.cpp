// SPDX-License-Identifier: Apache-2.0
#include "PortView.h"
#include "Text.h"
#include "TreeView.h"
#include "check/rules/GraphInspection.h"
#include "check/rules/GraphInspections.h"
#include "check/rules/GraphPorts.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

namespace {

// Which nodes frames reach, told by the connections between them.
class FeedingInspection {
public:
    explicit FeedingInspection(GraphInspection& inspection) : mInspection(inspection) {}

    void run()
    {
        for (const GraphConfigNode* const node : mInspection.nodes()) addConnections(*node);
        for (const GraphConfigNode* const node : mInspection.nodes()) {
            if (textOf(*node, NUXO_KEY_TYPE) == "source" && isOn(*node)) feed(*node);
        }
        bool isTold = false;
        const GraphConfigNode* first = nullptr;
        for (const GraphConfigNode* const node : mInspection.nodes()) {
            if (!isMissed(*node)) continue;
            if (first == nullptr) first = node;
            isTold = tell(*node) || isTold;
        }
        // Nodes that only feed each other.
        if (first != nullptr && !isTold && mExplained.empty()) report(*first, nullptr);
        for (const GraphConfigNode* const node : mInspection.nodes()) {
            if (mReached.count(node) == 0) mInspection.explain(*node); // sizes in it mean nothing
        }
    }

private:
    using Nodes = std::vector<const GraphConfigNode*>;

    void addConnections(const GraphConfigNode& node)
    {
        for (const GraphConfigNode* const port : childrenOfType(node, NUXO_KEY_PORT)) {
            if (!isOutput(*port)) continue;
            for (const Peer& peer : peersOf(*port)) {
                if (peer.end == nullptr) continue;
                const auto* const holder =
                    isSink(*peer.end) ? peer.end : dynamic_cast<const GraphConfigNode*>(peer.end->getAncestor());
                if (holder == nullptr || holder == &node) continue;
                mFeeders[holder].push_back(port);
                if (isOn(*port) && isOn(*peer.end)) mFed[&node].push_back(holder);
            }
        }
    }

    void feed(const GraphConfigNode& source)
    {
        Nodes open = {&source};
        mReached.insert(&source);
        while (!open.empty()) {
            const GraphConfigNode* const node = open.back();
            open.pop_back();
            for (const GraphConfigNode* const next : mFed[node]) {
                if (mReached.insert(next).second) open.push_back(next);
            }
        }
    }

    // Whether the setting asks for a node that no frame reaches. Connections that do not depend on the setting bring in
    // others.
    bool isMissed(const GraphConfigNode& node) const
    {
        const bool isSource = textOf(node, NUXO_KEY_TYPE) == "source";
        const bool isReached = mReached.count(&node) > 0;
        return !isReached && !isSource && mInspection.inSettings(node) != nullptr && !isMeantOff(node) &&
               !isOffByFile(node);
    }

    // Ends take over from the port which leads there that it is off.
    bool isMeantOff(const GraphConfigNode& item) const
    {
        const GraphConfigNode* const own = mInspection.inSettings(item);
        const std::optional<int> stated = own == nullptr ? std::nullopt : optionalInteger(*own, NUXO_KEY_ENABLED);
        if (stated) return stated == 0;
        const bool isNode = item.getAncestor() == &mInspection.graph();
        const ModelNode* const node =
            mInspection.setting().descriptor.node(isNode ? nameOf(item) : nameOf(*item.getAncestor()));
        const std::string path = isNode ? "enabled" : nameOf(item) + ":enabled";
        return node != nullptr && node->integer(path) == 0;
    }

    // The files switch off all of its inputs: nobody wants frames there.
    bool isOffByFile(const GraphConfigNode& node) const
    {
        if (isSink(node)) return false;
        const Nodes ports = childrenOfType(node, NUXO_KEY_PORT);
        return std::none_of(ports.begin(), ports.end(), [this](const GraphConfigNode* port) {
            return !isOutput(*port) && !isPrivate(*port) && !isMeantOff(*port);
        });
    }

    // False when something else is the cause.
    bool tell(const GraphConfigNode& node)
    {
        const bool isKnown = mInspection.isHalfConnected(node) || isConsequence(node);
        if (isKnown) {
            mExplained.insert(&node);
            return false;
        }
        const Nodes& feeders = mFeeders[&node];
        const auto dead =
            std::find_if(feeders.begin(), feeders.end(), [](const GraphConfigNode* port) { return !isOn(*port); });
        report(node, dead == feeders.end() ? nullptr : *dead);
        return true;
    }

    // Whether frames stop at a port or node ahead that is told of.
    bool isConsequence(const GraphConfigNode& node)
    {
        std::unordered_set<const IGraphConfig*> seen = {&node}; // only looked up
        Nodes open = {&node};
        while (!open.empty()) {
            const GraphConfigNode* const each = open.back();
            open.pop_back();
            for (const GraphConfigNode* const port : mFeeders[each]) {
                if (mInspection.isExplained(*port)) return true;
                const auto* const feeder = dynamic_cast<const GraphConfigNode*>(port->getAncestor());
                if (feeder == nullptr || mReached.count(feeder) > 0 || !seen.insert(feeder).second) continue;
                if (isMissed(*feeder) || mInspection.isHalfConnected(*feeder)) return true;
                open.push_back(feeder);
            }
        }
        return false;
    }

    void report(const GraphConfigNode& node, const GraphConfigNode* dead)
    {
        const std::string name = printable(nameOf(node));
        const char* const rule = isSink(node) ? kSinkUnfedRule : kNodeUnfedRule;
        const ModelGraph* const declared = mInspection.setting().setting.graph;
        if (declared != nullptr && !mInspection.isFedByGraph(node)) {
            // A fault of the graph, whichever setting uses the node.
            mInspection.report(rule, declared->element->document->locate(*declared->element),
                               "no connection of the graph leads to " + name +
                                   ", which settings use; expected one from the port that feeds it");
            return;
        }
        const IGraphConfig& place = mInspection.nearestInSettings(node);
        if (dead == nullptr) {
            mInspection.report(rule, place, 0,
                               "no frame reaches " + name + ", since nothing that leads to it gets any; expected a " +
                                   "path of connections from a source");
            return;
        }
        const std::string feeder = printable(endName(*dead));
        mInspection.report(rule, place, 0,
                           "no frame reaches " + name + ", since " + feeder +
                               ", which leads to it, is switched off; expected enabled=\"1\" at " + feeder);
        if (mInspection.placeOf(*dead, NUXO_KEY_ENABLED))
            mInspection.note(*dead, NUXO_KEY_ENABLED, feeder + " is switched off here");
        mInspection.explain(*dead);
    }

    GraphInspection& mInspection;
    std::unordered_map<const IGraphConfig*, Nodes> mFeeders; // output ports that lead to a node; only looked up
    std::unordered_map<const IGraphConfig*, Nodes> mFed;     // nodes that get what a node sends; likewise
    std::unordered_set<const IGraphConfig*> mReached;        // likewise
    std::unordered_set<const IGraphConfig*> mExplained;      // likewise
};

} // namespace

void inspectFeeding(GraphInspection& inspection)
{
    FeedingInspection(inspection).run();
}

} // namespace NuxoTool
