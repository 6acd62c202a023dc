// SPDX-License-Identifier: Apache-2.0
// Internal: the keys that a path text spells, one after the other.
#ifndef NUXO_TREE_PATH_READER_H
#define NUXO_TREE_PATH_READER_H

#include <nuxo/tree/ItemUID.h>

#include <string>
#include <string_view>

namespace NUXO {

/// Splits a text at every ':'. An empty component gives key 0, a trailing ':' none, an empty text has no components.
class PathReader {
public:
    /// @param text  outlives the reader
    explicit PathReader(std::string_view text) : mRest(text) {}

    /// The next key; false at the end. May throw std::bad_alloc.
    bool next(uint32_t& key)
    {
        if (mRest.empty()) return false;
        const size_t separator = mRest.find(kSeparator);
        mName.assign(mRest.substr(0, separator));
        mRest.remove_prefix(separator == std::string_view::npos ? mRest.size() : separator + 1);
        key = ItemUID::str2key(mName);
        return true;
    }

    static constexpr char kSeparator = ':';

private:
    std::string_view mRest;
    std::string mName; // scratch
};

} // namespace NUXO

#endif
