// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_EXPLAIN_TRACED_MERGE_H
#define NUXO_TOOL_EXPLAIN_TRACED_MERGE_H

#include "explain/TracedTree.h"

namespace NuxoTool {

/// Merges @p from into @p to as GraphQueryUtils::addDescendantsFromNode does, and notes who wrote what.
///
/// @param options  GraphQueryUtils::MergeOption bits; HandleOptions is not followed, as no graph is made with it
void mergeTraced(TracedNode& to, const TracedNode& from, unsigned options, const Stamp& stamp);

/// Applies the option of @p node for a new value of the attribute @p key as GraphConfigNode::setValue does; whether the
/// value may then be set.
bool obeyTracedOptions(TracedNode& node, uint32_t key, const std::string& value);

} // namespace NuxoTool

#endif
