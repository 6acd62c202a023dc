// SPDX-License-Identifier: Apache-2.0
#include "check/RuleSettings.h"

#include <algorithm>

namespace NuxoTool {

namespace {

// -Werror reads as -W error.
constexpr const char* kAllWarnings = "error";

// What was found where files are read: without it there would be nothing to say about the rest.
bool canBeLeftOut(const Rule& rule)
{
    return !std::holds_alternative<NoRule>(rule.run) || rule.severity == RuleSeverity::Warning;
}

} // namespace

RuleSettings::RuleSettings(const Arguments& arguments, Findings& findings)
    : mWarningsAreErrors(arguments.warningsAreErrors)
{
    for (const Rule& rule : allRules()) mSeverities[rule.id] = rule.severity;
    std::vector<std::string> warnings = arguments.warningRules;
    const auto end = std::remove(warnings.begin(), warnings.end(), kAllWarnings);
    mWarningsAreErrors = mWarningsAreErrors || end != warnings.end();
    warnings.erase(end, warnings.end());
    apply(warnings, RuleSeverity::Warning, findings);
    apply(arguments.errorRules, RuleSeverity::Error, findings);
    apply(arguments.disabledRules, std::nullopt, findings);
}

void RuleSettings::apply(const std::vector<std::string>& rules, std::optional<RuleSeverity> severity,
                         Findings& findings)
{
    for (const std::string& name : rules) {
        const Rule* const rule = ruleOf(name);
        if (rule == nullptr) {
            findings.error("usage", {}, unknownRule(name), ExitCode::Usage);
        } else if (severity != RuleSeverity::Error && !canBeLeftOut(*rule)) {
            findings.error("usage", {},
                           "rule '" + name + "' says why a file cannot be read; expected a rule that can be left out",
                           ExitCode::Usage);
        } else {
            mSeverities[name] = severity;
        }
    }
}

std::optional<RuleSeverity> RuleSettings::severityOf(const std::string& rule) const
{
    const auto found = mSeverities.find(rule);
    const std::optional<RuleSeverity> severity = found == mSeverities.end() ? RuleSeverity::Error : found->second;
    if (severity == RuleSeverity::Warning && mWarningsAreErrors) return RuleSeverity::Error;
    return severity;
}

} // namespace NuxoTool
