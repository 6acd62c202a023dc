// SPDX-License-Identifier: Apache-2.0
#include "support/TreeChecks.h"

#include "support/CameraRules.h"
#include "support/Fuzzing.h"

#include <nuxo/nuxo.h>

#include <memory>
#include <string>
#include <utility>

namespace fuzzing {

namespace {

using NUXO::GraphConfigItem;
using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

// Enough of a node's children for what costs time per child and per sibling.
constexpr int kSample = 3;

GraphConfigNode* asNode(GraphConfigItem* item)
{
    return item->type == GraphConfigItem::NODE ? dynamic_cast<GraphConfigNode*>(item) : nullptr;
}

void checkAttribute(const GraphConfigNode& node, uint32_t key, GraphConfigItem& item)
{
    int number = 0;
    std::string text;
    const bool isInteger = item.type == GraphConfigItem::INT;
    require(isInteger || item.type == GraphConfigItem::STRING, "an item is a node, an integer or a text");
    require((item.getValue(number) == StatusOk) == isInteger, "only integers give an integer");
    require((item.getValue(text) == StatusOk) != isInteger, "only texts give a text");
    if (node.begin() == node.end() || node.getDescendant(key) != nullptr) return;
    int byKey = 0;
    const int32_t status = node.getValue(key, byKey);
    require(status == StatusOk || status == StatusNotFound, "an attribute that exists is read or refused");
}

void checkChild(const GraphConfigNode& node, uint32_t key, const GraphConfigNode& child)
{
    require(child.getUid() == key, "a child knows its key");
    require(child.getName() == NUXO::ItemUID::key2str(key), "a child knows its name");
    const IGraphConfig* const found = node.getDescendant(key);
    require(found == nullptr || found->getAncestor() == &node, "lookup by key gives a child");
    require(node.getDescendant(NUXO::ItemUID{key}) == found, "a path of one key finds what the key finds");
    static_cast<void>(child.isType(NUXO_KEY_PORT));
}

// Every cursor must visit as many children as there are.
void checkCursor(const GraphConfigNode& node, int children)
{
    NUXO::NodeIterator cursor(&node);
    int visited = 0;
    while (cursor.iterateDescendants() != nullptr) ++visited;
    require(visited == children, "a cursor visits every child node once");
    if (children == 0) return;
    const IGraphConfig* const first = cursor.iterateDescendants();
    require(first != nullptr, "a cursor starts over behind the end");
    static_cast<void>(cursor.reset());
    require(cursor.iterateByUid(first->getUid()) == first, "the first child is the first of its key");
    static_cast<void>(cursor.iterateByType(NUXO_KEY_PORT));
    static_cast<void>(cursor.iterateNodes(NUXO_KEY_NAME, "sensor"));
}

void checkNode(GraphConfigNode& node)
{
    uint32_t previous = 0;
    int items = 0;
    int children = 0;
    for (const auto& entry : node) {
        require(previous <= entry.first, "items stand in the order of their keys");
        previous = entry.first;
        ++items;
        if (const GraphConfigNode* const child = asNode(entry.second)) {
            require(child->getAncestor() == &node, "a child knows its parent");
            if (++children <= kSample) checkChild(node, entry.first, *child);
        } else {
            checkAttribute(node, entry.first, *entry.second);
        }
    }
    require(node.getDescendantCount() == items, "the count is that of the items");
    checkCursor(node, children);
}

void checkSameAttribute(GraphConfigItem& original, GraphConfigItem& copied)
{
    int number = 0;
    int copiedNumber = 0;
    std::string text;
    std::string copiedText;
    require(original.getValue(number) == copied.getValue(copiedNumber) && number == copiedNumber,
            "a copied integer is the same");
    require(original.getValue(text) == copied.getValue(copiedText) && text == copiedText, "a copied text is the same");
}

// Checks one level and notes the pairs of children.
void checkSameItems(const GraphConfigNode& original, const GraphConfigNode& copied,
                    std::vector<std::pair<const GraphConfigNode*, const GraphConfigNode*>>& pairs)
{
    require(original.getDescendantCount() == copied.getDescendantCount(), "a copy has as many items");
    GraphConfigNode::iterator other = copied.begin();
    for (const auto& entry : original) {
        require(entry.first == other->first && entry.second->type == other->second->type, "a copy has the same keys");
        const GraphConfigNode* const child = asNode(entry.second);
        if (child == nullptr) {
            checkSameAttribute(*entry.second, *other->second);
        } else {
            const NUXO::SourcePosition here = NUXO::getSourcePosition(child);
            const NUXO::SourcePosition there = NUXO::getSourcePosition(asNode(other->second));
            require(here.document == there.document && here.offset == there.offset, "a copy keeps positions");
            pairs.emplace_back(child, asNode(other->second));
        }
        ++other;
    }
}

} // namespace

std::vector<GraphConfigNode*> nodesOf(IGraphConfig* root)
{
    std::vector<GraphConfigNode*> nodes;
    if (auto* const top = dynamic_cast<GraphConfigNode*>(root)) nodes.push_back(top);
    for (size_t i = 0; i < nodes.size() && nodes.size() <= kMostNodes; ++i) {
        for (const auto& entry : *nodes[i]) {
            GraphConfigNode* const child = asNode(entry.second);
            if (child != nullptr && nodes.size() <= kMostNodes) nodes.push_back(child);
        }
    }
    return nodes;
}

void checkTree(const std::vector<GraphConfigNode*>& nodes)
{
    for (GraphConfigNode* const node : nodes) checkNode(*node);
    if (!nodes.empty()) require(nodes.back()->getRootNode() == nodes.front(), "every node leads to the root");
}

void checkSame(const GraphConfigNode& original, const GraphConfigNode& copied)
{
    std::vector<std::pair<const GraphConfigNode*, const GraphConfigNode*>> pairs = {{&original, &copied}};
    while (!pairs.empty()) {
        const auto [here, there] = pairs.back();
        pairs.pop_back();
        checkSameItems(*here, *there, pairs);
    }
}

void checkCopy(const GraphConfigNode& original)
{
    const std::unique_ptr<GraphConfigNode> copied(original.copy());
    require(copied != nullptr, "a tree can be copied");
    checkSame(original, *copied);
    const Hush hush;
    GraphConfigNode::dumpNodeTree(copied.get(), 0);
}

void askCameraQuestions(const std::vector<GraphConfigNode*>& nodes)
{
    constexpr size_t mostAsked = 4;
    const size_t step = nodes.size() / mostAsked + 1;
    for (size_t i = 0; i < nodes.size(); i += step) checkAnswers(*nodes[i], Request());
}

} // namespace fuzzing
