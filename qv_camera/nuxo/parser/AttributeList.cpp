// SPDX-License-Identifier: Apache-2.0
#include <nuxo/parser/AttributeList.h>
#include <nuxo/tree/ElementBuilder.h>

#include <algorithm>

namespace NUXO {

namespace {

// Up to here moving attributes one by one beats a general sort.
constexpr size_t kFewAttributes = 24;

} // namespace

bool AttributeList::addUnique(uint32_t key, std::string_view text)
{
    const bool known = std::any_of(mAttributes.begin(), mAttributes.end(),
                                   [key](const Attribute& attribute) { return attribute.key == key; });
    if (!known) addText(key, text);
    return !known;
}

// Keeps document order among equal keys.
void AttributeList::sortByKey()
{
    if (mAttributes.size() > kFewAttributes) {
        std::stable_sort(mAttributes.begin(), mAttributes.end(),
                         [](const Attribute& left, const Attribute& right) { return left.key < right.key; });
        return;
    }
    for (size_t i = 1; i < mAttributes.size(); ++i) {
        const Attribute moved = mAttributes[i];
        size_t place = i;
        for (; place > 0 && mAttributes[place - 1].key > moved.key; --place)
            mAttributes[place] = mAttributes[place - 1];
        mAttributes[place] = moved;
    }
}

void AttributeList::dropRepeated()
{
    const auto end = std::unique(mAttributes.begin(), mAttributes.end(),
                                 [](const Attribute& left, const Attribute& right) { return left.key == right.key; });
    mAttributes.erase(end, mAttributes.end());
}

std::unique_ptr<GraphConfigNode> AttributeList::build(SourcePosition position)
{
    sortByKey();
    dropRepeated();
    size_t integers = 0;
    for (const Attribute& attribute : mAttributes) integers += attribute.isInteger ? 1U : 0U;

    ElementBuilder builder(integers, mAttributes.size() - integers, mAttributes.size());
    for (const Attribute& attribute : mAttributes) {
        if (attribute.isInteger) {
            builder.addInteger(attribute.key, attribute.number, position);
        } else {
            builder.addText(attribute.key, attribute.text, position);
        }
    }
    return builder.take();
}

} // namespace NUXO
