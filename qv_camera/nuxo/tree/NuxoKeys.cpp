// SPDX-License-Identifier: Apache-2.0
#include <nuxo/tree/NuxoKeys.h>

#include <new>
#include <utility>

// Built ahead of every other static object, so that code which runs during loading can already use the vocabulary.
__attribute__((init_priority(101))) std::map<std::string, uint32_t> nuxo_key_map = {
    {"na", NUXO_KEY_NA},
    {"ae_stats_sink", NUXO_KEY_AE_STATS_SINK},
    {"af_stats_sink", NUXO_KEY_AF_STATS_SINK},
    {"awb_stats_sink", NUXO_KEY_AWB_STATS_SINK},
    {"base_node", NUXO_KEY_BASE_NODE},
    {"base_type", NUXO_KEY_BASE_TYPE},
    {"buffer_src0", NUXO_KEY_BUFFER_SRC0},
    {"compute_block", NUXO_KEY_COMPUTE_BLOCK},
    {"connection", NUXO_KEY_CONNECTION},
    {"content_type", NUXO_KEY_CONTENT_TYPE},
    {"conversion_gain", NUXO_KEY_CONVERSION_GAIN},
    {"cmc_tag", NUXO_KEY_CMC_TAG},
    {"demux", NUXO_KEY_DEMUX},
    {"destination", NUXO_KEY_DESTINATION},
    {"dol_mode", NUXO_KEY_DOL_MODE},
    {"flow", NUXO_KEY_FLOW},
    {"format", NUXO_KEY_FORMAT},
    {"graph", NUXO_KEY_GRAPH},
    {"graphs", NUXO_KEY_GRAPHS},
    {"graph_descriptor", NUXO_KEY_GRAPH_DESCRIPTOR},
    {"graph_settings", NUXO_KEY_GRAPH_SETTINGS},
    {"hw", NUXO_KEY_HW},
    {"input", NUXO_KEY_INPUT},
    {"kernel", NUXO_KEY_KERNEL},
    {"klink", NUXO_KEY_KLINK},
    {"mbr_data", NUXO_KEY_MBR_DATA},
    {"metadata", NUXO_KEY_METADATA},
    {"mode_id", NUXO_KEY_MODE_ID},
    {"mux", NUXO_KEY_MUX},
    {"name", NUXO_KEY_NAME},
    {"node", NUXO_KEY_NODE},
    {"nodes", NUXO_KEY_NODES},
    {"output", NUXO_KEY_OUTPUT},
    {"peer", NUXO_KEY_PEER},
    {"port", NUXO_KEY_PORT},
    {"program_group", NUXO_KEY_PROGRAM_GROUP},
    {"sensor", NUXO_KEY_SENSOR},
    {"sensor_modes", NUXO_KEY_SENSOR_MODES},
    {"pixel_array", NUXO_KEY_PIXEL_ARRAY},
    {"binner", NUXO_KEY_BINNER},
    {"scaler", NUXO_KEY_SCALER},
    {"csi_be", NUXO_KEY_CSI_BE},
    {"csi_be_dol", NUXO_KEY_CSI_BE_DOL},
    {"csi_be_soc", NUXO_KEY_CSI_BE_SOC},
    {"sensor_type", NUXO_KEY_SENSOR_TYPE},
    {"settings", NUXO_KEY_SETTINGS},
    {"sink", NUXO_KEY_SINK},
    {"source", NUXO_KEY_SOURCE},
    {"split", NUXO_KEY_SPLIT},
    {"static", NUXO_KEY_STATIC},
    {"target", NUXO_KEY_TARGET},
    {"type", NUXO_KEY_TYPE},
    {"value", NUXO_KEY_VALUE},
    {"cipf", NUXO_KEY_CIPF},
    {"attribute", NUXO_KEY_ATTRIBUTE},
    {"options", NUXO_KEY_OPTIONS},
    {"apply", NUXO_KEY_APPLY},
    {"tpg", NUXO_KEY_TPG},
    {"simulation", NUXO_KEY_SIMULATION},
    {"version", NUXO_KEY_VERSION},
    {"file_name", NUXO_KEY_FILE_NAME},
    {"rbm", NUXO_KEY_RBM},
    {"description", NUXO_KEY_DESCRIPTION},
    {"video_bpp", NUXO_KEY_VIDEO_BPP},
    {"stills_bpp", NUXO_KEY_STILLS_BPP},
    {"external_stage", NUXO_KEY_EXTERNAL_STAGE},
    {"pdaf_type", NUXO_KEY_PDAF_TYPE},
    {"subsystem", NUXO_KEY_SUBSYSTEM},
    {"hw_bitmaps", NUXO_KEY_HW_BITMAPS},
    {"deb", NUXO_KEY_DEB},
    {"teb", NUXO_KEY_TEB},
    {"reb", NUXO_KEY_REB},
    {"generic_keys_end", NUXO_KEY_GENERIC_KEYS_END},
    {"num_start", NUXO_KEY_NUM_START},
    {"active_input", NUXO_KEY_ACTIVE_INPUT},
    {"active_outputs", NUXO_KEY_ACTIVE_OUTPUTS},
    {"active_output", NUXO_KEY_ACTIVE_OUTPUT},
    {"h_factor", NUXO_KEY_H_FACTOR},
    {"v_factor", NUXO_KEY_V_FACTOR},
    {"bottom", NUXO_KEY_BOTTOM},
    {"bpp", NUXO_KEY_BPP},
    {"branch_point", NUXO_KEY_BRANCH_POINT},
    {"bpl", NUXO_KEY_BPL},
    {"concurrent", NUXO_KEY_CONCURRENT},
    {"direction", NUXO_KEY_DIRECTION},
    {"dvs", NUXO_KEY_DVS},
    {"enabled", NUXO_KEY_ENABLED},
    {"exec_ctx_id", NUXO_KEY_EXEC_CTX_ID},
    {"flip_h", NUXO_KEY_FLIP_H},
    {"flip_v", NUXO_KEY_FLIP_V},
    {"fps", NUXO_KEY_FPS},
    {"fragment_count", NUXO_KEY_FRAGMENT_COUNT},
    {"height", NUXO_KEY_HEIGHT},
    {"id", NUXO_KEY_ID},
    {"key", NUXO_KEY_KEY},
    {"left", NUXO_KEY_LEFT},
    {"link_id", NUXO_KEY_LINK_ID},
    {"operation_mode", NUXO_KEY_OPERATION_MODE},
    {"pal_uuid", NUXO_KEY_PAL_UUID},
    {"pg_id", NUXO_KEY_PG_ID},
    {"power_factor", NUXO_KEY_POWER_FACTOR},
    {"private", NUXO_KEY_PRIVATE},
    {"psys_frequency", NUXO_KEY_PSYS_FREQUENCY},
    {"rcb", NUXO_KEY_RCB},
    {"restore_point", NUXO_KEY_RESTORE_POINT},
    {"right", NUXO_KEY_RIGHT},
    {"num_factor", NUXO_KEY_NUM_FACTOR},
    {"denom_factor", NUXO_KEY_DENOM_FACTOR},
    {"sink_port", NUXO_KEY_SINK_PORT},
    {"stream_id", NUXO_KEY_STREAM_ID},
    {"tnr", NUXO_KEY_TNR},
    {"top", NUXO_KEY_TOP},
    {"tuning_mode", NUXO_KEY_TUNING_MODE},
    {"width", NUXO_KEY_WIDTH},
    {"num_end", NUXO_KEY_NUM_END},
};

namespace NUXO {

namespace {

// An exhausted memory leaves the destination as it was.
void replaceMap(std::map<std::string, uint32_t>& destination, const std::map<std::string, uint32_t>& source)
{
    if (&destination == &source) return;
    try {
        std::map<std::string, uint32_t> fresh(source);
        destination = std::move(fresh);
    } catch (const std::bad_alloc&) {
    }
}

} // namespace

void getNuxoKeys(std::map<std::string, uint32_t>& out)
{
    replaceMap(out, nuxo_key_map);
}

void copyNuxoKeys(std::map<std::string, uint32_t>& in)
{
    replaceMap(nuxo_key_map, in);
}

} // namespace NUXO
