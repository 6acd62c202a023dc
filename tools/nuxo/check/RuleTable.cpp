// SPDX-License-Identifier: Apache-2.0
#include "Suggestion.h"
#include "check/Rule.h"

#include <algorithm>
#include <iterator>

namespace NuxoTool {

const std::vector<Rule>& allRules()
{
    static const std::vector<Rule> rules = [] {
        std::vector<Rule> all;
        for (std::vector<Rule> part : {readingRules(), fileRules(), descriptorRules(), settingsRules(), graphRules()}) {
            std::move(part.begin(), part.end(), std::back_inserter(all));
        }
        return all;
    }();
    return rules;
}

const Rule* ruleOf(const std::string& id)
{
    const std::vector<Rule>& all = allRules();
    const auto found = std::find_if(all.begin(), all.end(), [&id](const Rule& rule) { return id == rule.id; });
    return found == all.end() ? nullptr : &*found;
}

std::string unknownRule(const std::string& id)
{
    std::vector<std::string> ids;
    for (const Rule& rule : allRules()) ids.emplace_back(rule.id);
    return "unknown rule '" + id + "'; expected one that --list-rules names" + suggestionFor(id, ids);
}

} // namespace NuxoTool
