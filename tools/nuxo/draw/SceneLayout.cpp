// SPDX-License-Identifier: Apache-2.0
#include "draw/SceneLayout.h"

#include "Text.h"
#include "draw/Graphviz.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <set>
#include <sstream>
#include <stdexcept>

namespace NuxoTool {

namespace {

using Json = nlohmann::json;

// Widths of characters, in tenths of pixels; the page narrows texts whose letters are wider than here.
constexpr size_t kNameCharacter = 72;
constexpr size_t kPortCharacter = 64;
constexpr size_t kSmallCharacter = 53;
constexpr int kSideMargin = 8;
constexpr int kColumnGap = 10;
constexpr int kLabelHeight = 12;
constexpr int kLeastWidth = 72;
constexpr int kMostWidth = 340; // longer texts are narrowed, and cut by the page
constexpr int kWidthStep = 8;   // so that texts of nearly the same length share a layout

// Characters beyond those of alphabets take twice the place.
size_t widthInTenths(const std::string& text, size_t character)
{
    const std::string shown = printable(text);
    size_t width = 0;
    for (size_t at = 0; at < shown.size();) {
        const size_t length = std::max<size_t>(utf8Length(shown, at), 1);
        width += length > 2 ? 2 * character : character;
        at += length;
    }
    return width;
}

int textWidth(const std::string& text, size_t character)
{
    return static_cast<int>(std::min<size_t>(widthInTenths(text, character) / 10, kMostWidth));
}

int rounded(int width)
{
    return (std::clamp(width, kLeastWidth, kMostWidth) + kWidthStep - 1) / kWidthStep * kWidthStep;
}

int portWidth(const Scene::Port& port)
{
    int width = textWidth(port.name, kPortCharacter);
    for (const std::string& line : port.lines) width = std::max(width, textWidth(line, kSmallCharacter));
    return width + kSideMargin + kColumnGap;
}

int headHeight(const Scene::Node& node)
{
    const int lines = static_cast<int>(node.lines.size()) + (node.alarm.empty() ? 0 : 1);
    return 2 * kNodePadding + kNameHeight + lines * kLineHeight;
}

// Inputs stand on the left, outputs on the right; a node with ports on one side only gives them its whole width.
void measure(Scene::Node& node)
{
    int width = textWidth(node.name, kNameCharacter);
    for (const std::string& line : node.lines) width = std::max(width, textWidth(line, kSmallCharacter));
    width = std::max(width, textWidth(node.alarm, kSmallCharacter)) + 2 * kSideMargin;
    int columns[2] = {0, 0};
    int rows[2] = {0, 0};
    for (const Scene::Port& port : node.ports) {
        columns[port.isOutput ? 1 : 0] = std::max(columns[port.isOutput ? 1 : 0], portWidth(port));
        ++rows[port.isOutput ? 1 : 0];
        node.rowHeight = std::max(node.rowHeight, kPortHeight + kLineHeight * static_cast<int>(port.lines.size()));
    }
    node.area.width = rounded(std::max(width, columns[0] + columns[1]));
    node.area.height = headHeight(node) + std::max(rows[0], rows[1]) * node.rowHeight;
    if (rows[1] == 0) {
        node.split = node.area.width;
    } else if (rows[0] > 0) {
        const int spare = node.area.width - columns[0] - columns[1];
        node.split = std::clamp((columns[0] + spare / 2) / kWidthStep * kWidthStep, 0, node.area.width);
    }
}

std::string cell(const char* attributes, int width, int height)
{
    return "<TD " + std::string(attributes) + " FIXEDSIZE=\"TRUE\" WIDTH=\"" + std::to_string(width) + "\" HEIGHT=\"" +
           std::to_string(height) + "\"></TD>";
}

std::string table(int width, int height, const std::string& rows)
{
    return "<<TABLE BORDER=\"0\" CELLBORDER=\"0\" CELLSPACING=\"0\" CELLPADDING=\"0\" FIXEDSIZE=\"TRUE\" WIDTH=\"" +
           std::to_string(width) + "\" HEIGHT=\"" + std::to_string(height) + "\">" + rows + "</TABLE>>";
}

// Room for a text.
std::string space(int width, int height)
{
    return table(width, height, "<TR>" + cell("", width, height) + "</TR>");
}

std::string portCells(const Scene::Node& node)
{
    std::vector<size_t> sides[2];
    for (size_t i = 0; i < node.ports.size(); ++i) sides[node.ports[i].isOutput ? 1 : 0].push_back(i);
    const int widths[2] = {node.split, node.area.width - node.split};
    std::string rows;
    for (size_t row = 0; row < std::max(sides[0].size(), sides[1].size()); ++row) {
        rows += "<TR>";
        for (const size_t side : {size_t{0}, size_t{1}}) {
            if (sides[side].empty()) continue;
            const bool isWide = sides[1 - side].empty();
            std::string attributes = isWide ? "COLSPAN=\"2\"" : "";
            if (row < sides[side].size()) attributes += " PORT=\"p" + std::to_string(sides[side][row]) + '"';
            rows += cell(attributes.c_str(), widths[side], node.rowHeight);
        }
        rows += "</TR>";
    }
    return rows;
}

std::string nodeId(size_t index)
{
    return "n" + std::to_string(index);
}

std::string nodeLine(const Scene& scene, size_t index)
{
    const Scene::Node& node = scene.nodes[index];
    const std::string head = "<TR>" + cell("COLSPAN=\"2\"", node.area.width, headHeight(node)) + "</TR>";
    return nodeId(index) + "[label=" + table(node.area.width, node.area.height, head + portCells(node)) + "]\n";
}

std::string endText(const Scene::End& end, char side)
{
    return nodeId(end.node) + (end.port ? ":p" + std::to_string(*end.port) + ':' + side : "");
}

std::string edgeLine(const Scene& scene, size_t index)
{
    const Scene::Edge& edge = scene.edges[index];
    std::string line = endText(edge.from, 'e') + "->" + endText(edge.to, 'w') + "[id=" + std::to_string(index);
    if (!edge.label.empty()) {
        line += ",label=" + space(textWidth(edge.label, kSmallCharacter) + kSideMargin, kLabelHeight);
    }
    if (!edge.isOrdering) line += ",constraint=false";
    return line + "]\n";
}

// What dot is told: sizes and connections, and not one name of the files.
std::string question(const Scene& scene)
{
    std::string text = scene.isInside() ? "digraph{graph[rankdir=TB,nodesep=0.3,ranksep=0.35,newrank=true]\n"
                                        : "digraph{graph[rankdir=LR,nodesep=0.3,ranksep=0.6]\n";
    text += "node[shape=plain]edge[arrowsize=0.7]\n";
    std::vector<std::string> clusters(scene.clusters.size());
    for (size_t i = 0; i < scene.nodes.size(); ++i) {
        std::string& place = scene.nodes[i].cluster ? clusters[*scene.nodes[i].cluster] : text;
        place += nodeLine(scene, i);
    }
    for (size_t i = 0; i < clusters.size(); ++i) {
        const int width = textWidth(scene.clusters[i].name, kPortCharacter) + kSideMargin;
        text += "subgraph cluster_" + std::to_string(i) + "{graph[margin=10,label=" + space(width, kNameHeight) +
                "]\n" + clusters[i] + "}\n";
    }
    std::string heads;
    for (const size_t head : scene.heads) heads += (heads.empty() ? "" : "->") + nodeId(head);
    if (scene.heads.size() > 1) text += "{rank=same;" + heads + "[style=invis]}\n";
    for (size_t i = 0; i < scene.edges.size(); ++i) text += edgeLine(scene, i);
    return text + "}\n";
}

std::vector<double> numbersIn(const std::string& text)
{
    std::string blanks = text;
    std::replace_if(
        blanks.begin(), blanks.end(), [](char c) { return c == ',' || c == 'e' || c == 's'; }, ' ');
    std::istringstream stream(blanks);
    stream.imbue(std::locale::classic());
    std::vector<double> numbers;
    for (double number = 0; stream >> number;) numbers.push_back(number);
    return numbers;
}

// Reads dot's answer. Anything unexpected ends with an exception.
class Answer {
public:
    Answer(const Json& json, Scene& scene) : mJson(json), mScene(scene)
    {
        const std::vector<double> bounds = numbersIn(json.at("bb").get<std::string>());
        scene.width = pixels(bounds.at(2));
        scene.height = pixels(bounds.at(3));
    }

    void read()
    {
        std::map<int, size_t> nodeOf;
        if (mJson.contains("objects")) {
            for (const Json& object : mJson.at("objects")) readObject(object, nodeOf);
        }
        if (nodeOf.size() != mScene.nodes.size()) throw std::runtime_error("nodes are missing");
        std::set<size_t> done;
        if (mJson.contains("edges")) {
            for (const Json& edge : mJson.at("edges")) readEdge(edge, done);
        }
        if (done.size() != mScene.edges.size()) throw std::runtime_error("edges are missing");
    }

private:
    static int pixels(double length)
    {
        constexpr double longest = 1e8;
        if (!(std::abs(length) < longest)) throw std::runtime_error("a length is out of range");
        return static_cast<int>(std::lround(length));
    }

    // dot counts from the bottom.
    Scene::Point point(double x, double y) const { return {pixels(x), mScene.height - pixels(y)}; }

    static size_t indexIn(const std::string& name, size_t prefix) { return std::stoul(name.substr(prefix)); }

    void readObject(const Json& object, std::map<int, size_t>& nodeOf)
    {
        const std::string name = object.at("name").get<std::string>();
        if (startsWith(name, "cluster_")) {
            const std::vector<double> bounds = numbersIn(object.at("bb").get<std::string>());
            const Scene::Point low = point(bounds.at(0), bounds.at(3));
            const Scene::Point high = point(bounds.at(2), bounds.at(1));
            mScene.clusters.at(indexIn(name, 8)).area = {low.x, low.y, high.x - low.x, high.y - low.y};
        } else if (startsWith(name, "n")) {
            const std::vector<double> middle = numbersIn(object.at("pos").get<std::string>());
            const Scene::Point at = point(middle.at(0), middle.at(1));
            Scene::Area& area = mScene.nodes.at(indexIn(name, 1)).area;
            area.x = at.x - area.width / 2;
            area.y = at.y - area.height / 2;
            nodeOf.emplace(object.at("_gvid").get<int>(), indexIn(name, 1));
        }
    }

    // Edges carry their number as id.
    void readEdge(const Json& json, std::set<size_t>& done)
    {
        if (!json.contains("id")) return; // between heads
        const size_t index = indexIn(json.at("id").get<std::string>(), 0);
        Scene::Edge& edge = mScene.edges.at(index);
        done.insert(index);
        const std::vector<double> numbers = numbersIn(json.at("pos").get<std::string>());
        for (size_t i = 3; i < numbers.size(); i += 2) edge.points.push_back(point(numbers[i - 1], numbers[i]));
        edge.points.push_back(point(numbers.at(0), numbers.at(1))); // dot names the arrow's tip first
        if (!json.contains("lp")) return;
        const std::vector<double> label = numbersIn(json.at("lp").get<std::string>());
        edge.labelAt = point(label.at(0), label.at(1));
    }

    const Json& mJson;
    Scene& mScene;
};

void takePlaces(Scene& scene, const Scene& known)
{
    scene.width = known.width;
    scene.height = known.height;
    for (size_t i = 0; i < scene.clusters.size(); ++i) scene.clusters[i].area = known.clusters[i].area;
    for (size_t i = 0; i < scene.nodes.size(); ++i) scene.nodes[i].area = known.nodes[i].area;
    for (size_t i = 0; i < scene.edges.size(); ++i) {
        scene.edges[i].labelAt = known.edges[i].labelAt;
        scene.edges[i].points = known.edges[i].points;
    }
}

} // namespace

// A run of dot for each: with several graphs in one run its layouts differ from run to run.
bool SceneLayout::place(Scene& scene)
{
    for (Scene::Node& node : scene.nodes) measure(node);
    const std::string text = question(scene);
    const auto [known, isNew] = mKnown.emplace(text, scene);
    if (isNew && !layOutNew(text, known->second)) return false;
    takePlaces(scene, known->second);
    return true;
}

bool SceneLayout::layOutNew(const std::string& question, Scene& scene)
{
    const std::optional<std::string> answer = layOut(mSession, question, "json0");
    if (!answer) return false;
    try {
        const Json json = Json::parse(*answer);
        Answer(json, scene).read();
    } catch (const std::exception& trouble) { // what the parser and the containers throw: this is no answer of dot
        mSession.findings.error("dot-failed", {},
                                "what dot wrote cannot be read (" + std::string(trouble.what()) +
                                    "); expected a layout as JSON",
                                ExitCode::InputOutput);
        mSession.findings.note({}, kPlainDrawing);
        return false;
    }
    return true;
}

} // namespace NuxoTool
