// SPDX-License-Identifier: Apache-2.0
#include <nuxo/NuxoStatus.h>
#include <nuxo/Log.h>
#include <nuxo/tree/GraphConfigNode.h>
#include <nuxo/tree/TreeAccess.h>

#include <algorithm>
#include <array>
#include <new>
#include <vector>

namespace NUXO {

namespace {

// Deeper levels print with this many blanks, so that a line stays bounded.
constexpr size_t kWidestIndent = 512;
constexpr size_t kBlanksPerLevel = 2;

struct TypeName {
    int32_t type;
    const char* name;
};

constexpr std::array<TypeName, 3> kTypeNames = {{
    {GraphConfigItem::NA, "NA"},
    {GraphConfigItem::STRING, "STRING"},
    {GraphConfigItem::INT, "INT"},
}};

const char* typeName(int32_t type)
{
    for (const TypeName& row : kTypeNames) {
        if (row.type == type) return row.name;
    }
    return " NODE"; // the leading blank lines the columns up
}

// The indent of a level: the tail of one run of blanks.
class Indent {
public:
    Indent()
    {
        mBlanks.fill(' ');
        mBlanks.back() = '\0';
    }

    const char* at(size_t depth) const
    {
        return mBlanks.data() + kWidestIndent - std::min(depth * kBlanksPerLevel, kWidestIndent);
    }

private:
    std::array<char, kWidestIndent + 1> mBlanks{};
};

void dumpItem(const char* indent, const ItemEntry& entry)
{
    const char* const name = ItemUID::key2str(entry.first);
    const auto key = static_cast<int>(entry.first);
    int value = 0;
    switch (entry.second->type) {
    case GraphConfigItem::STRING:
        NUXO_ERROR("%s'%s' str [Attr] '%s'", indent, name,
                   static_cast<GraphConfigStrAttribute*>(entry.second)->value.c_str());
        return;
    case GraphConfigItem::INT:
        if (entry.second->getValue(value) == StatusOk)
            NUXO_ERROR("%s'%s'(%d) int [Attr] '%d'", indent, name, key, value);
        return;
    case GraphConfigItem::NODE: NUXO_ERROR("%s'%s'(%d) [Node]", indent, name, key); return;
    default: NUXO_ERROR("type?");
    }
}

} // namespace

void GraphConfigNode::dumpNode()
{
    NUXO_ERROR("Node %p type: %s ancestor %p map size %lu", static_cast<void*>(this), typeName(type),
               static_cast<void*>(mAncestor), static_cast<unsigned long>(mItems.size()));
    if (type == NODE) NUXO_ERROR("Node number of descendants : %u", static_cast<unsigned>(getDescendantCount()));
}

// The levels stand in a vector, not on the stack: trees may be of any depth.
void GraphConfigNode::dumpNodeTree(const GraphConfigNode* node, int depth)
{
    if (node == nullptr || (g_qv_log_common_level & LogError) == 0U) return;
    const Indent indent;
    const size_t base = static_cast<size_t>(std::max(depth, 0));
    try {
        struct Level {
            const GraphConfigNode* node;
            uint32_t next;
        };
        std::vector<Level> levels = {{node, 0}};
        while (!levels.empty()) {
            Level& level = levels.back();
            if (level.next == level.node->mItems.size()) {
                levels.pop_back();
                continue;
            }
            const ItemEntry& entry = level.node->mItems.begin()[level.next++];
            dumpItem(indent.at(base + levels.size() - 1), entry);
            const GraphConfigNode* const child = asNode(entry.second);
            if (child != nullptr) levels.push_back({child, 0});
        }
    } catch (const std::bad_alloc&) {
        // The rest of the dump is lost; it is a diagnostic.
    }
}

} // namespace NUXO
