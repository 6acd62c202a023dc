// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_BENCH_REQUEST_CYCLE_H
#define NUXO_BENCH_REQUEST_CYCLE_H

#include "Texts.h"
#include "Trees.h"

#include <cstddef>

namespace bench {

/// Two parsed files and the graph of one setting.
class RequestTrees {
public:
    explicit RequestTrees(Request request);

    /// Queries for the setting with the key. Throws std::runtime_error when it is not found.
    NUXO::IGraphConfig& find(int settingsKey);

    /// Builds the graph of one setting. Throws std::runtime_error when that fails.
    Tree build(NUXO::IGraphConfig& setting);

private:
    Request mRequest;
    Tree mDescriptor;
    Tree mSettings;
    NUXO::GraphQueryManager mManager;
};

/// Throws std::runtime_error unless the graph of the setting reaches the sink with the setting's resolution.
void checkGraph(const NUXO::IGraphConfig& graph, int settingsKey);

/// Bytes by which the heap grew over @p cycles cycles of parsing, querying, building, filling records and destroying, after
/// some to warm up.
long long growthOver(size_t cycles);

} // namespace bench

#endif
