// SPDX-License-Identifier: Apache-2.0
#include "KernelFaults.h"
#include "PortView.h"
#include "Text.h"
#include "TreeView.h"
#include "check/rules/GraphInspections.h"
#include "check/rules/GraphPorts.h"
#include "check/rules/GraphSizes.h"

#include <nuxo/tree/NodeIterator.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_set>
#include <vector>

namespace NuxoTool {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

namespace {

// The element that states the size of one output of a kernel.
const IGraphConfig* outputOf(const IGraphConfig& kernel, const std::string& name)
{
    const IGraphConfig* const output = kernel.getDescendant(NUXO_KEY_OUTPUT);
    if (output == nullptr || optionalInteger(*output, NUXO_KEY_WIDTH)) return output;
    const IGraphConfig* const part = output->getDescendantByString(name);
    return part == nullptr ? output : part;
}

// Follows sizes along the flow. As in the library, only kernels that change sizes do; what others state must be what
// arrives.
class ChainInspection {
public:
    explicit ChainInspection(GraphInspection& inspection)
        : mInspection(inspection), mFlow(inspection.flow()), mArriving(mFlow.nodes.size()), mLeadsOn(mFlow.nodes.size())
    {
    }

    void run()
    {
        const std::vector<size_t> order = mFlow.order();
        for (auto index = order.rbegin(); index != order.rend(); ++index) mLeadsOn[*index] = leadsOn(*index);
        inspectHalfSizes();
        for (const size_t index : order) pass(index);
        reportMissingSizes();
    }

private:
    bool leadsOn(size_t index) const
    {
        const Flow::Node& node = mFlow.nodes[index];
        if (node.kind == Flow::Kind::OutputPort) return !node.isDisabled();
        return std::any_of(node.links.begin(), node.links.end(),
                           [this](const Flow::Link& link) { return mLeadsOn[link.to]; });
    }

    // The library switches off what leads nowhere, as far as it gets.
    bool isOff(size_t index) const
    {
        return mFlow.nodes[index].isDisabled() || (!mFlow.isComplete && !mLeadsOn[index]);
    }

    void inspectHalfSizes()
    {
        for (const KernelFault& fault : halfSizesIn(mInspection.groups())) {
            const IGraphConfig& kernel = *fault.item->getAncestor();
            const std::optional<size_t> index = mInspection.inFlow(kernel);
            if (index && isOff(*index)) continue;
            mInspection.report(kKernelSizeRule, *fault.item, fault.attribute,
                               nameOfKernel(kernel) + " states half of its " + nameOf(*fault.item) +
                                   " size, which does not count; expected " + fault.expected);
            mInspection.explain(kernel);
        }
    }

    // One end alone, which does not count.
    void inspectHalfKernel(const IGraphConfig& kernel)
    {
        const IGraphConfig* const input = kernel.getDescendant(NUXO_KEY_INPUT);
        const IGraphConfig* const output = kernel.getDescendant(NUXO_KEY_OUTPUT);
        const bool takes = input != nullptr && extentOf(*input);
        const bool gives = output != nullptr && statesAnySize(*output);
        if (takes == gives || mInspection.isExplained(kernel)) return;
        const IGraphConfig& stated = takes ? *input : *output;
        mInspection.report(kKernelSizeRule, stated, NUXO_KEY_WIDTH,
                           nameOfKernel(kernel) + " states the size of its " + (takes ? "input" : "output") +
                               " alone, which does not count; expected an input and an output, each with width and "
                               "height");
        mInspection.explain(kernel);
    }

    static bool statesAnySize(const IGraphConfig& output)
    {
        if (extentOf(output)) return true;
        NUXO::NodeIterator parts(&output);
        while (const IGraphConfig* const part = parts.iterateDescendants()) {
            if (extentOf(*part)) return true;
        }
        return false;
    }

    void pass(size_t index)
    {
        const Flow::Node& node = mFlow.nodes[index];
        Arriving& arriving = mArriving[index];
        // Frames take another way there than they should.
        const IGraphConfig* const group = node.item->getAncestor();
        if (group != nullptr && mInspection.isExplained(*group)) arriving = {};
        switch (node.kind) {
        case Flow::Kind::SourceStage: start(node, arriving); break;
        case Flow::Kind::Kernel: passKernel(index, arriving); return;
        case Flow::Kind::OutputPort: inspectPort(node, arriving); break;
        case Flow::Kind::Sink:
        case Flow::Kind::Outside: return;
        default: break;
        }
        // What no kernel feeds is not fed by the source either.
        const bool isSource = node.kind == Flow::Kind::SourceStage;
        for (const Flow::Link& link : node.links) {
            if (!isSource || mFlow.nodes[link.to].kind != Flow::Kind::OutputPort) offer(link, arriving);
        }
    }

    void start(const Flow::Node& stage, Arriving& arriving) const
    {
        const qv_isp_zmt_resolution_info& info = stage.stated.front().info;
        const IGraphConfig* const output = stage.item->getDescendant(NUXO_KEY_OUTPUT);
        arriving = Arriving({info.output_width, info.output_height}, output == nullptr ? stage.item : output);
        if (output != nullptr) allowAlso(*output, arriving);
    }

    void allowAlso(const IGraphConfig& item, Arriving& arriving) const
    {
        const std::optional<Extent> other = mInspection.allowedAt(item);
        if (other) arriving.allow(*other);
    }

    // Where several meet the library takes the largest, or else the first.
    void offer(const Flow::Link& link, const Arriving& leaving)
    {
        if (link.isFeedback || !leaving.isKnown()) return;
        Arriving& there = mArriving[link.to];
        const bool isLarger = there.isKnown() && leaving.first().width > there.first().width &&
                              leaving.first().height > there.first().height;
        if (!there.isKnown() || isLarger) there = leaving;
    }

    // In generation 5 each kernel that states sizes changes them.
    bool changesSize(const Flow::Node& kernel) const { return kernel.mustFit; }

    void passKernel(size_t index, Arriving& arriving)
    {
        const Flow::Node& kernel = mFlow.nodes[index];
        if (!isOff(index)) inspectHalfKernel(*kernel.item);
        const bool isWhole = !kernel.stated.empty() && !mInspection.isExplained(*kernel.item);
        if (isOff(index) || !isWhole) {
            const bool isMissing = changesSize(kernel) && kernel.stated.empty() && mFlow.isChecked && !isOff(index) &&
                                   arriving.isKnown() && !mInspection.isExplained(*kernel.item);
            if (isMissing) mWithoutSize[kernel.item->getAncestor()].push_back(kernel.item);
            if (isMissing || mInspection.isExplained(*kernel.item)) arriving = {}; // anything may leave it
            for (const Flow::Link& link : kernel.links) offer(link, arriving);
            return;
        }
        inspectInput(kernel, arriving);
        if (changesSize(kernel)) {
            passOutputs(kernel, arriving);
        } else {
            inspectUnchanged(kernel, arriving);
            for (const Flow::Link& link : kernel.links) offer(link, arriving);
        }
    }

    void inspectInput(const Flow::Node& kernel, Arriving& arriving)
    {
        const qv_isp_zmt_resolution_info& info = kernel.stated.front().info;
        const Extent stated = {info.input_width, info.input_height};
        const IGraphConfig* const input = kernel.item->getDescendant(NUXO_KEY_INPUT);
        const IGraphConfig& place = input == nullptr ? *kernel.item : *input;
        if (!arriving.fits(stated)) {
            const std::string expected = extentText(arriving.first());
            mMismatched.insert(kernel.item);
            reportSize(mInspection, kBrokenChainRule, place, stated, arriving,
                       "kernel " + nameOfKernel(*kernel.item) + " takes " + extentText(stated) + ", but " + expected +
                           " arrives; expected " + expected);
        }
        arriving.take(stated, &place);
    }

    void passOutputs(const Flow::Node& kernel, const Arriving& arriving)
    {
        for (const Flow::Link& link : kernel.links) {
            const auto stated = std::find_if(kernel.stated.begin(), kernel.stated.end(),
                                             [&link](const auto& each) { return each.output == link.output; });
            const bool isOnly = kernel.stated.size() == 1 && !mFlow.isChecked; // there links have no names
            if (stated == kernel.stated.end() && !isOnly) {
                offer(link, arriving);
                continue;
            }
            const Flow::Resolution& output = isOnly ? kernel.stated.front() : *stated;
            offer(link, Arriving(leavingAt(output.info), outputOf(*kernel.item, output.output)));
        }
    }

    Extent leavingAt(const qv_isp_zmt_resolution_info& info) const
    {
        if (!mFlow.isChecked) return {info.output_width, info.output_height};
        const int64_t width = int64_t{info.output_width} - info.output_crop.left - info.output_crop.right;
        const int64_t height = int64_t{info.output_height} - info.output_crop.top - info.output_crop.bottom;
        return {static_cast<int>(width), static_cast<int>(height)};
    }

    void inspectUnchanged(const Flow::Node& kernel, Arriving& arriving)
    {
        const qv_isp_zmt_resolution_info& info = kernel.stated.front().info;
        const Extent taken = {info.input_width, info.input_height};
        const Extent given = {info.output_width, info.output_height};
        const bool isTold = !arriving.isKnown() || mMismatched.count(kernel.item) > 0; // the input is the wrong one
        if (taken == given || (isTold && arriving.fits(given))) return;
        const IGraphConfig* const output = outputOf(*kernel.item, kernel.stated.front().output);
        const IGraphConfig& place = output == nullptr ? *kernel.item : *output;
        mInspection.report(kSizeWithoutRcbRule, place, wrongSide(given, taken),
                           "kernel " + nameOfKernel(*kernel.item) + " takes " + extentText(taken) + " and gives " +
                               extentText(given) +
                               ", but it does not have rcb=\"1\", so that the size stays; expected " +
                               extentText(taken) + ", or rcb=\"1\" in the descriptor");
        arriving.allow(given);
    }

    void inspectPort(const Flow::Node& port, Arriving& arriving)
    {
        const std::optional<Extent> stated = extentOf(*port.item);
        if (!stated || port.isDisabled() || !carriesPixels(*port.item)) return;
        if (!arriving.fits(*stated)) {
            const std::string expected = extentText(arriving.first());
            reportSize(mInspection, kSizeMismatchRule, *port.item, *stated, arriving,
                       "port " + printable(endName(*port.item)) + " is " + extentText(*stated) + ", but " + expected +
                           " arrives there; expected " + expected);
        }
        arriving.take(*stated, port.item);
        allowAlso(*port.item, arriving);
    }

    // All of a group are one finding: what is missing has no place of its own.
    void reportMissingSizes()
    {
        for (const GraphConfigNode* const group : mInspection.groups().nodes) {
            const auto found = mWithoutSize.find(group);
            if (found == mWithoutSize.end()) continue;
            const std::vector<const IGraphConfig*>& kernels = found->second;
            std::string names;
            for (const IGraphConfig* const kernel : kernels)
                names += (names.empty() ? "" : ", ") + nameOfKernel(*kernel);
            const bool isOne = kernels.size() == 1;
            const IGraphConfig& place = mInspection.nearestInSettings(isOne ? *kernels.front() : *group);
            mInspection.report(kKernelSizeRule, place, 0,
                               names + (isOne ? " changes" : " change") +
                                   " the size (rcb), but the setting states none" +
                                   "; expected an input and an output, each with width and height");
            for (const IGraphConfig* const kernel : kernels) mInspection.explain(*kernel);
        }
    }

    static std::string nameOfKernel(const IGraphConfig& kernel)
    {
        return printable(nameOf(*kernel.getAncestor())) + ':' + printable(nameOf(kernel));
    }

    GraphInspection& mInspection;
    const Flow& mFlow;
    std::vector<Arriving> mArriving;
    std::vector<bool> mLeadsOn;                          // whether frames get to a port that is on
    std::unordered_set<const IGraphConfig*> mMismatched; // kernels; only looked up
    std::map<const IGraphConfig*, std::vector<const IGraphConfig*>> mWithoutSize; // by group; only looked up
};

} // namespace

void inspectChains(GraphInspection& inspection)
{
    ChainInspection(inspection).run();
}

} // namespace NuxoTool
