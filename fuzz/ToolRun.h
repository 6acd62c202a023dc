// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_FUZZ_TOOL_RUN_H
#define NUXO_FUZZ_TOOL_RUN_H

#include <string>
#include <vector>

namespace fuzzing {

/// What a run of the tool leaves behind.
struct ToolAnswer {
    int exitCode = 0;
    std::string output;
    std::string findings;
};

/// Runs a verb of the tool in this process, as if it were typed. That it ends with a documented exit code, and writes
/// nothing that steers a terminal, is required.
///
/// @param arguments  the verb first: check, diff, dump or fmt
ToolAnswer runTool(const std::vector<std::string>& arguments);

/// Files in memory, in a folder of their own that goes with the process.
class ToolFiles {
public:
    ToolFiles();
    ToolFiles(const ToolFiles&) = delete;
    ToolFiles& operator=(const ToolFiles&) = delete;
    ~ToolFiles();

    /// Writes a file and returns its path.
    std::string write(const std::string& name, const std::string& content);

private:
    std::string mFolder;
};

} // namespace fuzzing

#endif
