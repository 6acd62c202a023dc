// SPDX-License-Identifier: Apache-2.0
#include "Findings.h"

#include "FileBytes.h"
#include "Text.h"

#include <algorithm>

namespace NuxoTool {

namespace {

constexpr const char* kBold = "\033[1m";
constexpr const char* kRed = "\033[1;31m";
constexpr const char* kYellow = "\033[1;33m";
constexpr const char* kCyan = "\033[1;36m";
constexpr const char* kGreen = "\033[1;32m";
constexpr const char* kPlain = "\033[0m";

std::string painted(const std::string& text, const char* paint, bool colour)
{
    return colour ? paint + text + kPlain : text;
}

std::string placeText(const Location& where)
{
    if (where.file.empty()) return "nuxo:";
    std::string text = printable(where.file) + ':';
    if (where.line > 0) text += std::to_string(where.line) + ':' + std::to_string(where.column) + ':';
    return text;
}

} // namespace

Location inFile(const std::string& file)
{
    Location location;
    location.file = file;
    return location;
}

void Findings::add(Severity severity, const std::string& rule, const Location& where, const std::string& text)
{
    Finding& finding = mFindings.emplace_back();
    finding.severity = severity;
    finding.rule = rule;
    finding.where = where;
    finding.text = text;
}

void Findings::error(const std::string& rule, const Location& where, const std::string& text, ExitCode exitCode)
{
    add(Severity::Error, rule, where, text);
    mExitCode = std::max(mExitCode, exitCode);
    ++mErrorCount;
}

void Findings::usageError(const std::string& rule, const Quote& quote, const std::string& text)
{
    error(rule, Location(), text, ExitCode::Usage);
    mFindings.back().quote = quote;
}

void Findings::warning(const std::string& rule, const Location& where, const std::string& text)
{
    add(Severity::Warning, rule, where, text);
}

void Findings::note(const Location& where, const std::string& text)
{
    add(Severity::Note, "", where, text);
}

std::string Findings::headline(const Finding& finding, bool colour)
{
    std::string label = "note";
    const char* paint = kCyan;
    if (finding.severity == Severity::Error) {
        label = "error[" + finding.rule + ']';
        paint = kRed;
    } else if (finding.severity == Severity::Warning) {
        label = "warning[" + finding.rule + ']';
        paint = kYellow;
    }
    return painted(placeText(finding.where), kBold, colour) + ' ' + painted(label + ':', paint, colour) + ' ' +
           printable(finding.text) + '\n';
}

void Findings::appendSource(std::string& out, const Finding& finding, bool colour)
{
    Excerpt excerpt;
    if (!finding.quote.text.empty()) {
        excerpt = makeExcerpt(finding.quote.text, finding.quote.column, finding.quote.length);
    } else {
        if (finding.where.line == 0) return;
        const std::string line = readLine(finding.where.file, finding.where.line, finding.where.column);
        if (line.empty()) return;
        excerpt = makeExcerpt(line, finding.where.column);
    }
    out += "    " + excerpt.line + "\n    " + painted(excerpt.caretLine, kGreen, colour) + '\n';
}

std::string Findings::toText(bool colour) const
{
    std::string out;
    for (const Finding& finding : mFindings) {
        out += headline(finding, colour);
        appendSource(out, finding, colour);
    }
    return out;
}

} // namespace NuxoTool
