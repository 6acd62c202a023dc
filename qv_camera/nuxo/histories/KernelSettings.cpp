// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/KernelReading.h>
#include <nuxo/histories/KernelSettings.h>
#include <nuxo/tree/NodeReading.h>

#include <algorithm>
#include <iterator>

namespace NUXO {

namespace {

// A side of a kernel: its size, and its crop as far as it has one.
struct Side {
    int32_t width = 0;
    int32_t height = 0;
    qv_rectangle crop = {};
};

bool hasWidth(const IGraphConfig& node)
{
    int width = 0;
    return fetch(node, NUXO_KEY_WIDTH, width);
}

int readSide(const IGraphConfig& node, Side& side)
{
    if (!fetch(node, NUXO_KEY_WIDTH, side.width) || !fetch(node, NUXO_KEY_HEIGHT, side.height))
        return StatusMissingData;
    side.crop = {integerOr(&node, NUXO_KEY_LEFT, 0), integerOr(&node, NUXO_KEY_TOP, 0),
                 integerOr(&node, NUXO_KEY_RIGHT, 0), integerOr(&node, NUXO_KEY_BOTTOM, 0)};
    return StatusOk;
}

std::string nameOfOutput(const IGraphConfig& output)
{
    int id = 0;
    return fetch(output, NUXO_KEY_ID, id) ? std::to_string(id) : textOr(&output, NUXO_KEY_NAME, "0");
}

int appendResolution(const Side& input, const IGraphConfig& output, std::vector<KernelResolution>& resolutions)
{
    Side side;
    const int status = readSide(output, side);
    if (status != StatusOk) return status;
    resolutions.emplace_back(nameOfOutput(output), qv_isp_zmt_resolution_info{input.width, input.height, input.crop,
                                                                              side.width, side.height, side.crop});
    return StatusOk;
}

int appendChildren(const Side& input, const IGraphConfig& output, std::vector<KernelResolution>& resolutions)
{
    NodeIterator children(&output);
    int status = StatusOk;
    while (const IGraphConfig* const child = children.iterateDescendants()) {
        if (hasWidth(*child)) status = appendResolution(input, *child, resolutions);
        if (status != StatusOk) break;
    }
    return status;
}

uint32_t bppOf(const IGraphConfig* side)
{
    return static_cast<uint32_t>(integerOr(side, NUXO_KEY_BPP, 0));
}

} // namespace

void readKernelMetadata(const IGraphConfig& kernel, uint32_t (&metadata)[QV_ISP_ZMT_METADATA_COUNT])
{
    std::fill(std::begin(metadata), std::end(metadata), 0U);
    std::string text;
    if (!fetch(kernel, NUXO_KEY_METADATA, text)) return;
    if (convertItems(text, metadata, QV_ISP_ZMT_METADATA_COUNT)) return;
    NUXO_WARN("Kernel %s has more than %d metadata items, ignoring the rest", nameOrFiledName(kernel).c_str(),
              QV_ISP_ZMT_METADATA_COUNT);
}

int readKernelSettings(const IGraphConfig& kernel, KernelSettings& settings)
{
    readKernelMetadata(kernel, settings.metadata);
    return readKernelValues(kernel, {&settings.palUuid, &settings.id, &settings.enable, &settings.rcb,
                                     &settings.branchPoint, &settings.sinkPort, &settings.restorePoint});
}

bool kernelHasResolutions(const IGraphConfig& kernel)
{
    const IGraphConfig* const input = kernel.getDescendant(NUXO_KEY_INPUT);
    const IGraphConfig* const output = kernel.getDescendant(NUXO_KEY_OUTPUT);
    if (input == nullptr || output == nullptr || !hasWidth(*input)) return false;
    return hasWidth(*output) || NodeIterator(output).iterateDescendants() != nullptr;
}

int kernelGetResolutions(const IGraphConfig& kernel, std::vector<KernelResolution>& resolutions)
{
    resolutions.clear();
    const IGraphConfig* const inputNode = kernel.getDescendant(NUXO_KEY_INPUT);
    Side input;
    if (inputNode == nullptr || readSide(*inputNode, input) != StatusOk) return StatusMissingData;

    NodeIterator outputs(&kernel);
    int status = StatusOk;
    while (const IGraphConfig* const output = outputs.iterateByUid(NUXO_KEY_OUTPUT)) {
        status = hasWidth(*output) ? appendResolution(input, *output, resolutions)
                                   : appendChildren(input, *output, resolutions);
        if (status != StatusOk) break;
    }
    return status;
}

qv_isp_zmt_bpp_info kernelGetBpp(const IGraphConfig& kernel)
{
    return {bppOf(kernel.getDescendant(NUXO_KEY_INPUT)), bppOf(kernel.getDescendant(NUXO_KEY_OUTPUT))};
}

} // namespace NUXO
