// SPDX-License-Identifier: Apache-2.0
#include <nuxo/NuxoStatus.h>
#include <nuxo/tree/GraphConfigItem.h>

namespace NUXO {

GraphConfigItem::~GraphConfigItem() = default;

int32_t GraphConfigItem::getValue(int&)
{
    return StatusNotFound;
}

int32_t GraphConfigItem::getValue(std::string&)
{
    return StatusNotFound;
}

int32_t GraphConfigItem::setValue(const std::string&)
{
    return StatusNotFound;
}

int32_t GraphConfigItem::setValue(int)
{
    return StatusNotFound;
}

} // namespace NUXO
