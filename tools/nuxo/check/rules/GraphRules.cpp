// SPDX-License-Identifier: Apache-2.0
#include "check/Rule.h"
#include "check/rules/GraphInspection.h"

#include <string_view>

namespace NuxoTool {

namespace {

// Graphs are inspected once for all rules.
template <const char* Id> void takeOwn(const BuiltSetting& setting, RuleReporter& reporter)
{
    bool isOwn = false;
    for (const Findings::Finding& finding : setting.findings.all()) {
        const bool isNote = finding.severity == Findings::Severity::Note;
        if (!isNote) isOwn = std::string_view(finding.rule) == Id;
        if (!isOwn) continue;
        if (isNote) {
            reporter.note(finding.where, finding.text);
        } else {
            reporter.report(finding.where, finding.text);
        }
    }
}

std::vector<Rule> constructionRules()
{
    return {
        {kBuildRule,
         RuleSeverity::Error,
         "the graph of a setting cannot be built",
         "Each setting is built as a client would build it: nodes of the descriptor, base nodes with their "
         "differences, "
         "connections, the setting's values, overrides and the sensor mode. Where a step fails the client gets no "
         "graph. "
         "The finding stands at the connection, difference, override or mode that the step was about, and otherwise at "
         "the setting.",
         {},
         takeOwn<kBuildRule>},
        {kPeerRule,
         RuleSeverity::Error,
         "a port of the built graph has a peer that the graph does not have",
         "A port knows the other end of its connection by name. When the graph has no such port or sink, the "
         "connection "
         "leads nowhere and the library switches the port off. Correct the name, or add an element for the sink to the "
         "setting.",
         {},
         takeOwn<kPeerRule>},
        {kPortDisabledRule,
         RuleSeverity::Warning,
         "a port that the setting uses was switched off for want of another end",
         "While it builds a graph, the library switches off each port for pixels that no connection uses, or whose "
         "other end is off. When the setting names the port and does not switch it off, that is hardly meant: frames "
         "do "
         "not pass it, and nothing says so. Add what the port leads to, or write enabled=\"0\".",
         {},
         takeOwn<kPortDisabledRule>},
        {kSinkUnfedRule,
         RuleSeverity::Error,
         "no frame reaches a sink of the setting",
         "A client waits for frames at each sink of a setting. Here all that leads to the sink is switched off or gets "
         "no frames itself, so none will ever come. A port that the descriptor has with enabled=\"0\" must be switched "
         "on in the setting: <fd_out enabled=\"1\"/>.",
         {},
         takeOwn<kSinkUnfedRule>},
        {kNodeUnfedRule,
         RuleSeverity::Error,
         "no frame reaches a node of the setting",
         "The setting configures a node, but everything that leads to it is switched off or gets no frames itself. "
         "What "
         "stands behind the node starves with it; only the first node is told. Switch the port on that leads there, or "
         "take the node out of the setting.",
         {},
         takeOwn<kNodeUnfedRule>},
        {kInactiveMuxRule,
         RuleSeverity::Error,
         "a mux takes an input that gets no frame, or a demux an output that leads nowhere",
         "A mux passes on the input that active_input names, a demux sends frames to the output active_output; the "
         "rest "
         "of the links of both count for nothing. Here the chosen side is dead, while another one is not. A demux and "
         "the mux behind it must be switched together. Before generation 7, klinks to inputs that are not active are "
         "not allowed at all.",
         {},
         takeOwn<kInactiveMuxRule>},
    };
}

std::vector<Rule> sizeRules()
{
    return {
        {kSensorSizeRule,
         RuleSeverity::Error,
         "the setting states another size for the sensor than its mode gives",
         "The sensor sends what is left of the pixel array: cropped, binned and scaled as its mode says. The mode has "
         "the last word over port_0 of the sensor, but the back end behind it gets the size that the setting states. "
         "State the size of the mode, or choose another mode.",
         {},
         takeOwn<kSensorSizeRule>},
        {kCaptureSizeRule,
         RuleSeverity::Warning,
         "a capture back end takes or gives another size than follows from its source",
         "The formatter of a back end takes what the source sends, and hands on that minus its crop. The library works "
         "with the numbers as they are stated, so a wrong one makes wrong crops for everything behind it.",
         {},
         takeOwn<kCaptureSizeRule>},
        {kBrokenChainRule,
         RuleSeverity::Error,
         "a kernel takes another size than arrives",
         "Along the links of a group the output of one kernel is the input of the next one that states a size; kernels "
         "without size pass frames on as they are. In groups with klinks the library refuses a graph where an input "
         "differs from what arrives at a kernel with rcb=\"1\"; elsewhere it works out wrong crops. The note says "
         "where the arriving size comes from: correct one of the two.",
         {},
         takeOwn<kBrokenChainRule>},
        {kKernelSizeRule,
         RuleSeverity::Error,
         "a kernel that changes the size of frames does not state both sizes",
         "A kernel with rcb=\"1\" crops or scales. The setting must state what it takes and what it gives: <bds><input "
         "width=\"4208\" height=\"2368\"/><output width=\"1920\" height=\"1080\"/></bds>. Without, the library takes "
         "the size for unchanged, or refuses a size of which only one side is stated.",
         {},
         takeOwn<kKernelSizeRule>},
        {kSizeWithoutRcbRule,
         RuleSeverity::Error,
         "a kernel without rcb states different sizes for input and output",
         "Only kernels with rcb=\"1\" change the size of frames in groups with klinks. Of others the library notes "
         "what "
         "they state, but frames go on in the size that arrived, so that the numbers contradict each other.",
         {},
         takeOwn<kSizeWithoutRcbRule>},
        {kSizeMismatchRule,
         RuleSeverity::Error,
         "sizes or formats at the two ends of a connection differ",
         "An output port is as large as what its kernels give, and both ends of a connection carry the same frames. "
         "The "
         "library passes the values of a port on to the port where it leads, over what that one states itself; sinks "
         "keep what the setting states for them. Correct the end that is wrong, or state sizes at output ports only.",
         {},
         takeOwn<kSizeMismatchRule>},
        {kStrideRule,
         RuleSeverity::Warning,
         "a stated bpl is not what the format's lines take",
         "Without bpl the bytes of a line follow from format and width. This one comes from the descriptor or an "
         "override while the width comes from the setting, and the two do not fit. Leave bpl out, or correct it.",
         {},
         takeOwn<kStrideRule>},
    };
}

std::vector<Rule> limitRules()
{
    return {
        {kFrameTooLargeRule,
         RuleSeverity::Error,
         "a frame is so large that its bytes do not fit 32 bits",
         "Bytes per line and the size of a buffer are numbers of 32 bits. Those of a larger frame wrap around: the "
         "library gives a size that is far too small, or 0, and no message tells. Most often a digit too many is the "
         "cause. Correct the size, at the port and behind it.",
         {},
         takeOwn<kFrameTooLargeRule>},
        {kCropPaddingRule,
         RuleSeverity::Error,
         "a negative crop adds more than the frame has",
         "left, top, right and bottom say what is cut off; a negative number adds as many columns or lines. One that "
         "more than doubles the frame is hardly meant, and differences of very large numbers overflow. Write 0, or "
         "what is to be cut off.",
         {},
         takeOwn<kCropPaddingRule>},
        {kChangedIdRule,
         RuleSeverity::Error,
         "a setting, an option or an override gives a kernel or group a number that another one has",
         "The descriptor numbers the kernels of a group from 0 (id), the kernels of a stream (pal_uuid) and the groups "
         "of a graph (pg_id). Settings may write over a pal_uuid or pg_id, overrides over all of them. When a number "
         "comes twice, or the ids of a group get a gap, clients give parameters to the wrong kernel. Leave such "
         "numbers to the descriptor.",
         {},
         takeOwn<kChangedIdRule>},
        {kOptionLostRule,
         RuleSeverity::Warning,
         "a difference chooses an option, but what the option applies is lost",
         "An option writes its values into the graph at the moment when its attribute is written. A node that is made "
         "from a base node joins the graph with its differences already made: an option that a difference chooses does "
         "not find its target, and what it should change stays as it was. Where the setting states the attribute "
         "again, the option works. State it there, or add differences for what the option applies.",
         {},
         takeOwn<kOptionLostRule>},
    };
}

std::vector<Rule> analysisRules()
{
    return {
        {kContextTuningRule,
         RuleSeverity::Error,
         "a setting gives groups of one context different tuning modes",
         "All groups with one exec_ctx_id run together with one set of tuning parameters, which tuning_mode selects. "
         "When the modes differ, the library warns and keeps one of them. Change the mode of all groups of the "
         "context. An "
         "override of a graph that changes a single group is taken to be meant.",
         {},
         takeOwn<kContextTuningRule>},
        {kStreamCircleRule,
         RuleSeverity::Error,
         "streams of the setting wait for each other",
         "The library works from the sources on, stream by stream. Connections that lead from one stream to another "
         "and "
         "back make each wait for the other. Lead one of the ways through memory: to a sink, and from a buffer source.",
         {},
         takeOwn<kStreamCircleRule>},
        {kKernelUnfedRule,
         RuleSeverity::Error,
         "no frame reaches a kernel that is on",
         "The kernel is not switched off, but no link brings it frames, so its record tells nothing of them. Add the "
         "klink that is missing, or switch the kernel off.",
         {},
         takeOwn<kKernelUnfedRule>},
        {kAnalysisRule,
         RuleSeverity::Error,
         "the library cannot analyse the graph of a setting",
         "After building, each graph is analysed as a client would: streams, links, sizes and the run-kernel records "
         "of "
         "all groups. The library stops at the first fault and says which. Other rules tell of most faults in plainer "
         "words; this one passes on what they do not know.",
         {},
         takeOwn<kAnalysisRule>},
        {kFrameParamsRule,
         RuleSeverity::Error,
         "the library cannot tell the frame that the sensor delivers",
         "For lens shading and other corrections a client asks which part of the pixel array a frame shows. The "
         "library "
         "works that out from the stages of the sensor mode and refuses modes where one is missing.",
         {},
         takeOwn<kFrameParamsRule>},
    };
}

} // namespace

std::vector<Rule> graphRules()
{
    std::vector<Rule> rules = constructionRules();
    for (const std::vector<Rule>& more : {sizeRules(), limitRules(), analysisRules()})
        rules.insert(rules.end(), more.begin(), more.end());
    return rules;
}

} // namespace NuxoTool
