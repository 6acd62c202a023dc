// SPDX-License-Identifier: Apache-2.0
// Internal: results of 64-bit arithmetic in the 32 bits of a record.
#ifndef NUXO_RECORDS_WRAP_H
#define NUXO_RECORDS_WRAP_H

#include <cstdint>

namespace NUXO {

/// The value modulo 2^32.
constexpr int32_t wrapTo32(int64_t value)
{
    return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(value)));
}

} // namespace NUXO

#endif
