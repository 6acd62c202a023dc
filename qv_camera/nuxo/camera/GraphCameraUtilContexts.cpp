// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/camera/PortReading.h>
#include <nuxo/tree/NodeReading.h>
#include <nuxo/tree/TypeNames.h>

#include <string>

namespace NUXO {

namespace {

// Of the node that the port belongs to; a virtual sink is that node itself.
int keyOfNode(const IGraphConfig* port, uint32_t key)
{
    if (port == nullptr) {
        NUXO_ERROR("Invalid Node, cannot get the port execCtx id"); // whatever the key, as readers of the log know it
        return kNoContext;
    }
    std::string type;
    if (!fetch(*port, NUXO_KEY_TYPE, type)) {
        NUXO_ERROR("Failed to get Node Type");
        return kNoContext;
    }
    const IGraphConfig* const node = type == kTypeSink ? port : port->getAncestor();
    if (node == nullptr) {
        NUXO_ERROR("Failed to get port's ancestor");
        return kNoContext;
    }
    return integerOr(node, key, kNoContext);
}

int streamOf(const IGraphConfig* port)
{
    const int stream = keyOfNode(port, NUXO_KEY_STREAM_ID);
    if (stream < 0) NUXO_ERROR("Failed to get %s for port %s", "stream_id", GraphCameraUtil::print(port).c_str());
    return stream;
}

// The execution context or, in graphs without, the stream.
int contextOf(const IGraphConfig* port)
{
    const int context = keyOfNode(port, NUXO_KEY_EXEC_CTX_ID);
    return context >= 0 ? context : streamOf(port);
}

// What a port is connected to. A virtual sink is in no context.
struct OtherSide {
    int context = kNoContext;
    std::string type;
};

// False when it belongs to no node, or to one without context.
bool readOtherSide(const IGraphConfig& peer, OtherSide& side)
{
    if (GraphCameraUtil::portIsVirtual(&peer)) return true;
    const IGraphConfig* const node = peer.getAncestor();
    if (node == nullptr) {
        NUXO_ERROR("Failed to get peer's ancestor");
        return false;
    }
    if (!fetch(*node, NUXO_KEY_EXEC_CTX_ID, side.context) && !fetch(*node, NUXO_KEY_STREAM_ID, side.context)) {
        NUXO_ERROR("Failed to get stream ID of peer PG %s", GraphCameraUtil::print(node).c_str());
        return false;
    }
    static_cast<void>(fetch(*node, NUXO_KEY_TYPE, side.type)); // absent: neither hardware nor source
    return true;
}

} // namespace

bool isEdge(const IGraphConfig* port)
{
    const int direction = GraphCameraUtil::portGetDirection(port);
    IGraphConfig* peer = nullptr;
    const int status = resolvePeer(port, &peer);
    if (status == StatusNotFound) return false; // disabled and private ports lead nowhere
    if (status != StatusOk) {
        NUXO_ERROR("Failed to create fourcc info for source port");
        return false;
    }
    const int context = contextOf(port);
    if (context < 0) return false;
    OtherSide other;
    if (!readOtherSide(*peer, other)) return false;

    if (context != other.context) return true;
    return direction == kInput && (other.type == kTypeHw || other.type == kTypeSource);
}

int GraphCameraUtil::portGetKey(const IGraphConfig* port, unsigned int key)
{
    return unlessNoMemory<int>(kNoContext, [port, key] { return keyOfNode(port, key); });
}

int GraphCameraUtil::portGetExecCtxId(const IGraphConfig* port)
{
    return portGetKey(port, NUXO_KEY_EXEC_CTX_ID);
}

int GraphCameraUtil::portGetStreamId(const IGraphConfig* port)
{
    return unlessNoMemory<int>(kNoContext, [port] { return streamOf(port); });
}

bool GraphCameraUtil::isEdgePort(const IGraphConfig* port)
{
    return unlessNoMemory<bool>(false, [port] { return isEdge(port); });
}

int GraphCameraUtil::getExecCtxIds(const IGraphConfig& graph, std::set<int>& ids)
{
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        int status = StatusOk;
        forEachOfType(&graph, kTypeProgramGroup, [&](const IGraphConfig& group) {
            int context = 0;
            status = group.getValue(NUXO_KEY_EXEC_CTX_ID, context);
            if (status == StatusOk) ids.insert(context);
            return true;
        });
        return status;
    });
}

int GraphCameraUtil::getExecCtxIdsTuningMap(const IGraphConfig& graph, std::map<int, int>& tuning)
{
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        int status = StatusOk;
        forEachOfType(&graph, kTypeProgramGroup, [&](const IGraphConfig& group) {
            int context = 0;
            status = group.getValue(NUXO_KEY_EXEC_CTX_ID, context);
            if (status != StatusOk) {
                NUXO_DEBUG("Failed to get exec ctx ID");
                return true;
            }
            int mode = kNoContext;
            status = group.getValue(NUXO_KEY_TUNING_MODE, mode);
            if (status != StatusOk) NUXO_DEBUG("Failed to get tuning mode");
            const auto [entry, isNew] = tuning.emplace(context, mode); // the first group of a context decides
            if (!isNew && entry->second != mode) {
                NUXO_WARN("Mismatch in tuning mode (%d vs %d) for same execution Context %d!!!"
                          "                            Discard current tuning Mode",
                          entry->second, mode, context);
            }
            return true;
        });
        return status;
    });
}

} // namespace NUXO
