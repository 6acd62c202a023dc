// SPDX-License-Identifier: Apache-2.0
#include "schema/GraphSchema.h"

#include "Suggestion.h"
#include "schema/SchemaParts.h"

#include <algorithm>
#include <deque>
#include <iterator>
#include <map>

namespace NuxoTool {

namespace {

// The kinds of one file, put together from the rows of its table.
class KindTable {
public:
    explicit KindTable(const std::vector<ElementRow>& rows)
    {
        for (const ElementRow& row : rows) add(row);
        for (size_t i = 0; i < rows.size(); ++i) connect(mKinds[i], rows[i]);
    }
    KindTable(const KindTable&) = delete;
    KindTable& operator=(const KindTable&) = delete;

    const std::vector<const ElementKind*>& inOrder() const { return mOrder; }

private:
    void add(const ElementRow& row)
    {
        ElementKind& kind = mKinds.emplace_back();
        kind.id = row.id;
        kind.name = row.name;
        kind.documentation = row.documentation;
        kind.attributes = row.attributes;
        kind.takesSettings = row.takesSettings;
        kind.single = row.single;
        mById[row.id] = &kind;
        mOrder.push_back(&kind);
    }

    void connect(ElementKind& kind, const ElementRow& row) const
    {
        for (const char* const child : row.children) kind.children.push_back(mById.at(child));
        if (*row.openChild != '\0') kind.openChild = mById.at(row.openChild);
        if (*row.namedChild != '\0') kind.namedChild = mById.at(row.namedChild);
    }

    std::deque<ElementKind> mKinds; // that stay where they are
    std::map<std::string, const ElementKind*> mById;
    std::vector<const ElementKind*> mOrder;
};

const KindTable& descriptorTable()
{
    static const KindTable table(descriptorRows());
    return table;
}

const KindTable& settingsTable()
{
    static const KindTable table(settingsRows());
    return table;
}

// Whether a `node` element is made from a base node. One that lists differences and has no type forgot its base.
bool isDerived(const XmlElement& node)
{
    if (node.attribute("base_node") != nullptr) return true;
    return node.attribute("type") == nullptr && node.child("attribute") != nullptr;
}

// Elements that hold a file together: nothing is named after them.
bool isOfStructure(const std::string& name)
{
    constexpr const char* names[] = {"graph_descriptor", "nodes",    "graphs",
                                     "graph_settings",   "settings", "sensor_modes"};
    return std::any_of(std::begin(names), std::end(names), [&name](const char* other) { return name == other; });
}

} // namespace

const ElementKind* ElementKind::childKind(const XmlElement& child) const
{
    for (const ElementKind* const kind : children) {
        if (kind->name != child.name) continue;
        if (kind->id == "derived_node" && !isDerived(child)) continue;
        return kind;
    }
    if (namedChild != nullptr && child.attribute("name") != nullptr) return namedChild;
    if (openChild == nullptr || isOfStructure(child.name)) return nullptr;
    return misspelledOf(child.name, childNames()).empty() ? openChild : nullptr;
}

const AttributeKind* ElementKind::attribute(std::string_view attributeName) const
{
    const auto place = std::find_if(attributes.begin(), attributes.end(), [&](const AttributeKind& attributeKind) {
        return attributeKind.name == attributeName;
    });
    if (place != attributes.end()) return &*place;
    return takesSettings ? settingsAttribute(attributeName) : nullptr;
}

std::vector<std::string> ElementKind::childNames() const
{
    std::vector<std::string> names;
    for (const ElementKind* const kind : children) names.push_back(kind->name);
    return names;
}

std::vector<std::string> ElementKind::attributeNames() const
{
    std::vector<std::string> names;
    for (const AttributeKind& attributeKind : attributes) names.push_back(attributeKind.name);
    if (!takesSettings) return names;
    for (const AttributeKind* const attributeKind : settingsAttributes()) names.push_back(attributeKind->name);
    return names;
}

const ElementKind& descriptorSchema()
{
    return *descriptorKinds().front();
}

const ElementKind& settingsSchema()
{
    return *settingsKinds().front();
}

const ElementKind* kindOfRoot(const XmlElement& root)
{
    for (const ElementKind* const kind : {&descriptorSchema(), &settingsSchema()}) {
        if (kind->name == root.name) return kind;
    }
    return nullptr;
}

const std::vector<const ElementKind*>& descriptorKinds()
{
    return descriptorTable().inOrder();
}

const std::vector<const ElementKind*>& settingsKinds()
{
    return settingsTable().inOrder();
}

bool isVocabularyAttribute(std::string_view name)
{
    const VocabularyEntry* const entry = vocabularyEntry(name);
    return entry != nullptr && entry->isAttribute;
}

} // namespace NuxoTool
