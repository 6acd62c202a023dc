// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_FORMATS_FORMAT_ROWS_H
#define NUXO_TESTS_FORMATS_FORMAT_ROWS_H

#include <cstdint>

namespace formatstest {

/// One row of the documented format table.
struct FormatRow {
    const char* name;
    const char* code;
    const char* family;
    uint32_t bpp;
    uint32_t bitDepth;
    uint32_t sampleBits;
    uint32_t layoutHint;
    bool compressed;
    const char* planes; ///< "name:bits" of each
};

constexpr FormatRow kFormatRows[] = {
    {"SRGB48", "SR48", "sRGB", 48, 15, 48, 0, false, ""},
    {"BGGR_8", "BGGR", "BAYER", 8, 8, 8, 0, false, ""},
    {"GBRG_8", "GBRG", "BAYER", 8, 8, 8, 0, false, ""},
    {"GRBG_8", "GRBG", "BAYER", 8, 8, 8, 0, false, ""},
    {"RGGB_8", "RGGB", "BAYER", 8, 8, 8, 0, false, ""},
    {"BA10", "BA10", "BAYER", 16, 10, 16, 0, false, ""},
    {"BGGR_10", "BG10", "BAYER", 16, 10, 16, 0, false, ""},
    {"GBRG_10", "GB10", "BAYER", 16, 10, 16, 0, false, ""},
    {"GRBG_10", "GR10", "BAYER", 16, 10, 16, 0, false, ""},
    {"RGGB_10", "RG10", "BAYER", 16, 10, 16, 0, false, ""},
    {"BGGR_10_P", "pBAA", "BAYER", 10, 10, 10, 0, false, ""},
    {"GBRG_10_P", "pGAA", "BAYER", 10, 10, 10, 0, false, ""},
    {"GRBG_10_P", "pgAA", "BAYER", 10, 10, 10, 0, false, ""},
    {"RGGB_10_P", "pRAA", "BAYER", 10, 10, 10, 0, false, ""},
    {"GRBG_10_V", "bV0G", "BAYER", 16, 10, 16, 32, false, ""},
    {"GRBG_12_V", "bV0K", "BAYER", 16, 12, 16, 32, false, ""},
    {"BGGR_10_LI", "CSL0", "BAYER", 10, 10, 10, 1, false, ""},
    {"GBRG_10_LI", "CSL1", "BAYER", 10, 10, 10, 1, false, ""},
    {"GRBG_10_LI", "CSL2", "BAYER", 10, 10, 10, 1, false, ""},
    {"RGGB_10_LI", "CSL3", "BAYER", 10, 10, 10, 1, false, ""},
    {"BGGR_12_LI", "CSL4", "BAYER", 12, 10, 10, 1, false, ""},
    {"GBRG_12_LI", "CSL5", "BAYER", 12, 10, 10, 1, false, ""},
    {"GRBG_12_LI", "CSL6", "BAYER", 12, 10, 10, 1, false, ""},
    {"RGGB_12_LI", "CSL7", "BAYER", 12, 10, 10, 1, false, ""},
    {"BGGR_8_C", "BG8C", "BAYER", 8, 8, 8, 0, true, ""},
    {"GBRG_8_C", "GB8C", "BAYER", 8, 8, 8, 0, true, ""},
    {"GRBG_8_C", "GR8C", "BAYER", 8, 8, 8, 0, true, ""},
    {"RGGB_8_C", "RG8C", "BAYER", 8, 8, 8, 0, true, ""},
    {"BGGR_10_C", "BG1C", "BAYER", 16, 10, 16, 0, true, ""},
    {"GBRG_10_C", "GB1C", "BAYER", 16, 10, 16, 0, true, ""},
    {"GRBG_10_C", "GR1C", "BAYER", 16, 10, 16, 0, true, ""},
    {"RGGB_10_C", "RG1C", "BAYER", 16, 10, 16, 0, true, ""},
    {"UYVY", "UYVY", "YUV", 16, 8, 8, 0, false, ""},
    {"YUV422_8_P64", "YUY2", "YUV", 16, 8, 8, 0, false, ""},
    {"YUV420_10_P64", "CS40", "YUV", 15, 10, 10, 0, false, ""},
    {"YUV420_12_P64", "CS42", "YUV", 18, 12, 12, 0, false, ""},
    {"YUV420_10_V", "y032", "YUV", 24, 10, 16, 1, false, ""},
    {"YUV420_10_PL", "V420", "YUV", 24, 10, 16, 0, false, "Y:16 U:16 V:16"},
    {"YUV420_12_PL", "P412", "YUV", 24, 12, 16, 0, false, "Y:12 U:12 V:12"},
    {"YUV420_16_PL", "S420", "YUV", 24, 16, 16, 0, false, "Y:16 U:16 V:16"},
    {"YUV420_16_PL_C", "C420", "YUV", 24, 16, 16, 0, true, "Y:16 U:16 V:16"},
    {"YUV420_8_PL", "IYUV", "YUV", 12, 8, 8, 0, false, "Y:8 U:8 V:8"},
    {"YUV420_8_PL_C", "CIYU", "YUV", 12, 8, 8, 0, true, "Y:8 U:8 V:8"},
    {"YUV420_10_PL_C", "P01Y", "YUV", 24, 10, 16, 0, true, "Y:10 U:10 V:10"},
    {"YUV420_12_PL_C", "P21Y", "YUV", 24, 12, 16, 0, true, "Y:12 U:12 V:12"},
    {"YUV420_8_PL_REV", "YV12", "YUV", 12, 8, 8, 0, false, "Y:8 V:8 U:8"},
    {"YUV444_8_PL", "NANA", "YUV", 24, 8, 8, 0, false, "Y:8 U:8 V:8"},
    {"YUV420_8_SP_LINE", "M420", "YUV", 12, 8, 8, 0, false, "Y:8 UV:8"},
    {"YUV420_8_SP", "NV12", "YUV", 12, 8, 8, 0, false, "Y:8 UV:8"},
    {"YUV420_8_SP_C_TNR", "CT12", "YUV", 12, 8, 8, 0, true, "Y:8 UV:8"},
    {"YUV420_8_SP_C", "CN12", "YUV", 12, 8, 8, 0, true, "Y:8 UV:8"},
    {"YUV420_8_SP_REV", "NV21", "YUV", 12, 8, 8, 0, false, "Y:8 VU:8"},
    {"YUV422_8_SP", "NV16", "YUV", 16, 8, 8, 0, false, "Y:8 UV:8"},
    {"TileYUV420_8_SP", "TILE", "YUV", 12, 8, 8, 0, false, "Y:8 UV:8"},
    {"TileYUV420_8_SP_C", "CILE", "YUV", 12, 8, 8, 0, true, "Y:8 UV:8"},
    {"YUV420_10_SP", "P010", "YUV", 24, 10, 16, 0, false, "Y:10 UV:10"},
    {"YUV420_10_SP_C", "PC10", "YUV", 24, 10, 16, 0, true, "Y:10 UV:10"},
    {"YUV420_10_SP_LSB", "P01L", "YUV", 24, 10, 16, 0, false, "Y:10 UV:10"},
    {"YUV420_12_SP", "P012", "YUV", 24, 12, 16, 0, false, "Y:12 UV:12"},
    {"YUV420_12_SP_C", "PC12", "YUV", 24, 12, 16, 0, true, "Y:12 UV:12"},
    {"YUV420_12_SP_LSB", "PL12", "YUV", 24, 12, 16, 0, false, "Y:12 UV:12"},
    {"TileYUV420_10_SP", "T010", "YUV", 24, 10, 16, 0, false, "Y:10 UV:10"},
    {"TileYUV420_10_SP_LSB", "T01L", "YUV", 24, 10, 16, 0, false, "Y:10 UV:10"},
    {"TileYUV420_12_SP_C", "C012", "YUV", 24, 12, 16, 0, true, "Y:12 UV:12"},
    {"TileYUV420_12_SP", "T012", "YUV", 24, 12, 16, 0, false, "Y:12 UV:12"},
    {"TileYUV420_12_SP_LSB", "TL12", "YUV", 24, 12, 16, 0, false, "Y:12 UV:12"},
    {"TileYUV420_10_SP_C", "C010", "YUV", 24, 10, 16, 0, true, "Y:10 UV:10"},
    {"YUV420_16_SP", "P016", "YUV", 24, 16, 16, 0, false, "Y:16 UV:16"},
    {"PAFn", "PAFn", "BAYER", 16, 16, 16, 0, false, ""},
    {"PAFi", "PAFi", "BAYER", 16, 16, 16, 0, false, ""},
    {"PDAF_08i", "PF8i", "BAYER", 8, 8, 8, 0, false, ""},
    {"PDAF_10i", "PF1i", "BAYER", 16, 10, 16, 0, false, ""},
    {"PDAF_12i", "PF2i", "BAYER", 16, 12, 16, 0, false, ""},
    {"PDAF_14i", "PF4i", "BAYER", 16, 14, 16, 0, false, ""},
    {"PDAF_16i", "PF6i", "BAYER", 16, 16, 16, 0, false, ""},
    {"PDAF_8n", "PF8n", "BAYER", 8, 8, 8, 0, false, ""},
    {"PDAF_10n", "PF1n", "BAYER", 16, 10, 16, 0, false, ""},
    {"PDAF_12n", "PF2n", "BAYER", 16, 12, 16, 0, false, ""},
    {"PDAF_14n", "PF4n", "BAYER", 16, 14, 16, 0, false, ""},
    {"PDAF_16n", "PF6n", "BAYER", 16, 16, 16, 0, false, ""},
    {"YUV420_8_INTERNAL", "CSYI", "YUV", 12, 8, 8, 0, false, "Y:8 U:8 V:8"},
    {"IR", "IR16", "IR", 16, 16, 16, 0, false, ""},
    {"Y_8", "Y008", "YUV", 8, 8, 8, 0, false, ""},
    {"REC_SIM", "RESI", "META", 8, 8, 8, 0, false, ""},
    {"MOT_VEC", "MOVE", "META", 32, 32, 32, 0, false, ""},
};

} // namespace formatstest

#endif
