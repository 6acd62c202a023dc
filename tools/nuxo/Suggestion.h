// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_SUGGESTION_H
#define NUXO_TOOL_SUGGESTION_H

#include <string>
#include <vector>

namespace NuxoTool {

/// The candidate that is closest to @p name, "" when none is close: at most one letter in three of the longer one differs,
/// or the name is a whole word at either end of it. Upper and lower case matter only between equally close ones, then the
/// order.
std::string closestOf(const std::string& name, const std::vector<std::string>& candidates);

/// The candidate that @p name must be a misspelling of, "" for none: at most one of its letters in three differs.
std::string misspelledOf(const std::string& name, const std::vector<std::string>& candidates);

/// "; did you mean 'img_sink'?"
std::string didYouMean(const std::string& name);

/// The same for the closest candidate, "" when none is close.
std::string suggestionFor(const std::string& name, const std::vector<std::string>& candidates);

/// The same for the names of the vocabulary.
std::string suggestionFor(const std::string& name);

} // namespace NuxoTool

#endif
