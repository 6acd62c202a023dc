// SPDX-License-Identifier: Apache-2.0
#include "FlowDotRenderer.h"

#include "DotText.h"
#include "RecordText.h"
#include "Text.h"
#include "TreeView.h"

#include <algorithm>
#include <set>
#include <utility>

namespace NuxoTool {

namespace {

constexpr const char* kFeedback = "#2563eb";
constexpr const char* kBypassed = "#f7f7f2";
constexpr const char* kDisabled = "#f2f2f2";

struct KindLook {
    Flow::Kind kind;
    const char* shape;
    const char* colour;
};

constexpr KindLook kLooks[] = {
    {Flow::Kind::Kernel, "box", "#fde8c2"},      {Flow::Kind::Mux, "hexagon", "#cfdff2"},
    {Flow::Kind::Demux, "hexagon", "#cfdff2"},   {Flow::Kind::Split, "hexagon", "#cfdff2"},
    {Flow::Kind::InputPort, "oval", "#cfe8cf"},  {Flow::Kind::OutputPort, "oval", "#e3d7f0"},
    {Flow::Kind::SourceStage, "box", "#cfe8cf"}, {Flow::Kind::Sink, "box", "#e3d7f0"},
    {Flow::Kind::Outside, "box", "#e4e7eb"},
};

const KindLook& lookOf(Flow::Kind kind)
{
    for (const KindLook& look : kLooks) {
        if (look.kind == kind) return look;
    }
    return kLooks[0];
}

const char* stateWord(const Flow::Node& node)
{
    if (node.isDisabled()) return "disabled";
    return node.enable == QV_ISP_ZMT_KERNEL_BYPASS ? "bypassed" : "";
}

class FlowRenderer {
public:
    FlowRenderer(const Flow& flow, int stream) : mFlow(flow), mStream(stream)
    {
        std::set<std::string> used;
        for (const Flow::Node& node : flow.nodes) {
            std::string id = node.fullName();
            while (!used.insert(id).second) id += '\'';
            mIds.push_back(dotLabel(id));
        }
    }

    std::string render(const std::string& title) const
    {
        std::string text = "digraph " + dotLabel(title) + " {\n";
        text += "    graph [rankdir=TB, nodesep=0.3, ranksep=0.35, newrank=true, fontname=\"Helvetica\", fontsize=11, "
                "label=" +
                dotLabel(title) + ", labelloc=t];\n";
        text +=
            "    node [fontname=\"Helvetica\", style=filled, color=" + dotLabel(kLine) + ", margin=\"0.1,0.04\"];\n";
        text += "    edge [fontname=\"Helvetica\", fontsize=8, fontcolor=" + dotLabel(kLine) +
                ", color=" + dotLabel(kLine) + ", arrowsize=0.6];\n";
        for (size_t i = 0; i < mFlow.nodes.size(); ++i) {
            if (!isInGroup(i)) text += "    " + nodeLine(i);
        }
        text += clusters();
        for (size_t i = 0; i < mFlow.nodes.size(); ++i) {
            for (const Flow::Link& link : mFlow.nodes[i].links) text += edgeLine(i, link);
        }
        return text + "}\n";
    }

private:
    bool isInGroup(size_t index) const
    {
        const Flow::Node& node = mFlow.nodes[index];
        const bool isPart = node.kind != Flow::Kind::SourceStage && node.kind != Flow::Kind::Outside;
        return isPart && node.stream == mStream && !node.group.empty();
    }

    // The port where frames enter a group, as far as it has one.
    size_t headOf(const std::string& group) const
    {
        const std::vector<bool> haveParents = mFlow.haveParents();
        size_t head = mFlow.nodes.size();
        for (size_t i = mFlow.nodes.size(); i-- > 0;) {
            const bool isEntry = mFlow.nodes[i].kind == Flow::Kind::InputPort && haveParents[i];
            const bool isHeadEntry =
                head < mFlow.nodes.size() && mFlow.nodes[head].kind == Flow::Kind::InputPort && haveParents[head];
            if (isInGroup(i) && mFlow.nodes[i].group == group && (isEntry || !isHeadEntry)) head = i;
        }
        return head;
    }

    // The groups in the order in which frames pass them.
    std::vector<std::string> groups() const
    {
        std::vector<std::string> waiting;
        std::set<std::pair<std::string, std::string>> feeds;
        for (size_t i = 0; i < mFlow.nodes.size(); ++i) {
            if (!isInGroup(i)) continue;
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

    // Columns whose heads stand side by side.
    std::string clusters() const
    {
        std::string text;
        std::string heads;
        const std::vector<std::string> names = groups();
        for (const std::string& group : names) {
            heads += (heads.empty() ? "" : " -> ") + mIds[headOf(group)];
            text += "    subgraph " + dotLabel("cluster_" + group) + " {\n";
            text += "        graph [label=" + dotLabel(group) + ", style=\"rounded,filled\", ";
            text += "color=\"#d5dce4\", fillcolor=\"#f6f8fa\", fontcolor=" + dotLabel(kLine) + ", fontsize=11];\n";
            for (size_t i = 0; i < mFlow.nodes.size(); ++i) {
                if (isInGroup(i) && mFlow.nodes[i].group == group) text += "        " + nodeLine(i);
            }
            text += "    }\n";
        }
        if (names.size() > 1) text += "    { rank=same; " + heads + " [style=invis]; }\n";
        return text;
    }

    std::vector<std::string> detailsOf(size_t index) const
    {
        const Flow::Node& node = mFlow.nodes[index];
        std::vector<std::string> details;
        const std::string state = stateWord(node);
        if (!state.empty()) details.push_back(state);
        if (node.kind == Flow::Kind::Kernel) {
            details.push_back("uuid " + std::to_string(integerOf(*node.item, NUXO_KEY_PAL_UUID, 0)));
        } else {
            details.emplace_back(kindName(node.kind));
        }
        addActive(details, node);
        if (integerOf(*node.item, NUXO_KEY_PRIVATE, 0) != 0) details.emplace_back("private");
        const bool isElsewhere = node.stream && *node.stream != mStream;
        if (isElsewhere) details.push_back("stream " + std::to_string(*node.stream));
        return details;
    }

    static void addActive(std::vector<std::string>& details, const Flow::Node& node)
    {
        if (node.kind == Flow::Kind::Mux)
            details.push_back("input " + orDash(optionalInteger(*node.item, NUXO_KEY_ACTIVE_INPUT)));
        if (node.kind == Flow::Kind::Demux)
            details.push_back("output " + orDash(optionalInteger(*node.item, NUXO_KEY_ACTIVE_OUTPUT)));
    }

    // What a kernel makes of the frame, where it says so.
    static std::string changeOf(const Flow::Node& node)
    {
        std::string text;
        for (const Flow::Resolution& resolution : node.stated) {
            const qv_isp_zmt_resolution_info& info = resolution.info;
            const std::string in = sizeText(info.input_width, info.input_height);
            const std::string out = sizeText(info.output_width, info.output_height);
            const std::string crop = cropText(info.input_crop);
            const std::string outputCrop = cropText(info.output_crop);
            if (in == out && crop == "-" && outputCrop == "-") continue;
            text += "<BR/>" + dotHtml(in + " to " + out);
            if (crop != "-") text += "<BR/>" + dotHtml("crop " + crop);
            if (outputCrop != "-") text += "<BR/>" + dotHtml("output crop " + outputCrop);
        }
        return text;
    }

    std::string labelOf(size_t index) const
    {
        const Flow::Node& node = mFlow.nodes[index];
        const char* const ink = node.isDisabled() ? kGrey : kInk;
        std::string small;
        for (const std::string& detail : detailsOf(index)) {
            small += (small.empty() ? "" : " &#183; ") + dotHtml(detail);
        }
        if (node.kind == Flow::Kind::Kernel) small += changeOf(node);
        std::string label = dotFont(dotHtml(isInGroup(index) ? node.name : node.fullName()), ink, 11) + "<BR/>" +
                            dotFont(small, ink, 8);
        const std::optional<Mismatch> mismatch = mismatchOf(node);
        if (mismatch && mismatch->isBreak) {
            const std::string taken = "does not fit: takes " + sizeText(mismatch->width, mismatch->height);
            label += "<BR/>" + dotFont(dotHtml(taken), kAlarm, 9);
        }
        return '<' + label + '>';
    }

    std::string nodeLine(size_t index) const
    {
        const Flow::Node& node = mFlow.nodes[index];
        const KindLook& look = lookOf(node.kind);
        const bool isBypassed = node.enable == QV_ISP_ZMT_KERNEL_BYPASS;
        const std::optional<Mismatch> mismatch = mismatchOf(node);
        const char* const fill = node.isDisabled() ? kDisabled : isBypassed ? kBypassed : look.colour;
        std::string line = mIds[index] + " [shape=" + look.shape + ", fillcolor=" + dotLabel(fill);
        if (node.isDisabled() || isBypassed) line += ", style=\"filled,dashed\"";
        if (node.isDisabled()) line += ", color=" + dotLabel(kGrey);
        if (mismatch && mismatch->isBreak) line += ", color=" + dotLabel(kAlarm) + ", penwidth=2";
        return line + ", label=" + labelOf(index) + "];\n";
    }

    std::string edgeLine(size_t from, const Flow::Link& link) const
    {
        std::vector<std::string> attributes;
        std::string label = link.isFeedback ? "feedback" : "";
        if (link.history) {
            if (!label.empty()) label += ' ';
            label += sizeText(link.history->output_width, link.history->output_height);
        }
        if (!label.empty()) attributes.push_back("label=" + dotLabel(' ' + label)); // off the line
        const bool isOff = mFlow.nodes[from].isDisabled() || mFlow.nodes[link.to].isDisabled();
        if (link.isFeedback) {
            attributes.push_back("style=dashed, color=" + dotLabel(kFeedback) + ", fontcolor=" + dotLabel(kFeedback));
        } else if (isOff) {
            attributes.push_back("style=dashed, color=" + dotLabel(kGrey) + ", fontcolor=" + dotLabel(kGrey));
        }
        // Columns stand side by side: only the links inside of one say what is above what.
        const bool isInside =
            isInGroup(from) && isInGroup(link.to) && mFlow.nodes[from].group == mFlow.nodes[link.to].group;
        const bool joinsColumns = isInGroup(from) && isInGroup(link.to) && !isInside;
        if (link.isFeedback || joinsColumns) attributes.emplace_back("constraint=false");
        std::string text;
        for (const std::string& attribute : attributes) text += (text.empty() ? "" : ", ") + attribute;
        return "    " + mIds[from] + " -> " + mIds[link.to] + (text.empty() ? "" : " [" + text + ']') + ";\n";
    }

    const Flow& mFlow;
    int mStream;
    std::vector<std::string> mIds;
};

} // namespace

std::string renderDot(const Flow& flow, int stream, const std::string& title)
{
    return FlowRenderer(flow, stream).render(title);
}

} // namespace NuxoTool
