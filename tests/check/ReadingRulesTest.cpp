// SPDX-License-Identifier: Apache-2.0
// Findings about files that cannot be read as XML at all: no edit of a text makes such a file.
#include "CheckTest.h"

namespace {

constexpr const char* kDescriptor = "<graph_descriptor version=\"KVA6\"><nodes/><graphs/></graph_descriptor>";

class ReadingRulesTest : public CheckTest {
protected:
    // What a check of a file beside a good descriptor writes to standard error.
    std::string findingsFor(const std::string& settings, int exitCode) const
    {
        write("good.xml", kDescriptor);
        const ToolRun result = run({"check", "good.xml", settings});
        EXPECT_EQ(result.exitCode, exitCode) << result.err;
        return result.err;
    }
};

TEST_F(ReadingRulesTest, TellsOfAFileThatIsNotThere)
{
    const std::string findings = findingsFor("absent.xml", 3);
    EXPECT_NE(findings.find("absent.xml: error[cannot-read]: cannot read: No such file"), std::string::npos)
        << findings;
}

TEST_F(ReadingRulesTest, TellsOfANameThatTheLibraryRefuses)
{
    write("settings.txt", "<graph_settings version=\"KVA6.1\"><sensor_modes/></graph_settings>");
    const std::string findings = findingsFor("settings.txt", 1);
    EXPECT_NE(
        findings.find("settings.txt: error[file-type]: the file name has the suffix 'txt'; expected 'xml' or 'gz'"),
        std::string::npos)
        << findings;
}

TEST_F(ReadingRulesTest, TellsOfACompressedFileThatEndsEarly)
{
    writeCompressed("settings.gz", "<graph_settings version=\"KVA6.1\"><sensor_modes/></graph_settings>");
    EXPECT_EQ(findingsFor("settings.gz", 0), "");
    const std::string whole = read("settings.gz");
    write("settings.gz", whole.substr(0, whole.size() - 6));
    const std::string findings = findingsFor("settings.gz", 1);
    EXPECT_NE(findings.find("settings.gz: error[damaged]: "), std::string::npos) << findings;
}

TEST_F(ReadingRulesTest, WarnsOfBytesBehindTheCompressedText)
{
    writeCompressed("settings.gz", "<graph_settings version=\"KVA6.1\"><sensor_modes/></graph_settings>");
    write("settings.gz", read("settings.gz") + "more");
    EXPECT_EQ(
        findingsFor("settings.gz", 0),
        "settings.gz: warning[trailing-bytes]: 4 bytes follow the compressed text, and nobody reads them; expected "
        "the end of the file\n");
}

TEST_F(ReadingRulesTest, ExplainsTheRulesThatNoEditCanBreak)
{
    for (const std::string rule : {"cannot-read", "damaged", "file-type", "parse", "too-large"}) {
        const ToolRun result = run({"check", "--explain", rule});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.out.find(rule + " (error): "), 0U) << result.out;
    }
}

} // namespace
