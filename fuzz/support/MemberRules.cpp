// SPDX-License-Identifier: Apache-2.0
#include "support/CameraRules.h"
#include "support/Fuzzing.h"
#include "support/PortFacts.h"

#include <nuxo/nuxo.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <sstream>

namespace fuzzing {

namespace {

using NUXO::GraphCameraUtil;
using NUXO::IGraphConfig;
using Nodes = std::vector<IGraphConfig*>;

// Results are appended to what was there.
void requireAppended(int status, const Nodes& found, const Nodes& expected, int statusOfNone)
{
    require(found == expected, "members are those that are asked for, in order");
    require(status == (expected.size() > 1 ? static_cast<int>(StatusOk) : statusOfNone), "there are members or none");
}

void checkSources(const IGraphConfig* graph)
{
    Nodes expected = {nullptr};
    Nodes found = expected;
    if (graph != nullptr) {
        for (IGraphConfig* const source : childrenOfType(graph->getRoot(), NUXO_KEY_SOURCE)) {
            if (integerOf(source, NUXO_KEY_ENABLED) != 0) expected.push_back(source);
        }
    }
    requireAppended(GraphCameraUtil::getSourceNode(graph, found), found, expected, StatusBadArgument);
}

void checkSinks(const IGraphConfig* graph, const std::string& name)
{
    Nodes expected = {nullptr};
    Nodes found = expected;
    if (graph != nullptr) {
        for (IGraphConfig* const sink : childrenOfType(graph->getRoot(), NUXO_KEY_SINK)) {
            const std::optional<std::string> sinkName = textOf(sink, NUXO_KEY_NAME);
            const bool isNamedSo = sinkName && sinkName->find(name) != std::string::npos;
            if (name.empty() || isNamedSo) expected.push_back(sink);
        }
    }
    const int statusOfNone = graph == nullptr ? StatusBadArgument : StatusNotFound;
    requireAppended(GraphCameraUtil::graphGetSinksByName(name, graph, found), found, expected, statusOfNone);
}

void checkSensorType(const IGraphConfig* graph)
{
    std::string type = "before";
    const int status = GraphCameraUtil::sensorGetType(graph, type);
    if (graph == nullptr) {
        require(status == StatusBadArgument && type == "before", "a sensor type needs a graph");
        return;
    }
    const Nodes sources = childrenOfType(graph->getRoot(), NUXO_KEY_SOURCE);
    const std::optional<std::string> expected =
        sources.empty() ? std::nullopt : textOf(sources.front(), NUXO_KEY_SENSOR_TYPE);
    require(status == (expected ? StatusOk : StatusNotFound), "a sensor type stands at the first source");
    require(type == expected.value_or("NONE"), "the sensor type is that of the first source");
}

void checkKernelCount(const IGraphConfig* group)
{
    unsigned int count = 4711;
    const int status = GraphCameraUtil::getKernelCountInPg(group, count);
    require(status == (group == nullptr ? StatusBadArgument : StatusOk), "kernels can be counted");
    require(count == (group == nullptr ? 4711U : childrenOfType(group, NUXO_KEY_KERNEL).size()),
            "kernels are the children of that type");
}

std::vector<unsigned int> itemsOf(const std::string& text)
{
    std::vector<unsigned int> items;
    std::istringstream rest(text);
    for (std::string item; std::getline(rest, item, ',');) {
        items.push_back(static_cast<unsigned int>(std::strtol(item.c_str(), nullptr, 10)));
    }
    return items;
}

struct KernelValues {
    std::array<int, 6> values = {11, 12, 13, 14, 15, 16}; // uuid, id, enabled, rcb, branch point, sink port
};

int expectKernel(const IGraphConfig* kernel, KernelValues& expected)
{
    if (kernel == nullptr) return StatusBadArgument;
    auto& [uuid, id, enabled, rcb, branchPoint, sinkPort] = expected.values;
    enabled = integerOf(kernel, NUXO_KEY_ENABLED).value_or(1);
    rcb = integerOf(kernel, NUXO_KEY_RCB).value_or(0);
    branchPoint = integerOf(kernel, NUXO_KEY_BRANCH_POINT).value_or(0);
    int status = kernel->getValue(NUXO_KEY_PAL_UUID, uuid);
    if (status == StatusOk) status = kernel->getValue(NUXO_KEY_ID, id);
    if (status == StatusOk) sinkPort = integerOf(kernel, NUXO_KEY_SINK_PORT).value_or(-1);
    return status;
}

} // namespace

void checkKernel(const IGraphConfig* kernel)
{
    const std::vector<unsigned int> expectedItems = itemsOf(textOf(kernel, NUXO_KEY_METADATA).value_or(""));
    // Exactly as long as the text demands, so that a sanitizer sees one item too many.
    const std::unique_ptr<unsigned int[]> items(new unsigned int[expectedItems.size()]());
    KernelValues expected;
    KernelValues found;
    auto& [uuid, id, enabled, rcb, branchPoint, sinkPort] = found.values;
    const int expectedStatus = expectKernel(kernel, expected);
    require(GraphCameraUtil::kernelGetValues(kernel, &uuid, &id, items.get(), &enabled, &rcb, &branchPoint,
                                             &sinkPort) == expectedStatus,
            "a kernel has a uuid and an id");
    require(found.values == expected.values, "a kernel's values are its attributes or their defaults");
    require(std::vector<unsigned int>(items.get(), items.get() + expectedItems.size()) == expectedItems,
            "metadata is a list of numbers");
    const int nothing =
        GraphCameraUtil::kernelGetValues(kernel, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    require(nothing == (kernel == nullptr ? StatusBadArgument : StatusOk), "what is not asked for need not be there");
}

void checkGroups(const IGraphConfig* graph, const Request& request)
{
    Nodes expected = {nullptr};
    Nodes found = expected;
    int current = -1;
    for (IGraphConfig* const group : childrenOfType(graph, NUXO_KEY_PROGRAM_GROUP)) {
        current = integerOf(group, request.key).value_or(current);
        if (current == request.value) expected.push_back(group);
    }
    const int status = GraphCameraUtil::getProgramGroups(request.key, request.value, graph, found);
    requireAppended(status, found, expected, StatusMissingData);
}

void checkMembers(const IGraphConfig* graph, const Request& request)
{
    checkSources(graph);
    checkSinks(graph, request.text);
    checkSinks(graph, "");
    checkSensorType(graph);
    checkKernelCount(graph);
}

} // namespace fuzzing
