// SPDX-License-Identifier: Apache-2.0
#include "GraphRequest.h"
#include "JsonRenderer.h"
#include "explain/Agreement.h"
#include "explain/ExplainRenderer.h"
#include "explain/ExplainedItems.h"
#include "explain/Replay.h"
#include "verbs/Verbs.h"

namespace NuxoTool {

void runExplain(Session& session)
{
    GraphRequest request(session);
    const BuiltGraph built = request.build();
    if (!built) return;
    const NUXO::GraphConfigNode& descriptor = *request.files().descriptor.node();
    const std::unique_ptr<TracedNode> traced = Replay(descriptor, *built.settings).run();
    const std::string disagreement = findDisagreement(*traced, *built.graph);
    if (!disagreement.empty()) {
        session.findings.error("internal", inFile(session.arguments.settings),
                               "the explanation does not agree with the graph: " + disagreement, ExitCode::Internal);
        return;
    }
    const std::vector<ExplainedItem> items = findExplained(session, *traced, descriptor);
    if (items.empty()) return;
    if (session.arguments.format != Format::Json) {
        session.output = renderExplained(session, items);
        return;
    }
    JsonValue document = jsonOfSetting(session, "explanation", *built.settings);
    document["path"] = session.arguments.path;
    document["items"] = jsonExplained(session, items);
    session.output = jsonText(document);
}

} // namespace NuxoTool
