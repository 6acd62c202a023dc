// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_TREE_COMPARISON_H
#define NUXO_TOOL_TREE_COMPARISON_H

#include <string>

namespace NuxoTool {

/// Whether the library reads both texts without an error and makes the same tree of them: the same items in the same order,
/// with the same values. What it logs meanwhile is dropped.
bool meansTheSame(const std::string& text, const std::string& other);

} // namespace NuxoTool

#endif
