// SPDX-License-Identifier: Apache-2.0
#include "support/CameraRules.h"

#include "support/ForeignView.h"
#include "support/Fuzzing.h"
#include "support/PortFacts.h"

#include <nuxo/nuxo.h>

#include <algorithm>

namespace fuzzing {

namespace {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;
using NUXO::ZmtTevSimUtils;

// The subgraphs that there are among the children of a node, up to a few.
std::vector<Request> subgraphsOf(const IGraphConfig& graph)
{
    constexpr size_t most = 4;
    std::vector<Request> subgraphs;
    for (const IGraphConfig* const group : childrenOfType(&graph, NUXO_KEY_PROGRAM_GROUP)) {
        for (const uint32_t key : {NUXO_KEY_EXEC_CTX_ID, NUXO_KEY_STREAM_ID}) {
            const int value = integerOf(group, key).value_or(-1);
            const bool isKnown = std::any_of(subgraphs.begin(), subgraphs.end(), [key, value](const Request& subgraph) {
                return subgraph.key == key && subgraph.value == value;
            });
            if (!isKnown && subgraphs.size() < most) subgraphs.push_back({key, value, NUXO_KEY_PROGRAM_GROUP, {}});
        }
    }
    return subgraphs;
}

void checkAsPort(const IGraphConfig* node, const Request& request)
{
    checkPort(node, request);
    checkFormat(node);
    checkGeometry(node);
    checkKernel(node);
}

void checkAsGraph(const IGraphConfig* node, const Request& request)
{
    checkContexts(node);
    checkSubgraph(node, request);
    checkGroups(node, request);
    checkMembers(node, request);
}

} // namespace

void checkAnswers(const GraphConfigNode& node, const Request& request)
{
    checkAsPort(&node, request);
    checkAsGraph(&node, request);
    for (const Request& subgraph : subgraphsOf(node)) {
        checkSubgraph(&node, subgraph);
        checkGroups(&node, subgraph);
    }
    checkSensorFrame(&node);
    checkPortFrame(&node, textOf(&node, NUXO_KEY_PEER).value_or(request.text));
    checkSimulation(node, request);
    for (const auto& entry : node) {
        std::string text;
        if (entry.second->getValue(text) == StatusOk) checkNumber(text);
    }
}

void checkStrangers(GraphConfigNode& node, const Request& request)
{
    checkAsPort(nullptr, request);
    checkAsGraph(nullptr, request);
    checkSensorFrame(nullptr);
    checkPortFrame(nullptr, request.text);
    checkNumber(request.text);
    checkSimulationOfNull();

    ForeignView foreign(node);
    checkAsPort(&foreign, request);
    checkAsGraph(&foreign, request);
    checkSensorFrame(&foreign);
    checkPortFrame(&foreign, request.text);
    IGraphConfig* copy = nullptr;
    require(ZmtTevSimUtils::cloneSettings(&foreign, &copy) == StatusNoMemory && copy == nullptr,
            "only the library's nodes can be copied");
    require(ZmtTevSimUtils::setValue(&foreign, request.key, request.value) == StatusBadArgument,
            "only the library's nodes can be forced");
    std::vector<ZmtTevSimUtils::KernelInfo> kernels;
    require(ZmtTevSimUtils::getKernelInfoList(foreign, kernels) == StatusBadArgument && kernels.empty(),
            "only the library's nodes have kernels");
}

} // namespace fuzzing
