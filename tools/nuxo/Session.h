// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_SESSION_H
#define NUXO_TOOL_SESSION_H

#include "Arguments.h"
#include "Findings.h"

#include <nuxo/parser/SourceLocator.h>

#include <set>
#include <string>

namespace NuxoTool {

/// One run of the tool: what was asked, and what came of it.
struct Session {
    Session() = default;
    /// A part of a run, with findings of its own.
    explicit Session(NUXO::SourceLocator& shared) : locator(shared) {}
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    Arguments arguments;
    Findings findings;
    NUXO::SourceLocator ownLocator; ///< of a run; a part of one uses the run's
    NUXO::SourceLocator& locator = ownLocator;
    std::string output; ///< data for standard output
    /// Log lines of the library, each behind its subject, that are findings already or shall be none.
    std::set<std::string> reportedLines;
};

} // namespace NuxoTool

#endif
