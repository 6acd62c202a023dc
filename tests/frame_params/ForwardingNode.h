// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_FRAME_PARAMS_FORWARDING_NODE_H
#define NUXO_TESTS_FRAME_PARAMS_FORWARDING_NODE_H

#include "query/GraphFixture.h"

#include <map>
#include <memory>
#include <string>

namespace graphtest {

/// A tree of another implementation of the interface: every node answers like the node that it stands for, and hands out
/// only nodes of its own kind.
class ForwardingNode : public IGraphConfig {
public:
    explicit ForwardingNode(IGraphConfig& node) : ForwardingNode(node, std::make_shared<Nodes>()) {}

    IGraphConfig* getRoot() const override { return standIn(mNode.getRoot()); }
    IGraphConfig* getAncestor() const override { return standIn(mNode.getAncestor()); }
    int32_t getDescendantCount() const override { return mNode.getDescendantCount(); }
    IGraphConfig* getDescendant(uint32_t key) const override { return standIn(mNode.getDescendant(key)); }
    IGraphConfig* getDescendant(const ItemUID& path) const override { return standIn(mNode.getDescendant(path)); }
    IGraphConfig* getDescendantByString(const std::string& path) const override
    {
        return standIn(mNode.getDescendantByString(path));
    }
    int32_t getValue(uint32_t key, int& value) const override { return mNode.getValue(key, value); }
    int32_t getValue(const ItemUID& path, int& value) const override { return mNode.getValue(path, value); }
    int32_t getValue(uint32_t key, std::string& value) const override { return mNode.getValue(key, value); }
    int32_t getValue(const ItemUID& path, std::string& value) const override { return mNode.getValue(path, value); }
    int32_t setValue(uint32_t key, int value) override { return mNode.setValue(key, value); }
    int32_t setValue(const ItemUID& path, int value) override { return mNode.setValue(path, value); }
    int32_t setValue(uint32_t key, const std::string& value) override { return mNode.setValue(key, value); }
    int32_t setValue(const ItemUID& path, const std::string& value) override { return mNode.setValue(path, value); }
    std::string getName() const override { return mNode.getName(); }
    uint32_t getUid() const override { return mNode.getUid(); }
    bool isType(uint32_t wanted) const override { return mNode.isType(wanted); }

private:
    /// Stand-ins by what they stand for. Weak below, so that the first node alone keeps the rest alive.
    using Nodes = std::map<const IGraphConfig*, std::unique_ptr<ForwardingNode>>;

    ForwardingNode(IGraphConfig& node, const std::shared_ptr<Nodes>& nodes) : mNode(node), mOwned(nodes), mNodes(nodes)
    {
    }
    ForwardingNode(IGraphConfig& node, const std::weak_ptr<Nodes>& nodes) : mNode(node), mNodes(nodes) {}

    IGraphConfig* standIn(IGraphConfig* node) const
    {
        if (node == nullptr) return nullptr;
        std::unique_ptr<ForwardingNode>& place = (*mNodes.lock())[node];
        if (place == nullptr) place.reset(new ForwardingNode(*node, mNodes));
        return place.get();
    }

    IGraphConfig& mNode;
    std::shared_ptr<Nodes> mOwned;
    std::weak_ptr<Nodes> mNodes;
};

} // namespace graphtest

#endif
