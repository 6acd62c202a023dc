// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_CAMERA_GRAPH_CAMERA_UTIL_H
#define NUXO_CAMERA_GRAPH_CAMERA_UTIL_H

#include <qv_tools/qv_export.h>

#include <nuxo/tree/GraphConfigNode.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace NUXO {

/// The names of the node that @p port belongs to and of the port.
///
/// @return StatusOk; StatusMissingData if one of them cannot be read. Without an ancestor @p pgName is untouched.
QV_EXPORT int getPgAndPortNames(const IGraphConfig& port, std::string& pgName, std::string& portName);

/// Questions about a built graph. All functions are stateless and own nothing; all but applyFormat and
/// processGraphOverrides leave the graph as it is. They may run in several threads on a graph that nobody changes; call
/// NUXOFormats::initNUXOFormats before, since portGetFormat fills the working table of formats if that is empty.
///
/// A port belongs to its ancestor: a program group, a source, a hardware block. A virtual sink (`type` "sink") is port and
/// node in one. What a port does not say of itself is often taken from its peer, the port at the other end of its
/// connection. Text results are empty when memory is exhausted.
class QV_EXPORT GraphCameraUtil {
public:
    // Ports and their names.

    /// The first child of kind `port` whose `id` is @p id; null when there is none or @p node is null.
    static IGraphConfig* nodeGetPortById(const IGraphConfig* node, int id);

    /// The other end of a port's (first) connection.
    ///
    /// @return StatusOk with @p peer set; StatusBadArgument for null arguments, no `peer`, or a peer that does not resolve
    ///         (@p peer is then null); StatusNotFound for disabled and private ports; StatusMissingObject without a root;
    ///         StatusNoMemory
    static int portGetPeer(const IGraphConfig* port, IGraphConfig** peer);

    /// Display text of a node: its type, then in brackets its full name (demux, kernel, mux, port) or own name.
    static std::string print(const IGraphConfig* node);

    /// The `name` of the node's ancestor and of the node joined by ':', each "NA" when it has none.
    static std::string getFullName(const IGraphConfig& node);

    /// The `content_type` of a port, "pixel_data" when absent.
    static std::string portGetContentType(const IGraphConfig* port);

    /// The `direction` of a port: 0 input, 1 output; 0 when absent.
    static int portGetDirection(const IGraphConfig* port);

    /// Whether the port is a virtual sink; false for null and without `type`.
    static bool portIsVirtual(const IGraphConfig* port);

    /// The stage of a port's node and the port's terminal.
    ///
    /// @param stageId     receives the node's `pg_id` << 16 | two letters that say where it runs: "SA" in the simulation,
    ///                    "XE" on the GPU, else "0G", the first letter in the low byte; 0 without a `pg_id`
    /// @param terminalId  receives @p stageId plus the port's `id`
    /// @return            StatusOk; StatusBadArgument for null, without `id` or ancestor; StatusNoMemory
    static int portGetFourCCInfo(const IGraphConfig* port, unsigned int& stageId, unsigned int& terminalId);

    /// What portGetDescriptor tells of a port.
    struct PortDescriptor {
        std::string name;
        std::string pgName; ///< name of the node that the port belongs to
        int32_t direction = 0;
        int32_t enabled = 0;
        uint32_t terminalId = 0;
        int32_t width = 0; ///< pixels, of the port or else of its peer
        int32_t height = 0;
        std::string format;
    };

    /// Describes a port. Of a disabled port width, height and format are left as they were.
    ///
    /// Height and format are read where the width was found, on the port or on its peer.
    ///
    /// @return StatusOk; StatusBadState when something is missing, with what came before it written; StatusNoMemory
    static int portGetDescriptor(const IGraphConfig* port, PortDescriptor& descriptor);

    // Execution contexts of ports.

    /// The integer @p key of the port's node (of a virtual sink: its own), -1 when it cannot be read.
    static int portGetKey(const IGraphConfig* port, unsigned int key);
    /// The `exec_ctx_id` of the port's node, -1 when it has none.
    static int portGetExecCtxId(const IGraphConfig* port);
    /// The `stream_id` of the port's node, -1 with an error line when it has none.
    static int portGetStreamId(const IGraphConfig* port);

    /// Whether the port's connection leaves the execution context (of older graphs: the stream): for outputs when the peer
    /// is in another context or a virtual sink, for inputs when it is in another context, a hardware block or a source.
    /// False for disabled, private and unconnected ports and for those of nodes without context.
    static bool isEdgePort(const IGraphConfig* port);

    // Formats and sizes of ports.

    /// Whether a port is enabled (`enabled` of the port, else of its peer, else 1) and its terminal.
    ///
    /// @return StatusOk; StatusBadArgument for null; StatusMissingData for a negative `enabled`; StatusNotFound when the
    ///         terminal cannot be told; StatusNoMemory
    static int portGetInfo(const IGraphConfig* port, unsigned int& enabled, unsigned int& terminalId);

    /// What a port carries, each value from the port or else from its peer.
    ///
    /// A format name that the table lacks is looked up by its first four characters as a code, and taken for NV12 when that
    /// fails too. Of a disabled port only @p enabled and @p terminalId are written.
    ///
    /// @param width   receives pixels; untouched when absent, so initialise it: the stride is then that of what it held
    /// @param height  receives lines; untouched when absent
    /// @param fourcc  receives the format's code; untouched when the format is absent
    /// @param bpl     receives bytes per line: `bpl` of the graph or else the stride of the format at @p width; untouched
    ///                when both are absent
    /// @param bpp     receives bits per pixel; untouched when the format is absent
    /// @return        StatusOk, of a private port also with values missing; the status of portGetInfo; StatusMissingData
    ///                when a value is missing or negative; StatusNoMemory
    static int portGetFormat(const IGraphConfig* port, unsigned int& enabled, unsigned int& terminalId,
                             unsigned int& width, unsigned int& height, unsigned int& fourcc, unsigned int& bpl,
                             unsigned int& bpp);

    /// Sets the `format` of the port's peer, as far as its options list allows.
    ///
    /// @return StatusOk, also when there is no `format`, no list or no such option; StatusBadState without a peer;
    ///         StatusBadArgument when the peer's `format` is no text; the status of a failed option; StatusNoMemory
    static int applyFormat(const IGraphConfig* port, const std::string& format);

    /// Size and crop of a port in pixels. Null outputs are skipped; those before a failure stay written.
    ///
    /// @return StatusOk; StatusBadArgument for null; StatusNotFound for a value that the port lacks
    static int getDimensions(const IGraphConfig* port, int* width, int* height, int* left = nullptr, int* top = nullptr,
                             int* right = nullptr, int* bottom = nullptr);

    // Sensors and sources.

    /// The factors `h_factor` and `v_factor` of a binner. StatusOk; StatusBadArgument for null; the status of the read.
    static int sensorGetBinningFactor(const IGraphConfig* sensor, int& h, int& v);
    /// The fraction `num_factor` / `denom_factor` of a scaler. StatusOk; StatusBadArgument for null; the read's status.
    static int sensorGetScalingFactor(const IGraphConfig* sensor, int& num, int& denom);

    /// The `sensor_type` of the first source of the graph's root, "NONE" when it has none.
    ///
    /// @return StatusOk; StatusBadArgument for null; StatusNotFound without a source or without its type; StatusNoMemory
    static int sensorGetType(const IGraphConfig* graph, std::string& sensorType);

    /// Appends the enabled nodes of type `source` of the graph's root. StatusOk; StatusBadArgument for null or when there
    /// is none; StatusNoMemory.
    static int getSourceNode(const IGraphConfig* graph, std::vector<IGraphConfig*>& sources);

    /// Appends the nodes of type `sink` of the graph's root whose `name` contains @p name; all of them for "".
    ///
    /// @return StatusOk; StatusBadArgument for null; StatusNotFound when there is none; StatusNoMemory
    static int graphGetSinksByName(const std::string& name, const IGraphConfig* graph,
                                   std::vector<IGraphConfig*>& sinks);

    // Execution contexts and subgraphs. A subgraph is the nodes of one type (mostly program groups) below `graph` whose
    // integer attribute `key` (mostly exec_ctx_id or stream_id) is `value`. Nodes come in the order of the graph.

    /// Adds the `exec_ctx_id` of every program group. The status is that of the last read, StatusOk without any, or
    /// StatusNoMemory.
    static int getExecCtxIds(const IGraphConfig& graph, std::set<int>& ids);

    /// Adds the `tuning_mode` of every execution context, -1 without one; the first program group of a context decides. The
    /// status is that of the last read, StatusOk without any, or StatusNoMemory.
    static int getExecCtxIdsTuningMap(const IGraphConfig& graph, std::map<int, int>& tuning);

    /// The connections that cross execution contexts. All three results are appended to.
    ///
    /// @param connections  receives pairs, the source first: the full name of the program group's port and the other end
    ///                     as the port's `peer` spells it
    /// @param inputPeers   receives the ports of sources and hardware blocks that deliver pixels, as `peer` spells them
    /// @param outputPeers  receives the sinks that take pixels, as `peer` spells them
    /// @return             StatusOk; StatusBadArgument for null or when @p connections is empty; StatusBadState, in the
    ///                     middle of the walk, when the peer of an input belongs to no node; StatusNoMemory
    static int getExecCtxConnectionPorts(const IGraphConfig* graph,
                                         std::vector<std::pair<std::string, std::string>>& connections,
                                         std::vector<std::string>& inputPeers, std::vector<std::string>& outputPeers);

    /// The ports of a subgraph through which it is connected to others or to nothing: also those that are disabled or
    /// private, but not those whose peer's node lacks the attribute.
    ///
    /// @param direction  0 for inputs, 1 for outputs
    /// @param ports      cleared, then filled
    /// @return           StatusOk; StatusBadArgument when there is none; StatusNoMemory
    static int getSubgraphPorts(unsigned int key, int value, int direction, const IGraphConfig& graph,
                                std::vector<IGraphConfig*>& ports, unsigned int nodeType);

    /// getSubgraphPorts for inputs.
    static int getInputPorts(unsigned int key, int value, const IGraphConfig& graph, std::vector<IGraphConfig*>& ports,
                             unsigned int nodeType);

    /// getSubgraphPorts for outputs. When there is none: the ports of sources that lead into other subgraphs or to nothing,
    /// and all outputs of nodes of other types that sources feed.
    ///
    /// @return StatusOk; StatusBadArgument when there is none; StatusNoMemory
    static int getOutputPorts(unsigned int key, int value, const IGraphConfig& graph, std::vector<IGraphConfig*>& ports,
                              unsigned int nodeType);

    /// The first of the subgraph's getInputPorts that has a peer.
    ///
    /// @param port  untouched on failure
    /// @return      StatusOk; StatusBadArgument for null or without input ports; the last status of portGetPeer when none
    ///              has a peer; StatusNoMemory
    static int getInputPort(unsigned int key, int value, const IGraphConfig* graph, IGraphConfig** port,
                            unsigned int nodeType);

    /// Appends the program groups whose integer @p key is @p value. One that lacks the attribute goes with the one before
    /// it, the first ones with -1.
    ///
    /// @return StatusOk; StatusMissingData when there is none; StatusNoMemory
    static int getProgramGroups(unsigned int key, int value, const IGraphConfig* graph,
                                std::vector<IGraphConfig*>& pgs);

    // Kernels.

    /// Number of kernels of a program group. StatusOk; StatusBadArgument for null.
    static int getKernelCountInPg(const IGraphConfig* pg, unsigned int& count);

    /// The values of a kernel. Null outputs are skipped; those before a failure stay written.
    ///
    /// @param metadata     receives the integers of the comma-separated text `metadata`, as many as there are: no bound is
    ///                     applied, so the array must be as long as the text demands; untouched without the text
    /// @param enable       receives `enabled`, 1 when absent
    /// @param rcb          receives `rcb`, 0 when absent
    /// @param branchPoint  receives `branch_point`, 0 when absent
    /// @param sinkPort     receives `sink_port`, -1 when absent
    /// @return             StatusOk; StatusBadArgument for null; the status of reading `pal_uuid` or `id`; StatusNoMemory
    static int kernelGetValues(const IGraphConfig* kernel, int* palUuid, int* kernelId, unsigned int* metadata,
                               int* enable, int* rcb, int* branchPoint, int* sinkPort);

    // Others.

    /// Logs all items below @p node as errors, indented by @p depth levels.
    static void dumpNodeTree(const IGraphConfig* node, int depth);

    /// Applies the overrides (`apply`) of the descriptor's graph element to the built graph.
    ///
    /// @return StatusOk, also without overrides and for an attribute that cannot be created; the read status of a missing
    ///         `target` or `value`; the status of a failed set; StatusNoMemory. Throws std::invalid_argument or
    ///         std::out_of_range when an integer is given a text that is none.
    static int processGraphOverrides(GraphConfigNode& descriptorGraph, GraphConfigNode& result);

    /// A decimal or ("0x") hexadecimal number as bytes, the least significant first. What follows the digits is ignored.
    ///
    /// @param size  receives the number of bytes: decimal digits * 27214 / 65536 + 1, or hexadecimal digits / 2 + 1,
    ///              leading zeros of decimal numbers not counted; may be null
    /// @return      bytes to be released with qv_cipr_free; null for a text that does not start with a digit, for a
    ///              decimal number above 18446744073709551614, and when memory is exhausted
    static unsigned char* numString2binary(const std::string& text, unsigned int* size);
};

} // namespace NUXO

#endif
