// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_FUZZ_SUPPORT_TREE_COPY_H
#define NUXO_FUZZ_SUPPORT_TREE_COPY_H

#include <nuxo/tree/GraphConfigNode.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace fuzzing {

/// A tree of its own. The nodes of two copies correspond by number.
class TreeCopy {
public:
    explicit TreeCopy(const NUXO::GraphConfigNode& original);

    NUXO::GraphConfigNode& root() const { return *mRoot; }
    NUXO::GraphConfigNode& node(size_t number) const { return *mNodes[number]; }
    size_t size() const { return mNodes.size(); }
    const std::vector<NUXO::GraphConfigNode*>& nodes() const { return mNodes; }
    size_t numberOf(const NUXO::IGraphConfig* node) const;

    /// Checks what must hold in any tree, after edits.
    void check() const;

private:
    std::unique_ptr<NUXO::GraphConfigNode> mRoot;
    std::vector<NUXO::GraphConfigNode*> mNodes;
};

/// Applies overrides. Those that give an integer a text may throw, as they say; that is StatusBadArgument here.
int applyOverrides(NUXO::GraphConfigNode& graph, NUXO::GraphConfigNode& result);

} // namespace fuzzing

#endif
