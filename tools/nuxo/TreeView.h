// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_TREE_VIEW_H
#define NUXO_TOOL_TREE_VIEW_H

#include <nuxo/tree/GraphConfigNode.h>

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace NuxoTool {

/// An attribute as the renderers see it.
struct AttributeView {
    NUXO::GraphConfigNode::iterator item = nullptr;
    uint32_t key = 0;
    std::string name;
    bool isInteger = false;
    int integer = 0;
    std::string text; ///< of an integer that stands for a key (what an options list governs): the key's name
    bool isKeyName = false;
    /// Whether this is the first item with its key, the one that lookups by key find.
    bool isFirst = true;
};

/// A child node and the name under which it is filed.
struct ChildView {
    std::string name;
    const NUXO::GraphConfigNode* node = nullptr;
};

/// Reads nodes in the order of their items. Remembers the names of keys, so use one for a whole tree; no key may be added
/// meanwhile.
class TreeView {
public:
    std::vector<AttributeView> attributes(const NUXO::GraphConfigNode& node);
    std::vector<ChildView> children(const NUXO::GraphConfigNode& node);
    const std::string& keyName(uint32_t key);

private:
    std::unordered_map<uint32_t, std::string> mNames;
};

/// The text attribute @p key, "" when there is none.
std::string textOf(const NUXO::IGraphConfig& node, uint32_t key);

/// The integer attribute @p key, @p fallback when there is none.
int integerOf(const NUXO::IGraphConfig& node, uint32_t key, int fallback);

/// The integer attribute @p key, nothing when there is none.
std::optional<int> optionalInteger(const NUXO::IGraphConfig& node, uint32_t key);

/// Size and format, for example "1920x1080 NV12", as far as the node has them.
std::string dimensionsOf(const NUXO::IGraphConfig& node);

} // namespace NuxoTool

#endif
