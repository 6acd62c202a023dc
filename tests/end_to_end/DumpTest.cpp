// SPDX-License-Identifier: Apache-2.0
#include "ToolTest.h"

namespace {

class DumpTest : public ToolTest {
protected:
    void expectDump(const std::vector<std::string>& arguments, const std::string& golden) const
    {
        const ToolRun result = run(arguments);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "");
        expectGolden(result.out, golden);
    }
};

TEST_F(DumpTest, ShowsADescriptorAsText)
{
    expectDump({"dump", "descriptor.xml"}, "dump_descriptor.txt");
}

TEST_F(DumpTest, ShowsSettingsAsText)
{
    expectDump({"dump", "settings.xml"}, "dump_settings.txt");
}

TEST_F(DumpTest, ShowsSettingsAsJson)
{
    expectDump({"dump", "other_version.xml", "--format", "json"}, "dump_other_version.json");
}

TEST_F(DumpTest, SaysWhereEachValueStands)
{
    expectDump({"dump", "other_version.xml", "--origin"}, "dump_other_version_origin.txt");
}

TEST_F(DumpTest, SaysWhereEachValueStandsInJson)
{
    expectDump({"dump", "other_version.xml", "--origin", "--format", "json"}, "dump_other_version_origin.json");
}

TEST_F(DumpTest, ReadsCompressedFilesAlike)
{
    writeCompressed("settings.xml.gz", read("settings.xml"));
    expectDump({"dump", "settings.xml.gz"}, "dump_settings.txt");
}

TEST_F(DumpTest, LocatesValuesOfCompressedFiles)
{
    writeCompressed("other.gz", read("other_version.xml"));
    const ToolRun result = run({"dump", "other.gz", "--origin"});
    EXPECT_EQ(result.exitCode, 0);
    // <settings is the fifth character of line 3, key= the fourteenth.
    EXPECT_NE(result.out.find("other.gz:3:5\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("other.gz:3:15\n"), std::string::npos) << result.out;
}

TEST_F(DumpTest, EscapesWhatCouldSteerATerminal)
{
    const ToolRun result = run({"dump", "odd_texts.xml"});
    EXPECT_EQ(result.exitCode, 0);
    expectGolden(result.out, "dump_odd_texts.txt");
    EXPECT_EQ(result.out.find("\xc2\x9b"), std::string::npos);
}

TEST_F(DumpTest, WarnsOfAFileWithoutVersion)
{
    const ToolRun result = run({"dump", "odd_texts.xml"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "odd_texts.xml:3:1: warning[missing-version]: element 'graph_settings' states no version; "
                          "expected one, such as version=\"KVA7\"\n"
                          "    <graph_settings>\n"
                          "    ^\n");
}

TEST_F(DumpTest, ShowsThePartAheadOfAnError)
{
    const ToolRun result = run({"dump", "truncated.xml"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "graph_settings version=\"DEMO1.2\"\n"
                          "  settings id=100 key=1\n"
                          "    sensor mode_id=\"full\"\n");
}

TEST_F(DumpTest, MarksThePartAheadOfAnErrorInJson)
{
    const ToolRun result = run({"dump", "truncated.xml", "--format", "json"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.out.find("\"complete\": false"), std::string::npos) << result.out;
}

} // namespace
