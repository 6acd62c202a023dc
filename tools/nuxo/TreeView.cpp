// SPDX-License-Identifier: Apache-2.0
#include "TreeView.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/tree/ItemUID.h>
#include <nuxo/tree/NuxoKeys.h>

namespace NuxoTool {

using NUXO::GraphConfigItem;
using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

const std::string& TreeView::keyName(uint32_t key)
{
    // Looking for the name of each key would cost a walk through the vocabulary. Of several names the first counts.
    if (mNames.empty()) {
        for (const auto& [name, value] : NUXO::nuxo_key_map) mNames.emplace(value, name);
    }
    const auto known = mNames.find(key);
    if (known != mNames.end()) return known->second;
    return mNames.emplace(key, NUXO::ItemUID::key2str(key)).first->second;
}

std::vector<AttributeView> TreeView::attributes(const GraphConfigNode& node)
{
    std::vector<AttributeView> views;
    for (auto it = node.begin(); it != node.end(); ++it) {
        AttributeView view;
        if (it->second->type == GraphConfigItem::INT) {
            view.isInteger = it->second->getValue(view.integer) == StatusOk;
        } else if (it->second->type == GraphConfigItem::STRING) {
            static_cast<void>(it->second->getValue(view.text)); // an unreadable text shows as empty
        } else {
            continue;
        }
        view.item = it;
        view.key = it->first;
        view.isKeyName = view.isInteger && view.key == NUXO_KEY_ATTRIBUTE;
        if (view.isKeyName) view.text = keyName(static_cast<uint32_t>(view.integer));
        view.name = keyName(it->first);
        view.isFirst = it == node.begin() || (it - 1)->first != it->first;
        views.push_back(view);
    }
    return views;
}

std::vector<ChildView> TreeView::children(const GraphConfigNode& node)
{
    std::vector<ChildView> views;
    for (auto it = node.begin(); it != node.end(); ++it) {
        const auto* const child = dynamic_cast<const GraphConfigNode*>(it->second);
        if (child != nullptr) views.push_back({keyName(it->first), child});
    }
    return views;
}

std::string textOf(const IGraphConfig& node, uint32_t key)
{
    std::string text;
    static_cast<void>(node.getValue(key, text)); // stays empty when there is none
    return text;
}

int integerOf(const IGraphConfig& node, uint32_t key, int fallback)
{
    int value = fallback;
    static_cast<void>(node.getValue(key, value)); // stays the fallback when there is none
    return value;
}

std::optional<int> optionalInteger(const IGraphConfig& node, uint32_t key)
{
    int value = 0;
    if (node.getValue(key, value) != StatusOk) return std::nullopt;
    return value;
}

std::string dimensionsOf(const IGraphConfig& node)
{
    int width = 0;
    int height = 0;
    const bool hasSize =
        node.getValue(NUXO_KEY_WIDTH, width) == StatusOk && node.getValue(NUXO_KEY_HEIGHT, height) == StatusOk;
    std::string text = hasSize ? std::to_string(width) + 'x' + std::to_string(height) : "";
    const std::string format = textOf(node, NUXO_KEY_FORMAT);
    if (!text.empty() && !format.empty()) text += ' ';
    return text + format;
}

} // namespace NuxoTool
