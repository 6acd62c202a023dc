// SPDX-License-Identifier: Apache-2.0
// Every way to write the functions, in C++ and in C.
#include "formats/FormatsFixture.h"
#include "formats/c99/frame_of_c.h"

namespace formatstest {

namespace {

using SpellingsTest = FormatsTest;

template <class Function> bool isSame(Function* one, Function* other)
{
    return one == other;
}

TEST_F(SpellingsTest, PlainFunctionsAreReachedThroughTheNamespace)
{
    using LineOfCode = uint32_t(uint32_t, uint32_t);
    using IsCompressed = bool(uint32_t);
    EXPECT_TRUE(isSame<LineOfCode>(&::getBpl, &NUXOFormats::getBpl));
    EXPECT_TRUE(isSame<IsCompressed>(&::isCompressedFormat, &NUXOFormats::isCompressedFormat));
    EXPECT_TRUE(isSame(&::qv_cipf_is_compressed_format, &NUXOFormats::qv_cipf_is_compressed_format));
    EXPECT_TRUE(isSame(&::fourcc_to_css_frame_format, &NUXOFormats::fourcc_to_css_frame_format));
}

TEST_F(SpellingsTest, QualifiedCallsFindTheirOverload)
{
    const NUXOFormats::qv_format_t format = bareFormat(code("BA10"));
    EXPECT_EQ(::getBpl(code("BA10"), 1920), 3840U);
    EXPECT_EQ(NUXOFormats::getBpl(code("BA10"), 1920), 3840U);
    EXPECT_EQ(NUXOFormats::getBpl(format, 1920), 3840U);
    EXPECT_TRUE(::isCompressedFormat(code("CN12")));
    EXPECT_TRUE(NUXOFormats::isCompressedFormat(code("CN12")));
    EXPECT_TRUE(NUXOFormats::isCompressedFormat("YUV420_8_SP_C"));
}

TEST_F(SpellingsTest, UnqualifiedCallsAreNotAmbiguous)
{
    using namespace NUXOFormats;
    const qv_format_t format = bareFormat(code("BA10"));
    EXPECT_EQ(getBpl(code("BA10"), 1920), 3840U);
    EXPECT_EQ(getBpl(format, 1920), 3840U);
    EXPECT_TRUE(isCompressedFormat(code("CN12")));
    EXPECT_TRUE(isCompressedFormat("YUV420_8_SP_C"));
    EXPECT_TRUE(qv_cipf_is_compressed_format(code("CN12")));
    uint32_t frameFormat = kUnwritten;
    EXPECT_EQ(fourcc_to_css_frame_format(code("CN12"), &frameFormat, nullptr, nullptr), 0);
    EXPECT_EQ(frameFormat, 5U);
    EXPECT_EQ(calculateBufferSize(format, 1920, 1080, 0, nullptr, nullptr), 4147200U); // 3840 * 1080
}

TEST_F(SpellingsTest, CProgramDescribesAPlanarFrame)
{
    const frame_of_c frame = describe_frame_in_c(code("CIYU"), 8, 257, 3);
    EXPECT_EQ(frame.status, 0);
    EXPECT_TRUE(frame.is_compressed);
    EXPECT_EQ(frame.frame_format, 3U);
    EXPECT_EQ(frame.raw_flag, 0U);
    EXPECT_EQ(frame.p64_flag, 0U);
    EXPECT_TRUE(frame.is_valid);
    EXPECT_FALSE(frame.is_tiled);
    EXPECT_EQ(frame.bit_depth, 0U);
    EXPECT_EQ(frame.alignment, 256U);
    EXPECT_EQ(frame.stride_factor, 2U);
    EXPECT_EQ(frame.chroma_stride, 128U); // half of 257
    EXPECT_EQ(frame.chroma_height, 1U);   // half of 3
    EXPECT_EQ(frame.input_alignment, 0U);
    EXPECT_EQ(frame.input_flag, 0U);
    EXPECT_EQ(frame.size, 16384U);
    EXPECT_EQ(PerPlane({frame.ts_offsets[0], frame.ts_offsets[1], frame.ts_offsets[2]}), PerPlane({4096, 8192, 12288}));
    EXPECT_EQ(PerPlane({frame.ts_sizes[0], frame.ts_sizes[1], frame.ts_sizes[2]}), PerPlane({1, 1, 1}));
    // 257 * 3 bytes and the byte of table, 128 and a byte twice.
    EXPECT_EQ(PerPlane({frame.plane_sizes[0], frame.plane_sizes[1], frame.plane_sizes[2]}), PerPlane({772, 129, 129}));
}

TEST_F(SpellingsTest, CProgramDescribesABayerFrame)
{
    const frame_of_c frame = describe_frame_in_c(code("GR8C"), 8, 2048, 1080);
    EXPECT_EQ(frame.frame_format, 20U);
    EXPECT_EQ(frame.raw_flag, 1U);
    EXPECT_TRUE(frame.is_valid);
    EXPECT_EQ(frame.alignment, 512U);
    EXPECT_EQ(frame.input_alignment, 512U);
    EXPECT_EQ(frame.input_flag, 1U);
    EXPECT_EQ(frame.size, 2215936U);
}

TEST_F(SpellingsTest, CProgramIsToldWhenThereIsNothingToDescribe)
{
    const frame_of_c frame = describe_frame_in_c(code("none"), 8, 2048, 1080);
    EXPECT_EQ(frame.status, -32);
    EXPECT_FALSE(frame.is_compressed);
    EXPECT_EQ(frame.size, 0U);
}

} // namespace

} // namespace formatstest
