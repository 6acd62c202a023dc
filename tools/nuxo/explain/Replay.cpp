// SPDX-License-Identifier: Apache-2.0
#include "explain/Replay.h"

#include "explain/TracedMerge.h"

#include <nuxo/query/GraphQueryUtils.h>
#include <nuxo/tree/ItemUID.h>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::GraphQueryUtils;
using NUXO::ItemUID;

namespace {

constexpr unsigned kMergeSettings =
    GraphQueryUtils::CopyMissingNodes | GraphQueryUtils::PushToPeer | GraphQueryUtils::Merge;
constexpr unsigned kMergeMode = GraphQueryUtils::CopyMissingNodes | GraphQueryUtils::Merge;
constexpr unsigned kMergeModeDefaults = GraphQueryUtils::Merge;

std::unique_ptr<TracedNode> traceSensorModes(const GraphConfigNode& settings)
{
    const auto* const modes =
        dynamic_cast<const GraphConfigNode*>(settings.getRootNode()->getDescendant(NUXO_KEY_SENSOR_MODES));
    return modes == nullptr ? nullptr : traceFile(*modes, StepKind::SensorMode);
}

} // namespace

Replay::Replay(const GraphConfigNode& descriptor, const GraphConfigNode& settings)
    : mDescriptor(traceFile(descriptor, StepKind::Descriptor)), mSettings(traceFile(settings, StepKind::Settings)),
      mSensorModes(traceSensorModes(settings)), mNodes(mDescriptor->child(NUXO_KEY_NODES)),
      mResult(std::make_unique<TracedNode>())
{
}

std::unique_ptr<TracedNode> Replay::run()
{
    const TracedItem* const key = mSettings->find(NUXO_KEY_KEY);
    const TracedNode* const graph = findGraph();
    if (key == nullptr || graph == nullptr || mNodes == nullptr) return std::move(mResult);
    mResult->insert(copyStamped(*key, {StepKind::Settings, ""}));
    addGraphElement(*graph);
    connectAll(*graph);
    mergeTraced(*mResult, *mSettings, kMergeSettings, {StepKind::Settings, ""});
    applyOverrides(*graph);
    disableUnusedPorts();
    applySensorMode();
    return std::move(mResult);
}

// A graph without `id` counts with that of the graph before it.
const TracedNode* Replay::findGraph() const
{
    const TracedNode* const graphs = mDescriptor->child(NUXO_KEY_GRAPHS);
    if (graphs == nullptr) return nullptr;
    int32_t id = 0;
    for (const TracedNode* const graph : graphs->children()) {
        id = graph->integerOf(NUXO_KEY_ID).value_or(id);
        if (mSettings->integerOf(NUXO_KEY_ID) == id) return graph;
    }
    return nullptr;
}

void Replay::addGraphElement(const TracedNode& graph)
{
    std::unique_ptr<TracedItem> copy = copyStamped(*graph.item(), {StepKind::Descriptor, ""});
    copy->key = NUXO_KEY_GRAPH;
    const TracedItem* const version = mDescriptor->find(NUXO_KEY_VERSION);
    const Stamp stamp = {StepKind::Descriptor, "the descriptor's version"};
    if (version != nullptr) {
        copy->node->insert(copyStamped(*version, stamp));
    } else {
        copy->node->insertAttribute(NUXO_KEY_VERSION).apply(stamp, nullptr);
    }
    mResult->insert(std::move(copy));
}

// Overrides are written straight into the attribute, whatever its options list says.
void Replay::applyOverrides(const TracedNode& graph)
{
    for (const TracedNode* const apply : graph.children()) {
        if (apply->item()->key != NUXO_KEY_APPLY && !apply->hasText(NUXO_KEY_TYPE, "apply")) continue;
        const std::string* const target = apply->textOf(NUXO_KEY_TARGET);
        const TracedItem* const value = apply->find(NUXO_KEY_VALUE);
        if (target == nullptr || value == nullptr) continue;
        TracedItem* const attribute = findOrCreate(ItemUID(*target));
        if (attribute == nullptr || attribute->isNode()) continue;
        attribute->setFromText(value->text);
        attribute->position = value->position;
        attribute->apply({StepKind::Override, ""}, value->source());
    }
}

void Replay::disableUnusedPorts()
{
    for (const TracedNode* const node : mResult->children()) {
        for (TracedNode* const port : node->children()) disableIfUnused(*port);
    }
}

// Pixel ports that are neither private nor disabled already need a peer that works.
void Replay::disableIfUnused(TracedNode& port)
{
    const std::string* const type = port.textOf(NUXO_KEY_TYPE);
    const std::string* const content = port.textOf(NUXO_KEY_CONTENT_TYPE);
    const bool isPixelPort = type != nullptr && *type == "port" && (content == nullptr || *content == "pixel_data");
    if (!isPixelPort || port.integerOf(NUXO_KEY_PRIVATE).value_or(0) != 0) return;
    if (port.integerOf(NUXO_KEY_ENABLED).value_or(1) == 0) return;

    const std::string* const peerText = port.textOf(NUXO_KEY_PEER);
    const TracedNode* const peer = peerText == nullptr ? nullptr : mResult->follow(ItemUID(*peerText));
    if (peer != nullptr && peer->integerOf(NUXO_KEY_ENABLED).value_or(1) != 0) return;

    Stamp stamp = {StepKind::DisabledPort, "it has no peer"};
    const NUXO::ItemEntry* source = nullptr;
    const auto omission = mOmissions.find(pathOf(port));
    if (peer != nullptr) {
        stamp.note = "its peer " + *peerText + " is disabled";
        source = peer->find(NUXO_KEY_ENABLED)->source();
    } else if (peerText != nullptr) {
        stamp.note = "its peer " + *peerText + " is not in the graph";
        source = port.find(NUXO_KEY_PEER)->source();
    } else if (omission != mOmissions.end()) {
        stamp.note += ": " + omission->second.why;
        source = omission->second.element;
    }
    TracedItem* const present = port.find(NUXO_KEY_ENABLED);
    TracedItem& enabled = present != nullptr ? *present : port.insertAttribute(NUXO_KEY_ENABLED);
    if (enabled.isNode()) return;
    enabled.integer = 0;
    enabled.position = {};
    enabled.apply(stamp, source);
}

// A graph that a sensor feeds takes over the content of its mode.
void Replay::applySensorMode()
{
    TracedNode* sensor = nullptr;
    for (TracedNode* const node : mResult->children()) {
        const bool isActive =
            node->hasText(NUXO_KEY_TYPE, "source") && node->integerOf(NUXO_KEY_ENABLED).value_or(1) != 0;
        if (sensor == nullptr && isActive) sensor = node;
    }
    if (sensor == nullptr || sensor->item()->key != NUXO_KEY_SENSOR || mSensorModes == nullptr) return;
    const std::string* const modeText = sensor->textOf(NUXO_KEY_MODE_ID);
    if (modeText == nullptr) return;
    const std::string modeId = *modeText; // the defaults may write over it
    mergeTraced(*sensor, *mSensorModes, kMergeModeDefaults, {StepKind::ModeDefaults, ""});
    for (const TracedNode* const mode : mSensorModes->children()) {
        const std::string* const name = mode->textOf(NUXO_KEY_NAME);
        if (name == nullptr || *name != modeId) continue;
        mergeTraced(*sensor, *mode, kMergeMode, {StepKind::SensorMode, "mode " + modeId});
        return;
    }
}

} // namespace NuxoTool
