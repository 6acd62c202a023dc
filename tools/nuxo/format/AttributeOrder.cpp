// SPDX-License-Identifier: Apache-2.0
#include "format/AttributeOrder.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>

namespace NuxoTool {

namespace {

constexpr std::string_view kOrder[] = {
    // what names the element
    "name",
    "key",
    "id",
    // what it is
    "type",
    "version",
    "base_node",
    "base_type",
    "description",
    "file_name",
    "attribute",
    "target",
    "mode_id",
    "dol_mode",
    "conversion_gain",
    "operation_mode",
    // where it belongs
    "pg_id",
    "stream_id",
    "exec_ctx_id",
    "tuning_mode",
    "subsystem",
    "hw_bitmaps",
    "sensor_type",
    "cmc_tag",
    "pdaf_type",
    "pal_uuid",
    "rcb",
    "restore_point",
    "direction",
    "private",
    // what connects it
    "source",
    "destination",
    "sink",
    "link_id",
    "static",
    "active_input",
    "active_output",
    "active_outputs",
    "sink_port",
    "metadata",
    "branch_point",
    // how it works
    "dvs",
    "tnr",
    "rbm",
    "concurrent",
    "simulation",
    "fragment_count",
    "psys_frequency",
    "power_factor",
    "deb",
    "teb",
    "reb",
    // sizes and formats
    "width",
    "height",
    "left",
    "top",
    "right",
    "bottom",
    "h_factor",
    "v_factor",
    "num_factor",
    "denom_factor",
    "bpp",
    "bpl",
    "video_bpp",
    "stills_bpp",
    "fps",
    "flip_h",
    "flip_v",
    "content_type",
    "format",
    "enabled",
    "peer",
    "value",
};

} // namespace

size_t attributeRank(std::string_view lowerName)
{
    static const auto ranks = [] {
        std::unordered_map<std::string_view, size_t> map;
        for (const std::string_view name : kOrder) map.emplace(name, map.size());
        return map;
    }();
    const auto found = ranks.find(lowerName);
    return found == ranks.end() ? std::size(kOrder) : found->second;
}

} // namespace NuxoTool
