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

void appendAttribute(std::vector<int>& out, const IGraphConfig* root, uint32_t key, uint32_t nodeType)
{
    std::set<int> known(out.begin(), out.end());
    forEachOfType(root, typeText(nodeType), [&](const IGraphConfig& node) {
        int value = 0;
        if (fetch(node, key, value) && known.insert(value).second) out.push_back(value);
        return true;
    });
}

// The stream of what feeds an input port, and the port there as soon as it is known.
int feederOf(const IGraphConfig& input, IGraphConfig** peer)
{
    if (resolvePeer(&input, peer) != StatusOk) return kNoStream;
    return integerOr((*peer)->getAncestor(), NUXO_KEY_STREAM_ID, kNoStream);
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
    const int id = unlessNoMemory<int>(kNoStream, [&] {
        IGraphConfig* input = nullptr;
        const int status = unlessExhausted(
            GraphCameraUtil::getInputPort(NUXO_KEY_STREAM_ID, streamId, mRoot, &input, NUXO_KEY_PROGRAM_GROUP));
        return status == StatusOk ? feederOf(*input, &upstream) : kNoStream;
    });
    if (peer != nullptr && upstream != nullptr) *peer = upstream;
    return id;
}

// Once for all questions of a set-up: each would walk the whole graph.
ZmtTevUtils::StreamIndex ZmtTevUtils::indexStreams() const
{
    StreamIndex streams;
    forEachOfType(mRoot, kTypeProgramGroup, [&streams](IGraphConfig& pg) {
        int stream = 0;
        const int status = pg.getValue(NUXO_KEY_STREAM_ID, stream);
        if (status == StatusOk) {
            StreamGroups& groups = streams.groups[stream];
            groups.all.push_back(&pg);
            if (streams.unreadable == nullptr) ++groups.readableCount;
        } else if (streams.unreadable == nullptr) {
            streams.unreadable = &pg;
            streams.status = status;
        }
        return true;
    });
    return streams;
}

// Streams are told by `stream_id` here, whatever groups the kernels.
int ZmtTevUtils::findInputPort(const StreamIndex& streams, int streamId, IGraphConfig** port)
{
    const auto groups = streams.groups.find(streamId);
    if (groups == streams.groups.end()) return StatusBadArgument;
    return inputPortOf({NUXO_KEY_STREAM_ID, streamId, NUXO_KEY_PROGRAM_GROUP}, groups->second.all, port);
}

int ZmtTevUtils::getStreamChains(const StreamIndex& streams, StreamChains& chains) const
{
    int status = StatusOk;
    forEachOfType(mRoot, kTypeSink, [&](const IGraphConfig& sink) {
        if (textOr(&sink, NUXO_KEY_CONTENT_TYPE, kPixelData) == kPixelData)
            status = addStreamChain(sink, streams, chains);
        return status == StatusOk;
    });
    return status;
}

int ZmtTevUtils::addStreamChain(const IGraphConfig& sink, const StreamIndex& streams, StreamChains& chains)
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
    if (isTraced()) {
        extendUpstream(streams, {}, chain);
        logChain(context, chain);
    }
    chains.emplace(context, std::move(chain));
    return StatusOk;
}

// Goes up until nothing feeds the context, one that is in the chain does, or one that is known already.
void ZmtTevUtils::extendUpstream(const StreamIndex& streams, const std::set<int>& knownContexts, StreamChain& chain)
{
    int context = chain.front().first;
    std::set<int> contexts = {context};
    NUXO_DEBUG("Trying to find upstream contexts from %d", context);
    while (knownContexts.count(context) == 0) {
        IGraphConfig* input = nullptr;
        IGraphConfig* port = nullptr;
        if (findInputPort(streams, context, &input) != StatusOk) return;
        context = feederOf(*input, &port);
        if (context < 0) return;
        NUXO_DEBUG("Found ctx-id %d, with output %s", context, nameOrFiledName(*port).c_str());
        if (!contexts.insert(context).second) return;
        chain.emplace_back(context, port);
    }
}

} // namespace NUXO
