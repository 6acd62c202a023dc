// SPDX-License-Identifier: Apache-2.0
#include "check/RuleReporter.h"

#include "check/Rule.h"
#include "check/RuleSettings.h"

#include <algorithm>
#include <iterator>

namespace NuxoTool {

namespace {

constexpr size_t kShownRepeats = 4; // of what has one cause, before a count follows

Findings::Finding noteAt(const Location& where, const std::string& text)
{
    Findings::Finding note;
    note.severity = Findings::Severity::Note;
    note.where = where;
    note.text = text;
    return note;
}

Location placeOf(const XmlElement& element, std::string_view attribute)
{
    const XmlAttribute* const found = attribute.empty() ? nullptr : element.attribute(attribute);
    return found == nullptr ? element.document->locate(element) : element.document->locate(element, *found);
}

bool holdsParts(const XmlElement& element)
{
    constexpr const char* names[] = {"nodes", "graphs", "sensor_modes"};
    return element.parent == nullptr ||
           (element.parent->parent == nullptr &&
            std::find(std::begin(names), std::end(names), element.name) != std::end(names));
}

} // namespace

const XmlElement& RuleReporter::partOf(const XmlElement& element)
{
    const XmlElement* part = &element;
    while (part->parent != nullptr && !holdsParts(*part->parent)) part = part->parent;
    return *part;
}

void RuleReporter::report(const XmlElement& element, const std::string& text)
{
    report(element, "", text);
}

void RuleReporter::report(const XmlElement& element, std::string_view attribute, const std::string& text)
{
    add(&element, placeOf(element, attribute), text);
}

void RuleReporter::reportCause(const std::string& cause, const XmlElement& element, std::string_view attribute,
                               const std::string& text)
{
    mCause = cause;
    report(element, attribute, text);
    mCause.clear();
}

void RuleReporter::reportOnce(const XmlElement& element, std::string_view attribute, const std::string& text)
{
    reportCause(element.document->path() + ' ' + mRule + ' ' + text, element, attribute, text);
}

void RuleReporter::report(const Location& where, const std::string& text)
{
    add(nullptr, where, text);
}

void RuleReporter::note(const XmlElement& element, const std::string& text)
{
    addNote(placeOf(element, ""), text);
}

void RuleReporter::note(const XmlElement& element, std::string_view attribute, const std::string& text)
{
    addNote(placeOf(element, attribute), text);
}

void RuleReporter::note(const Location& where, const std::string& text)
{
    addNote(where, text);
}

void RuleReporter::addNote(const Location& where, const std::string& text)
{
    if (mLastWasKept) mFindings.note(where, text);
}

void RuleReporter::enter(const std::string& rule, bool isBuiltOnOthers)
{
    mRule = rule;
    mIsBuiltOnOthers = isBuiltOnOthers;
    mFaultyElements.insert(mNewlyFaulty.begin(), mNewlyFaulty.end());
    mNewlyFaulty.clear();
}

bool RuleReporter::isConsequence(const XmlElement& element, RuleSeverity severity) const
{
    if (!mIsBuiltOnOthers) return false;
    return mFaultyElements.count(&element) > 0 || (severity == RuleSeverity::Warning && hasErrors(partOf(element)));
}

bool RuleReporter::isRepeat(RuleSeverity severity, const Location& where)
{
    if (mCause.empty()) return false;
    const auto [known, isNew] = mCauses.try_emplace({mCause, severity});
    Cause& cause = known->second;
    if (isNew) {
        cause.finding = mFindings.all().size();
        return false;
    }
    ++cause.repeats;
    if (cause.shown.size() < kShownRepeats) cause.shown.push_back(where);
    cause.last = where;
    return true;
}

void RuleReporter::tellRepeats()
{
    std::map<size_t, std::vector<Findings::Finding>> notes;
    for (const auto& [what, cause] : mCauses) {
        std::vector<Findings::Finding>& told = notes[cause.finding];
        for (const Location& place : cause.shown) told.push_back(noteAt(place, "the same here"));
        const size_t others = cause.repeats - cause.shown.size();
        if (others == 1) told.push_back(noteAt(cause.last, "the same here"));
        if (others > 1)
            told.push_back(
                noteAt(cause.last, "the same in " + std::to_string(others) + " more places, here the last one"));
    }
    mFindings.addNotes(notes);
}

void RuleReporter::add(const XmlElement* element, const Location& where, const std::string& text)
{
    const std::optional<RuleSeverity> severity = mSettings.severityOf(mRule);
    mLastWasKept =
        severity.has_value() &&
        (element == nullptr || (mIgnored.count(&partOf(*element)) == 0 && !isConsequence(*element, *severity))) &&
        mPlaces.emplace(mRule, where.file, where.line, where.column, mIsBuiltOnOthers ? "" : text).second;
    if (!mLastWasKept) return;
    mFired.emplace(mRule, where.file);
    if (isRepeat(*severity, where)) {
        mLastWasKept = false;
    } else if (severity == RuleSeverity::Warning) {
        mFindings.warning(mRule, where, text);
    } else {
        mFindings.error(mRule, where, text);
    }
    if (severity == RuleSeverity::Error) mFaultyFiles.insert(where.file);
    // Whatever the user wants to hear of it as: only what is an error by nature has consequences.
    const Rule* const rule = ruleOf(mRule);
    if (element == nullptr || rule == nullptr || rule->severity != RuleSeverity::Error) return;
    if (!rule->letsBuild) mFaulty.insert(&partOf(*element));
    mNewlyFaulty.insert(element);
}

void RuleReporter::take(const Findings& findings, const std::string& without)
{
    for (const Findings::Finding& finding : findings.all()) {
        if (!without.empty() && finding.rule == without) continue;
        if (finding.severity == Findings::Severity::Note) {
            addNote(finding.where, finding.text);
        } else {
            enter(finding.rule, false);
            add(nullptr, finding.where, finding.text);
        }
    }
    // A file that cannot be read is more than a finding.
    if (findings.exitCode() > ExitCode::Findings) mFindings.raiseExitCode(findings.exitCode());
}

} // namespace NuxoTool
