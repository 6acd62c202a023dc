// SPDX-License-Identifier: Apache-2.0
// Internal: nodes whose attributes and item array share the node's own allocation.
//
// Parsing and copying know beforehand what a node will hold, and trees are large: one allocation for an element instead of
// one for each attribute halves both the time and the memory. The block is laid out as
//
//     node | attributes | item array
//
// The node stands at its start, so deleting the node frees the block, attributes included: attributes never outlive their
// node. What arrives later (added attributes, a grown item array) is allocated on its own.
//
// Attribute memory is told apart by address: memory from operator new is aligned to 16 bytes, attributes in a block stand
// 8 bytes off.
#ifndef NUXO_TREE_ELEMENT_BUILDER_H
#define NUXO_TREE_ELEMENT_BUILDER_H

#include <nuxo/tree/TreeAccess.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

namespace NUXO {

/// Frees the memory of a destroyed attribute, unless it belongs to its node's block.
void releaseAttributeMemory(void* memory);

/// Makes one node in one allocation. Attributes arrive in key order.
class ElementBuilder {
public:
    /// Room for the given numbers of attributes and for @p entries items altogether. May throw std::bad_alloc.
    ElementBuilder(size_t integers, size_t texts, size_t entries);

    /// Append an attribute; no more of a kind than announced. addText may throw std::bad_alloc.
    void addInteger(uint32_t key, int32_t value, SourcePosition position)
    {
        TreeAccess::items(*mNode).appendInOrder(
            key, ::new (placeFor(sizeof(GraphConfigIntAttribute))) GraphConfigIntAttribute(value), position);
    }
    void addText(uint32_t key, std::string_view text, SourcePosition position)
    {
        TreeAccess::items(*mNode).appendInOrder(
            key, ::new (placeFor(sizeof(GraphConfigStrAttribute))) GraphConfigStrAttribute(text), position);
    }

    GraphConfigNode& node() { return *mNode; }
    std::unique_ptr<GraphConfigNode> take() { return std::move(mNode); }

private:
    void* placeFor(size_t size)
    {
        char* const place = mFree;
        mFree += size;
        return place;
    }

    std::unique_ptr<GraphConfigNode> mNode;
    char* mFree; // where the next attribute goes
};

} // namespace NUXO

#endif
