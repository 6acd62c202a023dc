// SPDX-License-Identifier: Apache-2.0
#include "model/DescriptorModel.h"

#include <algorithm>
#include <set>

namespace NuxoTool {

namespace {

constexpr char kSeparator = ':';
constexpr const char* kBaseKind = "base_node";

const std::string kNoText;

// A base node, by the name that others give for it. The first of a name counts.
struct Base {
    const XmlElement* element;
    ModelParts parts;
};
using BasesByName = std::map<std::string, Base, std::less<>>;

BasesByName basesBelow(const XmlElement& nodes)
{
    BasesByName bases;
    for (const XmlElement* const element : nodes.children) {
        const XmlAttribute* const name = element->attribute("name");
        if (name == nullptr || typeOf(*element) != kBaseKind || bases.count(name->value) > 0) continue;
        bases.emplace(name->value, Base{element, ModelParts(*element)});
    }
    return bases;
}

std::string kindOf(const XmlElement& element)
{
    const std::string& type = typeOf(element);
    return type.empty() ? element.name : type;
}

std::string joined(const std::vector<std::string>& names)
{
    std::string path;
    for (const std::string& name : names) {
        if (&name != names.data()) path += kSeparator;
        path += name;
    }
    return path;
}

// Each child of a node with a base changes one value of it, whatever the child is called.
void addDifferences(ModelNode& node)
{
    for (const XmlElement* const difference : node.element->children) {
        if (difference->attribute("target") == nullptr || difference->attribute("value") == nullptr) continue;
        const std::string path = joined(namesOfPath(difference->value("target")));
        node.differences[path] = {difference->value("value"), difference, "value"};
    }
}

void takeBase(ModelNode& node, const BasesByName& bases)
{
    const auto base = bases.find(node.element->value("base_node"));
    if (base == bases.end()) return;
    node.base = base->second.element;
    node.kind = node.base->value("base_type");
    node.parts = base->second.parts;
    addDifferences(node);
}

ModelNode makeNode(const XmlElement& element, const BasesByName& bases)
{
    ModelNode node;
    node.element = &element;
    node.name = filedName(element);
    node.kind = kindOf(element);
    node.isBase = node.kind == kBaseKind;
    if (node.namesBase()) {
        takeBase(node, bases);
    } else {
        node.parts = ModelParts(element);
    }
    return node;
}

std::optional<ModelValue> valueOfElement(const XmlElement& element, const std::string& name)
{
    // A named element says with its own name what type it has.
    if (name == "type" && !typeOf(element).empty()) {
        const XmlAttribute* const type = element.attribute("type");
        const bool isWritten = type != nullptr && type->value == typeOf(element);
        return ModelValue{typeOf(element), &element, isWritten ? "type" : "name"};
    }
    const XmlAttribute* const attribute = element.attribute(name);
    if (attribute == nullptr) return std::nullopt;
    return ModelValue{attribute->value, &element, attribute->name.c_str()};
}

std::vector<const ModelNode*> nodesAt(const std::vector<ModelConnection>& connections)
{
    std::vector<const ModelNode*> all;
    std::set<const ModelNode*> seen;
    for (const ModelConnection& connection : connections) {
        for (const ModelNode* const node : {connection.source.node, connection.sink.node}) {
            if (node != nullptr && seen.insert(node).second) all.push_back(node);
        }
    }
    return all;
}

} // namespace

const std::string& filedName(const XmlElement& element)
{
    const XmlAttribute* const name = element.attribute("name");
    return name == nullptr ? element.name : name->value;
}

const std::string& typeOf(const XmlElement& element)
{
    const XmlAttribute* const name = element.attribute("name");
    const XmlAttribute* const type = element.attribute("type");
    const bool takesType = name == nullptr || element.name == "node" || (type != nullptr && type < name);
    if (!takesType) return element.name;
    return type == nullptr ? kNoText : type->value;
}

const XmlElement* childFiled(const XmlElement& element, std::string_view name)
{
    const auto found = std::find_if(element.children.begin(), element.children.end(),
                                    [name](const XmlElement* child) { return filedName(*child) == name; });
    return found == element.children.end() ? nullptr : *found;
}

std::vector<std::string> namesOfPath(std::string_view path)
{
    std::vector<std::string> names;
    while (!path.empty()) {
        const size_t end = path.find(kSeparator);
        names.emplace_back(path.substr(0, end));
        path.remove_prefix(end == std::string_view::npos ? path.size() : end + 1);
    }
    return names;
}

ModelParts::ModelParts(const XmlElement& holder)
{
    const auto data = std::make_shared<Data>();
    for (const XmlElement* const child : holder.children) {
        data->byName.emplace(filedName(*child), data->parts.size());
        data->parts.push_back({child, filedName(*child), kindOf(*child)});
        data->byKind.emplace(data->parts.back().kind, data->parts.size() - 1);
    }
    mData = data;
}

const std::vector<ModelPart>& ModelParts::all() const
{
    static const std::vector<ModelPart> none;
    return mData == nullptr ? none : mData->parts;
}

const ModelPart* ModelParts::find(std::string_view name) const
{
    if (mData == nullptr) return nullptr;
    const auto found = mData->byName.find(name);
    return found == mData->byName.end() ? nullptr : &mData->parts[found->second];
}

const ModelPart* ModelParts::firstOfKind(std::string_view kind) const
{
    if (mData == nullptr) return nullptr;
    const auto found = mData->byKind.find(kind);
    return found == mData->byKind.end() ? nullptr : &mData->parts[found->second];
}

const ModelPart* ModelNode::part(std::string_view partName) const
{
    return parts.find(partName);
}

std::vector<const ModelPart*> ModelNode::partsOfKind(std::string_view partKind) const
{
    std::vector<const ModelPart*> found;
    for (const ModelPart& each : parts) {
        if (each.kind == partKind) found.push_back(&each);
    }
    return found;
}

std::optional<ModelValue> ModelNode::value(std::string_view path) const
{
    const std::vector<std::string> names = namesOfPath(path);
    if (names.empty() || !isWhole()) return std::nullopt;
    const auto difference = differences.find(joined(names));
    if (difference != differences.end()) return difference->second;

    if (names.size() == 1) {
        if (base == nullptr) return valueOfElement(*element, names[0]);
        if (names[0] == "type") return valueOfElement(*base, "base_type");
        return valueOfElement(names[0] == "name" ? *element : *base, names[0]);
    }
    const ModelPart* const first = part(names[0]);
    const XmlElement* holder = first == nullptr ? nullptr : first->element;
    for (size_t i = 1; holder != nullptr && i + 1 < names.size(); ++i) holder = childFiled(*holder, names[i]);
    return holder == nullptr ? std::nullopt : valueOfElement(*holder, names.back());
}

std::optional<int32_t> ModelNode::integer(std::string_view path) const
{
    const std::optional<ModelValue> found = value(path);
    return found ? wholeInteger(found->text) : std::nullopt;
}

DescriptorModel::DescriptorModel(const XmlDocument& document) : mDocument(document)
{
    if (document.root() == nullptr) return;
    const XmlElement* const nodes = childFiled(*document.root(), "nodes");
    if (nodes != nullptr) addNodes(*nodes);
    const XmlElement* const graphs = childFiled(*document.root(), "graphs");
    if (graphs == nullptr) return;
    for (const XmlElement* const element : graphs->children) addGraph(*element);
}

void DescriptorModel::addNodes(const XmlElement& nodes)
{
    const BasesByName bases = basesBelow(nodes);
    for (const XmlElement* const element : nodes.children) {
        mNodes.push_back(makeNode(*element, bases));
        mNodesByName.emplace(mNodes.back().name, &mNodes.back());
        mNodesByElement.emplace(element, &mNodes.back());
    }
}

ModelEnd DescriptorModel::endOf(const std::string& text) const
{
    ModelEnd end;
    end.text = text;
    const std::vector<std::string> names = namesOfPath(text);
    if (!names.empty()) end.nodeName = names[0];
    if (names.size() > 1) end.portName = names[1];
    end.node = node(end.nodeName);
    if (end.node != nullptr && !end.portName.empty()) end.port = end.node->part(end.portName);
    return end;
}

void DescriptorModel::addGraph(const XmlElement& element)
{
    ModelGraph& graph = mGraphs.emplace_back();
    graph.element = &element;
    graph.id = element.integer("id");
    for (const XmlElement* const child : element.children) {
        const std::string& name = filedName(*child);
        if (name == "apply" || typeOf(*child) == "apply") graph.overrides.push_back(child);
        if (name != "connection") continue;
        const XmlAttribute* const isStatic = child->attribute("static");
        graph.connections.push_back({child, endOf(child->value("source")), endOf(child->value("sink")),
                                     isStatic != nullptr && isStatic->value != "false"});
    }
    graph.nodesAtEnds = nodesAt(graph.connections);
    if (graph.id) mGraphsById.emplace(*graph.id, &graph);
}

const ModelNode* DescriptorModel::node(std::string_view name) const
{
    const auto found = mNodesByName.find(name);
    return found == mNodesByName.end() ? nullptr : found->second;
}

const ModelGraph* DescriptorModel::graph(int32_t id) const
{
    const auto found = mGraphsById.find(id);
    return found == mGraphsById.end() ? nullptr : found->second;
}

const ModelNode* DescriptorModel::baseOf(const ModelNode& node) const
{
    const auto found = mNodesByElement.find(node.base);
    return found == mNodesByElement.end() ? nullptr : found->second;
}

std::string DescriptorModel::version() const
{
    return mDocument.root() == nullptr ? "" : mDocument.root()->value("version");
}

std::vector<std::string> DescriptorModel::nodeNames() const
{
    std::vector<std::string> names;
    for (const ModelNode& each : mNodes) names.push_back(each.name);
    return names;
}

std::vector<std::string> namesOf(const std::vector<ModelPart>& parts)
{
    std::vector<std::string> names;
    for (const ModelPart& part : parts) names.push_back(part.name);
    return names;
}

std::vector<std::string> namesOf(const std::vector<const ModelPart*>& parts)
{
    std::vector<std::string> names;
    for (const ModelPart* const part : parts) names.push_back(part->name);
    return names;
}

} // namespace NuxoTool
