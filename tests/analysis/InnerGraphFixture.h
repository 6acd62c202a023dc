// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_ANALYSIS_INNER_GRAPH_FIXTURE_H
#define NUXO_TESTS_ANALYSIS_INNER_GRAPH_FIXTURE_H

#include "analysis/AnalysisFixture.h"
#include "analysis/GraphUtilAccess.h"

#include <map>
#include <memory>
#include <string>

namespace graphtest {

using Access = NUXO::GraphUtilAccess;
using BaseGraphNode = Access::BaseGraphNode;
using GraphNode = Access::GraphNode;
using ImagingNode = Access::ImagingNode;
using SubGraphInfo = Access::SubGraphInfo;

/// The neighbours in order as "name[port]", joined by blanks.
inline std::string text(const Access::Links& links)
{
    std::string all;
    for (const auto& link : links) all += (all.empty() ? "" : " ") + link.first->name + "[" + link.second + "]";
    return all;
}

/// Analyses whose steps and results a test reaches one by one.
class GraphStepsTest : public AnalysisTest {
protected:
    Access access() const { return Access(*mUtil); }

    /// What init does before it allocates records; the object must be a fresh one.
    int analyze(GdfVersion version = GdfVersionKVA6, uint32_t key = NUXO_KEY_STREAM_ID)
    {
        start(version, key);
        return access().analyzeGraphSettings();
    }

    /// A fresh object that knows what init stores before it starts the analysis.
    void start(GdfVersion version = GdfVersionKVA6, uint32_t key = NUXO_KEY_STREAM_ID)
    {
        mUtil = std::make_unique<GraphUtil>();
        access().settings() = mRoot.get();
        access().subgraphKey() = key;
        access().gdfVersion() = version;
        access().pgKey() = version == GdfVersionKVA7 ? NUXO_KEY_COMPUTE_BLOCK : NUXO_KEY_PROGRAM_GROUP;
    }

    /// The outer graph of the loaded nodes and connections, with nothing removed.
    void addOuterGraph()
    {
        start();
        for (auto it = mRoot->begin(); it != mRoot->end(); ++it) {
            if (it->second->type != GraphConfigItem::NODE) continue;
            access().addGraphNode(static_cast<GraphConfigNode&>(*it->second));
        }
        GraphConfigNode& graph = *node("graph");
        for (auto it = graph.begin(); it != graph.end(); ++it) {
            if (it->first != NUXO_KEY_CONNECTION) continue;
            access().addGraphConnection(static_cast<GraphConfigNode&>(*it->second));
        }
        clearLog();
    }

    GraphNode& outerNode(const std::string& name) const { return *access().graphNodes().at(name); }
    SubGraphInfo& subGraph(int id) const { return *access().subGraphs().at(id); }
    ImagingNode& innerNode(int id, const std::string& name) const { return *subGraph(id).imagingNodes.at(name); }

    /// The nodes of an inner graph in order, each as "key kind flags=n > child[port] < parent[port]". A neighbour is called
    /// by its key, and "DANGLING" when the graph does not hold it.
    static Lines innerGraph(const SubGraphInfo& sg)
    {
        std::map<const BaseGraphNode*, std::string> keys;
        for (const auto& entry : sg.imagingNodes) keys[entry.second.get()] = entry.first;
        const auto links = [&keys](const std::string& sign, const Access::Links& neighbours) {
            std::string all;
            for (const auto& link : neighbours) {
                const auto known = keys.find(link.first);
                all += " " + sign + " " + (known == keys.end() ? "DANGLING" : known->second) + "[" + link.second + "]";
            }
            return all;
        };
        Lines all;
        for (const auto& entry : sg.imagingNodes) {
            const ImagingNode& node = *entry.second;
            const std::string flags = node.flags == 0 ? "" : " flags=" + std::to_string(node.flags);
            all.push_back(entry.first + " " + kind(node.type) + flags + links(">", node.children) +
                          links("<", node.parents));
        }
        return all;
    }
    Lines innerGraph(int id) const { return innerGraph(subGraph(id)); }

private:
    static std::string kind(Access::ImagingNodeType type)
    {
        static const char* const kinds[] = {"kernel", "mux", "demux", "split", "input", "output", "any"};
        return kinds[type];
    }
};

} // namespace graphtest

#endif
