// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/formats/Fourcc.h>
#include <nuxo/formats/qv_css_frame_format.h>

namespace {

struct FrameFormat {
    uint32_t value;
    uint8_t raw;
    uint8_t p64;
};

// clang-format off
constexpr NUXOFormats::CodeRow<FrameFormat> kRows[] = {
    {"BGGR BG8C BG1C",                          {22, 1, 0}},
    {"GBRG GB8C GB1C",                          {23, 1, 0}},
    {"GRBG GR10 GR8C GR1C",                     {20, 1, 0}},
    {"RGGB RG8C RG1C",                          {21, 1, 0}},
    {"BA10 BA12 CSBA GR08",                     {25, 1, 0}},
    {"bV0E bV0F bV0G bV0H bV0I bV0J bV0K bV0L", {43, 1, 0}},
    {"bV0M bV0N bV0O bV0P bV0Q bV0R bV0S bV0T", {43, 1, 1}},
    {"CSL0 CSL1 CSL2 CSL3 CSL4 CSL5 CSL6 CSL7", {42, 1, 0}},
    {"PAFn PF8n PF1n PF2n PF4n PF6n",           {61, 1, 0}},
    {"PAFi PF8i PF1i PF2i PF4i PF6i",           {62, 1, 0}},
    {"CS40 CS42",                               {3, 0, 1}},
    {"V420 P412 S420 C420 IYUV CIYU P01Y CSYI", {3, 0, 0}},
    {"YV12",                                    {4, 0, 0}},
    {"NV12 CN12 CT12",                          {5, 0, 0}},
    {"TILE CILE",                               {7, 0, 0}},
    {"NV21",                                    {8, 0, 0}},
    {"NV16",                                    {11, 0, 0}},
    {"YUY2",                                    {14, 0, 0}},
    {"CSYP",                                    {16, 0, 0}},
    {"M420 CSYC",                               {24, 0, 0}},
    {"BIN8",                                    {28, 0, 0}},
    {"y032",                                    {47, 0, 0}},
    {"P01L",                                    {49, 0, 0}},
    {"P010 PC10",                               {50, 0, 0}},
    {"PL12",                                    {51, 0, 0}},
    {"P012 PC12",                               {52, 0, 0}},
    {"T010 C010",                               {54, 0, 0}},
    {"T012 C012",                               {56, 0, 0}},
    {"IR16",                                    {63, 0, 0}},
};
// clang-format on
constexpr NUXOFormats::CodeTable kFrameFormats(kRows);

} // namespace

extern "C" int fourcc_to_css_frame_format(uint32_t fourcc, uint32_t* frameFormat, uint8_t* rawFlag, uint8_t* p64Flag)
{
    NUXO_LOG(NUXO::LogEntry, "XOS_PSYS_FORMAT_UTILS[XOS]", "E:%s", __func__);
    const FrameFormat* const found = kFrameFormats.find(fourcc);
    if (found == nullptr) return StatusBadArgument;
    if (frameFormat != nullptr) *frameFormat = found->value;
    if (rawFlag != nullptr) *rawFlag = found->raw;
    if (p64Flag != nullptr) *p64Flag = found->p64;
    return StatusOk;
}
