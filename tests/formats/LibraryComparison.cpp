// SPDX-License-Identifier: Apache-2.0
#include "formats/LibraryComparison.h"

#include "formats/SecondComputation.h"

#include <nuxo/formats/NUXOFormats.h>
#include <nuxo/formats/dec400util.h>
#include <nuxo/formats/nci_dec400.h>
#include <nuxo/formats/qv_css_frame_format.h>

#include <algorithm>
#include <optional>

namespace second {

namespace {

// Remembers the first thing that does not hold.
class Verdict {
public:
    void agree(bool agrees, const char* what)
    {
        if (!agrees && mWhat == nullptr) mWhat = what;
    }

    const char* result() const { return mWhat; }

private:
    const char* mWhat = nullptr;
};

// A place for an output that may be left out, with a content that no output happens to have.
template <class Value> class Place {
public:
    Place(uint32_t without, uint32_t number) : mUsed((without >> number & 1) == 0) { mValues.fill(kUnwritten); }

    Value* pointer() { return mUsed ? mValues.data() : nullptr; }
    bool holds(Value value) const { return holds(std::array<Value, 3>{value, kUnwritten, kUnwritten}); }
    bool isUntouched() const { return holds(kUnwritten); }

    bool holds(const std::array<Value, 3>& values) const
    {
        return mUsed ? mValues == values : mValues == std::array<Value, 3>{kUnwritten, kUnwritten, kUnwritten};
    }

private:
    static constexpr Value kUnwritten = static_cast<Value>(0xA5A5A5A5);

    bool mUsed;
    std::array<Value, 3> mValues;
};

// Where a function puts table offsets and sizes.
class BufferOutputs {
public:
    explicit BufferOutputs(uint32_t without) : mOffsets(without, 0), mTables(without, 1) {}

    uint32_t* offsets() { return mOffsets.pointer(); }
    uint32_t* tables() { return mTables.pointer(); }
    bool hold(const Buffer& buffer) const { return mOffsets.holds(buffer.offsets) && mTables.holds(buffer.tables); }
    bool areUntouched() const { return mOffsets.isUntouched() && mTables.isUntouched(); }

private:
    Place<uint32_t> mOffsets;
    Place<uint32_t> mTables;
};

template <class Calculate>
void compareBuffers(uint32_t without, Calculate&& calculate, const Buffer& expected, const char* what, Verdict& verdict)
{
    BufferOutputs outputs(without);
    const uint32_t size = calculate(outputs.offsets(), outputs.tables());
    verdict.agree(size == expected.size && outputs.hold(expected), what);
}

void compareLines(const FormatQuestion& question, const NUXOFormats::qv_format_t& row, Verdict& verdict)
{
    const uint32_t expected = stride(question.fourcc, question.width);
    verdict.agree(::getBpl(question.fourcc, question.width) == expected, "bytes per line of the code");
    verdict.agree(NUXOFormats::getBpl(row, question.width) == expected, "bytes per line of the row");
}

void compareFrame(const FormatQuestion& question, const NUXOFormats::qv_format_t& row, Verdict& verdict)
{
    const auto calculate = [&](uint32_t* offsets, uint32_t* tables) {
        return NUXOFormats::calculateBufferSize(row, question.width, question.height, question.bpl, offsets, tables);
    };
    const uint32_t bpl = question.bpl != 0 ? question.bpl : stride(question.fourcc, question.width);
    if (isCompressedFrame(question.fourcc)) {
        const Buffer expected = compressedFrame(question.fourcc, question.bitDepth, bpl, question.height);
        compareBuffers(question.without, calculate, expected, "compressed frame", verdict);
    } else {
        BufferOutputs outputs(question.without);
        const uint32_t size = calculate(outputs.offsets(), outputs.tables());
        verdict.agree(size == plainFrameSize(question.fourcc, bpl, question.height), "size of a plain frame");
        verdict.agree(outputs.areUntouched(), "outputs of a plain frame stay as they were");
    }
}

void compareCompressedFrame(const FormatQuestion& question, Verdict& verdict)
{
    const auto calculate = [&](uint32_t* offsets, uint32_t* tables) {
        return NUXOFormats::calculateDec400BufferSize(question.fourcc, question.width, question.height, question.bpl,
                                                      question.bitDepth, offsets, tables);
    };
    const Buffer expected = compressedFrame(question.fourcc, question.bitDepth, question.bpl, question.height);
    compareBuffers(question.without, calculate, expected, "compressed buffer of a code", verdict);
}

void compareFrameFormat(const FormatQuestion& question, Verdict& verdict)
{
    Place<uint32_t> value(question.without, 2);
    Place<uint8_t> raw(question.without, 3);
    Place<uint8_t> p64(question.without, 4);
    const int status = fourcc_to_css_frame_format(question.fourcc, value.pointer(), raw.pointer(), p64.pointer());
    const std::optional<FrameFormat> expected = frameFormat(question.fourcc);
    verdict.agree(status == (expected ? 0 : -32), "status of the frame format");
    if (expected) {
        verdict.agree(value.holds(expected->value), "frame format");
        verdict.agree(raw.holds(expected->raw) && p64.holds(expected->p64), "flags of the frame format");
    } else {
        verdict.agree(value.isUntouched() && raw.isUntouched() && p64.isUntouched(), "outputs of an unknown code");
    }
}

void compareUtility(const FormatQuestion& question, Verdict& verdict)
{
    const std::optional<FrameFormat> mapped = frameFormat(question.fourcc);
    const uint32_t format = mapped ? mapped->value : 7;
    verdict.agree(dec400util::numberOfPlanes(question.fourcc) == planes(format), "number of planes by code");

    const auto calculate = [&](uint32_t* offsets, uint32_t* tables) {
        return dec400util::calcBufferSize(question.fourcc, question.bitDepth, question.tnr, question.bpl,
                                          question.height, question.extra, offsets, tables);
    };
    const Buffer expected =
        buffer(format, question.bitDepth, question.tnr, question.bpl, question.height, question.extra);
    compareBuffers(question.without, calculate, expected, "buffer of a code", verdict);
}

void compareRules(const BufferQuestion& question, Verdict& verdict)
{
    const uint32_t format = question.format;
    verdict.agree(nci_dec400_psys_cmprs_validate_format(format, question.tnr) == isFormatCompressible(format),
                  "valid frame format");
    verdict.agree(nci_dec400_psys_cmprs_validate_bit_depth(format, question.bitDepth) ==
                      isDepthCompressible(format, question.bitDepth),
                  "valid bit depth");
    verdict.agree(nci_dec400_psys_cmprs_get_bit_depth(format, question.extra) == impliedDepth(format), "bit depth");
    verdict.agree(nci_dec400_cmpr_get_tile_size(format, question.bitDepth, question.plane, question.tnr) ==
                      tileSize(format, question.bitDepth, question.plane, question.tnr),
                  "tile size");
    verdict.agree(nci_dec400_cmpr_get_num_planes(format) == planes(format), "number of planes");
    verdict.agree(nci_dec400_cmpr_get_chroma_height_div(format) == chromaHeightDivisor(format), "chroma height");
    verdict.agree(nci_dec400_cmpr_get_chroma_stride_div(format) == chromaStrideDivisor(format), "chroma stride");
    verdict.agree(nci_dec400_cmprs_is_tiled(format) == isTiled(format), "tiled");
}

void compareAlignment(const BufferQuestion& question, Verdict& verdict)
{
    Place<uint32_t> factor(question.without, 2);
    Place<uint32_t> extra(question.without, 3);
    const uint32_t bytes = nci_dec400_cmprs_get_stride_alignment(question.format, question.extra, question.tnr,
                                                                 factor.pointer(), extra.pointer());
    const Alignment expected = strideAlignment(question.format, question.tnr);
    verdict.agree(bytes == expected.bytes, "stride alignment");
    verdict.agree(factor.holds(expected.factor), "stride factor");
    verdict.agree(extra.holds(0), "extra of the stride alignment");
}

void compareBuffer(const BufferQuestion& question, Verdict& verdict)
{
    const auto calculate = [&](uint32_t* offsets, uint32_t* tables) {
        return nci_dec400_cmprs_calc_buf_size(question.format, question.bitDepth, question.tnr, question.stride,
                                              question.height, question.extra, offsets, tables);
    };
    const Buffer expected =
        buffer(question.format, question.bitDepth, question.tnr, question.stride, question.height, question.extra);
    compareBuffers(question.without, calculate, expected, "buffer of a frame format", verdict);
}

} // namespace

const char* difference(const FormatQuestion& question)
{
    NUXOFormats::qv_format_t row;
    row.fourcc = question.fourcc;
    row.bitDepth = question.bitDepth;
    Verdict verdict;
    compareLines(question, row, verdict);
    compareFrame(question, row, verdict);
    compareCompressedFrame(question, verdict);
    compareFrameFormat(question, verdict);
    compareUtility(question, verdict);
    return verdict.result();
}

const char* difference(const BufferQuestion& question)
{
    Verdict verdict;
    compareRules(question, verdict);
    compareAlignment(question, verdict);
    compareBuffer(question, verdict);
    return verdict.result();
}

const char* difference(const PlaneQuestion& question)
{
    Place<uint32_t> image(question.without, 0);
    Place<uint32_t> table(question.without, 1);
    const uint32_t sum = nci_dec400_cmprs_calc_plane_buf_size(question.stride, question.height, question.tile,
                                                              question.tiled, image.pointer(), table.pointer());
    const Plane expected = planeSize(question.stride, question.height, question.tile, question.tiled);
    Verdict verdict;
    verdict.agree(image.holds(expected.image), "image bytes of a plane");
    verdict.agree(table.holds(expected.table), "table bytes of a plane");
    // What is returned without a tile size is nobody's to rely on.
    if (question.tile != 0) verdict.agree(sum == expected.image + expected.table, "bytes of a plane");
    return verdict.result();
}

const char* difference(const InputQuestion& question)
{
    Place<uint32_t> flag(question.without, 0);
    const uint32_t bytes = nci_dec400_isys_cmprs_get_stride_alignment(question.pinType, question.format,
                                                                      question.mipiType, flag.pointer());
    const uint32_t expected = inputStrideAlignment(question.pinType, question.format, question.mipiType);
    Verdict verdict;
    verdict.agree(bytes == expected, "stride alignment of the input system");
    verdict.agree(flag.holds(expected != 0 ? 1 : 0), "flag of the input system");
    return verdict.result();
}

std::ostream& operator<<(std::ostream& stream, const FormatQuestion& question)
{
    return stream << "code 0x" << std::hex << question.fourcc << std::dec << ", depth " << question.bitDepth
                  << ", width " << question.width << ", height " << question.height << ", bpl " << question.bpl
                  << ", extra " << question.extra << ", tnr " << question.tnr << ", without " << question.without;
}

std::ostream& operator<<(std::ostream& stream, const BufferQuestion& question)
{
    return stream << "format " << question.format << ", depth " << question.bitDepth << ", plane " << question.plane
                  << ", stride " << question.stride << ", height " << question.height << ", extra " << question.extra
                  << ", tnr " << question.tnr << ", without " << question.without;
}

std::ostream& operator<<(std::ostream& stream, const PlaneQuestion& question)
{
    return stream << "stride " << question.stride << ", height " << question.height << ", tile " << question.tile
                  << ", tiled " << question.tiled << ", without " << question.without;
}

std::ostream& operator<<(std::ostream& stream, const InputQuestion& question)
{
    return stream << "pin " << question.pinType << ", format " << question.format << ", type " << question.mipiType
                  << ", without " << question.without;
}

} // namespace second
