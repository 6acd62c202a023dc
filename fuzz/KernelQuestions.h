// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_FUZZ_KERNEL_QUESTIONS_H
#define NUXO_FUZZ_KERNEL_QUESTIONS_H

#include "support/Digest.h"

#include <nuxo/analysis/GraphUtil.h>
#include <nuxo/kernels/ZmtTevUtils.h>
#include <nuxo/tree/GraphConfigNode.h>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace fuzzing {

/// A built graph and what there is to ask it for.
class KernelGraph {
public:
    explicit KernelGraph(std::unique_ptr<NUXO::GraphConfigNode> root);

    NUXO::GraphConfigNode& root() const { return *mRoot; }
    const std::vector<NUXO::GraphConfigNode*>& nodes() const { return mNodes; }
    const Places& places() const { return mPlaces; }
    /// Streams and contexts that nodes state, and some that none states.
    const std::vector<int>& ids() const { return mIds; }
    /// What the records of groups are asked for: mostly groups.
    std::vector<const NUXO::IGraphConfig*> groups() const;
    /// As told by the version utilities.
    NUXO::GdfVersion version() const { return mVersion; }
    bool hasKernelLinks() const;

private:
    std::unique_ptr<NUXO::GraphConfigNode> mRoot;
    std::vector<NUXO::GraphConfigNode*> mNodes;
    Places mPlaces;
    std::vector<int> mIds;
    NUXO::GdfVersion mVersion;
};

/// What came of one question after the other: its name, and a number that stands for its status and all outputs.
using Transcript = std::vector<std::pair<const char*, uint64_t>>;

/// Checks that the same came of the same questions.
void requireSameAnswers(const Transcript& expected, const Transcript& found, const char* rule);

/// Initialises the object with the graph and asks it everything, with all records read again at the end.
Transcript interview(NUXO::GraphUtil& analysis, const KernelGraph& graph, unsigned int subgraphKey,
                     NUXO::GdfVersion version);
Transcript interview(NUXO::ZmtTevUtils& utils, bool usesStreams, const KernelGraph& graph);

/// Asks the functions that need no object, and the version utilities; formats are applied to a copy.
Transcript interviewNodes(const KernelGraph& graph);

} // namespace fuzzing

#endif
