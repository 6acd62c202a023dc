// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_ANALYSIS_INNER_GRAPH_NODE_H
#define NUXO_ANALYSIS_INNER_GRAPH_NODE_H

#include <nuxo/records/qv_isp_zmt_run_kernels.h>
#include <nuxo/tree/IGraphConfig.h>

#include <cstddef>
#include <string>
#include <vector>

namespace NUXO {

/// A node of a subgraph's inner graph, as GraphUtil::getInnerGraph shows it.
struct InnerGraphNode {
    enum class Kind { Kernel, Mux, Demux, Split, InputPort, OutputPort };

    /// Where the data of one output goes.
    struct Link {
        size_t sink = 0;                         ///< index of the node that takes it
        std::string output;                      ///< how this node calls the output
        bool hasHistory = false;                 ///< whether the node was reached and gave it a history
        qv_isp_zmt_resolution_info history = {}; ///< of the frame that leaves through it
    };

    std::string name; ///< names of program group and node, joined by ':'
    Kind kind = Kind::Kernel;
    const IGraphConfig* node = nullptr; ///< in the graph, not owned
    bool disabled = false;              ///< no frame passes, or the kernel is disabled
    const qv_isp_zmt_run_kernels* record =
        nullptr; ///< of a kernel, null after a failed init; owned by the GraphUtil until its next init
    std::vector<Link> links;
};

} // namespace NUXO

#endif
