// SPDX-License-Identifier: Apache-2.0
// Internal to graph construction: making connections. Lets std::bad_alloc and number-conversion exceptions out.
#ifndef NUXO_QUERY_CONNECTION_BUILDER_H
#define NUXO_QUERY_CONNECTION_BUILDER_H

#include <nuxo/query/BaseConversion.h>
#include <nuxo/tree/GraphConfigNode.h>
#include <nuxo/tree/KeyCache.h>

#include <cstdint>
#include <string>

namespace NUXO {

/// One connection as the descriptor spells it, and where.
struct Connection {
    const std::string& source;
    const std::string& sink;
    SourcePosition position;
};

/// Copies the ends' nodes from the descriptor into the result and writes the `peer` texts on both ends.
class ConnectionBuilder {
public:
    /// @param descriptorNodes  the descriptor's `nodes`
    /// @param settings         the `settings` node, null when only static connections are made
    /// @param settingsKey      its key, for messages
    /// @param keys             where to look names up
    ConnectionBuilder(GraphConfigNode& descriptorNodes, const GraphConfigNode* settings, int32_t settingsKey,
                      GraphConfigNode& result, KeyCache& keys)
        : mNodes(descriptorNodes), mSettings(settings), mSettingsKey(settingsKey), mResult(result), mKeys(keys)
    {
    }

    /// A connection whose ends must be active in the setting.
    int connectDynamic(const Connection& connection);
    /// A connection that exists whatever the setting says.
    int connectStatic(const Connection& connection);

private:
    /// One end: a node, and a port of it unless the text names just a node.
    struct End {
        End(const std::string& text, KeyCache& keys);

        uint32_t node = NUXO_KEY_NA;
        uint32_t port = NUXO_KEY_NA;
        bool hasPort = false;
    };

    /// What a virtual sink takes from its source.
    using SinkPreparation = int (*)(GraphConfigNode& sink, const GraphConfigNode& source);

    GraphConfigNode* findSettingsItem(const End& source) const;
    GraphConfigNode* copySource(uint32_t key);
    GraphConfigNode* copySink(const End& sink, int& status);
    GraphConfigNode* findEnd(GraphConfigNode& node, const End& end);
    static int claimVirtualSink(GraphConfigNode& sink, const GraphConfigNode& source);
    static int shareStaticAttributes(GraphConfigNode& sink, const GraphConfigNode& source);
    int join(const End& source, GraphConfigNode& sourceNode, const std::string& sourcePeer, const End& sink,
             SinkPreparation prepareVirtualSink, const Connection& connection);
    int addPeers(const End& source, GraphConfigNode& sourceEnd, const std::string& sourcePeer, const End& sink,
                 GraphConfigNode& sinkEnd, const Connection& connection);

    GraphConfigNode& mNodes;
    const GraphConfigNode* mSettings;
    int32_t mSettingsKey;
    GraphConfigNode& mResult;
    KeyCache& mKeys;
};

/// See GraphQueryManager::copyNodeToResult and constructNodeFromBase.
GraphConfigNode* copyDescriptorNode(GraphConfigNode& descriptorNodes, uint32_t key, GraphConfigNode& result,
                                    KeyCache& keys);
GraphConfigNode* buildFromBase(const GraphConfigNode& node, const NodeIdentity& identity, const std::string& baseName,
                               const GraphConfigNode& descriptorNodes, KeyCache& keys);

/// See GraphQueryManager::propagateIntAttribute and propagateStrAttribute.
int propagateInteger(const IGraphConfig& from, IGraphConfig& to, uint32_t key);
int propagateText(const IGraphConfig& from, IGraphConfig& to, uint32_t key);

} // namespace NUXO

#endif
