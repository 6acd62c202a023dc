// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_FINDINGS_H
#define NUXO_TOOL_FINDINGS_H

#include <nuxo/parser/SourceLocator.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace NuxoTool {

struct SourceLine;

/// What the tool's exit code says. A run with several kinds of trouble ends with the highest.
enum class ExitCode { Done = 0, Findings = 1, Usage = 2, InputOutput = 3, Internal = 4 };

/// Where a finding is: a file, with line and column when they are known (line 0: not known).
using Location = NUXO::SourceLocation;

/// A place without line and column.
Location inFile(const std::string& file);

/// A text from the command line that a finding points into.
struct Quote {
    std::string text;
    size_t column = 1; ///< from 1
    size_t length = 1;
};

/// What a run has to report besides its data: errors, warnings, and notes that explain the finding before them.
///
/// Texts read "what was found; what was expected".
class Findings {
public:
    enum class Severity { Error, Warning, Note };
    struct Finding {
        Severity severity = Severity::Error;
        std::string rule; ///< empty for notes
        Location where;
        Quote quote; ///< shown when its text is not empty
        std::string text;
    };

    void error(const std::string& rule, const Location& where, const std::string& text,
               ExitCode exitCode = ExitCode::Findings);
    /// An error in something that was typed on the command line.
    void usageError(const std::string& rule, const Quote& quote, const std::string& text);
    void warning(const std::string& rule, const Location& where, const std::string& text);
    void note(const Location& where, const std::string& text);
    /// Explains findings that were made before, by notes that go behind those that they have.
    ///
    /// @param notes  by the index of the finding in all()
    void addNotes(const std::map<size_t, std::vector<Finding>>& notes);

    ExitCode exitCode() const { return mExitCode; }
    /// The run ends with at least this code.
    void raiseExitCode(ExitCode code) { mExitCode = std::max(mExitCode, code); }
    /// Number of errors so far, to see whether a step added any.
    size_t errorCount() const { return mErrorCount; }

    /// In the order in which they were made; notes stand behind what they explain.
    const std::vector<Finding>& all() const { return mFindings; }

    /// Drops the texts, which were written elsewhere; the exit code stays.
    void keepExitCodeOnly() { mFindings.clear(); }
    /// Adds those of another run.
    void append(const Findings& other);
    /// Puts those of one file together, in the order of @p files, then by line and column; notes stay behind what they
    /// explain. What stands in none of the files comes last.
    void sortByPlace(const std::vector<std::string>& files);

    /// All findings in the order in which they were made, each with the source line that it is about.
    std::string toText(bool colour) const;

private:
    void add(Severity severity, const std::string& rule, const Location& where, const std::string& text);
    static std::string headline(const Finding& finding, bool colour);
    static void appendSource(std::string& out, const Finding& finding, const SourceLine& line, bool colour);
    std::vector<SourceLine> sourceLines() const;

    std::vector<Finding> mFindings;
    size_t mErrorCount = 0;
    ExitCode mExitCode = ExitCode::Done;
};

} // namespace NuxoTool

#endif
