// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_ATTRIBUTE_ORDER_H
#define NUXO_TOOL_ATTRIBUTE_ORDER_H

#include <cstddef>
#include <string_view>

namespace NuxoTool {

/// Place of an attribute among those of its element in canonical form: what names the element first, then what it is, then
/// sizes and the rest. All attributes that have no place of their own get the same one, behind all others.
/// @param lowerName  in lower case
size_t attributeRank(std::string_view lowerName);

} // namespace NuxoTool

#endif
