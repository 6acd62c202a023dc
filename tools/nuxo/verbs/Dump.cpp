// SPDX-License-Identifier: Apache-2.0
#include "JsonRenderer.h"
#include "Loading.h"
#include "TextRenderer.h"
#include "verbs/Verbs.h"

namespace NuxoTool {

namespace {

// The root node stands for the document's element of a graph file; any other element is a node below it.
std::string titleOf(const GraphFile& file)
{
    return file.isGraphFile() ? file.rootElement : "(document)";
}

} // namespace

void runDump(Session& session)
{
    const GraphFile file = loadGraphFile(session, session.arguments.file, DocumentKind::Any);
    const NUXO::GraphConfigNode* const root = file.node();
    if (root == nullptr) return;
    const bool withOrigins = session.arguments.origin;
    if (session.arguments.format == Format::Json) {
        JsonValue document = jsonDocument("tree");
        document["file"] = file.path;
        document["complete"] = file.complete;
        document["tree"] = jsonTree(*root, titleOf(file), withOrigins ? &session.locator : nullptr);
        session.output = jsonText(document);
    } else if (withOrigins) {
        session.output = renderTextWithOrigins(*root, titleOf(file), session.locator);
    } else {
        session.output = renderText(*root, titleOf(file));
    }
}

} // namespace NuxoTool
