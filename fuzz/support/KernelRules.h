// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_FUZZ_SUPPORT_KERNEL_RULES_H
#define NUXO_FUZZ_SUPPORT_KERNEL_RULES_H

#include <nuxo/analysis/GraphUtil.h>
#include <nuxo/isp/GdfVersion.h>
#include <nuxo/tree/GraphConfigNode.h>

// What must hold of run-kernel records, computed a second time from the nodes that they stand for.
namespace fuzzing {

/// The records of one subgraph after a successful analysis, and the histories that go on from them.
void checkSubgraphRecords(const NUXO::IGraphConfig& root, const NUXO::GraphUtil& analysis, int id,
                          const qv_isp_zmt_program_group& group, NUXO::GdfVersion version);

/// The records of one program group after a successful analysis.
void checkGroupRecords(const NUXO::IGraphConfig& node, const qv_isp_zmt_program_group& group);

/// The records of one stream of a graph that is filled without analysis.
void checkStreamRecords(const NUXO::IGraphConfig& root, int stream, const qv_isp_zmt_program_group& group);

} // namespace fuzzing

#endif
