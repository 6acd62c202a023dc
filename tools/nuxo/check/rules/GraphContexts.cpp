// SPDX-License-Identifier: Apache-2.0
#include "PortView.h"
#include "Text.h"
#include "TreeView.h"
#include "check/rules/GraphInspection.h"
#include "check/rules/GraphInspections.h"

#include <map>

namespace NuxoTool {

using NUXO::GraphConfigNode;

namespace {

// Whether a setting gives the mode. An override, which is made for one group, is meant.
bool isOfSetting(const GraphInspection& inspection, const GraphConfigNode& group)
{
    const GraphConfigNode* const own = inspection.inSettings(group);
    return own != nullptr &&
           optionalInteger(*own, NUXO_KEY_TUNING_MODE) == optionalInteger(group, NUXO_KEY_TUNING_MODE);
}

} // namespace

void inspectContexts(GraphInspection& inspection)
{
    struct Known {
        const GraphConfigNode* group;
        int mode;
    };
    std::map<int, Known> contexts;
    for (const GraphConfigNode* const group : inspection.groups().nodes) {
        const std::optional<int> context = optionalInteger(*group, NUXO_KEY_EXEC_CTX_ID);
        const std::optional<int> mode = optionalInteger(*group, NUXO_KEY_TUNING_MODE);
        if (!context || !mode) continue;
        const Known& first = contexts.emplace(*context, Known{group, *mode}).first->second;
        if (first.mode == *mode) continue;
        const bool isFirst = !isOfSetting(inspection, *group);
        if (isFirst && !isOfSetting(inspection, *first.group)) continue; // a rule for descriptors
        const GraphConfigNode& changed = isFirst ? *first.group : *group;
        const GraphConfigNode& other = isFirst ? *group : *first.group;
        const int changedMode = isFirst ? first.mode : *mode;
        const int otherMode = isFirst ? *mode : first.mode;
        inspection.report(kContextTuningRule, changed, NUXO_KEY_TUNING_MODE,
                          printable(nameOf(changed)) + " gets tuning_mode " + std::to_string(changedMode) + ", but " +
                              printable(nameOf(other)) + " of the same context " + std::to_string(*context) + " has " +
                              std::to_string(otherMode) + "; expected one tuning_mode for all groups of a context");
        inspection.note(other, NUXO_KEY_TUNING_MODE, "the other one");
    }
}

} // namespace NuxoTool
