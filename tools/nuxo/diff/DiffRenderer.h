// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_DIFF_RENDERER_H
#define NUXO_TOOL_DIFF_RENDERER_H

#include "Findings.h"
#include "JsonRenderer.h"
#include "diff/Comparison.h"

#include <nuxo/parser/SourceLocator.h>

#include <string>

namespace NuxoTool {

/// One of two things that are compared.
struct DiffSide {
    std::string title;    ///< fit to print
    JsonValue json;       ///< the same for programs
    std::string rootName; ///< stands for the path of the root, fit to print
    Location root;        ///< where the root stands
};

/// What was compared, and what differs.
struct DiffReport {
    const DiffTrees& trees;
    const Comparison& comparison;
    DiffSide a;
    DiffSide b;
    NUXO::SourceLocator& locator;
};

/// Groups of lines, one group for each element that holds differences; "" when there is none.
std::string renderDiff(const DiffReport& report, bool colour);

/// @param compares  "descriptors" for example
std::string renderDiffJson(const DiffReport& report, const std::string& compares);

} // namespace NuxoTool

#endif
