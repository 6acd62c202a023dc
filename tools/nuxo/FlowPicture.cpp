// SPDX-License-Identifier: Apache-2.0
#include "FlowPicture.h"

#include "RecordText.h"
#include "Text.h"
#include "TreeView.h"

#include <algorithm>
#include <set>
#include <utility>

namespace NuxoTool {

namespace {

const char* stateWord(const Flow::Node& node)
{
    if (node.isDisabled()) return "disabled";
    return isBypassed(node) ? "bypassed" : "";
}

void addActive(std::vector<std::string>& details, const Flow::Node& node)
{
    if (node.kind == Flow::Kind::Mux)
        details.push_back("input " + orDash(optionalInteger(*node.item, NUXO_KEY_ACTIVE_INPUT)));
    if (node.kind == Flow::Kind::Demux)
        details.push_back("output " + orDash(optionalInteger(*node.item, NUXO_KEY_ACTIVE_OUTPUT)));
}

// What a kernel makes of the frame, where it says so.
std::vector<std::string> changesOf(const Flow::Node& node)
{
    std::vector<std::string> lines;
    for (const Flow::Resolution& resolution : node.stated) {
        const qv_isp_zmt_resolution_info& info = resolution.info;
        const std::string in = sizeText(info.input_width, info.input_height);
        const std::string out = sizeText(info.output_width, info.output_height);
        const std::string crop = cropText(info.input_crop);
        const std::string outputCrop = cropText(info.output_crop);
        if (in == out && crop == "-" && outputCrop == "-") continue;
        lines.push_back(in + " to " + out);
        if (crop != "-") lines.push_back("crop " + crop);
        if (outputCrop != "-") lines.push_back("output crop " + outputCrop);
    }
    return lines;
}

} // namespace

bool FlowColumns::contains(size_t index) const
{
    const Flow::Node& node = mFlow.nodes[index];
    const bool isPart = node.kind != Flow::Kind::SourceStage && node.kind != Flow::Kind::Outside;
    return isPart && node.stream == mStream && !node.group.empty();
}

size_t FlowColumns::headOf(const std::string& group) const
{
    const std::vector<bool> haveParents = mFlow.haveParents();
    size_t head = mFlow.nodes.size();
    for (size_t i = mFlow.nodes.size(); i-- > 0;) {
        const bool isEntry = mFlow.nodes[i].kind == Flow::Kind::InputPort && haveParents[i];
        const bool isHeadEntry =
            head < mFlow.nodes.size() && mFlow.nodes[head].kind == Flow::Kind::InputPort && haveParents[head];
        if (contains(i) && mFlow.nodes[i].group == group && (isEntry || !isHeadEntry)) head = i;
    }
    return head;
}

std::vector<std::string> FlowColumns::groups() const
{
    std::vector<std::string> waiting;
    std::set<std::pair<std::string, std::string>> feeds;
    for (size_t i = 0; i < mFlow.nodes.size(); ++i) {
        if (!contains(i)) continue;
        const std::string& group = mFlow.nodes[i].group;
        if (std::find(waiting.begin(), waiting.end(), group) == waiting.end()) waiting.push_back(group);
        for (const Flow::Link& link : mFlow.nodes[i].links) {
            const bool isAhead = !link.isFeedback && mFlow.nodes[link.to].group != group;
            if (isAhead) feeds.emplace(group, mFlow.nodes[link.to].group);
        }
    }
    std::vector<std::string> ordered;
    while (!waiting.empty()) {
        const auto waitsForNone = [&](const std::string& group) {
            return std::none_of(waiting.begin(), waiting.end(), [&](const std::string& other) {
                return feeds.count({other, group}) > 0;
            });
        };
        auto next = std::find_if(waiting.begin(), waiting.end(), waitsForNone);
        if (next == waiting.end()) next = waiting.begin(); // groups that feed each other
        ordered.push_back(*next);
        waiting.erase(next);
    }
    return ordered;
}

// Columns stand side by side: only the links inside of one, and those with what lies around, say what is above what.
bool FlowColumns::isOrdering(size_t from, const Flow::Link& link) const
{
    const bool joinsColumns =
        contains(from) && contains(link.to) && mFlow.nodes[from].group != mFlow.nodes[link.to].group;
    return !link.isFeedback && !joinsColumns;
}

bool isBypassed(const Flow::Node& node)
{
    return node.enable == QV_ISP_ZMT_KERNEL_BYPASS;
}

FlowLabel flowLabel(const Flow& flow, const FlowColumns& columns, size_t index)
{
    const Flow::Node& node = flow.nodes[index];
    FlowLabel label;
    label.name = columns.contains(index) ? node.name : node.fullName();
    const std::string state = stateWord(node);
    if (!state.empty()) label.details.push_back(state);
    if (node.kind == Flow::Kind::Kernel) {
        label.details.push_back("uuid " + std::to_string(integerOf(*node.item, NUXO_KEY_PAL_UUID, 0)));
        label.changes = changesOf(node);
    } else {
        label.details.emplace_back(kindName(node.kind));
    }
    addActive(label.details, node);
    if (integerOf(*node.item, NUXO_KEY_PRIVATE, 0) != 0) label.details.emplace_back("private");
    const bool isElsewhere = node.stream && *node.stream != columns.stream();
    if (isElsewhere) label.details.push_back("stream " + std::to_string(*node.stream));
    const std::optional<Mismatch> mismatch = mismatchOf(node);
    if (mismatch && mismatch->isBreak) {
        label.alarm = "does not fit: takes " + sizeText(mismatch->width, mismatch->height);
    }
    return label;
}

std::string linkText(const Flow::Link& link)
{
    std::string text = link.isFeedback ? "feedback" : "";
    if (!link.history) return text;
    if (!text.empty()) text += ' ';
    return text + sizeText(link.history->output_width, link.history->output_height);
}

} // namespace NuxoTool
