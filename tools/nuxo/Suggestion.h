// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_SUGGESTION_H
#define NUXO_TOOL_SUGGESTION_H

#include <string>
#include <vector>

namespace NuxoTool {

/// The candidate that is closest to @p name, "" when none is close. Upper and lower case matter only between equally
/// close ones, then the order.
std::string closestOf(const std::string& name, const std::vector<std::string>& candidates);

/// "; did you mean 'img_sink'?"
std::string didYouMean(const std::string& name);

/// The same for the closest candidate, "" when none is close.
std::string suggestionFor(const std::string& name, const std::vector<std::string>& candidates);

/// The same for the names of the vocabulary.
std::string suggestionFor(const std::string& name);

} // namespace NuxoTool

#endif
