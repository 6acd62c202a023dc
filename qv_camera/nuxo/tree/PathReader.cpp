// SPDX-License-Identifier: Apache-2.0
#include <nuxo/tree/PathReader.h>
#include <nuxo/tree/TreeAccess.h>

namespace NUXO {

bool PathReader::next(uint32_t& key)
{
    if (mRest.empty()) return false;
    const size_t separator = mRest.find(kSeparator);
    const std::string_view name = mRest.substr(0, separator);
    mRest.remove_prefix(separator == std::string_view::npos ? mRest.size() : separator + 1);
    if (mKeys != nullptr) {
        key = mKeys->keyOf(name);
    } else {
        mName.assign(name);
        key = ItemUID::str2key(mName);
    }
    return true;
}

GraphConfigNode* followPath(const GraphConfigNode& start, std::string_view text, KeyCache* keys)
{
    PathReader reader(text, keys);
    const GraphConfigNode* holder = nullptr;
    const GraphConfigNode* node = &start;
    uint32_t key = NUXO_KEY_NA;
    while (reader.next(key)) {
        if (node == nullptr) return nullptr; // an attribute before the end of the path
        holder = node;
        GraphConfigItem* const item = findItem(*holder, key);
        if (item == nullptr) return nullptr;
        node = asNode(item);
    }
    if (holder == nullptr) return nullptr; // an empty path
    if (node != nullptr) return const_cast<GraphConfigNode*>(node);
    return holder == &start ? nullptr : const_cast<GraphConfigNode*>(holder);
}

} // namespace NUXO
