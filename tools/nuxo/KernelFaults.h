// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_KERNEL_FAULTS_H
#define NUXO_TOOL_KERNEL_FAULTS_H

#include "ProgramGroups.h"

#include <string>
#include <vector>

namespace NuxoTool {

/// An element or attribute that is at fault.
struct KernelFault {
    const NUXO::IGraphConfig* item = nullptr; ///< null for no fault
    uint32_t attribute = 0;                   ///< 0 for the element
    const char* expected = "kernels whose links and sizes fit";
};

/// The fault of a kernel, link or back end where a line of the library's log tells only whose it is.
///
/// @param named  what the line, or one behind it, names: a kernel, a program group of the stream, a source; null for nothing
/// @return       no fault when the line tells of something else, or when nothing is found
KernelFault faultBehind(const std::string& line, const NUXO::IGraphConfig* named, const ProgramGroups& groups);

/// Inputs and outputs of kernels with a width or a height alone.
std::vector<KernelFault> halfSizesIn(const ProgramGroups& groups);

/// Links with an end that names a kernel without one of its ports. The library takes it for a port of the group.
std::vector<KernelFault> linksWithoutPortIn(const ProgramGroups& groups);

} // namespace NuxoTool

#endif
