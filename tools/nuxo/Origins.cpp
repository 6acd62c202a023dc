// SPDX-License-Identifier: Apache-2.0
#include "Origins.h"

#include "Text.h"

#include <nuxo/NuxoStatus.h>

namespace NuxoTool {

std::optional<Location> originOf(NUXO::SourceLocator& locator, const NUXO::GraphConfigNode& node)
{
    Location location;
    if (locator.locate(&node, location) != StatusOk) return std::nullopt;
    return location;
}

std::optional<Location> originOf(NUXO::SourceLocator& locator, const AttributeView& attribute)
{
    Location location;
    if (locator.locate(*attribute.item, location) != StatusOk) return std::nullopt;
    return location;
}

std::string originText(const std::optional<Location>& origin)
{
    if (!origin) return "-";
    return printable(origin->file) + ':' + std::to_string(origin->line) + ':' + std::to_string(origin->column);
}

} // namespace NuxoTool
