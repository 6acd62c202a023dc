// SPDX-License-Identifier: Apache-2.0
#include "PortView.h"
#include "Text.h"
#include "TreeView.h"
#include "check/rules/GraphInspection.h"
#include "check/rules/GraphInspections.h"
#include "check/rules/GraphPorts.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

namespace {

struct LinkEnd {
    explicit LinkEnd(const std::string& text)
        : node(text.substr(0, text.find(':'))), port(node.size() == text.size() ? "" : text.substr(node.size() + 1))
    {
    }

    std::string node;
    std::string port;
};

struct InnerLink {
    LinkEnd source;
    LinkEnd destination;
};

// The links of a group with a switch, whatever the switches of the group choose.
class RoutingInspection {
public:
    RoutingInspection(GraphInspection& inspection, const GraphConfigNode& group)
        : mInspection(inspection), mGroup(group)
    {
        for (const GraphConfigNode* const link : linksOf(group))
            mLinks.push_back({LinkEnd(textOf(*link, NUXO_KEY_SOURCE)), LinkEnd(textOf(*link, NUXO_KEY_DESTINATION))});
    }

    void inspectMux(const GraphConfigNode& mux)
    {
        const std::optional<int> active = optionalInteger(mux, NUXO_KEY_ACTIVE_INPUT);
        const std::string name = nameOf(mux);
        Inputs inputs;
        for (const InnerLink& link : mLinks) {
            if (link.destination.node == name) inputs[link.destination.port].push_back(link.source);
        }
        if (!active || inputs.empty()) {
            if (!active) reportMissing(mux, "mux", "active_input", inputs);
            return;
        }
        const std::string chosen = std::to_string(*active);
        if (inputs.count(chosen) == 0) {
            report(mux, NUXO_KEY_ACTIVE_INPUT, "input " + chosen + ", to which no klink leads", inputs);
            return;
        }
        if (mInspection.groups().version < NUXO::GdfVersionKVA7 && inputs.size() > 1) {
            report(mux, NUXO_KEY_ACTIVE_INPUT,
                   "input " + chosen + ", but klinks lead to others too, which only generation 7 allows", inputs);
            return;
        }
        if (isFed(inputs[chosen])) return;
        Inputs fed = inputs;
        for (const auto& [port, sources] : inputs) {
            if (!isFed(sources)) fed.erase(port);
        }
        // Where none of them is fed, something else is the cause.
        if (!fed.empty()) report(mux, NUXO_KEY_ACTIVE_INPUT, "input " + chosen + ", which no frame reaches", fed);
    }

    void inspectDemux(const GraphConfigNode& demux)
    {
        const std::optional<int> active = optionalInteger(demux, NUXO_KEY_ACTIVE_OUTPUT);
        const std::string name = nameOf(demux);
        Inputs outputs;
        for (const InnerLink& link : mLinks) {
            if (link.source.node == name) outputs[link.source.port].push_back(link.destination);
        }
        if (!active || outputs.empty()) {
            if (!active) reportMissing(demux, "demux", "active_output", outputs);
            return;
        }
        const std::string chosen = std::to_string(*active);
        if (outputs.count(chosen) == 0) {
            report(demux, NUXO_KEY_ACTIVE_OUTPUT, "output " + chosen + ", from which no klink leads", outputs);
            return;
        }
        if (leadsOn(outputs[chosen])) return;
        Inputs useful = outputs;
        for (const auto& [port, destinations] : outputs) {
            if (!leadsOn(destinations)) useful.erase(port);
        }
        if (!useful.empty())
            report(demux, NUXO_KEY_ACTIVE_OUTPUT, "output " + chosen + ", which leads to no port that is on", useful);
    }

private:
    using Ends = std::vector<LinkEnd>;
    using Inputs = std::map<std::string, Ends>; // by the number of an input or output

    const IGraphConfig* itemOf(const LinkEnd& end) const { return mGroup.getDescendantByString(end.node); }

    // Whether frames come from one of the ends: back through the links to a port that is on.
    bool isFed(const Ends& sources) const
    {
        Ends open = sources;
        // The other outputs of a demux give nothing.
        const auto isShut = [this](const LinkEnd& end) { return !isTaken(end, NUXO_KEY_ACTIVE_OUTPUT); };
        open.erase(std::remove_if(open.begin(), open.end(), isShut), open.end());
        return reaches(open, [this](const std::string& node) {
            Ends ends;
            for (const InnerLink& link : mLinks) {
                if (link.destination.node == node && isOpen(link)) ends.push_back(link.source);
            }
            return ends;
        });
    }

    bool leadsOn(const Ends& destinations) const
    {
        Ends open = destinations;
        const auto isShut = [this](const LinkEnd& end) { return !isTaken(end, NUXO_KEY_ACTIVE_INPUT); };
        open.erase(std::remove_if(open.begin(), open.end(), isShut), open.end());
        return reaches(open, [this](const std::string& node) {
            Ends ends;
            for (const InnerLink& link : mLinks) {
                if (link.source.node == node && isOpen(link)) ends.push_back(link.destination);
            }
            return ends;
        });
    }

    bool isOpen(const InnerLink& link) const
    {
        return isTaken(link.source, NUXO_KEY_ACTIVE_OUTPUT) && isTaken(link.destination, NUXO_KEY_ACTIVE_INPUT);
    }

    // Whether a switch takes this way.
    bool isTaken(const LinkEnd& end, uint32_t attribute) const
    {
        const IGraphConfig* const item = itemOf(end);
        const std::optional<int> active = item == nullptr ? std::nullopt : optionalInteger(*item, attribute);
        return !active || std::to_string(*active) == end.port;
    }

    template <typename Next> bool reaches(Ends open, Next next) const
    {
        std::set<std::string> seen;
        while (!open.empty()) {
            const LinkEnd end = open.back();
            open.pop_back();
            const IGraphConfig* const item = itemOf(end);
            if (item == nullptr || !seen.insert(end.node).second) continue;
            const bool isPort = textOf(*item, NUXO_KEY_TYPE) == "port";
            if (isPort && isOn(*item)) return true;
            if (isPort) continue;
            const Ends further = next(end.node);
            open.insert(open.end(), further.begin(), further.end());
        }
        return false;
    }

    static std::string listed(const Inputs& ends)
    {
        std::string text;
        for (const auto& end : ends) text += (text.empty() ? "" : " or ") + printable(end.first);
        return text;
    }

    void report(const GraphConfigNode& item, uint32_t attribute, const std::string& what, const Inputs& possible)
    {
        if (mInspection.isExplained(mGroup)) return; // a demux and its mux are switched together
        mInspection.report(kInactiveMuxRule, item, attribute,
                           printable(nameOf(mGroup)) + ':' + printable(nameOf(item)) + " takes " + what +
                               "; expected " + listed(possible));
        mInspection.explain(mGroup);
    }

    void reportMissing(const GraphConfigNode& item, const char* kind, const char* attribute, const Inputs& possible)
    {
        mInspection.report(kInactiveMuxRule, item, 0,
                           std::string(kind) + ' ' + printable(nameOf(mGroup)) + ':' + printable(nameOf(item)) +
                               " has no " + attribute + ", so no frame passes; expected " +
                               (possible.empty() ? "a number" : listed(possible)));
        mInspection.explain(mGroup);
    }

    GraphInspection& mInspection;
    const GraphConfigNode& mGroup;
    std::vector<InnerLink> mLinks;
};

} // namespace

void inspectRouting(GraphInspection& inspection)
{
    for (const GraphConfigNode* const group : inspection.groups().nodes) {
        const std::vector<const GraphConfigNode*> muxes = childrenOfType(*group, NUXO_KEY_MUX);
        const std::vector<const GraphConfigNode*> demuxes = childrenOfType(*group, NUXO_KEY_DEMUX);
        if (muxes.empty() && demuxes.empty()) continue;
        if (inspection.setting().descriptor.node(nameOf(*group)) == nullptr) continue;
        RoutingInspection routing(inspection, *group);
        for (const GraphConfigNode* const mux : muxes) routing.inspectMux(*mux);
        for (const GraphConfigNode* const demux : demuxes) routing.inspectDemux(*demux);
    }
}

} // namespace NuxoTool
