// SPDX-License-Identifier: Apache-2.0
#include "check/rules/DescriptorRuleParts.h"

#include <iterator>

namespace NuxoTool {

// Rules stand behind those that they need.
std::vector<Rule> descriptorRules()
{
    using MakeRules = std::vector<Rule> (*)();
    constexpr MakeRules topics[] = {contentRules, baseNodeRules, nodeRules,     connectionRules,
                                    captureRules, usageRules,    overrideRules, optionRules,
                                    kernelRules,  branchRules,   groupRules,    linkRules};
    std::vector<Rule> rules;
    for (const MakeRules make : topics) {
        std::vector<Rule> more = make();
        rules.insert(rules.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
    }
    return rules;
}

} // namespace NuxoTool
