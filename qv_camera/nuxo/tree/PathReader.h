// SPDX-License-Identifier: Apache-2.0
// Internal: the keys that a path text spells, one after the other.
#ifndef NUXO_TREE_PATH_READER_H
#define NUXO_TREE_PATH_READER_H

#include <nuxo/tree/GraphConfigNode.h>
#include <nuxo/tree/KeyCache.h>

#include <string>
#include <string_view>

namespace NUXO {

/// Splits a text at every ':'. An empty component gives key 0, a trailing ':' none, an empty text has no components.
class PathReader {
public:
    static constexpr char kSeparator = ':';

    /// @param text  outlives the reader
    /// @param keys  where to look names up, null for the vocabulary itself
    explicit PathReader(std::string_view text, KeyCache* keys = nullptr) : mRest(text), mKeys(keys) {}

    /// The next key; false at the end. May throw std::bad_alloc.
    bool next(uint32_t& key);

private:
    std::string_view mRest;
    KeyCache* mKeys;
    std::string mName; // scratch
};

/// What IGraphConfig::getDescendant gives for the path that @p text spells, but lets std::bad_alloc out.
GraphConfigNode* followPath(const GraphConfigNode& start, std::string_view text, KeyCache* keys);

} // namespace NUXO

#endif
