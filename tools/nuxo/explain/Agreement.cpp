// SPDX-License-Identifier: Apache-2.0
#include "explain/Agreement.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/tree/ItemUID.h>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::SourcePosition;

namespace {

std::string inNode(const TracedNode& node)
{
    const std::string path = pathOf(node);
    return path.empty() ? "the graph" : "'" + path + "'";
}

std::string valueOf(const NUXO::ItemEntry& entry)
{
    int integer = 0;
    std::string text;
    if (entry.second->getValue(integer) == StatusOk) return std::to_string(integer);
    static_cast<void>(entry.second->getValue(text)); // a node has none
    return text;
}

std::string positionText(const SourcePosition& position)
{
    return position.known()
               ? std::string(NUXO::getSourceDocument(position.document)) + " at byte " + std::to_string(position.offset)
               : "no place";
}

std::string compareItem(const TracedNode& holder, const TracedItem& item, const NUXO::ItemEntry& entry)
{
    // Names are looked up one by one: only where there is something to tell.
    const auto where = [&] { return std::string("'") + NUXO::ItemUID::key2str(item.key) + "' in " + inNode(holder); };
    if (item.key != entry.first)
        return where() + " stands where the graph has '" + NUXO::ItemUID::key2str(entry.first) + "'";
    if (item.type != entry.second->type) return where() + " is of another kind";
    const std::string value = valueOf(entry);
    if (item.valueText() != value)
        return where() + " comes out as '" + item.valueText() + "', the graph has '" + value + "'";
    const SourcePosition position = NUXO::getSourcePosition(entry);
    if (position.document == item.position.document && position.offset == item.position.offset) return "";
    return where() + " comes from " + positionText(item.position) + ", the graph has it from " + positionText(position);
}

} // namespace

// Recursion is bounded by the depth of trees, see copyStamped.
std::string findDisagreement(const TracedNode& traced, const GraphConfigNode& built)
{
    auto entry = built.begin();
    for (const auto& item : traced.items()) {
        if (entry == built.end()) {
            return std::string("'") + NUXO::ItemUID::key2str(item->key) + "' is not in " + inNode(traced);
        }
        std::string found = compareItem(traced, *item, *entry);
        const auto* const child = dynamic_cast<const GraphConfigNode*>(entry->second);
        if (found.empty() && child != nullptr) found = findDisagreement(*item->node, *child);
        if (!found.empty()) return found;
        ++entry;
    }
    if (entry == built.end()) return "";
    return inNode(traced) + " has '" + NUXO::ItemUID::key2str(entry->first) + "' as well";
}

} // namespace NuxoTool
