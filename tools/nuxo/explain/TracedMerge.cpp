// SPDX-License-Identifier: Apache-2.0
#include "explain/TracedMerge.h"

#include <nuxo/query/GraphQueryUtils.h>
#include <nuxo/tree/ItemUID.h>

#include <algorithm>
#include <array>

namespace NuxoTool {

using NUXO::GraphQueryUtils;
using NUXO::ItemUID;

namespace {

constexpr int32_t kOutput = 1; // `direction` of an output port
constexpr unsigned kApplyOption = GraphQueryUtils::CopyMissingNodes | GraphQueryUtils::Merge;

bool isProtected(uint32_t key)
{
    constexpr std::array<uint32_t, 5> keys = {NUXO_KEY_NAME, NUXO_KEY_DIRECTION, NUXO_KEY_ID, NUXO_KEY_PEER,
                                              NUXO_KEY_TYPE};
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

bool has(unsigned options, GraphQueryUtils::MergeOption option)
{
    return (options & static_cast<unsigned>(option)) != 0U;
}

// A push tries all attributes of a port, and a mode its name; what those say about the identity of the other is no news.
bool isWorthNoting(const Stamp& stamp, uint32_t key)
{
    if (stamp.kind == StepKind::Push) return !isProtected(key);
    return stamp.kind != StepKind::SensorMode || key != NUXO_KEY_NAME;
}

void writeOver(TracedItem& present, const TracedItem& item, unsigned options, const Stamp& stamp)
{
    if (present.type != item.type) return; // one of the other kind keeps its value
    if (has(options, GraphQueryUtils::Merge) && !isProtected(item.key)) {
        present.integer = item.integer;
        present.text = item.text;
        present.position = item.position;
        present.apply(stamp, item.source());
        return;
    }
    if (!isWorthNoting(stamp, item.key)) return;
    const std::string why = isProtected(item.key)
                                ? std::string("'") + ItemUID::key2str(item.key) + "' is never overwritten"
                                : "has its own";
    present.refuse({stamp.kind, stamp.note.empty() ? why : stamp.note + "; " + why}, item);
}

void takeOver(TracedNode& to, const TracedItem& item, unsigned options, const Stamp& stamp)
{
    TracedItem* const present = to.find(item.key);
    if (present != nullptr && present->isNode()) {
        const bool descends = item.isNode() && has(options, GraphQueryUtils::Merge) && item.key != NUXO_KEY_OPTIONS;
        if (descends) mergeTraced(*present->node, *item.node, options, stamp);
    } else if (item.isNode()) {
        if (has(options, GraphQueryUtils::CopyMissingNodes)) to.insert(copyStamped(item, stamp));
    } else if (present != nullptr) {
        writeOver(*present, item, options, stamp);
    } else {
        to.insert(copyStamped(item, stamp));
    }
}

// The end that the first `peer` of a port names; a path of more than two names ends at the second.
TracedNode* pushTarget(TracedNode& port)
{
    const std::string* const peer = port.textOf(NUXO_KEY_PEER);
    if (peer == nullptr) return nullptr;
    const size_t colon = peer->find(':');
    TracedNode* const node = port.root().child(ItemUID::str2key(peer->substr(0, colon)));
    if (node == nullptr || colon == std::string::npos) return node;
    return node->child(ItemUID::str2key(peer->substr(colon + 1)));
}

// An output port passes its content on. One level only: the peer's merge pushes no further.
void pushToPeer(TracedNode& port)
{
    if (port.integerOf(NUXO_KEY_DIRECTION) != kOutput) return;
    TracedNode* const peer = pushTarget(port);
    if (peer == nullptr) return;
    const std::string* const type = peer->textOf(NUXO_KEY_TYPE);
    const bool toSink = type != nullptr && *type == "sink";
    const unsigned options = toSink ? GraphQueryUtils::CopyMissingNodes : GraphQueryUtils::Merge;
    mergeTraced(*peer, port, options, {StepKind::Push, "from " + pathOf(port)});
}

bool listHolds(const std::string& list, const std::string& value)
{
    for (size_t start = 0; start <= list.size();) {
        const size_t end = std::min(list.find(',', start), list.size());
        if (list.compare(start, end - start, value) == 0) return true;
        start = end + 1;
    }
    return false;
}

const TracedNode* findOption(const TracedNode& node, uint32_t key, const std::string& value)
{
    for (const TracedNode* const options : node.children()) {
        if (options->item()->key != NUXO_KEY_OPTIONS) continue;
        if (options->integerOf(NUXO_KEY_ATTRIBUTE) != static_cast<int32_t>(key)) continue;
        for (const TracedNode* const option : options->children()) {
            const std::string* const values = option->textOf(NUXO_KEY_VALUE);
            if (values != nullptr && listHolds(*values, value)) return option;
        }
    }
    return nullptr;
}

} // namespace

// Recursion is bounded by the depth of trees, see copyStamped.
void mergeTraced(TracedNode& to, const TracedNode& from, unsigned options, const Stamp& stamp)
{
    if (&to != &from) {
        // Both may be of one tree, so what is walked may grow meanwhile; what it held at the start counts.
        std::vector<const TracedItem*> held;
        for (const auto& item : from.items()) held.push_back(item.get());
        for (const TracedItem* const item : held) takeOver(to, *item, options, stamp);
    }
    if (has(options, GraphQueryUtils::PushToPeer)) pushToPeer(to);
}

bool obeyTracedOptions(TracedNode& node, uint32_t key, const std::string& value)
{
    const TracedNode* const option = findOption(node, key, value);
    if (option == nullptr) return false;
    const TracedNode* const apply = option->child(NUXO_KEY_APPLY);
    if (apply == nullptr) return true; // stands for nothing else
    const std::string note = "for " + std::string(ItemUID::key2str(key)) + '=' + value + " of " + pathOf(node);
    mergeTraced(node.root(), *apply, kApplyOption, {StepKind::Option, note});
    return true;
}

} // namespace NuxoTool
