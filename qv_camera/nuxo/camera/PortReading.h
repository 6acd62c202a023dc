// SPDX-License-Identifier: Apache-2.0
// Internal: questions about ports that graph construction asks too.
#ifndef NUXO_CAMERA_PORT_PEER_H
#define NUXO_CAMERA_PORT_PEER_H

#include <nuxo/tree/GraphConfigNode.h>
#include <nuxo/tree/KeyCache.h>

namespace NUXO {

constexpr const char* kPixelData = "pixel_data";

/// What GraphCameraUtil::portGetPeer does, but lets std::bad_alloc out.
///
/// @param keys  where to look names up, null for the vocabulary itself
int resolvePeer(const IGraphConfig* port, IGraphConfig** peer, KeyCache* keys = nullptr);

} // namespace NUXO

#endif
