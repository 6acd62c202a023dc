// SPDX-License-Identifier: Apache-2.0
// What goes wrong in one place and shows in many, see RuleReporter::reportCause: names that nothing has.
#ifndef NUXO_TOOL_CAUSES_H
#define NUXO_TOOL_CAUSES_H

#include "model/DescriptorModel.h"

#include <string>

namespace NuxoTool {

inline std::string missingNode(const std::string& name)
{
    return "node " + name;
}

inline std::string missingBaseNode(const std::string& name)
{
    return "base node " + name;
}

/// Of all nodes that are made from one base node the part is missing there.
inline std::string missingPart(const ModelNode& node, const std::string& name)
{
    return "part " + (node.base == nullptr ? node.name : filedName(*node.base)) + ':' + name;
}

} // namespace NuxoTool

#endif
