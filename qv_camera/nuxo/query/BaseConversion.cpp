// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/query/BaseConversion.h>
#include <nuxo/tree/NodeReading.h>
#include <nuxo/tree/TreeAccess.h>
#include <nuxo/tree/TypeNames.h>
#include <nuxo/tree/Vocabulary.h>

#include <memory>
#include <utility>

namespace NUXO {

namespace {

// Sets a text attribute without regard to options lists.
int32_t setText(const GraphConfigNode& node, uint32_t key, const std::string& text)
{
    GraphConfigItem* const item = findItem(node, key);
    return item == nullptr ? static_cast<int32_t>(StatusMissingData) : item->setValue(text);
}

// What the option applies to the base node, it shall apply to the concrete node.
int32_t retargetOption(const GraphConfigNode& option, uint32_t baseKey, const std::string& baseName,
                       const std::string& nodeName)
{
    GraphConfigNode* const apply = findChild(option, NUXO_KEY_APPLY);
    const GraphConfigItem* const original = apply == nullptr ? nullptr : findItem(*apply, baseKey);
    if (original == nullptr) return StatusOk;
    const SourcePosition position = positionOf(*apply, baseKey);
    std::unique_ptr<GraphConfigItem> copied(copyItem(*original));
    if (copied == nullptr) {
        NUXO_ERROR("Failed create a copy during option handling");
        return StatusNoMemory;
    }
    const uint32_t known = ItemUID::str2key(nodeName);
    const uint32_t nodeKey = known != NUXO_KEY_NA ? known : registerName(nodeName);
    TreeAccess::adoptItem(*apply, std::move(copied), nodeKey, position);
    const int32_t status = apply->removeDescendant(baseKey);
    if (status != StatusOk) NUXO_ERROR("Failed to remove original during option handling %s", baseName.c_str());
    return status;
}

int32_t retargetOptions(const GraphConfigNode& base, const std::string& baseName, const std::string& nodeName)
{
    const uint32_t baseKey = ItemUID::str2key(baseName);
    if (baseKey == NUXO_KEY_NA) return StatusOk;
    int32_t status = StatusOk;
    forEachChild(base, [&](const GraphConfigNode& port, uint32_t) {
        if (!hasText(port, NUXO_KEY_TYPE, kTypePort)) return true;
        forEachChild(port, [&](const GraphConfigNode& options, uint32_t key) {
            if (key != NUXO_KEY_OPTIONS) return true;
            forEachChild(options, [&](const GraphConfigNode& option, uint32_t) {
                status = retargetOption(option, baseKey, baseName, nodeName);
                return status == StatusOk;
            });
            return status == StatusOk;
        });
        return status == StatusOk;
    });
    return status;
}

int32_t applyDifference(GraphConfigNode& target, const GraphConfigNode& difference)
{
    const std::string pathText = textOr(&difference, NUXO_KEY_TARGET, "");
    const std::string valueText = textOr(&difference, NUXO_KEY_VALUE, "");
    NUXO_DEBUG("Applying override %s -> %s", pathText.c_str(), valueText.c_str());
    const ItemUID uid(pathText);
    const int32_t status = target.setValueFromStr(uid, valueText);
    if (status != StatusOk) {
        NUXO_ERROR("Failed to apply override %s -> %s", pathText.c_str(), valueText.c_str());
        return status;
    }
    auto* const holder = static_cast<GraphConfigNode*>(uid.size() > 1 ? target.getGraphConfigItem(uid) : &target);
    if (holder != nullptr) setPositionOf(*holder, uid.back(), positionOf(difference, NUXO_KEY_VALUE));
    return StatusOk;
}

int32_t applyDifferences(GraphConfigNode& target, const GraphConfigNode& node)
{
    int32_t status = StatusOk;
    forEachChild(node, [&](const GraphConfigNode& difference, uint32_t) {
        status = applyDifference(target, difference);
        return status == StatusOk;
    });
    return status;
}

// Gives the copy of a base node the concrete node's type and name.
int32_t takeIdentity(GraphConfigNode& self, const std::string& type, const NodeIdentity& identity)
{
    const int32_t status = setText(self, NUXO_KEY_TYPE, type) | setText(self, NUXO_KEY_NAME, identity.name);
    if (status != StatusOk) {
        NUXO_ERROR("Failed to set node type and name from config %s", identity.name.c_str());
        return status;
    }
    setPositionOf(self, NUXO_KEY_TYPE, positionOf(self, NUXO_KEY_BASE_TYPE));
    setPositionOf(self, NUXO_KEY_NAME, identity.position);
    return StatusOk;
}

} // namespace

NodeIdentity::NodeIdentity(const GraphConfigNode& node) : name(nameOf(node)), position(getSourcePosition(&node))
{
}

NodeIdentity::NodeIdentity(const char* itsName, SourcePosition where) : name(itsName), position(where)
{
}

int32_t convertBaseNode(GraphConfigNode& self, const GraphConfigNode& node, const NodeIdentity& identity)
{
    const std::string baseName = textOr(&self, NUXO_KEY_NAME, "");
    const std::string& nodeName = identity.name;
    NUXO_DEBUG("Change base node %s into node %s ", baseName.c_str(), nodeName.c_str());

    const std::string* const baseType = findText(self, NUXO_KEY_BASE_TYPE);
    if (baseType == nullptr) {
        NUXO_ERROR("Failed to get base node type, change from base node failed");
        return readFailure(self, NUXO_KEY_BASE_TYPE);
    }
    int32_t status = takeIdentity(self, *baseType, identity);
    if (status == StatusOk) status = retargetOptions(self, baseName, nodeName);
    if (status == StatusOk) status = applyDifferences(self, node);
    if (status != StatusOk) return status;
    NUXO_DEBUG("Conversion from base node %s  done!", nodeName.c_str());
    return StatusOk;
}

int32_t GraphConfigNode::changeBaseNodeIntoNode(GraphConfigNode& node)
{
    return unlessNoMemory<int32_t>(StatusNoMemory, [&] { return convertBaseNode(*this, node, NodeIdentity(node)); });
}

} // namespace NUXO
