// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_DRAW_GRAPHVIZ_H
#define NUXO_TOOL_DRAW_GRAPHVIZ_H

#include "Session.h"

#include <optional>
#include <string>

namespace NuxoTool {

/// What can be done without dot, for notes.
constexpr const char* kPlainDrawing = "--format dot writes the drawing without help of other programs";

/// Lays out a drawing by graphviz's program dot, which is looked for in PATH.
///
/// @param drawing  a graph in dot's language
/// @param format   of the result, as dot names it: "svg", "json0"
/// @return         what dot wrote; nothing, with a finding, when there is no dot, or it fails, or takes too long (30 s, or
///                 as many seconds as the environment variable NUXO_DOT_SECONDS says)
std::optional<std::string> layOut(Session& session, const std::string& drawing, const std::string& format);

} // namespace NuxoTool

#endif
