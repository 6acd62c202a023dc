// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_ANALYSIS_FINDINGS_H
#define NUXO_TOOL_ANALYSIS_FINDINGS_H

#include "GraphRequest.h"
#include "Session.h"

#include <cstdint>

namespace NuxoTool {

/// Where a size that a kernel takes is stated: the width of its `input`, or the height if only that is wrong.
Location placeOfInput(Session& session, const NUXO::IGraphConfig& kernel, bool isWidth);

/// Makes findings of what the library logged while it filled the run-kernel records of a graph, each at the element that the
/// line names. A failure becomes one finding; what else was logged follows as notes.
///
/// @param status  what the library returned
void reportAnalysis(Session& session, const BuiltGraph& built, int status, bool withWarnings);

} // namespace NuxoTool

#endif
