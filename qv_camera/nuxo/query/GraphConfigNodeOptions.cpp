// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/query/GraphQueryUtils.h>
#include <nuxo/tree/GraphConfigNode.h>
#include <nuxo/tree/TreeAccess.h>

#include <string>
#include <string_view>

namespace NUXO {

namespace {

constexpr signed char kApplyOptions =
    static_cast<signed char>(GraphQueryUtils::CopyMissingNodes | GraphQueryUtils::Merge);

// Whether the value is one of the list's comma-separated items, empty items included.
bool listHolds(std::string_view list, std::string_view value)
{
    for (;;) {
        const size_t comma = list.find(',');
        if (list.substr(0, comma) == value) return true;
        if (comma == std::string_view::npos) return false;
        list.remove_prefix(comma + 1);
    }
}

bool governs(const GraphConfigNode& options, uint32_t attributeKey)
{
    int32_t governed = 0;
    return findInteger(options, NUXO_KEY_ATTRIBUTE, governed) && static_cast<uint32_t>(governed) == attributeKey;
}

// The first option of the node that stands for the value, null when there is none.
GraphConfigNode* findOption(const GraphConfigNode& node, uint32_t attributeKey, const std::string& value)
{
    GraphConfigNode* match = nullptr;
    forEachChild(node, [&](const GraphConfigNode& options, uint32_t key) {
        if (key != NUXO_KEY_OPTIONS || !governs(options, attributeKey)) return true;
        forEachChild(options, [&](GraphConfigNode& option, uint32_t) {
            const std::string* const values = findText(option, NUXO_KEY_VALUE);
            if (values != nullptr && listHolds(*values, value)) match = &option;
            return match == nullptr;
        });
        return match == nullptr;
    });
    return match;
}

int32_t applyOption(GraphConfigNode& node, const GraphConfigNode& option, const std::string& value)
{
    GraphConfigNode* const apply = findChild(option, NUXO_KEY_APPLY);
    if (apply == nullptr) {
        NUXO_ERROR("Found option for %s, but no apply node. Skipping.", value.c_str());
        return StatusNotSupported;
    }
    const int status = GraphQueryUtils::addDescendantsFromNode(node.getRootNode(), apply, kApplyOptions);
    if (status != StatusOk) NUXO_ERROR("Failed to apply option attributes");
    return status;
}

int32_t handleOptions(GraphConfigNode& node, uint32_t attributeKey, const std::string& value)
{
    const GraphConfigNode* const option = findOption(node, attributeKey, value);
    if (option == nullptr) {
        NUXO_WARN("Trying to apply value but no options list available for %s.", describeNode(&node).c_str());
        return StatusNotFound;
    }
    return applyOption(node, *option, value);
}

} // namespace

int32_t GraphConfigNode::handleAttributeOptions(GraphConfigNode* node, uint32_t attributeKey, const std::string& value)
{
    if (node == nullptr) return StatusBadArgument;
    return unlessNoMemory<int32_t>(StatusNoMemory, [&] { return handleOptions(*node, attributeKey, value); });
}

} // namespace NUXO
