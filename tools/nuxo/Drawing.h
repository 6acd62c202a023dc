// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_DRAWING_H
#define NUXO_TOOL_DRAWING_H

#include <nuxo/tree/GraphConfigNode.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace NuxoTool {

/// What a drawing of a built graph shows, whatever it is drawn with.
struct Drawing {
    struct Port {
        const NUXO::GraphConfigNode* item = nullptr;
        std::string name;
        std::string details; ///< size and format
        bool isOutput = false;
        bool isEnabled = true;
    };
    struct Box {
        const NUXO::GraphConfigNode* item = nullptr;
        std::string name;
        std::string kind;
        std::vector<std::string> details;
        std::optional<int> cluster; ///< number of its context or stream
        size_t kernels = 0;
        bool isEnabled = true;
        std::vector<Port> ports;
    };
    /// One end of a connection: a box, or one of its ports.
    struct End {
        size_t box = 0;
        std::optional<size_t> port;
    };
    struct Connection {
        End from;
        End to;
        bool isEnabled = true;
    };
    /// A port whose `peer` names nothing in the graph.
    struct LooseEnd {
        End end;
        std::string peer;
    };

    bool isByContext = false; ///< whether clusters are execution contexts; streams in graphs without any
    std::vector<Box> boxes;
    std::vector<Connection> connections; ///< each once, though both ends name their peer
    std::vector<LooseEnd> looseEnds;
};

/// "stream 3" or "context 3"
std::string clusterName(const Drawing& drawing, int cluster);

Drawing makeDrawing(const NUXO::GraphConfigNode& graph);

} // namespace NuxoTool

#endif
