// SPDX-License-Identifier: Apache-2.0
#include "GraphRequest.h"

#include "BuildFaults.h"
#include "LibraryFindings.h"
#include "LibraryLog.h"
#include "Origins.h"
#include "TreeView.h"

#include <nuxo/NuxoStatus.h>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

namespace {

constexpr size_t kListedKeys = 20;

std::string keysText(const std::vector<IGraphConfig*>& settings)
{
    std::string keys;
    for (size_t i = 0; i < settings.size() && i < kListedKeys; ++i) {
        int key = 0;
        const bool hasKey = settings[i]->getValue(NUXO_KEY_KEY, key) == StatusOk;
        keys += (i == 0 ? "" : ", ") + (hasKey ? std::to_string(key) : "(none)");
    }
    return settings.size() > kListedKeys ? keys + ", ..." : keys;
}

} // namespace

GraphRequest::GraphRequest(Session& session) : mSession(session), mPair(loadGraphPair(session))
{
    if (!mPair.complete()) return;
    mCriteria = readCriteria(session);
    if (session.findings.errorCount() > 0) return;
    mManager.setGraphDescriptor(mPair.descriptor.tree.get());
    mManager.setGraphSettings(mPair.settings.tree.get());
    mIsReady = true;
}

std::vector<IGraphConfig*> GraphRequest::findSettings()
{
    if (!mIsReady) return {};
    return NuxoTool::findSettings(mSession, mManager, *mPair.settings.node(), mCriteria);
}

// The one setting that was asked for; null, with a finding, when there is none or a choice.
IGraphConfig* GraphRequest::chooseSetting()
{
    const std::vector<IGraphConfig*> matches = findSettings();
    if (matches.size() == 1) return matches.front();
    if (matches.empty()) return nullptr;
    const std::string match = mCriteria.text.empty() ? "can be built" : "match " + mCriteria.text;
    mSession.findings.error("ambiguous", inFile(mSession.arguments.settings),
                            std::to_string(matches.size()) + " settings " + match + ", with the keys " +
                                keysText(matches) + "; expected --key or criteria that select one");
    return nullptr;
}

BuiltGraph GraphRequest::build()
{
    IGraphConfig* const settings = chooseSetting();
    return settings == nullptr ? BuiltGraph() : build(*settings);
}

BuiltGraph GraphRequest::build(IGraphConfig& settings)
{
    takeLibraryLog();
    IGraphConfig* graph = nullptr;
    const int status = mManager.createGraph(&settings, &graph);

    BuiltGraph built;
    built.owner.reset(graph, [this](IGraphConfig* owned) { mManager.destroyGraph(owned); });
    built.settings = dynamic_cast<const GraphConfigNode*>(&settings);
    if (status != StatusOk || graph == nullptr || built.settings == nullptr) {
        reportFailure(mSession, {"build-failed", &settings, "", 0}, "building " + settingName(settings), status,
                      "a complete graph");
        return {};
    }
    // A graph is full of connections that the setting leaves out, and a warning tells of each.
    reportLogLines(mSession, {"build", &settings, "", 0}, false);
    built.graph = dynamic_cast<const GraphConfigNode*>(graph);
    reportUnknownEnds(*built.graph);
    return built;
}

// Among those warnings are some about connections that no setting can have. They are the same for all settings of a graph.
void GraphRequest::reportUnknownEnds(const GraphConfigNode& graph)
{
    for (const BuildFault& fault : unknownEndsOf(mSession, *mPair.descriptor.tree, graph)) {
        if (mSession.reportedLines.insert(originText(fault.where) + " end").second)
            mSession.findings.warning("build", fault.where, fault.text);
    }
}

std::string settingName(const IGraphConfig& settings)
{
    int key = 0;
    return settings.getValue(NUXO_KEY_KEY, key) == StatusOk ? "setting " + std::to_string(key) : "setting without key";
}

JsonValue jsonOfSetting(Session& session, const std::string& kind, const GraphConfigNode& settings)
{
    JsonValue document = jsonDocument(kind);
    document["descriptor"] = session.arguments.descriptor;
    document["file"] = session.arguments.settings;
    document["setting"] = integerOf(settings, NUXO_KEY_KEY, 0);
    document["where"] = jsonLocation(originOf(session.locator, settings));
    return document;
}

} // namespace NuxoTool
