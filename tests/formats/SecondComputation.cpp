// SPDX-License-Identifier: Apache-2.0
#include "formats/SecondComputation.h"

#include <algorithm>
#include <initializer_list>

namespace second {

namespace {

constexpr uint64_t kTwoTo31 = 1ULL << 31;
constexpr uint64_t kTwoTo32 = 1ULL << 32;

uint32_t cut(uint64_t value)
{
    return static_cast<uint32_t>(value % kTwoTo32);
}

// How many parts of this size hold the whole.
uint64_t partsOf(uint64_t size, uint64_t whole)
{
    return whole / size + (whole % size == 0 ? 0 : 1);
}

uint64_t roundedUp(uint64_t value, uint64_t unit)
{
    return partsOf(unit, value) * unit;
}

bool isOneOf(uint32_t fourcc, std::initializer_list<const char*> codes)
{
    return std::any_of(codes.begin(), codes.end(), [fourcc](const char* text) { return fourcc == code(text); });
}

// Codes that count up in their last character.
bool isBetween(uint32_t fourcc, const char* first, const char* last)
{
    return code(first) <= fourcc && fourcc <= code(last);
}

bool isAmong(uint32_t value, std::initializer_list<uint32_t> values)
{
    return std::find(values.begin(), values.end(), value) != values.end();
}

// A number of single precision that is not negative: at most 24 binary digits, and where the point stands.
struct Single {
    uint64_t digits;
    int exponent;
};

constexpr Single kOneAndAHalf = {3, -1};

// To the nearest, and from the middle to the even neighbour.
Single rounded(uint64_t digits, int exponent)
{
    int excess = 0;
    while (digits >> excess >= 1ULL << 24) ++excess;
    if (excess == 0) return {digits, exponent};
    const uint64_t kept = digits >> excess;
    const uint64_t dropped = digits - (kept << excess);
    const uint64_t half = 1ULL << (excess - 1);
    const bool up = dropped > half || (dropped == half && kept % 2 == 1);
    return {kept + (up ? 1 : 0), exponent + excess};
}

Single product(const Single& a, const Single& b)
{
    return rounded(a.digits * b.digits, a.exponent + b.exponent);
}

Single single(uint32_t value)
{
    return rounded(value, 0);
}

// The whole part, modulo 2^32.
uint32_t whole(const Single& number)
{
    if (number.exponent >= 32) return 0;
    return number.exponent < 0 ? cut(number.digits >> -number.exponent) : cut(number.digits << number.exponent);
}

// Bytes of a line are units of so many bytes, each for a group of pixels: pixels * bytes / group of them.
struct LineRule {
    uint64_t bytes;
    uint64_t group;
    uint64_t unit;
};

std::optional<LineRule> lineRule(uint32_t fourcc)
{
    const auto aligned = [](uint64_t bytes, uint64_t alignment) { return LineRule{bytes, alignment, alignment}; };
    if (isOneOf(fourcc, {"NV12"})) return aligned(1, 64);
    if (isOneOf(fourcc, {"CILE", "CN12", "CT12", "IYUV", "TILE"})) return aligned(1, 128);
    if (isOneOf(fourcc, {"BG8C", "GB8C", "GR8C", "RG8C"})) return aligned(1, 512);
    if (isOneOf(fourcc, {"BA10", "BG10", "GB10", "GR10", "RG10", "IR16", "P010", "P012", "P01L"}))
        return aligned(2, 64);
    if (isOneOf(fourcc, {"PL12", "PAFi", "PAFn", "PF8i", "PF1n", "PF2n", "PF4n", "PF6n", "bV0K"}))
        return aligned(2, 64);
    if (isOneOf(fourcc, {"C010", "C012", "P412", "PC10", "PC12", "T010", "T012", "V420"})) return aligned(2, 128);
    if (isOneOf(fourcc, {"BG1C", "GB1C", "GR1C", "RG1C"})) return aligned(2, 512);
    if (isOneOf(fourcc, {"PF1i", "PF2i", "PF4i", "PF6i"}) || isBetween(fourcc, "CSL0", "CSL7")) return aligned(4, 64);
    if (isOneOf(fourcc, {"y032"})) return aligned(6, 64);
    if (isOneOf(fourcc, {"CS42"})) return LineRule{1, 2 * 42, 128};
    return std::nullopt;
}

bool hasPowerOfTwoLines(uint32_t fourcc)
{
    return isOneOf(fourcc, {"C420", "P01Y", "CIYU"});
}

uint32_t powerOfTwoLine(uint32_t fourcc, uint32_t width)
{
    const uint32_t samples = isOneOf(fourcc, {"CIYU"}) ? width : cut(2ULL * width);
    const uint32_t least = cut(roundedUp(samples, 256));
    uint64_t power = 2;
    while (power < least) power *= 2;
    return power > kTwoTo31 ? 0 : cut(roundedUp(power, 64));
}

bool isBayer(uint32_t format)
{
    return isAmong(format, {20, 21, 22, 23});
}

bool isDeepSemiPlanar(uint32_t format)
{
    return 49 <= format && format <= 56;
}

bool isSemiPlanar(uint32_t format)
{
    return isAmong(format, {5, 7}) || isDeepSemiPlanar(format);
}

bool hasWholeTileRows(uint32_t format)
{
    return isAmong(format, {5, 7, 50, 52, 54, 56});
}

uint64_t bitsPerTile(uint32_t tile, bool tiled)
{
    if (tiled) return 8;
    if (isAmong(tile, {64, 128})) return 1;
    return tile == 256 ? 2 : 4;
}

// The reference frames of the noise filter have larger tiles.
uint32_t semiPlanarTile(uint32_t plane, bool tnr, uint32_t usual)
{
    if (!tnr) return usual;
    return plane < 2 ? 512U >> plane : 0;
}

// Tables begin and end at pages.
uint32_t nextPage(uint64_t position)
{
    return cut(roundedUp(cut(position), 4096));
}

} // namespace

std::vector<uint32_t> codesWithoutRow()
{
    std::vector<uint32_t> codes;
    for (const char* text : {"BA12", "CSBA", "GR08", "CSYP", "CSYC", "BIN8"}) codes.push_back(code(text));
    for (const char* text : {"bV0E", "bV0F", "bV0H", "bV0I", "bV0J", "bV0L"}) codes.push_back(code(text));
    for (uint32_t value = code("bV0M"); value <= code("bV0T"); ++value) codes.push_back(value);
    return codes;
}

bool hasStrideRule(uint32_t fourcc)
{
    return hasPowerOfTwoLines(fourcc) || lineRule(fourcc).has_value();
}

uint32_t stride(uint32_t fourcc, uint32_t width)
{
    if (hasPowerOfTwoLines(fourcc)) return powerOfTwoLine(fourcc, width);
    const LineRule rule = lineRule(fourcc).value_or(LineRule{1, 64, 64});
    return cut(partsOf(rule.group, width * rule.bytes) * rule.unit);
}

std::optional<FrameFormat> frameFormat(uint32_t fourcc)
{
    const auto raw = [](uint32_t value) { return FrameFormat{value, 1, 0}; };
    const auto yuv = [](uint32_t value) { return FrameFormat{value, 0, 0}; };
    if (isOneOf(fourcc, {"GRBG", "GR10", "GR8C", "GR1C"})) return raw(20);
    if (isOneOf(fourcc, {"RGGB", "RG8C", "RG1C"})) return raw(21);
    if (isOneOf(fourcc, {"BGGR", "BG8C", "BG1C"})) return raw(22);
    if (isOneOf(fourcc, {"GBRG", "GB8C", "GB1C"})) return raw(23);
    if (isOneOf(fourcc, {"BA10", "BA12", "CSBA", "GR08"})) return raw(25);
    if (isBetween(fourcc, "CSL0", "CSL7")) return raw(42);
    if (isBetween(fourcc, "bV0E", "bV0L")) return raw(43);
    if (isBetween(fourcc, "bV0M", "bV0T")) return FrameFormat{43, 1, 1};
    if (isOneOf(fourcc, {"PAFn", "PF8n", "PF1n", "PF2n", "PF4n", "PF6n"})) return raw(61);
    if (isOneOf(fourcc, {"PAFi", "PF8i", "PF1i", "PF2i", "PF4i", "PF6i"})) return raw(62);
    if (isOneOf(fourcc, {"CS40", "CS42"})) return FrameFormat{3, 0, 1};
    if (isOneOf(fourcc, {"V420", "P412", "S420", "C420", "IYUV", "CIYU", "P01Y", "CSYI"})) return yuv(3);
    if (isOneOf(fourcc, {"YV12"})) return yuv(4);
    if (isOneOf(fourcc, {"NV12", "CN12", "CT12"})) return yuv(5);
    if (isOneOf(fourcc, {"TILE", "CILE"})) return yuv(7);
    if (isOneOf(fourcc, {"NV21"})) return yuv(8);
    if (isOneOf(fourcc, {"NV16"})) return yuv(11);
    if (isOneOf(fourcc, {"YUY2"})) return yuv(14);
    if (isOneOf(fourcc, {"CSYP"})) return yuv(16);
    if (isOneOf(fourcc, {"M420", "CSYC"})) return yuv(24);
    if (isOneOf(fourcc, {"BIN8"})) return yuv(28);
    if (isOneOf(fourcc, {"y032"})) return yuv(47);
    if (isOneOf(fourcc, {"P01L"})) return yuv(49);
    if (isOneOf(fourcc, {"P010", "PC10"})) return yuv(50);
    if (isOneOf(fourcc, {"PL12"})) return yuv(51);
    if (isOneOf(fourcc, {"P012", "PC12"})) return yuv(52);
    if (isOneOf(fourcc, {"T010", "C010"})) return yuv(54);
    if (isOneOf(fourcc, {"T012", "C012"})) return yuv(56);
    if (isOneOf(fourcc, {"IR16"})) return yuv(63);
    return std::nullopt;
}

bool isCompressedFrame(uint32_t fourcc)
{
    return isOneOf(fourcc, {"BG1C", "BG8C", "GB1C", "GB8C", "GR1C", "GR8C", "RG1C", "RG8C"}) ||
           isOneOf(fourcc, {"C010", "C012", "C420", "CILE", "CIYU", "CN12", "CT12", "P01Y", "PC10", "PC12"});
}

uint32_t plainFrameSize(uint32_t fourcc, uint32_t bpl, uint32_t height)
{
    if (isOneOf(fourcc, {"BA10", "BG10", "GB10", "GR10", "RG10"}) ||
        isOneOf(fourcc, {"BGGR", "GBRG", "GRBG", "RGGB", "CSBA", "bV0K"}))
        return cut(uint64_t(bpl) * height);
    if (isOneOf(fourcc, {"T010", "T012", "TILE"}))
        return cut(bpl * uint64_t(cut(roundedUp(height / 2, 32) + roundedUp(height, 32))));
    if (isOneOf(fourcc, {"y032"})) return whole(product(single(bpl), single(height / 2)));
    return whole(product(product(single(bpl), single(height)), kOneAndAHalf));
}

Buffer compressedFrame(uint32_t fourcc, uint32_t bitDepth, uint32_t bpl, uint32_t height)
{
    if (!isCompressedFrame(fourcc)) return {};
    return buffer(frameFormat(fourcc)->value, bitDepth, fourcc == code("CT12"), bpl, height, 0);
}

bool isFormatCompressible(uint32_t format)
{
    return isBayer(format) || isAmong(format, {3, 5, 7, 50, 54, 56});
}

bool isDepthCompressible(uint32_t format, uint32_t depth)
{
    if (format == 3 || isBayer(format)) return isAmong(depth, {8, 10, 12});
    return impliedDepth(format) != 0 && impliedDepth(format) == depth;
}

uint32_t impliedDepth(uint32_t format)
{
    if (isAmong(format, {5, 7})) return 8;
    if (isAmong(format, {50, 54})) return 10;
    return format == 56 ? 12 : 0;
}

Alignment strideAlignment(uint32_t format, bool tnr)
{
    if (format == 3) return {256, 2};
    if (isAmong(format, {5, 50})) return {128, tnr ? 4U : 2U};
    if (isTiled(format)) return {64, 8};
    return {isBayer(format) ? 512U : 1U, 1};
}

uint32_t inputStrideAlignment(uint32_t pinType, uint32_t format, uint32_t mipiType)
{
    return isAmong(pinType, {1, 3}) && isAmong(format, {20, 24}) && isAmong(mipiType, {42, 43, 44}) ? 512 : 0;
}

uint32_t tileSize(uint32_t format, uint32_t bitDepth, uint32_t plane, bool tnr)
{
    if (isTiled(format)) return 256;
    if (isBayer(format)) return isAmong(bitDepth, {8, 10, 12}) ? 512 : 0;
    if (format == 3 && plane <= 2) return plane == 0 ? 256 : 128;
    if (format == 5) return semiPlanarTile(plane, tnr, 128);
    return isAmong(format, {50, 52}) ? semiPlanarTile(plane, tnr, 256) : 0;
}

uint32_t planes(uint32_t format)
{
    return format == 3 ? 3 : isSemiPlanar(format) ? 2 : 1;
}

uint32_t chromaHeightDivisor(uint32_t format)
{
    return planes(format) > 1 ? 2 : 1;
}

uint32_t chromaStrideDivisor(uint32_t format)
{
    return planes(format) == 3 ? 2 : 1;
}

bool isTiled(uint32_t format)
{
    return isAmong(format, {7, 54, 56});
}

Plane planeSize(uint32_t stride, uint32_t height, uint32_t tile, bool tiled)
{
    const uint32_t image = cut(uint64_t(stride) * height);
    if (tile == 0) return {image, 0};
    return {image, cut((image / tile * bitsPerTile(tile, tiled) + 7) / 8)};
}

Buffer buffer(uint32_t format, uint32_t bitDepth, bool tnr, uint32_t stride, uint32_t height, uint32_t extra)
{
    const uint64_t rows = hasWholeTileRows(format) ? 32 : 1;
    const uint32_t count = planes(format);
    Buffer result;
    uint64_t position = extra;
    for (uint32_t plane = 0; plane < count; ++plane) {
        const uint32_t tile = tileSize(format, bitDepth, plane, tnr);
        if (tile == 0) return {};
        const uint32_t lines = plane == 0 ? height : height / chromaHeightDivisor(format);
        const uint32_t line = plane == 0 ? stride : stride / chromaStrideDivisor(format);
        const Plane size = planeSize(line, cut(roundedUp(lines, rows)), tile, isTiled(format));
        position += size.image;
        result.tables[plane] = size.table;
    }
    for (uint32_t plane = 0; plane < count; ++plane) {
        result.offsets[plane] = nextPage(position);
        position = uint64_t(result.offsets[plane]) + result.tables[plane];
    }
    result.size = nextPage(position);
    return result;
}

} // namespace second
