// SPDX-License-Identifier: Apache-2.0
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/tree/TreeAccess.h>

namespace NUXO {

void GraphCameraUtil::dumpNodeTree(const IGraphConfig* node, int depth)
{
    GraphConfigNode::dumpNodeTree(asNode(node), depth);
}

} // namespace NUXO
