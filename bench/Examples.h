// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_BENCH_EXAMPLES_H
#define NUXO_BENCH_EXAMPLES_H

#include "Trees.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace bench {

/// The two example files of a generation.
class ExamplePair {
public:
    /// @param generation  "kva6", for example
    explicit ExamplePair(const std::string& generation);

    /// All settings, in the order of the file.
    std::vector<NUXO::IGraphConfig*> settings() const;
    Tree build(NUXO::IGraphConfig& setting) const;

private:
    Tree mDescriptor;
    Tree mSettings;
    mutable NUXO::GraphQueryManager mManager;
};

/// An example setting and the graph that was built from it.
struct ExampleGraph {
    std::shared_ptr<ExamplePair> pair;
    NUXO::IGraphConfig* setting = nullptr;
    Tree graph;
    size_t size = 0;
};

/// The graph of these generations that is largest by the measure, the last of several. Throws std::runtime_error when all are
/// empty.
ExampleGraph largestExample(const std::vector<std::string>& generations,
                            const std::function<size_t(const NUXO::IGraphConfig& graph)>& measure);

} // namespace bench

#endif
