// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_RULE_H
#define NUXO_TOOL_RULE_H

#include "check/RuleReporter.h"
#include "document/XmlDocument.h"

#include <string>
#include <variant>
#include <vector>

namespace NuxoTool {

class DescriptorModel;
class SettingsModel;
struct BuiltSetting;

enum class RuleSeverity { Error, Warning };

/// Looks at a file of either kind by itself.
using FileRule = void (*)(const XmlDocument&, RuleReporter&);
/// Looks at what a descriptor means.
using DescriptorRule = void (*)(const DescriptorModel&, RuleReporter&);
/// Looks at a settings file beside the descriptor that it is made for.
using SettingsRule = void (*)(const DescriptorModel&, const SettingsModel&, RuleReporter&);
/// Looks at the graph of one setting, built and analysed.
using GraphRule = void (*)(const BuiltSetting&, RuleReporter&);
/// Findings of this rule are made elsewhere: where files are read, or while graphs are built.
using NoRule = std::monostate;

/// One thing that `nuxo check` looks for.
struct Rule {
    const char* id; ///< lower case, words joined by '-'
    RuleSeverity severity;
    const char* summary; ///< one line: what is wrong when it fires
    /// A few sentences for `--explain`: why it matters, what the library does, how to mend it.
    const char* explanation;
    /// Rules that must have found nothing in the files that this one looks at; otherwise it does not run.
    std::vector<const char*> needs;
    std::variant<NoRule, FileRule, DescriptorRule, SettingsRule, GraphRule> run;
    /// Whether graphs are built all the same: what it finds does not show in them.
    bool letsBuild = false;
};

// Each list stands beside its rules.
std::vector<Rule> readingRules();
std::vector<Rule> fileRules();
std::vector<Rule> descriptorRules();
std::vector<Rule> settingsRules();
std::vector<Rule> graphRules();

/// All rules, in the order in which they run.
const std::vector<Rule>& allRules();

/// The rule of that name, null when there is none.
const Rule* ruleOf(const std::string& id);

/// What is wrong with the name of a rule that does not exist.
std::string unknownRule(const std::string& id);

} // namespace NuxoTool

#endif
