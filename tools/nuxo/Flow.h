// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_FLOW_H
#define NUXO_TOOL_FLOW_H

#include "GraphRequest.h"
#include "Session.h"

#include <nuxo/records/qv_isp_zmt_run_kernels.h>
#include <nuxo/tree/GraphConfigNode.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace NuxoTool {

/// How frames pass from sources through the kernels of program groups to sinks, with what the library tells of them.
struct Flow {
    enum class Kind { SourceStage, InputPort, Kernel, Mux, Demux, Split, OutputPort, Sink, Outside };

    /// What a node states of one of its outputs, and of its input for it.
    struct Resolution {
        std::string output;
        qv_isp_zmt_resolution_info info = {};
    };

    struct Link {
        size_t to = 0;
        std::string output; ///< how the node calls the output; may be empty
        std::optional<qv_isp_zmt_resolution_info> history;
        bool isFeedback = false; ///< leads back to an earlier stage, for the next frame
    };

    struct Node {
        Kind kind = Kind::Kernel;
        std::string group; ///< node of the graph that it belongs to; empty for sinks
        std::string name;
        const NUXO::GraphConfigNode* item = nullptr;
        std::optional<int> stream;
        int32_t enable = QV_ISP_ZMT_KERNEL_ENABLED; ///< one of qv_isp_zmt_kernel_state, for other nodes as well
        bool mustFit = false;                       ///< whether the sizes that it states decide about its output
        std::vector<Resolution> stated;
        std::optional<qv_isp_zmt_resolution_info> arrives;
        std::vector<Link> links;

        bool isDisabled() const { return enable == QV_ISP_ZMT_KERNEL_DISABLED; }
        /// "group:name"
        std::string fullName() const { return group.empty() ? name : group + ':' + name; }
    };

    std::vector<Node> nodes;
    bool isComplete = true; ///< false when the library stopped before all histories were known
    bool isChecked = false; ///< whether the library stops where sizes do not fit

    /// For each node whether a link that is no feedback leads to it.
    std::vector<bool> haveParents() const;
    /// The nodes in an order in which frames pass them, chains kept together.
    std::vector<size_t> order() const;
    /// The nodes that are marked, in the given order; links to others are dropped.
    Flow part(const std::vector<size_t>& chosen) const;
};

/// "kernel", "input" and so on.
const char* kindName(Flow::Kind kind);

/// A size that a node states and that is not the one that arrives.
struct Mismatch {
    int32_t width = 0; ///< stated
    int32_t height = 0;
    bool isBreak = false; ///< whether the chain behind the node is not to be trusted
};
std::optional<Mismatch> mismatchOf(const Flow::Node& node);

/// Whether a port or sink states its size.
bool statesSize(const Flow::Node& node);

/// The flow of all streams, with sources and sinks. What the library objects to becomes findings.
Flow makeFlow(Session& session, const BuiltGraph& built);

/// A stream and all that frames pass before it, in the order in which they do.
Flow withUpstream(const Flow& flow, int stream);

/// A stream and what lies directly around it.
Flow withNeighbours(const Flow& flow, int stream);

} // namespace NuxoTool

#endif
