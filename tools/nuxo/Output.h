// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_OUTPUT_H
#define NUXO_TOOL_OUTPUT_H

#include <string>

namespace NuxoTool {

/// Writes all of @p text to standard output. Returns "" or why it failed.
std::string writeOutput(const std::string& text);

/// Whether findings are coloured: @p choice is "auto" (on a terminal, unless NO_COLOR is set), "always" or "never".
bool wantsColour(const std::string& choice);
/// The same for what is written to that file descriptor.
bool wantsColour(const std::string& choice, int descriptor);

} // namespace NuxoTool

#endif
