// SPDX-License-Identifier: Apache-2.0
#include "draw/Page.h"

#include "Flow.h"
#include "FlowFindings.h"
#include "Text.h"
#include "TreeView.h"
#include "draw/PageTemplate.h"
#include "schema/XmlText.h"

#include <set>

namespace NuxoTool {

namespace {

constexpr int kLayoutVersion = 1;

// What the page's script reads as the bits of a number.
constexpr unsigned kOff = 1;
constexpr unsigned kBypassed = 2;
constexpr unsigned kOutput = 2;
constexpr unsigned kFeedback = 2;
constexpr unsigned kMissing = 4;

unsigned bit(bool isSet, unsigned bit)
{
    return isSet ? bit : 0;
}

// The streams that have an inside.
std::set<int> streamsOf(const Flow& flow)
{
    std::set<int> streams;
    for (const Flow::Node& node : flow.nodes) {
        const bool isInside = node.kind != Flow::Kind::SourceStage && node.kind != Flow::Kind::Outside;
        if (isInside && node.stream && !node.group.empty()) streams.insert(*node.stream);
    }
    return streams;
}

JsonValue jsonArea(const Scene::Area& area)
{
    return {area.x, area.y, area.width, area.height};
}

// The first point, and from each point the way to the next.
JsonValue jsonCurve(const std::vector<Scene::Point>& points)
{
    JsonValue json = JsonValue::array();
    Scene::Point last;
    for (const Scene::Point& point : points) {
        json.push_back(point.x - last.x);
        json.push_back(point.y - last.y);
        last = point;
    }
    return json;
}

JsonValue jsonLayout(const Scene& scene)
{
    JsonValue json;
    json["size"] = {scene.width, scene.height};
    json["clusters"] = JsonValue::array();
    for (const Scene::Cluster& cluster : scene.clusters) json["clusters"].push_back(jsonArea(cluster.area));
    json["nodes"] = JsonValue::array();
    for (const Scene::Node& node : scene.nodes) {
        JsonValue area = jsonArea(node.area);
        if (!node.ports.empty()) {
            area.push_back(node.split);
            area.push_back(node.rowHeight);
        }
        json["nodes"].push_back(area);
    }
    json["edges"] = JsonValue::array();
    json["labels"] = JsonValue::array();
    for (const Scene::Edge& edge : scene.edges) {
        json["edges"].push_back(jsonCurve(edge.points));
        if (!edge.label.empty()) json["labels"].push_back({edge.labelAt.x, edge.labelAt.y});
    }
    return json;
}

// JSON that nothing in an HTML document takes for an end of its element. The characters stand in texts only.
std::string jsonInHtml(const JsonValue& document)
{
    const std::string json = document.dump(-1, ' ', false, JsonValue::error_handler_t::replace);
    std::string out;
    out.reserve(json.size());
    for (size_t i = 0; i < json.size(); ++i) {
        const char c = json[i];
        const bool isSeparator = json.compare(i, 2, "\xe2\x80") == 0 &&
                                 (json.compare(i + 2, 1, "\xa8") == 0 || json.compare(i + 2, 1, "\xa9") == 0);
        if (c == '<') {
            out += "\\u003c";
        } else if (c == '>') {
            out += "\\u003e";
        } else if (c == '&') {
            out += "\\u0026";
        } else if (isSeparator) {
            out += json[i + 2] == '\xa8' ? "\\u2028" : "\\u2029";
            i += 2;
        } else {
            out += c;
        }
    }
    return out;
}

} // namespace

JsonValue Page::texts(const std::vector<std::string>& lines)
{
    JsonValue json = JsonValue::array();
    for (const std::string& line : lines) json.push_back(mTables.text(line));
    return json;
}

JsonValue Page::jsonPort(const Scene::Node& node, const Scene::Port& port)
{
    JsonValue json = {mTables.item(*port.item, node.path + ':' + port.name, false), mTables.text(port.name),
                      texts(port.lines), bit(port.isOff, kOff) | bit(port.isOutput, kOutput)};
    if (port.inputs) json.push_back(*port.inputs);
    return json;
}

JsonValue Page::jsonNode(const Scene& scene, const Scene::Node& node)
{
    JsonValue json = JsonValue::array();
    if (node.item == nullptr) {
        json.push_back(-1);
    } else {
        json.push_back(mTables.item(*node.item, node.path, !scene.isInside()));
    }
    json.push_back(mTables.text(node.name));
    json.push_back(mTables.text(node.kind));
    json.push_back(bit(node.isOff, kOff) | bit(node.isBypassed, kBypassed));
    json.push_back(texts(node.lines));
    json.push_back(node.alarm.empty() ? JsonValue(-1) : JsonValue(mTables.text(node.alarm)));
    json.push_back(node.cluster ? JsonValue(*node.cluster) : JsonValue(-1));
    for (const Scene::Port& port : node.ports) json.push_back(jsonPort(node, port));
    return json;
}

JsonValue Page::jsonEdge(const Scene::Edge& edge)
{
    const auto portOf = [](const Scene::End& end) { return end.port ? JsonValue(*end.port) : JsonValue(-1); };
    JsonValue json = {edge.from.node, portOf(edge.from), edge.to.node, portOf(edge.to),
                      bit(edge.isOff, kOff) | bit(edge.isFeedback, kFeedback) | bit(edge.isMissing, kMissing)};
    if (!edge.label.empty()) json.push_back(mTables.text(edge.label));
    return json;
}

JsonValue Page::viewOf(const Scene& scene)
{
    JsonValue content;
    content["clusters"] = JsonValue::array();
    for (const Scene::Cluster& cluster : scene.clusters) content["clusters"].push_back(mTables.text(cluster.name));
    content["nodes"] = JsonValue::array();
    for (const Scene::Node& node : scene.nodes) content["nodes"].push_back(jsonNode(scene, node));
    content["edges"] = JsonValue::array();
    for (const Scene::Edge& edge : scene.edges) content["edges"].push_back(jsonEdge(edge));
    return {jsonOrNull(scene.stream), mTables.value("contents", content), mTables.value("layouts", jsonLayout(scene))};
}

bool Page::add(const BuiltGraph& built)
{
    const Flow flow = makeFlow(mSession, built);
    reportMismatches(mSession, flow);
    std::vector<Scene> scenes = {sceneOf(makeDrawing(*built.graph), flow)};
    for (const int stream : streamsOf(flow)) {
        scenes.push_back(sceneOf(withNeighbours(flow, stream), stream));
        mStreams.insert(stream);
    }
    JsonValue views = JsonValue::array();
    for (Scene& scene : scenes) {
        if (!mLayout.place(scene)) return false;
        views.push_back(viewOf(scene));
    }
    mSettings.push_back({jsonOrNull(optionalInteger(*built.settings, NUXO_KEY_KEY)),
                         mTables.text(textOf(*built.settings, NUXO_KEY_DESCRIPTION)),
                         mTables.item(*built.settings, settingName(*built.settings), true), views});
    return true;
}

bool Page::hasStream(int stream) const
{
    return mStreams.count(stream) > 0;
}

std::string Page::text()
{
    JsonValue document = jsonDocument("page");
    document["version"] = kLayoutVersion;
    document["tool"] = std::string("nuxo ") + NUXO_TOOL_VERSION;
    document["files"] = {mTables.text(mSession.arguments.descriptor), mTables.text(mSession.arguments.settings)};
    document["stream"] = jsonOrNull(mSession.arguments.stream);
    document["heights"] = {kNodePadding, kNameHeight, kLineHeight};
    document["settings"] = mSettings;
    mTables.addTo(document);
    return fillPage(xmlEscaped(printable(mSession.arguments.settings)), jsonInHtml(document));
}

} // namespace NuxoTool
