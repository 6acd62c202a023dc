// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_SETTINGS_RULES_H
#define NUXO_TOOL_SETTINGS_RULES_H

#include "check/Rule.h"

#include <vector>

namespace NuxoTool {

// The rules for settings files by topic; settingsRules() has them all.
std::vector<Rule> settingsNameRules();
std::vector<Rule> settingsGraphRules();
std::vector<Rule> settingsConnectionRules();
std::vector<Rule> settingsPathRules();
std::vector<Rule> settingsValueRules();
std::vector<Rule> settingsOverrideRules();
std::vector<Rule> settingsSizeRules();
std::vector<Rule> sensorModeRules();

} // namespace NuxoTool

#endif
