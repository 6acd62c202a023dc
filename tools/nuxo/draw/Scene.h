// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_DRAW_SCENE_H
#define NUXO_TOOL_DRAW_SCENE_H

#include "Drawing.h"
#include "Flow.h"

#include <nuxo/tree/GraphConfigNode.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace NuxoTool {

/// One view of the page: a whole graph or the inside of a stream, with places once it is laid out (see SceneLayout.h).
/// Lengths are pixels, from the left and from the top.
struct Scene {
    struct Point {
        int x = 0;
        int y = 0;
    };
    struct Area {
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
    };
    struct Port {
        const NUXO::GraphConfigNode* item = nullptr;
        std::string name;
        std::vector<std::string> lines; ///< below the name, smaller
        bool isOutput = false;
        bool isOff = false;
        /// Of an output: the inputs of its node whose frames leave here, as far as that is known.
        std::optional<std::vector<size_t>> inputs;
    };
    struct Node {
        const NUXO::GraphConfigNode* item = nullptr; ///< null for what is missing
        std::string path;                            ///< from the graph down
        std::string name;
        std::string kind;
        std::vector<std::string> lines; ///< below the name, smaller
        std::string alarm;              ///< below these; mostly empty
        std::optional<size_t> cluster;
        bool isOff = false;
        bool isBypassed = false;
        std::vector<Port> ports;
        Area area;
        int split = 0;     ///< width of the column of inputs, of nodes with ports
        int rowHeight = 0; ///< of each row of ports
    };
    struct Cluster {
        std::string name;
        Area area;
    };
    struct End {
        size_t node = 0;
        std::optional<size_t> port;
    };
    struct Edge {
        End from;
        End to;
        std::string label;
        bool isOff = false;
        bool isFeedback = false;
        bool isMissing = false;
        bool isOrdering = true; ///< whether its end stands behind its start
        Point labelAt;          ///< middle
        std::vector<Point>
            points; ///< a curve: start, two control points and an end for each piece; last the arrow's tip
    };

    std::string name;
    std::optional<int> stream; ///< of the inside of a stream
    std::vector<Cluster> clusters;
    std::vector<Node> nodes;
    std::vector<Edge> edges;
    std::vector<size_t> heads; ///< nodes that stand side by side
    int width = 0;
    int height = 0;

    bool isInside() const { return stream.has_value(); }
};

/// The whole graph, left to right. @p flow says which frames pass from which input to which output.
Scene sceneOf(const Drawing& drawing, const Flow& flow);

/// The inside of a stream with what lies around it, top to bottom.
Scene sceneOf(const Flow& flow, int stream);

} // namespace NuxoTool

#endif
