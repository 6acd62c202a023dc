// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_LOADING_H
#define NUXO_TOOL_LOADING_H

#include "Session.h"

#include <nuxo/tree/GraphConfigNode.h>

#include <memory>
#include <string>

namespace NuxoTool {

/// The element that a graph file must start with.
enum class DocumentKind { Any, Descriptor, Settings };

/// A graph file that was read.
struct GraphFile {
    std::string path;
    std::string rootElement;                  ///< name of the document's element
    Location root;                            ///< where it starts
    bool complete = false;                    ///< whether the whole file was read without a finding
    std::unique_ptr<NUXO::IGraphConfig> tree; ///< null when nothing could be read

    bool isDescriptor() const { return rootElement == "graph_descriptor"; }
    bool isSettings() const { return rootElement == "graph_settings"; }
    bool isGraphFile() const { return isDescriptor() || isSettings(); }
    /// The tree's root with the operations of the node class; null when nothing could be read.
    const NUXO::GraphConfigNode* node() const { return dynamic_cast<const NUXO::GraphConfigNode*>(tree.get()); }
};

/// Reads a graph file and reports everything that is wrong with it.
GraphFile loadGraphFile(Session& session, const std::string& path, DocumentKind kind);

/// The two files of a request.
struct GraphPair {
    GraphFile descriptor;
    GraphFile settings;
    bool complete() const { return descriptor.complete && settings.complete; }
};

/// Reads both files of the command line, the second also when the first is wrong.
GraphPair loadGraphPair(Session& session);

} // namespace NuxoTool

#endif
