// SPDX-License-Identifier: Apache-2.0
#include "support/CameraRules.h"
#include "support/Fuzzing.h"
#include "support/PortFacts.h"

#include <nuxo/nuxo.h>

#include <map>
#include <set>
#include <utility>

namespace fuzzing {

namespace {

using NUXO::GraphCameraUtil;
using NUXO::IGraphConfig;

struct Connections {
    std::vector<std::pair<std::string, std::string>> all = {{"before", "before"}}; // results are appended to
    std::vector<std::string> inputs = {"before"};
    std::vector<std::string> outputs = {"before"};
};

// An input leaves its group's context; what delivers pixels counts as origin. False when the peer belongs to no node.
bool expectInput(const IGraphConfig& port, int context, const std::string& fullName, Connections& expected)
{
    const IGraphConfig* const peerNode = ancestorOf(peerOf(&port).node);
    if (peerNode == nullptr) return false;
    if (integerOf(peerNode, NUXO_KEY_EXEC_CTX_ID).value_or(-1) == context) return true;
    const std::string peerName = *textOf(&port, NUXO_KEY_PEER);
    expected.all.emplace_back(peerName, fullName);
    const bool isOrigin = peerNode->isType(NUXO_KEY_SOURCE) || peerNode->isType(NUXO_KEY_HW);
    if (isOrigin && contentTypeOf(&port) == "pixel_data") expected.inputs.push_back(peerName);
    return true;
}

void expectOutput(const IGraphConfig& port, const std::string& fullName, Connections& expected)
{
    if (!crossesContexts(&port) || !peerOf(&port).node->isType(NUXO_KEY_SINK)) return;
    const std::string peerName = *textOf(&port, NUXO_KEY_PEER);
    expected.all.emplace_back(fullName, peerName);
    if (contentTypeOf(&port) == "pixel_data") expected.outputs.push_back(peerName);
}

int expectConnections(const IGraphConfig& graph, Connections& expected)
{
    for (const IGraphConfig* const group : childrenOfType(&graph, NUXO_KEY_PROGRAM_GROUP)) {
        const int context = integerOf(group, NUXO_KEY_EXEC_CTX_ID).value_or(-1);
        const std::string groupName = textOf(group, NUXO_KEY_NAME).value_or("");
        for (const IGraphConfig* const port : childrenOfType(group, NUXO_KEY_PORT)) {
            if (peerOf(port).node == nullptr) continue;
            const std::string fullName = groupName + ":" + textOf(port, NUXO_KEY_NAME).value_or("");
            const int direction = directionOf(port);
            if (direction == 0 && !expectInput(*port, context, fullName, expected)) return StatusBadState;
            if (direction == 1) expectOutput(*port, fullName, expected);
        }
    }
    return StatusOk; // there is always what was there before
}

void checkConnections(const IGraphConfig* graph)
{
    Connections expected;
    Connections found;
    const int expectedStatus =
        graph == nullptr ? static_cast<int>(StatusBadArgument) : expectConnections(*graph, expected);
    require(GraphCameraUtil::getExecCtxConnectionPorts(graph, found.all, found.inputs, found.outputs) == expectedStatus,
            "connections can be told unless a peer belongs to no node");
    require(found.all == expected.all, "connections are those that cross contexts");
    require(found.inputs == expected.inputs, "origins are sources and hardware that deliver pixels");
    require(found.outputs == expected.outputs, "targets are sinks that take pixels");
    if (expectedStatus != StatusOk) return;
    found = {};
    found.all.clear();
    const int alone = GraphCameraUtil::getExecCtxConnectionPorts(graph, found.all, found.inputs, found.outputs);
    require((alone == StatusOk) != found.all.empty(), "there are connections exactly when the status says so");
}

void checkContextIds(const IGraphConfig& graph)
{
    std::set<int> expected = {12345};
    std::map<int, int> expectedModes = {{12345, 7}};
    std::set<int> ids = expected;
    std::map<int, int> modes = expectedModes;
    int expectedStatus = StatusOk;
    int expectedModeStatus = StatusOk;
    for (const IGraphConfig* const group : childrenOfType(&graph, NUXO_KEY_PROGRAM_GROUP)) {
        int context = 0;
        int mode = -1;
        expectedStatus = group->getValue(NUXO_KEY_EXEC_CTX_ID, context);
        expectedModeStatus = expectedStatus;
        if (expectedStatus != StatusOk) continue;
        expectedModeStatus = group->getValue(NUXO_KEY_TUNING_MODE, mode);
        expected.insert(context);
        expectedModes.insert({context, mode});
    }
    require(GraphCameraUtil::getExecCtxIds(graph, ids) == expectedStatus, "the last group decides about the status");
    require(ids == expected, "every context of a group is listed");
    require(GraphCameraUtil::getExecCtxIdsTuningMap(graph, modes) == expectedModeStatus,
            "the last read decides about the status");
    require(modes == expectedModes, "the first group of a context decides about its mode");
}

} // namespace

void checkContexts(const IGraphConfig* graph)
{
    checkConnections(graph);
    if (graph != nullptr) checkContextIds(*graph);
}

} // namespace fuzzing
