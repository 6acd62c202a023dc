// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_CAMERA_SUBGRAPH_FIXTURE_H
#define NUXO_TESTS_CAMERA_SUBGRAPH_FIXTURE_H

#include "camera/ContextFixture.h"

namespace graphtest {

/// Questions about the ports of subgraphs, which are execution contexts of program groups unless a test says otherwise.
class SubgraphTest : public ContextTest {
protected:
    std::string ask(uint32_t key, int value, int direction)
    {
        clearLog();
        mStatus = GraphCameraUtil::getSubgraphPorts(key, value, direction, *mRoot, mFound, mType);
        return paths(mFound);
    }
    std::string inputs(int value) { return ask(NUXO_KEY_EXEC_CTX_ID, value, 0); }
    std::string outputs(int value) { return ask(NUXO_KEY_EXEC_CTX_ID, value, 1); }

    static std::string noPeer(const std::string& port) { return "2 getSubgraphPorts: no peer found for port " + port; }

    uint32_t mType = NUXO_KEY_PROGRAM_GROUP;
    std::vector<IGraphConfig*> mFound;
    int mStatus = 1;
};

} // namespace graphtest

#endif
