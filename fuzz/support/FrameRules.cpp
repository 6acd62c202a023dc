// SPDX-License-Identifier: Apache-2.0
#include "support/CameraRules.h"
#include "support/Fuzzing.h"
#include "support/PortFacts.h"

#include <nuxo/nuxo.h>

#include <cstring>
#include <memory>

namespace fuzzing {

namespace {

using NUXO::GraphLumUtil;
using NUXO::IGraphConfig;

constexpr qv_lum_frame_params kUntouched = {1, 2, 3, 4, 5, 6, 7, 8};

// A client's shared pointer to a node that somebody else owns.
std::shared_ptr<const IGraphConfig> borrow(const IGraphConfig* node)
{
    return {std::shared_ptr<const IGraphConfig>(), node};
}

// Width, height, left and top of an output.
struct Frame {
    int64_t width = 0;
    int64_t height = 0;
    int64_t left = 0;
    int64_t top = 0;
};

bool readFrame(const IGraphConfig* output, Frame& frame)
{
    const std::optional<int> width = integerOf(output, NUXO_KEY_WIDTH);
    const std::optional<int> height = integerOf(output, NUXO_KEY_HEIGHT);
    const std::optional<int> left = integerOf(output, NUXO_KEY_LEFT);
    const std::optional<int> top = integerOf(output, NUXO_KEY_TOP);
    if (!width || !height || !left || !top) return false;
    frame = {*width, *height, *left, *top};
    return true;
}

// A part of the sensor with two factors, neither of them 0, and an output. A part that is missing changes nothing.
int readPart(const IGraphConfig* part, uint32_t firstKey, uint32_t secondKey, int64_t& first, int64_t& second,
             Frame& frame)
{
    if (part == nullptr) return StatusOk;
    int value = 0;
    int status = part->getValue(firstKey, value);
    if (status != StatusOk) return status;
    first = value == 0 ? 1 : value;
    status = part->getValue(secondKey, value);
    if (status != StatusOk) return status;
    second = value == 0 ? 1 : value;
    const IGraphConfig* const output = part->getDescendant(NUXO_KEY_OUTPUT);
    if (output == nullptr) return StatusMissingObject;
    return readFrame(output, frame) ? StatusOk : StatusNotFound;
}

uint16_t bits16(int64_t value)
{
    return static_cast<uint16_t>(value);
}

uint8_t bits8(int64_t value)
{
    return static_cast<uint8_t>(value);
}

// Only the low bits of products are kept, so that those of the factors are enough.
int64_t times(int64_t a, int64_t b)
{
    return int64_t{bits16(a)} * bits16(b);
}

int expectSensor(const IGraphConfig* graph, qv_lum_frame_params& params)
{
    const IGraphConfig* const root = rootOf(graph);
    const IGraphConfig* const sensor = root == nullptr ? nullptr : root->getDescendant(NUXO_KEY_SENSOR);
    const IGraphConfig* const pixels =
        sensor == nullptr ? nullptr : sensor->getDescendant({NUXO_KEY_PIXEL_ARRAY, NUXO_KEY_OUTPUT});
    if (pixels == nullptr) return StatusMissingData;
    Frame full;
    if (!readFrame(pixels, full)) return StatusNotFound;
    Frame binned;
    Frame scaled = {full.width, full.height, 0, 0};
    int64_t across = 1;
    int64_t down = 1;
    int64_t numerator = 1;
    int64_t denominator = 1;
    int status =
        readPart(sensor->getDescendant(NUXO_KEY_BINNER), NUXO_KEY_H_FACTOR, NUXO_KEY_V_FACTOR, across, down, binned);
    if (status != StatusOk) return status;
    status = readPart(sensor->getDescendant(NUXO_KEY_SCALER), NUXO_KEY_NUM_FACTOR, NUXO_KEY_DENOM_FACTOR, numerator,
                      denominator, scaled);
    if (status != StatusOk) return status;
    params.horizontal_crop_offset = bits16(full.left + times(across, binned.left));
    params.vertical_crop_offset = bits16(full.top + times(down, binned.top));
    params.cropped_image_width = bits16(times(scaled.width * denominator / numerator, across));
    params.cropped_image_height = bits16(times(scaled.height * denominator / numerator, down));
    params.horizontal_scaling_numerator = bits8(numerator);
    params.vertical_scaling_numerator = bits8(numerator);
    params.horizontal_scaling_denominator = bits8(times(across, denominator));
    params.vertical_scaling_denominator = bits8(times(down, denominator));
    return StatusOk;
}

int expectPort(const IGraphConfig* graph, const std::string& path, qv_lum_frame_params& params)
{
    const IGraphConfig* const root = rootOf(graph);
    const IGraphConfig* const port = root == nullptr ? nullptr : root->getDescendantByString(path);
    const std::optional<int> width = integerOf(port, NUXO_KEY_WIDTH);
    const std::optional<int> height = integerOf(port, NUXO_KEY_HEIGHT);
    if (!width || !height) return StatusMissingObject;
    params = {0, 0, bits16(*width), bits16(*height), 1, 1, 1, 1};
    return StatusOk;
}

bool areSame(const qv_lum_frame_params& a, const qv_lum_frame_params& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

} // namespace

void checkSensorFrame(const IGraphConfig* graph)
{
    qv_lum_frame_params expected = kUntouched;
    qv_lum_frame_params params = kUntouched;
    const int expectedStatus = expectSensor(graph, expected);
    require(GraphLumUtil::getSensorFrameParams(params, borrow(graph)) == expectedStatus,
            "the frame of a sensor has a status that tells what is missing");
    require(areSame(params, expected), "the frame of a sensor is that of its parts, and written on success only");
}

void checkPortFrame(const IGraphConfig* graph, const std::string& path)
{
    qv_lum_frame_params expected = kUntouched;
    qv_lum_frame_params params = kUntouched;
    const int expectedStatus = expectPort(graph, path, expected);
    require(GraphLumUtil::getPortFrameParams(params, borrow(graph), path) == expectedStatus,
            "the frame of a port needs a port with a size");
    require(areSame(params, expected), "the frame of a port is its size, and written on success only");
}

} // namespace fuzzing
