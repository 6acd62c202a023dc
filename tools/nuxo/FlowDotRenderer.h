// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_FLOW_DOT_RENDERER_H
#define NUXO_TOOL_FLOW_DOT_RENDERER_H

#include "Flow.h"

#include <string>

namespace NuxoTool {

/// The inside of one stream in the language of graphviz's dot: a column for each program group, from top to bottom. Nodes of
/// other streams stand alone.
std::string renderDot(const Flow& flow, int stream, const std::string& title);

} // namespace NuxoTool

#endif
