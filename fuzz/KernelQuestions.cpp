// SPDX-License-Identifier: Apache-2.0
#include "KernelQuestions.h"

#include "support/Fuzzing.h"
#include "support/KernelRules.h"
#include "support/PortFacts.h"
#include "support/TreeChecks.h"

#include <nuxo/nuxo.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <tuple>

namespace fuzzing {

using NUXO::GraphConfigNode;
using NUXO::GraphUtil;
using NUXO::IGraphConfig;
using NUXO::InnerGraphNode;
using NUXO::IspUtils;
using NUXO::ZmtTevUtils;

namespace {

constexpr size_t kMostIds = 12;
constexpr size_t kMostGroups = 40;
constexpr int kUnknownId = 12345;
constexpr size_t kMostOfType = 6;
constexpr size_t kMostFormats = 12;

std::vector<int> idsOf(const std::vector<GraphConfigNode*>& nodes)
{
    std::set<int> ids;
    for (const GraphConfigNode* const node : nodes) {
        for (const uint32_t key : {NUXO_KEY_STREAM_ID, NUXO_KEY_EXEC_CTX_ID}) {
            if (const std::optional<int> id = integerOf(node, key)) ids.insert(*id);
        }
        if (ids.size() >= kMostIds) break;
    }
    ids.insert({-1, 0, kUnknownId});
    return {ids.begin(), ids.end()};
}

NUXO::GdfVersion versionOf(const GraphConfigNode& root)
{
    const std::shared_ptr<IspUtils> utils = IspUtils::Factory(&root);
    require(utils != nullptr, "there are version utilities for any graph");
    return utils->getKvaVersion();
}

// Collects answers. Records that are handed out must stay what they are until the object is initialised again.
class Notes {
public:
    explicit Notes(const KernelGraph& graph) : mPlaces(graph.places()) {}

    template <typename... Values> void add(const char* question, const Values&... values)
    {
        Digest digest(mPlaces);
        (digest.add(values), ...);
        mTranscript.emplace_back(question, digest.value());
    }

    void addRecords(const char* question, int status, const qv_isp_zmt_program_group& group)
    {
        add(question, status, group);
        mHandedOut.push_back({group, mTranscript.back().second, status});
    }

    void checkRecordsStay() const
    {
        for (const HandedOut& handedOut : mHandedOut) {
            Digest digest(mPlaces);
            digest.add(handedOut.status);
            digest.add(handedOut.group);
            require(digest.value() == handedOut.digest, "records stay as they are");
        }
    }

    void forgetRecords() { mHandedOut.clear(); }
    Transcript take() { return std::move(mTranscript); }

private:
    struct HandedOut {
        qv_isp_zmt_program_group group;
        uint64_t digest;
        int status;
    };

    const Places& mPlaces;
    Transcript mTranscript;
    std::vector<HandedOut> mHandedOut;
};

qv_isp_zmt_program_group untouched()
{
    qv_isp_zmt_program_group group = {};
    group.operation_mode = kUnknownId;
    return group;
}

bool isUntouched(const qv_isp_zmt_program_group& group)
{
    return group.kernel_count == 0 && group.run_kernels == nullptr && group.operation_mode == kUnknownId;
}

void addInnerGraph(Notes& notes, const GraphUtil& analysis, int id)
{
    std::vector<InnerGraphNode> nodes;
    const int status = analysis.getInnerGraph(id, nodes);
    notes.add("getInnerGraph", status);
    for (const InnerGraphNode& node : nodes) {
        notes.add("inner node", node.name, static_cast<int>(node.kind), node.node, node.disabled);
        for (const InnerGraphNode::Link& link : node.links) {
            require(link.sink < nodes.size(), "a link leads to a node");
            notes.add("inner link", uint64_t{link.sink}, link.output, link.hasHistory, link.history);
        }
    }
}

void askLimits(Notes& notes, ZmtTevUtils& utils, const std::vector<int>& ids)
{
    for (const int id : ids) {
        qv_view_mbr_limits_t limits;
        std::memset(&limits, 0, sizeof limits);
        const int status = utils.getMbrData(id, &limits);
        uint32_t words[sizeof limits / sizeof(uint32_t)];
        std::memcpy(words, &limits, sizeof limits);
        notes.add("getMbrData", status, std::vector<unsigned int>(std::begin(words), std::end(words)));
    }
    notes.add("getMbrData of null", utils.getMbrData(0, nullptr));
    std::string text;
    const int tagStatus = utils.getSensorCmcId(text);
    notes.add("getSensorCmcId", tagStatus, text);
    float gain = 0;
    const int dolStatus = utils.getDolInfo(gain, text);
    notes.add("getDolInfo", dolStatus, text, std::to_string(gain));
    std::map<int, std::vector<std::tuple<int, std::string>>> routing;
    const int routingStatus = utils.getRoutingInfo(routing);
    notes.add("getRoutingInfo", routingStatus, routing);
}

void askStreams(Notes& notes, ZmtTevUtils& utils, const std::vector<int>& ids)
{
    for (const bool fromSinks : {true, false}) {
        std::vector<int> streams;
        const int status = utils.getStreamIds(streams, fromSinks);
        notes.add("getStreamIds", status, streams);
        require(std::set<int>(streams.begin(), streams.end()).size() == streams.size(), "a stream is listed once");
    }
    std::vector<int> values = {1};
    const int status = utils.collectNodesIntAttribute(values, NUXO_KEY_ID, NUXO_KEY_PORT);
    notes.add("collectNodesIntAttribute", status, values);
    for (const int id : ids) {
        IGraphConfig* peer = nullptr;
        const int upstream = utils.getUpstreamStreamId(id, &peer);
        notes.add("getUpstreamStreamId", upstream, static_cast<const IGraphConfig*>(peer));
    }
}

// Returns whether any stream has records.
void askRecords(Notes& notes, ZmtTevUtils& utils, const KernelGraph& graph)
{
    for (const int id : graph.ids()) {
        qv_isp_zmt_program_group group = untouched();
        utils.getProgramGroup(id, group);
        require(group.kernel_count == 0 || group.run_kernels != nullptr, "records are there");
        notes.addRecords("getProgramGroup", StatusOk, group);
    }
    for (const IGraphConfig* const node : graph.groups()) {
        qv_isp_zmt_program_group group = untouched();
        const int status = utils.getProgramGroup(node, group);
        if (status != StatusOk) group = untouched();
        notes.addRecords("getProgramGroup of a node", status, group);
    }
}

void checkStreams(ZmtTevUtils& utils, const KernelGraph& graph)
{
    for (const int id : graph.ids()) {
        if (id < 0) continue;
        qv_isp_zmt_program_group group = {};
        utils.getProgramGroup(id, group);
        if (group.kernel_count != 0) checkStreamRecords(graph.root(), id, group);
    }
}

void askKernel(Notes& notes, const IGraphConfig& node)
{
    int values[8] = {};
    unsigned int metadata[QV_ISP_ZMT_METADATA_COUNT] = {};
    const int status = ZmtTevUtils::kernelGetValues(&node, &values[0], &values[1], metadata, &values[2], &values[3],
                                                    &values[4], &values[5], &values[6]);
    notes.add("kernelGetValues", status, std::vector<int>(std::begin(values), std::end(values)),
              std::vector<unsigned int>(std::begin(metadata), std::end(metadata)));
    const bool hasResolutions = ZmtTevUtils::kernelHasResolutions(&node);
    qv_isp_zmt_resolution_info first = {};
    const int firstStatus = ZmtTevUtils::kernelGetResolutions(&node, first);
    std::map<std::string, qv_isp_zmt_resolution_info> all;
    const int allStatus = ZmtTevUtils::kernelGetResolutions(&node, all);
    qv_isp_zmt_run_kernels record = {};
    const int bppStatus = ZmtTevUtils::kernelGetBppInfo(&node, record);
    notes.add("kernelGetResolutions", hasResolutions, firstStatus, first, allStatus, all, bppStatus, record);
    require(firstStatus != StatusOk || allStatus == StatusOk, "what gives one resolution gives all");
    record.resolution_info = &first;
    ZmtTevUtils::dumpKernels(&record, 1);
}

void askSource(Notes& notes, IGraphConfig& node)
{
    qv_isp_zmt_resolution_info history = {};
    for (const auto calculate :
         {&ZmtTevUtils::calculateSensorResolutionHistory, &ZmtTevUtils::calculateTPGResolutionHistory,
          &ZmtTevUtils::calculateBufSrcResolutionHistory}) {
        const int status = calculate(node, history);
        notes.add("history of a source", status, history);
    }
    const int status = ZmtTevUtils::sourceGetResolutionHistory(history, node);
    const int csiStatus = ZmtTevUtils::getCsiDimensions(node, history);
    ZmtTevUtils::SensorModeInfo mode;
    notes.add("sensor mode", status, csiStatus, history, ZmtTevUtils::getSensorModeInfo(node, mode));
}

// Applying changes the graph, so it is a copy's.
void applyFormats(Notes& notes, const KernelGraph& graph)
{
    const std::unique_ptr<GraphConfigNode> copied(graph.root().copy());
    const std::shared_ptr<IspUtils> utils = IspUtils::Factory(copied.get());
    size_t applied = 0;
    const std::vector<GraphConfigNode*> nodes = nodesOf(copied.get());
    for (const GraphConfigNode* const node : nodes) {
        if (textOf(node, NUXO_KEY_TYPE) != "port" || ++applied > kMostFormats) continue;
        notes.add("applyFormat", utils->applyFormat(node, "NV12"));
        notes.add("applyCompression", utils->applyCompression(node, "YUV420_8_SP_C"),
                  utils->applyCompression(node, "NV12"));
    }
    notes.add("apply to null", utils->applyFormat(nullptr, ""), utils->applyCompression(nullptr, "YUV420_8_SP_C"));
    if (nodes.size() <= kMostNodes) checkTree(nodesOf(copied.get()));
}

} // namespace

KernelGraph::KernelGraph(std::unique_ptr<GraphConfigNode> root)
    : mRoot(std::move(root)), mNodes(nodesOf(mRoot.get())), mPlaces(mNodes), mIds(idsOf(mNodes)),
      mVersion(versionOf(*mRoot))
{
}

std::vector<const IGraphConfig*> KernelGraph::groups() const
{
    std::vector<const IGraphConfig*> groups = {nullptr, mRoot.get()};
    for (const GraphConfigNode* const node : mNodes) {
        const std::string type = textOf(node, NUXO_KEY_TYPE).value_or("");
        if (type == "program_group" || type == "compute_block" || type == "sink") groups.push_back(node);
        if (groups.size() >= kMostGroups) break;
    }
    return groups;
}

bool KernelGraph::hasKernelLinks() const
{
    const std::vector<IGraphConfig*> groups = childrenOfType(mRoot.get(), NUXO_KEY_PROGRAM_GROUP);
    return std::any_of(groups.begin(), groups.end(), [](const IGraphConfig* group) {
        return group->getDescendant(NUXO_KEY_KLINK) != nullptr || !childrenOfType(group, NUXO_KEY_KLINK).empty();
    });
}

void requireSameAnswers(const Transcript& expected, const Transcript& found, const char* rule)
{
    const auto difference = std::mismatch(expected.begin(), expected.end(), found.begin(), found.end());
    if (difference.first != expected.end()) std::fprintf(stderr, "Question: %s\n", difference.first->first);
    require(difference.first == expected.end() && difference.second == found.end(), rule);
}

Transcript interview(GraphUtil& analysis, const KernelGraph& graph, unsigned int subgraphKey, NUXO::GdfVersion version)
{
    Notes notes(graph);
    const int initStatus = analysis.init(subgraphKey, &graph.root(), version);
    notes.add("init", initStatus);
    if (initStatus == StatusBadArgument && version < NUXO::GdfVersionKVA6) return notes.take(); // nothing changed
    std::set<int> subgraphs;
    analysis.getAvailableSubgraphs(subgraphs);
    notes.add("getAvailableSubgraphs", subgraphs);
    std::set<int> ids(graph.ids().begin(), graph.ids().end());
    if (subgraphs.size() <= kMostIds) ids.insert(subgraphs.begin(), subgraphs.end());
    for (const int id : ids) {
        qv_isp_zmt_program_group group = untouched();
        const int status = analysis.getTevData(id, group);
        require(status == StatusOk || isUntouched(group), "without records nothing is written");
        require(group.kernel_count == 0 || group.run_kernels != nullptr, "records are there");
        if (initStatus == StatusOk) {
            require((status == StatusOk) == (subgraphs.count(id) != 0), "there are records of each subgraph");
            if (status == StatusOk) checkSubgraphRecords(graph.root(), analysis, id, group, version);
        }
        notes.addRecords("getTevData", status, group);
        addInnerGraph(notes, analysis, id);
        analysis.dumpKernels(id);
    }
    for (const IGraphConfig* const node : graph.groups()) {
        qv_isp_zmt_program_group group = untouched();
        const int status = analysis.getPgTevData(node, group);
        if (status != StatusOk) group = untouched();
        if (status == StatusOk && initStatus == StatusOk) checkGroupRecords(*node, group);
        notes.addRecords("getPgTevData", status, group);
    }
    qv_isp_zmt_resolution_info history = {};
    notes.add("getSourceResolutionHistory", analysis.getSourceResolutionHistory(history));
    notes.add("history of the source", history);
    analysis.dumpTevStructs();
    notes.checkRecordsStay();
    return notes.take();
}

Transcript interview(ZmtTevUtils& utils, bool usesStreams, const KernelGraph& graph)
{
    Notes notes(graph);
    const int initStatus = utils.initTevUtils(&graph.root());
    notes.add("initTevUtils", initStatus);
    askStreams(notes, utils, graph.ids());
    askRecords(notes, utils, graph);
    const bool isAnalysed = graph.version() > NUXO::GdfVersionKVA5 || graph.hasKernelLinks();
    if (initStatus == StatusOk && usesStreams && !isAnalysed) checkStreams(utils, graph);
    qv_isp_zmt_resolution_info history = {};
    notes.add("getSourceResolutionHistory", utils.getSourceResolutionHistory(history));
    notes.add("history of the source", history);
    askLimits(notes, utils, graph.ids());
    for (const int id : graph.ids()) utils.dumpKernels(id);
    notes.checkRecordsStay();

    // These change the object or its records.
    const bool hasLinks = utils.nodesHaveKernelLinks();
    require(hasLinks == graph.hasKernelLinks() || initStatus != StatusOk, "kernel links are told");
    notes.add("nodesHaveKernelLinks", hasLinks, utils.detectNewGraphVersion());
    askRecords(notes, utils, graph);
    notes.checkRecordsStay();
    notes.forgetRecords();
    notes.add("generateKernelListsForExecCtxs", utils.generateKernelListsForExecCtxs());
    askRecords(notes, utils, graph);
    notes.checkRecordsStay();
    return notes.take();
}

Transcript interviewNodes(const KernelGraph& graph)
{
    Notes notes(graph);
    std::map<std::string, size_t> asked;
    for (GraphConfigNode* const node : graph.nodes()) {
        const std::string type = textOf(node, NUXO_KEY_TYPE).value_or("");
        const bool isSource = type == "source" || type == "port";
        if ((!isSource && type != "kernel" && type != "mux") || ++asked[type] > kMostOfType) continue;
        askKernel(notes, *node);
        if (isSource) askSource(notes, *node);
    }
    const std::shared_ptr<IspUtils> utils = IspUtils::Factory(&graph.root());
    std::vector<NUXO::KernelConfigContainer> configurations;
    const bool isStabilised = utils->isDvsEnabled();
    const int status = utils->getKernelConfigurations(configurations);
    notes.add("IspUtils", static_cast<int>(utils->getKvaVersion()), isStabilised, status,
              uint64_t{configurations.size()});
    require(configurations.empty() || (utils->getKvaVersion() == NUXO::GdfVersionKVA5 && !isStabilised),
            "only generation 5 changes a kernel, and only without stabilisation");
    applyFormats(notes, graph);
    return notes.take();
}

} // namespace fuzzing
