// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_EXPLAIN_TRACED_TREE_H
#define NUXO_TOOL_EXPLAIN_TRACED_TREE_H

#include <nuxo/tree/GraphConfigNode.h>
#include <nuxo/tree/SourcePosition.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace NuxoTool {

/// What in the making of a graph gives an item its value.
enum class StepKind {
    Descriptor,
    BaseNode,
    Difference,
    Connection,
    Propagated,
    Settings,
    Push,
    Override,
    DisabledPort,
    ModeDefaults,
    SensorMode,
    Option
};

/// For people and for JSON, for example "base node".
const char* stepName(StepKind kind);

/// One thing that had a say in an item.
struct Step {
    StepKind kind = StepKind::Descriptor;
    std::string value;                       ///< empty for nodes
    const NUXO::ItemEntry* source = nullptr; ///< the item of the files' trees that it came from; null: of the library
    std::string note;                        ///< why, or from where in the graph; may be empty
    bool isApplied = true;                   ///< whether the value was written
};

/// What to note at items that are made or written.
struct Stamp {
    StepKind kind;
    std::string note;
};

class TracedNode;

/// An attribute or node of a graph as the library has it, with everything that had a say in it.
struct TracedItem {
    uint32_t key = 0;
    NUXO::GraphConfigItem::ItemType type = NUXO::GraphConfigItem::NA;
    int32_t integer = 0;
    std::string text;
    NUXO::SourcePosition position; ///< where the library remembers the item to come from
    std::vector<Step> steps;       ///< in the order of their making
    std::unique_ptr<TracedNode> node;

    bool isNode() const { return node != nullptr; }
    bool isInteger() const { return type == NUXO::GraphConfigItem::INT; }
    /// The value without quotes, "" for a node.
    std::string valueText() const;
    /// The last step that wrote; null when there is none.
    const Step* winner() const;
    /// Where the winner came from.
    const NUXO::ItemEntry* source() const;
    /// Adds a step that writes. One that repeats the very line that won before is left out.
    void apply(const Stamp& stamp, const NUXO::ItemEntry* from);
    /// Adds a step that came to nothing, with the value that it would have written.
    void refuse(const Stamp& stamp, const TracedItem& from);
    /// Stores what stands in a file as a text; an integer takes its decimal value.
    void setFromText(const std::string& value);
};

/// Items in the order of their keys, those with the same key in the order of their making.
class TracedNode {
public:
    TracedNode() = default;
    TracedNode(const TracedNode&) = delete;
    TracedNode& operator=(const TracedNode&) = delete;

    const std::vector<std::unique_ptr<TracedItem>>& items() const { return mItems; }
    const TracedNode& root() const;
    TracedNode& root() { return const_cast<TracedNode&>(static_cast<const TracedNode*>(this)->root()); }
    /// The item that holds this node, null for a root.
    const TracedItem* item() const { return mItem; }
    const TracedNode* parent() const { return mParent; }

    /// The first item with the key, null when there is none.
    TracedItem* find(uint32_t key) const;
    /// The first item with the key if it is a node, else null.
    TracedNode* child(uint32_t key) const;
    const std::string* textOf(uint32_t key) const;
    std::optional<int32_t> integerOf(uint32_t key) const;
    /// Whether any text attribute with the key holds the value.
    bool hasText(uint32_t key, const std::string& value) const;
    std::vector<TracedNode*> children() const;
    /// What the path names if it is a node, else the node that holds the attribute; null when there is none.
    TracedNode* follow(const NUXO::ItemUID& path);

    /// Files the item behind those with the same key.
    TracedItem& insert(std::unique_ptr<TracedItem> item);
    /// Files a new attribute of the kind that goes with the key, holding 0 or "".
    TracedItem& insertAttribute(uint32_t key);
    /// Files a new node that stands in no file.
    TracedNode& insertNode(uint32_t key, const Stamp& stamp);
    void removeFirst(uint32_t key);

private:
    std::vector<std::unique_ptr<TracedItem>> mItems;
    TracedNode* mParent = nullptr;
    TracedItem* mItem = nullptr;
};

/// A copy of a node that was read from a file.
std::unique_ptr<TracedNode> traceFile(const NUXO::GraphConfigNode& node, StepKind kind);

/// A copy in which every item starts with one step.
std::unique_ptr<TracedItem> copyStamped(const TracedItem& item, const Stamp& stamp);

/// "vid_out:main_out", names of keys joined by ':'.
std::string pathOf(const TracedNode& node);

} // namespace NuxoTool

#endif
