// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_EXPLAIN_EXPLAIN_RENDERER_H
#define NUXO_TOOL_EXPLAIN_EXPLAIN_RENDERER_H

#include "JsonRenderer.h"
#include "Session.h"
#include "explain/ExplainedItems.h"

#include <string>
#include <vector>

namespace NuxoTool {

/// A table with one line a step; of a single item also the source line of its winner.
std::string renderExplained(Session& session, const std::vector<ExplainedItem>& items);

/// The same as a list of items with their steps.
JsonValue jsonExplained(Session& session, const std::vector<ExplainedItem>& items);

} // namespace NuxoTool

#endif
