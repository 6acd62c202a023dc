// SPDX-License-Identifier: Apache-2.0
#include "check/rules/SettingsRules.h"

#include <iterator>

namespace NuxoTool {

namespace {

constexpr char kVersionRule[] = "version-mismatch";

// Files of two generations have so little in common that all else would be told as a fault.
void waitForVersion(std::vector<Rule>& rules)
{
    for (Rule& rule : rules) {
        const bool comparesFiles =
            std::holds_alternative<SettingsRule>(rule.run) && std::string(rule.id) != kVersionRule;
        if (comparesFiles) rule.needs.push_back(kVersionRule);
    }
}

} // namespace

std::vector<Rule> settingsRules()
{
    std::vector<Rule> rules;
    for (std::vector<Rule> (*const topic)() :
         {settingsGraphRules, settingsNameRules, settingsConnectionRules, settingsPathRules, settingsValueRules,
          settingsOverrideRules, settingsSizeRules, sensorModeRules}) {
        std::vector<Rule> more = topic();
        rules.insert(rules.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
    }
    waitForVersion(rules);
    return rules;
}

} // namespace NuxoTool
