// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_LIBRARY_LOG_H
#define NUXO_TOOL_LIBRARY_LOG_H

#include <string>
#include <vector>

namespace NuxoTool {

/// A log line of the library, which the tool keeps from the system's log.
struct LogLine {
    bool isError = false; ///< otherwise a warning
    std::string text;
};

/// Shows all log lines from now on, with their class, on stderr; also information and debug lines, and the classes that
/// the library's environment variable asks for.
void showLibraryLog();

/// The errors and warnings that were logged since the last call, oldest first. At most some hundreds are kept.
std::vector<LogLine> takeLibraryLog();

} // namespace NuxoTool

#endif
