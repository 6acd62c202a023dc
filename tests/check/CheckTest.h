// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_CHECK_CHECK_TEST_H
#define NUXO_TESTS_CHECK_CHECK_TEST_H

#include "Fault.h"

#include "end_to_end/ToolTest.h"

/// For `nuxo check` on edited files.
class CheckTest : public ToolTest {
protected:
    /// Writes the files of a fault and checks them.
    ToolRun check(const Fault& fault, const std::vector<std::string>& options = {}) const;
    /// Its findings, as JSON tells of them.
    nlohmann::json findingsOf(const Fault& fault) const;

    /// Expects that one finding, and those of the rules that it names as well, and nothing else is found.
    void expectFound(const Fault& fault) const;
    void expectNothing(const Fault& fault) const;

private:
    void expectOthers(const Fault& fault, const nlohmann::json& findings, size_t own) const;
};

#endif
