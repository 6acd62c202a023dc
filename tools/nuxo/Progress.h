// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_PROGRESS_H
#define NUXO_TOOL_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <string>

namespace NuxoTool {

/// A bar on standard error that tells how far work has come. Only on a terminal, and only when it takes longer than a
/// second; at the end the line is empty again.
class Progress {
public:
    /// @param total     number of steps
    /// @param what      what a step is about, in the plural
    /// @param patience  how long nothing is shown
    Progress(size_t total, std::string what, std::chrono::milliseconds patience = std::chrono::seconds(1));
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress();

    /// To be called at the start of each step.
    void step();

private:
    using Clock = std::chrono::steady_clock;
    void draw() const;

    const size_t mTotal;
    const std::string mWhat;
    size_t mDone = 0;
    const bool mIsOnTerminal;
    bool mIsDrawn = false;
    Clock::time_point mNext;
};

} // namespace NuxoTool

#endif
