// SPDX-License-Identifier: Apache-2.0
#include "support/TreeCopy.h"

#include "support/Fuzzing.h"
#include "support/TreeChecks.h"

#include <nuxo/nuxo.h>

#include <algorithm>
#include <stdexcept>

namespace fuzzing {

using NUXO::GraphConfigNode;

TreeCopy::TreeCopy(const GraphConfigNode& original) : mRoot(original.copy())
{
    require(mRoot != nullptr, "a tree can be copied");
    mNodes = nodesOf(mRoot.get());
}

size_t TreeCopy::numberOf(const NUXO::IGraphConfig* node) const
{
    return static_cast<size_t>(std::find(mNodes.begin(), mNodes.end(), node) - mNodes.begin());
}

void TreeCopy::check() const
{
    checkTree(nodesOf(mRoot.get()));
}

int applyOverrides(GraphConfigNode& graph, GraphConfigNode& result)
{
    try {
        return NUXO::GraphCameraUtil::processGraphOverrides(graph, result);
    } catch (const std::invalid_argument&) {
        return StatusBadArgument;
    } catch (const std::out_of_range&) {
        return StatusBadArgument;
    }
}

} // namespace fuzzing
