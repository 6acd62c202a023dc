// SPDX-License-Identifier: Apache-2.0
// Internal: what GraphQueryUtils does to ports, but letting std::bad_alloc out, so that construction never goes on with half
// a result.
#ifndef NUXO_QUERY_PORT_DISABLING_H
#define NUXO_QUERY_PORT_DISABLING_H

#include <nuxo/tree/GraphConfigNode.h>

namespace NUXO {

/// See GraphQueryUtils::getPortPeer.
GraphConfigNode* findPortPeer(const GraphConfigNode& port);
/// See GraphQueryUtils::disableNode.
void switchOff(GraphConfigNode& node);
/// See GraphQueryUtils::disableUnusedPorts.
void switchOffUnusedPorts(GraphConfigNode& root);

} // namespace NUXO

#endif
