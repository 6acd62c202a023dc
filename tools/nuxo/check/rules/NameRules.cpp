// SPDX-License-Identifier: Apache-2.0
// Names and numbers by which elements are found: whether they are unique, and whether anything can speak of them.
#include "Text.h"
#include "check/rules/FileRules.h"
#include "document/ElementName.h"
#include "model/DescriptorModel.h"

#include <algorithm>
#include <map>
#include <set>

namespace NuxoTool {

namespace {

bool isPartKind(const ElementKind& kind)
{
    constexpr const char* repeatable[] = {"klink", "options", "attribute"};
    return std::find(std::begin(repeatable), std::end(repeatable), kind.name) == std::end(repeatable);
}

bool isNodeKind(const PlacedElement& place)
{
    return place.parentKind != nullptr && place.parentKind->id == "nodes";
}

// Direct children of a node that are found by their names.
bool isPart(const PlacedElement& place)
{
    const XmlElement* const parent = place.element->parent;
    const bool isInNode = parent != nullptr && parent->parent != nullptr && parent->parent->name == "nodes" &&
                          parent->parent->parent != nullptr && parent->parent->parent->parent == nullptr;
    return isInNode && isPartKind(*place.kind);
}

bool isDescriptor(const XmlDocument& document)
{
    return document.root() != nullptr && document.root()->name == descriptorSchema().name;
}

// Finds what was there before, by parent and text.
class FirstOnes {
public:
    /// The first element of that text in the parent, null when @p element is it.
    const XmlElement* before(const XmlElement& element, const std::string& text)
    {
        const auto [place, isNew] = mFirst.emplace(std::make_pair(element.parent, text), &element);
        return isNew ? nullptr : place->second;
    }

private:
    std::map<std::pair<const XmlElement*, std::string>, const XmlElement*> mFirst; // only looked up
};

void checkDuplicateNames(const XmlDocument& document, RuleReporter& reporter)
{
    if (!isDescriptor(document)) return;
    FirstOnes names;
    for (const PlacedElement& place : knownElements(document)) {
        const bool isNode = isNodeKind(place);
        if (place.parentKind == nullptr || (!isNode && !isPart(place))) continue;
        const std::string& name = filedName(*place.element);
        const XmlElement* const first = names.before(*place.element, name);
        if (first == nullptr || (place.kind->single && first->name == place.element->name)) continue;
        const std::string where = isNode ? "node" : "part of " + named(filedName(*place.element->parent));
        reporter.report(*place.element, "name",
                        "another " + where + " has the name " + named(name) +
                            "; expected names that differ, only the first one is found");
        reporter.note(*first, "name", "the first one is here");
    }
}

// The attribute that tells elements of a kind apart, "" for other kinds.
std::string keyOf(const ElementKind& kind)
{
    if (kind.id == "settings") return "key";
    if (kind.id == "graph") return "id";
    if (kind.id == "mode") return "name";
    return kind.id == "mbr_stream" ? "id" : "";
}

void checkDuplicateKeys(const XmlDocument& document, RuleReporter& reporter)
{
    FirstOnes keys;
    for (const PlacedElement& place : knownElements(document)) {
        const std::string key = keyOf(*place.kind);
        const XmlAttribute* const attribute = key.empty() ? nullptr : place.element->attribute(key);
        if (attribute == nullptr) continue;
        const std::optional<int32_t> number = wholeInteger(attribute->value);
        if (key != "name" && !number) continue;
        const std::string text = number && key != "name" ? std::to_string(*number) : attribute->value;
        const XmlElement* const first = keys.before(*place.element, place.kind->id + ' ' + text);
        if (first == nullptr) continue;
        reporter.report(*place.element, key,
                        "another " + named(place.element->name) + " has the " + key + ' ' + printable(text) +
                            "; expected one of its own, a client gets the first one");
        reporter.note(*first, key, "the first one is here");
    }
}

// What is wrong with a name that an element of settings shall have, "" for nothing.
std::string nameTrouble(const std::string& name)
{
    if (name.empty()) return "is empty";
    const auto isCapital = [](char character) { return character >= 'A' && character <= 'Z'; };
    if (std::any_of(name.begin(), name.end(), isCapital)) return "has capital letters";
    if (name.find(':') != std::string::npos) return "has a ':', which parts the names of a path";
    const auto wrong = std::find_if_not(name.begin(), name.end(), isElementNameCharacter);
    if (wrong != name.end()) return "has a " + quoted(std::string(1, *wrong)) + ", which element names cannot have";
    if (!isElementNameStart(name[0]))
        return "starts with " + quoted(name.substr(0, 1)) + ", which element names cannot";
    return isElementName(name) ? "" : "has signs that element names cannot have";
}

std::string mended(const std::string& name)
{
    std::string better = lowerCase(name);
    for (char& character : better) {
        if (!isElementNameCharacter(character) || !isAscii(character)) character = '_';
    }
    if (better.empty() || nameTrouble(better).empty()) return better;
    return "n" + better;
}

// Finds better names, by the names that others have in the same place.
class BetterNames {
public:
    /// "" when there is none, or another element has it.
    std::string of(const XmlElement& element)
    {
        const std::string better = mended(element.value("name"));
        return taken(*element.parent).count(better) > 0 ? "" : better;
    }

private:
    const std::set<std::string>& taken(const XmlElement& parent)
    {
        std::set<std::string>& names = mTaken[&parent];
        if (names.empty()) {
            for (const XmlElement* const child : parent.children) names.insert(filedName(*child));
        }
        return names;
    }

    std::map<const XmlElement*, std::set<std::string>> mTaken; // only looked up
};

void checkUnaddressable(const XmlDocument& document, RuleReporter& reporter)
{
    if (!isDescriptor(document)) return;
    BetterNames betterNames;
    for (const PlacedElement& place : knownElements(document)) {
        const XmlAttribute* const name = place.element->attribute("name");
        const AttributeKind* const kind = place.kind->attribute("name");
        if (name == nullptr || kind == nullptr || kind->value != ValueKind::Name) continue;
        const std::string trouble = nameTrouble(name->value);
        if (trouble.empty()) continue;
        const std::string better = betterNames.of(*place.element);
        reporter.report(*place.element, "name",
                        "the name " + quoted(name->value) + ' ' + trouble +
                            ", so settings cannot speak of it; expected lower case letters, digits and '_'" +
                            (better.empty() ? "" : ", such as " + named(better)));
    }
}

// Why a node must not have a name, "" for other names. Nodes stand beside the graph and the attributes of the setting in
// a built graph.
std::string nodeNameTaken(const std::string& name)
{
    if (name == "na") return "stands for names that do not exist";
    if (name == "graph") return "is that of the graph itself in a built graph";
    if (name == "options") return "is that of lists of options, which settings never change";
    if (name == "mbr_data") return "is that of the limits in settings";
    constexpr const char* attributes[] = {"key", "id", "description", "dvs", "tnr", "fps"};
    const auto isSame = [&name](const char* attribute) { return name == attribute; };
    const bool isTaken = std::any_of(std::begin(attributes), std::end(attributes), isSame);
    return isTaken ? "is that of an attribute of settings, which stands beside the nodes in a built graph" : "";
}

// The same for a part of a node: it stands beside the node's attributes.
std::string partNameTaken(const XmlElement& node, const XmlElement& part, const std::string& name)
{
    if (name == "na") return "stands for names that do not exist";
    if (name == "options" || name == "klink") return "is that of other elements of a node, for which it is taken";
    const auto isOneOf = [&name](const std::vector<const char*>& names) {
        return std::any_of(names.begin(), names.end(), [&name](const char* other) { return name == other; });
    };
    const bool isAttribute = node.attribute(name) != nullptr || isOneOf({"name", "type"}) ||
                             (node.name == "base_node" && isOneOf({"pg_id", "stream_id", "exec_ctx_id"}));
    if (isAttribute) return "is that of an attribute of the node, which is found instead";
    const bool isSensorStage = isOneOf({"pixel_array", "binner", "scaler"}) && part.name != name;
    return node.name == "source" && isSensorStage ? "is that of a stage of sensors, for which it is taken" : "";
}

void checkReserved(const XmlDocument& document, RuleReporter& reporter)
{
    if (!isDescriptor(document)) return;
    for (const PlacedElement& place : knownElements(document)) {
        const XmlElement& element = *place.element;
        const XmlAttribute* const name = element.attribute("name");
        const bool isBase = element.name == "base_node";
        if (name == nullptr || (!isNodeKind(place) && !isPart(place))) continue;
        std::string reason;
        if (isPart(place)) {
            reason = partNameTaken(*element.parent, element, name->value);
        } else if (!isBase || name->value == "na") {
            reason = nodeNameTaken(name->value);
        }
        if (reason.empty()) continue;
        reporter.report(element, "name", "the name " + named(name->value) + ' ' + reason + "; expected another name");
    }
}

} // namespace

std::vector<Rule> nameRules()
{
    return {
        {"duplicate-name",
         RuleSeverity::Error,
         "two nodes, or two parts of a node, of one name",
         "Nodes and their parts are found by name, and the library takes the first one: connections, differences, "
         "options and settings never reach the second. Nodes and base nodes share their names; so do all ports, "
         "kernels and routing elements of a node, and elements without a name count by their element name. Give every "
         "one a name of its own.",
         {},
         checkDuplicateNames},
        {"duplicate-key",
         RuleSeverity::Error,
         "two settings, graphs or sensor modes of one number or name",
         "A setting is chosen by its key, a graph by its id, a sensor mode by its name. When two share it, the second "
         "graph or mode is never used, and a client that asks for the setting gets the first or both. Give every one a "
         "number or name of its own.",
         {},
         checkDuplicateKeys},
        {"unaddressable-name",
         RuleSeverity::Error,
         "a name that settings cannot speak of",
         "Settings name nodes and their parts by elements, and element names are read in lower case: a port named "
         "Main_Out is never found. A ':' parts the names of a path, and blanks, ',' and other signs cannot stand in "
         "element names; nor can these start with a digit. Use lower case letters, digits and '_', as in main_out.",
         {},
         checkUnaddressable},
        {"reserved-name",
         RuleSeverity::Error,
         "a name that is taken in a built graph",
         "A built graph holds its nodes beside the attributes of the setting, and a node its parts beside its own "
         "attributes, all of them found by name. A node named id or graph, or a port named stream_id in a node that "
         "states its stream_id, is therefore not found, or something else is found in its place, and building fails or "
         "loses connections without a message. Other words of the format, such as width or kernel, do no harm as "
         "names.",
         {},
         checkReserved},
    };
}

} // namespace NuxoTool
