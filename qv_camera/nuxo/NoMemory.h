// SPDX-License-Identifier: Apache-2.0
// Internal: what clients call lets no std::bad_alloc out.
#ifndef NUXO_NO_MEMORY_H
#define NUXO_NO_MEMORY_H

#include <new>
#include <utility>

namespace NUXO {

/// The result of @p work, or @p fallback when memory is exhausted on the way. Other exceptions pass.
template <typename Result, typename Work> Result unlessNoMemory(Result fallback, Work&& work)
{
    try {
        return std::forward<Work>(work)();
    } catch (const std::bad_alloc&) {
        return fallback;
    }
}

} // namespace NUXO

#endif
