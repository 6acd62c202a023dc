// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_CAMERA_MOCK_NODE_H
#define NUXO_TESTS_CAMERA_MOCK_NODE_H

#include "query/ForeignNode.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace graphtest {

/// A node with values that is not the library's. Where it stands and what it answers is set from outside.
class MockNode : public ForeignNode {
public:
    using ForeignNode::getDescendant;
    using ForeignNode::getValue;
    using ForeignNode::setValue;

    NUXO::IGraphConfig* getRoot() const override { return mRoot; }
    NUXO::IGraphConfig* getAncestor() const override { return mAncestor; }

    NUXO::IGraphConfig* getDescendant(const NUXO::ItemUID& path) const override
    {
        for (const auto& entry : mDescendants) {
            if (NUXO::ItemUID(entry.first) == path) return entry.second;
        }
        return nullptr;
    }

    NUXO::IGraphConfig* getDescendantByString(const std::string& path) const override
    {
        mAskedFor = path;
        const auto found = mDescendants.find(path);
        return found == mDescendants.end() ? nullptr : found->second;
    }

    int32_t getValue(uint32_t key, int& value) const override { return read(mIntegers, key, value); }
    int32_t getValue(uint32_t key, std::string& value) const override { return read(mTexts, key, value); }

    int32_t setValue(uint32_t key, const std::string& value) override
    {
        mSet.emplace_back(key, value);
        return mSetStatus;
    }

    NUXO::IGraphConfig* mRoot = nullptr;
    NUXO::IGraphConfig* mAncestor = nullptr;
    std::map<std::string, NUXO::IGraphConfig*> mDescendants;
    std::map<uint32_t, int> mIntegers;
    std::map<uint32_t, std::string> mTexts;
    int32_t mReadFailure = StatusMissingData; ///< what reading an absent value gives
    int32_t mSetStatus = StatusOk;
    std::vector<std::pair<uint32_t, std::string>> mSet; ///< texts that somebody wanted to set
    mutable std::string mAskedFor;                      ///< the last path that came as a text

private:
    template <typename Value> int32_t read(const std::map<uint32_t, Value>& values, uint32_t key, Value& value) const
    {
        const auto found = values.find(key);
        if (found == values.end()) return mReadFailure;
        value = found->second;
        return StatusOk;
    }
};

/// The connection of the library's `pg:out` and `next:in`, in foreign nodes.
struct MockConnection {
    MockConnection()
    {
        for (MockNode* part : {&group, &next, &port, &peer}) part->mRoot = &root;
        port.mAncestor = &group;
        peer.mAncestor = &next;
        group.mTexts = {{NUXO_KEY_TYPE, "program_group"}, {NUXO_KEY_NAME, "pg"}};
        next.mTexts = {{NUXO_KEY_TYPE, "program_group"}, {NUXO_KEY_NAME, "next"}};
        port.mTexts = {{NUXO_KEY_TYPE, "port"}, {NUXO_KEY_NAME, "out"}, {NUXO_KEY_PEER, "next:in"}};
        peer.mTexts = {{NUXO_KEY_TYPE, "port"}, {NUXO_KEY_NAME, "in"}, {NUXO_KEY_PEER, "pg:out"}};
        port.mIntegers = {{NUXO_KEY_ID, 5}, {NUXO_KEY_DIRECTION, 1}};
        root.mDescendants = {{"next:in", &peer}, {"pg:out", &port}};
    }

    MockNode root, group, next, port, peer;
};

} // namespace graphtest

#endif
