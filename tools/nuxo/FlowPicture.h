// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_FLOW_PICTURE_H
#define NUXO_TOOL_FLOW_PICTURE_H

#include "Flow.h"

#include <cstddef>
#include <string>
#include <vector>

namespace NuxoTool {

/// How pictures of the inside of a stream are arranged: a column for each program group, side by side in the order in which
/// frames pass them, with the stream's neighbours around.
class FlowColumns {
public:
    FlowColumns(const Flow& flow, int stream) : mFlow(flow), mStream(stream) {}

    int stream() const { return mStream; }
    /// Whether the node stands in one of the columns.
    bool contains(size_t index) const;
    /// The groups that have columns, from left to right.
    std::vector<std::string> groups() const;
    /// The port where frames enter a group, as far as it has one: what stands on top.
    size_t headOf(const std::string& group) const;
    /// Whether a link says that its end stands below its start: not those between columns, and none that leads back.
    bool isOrdering(size_t from, const Flow::Link& link) const;

private:
    const Flow& mFlow;
    int mStream;
};

/// The texts of a node, from top to bottom.
struct FlowLabel {
    std::string name;                 ///< with the group's name where it stands in no column
    std::vector<std::string> details; ///< state, kind, numbers: one line
    std::vector<std::string> changes; ///< what a kernel makes of the frame: a line each
    std::string alarm;                ///< what breaks the chain; mostly empty
};
FlowLabel flowLabel(const Flow& flow, const FlowColumns& columns, size_t index);

bool isBypassed(const Flow::Node& node);

/// The size that passes, and whether for the next frame; may be empty.
std::string linkText(const Flow::Link& link);

} // namespace NuxoTool

#endif
