// SPDX-License-Identifier: Apache-2.0
// Internal: numbers for the names of parsed documents.
#ifndef NUXO_TREE_DOCUMENTS_H
#define NUXO_TREE_DOCUMENTS_H

#include <cstdint>

namespace NUXO {

/// The number of the document @p name, the same for every parse of it; 0 (unknown) when there are too many names or memory
/// is exhausted. May be called from several threads.
uint32_t registerDocument(const char* name);

} // namespace NUXO

#endif
