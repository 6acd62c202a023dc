// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TREE_ITEM_UID_H
#define NUXO_TREE_ITEM_UID_H

#include <nuxo/tree/NuxoKeys.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <vector>

namespace NUXO {

/// A path of keys that names an item relative to a node, outermost key first. The last key names the target node or
/// attribute; an empty path names nothing. Building and copying a path may throw std::bad_alloc, like any container.
class QV_EXPORT ItemUID {
public:
    ItemUID() = default;

    /// A path of the given keys, for example `{NUXO_KEY_PORT, NUXO_KEY_FORMAT}`.
    ItemUID(std::initializer_list<uint32_t> keys);

    /// Splits @p path at every ':' and appends the key of each component. Unknown and empty components become key 0,
    /// a trailing ':' adds none, an empty text gives an empty path.
    ItemUID(const std::string& path);
    ItemUID(const char* path);
    ItemUID(std::nullptr_t) = delete;

    /// The key of @p str, 0 when the vocabulary lacks it. Case matters.
    static uint32_t str2key(const std::string& str);

    /// The name of @p key: the first in name order whose value is @p key. For an unknown key the first name of the
    /// vocabulary, "active_input" with the built-in one; "na" when the vocabulary is empty. The text lives as long as
    /// its entry.
    static const char* key2str(uint32_t key);

    /// A key for a new name: the number of entries in the vocabulary. It is inserted unless @p str is already known; the
    /// number is returned in both cases, so look known names up with str2key first. 0 when memory is exhausted.
    static uint32_t generateKey(const std::string& str);

    /// Whether attributes with this key hold an integer.
    static bool isInteger(uint32_t key);

    /// Adds the names that the vocabulary lacks, with the values given; known names keep theirs.
    static void addCustomKeyMap(const std::map<std::string, uint32_t>& keys);

    /// The names of all keys joined by '.': for display, it does not parse back.
    std::string toString() const;

    size_t size() const { return mUids.size(); }
    bool empty() const { return mUids.empty(); }
    /// The key at @p index, 0 beyond the end.
    uint32_t operator[](size_t index) const { return index < mUids.size() ? mUids[index] : 0U; }
    /// The last key, 0 for an empty path.
    uint32_t back() const { return mUids.empty() ? 0U : mUids.back(); }
    void push_back(uint32_t key) { mUids.push_back(key); }
    /// Removes the last key; an empty path stays empty.
    void pop_back();

    bool operator==(const ItemUID& other) const { return mUids == other.mUids; }
    bool operator!=(const ItemUID& other) const { return mUids != other.mUids; }
    /// Lexicographic over the keys.
    bool operator<(const ItemUID& other) const { return mUids < other.mUids; }

private:
    std::vector<uint32_t> mUids;
};

} // namespace NUXO

#endif
