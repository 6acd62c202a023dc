// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/query/ConnectionBuilder.h>
#include <nuxo/tree/PathReader.h>
#include <nuxo/tree/TreeAccess.h>
#include <nuxo/tree/TypeNames.h>

namespace NUXO {

namespace {

constexpr int32_t kInput = 0; // `direction` of an input port

} // namespace

ConnectionBuilder::End::End(const std::string& text, KeyCache& keys)
{
    PathReader reader(text, &keys);
    hasPort = reader.next(node) && reader.next(port);
}

// The settings item of the connection's source, null after a warning when the setting lacks it.
GraphConfigNode* ConnectionBuilder::findSettingsItem(const End& source) const
{
    GraphConfigNode* const node = findChild(*mSettings, source.node);
    if (node == nullptr) {
        NUXO_WARN("WARNING: Node(%s) not found from settings(%d), ignoring connection.", mKeys.nameOf(source.node),
                  mSettingsKey);
        return nullptr;
    }
    if (!source.hasPort) return node;
    GraphConfigNode* const port = findChild(*node, source.port);
    if (port == nullptr) {
        NUXO_WARN("WARNING: Node(%s) port %s not found from settings(%d).", mKeys.nameOf(source.node),
                  mKeys.nameOf(source.port), mSettingsKey);
    }
    return port;
}

GraphConfigNode* ConnectionBuilder::copySource(uint32_t key)
{
    GraphConfigNode* const node = copyDescriptorNode(mNodes, key, mResult, mKeys);
    if (node == nullptr) {
        NUXO_ERROR("Failed to copy src node(%s) from descriptor to settings", mKeys.nameOf(key));
    }
    return node;
}

// Copies the sink's node; one without port is the connection's end itself and becomes an input.
GraphConfigNode* ConnectionBuilder::copySink(const End& sink, int& status)
{
    GraphConfigNode* const node = copyDescriptorNode(mNodes, sink.node, mResult, mKeys);
    if (node == nullptr) {
        NUXO_ERROR("Failed to copy dst node(%s) from descriptor to settings", mKeys.nameOf(sink.node));
        status = StatusMissingData;
        return nullptr;
    }
    status = sink.hasPort ? static_cast<int>(StatusOk) : node->addValue(NUXO_KEY_DIRECTION, kInput);
    return status == StatusOk ? node : nullptr;
}

GraphConfigNode* ConnectionBuilder::findEnd(GraphConfigNode& node, const End& end)
{
    if (!end.hasPort) return &node;
    GraphConfigNode* const port = findChild(node, end.port);
    if (port == nullptr) {
        NUXO_ERROR("Node(%s) has no port named '%s'", mKeys.nameOf(end.node), mKeys.nameOf(end.port));
    }
    return port;
}

// The end without port must be a virtual sink; it belongs to the stream of its source unless it says otherwise.
int ConnectionBuilder::claimVirtualSink(GraphConfigNode& sink, const GraphConfigNode& source)
{
    const std::string* const type = findText(sink, NUXO_KEY_TYPE);
    if (type == nullptr) {
        NUXO_ERROR("No type for connected peer node");
        return readFailure(sink, NUXO_KEY_TYPE);
    }
    if (*type != kTypeSink) {
        NUXO_ERROR("sink connection attribute without port '%s' not pointing to virtual sink", type->c_str());
        return StatusMissingData;
    }
    int32_t stream = 0;
    if (findInteger(sink, NUXO_KEY_STREAM_ID, stream)) return StatusOk;
    if (!findInteger(source, NUXO_KEY_STREAM_ID, stream)) {
        NUXO_ERROR("No stream_id set for connected peer");
        return readFailure(source, NUXO_KEY_STREAM_ID);
    }
    const int status = sink.addValue(NUXO_KEY_STREAM_ID, stream);
    if (status != StatusOk) {
        NUXO_ERROR("Failed to add stream ID to sink peer");
        return status;
    }
    setPositionOf(sink, NUXO_KEY_STREAM_ID, positionOf(source, NUXO_KEY_STREAM_ID));
    return StatusOk;
}

// What a virtual sink takes over from the source of a static connection; either may be missing there.
int ConnectionBuilder::shareStaticAttributes(GraphConfigNode& sink, const GraphConfigNode& source)
{
    const int context = propagateInteger(source, sink, NUXO_KEY_EXEC_CTX_ID);
    const int content = propagateText(source, sink, NUXO_KEY_CONTENT_TYPE);
    return context == StatusNoMemory || content == StatusNoMemory ? StatusNoMemory : StatusOk;
}

int ConnectionBuilder::addPeers(const End& source, GraphConfigNode& sourceEnd, const std::string& sourcePeer,
                                const End& sink, GraphConfigNode& sinkEnd, const Connection& connection)
{
    const std::string* const knownPeer = findText(sourceEnd, NUXO_KEY_PEER);
    if (knownPeer != nullptr) {
        NUXO_DEBUG("Node(%s) port '%s' already connected once to '%s'", mKeys.nameOf(source.node),
                   mKeys.nameOf(source.port), knownPeer->c_str());
    }
    TreeAccess::insertText(sourceEnd, NUXO_KEY_PEER, sourcePeer, connection.position);

    GraphConfigItem* const present = findItem(sinkEnd, NUXO_KEY_PEER);
    if (present != nullptr && present->type != GraphConfigItem::STRING) return StatusDuplicate;
    if (present != nullptr) {
        NUXO_DEBUG("Node(%s) port '%s' already connected once to '%s' adding new peer", mKeys.nameOf(sink.node),
                   mKeys.nameOf(sink.port), static_cast<GraphConfigStrAttribute*>(present)->value.c_str());
    }
    TreeAccess::insertText(sinkEnd, NUXO_KEY_PEER, connection.source, connection.position);
    return StatusOk;
}

// Makes a connection from a source that is in the result already.
int ConnectionBuilder::join(const End& source, GraphConfigNode& sourceNode, const std::string& sourcePeer,
                            const End& sink, SinkPreparation prepareVirtualSink, const Connection& connection)
{
    int status = StatusOk;
    GraphConfigNode* const sinkNode = copySink(sink, status);
    if (sinkNode == nullptr) return status;
    GraphConfigNode* const sourceEnd = findEnd(sourceNode, source);
    if (sourceEnd == nullptr) return StatusMissingData;
    GraphConfigNode* const sinkEnd = findEnd(*sinkNode, sink);
    if (sinkEnd == nullptr) return StatusMissingData;
    if (!sink.hasPort) status = prepareVirtualSink(*sinkEnd, sourceNode);
    return status == StatusOk ? addPeers(source, *sourceEnd, sourcePeer, sink, *sinkEnd, connection) : status;
}

int ConnectionBuilder::connectDynamic(const Connection& connection)
{
    const End source(connection.source, mKeys);
    End sink(connection.sink, mKeys);
    std::string sourcePeer = connection.sink;

    const GraphConfigNode* const settingsItem = findSettingsItem(source);
    if (settingsItem == nullptr) return StatusOk;
    GraphConfigNode* const sourceNode = copySource(source.node);
    if (sourceNode == nullptr) return StatusMissingData;
    int32_t enabled = 1;
    if (findInteger(*settingsItem, NUXO_KEY_ENABLED, enabled) && enabled == 0) {
        NUXO_DEBUG("Source port %s disabled, skip destination and peer processing", mKeys.nameOf(source.port));
        return StatusOk;
    }
    if (!sink.hasPort) {
        const std::string* const redirected = findText(*settingsItem, NUXO_KEY_PEER);
        if (redirected != nullptr) {
            sourcePeer = *redirected;
            sink.node = mKeys.keyOf(sourcePeer);
            NUXO_DEBUG("Overriding destination node %s with %s", mKeys.nameOf(sink.node), sourcePeer.c_str());
        } else {
            NUXO_DEBUG("Using default connection %s", connection.source.c_str());
        }
    }
    if (findChild(*mSettings, sink.node) == nullptr) {
        NUXO_WARN("Skipping port %s:%s for not being active in settings.", mKeys.nameOf(source.node),
                  mKeys.nameOf(source.port));
        return StatusOk;
    }
    return join(source, *sourceNode, sourcePeer, sink, claimVirtualSink, connection);
}

int ConnectionBuilder::connectStatic(const Connection& connection)
{
    const End source(connection.source, mKeys);
    const End sink(connection.sink, mKeys);
    GraphConfigNode* const sourceNode = copySource(source.node);
    if (sourceNode == nullptr) return StatusMissingData;
    return join(source, *sourceNode, connection.sink, sink, shareStaticAttributes, connection);
}

} // namespace NUXO
