// SPDX-License-Identifier: Apache-2.0
#include "DotRenderer.h"
#include "Flow.h"
#include "FlowDotRenderer.h"
#include "FlowFindings.h"
#include "GraphRequest.h"
#include "Progress.h"
#include "ProgramGroups.h"
#include "draw/Graphviz.h"
#include "draw/Page.h"
#include "verbs/Verbs.h"

namespace NuxoTool {

namespace {

// The whole graph, or the inside of the stream that was asked for; "" when the graph has no such stream.
std::string drawingOf(Session& session, const BuiltGraph& built)
{
    const std::string setting = settingName(*built.settings);
    if (!session.arguments.stream) return renderDot(makeDrawing(*built.graph), "graph of " + setting);
    if (!checkStream(session, *built.graph)) return "";
    const int stream = *session.arguments.stream;
    const Flow flow = withNeighbours(makeFlow(session, built), stream);
    reportMismatches(session, flow);
    return renderDot(flow, stream, "stream " + std::to_string(stream) + " of " + setting);
}

void drawSetting(Session& session)
{
    GraphRequest request(session);
    const BuiltGraph built = request.build();
    if (!built) return;
    const std::string drawing = drawingOf(session, built);
    if (drawing.empty()) return;
    session.output = session.arguments.format == Format::Svg ? layOut(session, drawing, "svg").value_or("") : drawing;
}

// All settings that the criteria leave; those that cannot be built are reported and left out.
void drawPage(Session& session)
{
    GraphRequest request(session);
    Page page(session);
    const std::vector<NUXO::IGraphConfig*> chosen = request.findSettings();
    Progress progress(chosen.size(), "settings");
    for (NUXO::IGraphConfig* const settings : chosen) {
        progress.step();
        const BuiltGraph built = request.build(*settings);
        if (built && !page.add(built)) return;
    }
    if (page.isEmpty()) return;
    const std::optional<int32_t> stream = session.arguments.stream;
    if (stream && !page.hasStream(*stream)) {
        const std::string number = std::to_string(*stream);
        session.findings.usageError("unknown-stream", {"--stream " + number, 10, number.size()},
                                    "no setting of the page has nodes with an inside in stream " + number +
                                        "; expected a stream of one of them");
        return;
    }
    session.output = page.text();
}

} // namespace

void runDraw(Session& session)
{
    if (session.arguments.format == Format::Html) {
        drawPage(session);
    } else {
        drawSetting(session);
    }
}

} // namespace NuxoTool
