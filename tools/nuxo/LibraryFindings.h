// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_LIBRARY_FINDINGS_H
#define NUXO_TOOL_LIBRARY_FINDINGS_H

#include "LibraryLog.h"
#include "Session.h"

#include <nuxo/tree/IGraphConfig.h>

#include <cstdint>
#include <string>
#include <vector>

namespace NuxoTool {

/// What the log lines of the library are about.
struct LogContext {
    std::string rule;
    const NUXO::IGraphConfig* node; ///< where findings stand; what stands in no file is found in the settings file
    std::string subject;            ///< stands ahead of each line; may be empty
    uint32_t attribute = 0;         ///< key of the attribute of the node where findings stand instead, if it has it
};

/// Where findings about it stand.
Location placeOf(Session& session, const LogContext& context);

/// The errors, and with @p withWarnings the warnings, that the library logged since the last look and that are no findings
/// yet, the same line once. They count as reported from now on (see Session::reportedLines).
std::vector<LogLine> newLines(Session& session, const LogContext& context, bool withWarnings);

/// Makes findings of the errors, and with @p withWarnings of the warnings, that the library logged since the last look.
/// What was reported before, under the same subject or without one, is not repeated (see Session::reportedLines).
void reportLogLines(Session& session, const LogContext& context, bool withWarnings = true);

/// Makes one finding of a step that ended with @p status: the first error that the library logged says why; the other
/// lines follow as notes, except what was reported before.
///
/// @param step      what was tried, for example "building setting 3"
/// @param expected  for example "a complete graph"
void reportFailure(Session& session, const LogContext& context, const std::string& step, int status,
                   const std::string& expected);

} // namespace NuxoTool

#endif
