// SPDX-License-Identifier: Apache-2.0
// Internal: walks over whole trees.
#ifndef NUXO_TREE_DESCENDANTS_H
#define NUXO_TREE_DESCENDANTS_H

#include <nuxo/tree/TreeAccess.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace NUXO {

/// How a walk goes on after a node: into it, past it, or not at all.
enum class Walk { Into, Past, Stop };

/// Calls @p visit for all nodes below @p top, parents before children, children in order. The visitor must not add or remove
/// items. Works at any depth. May throw std::bad_alloc.
template <typename Visit> void walkDescendants(const GraphConfigNode& top, Visit visit)
{
    struct Level {
        const GraphConfigNode* node;
        uint32_t next;
    };
    std::vector<Level> levels = {{&top, 0}};
    while (!levels.empty()) {
        Level& level = levels.back();
        const ItemMap& items = TreeAccess::items(*level.node);
        if (level.next == items.size()) {
            levels.pop_back();
            continue;
        }
        GraphConfigNode* const child = asNode(items.begin()[level.next++].second);
        if (child == nullptr) continue;
        const Walk walk = visit(*child);
        if (walk == Walk::Stop) return;
        if (walk == Walk::Into) levels.push_back({child, 0});
    }
}

} // namespace NUXO

#endif
