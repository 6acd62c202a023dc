// SPDX-License-Identifier: Apache-2.0
#include "diff/Comparison.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <unordered_map>

namespace NuxoTool {

using Number = DiffNumbers::Number;
using Change = Difference::Change;

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// The digits from @p at on without leading zeros; moves @p at behind them.
std::string_view takeDigits(std::string_view text, size_t& at)
{
    while (at + 1 < text.size() && text[at] == '0' && isDigit(text[at + 1])) ++at;
    const size_t start = at;
    while (at < text.size() && isDigit(text[at])) ++at;
    return text.substr(start, at - start);
}

// Whether a text stands before another one, numbers in them by value.
bool standsBefore(std::string_view a, std::string_view b)
{
    size_t i = 0;
    size_t j = 0;
    while (i < a.size() && j < b.size()) {
        if (isDigit(a[i]) && isDigit(b[j])) {
            const std::string_view left = takeDigits(a, i);
            const std::string_view right = takeDigits(b, j);
            if (left.size() != right.size()) return left.size() < right.size();
            if (left != right) return left < right;
        } else {
            if (a[i] != b[j]) return static_cast<unsigned char>(a[i]) < static_cast<unsigned char>(b[j]);
            ++i;
            ++j;
        }
    }
    const bool bothEnd = i == a.size() && j == b.size();
    return bothEnd ? a < b : i == a.size();
}

// Pairs of what is equal in two lists, in order, then of what is left, in order; null where one list is short of items.
template <typename Item, typename NumberOf>
std::vector<std::pair<const Item*, const Item*>> pairUp(const std::vector<const Item*>& a,
                                                        const std::vector<const Item*>& b, NumberOf numberOf)
{
    if (a.size() == 1 && b.size() == 1) return {{a.front(), b.front()}};
    std::unordered_map<Number, std::vector<const Item*>> waiting; // of b, the next one last
    for (auto it = b.rbegin(); it != b.rend(); ++it) waiting[numberOf(**it)].push_back(*it);

    std::vector<std::pair<const Item*, const Item*>> pairs;
    std::vector<const Item*> left;
    for (const Item* const item : a) {
        std::vector<const Item*>& equal = waiting[numberOf(*item)];
        if (equal.empty()) {
            left.push_back(item);
        } else {
            pairs.emplace_back(item, equal.back());
            equal.pop_back();
        }
    }
    auto next = left.begin();
    for (const Item* const item : b) {
        std::vector<const Item*>& equal = waiting[numberOf(*item)];
        if (equal.empty() || equal.back() != item) continue; // paired already
        equal.pop_back();
        pairs.emplace_back(next == left.end() ? nullptr : *next++, item);
    }
    for (; next != left.end(); ++next) pairs.emplace_back(*next, nullptr);
    return pairs;
}

// Calls @p visit with the runs of items of two sorted lists of which none stands before another.
template <typename Item, typename Before, typename Visit>
void forEachRun(const std::vector<const Item*>& a, const std::vector<const Item*>& b, Before before, Visit visit)
{
    auto i = a.begin();
    auto j = b.begin();
    while (i != a.end() || j != b.end()) {
        const bool isInA = i != a.end() && (j == b.end() || !before(**j, **i));
        const Item& least = isInA ? **i : **j;
        std::vector<const Item*> ofA;
        std::vector<const Item*> ofB;
        for (; i != a.end() && !before(least, **i); ++i) ofA.push_back(*i);
        for (; j != b.end() && !before(least, **j); ++j) ofB.push_back(*j);
        visit(ofA, ofB);
    }
}

template <typename Item> std::vector<const Item*> pointersTo(const std::vector<Item>& items)
{
    std::vector<const Item*> pointers;
    pointers.reserve(items.size());
    for (const Item& item : items) pointers.push_back(&item);
    return pointers;
}

bool hasBefore(const DiffElement& a, const DiffElement& b)
{
    return a.identity < b.identity;
}

std::vector<const DiffElement*> byIdentity(const std::vector<DiffElement>& children)
{
    std::vector<const DiffElement*> sorted = pointersTo(children);
    std::stable_sort(sorted.begin(), sorted.end(), [](const auto* a, const auto* b) { return hasBefore(*a, *b); });
    return sorted;
}

// The one element of each side of which a number tells, null for none or several.
class Lonely {
public:
    void add(Number number, bool isOfA, const DiffElement* element)
    {
        std::vector<const DiffElement*>& side = isOfA ? mFound[number].first : mFound[number].second;
        side.push_back(element);
    }

    // What belongs to @p element on the other side.
    const DiffElement* partner(Number number) const
    {
        const auto found = mFound.find(number);
        if (found == mFound.end()) return nullptr;
        const auto& [a, b] = found->second;
        return a.size() == 1 && b.size() == 1 ? b.front() : nullptr;
    }

private:
    std::unordered_map<Number, std::pair<std::vector<const DiffElement*>, std::vector<const DiffElement*>>> mFound;
};

// Moves pairs together of which each side has one half: those for which @p isWanted, when just one element on each side has
// a number.
template <typename IsWanted, typename NumberOf>
std::vector<ElementPair> takePartners(std::vector<ElementPair>& halves, IsWanted isWanted, NumberOf numberOf)
{
    Lonely lonely;
    for (const auto& [a, b] : halves) {
        const DiffElement& element = a != nullptr ? *a : *b;
        if (isWanted(element)) lonely.add(numberOf(element), a != nullptr, &element);
    }
    std::vector<ElementPair> partners;
    std::set<const DiffElement*> taken;
    for (const auto& [a, b] : halves) {
        if (a == nullptr || !isWanted(*a)) continue;
        const DiffElement* const partner = lonely.partner(numberOf(*a));
        if (partner == nullptr) continue;
        partners.emplace_back(a, partner);
        taken.insert({a, partner});
    }
    halves.erase(std::remove_if(halves.begin(), halves.end(),
                                [&taken](const ElementPair& half) {
                                    return taken.count(half.first != nullptr ? half.first : half.second) > 0;
                                }),
                 halves.end());
    return partners;
}

// Moves the pairs of which one half is missing out of @p pairs.
std::vector<ElementPair> takeHalves(std::vector<ElementPair>& pairs)
{
    const auto isWhole = [](const ElementPair& pair) { return pair.first != nullptr && pair.second != nullptr; };
    const auto halves = std::stable_partition(pairs.begin(), pairs.end(), isWhole);
    std::vector<ElementPair> taken(halves, pairs.end());
    pairs.erase(halves, pairs.end());
    return taken;
}

// A child of both sides and a group of it.
struct GroupMember {
    Number group;
    ElementPair pair;
};

// The first place where the members of one group, sorted by place in A, stand in another order in B; nulls for none.
ElementPair firstMoved(std::vector<GroupMember>::const_iterator begin, std::vector<GroupMember>::const_iterator end)
{
    std::vector<const DiffElement*> inB;
    for (auto it = begin; it != end; ++it) inB.push_back(it->pair.second);
    std::sort(inB.begin(), inB.end()); // children of one element stand in one array
    auto next = inB.begin();
    for (auto it = begin; it != end; ++it, ++next) {
        if (it->pair.second != *next) return {it->pair.first, *next};
    }
    return {nullptr, nullptr};
}

} // namespace

Comparison::Comparison(const DiffTrees& trees, const DiffElement& a, const DiffElement& b) : mTrees(trees)
{
    mPairs.push_back({nullptr, &a, &b});
    compare(mPairs.back());
}

Difference& Comparison::add(Change change, const DiffPair& pair)
{
    Difference& difference = mDifferences.emplace_back();
    difference.change = change;
    difference.within = &pair;
    return difference;
}

// Recursion is as deep as the trees are.
void Comparison::compare(const DiffPair& pair)
{
    if (pair.a->body == pair.b->body) return;
    compareAttributes(pair);
    compareChildren(pair);
}

void Comparison::compareAttributes(const DiffPair& pair)
{
    const auto before = [this](const DiffAttribute& a, const DiffAttribute& b) {
        return a.name != b.name && mTrees.text(a.name) < mTrees.text(b.name);
    };
    const auto meaningOf = [](const DiffAttribute& attribute) { return attribute.meaning; };
    const auto visit = [&](const std::vector<const DiffAttribute*>& a, const std::vector<const DiffAttribute*>& b) {
        bool isSame = true;
        for (const AttributePair& values : pairUp(a, b, meaningOf)) {
            const auto& [left, right] = values;
            if (left != nullptr && right != nullptr && left->meaning == right->meaning) continue;
            isSame = false;
            add(left == nullptr    ? Change::Added
                : right == nullptr ? Change::Removed
                                   : Change::Changed,
                pair)
                .attributes = values;
        }
        if (!isSame) return;
        for (size_t i = 0; i < a.size(); ++i) {
            if (a[i]->meaning == b[i]->meaning) continue;
            add(Change::Reordered, pair).attributes = {a[i], b[i]};
            return;
        }
    };
    forEachRun(pointersTo(pair.a->attributes), pointersTo(pair.b->attributes), before, visit);
}

void Comparison::compareChildren(const DiffPair& pair)
{
    std::vector<ElementPair> pairs;
    const auto wholeOf = [](const DiffElement& element) { return element.whole; };
    const auto visit = [&](const std::vector<const DiffElement*>& a, const std::vector<const DiffElement*>& b) {
        const std::vector<ElementPair> found = pairUp(a, b, wholeOf);
        pairs.insert(pairs.end(), found.begin(), found.end());
    };
    forEachRun(byIdentity(pair.a->children), byIdentity(pair.b->children), hasBefore, visit);

    std::vector<ElementPair> halves = takeHalves(pairs);
    const std::vector<ElementPair> left = takePartners(
        halves, [](const DiffElement& element) { return element.hasLooseIdentity; },
        [](const DiffElement& element) { return element.name; });
    pairs.insert(pairs.end(), left.begin(), left.end());
    const std::vector<ElementPair> renamed = takePartners(
        halves, [](const DiffElement& element) { return element.mayBeRenamed; },
        [](const DiffElement& element) { return element.body; });

    std::vector<ElementPair> changes = halves;
    changes.insert(changes.end(), renamed.begin(), renamed.end());
    sortByName(changes);
    for (const ElementPair& elements : changes) {
        add(elements.first == nullptr    ? Change::Added
            : elements.second == nullptr ? Change::Removed
                                         : Change::Renamed,
            pair)
            .elements = elements;
    }
    compareOrder(pair, pairs);

    sortByName(pairs);
    for (const auto& [a, b] : pairs) {
        if (a->body == b->body) continue;
        mPairs.push_back({&pair, a, b});
        compare(mPairs.back());
    }
}

void Comparison::compareOrder(const DiffPair& pair, const std::vector<ElementPair>& pairs)
{
    std::vector<GroupMember> members;
    for (const ElementPair& elements : pairs) {
        for (const Number group : elements.first->orderGroups) members.push_back({group, elements});
    }
    std::sort(members.begin(), members.end(), [this](const GroupMember& a, const GroupMember& b) {
        if (a.group != b.group) return mTrees.text(a.group) < mTrees.text(b.group);
        return a.pair.first < b.pair.first;
    });
    std::set<ElementPair> reported; // two links may have both ends in common
    for (auto begin = members.cbegin(); begin != members.cend();) {
        auto end = begin;
        while (end != members.cend() && end->group == begin->group) ++end;
        const ElementPair moved = firstMoved(begin, end);
        if (moved.first != nullptr && reported.insert(moved).second) {
            Difference& difference = add(Change::Reordered, pair);
            difference.elements = moved;
            difference.orderGroup = begin->group;
        }
        begin = end;
    }
}

// By the name that stands first, which is the same in both directions.
void Comparison::sortByName(std::vector<ElementPair>& pairs) const
{
    const auto nameOf = [this](const ElementPair& pair) -> const std::string& {
        const auto& [a, b] = pair;
        if (a == nullptr) return mTrees.text(b->label);
        if (b == nullptr) return mTrees.text(a->label);
        const std::string& left = mTrees.text(a->label);
        const std::string& right = mTrees.text(b->label);
        return standsBefore(right, left) ? right : left;
    };
    // Of one name in the order of the file that has most of them.
    std::stable_sort(pairs.begin(), pairs.end(), [&](const ElementPair& left, const ElementPair& right) {
        return standsBefore(nameOf(left), nameOf(right));
    });
}

const std::string& Comparison::labelOf(const DiffPair& pair) const
{
    const std::string& a = mTrees.text(pair.a->label);
    const std::string& b = mTrees.text(pair.b->label);
    if (a.size() != b.size()) return a.size() > b.size() ? a : b;
    return std::min(a, b);
}

std::string Comparison::pathOf(const DiffPair& pair) const
{
    std::vector<const DiffPair*> way;
    for (const DiffPair* step = &pair; step->parent != nullptr; step = step->parent) way.push_back(step);
    std::string path;
    for (auto step = way.rbegin(); step != way.rend(); ++step) path += (path.empty() ? "" : ":") + labelOf(**step);
    return path;
}

} // namespace NuxoTool
