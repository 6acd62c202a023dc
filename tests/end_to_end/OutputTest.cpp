// SPDX-License-Identifier: Apache-2.0
#include "ToolTest.h"

namespace {

class OutputTest : public ToolTest {
protected:
    static bool isColoured(const std::string& text) { return text.find('\033') != std::string::npos; }

    const std::vector<std::string> mFinding = {"dump", "truncated.xml"};
};

TEST_F(OutputTest, FindingsAreColouredOnATerminal)
{
    const ToolRun result = runOnTerminal(mFinding);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(isColoured(result.err)) << result.err;
    EXPECT_NE(result.err.find("error[malformed]:"), std::string::npos) << result.err;
}

TEST_F(OutputTest, FindingsAreNotColouredInAFile)
{
    EXPECT_FALSE(isColoured(run(mFinding).err));
}

TEST_F(OutputTest, NoColorIsObeyedOnATerminal)
{
    const ToolRun result = runOnTerminal(mFinding, {{"NO_COLOR", "1"}});
    EXPECT_FALSE(isColoured(result.err)) << result.err;
    EXPECT_NE(result.err.find("error[malformed]:"), std::string::npos) << result.err;
}

TEST_F(OutputTest, EmptyNoColorCountsAsUnset)
{
    EXPECT_TRUE(isColoured(runOnTerminal(mFinding, {{"NO_COLOR", ""}}).err));
}

TEST_F(OutputTest, ColourChoiceOutranksTerminalAndEnvironment)
{
    EXPECT_TRUE(isColoured(run({"dump", "truncated.xml", "--color", "always"}, {{"NO_COLOR", "1"}}).err));
    EXPECT_FALSE(isColoured(runOnTerminal({"dump", "truncated.xml", "--color", "never"}).err));
}

TEST_F(OutputTest, DataIsNeverColoured)
{
    EXPECT_FALSE(isColoured(run({"dump", "settings.xml", "--color", "always"}).out));
}

TEST_F(OutputTest, FullDeviceCannotBeWritten)
{
    const ToolRun result = runInto("/dev/full", {"dump", "settings.xml"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.err, "nuxo: error[cannot-write]: cannot write standard output: No space left on device\n");
}

TEST_F(OutputTest, LostFindingsShowInTheExitCode)
{
    // Findings go to a device that is always full; 1 would say that they were told.
    const ToolRun result = runInto("/dev/full", {"dump", "truncated.xml"}, 2);
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.out, run({"dump", "truncated.xml"}).out);
    EXPECT_EQ(runInto("/dev/full", {"dump"}, 2).exitCode, 3);
    EXPECT_EQ(runInto("/dev/full", {"dump", "settings.xml"}, 2).exitCode, 0) << "nothing is lost";
}

TEST_F(OutputTest, LostLogLinesShowInTheExitCode)
{
    EXPECT_EQ(runInto("/dev/full", {"build", "descriptor.xml", "settings.xml", "--key", "1", "-v"}, 2).exitCode, 3);
}

TEST_F(OutputTest, OutputThatGrowsTooLargeCannotBeWritten)
{
    // One block of 512 or 1024 bytes, and the tree takes more.
    ASSERT_GT(run({"dump", "descriptor.xml"}).out.size(), 1024U);
    EXPECT_EQ(exitCodeBehind("ulimit -f 1;", "dump descriptor.xml"), 3);
    EXPECT_EQ(read("err"), "nuxo: error[cannot-write]: cannot write standard output: File too large\n");
}

TEST_F(OutputTest, LibraryLogIsShownOnRequestWithItsClass)
{
    const std::vector<std::string> build = {"build", "descriptor.xml", "settings.xml", "--key", "7"};
    EXPECT_EQ(run(build).err.find("log["), std::string::npos);
    std::vector<std::string> verbose = build;
    verbose.emplace_back("-v");
    const ToolRun result = run(verbose);
    for (const char* const line : {"log[error] NUXO[XOS]:Failed to find peer by name ghost:input\n",
                                   "log[warning] NUXO[XOS]:port output has no peer, disabling it.\n",
                                   "log[debug] NUXO[XOS]:disableUnusedPorts done!\n"}) {
        EXPECT_NE(result.err.find(line), std::string::npos) << line << " in\n" << result.err;
    }
    EXPECT_EQ(result.out, run(build).out);
}

TEST_F(OutputTest, EnvironmentAddsLogClasses)
{
    // Class 4: every allocation.
    const ToolRun result = run({"dump", "settings.xml", "-v"}, {{"camera_css_debug", "4"}});
    EXPECT_NE(result.err.find("log[debug] CIPR_ALLOC[XOS]:"), std::string::npos) << result.err;
    EXPECT_EQ(run({"dump", "settings.xml"}, {{"camera_css_debug", "4"}}).err, "");
}

TEST_F(OutputTest, StepsOfTheBufferGeometryAreShownButNoFindings)
{
    const std::vector<std::string> format = {"formats", "CN12", "--width", "1920", "--height", "1080"};
    const ToolRun quiet = run(format);
    EXPECT_EQ(quiet.exitCode, 0);
    EXPECT_EQ(quiet.err, "");
    std::vector<std::string> verbose = format;
    verbose.emplace_back("-v");
    const ToolRun result = run(verbose);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.err.find("log[error] QV_DEC400_UTIL_WRAPPER[XOS]:"), std::string::npos) << result.err;
    EXPECT_EQ(result.out, quiet.out);
}

TEST_F(OutputTest, EveryRunWritesTheSameBytes)
{
    const std::vector<std::vector<std::string>> commands = {
        {"dump", "descriptor.xml"},
        {"dump", "descriptor.xml", "--format", "json"},
        {"dump", "descriptor.xml", "--origin"},
        {"query", "descriptor.xml", "settings.xml"},
        {"query", "descriptor.xml", "settings.xml", "--format", "json"},
        {"build", "descriptor.xml", "settings.xml", "--key", "1", "--origin", "-v"},
        {"build", "descriptor.xml", "settings.xml", "--key", "1", "--origin", "--format", "json"},
        {"build", "descriptor.xml", "settings.xml", "--key", "1", "--format", "dot"},
        {"build", "descriptor.xml", "settings.xml", "--key", "6", "-v"},
        {"ports", "questions.xml", "questions_settings.xml", "--key", "2", "-v"},
        {"ports", "questions.xml", "questions_settings.xml", "--key", "2", "--format", "json"},
        {"contexts", "questions.xml", "questions_settings.xml", "--key", "1", "-v"},
        {"contexts", "questions.xml", "questions_settings.xml", "--key", "1", "--format", "json"},
        {"frame-params", "questions.xml", "questions_settings.xml", "--key", "1", "-v"},
        {"frame-params", "questions.xml", "questions_settings.xml", "--key", "1", "--format", "json"},
        {"formats"},
        {"formats", "--format", "json"},
        {"formats", "CN12", "--width", "1920", "--height", "1080", "-v"},
    };
    for (const auto& command : commands) {
        const ToolRun first = run(command);
        const ToolRun second = run(command);
        EXPECT_EQ(first.out, second.out);
        EXPECT_EQ(first.err, second.err);
        EXPECT_EQ(first.exitCode, second.exitCode);
    }
}

} // namespace
