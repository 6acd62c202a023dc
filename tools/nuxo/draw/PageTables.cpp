// SPDX-License-Identifier: Apache-2.0
#include "draw/PageTables.h"

#include "Origins.h"
#include "Text.h"

#include <algorithm>
#include <iterator>

namespace NuxoTool {

using NUXO::GraphConfigNode;

namespace {

constexpr const char* kOwnViews[] = {"port", "kernel", "klink", "mux", "demux", "split"};

bool hasOwnView(const GraphConfigNode& node)
{
    if (node.getUid() == NUXO_KEY_KLINK) return true; // these mostly have no type
    const std::string type = textOf(node, NUXO_KEY_TYPE);
    return std::find(std::begin(kOwnViews), std::end(kOwnViews), type) != std::end(kOwnViews);
}

std::string valueText(const AttributeView& attribute)
{
    return attribute.isInteger && !attribute.isKeyName ? std::to_string(attribute.integer) : attribute.text;
}

} // namespace

size_t PageTables::value(const std::string& table, const JsonValue& value)
{
    if (mTables.count(table) == 0) mNames.push_back(table);
    Table& entries = mTables[table];
    const std::string key = value.dump(-1, ' ', false, JsonValue::error_handler_t::replace);
    const auto [entry, isNew] = entries.numbers.emplace(key, entries.values.size());
    if (isNew) entries.values.push_back(value);
    return entry->second;
}

size_t PageTables::text(const std::string& text)
{
    return value("texts", printable(text));
}

// File, line, column; nothing for what the library added by itself.
void PageTables::addPlace(JsonValue& list, const std::optional<Location>& place)
{
    if (!place) return;
    list.push_back(text(place->file));
    list.push_back(place->line);
    list.push_back(place->column);
}

size_t PageTables::attribute(const AttributeView& attribute, const std::string& prefix)
{
    JsonValue entry = {text(prefix + attribute.name), text(valueText(attribute))};
    addPlace(entry, originOf(mSession.locator, attribute));
    return value("attributes", entry);
}

// Recursion is bounded as in the text renderer.
void PageTables::addAttributes(JsonValue& set, const GraphConfigNode& node, const std::string& prefix, bool skip)
{
    for (const AttributeView& view : mView.attributes(node)) set.push_back(attribute(view, prefix));
    for (const ChildView& child : mView.children(node)) {
        if (!skip || !hasOwnView(*child.node)) addAttributes(set, *child.node, prefix + child.name + ':', false);
    }
}

size_t PageTables::item(const GraphConfigNode& node, const std::string& path, bool skip)
{
    JsonValue set = JsonValue::array();
    addAttributes(set, node, "", skip);
    JsonValue entry = {text(path), text(textOf(node, NUXO_KEY_TYPE)), value("sets", set)};
    addPlace(entry, originOf(mSession.locator, node));
    return value("items", entry);
}

void PageTables::addTo(JsonValue& document) const
{
    for (const std::string& name : mNames) document[name] = mTables.at(name).values;
}

} // namespace NuxoTool
