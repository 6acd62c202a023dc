// SPDX-License-Identifier: Apache-2.0
#include "support/KernelRules.h"

#include "support/Fuzzing.h"
#include "support/PortFacts.h"

#include <nuxo/nuxo.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <vector>

namespace fuzzing {

namespace {

using NUXO::GraphUtil;
using NUXO::IGraphConfig;
using NUXO::InnerGraphNode;
using Resolution = qv_isp_zmt_resolution_info;

constexpr int kKernelDisabled = 2;

bool isSame(const Resolution& a, const Resolution& b)
{
    static_assert(sizeof(Resolution) == 12 * sizeof(int32_t), "no padding");
    return std::memcmp(&a, &b, sizeof a) == 0;
}

bool isZero(const Resolution& resolution)
{
    return isSame(resolution, Resolution{});
}

bool isUnreached(const qv_isp_zmt_run_kernels& record)
{
    return record.kernel_uuid == 0 && record.enable == 0 && record.stream_id == 0;
}

bool isReserveZero(const qv_isp_zmt_run_kernels& record)
{
    return std::all_of(std::begin(record.reserved), std::end(record.reserved), [](uint8_t byte) { return byte == 0; });
}

// Numbers whose products fit: what overflow comes to is none of these rules.
bool isUsual(const Resolution& resolution)
{
    constexpr int32_t limit = 1 << 20;
    const qv_rectangle& crop = resolution.input_crop;
    const qv_rectangle& outputCrop = resolution.output_crop;
    const int32_t numbers[] = {resolution.input_width,
                               resolution.input_height,
                               resolution.output_width,
                               resolution.output_height,
                               crop.left,
                               crop.top,
                               crop.right,
                               crop.bottom,
                               outputCrop.left,
                               outputCrop.top,
                               outputCrop.right,
                               outputCrop.bottom};
    return std::all_of(std::begin(numbers), std::end(numbers),
                       [](int32_t number) { return number > -limit && number < limit; });
}

int32_t scaled(int32_t crop, int64_t factor)
{
    const int64_t product = crop * factor;
    return static_cast<int32_t>(product >= 0 ? product / 1024 : -((-product + 1023) / 1024)); // rounded down
}

// What a frame with this history has gone through behind a kernel with these resolutions.
Resolution behind(const Resolution& history, const Resolution& kernel)
{
    const qv_rectangle& crop = history.input_crop;
    const int64_t horizontal = int64_t{history.input_width - crop.left - crop.right} * 1024 / history.output_width;
    const int64_t vertical = int64_t{history.input_height - crop.top - crop.bottom} * 1024 / history.output_height;
    Resolution result = history;
    result.input_crop.left += scaled(kernel.input_crop.left, horizontal);
    result.input_crop.right += scaled(kernel.input_crop.right, horizontal);
    result.input_crop.top += scaled(kernel.input_crop.top, vertical);
    result.input_crop.bottom += scaled(kernel.input_crop.bottom, vertical);
    result.output_width = kernel.output_width - kernel.output_crop.left - kernel.output_crop.right;
    result.output_height = kernel.output_height - kernel.output_crop.top - kernel.output_crop.bottom;
    return result;
}

std::vector<std::string> outputsOf(const InnerGraphNode& node)
{
    std::set<std::string> outputs;
    for (const InnerGraphNode::Link& link : node.links) outputs.insert(link.output);
    return {outputs.begin(), outputs.end()};
}

// One after the other, in the order of their names.
const Resolution& resolutionFor(const InnerGraphNode& node, const std::string& output)
{
    const std::vector<std::string> outputs = outputsOf(node);
    const auto place = std::find(outputs.begin(), outputs.end(), output) - outputs.begin();
    require(static_cast<size_t>(place) < node.record->output_count, "each output has a resolution");
    return node.record->resolution_info[place];
}

void checkChangedHistories(const InnerGraphNode& node)
{
    const qv_isp_zmt_run_kernels& record = *node.record;
    const Resolution& history = *record.resolution_history;
    for (uint32_t i = 0; i < record.output_count; ++i) {
        require(record.resolution_info[i].input_width == history.output_width &&
                    record.resolution_info[i].input_height == history.output_height,
                "a kernel that changes the size takes in what arrives");
    }
    for (const InnerGraphNode::Link& link : node.links) {
        if (!link.hasHistory) continue;
        const Resolution& resolution = resolutionFor(node, link.output);
        if (!isUsual(history) || !isUsual(resolution)) continue;
        require(isSame(link.history, behind(history, resolution)),
                "a history is composed of what arrives and the kernel");
    }
}

void checkHistories(const InnerGraphNode& node)
{
    const qv_isp_zmt_run_kernels& record = *node.record;
    const bool changesSize = integerOf(node.node, NUXO_KEY_RCB).value_or(0) != 0;
    if (record.resolution_info != nullptr) {
        const size_t outputs = changesSize ? std::max<size_t>(outputsOf(node).size(), 1) : 1;
        require(record.output_count == outputs, "a record has a resolution an output");
        if (changesSize) checkChangedHistories(node);
        if (changesSize) return;
    } else {
        require(record.output_count == 0, "a record without resolutions has no outputs");
    }
    for (const InnerGraphNode::Link& link : node.links) {
        if (link.hasHistory)
            require(isSame(link.history, *record.resolution_history), "other kernels pass a history on");
    }
}

void checkState(const IGraphConfig& root, const InnerGraphNode& node, NUXO::GdfVersion version)
{
    const int enable = node.record->enable;
    const int stated = integerOf(node.node, NUXO_KEY_ENABLED).value_or(1);
    require(enable == stated || enable == kKernelDisabled, "a kernel keeps its state or is disabled");
    require(enable != kKernelDisabled || node.disabled, "a disabled kernel is shown as one");
    if (version >= NUXO::GdfVersionKVA7 || enable == stated) return;
    const std::vector<IGraphConfig*> ports = descendantsOfType(root, NUXO_KEY_PORT);
    require(std::any_of(ports.begin(), ports.end(),
                        [](const IGraphConfig* port) { return integerOf(port, NUXO_KEY_ENABLED) == 0; }),
            "in generation 6 only disabled ports disable kernels");
}

// A kernel's history is one that leaves a node which feeds it.
void checkArrivals(const std::vector<InnerGraphNode>& nodes)
{
    std::vector<std::vector<const Resolution*>> arriving(nodes.size());
    for (const InnerGraphNode& node : nodes) {
        for (const InnerGraphNode::Link& link : node.links) {
            if (link.hasHistory) arriving[link.sink].push_back(&link.history);
        }
    }
    for (size_t i = 0; i < nodes.size(); ++i) {
        const InnerGraphNode& node = nodes[i];
        if (node.kind != InnerGraphNode::Kind::Kernel || isZero(*node.record->resolution_history)) continue;
        require(
            std::any_of(arriving[i].begin(), arriving[i].end(),
                        [&](const Resolution* history) { return isSame(*history, *node.record->resolution_history); }),
            "a history comes from a node that feeds the kernel");
    }
}

} // namespace

void checkSubgraphRecords(const IGraphConfig& root, const GraphUtil& analysis, int id,
                          const qv_isp_zmt_program_group& group, NUXO::GdfVersion version)
{
    std::vector<InnerGraphNode> nodes;
    require(analysis.getInnerGraph(id, nodes) == StatusOk, "a subgraph has an inner graph");
    uint32_t kernels = 0;
    for (const InnerGraphNode& node : nodes) {
        const bool isKernel = node.kind == InnerGraphNode::Kind::Kernel;
        require((node.record != nullptr) == isKernel, "kernels have records");
        if (!isKernel) continue;
        require(node.record == group.run_kernels + kernels, "records stand in the order of names");
        require(node.record->resolution_history != nullptr && isReserveZero(*node.record), "a record is whole");
        ++kernels;
        if (isUnreached(*node.record)) continue;
        require(node.record->kernel_uuid == static_cast<uint32_t>(*integerOf(node.node, NUXO_KEY_PAL_UUID)),
                "a record is that of its kernel");
        checkState(root, node, version);
        checkHistories(node);
    }
    require(group.kernel_count == kernels, "there is a record a kernel");
    checkArrivals(nodes);
}

void checkGroupRecords(const IGraphConfig& node, const qv_isp_zmt_program_group& group)
{
    const std::vector<IGraphConfig*> kernels = childrenOfType(&node, NUXO_KEY_KERNEL);
    require(group.kernel_count == kernels.size(), "a group has a record a kernel");
    std::multiset<uint32_t> stated;
    std::multiset<uint32_t> found;
    for (const IGraphConfig* const kernel : kernels) {
        stated.insert(static_cast<uint32_t>(*integerOf(kernel, NUXO_KEY_PAL_UUID)));
    }
    for (uint32_t i = 0; i < group.kernel_count; ++i) found.insert(group.run_kernels[i].kernel_uuid);
    require(stated == found, "a group has the records of its kernels");
}

void checkStreamRecords(const IGraphConfig& root, int stream, const qv_isp_zmt_program_group& group)
{
    size_t kernels = stream == 0 && !childrenOfType(&root, NUXO_KEY_HW).empty() ? 1 : 0;
    for (const IGraphConfig* const node : childrenOfType(&root, NUXO_KEY_PROGRAM_GROUP)) {
        if (integerOf(node, NUXO_KEY_STREAM_ID) == stream) kernels += childrenOfType(node, NUXO_KEY_KERNEL).size();
    }
    require(group.kernel_count == kernels, "a stream has a record a kernel");
    for (uint32_t i = 0; i < group.kernel_count; ++i) {
        const qv_isp_zmt_run_kernels& record = group.run_kernels[i];
        require(isReserveZero(record) && record.output_count == 0, "a record is whole");
        if (record.resolution_history == nullptr) {
            require(record.resolution_info == nullptr, "a record without history has no resolution");
            continue;
        }
        require(record.stream_id == static_cast<uint32_t>(stream), "a record is one of its stream");
    }
}

} // namespace fuzzing
