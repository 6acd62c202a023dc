// SPDX-License-Identifier: Apache-2.0
#include "Benchmarks.h"
#include "Texts.h"
#include "Trees.h"

#include <stdexcept>

namespace bench {

namespace {

constexpr size_t kSiblings = 300000;
constexpr size_t kFewChildren = 100;
constexpr size_t kManyChildren = 10000;

Side parseOf(std::string& text, Tree& tree)
{
    return {[&text, &tree] { tree = parseText(text); }, [&tree] { tree.reset(); }};
}

void measureSiblings(Context& context, benchmark::State& state)
{
    std::string alternating = siblings(kSiblings, true);
    std::string inOrder = siblings(kSiblings, false);
    Tree tree;
    const Comparison result = compare(state, parseOf(alternating, tree), parseOf(inOrder, tree));
    context.bars.add("300,000 siblings in alternating key order, times in order", result.ratio, atMost(2));
}

// A full walk over the children.
Side walkOver(const NUXO::IGraphConfig& parent, size_t children)
{
    const auto run = [&parent, children] {
        NUXO::NodeIterator cursor(&parent);
        size_t visited = 0;
        while (cursor.iterateDescendants() != nullptr) ++visited;
        if (visited != children) throw std::runtime_error("the cursor missed a child");
    };
    return {run, [] {}, kManyChildren / children * 20};
}

void measureCursor(Context& context, benchmark::State& state)
{
    std::string manyText = siblings(kManyChildren, true);
    std::string fewText = siblings(kFewChildren, true);
    const Tree many = parseText(manyText);
    const Tree few = parseText(fewText);
    const Side overMany = walkOver(*many->getDescendant(NUXO_KEY_SETTINGS), kManyChildren);
    const Side overFew = walkOver(*few->getDescendant(NUXO_KEY_SETTINGS), kFewChildren);
    const Comparison result = compare(state, overMany, overFew);
    const double children = static_cast<double>(kManyChildren) / static_cast<double>(kFewChildren);
    context.bars.add("cursor, time per child: 10,000 children, times 100", result.ratio / children, atMost(1.5));
}

} // namespace

void addTreeBenchmarks(Context& context)
{
    add(context, "tree/siblings", 9, [&context](benchmark::State& state) { measureSiblings(context, state); });
    add(context, "tree/cursor", 21, [&context](benchmark::State& state) { measureCursor(context, state); });
}

} // namespace bench
