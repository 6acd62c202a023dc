// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_DESCRIPTOR_RULE_PARTS_H
#define NUXO_TOOL_DESCRIPTOR_RULE_PARTS_H

#include "check/Rule.h"
#include "model/DescriptorModel.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NuxoTool {

struct AttributeKind;

/// Whether graph files have elements of that name. Others are misspelled, and told of where they stand.
bool isKnownElement(std::string_view name);

// The rules for descriptors by topic; descriptorRules() has them all.
std::vector<Rule> connectionRules();
std::vector<Rule> usageRules();
std::vector<Rule> baseNodeRules();
std::vector<Rule> overrideRules();
std::vector<Rule> optionRules();
std::vector<Rule> kernelRules();
std::vector<Rule> branchRules();
std::vector<Rule> groupRules();
std::vector<Rule> linkRules();
std::vector<Rule> contentRules();

/// Nodes that graphs are made of, as far as all is known of them. Of a name the first, which is the one that is found.
std::vector<const ModelNode*> usableNodes(const DescriptorModel& model);
/// Nodes whose parts stand in themselves: base nodes, and nodes without one.
std::vector<const ModelNode*> writtenNodes(const DescriptorModel& model);
/// Nodes whose values count: usable ones, and base nodes of which no node is made.
std::vector<const ModelNode*> effectiveNodes(const DescriptorModel& model);

/// Program groups and compute blocks.
bool isGroup(const ModelNode& node);
/// Where the parts of a node are written: its base node, or the node itself.
const XmlElement& bodyOf(const ModelNode& node);
/// Parts of that kind, of a name the first.
std::vector<const ModelPart*> distinctParts(const ModelNode& node, std::string_view kind);
/// The klinks of a node.
std::vector<const XmlElement*> linksOf(const ModelNode& node);
/// Whether a version counts as one of a generation before the seventh. Unknown ones do.
bool isBeforeGeneration7(const DescriptorModel& model);

/// The items of a list with commas, empty ones included.
std::vector<std::string> listItems(std::string_view text);

/// For an end 'node:port' that names no node: first among nodes with such a part, then among all names of nodes.
std::string suggestionForNode(const DescriptorModel& model, const std::vector<std::string>& names);

/// "front:main_out"
std::string fullName(const ModelNode& node, std::string_view part);

/// Where to tell of a value of a node: the attribute that gives it, but the node itself when that stands in a base node, which
/// others share.
struct ValuePlace {
    const XmlElement* element;
    const char* attribute; ///< "" for the element
};
ValuePlace placeOf(const ModelNode& node, const std::optional<ModelValue>& value);
/// The same for what is wrong with the node by itself, wherever the value stands.
ValuePlace placeInside(const ModelNode& node, const std::optional<ModelValue>& value);
/// Whether a value stands in the node itself, not in its base node.
bool isOwn(const ModelNode& node, const std::optional<ModelValue>& value);

/// What a path of names leads to, from an element down.
struct PathTarget {
    enum class Fault {
        None,             ///< an attribute that the element has or can get
        Empty,            ///< no names
        UnknownPart,      ///< a name ahead of the last one is no child
        NotAnAttribute,   ///< it ends at a child
        UnknownAttribute, ///< the last name is none that an attribute can have
    };
    Fault fault = Fault::None;
    std::string name;                         ///< the one that is at fault; without fault that of the attribute
    const XmlElement* holder = nullptr;       ///< the last element that was found
    std::vector<std::string> namesBefore;     ///< those that lead to it
    const AttributeKind* attribute = nullptr; ///< without fault what is known of it; null for nothing
};

/// @param first  index of the first name to look for below @p start
PathTarget findTarget(const XmlElement& start, const std::vector<std::string>& names, size_t first);

/// What is wrong with a path, with a suggestion; "" for nothing.
///
/// @param from  what the names ahead of @p first stand for, for example "node 'front'"
std::string faultText(const PathTarget& target, const std::string& from);

/// What is wrong with a text as the value of an attribute; "" for nothing.
std::string valueFault(const AttributeKind* attribute, const std::string& text);

} // namespace NuxoTool

#endif
