// SPDX-License-Identifier: Apache-2.0
#include <nuxo/parser/AttributeList.h>
#include <nuxo/tree/ElementBuilder.h>

#include <algorithm>

namespace NUXO {

bool AttributeList::addUnique(uint32_t key, std::string_view text)
{
    const bool known = std::any_of(mAttributes.begin(), mAttributes.end(),
                                   [key](const Attribute& attribute) { return attribute.key == key; });
    if (!known) addText(key, text);
    return !known;
}

// Orders by key and, among equal keys, as in the document; of several with one key the first stays.
void AttributeList::sortByKey()
{
    mOrder.clear();
    mShape.clear();
    for (size_t i = 0; i < mAttributes.size(); ++i) {
        mShape.push_back(mAttributes[i].key);
        mOrder.push_back(static_cast<uint64_t>(mAttributes[i].key) << 32U | i);
    }
    std::sort(mOrder.begin(), mOrder.end());
    const auto sameKey = [](uint64_t left, uint64_t right) { return left >> 32U == right >> 32U; };
    mOrder.erase(std::unique(mOrder.begin(), mOrder.end(), sameKey), mOrder.end());
    mIntegers = 0;
    for (const uint64_t place : mOrder) mIntegers += mAttributes[static_cast<uint32_t>(place)].isInteger ? 1U : 0U;
}

// Whether the attributes are those of the element before, in the same order, so that its order still holds.
bool AttributeList::hasSameShape() const
{
    return std::equal(mAttributes.begin(), mAttributes.end(), mShape.begin(), mShape.end(),
                      [](const Attribute& attribute, uint32_t key) { return attribute.key == key; });
}

std::unique_ptr<GraphConfigNode> AttributeList::build(SourcePosition position, size_t items)
{
    if (!hasSameShape()) sortByKey();
    ElementBuilder builder(mIntegers, mOrder.size() - mIntegers, std::max(items, mOrder.size()));
    for (const uint64_t place : mOrder) {
        const Attribute& attribute = mAttributes[static_cast<uint32_t>(place)];
        if (attribute.isInteger) {
            builder.addInteger(attribute.key, attribute.number, position);
        } else {
            builder.addText(attribute.key, attribute.text, position);
        }
    }
    return builder.take();
}

} // namespace NUXO
