// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_GRAPH_PORTS_H
#define NUXO_TOOL_GRAPH_PORTS_H

#include <nuxo/tree/GraphConfigNode.h>

#include <string>
#include <vector>

namespace NuxoTool {

/// The other end of a connection.
struct Peer {
    std::string text;                               ///< as the graph names it
    const NUXO::GraphConfigNode* end = nullptr;     ///< null when there is none of that name
    NUXO::GraphConfigNode::iterator item = nullptr; ///< the attribute, which stands at the connection
};

/// All other ends of a port or virtual sink.
std::vector<Peer> peersOf(const NUXO::GraphConfigNode& end);

// Of a port or virtual sink.
bool carriesPixels(const NUXO::IGraphConfig& end);
bool isOn(const NUXO::IGraphConfig& end);
bool isOutput(const NUXO::IGraphConfig& port);
bool isPrivate(const NUXO::IGraphConfig& port);

} // namespace NuxoTool

#endif
