// SPDX-License-Identifier: Apache-2.0
#include "AnalysisFindings.h"

#include "ElementNames.h"
#include "KernelFaults.h"
#include "LibraryFindings.h"
#include "Origins.h"
#include "PortView.h"
#include "StreamFaults.h"
#include "Text.h"
#include "TreeView.h"
#include "UnreachedNodes.h"

#include <nuxo/NuxoStatus.h>

#include <algorithm>
#include <cstdio>
#include <string_view>
#include <vector>

namespace NuxoTool {

using NUXO::IGraphConfig;

namespace {

constexpr const char* kRule = "kernels";

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
        "Failed to retrieve kernel info from IGraphConfig",
        "Failed to fetch kernel values ",
        "Failed to get resolution history for source: ",
        "Failed to get source resolution history",
        "No Input port or source in stream ",
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

// Drops what is no matter: with a size that is not stated also the error that says so. Where frames do not arrive is
// always told.
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
    const auto isUnwanted = [withWarnings](const LogLine& line) {
        return !line.isError && !withWarnings && !tellsOfUnreached(line.text);
    };
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
    return isStreamUnreached(line) ? "; expected streams that frames reach: the others have no records" : "";
}

// What is missing, where the line says only which side.
bool isPartOfBackEnd(const std::string& line)
{
    return line == "Failed to get csi be output dimensions" || line == "Failed to get input dimensions and crop";
}

class Reporter {
public:
    Reporter(Session& session, const BuiltGraph& built, bool withWarnings)
        : mSession(session), mBuilt(built), mGroups(programGroupsOf(*built.graph)),
          mLines(withoutFollowers(
              withoutExpected(newLines(session, {kRule, built.settings, "", 0}, true), withWarnings), mGroups))
    {
        for (const LogLine& line : mLines) mTexts.push_back(line.text);
    }

    void reportLines()
    {
        const size_t errors = mSession.findings.errorCount();
        for (size_t i = 0; i < mLines.size(); ++i) {
            if (mLines[i].isError) {
                mSession.findings.error(kRule, placeOfLine(i).where, mTexts[i] + remedyFor(mTexts[i]));
                noteStreamFaults(mTexts[i]);
            } else {
                mSession.findings.warning(kRule, placeOfLine(i).where, mTexts[i]);
            }
        }
        if (mSession.findings.errorCount() > errors) return;
        reportUnfedGroups();
        reportLinksWithoutPort();
        reportHalfSizes();
    }

    void reportFailure(int status)
    {
        const size_t cause = causeIndex();
        std::string found =
            "filling the records of " + settingName(*mBuilt.settings) + " ended with " + NUXO::statusName(status);
        Place place = {placeOf(mSession, onSetting()), KernelFault().expected};
        if (cause < mLines.size()) {
            found += ": " + mTexts[cause];
            place = placeOfLine(cause);
        }
        mSession.findings.error(kRule, place.where, found + "; expected " + place.expected);
        if (cause < mLines.size()) noteStreamFaults(mTexts[cause]);
        reportHalfSizes(originText(place.where));
        for (size_t i = 0; i < mLines.size(); ++i) {
            if (i == cause || isConsequence(mTexts[i])) continue;
            mSession.findings.note(placeOfLine(i).where,
                                   (mLines[i].isError ? "library error: " : "library warning: ") + mTexts[i]);
        }
    }

private:
    struct Place {
        Location where;
        std::string expected;
    };

    LogContext onSetting() const { return {kRule, mBuilt.settings, "", 0}; }

    // The library takes a kernel with half a size for one without.
    void reportHalfSizes(const std::string& known = "")
    {
        for (const KernelFault& fault : halfSizesIn(mGroups)) {
            const Location where = placeOf(mSession, {kRule, fault.item, "", fault.attribute});
            if (originText(where) == known) continue;
            const IGraphConfig& kernel = *fault.item->getAncestor();
            mSession.findings.warning(kRule, where,
                                      nameOf(*kernel.getAncestor()) + ':' + nameOf(kernel) + " states half of its " +
                                          nameOf(*fault.item) + " size, which does not count; expected " +
                                          fault.expected);
        }
    }

    // The library does not mind.
    void reportUnfedGroups()
    {
        for (const StreamFault& fault : unfedGroupsOf(mSession, mGroups)) {
            mSession.findings.error(kRule, placeOf(mSession, {kRule, fault.item, "", 0}),
                                    fault.text + ", so the records do not tell what its kernels receive; expected a " +
                                        "connection that leads there");
        }
    }

    void reportLinksWithoutPort()
    {
        for (const KernelFault& fault : linksWithoutPortIn(mGroups)) {
            const std::string end = textOf(*fault.item, fault.attribute);
            mSession.findings.error(kRule, placeOf(mSession, {kRule, fault.item, "", fault.attribute}),
                                    '\'' + end + "' is no port of " + nameOf(*fault.item->getAncestor()) +
                                        "; expected a port, or that of a kernel, such as " + end + ":0");
        }
    }

    void noteStreamFaults(const std::string& line)
    {
        if (!isStreamUnreached(line)) return;
        for (const StreamFault& fault : streamFaultsOf(mSession, *mBuilt.graph, mGroups))
            mSession.findings.note(placeOf(mSession, {kRule, fault.item, "", 0}), fault.text);
    }

    template <typename IsWanted> size_t firstLine(IsWanted isWanted) const
    {
        return static_cast<size_t>(std::find_if(mLines.begin(), mLines.end(), isWanted) - mLines.begin());
    }

    // The first error that explains; without any the first error.
    size_t causeIndex() const
    {
        const auto isError = [](const LogLine& line) { return line.isError; };
        const size_t first = firstLine([](const LogLine& line) { return line.isError && !isConsequence(line.text); });
        if (first == mLines.size()) return firstLine(isError);
        if (startsWith(mTexts[first], "Error: Couldn't get ") && first + 1 < mLines.size() &&
            isPartOfBackEnd(mTexts[first + 1]))
            return first + 1;
        return startsWith(mTexts[first], "Failed to get res history for input port ") ? causeUpstream(first) : first;
    }

    // Why no frame leaves the stream before: a switch that leads nowhere, or else where frames stop.
    size_t causeUpstream(size_t consequence) const
    {
        const size_t routing = firstLine(
            [](const LogLine& line) { return startsWith(line.text, "Failed to get Active routing path for "); });
        const size_t stop = firstLine([](const LogLine& line) { return isUnreached(line.text); });
        if (stop > consequence) return consequence;
        return routing < stop ? routing : stop;
    }

    // At the element that the line names, or else one of the lines behind it, which tell what the step was about.
    Place placeOfLine(size_t index)
    {
        const IGraphConfig* item = nullptr;
        for (size_t i = index; i < mLines.size() && item == nullptr; ++i) {
            if (i > index && !mLines[i].isError) continue;
            if (isPartOfBackEnd(mTexts[i])) continue; // the words in it are no names
            const std::vector<std::string> behind(mTexts.begin() + static_cast<std::ptrdiff_t>(i) + 1, mTexts.end());
            if (!mNames) mNames.emplace(*mBuilt.graph);
            item = mNames->namedIn(mTexts[i], behind);
        }
        const char* const expected = KernelFault().expected;
        const std::string& line = mTexts[index];
        if (item != nullptr && startsWith(line, "Consistency error in kernel "))
            return {placeOfInput(mSession, *item, isWidthWrong(line)), expected};
        const KernelFault fault = faultBehind(line, item, mGroups);
        if (fault.item != nullptr) return {placeOf(mSession, {kRule, fault.item, "", fault.attribute}), fault.expected};
        return {placeOf(mSession, item == nullptr ? onSetting() : LogContext{kRule, item, "", 0}), expected};
    }

    Session& mSession;
    const BuiltGraph& mBuilt;
    std::optional<ElementNames> mNames; // costs more than all the rest where there is nothing to tell
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
