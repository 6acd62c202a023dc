// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_FUZZ_GRAPH_MEMORY_H
#define NUXO_FUZZ_GRAPH_MEMORY_H

#include "support/CameraRules.h"

#include <cstddef>
#include <vector>

namespace fuzzing {

/// Which allocation of each question fails, counting from 1, and whether all later ones fail, too.
struct Shortage {
    size_t first;
    bool forGood;
};

/// Asks a node everything while memory is short: each question is answered or says that memory is exhausted, and nothing is
/// lost.
void checkShortage(const std::vector<NUXO::GraphConfigNode*>& nodes, size_t node, const Request& request,
                   Shortage shortage);

/// The same for functions that edit, on copies.
void checkEditsInShortage(const std::vector<NUXO::GraphConfigNode*>& nodes, size_t node, const Request& request,
                          Shortage shortage);

/// Converts all texts of the tree while the counted allocator fails from its n-th allocation on, counting from 0.
void checkNumbersInShortage(const std::vector<NUXO::GraphConfigNode*>& nodes, uint32_t n);

} // namespace fuzzing

#endif
