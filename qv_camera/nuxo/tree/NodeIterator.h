// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TREE_NODE_ITERATOR_H
#define NUXO_TREE_NODE_ITERATOR_H

#include <nuxo/tree/IGraphConfig.h>

#include <cstdint>
#include <string>

namespace NUXO {

/// A resumable cursor over the child nodes of one node, in key order (insertion order among equal keys).
///
/// Each call goes on behind the previous match, whatever it searched for; when nothing more matches it returns null and
/// rewinds. Do not edit the node between calls. A cursor over a null node logs an error and returns null.
class QV_EXPORT NodeIterator {
public:
    /// @param node  the node whose children are walked, not owned
    explicit NodeIterator(const IGraphConfig* node);

    /// The next child node.
    IGraphConfig* iterateDescendants();
    /// The next child node filed under @p key.
    IGraphConfig* iterateByUid(const uint32_t& key);
    /// The next child node whose text `type` is the name of @p type.
    IGraphConfig* iterateByType(const uint32_t& type);
    /// The next child node whose text attribute @p attributeKey is exactly @p value.
    IGraphConfig* iterateNodes(const uint32_t& attributeKey, const std::string& value);
    /// Rewinds; always StatusOk.
    int32_t reset();

private:
    template <typename Matches> QV_LOCAL IGraphConfig* step(Matches matches);

    int32_t mIndex = 0;
    IGraphConfig* mNode;
    uint32_t mTypeKey = 0;
    std::string mTypeName;
};

} // namespace NUXO

#endif
