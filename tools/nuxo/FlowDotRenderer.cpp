// SPDX-License-Identifier: Apache-2.0
#include "FlowDotRenderer.h"

#include "DotText.h"
#include "FlowPicture.h"

#include <set>

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

class FlowRenderer {
public:
    FlowRenderer(const Flow& flow, int stream) : mFlow(flow), mColumns(flow, stream)
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
            if (!mColumns.contains(i)) text += "    " + nodeLine(i);
        }
        text += clusters();
        for (size_t i = 0; i < mFlow.nodes.size(); ++i) {
            for (const Flow::Link& link : mFlow.nodes[i].links) text += edgeLine(i, link);
        }
        return text + "}\n";
    }

private:
    // Columns whose heads stand side by side.
    std::string clusters() const
    {
        std::string text;
        std::string heads;
        const std::vector<std::string> names = mColumns.groups();
        for (const std::string& group : names) {
            heads += (heads.empty() ? "" : " -> ") + mIds[mColumns.headOf(group)];
            text += "    subgraph " + dotLabel("cluster_" + group) + " {\n";
            text += "        graph [label=" + dotLabel(group) + ", style=\"rounded,filled\", ";
            text += "color=\"#d5dce4\", fillcolor=\"#f6f8fa\", fontcolor=" + dotLabel(kLine) + ", fontsize=11];\n";
            for (size_t i = 0; i < mFlow.nodes.size(); ++i) {
                if (mColumns.contains(i) && mFlow.nodes[i].group == group) text += "        " + nodeLine(i);
            }
            text += "    }\n";
        }
        if (names.size() > 1) text += "    { rank=same; " + heads + " [style=invis]; }\n";
        return text;
    }

    std::string labelOf(size_t index) const
    {
        const char* const ink = mFlow.nodes[index].isDisabled() ? kGrey : kInk;
        const FlowLabel parts = flowLabel(mFlow, mColumns, index);
        std::string small;
        for (const std::string& detail : parts.details) small += (small.empty() ? "" : " &#183; ") + dotHtml(detail);
        for (const std::string& change : parts.changes) small += "<BR/>" + dotHtml(change);
        std::string label = dotFont(dotHtml(parts.name), ink, 11) + "<BR/>" + dotFont(small, ink, 8);
        if (!parts.alarm.empty()) label += "<BR/>" + dotFont(dotHtml(parts.alarm), kAlarm, 9);
        return '<' + label + '>';
    }

    std::string nodeLine(size_t index) const
    {
        const Flow::Node& node = mFlow.nodes[index];
        const KindLook& look = lookOf(node.kind);
        const bool isBypassed = NuxoTool::isBypassed(node);
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
        const std::string label = linkText(link);
        if (!label.empty()) attributes.push_back("label=" + dotLabel(' ' + label)); // off the line
        const bool isOff = mFlow.nodes[from].isDisabled() || mFlow.nodes[link.to].isDisabled();
        if (link.isFeedback) {
            attributes.push_back("style=dashed, color=" + dotLabel(kFeedback) + ", fontcolor=" + dotLabel(kFeedback));
        } else if (isOff) {
            attributes.push_back("style=dashed, color=" + dotLabel(kGrey) + ", fontcolor=" + dotLabel(kGrey));
        }
        if (!mColumns.isOrdering(from, link)) attributes.emplace_back("constraint=false");
        std::string text;
        for (const std::string& attribute : attributes) text += (text.empty() ? "" : ", ") + attribute;
        return "    " + mIds[from] + " -> " + mIds[link.to] + (text.empty() ? "" : " [" + text + ']') + ";\n";
    }

    const Flow& mFlow;
    FlowColumns mColumns;
    std::vector<std::string> mIds;
};

} // namespace

std::string renderDot(const Flow& flow, int stream, const std::string& title)
{
    return FlowRenderer(flow, stream).render(title);
}

} // namespace NuxoTool
