// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_KERNEL_FAULTS_H
#define NUXO_TOOL_KERNEL_FAULTS_H

#include "ProgramGroups.h"

#include <string>

namespace NuxoTool {

/// An attribute that is at fault.
struct KernelFault {
    const NUXO::IGraphConfig* item = nullptr; ///< null for no fault
    uint32_t attribute = 0;
};

/// The fault of a kernel where a line of the library's log tells only of the stream.
///
/// @param group  a program group of the stream
/// @return       no fault when the line tells of something else, or when nothing is found
KernelFault faultBehind(const std::string& line, const NUXO::IGraphConfig& group, const ProgramGroups& groups);

} // namespace NuxoTool

#endif
