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
        std::string name;
        std::string details; ///< size and format
        bool isOutput = false;
        bool isEnabled = true;
    };
    struct Box {
        std::string name;
        std::string kind;
        std::vector<std::string> details;
        std::optional<int> stream;
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

    std::vector<Box> boxes;
    std::vector<Connection> connections; ///< each once, though both ends name their peer
    std::vector<LooseEnd> looseEnds;
};

Drawing makeDrawing(const NUXO::GraphConfigNode& graph);

} // namespace NuxoTool

#endif
