// SPDX-License-Identifier: Apache-2.0
#include <nuxo/NuxoStatus.h>
#include <nuxo/Log.h>
#include <nuxo/tree/NodeIterator.h>
#include <nuxo/tree/TreeAccess.h>

#include <new>

namespace NUXO {

NodeIterator::NodeIterator(const IGraphConfig* node) : mNode(const_cast<IGraphConfig*>(node))
{
}

// Passes over items, counting each, up to and including the first that matches. The position is a count, so it stays
// meaningful when items are added or removed between calls.
template <typename Matches> IGraphConfig* NodeIterator::step(Matches matches)
{
    const GraphConfigNode* const node = asNode(static_cast<const IGraphConfig*>(mNode));
    if (node == nullptr) {
        NUXO_ERROR("NodeIterator was constructed with NULL.");
        return nullptr;
    }
    const ItemMap& items = TreeAccess::items(*node);
    while (static_cast<uint32_t>(mIndex) < items.size()) {
        const ItemEntry& entry = items.begin()[mIndex++];
        GraphConfigNode* const child = asNode(entry.second);
        if (child != nullptr && matches(*child, entry.first)) return child;
    }
    mIndex = 0;
    mTypeKey = 0;
    return nullptr;
}

IGraphConfig* NodeIterator::iterateDescendants()
{
    return step([](const GraphConfigNode&, uint32_t) { return true; });
}

IGraphConfig* NodeIterator::iterateByUid(const uint32_t& key)
{
    const uint32_t wanted = key;
    return step([wanted](const GraphConfigNode&, uint32_t childKey) { return childKey == wanted; });
}

IGraphConfig* NodeIterator::iterateByType(const uint32_t& type)
{
    if (type != mTypeKey) {
        try {
            mTypeName = ItemUID::key2str(type);
        } catch (const std::bad_alloc&) {
            return nullptr;
        }
        mTypeKey = type;
    }
    return iterateNodes(NUXO_KEY_TYPE, mTypeName);
}

IGraphConfig* NodeIterator::iterateNodes(const uint32_t& attributeKey, const std::string& value)
{
    const uint32_t key = attributeKey;
    return step([key, &value](const GraphConfigNode& child, uint32_t) { return hasText(child, key, value); });
}

int32_t NodeIterator::reset()
{
    mIndex = 0;
    mTypeKey = 0;
    return StatusOk;
}

} // namespace NUXO
