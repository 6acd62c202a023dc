// SPDX-License-Identifier: Apache-2.0
#include "Suggestion.h"

#include "Text.h"

#include <nuxo/tree/NuxoKeys.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>
#include <vector>

namespace NuxoTool {

namespace {

constexpr size_t kLongestName = 64;      // longer names are no typing errors
constexpr size_t kShortenedDistance = 1; // of a name that lacks a word, see isShortened

// Names of the vocabulary that mark ranges or nothing and name no element or attribute.
bool isMarker(const std::string& name)
{
    return name == "na" || name == "generic_keys_end" || name == "num_start" || name == "num_end";
}

size_t lengthDifference(const std::string& a, const std::string& b)
{
    return a.size() > b.size() ? a.size() - b.size() : b.size() - a.size();
}

// Number of characters to insert, remove, replace or swap with their neighbour.
size_t editDistance(const std::string& a, const std::string& b)
{
    std::vector<size_t> before(b.size() + 1);
    std::vector<size_t> last(b.size() + 1);
    std::vector<size_t> current(b.size() + 1);
    std::iota(last.begin(), last.end(), size_t{0});
    for (size_t i = 1; i <= a.size(); ++i) {
        current[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t replace = last[j - 1] + (a[i - 1] == b[j - 1] ? 0U : 1U);
            current[j] = std::min({replace, last[j] + 1, current[j - 1] + 1});
            const bool swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
            if (swapped) current[j] = std::min(current[j], before[j - 2] + 1);
        }
        before.swap(last);
        last.swap(current);
    }
    return last[b.size()];
}

// Of one letter in three.
size_t farthestOf(const std::string& name, const std::string& candidate)
{
    return std::max<size_t>(std::max(name.size(), candidate.size()) / 3, 1);
}

// Whether a name is a whole word at the start or the end of the candidate, as `mode` of `mode_id`.
bool isShortened(const std::string& name, const std::string& candidate)
{
    constexpr size_t shortestWord = 3;
    if (name.size() < shortestWord || name.size() >= candidate.size()) return false;
    return startsWith(candidate, name + '_') || candidate.substr(candidate.size() - name.size() - 1) == '_' + name;
}

// Without regard to case; anything above @p farthest for names that are farther apart.
size_t distanceOf(const std::string& name, const std::string& candidate, size_t farthest)
{
    const std::string lowerName = lowerCase(name);
    const std::string lowerCandidate = lowerCase(candidate);
    if (isShortened(lowerName, lowerCandidate)) return kShortenedDistance;
    return lengthDifference(name, candidate) > farthest ? farthest + 1 : editDistance(lowerName, lowerCandidate);
}

} // namespace

std::string closestOf(const std::string& name, const std::vector<std::string>& candidates)
{
    if (name.empty() || name.size() > kLongestName) return "";
    std::pair<size_t, size_t> best = {kLongestName, kLongestName + 1}; // distance without and with regard to case
    std::string closest;
    for (const std::string& candidate : candidates) {
        const size_t farthest = std::min(best.first, farthestOf(name, candidate));
        const size_t distance = distanceOf(name, candidate, farthest);
        if (distance > farthest) continue;
        const std::pair<size_t, size_t> both = {distance, editDistance(name, candidate)};
        if (both >= best) continue;
        best = both;
        closest = candidate;
    }
    return closest;
}

std::string misspelledOf(const std::string& name, const std::vector<std::string>& candidates)
{
    const std::string closest = closestOf(name, candidates);
    const size_t farthest = std::max<size_t>(name.size() / 3, 1);
    return editDistance(lowerCase(name), lowerCase(closest)) <= farthest ? closest : "";
}

std::string didYouMean(const std::string& name)
{
    return "; did you mean '" + name + "'?";
}

std::string suggestionFor(const std::string& name, const std::vector<std::string>& candidates)
{
    const std::string closest = closestOf(name, candidates);
    return closest.empty() ? "" : didYouMean(closest);
}

std::string suggestionFor(const std::string& name)
{
    std::vector<std::string> names;
    for (const auto& [candidate, key] : NUXO::nuxo_key_map) {
        if (!isMarker(candidate)) names.push_back(candidate);
    }
    return suggestionFor(name, names);
}

} // namespace NuxoTool
