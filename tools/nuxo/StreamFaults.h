// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_STREAM_FAULTS_H
#define NUXO_TOOL_STREAM_FAULTS_H

#include "ProgramGroups.h"

#include <string>
#include <vector>

namespace NuxoTool {

/// Why frames may not reach a stream.
struct StreamFault {
    enum class Kind { NoStream, Unconnected, Circle };

    const NUXO::IGraphConfig* item;
    std::string text;
    Kind kind;
};

/// Whether the library says that frames do not reach a stream or group, without the reason.
bool isStreamUnreached(const std::string& line);

/// Groups without stream, inputs that nothing is connected to, and connections between streams that feed each other.
std::vector<StreamFault> streamFaultsOf(Session& session, const NUXO::GraphConfigNode& graph,
                                        const ProgramGroups& groups);

/// The input of each group that frames cannot enter. Where kernels have no links, the library gives such groups the frames
/// of the source.
std::vector<StreamFault> unfedGroupsOf(Session& session, const ProgramGroups& groups);

} // namespace NuxoTool

#endif
