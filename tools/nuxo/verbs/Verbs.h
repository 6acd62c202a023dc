// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_VERBS_VERBS_H
#define NUXO_TOOL_VERBS_VERBS_H

#include "Session.h"

namespace NuxoTool {

/// Shows the tree of one graph file.
void runDump(Session& session);

/// Lists the settings that match the criteria.
void runQuery(Session& session);

/// Builds the graph of one setting and shows it.
void runBuild(Session& session);

} // namespace NuxoTool

#endif
