// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/histories/SourceHistories.h>
#include <nuxo/tree/NodeReading.h>

#include <optional>

namespace NUXO {

namespace {

// A step's result when the read ends with it; nothing when the next stage follows.
using End = std::optional<int>;

struct Frame {
    int32_t& width;
    int32_t& height;
    qv_rectangle* crop; // null when it is not read
};

// Size and crop of one side of a stage. Crops are stated at the left and top and hold for the opposite side, too.
int readFrame(const IGraphConfig& node, const char* failureMessage, const Frame& frame)
{
    qv_rectangle crop = {};
    const bool withCrop = frame.crop != nullptr;
    const int status = GraphCameraUtil::getDimensions(&node, &frame.width, &frame.height,
                                                      withCrop ? &crop.left : nullptr, withCrop ? &crop.top : nullptr);
    if (status != StatusOk) {
        NUXO_ERROR("%s", failureMessage);
        return status;
    }
    if (withCrop) *frame.crop = {crop.left, crop.top, crop.left, crop.top};
    return StatusOk;
}

// The same for a child that ends the read when it is missing.
End readChild(const IGraphConfig& stage, uint32_t key, const char* missingMessage, const char* failureMessage,
              const Frame& frame)
{
    const IGraphConfig* const child = stage.getDescendant(key);
    if (child == nullptr) {
        NUXO_ERROR("%s", missingMessage);
        return StatusOk;
    }
    const int status = readFrame(*child, failureMessage, frame);
    return status == StatusOk ? End() : End(status);
}

struct Size {
    int32_t width = 0;
    int32_t height = 0;
};

End readPixelArray(const IGraphConfig& sensor, const Size& sensorSize, SensorModeInfo& info)
{
    const IGraphConfig* const pixelArray = sensor.getDescendant(NUXO_KEY_PIXEL_ARRAY);
    const IGraphConfig* const input = pixelArray == nullptr ? nullptr : pixelArray->getDescendant(NUXO_KEY_INPUT);
    if (input == nullptr) {
        NUXO_WARN("Warning, no pixel_array, make sure source has no pixel array. Defaulting to sensor dimensions.");
        info.pixelArrayInputWidth = info.pixelArrayOutputWidth = sensorSize.width;
        info.pixelArrayInputHeight = info.pixelArrayOutputHeight = sensorSize.height;
        return End();
    }
    const int status = readFrame(*input, "Failed to get pixel array dimensions",
                                 {info.pixelArrayInputWidth, info.pixelArrayInputHeight, &info.pixelArrayInputCrop});
    if (status != StatusOk) return status;
    return readChild(*pixelArray, NUXO_KEY_OUTPUT, "Failed to get pixel_array:output",
                     "Failed to get pixel array output dimensions",
                     {info.pixelArrayOutputWidth, info.pixelArrayOutputHeight, nullptr});
}

End readBinner(const IGraphConfig& sensor, SensorModeInfo& info)
{
    const IGraphConfig* const binner = sensor.getDescendant(NUXO_KEY_BINNER);
    if (binner == nullptr) {
        info.binnerInputWidth = info.binnerOutputWidth = info.pixelArrayOutputWidth;
        info.binnerInputHeight = info.binnerOutputHeight = info.pixelArrayOutputHeight;
        return End();
    }
    const int status = GraphCameraUtil::sensorGetBinningFactor(binner, info.binningHorizontal, info.binningVertical);
    if (status != StatusOk) {
        NUXO_ERROR("Error: Couldn't get binning factor");
        return status;
    }
    if (info.binningHorizontal != info.binningVertical)
        NUXO_WARN("Sensor mode specifies different binning factor for horizontal and vertical."
                  "this is not supported, resolution history will be wrong ");
    const End end = readChild(*binner, NUXO_KEY_INPUT, "Failed to get binner:input",
                              "Failed to get binner input dimensions and crop",
                              {info.binnerInputWidth, info.binnerInputHeight, &info.binnerInputCrop});
    if (end) return end;
    return readChild(*binner, NUXO_KEY_OUTPUT, "Failed to get binner:output",
                     "Failed to get binner output dimensions and crop",
                     {info.binnerOutputWidth, info.binnerOutputHeight, &info.binnerOutputCrop});
}

void replaceZero(int32_t& factor, const char* message)
{
    if (factor != 0) return;
    NUXO_WARN("%s", message);
    factor = 1;
}

void readScaling(const IGraphConfig& scaler, SensorModeInfo& info)
{
    if (GraphCameraUtil::sensorGetScalingFactor(&scaler, info.scalingNumerator, info.scalingDenominator) != StatusOk) {
        NUXO_WARN("Warning: Couldn't get scaling factor: Default to 1/1");
        info.scalingNumerator = info.scalingDenominator = 1;
    }
    replaceZero(info.scalingDenominator, "Scaling Denominator is 0! Wrong setting! Set to 1");
    replaceZero(info.scalingNumerator, "Scaling Numerator is 0! Wrong setting! Set to 1");
}

End readScaler(const IGraphConfig& sensor, SensorModeInfo& info)
{
    const IGraphConfig* const scaler = sensor.getDescendant(NUXO_KEY_SCALER);
    if (scaler == nullptr) {
        info.scalerInputWidth = info.scalerOutputWidth = info.binnerOutputWidth;
        info.scalerInputHeight = info.scalerOutputHeight = info.binnerOutputHeight;
        return End();
    }
    readScaling(*scaler, info);
    // Both sides fail with the same words; log readers know them.
    constexpr const char* kFailure = "Failed to get scaler output dimensions and crop";
    const End end = readChild(*scaler, NUXO_KEY_INPUT, "Failed to get scaler:input", kFailure,
                              {info.scalerInputWidth, info.scalerInputHeight, &info.scalerInputCrop});
    if (end) return end;
    return readChild(*scaler, NUXO_KEY_OUTPUT, "Failed to get scaler:output", kFailure,
                     {info.scalerOutputWidth, info.scalerOutputHeight, &info.scalerOutputCrop});
}

} // namespace

int getSensorModeInfo(IGraphConfig& sensor, SensorModeInfo& info)
{
    info = SensorModeInfo();
    Size size;
    const int status = GraphCameraUtil::getDimensions(&sensor, &size.width, &size.height);
    if (status != StatusOk) {
        NUXO_ERROR("Failed to get dimensions(width, height) for the source %s", filedName(sensor).c_str());
        GraphCameraUtil::dumpNodeTree(&sensor, 1);
        return status;
    }
    End end = readPixelArray(sensor, size, info);
    if (!end) end = readBinner(sensor, info);
    if (!end) end = readScaler(sensor, info);
    return end.value_or(StatusOk);
}

} // namespace NUXO
