// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_FUZZ_SUPPORT_FOREIGN_VIEW_H
#define NUXO_FUZZ_SUPPORT_FOREIGN_VIEW_H

#include <nuxo/tree/GraphConfigNode.h>

#include <string>

namespace fuzzing {

/// A node as a client may implement it: it answers like one of the library's, but is none.
class ForeignView : public NUXO::IGraphConfig {
public:
    explicit ForeignView(NUXO::IGraphConfig& node) : mNode(node) {}

    NUXO::IGraphConfig* getRoot() const override { return mNode.getRoot(); }
    NUXO::IGraphConfig* getAncestor() const override { return mNode.getAncestor(); }
    int32_t getDescendantCount() const override { return mNode.getDescendantCount(); }
    NUXO::IGraphConfig* getDescendant(uint32_t key) const override { return mNode.getDescendant(key); }
    NUXO::IGraphConfig* getDescendant(const NUXO::ItemUID& path) const override { return mNode.getDescendant(path); }
    NUXO::IGraphConfig* getDescendantByString(const std::string& path) const override
    {
        return mNode.getDescendantByString(path);
    }
    int32_t getValue(uint32_t key, int& value) const override { return mNode.getValue(key, value); }
    int32_t getValue(const NUXO::ItemUID& path, int& value) const override { return mNode.getValue(path, value); }
    int32_t getValue(uint32_t key, std::string& value) const override { return mNode.getValue(key, value); }
    int32_t getValue(const NUXO::ItemUID& path, std::string& value) const override
    {
        return mNode.getValue(path, value);
    }
    int32_t setValue(uint32_t key, int value) override { return mNode.setValue(key, value); }
    int32_t setValue(const NUXO::ItemUID& path, int value) override { return mNode.setValue(path, value); }
    int32_t setValue(uint32_t key, const std::string& value) override { return mNode.setValue(key, value); }
    int32_t setValue(const NUXO::ItemUID& path, const std::string& value) override
    {
        return mNode.setValue(path, value);
    }
    std::string getName() const override { return mNode.getName(); }
    uint32_t getUid() const override { return mNode.getUid(); }
    bool isType(uint32_t wanted) const override { return mNode.isType(wanted); }

private:
    NUXO::IGraphConfig& mNode;
};

} // namespace fuzzing

#endif
