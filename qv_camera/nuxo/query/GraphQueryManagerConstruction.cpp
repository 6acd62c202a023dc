// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/query/ConnectionBuilder.h>
#include <nuxo/query/GraphQueryManager.h>
#include <nuxo/query/GraphQueryUtils.h>
#include <nuxo/query/GraphEditing.h>
#include <nuxo/tree/TreeAccess.h>

#include <exception>
#include <memory>
#include <new>
#include <string>
#include <utility>

namespace NUXO {

namespace {

constexpr auto kMergeSettings =
    static_cast<signed char>(GraphQueryUtils::CopyMissingNodes | GraphQueryUtils::PushToPeer | GraphQueryUtils::Merge);
constexpr auto kMergeMode = static_cast<signed char>(GraphQueryUtils::CopyMissingNodes | GraphQueryUtils::Merge);
constexpr auto kMergeModeDefaults = static_cast<signed char>(GraphQueryUtils::Merge);
constexpr const char* kDynamic = "false"; // the one text of `static` that leaves a connection dynamic

// The graph element with the id, null when there is none. A child without `id` counts with the id of the child before, zero
// for the first: clients depend on it.
const GraphConfigNode* findGraph(const GraphConfigNode& descriptor, int32_t graphId)
{
    const GraphConfigNode* const graphs = findChild(descriptor, NUXO_KEY_GRAPHS);
    const GraphConfigNode* found = nullptr;
    if (graphs == nullptr) return found;
    int32_t id = 0;
    forEachChild(*graphs, [&](const GraphConfigNode& graph, uint32_t) {
        findInteger(graph, NUXO_KEY_ID, id);
        if (id == graphId) found = &graph;
        return found == nullptr;
    });
    return found;
}

// Puts a copy of the graph element, with the descriptor's version, into the result.
int addGraphElement(const GraphConfigNode& descriptor, const GraphConfigNode& graph, GraphConfigNode& result)
{
    std::unique_ptr<GraphConfigNode> copied(graph.copy());
    if (copied == nullptr) {
        NUXO_ERROR("Error creating GraphConfigNode: No memory");
        return StatusNoMemory;
    }
    const std::string* const text = findText(descriptor, NUXO_KEY_VERSION);
    const std::string version = text == nullptr ? std::string() : *text;
    if (copied->addValue(NUXO_KEY_VERSION, version) != StatusOk) {
        NUXO_ERROR("Failed to add GDF version info [%s]to graph", version.c_str());
        return StatusNoMemory;
    }
    setPositionOf(*copied, NUXO_KEY_VERSION, positionOf(descriptor, NUXO_KEY_VERSION));
    TreeAccess::adopt(result, std::move(copied), NUXO_KEY_GRAPH, getSourcePosition(&graph));
    return StatusOk;
}

int readConnectionEnd(const GraphConfigNode& connection, uint32_t key, const char* complaint, const std::string*& text)
{
    text = findText(connection, key);
    if (text != nullptr) return StatusOk;
    NUXO_ERROR("%s", complaint);
    return readFailure(connection, key);
}

bool isStatic(const GraphConfigNode& connection)
{
    const std::string* const text = findText(connection, NUXO_KEY_STATIC);
    return text != nullptr && *text != kDynamic;
}

GraphConfigNode* findNodes(const GraphConfigNode& descriptor)
{
    GraphConfigNode* const nodes = findChild(descriptor, NUXO_KEY_NODES);
    if (nodes == nullptr) NUXO_ERROR("Error, graph_descriptor does not have a 'nodes' node");
    return nodes;
}

// Merges the defaults and then the mode into the sensor. The mode's name is a copy: the merge may overwrite the attribute it
// came from.
int mergeSensorMode(GraphConfigNode& sensor, GraphConfigNode& sensorModes, const std::string modeId)
{
    const int status = GraphQueryUtils::addDescendantsFromNode(&sensor, &sensorModes, kMergeModeDefaults);
    if (status != StatusOk) {
        NUXO_ERROR("couldn't add settings from sensor modes node");
        return status;
    }
    GraphConfigNode* mode = nullptr;
    forEachChild(sensorModes, [&](GraphConfigNode& child, uint32_t) {
        const std::string* const name = findText(child, NUXO_KEY_NAME);
        if (name != nullptr && *name == modeId) mode = &child;
        return mode == nullptr;
    });
    if (mode != nullptr) return GraphQueryUtils::addDescendantsFromNode(&sensor, mode, kMergeMode);
    NUXO_ERROR("Sensor Mode %s not in the list of available modes", modeId.c_str());
    return StatusBadState;
}

} // namespace

// What building one graph needs at hand.
struct GraphQueryManager::Build {
    const GraphConfigNode& descriptor;
    const GraphConfigNode* settingsRoot; // null when not set
    GraphConfigNode& settings;
    GraphConfigNode& result;
    int32_t settingsKey;
    KeyCache& keys; // of this one build

    int connect(const GraphConfigNode& element, SourcePosition position) const;
    int connectAll(const GraphConfigNode& graph) const;
    int applySensorMode() const;
    int run() const;
};

int GraphQueryManager::Build::connect(const GraphConfigNode& element, SourcePosition position) const
{
    const std::string* source = nullptr;
    const std::string* sink = nullptr;
    int status = readConnectionEnd(element, NUXO_KEY_SOURCE, "Error: connection element with no source", source);
    if (status != StatusOk) return status;
    status = readConnectionEnd(element, NUXO_KEY_SINK, "Error: connection element with no sink", sink);
    if (status != StatusOk) return status;
    GraphConfigNode* const nodes = findNodes(descriptor);
    if (nodes == nullptr) return StatusMissingData;
    ConnectionBuilder builder(*nodes, &settings, settingsKey, result, keys);
    const Connection connection = {*source, *sink, position};
    return isStatic(element) ? builder.connectStatic(connection) : builder.connectDynamic(connection);
}

int GraphQueryManager::Build::connectAll(const GraphConfigNode& graph) const
{
    const ItemMap& items = TreeAccess::items(graph);
    for (ItemMap::const_iterator it = items.find(NUXO_KEY_CONNECTION);
         it != items.end() && it->first == NUXO_KEY_CONNECTION; ++it) {
        const GraphConfigNode* const element = asNode(it->second);
        if (element == nullptr) continue;
        const int status = connect(*element, ItemMap::position(*it));
        if (status != StatusOk) return status;
    }
    return StatusOk;
}

// A graph that a sensor feeds takes over the content of its mode.
int GraphQueryManager::Build::applySensorMode() const
{
    std::vector<IGraphConfig*> sources;
    const int status = GraphCameraUtil::getSourceNode(&result, sources);
    if (status == StatusNoMemory) return status;
    if (status != StatusOk) return StatusBadState;
    GraphConfigNode& sensor = *asNode(sources.front());
    if (uidOf(sensor) != NUXO_KEY_SENSOR) return StatusOk;

    const std::string* const modeId = findText(sensor, NUXO_KEY_MODE_ID);
    if (modeId == nullptr) {
        NUXO_WARN("Sensor lacks mode_id. Failed to set sensor mode.");
        return readFailure(sensor, NUXO_KEY_MODE_ID);
    }
    GraphConfigNode* const modes = settingsRoot == nullptr ? nullptr : findChild(*settingsRoot, NUXO_KEY_SENSOR_MODES);
    if (modes == nullptr) {
        NUXO_WARN("Settings file is missing sensor_modes");
        return StatusMissingData;
    }
    const int modeStatus = mergeSensorMode(sensor, *modes, *modeId);
    if (modeStatus != StatusOk) NUXO_ERROR("Settings file has incorrect sensor mode data");
    return modeStatus;
}

int GraphQueryManager::Build::run() const
{
    int32_t graphId = 0;
    if (!findInteger(settings, NUXO_KEY_ID, graphId)) return readFailure(settings, NUXO_KEY_ID);
    const GraphConfigNode* const graph = findGraph(descriptor, graphId);
    if (graph == nullptr) {
        NUXO_ERROR("could not find graph with id %d from graph descriptor", graphId);
        return StatusBadState;
    }
    int status = addGraphElement(descriptor, *graph, result);
    if (status == StatusOk) status = connectAll(*graph);
    if (status != StatusOk) return status;

    status = mergeTrees(result, settings, kMergeSettings, keys);
    if (status != StatusOk) {
        NUXO_ERROR("Failed to add settings to the result graph");
        return status;
    }
    status = GraphCameraUtil::processGraphOverrides(const_cast<GraphConfigNode&>(*graph), result);
    if (status != StatusOk) {
        NUXO_ERROR("Failed to process graph %d overrides", graphId);
        return status;
    }
    switchOffUnusedPorts(result, &keys);
    return applySensorMode();
}

int GraphQueryManager::createGraph(IGraphConfig* settingsNode, IGraphConfig** graph)
{
    if (settingsNode == nullptr || graph == nullptr) return StatusBadArgument;
    // The caller has the root before building starts, so nothing that happens then can lose it.
    auto* const root = new (std::nothrow) GraphConfigNode;
    *graph = root;
    if (root == nullptr) return StatusNoMemory;
    try {
        return getGraph(asNode(settingsNode), root);
    } catch (const std::bad_alloc&) {
        return StatusNoMemory;
    } catch (const std::exception&) {
        return StatusBadArgument; // a text that should be a number
    }
}

int GraphQueryManager::getGraph(GraphConfigNode* settingsNode, GraphConfigNode* result)
{
    const GraphConfigNode* const descriptor = asNode(mGraphDescriptor);
    if (settingsNode == nullptr || result == nullptr || descriptor == nullptr) return StatusBadArgument;
    if (!findInteger(*settingsNode, NUXO_KEY_KEY, mSettingsKey)) return readFailure(*settingsNode, NUXO_KEY_KEY);
    const int status = result->addValue(NUXO_KEY_KEY, mSettingsKey);
    if (status != StatusOk) return status;
    setPositionOf(*result, NUXO_KEY_KEY, positionOf(*settingsNode, NUXO_KEY_KEY));
    KeyCache keys;
    const Build build = {*descriptor, asNode(mGraphSettings), *settingsNode, *result, mSettingsKey, keys};
    return unlessNoMemory<int>(StatusNoMemory, [&build] { return build.run(); });
}

void GraphQueryManager::destroyGraph(IGraphConfig* graph)
{
    delete graph;
}

bool GraphQueryManager::nodeHasBaseNode(IGraphConfig& node, std::string& baseName)
{
    return node.getValue(NUXO_KEY_BASE_NODE, baseName) == StatusOk;
}

int GraphQueryManager::getConnectionData(const std::string& source, const std::string& sink,
                                         GraphConfigNode* settingsNode, GraphConfigNode* result)
{
    const GraphConfigNode* const descriptor = asNode(mGraphDescriptor);
    if (result == nullptr || settingsNode == nullptr || descriptor == nullptr) return StatusBadArgument;
    return unlessNoMemory<int>(StatusNoMemory, [&]() -> int {
        GraphConfigNode* const nodes = findNodes(*descriptor);
        if (nodes == nullptr) return StatusMissingData;
        KeyCache keys;
        return ConnectionBuilder(*nodes, settingsNode, mSettingsKey, *result, keys).connectDynamic({source, sink, {}});
    });
}

int GraphQueryManager::getStaticConnectionData(const std::string& source, const std::string& sink,
                                               GraphConfigNode* result)
{
    const GraphConfigNode* const descriptor = asNode(mGraphDescriptor);
    if (result == nullptr || descriptor == nullptr) return StatusBadArgument;
    return unlessNoMemory<int>(StatusNoMemory, [&]() -> int {
        GraphConfigNode* const nodes = findNodes(*descriptor);
        if (nodes == nullptr) return StatusMissingData;
        KeyCache keys;
        return ConnectionBuilder(*nodes, nullptr, mSettingsKey, *result, keys).connectStatic({source, sink, {}});
    });
}

int GraphQueryManager::addSensorModeData(GraphConfigNode* sensorNode, GraphConfigNode* sensorModes,
                                         const std::string& modeId)
{
    if (sensorNode == nullptr || sensorModes == nullptr) {
        NUXO_ERROR("couldn't add settings from sensor modes node");
        return StatusBadArgument;
    }
    return unlessNoMemory<int>(StatusNoMemory, [&] { return mergeSensorMode(*sensorNode, *sensorModes, modeId); });
}

IGraphConfig* GraphQueryManager::copyNodeToResult(IGraphConfig* descriptorNodes, unsigned int key,
                                                  GraphConfigNode* result)
{
    GraphConfigNode* const nodes = asNode(descriptorNodes);
    if (nodes == nullptr || result == nullptr) return nullptr;
    return unlessNoMemory<IGraphConfig*>(nullptr, [&] {
        KeyCache keys;
        return copyDescriptorNode(*nodes, key, *result, keys);
    });
}

IGraphConfig* GraphQueryManager::constructNodeFromBase(IGraphConfig* node, std::string& baseName,
                                                       IGraphConfig* descriptorNodes)
{
    const GraphConfigNode* const concrete = asNode(static_cast<const IGraphConfig*>(node));
    const GraphConfigNode* const nodes = asNode(static_cast<const IGraphConfig*>(descriptorNodes));
    if (concrete == nullptr || nodes == nullptr) return nullptr;
    return unlessNoMemory<IGraphConfig*>(nullptr, [&] {
        KeyCache keys;
        return buildFromBase(*concrete, NodeIdentity(*concrete), baseName, *nodes, keys);
    });
}

int GraphQueryManager::propagateIntAttribute(IGraphConfig* from, IGraphConfig* to, unsigned int key)
{
    if (from == nullptr || to == nullptr) return StatusBadArgument;
    return unlessNoMemory<int>(StatusNoMemory, [&] { return propagateInteger(*from, *to, key); });
}

int GraphQueryManager::propagateStrAttribute(IGraphConfig* from, IGraphConfig* to, unsigned int key)
{
    if (from == nullptr || to == nullptr) return StatusBadArgument;
    return unlessNoMemory<int>(StatusNoMemory, [&] { return propagateText(*from, *to, key); });
}

} // namespace NUXO
