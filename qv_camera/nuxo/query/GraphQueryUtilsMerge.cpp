// SPDX-License-Identifier: Apache-2.0
#include <nuxo/Log.h>
#include <nuxo/NoMemory.h>
#include <nuxo/NuxoStatus.h>
#include <nuxo/query/GraphQueryUtils.h>
#include <nuxo/query/GraphEditing.h>
#include <nuxo/tree/TreeAccess.h>
#include <nuxo/tree/TypeNames.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace NUXO {

namespace {

constexpr int32_t kOutput = 1; // `direction` of an output port

// One level of a merge: how far the source node's items have been taken over.
struct MergeLevel {
    MergeLevel(GraphConfigNode& destination, const GraphConfigNode& source, bool sameTree)
        : to(&destination), from(&source)
    {
        const ItemMap& items = TreeAccess::items(source);
        next = items.begin();
        end = items.end();
        // Within one tree the merge may insert into the very node that is walked; walk what it held at the start.
        if (!sameTree) return;
        snapshot.assign(next, end);
        next = snapshot.data();
        end = next + snapshot.size();
    }

    GraphConfigNode* to;
    const GraphConfigNode* from;
    std::vector<ItemEntry> snapshot;
    const ItemEntry* next;
    const ItemEntry* end;
};

class TreeMerge {
public:
    TreeMerge(signed char options, KeyCache* keys) : mOptions(static_cast<unsigned char>(options)), mKeys(keys) {}

    // The levels stand in a vector, not on the stack: trees may be of any depth.
    int run(GraphConfigNode& to, const GraphConfigNode& from)
    {
        mSameTree = to.getRootNode() == from.getRootNode();
        mLevels.emplace_back(to, from, mSameTree);
        while (!mLevels.empty()) {
            MergeLevel& level = mLevels.back();
            int status = StatusOk;
            if (level.next != level.end && level.to != level.from) {
                status = takeOver(*level.to, *level.next++);
            } else {
                status = pushToPeer(*level.to);
                mLevels.pop_back();
            }
            if (status != StatusOk) return status;
        }
        return StatusOk;
    }

private:
    bool has(GraphQueryUtils::MergeOption option) const { return (mOptions & static_cast<unsigned>(option)) != 0U; }

    int takeOver(GraphConfigNode& to, const ItemEntry& entry)
    {
        const ItemMap::const_iterator counterpart = TreeAccess::items(to).find(entry.first);
        const bool isMissing = counterpart == TreeAccess::items(to).end();
        GraphConfigNode* const counterpartNode = isMissing ? nullptr : asNode(counterpart->second);
        const GraphConfigNode* const child = asNode(entry.second);
        if (counterpartNode != nullptr) {
            const bool descends = child != nullptr && has(GraphQueryUtils::Merge) && entry.first != NUXO_KEY_OPTIONS;
            if (descends) mLevels.emplace_back(*counterpartNode, *child, mSameTree);
            return StatusOk;
        }
        if (child != nullptr) return has(GraphQueryUtils::CopyMissingNodes) ? copyNode(to, *child, entry) : StatusOk;
        if (!isMissing && !mayOverwrite(entry.first)) return StatusOk;
        if (entry.second->type == GraphConfigItem::INT) {
            const auto& attribute = static_cast<const GraphConfigIntAttribute&>(*entry.second);
            return isMissing ? add(to, attribute, entry) : overwrite(to, counterpart, attribute, entry);
        }
        if (entry.second->type == GraphConfigItem::STRING) {
            const auto& attribute = static_cast<const GraphConfigStrAttribute&>(*entry.second);
            return isMissing ? add(to, attribute, entry) : overwrite(to, counterpart, attribute, entry);
        }
        return StatusOk;
    }

    bool mayOverwrite(uint32_t key) const
    {
        constexpr std::array<uint32_t, 5> kProtected = {NUXO_KEY_NAME, NUXO_KEY_DIRECTION, NUXO_KEY_ID, NUXO_KEY_PEER,
                                                        NUXO_KEY_TYPE};
        return has(GraphQueryUtils::Merge) && std::find(kProtected.begin(), kProtected.end(), key) == kProtected.end();
    }

    template <typename Attribute> int add(GraphConfigNode& to, const Attribute& attribute, const ItemEntry& entry) const
    {
        try {
            TreeAccess::adoptItem(to, std::make_unique<Attribute>(attribute.value), entry.first,
                                  ItemMap::position(entry));
        } catch (const std::bad_alloc&) {
            NUXO_ERROR("Error adding %s: No memory", ItemUID::key2str(entry.first));
            return StatusNoMemory;
        }
        return afterWriting(to, attribute, entry);
    }

    // Writes straight into the attribute, whatever its options list says; one of the other kind keeps its value.
    template <typename Attribute>
    int overwrite(GraphConfigNode& to, ItemMap::const_iterator counterpart, const Attribute& attribute,
                  const ItemEntry& entry) const
    {
        const int32_t status = counterpart->second->setValue(attribute.value);
        if (status == StatusNoMemory) return status;
        if (status != StatusOk) return StatusOk;
        TreeAccess::items(to).setPosition(counterpart, ItemMap::position(entry));
        return afterWriting(to, attribute, entry);
    }

    template <typename Attribute>
    int afterWriting(GraphConfigNode& to, const Attribute& attribute, const ItemEntry& entry) const
    {
        return has(GraphQueryUtils::HandleOptions) ? obeyOptions(to, entry.first, asText(attribute.value)) : StatusOk;
    }

    static std::string asText(int32_t value) { return std::to_string(value); }
    static std::string asText(const std::string& value) { return value; }

    // The value is a copy: applying the option may overwrite the attribute that it came from.
    static int obeyOptions(GraphConfigNode& to, uint32_t key, const std::string value)
    {
        const int32_t status = to.handleAttributeOptions(&to, key, value);
        return status == StatusNotFound ? static_cast<int>(StatusOk) : status;
    }

    static int copyNode(GraphConfigNode& to, const GraphConfigNode& child, const ItemEntry& entry)
    {
        std::unique_ptr<GraphConfigNode> copied(child.copy());
        if (copied == nullptr) {
            NUXO_ERROR("Error creating GraphConfigItem: No memory");
            return StatusNoMemory;
        }
        TreeAccess::adopt(to, std::move(copied), entry.first, ItemMap::position(entry));
        return StatusOk;
    }

    // An output port passes its content on. One level only: the peer's merge pushes no further.
    int pushToPeer(GraphConfigNode& port) const
    {
        int32_t direction = 0;
        if (!has(GraphQueryUtils::PushToPeer)) return StatusOk;
        if (!findInteger(port, NUXO_KEY_DIRECTION, direction) || direction != kOutput) return StatusOk;
        GraphConfigNode* const peer = findPortPeer(port, mKeys);
        if (peer == nullptr) return StatusOk;
        const std::string* const type = findText(*peer, NUXO_KEY_TYPE);
        const bool toSink = type != nullptr && *type == kTypeSink;
        const GraphQueryUtils::MergeOption options =
            toSink ? GraphQueryUtils::CopyMissingNodes : GraphQueryUtils::Merge;
        return TreeMerge(options, mKeys).run(*peer, port);
    }

    unsigned mOptions;
    KeyCache* mKeys;
    bool mSameTree = false;
    std::vector<MergeLevel> mLevels;
};

} // namespace

int mergeTrees(GraphConfigNode& to, const GraphConfigNode& from, signed char options, KeyCache& keys)
{
    return TreeMerge(options, &keys).run(to, from);
}

int GraphQueryUtils::addDescendantsFromNode(GraphConfigNode* to, GraphConfigNode* from, signed char options)
{
    if (to == nullptr || from == nullptr) return StatusBadArgument;
    return unlessNoMemory<int>(StatusNoMemory, [=] { return TreeMerge(options, nullptr).run(*to, *from); });
}

} // namespace NUXO
