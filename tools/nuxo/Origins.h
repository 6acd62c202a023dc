// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_ORIGINS_H
#define NUXO_TOOL_ORIGINS_H

#include "Findings.h"
#include "TreeView.h"

#include <nuxo/parser/SourceLocator.h>

#include <optional>
#include <string>

namespace NuxoTool {

/// Where @p node's element stands; nothing when it was not read from a file.
std::optional<Location> originOf(NUXO::SourceLocator& locator, const NUXO::GraphConfigNode& node);

/// Where the value of an attribute comes from.
std::optional<Location> originOf(NUXO::SourceLocator& locator, const AttributeView& attribute);

/// "file:line:column", "-" for what the library added by itself.
std::string originText(const std::optional<Location>& origin);

} // namespace NuxoTool

#endif
