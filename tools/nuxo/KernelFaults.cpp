// SPDX-License-Identifier: Apache-2.0
#include "KernelFaults.h"

#include "PortView.h"
#include "Text.h"
#include "TreeView.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/kernels/ZmtTevUtils.h>

#include <algorithm>
#include <map>
#include <set>

namespace NuxoTool {

using NUXO::GraphCameraUtil;
using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;
using NUXO::ZmtTevUtils;

namespace {

using Kernels = std::vector<const GraphConfigNode*>;

Kernels kernelsOf(const GraphConfigNode& group)
{
    return childrenOfType(group, NUXO_KEY_KERNEL);
}

// Ids run from 0, each once.
KernelFault wrongId(const GraphConfigNode& group)
{
    const Kernels kernels = kernelsOf(group);
    std::set<int> used;
    for (const GraphConfigNode* const kernel : kernels) {
        const int id = integerOf(*kernel, NUXO_KEY_ID, -1);
        const bool isInRange = id >= 0 && static_cast<size_t>(id) < kernels.size();
        if (!isInRange || !used.insert(id).second) return {kernel, NUXO_KEY_ID};
    }
    return {};
}

KernelFault without(const GraphConfigNode& group, uint32_t key)
{
    for (const GraphConfigNode* const kernel : kernelsOf(group)) {
        if (!optionalInteger(*kernel, key)) return {kernel};
    }
    return {};
}

KernelFault withoutId(const GraphConfigNode& group)
{
    return without(group, NUXO_KEY_ID);
}

KernelFault withoutUuid(const GraphConfigNode& group)
{
    return without(group, NUXO_KEY_PAL_UUID);
}

KernelFault wrongSinkPort(const GraphConfigNode& group)
{
    for (const GraphConfigNode* const kernel : kernelsOf(group)) {
        const int port = integerOf(*kernel, NUXO_KEY_SINK_PORT, -1);
        const bool isFound = GraphCameraUtil::nodeGetPortById(kernel, port) != nullptr ||
                             GraphCameraUtil::nodeGetPortById(&group, port) != nullptr;
        if (port >= 0 && !isFound) return {kernel, NUXO_KEY_SINK_PORT};
    }
    return {};
}

KernelFault emptyOutput(const GraphConfigNode& group)
{
    for (const GraphConfigNode* const kernel : kernelsOf(group)) {
        const IGraphConfig* const output = kernel->getDescendant(NUXO_KEY_OUTPUT);
        for (const uint32_t side : {uint32_t{NUXO_KEY_WIDTH}, uint32_t{NUXO_KEY_HEIGHT}}) {
            if (output != nullptr && integerOf(*output, side, 1) == 0) return {output, side};
        }
    }
    return {};
}

// A branch starts at a kernel ahead of the one that goes on from there.
KernelFault restoreWithoutBranch(const GraphConfigNode& group)
{
    Kernels kernels = kernelsOf(group);
    std::stable_sort(kernels.begin(), kernels.end(), [](const GraphConfigNode* left, const GraphConfigNode* right) {
        return integerOf(*left, NUXO_KEY_ID, 0) < integerOf(*right, NUXO_KEY_ID, 0);
    });
    std::set<int> branches;
    for (const GraphConfigNode* const kernel : kernels) {
        const std::optional<int> restored = optionalInteger(*kernel, NUXO_KEY_RESTORE_POINT);
        if (restored && branches.count(*restored) == 0) return {kernel, NUXO_KEY_RESTORE_POINT};
        branches.insert(integerOf(*kernel, NUXO_KEY_BRANCH_POINT, 0));
    }
    return {};
}

KernelFault linkWithoutEnd(const GraphConfigNode& group)
{
    for (const GraphConfigNode* const link : linksOf(group)) {
        if (textOf(*link, NUXO_KEY_SOURCE).empty() || textOf(*link, NUXO_KEY_DESTINATION).empty())
            return {link, 0, "a source and a destination"};
    }
    return {};
}

// The side that is there tells which file gives the size.
KernelFault incompleteSize(const IGraphConfig& stage)
{
    const bool hasWidth = optionalInteger(stage, NUXO_KEY_WIDTH).has_value();
    const bool hasHeight = optionalInteger(stage, NUXO_KEY_HEIGHT).has_value();
    if (hasWidth && hasHeight) return {};
    const uint32_t stated = hasWidth ? uint32_t{NUXO_KEY_WIDTH} : hasHeight ? uint32_t{NUXO_KEY_HEIGHT} : 0;
    return {&stage, stated, "both width and height"};
}

KernelFault incompleteSizes(const GraphConfigNode& kernel)
{
    std::map<std::string, qv_isp_zmt_resolution_info> sizes;
    const bool states = ZmtTevUtils::kernelHasResolutions(&kernel);
    if (!states || ZmtTevUtils::kernelGetResolutions(&kernel, sizes) == StatusOk) return {};
    for (const uint32_t key : {uint32_t{NUXO_KEY_INPUT}, uint32_t{NUXO_KEY_OUTPUT}}) {
        const IGraphConfig* const stage = kernel.getDescendant(key);
        if (stage == nullptr) return {&kernel, 0, "an input and an output with width and height"};
        const KernelFault fault = incompleteSize(*stage);
        if (fault.item != nullptr) return fault;
    }
    return {};
}

KernelFault kernelWithIncompleteSizes(const GraphConfigNode& group)
{
    for (const GraphConfigNode* const kernel : kernelsOf(group)) {
        const KernelFault fault = incompleteSizes(*kernel);
        if (fault.item != nullptr) return fault;
    }
    return {};
}

// The capture back end that the first port of a source leads to.
const GraphConfigNode* backEndOf(const IGraphConfig& source)
{
    IGraphConfig* peer = nullptr;
    const IGraphConfig* const port = source.getDescendantByString("port_0");
    if (port == nullptr || GraphCameraUtil::portGetPeer(port, &peer) != StatusOk) return nullptr;
    return dynamic_cast<const GraphConfigNode*>(peer->getAncestor());
}

KernelFault backEndOutput(const GraphConfigNode& source)
{
    const GraphConfigNode* const backEnd = backEndOf(source);
    const IGraphConfig* const output = backEnd == nullptr ? nullptr : backEnd->getDescendant(NUXO_KEY_OUTPUT);
    return output == nullptr ? KernelFault() : incompleteSize(*output);
}

// Of the formatter, which is a part of the back end.
KernelFault backEndInput(const GraphConfigNode& source)
{
    const GraphConfigNode* const backEnd = backEndOf(source);
    if (backEnd == nullptr) return {};
    TreeView view;
    for (const ChildView& part : view.children(*backEnd)) {
        const IGraphConfig* const input = part.node->getDescendant(NUXO_KEY_INPUT);
        const KernelFault fault = input == nullptr ? KernelFault() : incompleteSize(*input);
        if (fault.item != nullptr) return fault;
    }
    return {};
}

struct Fault {
    const char* line;
    bool isOfNamed; ///< whether the element that is named is looked into, otherwise each group of its stream
    KernelFault (*find)(const GraphConfigNode& place);
};

constexpr Fault kFaults[] = {
    {"Error: Bad kernel id(s)", false, wrongId},
    {"Couldn't get kernel id", false, withoutId},
    {"ERROR: Couldn't get pal_uuid", false, withoutUuid},
    {"Kernel sink port id ", false, wrongSinkPort},
    {"Resolution history output width or height is 0", false, emptyOutput},
    {"Found restore_point attribute, but no branch points", false, restoreWithoutBranch},
    {"Failed find port node  from PG", false, linkWithoutEnd},
    {"Retrieval of resolution info for RCB kernel ", true, incompleteSizes},
    {"Creating kernel list for exec ctx id ", false, kernelWithIncompleteSizes},
    {"Failed to get csi be output dimensions", true, backEndOutput},
    {"Failed to get input dimensions and crop", true, backEndInput},
};

// The stream of the program group that holds an element.
std::optional<int> streamAround(const IGraphConfig* item)
{
    for (; item != nullptr; item = item->getAncestor()) {
        if (const std::optional<int> stream = streamOf(*item)) return stream;
    }
    return std::nullopt;
}

KernelFault findIn(const Fault& fault, const IGraphConfig* named, const ProgramGroups& groups)
{
    if (fault.isOfNamed) {
        const auto* const place = dynamic_cast<const GraphConfigNode*>(named);
        return place == nullptr ? KernelFault() : fault.find(*place);
    }
    for (const GraphConfigNode* const group : groups.nodes) {
        if (named != nullptr && streamOf(*group) != streamAround(named)) continue;
        const KernelFault found = fault.find(*group);
        if (found.item != nullptr) return found;
    }
    return {};
}

} // namespace

KernelFault faultBehind(const std::string& line, const IGraphConfig* named, const ProgramGroups& groups)
{
    for (const Fault& fault : kFaults) {
        if (startsWith(line, fault.line)) return findIn(fault, named, groups);
    }
    return {};
}

std::vector<KernelFault> halfSizesIn(const ProgramGroups& groups)
{
    std::vector<KernelFault> faults;
    for (const GraphConfigNode* const group : groups.nodes) {
        for (const GraphConfigNode* const kernel : kernelsOf(*group)) {
            for (const uint32_t key : {uint32_t{NUXO_KEY_INPUT}, uint32_t{NUXO_KEY_OUTPUT}}) {
                const IGraphConfig* const stage = kernel->getDescendant(key);
                const KernelFault fault = stage == nullptr ? KernelFault() : incompleteSize(*stage);
                if (fault.attribute != 0) faults.push_back(fault);
            }
        }
    }
    return faults;
}

std::vector<KernelFault> linksWithoutPortIn(const ProgramGroups& groups)
{
    std::vector<KernelFault> faults;
    for (const GraphConfigNode* const group : groups.nodes) {
        for (const GraphConfigNode* const link : linksOf(*group)) {
            for (const uint32_t key : {uint32_t{NUXO_KEY_SOURCE}, uint32_t{NUXO_KEY_DESTINATION}}) {
                const std::string end = textOf(*link, key);
                const IGraphConfig* const item =
                    end.find(':') == std::string::npos ? group->getDescendantByString(end) : nullptr;
                if (item != nullptr && textOf(*item, NUXO_KEY_TYPE) != "port") faults.push_back({link, key, ""});
            }
        }
    }
    return faults;
}

} // namespace NuxoTool
