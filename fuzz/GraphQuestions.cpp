// SPDX-License-Identifier: Apache-2.0
#include "GraphQuestions.h"

#include "support/Fuzzing.h"
#include "support/PortFacts.h"
#include "support/TreeCopy.h"

#include <nuxo/nuxo.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <map>
#include <memory>
#include <set>

namespace fuzzing {

using NUXO::GraphCameraUtil;
using NUXO::GraphConfigNode;
using NUXO::GraphLumUtil;
using NUXO::IGraphConfig;
using NUXO::ZmtTevSimUtils;

// One node and what to ask it for.
struct Subject {
    Subject(const Interview& interview, const IGraphConfig& subject)
        : node(subject), shared(std::shared_ptr<const IGraphConfig>(), &subject), request(interview.mRequest),
          metadata(interview.mMetadata), mPlaces(interview.mPlaces)
    {
    }

    template <typename... Values> Outcome outcome(int64_t status, const Values&... values) const;

    const IGraphConfig& node;
    std::shared_ptr<const IGraphConfig> shared;
    const Request& request;
    std::vector<unsigned int>& metadata;

private:
    const Places& mPlaces;
};

template <typename... Values> Outcome Subject::outcome(int64_t status, const Values&... values) const
{
    Digest digest(mPlaces);
    (digest.add(values), ...);
    return {status, digest.value()};
}

namespace {

using Nodes = std::vector<IGraphConfig*>;

// Texts are empty without memory, and only then.
Outcome outcomeOfText(const Subject& subject, const std::string& text)
{
    return subject.outcome(text.empty() ? StatusNoMemory : StatusOk, text);
}

// Functions that are called alike share one way of asking.

template <int (*read)(const IGraphConfig*)> Outcome askNumber(const Subject& s)
{
    return s.outcome(read(&s.node));
}

template <typename Value, int (*read)(const IGraphConfig*, Value&, Value&)> Outcome askTwo(const Subject& s)
{
    Value first = 0;
    Value second = 0;
    const int status = read(&s.node, first, second);
    return s.outcome(status, first, second);
}

template <int (*list)(unsigned int, int, const IGraphConfig&, Nodes&, unsigned int)>
Outcome askBoundary(const Subject& s)
{
    Nodes ports;
    const int status = list(s.request.key, s.request.value, s.node, ports, s.request.nodeType);
    return s.outcome(status, ports);
}

Outcome askNames(const Subject& s)
{
    std::string nodeName;
    std::string name;
    const int status = NUXO::getPgAndPortNames(s.node, nodeName, name);
    return s.outcome(status, nodeName, name);
}

Outcome askPortById(const Subject& s)
{
    const IGraphConfig* const port = GraphCameraUtil::nodeGetPortById(&s.node, s.request.value);
    return s.outcome(StatusOk, port);
}

Outcome askPeer(const Subject& s)
{
    IGraphConfig* peer = nullptr;
    const int status = GraphCameraUtil::portGetPeer(&s.node, &peer);
    return s.outcome(status, peer);
}

Outcome askText(const Subject& s)
{
    return outcomeOfText(s, GraphCameraUtil::print(&s.node));
}

Outcome askFullName(const Subject& s)
{
    return outcomeOfText(s, GraphCameraUtil::getFullName(s.node));
}

Outcome askContentType(const Subject& s)
{
    const std::string type = GraphCameraUtil::portGetContentType(&s.node);
    return s.outcome(StatusOk, type); // files may give it as empty, too
}

Outcome askVirtual(const Subject& s)
{
    return s.outcome(GraphCameraUtil::portIsVirtual(&s.node) ? 1 : 0);
}

Outcome askDescriptor(const Subject& s)
{
    GraphCameraUtil::PortDescriptor descriptor;
    const int status = GraphCameraUtil::portGetDescriptor(&s.node, descriptor);
    return s.outcome(status, descriptor.name, descriptor.pgName, descriptor.direction, descriptor.enabled,
                     descriptor.terminalId, descriptor.width, descriptor.height, descriptor.format);
}

Outcome askKey(const Subject& s)
{
    return s.outcome(GraphCameraUtil::portGetKey(&s.node, s.request.key));
}

Outcome askEdge(const Subject& s)
{
    return s.outcome(GraphCameraUtil::isEdgePort(&s.node) ? 1 : 0);
}

Outcome askFormat(const Subject& s)
{
    unsigned int enabled = 0;
    unsigned int terminal = 0;
    unsigned int width = 0;
    unsigned int height = 0;
    unsigned int fourcc = 0;
    unsigned int bpl = 0;
    unsigned int bpp = 0;
    const int status = GraphCameraUtil::portGetFormat(&s.node, enabled, terminal, width, height, fourcc, bpl, bpp);
    return s.outcome(status, enabled, terminal, width, height, fourcc, bpl, bpp);
}

Outcome askDimensions(const Subject& s)
{
    int width = 0;
    int height = 0;
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    const int status = GraphCameraUtil::getDimensions(&s.node, &width, &height, &left, &top, &right, &bottom);
    return s.outcome(status, width, height, left, top, right, bottom);
}

Outcome askSensorType(const Subject& s)
{
    std::string type;
    const int status = GraphCameraUtil::sensorGetType(&s.node, type);
    return s.outcome(status, type);
}

Outcome askSources(const Subject& s)
{
    Nodes sources;
    const int status = GraphCameraUtil::getSourceNode(&s.node, sources);
    return s.outcome(status, sources);
}

Outcome askSinks(const Subject& s)
{
    Nodes sinks;
    const int status = GraphCameraUtil::graphGetSinksByName(s.request.text, &s.node, sinks);
    return s.outcome(status, sinks);
}

Outcome askContextIds(const Subject& s)
{
    std::set<int> ids;
    const int status = GraphCameraUtil::getExecCtxIds(s.node, ids);
    return s.outcome(status, ids);
}

Outcome askTuning(const Subject& s)
{
    std::map<int, int> tuning;
    const int status = GraphCameraUtil::getExecCtxIdsTuningMap(s.node, tuning);
    return s.outcome(status, tuning);
}

Outcome askConnections(const Subject& s)
{
    std::vector<std::pair<std::string, std::string>> connections;
    std::vector<std::string> inputs;
    std::vector<std::string> outputs;
    const int status = GraphCameraUtil::getExecCtxConnectionPorts(&s.node, connections, inputs, outputs);
    return s.outcome(status, connections, inputs, outputs);
}

Outcome askSubgraphPorts(const Subject& s)
{
    Nodes ports;
    const Request& r = s.request;
    const int status = GraphCameraUtil::getSubgraphPorts(r.key, r.value, r.value, s.node, ports, r.nodeType);
    return s.outcome(status, ports);
}

Outcome askInputPort(const Subject& s)
{
    IGraphConfig* port = nullptr;
    const Request& r = s.request;
    const int status = GraphCameraUtil::getInputPort(r.key, r.value, &s.node, &port, r.nodeType);
    return s.outcome(status, port);
}

Outcome askGroups(const Subject& s)
{
    Nodes groups;
    const int status = GraphCameraUtil::getProgramGroups(s.request.key, s.request.value, &s.node, groups);
    return s.outcome(status, groups);
}

Outcome askKernelCount(const Subject& s)
{
    unsigned int count = 0;
    const int status = GraphCameraUtil::getKernelCountInPg(&s.node, count);
    return s.outcome(status, count);
}

Outcome askKernel(const Subject& s)
{
    int uuid = 0;
    int id = 0;
    int enabled = 0;
    int rcb = 0;
    int branchPoint = 0;
    int sinkPort = 0;
    std::fill(s.metadata.begin(), s.metadata.end(), 0U);
    const int status = GraphCameraUtil::kernelGetValues(&s.node, &uuid, &id, s.metadata.data(), &enabled, &rcb,
                                                        &branchPoint, &sinkPort);
    return s.outcome(status, uuid, id, enabled, rcb, branchPoint, sinkPort, s.metadata);
}

Outcome askDump(const Subject& s)
{
    GraphCameraUtil::dumpNodeTree(&s.node, 1);
    return s.outcome(StatusOk);
}

Outcome askPortFrame(const Subject& s)
{
    qv_lum_frame_params p = {};
    const int status = GraphLumUtil::getPortFrameParams(p, s.shared, s.request.text);
    return s.outcome(status, p.cropped_image_width, p.cropped_image_height);
}

Outcome askSensorFrame(const Subject& s)
{
    qv_lum_frame_params p = {};
    const int status = GraphLumUtil::getSensorFrameParams(p, s.shared);
    return s.outcome(status, p.horizontal_crop_offset, p.vertical_crop_offset, p.cropped_image_width,
                     p.cropped_image_height, p.horizontal_scaling_numerator, p.horizontal_scaling_denominator,
                     p.vertical_scaling_numerator, p.vertical_scaling_denominator);
}

Outcome askClone(const Subject& s)
{
    IGraphConfig* copy = nullptr;
    const int status = ZmtTevSimUtils::cloneSettings(&s.node, &copy);
    const std::unique_ptr<IGraphConfig> owner(copy);
    return s.outcome(status, copy == nullptr ? 0 : copy->getDescendantCount());
}

Outcome askPalUuid(const Subject& s)
{
    int uuid = 0;
    const int status = ZmtTevSimUtils::getKernelPalUuid(&s.node, s.request.text, uuid);
    return s.outcome(status, uuid);
}

Outcome askKernels(const Subject& s)
{
    std::vector<ZmtTevSimUtils::KernelInfo> kernels;
    const int status = ZmtTevSimUtils::getKernelInfoList(s.node, kernels);
    return s.outcome(status, kernels);
}

Outcome askMuxes(const Subject& s)
{
    std::map<std::string, unsigned int> config;
    const int status = ZmtTevSimUtils::getMuxConfiguration(&s.node, s.request.value, config);
    return s.outcome(status, config);
}

constexpr Question kQuestions[] = {
    {"getPgAndPortNames", StatusMissingData, askNames},
    {"nodeGetPortById", StatusOk, askPortById},
    {"portGetPeer", StatusNoMemory, askPeer},
    {"print", StatusNoMemory, askText},
    {"getFullName", StatusNoMemory, askFullName},
    {"portGetContentType", StatusOk, askContentType},
    {"portGetDirection", 0, askNumber<GraphCameraUtil::portGetDirection>},
    {"portIsVirtual", 0, askVirtual},
    {"portGetFourCCInfo", StatusNoMemory, askTwo<unsigned int, GraphCameraUtil::portGetFourCCInfo>},
    {"portGetDescriptor", StatusNoMemory, askDescriptor},
    {"portGetKey", -1, askKey},
    {"portGetExecCtxId", -1, askNumber<GraphCameraUtil::portGetExecCtxId>},
    {"portGetStreamId", -1, askNumber<GraphCameraUtil::portGetStreamId>},
    {"isEdgePort", 0, askEdge},
    {"portGetInfo", StatusNoMemory, askTwo<unsigned int, GraphCameraUtil::portGetInfo>},
    {"portGetFormat", StatusNoMemory, askFormat},
    {"getDimensions", StatusNoMemory, askDimensions},
    {"sensorGetBinningFactor", StatusNoMemory, askTwo<int, GraphCameraUtil::sensorGetBinningFactor>},
    {"sensorGetScalingFactor", StatusNoMemory, askTwo<int, GraphCameraUtil::sensorGetScalingFactor>},
    {"sensorGetType", StatusNoMemory, askSensorType},
    {"getSourceNode", StatusNoMemory, askSources},
    {"graphGetSinksByName", StatusNoMemory, askSinks},
    {"getExecCtxIds", StatusNoMemory, askContextIds},
    {"getExecCtxIdsTuningMap", StatusNoMemory, askTuning},
    {"getExecCtxConnectionPorts", StatusNoMemory, askConnections},
    {"getSubgraphPorts", StatusNoMemory, askSubgraphPorts},
    {"getInputPorts", StatusNoMemory, askBoundary<GraphCameraUtil::getInputPorts>},
    {"getOutputPorts", StatusNoMemory, askBoundary<GraphCameraUtil::getOutputPorts>},
    {"getInputPort", StatusNoMemory, askInputPort},
    {"getProgramGroups", StatusNoMemory, askGroups},
    {"getKernelCountInPg", StatusNoMemory, askKernelCount},
    {"kernelGetValues", StatusNoMemory, askKernel},
    {"dumpNodeTree", StatusOk, askDump},
    {"getPortFrameParams", StatusNoMemory, askPortFrame},
    {"getSensorFrameParams", StatusNoMemory, askSensorFrame},
    {"cloneSettings", StatusNoMemory, askClone},
    {"getKernelPalUuid", StatusNoMemory, askPalUuid},
    {"getKernelInfoList", StatusNoMemory, askKernels},
    {"getMuxConfiguration", StatusNoMemory, askMuxes},
};

} // namespace

Interview::Interview(const std::vector<GraphConfigNode*>& nodes, const Request& request)
    : mNodes(nodes), mPlaces(nodes), mRequest(request)
{
    size_t longest = 0;
    for (const GraphConfigNode* const node : nodes) {
        longest = std::max(longest, textOf(node, NUXO_KEY_METADATA).value_or("").size());
    }
    mMetadata.resize(longest + 1);
}

size_t Interview::questions()
{
    return std::size(kQuestions);
}

const Question& Interview::question(size_t number)
{
    return kQuestions[number];
}

Outcome Interview::ask(size_t node, size_t question) const
{
    return kQuestions[question].ask(Subject(*this, *mNodes[node]));
}

void checkRepeatable(const std::vector<GraphConfigNode*>& nodes, size_t node, const Request& request)
{
    const TreeCopy copy(*nodes.front());
    const Interview original(nodes, request);
    const Interview again(copy.nodes(), request);
    for (size_t i = 0; i < Interview::questions(); ++i) {
        const bool isSame = original.ask(node, i) == again.ask(node, i);
        requireOf(isSame, Interview::question(i).name, "a copy answers like the original");
    }
}

void requireOf(bool holds, const char* name, const char* rule)
{
    if (!holds) std::fprintf(stderr, "%s\n", name);
    require(holds, rule);
}

} // namespace fuzzing
