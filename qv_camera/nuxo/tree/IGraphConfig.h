// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TREE_I_GRAPH_CONFIG_H
#define NUXO_TREE_I_GRAPH_CONFIG_H

#include <nuxo/tree/ItemUID.h>

#include <cstdint>
#include <string>

namespace NUXO {

/// A node of a configuration tree, as clients see it.
///
/// Pointers that navigation hands out belong to the tree and stay valid while it lives; whoever owns the root deletes it.
/// Lookup by key means the first item with that key. Output arguments are untouched unless the status is StatusOk.
class QV_EXPORT IGraphConfig {
public:
    virtual ~IGraphConfig();

    /// The topmost node, never null.
    virtual IGraphConfig* getRoot() const = 0;
    /// The parent, null for a root.
    virtual IGraphConfig* getAncestor() const = 0;
    /// Number of items, attributes included.
    virtual int32_t getDescendantCount() const = 0;
    /// The first item with @p key if it is a node, else null.
    virtual IGraphConfig* getDescendant(uint32_t key) const = 0;
    /// The node that @p path names; the node that holds the last key when that names an attribute and a node precedes it;
    /// otherwise null.
    virtual IGraphConfig* getDescendant(const ItemUID& path) const = 0;
    /// getDescendant of the path that the ':'-separated text spells.
    virtual IGraphConfig* getDescendantByString(const std::string& path) const = 0;

    /// Reads an attribute of this node. StatusOk; StatusMissingData when absent; StatusNotFound when it is a node or an
    /// attribute of the other kind; StatusNoMemory (texts).
    virtual int32_t getValue(uint32_t key, int& value) const = 0;
    /// Reads the attribute at @p path. As by key; StatusBadArgument when no node holds the last key; StatusMissingData for
    /// an empty path.
    virtual int32_t getValue(const ItemUID& path, int& value) const = 0;
    virtual int32_t getValue(uint32_t key, std::string& value) const = 0;
    virtual int32_t getValue(const ItemUID& path, std::string& value) const = 0;

    /// Sets an attribute that has a list of options. StatusOk; StatusNotFound when absent or when no option matches;
    /// StatusBadArgument when it is of the other kind or a node; the status of a failed option.
    virtual int32_t setValue(uint32_t key, int value) = 0;
    /// Sets the attribute at @p path. As by key; StatusNotFound when no node holds the last key; StatusMissingData for an
    /// empty path.
    virtual int32_t setValue(const ItemUID& path, int value) = 0;
    virtual int32_t setValue(uint32_t key, const std::string& value) = 0;
    virtual int32_t setValue(const ItemUID& path, const std::string& value) = 0;

    /// The name under which the parent files this node, "NA" for a root.
    virtual std::string getName() const = 0;
    /// The key under which the parent files this node, 0 for a root.
    virtual uint32_t getUid() const = 0;
    /// Whether the node's `type` text is the name of @p wanted; false with a warning when it has none.
    virtual bool isType(uint32_t wanted) const = 0;
};

} // namespace NUXO

#endif
