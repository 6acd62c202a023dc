// SPDX-License-Identifier: Apache-2.0
#include <nuxo/NuxoStatus.h>
#include <nuxo/Log.h>
#include <nuxo/tree/GraphConfigNode.h>
#include <nuxo/tree/TreeAccess.h>

#include <string>
#include <string_view>

namespace NUXO {

namespace {

bool isAttribute(const GraphConfigItem& item)
{
    return item.type == GraphConfigItem::STRING || item.type == GraphConfigItem::INT;
}

// The status of comparing one attribute: found, not equal, or the status of reading it as the wrong kind.
int32_t compareAttribute(const GraphConfigItem& item, std::string_view value)
{
    if (item.type != GraphConfigItem::STRING) return StatusNotFound;
    return static_cast<const GraphConfigStrAttribute&>(item).value == value ? StatusOk : StatusNoMoreMatches;
}

int32_t compareAttribute(const GraphConfigItem& item, int value)
{
    if (item.type != GraphConfigItem::INT) return StatusNotFound;
    return static_cast<const GraphConfigIntAttribute&>(item).value == value ? StatusOk : StatusNoMoreMatches;
}

// Compares the attributes with the key in order; one of the wrong kind ends the scan.
template <typename Value> int32_t scanAttributes(const GraphConfigNode& node, uint32_t key, const Value& value)
{
    const ItemMap& items = TreeAccess::items(node);
    for (ItemMap::const_iterator it = items.find(key); it != items.end() && it->first == key; ++it) {
        if (!isAttribute(*it->second)) continue;
        const int32_t status = compareAttribute(*it->second, value);
        if (status != StatusNoMoreMatches) return status;
    }
    return StatusNoMoreMatches;
}

template <typename Value>
int32_t findDeprecated(const ItemMap& items, uint32_t key, const Value& value, ItemMap::const_iterator& it,
                       GraphConfigNode** out)
{
    NUXO_WARN("WARNING: deprecated funtion getDescendant(). Use NodeIterator instead");
    if (out == nullptr) return StatusBadArgument;
    while (it != items.end()) {
        GraphConfigNode* const child = asNode(it->second);
        ++it;
        if (child == nullptr || scanAttributes(*child, key, value) != StatusOk) continue;
        *out = child;
        return StatusOk;
    }
    return StatusNoMoreMatches;
}

} // namespace

bool hasText(const GraphConfigNode& node, uint32_t key, std::string_view value)
{
    return scanAttributes(node, key, value) == StatusOk;
}

template <>
int32_t GraphConfigNode::iterateAttributes<std::string>(uint32_t key, const std::string& value, iterator& it) const
{
    const GraphConfigNode* const node = it == end() ? nullptr : asNode(it->second);
    return node == nullptr ? static_cast<int32_t>(StatusBadArgument) : scanAttributes(*node, key, value);
}

int32_t GraphConfigNode::getDescendant(uint32_t key, const std::string& value, iterator& it,
                                       GraphConfigNode** out) const
{
    return findDeprecated(mItems, key, value, it, out);
}

int32_t GraphConfigNode::getDescendant(uint32_t key, int value, iterator& it, GraphConfigNode** out) const
{
    return findDeprecated(mItems, key, value, it, out);
}

GraphConfigNode::iterator GraphConfigNode::getNextAttribute(iterator& it) const
{
    if (it == end()) return it;
    ++it;
    while (it != end() && !isAttribute(*it->second)) ++it;
    return it;
}

} // namespace NUXO
