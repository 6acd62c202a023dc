// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_QUERY_FOREIGN_NODE_H
#define NUXO_TESTS_QUERY_FOREIGN_NODE_H

#include <nuxo/nuxo.h>

#include <string>

namespace graphtest {

/// An implementation of the interface that is not the library's.
class ForeignNode : public NUXO::IGraphConfig {
public:
    NUXO::IGraphConfig* getRoot() const override { return nullptr; }
    NUXO::IGraphConfig* getAncestor() const override { return nullptr; }
    int32_t getDescendantCount() const override { return 0; }
    NUXO::IGraphConfig* getDescendant(uint32_t) const override { return nullptr; }
    NUXO::IGraphConfig* getDescendant(const NUXO::ItemUID&) const override { return nullptr; }
    NUXO::IGraphConfig* getDescendantByString(const std::string&) const override { return nullptr; }
    int32_t getValue(uint32_t, int&) const override { return StatusMissingData; }
    int32_t getValue(const NUXO::ItemUID&, int&) const override { return StatusMissingData; }
    int32_t getValue(uint32_t, std::string&) const override { return StatusMissingData; }
    int32_t getValue(const NUXO::ItemUID&, std::string&) const override { return StatusMissingData; }
    int32_t setValue(uint32_t, int) override { return StatusNotFound; }
    int32_t setValue(const NUXO::ItemUID&, int) override { return StatusNotFound; }
    int32_t setValue(uint32_t, const std::string&) override { return StatusNotFound; }
    int32_t setValue(const NUXO::ItemUID&, const std::string&) override { return StatusNotFound; }
    std::string getName() const override { return "foreign"; }
    uint32_t getUid() const override { return NUXO_KEY_SETTINGS; }
    bool isType(uint32_t) const override { return false; }
};

} // namespace graphtest

#endif
