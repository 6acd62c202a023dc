// SPDX-License-Identifier: Apache-2.0
#include <nuxo/NuxoStatus.h>
#include <nuxo/Log.h>
#include <nuxo/tree/GraphConfigNode.h>
#include <nuxo/tree/TreeAccess.h>

#include <new>
#include <string>
#include <utility>

namespace NUXO {

namespace {

// The options rule of setting by key: the option that the value stands for is applied first.
int32_t setIfOptionsAllow(GraphConfigNode& node, uint32_t key, const std::string& text, LogClass refusalClass)
{
    const int32_t status = node.handleAttributeOptions(&node, key, text);
    if (status == StatusOk || status == StatusNotSupported) return StatusOk;
    NUXO_LOG(refusalClass, kGraphTag, "setValue() restricted to attributes that have predefined options");
    return status;
}

// A value that the client sets stands in no document any more.
template <typename Value>
int32_t storeByHand(GraphConfigNode& node, uint32_t key, GraphConfigItem& item, const Value& value)
{
    const int32_t status = item.setValue(value);
    if (status == StatusOk) setPositionOf(node, key, {});
    return status;
}

int32_t refuseKind()
{
    NUXO_ERROR("Attribute is of wrong type");
    return StatusBadArgument;
}

} // namespace

int32_t GraphConfigNode::getValue(uint32_t key, int& value) const
{
    GraphConfigItem* const item = findItem(*this, key);
    return item == nullptr ? static_cast<int32_t>(StatusMissingData) : item->getValue(value);
}

int32_t GraphConfigNode::getValue(uint32_t key, std::string& value) const
{
    GraphConfigItem* const item = findItem(*this, key);
    return item == nullptr ? static_cast<int32_t>(StatusMissingData) : item->getValue(value);
}

int32_t GraphConfigNode::getValue(const ItemUID& path, int& value) const
{
    if (path.empty()) return StatusMissingData;
    const IGraphConfig* const holder = path.size() > 1 ? getDescendant(path) : this;
    return holder == nullptr ? static_cast<int32_t>(StatusBadArgument) : holder->getValue(path.back(), value);
}

int32_t GraphConfigNode::getValue(const ItemUID& path, std::string& value) const
{
    if (path.empty()) return StatusMissingData;
    const IGraphConfig* const holder = path.size() > 1 ? getDescendant(path) : this;
    return holder == nullptr ? static_cast<int32_t>(StatusBadArgument) : holder->getValue(path.back(), value);
}

int32_t GraphConfigNode::setValue(uint32_t key, int value)
{
    GraphConfigItem* const item = findItem(*this, key);
    if (item == nullptr) return StatusNotFound;
    if (item->type != INT) return refuseKind();
    try {
        const int32_t status = setIfOptionsAllow(*this, key, std::to_string(value), LogDebug);
        return status == StatusOk ? storeByHand(*this, key, *item, value) : status;
    } catch (const std::bad_alloc&) {
        return StatusNoMemory;
    }
}

int32_t GraphConfigNode::setValue(uint32_t key, const std::string& value)
{
    GraphConfigItem* const item = findItem(*this, key);
    if (item == nullptr) return StatusNotFound;
    if (item->type != STRING) return refuseKind();
    try {
        const std::string text = value; // applying the option may overwrite what the reference refers to
        const int32_t status = setIfOptionsAllow(*this, key, text, LogError);
        return status == StatusOk ? storeByHand(*this, key, *item, text) : status;
    } catch (const std::bad_alloc&) {
        return StatusNoMemory;
    }
}

int32_t GraphConfigNode::setValue(const ItemUID& path, int value)
{
    if (path.empty()) return StatusMissingData;
    IGraphConfig* const holder = path.size() > 1 ? getDescendant(path) : this;
    return holder == nullptr ? static_cast<int32_t>(StatusNotFound) : holder->setValue(path.back(), value);
}

int32_t GraphConfigNode::setValue(const ItemUID& path, const std::string& value)
{
    if (path.empty()) return StatusMissingData;
    IGraphConfig* const holder = path.size() > 1 ? getDescendant(path) : this;
    return holder == nullptr ? static_cast<int32_t>(StatusNotFound) : holder->setValue(path.back(), value);
}

int32_t GraphConfigNode::setValueFromStr(const ItemUID& path, std::string text)
{
    if (path.empty()) return StatusMissingData;
    auto* const holder = static_cast<GraphConfigNode*>(path.size() > 1 ? getGraphConfigItem(path) : this);
    if (holder == nullptr) return StatusNotFound;
    const uint32_t key = path.back();
    GraphConfigItem* item = findItem(*holder, key);
    if (item == nullptr) {
        try {
            const int32_t status = holder->createAttribute(ItemUID{key}, &item);
            if (status != StatusOk) {
                NUXO_ERROR("Could not create attribute");
                return status == StatusNoMemory ? StatusNoMemory : StatusNotFound;
            }
        } catch (const std::bad_alloc&) {
            return StatusNoMemory;
        }
    }
    return item->type == INT ? item->setValue(std::stoi(text)) : item->setValue(text);
}

} // namespace NUXO
