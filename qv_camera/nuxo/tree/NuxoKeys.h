// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TREE_NUXO_KEYS_H
#define NUXO_TREE_NUXO_KEYS_H

#include <qv_tools/qv_export.h>

#include <cstdint>
#include <map>
#include <string>

/// The built-in keys: element and attribute names of graph files as numbers.
///
/// Values up to NUXO_KEY_GENERIC_KEYS_END name elements and text attributes; values strictly between
/// NUXO_KEY_NUM_START and NUXO_KEY_NUM_END name integer attributes.
enum NuxoKey : uint32_t {
    NUXO_KEY_NA = 0,
    NUXO_KEY_AE_STATS_SINK = 1,
    NUXO_KEY_AF_STATS_SINK = 2,
    NUXO_KEY_AWB_STATS_SINK = 3,
    NUXO_KEY_BASE_NODE = 4,
    NUXO_KEY_BASE_TYPE = 5,
    NUXO_KEY_BUFFER_SRC0 = 6,
    NUXO_KEY_COMPUTE_BLOCK = 7,
    NUXO_KEY_CONNECTION = 8,
    NUXO_KEY_CONTENT_TYPE = 9,
    NUXO_KEY_CONVERSION_GAIN = 10,
    NUXO_KEY_CMC_TAG = 11,
    NUXO_KEY_DEMUX = 12,
    NUXO_KEY_DESTINATION = 13,
    NUXO_KEY_DOL_MODE = 14,
    NUXO_KEY_FLOW = 15,
    NUXO_KEY_FORMAT = 16,
    NUXO_KEY_GRAPH = 17,
    NUXO_KEY_GRAPHS = 18,
    NUXO_KEY_GRAPH_DESCRIPTOR = 19,
    NUXO_KEY_GRAPH_SETTINGS = 20,
    NUXO_KEY_HW = 21,
    NUXO_KEY_INPUT = 22,
    NUXO_KEY_KERNEL = 23,
    NUXO_KEY_KLINK = 24,
    NUXO_KEY_MBR_DATA = 25,
    NUXO_KEY_METADATA = 26,
    NUXO_KEY_MODE_ID = 27,
    NUXO_KEY_MUX = 28,
    NUXO_KEY_NAME = 29,
    NUXO_KEY_NODE = 30,
    NUXO_KEY_NODES = 31,
    NUXO_KEY_OUTPUT = 32,
    NUXO_KEY_PEER = 33,
    NUXO_KEY_PORT = 34,
    NUXO_KEY_PROGRAM_GROUP = 35,
    NUXO_KEY_SENSOR = 36,
    NUXO_KEY_SENSOR_MODES = 37,
    NUXO_KEY_PIXEL_ARRAY = 38,
    NUXO_KEY_BINNER = 39,
    NUXO_KEY_SCALER = 40,
    NUXO_KEY_CSI_BE = 41,
    NUXO_KEY_CSI_BE_DOL = 42,
    NUXO_KEY_CSI_BE_SOC = 43,
    NUXO_KEY_SENSOR_TYPE = 44,
    NUXO_KEY_SETTINGS = 45,
    NUXO_KEY_SINK = 46,
    NUXO_KEY_SOURCE = 47,
    NUXO_KEY_SPLIT = 48,
    NUXO_KEY_STATIC = 49,
    NUXO_KEY_TARGET = 50,
    NUXO_KEY_TYPE = 51,
    NUXO_KEY_VALUE = 52,
    NUXO_KEY_CIPF = 53,
    NUXO_KEY_ATTRIBUTE = 54,
    NUXO_KEY_OPTIONS = 55,
    NUXO_KEY_APPLY = 56,
    NUXO_KEY_TPG = 57,
    NUXO_KEY_SIMULATION = 58,
    NUXO_KEY_VERSION = 59,
    NUXO_KEY_FILE_NAME = 60,
    NUXO_KEY_RBM = 61,
    NUXO_KEY_DESCRIPTION = 62,
    NUXO_KEY_VIDEO_BPP = 63,
    NUXO_KEY_STILLS_BPP = 64,
    NUXO_KEY_EXTERNAL_STAGE = 65,
    NUXO_KEY_PDAF_TYPE = 66,
    NUXO_KEY_SUBSYSTEM = 67,
    NUXO_KEY_HW_BITMAPS = 68,
    NUXO_KEY_DEB = 69,
    NUXO_KEY_TEB = 70,
    NUXO_KEY_REB = 71,
    NUXO_KEY_GENERIC_KEYS_END = 4095,
    NUXO_KEY_NUM_START = 8192,
    NUXO_KEY_ACTIVE_INPUT = 8193,
    NUXO_KEY_ACTIVE_OUTPUTS = 8194,
    NUXO_KEY_ACTIVE_OUTPUT = 8195,
    NUXO_KEY_H_FACTOR = 8196,
    NUXO_KEY_V_FACTOR = 8197,
    NUXO_KEY_BOTTOM = 8198,
    NUXO_KEY_BPP = 8199,
    NUXO_KEY_BRANCH_POINT = 8200,
    NUXO_KEY_BPL = 8201,
    NUXO_KEY_CONCURRENT = 8202,
    NUXO_KEY_DIRECTION = 8203,
    NUXO_KEY_DVS = 8204,
    NUXO_KEY_ENABLED = 8205,
    NUXO_KEY_EXEC_CTX_ID = 8206,
    NUXO_KEY_FLIP_H = 8207,
    NUXO_KEY_FLIP_V = 8208,
    NUXO_KEY_FPS = 8209,
    NUXO_KEY_FRAGMENT_COUNT = 8210,
    NUXO_KEY_HEIGHT = 8211,
    NUXO_KEY_ID = 8212,
    NUXO_KEY_KEY = 8213,
    NUXO_KEY_LEFT = 8214,
    NUXO_KEY_LINK_ID = 8215,
    NUXO_KEY_OPERATION_MODE = 8216,
    NUXO_KEY_PAL_UUID = 8217,
    NUXO_KEY_PG_ID = 8218,
    NUXO_KEY_POWER_FACTOR = 8219,
    NUXO_KEY_PRIVATE = 8220,
    NUXO_KEY_PSYS_FREQUENCY = 8221,
    NUXO_KEY_RCB = 8222,
    NUXO_KEY_RESTORE_POINT = 8223,
    NUXO_KEY_RIGHT = 8224,
    NUXO_KEY_NUM_FACTOR = 8225,
    NUXO_KEY_DENOM_FACTOR = 8226,
    NUXO_KEY_SINK_PORT = 8227,
    NUXO_KEY_STREAM_ID = 8228,
    NUXO_KEY_TNR = 8229,
    NUXO_KEY_TOP = 8230,
    NUXO_KEY_TUNING_MODE = 8231,
    NUXO_KEY_WIDTH = 8232,
    NUXO_KEY_NUM_END = 12287
};

/// The process-wide vocabulary from name to key. It is filled before any other code of the library runs with the
/// built-in names, and grows with the element names of the files that are parsed. Not synchronised: whoever changes it
/// (parsing a file with new names does) must be alone.
extern QV_EXPORT std::map<std::string, uint32_t> nuxo_key_map;

namespace NUXO {

using ::nuxo_key_map;

/// Replaces the contents of @p out by a copy of the vocabulary. Does nothing when @p out is the vocabulary itself.
QV_EXPORT void getNuxoKeys(std::map<std::string, uint32_t>& out);

/// Replaces the whole vocabulary by a copy of @p in: the built-in names are lost unless @p in holds them, and keys of
/// trees parsed before print differently. Does nothing when @p in is the vocabulary itself.
QV_EXPORT void copyNuxoKeys(std::map<std::string, uint32_t>& in);

} // namespace NUXO

#endif
