// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_GRAPH_REQUEST_H
#define NUXO_TOOL_GRAPH_REQUEST_H

#include "Criteria.h"
#include "JsonRenderer.h"
#include "Loading.h"
#include "Session.h"

#include <nuxo/query/GraphQueryManager.h>
#include <nuxo/tree/GraphConfigNode.h>

#include <memory>
#include <string>
#include <vector>

namespace NuxoTool {

/// A graph that was built and the setting that it was built of.
struct BuiltGraph {
    std::shared_ptr<NUXO::IGraphConfig> owner; ///< empty when building failed
    const NUXO::GraphConfigNode* graph = nullptr;
    const NUXO::GraphConfigNode* settings = nullptr;
    explicit operator bool() const { return graph != nullptr; }
};

/// What all verbs with a descriptor and a settings file start with. Everything that is wrong on the way is reported.
class GraphRequest {
public:
    /// Reads the files and the criteria of the command line.
    explicit GraphRequest(Session& session);
    GraphRequest(const GraphRequest&) = delete;
    GraphRequest& operator=(const GraphRequest&) = delete;

    /// Whether files and criteria are in order; otherwise there is nothing to find or build.
    bool isReady() const { return mIsReady; }
    /// The files as they were read.
    const GraphPair& files() const { return mPair; }
    /// The `settings` nodes that match the criteria.
    std::vector<NUXO::IGraphConfig*> findSettings();
    /// The graph of the one setting that matches; it must not outlive the request.
    BuiltGraph build();
    /// The graph of one of findSettings(); it must not outlive the request.
    BuiltGraph build(NUXO::IGraphConfig& settings);

private:
    NUXO::IGraphConfig* chooseSetting();
    void reportUnknownEnds(const NUXO::GraphConfigNode& graph);

    Session& mSession;
    GraphPair mPair;
    Criteria mCriteria;
    NUXO::GraphQueryManager mManager;
    bool mIsReady = false;
};

/// "setting 3"
std::string settingName(const NUXO::IGraphConfig& settings);

/// A document that says of which setting in which files it tells.
JsonValue jsonOfSetting(Session& session, const std::string& kind, const NUXO::GraphConfigNode& settings);

} // namespace NuxoTool

#endif
