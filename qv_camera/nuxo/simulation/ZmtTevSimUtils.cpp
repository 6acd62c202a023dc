// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/simulation/ZmtTevSimUtils.h>
#include <nuxo/tree/Descendants.h>
#include <nuxo/tree/NodeReading.h>
#include <nuxo/tree/TreeAccess.h>
#include <nuxo/tree/TypeNames.h>

#include <exception>
#include <memory>
#include <new>

namespace NUXO {

namespace {

constexpr const char* kTag = "NUXO_TEV_SIMULATION_UTILS[XOS]";
constexpr int kNullArgument = 32; // positive, as clients of cloneSettings know it

#define SIM_ERROR(...) NUXO_LOG(LogError, kTag, __VA_ARGS__)
#define SIM_WARN(...) NUXO_LOG(LogWarning, kTag, __VA_ARGS__)
#define SIM_DEBUG(...) NUXO_LOG(LogDebug, kTag, __VA_ARGS__)

using KernelInfos = std::vector<ZmtTevSimUtils::KernelInfo>;

// The library's own node at the root, null for foreign implementations.
GraphConfigNode* rootNode(const IGraphConfig* node)
{
    return node == nullptr ? nullptr : asNode(node->getRoot());
}

// Calls the visitor for each kernel below the node, in order, until it returns false; tells whether it never did.
template <typename Visit> bool forEachKernel(const GraphConfigNode& node, Visit visit)
{
    bool goOn = true;
    walkDescendants(node, [&](const GraphConfigNode& below) {
        if (hasText(below, NUXO_KEY_TYPE, kTypeKernel)) goOn = visit(below);
        return goOn ? Walk::Into : Walk::Stop;
    });
    return goOn;
}

// The first kernel with the name that is below any program group.
const GraphConfigNode* findKernel(const GraphConfigNode& root, const std::string& name)
{
    const GraphConfigNode* found = nullptr;
    const auto isOther = [&](const GraphConfigNode& kernel) {
        const std::string* const kernelName = findText(kernel, NUXO_KEY_NAME);
        if (kernelName != nullptr && *kernelName == name) found = &kernel;
        return found == nullptr;
    };
    walkDescendants(root, [&](const GraphConfigNode& node) {
        if (!hasText(node, NUXO_KEY_TYPE, kTypeProgramGroup)) return Walk::Into;
        return forEachKernel(node, isOther) ? Walk::Past : Walk::Stop;
    });
    return found;
}

int appendKernels(const IGraphConfig& programGroup, KernelInfos& kernels)
{
    const GraphConfigNode* const group = asNode(&programGroup);
    if (group == nullptr) return StatusBadArgument;
    int status = StatusOk;
    forEachKernel(*group, [&](const GraphConfigNode& kernel) {
        ZmtTevSimUtils::KernelInfo info;
        status = readText(kernel, NUXO_KEY_NAME, info.name);
        if (status == StatusOk) status = kernel.getValue(NUXO_KEY_PAL_UUID, info.pal_uuid);
        if (status == StatusOk) kernels.push_back(info);
        return status == StatusOk;
    });
    return status;
}

bool isGraph(const GraphConfigNode& node, uint32_t key)
{
    return key == NUXO_KEY_GRAPH || hasText(node, NUXO_KEY_TYPE, kTypeGraph);
}

int findGraph(const GraphConfigNode& graphs, int graphId, GraphConfigNode*& found)
{
    int status = StatusOk;
    found = nullptr;
    forEachChild(graphs, [&](GraphConfigNode& graph, uint32_t key) {
        if (!isGraph(graph, key)) return true;
        int32_t id = 0;
        if (!findInteger(graph, NUXO_KEY_ID, id)) {
            SIM_ERROR("Graph without id attribute, invalid");
            status = StatusBadState;
        } else if (id == graphId) {
            found = &graph;
        }
        return status == StatusOk && found == nullptr;
    });
    if (status != StatusOk || found != nullptr) return status;
    SIM_WARN("Graph id %d not found", graphId);
    return StatusNotFound;
}

int applyOverrides(GraphConfigNode& graph, GraphConfigNode& nodes)
{
    try {
        return GraphCameraUtil::processGraphOverrides(graph, nodes);
    } catch (const std::exception&) {
        return StatusBadArgument; // a text that should be a number
    }
}

// Nodes in the order in which they were found, each once.
class Groups {
public:
    void add(GraphConfigNode& group)
    {
        if (mKnown.insert(&group).second) mOrder.push_back(&group);
    }
    const std::vector<GraphConfigNode*>& inOrder() const { return mOrder; }

private:
    std::vector<GraphConfigNode*> mOrder;
    std::set<const GraphConfigNode*> mKnown;
};

// An end that leads to no program group is skipped.
void addGroupAt(const GraphConfigNode& nodes, const std::string& end, Groups& groups)
{
    const IGraphConfig* const item = descendantAt(nodes, end);
    GraphConfigNode* const group = item == nullptr ? nullptr : asNode(item->getAncestor());
    const std::string* const type = group == nullptr ? nullptr : findText(*group, NUXO_KEY_TYPE);
    if (type != nullptr && ItemUID::str2key(*type) == NUXO_KEY_PROGRAM_GROUP) groups.add(*group);
}

int addGroupsOf(const GraphConfigNode& connection, const GraphConfigNode& nodes, Groups& groups)
{
    std::string ends[2];
    int status = readText(connection, NUXO_KEY_SOURCE, ends[0]);
    if (status == StatusOk) status = readText(connection, NUXO_KEY_SINK, ends[1]);
    if (status != StatusOk) {
        SIM_ERROR("Connection without src or sink attribute, invalid!");
        return status;
    }
    for (const std::string& end : ends) addGroupAt(nodes, end, groups);
    return StatusOk;
}

// The program groups of a graph in the order in which its connections name them. May throw std::bad_alloc.
int collectGroups(const IGraphConfig* descriptor, int graphId, Groups& groups)
{
    const IGraphConfig* const root = descriptor == nullptr ? nullptr : descriptor->getRoot();
    IGraphConfig* const graphsNode = root == nullptr ? nullptr : root->getDescendant(NUXO_KEY_GRAPHS);
    if (graphsNode == nullptr) {
        SIM_ERROR("No Graphs found from input GDF node");
        return StatusBadArgument;
    }
    IGraphConfig* const nodesNode = root->getDescendant(NUXO_KEY_NODES);
    if (nodesNode == nullptr) {
        SIM_ERROR("No Nodes found from input GDF node");
        return StatusBadArgument;
    }
    const GraphConfigNode* const graphs = asNode(graphsNode);
    GraphConfigNode* const nodes = asNode(nodesNode);
    if (graphs == nullptr || nodes == nullptr) return StatusBadArgument; // foreign, so they cannot be edited
    GraphConfigNode* graph = nullptr;
    int status = findGraph(*graphs, graphId, graph);
    if (status == StatusOk) status = applyOverrides(*graph, *nodes);
    if (status != StatusOk) return status;
    forEachChild(*graph, [&](const GraphConfigNode& connection, uint32_t key) {
        if (key == NUXO_KEY_CONNECTION) status = addGroupsOf(connection, *nodes, groups);
        return status == StatusOk;
    });
    return status;
}

int forceValue(GraphConfigNode* node, uint32_t key, int value)
{
    if (node == nullptr) return StatusBadArgument;
    GraphConfigAttribute* const attribute = findItem(*node, key);
    if (attribute != nullptr) {
        // Straight into the attribute: what is forced is not subject to options lists, and stands in no document.
        const int status = attribute->setValue(value);
        if (status == StatusOk) setPositionOf(*node, key, {});
        return status;
    }
    TreeAccess::adoptItem(*node, std::make_unique<GraphConfigIntAttribute>(value), key, {});
    SIM_ERROR("added new attr");
    return StatusOk;
}

// One kind of node that chooses among its inputs or outputs.
struct Switch {
    const char* type;
    uint32_t activeKey;
    const char* failureMessage;
};

constexpr Switch kSwitches[] = {
    {kTypeDemux, NUXO_KEY_ACTIVE_OUTPUT, "Failed to get active output for demuxer %s"},
    {kTypeMux, NUXO_KEY_ACTIVE_INPUT, "Failed to get active input for muxer %s"},
};

int readSwitches(const IGraphConfig& stage, const Switch& kind, std::map<std::string, unsigned int>& config)
{
    int status = StatusOk;
    forEachOfType(&stage, kind.type, [&](const IGraphConfig& node) {
        const std::string name = nameOrFiledName(node);
        int active = 0;
        status = node.getValue(kind.activeKey, active);
        if (status == StatusOk) {
            config[name] = static_cast<unsigned int>(active);
        } else {
            SIM_ERROR(kind.failureMessage, name.c_str());
        }
        return status == StatusOk;
    });
    return status;
}

const char* stageTypeOf(const IGraphConfig& graph)
{
    std::string version;
    static_cast<void>(readText(graph, ItemUID({NUXO_KEY_GRAPH, NUXO_KEY_VERSION}), version)); // absent: none
    return version.find("KVA7") == std::string::npos ? kTypeProgramGroup : kTypeComputeBlock;
}

} // namespace

int ZmtTevSimUtils::cloneSettings(const IGraphConfig* settings, IGraphConfig** copy)
{
    if (settings == nullptr || copy == nullptr) return kNullArgument;
    const GraphConfigNode* const node = asNode(settings);
    GraphConfigNode* const clone = node == nullptr ? nullptr : node->copy();
    if (clone == nullptr) {
        SIM_ERROR("Error copying: No memory");
        return StatusNoMemory;
    }
    *copy = clone;
    return StatusOk;
}

int ZmtTevSimUtils::getKernelPalUuid(const IGraphConfig* descriptor, const std::string& kernelName, int& palUuid)
{
    return unlessNoMemory<int>(StatusNoMemory, [&]() -> int {
        const GraphConfigNode* const root = rootNode(descriptor);
        const GraphConfigNode* const kernel = root == nullptr ? nullptr : findKernel(*root, kernelName);
        if (kernel == nullptr) {
            SIM_ERROR("Couldn't find %s", kernelName.c_str());
            return descriptor == nullptr ? StatusBadArgument : StatusNotFound;
        }
        const int status = kernel->getValue(NUXO_KEY_PAL_UUID, palUuid);
        if (status != StatusOk) SIM_ERROR("Couldn't get pal uuid for %s", kernelName.c_str());
        return status;
    });
}

int ZmtTevSimUtils::getKernelList(const IGraphConfig* descriptor, int graphId, int streamId,
                                  std::vector<KernelInfo>& kernels)
{
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        Groups groups;
        const int status =
            unlessNoMemory<int>(StatusNoMemory, [&] { return collectGroups(descriptor, graphId, groups); });
        if (status != StatusOk) {
            SIM_ERROR("Error retrieving pg from graph info!");
            return status;
        }
        for (const GraphConfigNode* const group : groups.inOrder()) {
            int32_t stream = 0;
            if (!findInteger(*group, NUXO_KEY_STREAM_ID, stream) || stream != streamId) continue;
            static_cast<void>(appendKernels(*group, kernels)); // what is readable counts
        }
        return status;
    });
}

int ZmtTevSimUtils::getPgsInGraph(const IGraphConfig* descriptor, int graphId, std::set<IGraphConfig*>& programGroups)
{
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        Groups groups;
        const int status = collectGroups(descriptor, graphId, groups);
        programGroups.insert(groups.inOrder().begin(), groups.inOrder().end());
        return status;
    });
}

int ZmtTevSimUtils::getKernelInfoList(const IGraphConfig& programGroup, std::vector<KernelInfo>& kernels)
{
    return unlessNoMemory<int>(StatusNoMemory, [&] { return appendKernels(programGroup, kernels); });
}

int ZmtTevSimUtils::setValue(IGraphConfig* node, unsigned int key, int value)
{
    const int status = unlessNoMemory<int>(StatusNoMemory, [&] { return forceValue(asNode(node), key, value); });
    if (status != StatusOk) SIM_ERROR("was not able to update %s", ItemUID::key2str(key));
    return status;
}

int ZmtTevSimUtils::getMuxConfiguration(const IGraphConfig* graph, int streamId,
                                        std::map<std::string, unsigned int>& config)
{
    if (graph == nullptr) return StatusBadArgument;
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        const char* const stageType = stageTypeOf(*graph);
        SIM_DEBUG("Getting mux config from nodes of type %s", stageType);
        int status = StatusOk;
        forEachOfType(graph, stageType, [&](const IGraphConfig& stage) {
            int stream = 0;
            if (!fetch(stage, NUXO_KEY_STREAM_ID, stream) || stream != streamId) return true;
            for (const Switch& kind : kSwitches) {
                if (status == StatusOk) status = readSwitches(stage, kind, config);
            }
            return false;
        });
        return status;
    });
}

} // namespace NUXO
