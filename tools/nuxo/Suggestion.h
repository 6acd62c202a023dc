// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_SUGGESTION_H
#define NUXO_TOOL_SUGGESTION_H

#include <string>

namespace NuxoTool {

/// The name of the vocabulary that is closest to @p name, "" when none is close. Of equally close names the first in
/// alphabetical order.
std::string closestName(const std::string& name);

/// "; did you mean 'img_sink'?" for the closest name, "" when none is close.
std::string suggestionFor(const std::string& name);

} // namespace NuxoTool

#endif
