// SPDX-License-Identifier: Apache-2.0
#include "KernelFaults.h"

#include "PortView.h"
#include "TreeView.h"

#include <nuxo/camera/GraphCameraUtil.h>

#include <set>

namespace NuxoTool {

using NUXO::GraphCameraUtil;
using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;

namespace {

bool startsWith(const std::string& text, const std::string& start)
{
    return text.compare(0, start.size(), start) == 0;
}

using Kernels = std::vector<const GraphConfigNode*>;

// Ids run from 0, each once.
KernelFault wrongId(const Kernels& kernels)
{
    std::set<int> used;
    for (const GraphConfigNode* const kernel : kernels) {
        const int id = integerOf(*kernel, NUXO_KEY_ID, -1);
        const bool isInRange = id >= 0 && static_cast<size_t>(id) < kernels.size();
        if (!isInRange || !used.insert(id).second) return {kernel, NUXO_KEY_ID};
    }
    return {};
}

KernelFault wrongSinkPort(const Kernels& kernels)
{
    for (const GraphConfigNode* const kernel : kernels) {
        const int port = integerOf(*kernel, NUXO_KEY_SINK_PORT, -1);
        const bool isFound = GraphCameraUtil::nodeGetPortById(kernel, port) != nullptr ||
                             GraphCameraUtil::nodeGetPortById(kernel->getAncestor(), port) != nullptr;
        if (port >= 0 && !isFound) return {kernel, NUXO_KEY_SINK_PORT};
    }
    return {};
}

KernelFault emptyOutput(const Kernels& kernels)
{
    for (const GraphConfigNode* const kernel : kernels) {
        const IGraphConfig* const output = kernel->getDescendant(NUXO_KEY_OUTPUT);
        for (const uint32_t side : {uint32_t{NUXO_KEY_WIDTH}, uint32_t{NUXO_KEY_HEIGHT}}) {
            if (output != nullptr && integerOf(*output, side, 1) == 0) return {output, side};
        }
    }
    return {};
}

struct Fault {
    const char* line;
    KernelFault (*find)(const Kernels& kernels);
};

constexpr Fault kFaults[] = {
    {"Error: Bad kernel id(s)", wrongId},
    {"Kernel sink port id ", wrongSinkPort},
    {"Resolution history output width or height is 0", emptyOutput},
};

} // namespace

KernelFault faultBehind(const std::string& line, const IGraphConfig& group, const ProgramGroups& groups)
{
    for (const Fault& fault : kFaults) {
        if (!startsWith(line, fault.line)) continue;
        for (const GraphConfigNode* const candidate : groups.nodes) {
            if (streamOf(*candidate) != streamOf(group)) continue;
            const KernelFault found = fault.find(childrenOfType(*candidate, NUXO_KEY_KERNEL));
            if (found.item != nullptr) return found;
        }
    }
    return {};
}

} // namespace NuxoTool
