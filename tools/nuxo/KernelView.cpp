// SPDX-License-Identifier: Apache-2.0
#include "KernelView.h"

#include "AnalysisFindings.h"
#include "LibraryFindings.h"
#include "PortView.h"
#include "ProgramGroups.h"
#include "RecordText.h"
#include "TreeView.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/kernels/ZmtTevUtils.h>

#include <algorithm>
#include <map>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::ZmtTevUtils;

namespace {

std::vector<const GraphConfigNode*> selectedGroups(const Arguments& arguments, const ProgramGroups& groups)
{
    std::vector<const GraphConfigNode*> selected;
    for (const GraphConfigNode* const group : groups.nodes) {
        const bool isSelected = (!arguments.stream || streamOf(*group) == arguments.stream) &&
                                (!arguments.group || nameOf(*group) == *arguments.group);
        if (isSelected) selected.push_back(group);
    }
    std::stable_sort(selected.begin(), selected.end(), [](const GraphConfigNode* left, const GraphConfigNode* right) {
        return streamOf(*left) < streamOf(*right);
    });
    return selected;
}

// Gives records of one group to its kernels: first by id, which numbers the records, and by uuid where ids do not tell.
class KernelsOfGroup {
public:
    explicit KernelsOfGroup(const GraphConfigNode& group) : mItems(childrenOfType(group, NUXO_KEY_KERNEL))
    {
        std::stable_sort(mItems.begin(), mItems.end(), [](const GraphConfigNode* left, const GraphConfigNode* right) {
            return integerOf(*left, NUXO_KEY_ID, 0) < integerOf(*right, NUXO_KEY_ID, 0);
        });
    }

    const GraphConfigNode* take(int number, uint32_t uuid)
    {
        const auto isOf = [uuid](const GraphConfigNode* item) {
            return static_cast<uint32_t>(integerOf(*item, NUXO_KEY_PAL_UUID, 0)) == uuid;
        };
        auto found = std::find_if(mItems.begin(), mItems.end(), [&](const GraphConfigNode* item) {
            return isOf(item) && integerOf(*item, NUXO_KEY_ID, 0) == number;
        });
        if (found == mItems.end()) found = std::find_if(mItems.begin(), mItems.end(), isOf);
        if (found == mItems.end()) return nullptr;
        const GraphConfigNode* const item = *found;
        mItems.erase(found);
        return item;
    }

private:
    std::vector<const GraphConfigNode*> mItems;
};

// The records do not say which output is which; they stand in the order of the outputs' names.
std::vector<KernelView::Output> outputsOf(const qv_isp_zmt_run_kernels& record, const GraphConfigNode* item)
{
    std::vector<KernelView::Output> outputs;
    if (record.resolution_info == nullptr) return outputs;
    std::map<std::string, qv_isp_zmt_resolution_info> named;
    if (item != nullptr && ZmtTevUtils::kernelHasResolutions(item)) ZmtTevUtils::kernelGetResolutions(item, named);
    const uint32_t count = std::max(record.output_count, 1U);
    auto name = named.begin();
    for (uint32_t i = 0; i < count; ++i) {
        const bool isNamed = named.size() == count;
        outputs.push_back({isNamed ? (name++)->first : std::to_string(i), record.resolution_info[i]});
    }
    const bool isEmpty = std::all_of(outputs.begin(), outputs.end(),
                                     [](const KernelView::Output& output) { return isBlank(output.resolution); });
    if (isEmpty) outputs.clear();
    return outputs;
}

KernelView viewKernel(const qv_isp_zmt_run_kernels& record, const GraphConfigNode* item)
{
    KernelView view;
    view.item = item;
    if (item != nullptr) view.name = nameOf(*item);
    if (item != nullptr) view.id = optionalInteger(*item, NUXO_KEY_ID);
    view.outputs = outputsOf(record, item);
    if (record.resolution_history != nullptr && !isBlank(*record.resolution_history))
        view.history = *record.resolution_history;
    view.record = record;
    view.record.resolution_info = nullptr;
    view.record.resolution_history = nullptr;
    return view;
}

GroupView viewGroup(const GraphConfigNode& group, const qv_isp_zmt_program_group& records)
{
    GroupView view;
    view.item = &group;
    view.name = nameOf(group);
    view.stream = streamOf(group);
    view.mode = records.operation_mode;
    KernelsOfGroup kernels(group);
    for (uint32_t i = 0; i < records.kernel_count; ++i) {
        const qv_isp_zmt_run_kernels& record = records.run_kernels[i];
        view.kernels.push_back(viewKernel(record, kernels.take(static_cast<int>(i), record.kernel_uuid)));
    }
    return view;
}

} // namespace

std::vector<GroupView> viewKernels(Session& session, const BuiltGraph& built)
{
    const ProgramGroups groups = programGroupsOf(*built.graph);
    if (!checkStream(session, *built.graph) || !checkGroup(session, groups)) return {};

    takeLibraryLog();
    const size_t errors = session.findings.errorCount();
    ZmtTevUtils utils(true);
    const int status = utils.initTevUtils(built.graph);
    reportAnalysis(session, built, status, true);
    if (status != StatusOk) return {};

    std::vector<GroupView> views;
    for (const GraphConfigNode* const group : selectedGroups(session.arguments, groups)) {
        qv_isp_zmt_program_group records = {};
        const int groupStatus = utils.getProgramGroup(group, records);
        const LogContext context = {"kernels", group, "", 0};
        if (groupStatus != StatusOk) {
            if (session.findings.errorCount() > errors) {
                takeLibraryLog(); // a consequence
                continue;
            }
            reportFailure(session, context, "reading the records of " + nameOf(*group), groupStatus,
                          "a program group with records");
            continue;
        }
        reportLogLines(session, context, false); // the library warns of each group without a tuning mode
        views.push_back(viewGroup(*group, records));
    }
    return views;
}

} // namespace NuxoTool
