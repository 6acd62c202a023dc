// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_KERNEL_VIEW_H
#define NUXO_TOOL_KERNEL_VIEW_H

#include "GraphRequest.h"
#include "Session.h"

#include <nuxo/records/qv_isp_zmt_run_kernels.h>
#include <nuxo/tree/GraphConfigNode.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace NuxoTool {

/// A run-kernel record and the kernel that it stands for.
struct KernelView {
    /// What the kernel says of one output, and of its input for it.
    struct Output {
        std::string name;
        qv_isp_zmt_resolution_info resolution = {};
    };

    const NUXO::GraphConfigNode* item = nullptr; ///< null when no kernel of the group has the record's uuid
    std::string name;
    std::optional<int> id;
    qv_isp_zmt_run_kernels record = {}; ///< without the resolutions, which are the library's own
    std::vector<Output> outputs;        ///< none for a kernel without sizes
    std::optional<qv_isp_zmt_resolution_info> history;
};

/// The records of one program group.
struct GroupView {
    const NUXO::GraphConfigNode* item = nullptr;
    std::string name;
    std::optional<int> stream;
    uint32_t mode = 0;
    std::vector<KernelView> kernels;
};

/// The records of the program groups that `--stream` or `--group` select, by ascending stream and in the order of the graph.
/// What is wrong with them becomes findings; nothing is returned then.
std::vector<GroupView> viewKernels(Session& session, const BuiltGraph& built);

} // namespace NuxoTool

#endif
