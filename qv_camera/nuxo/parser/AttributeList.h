// SPDX-License-Identifier: Apache-2.0
// Internal to the parser: the attributes of one element before they become a node.
#ifndef NUXO_PARSER_ATTRIBUTE_LIST_H
#define NUXO_PARSER_ATTRIBUTE_LIST_H

#include <nuxo/tree/GraphConfigNode.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace NUXO {

/// Collects attributes in document order; of several with one key the first counts. All members may throw std::bad_alloc.
class AttributeList {
public:
    void clear() { mAttributes.clear(); }

    /// Appends an attribute; its key alone decides its kind. The text is not copied: it stays valid until build.
    void addInteger(uint32_t key, int32_t value) { mAttributes.emplace_back(key, value); }
    void addText(uint32_t key, std::string_view text) { mAttributes.emplace_back(key, text); }

    /// Appends a text attribute unless the key is there already; whether it was appended.
    bool addUnique(uint32_t key, std::string_view text);

    /// A new node that holds the attributes, all with @p position, and has room for @p items items altogether.
    std::unique_ptr<GraphConfigNode> build(SourcePosition position, size_t items);

private:
    struct Attribute {
        // Constructors, so that attributes are made in place: copying a fresh one would wait for its own stores.
        Attribute(uint32_t itsKey, int32_t itsNumber) : key(itsKey), isInteger(true), number(itsNumber) {}
        Attribute(uint32_t itsKey, std::string_view itsText) : key(itsKey), isInteger(false), number(0), text(itsText)
        {
        }

        uint32_t key;
        bool isInteger;
        int32_t number;
        std::string_view text;
    };

    bool hasSameShape() const;
    void sortByKey();

    std::vector<Attribute> mAttributes;
    std::vector<uint32_t> mShape; // the keys for which the following hold
    std::vector<uint64_t> mOrder; // key in the upper half, place in mAttributes in the lower one
    size_t mIntegers = 0;
};

} // namespace NUXO

#endif
