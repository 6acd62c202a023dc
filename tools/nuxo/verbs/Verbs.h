// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_VERBS_VERBS_H
#define NUXO_TOOL_VERBS_VERBS_H

#include "Session.h"

namespace NuxoTool {

/// Finds what is wrong with graph files, lists the rules or explains one.
void runCheck(Session& session);

/// Tells which lines of the files had a say in a value of the graph of one setting.
void runExplain(Session& session);

/// Compares two files, settings or graphs by meaning.
void runDiff(Session& session);

/// Writes graph files in canonical form.
void runFmt(Session& session);

/// Writes an XML schema of graph files.
void runSchema(Session& session);

/// Shows the tree of one graph file.
void runDump(Session& session);

/// Lists the settings that match the criteria.
void runQuery(Session& session);

/// Builds the graph of one setting and shows it.
void runBuild(Session& session);

/// Builds the graph of one setting and lists its ports.
void runPorts(Session& session);

/// Builds the graph of one setting and shows its execution contexts or streams, and what connects them.
void runContexts(Session& session);

/// Builds the graph of one setting and shows the run-kernel records of its program groups.
void runKernels(Session& session);

/// Builds the graph of one setting and tells how size and crop change on the way to the sinks of one stream.
void runHistory(Session& session);

/// Draws the graph of one setting, of all settings of a file, or the inside of one stream.
void runDraw(Session& session);

/// Builds the graph of one setting and tells the frame parameters of its sensor or of a port.
void runFrameParams(Session& session);

/// Shows the table of pixel formats, or one of them with the geometry of its buffers.
void runFormats(Session& session);

} // namespace NuxoTool

#endif
