// SPDX-License-Identifier: Apache-2.0
#include "Criteria.h"
#include "DotRenderer.h"
#include "JsonRenderer.h"
#include "LibraryLog.h"
#include "Loading.h"
#include "Origins.h"
#include "TextRenderer.h"
#include "TreeView.h"
#include "verbs/Verbs.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/query/GraphQueryManager.h>

#include <algorithm>
#include <memory>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

namespace {

struct DestroyGraph {
    NUXO::GraphQueryManager* manager;
    void operator()(IGraphConfig* graph) const { manager->destroyGraph(graph); }
};
using GraphPointer = std::unique_ptr<IGraphConfig, DestroyGraph>;

std::string settingName(const IGraphConfig& settings)
{
    int key = 0;
    return settings.getValue(NUXO_KEY_KEY, key) == StatusOk ? "setting " + std::to_string(key) : "setting without key";
}

Location placeOf(Session& session, const IGraphConfig* settings)
{
    Location location;
    if (session.locator.locate(settings, location) == StatusOk) return location;
    return inFile(session.arguments.settings);
}

// The one setting that was asked for; null, with a finding, when there is none or a choice.
IGraphConfig* chooseSetting(Session& session, NUXO::GraphQueryManager& manager, const GraphConfigNode& settingsRoot,
                            const Criteria& criteria)
{
    constexpr size_t listed = 20;
    const std::vector<IGraphConfig*> matches = findSettings(session, manager, settingsRoot, criteria);
    if (matches.size() == 1) return matches.front();
    if (matches.empty()) return nullptr;

    std::string keys;
    for (size_t i = 0; i < matches.size() && i < listed; ++i) {
        int key = 0;
        const bool hasKey = matches[i]->getValue(NUXO_KEY_KEY, key) == StatusOk;
        keys += (i == 0 ? "" : ", ") + (hasKey ? std::to_string(key) : "(none)");
    }
    if (matches.size() > listed) keys += ", ...";
    const std::string match = criteria.text.empty() ? "can be built" : "match " + criteria.text;
    session.findings.error("ambiguous", inFile(session.arguments.settings),
                           std::to_string(matches.size()) + " settings " + match + ", with the keys " + keys +
                               "; expected --key or criteria that select one");
    return nullptr;
}

// The first error that the library logged says what went wrong; the other lines follow as notes.
void reportFailure(Session& session, const IGraphConfig& settings, int status)
{
    const Location where = placeOf(session, &settings);
    std::vector<LogLine> lines = takeLibraryLog();
    const auto cause = std::find_if(lines.begin(), lines.end(), [](const LogLine& line) { return line.isError; });
    std::string found = "building " + settingName(settings) + " ended with " + NUXO::statusName(status);
    if (cause != lines.end()) {
        found += ": " + cause->text;
        lines.erase(cause);
    }
    session.findings.error("build-failed", where, found + "; expected a complete graph");
    for (const LogLine& line : lines) {
        const char* const label = line.isError ? "library error: " : "library warning: ";
        session.findings.note(inFile(where.file), label + line.text);
    }
}

void reportErrorLines(Session& session, const IGraphConfig& settings)
{
    for (const LogLine& line : takeLibraryLog()) {
        if (line.isError) session.findings.error("build", placeOf(session, &settings), line.text);
    }
}

std::string renderJson(Session& session, const GraphConfigNode& graph, const GraphConfigNode& settings)
{
    JsonValue document = jsonDocument("graph");
    document["descriptor"] = session.arguments.descriptor;
    document["file"] = session.arguments.settings;
    document["setting"] = integerOf(settings, NUXO_KEY_KEY, 0);
    document["where"] = jsonLocation(originOf(session.locator, settings));
    document["graph"] = jsonTree(graph, "graph", session.arguments.origin ? &session.locator : nullptr);
    return jsonText(document);
}

std::string render(Session& session, const GraphConfigNode& graph, const GraphConfigNode& settings)
{
    const std::string title = "graph of " + settingName(settings);
    if (session.arguments.format == Format::Json) return renderJson(session, graph, settings);
    if (session.arguments.format == Format::Dot) return renderDot(makeDrawing(graph), title);
    if (session.arguments.origin) return renderTextWithOrigins(graph, title, session.locator);
    return renderText(graph, title);
}

void buildAndShow(Session& session, NUXO::GraphQueryManager& manager, IGraphConfig* settings)
{
    takeLibraryLog();
    IGraphConfig* built = nullptr;
    const int status = manager.createGraph(settings, &built);
    const GraphPointer owner(built, {&manager});
    const auto* const graph = dynamic_cast<const GraphConfigNode*>(built);
    const auto* const settingsNode = dynamic_cast<const GraphConfigNode*>(settings);
    if (status != StatusOk || graph == nullptr || settingsNode == nullptr) {
        reportFailure(session, *settings, status);
        return;
    }
    reportErrorLines(session, *settings);
    session.output = render(session, *graph, *settingsNode);
}

} // namespace

void runBuild(Session& session)
{
    const GraphPair pair = loadGraphPair(session);
    if (!pair.complete()) return;
    const Criteria criteria = readCriteria(session);
    if (session.findings.errorCount() > 0) return;

    NUXO::GraphQueryManager manager;
    manager.setGraphDescriptor(pair.descriptor.tree.get());
    manager.setGraphSettings(pair.settings.tree.get());
    IGraphConfig* const settings = chooseSetting(session, manager, *pair.settings.node(), criteria);
    if (settings != nullptr) buildAndShow(session, manager, settings);
}

} // namespace NuxoTool
