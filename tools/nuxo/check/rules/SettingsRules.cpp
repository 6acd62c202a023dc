// SPDX-License-Identifier: Apache-2.0
#include "check/rules/SettingsRules.h"

#include <iterator>

namespace NuxoTool {

std::vector<Rule> settingsRules()
{
    std::vector<Rule> rules;
    for (std::vector<Rule> (*const topic)() :
         {settingsGraphRules, settingsNameRules, settingsConnectionRules, settingsPathRules, settingsValueRules,
          settingsSizeRules, sensorModeRules}) {
        std::vector<Rule> more = topic();
        rules.insert(rules.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
    }
    return rules;
}

} // namespace NuxoTool
