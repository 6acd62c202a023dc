// SPDX-License-Identifier: Apache-2.0
// Which streams there are and how they feed each other.
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/camera/PortReading.h>
#include <nuxo/kernels/KernelSteps.h>
#include <nuxo/kernels/ZmtTevUtils.h>
#include <nuxo/tree/NodeReading.h>
#include <nuxo/tree/TypeNames.h>

#include <set>

namespace NUXO {

namespace {

constexpr int kNoStream = -1;

// The `type` that NodeIterator looks for: a fresh one takes the key 0 for no type at all.
std::string typeName(uint32_t nodeType)
{
    return nodeType == NUXO_KEY_NA ? "" : ItemUID::key2str(nodeType);
}

void appendAttribute(std::vector<int>& out, const IGraphConfig* root, uint32_t key, uint32_t nodeType)
{
    std::set<int> known(out.begin(), out.end());
    forEachOfType(root, typeName(nodeType), [&](const IGraphConfig& node) {
        int value = 0;
        if (fetch(node, key, value) && known.insert(value).second) out.push_back(value);
        return true;
    });
}

void logChain(int context, const std::vector<std::pair<int, IGraphConfig*>>& chain)
{
    NUXO_DEBUG("Adding to stream-chain[%d] the following items:", context);
    for (size_t i = 0; i < chain.size(); ++i) {
        NUXO_DEBUG("stream-chain[%lu]: ctx %d - %s", static_cast<unsigned long>(i), chain[i].first,
                   nameOrFiledName(*chain[i].second).c_str());
    }
}

} // namespace

int ZmtTevUtils::getStreamIds(std::vector<int>& ids, bool fromSinks) const
{
    const uint32_t stageType = mVersion < GdfVersionKVA7 ? NUXO_KEY_PROGRAM_GROUP : NUXO_KEY_COMPUTE_BLOCK;
    return collectNodesIntAttribute(ids, NUXO_KEY_STREAM_ID, fromSinks ? NUXO_KEY_SINK : stageType);
}

int ZmtTevUtils::collectNodesIntAttribute(std::vector<int>& out, unsigned int key, unsigned int nodeType) const
{
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        appendAttribute(out, mRoot, key, nodeType);
        return StatusOk;
    });
}

int ZmtTevUtils::getUpstreamStreamId(int streamId, IGraphConfig** peer)
{
    IGraphConfig* upstream = nullptr;
    const int id = unlessNoMemory<int>(kNoStream, [&] { return upstreamOf(streamId, &upstream); });
    if (peer != nullptr && upstream != nullptr) *peer = upstream;
    return id;
}

// Streams are told by `stream_id` here, whatever groups the kernels.
int ZmtTevUtils::inputPortOf(int streamId, IGraphConfig** port) const
{
    return unlessExhausted(
        GraphCameraUtil::getInputPort(NUXO_KEY_STREAM_ID, streamId, mRoot, port, NUXO_KEY_PROGRAM_GROUP));
}

// The stream of what feeds a stream, and the port there as soon as it is known.
int ZmtTevUtils::upstreamOf(int streamId, IGraphConfig** peer) const
{
    IGraphConfig* input = nullptr;
    if (inputPortOf(streamId, &input) != StatusOk || resolvePeer(input, peer) != StatusOk) return kNoStream;
    return integerOr((*peer)->getAncestor(), NUXO_KEY_STREAM_ID, kNoStream);
}

int ZmtTevUtils::getStreamChains(StreamChains& chains)
{
    int status = StatusOk;
    forEachOfType(mRoot, kTypeSink, [&](const IGraphConfig& sink) {
        if (textOr(&sink, NUXO_KEY_CONTENT_TYPE, kPixelData) == kPixelData) status = addStreamChain(sink, chains);
        return status == StatusOk;
    });
    return status;
}

int ZmtTevUtils::addStreamChain(const IGraphConfig& sink, StreamChains& chains) const
{
    const int context = GraphCameraUtil::portGetStreamId(&sink);
    if (context < 0) {
        NUXO_ERROR("Sink node lacks exec ctx id attribute - fix your config");
        return StatusMissingData;
    }
    NUXO_DEBUG("%s is connected to exec-ctx-id %d", nameOrFiledName(sink).c_str(), context);
    if (chains.count(context) != 0) return StatusOk;

    NUXO_DEBUG("Generating stream chain for exec-ctx-id %d", context);
    IGraphConfig* peer = nullptr;
    if (resolvePeer(&sink, &peer) != StatusOk) {
        NUXO_ERROR("Failed to find peer port for %s", nameOrFiledName(sink).c_str());
        return StatusMissingObject;
    }
    StreamChain chain = {{context, peer}};
    extendUpstream(chain);
    logChain(context, chain);
    chains.emplace(context, std::move(chain));
    return StatusOk;
}

// Goes up until nothing feeds the context, or one that is in the chain does.
void ZmtTevUtils::extendUpstream(StreamChain& chain) const
{
    int context = chain.front().first;
    std::set<int> known = {context};
    NUXO_DEBUG("Trying to find upstream contexts from %d", context);
    while (true) {
        IGraphConfig* peer = nullptr;
        context = upstreamOf(context, &peer);
        if (context < 0) return;
        NUXO_DEBUG("Found ctx-id %d, with output %s", context, nameOrFiledName(*peer).c_str());
        if (!known.insert(context).second) return;
        chain.emplace_back(context, peer);
    }
}

} // namespace NUXO
