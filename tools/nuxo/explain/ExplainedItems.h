// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_EXPLAIN_EXPLAINED_ITEMS_H
#define NUXO_TOOL_EXPLAIN_EXPLAINED_ITEMS_H

#include "explain/TracedTree.h"

#include <nuxo/tree/GraphConfigNode.h>

#include <string>
#include <vector>

namespace NuxoTool {

struct Session;

/// An item and its path: names joined by ':'; one that is not the first of its name has its number in brackets, as in
/// `graph:connection[2]`.
struct ExplainedItem {
    const TracedItem* item;
    std::string path;
};

/// The items that the path of the command line names, nodes with all that is in them: the whole graph for "" and ".", all
/// of a name when the last name stands without number. Reports a path that names nothing.
std::vector<ExplainedItem> findExplained(Session& session, const TracedNode& root,
                                         const NUXO::GraphConfigNode& descriptor);

} // namespace NuxoTool

#endif
