// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/camera/KernelReading.h>
#include <nuxo/tree/NodeReading.h>
#include <nuxo/tree/TypeNames.h>

#include <cstdint>
#include <cstdlib>
#include <string>

namespace NUXO {

namespace {

constexpr int kNone = -1;

void store(int* out, int value)
{
    if (out != nullptr) *out = value;
}

// Reads a value that a kernel must have, if it is asked for.
int require(const IGraphConfig& kernel, uint32_t key, const char* missingMessage, int* out)
{
    if (out == nullptr) return StatusOk;
    const int status = kernel.getValue(key, *out);
    if (status != StatusOk) NUXO_ERROR("%s", missingMessage);
    return status;
}

} // namespace

bool convertItems(const std::string& text, unsigned int* items, size_t limit)
{
    for (size_t start = 0; start < text.size();) {
        if (limit-- == 0) return false;
        const size_t end = text.find(',', start);
        *items++ = static_cast<unsigned int>(std::strtol(text.substr(start, end - start).c_str(), nullptr, 10));
        if (end == std::string::npos) return true;
        start = end + 1;
    }
    return true;
}

int readKernelValues(const IGraphConfig& kernel, const KernelOutputs& out)
{
    store(out.rcb, integerOr(&kernel, NUXO_KEY_RCB, 0));
    store(out.branchPoint, integerOr(&kernel, NUXO_KEY_BRANCH_POINT, 0));
    store(out.enable, integerOr(&kernel, NUXO_KEY_ENABLED, 1));
    int status = require(kernel, NUXO_KEY_PAL_UUID, "ERROR: Couldn't get pal_uuid", out.palUuid);
    if (status != StatusOk) return status;
    status = require(kernel, NUXO_KEY_ID, "Couldn't get kernel id", out.id);
    if (status != StatusOk) return status;
    store(out.sinkPort, integerOr(&kernel, NUXO_KEY_SINK_PORT, kNone));
    store(out.restorePoint, integerOr(&kernel, NUXO_KEY_RESTORE_POINT, kNone));
    return StatusOk;
}

int GraphCameraUtil::getProgramGroups(unsigned int key, int value, const IGraphConfig* graph,
                                      std::vector<IGraphConfig*>& pgs)
{
    return unlessNoMemory<int>(StatusNoMemory, [&]() -> int {
        const size_t before = pgs.size();
        int current = kNone; // a group without the attribute goes with the one before it
        forEachOfType(graph, kTypeProgramGroup, [&](IGraphConfig& group) {
            static_cast<void>(fetch(group, key, current));
            if (current == value) pgs.push_back(&group);
            return true;
        });
        if (pgs.size() > before) return StatusOk;
        NUXO_ERROR("Failed to find any PG's for %s id %d BUG(check graph config file)", ItemUID::key2str(key), value);
        return StatusMissingData;
    });
}

int GraphCameraUtil::getKernelCountInPg(const IGraphConfig* pg, unsigned int& count)
{
    if (pg == nullptr) return StatusBadArgument;
    count = 0;
    forEachOfType(pg, kTypeKernel, [&count](const IGraphConfig&) {
        ++count;
        return true;
    });
    return StatusOk;
}

int GraphCameraUtil::kernelGetValues(const IGraphConfig* kernel, int* palUuid, int* kernelId, unsigned int* metadata,
                                     int* enable, int* rcb, int* branchPoint, int* sinkPort)
{
    if (kernel == nullptr) return StatusBadArgument;
    return unlessNoMemory<int>(StatusNoMemory, [&]() -> int {
        std::string text;
        if (metadata != nullptr && fetch(*kernel, NUXO_KEY_METADATA, text))
            static_cast<void>(convertItems(text, metadata, SIZE_MAX)); // without limit, nothing is left over
        return readKernelValues(*kernel, {palUuid, kernelId, enable, rcb, branchPoint, sinkPort, nullptr});
    });
}

} // namespace NUXO
