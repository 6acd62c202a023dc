// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_CONTEXT_VIEW_H
#define NUXO_TOOL_CONTEXT_VIEW_H

#include "PortView.h"
#include "Session.h"

#include <nuxo/tree/GraphConfigNode.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NuxoTool {

/// How a built graph falls into execution contexts, or into streams when it has no contexts.
struct ContextView {
    /// A program group, compute block or external stage.
    struct Node {
        const NUXO::GraphConfigNode* item = nullptr;
        std::string name;
        std::string type;
        std::optional<int> stream;
        std::optional<int> tuning;
        std::optional<int> pgId;
        unsigned kernels = 0;
    };
    /// A port through which a context is connected to others or to nothing.
    struct Boundary {
        const NUXO::IGraphConfig* item = nullptr;
        std::string port;
        std::string peer; ///< empty without one
        PortState state;
        std::string content;
    };
    struct Context {
        std::optional<int> id; ///< none for nodes that are in no context
        std::optional<int> tuning;
        std::vector<Node> nodes;
        std::vector<Boundary> inputs;
        std::vector<Boundary> outputs;
    };
    /// A connection between contexts, or out of the last one.
    struct Crossing {
        std::string source;
        std::string sink;
        std::optional<int> from;
        std::optional<int> to;
        std::string content;
    };

    bool isByStream = false;
    std::vector<Context> contexts; ///< by ascending id, nodes without one at the end
    std::vector<Crossing> crossings;
};

ContextView viewContexts(Session& session, const NUXO::GraphConfigNode& graph);

} // namespace NuxoTool

#endif
