// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_CAMERA_GRAPH_CAMERA_UTIL_H
#define NUXO_CAMERA_GRAPH_CAMERA_UTIL_H

#include <qv_tools/qv_export.h>

#include <nuxo/tree/GraphConfigNode.h>

#include <string>
#include <vector>

namespace NUXO {

/// Questions about a built graph. All functions are stateless and own nothing.
class QV_EXPORT GraphCameraUtil {
public:
    /// The other end of a port's (first) connection.
    ///
    /// @return StatusOk with @p peer set; StatusBadArgument for null arguments, no `peer`, or a peer that does not resolve
    ///         (@p peer is then null); StatusNotFound for disabled and private ports; StatusMissingObject without a root;
    ///         StatusNoMemory
    static int portGetPeer(const IGraphConfig* port, IGraphConfig** peer);

    /// Display text of a node: its type, then in brackets its full name (demux, kernel, mux, port) or own name.
    static std::string print(const IGraphConfig* node);

    /// The `name` of the node's ancestor and of the node joined by ':', each "NA" when it has none.
    static std::string getFullName(const IGraphConfig& node);

    /// The `content_type` of a port, "pixel_data" when absent.
    static std::string portGetContentType(const IGraphConfig* port);

    /// Logs all items below @p node as errors, indented by @p depth levels.
    static void dumpNodeTree(const IGraphConfig* node, int depth);

    /// Appends the enabled nodes of type `source` of the graph's root. StatusOk; StatusBadArgument for null or when there
    /// is none; StatusNoMemory.
    static int getSourceNode(const IGraphConfig* graph, std::vector<IGraphConfig*>& sources);

    /// Applies the overrides (`apply`) of the descriptor's graph element to the built graph.
    ///
    /// @return StatusOk, also without overrides; the read status of a missing `target` or `value`; the status of a failed
    ///         set. Throws std::invalid_argument or std::out_of_range when an integer is given a text that is none.
    static int processGraphOverrides(GraphConfigNode& descriptorGraph, GraphConfigNode& result);
};

} // namespace NUXO

#endif
