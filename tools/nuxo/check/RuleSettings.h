// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_RULE_SETTINGS_H
#define NUXO_TOOL_RULE_SETTINGS_H

#include "Arguments.h"
#include "Findings.h"
#include "check/Rule.h"

#include <map>
#include <optional>
#include <string>

namespace NuxoTool {

/// What the command line says of rules: which are left out, and how serious the findings of the others are.
class RuleSettings {
public:
    /// Names of rules that do not exist, and the wish to leave out a rule that cannot be, become findings.
    RuleSettings(const Arguments& arguments, Findings& findings);

    /// Nothing for a rule that is left out. Unknown rules are errors.
    std::optional<RuleSeverity> severityOf(const std::string& rule) const;

private:
    void apply(const std::vector<std::string>& rules, std::optional<RuleSeverity> severity, Findings& findings);

    std::map<std::string, std::optional<RuleSeverity>> mSeverities;
    bool mWarningsAreErrors = false;
};

} // namespace NuxoTool

#endif
