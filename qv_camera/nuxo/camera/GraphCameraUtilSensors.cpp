// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/tree/NodeReading.h>
#include <nuxo/tree/TypeNames.h>

#include <string>

namespace NUXO {

namespace {

// Reads one of the factors; the status is the read's.
int readFactor(const IGraphConfig& node, uint32_t key, const char* failureMessage, int& factor)
{
    const int status = node.getValue(key, factor);
    if (status != StatusOk) NUXO_ERROR("%s", failureMessage);
    return status;
}

bool isGiven(const IGraphConfig* graph)
{
    if (graph == nullptr) NUXO_ERROR("Null pointer given");
    return graph != nullptr;
}

} // namespace

int GraphCameraUtil::getDimensions(const IGraphConfig* port, int* width, int* height, int* left, int* top, int* right,
                                   int* bottom)
{
    struct Dimension {
        uint32_t key;
        int* out;
        const char* failureMessage;
    };
    const Dimension dimensions[] = {
        {NUXO_KEY_WIDTH, width, "Error: Couldn't get width"},
        {NUXO_KEY_HEIGHT, height, "Error: Couldn't get height"},
        {NUXO_KEY_LEFT, left, "Error: Couldn't get left crop"},
        {NUXO_KEY_TOP, top, "Error: Couldn't get top crop"},
        {NUXO_KEY_RIGHT, right, "Error: Couldn't get right crop"},
        {NUXO_KEY_BOTTOM, bottom, "Error: Couldn't get bottom crop"},
    };
    if (port == nullptr) return StatusBadArgument;
    for (const Dimension& dimension : dimensions) {
        if (dimension.out == nullptr || fetch(*port, dimension.key, *dimension.out)) continue;
        NUXO_ERROR("%s", dimension.failureMessage);
        return StatusNotFound;
    }
    return StatusOk;
}

int GraphCameraUtil::sensorGetBinningFactor(const IGraphConfig* sensor, int& h, int& v)
{
    if (sensor == nullptr) return StatusBadArgument;
    const int status = readFactor(*sensor, NUXO_KEY_H_FACTOR, "Error: Couldn't get horizontal binning factor", h);
    if (status != StatusOk) return status;
    return readFactor(*sensor, NUXO_KEY_V_FACTOR, "Error: Couldn't get vertical binning factor", v);
}

int GraphCameraUtil::sensorGetScalingFactor(const IGraphConfig* sensor, int& num, int& denom)
{
    constexpr const char* failureMessage = "Error: Couldn't get width scaling num ratio"; // for either
    if (sensor == nullptr) return StatusBadArgument;
    const int status = readFactor(*sensor, NUXO_KEY_NUM_FACTOR, failureMessage, num);
    if (status != StatusOk) return status;
    return readFactor(*sensor, NUXO_KEY_DENOM_FACTOR, failureMessage, denom);
}

int GraphCameraUtil::sensorGetType(const IGraphConfig* graph, std::string& sensorType)
{
    if (!isGiven(graph)) return StatusBadArgument;
    return unlessNoMemory<int>(StatusNoMemory, [graph, &sensorType] {
        sensorType = "NONE";
        int status = StatusNotFound;
        forEachOfType(graph->getRoot(), kTypeSource, [&sensorType, &status](const IGraphConfig& source) {
            if (fetch(source, NUXO_KEY_SENSOR_TYPE, sensorType)) status = StatusOk;
            return false; // only the first one counts
        });
        return status;
    });
}

int GraphCameraUtil::getSourceNode(const IGraphConfig* graph, std::vector<IGraphConfig*>& sources)
{
    if (!isGiven(graph)) return StatusBadArgument;
    return unlessNoMemory<int>(StatusNoMemory, [graph, &sources]() -> int {
        const size_t before = sources.size();
        forEachOfType(graph->getRoot(), kTypeSource, [&sources](IGraphConfig& source) {
            if (integerOr(&source, NUXO_KEY_ENABLED, 1) != 0) sources.push_back(&source);
            return true;
        });
        if (sources.size() == before) {
            NUXO_ERROR("ERROR: No active sources. Check that node with type source exists");
            return StatusBadArgument;
        }
        NUXO_DEBUG("Found %lu active sources from the descriptor.",
                   static_cast<unsigned long>(sources.size() - before));
        return StatusOk;
    });
}

int GraphCameraUtil::graphGetSinksByName(const std::string& name, const IGraphConfig* graph,
                                         std::vector<IGraphConfig*>& sinks)
{
    if (graph == nullptr) {
        NUXO_ERROR("given graph config handle is null");
        return StatusBadArgument;
    }
    return unlessNoMemory<int>(StatusNoMemory, [&]() -> int {
        const size_t before = sinks.size();
        forEachOfType(graph->getRoot(), kTypeSink, [&](IGraphConfig& sink) {
            // The empty name is part of every name, of a missing one too.
            if (textOr(&sink, NUXO_KEY_NAME, "").find(name) != std::string::npos) sinks.push_back(&sink);
            return true;
        });
        if (sinks.size() > before) return StatusOk;
        NUXO_ERROR("Failed to find any sinks -check graph config file");
        return StatusNotFound;
    });
}

} // namespace NUXO
