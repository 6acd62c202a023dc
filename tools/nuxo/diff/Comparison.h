// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_COMPARISON_H
#define NUXO_TOOL_COMPARISON_H

#include "diff/DiffTree.h"

#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace NuxoTool {

/// An element of both sides that is the same by name, whatever is in it.
struct DiffPair {
    const DiffPair* parent = nullptr; ///< null for the roots
    const DiffElement* a = nullptr;
    const DiffElement* b = nullptr;
};

/// What belongs together on both sides; null where one side has nothing.
using ElementPair = std::pair<const DiffElement*, const DiffElement*>;
using AttributePair = std::pair<const DiffAttribute*, const DiffAttribute*>;

/// One difference. What a side does not have is null there.
struct Difference {
    enum class Change { Added, Removed, Changed, Renamed, Reordered };

    Change change = Change::Changed;
    const DiffPair* within = nullptr; ///< the elements that hold what differs
    /// Values that differ; both null for elements. Where the order differs, those that stand first.
    AttributePair attributes = {nullptr, nullptr};
    /// Elements that differ; where the order differs, the first that is another one.
    ElementPair elements = {nullptr, nullptr};
    DiffNumbers::Number orderGroup = 0; ///< of elements in another order

    bool isOfAttribute() const { return attributes.first != nullptr || attributes.second != nullptr; }
};

/// Compares two trees by meaning. Order does not matter but where the library lets the first or last of several count.
class Comparison {
public:
    /// Both elements must have been read by @p trees, and all must outlive the comparison.
    Comparison(const DiffTrees& trees, const DiffElement& a, const DiffElement& b);
    Comparison(const Comparison&) = delete;
    Comparison& operator=(const Comparison&) = delete;

    /// Outer elements first, then by name; the same for both directions.
    const std::vector<Difference>& differences() const { return mDifferences; }
    /// The names on the way to an element, joined by ':'; "" for the roots.
    std::string pathOf(const DiffPair& pair) const;
    /// What a pair is called: kernels have outputs with and without numbers.
    const std::string& labelOf(const DiffPair& pair) const;

private:
    void compare(const DiffPair& pair);
    void compareAttributes(const DiffPair& pair);
    void compareChildren(const DiffPair& pair);
    /// @param pairs  the children that belong together
    void compareOrder(const DiffPair& pair, const std::vector<ElementPair>& pairs);
    void sortByName(std::vector<ElementPair>& pairs) const;
    Difference& add(Difference::Change change, const DiffPair& pair);

    const DiffTrees& mTrees;
    std::deque<DiffPair> mPairs;
    std::vector<Difference> mDifferences;
};

} // namespace NuxoTool

#endif
