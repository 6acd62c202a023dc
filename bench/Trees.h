// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_BENCH_TREES_H
#define NUXO_BENCH_TREES_H

#include <nuxo/nuxo.h>

#include <memory>
#include <string>

namespace bench {

using Tree = std::unique_ptr<NUXO::IGraphConfig>;

/// Throw std::runtime_error when nothing was parsed: a benchmark of nothing would look fast.
Tree parseFile(const std::string& path);
Tree parseText(std::string& text);

/// Throws std::runtime_error when that fails.
Tree buildGraph(NUXO::GraphQueryManager& manager, NUXO::IGraphConfig& setting);

} // namespace bench

#endif
