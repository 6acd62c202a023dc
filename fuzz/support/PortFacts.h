// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_FUZZ_SUPPORT_PORT_FACTS_H
#define NUXO_FUZZ_SUPPORT_PORT_FACTS_H

#include <nuxo/tree/IGraphConfig.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// What must be true of the nodes of a graph, computed a second time from the rules, by reading single attributes only. Every
// function takes null for a node that there is not.
namespace fuzzing {

std::optional<int> integerOf(const NUXO::IGraphConfig* node, uint32_t key);
std::optional<std::string> textOf(const NUXO::IGraphConfig* node, uint32_t key);
const NUXO::IGraphConfig* ancestorOf(const NUXO::IGraphConfig* node);
const NUXO::IGraphConfig* rootOf(const NUXO::IGraphConfig* node);

/// The children that a cursor gives for the type.
std::vector<NUXO::IGraphConfig*> childrenOfType(const NUXO::IGraphConfig* node, uint32_t type);
/// Whether there are nodes below the node.
bool hasChildren(const NUXO::IGraphConfig& node);
/// All nodes of the type below the node, parents before children.
std::vector<NUXO::IGraphConfig*> descendantsOfType(const NUXO::IGraphConfig& node, uint32_t type);

/// The other end of a port's connection, null unless the status is StatusOk.
struct Peer {
    int status;
    NUXO::IGraphConfig* node;
    bool wasLookedUp; ///< whether it came as far as following the name
};
Peer peerOf(const NUXO::IGraphConfig* port);

/// Nothing when the terminal cannot be told.
struct Terminal {
    uint32_t stage;
    uint32_t terminal;
};
std::optional<Terminal> terminalOf(const NUXO::IGraphConfig* port);

int directionOf(const NUXO::IGraphConfig* port);
bool isVirtual(const NUXO::IGraphConfig* port);
std::string contentTypeOf(const NUXO::IGraphConfig* port);
/// An integer of the node that the port belongs to, -1 when there is none.
int keyOfPort(const NUXO::IGraphConfig* port, uint32_t key);
bool crossesContexts(const NUXO::IGraphConfig* port);

/// "node:port", "NA" for a missing name.
std::string fullNameOf(const NUXO::IGraphConfig* node);
/// The display text of a node.
std::string displayText(const NUXO::IGraphConfig* node);
/// The `name` or the name that the parent gives.
std::string nameOf(const NUXO::IGraphConfig& node);

} // namespace fuzzing

#endif
