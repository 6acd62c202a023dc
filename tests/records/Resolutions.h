// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_RECORDS_RESOLUTIONS_H
#define NUXO_TESTS_RECORDS_RESOLUTIONS_H

#include <nuxo/records/qv_isp_zmt_run_kernels.h>

#include <cstdint>
#include <string>

namespace graphtest {

/// The crop as the library's texts show it.
inline std::string text(const qv_rectangle& crop)
{
    return "(l: " + std::to_string(crop.left) + ", t: " + std::to_string(crop.top) +
           ", r: " + std::to_string(crop.right) + ", b: " + std::to_string(crop.bottom) + ")";
}

/// The record as the library's texts show it: with one bracket that nobody closes, and commas that differ.
inline std::string text(const qv_isp_zmt_resolution_info& info)
{
    return "(iw: " + std::to_string(info.input_width) + " ih: " + std::to_string(info.input_height) + " " +
           text(info.input_crop) + ",ow: " + std::to_string(info.output_width) +
           ", oh: " + std::to_string(info.output_height) + " " + text(info.output_crop);
}

/// The record whose fields are @p first and the eleven numbers that follow it, in the order of the record.
inline qv_isp_zmt_resolution_info counting(int32_t first)
{
    return {first,     first + 1, {first + 2, first + 3, first + 4, first + 5},
            first + 6, first + 7, {first + 8, first + 9, first + 10, first + 11}};
}

/// Left as right and top as bottom.
inline qv_rectangle symmetric(int32_t left, int32_t top)
{
    return {left, top, left, top};
}

} // namespace graphtest

#endif
