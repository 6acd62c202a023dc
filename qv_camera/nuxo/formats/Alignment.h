// SPDX-License-Identifier: Apache-2.0
// Internal: sizes that memory needs.
#ifndef NUXO_FORMATS_ALIGNMENT_H
#define NUXO_FORMATS_ALIGNMENT_H

#include <cstdint>

namespace NUXOFormats {

/// @p value rounded up to a multiple, modulo 2^32 as all sizes.
constexpr uint32_t alignUp(uint32_t value, uint32_t powerOfTwo)
{
    return (value + (powerOfTwo - 1)) & ~(powerOfTwo - 1);
}

} // namespace NUXOFormats

#endif
