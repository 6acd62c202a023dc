// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_QUERY_GRAPH_QUERY_UTILS_H
#define NUXO_QUERY_GRAPH_QUERY_UTILS_H

#include <qv_tools/qv_export.h>

#include <nuxo/tree/GraphConfigNode.h>

namespace NUXO {

/// The merge of one subtree into another, and what graph construction does to ports.
class QV_EXPORT GraphQueryUtils {
public:
    /// Bits of the options of addDescendantsFromNode.
    enum MergeOption : signed char {
        /// A child node that the destination lacks is copied into it.
        CopyMissingNodes = 1,
        /// The options list of every attribute written is obeyed.
        HandleOptions = 2,
        /// A destination port with `direction` 1 passes its content on to its peer port.
        PushToPeer = 4,
        /// Child nodes on both sides are merged (except `options`), existing attributes are overwritten (except `name`,
        /// `direction`, `id`, `peer` and `type`).
        Merge = 8
    };

    /// Merges the children of @p from into @p to. Attributes that @p to lacks are always added.
    ///
    /// @param options  MergeOption bits
    /// @return StatusOk; StatusBadArgument for null nodes; StatusNoMemory; the status of a failed option. What was merged
    ///         before a failure stays.
    static int addDescendantsFromNode(GraphConfigNode* to, GraphConfigNode* from, signed char options);

    /// The node that the port's first `peer` names in its tree, whether enabled or not; null when there is none.
    static GraphConfigNode* getPortPeer(GraphConfigNode* port);

    /// Sets the integer `enabled` to 0, creating it if needed; always StatusOk.
    static int disableNode(GraphConfigNode* node);

    /// Disables the pixel ports of the root's nodes whose peer is missing or disabled.
    static void disableUnusedPorts(GraphConfigNode* root);
};

} // namespace NUXO

#endif
