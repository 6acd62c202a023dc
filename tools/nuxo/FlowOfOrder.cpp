// SPDX-License-Identifier: Apache-2.0
#include "FlowParts.h"
#include "PortView.h"
#include "RecordText.h"
#include "TreeView.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/kernels/ZmtTevUtils.h>

#include <algorithm>
#include <map>

namespace NuxoTool {

using NUXO::GraphCameraUtil;
using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;
using NUXO::ZmtTevUtils;
using Resolution = qv_isp_zmt_resolution_info;

namespace {

constexpr int kScaleBits = 10;

// Crops that no frame has wrap instead of overflowing.
void addScaled(int32_t& total, int32_t crop, int64_t scale)
{
    const auto product = static_cast<int64_t>(static_cast<uint64_t>(int64_t{crop}) * static_cast<uint64_t>(scale));
    total = static_cast<int32_t>(total + (product >> kScaleBits));
}

// What leaves a kernel, in the arithmetic of the library, which tells it only where another kernel receives it.
Resolution leaving(const Resolution& arriving, const Flow::Node& kernel)
{
    if (kernel.stated.empty() || arriving.output_width == 0 || arriving.output_height == 0) return arriving;
    const Resolution& own = kernel.stated.front().info;
    const qv_rectangle& crop = arriving.input_crop;
    const int64_t factor = int64_t{1} << kScaleBits;
    const int64_t horizontal =
        (int64_t{arriving.input_width} - crop.left - crop.right) * factor / arriving.output_width;
    const int64_t vertical =
        (int64_t{arriving.input_height} - crop.top - crop.bottom) * factor / arriving.output_height;
    Resolution result = arriving;
    addScaled(result.input_crop.left, own.input_crop.left, horizontal);
    addScaled(result.input_crop.top, own.input_crop.top, vertical);
    addScaled(result.input_crop.right, own.input_crop.right, horizontal);
    addScaled(result.input_crop.bottom, own.input_crop.bottom, vertical);
    result.output_width = own.output_width;
    result.output_height = own.output_height;
    return result;
}

// The groups of one stream share an array of records, group after group, each in the order of kernel ids.
class OrderedGroups {
public:
    OrderedGroups(FlowDraft& draft, ZmtTevUtils& utils) : mDraft(draft), mUtils(utils) {}

    void add(const GraphConfigNode& group)
    {
        addPorts(group);
        const std::vector<const GraphConfigNode*> kernels = kernelsOf(group);
        qv_isp_zmt_program_group records = {};
        const std::optional<int> stream = streamOf(group);
        if (stream) mUtils.getProgramGroup(*stream, records);
        const uint32_t base = mCounts[stream];
        mCounts[stream] += static_cast<uint32_t>(kernels.size());

        mPrevious = firstInput(group);
        mBranches.clear();
        for (const GraphConfigNode* const kernel : kernels) {
            const int64_t index = int64_t{base} + integerOf(*kernel, NUXO_KEY_ID, 0);
            const bool hasRecord = index >= 0 && index < records.kernel_count;
            addKernel(*kernel, hasRecord ? &records.run_kernels[index] : nullptr);
        }
    }

private:
    void addPorts(const GraphConfigNode& group)
    {
        for (const GraphConfigNode* const port : childrenOfType(group, NUXO_KEY_PORT)) {
            const bool isOutput = GraphCameraUtil::portGetDirection(port) != 0;
            mDraft.add(flowNode(isOutput ? Flow::Kind::OutputPort : Flow::Kind::InputPort, *port));
        }
    }

    static std::vector<const GraphConfigNode*> kernelsOf(const GraphConfigNode& group)
    {
        std::vector<const GraphConfigNode*> kernels = childrenOfType(group, NUXO_KEY_KERNEL);
        std::stable_sort(kernels.begin(), kernels.end(), [](const GraphConfigNode* left, const GraphConfigNode* right) {
            return integerOf(*left, NUXO_KEY_ID, 0) < integerOf(*right, NUXO_KEY_ID, 0);
        });
        return kernels;
    }

    // The port whose frames the kernels continue: the first that is fed.
    std::optional<size_t> firstInput(const GraphConfigNode& group) const
    {
        for (const GraphConfigNode* const port : childrenOfType(group, NUXO_KEY_PORT)) {
            const size_t index = mDraft.indexOf.at(port);
            IGraphConfig* peer = nullptr;
            const bool isInput = mDraft.flow.nodes[index].kind == Flow::Kind::InputPort;
            if (isInput && GraphCameraUtil::portGetPeer(port, &peer) == StatusOk) return index;
        }
        return std::nullopt;
    }

    void addKernel(const GraphConfigNode& kernel, const qv_isp_zmt_run_kernels* record)
    {
        Flow::Node node = flowNode(Flow::Kind::Kernel, kernel);
        node.mustFit = true;
        Resolution stated = {};
        const bool hasSizes = ZmtTevUtils::kernelHasResolutions(&kernel) &&
                              ZmtTevUtils::kernelGetResolutions(&kernel, stated) == StatusOk;
        if (hasSizes) node.stated.push_back({"", stated});
        if (record != nullptr && static_cast<int>(record->kernel_uuid) == integerOf(kernel, NUXO_KEY_PAL_UUID, 0)) {
            node.enable = record->enable;
            if (record->resolution_history != nullptr) node.arrives = *record->resolution_history;
        }
        const size_t index = mDraft.add(std::move(node));
        linkFromBefore(kernel, index);
        linkOnward(kernel, index);
        mPrevious = index;
    }

    // A kernel may take its frame from elsewhere than the kernel before it.
    std::optional<size_t> sourceOf(const GraphConfigNode& kernel) const
    {
        const std::string path = textOf(kernel, NUXO_KEY_SOURCE);
        if (path.empty()) return std::nullopt;
        const auto known = mDraft.indexOf.find(kernel.getRoot()->getDescendantByString(path));
        if (known == mDraft.indexOf.end()) return std::nullopt;
        return known->second;
    }

    void linkFromBefore(const GraphConfigNode& kernel, size_t index)
    {
        const std::optional<Resolution>& arrives = mDraft.flow.nodes[index].arrives;
        if (const std::optional<size_t> source = sourceOf(kernel)) {
            mDraft.link(*source, {index, "", arrives, false});
            return;
        }
        const auto branch = mBranches.find(integerOf(kernel, NUXO_KEY_RESTORE_POINT, -1));
        const std::optional<size_t> before = branch == mBranches.end() ? mPrevious : branch->second;
        if (!before) return;
        Flow::Node& from = mDraft.flow.nodes[*before];
        if (from.kind == Flow::Kind::InputPort && !from.arrives) from.arrives = arrives;
        mDraft.link(*before, {index, "", leavingOf(from), false});
    }

    // A kernel that feeds a port starts no branch, and the first that starts a branch counts.
    void linkOnward(const GraphConfigNode& kernel, size_t index)
    {
        const int branch = integerOf(kernel, NUXO_KEY_BRANCH_POINT, 0);
        if (const std::optional<size_t> port = portBehind(kernel)) {
            const std::optional<Resolution> history = leavingOf(mDraft.flow.nodes[index]);
            mDraft.flow.nodes[*port].arrives = history;
            mDraft.link(index, {*port, "", history, false});
        } else if (branch != 0) {
            mBranches.emplace(branch, index);
        }
    }

    std::optional<size_t> portBehind(const GraphConfigNode& kernel) const
    {
        const int id = integerOf(kernel, NUXO_KEY_SINK_PORT, -1);
        if (id < 0) return std::nullopt;
        for (const IGraphConfig* const holder :
             {static_cast<const IGraphConfig*>(&kernel), static_cast<const IGraphConfig*>(kernel.getAncestor())}) {
            const auto known = mDraft.indexOf.find(GraphCameraUtil::nodeGetPortById(holder, id));
            if (known != mDraft.indexOf.end()) return known->second;
        }
        return std::nullopt;
    }

    static std::optional<Resolution> leavingOf(const Flow::Node& node)
    {
        if (!node.arrives || node.kind != Flow::Kind::Kernel) return node.arrives;
        return leaving(*node.arrives, node);
    }

    FlowDraft& mDraft;
    ZmtTevUtils& mUtils;
    std::map<std::optional<int>, uint32_t> mCounts; // kernels of each stream so far
    std::optional<size_t> mPrevious;
    std::map<int, size_t> mBranches;
};

} // namespace

int addOrderedGroups(FlowDraft& draft, const BuiltGraph& built, const ProgramGroups& groups)
{
    ZmtTevUtils utils(true);
    const int status = utils.initTevUtils(built.graph);
    OrderedGroups ordered(draft, utils);
    for (const GraphConfigNode* const group : groups.nodes) ordered.add(*group);
    return status;
}

} // namespace NuxoTool
