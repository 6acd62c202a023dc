// SPDX-License-Identifier: Apache-2.0
#include "support/CameraRules.h"
#include "support/Fuzzing.h"
#include "support/PortFacts.h"
#include "support/TreeChecks.h"
#include "support/TreeCopy.h"

#include <nuxo/nuxo.h>

#include <algorithm>

namespace fuzzing {

namespace {

using NUXO::GraphCameraUtil;
using NUXO::GraphConfigItem;
using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;
using NUXO::ItemUID;
using NUXO::ZmtTevSimUtils;

constexpr size_t kMostTried = 4;

int setPeerFormat(const IGraphConfig& port, const std::string& format)
{
    const Peer peer = peerOf(&port);
    if (peer.node == nullptr) return StatusBadState;
    const int status = peer.node->setValue(NUXO_KEY_FORMAT, format);
    return status == StatusNotFound ? static_cast<int>(StatusOk) : status; // refused, which is fine
}

// An accepted format may merge a whole subtree into the graph, so a few of them show what there is to see.
void checkApplyFormat(const GraphConfigNode& original, size_t port, const std::string& format)
{
    const TreeCopy applied(original);
    const TreeCopy set(original);
    for (size_t i = port; i < std::min(port + kMostTried, applied.size()); ++i) {
        require(GraphCameraUtil::applyFormat(&applied.node(i), format) == setPeerFormat(set.node(i), format),
                "a format is set at the peer if options allow it");
    }
    checkSame(set.root(), applied.root());
    applied.check();
}

GraphConfigItem* firstItem(const GraphConfigNode& node, uint32_t key)
{
    GraphConfigItem* item = nullptr;
    static_cast<void>(node.getAttribute(key, &item)); // stays null
    return item;
}

void checkForcedValue(GraphConfigNode& node, uint32_t key, int value)
{
    const GraphConfigItem* const before = firstItem(node, key);
    const int32_t count = node.getDescendantCount();
    const bool takesIntegers = before == nullptr || before->type == GraphConfigItem::INT;
    const int status = ZmtTevSimUtils::setValue(&node, key, value);
    require(status == (takesIntegers ? StatusOk : StatusNotFound), "an integer can be forced, nothing else");
    require(!takesIntegers || integerOf(&node, key) == value, "a forced value is there");
    require(before == nullptr || firstItem(node, key) == before, "what exists is written to");
    require(node.getDescendantCount() == count + (before == nullptr ? 1 : 0), "what is missing is added");
}

void checkForcedValues(const GraphConfigNode& original, size_t node, const Request& request)
{
    const TreeCopy copy(original);
    std::vector<uint32_t> keys = {request.key, request.key, request.nodeType};
    for (const auto& entry : copy.node(node)) keys.push_back(entry.first);
    for (const uint32_t key : keys) checkForcedValue(copy.node(node), key, request.value);
    copy.check();
}

std::vector<const IGraphConfig*> overridesOf(const GraphConfigNode& graph)
{
    std::vector<const IGraphConfig*> overrides;
    const std::vector<IGraphConfig*> typed = childrenOfType(&graph, NUXO_KEY_APPLY);
    NUXO::NodeIterator cursor(&graph);
    while (const IGraphConfig* const child = cursor.iterateDescendants()) {
        const bool isTyped = std::find(typed.begin(), typed.end(), child) != typed.end();
        if (isTyped || child->getUid() == NUXO_KEY_APPLY) overrides.push_back(child);
    }
    return overrides;
}

// Whether a graph had one override only and still has, the same as before: overrides may change each other.
bool isPredictable(const GraphConfigNode& before, const GraphConfigNode& after)
{
    const std::vector<const IGraphConfig*> then = overridesOf(before);
    const std::vector<const IGraphConfig*> now = overridesOf(after);
    return then.size() == 1 && now.size() == 1 && textOf(then[0], NUXO_KEY_TARGET) == textOf(now[0], NUXO_KEY_TARGET) &&
           textOf(then[0], NUXO_KEY_VALUE) == textOf(now[0], NUXO_KEY_VALUE);
}

// What was overridden holds the value.
void checkOverridden(const IGraphConfig& apply, const GraphConfigNode& result)
{
    GraphConfigItem* item = nullptr;
    const ItemUID target(textOf(&apply, NUXO_KEY_TARGET).value_or(""));
    if (result.getAttribute(target, &item) != StatusOk) return;
    const std::string value = textOf(&apply, NUXO_KEY_VALUE).value_or("");
    int number = 0;
    std::string text;
    if (item->getValue(number) == StatusOk)
        require(number == std::stoi(value), "an override gives an integer its value");
    if (item->getValue(text) == StatusOk) require(text == value, "an override gives a text its value");
}

void checkOverride(const std::vector<GraphConfigNode*>& nodes, size_t graph, size_t result)
{
    const TreeCopy copy(*nodes.front());
    const TreeCopy other(*nodes.front());
    const int status = applyOverrides(copy.node(graph), copy.node(result));
    require(status == applyOverrides(other.node(graph), other.node(result)), "overrides have one status");
    checkSame(copy.root(), other.root());
    copy.check();
    if (status != StatusOk || !isPredictable(*nodes[graph], copy.node(graph))) return;
    checkOverridden(*overridesOf(copy.node(graph)).front(), copy.node(result));
}

// For a built graph, for the graph itself, and for what a descriptor's graph refers to.
void checkOverrides(const std::vector<GraphConfigNode*>& nodes, size_t graph)
{
    const IGraphConfig* const described = nodes.front()->getDescendant(NUXO_KEY_NODES);
    checkOverride(nodes, graph, 0);
    checkOverride(nodes, graph, graph);
    const auto found = std::find(nodes.begin(), nodes.end(), described);
    if (found != nodes.end()) checkOverride(nodes, graph, static_cast<size_t>(found - nodes.begin()));
}

} // namespace

void checkEdit(Edit edit, const std::vector<GraphConfigNode*>& nodes, size_t node, const Request& request)
{
    const GraphConfigNode& root = *nodes.front();
    switch (edit) {
    case Edit::Format: checkApplyFormat(root, node, request.text); break;
    case Edit::Value: checkForcedValues(root, node, request); break;
    case Edit::Overrides: checkOverrides(nodes, node); break;
    case Edit::Descriptor: checkDescriptor(root, request.value); break;
    }
}

} // namespace fuzzing
