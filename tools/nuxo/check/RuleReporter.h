// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_RULE_REPORTER_H
#define NUXO_TOOL_RULE_REPORTER_H

#include "Findings.h"
#include "document/XmlDocument.h"

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace NuxoTool {

class RuleSettings;
enum class RuleSeverity;

/// Takes what the rule that is running finds. A finding at a place where the same rule found something before is dropped:
/// many settings build their graphs from the same lines.
///
/// Texts read "what was found; what was expected", followed by a suggestion (see Suggestion.h).
class RuleReporter {
public:
    RuleReporter(const RuleSettings& settings, Findings& findings) : mSettings(settings), mFindings(findings) {}

    /// At an element, or at its attribute of that name if it has one.
    void report(const XmlElement& element, const std::string& text);
    void report(const XmlElement& element, std::string_view attribute, const std::string& text);
    /// At the attribute as well, where something shows that goes wrong elsewhere, maybe in many places and for several
    /// rules: a name that nothing has. The first place is a finding, the others become notes to it.
    ///
    /// @param cause  what goes wrong, the same text for all of these places
    void reportCause(const std::string& cause, const XmlElement& element, std::string_view attribute,
                     const std::string& text);
    /// The same for what is one cause wherever the rule tells it with the same text in one file.
    void reportOnce(const XmlElement& element, std::string_view attribute, const std::string& text);
    /// At a place in a file that no element is known of.
    void report(const Location& where, const std::string& text);
    /// Explains the last finding; dropped together with it.
    void note(const XmlElement& element, const std::string& text);
    void note(const XmlElement& element, std::string_view attribute, const std::string& text);
    void note(const Location& where, const std::string& text);

    /// Whether an error stands in a part of a document, see partOf.
    bool hasErrors(const XmlElement& part) const { return mFaulty.count(&part) > 0; }
    size_t partsWithErrors() const { return mFaulty.size(); }
    /// What an element belongs to, itself or around it: an element right below `nodes`, `graphs`, `sensor_modes` or the
    /// document's element, the document's element for what stands in none of these.
    static const XmlElement& partOf(const XmlElement& element);
    /// From now on nothing is reported of a part.
    void ignore(const XmlElement& part) { mIgnored.insert(&part); }
    /// Reports what others found, under the severity that its rule has here. Nothing of it is counted to a part.
    ///
    /// @param without  a rule whose findings another rule makes as well
    void take(const Findings& findings, const std::string& without = "");
    /// Adds the notes that count places of one cause, when all rules have run.
    void tellRepeats();

    /// From now on findings are those of this rule.
    ///
    /// @param isBuiltOnOthers  whether the rule takes for granted what rules before it look at. Then it finds nothing in
    ///                         an element that has an error, and warns of nothing in a part that has one: most likely that
    ///                         would be a consequence.
    void enter(const std::string& rule, bool isBuiltOnOthers);
    /// Whether a rule found anything, as error or warning, in a file.
    bool hasFired(const std::string& rule, const std::string& file) const { return mFired.count({rule, file}) > 0; }
    bool hasErrorsIn(const std::string& file) const { return mFaultyFiles.count(file) > 0; }

private:
    void add(const XmlElement* element, const Location& where, const std::string& text);
    bool isConsequence(const XmlElement& element, RuleSeverity severity) const;
    void addNote(const Location& where, const std::string& text);
    bool isRepeat(RuleSeverity severity, const Location& where);

    /// Where a cause was told, and where it showed again.
    struct Cause {
        size_t finding = 0; ///< its index
        size_t repeats = 0;
        std::vector<Location> shown; ///< places of the first of them
        Location last;
    };

    const RuleSettings& mSettings;
    Findings& mFindings;
    std::string mRule;
    bool mIsBuiltOnOthers = false;
    std::set<const XmlElement*> mFaultyElements; // before the rule that is running
    std::set<const XmlElement*> mNewlyFaulty;
    bool mLastWasKept = false;
    std::string mCause; // of what is being reported, "" when it has none
    std::map<std::pair<std::string, RuleSeverity>, Cause> mCauses;
    std::set<const XmlElement*> mFaulty;
    std::set<const XmlElement*> mIgnored;
    std::set<std::string> mFaultyFiles;
    std::set<std::pair<std::string, std::string>> mFired;
    // Of rule, file, line and column; of rules that look at a file by itself, which may find several things in a place and
    // look once, also the text.
    std::set<std::tuple<std::string, std::string, uint32_t, uint32_t, std::string>> mPlaces;
};

} // namespace NuxoTool

#endif
