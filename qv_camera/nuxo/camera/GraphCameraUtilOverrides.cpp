// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/camera/GraphCameraUtil.h>
#include <nuxo/tree/TreeAccess.h>
#include <nuxo/tree/TypeNames.h>

#include <string>

namespace NUXO {

namespace {

// An override is an element `apply`, or a named one of that type.
bool isOverride(const GraphConfigNode& node, uint32_t key)
{
    return key == NUXO_KEY_APPLY || hasText(node, NUXO_KEY_TYPE, kTypeApply);
}

// The attribute at the path, created when missing; null when that is impossible.
int32_t findOrCreate(GraphConfigNode& result, const ItemUID& path, GraphConfigAttribute** attribute)
{
    if (result.getAttribute(path, attribute) != StatusNotFound) return StatusOk;
    NUXO_WARN("Adding the missing attribute %s required in graph override.", path.toString().c_str());
    const int32_t status = result.createAttribute(path, attribute);
    return status == StatusNoMemory ? StatusNoMemory : StatusOk; // any other failure leaves no attribute
}

void rememberPosition(GraphConfigNode& result, const ItemUID& path, SourcePosition position)
{
    auto* holder = static_cast<GraphConfigNode*>(result.getDescendant(path));
    if (holder == nullptr && path.size() == 1) holder = &result;
    if (holder != nullptr) setPositionOf(*holder, path.back(), position);
}

int32_t applyOverride(const GraphConfigNode& apply, GraphConfigNode& result)
{
    const std::string* const target = findText(apply, NUXO_KEY_TARGET);
    if (target == nullptr) {
        NUXO_ERROR("Error: override tag with no attribute target node");
        return readFailure(apply, NUXO_KEY_TARGET);
    }
    const std::string* const value = findText(apply, NUXO_KEY_VALUE);
    if (value == nullptr) {
        NUXO_ERROR("Error: override tag with no attribute value");
        return readFailure(apply, NUXO_KEY_VALUE);
    }
    const ItemUID path(*target);
    GraphConfigAttribute* attribute = nullptr;
    int32_t status = findOrCreate(result, path, &attribute);
    if (status != StatusOk) return status;
    if (attribute == nullptr) {
        NUXO_WARN("Warning: Couldn't to get attribute %s for override. Skipping.", path.toString().c_str());
        return StatusOk;
    }
    // Straight into the attribute: overrides are not subject to options lists.
    const bool isInteger = attribute->type == GraphConfigItem::INT;
    status = isInteger ? attribute->setValue(std::stoi(*value)) : attribute->setValue(*value);
    if (status != StatusOk) {
        NUXO_ERROR("Error: Failed to set override of attribute %s to %s", path.toString().c_str(), value->c_str());
        return status;
    }
    rememberPosition(result, path, positionOf(apply, NUXO_KEY_VALUE));
    return StatusOk;
}

} // namespace

int GraphCameraUtil::processGraphOverrides(GraphConfigNode& descriptorGraph, GraphConfigNode& result)
{
    return unlessNoMemory<int>(StatusNoMemory, [&] {
        int status = StatusOk;
        forEachChild(descriptorGraph, [&](const GraphConfigNode& child, uint32_t key) {
            if (isOverride(child, key)) status = applyOverride(child, result);
            return status == StatusOk;
        });
        return status;
    });
}

} // namespace NUXO
