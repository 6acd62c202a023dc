// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_DRAW_PAGE_TABLES_H
#define NUXO_TOOL_DRAW_PAGE_TABLES_H

#include "JsonRenderer.h"
#include "Session.h"
#include "TreeView.h"

#include <nuxo/tree/GraphConfigNode.h>

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace NuxoTool {

/// What the views of all settings of a page have in common: texts, attributes, elements. Each stands there once, and views
/// name it by its number.
class PageTables {
public:
    explicit PageTables(Session& session) : mSession(session) {}

    /// A text as it is shown.
    size_t text(const std::string& text);

    /// An element of a built graph with all attributes, its own and those of the elements in it.
    ///
    /// @param path  of the element, from the graph down
    /// @param skip  whether elements in it that have views of their own are left out
    size_t item(const NUXO::GraphConfigNode& node, const std::string& path, bool skip);

    /// A value that stands in a table under the name @p table.
    size_t value(const std::string& table, const JsonValue& value);

    /// Adds all tables to the object.
    void addTo(JsonValue& document) const;

private:
    struct Table {
        std::unordered_map<std::string, size_t> numbers; ///< by the value as text
        JsonValue values = JsonValue::array();
    };

    void addAttributes(JsonValue& set, const NUXO::GraphConfigNode& node, const std::string& prefix, bool skip);
    size_t attribute(const AttributeView& attribute, const std::string& prefix);
    void addPlace(JsonValue& list, const std::optional<Location>& place);

    Session& mSession;
    TreeView mView;
    std::vector<std::string> mNames; ///< of the tables, in the order in which they came up
    std::unordered_map<std::string, Table> mTables;
};

} // namespace NuxoTool

#endif
