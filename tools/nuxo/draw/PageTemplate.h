// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_DRAW_PAGE_TEMPLATE_H
#define NUXO_TOOL_DRAW_PAGE_TEMPLATE_H

#include <string>

namespace NuxoTool {

/// page.html with its style and script and their checksums, which CMake puts together.
extern const char* const kPageTemplate;

/// The page with a title and its data, both escaped already.
std::string fillPage(const std::string& title, const std::string& data);

} // namespace NuxoTool

#endif
