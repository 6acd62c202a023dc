// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_DRAW_PAGE_H
#define NUXO_TOOL_DRAW_PAGE_H

#include "GraphRequest.h"
#include "Session.h"
#include "draw/PageTables.h"
#include "draw/Scene.h"
#include "draw/SceneLayout.h"

#include <set>
#include <string>
#include <vector>

namespace NuxoTool {

/// One HTML page that shows the graphs of several settings. It is complete in itself: it asks no server for anything.
class Page {
public:
    explicit Page(Session& session) : mSession(session), mTables(session), mLayout(session) {}

    /// Adds the graph of a setting, and the inside of each of its streams. Its findings are reported.
    ///
    /// @return false, with a finding, when it cannot be laid out, and then no other can
    bool add(const BuiltGraph& built);

    bool isEmpty() const { return mSettings.empty(); }
    /// Whether a setting has this stream.
    bool hasStream(int stream) const;
    std::string text();

private:
    JsonValue texts(const std::vector<std::string>& lines);
    JsonValue viewOf(const Scene& scene);
    JsonValue jsonNode(const Scene& scene, const Scene::Node& node);
    JsonValue jsonPort(const Scene::Node& node, const Scene::Port& port);
    JsonValue jsonEdge(const Scene::Edge& edge);

    Session& mSession;
    PageTables mTables;
    SceneLayout mLayout;
    JsonValue mSettings = JsonValue::array();
    std::set<int> mStreams; ///< those of any setting that have an inside
};

} // namespace NuxoTool

#endif
