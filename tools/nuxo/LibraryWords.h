// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_LIBRARY_WORDS_H
#define NUXO_TOOL_LIBRARY_WORDS_H

#include <optional>
#include <string>
#include <vector>

namespace NuxoTool {

/// What a line of the library's log means to who writes graph files.
struct PlainText {
    std::string found;
    std::string expected;
    std::vector<std::string> names; ///< that the line holds, in its order; of "type[name]" the name
};

/// Nothing for a line that is not known.
std::optional<PlainText> plainTextOf(const std::string& line);

/// The line itself without what raises its voice: headings such as "ERROR:", and exclamation marks.
std::string quietText(const std::string& line);

} // namespace NuxoTool

#endif
