// SPDX-License-Identifier: Apache-2.0
// Internal: growing the vocabulary from inside the library.
#ifndef NUXO_TREE_VOCABULARY_H
#define NUXO_TREE_VOCABULARY_H

#include <cstdint>
#include <string>

namespace NUXO {

/// What ItemUID::generateKey does, but lets std::bad_alloc out so that callers can give up cleanly.
uint32_t registerName(const std::string& name);

} // namespace NUXO

#endif
