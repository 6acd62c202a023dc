// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TOOL_DIFF_TREE_H
#define NUXO_TOOL_DIFF_TREE_H

#include <nuxo/tree/GraphConfigNode.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace NuxoTool {

/// Numbers for texts and for lists of numbers: equal ones, and only these, have the same number.
class DiffNumbers {
public:
    using Number = uint32_t;

    Number ofText(const std::string& text);
    const std::string& text(Number number) const { return *mTexts[number]; }
    /// Numbers of lists and of texts have nothing to do with each other.
    Number ofList(const std::vector<Number>& list);

private:
    std::unordered_map<std::string, Number> mTextNumbers;
    std::vector<const std::string*> mTexts;
    std::unordered_map<std::string, Number> mListNumbers;
};

/// A value of an element.
struct DiffAttribute {
    enum class Kind { Integer, KeyName, Text };
    Kind kind = Kind::Text;
    DiffNumbers::Number name = 0;
    DiffNumbers::Number value = 0;   ///< its text, of integers in decimal
    DiffNumbers::Number meaning = 0; ///< equal when two values mean the same
    NUXO::GraphConfigNode::iterator item = nullptr;
};

/// An element of a graph file or a node of a built graph, made ready to be compared.
struct DiffElement {
    const NUXO::GraphConfigNode* node = nullptr;
    NUXO::GraphConfigNode::iterator item = nullptr; ///< under which its parent files it, null for the root
    const DiffElement* parent = nullptr;            ///< null for the root
    uint32_t key = 0;                               ///< under which it is filed
    DiffNumbers::Number name = 0;                   ///< of that key
    DiffNumbers::Number identity = 0;               ///< tells it from its siblings, as far as they can be told apart
    DiffNumbers::Number label = 0;                  ///< what it is called in paths
    bool isOneOfMany = false;                       ///< whether siblings are filed under the same key
    /// Whether the identity is an ordinal only: those left over on both sides may belong together whatever it is.
    bool hasLooseIdentity = false;
    /// Whether one with another identity and the same body may be the same under a new name.
    bool mayBeRenamed = false;
    DiffNumbers::Number body = 0;          ///< equal when all but the identity means the same
    DiffNumbers::Number whole = 0;         ///< equal when all means the same
    size_t size = 1;                       ///< number of elements, itself included
    std::vector<DiffAttribute> attributes; ///< by name, without those that are its identity
    std::vector<DiffElement> children;     ///< in the order of the node
    /// What it shares with siblings among which order counts: "connections from a:b" for example.
    std::vector<DiffNumbers::Number> orderGroups;
};

/// Makes trees ready to be compared with each other.
class DiffTrees {
public:
    /// All trees must exist by then: the names of keys are read once.
    DiffTrees();
    DiffTrees(const DiffTrees&) = delete;
    DiffTrees& operator=(const DiffTrees&) = delete;

    /// @param chosen  whether the root was chosen by its `key`, which is then no difference
    std::unique_ptr<DiffElement> read(const NUXO::GraphConfigNode& root, bool chosen);
    const std::string& text(DiffNumbers::Number number) const { return mNumbers.text(number); }

private:
    void addContent(DiffElement& element);
    void addAttribute(DiffElement& element, NUXO::GraphConfigNode::iterator item);
    void identify(DiffElement& element);
    bool identifyNumbered(DiffElement& element);
    bool identifyEnds(DiffElement& element);
    bool identifyByText(DiffElement& element);
    void setIdentity(DiffElement& element, const std::string& label, const std::vector<std::string>& parts);
    void numberElement(DiffElement& element);
    void addOrder(const DiffElement& element, std::vector<DiffNumbers::Number>& signature) const;
    const std::string& keyName(uint32_t key) const;

    DiffNumbers mNumbers;
    std::unordered_map<uint32_t, const std::string*> mKeyNames;
};

} // namespace NuxoTool

#endif
