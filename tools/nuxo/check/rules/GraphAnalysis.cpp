// SPDX-License-Identifier: Apache-2.0
#include "LibraryLog.h"
#include "LibraryWords.h"
#include "PortView.h"
#include "StreamFaults.h"
#include "Text.h"
#include "TreeView.h"
#include "check/rules/GraphInspection.h"
#include "check/rules/GraphInspections.h"
#include "check/rules/GraphPorts.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/frame_params/GraphLumUtil.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace NuxoTool {

using NUXO::GraphConfigNode;
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
    constexpr const char* sizeRules[] = {kBrokenChainRule, kKernelSizeRule,  kSizeWithoutRcbRule, kSizeMismatchRule,
                                         kSensorSizeRule,  kCaptureSizeRule, kCropPaddingRule,    kFrameTooLargeRule};
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

// Why a step of the library failed.
std::string causeOf(const std::vector<LogLine>& lines, int status)
{
    const auto cause = std::find_if(lines.begin(), lines.end(), [](const LogLine& line) { return line.isError; });
    if (cause == lines.end()) return NUXO::statusName(status);
    const std::optional<PlainText> plain = plainTextOf(cause->text);
    return plain ? plain->found : quietText(cause->text);
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
    const std::string text = "the frame that the sensor delivers cannot be told: " + causeOf(lines, status) +
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

constexpr std::string_view kExpected = "; expected ";

// The line of the library's log that a finding passes on, "" for none.
std::string libraryLineIn(const std::string& text)
{
    const size_t step = text.find(" ended with Status");
    const size_t colon = step == std::string::npos ? step : text.find(": ", step);
    if (step != std::string::npos && colon == std::string::npos) return "";
    const size_t start = step == std::string::npos ? 0 : colon + 2;
    return text.substr(start, text.rfind(kExpected) - start);
}

// The sinks of a stream that has no other node, with what leads to them.
class SinksOfStream {
public:
    SinksOfStream(const GraphInspection& inspection, int stream)
    {
        for (const GraphConfigNode* const node : inspection.nodes()) {
            if (streamOf(*node) != stream) continue;
            if (!isSink(*node)) mIsAlone = false;
            if (mFirst == nullptr) mFirst = node;
        }
    }

    /// Null when the stream has other nodes.
    const GraphConfigNode* first() const { return mIsAlone ? mFirst : nullptr; }

    /// The port that leads to the first one, null for none.
    const GraphConfigNode* feeder() const
    {
        for (const Peer& peer : peersOf(*mFirst)) {
            if (peer.end != nullptr && !isSink(*peer.end)) return peer.end;
        }
        return nullptr;
    }

private:
    const GraphConfigNode* mFirst = nullptr;
    bool mIsAlone = true;
};

// The library takes each stream by itself, and finds nothing that could fill one of sinks.
bool reportStreamOfSinks(GraphInspection& inspection, const std::string& line, const PlainText& plain)
{
    if (!startsWith(line, "Could not find source node in subgraph ")) return false;
    const std::string& stream = plain.names.front();
    const SinksOfStream sinks(inspection, std::atoi(stream.c_str()));
    const GraphConfigNode* const sink = sinks.first();
    const GraphConfigNode* const feeder = sink == nullptr ? nullptr : sinks.feeder();
    if (feeder == nullptr) return false;
    const std::optional<int> from = streamOf(*feeder->getAncestor());
    const std::string expected = from ? "stream_id " + std::to_string(*from) : "the stream_id of what leads there";
    inspection.report(kAnalysisRule, *sink, NUXO_KEY_STREAM_ID,
                      "stream " + stream + " has sinks alone, such as " + printable(nameOf(*sink)) + ", where " +
                          printable(endName(*feeder)) + (from ? " of stream " + std::to_string(*from) : "") +
                          " leads; expected " + expected + " at the sink, or none");
    return true;
}

// The way from a group to a port that leads to a sink by `peer`, null for none.
const GraphConfigNode* redirectedBehind(const GraphInspection& inspection, const GraphConfigNode& group)
{
    std::set<const IGraphConfig*> seen = {&group}; // only looked up
    std::vector<const GraphConfigNode*> open = {&group};
    while (!open.empty()) {
        const GraphConfigNode* const node = open.back();
        open.pop_back();
        for (const GraphConfigNode* const port : childrenOfType(*node, NUXO_KEY_PORT)) {
            if (!isOutput(*port) || !isOn(*port)) continue;
            if (inspection.isRedirected(*port)) return port;
            for (const Peer& peer : peersOf(*port)) {
                const IGraphConfig* const next = peer.end == nullptr ? nullptr : peer.end->getAncestor();
                if (next == nullptr || isSink(*peer.end) || !seen.insert(next).second) continue;
                open.push_back(dynamic_cast<const GraphConfigNode*>(next));
            }
        }
    }
    return nullptr;
}

// The library looks for ways to sinks in the connections of the graph, where a `peer` does not stand.
void reportRedirected(GraphInspection& inspection, const GraphConfigNode& group, const GraphConfigNode& port)
{
    const std::vector<Peer> peers = peersOf(port);
    const std::string sink = peers.empty() ? "" : printable(peers.front().text);
    const std::string name = printable(endName(port));
    inspection.report(kAnalysisRule, inspection.nearestInSettings(port), NUXO_KEY_PEER,
                      name + " leads to " + sink + " by its peer alone; the library looks for ways to sinks in the " +
                          "connections of the graph, finds none from " + printable(nameOf(group)) +
                          ", and works out no records for it; expected a connection of the graph from " + name +
                          " to " + sink + ", or another output on the way that is connected to a sink");
}

// The files often say all that there is to say about a group; what keeps frames from leaving it is up to the setting.
bool reportGroupWithoutWay(GraphInspection& inspection, const std::string& line, const PlainText& plain)
{
    if (!startsWith(line, "Could not find the PG ")) return false;
    const auto* const group =
        dynamic_cast<const GraphConfigNode*>(inspection.graph().getDescendantByString(plain.names.front()));
    if (group == nullptr) return false;
    if (const GraphConfigNode* const port = redirectedBehind(inspection, *group)) {
        reportRedirected(inspection, *group, *port);
        return true;
    }
    inspection.report(kAnalysisRule, inspection.nearestInSettings(*group), 0,
                      plain.found + kExpected.data() + plain.expected);
    return true;
}

// What the library says in words of its own.
void reportLine(GraphInspection& inspection, const Finding& finding)
{
    const std::string line = libraryLineIn(finding.text);
    const std::optional<PlainText> plain = plainTextOf(line);
    if (plain && (reportStreamOfSinks(inspection, line, *plain) || reportGroupWithoutWay(inspection, line, *plain)))
        return;
    const bool isOwn = line.empty() || (!plain && startsWith(finding.text, line) && has(finding.text, kExpected));
    if (isOwn) {
        inspection.report(kAnalysisRule, finding.where, finding.text);
    } else if (plain) {
        inspection.report(kAnalysisRule, finding.where, plain->found + kExpected.data() + plain->expected);
    } else {
        inspection.report(kAnalysisRule, finding.where,
                          "the graph cannot be analysed, and the library says: " + quietText(line) + kExpected.data() +
                              "kernels whose links and sizes fit");
    }
    if (finding.where.file == inspection.setting().descriptor.document().path())
        inspection.note(inspection.settings(), 0, "in the graph of this setting");
}

// As a finding of the rule that knows it.
void reportAnalysed(GraphInspection& inspection, const Finding& finding)
{
    if (const std::optional<std::string> unreached = unreachedText(finding.text)) {
        inspection.report(kKernelUnfedRule, finding.where, *unreached);
    } else if (const std::string port = deadEndIn(finding.text); !port.empty()) {
        inspection.report(kKernelUnfedRule, finding.where,
                          "no klink starts at " + port + ", so that its frames reach no kernel; expected one");
    } else if (finding.rule == kBrokenChainRule) {
        inspection.report(kBrokenChainRule, finding.where, finding.text);
    } else if (const std::string line = libraryLineIn(finding.text); startsWith(line, "Consistency error in kernel ")) {
        const std::optional<PlainText> plain = plainTextOf(line);
        inspection.report(kBrokenChainRule, finding.where,
                          plain ? plain->found + kExpected.data() + plain->expected : line);
    } else {
        reportLine(inspection, finding);
    }
}

// Of a size that is not whole the library says first which side it misses, without saying where.
bool saysLess(const std::string& note)
{
    return startsWith(note, "library error: Error: Couldn't get ");
}

// What explains a finding, in plain words where they are known.
std::string noteText(const std::string& text)
{
    for (const char* const label : {"library error: ", "library warning: "}) {
        if (!startsWith(text, label)) continue;
        const std::string line = text.substr(std::string_view(label).size());
        const std::optional<PlainText> plain = plainTextOf(line);
        return plain ? plain->found : "the library says: " + quietText(line);
    }
    return text;
}

} // namespace

void inspectAnalysis(GraphInspection& inspection)
{
    inspectCircles(inspection);
    bool isKept = false;
    for (const Finding& finding : inspection.setting().analysis.all()) {
        Findings& findings = inspection.scratch().findings;
        if (finding.severity == Findings::Severity::Note) {
            if (isKept && !saysLess(finding.text)) findings.note(finding.where, noteText(finding.text));
            continue;
        }
        isKept = finding.rule != "size" && !isExplained(inspection, finding);
        if (isKept) reportAnalysed(inspection, finding);
    }
    if (inspection.scratch().findings.all().empty()) inspectFrameParams(inspection);
}

} // namespace NuxoTool
