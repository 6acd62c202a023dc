// SPDX-License-Identifier: Apache-2.0
#include "check/CheckReports.h"
#include "check/CheckRun.h"
#include "check/Rule.h"
#include "check/RuleSettings.h"
#include "verbs/Verbs.h"

namespace NuxoTool {

namespace {

void explainRule(Session& session, const std::string& id, const RuleSettings& rules)
{
    if (const Rule* const rule = ruleOf(id)) {
        const bool isJson = session.arguments.format == Format::Json;
        session.output = isJson ? renderRuleJson(*rule, rules) : renderRule(*rule, rules);
    } else {
        session.findings.error("usage", {}, unknownRule(id), ExitCode::Usage);
    }
}

void checkFiles(Session& session, const RuleSettings& rules)
{
    const CheckSummary summary = CheckRun(session, rules).run();
    switch (session.arguments.format) {
    case Format::Json: session.output = renderCheckJson(summary, session.findings); break;
    case Format::Sarif: session.output = renderSarif(session.findings, rules); break;
    default: session.output = renderSummary(summary, session.findings); return;
    }
    session.findings.keepExitCodeOnly(); // the document tells of them
}

} // namespace

void runCheck(Session& session)
{
    const Arguments& arguments = session.arguments;
    const RuleSettings rules(arguments, session.findings);
    if (session.findings.errorCount() > 0) return;
    if (arguments.listRules) {
        session.output = arguments.format == Format::Json ? renderRulesJson(rules) : renderRules(rules);
    } else if (arguments.explainedRule) {
        explainRule(session, *arguments.explainedRule, rules);
    } else {
        checkFiles(session, rules);
    }
}

} // namespace NuxoTool
