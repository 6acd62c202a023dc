// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_NEAR_NAMES_H
#define NUXO_TOOL_NEAR_NAMES_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace NuxoTool {

/// Suggestions out of one list for many names, each worked out once.
///
/// A file with so many unknown names that asking for all of them would take seconds has another fault than typing errors:
/// the names behind the first ones get none.
class NearNames {
public:
    explicit NearNames(std::vector<std::string> candidates) : mCandidates(std::move(candidates)) {}

    const std::vector<std::string>& candidates() const { return mCandidates; }
    /// See closestOf.
    const std::string& closest(const std::string& name);
    /// See suggestionFor.
    std::string suggestionFor(const std::string& name);

private:
    std::vector<std::string> mCandidates;
    std::map<std::string, std::string> mClosest; ///< by the names that were asked for
    size_t mCompared = 0;
};

/// The names joined as by listOf, but of a long list only the first ones, with ", ..." behind them.
std::string someOf(const std::vector<std::string>& names, const char* lastJoint = " or ");

std::string someOf(const std::vector<int32_t>& numbers, const char* lastJoint = " or ");

} // namespace NuxoTool

#endif
