// SPDX-License-Identifier: Apache-2.0
#include "JsonRenderer.h"

#include "Origins.h"
#include "TreeView.h"

namespace NuxoTool {

using NUXO::GraphConfigNode;

namespace {

constexpr int kLayoutVersion = 1;
constexpr int kIndent = 2;

JsonValue jsonValue(const AttributeView& attribute)
{
    return attribute.isInteger && !attribute.isKeyName ? JsonValue(attribute.integer) : JsonValue(attribute.text);
}

// Files @p value under @p name; from the second value on as an array.
void addMember(JsonValue& object, const std::string& name, JsonValue value)
{
    const auto present = object.find(name);
    if (present == object.end()) {
        object[name] = std::move(value);
    } else if (present->is_array()) {
        present->push_back(std::move(value));
    } else {
        *present = JsonValue::array({*present, std::move(value)});
    }
}

// Recursion is bounded as in the text renderer.
JsonValue jsonNode(const GraphConfigNode& node, const std::string& name, TreeView& view, NUXO::SourceLocator* locator)
{
    JsonValue json;
    json["name"] = name;
    const std::string kind = textOf(node, NUXO_KEY_TYPE);
    if (!kind.empty()) json["kind"] = kind;
    if (locator != nullptr) json["where"] = jsonLocation(originOf(*locator, node));

    JsonValue attributes = JsonValue::object();
    JsonValue origins = JsonValue::object();
    for (const AttributeView& attribute : view.attributes(node)) {
        addMember(attributes, attribute.name, jsonValue(attribute));
        if (locator != nullptr) addMember(origins, attribute.name, jsonLocation(originOf(*locator, attribute)));
    }
    json["attributes"] = std::move(attributes);
    if (locator != nullptr) json["origins"] = std::move(origins);

    JsonValue children = JsonValue::array();
    for (const ChildView& child : view.children(node)) {
        children.push_back(jsonNode(*child.node, child.name, view, locator));
    }
    if (!children.empty()) json["children"] = std::move(children);
    return json;
}

} // namespace

JsonValue jsonDocument(const std::string& kind)
{
    JsonValue document;
    document["version"] = kLayoutVersion;
    document["kind"] = kind;
    return document;
}

JsonValue jsonLocation(const std::optional<Location>& location)
{
    if (!location) return nullptr;
    JsonValue json;
    json["file"] = location->file;
    if (location->line == 0) return json; // not known
    json["line"] = location->line;
    json["column"] = location->column;
    return json;
}

JsonValue jsonTree(const GraphConfigNode& root, const std::string& name, NUXO::SourceLocator* locator)
{
    TreeView view;
    return jsonNode(root, name, view, locator);
}

std::string jsonText(const JsonValue& document)
{
    return document.dump(kIndent, ' ', false, JsonValue::error_handler_t::replace) + '\n';
}

} // namespace NuxoTool
