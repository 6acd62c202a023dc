// SPDX-License-Identifier: Apache-2.0
#include "explain/Replay.h"

#include <nuxo/tree/ItemUID.h>

// Nodes of the descriptor on their way into a graph.

namespace NuxoTool {

using NUXO::ItemUID;

namespace {

const TracedNode* findBase(const TracedNode& nodes, const std::string& baseName)
{
    for (const TracedNode* const node : nodes.children()) {
        const std::string* const name = node->textOf(NUXO_KEY_NAME);
        if (name != nullptr && *name == baseName && node->hasText(NUXO_KEY_TYPE, "base_node")) return node;
    }
    return nullptr;
}

// The type and name of the concrete node in the copy of its base node.
void takeIdentity(TracedNode& copy, const TracedItem& node)
{
    TracedItem* const type = copy.find(NUXO_KEY_TYPE);
    const TracedItem* const baseType = copy.find(NUXO_KEY_BASE_TYPE);
    if (type != nullptr && baseType != nullptr) {
        type->text = baseType->text;
        type->position = baseType->position;
        type->apply({StepKind::BaseNode, "its base_type"}, baseType->source());
    }
    TracedItem* const name = copy.find(NUXO_KEY_NAME);
    if (name == nullptr) return;
    const TracedItem* const ownName = node.node->find(NUXO_KEY_NAME);
    name->text = ItemUID::key2str(node.key);
    name->position = node.position;
    name->apply({StepKind::Descriptor, ""}, ownName == nullptr ? node.source() : ownName->source());
}

// What an option applies to the base node, it shall apply to the concrete node.
void retargetOptions(const TracedNode& copy, uint32_t baseKey, uint32_t nodeKey)
{
    if (baseKey == NUXO_KEY_NA) return;
    for (const TracedNode* const port : copy.children()) {
        if (!port->hasText(NUXO_KEY_TYPE, "port")) continue;
        for (const TracedNode* const options : port->children()) {
            if (options->item()->key != NUXO_KEY_OPTIONS) continue;
            for (const TracedNode* const option : options->children()) {
                TracedNode* const apply = option->child(NUXO_KEY_APPLY);
                const TracedItem* const original = apply == nullptr ? nullptr : apply->find(baseKey);
                if (original == nullptr) continue;
                std::unique_ptr<TracedItem> renamed = copyStamped(*original, {StepKind::BaseNode, ""});
                renamed->key = nodeKey;
                apply->insert(std::move(renamed));
                apply->removeFirst(baseKey);
            }
        }
    }
}

void applyDifference(TracedNode& copy, const TracedNode& difference)
{
    const std::string* const target = difference.textOf(NUXO_KEY_TARGET);
    const TracedItem* const value = difference.find(NUXO_KEY_VALUE);
    const ItemUID path(target == nullptr ? std::string() : *target);
    if (path.empty()) return;
    TracedNode* holder = &copy;
    for (size_t i = 0; holder != nullptr && i + 1 < path.size(); ++i) holder = holder->child(path[i]);
    if (holder != nullptr && path.size() > 1) {
        TracedNode* const named = holder->child(path.back());
        if (named != nullptr) holder = named; // a node of that name is looked into
    }
    if (holder == nullptr) return;
    TracedItem* const present = holder->find(path.back());
    TracedItem& attribute = present != nullptr ? *present : holder->insertAttribute(path.back());
    if (attribute.isNode()) return;
    attribute.setFromText(value == nullptr ? "" : value->text);
    attribute.position = value == nullptr ? NUXO::SourcePosition() : value->position;
    attribute.apply({StepKind::Difference, ""}, value == nullptr ? difference.item()->source() : value->source());
}

} // namespace

std::unique_ptr<TracedItem> Replay::buildFromBase(const TracedItem& node, const std::string& baseName) const
{
    const TracedNode* const base = findBase(*mNodes, baseName);
    if (base == nullptr) return nullptr;
    std::unique_ptr<TracedItem> copy = copyStamped(*base->item(), {StepKind::BaseNode, "of " + baseName});
    copy->key = node.key;
    copy->position = node.position;
    copy->apply({StepKind::Descriptor, ""}, node.source());
    takeIdentity(*copy->node, node);
    retargetOptions(*copy->node, ItemUID::str2key(baseName), node.key);
    for (const TracedNode* const difference : node.node->children()) applyDifference(*copy->node, *difference);
    return copy;
}

TracedNode* Replay::copyDescriptorNode(uint32_t key)
{
    const TracedItem* const node = mNodes->find(key);
    if (node == nullptr || !node->isNode()) return nullptr;
    TracedNode* const present = mResult->child(key);
    if (present != nullptr) return present;
    const std::string* const baseName = node->node->textOf(NUXO_KEY_BASE_NODE);
    std::unique_ptr<TracedItem> copy =
        baseName == nullptr ? copyStamped(*node, {StepKind::Descriptor, ""}) : buildFromBase(*node, *baseName);
    return copy == nullptr ? nullptr : mResult->insert(std::move(copy)).node.get();
}

TracedItem* Replay::findOrCreate(const ItemUID& path)
{
    TracedNode* holder = mResult->follow(path);
    TracedItem* const present = holder == nullptr ? nullptr : holder->find(path.back());
    if (present != nullptr) return present;

    // Missing at the end may be the attribute, and the node that holds it unless that would be a new node of the graph.
    holder = mResult.get();
    size_t depth = 0;
    for (; depth < path.size(); ++depth) {
        TracedNode* const child = holder->child(path[depth]);
        if (child == nullptr) break;
        holder = child;
    }
    const size_t missing = path.size() - depth;
    if (missing == 2 && depth >= 1) {
        holder = &holder->insertNode(path[depth], {StepKind::Override, "to hold the attribute"});
    } else if (missing != 1 || holder->find(path.back()) != nullptr) {
        return nullptr;
    }
    return &holder->insertAttribute(path.back());
}

} // namespace NuxoTool
