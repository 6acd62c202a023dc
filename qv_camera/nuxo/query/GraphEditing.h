// SPDX-License-Identifier: Apache-2.0
// Internal: what GraphQueryUtils does to ports, but letting std::bad_alloc out, so that construction never goes on with half
// a result. Names are looked up in the given cache, or in the vocabulary itself.
#ifndef NUXO_QUERY_GRAPH_EDITING_H
#define NUXO_QUERY_GRAPH_EDITING_H

#include <nuxo/tree/GraphConfigNode.h>
#include <nuxo/tree/KeyCache.h>

namespace NUXO {

/// See GraphQueryUtils::getPortPeer.
GraphConfigNode* findPortPeer(const GraphConfigNode& port, KeyCache* keys = nullptr);
/// See GraphQueryUtils::addDescendantsFromNode.
int mergeTrees(GraphConfigNode& to, const GraphConfigNode& from, signed char options, KeyCache& keys);
/// See GraphQueryUtils::disableNode.
void switchOff(GraphConfigNode& node);
/// See GraphQueryUtils::disableUnusedPorts.
void switchOffUnusedPorts(GraphConfigNode& root, KeyCache* keys = nullptr);

} // namespace NUXO

#endif
