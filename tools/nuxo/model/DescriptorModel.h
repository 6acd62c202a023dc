// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_DESCRIPTOR_MODEL_H
#define NUXO_TOOL_DESCRIPTOR_MODEL_H

#include "document/XmlDocument.h"

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NuxoTool {

/// What an element of a descriptor is filed under: its `name`, else the element's name.
const std::string& filedName(const XmlElement& element);

/// What kind of thing an element of a descriptor is for the library: the name of a named element, which its `type`
/// replaces for a `node` and where it stands ahead of `name`; otherwise `type`, "" when there is none.
const std::string& typeOf(const XmlElement& element);

/// The first child that is filed under a name, null when there is none.
const XmlElement* childFiled(const XmlElement& element, std::string_view name);

/// The names of a path as the library takes it apart: one behind the last ':' does not count when it is empty.
std::vector<std::string> namesOfPath(std::string_view path);

/// A part of a node, with what its base node gives it: a port, kernel, mux, `cipf`, `input` and so on.
struct ModelPart {
    const XmlElement* element = nullptr; ///< in the node itself or in its base node
    std::string name;                    ///< what it is filed under: its `name`, else the element's name
    std::string kind;                    ///< "port", "kernel", "mux", ...: its type, else the element's name
};

/// The parts of a node in the order of the file. Nodes that are built on one base node share them.
class ModelParts {
public:
    ModelParts() = default;
    explicit ModelParts(const XmlElement& holder);

    std::vector<ModelPart>::const_iterator begin() const { return all().begin(); }
    std::vector<ModelPart>::const_iterator end() const { return all().end(); }
    bool empty() const { return all().empty(); }
    size_t size() const { return all().size(); }
    const ModelPart& operator[](size_t index) const { return all()[index]; }
    operator const std::vector<ModelPart>&() const { return all(); }
    /// The first of that name, null when there is none.
    const ModelPart* find(std::string_view name) const;
    /// The first of that kind, null when there is none.
    const ModelPart* firstOfKind(std::string_view kind) const;

private:
    struct Data {
        std::vector<ModelPart> parts;
        std::map<std::string, size_t, std::less<>> byName;
        std::map<std::string, size_t, std::less<>> byKind; ///< the first of each
    };
    const std::vector<ModelPart>& all() const;
    std::shared_ptr<const Data> mData;
};

/// A value of a part and the attribute that gives it.
struct ModelValue {
    std::string text;
    const XmlElement* element =
        nullptr;                     ///< that holds the attribute: the part, or a difference of the node from its base
    const char* attribute = nullptr; ///< its name there
};

/// A node below `nodes` of a descriptor.
struct ModelNode {
    const XmlElement* element = nullptr;
    std::string name;
    std::string kind;                 ///< its type, else the element's name; of a node with a base, the `base_type`
    const XmlElement* base = nullptr; ///< the base node that it names, null when it has none or it does not exist
    bool isBase = false;              ///< a base node itself, of which no graph is made
    ModelParts parts;                 ///< direct children; of a node with a base, those of the base alone
    std::map<std::string, ModelValue, std::less<>> differences; ///< from the base, by path; of several the last

    /// Whether all is known of it: false for a node whose base node does not exist, or that has neither base nor type.
    bool isWhole() const { return base != nullptr || (!namesBase() && kind != "node"); }
    /// Whether it is to be made from a base node. Base nodes themselves never are.
    bool namesBase() const { return !isBase && element->attribute("base_node") != nullptr; }
    const ModelPart* part(std::string_view partName) const;
    std::vector<const ModelPart*> partsOfKind(std::string_view partKind) const;
    /// The value of an attribute of a part, or of an element below it, after the node's differences from its base.
    ///
    /// @param path  names below the node joined by ':', the attribute last, for example "main_out:direction"
    std::optional<ModelValue> value(std::string_view path) const;
    std::optional<int32_t> integer(std::string_view path) const;
};

/// One end of a connection.
struct ModelEnd {
    std::string text; ///< as written
    std::string nodeName;
    std::string portName;            ///< empty for an end that names a node alone
    const ModelNode* node = nullptr; ///< null when there is none of that name
    const ModelPart* port = nullptr; ///< null when the end names none, or one that does not exist
};

struct ModelConnection {
    const XmlElement* element = nullptr;
    ModelEnd source;
    ModelEnd sink;
    bool isStatic = false;
};

/// A graph below `graphs` of a descriptor.
struct ModelGraph {
    const XmlElement* element = nullptr;
    std::optional<int32_t> id;
    std::vector<ModelConnection> connections;
    std::vector<const XmlElement*> overrides;  ///< its `apply` elements
    std::vector<const ModelNode*> nodesAtEnds; ///< see nodes()
    /// Nodes at the ends of its connections, each once, in the order of the connections.
    const std::vector<const ModelNode*>& nodes() const { return nodesAtEnds; }
};

/// What a descriptor declares, put together by name. What does not resolve stays null: rules tell of it.
class DescriptorModel {
public:
    explicit DescriptorModel(const XmlDocument& document);
    DescriptorModel(const DescriptorModel&) = delete;
    DescriptorModel& operator=(const DescriptorModel&) = delete;

    const XmlDocument& document() const { return mDocument; }
    const std::deque<ModelNode>& nodes() const { return mNodes; }
    const std::deque<ModelGraph>& graphs() const { return mGraphs; }
    /// The first of that name, which is the one that the library finds; null when there is none.
    const ModelNode* node(std::string_view name) const;
    const ModelGraph* graph(int32_t id) const;
    /// Its base node, null for none.
    const ModelNode* baseOf(const ModelNode& node) const;
    /// The text of `version`, "" when there is none.
    std::string version() const;
    /// For suggestions.
    std::vector<std::string> nodeNames() const;

private:
    const XmlDocument& mDocument;
    std::deque<ModelNode> mNodes;
    std::deque<ModelGraph> mGraphs;
    std::map<int32_t, const ModelGraph*> mGraphsById;
    std::map<std::string, const ModelNode*, std::less<>> mNodesByName;
    std::map<const XmlElement*, const ModelNode*> mNodesByElement;

    void addNodes(const XmlElement& nodes);
    void addGraph(const XmlElement& element);
    ModelEnd endOf(const std::string& text) const;
};

/// For suggestions.
std::vector<std::string> namesOf(const std::vector<ModelPart>& parts);
std::vector<std::string> namesOf(const std::vector<const ModelPart*>& parts);

} // namespace NuxoTool

#endif
