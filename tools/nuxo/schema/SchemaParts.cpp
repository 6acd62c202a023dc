// SPDX-License-Identifier: Apache-2.0
#include "schema/SchemaParts.h"

#include <stdexcept>

namespace NuxoTool {

namespace {

const AttributeKind& entryOf(const char* name)
{
    const VocabularyEntry* const entry = vocabularyEntry(name);
    if (entry == nullptr) throw std::logic_error(std::string("no such name in the vocabulary: ") + name);
    return entry->attribute;
}

} // namespace

Attribute::Attribute(const char* name) : mKind(entryOf(name))
{
}

Attribute& Attribute::required()
{
    mKind.required = true;
    return *this;
}

Attribute& Attribute::standard(const char* value)
{
    mKind.standard = value;
    return *this;
}

Attribute& Attribute::range(int32_t least, int32_t most)
{
    mKind.least = least;
    mKind.most = most;
    return *this;
}

Attribute& Attribute::is(ValueKind value)
{
    mKind.value = value;
    return *this;
}

Attribute& Attribute::oneOf(std::vector<std::string> choices)
{
    mKind.value = ValueKind::Choice;
    mKind.choices = std::move(choices);
    return *this;
}

Attribute& Attribute::says(const char* documentation)
{
    mKind.documentation = documentation;
    return *this;
}

ElementRow::ElementRow(const char* itsId, const char* itsName, const char* itsDocumentation, Attributes itsAttributes,
                       std::vector<const char*> itsChildren, const char* itsOpenChild)
    : id(itsId), name(itsName), documentation(itsDocumentation), attributes(std::move(itsAttributes)),
      children(std::move(itsChildren)), openChild(itsOpenChild)
{
}

ElementRow& ElementRow::named(const char* kindId)
{
    namedChild = kindId;
    return *this;
}

ElementRow& ElementRow::settable()
{
    takesSettings = true;
    return *this;
}

ElementRow& ElementRow::once()
{
    single = true;
    return *this;
}

Attributes operator+(Attributes left, const Attributes& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Attributes asUsual(const std::vector<const char*>& names)
{
    Attributes attributes;
    for (const char* const name : names) attributes.push_back(Attribute(name));
    return attributes;
}

} // namespace NuxoTool
