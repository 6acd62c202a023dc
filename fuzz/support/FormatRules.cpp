// SPDX-License-Identifier: Apache-2.0
#include "support/CameraRules.h"
#include "support/Fuzzing.h"
#include "support/PortFacts.h"

#include <nuxo/nuxo.h>

#include <array>
#include <cstddef>
#include <iterator>

namespace fuzzing {

namespace {

using NUXO::GraphCameraUtil;
using NUXO::IGraphConfig;
using NUXOFormats::qv_format_t;

// What portGetFormat writes.
struct Image {
    unsigned int enabled = 11;
    unsigned int terminal = 12;
    unsigned int width = 13;
    unsigned int height = 14;
    unsigned int fourcc = 15;
    unsigned int bpl = 16;
    unsigned int bpp = 17;

    bool operator==(const Image& other) const
    {
        return enabled == other.enabled && terminal == other.terminal && width == other.width &&
               height == other.height && fourcc == other.fourcc && bpl == other.bpl && bpp == other.bpp;
    }
};

std::optional<int> fromEither(const IGraphConfig* port, uint32_t key)
{
    const std::optional<int> own = integerOf(port, key);
    return own ? own : integerOf(peerOf(port).node, key);
}

int expectInfo(const IGraphConfig* port, Image& image)
{
    if (port == nullptr) return StatusBadArgument;
    const int enabled = fromEither(port, NUXO_KEY_ENABLED).value_or(1);
    if (enabled < 0) return StatusMissingData;
    image.enabled = static_cast<unsigned int>(enabled);
    const std::optional<Terminal> terminal = terminalOf(port);
    if (!terminal) return StatusNotFound;
    image.terminal = terminal->terminal;
    return StatusOk;
}

uint32_t codeOf(const std::string& name)
{
    uint32_t code = 0;
    for (size_t i = 0; i < 4; ++i) {
        code = code * 256U + (i < name.size() ? static_cast<unsigned char>(name[i]) : 0U);
    }
    return code;
}

qv_format_t rowFor(const std::string& name)
{
    qv_format_t row;
    if (NUXOFormats::getFormatByName(name, row) == StatusOk) return row;
    if (NUXOFormats::getFormatByFourcc(codeOf(name), row) == StatusOk) return row;
    require(NUXOFormats::getFormatByName("YUV420_8_SP", row) == StatusOk, "the default format is in the table");
    return row;
}

// False when the value is negative; a missing one is remembered.
bool takeSize(const IGraphConfig* port, uint32_t key, unsigned int& size, bool& complete)
{
    const std::optional<int> value = fromEither(port, key);
    if (!value) complete = false;
    if (value && *value >= 0) size = static_cast<unsigned int>(*value);
    return value.value_or(0) >= 0;
}

int expectImage(const IGraphConfig* port, Image& image)
{
    const int status = expectInfo(port, image);
    if (status != StatusOk || image.enabled == 0) return status;
    bool complete = true;
    if (!takeSize(port, NUXO_KEY_WIDTH, image.width, complete)) return StatusMissingData;
    if (!takeSize(port, NUXO_KEY_HEIGHT, image.height, complete)) return StatusMissingData;
    std::optional<std::string> format = textOf(port, NUXO_KEY_FORMAT);
    if (!format) format = textOf(peerOf(port).node, NUXO_KEY_FORMAT);
    if (format) {
        const qv_format_t row = rowFor(*format);
        image.fourcc = row.fourcc;
        image.bpp = row.bpp;
        image.bpl = NUXOFormats::getBpl(row, image.width);
    }
    bool strideIsGiven = true;
    if (!takeSize(port, NUXO_KEY_BPL, image.bpl, strideIsGiven)) return StatusMissingData;
    const bool mayLackSome = fromEither(port, NUXO_KEY_PRIVATE) == 1;
    return (complete && format) || mayLackSome ? StatusOk : StatusMissingData;
}

void checkImage(const IGraphConfig* port)
{
    Image expected;
    Image image;
    const int status = GraphCameraUtil::portGetFormat(port, image.enabled, image.terminal, image.width, image.height,
                                                      image.fourcc, image.bpl, image.bpp);
    const int expectedStatus = expectImage(port, expected); // only now: looking formats up needs the table filled
    require(status == expectedStatus, "the status of a format tells what is missing");
    require(image == expected, "each value of a format is the port's or else its peer's");
}

void checkInfo(const IGraphConfig* port)
{
    Image expected;
    Image image;
    const int expectedStatus = expectInfo(port, expected);
    require(GraphCameraUtil::portGetInfo(port, image.enabled, image.terminal) == expectedStatus,
            "a port is enabled or not and has a terminal");
    require(image == expected, "enabled is the port's or else its peer's");
}

// Reads those dimensions that the bits of the mask stand for.
void checkDimensions(const IGraphConfig* port, unsigned int mask)
{
    constexpr std::array<uint32_t, 6> keys = {NUXO_KEY_WIDTH, NUXO_KEY_HEIGHT, NUXO_KEY_LEFT,
                                              NUXO_KEY_TOP,   NUXO_KEY_RIGHT,  NUXO_KEY_BOTTOM};
    std::array<int, keys.size()> values = {1, 2, 3, 4, 5, 6};
    std::array<int, keys.size()> expected = values;
    std::array<int*, keys.size()> out = {};
    int expectedStatus = port == nullptr ? StatusBadArgument : StatusOk;
    for (size_t i = 0; i < keys.size(); ++i) {
        if ((mask >> i & 1U) == 0) continue;
        out[i] = &values[i];
        const std::optional<int> value = integerOf(port, keys[i]);
        if (expectedStatus == StatusOk && !value) expectedStatus = StatusNotFound;
        if (expectedStatus == StatusOk) expected[i] = *value;
    }
    require(GraphCameraUtil::getDimensions(port, out[0], out[1], out[2], out[3], out[4], out[5]) == expectedStatus,
            "dimensions are there or not found");
    require(values == expected, "dimensions are written up to the first that is missing");
}

using ReadFactors = int (*)(const IGraphConfig*, int&, int&);

void checkFactors(const IGraphConfig* node, ReadFactors read, uint32_t firstKey, uint32_t secondKey)
{
    int expectedFirst = 1;
    int expectedSecond = 2;
    int expectedStatus =
        node == nullptr ? static_cast<int>(StatusBadArgument) : node->getValue(firstKey, expectedFirst);
    if (expectedStatus == StatusOk) expectedStatus = node->getValue(secondKey, expectedSecond);
    int first = 1;
    int second = 2;
    require(read(node, first, second) == expectedStatus, "factors have the status of the read");
    require(first == expectedFirst && second == expectedSecond, "factors are the node's");
}

} // namespace

void checkFormat(const IGraphConfig* port)
{
    checkInfo(port);
    checkImage(port);
}

void checkGeometry(const IGraphConfig* node)
{
    constexpr unsigned int masks[] = {0x00, 0x03, 0x0f, 0x3f, 0x34};
    for (const unsigned int mask : masks) checkDimensions(node, mask);
    checkFactors(node, GraphCameraUtil::sensorGetBinningFactor, NUXO_KEY_H_FACTOR, NUXO_KEY_V_FACTOR);
    checkFactors(node, GraphCameraUtil::sensorGetScalingFactor, NUXO_KEY_NUM_FACTOR, NUXO_KEY_DENOM_FACTOR);
}

} // namespace fuzzing
