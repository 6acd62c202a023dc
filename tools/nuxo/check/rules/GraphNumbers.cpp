// SPDX-License-Identifier: Apache-2.0
// Numbers by which kernels and groups are told apart, where a setting, an option or an override changed them. What the
// descriptor itself gives twice is told by rules for descriptors.
#include "PortView.h"
#include "Text.h"
#include "TreeView.h"
#include "check/rules/GraphInspection.h"
#include "check/rules/GraphInspections.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace NuxoTool {

using NUXO::GraphConfigNode;

namespace {

struct Numbered {
    const GraphConfigNode* item;
    int number;
    bool isChanged; ///< whether the descriptor gives another one
};

class NumberInspection {
public:
    explicit NumberInspection(GraphInspection& inspection) : mInspection(inspection) {}

    void run()
    {
        std::map<int, Numbered> groupIds;
        std::map<int, std::map<int, Numbered>> identities; // by stream
        for (const GraphConfigNode* const group : mInspection.groups().nodes) {
            addTo(groupIds, *group, NUXO_KEY_PG_ID, "pg_id");
            const std::optional<int> stream = streamOf(*group);
            const std::vector<const GraphConfigNode*> kernels = childrenOfType(*group, NUXO_KEY_KERNEL);
            for (const GraphConfigNode* const kernel : kernels) {
                if (stream) addTo(identities[*stream], *kernel, NUXO_KEY_PAL_UUID, "pal_uuid");
            }
            inspectIds(kernels);
        }
    }

private:
    bool isGroup(const GraphConfigNode& item) const { return item.getAncestor() == &mInspection.graph(); }

    std::string titleOf(const GraphConfigNode& item) const
    {
        const std::string name = printable(nameOf(item));
        return isGroup(item) ? name : printable(nameOf(*item.getAncestor())) + ':' + name;
    }

    std::optional<int> declared(const GraphConfigNode& item, const char* attribute) const
    {
        const GraphConfigNode* const group =
            isGroup(item) ? &item : dynamic_cast<const GraphConfigNode*>(item.getAncestor());
        const ModelNode* const node =
            group == nullptr ? nullptr : mInspection.setting().descriptor.node(nameOf(*group));
        if (node == nullptr) return std::nullopt;
        return node->integer(isGroup(item) ? attribute : nameOf(item) + ':' + attribute);
    }

    std::optional<Numbered> numbered(const GraphConfigNode& item, uint32_t key, const char* attribute) const
    {
        const std::optional<int> number = optionalInteger(item, key);
        if (!number) return std::nullopt;
        return Numbered{&item, *number, declared(item, attribute) != number};
    }

    void addTo(std::map<int, Numbered>& known, const GraphConfigNode& item, uint32_t key, const char* attribute)
    {
        const std::optional<Numbered> own = numbered(item, key, attribute);
        if (!own) return;
        const Numbered& first = known.emplace(own->number, *own).first->second;
        if (first.item == &item) return;
        if (!own->isChanged && !first.isChanged) {
            if (!isGroup(item)) inspectMove(*own, first);
            return;
        }
        const Numbered& changed = own->isChanged ? *own : first;
        const Numbered& other = own->isChanged ? first : *own;
        mInspection.report(kChangedIdRule, *changed.item, key,
                           titleOf(*changed.item) + " gets the " + attribute + ' ' + std::to_string(changed.number) +
                               ", which " + titleOf(*other.item) + " of the same " +
                               (isGroup(item) ? "graph" : "stream") + " has; expected one of its own" +
                               originalText(*changed.item, attribute));
        mInspection.note(*other.item, key, "the other one");
    }

    // Kernels whose numbers clash since the group of one of them came to the stream of the other.
    void inspectMove(const Numbered& own, const Numbered& first)
    {
        const auto groupOf = [](const Numbered& each) {
            return dynamic_cast<const GraphConfigNode*>(each.item->getAncestor());
        };
        const bool isOwnMoved = isMoved(*groupOf(own));
        if (groupOf(own) == groupOf(first) || (!isOwnMoved && !isMoved(*groupOf(first)))) return;
        const Numbered& moved = isOwnMoved ? own : first;
        const Numbered& other = isOwnMoved ? first : own;
        const GraphConfigNode& group = *groupOf(moved);
        mInspection.report(kChangedIdRule, group, NUXO_KEY_STREAM_ID,
                           printable(nameOf(group)) + " is moved to stream " + std::to_string(*streamOf(group)) +
                               ", where " + titleOf(*other.item) + " has the pal_uuid " + std::to_string(other.number) +
                               " of " + titleOf(*moved.item) + "; expected a stream without that number");
        mInspection.note(*other.item, NUXO_KEY_PAL_UUID, "the other one");
    }

    bool isMoved(const GraphConfigNode& group) const { return declared(group, "stream_id") != streamOf(group); }

    // ", such as the 1001 of the descriptor"
    std::string originalText(const GraphConfigNode& item, const char* attribute) const
    {
        const std::optional<int> original = declared(item, attribute);
        return original ? ", such as the " + std::to_string(*original) + " of the descriptor" : "";
    }

    void inspectIds(const std::vector<const GraphConfigNode*>& kernels)
    {
        std::map<int, size_t> uses;
        std::vector<Numbered> changed;
        for (const GraphConfigNode* const kernel : kernels) {
            const std::optional<Numbered> own = numbered(*kernel, NUXO_KEY_ID, "id");
            if (!own) return;
            ++uses[own->number];
            if (own->isChanged) changed.push_back(*own);
        }
        const auto count = static_cast<int>(kernels.size());
        const auto fault = std::find_if(changed.begin(), changed.end(), [&](const Numbered& each) {
            return each.number < 0 || each.number >= count || uses[each.number] > 1;
        });
        if (fault == changed.end()) return;
        const std::optional<int> original = declared(*fault->item, "id");
        mInspection.report(kChangedIdRule, *fault->item, NUXO_KEY_ID,
                           "kernel " + titleOf(*fault->item) + " gets the id " + std::to_string(fault->number) +
                               (uses[fault->number] > 1 ? ", as another one" : "") +
                               (original ? ", instead of " + std::to_string(*original) : "") +
                               "; expected the ids 0 to " + std::to_string(count - 1) + " for " +
                               std::to_string(count) + " kernels, each once");
    }

    GraphInspection& mInspection;
};

} // namespace

void inspectNumbers(GraphInspection& inspection)
{
    NumberInspection(inspection).run();
}

} // namespace NuxoTool
