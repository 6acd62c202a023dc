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

    /// Appends an attribute. The text is not copied: it stays valid until build.
    void addInteger(uint32_t key, int32_t value) { mAttributes.push_back({key, true, value, {}}); }
    void addText(uint32_t key, std::string_view text) { mAttributes.push_back({key, false, 0, text}); }

    /// Appends a text attribute unless the key is there already; whether it was appended.
    bool addUnique(uint32_t key, std::string_view text);

    /// A new node that holds the attributes, all with @p position.
    std::unique_ptr<GraphConfigNode> build(SourcePosition position);

private:
    struct Attribute {
        uint32_t key;
        bool isInteger;
        int32_t number;
        std::string_view text;
    };

    void sortByKey();
    void dropRepeated();

    std::vector<Attribute> mAttributes;
};

} // namespace NUXO

#endif
