// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_SIMULATION_ZMT_TEV_SIM_UTILS_H
#define NUXO_SIMULATION_ZMT_TEV_SIM_UTILS_H

#include <qv_tools/qv_export.h>

#include <nuxo/tree/IGraphConfig.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace NUXO {

/// What a simulation of the pipeline asks of descriptors, settings and built graphs. Stateless. Results are added to what
/// the containers held.
class QV_EXPORT ZmtTevSimUtils {
public:
    /// A kernel as a simulation sees it.
    struct KernelInfo {
        std::string name;
        int32_t pal_uuid = 0;
    };

    /// A deep copy of a settings tree.
    ///
    /// @param copy  receives the copy, owned by the caller; untouched on failure
    /// @return      StatusOk; 32 (positive) for null arguments; StatusNoMemory when it cannot be copied
    static int cloneSettings(const IGraphConfig* settings, IGraphConfig** copy);

    /// The `pal_uuid` of the first kernel with this name in any program group below the root.
    ///
    /// @return StatusOk; the status of reading the `pal_uuid`; StatusNotFound without such a kernel; StatusBadArgument for
    ///         null; StatusNoMemory
    static int getKernelPalUuid(const IGraphConfig* descriptor, const std::string& kernelName, int& palUuid);

    /// The kernels of the program groups of one graph of the descriptor that belong to one stream: group after group in the
    /// order in which the graph's connections name them. Applies the graph's overrides, as getPgsInGraph does.
    ///
    /// @return StatusOk, also when a kernel lacks `name` or `pal_uuid` (the rest of its group is then left out); the status
    ///         of getPgsInGraph; StatusNoMemory
    static int getKernelList(const IGraphConfig* descriptor, int graphId, int streamId,
                             std::vector<KernelInfo>& kernels);

    /// The program groups that the connections of one graph of the descriptor reach. Applies the graph's overrides to the
    /// descriptor's nodes, although it takes the descriptor as const. Ends of connections that do not resolve are skipped.
    ///
    /// @return StatusOk; StatusBadArgument without `graphs` or `nodes` or for null; StatusBadState when a graph has no
    ///         `id`; StatusNotFound without the graph; the status of a failing override, StatusBadArgument for one
    ///         that gives an integer a text; the read status of a connection without `source` or `sink`;
    ///         StatusNoMemory
    static int getPgsInGraph(const IGraphConfig* descriptor, int graphId, std::set<IGraphConfig*>& programGroups);

    /// The kernels below one program group, at any depth, in order.
    ///
    /// @return StatusOk; the status of reading a `name` or `pal_uuid`, with the kernels before it appended;
    ///         StatusBadArgument for a foreign implementation of the interface; StatusNoMemory
    static int getKernelInfoList(const IGraphConfig& programGroup, std::vector<KernelInfo>& kernels);

    /// Sets an integer attribute whatever options lists say; creates it when the node has none.
    ///
    /// @return StatusOk; StatusBadArgument when @p node is null or a foreign implementation of the interface; the status
    ///         of the item when @p key names a text or a node; StatusNoMemory
    static int setValue(IGraphConfig* node, unsigned int key, int value);

    /// The active output of each demux and the active input of each mux directly below one stream's node, by their names.
    ///
    /// The stream is the first program group (in generation 7 compute block) whose `stream_id` is @p streamId; without one
    /// the result is StatusOk and nothing is added.
    ///
    /// @return StatusOk; StatusBadArgument for null; the status of reading `active_output` or `active_input`;
    ///         StatusNoMemory
    static int getMuxConfiguration(const IGraphConfig* graph, int streamId,
                                   std::map<std::string, unsigned int>& config);
};

} // namespace NUXO

#endif
