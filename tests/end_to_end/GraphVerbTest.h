// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_END_TO_END_GRAPH_VERB_TEST_H
#define NUXO_TESTS_END_TO_END_GRAPH_VERB_TEST_H

#include "ToolTest.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

/// The rows of a table of aligned columns below its head, each a map from the column's head to the cell.
using TableRows = std::vector<std::map<std::string, std::string>>;
TableRows rowsOf(const std::string& table);

/// For one verb that builds the graph of a setting and asks about it.
class GraphVerbTest : public ToolTest {
protected:
    explicit GraphVerbTest(std::string verb) : mVerb(std::move(verb)) {}

    /// @param files      "kva5" for the example files of that generation, otherwise a name among the fixtures
    /// @param arguments  behind the files and `--key` @p key
    ToolRun ask(const std::string& files, const std::string& key, const std::vector<std::string>& arguments = {}) const;

    /// Expects no finding and the output in the golden file.
    void expectAnswer(const std::string& files, const std::string& key, const std::string& golden,
                      const std::vector<std::string>& arguments = {}) const;

    /// Expects that every setting of the example files can be asked about; warnings are allowed.
    void expectNoErrorsInTheExamples() const;

    /// Expects that every stream of every setting of a generation's example files can be asked about, and gives what is
    /// answered to @p check.
    void expectNoErrorsInStreamsOf(const std::string& generation, const std::vector<std::string>& arguments,
                                   const std::function<void(const ToolRun& answer)>& check) const;

private:
    std::string mVerb;
};

#endif
