// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_CANONICAL_FORM_H
#define NUXO_TOOL_CANONICAL_FORM_H

#include <string>
#include <string_view>

namespace NuxoTool {

/// A graph file in canonical form: one element a line, four blanks a level, names in lower case, attributes in a fixed order,
/// values in double quotes, lines of tags of at most 120 columns where values allow it.
///
/// Nothing is lost: comments, processing instructions, the DOCTYPE, references, CDATA sections and other text stay, and at
/// most one blank line between elements. The canonical form of a canonical form is itself.
/// @param text  a well-formed document in UTF-8
std::string canonicalForm(std::string_view text);

} // namespace NuxoTool

#endif
