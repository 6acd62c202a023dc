// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/frame_params/GraphLumUtil.h>
#include <nuxo/tree/NodeReading.h>

#include <cstdint>

namespace NUXO {

namespace {

constexpr const char* kTag = "NUXO_LUM_UTILS[XOS]";
constexpr const char* kFunction = "getSensorFrameParams";

#define LUM_ERROR(...) NUXO_LOG(LogError, kTag, __VA_ARGS__)
#define LUM_WARN(...) NUXO_LOG(LogWarning, kTag, __VA_ARGS__)
#define LUM_DEBUG(...) NUXO_LOG(LogDebug, kTag, __VA_ARGS__)

const IGraphConfig* rootOf(const IGraphConfig* graph)
{
    return graph == nullptr ? nullptr : graph->getRoot();
}

// Size and crop of one stage's output, in its own pixels.
struct Frame {
    int width = 0;
    int height = 0;
    int left = 0;
    int top = 0;
};

int readFrame(const IGraphConfig& output, const char* failureMessage, Frame& frame)
{
    const int status = GraphCameraUtil::getDimensions(&output, &frame.width, &frame.height, &frame.left, &frame.top);
    if (status != StatusOk) LUM_ERROR("%s", failureMessage);
    return status;
}

// The `output` of a binner or scaler.
int readStageOutput(const IGraphConfig& stage, const char* missingMessage, const char* failureMessage, Frame& frame)
{
    const IGraphConfig* const output = stage.getDescendant(NUXO_KEY_OUTPUT);
    if (output == nullptr) {
        LUM_ERROR("%s", missingMessage);
        return StatusMissingObject;
    }
    return readFrame(*output, failureMessage, frame);
}

void replaceZero(int& factor, const char* message)
{
    if (factor != 0) return;
    LUM_ERROR("%s", message);
    factor = 1;
}

// What the stages of a sensor do to the image.
struct SensorGeometry {
    Frame pixelArray;
    Frame binner;
    Frame scaler;
    int horizontalBinning = 1;
    int verticalBinning = 1;
    int numerator = 1;
    int denominator = 1;
};

int readPixelArray(const IGraphConfig& sensor, SensorGeometry& geometry)
{
    const IGraphConfig* const output = descendantAt(sensor, "pixel_array:output");
    if (output == nullptr) {
        LUM_ERROR("Failed to get pixel_array:output");
        return StatusMissingData;
    }
    Frame& frame = geometry.pixelArray;
    const int status = readFrame(*output, "Failed to get pixel array output dimension and crop", frame);
    if (status != StatusOk) return status;
    LUM_DEBUG("%s: PixelArray output: w: %d, h: %d, crop l: %d, crop t: %d", kFunction, frame.width, frame.height,
              frame.left, frame.top);
    geometry.scaler.width = frame.width; // unless there is a scaler
    geometry.scaler.height = frame.height;
    return StatusOk;
}

int readBinner(const IGraphConfig& sensor, SensorGeometry& geometry)
{
    const IGraphConfig* const binner = sensor.getDescendant(NUXO_KEY_BINNER);
    if (binner == nullptr) {
        LUM_WARN("Warning, no binner found, make sure sensor has no binner");
        return StatusOk;
    }
    int& horizontal = geometry.horizontalBinning;
    int& vertical = geometry.verticalBinning;
    int status = GraphCameraUtil::sensorGetBinningFactor(binner, horizontal, vertical);
    if (status != StatusOk) {
        LUM_ERROR("Error: Couldn't get binning factor");
        return status;
    }
    replaceZero(horizontal, "Horizontal binning is 0! Wrong setting! Set to 1");
    replaceZero(vertical, "Vertical binning is 0! Wrong setting! Set to 1");
    const Frame& frame = geometry.binner;
    status = readStageOutput(*binner, "Failed to get binner:output", "Failed to get binner output dimensions and crop",
                             geometry.binner);
    if (status != StatusOk) return status;
    LUM_DEBUG("%s: binner output w: %d, %d, binning: w: %d, h: %d, crop w: %d, crop h: %d", kFunction, frame.width,
              frame.height, horizontal, vertical, frame.left, frame.top);
    return StatusOk;
}

int readScaler(const IGraphConfig& sensor, SensorGeometry& geometry)
{
    const IGraphConfig* const scaler = sensor.getDescendant(NUXO_KEY_SCALER);
    if (scaler == nullptr) {
        LUM_WARN("Warning, no scaler found, make sure sensor has no scaler");
        return StatusOk;
    }
    int status = GraphCameraUtil::sensorGetScalingFactor(scaler, geometry.numerator, geometry.denominator);
    if (status != StatusOk) {
        LUM_ERROR("Error: Couldn't get scaling factor");
        return status;
    }
    replaceZero(geometry.denominator, "Scaling Denominator is 0! Wrong setting! Set to 1");
    replaceZero(geometry.numerator, "Scaling Numerator is 0! Wrong setting! Set to 1");
    const Frame& frame = geometry.scaler;
    status = readStageOutput(*scaler, "Failed to get scaler:output", "Failed to get scaler output dimensions and crop",
                             geometry.scaler);
    if (status != StatusOk) return status;
    LUM_DEBUG("%s: scaler output  w: %d, h: %d, crop w: %d, crop h: %d", kFunction, frame.width, frame.height,
              frame.left, frame.top);
    return StatusOk;
}

// Modulo 2^32: the record keeps 16 bits at most.
int product(int64_t a, int64_t b)
{
    return static_cast<int>(static_cast<uint32_t>(static_cast<uint64_t>(a) * static_cast<uint64_t>(b)));
}

int sum(int a, int b)
{
    return static_cast<int>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

// A length of the scaler's output in pixels of the pixel array. The division cuts off before binning multiplies.
int inPixelArray(int length, const SensorGeometry& geometry, int binning)
{
    return product(int64_t{length} * geometry.denominator / geometry.numerator, binning);
}

// The record's values before they are cut to its widths. Only crops of pixel array and binner move the image.
struct FrameParams {
    int left;
    int top;
    int width;
    int height;
    int numerator;
    int horizontalDenominator;
    int verticalDenominator;
};

FrameParams combine(const SensorGeometry& geometry)
{
    const int horizontal = geometry.horizontalBinning;
    const int vertical = geometry.verticalBinning;
    return {sum(geometry.pixelArray.left, product(horizontal, geometry.binner.left)),
            sum(geometry.pixelArray.top, product(vertical, geometry.binner.top)),
            inPixelArray(geometry.scaler.width, geometry, horizontal),
            inPixelArray(geometry.scaler.height, geometry, vertical),
            geometry.numerator,
            product(horizontal, geometry.denominator),
            product(vertical, geometry.denominator)};
}

void logParams(const FrameParams& params)
{
    LUM_DEBUG("------------------- frameParams ---------------------------");
    LUM_DEBUG("%s: Final cropped Image w = %d, Final cropped Image h = %d", kFunction, params.width, params.height);
    LUM_DEBUG("%s: Horizontal_crop_offset = %d, Vertical_crop_offset = %d", kFunction, params.left, params.top);
    LUM_DEBUG("%s: Horizontal_scaling_factor = %d/%d, Vertical_scaling factor = %d/%d", kFunction, params.numerator,
              params.horizontalDenominator, params.numerator, params.verticalDenominator);
    LUM_DEBUG("-----------------------------------------------------------------");
}

qv_lum_frame_params toRecord(const FrameParams& params)
{
    return {static_cast<uint16_t>(params.left),     static_cast<uint16_t>(params.top),
            static_cast<uint16_t>(params.width),    static_cast<uint16_t>(params.height),
            static_cast<uint8_t>(params.numerator), static_cast<uint8_t>(params.horizontalDenominator),
            static_cast<uint8_t>(params.numerator), static_cast<uint8_t>(params.verticalDenominator)};
}

int readSensor(const IGraphConfig* graph, SensorGeometry& geometry)
{
    const IGraphConfig* const root = rootOf(graph);
    const IGraphConfig* const sensor = root == nullptr ? nullptr : root->getDescendant(NUXO_KEY_SENSOR);
    if (sensor == nullptr) {
        LUM_ERROR("Error: Couldn't get sensor mode node from the graph");
        return StatusMissingData;
    }
    int status = readPixelArray(*sensor, geometry);
    if (status == StatusOk) status = readBinner(*sensor, geometry);
    if (status == StatusOk) status = readScaler(*sensor, geometry);
    return status;
}

} // namespace

int GraphLumUtil::getPortFrameParams(qv_lum_frame_params& params, std::shared_ptr<const IGraphConfig> graph,
                                     const std::string& portName)
{
    return unlessNoMemory<int>(StatusNoMemory, [&]() -> int {
        const IGraphConfig* const root = rootOf(graph.get());
        const IGraphConfig* const port = root == nullptr ? nullptr : descendantAt(*root, portName);
        if (port == nullptr) {
            LUM_ERROR("Error: Couldn't get port \"%s\" node from the graph", portName.c_str());
            return StatusMissingObject;
        }
        FrameParams frame = {0, 0, 0, 0, 1, 1, 1};
        if (GraphCameraUtil::getDimensions(port, &frame.width, &frame.height) != StatusOk) {
            LUM_ERROR("Failed to get dimension for port \"%s\" node", portName.c_str());
            return StatusMissingObject;
        }
        params = toRecord(frame);
        return StatusOk;
    });
}

int GraphLumUtil::getSensorFrameParams(qv_lum_frame_params& params, std::shared_ptr<const IGraphConfig> graph)
{
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        SensorGeometry geometry;
        const int status = readSensor(graph.get(), geometry);
        if (status != StatusOk) return status;
        const FrameParams frame = combine(geometry);
        logParams(frame);
        params = toRecord(frame);
        return status;
    });
}

} // namespace NUXO
