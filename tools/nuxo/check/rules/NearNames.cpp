// SPDX-License-Identifier: Apache-2.0
#include "check/rules/NearNames.h"

#include "Suggestion.h"
#include "Text.h"

namespace NuxoTool {

const std::string& NearNames::closest(const std::string& name)
{
    constexpr size_t mostCompared = 2000000;
    const auto [found, isNew] = mClosest.try_emplace(name);
    if (isNew && mCompared < mostCompared) {
        mCompared += mCandidates.size();
        found->second = closestOf(name, mCandidates);
    }
    return found->second;
}

std::string NearNames::suggestionFor(const std::string& name)
{
    const std::string& near = closest(name);
    return near.empty() ? "" : didYouMean(near);
}

std::string someOf(const std::vector<std::string>& names, const char* lastJoint)
{
    constexpr std::ptrdiff_t listed = 12;
    if (static_cast<std::ptrdiff_t>(names.size()) <= listed) return listOf(names, lastJoint);
    return listOf({names.begin(), names.begin() + listed}, ", ") + ", ...";
}

std::string someOf(const std::vector<int32_t>& numbers, const char* lastJoint)
{
    std::vector<std::string> texts;
    for (const int32_t number : numbers) texts.push_back(std::to_string(number));
    return someOf(texts, lastJoint);
}

} // namespace NuxoTool
