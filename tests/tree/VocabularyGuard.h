// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_TREE_VOCABULARY_GUARD_H
#define NUXO_TESTS_TREE_VOCABULARY_GUARD_H

#include <nuxo/tree/NuxoKeys.h>

#include <cstdint>
#include <map>
#include <string>

/// Puts the process-wide vocabulary back as it was, so that tests do not depend on their order.
class VocabularyGuard {
public:
    VocabularyGuard() { NUXO::getNuxoKeys(mSaved); }
    ~VocabularyGuard() { NUXO::copyNuxoKeys(mSaved); }
    VocabularyGuard(const VocabularyGuard&) = delete;
    VocabularyGuard& operator=(const VocabularyGuard&) = delete;

    const std::map<std::string, uint32_t>& saved() const { return mSaved; }

private:
    std::map<std::string, uint32_t> mSaved;
};

#endif
