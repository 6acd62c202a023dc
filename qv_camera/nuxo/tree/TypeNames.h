// SPDX-License-Identifier: Apache-2.0
// Internal: `type` texts that the library looks for. Parsing writes them from the element names, whatever keys those have.
#ifndef NUXO_TREE_TYPE_NAMES_H
#define NUXO_TREE_TYPE_NAMES_H

namespace NUXO {

constexpr const char* kTypeApply = "apply";
constexpr const char* kTypeComputeBlock = "compute_block";
constexpr const char* kTypeDemux = "demux";
constexpr const char* kTypeGraph = "graph";
constexpr const char* kTypeHw = "hw";
constexpr const char* kTypeKernel = "kernel";
constexpr const char* kTypeKlink = "klink";
constexpr const char* kTypeMux = "mux";
constexpr const char* kTypePort = "port";
constexpr const char* kTypeProgramGroup = "program_group";
constexpr const char* kTypeSink = "sink";
constexpr const char* kTypeSource = "source";
constexpr const char* kTypeSplit = "split";

} // namespace NUXO

#endif
