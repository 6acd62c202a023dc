// SPDX-License-Identifier: Apache-2.0
#include "check/rules/DescriptorRuleParts.h"

#include "Suggestion.h"
#include "Text.h"
#include "check/rules/FileRules.h"
#include "check/rules/SettingsPlaces.h"
#include "schema/GraphSchema.h"

#include <algorithm>
#include <iterator>
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

constexpr size_t kMostChildren = 2000; // to look through for names, for each name that is wrong

// Of elements without names only the first one could be found.
bool isAddressable(const XmlElement& element)
{
    return element.attribute("name") != nullptr || (element.name != "klink" && element.name != "options");
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

const ModelPart* misfitIn(const ModelNode& node)
{
    const std::string& type = node.isBase ? node.element->value("base_type") : node.kind;
    if (type != "sink" && type != "source" && type != "hw") return nullptr;
    const ModelPart* first = type == "sink" ? node.parts.firstOfKind("port") : nullptr;
    for (const char* const kind : {"kernel", "mux", "demux", "split", "klink", "cipf", "hw_bitmaps"}) {
        const ModelPart* const part = node.parts.firstOfKind(kind);
        if (part != nullptr && (first == nullptr || part < first)) first = part; // they stand in one array
    }
    return first;
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

bool isGeneration5(const DescriptorModel& model)
{
    return model.version().find("KVA5") != std::string::npos;
}

bool isBeforeGeneration7(const DescriptorModel& model)
{
    const std::string version = model.version();
    const auto says = [&version](const char* word) { return version.find(word) != std::string::npos; };
    return says("KVA5") || says("KVA6") || !says("KVA7");
}

std::string choiceOf(const std::vector<std::string>& names)
{
    constexpr size_t most = 12; // that a reader takes in
    if (names.size() <= most) return listOf(names, " or ");
    std::vector<std::string> first(names.begin(), names.begin() + most);
    first.push_back("one of " + std::to_string(names.size() - most) + " others");
    return listOf(first, " or ");
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

std::vector<std::string> namesBelow(const XmlElement& element)
{
    std::vector<std::string> names;
    if (element.children.size() > kMostChildren) return names;
    for (const XmlElement* const child : element.children) {
        if (isAddressable(*child)) names.push_back(filedName(*child));
    }
    if (names.size() > kMostCompared) names.clear();
    return names;
}

std::string suggestionAmong(const std::string& name, const std::vector<std::string>& names)
{
    return names.size() > kMostCompared ? "" : suggestionFor(name, names);
}

std::string suggestionForNode(const DescriptorModel& model, const std::vector<std::string>& names)
{
    if (names.empty() || model.nodes().size() > kMostCompared) return "";
    std::vector<std::string> ends;
    for (const ModelNode& node : model.nodes()) {
        if (names.size() == 2 && !node.isBase && node.part(names[1]) != nullptr)
            ends.push_back(fullName(node, names[1]));
    }
    const std::string suggestion = names.size() == 2 ? suggestionFor(names[0] + ':' + names[1], ends) : "";
    return suggestion.empty() ? suggestionFor(names[0], model.nodeNames()) : suggestion;
}

ShadowedItems::ShadowedItems(const DescriptorModel& model)
{
    for (const ModelNode& node : model.nodes()) {
        if (!isFirstOfName(model, node)) addNode(node);
        if (!node.namesBase()) addParts(node);
    }
}

void ShadowedItems::addNode(const ModelNode& node)
{
    mHasNode = true;
    mHasBaseNode = mHasBaseNode || node.isBase;
    if (node.isBase) return;
    mHasSink = mHasSink || node.kind == "sink";
    for (const ModelPart& part : node.parts) mPartNames.insert(part.name);
}

void ShadowedItems::addParts(const ModelNode& node)
{
    for (const ModelPart& part : node.parts) {
        if (part.element->attribute("name") != nullptr && node.part(part.name) != &part)
            mKinds[node.element].insert(part.kind);
    }
}

bool ShadowedItems::hasNodeWith(const std::string& part) const
{
    return part.empty() ? mHasSink : mPartNames.count(part) > 0;
}

bool ShadowedItems::hasPart(const ModelNode& node, std::initializer_list<std::string_view> kinds) const
{
    const auto found = mKinds.find(&bodyOf(node));
    return found != mKinds.end() && std::any_of(kinds.begin(), kinds.end(), [&found](std::string_view kind) {
               return found->second.count(kind) > 0;
           });
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

namespace {

// What may stand in an element that holds parts of nodes, null when nothing is known of it.
const ElementKind* kindOfBody(const XmlElement& body)
{
    const ElementKind* const nodes = body.parent == nullptr ? nullptr : descriptorSchema().childKind(*body.parent);
    return nodes == nullptr ? nullptr : nodes->childKind(body);
}

const XmlElement* childOf(const ModelNode& node, const XmlElement& holder, const std::string& name)
{
    if (&holder != &bodyOf(node)) return childFiled(holder, name);
    const ModelPart* const part = node.part(name);
    return part == nullptr ? nullptr : part->element;
}

// Attributes by which elements are found or joined, and those that nothing reads in such an element.
bool isFixed(const std::string& name, const ElementKind* kind)
{
    constexpr const char* always[] = {"name", "type", "peer", "base_type", "base_node"};
    if (std::find(std::begin(always), std::end(always), name) != std::end(always)) return true;
    const VocabularyEntry* const entry = vocabularyEntry(name);
    const bool isElsewhere = kind != nullptr && kind->attribute(name) == nullptr;
    return isElsewhere && entry != nullptr && entry->isAttribute && !entry->isSettable;
}

PathTarget::Fault faultOfEnd(const PathTarget& target, const ElementKind* kind)
{
    if (isFixed(target.name, kind)) return PathTarget::Fault::FixedAttribute;
    if (target.holder->attribute(target.name) != nullptr) return PathTarget::Fault::None;
    if (childOf(*target.node, *target.holder, target.name) != nullptr) return PathTarget::Fault::NotAnAttribute;
    return target.attribute == nullptr ? PathTarget::Fault::UnknownAttribute : PathTarget::Fault::None;
}

std::string reasonToStay(const std::string& attribute, const std::string& holder)
{
    if (attribute == "name")
        return "the name of " + holder + " is what everything finds it by; expected an attribute other than its name";
    if (attribute == "type" || attribute == "base_type")
        return "the type of " + holder + " tells how it is read and must stay; expected the right type where it is " +
               "written";
    if (attribute == "base_node")
        return "the base node of " + holder + " is chosen by then; expected base_node in the node itself";
    if (attribute == "peer")
        return "the peer of " + holder + " is set by connections; expected a connection in the graph, or the peer in " +
               "a setting";
    return named(attribute) + " of " + holder + " is read by nobody; expected an attribute that it can have";
}

} // namespace

PathTarget findTarget(const ModelNode& node, const std::vector<std::string>& names, size_t first)
{
    PathTarget target;
    target.node = &node;
    target.holder = &bodyOf(node);
    if (names.size() <= first) {
        target.fault = PathTarget::Fault::Empty;
        return target;
    }
    const ElementKind* kind = kindOfBody(*target.holder);
    for (size_t i = first; i + 1 < names.size(); ++i) {
        const XmlElement* const child = childOf(node, *target.holder, names[i]);
        if (child == nullptr || !isAddressable(*child)) {
            target.fault = child == nullptr ? PathTarget::Fault::UnknownPart : PathTarget::Fault::NotAddressable;
            target.name = names[i];
            return target;
        }
        kind = kind == nullptr ? nullptr : kind->childKind(*child);
        target.holder = child;
        target.namesBefore.push_back(names[i]);
    }
    target.name = names.back();
    target.attribute = knownAttribute(target.name);
    target.fault = faultOfEnd(target, kind);
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
               suggestionFor(target.name, namesBelow(*target.holder));
    case PathTarget::Fault::NotAnAttribute:
        return named(target.name) + " of " + holder + " is an element; expected an attribute behind it, such as " +
               named(target.name + ":enabled");
    case PathTarget::Fault::NotAddressable:
        return "elements " + named(target.name) + " of " + holder +
               " have no names to tell them apart; expected the change where they are written";
    case PathTarget::Fault::FixedAttribute: return reasonToStay(target.name, holder);
    case PathTarget::Fault::UnknownAttribute: break;
    }
    // Whoever forgets the attribute may have meant a part.
    const std::string part = closestOf(target.name, namesBelow(*target.holder));
    const std::string attribute = suggestionFor(target.name, attributeNames());
    return named(target.name) + " is no attribute that " + holder + " can have; expected a name of the vocabulary" +
           (attribute.empty() && !part.empty() ? "; did you mean '" + part + "'?" : attribute);
}

std::string valueFault(const AttributeKind* attribute, const std::string& text)
{
    if (attribute == nullptr) return "";
    const std::vector<std::string>& choices = attribute->choices;
    std::string form = expectedForm(*attribute, text);
    if (!choices.empty() && std::find(choices.begin(), choices.end(), text) == choices.end())
        form = choiceOf(choices) + suggestionFor(text, choices);
    if (!form.empty()) return named(text) + " is no value of " + attribute->name + "; expected " + form;
    if (!attribute->isInteger()) return "";
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
