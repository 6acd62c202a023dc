// SPDX-License-Identifier: Apache-2.0
#include <nuxo/formats/FormatTable.h>
#include <nuxo/formats/Fourcc.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string_view>
#include <utility>

namespace NUXOFormats {

namespace {

constexpr bool yes = true;
constexpr bool no = false;

struct Row {
    const char* name;
    const char* code;
    const char* family;
    uint32_t bpp;
    uint32_t bitDepth;
    uint32_t sampleBits;
    uint32_t layoutHint;
    bool isCompressed;
    const char* planes; // name and bits of a sample of each, none for packed formats
};

// clang-format off
constexpr Row kRows[] = {
    {"SRGB48",               "SR48", "sRGB",  48, 15, 48,  0, no,  ""},
    {"BGGR_8",               "BGGR", "BAYER",  8,  8,  8,  0, no,  ""},
    {"GBRG_8",               "GBRG", "BAYER",  8,  8,  8,  0, no,  ""},
    {"GRBG_8",               "GRBG", "BAYER",  8,  8,  8,  0, no,  ""},
    {"RGGB_8",               "RGGB", "BAYER",  8,  8,  8,  0, no,  ""},
    {"BA10",                 "BA10", "BAYER", 16, 10, 16,  0, no,  ""},
    {"BGGR_10",              "BG10", "BAYER", 16, 10, 16,  0, no,  ""},
    {"GBRG_10",              "GB10", "BAYER", 16, 10, 16,  0, no,  ""},
    {"GRBG_10",              "GR10", "BAYER", 16, 10, 16,  0, no,  ""},
    {"RGGB_10",              "RG10", "BAYER", 16, 10, 16,  0, no,  ""},
    {"BGGR_10_P",            "pBAA", "BAYER", 10, 10, 10,  0, no,  ""},
    {"GBRG_10_P",            "pGAA", "BAYER", 10, 10, 10,  0, no,  ""},
    {"GRBG_10_P",            "pgAA", "BAYER", 10, 10, 10,  0, no,  ""},
    {"RGGB_10_P",            "pRAA", "BAYER", 10, 10, 10,  0, no,  ""},
    {"GRBG_10_V",            "bV0G", "BAYER", 16, 10, 16, 32, no,  ""},
    {"GRBG_12_V",            "bV0K", "BAYER", 16, 12, 16, 32, no,  ""},
    {"BGGR_10_LI",           "CSL0", "BAYER", 10, 10, 10,  1, no,  ""},
    {"GBRG_10_LI",           "CSL1", "BAYER", 10, 10, 10,  1, no,  ""},
    {"GRBG_10_LI",           "CSL2", "BAYER", 10, 10, 10,  1, no,  ""},
    {"RGGB_10_LI",           "CSL3", "BAYER", 10, 10, 10,  1, no,  ""},
    {"BGGR_12_LI",           "CSL4", "BAYER", 12, 10, 10,  1, no,  ""},
    {"GBRG_12_LI",           "CSL5", "BAYER", 12, 10, 10,  1, no,  ""},
    {"GRBG_12_LI",           "CSL6", "BAYER", 12, 10, 10,  1, no,  ""},
    {"RGGB_12_LI",           "CSL7", "BAYER", 12, 10, 10,  1, no,  ""},
    {"BGGR_8_C",             "BG8C", "BAYER",  8,  8,  8,  0, yes, ""},
    {"GBRG_8_C",             "GB8C", "BAYER",  8,  8,  8,  0, yes, ""},
    {"GRBG_8_C",             "GR8C", "BAYER",  8,  8,  8,  0, yes, ""},
    {"RGGB_8_C",             "RG8C", "BAYER",  8,  8,  8,  0, yes, ""},
    {"BGGR_10_C",            "BG1C", "BAYER", 16, 10, 16,  0, yes, ""},
    {"GBRG_10_C",            "GB1C", "BAYER", 16, 10, 16,  0, yes, ""},
    {"GRBG_10_C",            "GR1C", "BAYER", 16, 10, 16,  0, yes, ""},
    {"RGGB_10_C",            "RG1C", "BAYER", 16, 10, 16,  0, yes, ""},
    {"UYVY",                 "UYVY", "YUV",   16,  8,  8,  0, no,  ""},
    {"YUV422_8_P64",         "YUY2", "YUV",   16,  8,  8,  0, no,  ""},
    {"YUV420_10_P64",        "CS40", "YUV",   15, 10, 10,  0, no,  ""},
    {"YUV420_12_P64",        "CS42", "YUV",   18, 12, 12,  0, no,  ""},
    {"YUV420_10_V",          "y032", "YUV",   24, 10, 16,  1, no,  ""},
    {"YUV420_10_PL",         "V420", "YUV",   24, 10, 16,  0, no,  "Y:16 U:16 V:16"},
    {"YUV420_12_PL",         "P412", "YUV",   24, 12, 16,  0, no,  "Y:12 U:12 V:12"},
    {"YUV420_16_PL",         "S420", "YUV",   24, 16, 16,  0, no,  "Y:16 U:16 V:16"},
    {"YUV420_16_PL_C",       "C420", "YUV",   24, 16, 16,  0, yes, "Y:16 U:16 V:16"},
    {"YUV420_8_PL",          "IYUV", "YUV",   12,  8,  8,  0, no,  "Y:8 U:8 V:8"},
    {"YUV420_8_PL_C",        "CIYU", "YUV",   12,  8,  8,  0, yes, "Y:8 U:8 V:8"},
    {"YUV420_10_PL_C",       "P01Y", "YUV",   24, 10, 16,  0, yes, "Y:10 U:10 V:10"},
    {"YUV420_12_PL_C",       "P21Y", "YUV",   24, 12, 16,  0, yes, "Y:12 U:12 V:12"},
    {"YUV420_8_PL_REV",      "YV12", "YUV",   12,  8,  8,  0, no,  "Y:8 V:8 U:8"},
    {"YUV444_8_PL",          "NANA", "YUV",   24,  8,  8,  0, no,  "Y:8 U:8 V:8"},
    {"YUV420_8_SP_LINE",     "M420", "YUV",   12,  8,  8,  0, no,  "Y:8 UV:8"},
    {"YUV420_8_SP",          "NV12", "YUV",   12,  8,  8,  0, no,  "Y:8 UV:8"},
    {"YUV420_8_SP_C_TNR",    "CT12", "YUV",   12,  8,  8,  0, yes, "Y:8 UV:8"},
    {"YUV420_8_SP_C",        "CN12", "YUV",   12,  8,  8,  0, yes, "Y:8 UV:8"},
    {"YUV420_8_SP_REV",      "NV21", "YUV",   12,  8,  8,  0, no,  "Y:8 VU:8"},
    {"YUV422_8_SP",          "NV16", "YUV",   16,  8,  8,  0, no,  "Y:8 UV:8"},
    {"TileYUV420_8_SP",      "TILE", "YUV",   12,  8,  8,  0, no,  "Y:8 UV:8"},
    {"TileYUV420_8_SP_C",    "CILE", "YUV",   12,  8,  8,  0, yes, "Y:8 UV:8"},
    {"YUV420_10_SP",         "P010", "YUV",   24, 10, 16,  0, no,  "Y:10 UV:10"},
    {"YUV420_10_SP_C",       "PC10", "YUV",   24, 10, 16,  0, yes, "Y:10 UV:10"},
    {"YUV420_10_SP_LSB",     "P01L", "YUV",   24, 10, 16,  0, no,  "Y:10 UV:10"},
    {"YUV420_12_SP",         "P012", "YUV",   24, 12, 16,  0, no,  "Y:12 UV:12"},
    {"YUV420_12_SP_C",       "PC12", "YUV",   24, 12, 16,  0, yes, "Y:12 UV:12"},
    {"YUV420_12_SP_LSB",     "PL12", "YUV",   24, 12, 16,  0, no,  "Y:12 UV:12"},
    {"TileYUV420_10_SP",     "T010", "YUV",   24, 10, 16,  0, no,  "Y:10 UV:10"},
    {"TileYUV420_10_SP_LSB", "T01L", "YUV",   24, 10, 16,  0, no,  "Y:10 UV:10"},
    {"TileYUV420_12_SP_C",   "C012", "YUV",   24, 12, 16,  0, yes, "Y:12 UV:12"},
    {"TileYUV420_12_SP",     "T012", "YUV",   24, 12, 16,  0, no,  "Y:12 UV:12"},
    {"TileYUV420_12_SP_LSB", "TL12", "YUV",   24, 12, 16,  0, no,  "Y:12 UV:12"},
    {"TileYUV420_10_SP_C",   "C010", "YUV",   24, 10, 16,  0, yes, "Y:10 UV:10"},
    {"YUV420_16_SP",         "P016", "YUV",   24, 16, 16,  0, no,  "Y:16 UV:16"},
    {"PAFn",                 "PAFn", "BAYER", 16, 16, 16,  0, no,  ""},
    {"PAFi",                 "PAFi", "BAYER", 16, 16, 16,  0, no,  ""},
    {"PDAF_08i",             "PF8i", "BAYER",  8,  8,  8,  0, no,  ""},
    {"PDAF_10i",             "PF1i", "BAYER", 16, 10, 16,  0, no,  ""},
    {"PDAF_12i",             "PF2i", "BAYER", 16, 12, 16,  0, no,  ""},
    {"PDAF_14i",             "PF4i", "BAYER", 16, 14, 16,  0, no,  ""},
    {"PDAF_16i",             "PF6i", "BAYER", 16, 16, 16,  0, no,  ""},
    {"PDAF_8n",              "PF8n", "BAYER",  8,  8,  8,  0, no,  ""},
    {"PDAF_10n",             "PF1n", "BAYER", 16, 10, 16,  0, no,  ""},
    {"PDAF_12n",             "PF2n", "BAYER", 16, 12, 16,  0, no,  ""},
    {"PDAF_14n",             "PF4n", "BAYER", 16, 14, 16,  0, no,  ""},
    {"PDAF_16n",             "PF6n", "BAYER", 16, 16, 16,  0, no,  ""},
    {"YUV420_8_INTERNAL",    "CSYI", "YUV",   12,  8,  8,  0, no,  "Y:8 U:8 V:8"},
    {"IR",                   "IR16", "IR",    16, 16, 16,  0, no,  ""},
    {"Y_8",                  "Y008", "YUV",    8,  8,  8,  0, no,  ""},
    {"REC_SIM",              "RESI", "META",   8,  8,  8,  0, no,  ""},
    {"MOT_VEC",              "MOVE", "META",  32, 32, 32,  0, no,  ""},
};
// clang-format on

std::vector<qv_format_plane_t> planesOf(std::string_view text)
{
    std::vector<qv_format_plane_t> planes;
    while (!text.empty()) {
        const size_t colon = text.find(':');
        const size_t end = std::min(text.find(' '), text.size());
        qv_format_plane_t plane = {std::string(text.substr(0, colon)), 0};
        std::from_chars(text.data() + colon + 1, text.data() + end, plane.bitsPerSample);
        planes.push_back(std::move(plane));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return planes;
}

std::vector<qv_format_t> builtInTable()
{
    std::vector<qv_format_t> table;
    table.reserve(std::size(kRows));
    for (const Row& row : kRows) {
        table.push_back({row.name, fourccOf(row.code), row.family, row.bpp, row.bitDepth, row.sampleBits,
                         row.layoutHint, true, row.isCompressed, planesOf(row.planes), 0});
    }
    return table;
}

} // namespace

// Built ahead of every other static object, so that code which runs during loading can already use them.
__attribute__((init_priority(101))) std::vector<qv_format_t> gNUXOFormatsInternal = builtInTable();
__attribute__((init_priority(101))) std::vector<qv_format_t> gNUXOFormats;

void fillWorkingTable()
{
    if (!gNUXOFormats.empty()) return;
    std::vector<qv_format_t> rows = gNUXOFormatsInternal;
    gNUXOFormats.swap(rows);
}

} // namespace NUXOFormats
