// SPDX-License-Identifier: Apache-2.0
#include "DotRenderer.h"
#include "GraphRequest.h"
#include "JsonRenderer.h"
#include "TextRenderer.h"
#include "verbs/Verbs.h"

namespace NuxoTool {

namespace {

std::string renderJson(Session& session, const BuiltGraph& built)
{
    JsonValue document = jsonOfSetting(session, "graph", *built.settings);
    document["graph"] = jsonTree(*built.graph, "graph", session.arguments.origin ? &session.locator : nullptr);
    return jsonText(document);
}

std::string render(Session& session, const BuiltGraph& built)
{
    const std::string title = "graph of " + settingName(*built.settings);
    if (session.arguments.format == Format::Json) return renderJson(session, built);
    if (session.arguments.format == Format::Dot) return renderDot(makeDrawing(*built.graph), title);
    if (session.arguments.origin) return renderTextWithOrigins(*built.graph, title, session.locator);
    return renderText(*built.graph, title);
}

} // namespace

void runBuild(Session& session)
{
    GraphRequest request(session);
    if (const BuiltGraph built = request.build()) session.output = render(session, built);
}

} // namespace NuxoTool
