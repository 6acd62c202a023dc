// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_JSON_RENDERER_H
#define NUXO_TOOL_JSON_RENDERER_H

#include "Findings.h"

#include <nuxo/parser/SourceLocator.h>
#include <nuxo/tree/GraphConfigNode.h>

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace NuxoTool {

/// Members keep the order in which they were added.
using JsonValue = nlohmann::ordered_json;

/// A document with the members "version" (of the JSON layout) and "kind".
JsonValue jsonDocument(const std::string& kind);

/// An object with file, line and column; null when there is no place.
JsonValue jsonLocation(const std::optional<Location>& location);

/// The text as a string, null for an empty one.
inline JsonValue jsonOrNull(const std::string& text)
{
    return text.empty() ? JsonValue(nullptr) : JsonValue(text);
}

/// The value, null for none.
template <typename Value> JsonValue jsonOrNull(const std::optional<Value>& value)
{
    return value ? JsonValue(*value) : JsonValue(nullptr);
}

/// A tree: objects with "name", "kind" (when known), "attributes" (an object; an attribute that occurs several times has an
/// array) and "children" (when there are any). With a @p locator each also has "where" and, for each attribute, "origins".
JsonValue jsonTree(const NUXO::GraphConfigNode& root, const std::string& name, NUXO::SourceLocator* locator);

/// The document as text. Bytes that are no UTF-8 (only names of files can have them) are replaced.
std::string jsonText(const JsonValue& document);

} // namespace NuxoTool

#endif
