// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/camera/PortReading.h>
#include <nuxo/tree/NodeReading.h>

#include <string>

namespace NUXO {

namespace {

constexpr uint32_t tagOf(const char (&letters)[3])
{
    return static_cast<uint32_t>(letters[0]) | static_cast<uint32_t>(letters[1]) << 8U;
}

// Two letters that say where the stage of a node runs.
uint32_t stageTag(const IGraphConfig& node)
{
    if (textOr(&node, NUXO_KEY_SIMULATION, "") == "true") return tagOf("SA");
    if (textOr(&node, NUXO_KEY_SUBSYSTEM, "") == "gpu") return tagOf("XE");
    return tagOf("0G");
}

int readNames(const IGraphConfig& port, GraphCameraUtil::PortDescriptor& descriptor)
{
    if (port.getAncestor() == nullptr) {
        NUXO_ERROR("Could not get ancestor");
        return StatusBadState;
    }
    descriptor.name.clear();
    descriptor.pgName.clear();
    const bool hasPgName = fetch(*port.getAncestor(), NUXO_KEY_NAME, descriptor.pgName);
    const bool hasName = fetch(port, NUXO_KEY_NAME, descriptor.name);
    if (!hasPgName || !hasName) {
        NUXO_ERROR("Could not get port(%s) and ancestor(%s)", descriptor.name.c_str(), descriptor.pgName.c_str());
        return StatusBadState;
    }
    return StatusOk;
}

int readIdentity(const IGraphConfig& port, GraphCameraUtil::PortDescriptor& descriptor)
{
    const int status = readNames(port, descriptor);
    if (status != StatusOk) return status;
    if (!fetch(port, NUXO_KEY_DIRECTION, descriptor.direction)) {
        NUXO_ERROR("Could not get port direction");
        return StatusBadState;
    }
    unsigned int stageId = 0;
    if (readTerminal(&port, stageId, descriptor.terminalId) != StatusOk) {
        NUXO_ERROR("Could not get port uid");
        return StatusBadState;
    }
    return StatusOk;
}

int readImage(const IGraphConfig& port, GraphCameraUtil::PortDescriptor& descriptor)
{
    descriptor.width = 0;
    descriptor.height = 0;
    const IGraphConfig* holder = &port;
    if (!fetch(port, NUXO_KEY_WIDTH, descriptor.width)) {
        holder = peerOf(&port);
        if (holder == nullptr) {
            NUXO_ERROR("Could not find peer port - Fix your graph");
            return StatusBadState;
        }
        if (!fetch(*holder, NUXO_KEY_WIDTH, descriptor.width)) {
            NUXO_ERROR("Could not find port portDescriptor info: width (from peer)");
            return StatusBadState;
        }
    }
    if (!fetch(*holder, NUXO_KEY_HEIGHT, descriptor.height)) {
        NUXO_ERROR("Could not find port portDescriptor info: height");
        return StatusBadState;
    }
    if (!fetch(*holder, NUXO_KEY_FORMAT, descriptor.format)) {
        NUXO_ERROR("Could not find format for port %s", descriptor.name.c_str());
        return StatusBadState;
    }
    return StatusOk;
}

} // namespace

int readTerminal(const IGraphConfig* port, unsigned int& stageId, unsigned int& terminalId)
{
    int id = 0;
    if (port == nullptr) return StatusBadArgument;
    if (!fetch(*port, NUXO_KEY_ID, id)) {
        NUXO_ERROR("Failed to get port(%s) id", GraphCameraUtil::print(port).c_str());
        return StatusBadArgument;
    }
    const IGraphConfig* const node = port->getAncestor();
    if (node == nullptr) {
        NUXO_ERROR("Failed to get port ancestor");
        return StatusBadArgument;
    }
    int pgId = 0;
    const bool isStage = fetch(*node, NUXO_KEY_PG_ID, pgId);
    stageId = isStage ? static_cast<uint32_t>(pgId) << 16U | stageTag(*node) : 0U;
    terminalId = stageId + static_cast<uint32_t>(id);
    return StatusOk;
}

int GraphCameraUtil::portGetFourCCInfo(const IGraphConfig* port, unsigned int& stageId, unsigned int& terminalId)
{
    return unlessNoMemory<int>(StatusNoMemory, [&] { return readTerminal(port, stageId, terminalId); });
}

int GraphCameraUtil::portGetDescriptor(const IGraphConfig* port, PortDescriptor& descriptor)
{
    return unlessNoMemory<int>(StatusNoMemory, [&]() -> int {
        descriptor.enabled = integerOr(port, NUXO_KEY_ENABLED, 1);
        if (port == nullptr) {
            NUXO_ERROR("Could not get ancestor");
            return StatusBadState;
        }
        const int status = readIdentity(*port, descriptor);
        if (status != StatusOk || descriptor.enabled == 0) return status;
        return readImage(*port, descriptor);
    });
}

} // namespace NUXO
