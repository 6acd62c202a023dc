// SPDX-License-Identifier: Apache-2.0
#include "diff/DiffTree.h"

#include "TreeView.h"

#include <nuxo/NuxoStatus.h>
#include <nuxo/tree/NuxoKeys.h>

#include <algorithm>
#include <limits>
#include <string_view>

namespace NuxoTool {

using NUXO::GraphConfigItem;
using NUXO::GraphConfigNode;
using Number = DiffNumbers::Number;

namespace {

constexpr Number kPartEnd = std::numeric_limits<Number>::max(); // no number of a text or list

// What the keys name that make an identity, so that their values are no differences.
void dropAttributes(const DiffTrees& trees, DiffElement& element, const std::vector<std::string_view>& names)
{
    auto& attributes = element.attributes;
    attributes.erase(std::remove_if(attributes.begin(), attributes.end(),
                                    [&](const DiffAttribute& attribute) {
                                        const std::string& name = trees.text(attribute.name);
                                        return std::find(names.begin(), names.end(), name) != names.end();
                                    }),
                     attributes.end());
}

// The items of a list joined by ',', each once, in alphabetical order.
std::vector<std::string> itemsOf(const std::string& list)
{
    std::vector<std::string> items;
    for (size_t start = 0; start <= list.size();) {
        const size_t end = std::min(list.find(',', start), list.size());
        items.push_back(list.substr(start, end - start));
        start = end + 1;
    }
    std::sort(items.begin(), items.end());
    items.erase(std::unique(items.begin(), items.end()), items.end());
    return items;
}

bool hasText(const GraphConfigNode& node, uint32_t key)
{
    std::string text;
    return node.getValue(key, text) == StatusOk;
}

} // namespace

Number DiffNumbers::ofText(const std::string& text)
{
    const auto [entry, isNew] = mTextNumbers.emplace(text, static_cast<Number>(mTexts.size()));
    if (isNew) mTexts.push_back(&entry->first);
    return entry->second;
}

Number DiffNumbers::ofList(const std::vector<Number>& list)
{
    const std::string bytes(reinterpret_cast<const char*>(list.data()), list.size() * sizeof(Number));
    return mListNumbers.emplace(bytes, static_cast<Number>(mListNumbers.size())).first->second;
}

DiffTrees::DiffTrees()
{
    for (const auto& [name, key] : NUXO::nuxo_key_map) mKeyNames.emplace(key, &name);
    mNumbers.ofText(""); // number 0
}

const std::string& DiffTrees::keyName(uint32_t key) const
{
    static const std::string unknown = "?";
    const auto known = mKeyNames.find(key);
    return known == mKeyNames.end() ? unknown : *known->second;
}

std::unique_ptr<DiffElement> DiffTrees::read(const GraphConfigNode& root, bool chosen)
{
    auto element = std::make_unique<DiffElement>();
    element->node = &root;
    addContent(*element);
    if (chosen) dropAttributes(*this, *element, {"key"});
    numberElement(*element);
    return element;
}

// Parsed trees are at most NUXOParser::kMaxDepth deep and built ones a small multiple of that, so recursion is bounded.
void DiffTrees::addContent(DiffElement& element)
{
    std::vector<GraphConfigNode::iterator> nodes;
    for (auto it = element.node->begin(); it != element.node->end(); ++it) {
        if (it->second->type == GraphConfigItem::INT || it->second->type == GraphConfigItem::STRING) {
            addAttribute(element, it);
        } else if (dynamic_cast<const GraphConfigNode*>(it->second) != nullptr) {
            nodes.push_back(it);
        }
    }
    std::stable_sort(element.attributes.begin(), element.attributes.end(),
                     [this](const DiffAttribute& a, const DiffAttribute& b) { return text(a.name) < text(b.name); });

    element.children.resize(nodes.size()); // once: they point at each other
    for (size_t i = 0; i < nodes.size(); ++i) {
        DiffElement& child = element.children[i];
        child.node = static_cast<const GraphConfigNode*>(nodes[i]->second);
        child.item = nodes[i];
        child.parent = &element;
        child.key = nodes[i]->first;
        child.name = mNumbers.ofText(keyName(child.key));
        child.isOneOfMany =
            (i > 0 && nodes[i - 1]->first == child.key) || (i + 1 < nodes.size() && nodes[i + 1]->first == child.key);
        addContent(child);
        identify(child);
        numberElement(child);
        element.size += child.size;
    }
}

void DiffTrees::addAttribute(DiffElement& element, GraphConfigNode::iterator item)
{
    DiffAttribute attribute;
    attribute.item = item;
    attribute.name = mNumbers.ofText(keyName(item->first));
    std::string value;
    if (item->second->type == GraphConfigItem::STRING) {
        static_cast<void>(item->second->getValue(value)); // an unreadable text counts as empty
    } else {
        int integer = 0;
        static_cast<void>(item->second->getValue(integer));
        const bool isKeyName = item->first == NUXO_KEY_ATTRIBUTE;
        attribute.kind = isKeyName ? DiffAttribute::Kind::KeyName : DiffAttribute::Kind::Integer;
        value = isKeyName ? keyName(static_cast<uint32_t>(integer)) : std::to_string(integer);
    }
    attribute.value = mNumbers.ofText(value);
    attribute.meaning = mNumbers.ofText((attribute.kind == DiffAttribute::Kind::Text ? "t" : "n") + value);
    element.attributes.push_back(attribute);
}

// @param parts  what the identity is made of besides the element's name
void DiffTrees::setIdentity(DiffElement& element, const std::string& label, const std::vector<std::string>& parts)
{
    std::string identity = text(element.name);
    for (const std::string& part : parts) identity += '\1' + part; // which no XML text contains
    element.identity = mNumbers.ofText(identity);
    element.label = mNumbers.ofText(label);
    element.orderGroups = {element.label};
}

void DiffTrees::identify(DiffElement& element)
{
    if (identifyNumbered(element) || identifyEnds(element) || identifyByText(element)) return;
    const std::string& name = text(element.name);
    setIdentity(element, name, {});
    if (textOf(*element.node, NUXO_KEY_NAME) == name) dropAttributes(*this, element, {"name"});
    element.mayBeRenamed = !element.attributes.empty() || !element.children.empty();
}

// Settings by key, graphs by id, options lists by what they govern; outputs and inputs of a kernel by id.
bool DiffTrees::identifyNumbered(DiffElement& element)
{
    const std::string& name = text(element.name);
    const uint32_t parentKey = element.parent->key;
    if (const auto key = optionalInteger(*element.node, NUXO_KEY_KEY); key && element.key == NUXO_KEY_SETTINGS) {
        setIdentity(element, name + ':' + std::to_string(*key), {std::to_string(*key)});
        dropAttributes(*this, element, {"key"});
        return element.mayBeRenamed = true;
    }
    if (const auto governed = optionalInteger(*element.node, NUXO_KEY_ATTRIBUTE);
        governed && element.key == NUXO_KEY_OPTIONS) {
        const std::string& attribute = keyName(static_cast<uint32_t>(*governed));
        setIdentity(element, name + '[' + attribute + ']', {attribute});
        dropAttributes(*this, element, {"attribute"});
        return element.mayBeRenamed = true;
    }
    const auto id = optionalInteger(*element.node, NUXO_KEY_ID);
    if (id && element.key == NUXO_KEY_GRAPH && parentKey == NUXO_KEY_GRAPHS) {
        setIdentity(element, std::to_string(*id), {std::to_string(*id)});
        dropAttributes(*this, element, {"id"});
        return element.mayBeRenamed = true;
    }
    if (element.key != NUXO_KEY_INPUT && element.key != NUXO_KEY_OUTPUT) return false;
    if (hasText(*element.node, NUXO_KEY_NAME)) return false; // a port of that name
    const std::string number = id ? std::to_string(*id) : "";
    setIdentity(element, id && element.isOneOfMany ? name + '[' + number + ']' : name, {number});
    element.orderGroups = {element.name};
    return element.hasLooseIdentity = true;
}

// Connections and kernel links. The library goes through those of one end in their order.
bool DiffTrees::identifyEnds(DiffElement& element)
{
    const bool isLink = element.key == NUXO_KEY_KLINK;
    if (!isLink && element.key != NUXO_KEY_CONNECTION) return false;
    const std::string from = textOf(*element.node, NUXO_KEY_SOURCE);
    const std::string to = textOf(*element.node, isLink ? NUXO_KEY_DESTINATION : NUXO_KEY_SINK);
    setIdentity(element, text(element.name) + '[' + from + " -> " + to + ']', {from, to});
    dropAttributes(*this, element, {"source", isLink ? "destination" : "sink"});
    const std::string groups = isLink ? "links " : "connections ";
    element.orderGroups.push_back(mNumbers.ofText(groups + "from " + from));
    element.orderGroups.push_back(mNumbers.ofText(groups + "to " + to));
    return true;
}

// Overrides and differences from a base node by target, sensor modes by name, options by the values that choose them.
bool DiffTrees::identifyByText(DiffElement& element)
{
    const std::string& name = text(element.name);
    const uint32_t parentKey = element.parent->key;
    if (hasText(*element.node, NUXO_KEY_TARGET)) {
        const std::string target = textOf(*element.node, NUXO_KEY_TARGET);
        setIdentity(element, name + '[' + target + ']', {target});
        dropAttributes(*this, element, {"target"});
        return true;
    }
    if (parentKey == NUXO_KEY_SENSOR_MODES && hasText(*element.node, NUXO_KEY_NAME)) {
        const std::string mode = textOf(*element.node, NUXO_KEY_NAME);
        setIdentity(element, mode, {mode});
        dropAttributes(*this, element, {"name"});
        return element.mayBeRenamed = true;
    }
    if (parentKey != NUXO_KEY_OPTIONS || !hasText(*element.node, NUXO_KEY_VALUE)) return false;
    const std::string values = textOf(*element.node, NUXO_KEY_VALUE);
    const std::vector<std::string> items = itemsOf(values);
    setIdentity(element, name + '[' + values + ']', items);
    dropAttributes(*this, element, {"value"});
    // The first option with a value is the one that is applied.
    element.orderGroups.clear();
    for (const std::string& item : items) element.orderGroups.push_back(mNumbers.ofText("options for " + item));
    return element.mayBeRenamed = true;
}

void DiffTrees::numberElement(DiffElement& element)
{
    std::vector<Number> signature;
    for (const DiffAttribute& attribute : element.attributes) {
        signature.push_back(attribute.name);
        signature.push_back(attribute.meaning);
    }
    signature.push_back(kPartEnd);
    const size_t start = signature.size();
    for (const DiffElement& child : element.children) signature.push_back(child.whole);
    std::sort(signature.begin() + static_cast<std::ptrdiff_t>(start), signature.end());
    addOrder(element, signature);
    element.body = mNumbers.ofList(signature);
    element.whole = mNumbers.ofList({element.name, element.identity, element.body});
}

// Order counts among children of one group.
void DiffTrees::addOrder(const DiffElement& element, std::vector<Number>& signature) const
{
    std::vector<std::pair<Number, Number>> members; // group and child
    for (const DiffElement& child : element.children) {
        for (const Number group : child.orderGroups) members.emplace_back(group, child.whole);
    }
    std::stable_sort(members.begin(), members.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    for (size_t i = 0; i < members.size(); ++i) {
        const bool startsGroup = i == 0 || members[i - 1].first != members[i].first;
        const bool endsGroup = i + 1 == members.size() || members[i + 1].first != members[i].first;
        if (startsGroup && endsGroup) continue;
        if (startsGroup) signature.insert(signature.end(), {kPartEnd, members[i].first});
        signature.push_back(members[i].second);
    }
}

} // namespace NuxoTool
