// SPDX-License-Identifier: Apache-2.0
#include "format/TreeComparison.h"

#include "LibraryLog.h"

#include <nuxo/parser/NUXOParser.h>
#include <nuxo/tree/GraphConfigNode.h>

#include <algorithm>
#include <memory>

namespace NuxoTool {

namespace {

using NUXO::GraphConfigItem;
using NUXO::GraphConfigNode;

using Tree = std::unique_ptr<NUXO::IGraphConfig>;

// Null when there is nothing to read or an error was logged.
Tree parse(const std::string& text)
{
    takeLibraryLog();
    std::string copy = text; // the parser asks for text that it may change
    NUXO::IGraphConfig* tree = nullptr;
    NUXO::NUXOParser parser;
    parser.parseNUXOXmlData(copy.data(), copy.size(), &tree);
    Tree owned(tree);
    const std::vector<LogLine> log = takeLibraryLog();
    const bool failed = std::any_of(log.begin(), log.end(), [](const LogLine& line) { return line.isError; });
    return failed ? nullptr : std::move(owned);
}

template <typename Value> bool sameValue(GraphConfigItem& a, GraphConfigItem& b)
{
    Value first{};
    Value second{};
    return a.getValue(first) == b.getValue(second) && first == second;
}

// Parsed trees are at most NUXOParser::kMaxDepth deep, so recursion is bounded.
bool sameNode(const GraphConfigNode& a, const GraphConfigNode& b);

bool sameItem(GraphConfigItem& a, GraphConfigItem& b)
{
    if (a.type != b.type) return false;
    if (a.type == GraphConfigItem::INT) return sameValue<int>(a, b);
    if (a.type == GraphConfigItem::STRING) return sameValue<std::string>(a, b);
    const auto* const nodeA = dynamic_cast<const GraphConfigNode*>(&a);
    const auto* const nodeB = dynamic_cast<const GraphConfigNode*>(&b);
    return nodeA != nullptr && nodeB != nullptr && sameNode(*nodeA, *nodeB);
}

bool sameNode(const GraphConfigNode& a, const GraphConfigNode& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& itemA, const auto& itemB) {
        return itemA.first == itemB.first && sameItem(*itemA.second, *itemB.second);
    });
}

} // namespace

bool meansTheSame(const std::string& text, const std::string& other)
{
    const Tree first = parse(text);
    const Tree second = parse(other);
    const auto* const a = dynamic_cast<const GraphConfigNode*>(first.get());
    const auto* const b = dynamic_cast<const GraphConfigNode*>(second.get());
    return a != nullptr && b != nullptr && sameNode(*a, *b);
}

} // namespace NuxoTool
