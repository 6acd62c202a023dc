// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_DESCRIPTOR_RULE_PARTS_H
#define NUXO_TOOL_DESCRIPTOR_RULE_PARTS_H

#include "check/Rule.h"
#include "model/DescriptorModel.h"

#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <set>
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
std::vector<Rule> nodeRules();
std::vector<Rule> captureRules();
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
/// Whether its type goes with its parts: sinks have none, sources and capture back ends no kernels. The first part that is
/// against the type, null for none.
const ModelPart* misfitIn(const ModelNode& node);
inline bool hasFittingType(const ModelNode& node)
{
    return misfitIn(node) == nullptr;
}
/// Where the parts of a node are written: its base node, or the node itself.
const XmlElement& bodyOf(const ModelNode& node);
/// Parts of that kind, of a name the first.
std::vector<const ModelPart*> distinctParts(const ModelNode& node, std::string_view kind);
/// The klinks of a node.
std::vector<const XmlElement*> linksOf(const ModelNode& node);
/// Whether the version is that of generation 5.
bool isGeneration5(const DescriptorModel& model);
/// Whether a version counts as one of a generation before the seventh. Unknown ones do.
bool isBeforeGeneration7(const DescriptorModel& model);

/// "front:input, front:main_out or front:aux_out"; of many names only the first.
std::string choiceOf(const std::vector<std::string>& names);

/// The items of a list with commas, empty ones included.
std::vector<std::string> listItems(std::string_view text);

/// Of more names than that none is suggested: for each name that is wrong they all would be compared.
constexpr size_t kMostCompared = 250;

/// Names of the children of an element, to suggest one of them; none when there are too many.
std::vector<std::string> namesBelow(const XmlElement& element);

/// A suggestion unless there are too many names.
std::string suggestionAmong(const std::string& name, const std::vector<std::string>& names);

/// For an end 'node:port' that names no node: first among nodes with such a part, then among all names of nodes.
std::string suggestionForNode(const DescriptorModel& model, const std::vector<std::string>& names);

/// What nobody finds because something before it has the same name. A name that leads nowhere may well have been meant for
/// it, so it is told once: as a name that is taken.
class ShadowedItems {
public:
    explicit ShadowedItems(const DescriptorModel& model);

    /// Whether such a node, which is no base node, has a part of that name; without a name, whether it is a sink.
    bool hasNodeWith(const std::string& part) const;
    /// Whether there is any such node, base nodes included.
    bool hasNode() const { return mHasNode; }
    bool hasBaseNode() const { return mHasBaseNode; }
    /// Whether a node has such a part, of any kind or of one of these kinds.
    bool hasPart(const ModelNode& node) const { return mKinds.count(&bodyOf(node)) > 0; }
    bool hasPart(const ModelNode& node, std::initializer_list<std::string_view> kinds) const;

private:
    void addNode(const ModelNode& node);
    void addParts(const ModelNode& node);

    bool mHasNode = false;
    bool mHasBaseNode = false;
    bool mHasSink = false;
    std::set<std::string, std::less<>> mPartNames;                          // of such nodes
    std::map<const XmlElement*, std::set<std::string, std::less<>>> mKinds; // of such parts, by where they are written
};

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
        NotAddressable,   ///< it leads through elements that have no names of their own
        FixedAttribute,   ///< it ends at an attribute that must stay as it is written
    };
    Fault fault = Fault::None;
    std::string name;                         ///< the one that is at fault; without fault that of the attribute
    const ModelNode* node = nullptr;          ///< where the path starts
    const XmlElement* holder = nullptr;       ///< the last element that was found
    std::vector<std::string> namesBefore;     ///< those that lead to it
    const AttributeKind* attribute = nullptr; ///< without fault what is known of it; null for nothing
};

/// @param first  index of the first name to look for below the node
PathTarget findTarget(const ModelNode& node, const std::vector<std::string>& names, size_t first);

/// What is wrong with a path, with a suggestion; "" for nothing.
///
/// @param from  what the names ahead of @p first stand for, for example "node 'front'"
std::string faultText(const PathTarget& target, const std::string& from);

/// What is wrong with a text as the value of an attribute; "" for nothing.
std::string valueFault(const AttributeKind* attribute, const std::string& text);

} // namespace NuxoTool

#endif
