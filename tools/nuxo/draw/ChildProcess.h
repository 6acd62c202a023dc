// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_DRAW_CHILD_PROCESS_H
#define NUXO_TOOL_DRAW_CHILD_PROCESS_H

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace NuxoTool {

/// How another program ended.
struct ChildRun {
    enum class End {
        Exited,     ///< by itself, with an exit code
        Signalled,  ///< by a signal that was not ours
        TimedOut,   ///< we ended it
        TooLong,    ///< likewise, because of what it wrote
        NotStarted, ///< the system refused
    };
    End end = End::NotStarted;
    int code = 0;        ///< exit code, number of the signal or, when not started, of the error
    std::string out;     ///< what it wrote to standard output
    std::string message; ///< first part of what it wrote to standard error
};

/// What a program may use.
struct ChildLimits {
    std::chrono::milliseconds time = std::chrono::seconds(30);
    size_t output = size_t{256} << 20U; ///< bytes
};

/// The absolute path of an executable file of that name in the directories of PATH, "" when there is none. Entries that are
/// empty or relative are passed over: what lies in the current directory is not run by accident.
std::string findProgram(const std::string& name);

/// Runs the program at @p path with @p arguments behind its name and @p input at its standard input, without a shell. When
/// this returns the program has ended and is reaped.
ChildRun runChild(const std::string& path, const std::vector<std::string>& arguments, const std::string& input,
                  const ChildLimits& limits);

} // namespace NuxoTool

#endif
