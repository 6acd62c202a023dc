// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_FLOW_FINDINGS_H
#define NUXO_TOOL_FLOW_FINDINGS_H

#include "Flow.h"
#include "Session.h"

namespace NuxoTool {

/// Reports sizes that are not those that arrive: an error where a kernel breaks the chain, unless the library reported that
/// itself, otherwise a warning.
void reportMismatches(Session& session, const Flow& flow);

} // namespace NuxoTool

#endif
