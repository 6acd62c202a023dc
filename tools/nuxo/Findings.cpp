// SPDX-License-Identifier: Apache-2.0
#include "Findings.h"

#include "FileBytes.h"
#include "Text.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <tuple>
#include <utility>

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

void Findings::addNotes(const std::map<size_t, std::vector<Finding>>& notes)
{
    std::vector<Finding> all;
    const std::vector<Finding>* pending = nullptr; // until the finding's own notes have passed
    const auto settle = [&] {
        if (pending != nullptr) all.insert(all.end(), pending->begin(), pending->end());
        pending = nullptr;
    };
    for (size_t i = 0; i < mFindings.size(); ++i) {
        if (mFindings[i].severity != Severity::Note) settle();
        const auto added = notes.find(i);
        if (added != notes.end()) pending = &added->second;
        all.push_back(std::move(mFindings[i]));
    }
    settle();
    mFindings = std::move(all);
}

void Findings::append(const Findings& other)
{
    mFindings.insert(mFindings.end(), other.mFindings.begin(), other.mFindings.end());
    mErrorCount += other.mErrorCount;
    raiseExitCode(other.mExitCode);
}

void Findings::sortByPlace(const std::vector<std::string>& files)
{
    using Key = std::tuple<ptrdiff_t, uint32_t, uint32_t>;
    std::vector<std::pair<Key, size_t>> order;
    for (size_t i = 0; i < mFindings.size(); ++i) {
        const Location& where = mFindings[i].where;
        const bool isNote = mFindings[i].severity == Severity::Note && !order.empty();
        const ptrdiff_t file = std::find(files.begin(), files.end(), where.file) - files.begin();
        order.emplace_back(isNote ? order.back().first : Key(file, where.line, where.column), i);
    }
    std::sort(order.begin(), order.end());
    std::vector<Finding> sorted;
    sorted.reserve(order.size());
    for (const auto& [key, index] : order) sorted.push_back(std::move(mFindings[index]));
    mFindings = std::move(sorted);
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

// The line of each finding, empty for those without. Each file is read once, however many findings stand in it.
std::vector<SourceLine> Findings::sourceLines() const
{
    std::map<std::string, std::vector<size_t>> findingsOf;
    for (size_t i = 0; i < mFindings.size(); ++i) {
        if (mFindings[i].where.line > 0 && mFindings[i].quote.text.empty())
            findingsOf[mFindings[i].where.file].push_back(i);
    }
    std::vector<SourceLine> lines(mFindings.size());
    for (const auto& [file, indices] : findingsOf) {
        std::vector<LineColumn> places;
        for (const size_t index : indices)
            places.push_back({mFindings[index].where.line, mFindings[index].where.column});
        std::vector<SourceLine> texts = readLines(file, places);
        for (size_t i = 0; i < indices.size(); ++i) lines[indices[i]] = std::move(texts[i]);
    }
    return lines;
}

void Findings::appendSource(std::string& out, const Finding& finding, const SourceLine& line, bool colour)
{
    const bool hasQuote = !finding.quote.text.empty();
    if (!hasQuote && line.text.empty()) return;
    const Excerpt excerpt = hasQuote ? makeExcerpt(finding.quote.text, finding.quote.column, finding.quote.length)
                                     : makeExcerpt(line.text, line.column);
    out += "    " + excerpt.line + "\n    " + painted(excerpt.caretLine, kGreen, colour) + '\n';
}

std::string Findings::toText(bool colour) const
{
    const std::vector<SourceLine> lines = sourceLines();
    std::string out;
    for (size_t i = 0; i < mFindings.size(); ++i) {
        out += headline(mFindings[i], colour);
        appendSource(out, mFindings[i], lines[i], colour);
    }
    return out;
}

} // namespace NuxoTool
