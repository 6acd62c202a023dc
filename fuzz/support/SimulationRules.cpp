// SPDX-License-Identifier: Apache-2.0
#include "support/CameraRules.h"
#include "support/Fuzzing.h"
#include "support/PortFacts.h"
#include "support/TreeChecks.h"

#include <nuxo/nuxo.h>

#include <map>
#include <memory>
#include <set>

namespace fuzzing {

namespace {

using NUXO::GraphConfigNode;
using NUXO::IGraphConfig;
using NUXO::ItemUID;
using NUXO::ZmtTevSimUtils;
using KernelInfos = std::vector<ZmtTevSimUtils::KernelInfo>;

constexpr int kUntouched = 4711;

// Reads kernels until one cannot be read; the status is that of the last read.
int expectKernels(const IGraphConfig& group, KernelInfos& kernels)
{
    for (const IGraphConfig* const kernel : descendantsOfType(group, NUXO_KEY_KERNEL)) {
        ZmtTevSimUtils::KernelInfo info;
        int status = kernel->getValue(NUXO_KEY_NAME, info.name);
        if (status == StatusOk) status = kernel->getValue(NUXO_KEY_PAL_UUID, info.pal_uuid);
        if (status != StatusOk) return status;
        kernels.push_back(info);
    }
    return StatusOk;
}

void checkKernelInfos(const IGraphConfig& group)
{
    KernelInfos expected = {{"before", 1}};
    KernelInfos found = expected;
    const int expectedStatus = expectKernels(group, expected);
    require(ZmtTevSimUtils::getKernelInfoList(group, found) == expectedStatus, "a kernel has a name and a uuid");
    requireSame(found, expected, "the kernels of a group are listed in order");
}

const IGraphConfig* kernelNamed(const IGraphConfig& root, const std::string& name)
{
    for (const IGraphConfig* const group : descendantsOfType(root, NUXO_KEY_PROGRAM_GROUP)) {
        for (const IGraphConfig* const kernel : descendantsOfType(*group, NUXO_KEY_KERNEL)) {
            if (textOf(kernel, NUXO_KEY_NAME) == name) return kernel;
        }
    }
    return nullptr;
}

void checkPalUuid(const IGraphConfig& node, const std::string& name)
{
    int expected = kUntouched;
    int found = kUntouched;
    const IGraphConfig* const kernel = kernelNamed(*node.getRoot(), name);
    const int expectedStatus =
        kernel == nullptr ? static_cast<int>(StatusNotFound) : kernel->getValue(NUXO_KEY_PAL_UUID, expected);
    require(ZmtTevSimUtils::getKernelPalUuid(&node, name, found) == expectedStatus, "a kernel is found by its name");
    require(found == expected, "a kernel found by its name tells its uuid");
}

using Switches = std::map<std::string, unsigned int>;

int expectSwitches(const IGraphConfig& stage, uint32_t type, uint32_t activeKey, Switches& config)
{
    for (const IGraphConfig* const node : childrenOfType(&stage, type)) {
        int active = 0;
        const int status = node->getValue(activeKey, active);
        if (status != StatusOk) return status;
        config[nameOf(*node)] = static_cast<unsigned int>(active);
    }
    return StatusOk;
}

int expectMuxConfiguration(const IGraphConfig& graph, int stream, Switches& config)
{
    std::string version;
    static_cast<void>(graph.getValue(ItemUID{NUXO_KEY_GRAPH, NUXO_KEY_VERSION}, version)); // it stays empty
    const bool hasBlocks = version.find("KVA7") != std::string::npos;
    for (const IGraphConfig* const stage :
         childrenOfType(&graph, hasBlocks ? NUXO_KEY_COMPUTE_BLOCK : NUXO_KEY_PROGRAM_GROUP)) {
        if (integerOf(stage, NUXO_KEY_STREAM_ID) != stream) continue;
        const int status = expectSwitches(*stage, NUXO_KEY_DEMUX, NUXO_KEY_ACTIVE_OUTPUT, config);
        return status == StatusOk ? expectSwitches(*stage, NUXO_KEY_MUX, NUXO_KEY_ACTIVE_INPUT, config) : status;
    }
    return StatusOk;
}

void checkMuxConfiguration(const IGraphConfig& graph, int stream)
{
    Switches expected = {{"before", 1}};
    Switches found = expected;
    const int expectedStatus = expectMuxConfiguration(graph, stream, expected);
    require(ZmtTevSimUtils::getMuxConfiguration(&graph, stream, found) == expectedStatus, "a switch has a position");
    require(found == expected, "positions are those of the first stage of the stream");
}

void checkClone(const GraphConfigNode& settings)
{
    IGraphConfig* copy = nullptr;
    require(ZmtTevSimUtils::cloneSettings(&settings, &copy) == StatusOk, "settings can be copied");
    const std::unique_ptr<IGraphConfig> owner(copy);
    require(copy != nullptr && copy->getAncestor() == nullptr, "a copy stands alone");
    checkSame(settings, *dynamic_cast<GraphConfigNode*>(copy));
}

} // namespace

void requireSame(const KernelInfos& found, const KernelInfos& expected, const char* rule)
{
    require(found.size() == expected.size(), rule);
    for (size_t i = 0; i < found.size(); ++i) {
        require(found[i].name == expected[i].name && found[i].pal_uuid == expected[i].pal_uuid, rule);
    }
}

void checkSimulation(const GraphConfigNode& node, const Request& request)
{
    checkKernelInfos(node);
    checkMuxConfiguration(node, request.value);
    checkPalUuid(node, request.text);
    checkPalUuid(node, textOf(&node, NUXO_KEY_NAME).value_or(""));
    checkClone(node);
}

void checkSimulationOfNull()
{
    int uuid = kUntouched;
    Switches config;
    IGraphConfig* copy = nullptr;
    const GraphConfigNode node;
    require(ZmtTevSimUtils::cloneSettings(nullptr, &copy) == 32 && copy == nullptr, "a copy needs settings");
    require(ZmtTevSimUtils::cloneSettings(&node, nullptr) == 32, "a copy needs a place");
    require(ZmtTevSimUtils::getKernelPalUuid(nullptr, "", uuid) == StatusBadArgument && uuid == kUntouched,
            "a kernel needs a graph");
    require(ZmtTevSimUtils::getMuxConfiguration(nullptr, 0, config) == StatusBadArgument && config.empty(),
            "switches need a graph");
    require(ZmtTevSimUtils::setValue(nullptr, NUXO_KEY_ID, 1) == StatusBadArgument, "a value needs a node");
    std::set<IGraphConfig*> groups;
    KernelInfos kernels;
    require(ZmtTevSimUtils::getPgsInGraph(nullptr, 0, groups) == StatusBadArgument && groups.empty(),
            "groups need a descriptor");
    require(ZmtTevSimUtils::getKernelList(nullptr, 0, 0, kernels) == StatusBadArgument && kernels.empty(),
            "kernels need a descriptor");
    require(NUXO::GraphCameraUtil::applyFormat(nullptr, "NV12") == StatusBadState, "a format needs a port");
}

} // namespace fuzzing
