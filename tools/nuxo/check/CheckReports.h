// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_CHECK_REPORTS_H
#define NUXO_TOOL_CHECK_REPORTS_H

#include "Findings.h"
#include "check/CheckRun.h"
#include "check/Rule.h"
#include "check/RuleSettings.h"

#include <string>

namespace NuxoTool {

/// One line: what was looked at and what was found.
std::string renderSummary(const CheckSummary& summary, const Findings& findings);

/// Findings with rule, severity, place, text and notes, and the summary, as JSON.
std::string renderCheckJson(const CheckSummary& summary, const Findings& findings);

/// Findings in the Static Analysis Results Interchange Format, version 2.1.0.
std::string renderSarif(const Findings& findings, const RuleSettings& settings);

/// All rules with their severity, one line each.
std::string renderRules(const RuleSettings& settings);
std::string renderRulesJson(const RuleSettings& settings);

/// What a rule is about.
std::string renderRule(const Rule& rule, const RuleSettings& settings);
std::string renderRuleJson(const Rule& rule, const RuleSettings& settings);

} // namespace NuxoTool

#endif
