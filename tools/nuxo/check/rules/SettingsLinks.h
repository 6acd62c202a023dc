// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_SETTINGS_LINKS_H
#define NUXO_TOOL_SETTINGS_LINKS_H

#include "model/DescriptorModel.h"
#include "model/SettingsModel.h"

#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace NuxoTool {

/// What becomes of a connection of the graph in one setting.
struct SettingLink {
    enum class State {
        Made,
        SourceMissing, ///< the setting lacks the node that it comes from
        PortMissing,   ///< the setting has that node, but not its port
        Disabled,      ///< the setting switches the port off
        SinkMissing    ///< the setting lacks the node where it leads
    };

    const ModelConnection* connection = nullptr;
    State state = State::Made;
    const XmlElement* source = nullptr; ///< the port, or the node where no port is named; null when it is missing
    std::string sinkName;               ///< node where it leads, which may be the `peer` of the port
    bool isRedirected = false;

    /// "front:main_out", or the node where the graph names no port.
    std::string sourcePath() const;
};

/// The connections of a graph that matter to one setting, by their ends: static ones, and those with a node of the setting
/// at an end.
class SettingLinks {
public:
    /// @param connections  in the order of the graph
    SettingLinks(const ModelSetting& setting, const std::vector<const ModelConnection*>& connections);
    SettingLinks(const SettingLinks&) = delete;
    SettingLinks& operator=(const SettingLinks&) = delete;

    /// In the order of the graph.
    const std::vector<SettingLink>& all() const { return mLinks; }
    /// Those that start at a port ("front:main_out"), or at a node where the graph names no port.
    const std::vector<const SettingLink*>& from(std::string_view source) const { return at(mBySource, source); }
    /// Those that lead to a node, or do so unless a setting redirects them.
    const std::vector<const SettingLink*>& to(std::string_view node) const { return at(mBySink, node); }
    /// Whether any lead to a node or come from it.
    bool isOnPath(std::string_view node) const { return mOnPath.count(node) > 0; }
    /// Whether a port is redirected to a node.
    bool isPeer(std::string_view node) const { return mPeers.count(node) > 0; }

private:
    using ByEnd = std::map<std::string, std::vector<const SettingLink*>, std::less<>>;
    static const std::vector<const SettingLink*>& at(const ByEnd& links, std::string_view end);

    std::vector<SettingLink> mLinks;
    ByEnd mBySource;
    ByEnd mBySink;
    std::set<std::string_view> mOnPath;
    std::set<std::string_view> mPeers;
};

/// The links of many settings. A setting of few nodes takes little time, however large its graph is.
class LinkTable {
public:
    explicit LinkTable(const DescriptorModel& descriptor) : mDescriptor(descriptor) {}

    /// None when the descriptor lacks the graph.
    SettingLinks linksOf(const ModelSetting& setting);
    /// Whether all ends of a graph's connections exist.
    bool isWhole(const ModelGraph& graph) { return indexOf(graph).isWhole; }
    /// Whether each element of the setting names something that the descriptor has, in the setting's graph, which is whole.
    /// What is said of connections makes no sense otherwise.
    bool namesAreKnown(const ModelSetting& setting, const SettingLinks& links);

private:
    struct GraphIndex {
        bool isWhole = false;
        std::vector<size_t> always;                             ///< static connections
        std::map<std::string_view, std::vector<size_t>> ofNode; ///< those at a node, static ones left out
    };
    const GraphIndex& indexOf(const ModelGraph& graph);

    const DescriptorModel& mDescriptor;
    std::map<const ModelGraph*, GraphIndex> mIndexes; // only looked up
};

} // namespace NuxoTool

#endif
