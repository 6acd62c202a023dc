// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_DOT_RENDERER_H
#define NUXO_TOOL_DOT_RENDERER_H

#include "Drawing.h"

#include <string>

namespace NuxoTool {

/// The drawing in the language of graphviz's dot, left to right, one cluster a stream or context.
std::string renderDot(const Drawing& drawing, const std::string& title);

} // namespace NuxoTool

#endif
