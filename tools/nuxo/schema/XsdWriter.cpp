// SPDX-License-Identifier: Apache-2.0
#include "schema/XsdWriter.h"

#include "Text.h"
#include "document/ElementName.h"
#include "schema/XsdParts.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace NuxoTool {

namespace {

using Wildcard = XsdParts::Wildcard;

const ElementKind& kindNamed(const std::vector<const ElementKind*>& kinds, const std::string& id)
{
    return **std::find_if(kinds.begin(), kinds.end(), [&id](const ElementKind* kind) { return kind->id == id; });
}

// An element at the top of the schema, where wildcards find it.
void writeTopElement(XsdParts& parts, const ElementKind& kind)
{
    parts.openElement(kind.name, kind.documentation, kind.id);
    parts.writeUniqueness(kind);
    parts.xml().close();
}

// In comments two dashes must not follow each other.
std::string commentable(std::string text)
{
    for (size_t at = text.find("--"); at != std::string::npos; at = text.find("--", at)) text.replace(at, 2, "-");
    return text;
}

Wildcard wildcardOf(const ElementKind& kind)
{
    if (kind.openChild == nullptr) return Wildcard::None;
    return kind.children.empty() ? Wildcard::Skip : Wildcard::Lax;
}

// ---- settings of a known descriptor ----

// Writes declarations for the names of a descriptor.
class KnownNames {
public:
    KnownNames(XsdParts& parts, const DescriptorModel& descriptor) : mParts(parts), mDescriptor(descriptor) {}

    void writeTypes();
    /// The types of settings and of sensor modes.
    void writeSettings();
    void writeMode();

private:
    // Something that settings can speak of, with what is below it in the descriptor.
    struct Named {
        std::string name;
        std::string kind;
        const XmlElement* element = nullptr; ///< null when the descriptor does not write it
    };
    using NamedList = std::vector<Named>;

    static void add(NamedList& list, const Named& item);
    static NamedList below(const Named& item);
    static NamedList partsOf(const ModelNode& node);
    void write(const Named& item, const std::string& of, size_t level);
    void writeList(const NamedList& list, const std::string& of, size_t level);

    XsdParts& mParts;
    const DescriptorModel& mDescriptor;
};

// The type of values at a level below a setting: nodes, parts, sides and frames.
constexpr const char* kTypeOfLevel[] = {"settings_node", "settings_part", "settings_side", "settings_frame"};

void KnownNames::writeTypes()
{
    for (const char* const id : kTypeOfLevel) mParts.writeType(kindNamed(settingsKinds(), id), Wildcard::None);
}

// One of each name that elements can have: a schema cannot have two, and the library finds the first one.
void KnownNames::add(NamedList& list, const Named& item)
{
    const auto isSame = [&item](const Named& other) { return other.name == item.name; };
    const bool speaksOfNothing = item.kind == "options" || item.kind == "klink" || item.kind == "attribute";
    if (speaksOfNothing || !isElementName(item.name)) return;
    if (std::none_of(list.begin(), list.end(), isSame)) list.push_back(item);
}

// A kernel has an input and an output even when the descriptor does not mention them.
KnownNames::NamedList KnownNames::below(const Named& item)
{
    NamedList list;
    if (item.element != nullptr) {
        for (const XmlElement* const child : item.element->children) add(list, {filedName(*child), child->name, child});
    }
    if (item.kind != "kernel") return list;
    for (const char* const name : {"input", "output"}) add(list, {name, name, nullptr});
    return list;
}

KnownNames::NamedList KnownNames::partsOf(const ModelNode& node)
{
    NamedList list;
    for (const ModelPart& part : node.parts) add(list, {part.name, part.kind, part.element});
    return list;
}

void KnownNames::writeList(const NamedList& list, const std::string& of, size_t level)
{
    if (list.empty()) return;
    mParts.openChoice();
    for (const Named& item : list) write(item, of, level);
    mParts.closeChoice();
}

void KnownNames::write(const Named& item, const std::string& of, size_t level)
{
    const bool saysKind = item.kind != item.name && !item.kind.empty();
    const std::string text =
        "Values for the " + (saysKind ? item.kind + ' ' : std::string()) + item.name + " of " + of + '.';
    const bool isLast = level + 1 == std::size(kTypeOfLevel);
    const NamedList inside = isLast ? NamedList() : below(item);
    if (inside.empty()) {
        mParts.writeElement(item.name, kTypeOfLevel[level], text);
        return;
    }
    mParts.openElement(item.name, text);
    mParts.xml().open("xs:complexType");
    writeList(inside, of + ':' + item.name, level + 1);
    mParts.writeAttributes(kindNamed(settingsKinds(), kTypeOfLevel[level]));
    mParts.xml().close();
    mParts.xml().close();
}

void KnownNames::writeSettings()
{
    const ElementKind& kind = kindNamed(settingsKinds(), "settings");
    XmlText& xml = mParts.xml();
    xml.open("xs:complexType", {{"name", kind.id}});
    mParts.openChoice();
    std::set<std::string> known;
    for (const ElementKind* const child : kind.children) {
        mParts.writeElement(child->name, child->id, child->documentation);
        known.insert(child->name);
    }
    for (const ModelNode& node : mDescriptor.nodes()) {
        if (node.isBase || !isElementName(node.name) || !known.insert(node.name).second) continue;
        mParts.openElement(node.name, "Values for the " + node.kind + ' ' + node.name +
                                          ", which is part of the setting when it has this element.");
        xml.open("xs:complexType");
        writeList(partsOf(node), node.name, 1);
        mParts.writeAttributes(kindNamed(settingsKinds(), kTypeOfLevel[0]));
        xml.close();
        xml.close();
    }
    mParts.closeChoice();
    mParts.writeAttributes(kind);
    xml.close();
}

// A mode speaks of the parts of whatever source it is for.
void KnownNames::writeMode()
{
    const ElementKind& kind = kindNamed(settingsKinds(), "mode");
    mParts.xml().open("xs:complexType", {{"name", kind.id}});
    mParts.openChoice();
    for (const ElementKind* const child : kind.children)
        mParts.writeElement(child->name, child->id, child->documentation);
    NamedList list;
    for (const ModelNode& node : mDescriptor.nodes()) {
        if (node.isBase || node.kind != "source") continue;
        for (const Named& part : partsOf(node)) add(list, part);
    }
    const std::vector<std::string> stages = kind.childNames();
    for (const Named& part : list) {
        if (std::find(stages.begin(), stages.end(), part.name) == stages.end()) write(part, "the sensor", 1);
    }
    mParts.closeChoice();
    mParts.writeAttributes(kind);
    mParts.xml().close();
}

void writeKnownSettings(XsdParts& parts, const DescriptorModel& descriptor)
{
    KnownNames names(parts, descriptor);
    names.writeTypes();
    names.writeSettings();
    names.writeMode();
}

} // namespace

std::string descriptorXsd()
{
    XsdParts parts;
    parts.openSchema("XML schema of graph descriptors, written by: nuxo schema descriptor");
    const std::vector<const ElementKind*>& kinds = descriptorKinds();
    writeTopElement(parts, *kinds.front());
    // What a capture back end may hold beside units of its own.
    for (const ElementKind* const child : kindNamed(kinds, "hw").children) writeTopElement(parts, *child);
    parts.writeSharedTypes();
    parts.writeSettingsGroup();
    for (const ElementKind* const kind : kinds) {
        if (!kind->name.empty()) parts.writeType(*kind, wildcardOf(*kind));
    }
    parts.writeJointType({&kindNamed(kinds, "derived_node"), &kindNamed(kinds, "node")});
    return parts.finish();
}

std::string settingsXsd(const DescriptorModel* descriptor)
{
    XsdParts parts;
    const std::string origin = descriptor == nullptr ? "" : ' ' + descriptor->document().path();
    parts.openSchema("XML schema of graph settings, written by: nuxo schema settings" + commentable(printable(origin)));
    const std::vector<const ElementKind*>& kinds = settingsKinds();
    for (const char* const id : {"graph_settings", "mode", "mbr_data"}) writeTopElement(parts, kindNamed(kinds, id));
    parts.writeSharedTypes();
    parts.writeSettingsGroup();
    if (descriptor != nullptr) writeKnownSettings(parts, *descriptor);
    for (const ElementKind* const kind : kinds) {
        const bool isKnown = descriptor != nullptr && (kind->id == "settings" || kind->id == "mode");
        if (!kind->name.empty() && !isKnown) parts.writeType(*kind, wildcardOf(*kind));
    }
    return parts.finish();
}

} // namespace NuxoTool
