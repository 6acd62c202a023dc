// SPDX-License-Identifier: Apache-2.0
// Lists of options: what else changes with the value of an attribute.
#include "Suggestion.h"
#include "Text.h"
#include "check/rules/Causes.h"
#include "check/rules/DescriptorRuleParts.h"
#include "check/rules/SettingsPlaces.h"
#include "schema/GraphSchema.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace NuxoTool {

namespace {

struct OptionList {
    const ModelNode* node;     ///< that it stands in
    const XmlElement* owner;   ///< whose attribute it governs
    std::string path;          ///< of the owner below the node, "" for the node itself
    const XmlElement* element; ///< `options`
    std::string attribute;     ///< that it governs, "" when it does not say so

    std::string ownerName() const { return fullName(*node, path); }
    std::string attributePath() const { return path.empty() ? attribute : path + ':' + attribute; }
};

bool isFiledAs(const XmlElement& element, const char* name)
{
    return filedName(element) == name;
}

// A part that nobody finds because another one has its name.
bool isShadowed(const ModelNode& node, const XmlElement& part)
{
    return part.attribute("name") != nullptr && node.part(filedName(part))->element != &part;
}

void addLists(std::vector<OptionList>& lists, const ModelNode& node)
{
    std::vector<std::pair<const XmlElement*, std::string>> open = {{node.element, ""}};
    while (!open.empty()) {
        const auto [owner, path] = open.back();
        open.pop_back();
        for (const XmlElement* const child : owner->children) {
            if (owner == node.element && isShadowed(node, *child)) continue;
            if (isFiledAs(*child, "options")) {
                lists.push_back({&node, owner, path, child, child->value("attribute")});
            } else {
                open.emplace_back(child, path.empty() ? filedName(*child) : path + ':' + filedName(*child));
            }
        }
    }
}

std::vector<OptionList> listsOf(const DescriptorModel& model)
{
    std::vector<OptionList> lists;
    for (const ModelNode* const node : writtenNodes(model)) addLists(lists, *node);
    return lists;
}

using Nodes = std::vector<const ModelNode*>;

// Nodes that get a list of options: those made from the base node that it stands in, or the node itself.
class Holders {
public:
    explicit Holders(const DescriptorModel& model)
    {
        for (const ModelNode& node : model.nodes()) {
            if (node.base != nullptr) mNodes[node.base].push_back(&node);
        }
    }

    Nodes of(const OptionList& list) const
    {
        const auto found = mNodes.find(list.node->element);
        return list.node->isBase && found != mNodes.end() ? found->second : Nodes{list.node};
    }

private:
    std::map<const XmlElement*, Nodes> mNodes; // by the base node; only looked up
};

bool isInteger(const std::string& attribute)
{
    const VocabularyEntry* const entry = vocabularyEntry(attribute);
    return entry != nullptr && entry->attribute.isInteger();
}

// ---- option-attribute

bool hasAttribute(const Holders& allHolders, const OptionList& list)
{
    const Nodes holders = allHolders.of(list);
    return std::any_of(holders.begin(), holders.end(),
                       [&list](const ModelNode* node) { return node->value(list.attributePath()).has_value(); });
}

void checkAttributes(const DescriptorModel& model, RuleReporter& reporter)
{
    const Holders holders(model);
    for (const OptionList& list : listsOf(model)) {
        // names that no attribute has are told of for all elements
        const VocabularyEntry* const entry = vocabularyEntry(list.attribute);
        if (entry == nullptr || !entry->isAttribute || hasAttribute(holders, list)) continue;
        std::vector<std::string> names;
        for (const XmlAttribute& attribute : list.owner->attributes) names.push_back(attribute.name);
        reporter.report(*list.element, "attribute",
                        named(list.ownerName()) + " has no attribute " + named(list.attribute) +
                            " that the options could govern; expected one of its attributes" +
                            suggestionFor(list.attribute, names));
    }
}

// ---- option-default

std::vector<std::string> itemsIn(const OptionList& list)
{
    std::vector<std::string> items;
    for (const XmlElement* const option : list.element->children) {
        if (option->attribute("value") == nullptr) continue;
        for (std::string& item : listItems(option->value("value"))) items.push_back(std::move(item));
    }
    return items;
}

// Values of one attribute, which may have several lists.
struct ItemList {
    std::vector<std::string> inOrder;
    std::set<std::string> all;
};
using Items = std::map<std::pair<const XmlElement*, std::string>, ItemList>;

Items allItems(const std::vector<OptionList>& lists)
{
    Items all;
    for (const OptionList& list : lists) {
        ItemList& items = all[{list.owner, list.attribute}];
        const std::vector<std::string> more = itemsIn(list);
        items.inOrder.insert(items.inOrder.end(), more.begin(), more.end());
        items.all.insert(more.begin(), more.end());
    }
    return all;
}

// Numbers are compared as the library writes them.
std::string comparedText(const OptionList& list, const std::string& text)
{
    const std::optional<int32_t> number = isInteger(list.attribute) ? wholeInteger(text) : std::nullopt;
    return number ? std::to_string(*number) : text;
}

void checkDefault(const ModelNode& node, const OptionList& list, const ItemList& itemList, RuleReporter& reporter)
{
    const std::optional<ModelValue> value = node.value(list.attributePath());
    if (!value) return;
    const std::string text = comparedText(list, value->text);
    if (itemList.all.count(text) > 0) return;
    const std::vector<std::string>& items = itemList.inOrder;
    reporter.report(*value->element, value->attribute,
                    "no option of " + named(fullName(node, list.path)) + " stands for its own " + list.attribute + ' ' +
                        named(text) + "; expected " + (items.empty() ? "an option for it" : choiceOf(items)) +
                        (isInteger(list.attribute) ? "" : suggestionAmong(text, items)));
    reporter.note(*list.element, "the options");
}

void checkDefaults(const DescriptorModel& model, RuleReporter& reporter)
{
    const std::vector<OptionList> lists = listsOf(model);
    const Items items = allItems(lists);
    const Holders holders(model);
    for (const OptionList& list : lists) {
        if (list.attribute.empty()) continue;
        for (const ModelNode* const node : holders.of(list))
            checkDefault(*node, list, items.at({list.owner, list.attribute}), reporter);
    }
}

// ---- options one by one

template <typename Visit> void forEachOption(const DescriptorModel& model, Visit visit)
{
    for (const OptionList& list : listsOf(model)) {
        for (const XmlElement* const option : list.element->children) visit(list, *option);
    }
}

void checkApplies(const DescriptorModel& model, RuleReporter& reporter)
{
    forEachOption(model, [&](const OptionList&, const XmlElement& option) {
        if (childFiled(option, "apply") == nullptr)
            reporter.report(option, "the option applies nothing; expected an element 'apply' in it");
    });
}

// Reports what makes an item useless; one finding for an option.
void checkItems(const DescriptorModel& model, RuleReporter& reporter)
{
    constexpr const char* blanks = " \t\r\n";
    forEachOption(model, [&](const OptionList& list, const XmlElement& option) {
        if (option.attribute("value") == nullptr) return;
        for (const std::string& item : listItems(option.value("value"))) {
            const bool hasBlanks =
                item.find_first_of(blanks) == 0 || (!item.empty() && item.find_last_of(blanks) == item.size() - 1);
            std::string expected;
            if (item.empty()) {
                expected = "a value on either side of each comma";
            } else if (hasBlanks) {
                expected = "no blanks around values";
            } else if (isInteger(list.attribute) && comparedText(list, item) != item) {
                expected = "a decimal number without leading zeros, as in " + named(comparedText(list, item));
            } else if (isInteger(list.attribute) && !wholeInteger(item)) {
                expected = "a decimal number, as " + list.attribute + " is one";
            }
            if (expected.empty()) continue;
            reporter.report(option, "value", named(item) + " never equals a value; expected " + expected);
            return;
        }
    });
}

void checkDuplicates(const DescriptorModel& model, RuleReporter& reporter)
{
    std::map<std::pair<std::pair<const XmlElement*, std::string>, std::string>, const XmlElement*> first;
    forEachOption(model, [&](const OptionList& list, const XmlElement& option) {
        if (option.attribute("value") == nullptr) return;
        for (const std::string& item : listItems(option.value("value"))) {
            const auto [place, isNew] =
                first.emplace(std::make_pair(std::make_pair(list.owner, list.attribute), item), &option);
            if (isNew || place->second == &option || item.empty()) continue;
            reporter.report(option, "value",
                            "another option stands for " + named(item) +
                                " already, so this one does not count for it; "
                                "expected each value once");
            reporter.note(*place->second, "value", "the first one");
        }
    });
}

// ---- option-target

class TargetChecker {
public:
    TargetChecker(const DescriptorModel& model, RuleReporter& reporter)
        : mModel(model), mShadowed(model), mHolders(model), mReporter(reporter)
    {
    }

    void check(const OptionList& list, const XmlElement& option) const
    {
        const XmlElement* const apply = childFiled(option, "apply");
        if (apply == nullptr) return;
        for (const XmlElement* const target : apply->children) {
            const ModelNode* const node = nodeOf(list, *target);
            if (node != nullptr && node->isWhole()) checkParts(*node, *target);
        }
    }

private:
    // The node that an element below `apply` stands for; null after a report.
    const ModelNode* nodeOf(const OptionList& list, const XmlElement& target) const
    {
        const std::string& name = filedName(target);
        const ModelNode* const node = mModel.node(name);
        if (node == nullptr) {
            if (mShadowed.hasNode()) return nullptr;
            mReporter.reportCause(missingNode(name), target, "",
                                  "no node has the name " + named(name) + "; expected one below 'nodes'" +
                                      suggestionFor(name, candidates(list)));
            return nullptr;
        }
        if (!node->isBase && list.node->isBase && node->base == list.node->element)
            return oneOfSeveral(list, target, node);
        if (!node->isBase) return node;
        if (node != list.node) {
            mReporter.report(target, named(name) + " is a base node, which is part of no graph; expected a node" +
                                         suggestionFor(name, candidates(list)));
            return nullptr;
        }
        if (isOwnedByPort(list)) return node;
        mReporter.report(target, "options of " + named(list.ownerName()) +
                                     ", which is no port, keep the name of the base node, which is part of no graph; "
                                     "expected options of a port");
        return nullptr;
    }

    // Each node that is made from the base node gets its options, with the name of the base node put right.
    const ModelNode* oneOfSeveral(const OptionList& list, const XmlElement& target, const ModelNode* node) const
    {
        const Nodes holders = mHolders.of(list);
        if (holders.size() < 2 || !isOwnedByPort(list)) return node;
        const ModelNode& other = *holders[holders[0] == node ? 1 : 0];
        mReporter.report(target, named(node->name) + " is one of " + std::to_string(holders.size()) +
                                     " nodes made from base node " + named(list.node->name) + ", so that a choice at " +
                                     named(other.name) + " would change it, too; expected the name of the base node" +
                                     didYouMean(list.node->name));
        return nullptr;
    }

    // Only those of ports are rewritten for the nodes that are made from a base node.
    static bool isOwnedByPort(const OptionList& list)
    {
        const ModelPart* const part = list.node->part(list.path);
        return part != nullptr && part->element == list.owner && part->kind == "port";
    }

    std::vector<std::string> candidates(const OptionList& list) const
    {
        std::vector<std::string> names;
        if (mModel.nodes().size() > kMostCompared) return names;
        if (list.node->isBase) names.push_back(list.node->name);
        for (const ModelNode& node : mModel.nodes()) {
            if (!node.isBase) names.push_back(node.name);
        }
        return names;
    }

    void checkParts(const ModelNode& node, const XmlElement& target) const
    {
        for (const XmlElement* const part : target.children) {
            const std::string& name = filedName(*part);
            const VocabularyEntry* const entry = vocabularyEntry(name);
            const bool isOfLibrary = entry != nullptr && entry->isElement;
            if (isOfLibrary || node.part(name) != nullptr || mShadowed.hasPart(node)) continue;
            mReporter.reportCause(missingPart(node, name), *part, "",
                                  "node " + named(node.name) + " has no part " + named(name) +
                                      "; expected one of its ports, kernels or other elements" +
                                      suggestionFor(name, namesBelow(bodyOf(node))));
        }
    }

    const DescriptorModel& mModel;
    const ShadowedItems mShadowed;
    const Holders mHolders;
    RuleReporter& mReporter;
};

void checkOptionTargets(const DescriptorModel& model, RuleReporter& reporter)
{
    const TargetChecker checker(model, reporter);
    forEachOption(model, [&](const OptionList& list, const XmlElement& option) { checker.check(list, option); });
}

} // namespace

std::vector<Rule> optionRules()
{
    return {
        {"option-attribute",
         RuleSeverity::Error,
         "options govern an attribute that their element does not have",
         "An element 'options' tells with 'attribute' which attribute of the element around it it governs. The list "
         "counts "
         "when a client sets that attribute; one that the element does not have cannot be set. Name an attribute of "
         "the "
         "element, or give it the attribute:\n"
         "    <port name=\"main_out\" id=\"1\" direction=\"1\" format=\"YUV420_8_SP\">\n"
         "        <options attribute=\"format\"> ... </options>\n"
         "    </port>",
         {},
         DescriptorRule(checkAttributes)},
        {"option-default",
         RuleSeverity::Error,
         "no option stands for the value that the descriptor gives",
         "An attribute with options can only be set to values that an option stands for; the library refuses all "
         "others. "
         "When the value of the descriptor is none of them, nobody can go back to it, and what should come along with "
         "it is "
         "said nowhere. Add the value to an option, or start with another one.",
         {"format-name", "difference-target", "difference-value"},
         DescriptorRule(checkDefaults)},
        {"option-apply",
         RuleSeverity::Warning,
         "an option applies nothing",
         "An option tells with 'apply' what else changes with its value. Without it the library sets the value and "
         "logs an "
         "error, each time. When nothing is to change, write an empty element: <apply/>.",
         {},
         DescriptorRule(checkApplies)},
        {"option-target",
         RuleSeverity::Error,
         "an option applies values to a node or part that does not exist",
         "The elements below 'apply' are named after nodes, those in them after parts of the node. They are merged "
         "into the "
         "graph, and what the graph does not have is added: as an element that nobody reads. In a base node, options "
         "of a "
         "port name the base node; each node made from it gets them under its own name, while options that name one of "
         "several such "
         "nodes would always change that one. Write names that exist, in "
         "lower "
         "case:\n"
         "    <apply><video><scl_fmt><output bpp=\"8\"/></scl_fmt></video></apply>",
         {"base-node"},
         DescriptorRule(checkOptionTargets)},
        {"option-duplicate",
         RuleSeverity::Error,
         "two options stand for one value",
         "The library takes the first option that stands for the value and applies no other. What a further one says "
         "about "
         "this value never counts. Delete the value from one of them.",
         {},
         DescriptorRule(checkDuplicates)},
        {"option-text",
         RuleSeverity::Error,
         "an option stands for a text that no value equals",
         "The value of an option is one value, or several joined by ','. They are compared as they are written: blanks "
         "belong to them, and numbers are compared as decimal digits without leading zeros. A text that no value can "
         "equal "
         "makes the option useless:\n"
         "    <option value=\"YUV420_8_SP,Y_8\"> ... </option>",
         {"option-attribute"},
         DescriptorRule(checkItems)},
    };
}

} // namespace NuxoTool
