// SPDX-License-Identifier: Apache-2.0
#include "check/rules/DescriptorRuleParts.h"

#include "Suggestion.h"
#include "Text.h"
#include "check/rules/SettingsPlaces.h"
#include "schema/GraphSchema.h"

#include <algorithm>
#include <set>

namespace NuxoTool {

namespace {

bool isFirstOfName(const DescriptorModel& model, const ModelNode& node)
{
    return model.node(node.name) == &node;
}

std::set<const XmlElement*> usedBases(const DescriptorModel& model)
{
    std::set<const XmlElement*> bases;
    for (const ModelNode& node : model.nodes()) {
        if (node.base != nullptr) bases.insert(node.base);
    }
    return bases;
}

bool isBelow(const XmlElement* element, const XmlElement& top)
{
    while (element != nullptr && element != &top) element = element->parent;
    return element != nullptr;
}

std::vector<std::string> childNames(const XmlElement& element)
{
    std::vector<std::string> names;
    for (const XmlElement* const child : element.children) names.push_back(filedName(*child));
    return names;
}

std::vector<std::string> attributeNames()
{
    std::vector<std::string> names;
    for (const VocabularyEntry& entry : vocabulary()) {
        if (entry.isAttribute) names.push_back(entry.attribute.name);
    }
    return names;
}

const AttributeKind* knownAttribute(const std::string& name)
{
    const VocabularyEntry* const entry = vocabularyEntry(name);
    return entry != nullptr && entry->isAttribute ? &entry->attribute : nullptr;
}

} // namespace

std::vector<const ModelNode*> usableNodes(const DescriptorModel& model)
{
    std::vector<const ModelNode*> found;
    for (const ModelNode& node : model.nodes()) {
        if (!node.isBase && node.isWhole() && isFirstOfName(model, node)) found.push_back(&node);
    }
    return found;
}

std::vector<const ModelNode*> writtenNodes(const DescriptorModel& model)
{
    std::vector<const ModelNode*> found;
    for (const ModelNode& node : model.nodes()) {
        if (!node.namesBase() && isFirstOfName(model, node)) found.push_back(&node);
    }
    return found;
}

std::vector<const ModelNode*> effectiveNodes(const DescriptorModel& model)
{
    std::vector<const ModelNode*> found = usableNodes(model);
    const std::set<const XmlElement*> used = usedBases(model);
    for (const ModelNode& node : model.nodes()) {
        if (node.isBase && isFirstOfName(model, node) && used.count(node.element) == 0) found.push_back(&node);
    }
    return found;
}

bool isGroup(const ModelNode& node)
{
    const std::string& kind = node.isBase ? node.element->value("base_type") : node.kind;
    return kind == "program_group" || kind == "compute_block";
}

const XmlElement& bodyOf(const ModelNode& node)
{
    return node.base == nullptr ? *node.element : *node.base;
}

std::vector<const ModelPart*> distinctParts(const ModelNode& node, std::string_view kind)
{
    std::vector<const ModelPart*> found = node.partsOfKind(kind);
    found.erase(std::remove_if(found.begin(), found.end(),
                               [&node](const ModelPart* part) { return node.part(part->name) != part; }),
                found.end());
    return found;
}

std::vector<const XmlElement*> linksOf(const ModelNode& node)
{
    std::vector<const XmlElement*> links;
    for (const ModelPart& part : node.parts) {
        if (part.name == "klink" || part.kind == "klink") links.push_back(part.element);
    }
    return links;
}

bool isBeforeGeneration7(const DescriptorModel& model)
{
    const std::string version = model.version();
    const auto says = [&version](const char* word) { return version.find(word) != std::string::npos; };
    return says("KVA5") || says("KVA6") || !says("KVA7");
}

std::vector<std::string> listItems(std::string_view text)
{
    std::vector<std::string> items;
    for (;;) {
        const size_t comma = text.find(',');
        items.emplace_back(text.substr(0, comma));
        if (comma == std::string_view::npos) return items;
        text.remove_prefix(comma + 1);
    }
}

std::string suggestionForNode(const DescriptorModel& model, const std::vector<std::string>& names)
{
    constexpr size_t most = 1000; // nodes to compare with, for each name that is wrong
    if (names.empty() || model.nodes().size() > most) return "";
    std::vector<std::string> ends;
    for (const ModelNode& node : model.nodes()) {
        if (names.size() == 2 && !node.isBase && node.part(names[1]) != nullptr)
            ends.push_back(fullName(node, names[1]));
    }
    const std::string suggestion = names.size() == 2 ? suggestionFor(names[0] + ':' + names[1], ends) : "";
    return suggestion.empty() ? suggestionFor(names[0], model.nodeNames()) : suggestion;
}

std::string fullName(const ModelNode& node, std::string_view part)
{
    return part.empty() ? node.name : node.name + ':' + std::string(part);
}

bool isOwn(const ModelNode& node, const std::optional<ModelValue>& value)
{
    return value && isBelow(value->element, *node.element);
}

ValuePlace placeOf(const ModelNode& node, const std::optional<ModelValue>& value)
{
    return isOwn(node, value) ? placeInside(node, value) : ValuePlace{node.element, ""};
}

ValuePlace placeInside(const ModelNode& node, const std::optional<ModelValue>& value)
{
    return value ? ValuePlace{value->element, value->attribute} : ValuePlace{node.element, ""};
}

PathTarget findTarget(const XmlElement& start, const std::vector<std::string>& names, size_t first)
{
    PathTarget target;
    target.holder = &start;
    if (names.size() <= first) {
        target.fault = PathTarget::Fault::Empty;
        return target;
    }
    for (size_t i = first; i + 1 < names.size(); ++i) {
        const XmlElement* const child = childFiled(*target.holder, names[i]);
        if (child == nullptr) {
            target.fault = PathTarget::Fault::UnknownPart;
            target.name = names[i];
            return target;
        }
        target.holder = child;
        target.namesBefore.push_back(names[i]);
    }
    target.name = names.back();
    target.attribute = knownAttribute(target.name);
    if (target.holder->attribute(target.name) != nullptr) return target;
    if (childFiled(*target.holder, target.name) != nullptr) {
        target.fault = PathTarget::Fault::NotAnAttribute;
    } else if (target.attribute == nullptr) {
        target.fault = PathTarget::Fault::UnknownAttribute;
    }
    return target;
}

std::string faultText(const PathTarget& target, const std::string& from)
{
    std::string holder = from;
    if (!target.namesBefore.empty()) holder = named(target.namesBefore.back()) + " of " + from;
    switch (target.fault) {
    case PathTarget::Fault::None: return "";
    case PathTarget::Fault::Empty: return "the path is empty; expected names joined by ':', an attribute last";
    case PathTarget::Fault::UnknownPart:
        return holder + " has no part " + named(target.name) +
               "; expected one of its ports, kernels or other elements" +
               suggestionFor(target.name, childNames(*target.holder));
    case PathTarget::Fault::NotAnAttribute:
        return named(target.name) + " of " + holder + " is an element; expected an attribute behind it, such as " +
               named(target.name + ":enabled");
    case PathTarget::Fault::UnknownAttribute: break;
    }
    // Whoever forgets the attribute may have meant a part.
    const std::string part = closestOf(target.name, childNames(*target.holder));
    const std::string attribute = suggestionFor(target.name, attributeNames());
    return named(target.name) + " is no attribute that " + holder + " can have; expected a name of the vocabulary" +
           (attribute.empty() && !part.empty() ? "; did you mean '" + part + "'?" : attribute);
}

std::string valueFault(const AttributeKind* attribute, const std::string& text)
{
    if (attribute == nullptr || !attribute->isInteger()) return "";
    const std::optional<int32_t> number = wholeInteger(text);
    const bool isBounded = attribute->least != std::numeric_limits<int32_t>::min() ||
                           attribute->most != std::numeric_limits<int32_t>::max();
    std::string range = "a decimal number of 32 bits";
    if (isBounded && attribute->most == std::numeric_limits<int32_t>::max()) {
        range = "a decimal number from " + std::to_string(attribute->least);
    } else if (isBounded) {
        range = "a decimal number from " + std::to_string(attribute->least) + " to " + std::to_string(attribute->most);
    }
    if (number && *number >= attribute->least && *number <= attribute->most) return "";
    return named(text) + " is no value of " + attribute->name + "; expected " + range;
}

bool isKnownElement(std::string_view name)
{
    const VocabularyEntry* const entry = vocabularyEntry(name);
    return entry != nullptr && entry->isElement;
}

} // namespace NuxoTool
