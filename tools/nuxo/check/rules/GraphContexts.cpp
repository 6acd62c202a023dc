// SPDX-License-Identifier: Apache-2.0
#include "PortView.h"
#include "Text.h"
#include "TreeView.h"
#include "check/rules/GraphInspection.h"
#include "check/rules/GraphInspections.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <vector>

namespace NuxoTool {

using NUXO::GraphConfigNode;

namespace {

struct Member {
    const GraphConfigNode* group;
    int mode;
    bool isOfSetting;  ///< whether the setting gives the mode
    bool isOverridden; ///< an override, which is made for one group, is meant
};
using Members = std::vector<Member>;

Member memberOf(const GraphInspection& inspection, const GraphConfigNode& group, int mode)
{
    const GraphConfigNode* const own = inspection.inSettings(group);
    const bool isOfSetting = own != nullptr && optionalInteger(*own, NUXO_KEY_TUNING_MODE) == mode;
    const ModelNode* const declared = inspection.setting().descriptor.node(nameOf(group));
    const bool isOfDescriptor = declared != nullptr && declared->integer("tuning_mode") == mode;
    return {&group, mode, isOfSetting, !isOfSetting && !isOfDescriptor};
}

// The member whose mode the others should have: one of the most, or else one that the setting left alone.
const Member& usualOf(const Members& members)
{
    std::map<int, size_t> votes;
    for (const Member& member : members) ++votes[member.mode];
    const Member* usual = &members.front();
    for (const Member& member : members) {
        const size_t own = votes[member.mode];
        const size_t most = votes[usual->mode];
        if (own > most || (own == most && !member.isOfSetting && usual->isOfSetting)) usual = &member;
    }
    return *usual;
}

void inspectContext(GraphInspection& inspection, int context, const Members& members)
{
    if (std::none_of(members.begin(), members.end(), [](const Member& member) { return member.isOfSetting; }))
        return; // a rule for descriptors
    const Member& usual = usualOf(members);
    for (const Member& member : members) {
        if (member.mode == usual.mode || member.isOverridden) continue;
        const std::string text = printable(nameOf(*member.group)) + (member.isOfSetting ? " gets" : " keeps") +
                                 " tuning_mode " + std::to_string(member.mode) + ", but " +
                                 printable(nameOf(*usual.group)) + " of the same context " + std::to_string(context) +
                                 " has " + std::to_string(usual.mode) +
                                 "; expected one tuning_mode for all groups of a context";
        if (member.isOfSetting) {
            inspection.report(kContextTuningRule, *member.group, NUXO_KEY_TUNING_MODE, text);
        } else {
            inspection.report(kContextTuningRule, inspection.nearestInSettings(*member.group), 0, text);
        }
        inspection.note(*usual.group, NUXO_KEY_TUNING_MODE, "the other one");
    }
}

} // namespace

void inspectContexts(GraphInspection& inspection)
{
    std::map<int, Members> contexts;
    for (const GraphConfigNode* const group : inspection.groups().nodes) {
        const std::optional<int> context = optionalInteger(*group, NUXO_KEY_EXEC_CTX_ID);
        const std::optional<int> mode = optionalInteger(*group, NUXO_KEY_TUNING_MODE);
        if (context && mode) contexts[*context].push_back(memberOf(inspection, *group, *mode));
    }
    for (const auto& [context, members] : contexts) inspectContext(inspection, context, members);
}

} // namespace NuxoTool
