// SPDX-License-Identifier: Apache-2.0
#include "GraphRequest.h"
#include "JsonRenderer.h"
#include "Origins.h"
#include "PortView.h"
#include "Text.h"
#include "TextTable.h"
#include "verbs/Verbs.h"

namespace NuxoTool {

namespace {

std::string peersText(const PortView& port)
{
    std::string text = port.peer;
    for (const std::string& other : port.otherPeers) text += ", " + other;
    return orDash(printable(text));
}

std::string sizeText(const PortView& port)
{
    if (!port.width && !port.height) return "-";
    return orDash(port.width) + 'x' + orDash(port.height);
}

std::string render(const std::vector<PortView>& ports)
{
    if (ports.empty()) return "";
    constexpr TextTable::Align right = TextTable::Align::Right;
    TextTable table({{"NODE"},
                     {"PORT"},
                     {"DIR"},
                     {"ENABLED"},
                     {"PEER"},
                     {"EDGE"},
                     {"SIZE"},
                     {"FORMAT"},
                     {"STRIDE", right},
                     {"BUFFER", right},
                     {"TERMINAL"}});
    for (const PortView& port : ports) {
        table.add({orDash(printable(port.node)), orDash(printable(port.port)), port.isOutput ? "out" : "in",
                   port.state.text(), peersText(port), port.isEdge ? yesOrNo(*port.isEdge) : "-", sizeText(port),
                   orDash(port.format), orDash(port.stride), orDash(port.bufferSize),
                   port.terminal ? hexText(*port.terminal) : "-"});
    }
    return table.text();
}

JsonValue jsonPort(Session& session, const PortView& port)
{
    JsonValue json;
    json["node"] = jsonOrNull(port.node);
    json["port"] = jsonOrNull(port.port);
    json["direction"] = port.isOutput ? "output" : "input";
    json["enabled"] = port.state.isEnabled;
    json["private"] = port.state.isPrivate;
    json["peer"] = jsonOrNull(port.peer);
    if (!port.otherPeers.empty()) json["other_peers"] = port.otherPeers;
    json["edge"] = jsonOrNull(port.isEdge);
    json["content_type"] = port.content;
    json["width"] = jsonOrNull(port.width);
    json["height"] = jsonOrNull(port.height);
    json["format"] = jsonOrNull(port.format);
    json["fourcc"] = jsonOrNull(port.fourcc);
    json["stride"] = jsonOrNull(port.stride);
    json["buffer_size"] = jsonOrNull(port.bufferSize);
    json["terminal_id"] = jsonOrNull(port.terminal);
    json["where"] = jsonLocation(originOf(session.locator, *port.item));
    return json;
}

std::string renderJson(Session& session, const BuiltGraph& built, const std::vector<PortView>& ports)
{
    JsonValue document = jsonOfSetting(session, "ports", *built.settings);
    document["ports"] = JsonValue::array();
    for (const PortView& port : ports) document["ports"].push_back(jsonPort(session, port));
    return jsonText(document);
}

} // namespace

void runPorts(Session& session)
{
    GraphRequest request(session);
    const BuiltGraph built = request.build();
    if (!built) return;
    const std::vector<PortView> ports = viewPorts(session, *built.graph);
    session.output = session.arguments.format == Format::Json ? renderJson(session, built, ports) : render(ports);
}

} // namespace NuxoTool
