// SPDX-License-Identifier: Apache-2.0
#include "ToolTest.h"

namespace {

class BuildTest : public ToolTest {
protected:
    ToolRun build(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), {"build", "descriptor.xml", "settings.xml"});
        return run(arguments);
    }

    void expectGraph(const std::vector<std::string>& arguments, const std::string& golden) const
    {
        const ToolRun result = build(arguments);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "");
        expectGolden(result.out, golden);
    }

    void expectFailure(const std::string& key, const std::string& text) const
    {
        const ToolRun result = build({"--key", key});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, text);
    }
};

TEST_F(BuildTest, ShowsTheGraphAsText)
{
    expectGraph({"--key", "1"}, "build_1.txt");
}

TEST_F(BuildTest, ShowsTheGraphAsJson)
{
    expectGraph({"--key", "3", "--format", "json"}, "build_3.json");
}

TEST_F(BuildTest, SaysWhichFileGaveEachValue)
{
    expectGraph({"--key", "2", "--origin"}, "build_2_origin.txt");
}

TEST_F(BuildTest, SaysWhichFileGaveEachValueInJson)
{
    expectGraph({"--key", "3", "--origin", "--format", "json"}, "build_3_origin.json");
}

TEST_F(BuildTest, CriteriaSelectTheSettingAsWell)
{
    EXPECT_EQ(build({"preview_sink:width=1280"}).out, build({"--key", "1"}).out);
    EXPECT_EQ(build({"id=100", "--key", "2"}).out, build({"--key", "2"}).out);
}

TEST_F(BuildTest, KeyThatIsAbsentIsAFinding)
{
    const ToolRun result = build({"--key", "8"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "settings.xml: error[no-match]: no setting matches key=8; expected at least one\n"
                          "settings.xml: note: key holds 1, 2, 3, 4, 5, 6, 7\n");
}

TEST_F(BuildTest, SeveralMatchesAreListedByKey)
{
    const ToolRun result = build({"id=200"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "settings.xml: error[ambiguous]: 2 settings match id=200, with the keys 3, 6; expected --key "
                          "or criteria that select one\n");
}

TEST_F(BuildTest, SettingMustBeNamedWhenThereAreSeveral)
{
    const ToolRun result = build({});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("7 settings can be built, with the keys 1, 2, 3, 4, 5, 6, 7; expected"),
              std::string::npos)
        << result.err;
}

TEST_F(BuildTest, OnlySettingNeedsNoName)
{
    const ToolRun result = run({"build", "descriptor.xml", "other_version.xml"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.out.find("graph of setting 1 id=200 key=1\n"), 0U) << result.out;
}

TEST_F(BuildTest, UnknownGraphIsAFinding)
{
    expectFailure("4",
                  "settings.xml:38:5: error[build-failed]: building setting 4 ended with StatusBadState: could not "
                  "find graph with id 999 from graph descriptor; expected a complete graph\n"
                  "        <settings key=\"4\" id=\"999\"><sensor mode_id=\"full\"/></settings>\n"
                  "        ^\n");
}

TEST_F(BuildTest, MissingPortIsAFinding)
{
    expectFailure("5", "settings.xml:39:5: error[build-failed]: building setting 5 ended with StatusMissingData: "
                       "Node(csi_be) has no port named 'na'; expected a complete graph\n"
                       "        <settings key=\"5\" id=\"300\"><sensor mode_id=\"full\"><port_0/></sensor><csi_be/>"
                       "</settings>\n"
                       "        ^\n");
}

TEST_F(BuildTest, UnknownSensorModeIsAFindingWithAllThatTheLibrarySaid)
{
    expectFailure("6", "settings.xml:40:5: error[build-failed]: building setting 6 ended with StatusBadState: Sensor "
                       "Mode unknown not in the list of available modes; expected a complete graph\n"
                       "        <settings key=\"6\" id=\"200\"><sensor mode_id=\"unknown\"/></settings>\n"
                       "        ^\n"
                       "settings.xml: note: library error: Settings file has incorrect sensor mode data\n");
}

TEST_F(BuildTest, ErrorsThatDoNotStopTheBuildAreFindingsToo)
{
    const ToolRun result = build({"--key", "7"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out.find("graph of setting 7 "), 0U) << result.out;
    EXPECT_EQ(result.err, "settings.xml:41:5: error[build]: Failed to find peer by name ghost:input\n"
                          "        <settings key=\"7\" id=\"400\">\n"
                          "        ^\n");
}

TEST_F(BuildTest, IncompleteFileIsNotBuilt)
{
    const ToolRun result = run({"build", "descriptor.xml", "truncated.xml", "--key", "1"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
}

TEST_F(BuildTest, OverrideThatIsNoNumberIsAFinding)
{
    std::string descriptor = read("descriptor.xml");
    const std::string good = "target=\"video_pg:crop:enabled\" value=\"0\"";
    const size_t at = descriptor.find(good);
    ASSERT_NE(at, std::string::npos);
    write("bad_override.xml", descriptor.replace(at, good.size(), "target=\"video_pg:crop:enabled\" value=\"off\""));
    const ToolRun result = run({"build", "bad_override.xml", "settings.xml", "--key", "1"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("building setting 1 ended with StatusBadArgument"), std::string::npos) << result.err;
}

} // namespace
