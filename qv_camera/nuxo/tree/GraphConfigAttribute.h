// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TREE_GRAPH_CONFIG_ATTRIBUTE_H
#define NUXO_TREE_GRAPH_CONFIG_ATTRIBUTE_H

#include <nuxo/tree/GraphConfigItem.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace NUXO {

/// An attribute that holds a 32-bit signed integer.
class QV_EXPORT GraphConfigIntAttribute : public GraphConfigItem {
public:
    explicit GraphConfigIntAttribute(int initial = 0) noexcept : GraphConfigItem(INT), value(initial) {}
    ~GraphConfigIntAttribute() override;

    using GraphConfigItem::getValue;
    using GraphConfigItem::setValue;
    int32_t getValue(int& out) override;
    int32_t setValue(int newValue) override;
    /// Stores @p newValue and returns StatusOk.
    int32_t insertInteger(int newValue);
    /// A new attribute with the same value, owned by the caller; null when memory is exhausted.
    GraphConfigIntAttribute* copy() const;

    // Attributes read from a file live inside the memory of their node, see ElementBuilder.
    static void* operator new(size_t size);
    static void operator delete(void* memory);

    int value;
};

/// An attribute that holds a text.
class QV_EXPORT GraphConfigStrAttribute : public GraphConfigItem {
public:
    GraphConfigStrAttribute() noexcept : GraphConfigItem(STRING) {}
    /// May throw std::bad_alloc.
    explicit GraphConfigStrAttribute(std::string_view initial) : GraphConfigItem(STRING), value(initial) {}
    ~GraphConfigStrAttribute() override;

    using GraphConfigItem::getValue;
    using GraphConfigItem::setValue;
    int32_t getValue(std::string& out) override;
    int32_t setValue(const std::string& newValue) override;
    /// Stores @p newValue and returns StatusOk, or StatusNoMemory with the old text in place.
    int32_t insertString(const std::string& newValue);
    /// A new attribute with the same text, owned by the caller; null when memory is exhausted.
    GraphConfigStrAttribute* copy() const;

    // Attributes read from a file live inside the memory of their node, see ElementBuilder.
    static void* operator new(size_t size);
    static void operator delete(void* memory);

    std::string value;
};

} // namespace NUXO

#endif
