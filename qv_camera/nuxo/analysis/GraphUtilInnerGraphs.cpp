// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/analysis/AnalysisNames.h>
#include <nuxo/analysis/GraphUtil.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/camera/PortReading.h>
#include <nuxo/histories/KernelSettings.h>
#include <nuxo/tree/NodeReading.h>
#include <nuxo/tree/TreeAccess.h>
#include <nuxo/tree/TypeNames.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace NUXO {

namespace {

constexpr const char* kNoNode = "Failed to allocate imaging node struct";

// Links stand among the other children of a group, filed under their element or known by their type.
template <typename Visit> int forEachKernelLink(const IGraphConfig& pg, Visit visit)
{
    const GraphConfigNode* const own = asNode(&pg);
    if (own == nullptr) return StatusOk;
    for (const auto& entry : TreeAccess::items(*own)) {
        GraphConfigNode* const child = asNode(entry.second);
        const bool isFiledAsLink = entry.first == NUXO_KEY_KLINK;
        if (child == nullptr || (!isFiledAsLink && !hasText(*child, NUXO_KEY_TYPE, kTypeKlink))) continue;
        const int status = visit(*child);
        if (status != StatusOk) return status;
    }
    return StatusOk;
}

template <typename Visit> int untilFailure(const IGraphConfig& node, const char* type, Visit visit)
{
    int status = StatusOk;
    forEachOfType(&node, type, [&](IGraphConfig& child) {
        status = visit(child);
        return status == StatusOk;
    });
    return status;
}

} // namespace

GraphUtil::KernelLink::KernelLink(IGraphConfig& klink)
{
    const std::string source = textOr(&klink, NUXO_KEY_SOURCE, "");
    const std::string destination = textOr(&klink, NUXO_KEY_DESTINATION, "");
    srcNode = nodePart(source);
    srcPort = portPart(source);
    dstNode = nodePart(destination);
    dstPort = portPart(destination);
}

std::string GraphUtil::KernelLink::toStr() const
{
    return srcNode + ":" + srcPort + "->" + dstNode + ":" + dstPort;
}

int GraphUtil::collectPgInnerGraph(SubGraphInfo& sg, IGraphConfig& pg)
{
    const std::string pgName = fileNameOf(pg);
    int status = untilFailure(pg, kTypeKernel, [&](IGraphConfig& kernel) {
        ++sg.kernelCount;
        return addImagingNode(sg, kernel, pgName);
    });
    const std::pair<const char*, ImagingNodeType> kRouting[] = {
        {kTypeMux, MUX}, {kTypeDemux, DEMUX}, {kTypeSplit, SPLIT}};
    for (const auto& [typeName, type] : kRouting) {
        if (status != StatusOk) return status;
        status = untilFailure(pg, typeName,
                              [&, kind = type](IGraphConfig& node) { return addRoutingNode(sg, node, kind, pgName); });
    }
    if (status != StatusOk) return status;
    return forEachKernelLink(pg, [&](IGraphConfig& klink) { return addImagingLink(sg, klink, pg); });
}

int GraphUtil::addImagingNode(SubGraphInfo& sg, IGraphConfig& kernel, std::string pgName)
{
    const std::shared_ptr<ImagingNode> node = makeNode<ImagingNode>();
    if (node == nullptr) {
        NUXO_ERROR("%s", kNoNode);
        return StatusNoMemory;
    }
    node->node = &kernel;
    node->type = KERNEL;
    KernelSettings settings;
    if (readKernelSettings(kernel, settings) != StatusOk) {
        NUXO_ERROR("Failed to retrieve kernel info from IGraphConfig");
        return StatusBadState;
    }
    if (settings.rcb != 0) node->flags |= RcbKernel;
    qv_isp_zmt_run_kernels& record = node->runKernel;
    record.stream_id = static_cast<uint32_t>(sg.streamId);
    record.kernel_uuid = static_cast<uint32_t>(settings.palUuid);
    record.enable = settings.enable;
    std::copy(std::begin(settings.metadata), std::end(settings.metadata), record.metadata);
    record.bpp_info = kernelGetBpp(kernel);
    node->name = nameOrFiledName(kernel);
    if (!sg.imagingNodes.emplace(pgName + ":" + node->name, node).second) {
        NUXO_ERROR("Imaging node %s insertion failed", node->name.c_str());
        return StatusBadState;
    }
    NUXO_DEBUG("Added Imaging node %s uuid %d rcb %d", node->name.c_str(), settings.palUuid, settings.rcb);
    return StatusOk;
}

int GraphUtil::addRoutingNode(SubGraphInfo& sg, IGraphConfig& node, ImagingNodeType type, std::string pgName)
{
    const std::shared_ptr<ImagingNode> routing = makeNode<ImagingNode>();
    if (routing == nullptr) {
        NUXO_ERROR("%s", kNoNode);
        return StatusNoMemory;
    }
    routing->node = &node;
    routing->type = type;
    routing->name = nameOrFiledName(node);
    if (type != SPLIT) {
        const uint32_t key = type == MUX ? NUXO_KEY_ACTIVE_INPUT : NUXO_KEY_ACTIVE_OUTPUT;
        if (!fetch(node, key, routing->activePort))
            NUXO_WARN("Failed to get Active routing path for  %s", routing->name.c_str());
    }
    if (!sg.imagingNodes.emplace(pgName + ":" + routing->name, routing).second) {
        NUXO_ERROR("routing node %s insertion failed ", routing->name.c_str());
        return StatusBadState;
    }
    NUXO_DEBUG("Added routing node %s", routing->name.c_str());
    return StatusOk;
}

// One node a port, however many links name it: a second one would leave the first one's links dangling.
std::shared_ptr<GraphUtil::ImagingNode> GraphUtil::addPortNode(SubGraphInfo& sg, IGraphConfig& port,
                                                               ImagingNodeType type)
{
    const std::string name = fullName(port);
    std::shared_ptr<ImagingNode>& place = sg.imagingNodes[name];
    if (place == nullptr || place->node != &port) {
        std::shared_ptr<ImagingNode> node = makeNode<ImagingNode>();
        if (place != nullptr) place->emanzipate();
        place = std::move(node);
    }
    if (place == nullptr) {
        sg.imagingNodes.erase(name);
        return nullptr;
    }
    place->node = &port;
    place->type = type;
    place->name = name;
    return place;
}

// One end of a kernel link, with the words for what is missing.
struct GraphUtil::LinkEnd {
    const std::string& node;
    const std::string& port;
    ImagingNodeType portType;
    const char* noPortMessage;
};

int GraphUtil::findLinkEnd(SubGraphInfo& sg, IGraphConfig& pg, const LinkEnd& end, std::shared_ptr<ImagingNode>& found)
{
    if (!end.port.empty()) {
        const auto entry = sg.imagingNodes.find(fileNameOf(pg) + ":" + end.node);
        if (entry == sg.imagingNodes.end()) {
            NUXO_ERROR("Failed to find Imaging Node %s named in klink in the list of nodes. Inconsistent graph",
                       end.node.c_str());
            return StatusBadState;
        }
        found = entry->second;
        return StatusOk;
    }
    IGraphConfig* const port = end.node.empty() ? nullptr : descendantAt(pg, end.node);
    if (port == nullptr) {
        NUXO_LOG(LogError, kGraphTag, end.noPortMessage, end.node.c_str());
        return StatusBadState;
    }
    found = addPortNode(sg, *port, end.portType);
    if (found == nullptr) {
        NUXO_ERROR("Failed to allocate imaging node struct for port");
        return StatusNoMemory;
    }
    NUXO_DEBUG("Adding klink %s:%s  IgraphConfig %p", GraphCameraUtil::print(port).c_str(),
               GraphCameraUtil::print(&pg).c_str(), static_cast<const void*>(port));
    return StatusOk;
}

int GraphUtil::addImagingLink(SubGraphInfo& sg, IGraphConfig& klink, IGraphConfig& pg)
{
    const KernelLink link(klink);
    std::shared_ptr<ImagingNode> source;
    int status =
        findLinkEnd(sg, pg, {link.srcNode, link.srcPort, INPUT_PORT, "Failed find port node %s from PG "}, source);
    if (status != StatusOk) return status;
    if (source->type == DEMUX && link.srcPort != std::to_string(source->activePort)) {
        source = nullptr;
        if (mGdfVersion < GdfVersionKVA7)
            NUXO_WARN("Found klink from a demux non active output %s- FIX your GDF!! use the YXA oficial version",
                      link.toStr().c_str());
    }
    std::shared_ptr<ImagingNode> sink;
    status =
        findLinkEnd(sg, pg, {link.dstNode, link.dstPort, OUTPUT_PORT, "Failed find port node %s from PG port"}, sink);
    if (status != StatusOk) return status;
    if (sink->type == MUX && link.dstPort != std::to_string(sink->activePort)) {
        sink = nullptr;
        if (mGdfVersion < GdfVersionKVA7) {
            NUXO_ERROR("Found klink to a mux non active input %s - incorrect GDF", link.toStr().c_str());
            return StatusMissingObject;
        }
    }
    const bool isReplaced = source != nullptr && source.use_count() == 1; // by the sink, a node of the same full name
    if (source == nullptr || sink == nullptr || isReplaced) {
        NUXO_DEBUG("Klink %s skipped due to mux config", link.toStr().c_str());
        return StatusOk;
    }
    sink->addParent(source.get(), link.dstPort);
    source->addChild(sink.get(), link.srcPort);
    NUXO_DEBUG("Addded link %s", link.toStr().c_str());
    return StatusOk;
}

int GraphUtil::collectSourceInnerGraph(SubGraphInfo& sg)
{
    NUXO_DEBUG("Collecting source output port");
    for (IGraphConfig* const port : sg.outputPorts) {
        const std::shared_ptr<ImagingNode> node = addPortNode(sg, *port, OUTPUT_PORT);
        if (node == nullptr) {
            NUXO_ERROR("Failed to allocate imaging node struct for port %s", nameOrFiledName(*port).c_str());
            return StatusNoMemory;
        }
        NUXO_DEBUG("Collecting source output port %s", node->name.c_str());
    }
    return StatusOk;
}

// Indexes of the connections that lead to nodes of the subgraph, in the order of the graph.
std::vector<size_t> GraphUtil::connectionsInto(const SubGraphInfo& sg) const
{
    std::vector<size_t> indexes;
    std::string last;
    for (const auto& entry : sg.imagingNodes) {
        std::string name = nodePart(entry.first);
        if (name == last && !indexes.empty()) continue; // names of one group stand together
        const auto found = mConnectionsBySink.find(name);
        if (found != mConnectionsBySink.end())
            indexes.insert(indexes.end(), found->second.begin(), found->second.end());
        last = std::move(name);
    }
    std::sort(indexes.begin(), indexes.end());
    indexes.erase(std::unique(indexes.begin(), indexes.end()), indexes.end());
    return indexes;
}

int GraphUtil::collectInterPgConnections(SubGraphInfo& sg)
{
    if (mSettings->getDescendant(NUXO_KEY_GRAPH) == nullptr) return StatusBadState;
    for (const size_t index : connectionsInto(sg)) {
        const ConnectionEnds& ends = mConnectionEnds[index];
        const auto source = sg.imagingNodes.find(ends.source);
        const auto sink = sg.imagingNodes.find(ends.sink);
        if (source == sg.imagingNodes.end() || sink == sg.imagingNodes.end()) continue;
        NUXO_DEBUG("Adding internal connection to Imaging graph %s->%s", ends.source.c_str(), ends.sink.c_str());
        source->second->addChild(sink->second.get(), ends.sink);
        sink->second->addParent(source->second.get(), ends.source);
        if (nodePart(ends.source) != nodePart(ends.sink)) continue;
        source->second->flags |= SameNodeEnd;
        sink->second->flags |= SameNodeEnd;
    }
    return StatusOk;
}

void GraphUtil::resetInnerGraph(SubGraphInfo& sg, bool checkActive)
{
    unsigned int visited = 0;
    unsigned int active = 0;
    std::vector<const ImagingNode*> missed;
    for (const auto& entry : sg.imagingNodes) {
        ImagingNode& node = *entry.second;
        const bool isOff = node.type == KERNEL && node.runKernel.enable >= QV_ISP_ZMT_KERNEL_DISABLED;
        const bool isActive = (node.flags & DisabledNode) == 0 && !isOff;
        if (isActive) ++active;
        if (isActive && !node.visited && checkActive) missed.push_back(&node);
        if (node.visited) ++visited;
        node.visited = false;
    }
    if (!checkActive || visited >= active) return;
    NUXO_WARN("Traversal of inner graph %d did not reach all ACTIVE nodes %u/%u", sg.id, visited, active);
    for (const ImagingNode* const node : missed) NUXO_WARN("Imaging Node %s not reached", node->name.c_str());
}

} // namespace NUXO
