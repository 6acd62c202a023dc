// SPDX-License-Identifier: Apache-2.0
#include "DotRenderer.h"

#include "DotText.h"
#include "Text.h"

#include <algorithm>
#include <map>

namespace NuxoTool {

namespace {

struct KindColour {
    const char* kind;
    const char* colour;
};

constexpr KindColour kKindColours[] = {
    {"source", "#cfe8cf"},        {"sink", "#e3d7f0"},          {"hw", "#cfdff2"},
    {"program_group", "#fde8c2"}, {"compute_block", "#fde8c2"},
};
constexpr const char* kOtherColour = "#e4e7eb";
constexpr const char* kDisabledColour = "#f2f2f2";

const char* colourOf(const Drawing::Box& box)
{
    if (!box.isEnabled) return kDisabledColour;
    for (const KindColour& entry : kKindColours) {
        if (box.kind == entry.kind) return entry.colour;
    }
    return kOtherColour;
}

// The place where an edge meets a port. Prefixed, because single letters such as "n" would be compass points, and
// without characters that end an identifier in a label.
std::string anchorOf(const std::string& portName)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string anchor = "p_";
    for (const char c : portName) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
        if (plain) {
            anchor += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            anchor += '.';
            anchor += digits[byte >> 4U];
            anchor += digits[byte & 0xfU];
        }
    }
    return anchor;
}

std::string headCell(const Drawing::Box& box)
{
    const char* const ink = box.isEnabled ? kInk : kGrey;
    std::string small = dotHtml(box.kind);
    for (const std::string& detail : box.details) small += " &#183; " + dotHtml(detail);
    return "<TR><TD BORDER=\"0\" COLSPAN=\"2\" BGCOLOR=\"" + std::string(colourOf(box)) + "\">" +
           dotFont("<B>" + dotHtml(box.name) + "</B>", ink, 12) + "<BR/>" + dotFont(small, ink, 9) + "</TD></TR>";
}

std::string portCell(const Drawing::Port* port, bool boxEnabled, bool wide)
{
    if (port == nullptr) return "<TD BORDER=\"0\"></TD>";
    const bool enabled = port->isEnabled && boxEnabled;
    const std::string align = port->isOutput ? "RIGHT" : "LEFT";
    std::string cell = "<TD PORT=\"" + anchorOf(port->name) + "\" ALIGN=\"" + align + "\" BALIGN=\"" + align + '"';
    if (wide) cell += " COLSPAN=\"2\"";
    cell += " COLOR=\"" + std::string(enabled ? kPortLine : kGrey) + '"';
    if (!enabled) cell += " STYLE=\"DASHED\"";
    cell += '>' + dotFont(dotHtml(port->name), enabled ? kInk : kGrey, 10);
    if (!port->details.empty()) cell += "<BR/>" + dotFont(dotHtml(port->details), enabled ? kLine : kGrey, 8);
    return cell + "</TD>";
}

// Inputs on the left, outputs on the right; a side with fewer ports is filled up with empty cells, one without any is left
// out.
std::string portRows(const Drawing::Box& box)
{
    std::vector<const Drawing::Port*> sides[2];
    for (const Drawing::Port& port : box.ports) sides[port.isOutput ? 1 : 0].push_back(&port);
    std::string rows;
    for (size_t row = 0; row < std::max(sides[0].size(), sides[1].size()); ++row) {
        rows += "<TR>";
        for (const auto& side : sides) {
            if (side.empty()) continue;
            const bool wide = side.size() == box.ports.size();
            rows += portCell(row < side.size() ? side[row] : nullptr, box.isEnabled, wide);
        }
        rows += "</TR>";
    }
    return rows;
}

std::string boxLine(const Drawing::Box& box)
{
    std::string line = quoted(box.name) + " [label=<<TABLE BORDER=\"1\" CELLBORDER=\"1\" CELLSPACING=\"2\" ";
    line += "CELLPADDING=\"3\" BGCOLOR=\"white\" COLOR=\"" + std::string(box.isEnabled ? kLine : kGrey) + '"';
    if (!box.isEnabled) line += " STYLE=\"DASHED\"";
    return line + '>' + headCell(box) + portRows(box) + "</TABLE>>];\n";
}

// Boxes of one stream or context belong together; those without any stand alone.
std::string boxLines(const Drawing& drawing)
{
    std::map<int, std::string> clusters;
    std::string alone;
    for (const Drawing::Box& box : drawing.boxes) {
        if (box.cluster) {
            clusters[*box.cluster] += "        " + boxLine(box);
        } else {
            alone += "    " + boxLine(box);
        }
    }
    std::string lines = alone;
    const std::string prefix = drawing.isByContext ? "cluster_context_" : "cluster_stream_";
    for (const auto& [cluster, boxes] : clusters) {
        lines += "    subgraph " + quoted(prefix + std::to_string(cluster)) + " {\n";
        lines += "        graph [label=" + dotLabel(clusterName(drawing, cluster)) + ", style=\"rounded,filled\", ";
        lines += "color=\"#d5dce4\", fillcolor=\"#f6f8fa\", fontcolor=" + quoted(kLine) + ", fontsize=10];\n";
        lines += boxes + "    }\n";
    }
    return lines;
}

std::string endText(const Drawing& drawing, const Drawing::End& end, char side)
{
    const Drawing::Box& box = drawing.boxes[end.box];
    if (!end.port) return quoted(box.name);
    return quoted(box.name) + ':' + quoted(anchorOf(box.ports[*end.port].name)) + ':' + side;
}

std::string connectionLine(const Drawing& drawing, const Drawing::Connection& connection)
{
    std::string line = "    " + endText(drawing, connection.from, 'e') + " -> " + endText(drawing, connection.to, 'w');
    if (!connection.isEnabled) line += " [style=dashed, color=" + quoted(kGrey) + ']';
    return line + ";\n";
}

std::string looseEndLines(const Drawing& drawing, const Drawing::LooseEnd& loose)
{
    const std::string id = quoted("missing " + loose.peer);
    const std::string box = "    " + id + " [shape=plaintext, fontsize=10, fontcolor=" + quoted(kAlarm) +
                            ", label=" + dotLabel(loose.peer + " (missing)") + "];\n";
    const bool isOutput = loose.end.port && drawing.boxes[loose.end.box].ports[*loose.end.port].isOutput;
    const std::string end = endText(drawing, loose.end, isOutput ? 'e' : 'w');
    const std::string edge = isOutput ? end + " -> " + id : id + " -> " + end;
    return box + "    " + edge + " [style=dashed, color=" + quoted(kAlarm) + "];\n";
}

} // namespace

std::string renderDot(const Drawing& drawing, const std::string& title)
{
    std::string text = "digraph " + quoted(title) + " {\n";
    text += "    graph [rankdir=LR, nodesep=0.35, ranksep=1.0, fontname=\"Helvetica\", fontsize=11, label=" +
            dotLabel(title) + ", labelloc=t];\n";
    text += "    node [shape=plain, fontname=\"Helvetica\"];\n";
    text += "    edge [color=" + quoted(kLine) + ", arrowsize=0.7];\n";
    text += boxLines(drawing);
    for (const Drawing::Connection& connection : drawing.connections) text += connectionLine(drawing, connection);
    for (const Drawing::LooseEnd& loose : drawing.looseEnds) text += looseEndLines(drawing, loose);
    return text + "}\n";
}

} // namespace NuxoTool
