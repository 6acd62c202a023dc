// SPDX-License-Identifier: Apache-2.0
#include "explain/TracedTree.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/tree/ItemUID.h>

#include <algorithm>
#include <cstdlib>

namespace NuxoTool {

using NUXO::GraphConfigItem;
using NUXO::GraphConfigNode;
using NUXO::ItemEntry;
using NUXO::ItemUID;

namespace {

bool isBefore(uint32_t key, const std::unique_ptr<TracedItem>& item)
{
    return key < item->key;
}

} // namespace

const char* stepName(StepKind kind)
{
    switch (kind) {
    case StepKind::Descriptor: return "descriptor";
    case StepKind::BaseNode: return "base node";
    case StepKind::Difference: return "difference";
    case StepKind::Connection: return "connection";
    case StepKind::Propagated: return "propagated";
    case StepKind::Settings: return "settings";
    case StepKind::Push: return "push";
    case StepKind::Override: return "override";
    case StepKind::DisabledPort: return "disabled port";
    case StepKind::ModeDefaults: return "mode defaults";
    case StepKind::SensorMode: return "sensor mode";
    case StepKind::Option: return "option";
    }
    return "";
}

std::string TracedItem::valueText() const
{
    if (isNode()) return "";
    return isInteger() ? std::to_string(integer) : text;
}

const Step* TracedItem::winner() const
{
    const auto last = std::find_if(steps.rbegin(), steps.rend(), [](const Step& step) { return step.isApplied; });
    return last == steps.rend() ? nullptr : &*last;
}

const ItemEntry* TracedItem::source() const
{
    const Step* const won = winner();
    return won == nullptr ? nullptr : won->source;
}

void TracedItem::apply(const Stamp& stamp, const ItemEntry* from)
{
    if (from != nullptr && from == source()) return;
    steps.push_back({stamp.kind, valueText(), from, stamp.note, true});
}

void TracedItem::refuse(const Stamp& stamp, const TracedItem& from)
{
    if (from.source() != nullptr && from.source() == source()) return;
    steps.push_back({stamp.kind, from.valueText(), from.source(), stamp.note, false});
}

void TracedItem::setFromText(const std::string& value)
{
    constexpr int decimal = 10;
    if (isInteger()) {
        integer = static_cast<int32_t>(std::strtol(value.c_str(), nullptr, decimal));
    } else {
        text = value;
    }
}

const TracedNode& TracedNode::root() const
{
    const TracedNode* node = this;
    while (node->mParent != nullptr) node = node->mParent;
    return *node;
}

TracedItem* TracedNode::find(uint32_t key) const
{
    const auto behind = std::upper_bound(mItems.begin(), mItems.end(), key, isBefore);
    auto first = behind;
    while (first != mItems.begin() && (*(first - 1))->key == key) --first;
    return first == behind ? nullptr : first->get();
}

TracedNode* TracedNode::child(uint32_t key) const
{
    const TracedItem* const item = find(key);
    return item == nullptr ? nullptr : item->node.get();
}

const std::string* TracedNode::textOf(uint32_t key) const
{
    const TracedItem* const item = find(key);
    return item != nullptr && item->type == GraphConfigItem::STRING ? &item->text : nullptr;
}

std::optional<int32_t> TracedNode::integerOf(uint32_t key) const
{
    const TracedItem* const item = find(key);
    if (item == nullptr || !item->isInteger()) return std::nullopt;
    return item->integer;
}

bool TracedNode::hasText(uint32_t key, const std::string& value) const
{
    return std::any_of(mItems.begin(), mItems.end(), [&](const std::unique_ptr<TracedItem>& item) {
        return item->key == key && item->type == GraphConfigItem::STRING && item->text == value;
    });
}

std::vector<TracedNode*> TracedNode::children() const
{
    std::vector<TracedNode*> nodes;
    for (const auto& item : mItems) {
        if (item->isNode()) nodes.push_back(item->node.get());
    }
    return nodes;
}

TracedNode* TracedNode::follow(const ItemUID& path)
{
    TracedNode* holder = this;
    for (size_t i = 0; holder != nullptr && i + 1 < path.size(); ++i) holder = holder->child(path[i]);
    const TracedItem* const item = holder == nullptr || path.empty() ? nullptr : holder->find(path.back());
    if (item == nullptr) return nullptr;
    if (item->isNode()) return item->node.get();
    return path.size() > 1 ? holder : nullptr;
}

TracedItem& TracedNode::insert(std::unique_ptr<TracedItem> item)
{
    if (item->isNode()) {
        item->node->mParent = this;
        item->node->mItem = item.get();
    }
    const auto place = std::upper_bound(mItems.begin(), mItems.end(), item->key, isBefore);
    return **mItems.insert(place, std::move(item));
}

TracedItem& TracedNode::insertAttribute(uint32_t key)
{
    auto item = std::make_unique<TracedItem>();
    item->key = key;
    item->type = ItemUID::isInteger(key) ? GraphConfigItem::INT : GraphConfigItem::STRING;
    return insert(std::move(item));
}

TracedNode& TracedNode::insertNode(uint32_t key, const Stamp& stamp)
{
    auto item = std::make_unique<TracedItem>();
    item->key = key;
    item->type = GraphConfigItem::NODE;
    item->node = std::make_unique<TracedNode>();
    item->apply(stamp, nullptr);
    return *insert(std::move(item)).node;
}

void TracedNode::removeFirst(uint32_t key)
{
    const auto found = std::find_if(mItems.begin(), mItems.end(), [key](const auto& item) { return item->key == key; });
    if (found != mItems.end()) mItems.erase(found);
}

// Recursion is bounded: the parser stops at NUXOParser::kMaxDepth levels.
std::unique_ptr<TracedNode> traceFile(const GraphConfigNode& node, StepKind kind)
{
    auto traced = std::make_unique<TracedNode>();
    for (auto entry = node.begin(); entry != node.end(); ++entry) {
        auto item = std::make_unique<TracedItem>();
        item->key = entry->first;
        item->type = static_cast<GraphConfigItem::ItemType>(entry->second->type);
        item->position = NUXO::getSourcePosition(*entry);
        static_cast<void>(entry->second->getValue(item->integer)); // only one of both has a value
        static_cast<void>(entry->second->getValue(item->text));
        const auto* const child = dynamic_cast<const GraphConfigNode*>(entry->second);
        if (child != nullptr) item->node = traceFile(*child, kind);
        item->apply({kind, ""}, entry);
        traced->insert(std::move(item));
    }
    return traced;
}

// Recursion is bounded as above: a built tree is at most a small multiple as deep.
std::unique_ptr<TracedItem> copyStamped(const TracedItem& item, const Stamp& stamp)
{
    auto copy = std::make_unique<TracedItem>();
    copy->key = item.key;
    copy->type = item.type;
    copy->integer = item.integer;
    copy->text = item.text;
    copy->position = item.position;
    if (item.isNode()) {
        copy->node = std::make_unique<TracedNode>();
        for (const auto& child : item.node->items()) copy->node->insert(copyStamped(*child, stamp));
    }
    copy->apply(stamp, item.source());
    return copy;
}

std::string pathOf(const TracedNode& node)
{
    std::string path;
    for (const TracedNode* at = &node; at->item() != nullptr; at = at->parent()) {
        if (!path.empty()) path.insert(0, 1, ':');
        path.insert(0, ItemUID::key2str(at->item()->key));
    }
    return path;
}

} // namespace NuxoTool
