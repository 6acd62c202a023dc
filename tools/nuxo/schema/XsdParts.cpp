// SPDX-License-Identifier: Apache-2.0
#include "schema/XsdParts.h"

#include <nuxo/formats/NUXOFormats.h>

#include <algorithm>
#include <limits>

namespace NuxoTool {

namespace {

// Behind the last of the kinds.
constexpr const char* kJoint = "_of_any_kind";
constexpr const char* kSettingsGroup = "settings_values";

// What settings can speak of: a letter that is not upper case, then letters, digits and a few signs.
constexpr const char* kNamePattern = "[_a-z\u00a0-\ufffd][._a-z0-9\u00a0-\ufffd\\-]*";

std::string textOf(const AttributeKind& attribute)
{
    const bool isFlag = attribute.value == ValueKind::Flag;
    std::string text = attribute.documentation;
    if (isFlag && text.find("0 ") == std::string::npos) text += " 0 otherwise.";
    if (!attribute.standard.empty()) text += " Without it: " + attribute.standard + '.';
    return text;
}

// Of both kinds of `node` elements; an attribute is required when it is for all of them.
struct JointAttribute {
    const AttributeKind* attribute;
    size_t uses;
    bool required;
};

std::vector<JointAttribute> jointAttributes(const std::vector<const ElementKind*>& kinds)
{
    std::vector<JointAttribute> joint;
    for (const ElementKind* const kind : kinds) {
        for (const AttributeKind& attribute : kind->attributes) {
            const auto known = std::find_if(joint.begin(), joint.end(), [&](const JointAttribute& other) {
                return other.attribute->name == attribute.name;
            });
            if (known == joint.end()) {
                joint.push_back({&attribute, 1, attribute.required});
            } else {
                ++known->uses;
                known->required = known->required && attribute.required;
            }
        }
    }
    for (JointAttribute& each : joint) each.required = each.required && each.uses == kinds.size();
    return joint;
}

std::vector<const ElementKind*> jointChildren(const std::vector<const ElementKind*>& kinds)
{
    std::vector<const ElementKind*> children;
    for (const ElementKind* const kind : kinds) {
        for (const ElementKind* const child : kind->children) {
            if (std::find(children.begin(), children.end(), child) == children.end()) children.push_back(child);
        }
    }
    return children;
}

// Children of one name and several kinds have a type of their own.
std::vector<const ElementKind*> kindsNamed(const std::vector<const ElementKind*>& kinds, const std::string& name)
{
    std::vector<const ElementKind*> same;
    std::copy_if(kinds.begin(), kinds.end(), std::back_inserter(same),
                 [&name](const ElementKind* kind) { return kind->name == name; });
    return same;
}

} // namespace

void XsdParts::openSchema(const std::string& title)
{
    mXml.comment("SPDX-License-Identifier: Apache-2.0");
    mXml.comment(title);
    mXml.open("xs:schema", {{"xmlns:xs", "http://www.w3.org/2001/XMLSchema"}});
}

std::string XsdParts::finish()
{
    mXml.close();
    return mXml.result();
}

void XsdParts::documentation(const std::string& text)
{
    mXml.open("xs:annotation");
    mXml.text("xs:documentation", text);
    mXml.close();
}

void XsdParts::writeNames(const std::string& type, const std::vector<std::string>& names)
{
    mXml.open("xs:simpleType", {{"name", type}});
    mXml.open("xs:restriction", {{"base", "xs:string"}});
    for (const std::string& name : names) mXml.leaf("xs:enumeration", {{"value", name}});
    mXml.close();
    mXml.close();
}

void XsdParts::writeSharedTypes()
{
    mXml.open("xs:simpleType", {{"name", "part_name"}});
    mXml.open("xs:restriction", {{"base", "xs:string"}});
    mXml.leaf("xs:pattern", {{"value", kNamePattern}});
    mXml.close();
    mXml.close();

    std::vector<std::string> names;
    for (const VocabularyEntry& entry : vocabulary()) {
        if (entry.isAttribute) names.push_back(entry.attribute.name);
    }
    writeNames("attribute_name", names);

    // Names to choose from, but others are for the tool to judge: it knows codes, too.
    names.clear();
    NUXOFormats::initNUXOFormats();
    for (const NUXOFormats::qv_format_t& format : NUXOFormats::gNUXOFormats) {
        if (std::find(names.begin(), names.end(), format.name) == names.end()) names.push_back(format.name);
    }
    writeNames("known_format", names);
    mXml.open("xs:simpleType", {{"name", "format_name"}});
    mXml.leaf("xs:union", {{"memberTypes", "known_format xs:string"}});
    mXml.close();
}

void XsdParts::writeSettingsGroup()
{
    mXml.open("xs:attributeGroup", {{"name", kSettingsGroup}});
    for (const AttributeKind* const attribute : settingsAttributes()) writeAttribute(*attribute, false);
    mXml.close();
}

void XsdParts::writeValueType(const AttributeKind& attribute)
{
    const bool isInteger = attribute.isInteger();
    mXml.open("xs:simpleType");
    mXml.open("xs:restriction", {{"base", isInteger ? "xs:int" : "xs:string"}});
    if (isInteger && attribute.least > std::numeric_limits<int32_t>::min())
        mXml.leaf("xs:minInclusive", {{"value", std::to_string(attribute.least)}});
    if (isInteger && attribute.most < std::numeric_limits<int32_t>::max())
        mXml.leaf("xs:maxInclusive", {{"value", std::to_string(attribute.most)}});
    for (const std::string& choice : attribute.choices) mXml.leaf("xs:enumeration", {{"value", choice}});
    mXml.close();
    mXml.close();
}

void XsdParts::writeAttribute(const AttributeKind& attribute, bool required)
{
    const char* type = "xs:string";
    switch (attribute.value) {
    case ValueKind::Name: type = "part_name"; break;
    case ValueKind::KeyName: type = "attribute_name"; break;
    case ValueKind::Format: type = "format_name"; break;
    case ValueKind::Integer:
    case ValueKind::Flag:
    case ValueKind::Choice: type = ""; break;
    default: break;
    }
    XmlText::Attributes description = {{"name", attribute.name}};
    if (*type != '\0') description.emplace_back("type", type);
    if (required) description.emplace_back("use", "required");
    mXml.open("xs:attribute", description);
    documentation(textOf(attribute));
    if (*type == '\0') writeValueType(attribute);
    mXml.close();
}

void XsdParts::writeAttributes(const ElementKind& kind)
{
    for (const AttributeKind& attribute : kind.attributes) {
        const bool isInGroup = kind.takesSettings && settingsAttribute(attribute.name) != nullptr;
        if (!isInGroup) writeAttribute(attribute, attribute.required);
    }
    if (kind.takesSettings) mXml.leaf("xs:attributeGroup", {{"ref", kSettingsGroup}});
}

void XsdParts::openElement(const std::string& name, const std::string& text, const std::string& type)
{
    XmlText::Attributes description = {{"name", name}};
    if (!type.empty()) description.emplace_back("type", type);
    mXml.open("xs:element", description);
    documentation(text);
}

void XsdParts::writeElement(const std::string& name, const std::string& type, const std::string& text)
{
    openElement(name, text, type);
    mXml.close();
}

void XsdParts::openChoice()
{
    mXml.open("xs:choice", {{"minOccurs", "0"}, {"maxOccurs", "unbounded"}});
}

void XsdParts::closeChoice()
{
    mXml.close();
}

void XsdParts::writeWildcard(Wildcard wildcard)
{
    if (wildcard == Wildcard::None) return;
    openChoice();
    mXml.leaf("xs:any", {{"namespace", "##local"}, {"processContents", wildcard == Wildcard::Lax ? "lax" : "skip"}});
    closeChoice();
}

void XsdParts::writeUnique(const std::string& name, const std::string& selector, const std::string& attribute)
{
    mXml.open("xs:unique", {{"name", name}});
    mXml.leaf("xs:selector", {{"xpath", selector}});
    mXml.leaf("xs:field", {{"xpath", '@' + attribute}});
    mXml.close();
}

void XsdParts::writeUniqueness(const ElementKind& kind)
{
    struct Uniqueness {
        const char* kind;
        const char* selector;
        const char* attribute;
    };
    constexpr Uniqueness all[] = {{"nodes", "*", "name"},
                                  {"graphs", "graph", "id"},
                                  {"graph_settings", "settings", "key"},
                                  {"sensor_modes", "*", "name"}};
    for (const Uniqueness& each : all) {
        if (kind.id == each.kind) writeUnique(kind.id + "_differ", each.selector, each.attribute);
    }
    const std::vector<std::string> parts = kind.childNames();
    const bool hasPorts = std::find(parts.begin(), parts.end(), "port") != parts.end();
    if (hasPorts) writeUnique(kind.id + "_parts_differ", "port|kernel|mux|demux|split", "name");
}

void XsdParts::writeChild(const ElementKind& kind, const std::string& type, bool isOptional)
{
    XmlText::Attributes description = {{"name", kind.name}, {"type", type}};
    if (isOptional) description.emplace_back("minOccurs", "0");
    mXml.open("xs:element", description);
    documentation(kind.documentation);
    writeUniqueness(kind);
    mXml.close();
}

// Where elements of any name may stand, those of fixed names are found at the top of the schema.
void XsdParts::writeChildren(const std::vector<const ElementKind*>& children, Wildcard wildcard)
{
    if (wildcard != Wildcard::None) {
        writeWildcard(wildcard);
        return;
    }
    if (children.empty()) return;
    const bool areSingle =
        std::all_of(children.begin(), children.end(), [](const ElementKind* child) { return child->single; });
    if (areSingle) {
        mXml.open("xs:all");
    } else {
        openChoice();
    }
    for (const ElementKind* const child : children) {
        const std::vector<const ElementKind*> same = kindsNamed(children, child->name);
        if (same.back() != child) continue;
        writeChild(*child, same.size() == 1 ? child->id : child->id + kJoint, areSingle);
    }
    mXml.close();
}

void XsdParts::writeType(const ElementKind& kind, Wildcard wildcard)
{
    mXml.open("xs:complexType", {{"name", kind.id}});
    writeChildren(kind.children, wildcard);
    writeAttributes(kind);
    mXml.close();
}

void XsdParts::writeJointType(const std::vector<const ElementKind*>& kinds)
{
    mXml.open("xs:complexType", {{"name", kinds.back()->id + kJoint}});
    writeChildren(jointChildren(kinds), Wildcard::None);
    for (const JointAttribute& each : jointAttributes(kinds)) writeAttribute(*each.attribute, each.required);
    mXml.close();
}

} // namespace NuxoTool
