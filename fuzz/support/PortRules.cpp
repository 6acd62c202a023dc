// SPDX-License-Identifier: Apache-2.0
#include "support/CameraRules.h"
#include "support/Fuzzing.h"
#include "support/PortFacts.h"

#include <nuxo/nuxo.h>

namespace fuzzing {

namespace {

using NUXO::GraphCameraUtil;
using NUXO::IGraphConfig;

constexpr const char* kUntouched = "untouched";

void checkNames(const IGraphConfig& port)
{
    const std::optional<std::string> name = textOf(&port, NUXO_KEY_NAME);
    const std::optional<std::string> nodeName = textOf(ancestorOf(&port), NUXO_KEY_NAME);
    std::string readNodeName = kUntouched;
    std::string readName = kUntouched;
    const bool complete = name && (nodeName || ancestorOf(&port) == nullptr);
    require(NUXO::getPgAndPortNames(port, readNodeName, readName) == (complete ? StatusOk : StatusMissingData),
            "a port has two names or says that one is missing");
    require(readNodeName == nodeName.value_or(kUntouched) && readName == name.value_or(kUntouched),
            "the names of a port are those of its node and its own");
    require(GraphCameraUtil::getFullName(port) == fullNameOf(&port), "a full name is that of the node and its own");
}

void checkPeer(const IGraphConfig* port)
{
    IGraphConfig* const before = const_cast<IGraphConfig*>(port); // anything that a lookup by name would not leave
    IGraphConfig* peer = before;
    const Peer expected = peerOf(port);
    require(GraphCameraUtil::portGetPeer(port, &peer) == expected.status,
            "the status of a peer is that of the way to it");
    require(peer == (expected.wasLookedUp ? expected.node : before), "a peer is what the name leads to");
    require(GraphCameraUtil::portGetPeer(port, nullptr) == StatusBadArgument, "a peer needs a place");
}

void checkAttributes(const IGraphConfig* port)
{
    require(GraphCameraUtil::print(port) == displayText(port), "a display text shows type and name");
    require(GraphCameraUtil::portGetContentType(port) == contentTypeOf(port),
            "content is pixels unless told otherwise");
    require(GraphCameraUtil::portGetDirection(port) == directionOf(port), "a port is an input unless told otherwise");
    require(GraphCameraUtil::portIsVirtual(port) == isVirtual(port), "sinks are virtual ports");
}

void checkTerminal(const IGraphConfig* port)
{
    unsigned int stage = 0;
    unsigned int terminal = 0;
    const std::optional<Terminal> expected = terminalOf(port);
    const int status = GraphCameraUtil::portGetFourCCInfo(port, stage, terminal);
    require(status == (expected ? StatusOk : StatusBadArgument), "a terminal needs an id and a node");
    require(!expected || (stage == expected->stage && terminal == expected->terminal),
            "a terminal is the stage plus the id");
}

void checkContext(const IGraphConfig* port, uint32_t key)
{
    const int context = keyOfPort(port, NUXO_KEY_EXEC_CTX_ID);
    const int stream = keyOfPort(port, NUXO_KEY_STREAM_ID);
    require(GraphCameraUtil::portGetExecCtxId(port) == context, "the context of a port is that of its node");
    require(GraphCameraUtil::portGetStreamId(port) == stream, "the stream of a port is that of its node");
    require(GraphCameraUtil::portGetKey(port, key) == keyOfPort(port, key), "a port answers for its node");
    require(GraphCameraUtil::isEdgePort(port) == crossesContexts(port), "an edge lies between contexts");
}

// Width, height and format, all from where the width is; false when one is missing.
bool takeImage(const IGraphConfig& port, GraphCameraUtil::PortDescriptor& descriptor)
{
    const bool hasWidth = integerOf(&port, NUXO_KEY_WIDTH).has_value();
    const IGraphConfig* const holder = hasWidth ? &port : peerOf(&port).node;
    const std::optional<int> width = integerOf(holder, NUXO_KEY_WIDTH);
    const std::optional<int> height = integerOf(holder, NUXO_KEY_HEIGHT);
    const std::optional<std::string> format = textOf(holder, NUXO_KEY_FORMAT);
    descriptor.width = width.value_or(0);
    descriptor.height = width ? height.value_or(0) : 0; // not read before
    if (width && height && format) descriptor.format = *format;
    return width && height && format;
}

// What is written of a port that has all its identity.
void checkDescription(const IGraphConfig& port, int status, const GraphCameraUtil::PortDescriptor& actual)
{
    GraphCameraUtil::PortDescriptor expected;
    expected.width = 1;
    expected.height = 2;
    expected.format = kUntouched;
    const bool complete = integerOf(&port, NUXO_KEY_ENABLED) == 0 || takeImage(port, expected);
    require(status == (complete ? StatusOk : StatusBadState), "an enabled port has size and format");
    require(actual.name == textOf(&port, NUXO_KEY_NAME) && actual.pgName == textOf(ancestorOf(&port), NUXO_KEY_NAME) &&
                actual.direction == directionOf(&port) && actual.terminalId == terminalOf(&port)->terminal,
            "a port is described by its attributes");
    require(actual.width == expected.width && actual.height == expected.height && actual.format == expected.format,
            "size and format stand where the width does; those of disabled ports stay");
}

void checkDescriptor(const IGraphConfig* port)
{
    GraphCameraUtil::PortDescriptor descriptor;
    descriptor.width = 1;
    descriptor.height = 2;
    descriptor.format = kUntouched;
    const int status = GraphCameraUtil::portGetDescriptor(port, descriptor);
    require(descriptor.enabled == integerOf(port, NUXO_KEY_ENABLED).value_or(1),
            "ports are enabled unless told otherwise");
    const bool isIdentified = textOf(port, NUXO_KEY_NAME) && textOf(ancestorOf(port), NUXO_KEY_NAME) &&
                              integerOf(port, NUXO_KEY_DIRECTION) && terminalOf(port);
    if (isIdentified) {
        checkDescription(*port, status, descriptor);
    } else {
        require(status == StatusBadState, "a port without name, direction or terminal is not described");
    }
}

void checkPortById(const IGraphConfig* node, int id)
{
    const IGraphConfig* expected = nullptr;
    if (node != nullptr) {
        for (const IGraphConfig* const port : childrenOfType(node, NUXO_KEY_PORT)) {
            if (expected == nullptr && integerOf(port, NUXO_KEY_ID) == id) expected = port;
        }
    }
    require(GraphCameraUtil::nodeGetPortById(node, id) == expected, "the first port with the id is found");
}

} // namespace

void checkPort(const IGraphConfig* port, const Request& request)
{
    if (port != nullptr) checkNames(*port);
    checkPeer(port);
    checkAttributes(port);
    checkTerminal(port);
    checkContext(port, request.key);
    checkDescriptor(port);
    checkPortById(port, request.value);
    if (const std::optional<int> id = integerOf(port, NUXO_KEY_ID)) checkPortById(ancestorOf(port), *id);
}

} // namespace fuzzing
