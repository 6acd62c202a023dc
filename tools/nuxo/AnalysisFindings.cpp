// SPDX-License-Identifier: Apache-2.0
#include "AnalysisFindings.h"

#include "ElementNames.h"
#include "KernelFaults.h"
#include "LibraryFindings.h"
#include "TreeView.h"

#include <nuxo/NuxoStatus.h>

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <vector>

namespace NuxoTool {

using NUXO::IGraphConfig;

namespace {

constexpr const char* kRule = "kernels";

bool startsWith(const std::string& text, std::string_view start)
{
    return text.compare(0, start.size(), start) == 0;
}

// Each step of the library says that it failed when an inner one did, which by itself explains nothing.
bool isConsequence(const std::string& line)
{
    constexpr std::string_view starts[] = {
        "Graph traversal interrupted at node ",
        "Could not find parent history for node ",
        "Traversal of subgraphs failed on subgraph ",
        "TEV structures population failed",
        "TEV data allocation failed",
        "Graph settings analysis failed",
        "Analysis of subgraphs failed ",
        "Failed to collect imaging graph info from ",
        "Generating kernel lists failed",
        "Creating kernel list for exec ctx id ",
    };
    return std::any_of(std::begin(starts), std::end(starts),
                       [&line](std::string_view start) { return startsWith(line, start); }) ||
           line.find(" inner graph traversal stopped with error ") != std::string::npos;
}

// A setting uses a part of the descriptor's graph: connections to the rest lead nowhere.
bool isSkippedConnection(const LogLine& line)
{
    return !line.isError && line.text.find(" skipped due to source not FOUND") != std::string::npos;
}

// A port need not state the size that its source gives it.
bool isDefaultSize(const LogLine& line)
{
    return !line.isError && (startsWith(line.text, "Failed to get dimensions for port ") ||
                             startsWith(line.text, "Failed to get dimensions for private port "));
}

// Drops what is no matter: with a size that is not stated also the error that says so.
std::vector<LogLine> withoutExpected(const std::vector<LogLine>& lines, bool withWarnings)
{
    std::vector<LogLine> kept;
    for (const LogLine& line : lines) {
        if (isDefaultSize(line)) {
            if (!kept.empty() && startsWith(kept.back().text, "Error: Couldn't get ")) kept.pop_back();
        } else if (!isSkippedConnection(line)) {
            kept.push_back(line);
        }
    }
    const auto isUnwanted = [withWarnings](const LogLine& line) { return !line.isError && !withWarnings; };
    kept.erase(std::remove_if(kept.begin(), kept.end(), isUnwanted), kept.end());
    return kept;
}

// Whether the width is what does not fit, of a line that compares sizes.
bool isWidthWrong(const std::string& line)
{
    int taken[2] = {};
    int arriving[2] = {};
    const size_t at = line.find("res info input(");
    const bool isRead =
        at != std::string::npos &&
        std::sscanf(line.c_str() + at, "res info input(%dx%d) is different than res history output(%dx%d)", &taken[0],
                    &taken[1], &arriving[0], &arriving[1]) == 4;
    return !isRead || taken[0] != arriving[0];
}

// Of a line that leaves the cause to the reader.
std::string remedyFor(const std::string& line)
{
    return startsWith(line, "Traversal of meta graph did not reach all nodes ")
               ? "; expected streams that do not feed each other in a circle, which have no records"
               : "";
}

class Reporter {
public:
    Reporter(Session& session, const BuiltGraph& built, bool withWarnings)
        : mSession(session), mBuilt(built), mNames(*built.graph), mGroups(programGroupsOf(*built.graph)),
          mLines(withoutExpected(newLines(session, {kRule, built.settings, "", 0}, true), withWarnings))
    {
        for (const LogLine& line : mLines) mTexts.push_back(line.text);
    }

    void reportLines()
    {
        for (size_t i = 0; i < mLines.size(); ++i) {
            if (mLines[i].isError) {
                mSession.findings.error(kRule, placeOfLine(i), mTexts[i] + remedyFor(mTexts[i]));
            } else {
                mSession.findings.warning(kRule, placeOfLine(i), mTexts[i]);
            }
        }
    }

    void reportFailure(int status)
    {
        const size_t cause = causeIndex();
        std::string found =
            "filling the records of " + settingName(*mBuilt.settings) + " ended with " + NUXO::statusName(status);
        if (cause < mLines.size()) found += ": " + mTexts[cause];
        mSession.findings.error(kRule, cause < mLines.size() ? placeOfLine(cause) : placeOf(mSession, onSetting()),
                                found + "; expected kernels whose links and sizes fit");
        for (size_t i = 0; i < mLines.size(); ++i) {
            if (i == cause || isConsequence(mTexts[i])) continue;
            mSession.findings.note(placeOfLine(i),
                                   (mLines[i].isError ? "library error: " : "library warning: ") + mTexts[i]);
        }
    }

private:
    LogContext onSetting() const { return {kRule, mBuilt.settings, "", 0}; }

    // The first error that explains; without any the first error.
    size_t causeIndex() const
    {
        size_t first = mLines.size();
        for (size_t i = mLines.size(); i-- > 0;) {
            if (mLines[i].isError && !isConsequence(mTexts[i])) first = i;
        }
        if (first < mLines.size()) return first;
        const auto error = std::find_if(mLines.begin(), mLines.end(), [](const LogLine& line) { return line.isError; });
        return static_cast<size_t>(error - mLines.begin());
    }

    // At the element that the line names, or else one of the lines behind it, which tell what the step was about.
    Location placeOfLine(size_t index)
    {
        for (size_t i = index; i < mLines.size(); ++i) {
            if (i > index && !mLines[i].isError) continue;
            const std::vector<std::string> behind(mTexts.begin() + static_cast<std::ptrdiff_t>(i) + 1, mTexts.end());
            const IGraphConfig* const item = mNames.namedIn(mTexts[i], behind);
            if (item == nullptr) continue;
            if (startsWith(mTexts[index], "Consistency error in kernel "))
                return placeOfInput(mSession, *item, isWidthWrong(mTexts[index]));
            const KernelFault fault = faultBehind(mTexts[index], *item, mGroups);
            return placeOf(mSession, {kRule, fault.item == nullptr ? item : fault.item, "", fault.attribute});
        }
        return placeOf(mSession, onSetting());
    }

    Session& mSession;
    const BuiltGraph& mBuilt;
    ElementNames mNames;
    ProgramGroups mGroups;
    std::vector<LogLine> mLines;
    std::vector<std::string> mTexts;
};

} // namespace

Location placeOfInput(Session& session, const IGraphConfig& kernel, bool isWidth)
{
    const IGraphConfig* const input = kernel.getDescendant(NUXO_KEY_INPUT);
    const uint32_t attribute = isWidth ? NUXO_KEY_WIDTH : NUXO_KEY_HEIGHT;
    return placeOf(session, {kRule, input == nullptr ? &kernel : input, "", attribute});
}

void reportAnalysis(Session& session, const BuiltGraph& built, int status, bool withWarnings)
{
    Reporter reporter(session, built, withWarnings || status != StatusOk);
    if (status == StatusOk) {
        reporter.reportLines();
    } else {
        reporter.reportFailure(status);
    }
}

} // namespace NuxoTool
