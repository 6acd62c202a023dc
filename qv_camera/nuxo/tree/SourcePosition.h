// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TREE_SOURCE_POSITION_H
#define NUXO_TREE_SOURCE_POSITION_H

#include <nuxo/tree/IGraphConfig.h>

#include <cstdint>

namespace NUXO {

struct ItemEntry;

/// Where an item was read from. Copies keep it, and a merge that overwrites a value takes over the winner's.
struct SourcePosition {
    /// Number of the document, see getSourceDocument; 0 when the item was not read from a document.
    uint32_t document = 0;
    /// Offset in bytes of the item's element (its '<') from the start of the document's text, after decompression.
    uint32_t offset = 0;

    bool known() const { return document != 0; }
};

/// Position of @p node's element; unknown for a root, a null pointer and nodes made by hand.
QV_EXPORT SourcePosition getSourcePosition(const IGraphConfig* node);

/// Position of the element that gave the first item with @p key of @p node its value.
QV_EXPORT SourcePosition getSourcePosition(const IGraphConfig* node, uint32_t key);

/// Position of the element that gave one item its value, for keys that a node holds several times.
///
/// @param item  what an iterator of GraphConfigNode points at
QV_EXPORT SourcePosition getSourcePosition(const ItemEntry& item);

/// Name of a document as it was given to the parser, "" for an unknown number. The text lives as long as the library.
QV_EXPORT const char* getSourceDocument(uint32_t document);

} // namespace NUXO

#endif
