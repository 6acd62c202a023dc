// SPDX-License-Identifier: Apache-2.0
// Internal to the schema writer: what schemas of both kinds are made of.
#ifndef NUXO_TOOL_XSD_PARTS_H
#define NUXO_TOOL_XSD_PARTS_H

#include "schema/GraphSchema.h"
#include "schema/XmlText.h"

#include <string>
#include <vector>

namespace NuxoTool {

/// Writes the pieces of a schema from the tables.
class XsdParts {
public:
    /// How elements of names that the schema does not know are treated.
    enum class Wildcard {
        None, ///< there are none
        Lax,  ///< checked where the schema has an element of that name at its top
        Skip  ///< not checked
    };

    void openSchema(const std::string& title);
    /// The schema as a text; it must not be used after that.
    std::string finish();

    XmlText& xml() { return mXml; }
    void documentation(const std::string& text);

    /// Named types for values that have a list of names, and the group of the attributes that settings can change.
    void writeSharedTypes();
    void writeSettingsGroup();

    /// The type of the elements of a kind, under the kind's id.
    void writeType(const ElementKind& kind, Wildcard wildcard);
    /// One type for elements of one name and several kinds.
    void writeJointType(const std::vector<const ElementKind*>& kinds);
    /// Its attributes.
    void writeAttributes(const ElementKind& kind);
    /// A declaration of an element of the type @p type.
    void writeElement(const std::string& name, const std::string& type, const std::string& text);
    /// One that is open for what more there is to say, to be closed by the caller.
    /// @param type  "" when the type follows
    void openElement(const std::string& name, const std::string& text, const std::string& type = "");
    /// Elements in any order and number; to be closed by closeChoice().
    void openChoice();
    void closeChoice();
    void writeWildcard(Wildcard wildcard);
    /// Values of an attribute that are unique among elements.
    /// @param selector  of these elements, from the one around
    void writeUnique(const std::string& name, const std::string& selector, const std::string& attribute);
    /// What is unique in elements of a kind.
    void writeUniqueness(const ElementKind& kind);

private:
    void writeAttribute(const AttributeKind& attribute, bool required);
    void writeValueType(const AttributeKind& attribute);
    void writeNames(const std::string& type, const std::vector<std::string>& names);
    void writeChild(const ElementKind& kind, const std::string& type, bool isOptional);
    void writeChildren(const std::vector<const ElementKind*>& children, Wildcard wildcard);

    XmlText mXml;
};

} // namespace NuxoTool

#endif
