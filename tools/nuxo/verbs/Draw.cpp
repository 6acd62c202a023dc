// SPDX-License-Identifier: Apache-2.0
#include "Flow.h"
#include "FlowDotRenderer.h"
#include "FlowFindings.h"
#include "GraphRequest.h"
#include "ProgramGroups.h"
#include "verbs/Verbs.h"

namespace NuxoTool {

void runDraw(Session& session)
{
    GraphRequest request(session);
    const BuiltGraph built = request.build();
    if (!built || !checkStream(session, *built.graph)) return;
    const int stream = *session.arguments.stream;
    const Flow flow = withNeighbours(makeFlow(session, built), stream);
    reportMismatches(session, flow);
    const std::string title = "stream " + std::to_string(stream) + " of " + settingName(*built.settings);
    session.output = renderDot(flow, stream, title);
}

} // namespace NuxoTool
