// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_PORT_VIEW_H
#define NUXO_TOOL_PORT_VIEW_H

#include "Session.h"

#include <nuxo/tree/GraphConfigNode.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NuxoTool {

/// Whether a port is in use, as the library takes it.
struct PortState {
    bool isEnabled = true;
    bool isPrivate = false;
    /// "yes", "no" or "private"
    const char* text() const;
};

/// What the library tells of a port, or of a virtual sink, which is node and port in one. Texts are empty where nothing
/// applies.
struct PortView {
    const NUXO::GraphConfigNode* item = nullptr;
    std::string node;
    std::string port; ///< empty for a virtual sink
    bool isOutput = false;
    PortState state;
    std::string peer;
    std::vector<std::string>
        otherPeers; ///< further connections, as the graph names them; the library follows the first
    std::optional<bool> isEdge;
    std::string content;
    std::optional<uint32_t> width;
    std::optional<uint32_t> height;
    std::string format;
    std::string fourcc;
    std::optional<uint32_t> stride;
    std::optional<uint32_t> bufferSize;
    std::optional<uint32_t> terminal;
};

/// The ports of a built graph in its order. What the library objects to becomes findings at the port.
std::vector<PortView> viewPorts(Session& session, const NUXO::GraphConfigNode& graph);

/// The state of a port or virtual sink.
PortState stateOf(const NUXO::IGraphConfig& port);

/// The name of a node, or else the one under which it is filed.
std::string nameOf(const NUXO::IGraphConfig& node);

/// Whether the node is a virtual sink.
bool isSink(const NUXO::IGraphConfig& node);

/// An end of a connection as connections name it: "node:port", or the name of a virtual sink.
std::string endName(const NUXO::IGraphConfig& end);

/// The children of @p node whose type is the name of the key @p type, in order.
std::vector<const NUXO::GraphConfigNode*> childrenOfType(const NUXO::GraphConfigNode& node, uint32_t type);

} // namespace NuxoTool

#endif
