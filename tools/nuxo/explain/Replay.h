// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_EXPLAIN_REPLAY_H
#define NUXO_TOOL_EXPLAIN_REPLAY_H

#include "explain/TracedTree.h"

#include <nuxo/tree/GraphConfigNode.h>

#include <map>
#include <memory>
#include <string>

namespace NuxoTool {

/// Makes the graph of a setting once more, by the same rules as GraphQueryManager::createGraph, and notes at every item
/// what had a say in it. Only for settings whose graph could be built; what building refuses is passed over here.
class Replay {
public:
    /// @param descriptor  root of the descriptor's tree; must outlive the result, as must @p settings
    /// @param settings    the `settings` node
    Replay(const NUXO::GraphConfigNode& descriptor, const NUXO::GraphConfigNode& settings);

    std::unique_ptr<TracedNode> run();

private:
    /// An end of a connection: a node, and a port of it unless the text names just a node.
    struct End {
        explicit End(const std::string& text);
        uint32_t node = NUXO_KEY_NA;
        uint32_t port = NUXO_KEY_NA;
        bool hasPort = false;
    };
    struct Link {
        const TracedNode& element;
        const TracedItem& sourceItem; ///< attributes of the element
        const TracedItem& sinkItem;
    };
    /// A connection that the setting leaves out.
    struct Omission {
        const NUXO::ItemEntry* element;
        std::string why;
    };

    const TracedNode* findGraph() const;
    void addGraphElement(const TracedNode& graph);
    void connectAll(const TracedNode& graph);
    void connectDynamic(const Link& link);
    void connectStatic(const Link& link);
    void omit(const Link& link, const std::string& why);
    /// @param redirection  the `peer` of the setting that names another sink than the connection does, or null
    void join(const Link& link, const End& source, TracedNode& sourceNode, const End& sink, bool isStatic,
              const TracedItem* redirection);
    static void addPeer(TracedNode& end, const TracedItem& other, const Link& link, const TracedItem* redirection);
    static void claimVirtualSink(TracedNode& sink, const TracedNode& source);
    static void propagate(const TracedNode& from, TracedNode& to, uint32_t key);

    TracedNode* copyDescriptorNode(uint32_t key);
    std::unique_ptr<TracedItem> buildFromBase(const TracedItem& node, const std::string& baseName) const;

    /// The item at the path, an attribute made there if there is none; null when it cannot be made.
    TracedItem* findOrCreate(const NUXO::ItemUID& path);
    void applyOverrides(const TracedNode& graph);
    void disableUnusedPorts();
    void disableIfUnused(TracedNode& port);
    void applySensorMode();

    std::unique_ptr<TracedNode> mDescriptor;
    std::unique_ptr<TracedNode> mSettings;
    std::unique_ptr<TracedNode> mSensorModes; ///< null when the file has none
    TracedNode* mNodes = nullptr;             ///< the descriptor's
    std::unique_ptr<TracedNode> mResult;
    std::map<std::string, Omission> mOmissions; ///< by the end's text
};

} // namespace NuxoTool

#endif
