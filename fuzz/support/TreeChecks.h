// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_FUZZ_SUPPORT_TREE_CHECKS_H
#define NUXO_FUZZ_SUPPORT_TREE_CHECKS_H

#include <nuxo/tree/GraphConfigNode.h>

#include <cstddef>
#include <vector>

namespace fuzzing {

/// Trees with more nodes than this are only parsed and destroyed: short inputs can describe huge trees, and what takes long
/// on them would tell nothing new.
constexpr size_t kMostNodes = 5000;

/// The nodes of a tree, parents before children; at most kMostNodes + 1 of them.
std::vector<NUXO::GraphConfigNode*> nodesOf(NUXO::IGraphConfig* root);

/// Visits every item in every way that clients have, and checks what must hold in any tree: key order, counts, parents, the
/// cursors, lookups by key and by path.
void checkTree(const std::vector<NUXO::GraphConfigNode*>& nodes);

/// Checks that both have the same items with the same keys, values and positions.
void checkSame(const NUXO::GraphConfigNode& original, const NUXO::GraphConfigNode& copied);

/// Checks that a copy is the same.
void checkCopy(const NUXO::GraphConfigNode& original);

/// Asks the root and a few other nodes the questions of a client of built graphs.
void askCameraQuestions(const std::vector<NUXO::GraphConfigNode*>& nodes);

} // namespace fuzzing

#endif
