// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_TEXT_RENDERER_H
#define NUXO_TOOL_TEXT_RENDERER_H

#include <nuxo/parser/SourceLocator.h>
#include <nuxo/tree/GraphConfigNode.h>

#include <string>

namespace NuxoTool {

/// A tree as indented text: one line a node, "name (element kind) attribute=value ...".
std::string renderText(const NUXO::GraphConfigNode& root, const std::string& title);

/// The same with one line an attribute, each with the place that its value comes from.
std::string renderTextWithOrigins(const NUXO::GraphConfigNode& root, const std::string& title,
                                  NUXO::SourceLocator& locator);

} // namespace NuxoTool

#endif
