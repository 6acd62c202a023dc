// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_CRITERIA_H
#define NUXO_TOOL_CRITERIA_H

#include "Session.h"

#include <nuxo/query/GraphQueryManager.h>
#include <nuxo/tree/GraphConfigNode.h>

#include <string>
#include <vector>

namespace NuxoTool {

/// What a query looks for.
struct Criteria {
    NUXO::GraphQueryManager::SearchItems items;
    std::string text; ///< as typed, for messages
};

/// Reports every name of @p path, names joined by ':', that is empty or names no element or attribute of the files.
///
/// @param argument  the text of the command line that starts with the path
/// @param rule      of findings about empty names
/// @return          whether all names are known
bool checkNames(const std::string& argument, const std::string& path, const char* rule, Findings& findings);

/// The criteria of the command line, `--key` included. Everything wrong with them is reported as a usage error. Names are
/// looked up in the vocabulary, so read the files first.
Criteria readCriteria(Session& session);

/// The `settings` nodes that match, with `any` those that match one criterion. Reports when none does, and what the settings
/// hold instead.
std::vector<NUXO::IGraphConfig*> findSettings(Session& session, NUXO::GraphQueryManager& manager,
                                              const NUXO::GraphConfigNode& settingsRoot, const Criteria& criteria);

} // namespace NuxoTool

#endif
