// SPDX-License-Identifier: Apache-2.0
#include "support/PortFacts.h"

#include <nuxo/nuxo.h>

#include <algorithm>
#include <utility>

namespace fuzzing {

namespace {

using NUXO::IGraphConfig;
using NUXO::ItemUID;

// Two letters, the first in the low byte.
uint32_t stageTag(const IGraphConfig* node)
{
    if (textOf(node, NUXO_KEY_SIMULATION) == "true") return 'S' + 256U * 'A';
    if (textOf(node, NUXO_KEY_SUBSYSTEM) == "gpu") return 'X' + 256U * 'E';
    return '0' + 256U * 'G';
}

// Without asking the vocabulary, which takes its time; null for all others.
const char* usualType(uint32_t type)
{
    switch (type) {
    case NUXO_KEY_DEMUX: return "demux";
    case NUXO_KEY_KERNEL: return "kernel";
    case NUXO_KEY_MUX: return "mux";
    case NUXO_KEY_PORT: return "port";
    case NUXO_KEY_PROGRAM_GROUP: return "program_group";
    case NUXO_KEY_SINK: return "sink";
    case NUXO_KEY_SOURCE: return "source";
    default: return nullptr;
    }
}

// The context that the peer's node is in, nothing when it has none.
std::optional<int> contextOfNode(const IGraphConfig* node)
{
    const std::optional<int> context = integerOf(node, NUXO_KEY_EXEC_CTX_ID);
    return context ? context : integerOf(node, NUXO_KEY_STREAM_ID);
}

// The children, the first one last, and whether each is of the type.
void addChildren(const IGraphConfig& node, uint32_t type, std::vector<std::pair<IGraphConfig*, bool>>& open)
{
    const std::vector<IGraphConfig*> ofType = childrenOfType(&node, type);
    const auto before = static_cast<std::ptrdiff_t>(open.size());
    size_t next = 0;
    NUXO::NodeIterator cursor(&node);
    while (IGraphConfig* const child = cursor.iterateDescendants()) {
        const bool isOfType = next < ofType.size() && ofType[next] == child;
        if (isOfType) ++next;
        open.emplace_back(child, isOfType);
    }
    std::reverse(open.begin() + before, open.end());
}

} // namespace

std::optional<int> integerOf(const IGraphConfig* node, uint32_t key)
{
    int value = 0;
    if (node == nullptr || node->getValue(key, value) != StatusOk) return std::nullopt;
    return value;
}

std::optional<std::string> textOf(const IGraphConfig* node, uint32_t key)
{
    std::string text;
    if (node == nullptr || node->getValue(key, text) != StatusOk) return std::nullopt;
    return text;
}

const IGraphConfig* ancestorOf(const IGraphConfig* node)
{
    return node == nullptr ? nullptr : node->getAncestor();
}

const IGraphConfig* rootOf(const IGraphConfig* node)
{
    return node == nullptr ? nullptr : node->getRoot();
}

std::vector<IGraphConfig*> childrenOfType(const IGraphConfig* node, uint32_t type)
{
    std::vector<IGraphConfig*> children;
    NUXO::NodeIterator cursor(node);
    const char* const name = usualType(type);
    const auto next = [&] {
        return name == nullptr ? cursor.iterateByType(type) : cursor.iterateNodes(NUXO_KEY_TYPE, name);
    };
    while (IGraphConfig* const child = next()) children.push_back(child);
    return children;
}

bool hasChildren(const IGraphConfig& node)
{
    return NUXO::NodeIterator(&node).iterateDescendants() != nullptr;
}

std::vector<IGraphConfig*> descendantsOfType(const IGraphConfig& node, uint32_t type)
{
    std::vector<IGraphConfig*> found;
    std::vector<std::pair<IGraphConfig*, bool>> open; // the next one is the last
    addChildren(node, type, open);
    while (!open.empty()) {
        const auto [next, isOfType] = open.back();
        open.pop_back();
        if (isOfType) found.push_back(next);
        addChildren(*next, type, open);
    }
    return found;
}

Peer peerOf(const IGraphConfig* port)
{
    if (port == nullptr) return {StatusBadArgument, nullptr, false};
    const bool leadsNowhere =
        integerOf(port, NUXO_KEY_ENABLED) == 0 || integerOf(port, NUXO_KEY_PRIVATE).value_or(0) != 0;
    if (leadsNowhere) return {StatusNotFound, nullptr, false};
    const std::optional<std::string> name = textOf(port, NUXO_KEY_PEER);
    if (!name) return {StatusBadArgument, nullptr, false};
    IGraphConfig* const node = port->getRoot()->getDescendantByString(*name);
    return {node == nullptr ? StatusBadArgument : StatusOk, node, true};
}

std::optional<Terminal> terminalOf(const IGraphConfig* port)
{
    const std::optional<int> id = integerOf(port, NUXO_KEY_ID);
    const IGraphConfig* const node = ancestorOf(port);
    if (!id || node == nullptr) return std::nullopt;
    const std::optional<int> group = integerOf(node, NUXO_KEY_PG_ID);
    const uint32_t stage = group ? static_cast<uint32_t>(*group) * 65536U + stageTag(node) : 0U;
    return Terminal{stage, stage + static_cast<uint32_t>(*id)};
}

int directionOf(const IGraphConfig* port)
{
    return integerOf(port, NUXO_KEY_DIRECTION).value_or(0);
}

bool isVirtual(const IGraphConfig* port)
{
    return textOf(port, NUXO_KEY_TYPE) == "sink";
}

std::string contentTypeOf(const IGraphConfig* port)
{
    return textOf(port, NUXO_KEY_CONTENT_TYPE).value_or("pixel_data");
}

int keyOfPort(const IGraphConfig* port, uint32_t key)
{
    if (!textOf(port, NUXO_KEY_TYPE)) return -1;
    return integerOf(isVirtual(port) ? port : ancestorOf(port), key).value_or(-1);
}

bool crossesContexts(const IGraphConfig* port)
{
    const IGraphConfig* const peer = peerOf(port).node;
    if (peer == nullptr) return false;
    int context = keyOfPort(port, NUXO_KEY_EXEC_CTX_ID);
    if (context < 0) context = keyOfPort(port, NUXO_KEY_STREAM_ID);
    if (context < 0) return false;
    if (isVirtual(peer)) return true; // it is in no context
    const std::optional<int> peerContext = contextOfNode(ancestorOf(peer));
    if (!peerContext) return false;
    if (*peerContext != context) return true;
    const std::string peerType = textOf(ancestorOf(peer), NUXO_KEY_TYPE).value_or("");
    return directionOf(port) == 0 && (peerType == "hw" || peerType == "source");
}

std::string fullNameOf(const IGraphConfig* node)
{
    return textOf(ancestorOf(node), NUXO_KEY_NAME).value_or("NA") + ":" + textOf(node, NUXO_KEY_NAME).value_or("NA");
}

std::string displayText(const IGraphConfig* node)
{
    if (node == nullptr) return "NODE[NA]";
    const std::string type = textOf(node, NUXO_KEY_TYPE).value_or("NODE");
    const bool isPart = type == "demux" || type == "kernel" || type == "mux" || type == "port";
    return type + "[" + (isPart ? fullNameOf(node) : node->getName()) + "]";
}

std::string nameOf(const IGraphConfig& node)
{
    return textOf(&node, NUXO_KEY_NAME).value_or(node.getName());
}

} // namespace fuzzing
