// SPDX-License-Identifier: Apache-2.0
// Internal to graph construction: making concrete nodes from base nodes.
#ifndef NUXO_QUERY_BASE_CONVERSION_H
#define NUXO_QUERY_BASE_CONVERSION_H

#include <nuxo/tree/GraphConfigNode.h>

#include <cstdint>
#include <string>

namespace NUXO {

/// Under which name a node is filed, and where its element stands. Both take a search when nobody remembers them.
struct NodeIdentity {
    /// Searches the node's siblings.
    explicit NodeIdentity(const GraphConfigNode& node);
    NodeIdentity(const char* itsName, SourcePosition where);

    std::string name;
    SourcePosition position;
};

/// What GraphConfigNode::changeBaseNodeIntoNode does to @p self, but lets std::bad_alloc out.
int32_t convertBaseNode(GraphConfigNode& self, const GraphConfigNode& node, const NodeIdentity& identity);

} // namespace NUXO

#endif
