// SPDX-License-Identifier: Apache-2.0
// Internal: questions about ports that graph construction and other questions ask too.
#ifndef NUXO_CAMERA_PORT_READING_H
#define NUXO_CAMERA_PORT_READING_H

#include <nuxo/tree/GraphConfigNode.h>
#include <nuxo/tree/KeyCache.h>

#include <cstdint>
#include <string>
#include <vector>

namespace NUXO {

constexpr const char* kPixelData = "pixel_data";

/// Values of `direction`.
constexpr int kInput = 0;
constexpr int kOutput = 1;

/// In place of an execution context or stream that a node lacks.
constexpr int kNoContext = -1;

/// What GraphCameraUtil::portGetPeer does, but lets std::bad_alloc out.
///
/// @param keys  where to look names up, null for the vocabulary itself
int resolvePeer(const IGraphConfig* port, IGraphConfig** peer, KeyCache* keys = nullptr);

/// The peer, null when there is none. May throw std::bad_alloc.
IGraphConfig* peerOf(const IGraphConfig* port);

/// What GraphCameraUtil::portGetFourCCInfo does, but lets std::bad_alloc out.
int readTerminal(const IGraphConfig* port, unsigned int& stageId, unsigned int& terminalId);

/// What GraphCameraUtil::isEdgePort does, but lets std::bad_alloc out.
bool isEdge(const IGraphConfig* port);

/// The nodes of one type whose integer attribute has one value.
struct Subgraph {
    uint32_t key;
    int value;
    uint32_t nodeType;
};

/// What GraphCameraUtil::getOutputPorts does, for callers that ask about many subgraphs of one graph, but lets std::bad_alloc
/// out and gives each port once.
///
/// @param nodes    the nodes of the subgraph, in the order of the graph
/// @param sources  all nodes of type `source`, in the order of the graph
int outputPortsOf(const Subgraph& subgraph, const std::vector<IGraphConfig*>& nodes,
                  const std::vector<IGraphConfig*>& sources, std::vector<IGraphConfig*>& ports);

/// The same for GraphCameraUtil::getInputPort.
int inputPortOf(const Subgraph& subgraph, const std::vector<IGraphConfig*>& nodes, IGraphConfig** port);

/// What GraphCameraUtil::getFullName gives, but lets std::bad_alloc out.
std::string fullName(const IGraphConfig& node);

/// Reads attributes of a port or, where it lacks them, of its peer.
class PortOrPeer {
public:
    /// @param port  not owned
    explicit PortOrPeer(const IGraphConfig& port) : mPort(port) {}

    /// Whether either has an attribute of this kind, which is then in the output. Says when it was the peer's.
    bool fetch(uint32_t key, int& value);
    bool fetch(uint32_t key, std::string& text);

private:
    template <typename Read> bool readEither(Read read);

    const IGraphConfig& mPort;
    const IGraphConfig* mPeer = nullptr; // once it was needed and found
};

} // namespace NUXO

#endif
