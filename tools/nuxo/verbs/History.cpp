// SPDX-License-Identifier: Apache-2.0
#include "Flow.h"
#include "FlowFindings.h"
#include "GraphRequest.h"
#include "JsonRenderer.h"
#include "Origins.h"
#include "ProgramGroups.h"
#include "RecordText.h"
#include "Text.h"
#include "TextTable.h"
#include "verbs/Verbs.h"

#include <algorithm>
#include <cstring>

namespace NuxoTool {

namespace {

using History = std::optional<qv_isp_zmt_resolution_info>;

// What leaves a node with one history, and where it goes.
struct Leaving {
    std::string outputs;
    History history;
    std::string to;
};

// The flow of one stream with what is wrong in it.
struct Chain {
    Flow flow;
    std::vector<std::optional<Mismatch>> mismatches;
};

bool isSame(const History& left, const History& right)
{
    if (!left || !right) return left.has_value() == right.has_value();
    return std::memcmp(&*left, &*right, sizeof *left) == 0; // integers without padding
}

std::string nameFrom(const Flow::Node& from, const Flow::Link& link, const Flow& flow)
{
    const Flow::Node& to = flow.nodes[link.to];
    const bool isNear = !from.group.empty() && from.group == to.group;
    return (isNear ? to.name : to.fullName()) + (link.isFeedback ? " (feedback)" : "");
}

void append(std::string& list, const std::string& item)
{
    if (item.empty()) return;
    list += (list.empty() ? "" : ", ") + item;
}

std::vector<Leaving> leavingsOf(const Flow::Node& node, const Flow& flow)
{
    std::vector<Leaving> leavings;
    for (const Flow::Link& link : node.links) {
        auto known = std::find_if(leavings.begin(), leavings.end(),
                                  [&link](const Leaving& leaving) { return isSame(leaving.history, link.history); });
        if (known == leavings.end()) known = leavings.insert(known, {"", link.history, ""});
        const bool isPort = node.kind == Flow::Kind::InputPort || node.kind == Flow::Kind::OutputPort;
        const bool hasOneOutput = node.kind == Flow::Kind::Kernel && node.stated.size() < 2;
        if (!isPort && !hasOneOutput) append(known->outputs, link.output);
        append(known->to, nameFrom(node, link, flow));
    }
    if (leavings.empty()) leavings.push_back({"", node.kind == Flow::Kind::OutputPort ? node.arrives : History(), ""});
    return leavings;
}

// Both crops that a node states; that of the output is rare.
std::string cropsText(const Flow::Node& node)
{
    if (node.stated.empty()) return "-";
    const qv_isp_zmt_resolution_info& info = node.stated.front().info;
    const std::string input = cropText(info.input_crop);
    const std::string output = cropText(info.output_crop);
    if (output == "-") return input;
    return (input == "-" ? "" : input + ", ") + output + " of the output";
}

std::string inText(const Flow::Node& node)
{
    if (node.kind != Flow::Kind::SourceStage) {
        return node.arrives ? sizeText(node.arrives->output_width, node.arrives->output_height) : "-";
    }
    const qv_isp_zmt_resolution_info& info = node.stated.front().info;
    return sizeText(info.input_width, info.input_height);
}

std::string outText(const Flow::Node& node, const History& leaving)
{
    if (node.kind == Flow::Kind::SourceStage) {
        const qv_isp_zmt_resolution_info& info = node.stated.front().info;
        return sizeText(info.output_width, info.output_height);
    }
    return leaving ? sizeText(leaving->output_width, leaving->output_height) : "-";
}

bool isCompared(const Flow::Node& node)
{
    const bool isPort =
        node.kind == Flow::Kind::InputPort || node.kind == Flow::Kind::OutputPort || node.kind == Flow::Kind::Sink;
    const bool states = isPort ? statesSize(node) : node.kind == Flow::Kind::Kernel && !node.stated.empty();
    return states && node.arrives && !node.isDisabled();
}

std::string fitText(const Flow::Node& node, const std::optional<Mismatch>& mismatch)
{
    if (!mismatch) return isCompared(node) ? "yes" : "-";
    return (mismatch->isBreak ? "NO: takes " : "states ") + sizeText(mismatch->width, mismatch->height);
}

std::string render(const Chain& chain)
{
    TextTable table({{"STREAM"},
                     {"NODE"},
                     {"KIND"},
                     {"STATE"},
                     {"FITS"},
                     {"IN"},
                     {"CROP"},
                     {"OUTPUT"},
                     {"OUT"},
                     {"SOURCE CROP"},
                     {"TO"}});
    for (size_t i = 0; i < chain.flow.nodes.size(); ++i) {
        const Flow::Node& node = chain.flow.nodes[i];
        for (const Leaving& leaving : leavingsOf(node, chain.flow)) {
            table.add({orDash(node.stream), printable(node.fullName()), kindName(node.kind), stateText(node.enable),
                       fitText(node, chain.mismatches[i]), inText(node), cropsText(node),
                       orDash(printable(leaving.outputs)), outText(node, leaving.history),
                       leaving.history ? cropText(leaving.history->input_crop) : "-", orDash(printable(leaving.to))});
        }
    }
    return table.text();
}

JsonValue jsonHistory(const History& history)
{
    return history ? jsonResolution(*history) : JsonValue(nullptr);
}

JsonValue jsonNode(Session& session, const Chain& chain, size_t index)
{
    const Flow::Node& node = chain.flow.nodes[index];
    const std::optional<Mismatch>& mismatch = chain.mismatches[index];
    JsonValue json;
    json["name"] = node.fullName();
    json["kind"] = kindName(node.kind);
    json["stream_id"] = jsonOrNull(node.stream);
    json["state"] = stateText(node.enable);
    json["fits"] = isCompared(node) ? JsonValue(!mismatch) : JsonValue(nullptr);
    json["breaks_the_chain"] = mismatch && mismatch->isBreak;
    json["arrives"] = jsonHistory(node.arrives);
    json["stated"] = JsonValue::array();
    for (const Flow::Resolution& resolution : node.stated) {
        JsonValue stated;
        stated["output"] = jsonOrNull(resolution.output);
        stated.update(jsonResolution(resolution.info));
        json["stated"].push_back(stated);
    }
    json["links"] = JsonValue::array();
    for (const Flow::Link& link : node.links) {
        JsonValue to;
        to["to"] = chain.flow.nodes[link.to].fullName();
        to["output"] = jsonOrNull(link.output);
        to["feedback"] = link.isFeedback;
        to["history"] = jsonHistory(link.history);
        json["links"].push_back(to);
    }
    json["where"] = jsonLocation(originOf(session.locator, *node.item));
    return json;
}

std::string renderJson(Session& session, const BuiltGraph& built, const Chain& chain)
{
    JsonValue document = jsonOfSetting(session, "history", *built.settings);
    document["stream"] = *session.arguments.stream;
    document["complete"] = chain.flow.isComplete;
    document["nodes"] = JsonValue::array();
    for (size_t i = 0; i < chain.flow.nodes.size(); ++i) {
        document["nodes"].push_back(jsonNode(session, chain, i));
    }
    return jsonText(document);
}

// Of a flow that the library gave up: what frames reach, the first kernel that breaks it included.
Flow upToBreak(const Flow& flow)
{
    std::vector<size_t> chosen;
    for (size_t i = 0; i < flow.nodes.size(); ++i) {
        const Flow::Node& node = flow.nodes[i];
        if (node.arrives || node.kind == Flow::Kind::SourceStage) chosen.push_back(i);
    }
    return flow.part(chosen);
}

Chain makeChain(Session& session, const BuiltGraph& built)
{
    Chain chain;
    chain.flow = withUpstream(makeFlow(session, built), *session.arguments.stream);
    if (!chain.flow.isComplete) chain.flow = upToBreak(chain.flow);
    for (const Flow::Node& node : chain.flow.nodes) chain.mismatches.push_back(mismatchOf(node));
    reportMismatches(session, chain.flow);
    return chain;
}

} // namespace

void runHistory(Session& session)
{
    GraphRequest request(session);
    const BuiltGraph built = request.build();
    if (!built || !checkStream(session, *built.graph)) return;
    const Chain chain = makeChain(session, built);
    session.output = session.arguments.format == Format::Json ? renderJson(session, built, chain) : render(chain);
}

} // namespace NuxoTool
