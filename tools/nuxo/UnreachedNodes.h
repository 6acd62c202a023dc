// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_UNREACHED_NODES_H
#define NUXO_TOOL_UNREACHED_NODES_H

#include "LibraryLog.h"
#include "ProgramGroups.h"

#include <string>
#include <vector>

namespace NuxoTool {

/// Whether the library says that frames do not reach an inner node.
bool isUnreached(const std::string& line);

/// The same, or that frames do not reach all of a stream.
bool tellsOfUnreached(const std::string& line);

/// The library says that frames do not reach all of a stream, and then names each inner node of it. Of these lines the ones
/// stay where frames stop: at nodes that none of the others leads to, or, in a circle, that frames lead into. The first
/// says how many are left out.
std::vector<LogLine> withoutFollowers(const std::vector<LogLine>& lines, const ProgramGroups& groups);

} // namespace NuxoTool

#endif
