// SPDX-License-Identifier: Apache-2.0
#ifndef NUXO_TESTS_END_TO_END_TOOL_TEST_H
#define NUXO_TESTS_END_TO_END_TOOL_TEST_H

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

/// What a run of the tool left behind.
struct ToolRun {
    int exitCode = -1; ///< -1 when the tool could not be started or was ended by a signal
    std::string out;
    std::string err;
};

/// A directory of its own with copies of the fixtures, in which the tool runs, so that file names in its output are short
/// and the same everywhere.
class ToolTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    using Environment = std::map<std::string, std::string>;

    /// Runs the tool with standard output and standard error going to files.
    ToolRun run(const std::vector<std::string>& arguments, const Environment& environment = {}) const;
    /// The same with standard error on a terminal.
    ToolRun runOnTerminal(const std::vector<std::string>& arguments, const Environment& environment = {}) const;
    /// The same with standard output, or another descriptor, going to an existing file, such as a device.
    ToolRun runInto(const std::string& file, const std::vector<std::string>& arguments, int descriptor = 1) const;
    /// Runs the tool from a shell, behind @p prefix. Its standard error is in the file "err", its output in "out"; pipes
    /// have no limit of size.
    int exitCodeBehind(const std::string& prefix, const std::string& arguments) const;

    std::string path(const std::string& name) const { return mDirectory + '/' + name; }
    void write(const std::string& name, const std::string& content) const;
    void writeCompressed(const std::string& name, const std::string& content) const;
    std::string read(const std::string& name) const;
    /// Puts the example files of a generation, "kva5" for example, beside the fixtures.
    void addExample(const std::string& generation) const;

    /// How often a part stands in a text, overlaps not counted.
    static size_t count(const std::string& text, const std::string& part);
    /// dot is the only judge of its language.
    void expectDotAccepts(const std::string& drawing) const;

private:
    std::string mDirectory;
};

/// Compares with the file of that name in golden/. With NUXO_UPDATE_GOLDEN set in the environment the file is written
/// instead and the test fails, so that an update never passes for a check.
void expectGolden(const std::string& actual, const std::string& name);

#endif
