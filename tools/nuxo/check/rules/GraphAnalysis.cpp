// SPDX-License-Identifier: Apache-2.0
#include "LibraryLog.h"
#include "PortView.h"
#include "StreamFaults.h"
#include "Text.h"
#include "TreeView.h"
#include "check/rules/GraphInspection.h"
#include "check/rules/GraphInspections.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/frame_params/GraphLumUtil.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NuxoTool {

using NUXO::IGraphConfig;

namespace {

using Finding = Findings::Finding;

bool has(const std::string& text, std::string_view part)
{
    return text.find(part) != std::string::npos;
}

template <size_t Count> bool hasAnyOf(const std::string& text, const char* const (&parts)[Count])
{
    return std::any_of(std::begin(parts), std::end(parts), [&text](const char* part) { return has(text, part); });
}

template <size_t Count> bool foundAnyOf(const GraphInspection& inspection, const char* const (&rules)[Count])
{
    return std::any_of(std::begin(rules), std::end(rules),
                       [&inspection](const char* rule) { return inspection.hasFound(rule); });
}

// What the library says where sizes do not fit, and which rules tell why.
bool isAboutSizes(const Finding& finding)
{
    constexpr const char* parts[] = {"Consistency error in kernel ",
                                     "Retrieval of resolution info for RCB kernel ",
                                     "Resolution history output width or height is 0",
                                     "both width and height",
                                     "Failed to get csi be output dimensions",
                                     "Failed to get input dimensions and crop"};
    return finding.rule == kBrokenChainRule || finding.rule == "size" || hasAnyOf(finding.text, parts);
}

// What it says where frames do not arrive.
bool isAboutFeeding(const Finding& finding)
{
    constexpr const char* parts[] = {"did not reach all",
                                     " not reached",
                                     "Could not find source node in subgraph ",
                                     "No resolution history stored for the input of PG ",
                                     "nothing is connected to ",
                                     "Failed to get res history for input port ",
                                     "Failed to get Active routing path for ",
                                     "Found klink to a mux non active input ",
                                     "No input peer for stream ",
                                     "No kernel history or source in stream ",
                                     "No Input port or source in stream ",
                                     "has not been seeded with initial reshistory",
                                     "cannot get res-history",
                                     "Could not find the res history for  parent output port ",
                                     "Could not find inner node ",
                                     "in the Subgraphs map",
                                     "in the PG memory pool map"};
    return hasAnyOf(finding.text, parts);
}

bool isExplained(const GraphInspection& inspection, const Finding& finding)
{
    constexpr const char* sizeRules[] = {kBrokenChainRule,  kKernelSizeRule, kSizeWithoutRcbRule,
                                         kSizeMismatchRule, kSensorSizeRule, kCaptureSizeRule};
    constexpr const char* feedingRules[] = {kSinkUnfedRule,   kNodeUnfedRule, kPortDisabledRule,
                                            kInactiveMuxRule, kPeerRule,      kStreamCircleRule};
    if (inspection.isLeftOpen()) return true; // the rest is as the setting has it
    // What gets no frame has no size either.
    if (foundAnyOf(inspection, feedingRules)) return isAboutFeeding(finding) || isAboutSizes(finding);
    return isAboutSizes(finding) && foundAnyOf(inspection, sizeRules);
}

// Streams that feed each other, which the library only says not to reach.
void inspectCircles(GraphInspection& inspection)
{
    const auto& found = inspection.setting().analysis.all();
    const bool isUnreached =
        std::any_of(found.begin(), found.end(), [](const Finding& finding) { return isAboutFeeding(finding); });
    if (!isUnreached) return;
    std::vector<StreamFault> faults = streamFaultsOf(inspection.scratch(), inspection.graph(), inspection.groups());
    const auto isOther = [](const StreamFault& fault) { return fault.kind != StreamFault::Kind::Circle; };
    faults.erase(std::remove_if(faults.begin(), faults.end(), isOther), faults.end());
    if (faults.empty()) return;
    inspection.report(kStreamCircleRule, *faults.front().item, NUXO_KEY_PEER,
                      faults.front().text + "; expected streams that do not wait for each other");
    for (auto fault = faults.begin() + 1; fault != faults.end(); ++fault)
        inspection.note(*fault->item, NUXO_KEY_PEER, fault->text);
}

void inspectFrameParams(GraphInspection& inspection)
{
    const IGraphConfig* const sensor = inspection.graph().getDescendant(NUXO_KEY_SENSOR);
    if (sensor == nullptr || integerOf(*sensor, NUXO_KEY_ENABLED, 1) == 0) return;
    takeLibraryLog();
    qv_lum_frame_params params = {};
    const int status = NUXO::GraphLumUtil::getSensorFrameParams(params, inspection.setting().built.owner);
    const std::vector<LogLine> lines = takeLibraryLog();
    if (status == StatusOk) return;
    const auto cause = std::find_if(lines.begin(), lines.end(), [](const LogLine& line) { return line.isError; });
    const std::string text = "the frame that the sensor delivers cannot be told: " +
                             (cause == lines.end() ? std::string(NUXO::statusName(status)) : printable(cause->text)) +
                             "; expected a mode with the sizes of all stages";
    const std::string mode = textOf(*sensor, NUXO_KEY_MODE_ID);
    for (const ModelSensorMode& known : inspection.setting().file.sensorModes()) {
        if (known.id != mode) continue;
        inspection.report(kFrameParamsRule, known.element->document->locate(*known.element), text);
        return;
    }
    inspection.report(kFrameParamsRule, *sensor, NUXO_KEY_MODE_ID, text);
}

// "no frame reaches grid, and with it 1 more", of what the library says with other words.
std::optional<std::string> unreachedText(const std::string& text)
{
    constexpr std::string_view start = "Imaging Node ";
    constexpr std::string_view end = " not reached";
    const size_t at = text.find(start);
    const size_t close = at == std::string::npos ? at : text.find(end, at);
    if (close == std::string::npos) return std::nullopt;
    const size_t name = at + start.size();
    const size_t rest = close + end.size();
    return "no frame reaches " + text.substr(name, close - name) + text.substr(rest, text.find(';', rest) - rest) +
           ", though it is on; expected a klink that leads there";
}

// The port of a group from which no klink starts, of what the library says when it looks for one.
std::string deadEndIn(const std::string& text)
{
    constexpr std::string_view start = "Failed to find input port ";
    const size_t at = text.find(start);
    return at == std::string::npos
               ? ""
               : text.substr(at + start.size(), text.find(' ', at + start.size()) - at - start.size());
}

// As a finding of the rule that knows it.
void reportAnalysed(GraphInspection& inspection, const Finding& finding)
{
    if (const std::optional<std::string> unreached = unreachedText(finding.text)) {
        inspection.report(kKernelUnfedRule, finding.where, *unreached);
    } else if (const std::string port = deadEndIn(finding.text); !port.empty()) {
        inspection.report(kKernelUnfedRule, finding.where,
                          "no klink starts at " + port + ", so that its frames reach no kernel; expected one");
    } else if (finding.rule == kBrokenChainRule || has(finding.text, "Consistency error in kernel ")) {
        inspection.report(kBrokenChainRule, finding.where, finding.text);
    } else {
        inspection.report(kAnalysisRule, finding.where, finding.text);
    }
}

} // namespace

void inspectAnalysis(GraphInspection& inspection)
{
    inspectCircles(inspection);
    bool isKept = false;
    for (const Finding& finding : inspection.setting().analysis.all()) {
        Findings& findings = inspection.scratch().findings;
        if (finding.severity == Findings::Severity::Note) {
            if (isKept) findings.note(finding.where, finding.text);
            continue;
        }
        isKept = finding.rule != "size" && !isExplained(inspection, finding);
        if (isKept) reportAnalysed(inspection, finding);
    }
    if (inspection.scratch().findings.all().empty()) inspectFrameParams(inspection);
}

} // namespace NuxoTool
