// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/formats/Alignment.h>
#include <nuxo/formats/FormatTable.h>
#include <nuxo/formats/Fourcc.h>
#include <nuxo/formats/dec400util.h>

#include <algorithm>
#include <cmath>

namespace NUXOFormats {

namespace {

using StrideRule = uint32_t (*)(uint32_t width);

template <uint32_t BytesPerPixel, uint32_t Alignment> uint32_t linear(uint32_t width)
{
    return alignUp(width * BytesPerPixel, Alignment);
}

// 128 bytes hold 42 pairs of pixels.
uint32_t blocksOf42Pairs(uint32_t width)
{
    return 128U * static_cast<uint32_t>(std::ceil(width / 2.0 / 42.0));
}

uint32_t nextPowerOfTwo(uint32_t value)
{
    constexpr uint64_t limit = uint64_t{1} << 31U;
    uint64_t power = 2;
    while (power < value) power *= 2;
    return power > limit ? 0U : static_cast<uint32_t>(power);
}

template <uint32_t BytesPerPixel> uint32_t powerOfTwo(uint32_t width)
{
    return alignUp(nextPowerOfTwo(alignUp(width * BytesPerPixel, 256)), 64);
}

uint32_t unknownStride(uint32_t width)
{
    NUXO_LOG(NUXO::LogWarning, kFormatsTag, "bpl defaulting to width");
    return alignUp(width, 64);
}

// clang-format off
constexpr CodeRow<StrideRule> kStrideRows[] = {
    {"NV12",                                                                                      linear<1, 64>},
    {"CILE CN12 CT12 IYUV TILE",                                                                  linear<1, 128>},
    {"BG8C GB8C GR8C RG8C",                                                                       linear<1, 512>},
    {"BA10 BG10 GB10 GR10 RG10 IR16 P010 P012 P01L PL12 PAFi PAFn PF8i PF1n PF2n PF4n PF6n bV0K", linear<2, 64>},
    {"C010 C012 P412 PC10 PC12 T010 T012 V420",                                                   linear<2, 128>},
    {"BG1C GB1C GR1C RG1C",                                                                       linear<2, 512>},
    {"PF1i PF2i PF4i PF6i CSL0 CSL1 CSL2 CSL3 CSL4 CSL5 CSL6 CSL7",                               linear<4, 64>},
    {"y032",                                                                                      linear<6, 64>},
    {"CS42",                                                                                      blocksOf42Pairs},
    {"C420 P01Y",                                                                                 powerOfTwo<2>},
    {"CIYU",                                                                                      powerOfTwo<1>},
    // any other: unknownStride
};
// clang-format on
constexpr CodeTable kStrides(kStrideRows);

struct Frame {
    const qv_format_t& format;
    uint32_t width;
    uint32_t height;
    uint32_t bpl;
    uint32_t* tsOffsets;
    uint32_t* tsSizes;
};

using SizeRule = uint32_t (*)(const Frame& frame);

// Truncated, modulo 2^32 as all sizes. Floats from 2^56 on are multiples of 2^32.
uint32_t truncated(float size)
{
    constexpr float convertible = 9.2e18F;
    return size < convertible ? static_cast<uint32_t>(static_cast<uint64_t>(size)) : 0U;
}

uint32_t singlePlane(const Frame& frame)
{
    return frame.bpl * frame.height;
}

uint32_t compressed(const Frame& frame)
{
    return calculateDec400BufferSize(frame.format.fourcc, frame.width, frame.height, frame.bpl, frame.format.bitDepth,
                                     frame.tsOffsets, frame.tsSizes);
}

uint32_t tiled(const Frame& frame)
{
    return frame.bpl * (alignUp(frame.height / 2, 32) + alignUp(frame.height, 32));
}

// A line of the buffer holds two of the image. Clients depend on the rounding of single precision, here and below.
uint32_t pairsOfLines(const Frame& frame)
{
    const uint32_t pairs = frame.height / 2;
    return truncated(static_cast<float>(frame.bpl) * static_cast<float>(pairs));
}

uint32_t oneAndAHalf(const Frame& frame)
{
    return truncated(static_cast<float>(frame.bpl) * static_cast<float>(frame.height) * 1.5F);
}

constexpr std::string_view kCompressedCodes =
    "BG1C BG8C GB1C GB8C GR1C GR8C RG1C RG8C C010 C012 C420 CILE CIYU CN12 CT12 P01Y PC10 PC12";

// clang-format off
constexpr CodeRow<SizeRule> kSizeRows[] = {
    {"BA10 BG10 GB10 GR10 RG10 BGGR GBRG GRBG RGGB CSBA bV0K", singlePlane},
    {kCompressedCodes,                                         compressed},
    {"T010 T012 TILE",                                         tiled},
    {"y032",                                                   pairsOfLines},
    // any other: oneAndAHalf
};
// clang-format on
constexpr CodeTable kSizes(kSizeRows);

bool isDec400Code(uint32_t fourcc)
{
    const SizeRule* const rule = kSizes.find(fourcc);
    return rule != nullptr && *rule == compressed;
}

void clear(uint32_t* perPlane)
{
    if (perPlane != nullptr) std::fill_n(perPlane, 3, 0U);
}

} // namespace

uint32_t getBpl(const qv_format_t& format, uint32_t width)
{
    return ::getBpl(format.fourcc, width);
}

uint32_t calculateBufferSize(const qv_format_t& format, uint32_t width, uint32_t height, uint32_t bpl, uint32_t* a,
                             uint32_t* b)
{
    const Frame frame = {format, width, height, bpl != 0 ? bpl : getBpl(format, width), a, b};
    const SizeRule* const rule = kSizes.find(format.fourcc);
    return rule != nullptr ? (*rule)(frame) : oneAndAHalf(frame);
}

uint32_t calculateDec400BufferSize(uint32_t fourcc, uint32_t /*width*/, uint32_t height, uint32_t bpl,
                                   uint32_t bitDepth, uint32_t* ts_offsets, uint32_t* ts_sizes)
{
    if (isDec400Code(fourcc)) {
        const bool tnr = fourcc == fourccOf("CT12");
        return dec400util::calcBufferSize(fourcc, bitDepth, tnr, bpl, height, 0, ts_offsets, ts_sizes);
    }
    NUXO_LOG(NUXO::LogWarning, kFormatsTag, "Unsupported compressed format 0x%x, not calculating buffer size.", fourcc);
    clear(ts_offsets);
    clear(ts_sizes);
    return 0;
}

} // namespace NUXOFormats

uint32_t getBpl(uint32_t fourcc, uint32_t width)
{
    const NUXOFormats::StrideRule* const rule = NUXOFormats::kStrides.find(fourcc);
    return rule != nullptr ? (*rule)(width) : NUXOFormats::unknownStride(width);
}
