// SPDX-License-Identifier: Apache-2.0
#include "ContextView.h"
#include "GraphRequest.h"
#include "JsonRenderer.h"
#include "Origins.h"
#include "Text.h"
#include "TextTable.h"
#include "verbs/Verbs.h"

namespace NuxoTool {

namespace {

constexpr TextTable::Align kRight = TextTable::Align::Right;

std::string nodeTable(const ContextView& view)
{
    std::vector<TextTable::Column> columns = {{view.isByStream ? "STREAM" : "CONTEXT"}, {"TUNING"}, {"NODE"}, {"TYPE"}};
    if (!view.isByStream) columns.push_back({"STREAM"});
    columns.push_back({"PG", kRight});
    columns.push_back({"KERNELS", kRight});
    TextTable table(columns);
    for (const ContextView::Context& context : view.contexts) {
        for (const ContextView::Node& node : context.nodes) {
            std::vector<std::string> cells = {orDash(context.id), orDash(context.tuning), printable(node.name),
                                              node.type};
            if (!view.isByStream) cells.push_back(orDash(node.stream));
            cells.push_back(orDash(node.pgId));
            cells.push_back(std::to_string(node.kernels));
            table.add(cells);
        }
    }
    return table.text();
}

std::string crossingTable(const ContextView& view)
{
    TextTable table({{"FROM"}, {"SOURCE"}, {"TO"}, {"SINK"}, {"CONTENT"}});
    for (const ContextView::Crossing& crossing : view.crossings) {
        table.add({orDash(crossing.from), printable(crossing.source), orDash(crossing.to), printable(crossing.sink),
                   printable(crossing.content)});
    }
    return table.text();
}

void addBoundaries(TextTable& table, const ContextView::Context& context, const char* direction,
                   const std::vector<ContextView::Boundary>& boundaries)
{
    for (const ContextView::Boundary& boundary : boundaries) {
        table.add({orDash(context.id), direction, printable(boundary.port), boundary.state.text(),
                   orDash(printable(boundary.peer)), printable(boundary.content)});
    }
}

std::string boundaryTable(const ContextView& view)
{
    TextTable table(
        {{view.isByStream ? "STREAM" : "CONTEXT"}, {"DIR"}, {"BOUNDARY"}, {"ENABLED"}, {"PEER"}, {"CONTENT"}});
    for (const ContextView::Context& context : view.contexts) {
        addBoundaries(table, context, "in", context.inputs);
        addBoundaries(table, context, "out", context.outputs);
    }
    return table.text();
}

std::string render(const ContextView& view)
{
    if (view.contexts.empty()) return "";
    return nodeTable(view) + '\n' + crossingTable(view) + '\n' + boundaryTable(view);
}

JsonValue jsonNode(Session& session, const ContextView::Node& node)
{
    JsonValue json;
    json["name"] = node.name;
    json["type"] = node.type;
    json["stream_id"] = jsonOrNull(node.stream);
    json["tuning_mode"] = jsonOrNull(node.tuning);
    json["pg_id"] = jsonOrNull(node.pgId);
    json["kernels"] = node.kernels;
    json["where"] = jsonLocation(originOf(session.locator, *node.item));
    return json;
}

JsonValue jsonBoundaries(const std::vector<ContextView::Boundary>& boundaries)
{
    JsonValue list = JsonValue::array();
    for (const ContextView::Boundary& boundary : boundaries) {
        JsonValue json;
        json["port"] = boundary.port;
        json["enabled"] = boundary.state.isEnabled;
        json["private"] = boundary.state.isPrivate;
        json["peer"] = jsonOrNull(boundary.peer);
        json["content_type"] = boundary.content;
        list.push_back(json);
    }
    return list;
}

JsonValue jsonContext(Session& session, const ContextView::Context& context)
{
    JsonValue json;
    json["id"] = jsonOrNull(context.id);
    json["tuning_mode"] = jsonOrNull(context.tuning);
    json["nodes"] = JsonValue::array();
    for (const ContextView::Node& node : context.nodes) json["nodes"].push_back(jsonNode(session, node));
    json["inputs"] = jsonBoundaries(context.inputs);
    json["outputs"] = jsonBoundaries(context.outputs);
    return json;
}

std::string renderJson(Session& session, const BuiltGraph& built, const ContextView& view)
{
    JsonValue document = jsonOfSetting(session, "contexts", *built.settings);
    document["told_apart_by"] = view.isByStream ? "stream_id" : "exec_ctx_id";
    document["contexts"] = JsonValue::array();
    for (const ContextView::Context& context : view.contexts) {
        document["contexts"].push_back(jsonContext(session, context));
    }
    document["connections"] = JsonValue::array();
    for (const ContextView::Crossing& crossing : view.crossings) {
        JsonValue json;
        json["from"] = jsonOrNull(crossing.from);
        json["source"] = crossing.source;
        json["to"] = jsonOrNull(crossing.to);
        json["sink"] = crossing.sink;
        json["content_type"] = crossing.content;
        document["connections"].push_back(json);
    }
    return jsonText(document);
}

} // namespace

void runContexts(Session& session)
{
    GraphRequest request(session);
    const BuiltGraph built = request.build();
    if (!built) return;
    const ContextView view = viewContexts(session, *built.graph);
    if (view.contexts.empty()) {
        session.findings.note(inFile(session.arguments.settings),
                              "the graph of " + settingName(*built.settings) + " has nothing that is in contexts");
    }
    session.output = session.arguments.format == Format::Json ? renderJson(session, built, view) : render(view);
}

} // namespace NuxoTool
