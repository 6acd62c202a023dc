// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_FUZZ_GRAPH_QUESTIONS_H
#define NUXO_FUZZ_GRAPH_QUESTIONS_H

#include "support/CameraRules.h"
#include "support/Digest.h"

#include <nuxo/tree/GraphConfigNode.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace fuzzing {

/// What came of a question: its status, or what it gives instead, and a number that stands for all outputs. Nodes count as
/// their places in the tree, so that outcomes of copies are equal.
struct Outcome {
    int64_t status;
    uint64_t digest;

    bool operator==(const Outcome& other) const { return status == other.status && digest == other.digest; }
};

/// One function that leaves the graph as it is.
struct Subject;
struct Question {
    const char* name;
    int64_t statusWithoutMemory;
    Outcome (*ask)(const Subject& subject);
};

/// Asks questions about the nodes of a tree. Asking allocates nothing but what the function asked allocates.
class Interview {
public:
    Interview(const std::vector<NUXO::GraphConfigNode*>& nodes, const Request& request);

    static size_t questions();
    static const Question& question(size_t number);
    Outcome ask(size_t node, size_t question) const;

private:
    friend struct Subject;

    std::vector<NUXO::GraphConfigNode*> mNodes;
    Places mPlaces;
    const Request& mRequest;
    mutable std::vector<unsigned int> mMetadata; // as long as the longest text demands
};

/// Like require, but also says what was asked.
void requireOf(bool holds, const char* name, const char* rule);

/// Checks that a node gives the same answers as its copy.
void checkRepeatable(const std::vector<NUXO::GraphConfigNode*>& nodes, size_t node, const Request& request);

} // namespace fuzzing

#endif
