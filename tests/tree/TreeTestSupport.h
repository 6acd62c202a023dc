// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_TREE_TREE_TEST_SUPPORT_H
#define NUXO_TESTS_TREE_TREE_TEST_SUPPORT_H

#include <nuxo/NuxoStatus.h>
#include <nuxo/tree/GraphConfigNode.h>

#include <cstdint>
#include <memory>
#include <string>

using NodePtr = std::unique_ptr<NUXO::GraphConfigNode>;

inline NodePtr makeNode()
{
    return std::make_unique<NUXO::GraphConfigNode>();
}

/// Files a new child node under @p key; it belongs to @p parent.
inline NUXO::GraphConfigNode* addChild(NUXO::GraphConfigNode& parent, uint32_t key)
{
    NodePtr child = makeNode();
    return parent.insertDescendant(child.get(), key) == StatusOk ? child.release() : nullptr;
}

/// Files @p item as it is, whatever is there already; it belongs to @p parent.
template <typename Item> Item* fileItem(NUXO::GraphConfigNode& parent, std::unique_ptr<Item> item, uint32_t key)
{
    return parent.insertDescendant(item.get(), key) == StatusOk ? item.release() : nullptr;
}

inline NUXO::GraphConfigIntAttribute* fileInteger(NUXO::GraphConfigNode& parent, uint32_t key, int value)
{
    return fileItem(parent, std::make_unique<NUXO::GraphConfigIntAttribute>(value), key);
}

inline NUXO::GraphConfigStrAttribute* fileText(NUXO::GraphConfigNode& parent, uint32_t key, const std::string& value)
{
    return fileItem(parent, std::make_unique<NUXO::GraphConfigStrAttribute>(value), key);
}

/// The whole content of a small tree as one text, for comparisons: "34{8232=7 29='x' }".
inline std::string contentOf(const NUXO::GraphConfigNode& node)
{
    std::string text;
    for (NUXO::GraphConfigNode::iterator it = node.begin(); it != node.end(); ++it) {
        text += std::to_string(it->first);
        int number = 0;
        std::string value;
        if (it->second->getValue(number) == StatusOk) text += "=" + std::to_string(number);
        else if (it->second->getValue(value) == StatusOk) text += "='" + value + "'";
        else if (it->second->type == NUXO::GraphConfigItem::NODE)
            text += "{" + contentOf(static_cast<const NUXO::GraphConfigNode&>(*it->second)) + "}";
        else text += "?";
        text += " ";
    }
    return text;
}

/// An item of no known kind that reports its destruction.
class CountedItem : public NUXO::GraphConfigItem {
public:
    explicit CountedItem(int& destroyed) : mDestroyed(destroyed) {}
    ~CountedItem() override { ++mDestroyed; }

private:
    int& mDestroyed;
};

/// A text attribute that reports its destruction.
class CountedText : public NUXO::GraphConfigStrAttribute {
public:
    explicit CountedText(int& destroyed) : mDestroyed(destroyed) {}
    ~CountedText() override { ++mDestroyed; }

private:
    int& mDestroyed;
};

/// A node that reports its destruction.
class CountedNode : public NUXO::GraphConfigNode {
public:
    explicit CountedNode(int& destroyed) : mDestroyed(destroyed) {}
    ~CountedNode() override { ++mDestroyed; }

private:
    int& mDestroyed;
};

#endif
