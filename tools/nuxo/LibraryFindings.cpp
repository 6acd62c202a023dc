// SPDX-License-Identifier: Apache-2.0
#include "LibraryFindings.h"

#include "LibraryLog.h"

#include <nuxo/NuxoStatus.h>

#include <algorithm>
#include <vector>

namespace NuxoTool {

Location placeOf(Session& session, const LogContext& context)
{
    Location location;
    if (session.locator.locate(context.node, context.attribute, location) == StatusOk) return location;
    if (session.locator.locate(context.node, location) == StatusOk) return location;
    return inFile(session.arguments.settings);
}

std::vector<LogLine> newLines(Session& session, const LogContext& context, bool withWarnings)
{
    std::vector<LogLine> lines;
    for (const LogLine& line : takeLibraryLog()) {
        if (!line.isError && !withWarnings) continue;
        if (session.reportedLines.count(line.text) > 0) continue;
        if (session.reportedLines.insert(context.subject + line.text).second) lines.push_back(line);
    }
    return lines;
}

void reportLogLines(Session& session, const LogContext& context, bool withWarnings)
{
    for (const LogLine& line : newLines(session, context, withWarnings)) {
        const std::string text = (context.subject.empty() ? "" : context.subject + ": ") + line.text;
        if (line.isError) {
            session.findings.error(context.rule, placeOf(session, context), text);
        } else {
            session.findings.warning(context.rule, placeOf(session, context), text);
        }
    }
}

void reportFailure(Session& session, const LogContext& context, const std::string& step, int status,
                   const std::string& expected)
{
    std::vector<LogLine> lines = newLines(session, context, true);
    const auto cause = std::find_if(lines.begin(), lines.end(), [](const LogLine& line) { return line.isError; });
    std::string found = step + " ended with " + NUXO::statusName(status);
    if (cause != lines.end()) {
        found += ": " + cause->text;
        lines.erase(cause);
    }
    const Location where = placeOf(session, context);
    session.findings.error(context.rule, where, found + "; expected " + expected);
    for (const LogLine& line : lines) {
        const char* const label = line.isError ? "library error: " : "library warning: ";
        session.findings.note(inFile(where.file), label + line.text);
    }
}

} // namespace NuxoTool
