// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_EXPLAIN_AGREEMENT_H
#define NUXO_TOOL_EXPLAIN_AGREEMENT_H

#include "explain/TracedTree.h"

#include <nuxo/tree/GraphConfigNode.h>

#include <string>

namespace NuxoTool {

/// What the two trees do not agree in: the first item that one of them lacks, or whose value or position differs. Empty when
/// they are the same.
std::string findDisagreement(const TracedNode& traced, const NUXO::GraphConfigNode& built);

} // namespace NuxoTool

#endif
