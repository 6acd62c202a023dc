// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/tree/TreeAccess.h>

namespace NUXO {

void GraphCameraUtil::dumpNodeTree(const IGraphConfig* node, int depth)
{
    GraphConfigNode::dumpNodeTree(asNode(node), depth);
}

int GraphCameraUtil::getSourceNode(const IGraphConfig* graph, std::vector<IGraphConfig*>& sources)
{
    if (graph == nullptr) {
        NUXO_ERROR("Null pointer given");
        return StatusBadArgument;
    }
    const GraphConfigNode* const root = asNode(static_cast<const IGraphConfig*>(graph->getRoot()));
    const char* const sourceType = ItemUID::key2str(NUXO_KEY_SOURCE);
    return unlessNoMemory<int>(StatusNoMemory, [&]() -> int {
        size_t found = 0;
        const auto addIfActive = [&](GraphConfigNode& node, uint32_t) {
            int32_t enabled = 1;
            findInteger(node, NUXO_KEY_ENABLED, enabled);
            if (enabled != 0 && hasText(node, NUXO_KEY_TYPE, sourceType)) {
                sources.push_back(&node);
                ++found;
            }
            return true;
        };
        if (root != nullptr) forEachChild(*root, addIfActive);
        if (found == 0) {
            NUXO_ERROR("ERROR: No active sources. Check that node with type source exists");
            return StatusBadArgument;
        }
        NUXO_DEBUG("Found %lu active sources from the descriptor.", static_cast<unsigned long>(found));
        return StatusOk;
    });
}

} // namespace NUXO
