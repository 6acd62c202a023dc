// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_QUERY_GRAPH_QUERY_MANAGER_H
#define NUXO_QUERY_GRAPH_QUERY_MANAGER_H

#include <qv_tools/qv_export.h>

#include <nuxo/tree/GraphConfigNode.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace NUXO {

/// Chooses settings from a parsed settings file and builds the graph of one of them.
///
/// Order of calls: both setters, any number of queries, createGraph on one result, destroyGraph. The manager owns neither
/// tree; keep both alive while it is in use. One manager belongs to one thread at a time. Nothing is thrown except where
/// stated.
class QV_EXPORT GraphQueryManager {
public:
    /// Criteria: path of an attribute below a `settings` node, and the text that it must hold (integers as decimal digits).
    using SearchItems = std::map<ItemUID, std::string>;

    GraphQueryManager() = default;

    /// Store the roots of the trees; no check, no copy.
    void setGraphSettings(const IGraphConfig* settings);
    void setGraphDescriptor(const IGraphConfig* descriptor);

    /// Warns when the settings' major version is not the descriptor's version. StatusOk, or StatusBadState when a tree is
    /// not set; a mismatch is a warning only.
    int validateSettingsAgainstDescriptor();

    /// Appends to @p result every `settings` node that matches: with @p strict all criteria, otherwise at least one.
    ///
    /// @param result  nodes of the settings tree, not owned; appended to, never cleared
    /// @return        StatusOk; StatusBadState when a tree is not set; StatusMissingData when @p result ends up empty;
    ///                StatusNoMemory
    int queryGraphs(const std::map<ItemUID, std::string>& searchItems, std::vector<IGraphConfig*>& result, bool strict);

    /// The same over @p candidates, typically an earlier result; null candidates are passed over.
    int queryGraphs(const std::map<ItemUID, std::string>& searchItems, const std::vector<IGraphConfig*>& candidates,
                    std::vector<IGraphConfig*>& result, bool strict);

    /// Adds to @p matchCount the number of criteria that @p settingsNode satisfies, with the strictness of the latest
    /// query. A failed read leaves the value of the criterion before, which then counts as this one's.
    void goThroughSearchItems(const std::map<ItemUID, std::string>& searchItems, const IGraphConfig* settingsNode,
                              unsigned short& matchCount);

    /// Builds the graph of one `settings` node.
    ///
    /// @param settingsNode  a result of queryGraphs
    /// @param graph         receives the new graph, owned by the caller, also when building failed: free it with
    ///                      destroyGraph. Untouched for null arguments.
    /// @return StatusOk; StatusBadArgument for null arguments, a missing descriptor, or a difference or override that gives
    ///         an integer a text that is none; StatusBadState for an unknown graph id, no source or an unknown sensor mode;
    ///         StatusMissingData for nodes, ports, types or sensor modes that are missing; StatusNoMemory; any other status
    ///         of the tree operations, for example StatusDuplicate for a sink that declares `direction`.
    int createGraph(IGraphConfig* settingsNode, IGraphConfig** graph);

    /// The work of createGraph, into the given empty node. Lets the exceptions of number conversion out.
    int getGraph(GraphConfigNode* settingsNode, GraphConfigNode* result);

    /// Frees a graph of createGraph; null is ignored.
    void destroyGraph(IGraphConfig* graph);

    /// Whether @p node is built on a base node, whose name is then stored in @p baseName.
    bool nodeHasBaseNode(IGraphConfig& node, std::string& baseName);

    /// Makes one connection whose ends must be active in the setting; an inactive one is skipped with StatusOk.
    int getConnectionData(const std::string& source, const std::string& sink, GraphConfigNode* settingsNode,
                          GraphConfigNode* result);

    /// Makes one connection that exists whatever the setting says.
    int getStaticConnectionData(const std::string& source, const std::string& sink, GraphConfigNode* result);

    /// Merges the defaults of @p sensorModes and then the mode whose `name` is @p modeId into @p sensorNode. StatusOk;
    /// StatusBadState for an unknown mode; StatusBadArgument for null nodes; the status of a failed merge.
    int addSensorModeData(GraphConfigNode* sensorNode, GraphConfigNode* sensorModes, const std::string& modeId);

    /// The child @p key of @p result, copied from the descriptor's nodes first if it is missing; null when that fails.
    IGraphConfig* copyNodeToResult(IGraphConfig* descriptorNodes, unsigned int key, GraphConfigNode* result);

    /// A new node, owned by the caller: a copy of the base node @p baseName with the differences of @p node; null when that
    /// fails.
    IGraphConfig* constructNodeFromBase(IGraphConfig* node, std::string& baseName, IGraphConfig* descriptorNodes);

    /// Copy one attribute, creating it on @p to when absent. StatusOk; the status of reading @p from; StatusNotFound when
    /// @p to has it but no option allows the value; StatusBadArgument for null nodes.
    int propagateIntAttribute(IGraphConfig* from, IGraphConfig* to, unsigned int key);
    int propagateStrAttribute(IGraphConfig* from, IGraphConfig* to, unsigned int key);

private:
    struct QV_LOCAL Build;

    bool mStrictQuery = false;
    const IGraphConfig* mGraphSettings = nullptr;
    const IGraphConfig* mGraphDescriptor = nullptr;
    int32_t mSettingsKey = 0;
};

} // namespace NUXO

#endif
