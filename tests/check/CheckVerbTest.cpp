// SPDX-License-Identifier: Apache-2.0
#include "CheckTest.h"

#include <algorithm>

using nlohmann::json;

namespace {

class CheckVerbTest : public CheckTest {
protected:
    void SetUp() override
    {
        CheckTest::SetUp();
        for (const auto& [file, text] : good().texts) write(file, text);
    }

    static Fault edited(const std::string& file, const std::string& find, const std::string& replace)
    {
        return Fault({{"name", "edited"}, {"rule", "any"}, {"file", file}, {"find", find}, {"replace", replace}});
    }
    static Fault good() { return edited("descriptor.xml", "A small camera", "A small camera"); }
    static Fault unknownSink() { return edited("descriptor.xml", "sink=\"front:input\"", "sink=\"front:inptu\""); }
    static Fault withoutVersion() { return edited("settings.xml", " version=\"KVA6.1\"", ""); }
};

TEST_F(CheckVerbTest, FindsNothingInGoodFiles)
{
    const ToolRun result = check(good());
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "checked 2 files, built 3 settings: 0 errors, 0 warnings\n");
}

TEST_F(CheckVerbTest, FindsNothingInTheExamples)
{
    for (const std::string generation : {"kva5", "kva6", "kva7"}) {
        addExample(generation);
        const ToolRun result = run(
            {"check", generation + "_descriptor.xml", generation + "_settings.xml", generation + "_settings.xml.gz"});
        EXPECT_EQ(result.err, "") << generation;
        EXPECT_EQ(result.exitCode, 0) << generation;
        EXPECT_EQ(result.out.find("checked 3 files, built "), 0U) << result.out;
    }
}

TEST_F(CheckVerbTest, ChecksADescriptorAlone)
{
    const ToolRun result = run({"check", "descriptor.xml"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "checked 1 file: 0 errors, 0 warnings\n");
}

TEST_F(CheckVerbTest, TellsOfFindingsInTextInJsonAndInSarif)
{
    expectGolden(check(unknownSink()).err, "check_text.err");
    expectGolden(check(unknownSink()).out, "check_text.txt");
    expectGolden(check(unknownSink(), {"--format", "json"}).out, "check.json");
}

TEST_F(CheckVerbTest, WritesSarifThatNamesRulePlaceAndLevel)
{
    const ToolRun result = check(unknownSink(), {"--format", "sarif"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, "");
    const json document = json::parse(result.out, nullptr, false);
    ASSERT_TRUE(document.is_object());
    EXPECT_EQ(document["version"], "2.1.0");
    const json& run = document["runs"][0];
    ASSERT_EQ(run["results"].size(), 1U);
    const json& finding = run["results"][0];
    EXPECT_EQ(finding["ruleId"], "connection-end");
    EXPECT_EQ(finding["level"], "error");
    EXPECT_EQ(run["tool"]["driver"]["rules"][finding["ruleIndex"].get<size_t>()]["id"], "connection-end");
    const json& place = finding["locations"][0]["physicalLocation"];
    EXPECT_EQ(place["artifactLocation"]["uri"], "descriptor.xml");
    EXPECT_GT(place["region"]["startLine"], 1);
}

TEST_F(CheckVerbTest, CountsSarifColumnsInCharacters)
{
    // "<!-- ä -->" before the element: three characters of mark-up more than in bytes
    const ToolRun result = check(edited("descriptor.xml", "<connection source=\"csi_be:output\" sink=\"front:input\"/>",
                                        "<!--\xc3\xa4--><connection source=\"csi_be:output\" sink=\"front:inptu\"/>"),
                                 {"--format", "sarif"});
    const json document = json::parse(result.out, nullptr, false);
    ASSERT_TRUE(document.is_object());
    // 12 blanks, 8 characters of comment, "<connection source=\"csi_be:output\" " of 35: the attribute is the 56th
    EXPECT_EQ(document["runs"][0]["results"][0]["locations"][0]["physicalLocation"]["region"]["startColumn"], 56);
}

TEST_F(CheckVerbTest, LeavesOutARule)
{
    const ToolRun result = check(withoutVersion(), {"--no", "missing-version"});
    EXPECT_EQ(result.err.find("missing-version"), std::string::npos) << result.err;
}

TEST_F(CheckVerbTest, MakesARuleAnErrorOrAWarning)
{
    EXPECT_EQ(check(withoutVersion()).exitCode, 0);
    EXPECT_EQ(check(withoutVersion(), {"-E", "missing-version"}).exitCode, 1);
    const Fault typo = edited("settings.xml", "description=\"full HD video\"", "descriptoin=\"full HD video\"");
    EXPECT_EQ(check(typo).exitCode, 1);
    EXPECT_EQ(check(typo, {"-W", "unknown-attribute"}).exitCode, 0);
}

TEST_F(CheckVerbTest, MakesAllWarningsErrors)
{
    for (const std::string option : {"-Werror", "--Werror"}) {
        const ToolRun result = check(withoutVersion(), {option});
        EXPECT_EQ(result.exitCode, 1) << result.err;
        EXPECT_NE(result.err.find("error[missing-version]"), std::string::npos) << result.err;
    }
}

TEST_F(CheckVerbTest, RejectsUnknownRules)
{
    for (const std::string option : {"-W", "-E", "--no", "--explain"}) {
        const ToolRun result = run({"check", "descriptor.xml", option, "conection-end"});
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_NE(result.err.find("unknown rule 'conection-end'; expected one that --list-rules names; did you mean "
                                  "'connection-end'?"),
                  std::string::npos)
            << result.err;
    }
}

TEST_F(CheckVerbTest, DoesNotLeaveOutWhatSaysWhyAFileCannotBeRead)
{
    const ToolRun result = run({"check", "descriptor.xml", "--no", "malformed"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_NE(result.err.find("expected a rule that can be left out"), std::string::npos) << result.err;
}

TEST_F(CheckVerbTest, DemandsADescriptor)
{
    const ToolRun result = run({"check"});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_NE(result.err.find("DESCRIPTOR is required"), std::string::npos) << result.err;
}

TEST_F(CheckVerbTest, BuildsTheChosenSettingsOnly)
{
    const ToolRun result = run({"check", "descriptor.xml", "settings.xml", "--settings", "1", "--settings", "3"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "checked 2 files, built 2 settings: 0 errors, 0 warnings\n");
}

TEST_F(CheckVerbTest, KeepsQuietAboutSettingsThatWereNotChosen)
{
    const Fault fault = edited("settings.xml", "<video_sink width=\"640\"", "<video_snk width=\"640\"");
    EXPECT_EQ(check(fault, {"--settings", "2"}).exitCode, 1);
    const ToolRun other = check(fault, {"--settings", "1"});
    EXPECT_EQ(other.err, "");
    EXPECT_EQ(other.exitCode, 0);
}

TEST_F(CheckVerbTest, SaysWhichKeysThereAre)
{
    const ToolRun result = run({"check", "descriptor.xml", "settings.xml", "--settings", "9"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("no setting has the key 9; expected one of 1, 2, 3"), std::string::npos) << result.err;
}

TEST_F(CheckVerbTest, BuildsNoSettingWhoseGraphHasErrors)
{
    const ToolRun result = check(unknownSink());
    // settings 1 and 2 use graph 100, setting 3 uses graph 101
    EXPECT_EQ(result.out, "checked 2 files, built 1 setting: 1 error, 0 warnings; 2 settings not built because of "
                          "errors in what they use\n");
}

TEST_F(CheckVerbTest, GoesOnWithOtherFilesWhenOneIsMalformed)
{
    write("broken.xml", "<graph_settings version=\"KVA6\"><settings></graph_settings>");
    const ToolRun result = run({"check", "descriptor.xml", "broken.xml", "settings.xml"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("broken.xml:1:"), std::string::npos) << result.err;
    EXPECT_EQ(result.out, "checked 2 files, built 3 settings: 1 error, 0 warnings\n");
}

TEST_F(CheckVerbTest, ChecksSettingsByThemselvesWhenTheDescriptorIsMalformed)
{
    write("broken.xml", "<graph_descriptor>");
    write("settings.xml", "<graph_settings version=\"KVA6\"><settings key=\"x\" id=\"1\"/></graph_settings>");
    const ToolRun result = run({"check", "broken.xml", "settings.xml"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("settings.xml:1:42: error[integer-value]"), std::string::npos) << result.err;
}

TEST_F(CheckVerbTest, JudgesEachOfManyFilesByItself)
{
    const std::string bad =
        edited("settings.xml", "<video_sink width=\"640\"", "<video_sink widht=\"640\"").texts.at("settings.xml");
    const std::string fine = good().texts.at("settings.xml");
    std::vector<std::string> arguments = {"check", "descriptor.xml"};
    for (int i = 0; i < 24; ++i) {
        arguments.push_back("s" + std::to_string(i) + ".xml");
        write(arguments.back(), i % 2 == 0 ? bad : fine);
    }
    // Of three settings each, one of every second file is not built: 72 - 12.
    EXPECT_EQ(run(arguments).out, "checked 25 files, built 60 settings: 12 errors, 0 warnings; 12 settings not built "
                                  "because of errors in what they use\n");
}

TEST_F(CheckVerbTest, TellsOfAMissingModeInEachFile)
{
    const std::string bad =
        edited("settings.xml", "<mode name=\"full\"", "<mode name=\"half\"").texts.at("settings.xml");
    write("s1.xml", bad);
    write("s2.xml", bad);
    const std::string err = run({"check", "descriptor.xml", "s1.xml", "s2.xml"}).err;
    EXPECT_NE(err.find("s1.xml:22:17: error[sensor-mode]"), std::string::npos) << err;
    EXPECT_NE(err.find("s2.xml:22:17: error[sensor-mode]"), std::string::npos) << err;
}

TEST_F(CheckVerbTest, BuildsNothingOfAMisspelledSetting)
{
    std::string text = good().texts.at("settings.xml");
    const size_t start = text.find("<settings key=\"2\"");
    text.replace(start, 9, "<setings");
    text.replace(text.find("</settings>", start), 11, "</setings>");
    write("misspelled.xml", text);
    EXPECT_EQ(run({"check", "descriptor.xml", "misspelled.xml", "--no", "unknown-element"}).out,
              "checked 2 files, built 2 settings: 0 errors, 0 warnings; 1 setting not built because of errors in what "
              "it uses\n");
}

TEST_F(CheckVerbTest, BuildsAllTheSameWhenWarningsAreErrors)
{
    write("warned.xml", edited("settings.xml", "<stats_sink/>", "<stats_sink/> text").texts.at("settings.xml"));
    EXPECT_EQ(run({"check", "descriptor.xml", "warned.xml", "-Werror"}).out,
              "checked 2 files, built 3 settings: 1 error, 0 warnings\n");
}

TEST_F(CheckVerbTest, TakesShortNamesForWhatTheyAre)
{
    // 'data' is the end of 'mbr_data', an element that settings have.
    for (const char* const name : {"descriptor.xml", "settings.xml"}) {
        std::string text = good().texts.at(name);
        for (const char* const mark : {"<video>", "</video>", "\"video\"", "\"video:", "video:main_out"}) {
            const std::string from = mark;
            std::string to = from;
            to.replace(to.find("video"), 5, "data");
            for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at))
                text.replace(at, from.size(), to);
        }
        write(name, text);
    }
    const ToolRun result = run({"check", "descriptor.xml", "settings.xml"});
    EXPECT_EQ(result.out, "checked 2 files, built 3 settings: 0 errors, 0 warnings\n") << result.err;
}

TEST_F(CheckVerbTest, LooksAtAFileOnce)
{
    const ToolRun result = run({"check", "descriptor.xml", "settings.xml", "settings.xml"});
    EXPECT_EQ(result.out, "checked 2 files, built 3 settings: 0 errors, 0 warnings\n");
}

TEST_F(CheckVerbTest, TellsWhenFilesAreSwapped)
{
    const ToolRun result = run({"check", "settings.xml", "descriptor.xml"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("the document's element is 'graph_settings'; expected 'graph_descriptor'"),
              std::string::npos)
        << result.err;
    EXPECT_NE(result.err.find("note: the two files look swapped; expected DESCRIPTOR before SETTINGS"),
              std::string::npos)
        << result.err;
    // Swapped or not: neither file is told of anything else.
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '['), 2) << result.err;
}

TEST_F(CheckVerbTest, EndsWithTheCodeOfWhatCannotBeRead)
{
    const ToolRun result = run({"check", "descriptor.xml", "missing.xml"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.err.find("missing.xml: error[cannot-read]: "), std::string::npos) << result.err;
}

TEST_F(CheckVerbTest, GivesNoLineInJsonWhereThereIsNone)
{
    const ToolRun result = run({"check", "descriptor.xml", "absent.xml", "--format", "json"});
    EXPECT_EQ(result.exitCode, 3);
    const json document = json::parse(result.out, nullptr, false);
    ASSERT_FALSE(document.is_discarded()) << result.out;
    ASSERT_EQ(document["findings"].size(), 1U) << result.out;
    EXPECT_EQ(document["findings"][0]["where"], json({{"file", "absent.xml"}}));
}

TEST_F(CheckVerbTest, TellsOfDamagedFiles)
{
    writeCompressed("whole.gz", read("settings.xml"));
    const std::string whole = read("whole.gz");
    write("half.gz", whole.substr(0, whole.size() / 2));
    const ToolRun result = run({"check", "descriptor.xml", "half.gz"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(count(result.err, "error[damaged]"), 1U) << result.err;
    EXPECT_EQ(count(result.err, "error["), 1U) << result.err;
    EXPECT_EQ(run({"check", "descriptor.xml", "whole.gz"}).exitCode, 0);
}

TEST_F(CheckVerbTest, TellsOfNamesThatNoGraphFileHas)
{
    write("settings.txt", read("settings.xml"));
    const ToolRun result = run({"check", "descriptor.xml", "settings.txt"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(count(result.err, "settings.txt: error[file-type]"), 1U) << result.err;
    EXPECT_EQ(count(result.err, "error["), 1U) << result.err;
}

TEST_F(CheckVerbTest, TellsWhenNamesRunOut)
{
    std::string sinks;
    for (int i = 0; i < 8200; ++i) sinks += "<sink name=\"sink" + std::to_string(i) + "\"/>";
    const ToolRun result = check(edited("descriptor.xml", "</nodes>", sinks + "</nodes>"));
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("descriptor.xml:4:1: error[too-many-names]: "), std::string::npos) << result.err;
}

TEST_F(CheckVerbTest, TellsOfASecondConnectionToASinkAtThePeer)
{
    // video_sink has its frames from video:main_out
    const Fault fault({{"name", "a sink that is taken"},
                       {"rule", "build"},
                       {"file", "settings.xml"},
                       {"find", "peer=\"encoder_sink\""},
                       {"replace", "^peer=\"video_sink\""}});
    const json findings = findingsOf(fault);
    ASSERT_FALSE(findings.empty());
    const bool isThere = std::any_of(findings.begin(), findings.end(), [&fault](const json& finding) {
        return finding["rule"] == "build" && finding["where"]["file"] == "settings.xml" &&
               finding["where"]["line"] == fault.places[0].line && finding["where"]["column"] == fault.places[0].column;
    });
    EXPECT_TRUE(isThere) << findings.dump(2);
}

TEST_F(CheckVerbTest, BuildsNothingOnAnErrorThatIsToldAsAWarning)
{
    const Fault mode({{"name", "no such mode"},
                      {"file", "settings.xml"},
                      {"after", "key=\"1\""},
                      {"find", "mode_id=\"full\""},
                      {"replace", "mode_id=\"ful\""}});
    const ToolRun result = check(mode, {"-W", "sensor-mode"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(count(result.err, "warning[sensor-mode]"), 1U) << result.err;
    EXPECT_EQ(count(result.err, "error["), 0U) << result.err;
}

TEST_F(CheckVerbTest, OrdersFindingsByFileAndLine)
{
    Fault fault = unknownSink();
    fault.texts["descriptor.xml"] += "";
    std::string& text = fault.texts["descriptor.xml"];
    text.replace(text.find("rcb=\"1\""), 7, "rcb=\"x\"");
    std::string& settings = fault.texts["settings.xml"];
    settings.replace(settings.find("<stats_sink/>"), 13, "<stats_snk/>");
    const ToolRun result = check(fault);
    const size_t integer = result.err.find("integer-value");
    const size_t end = result.err.find("connection-end");
    const size_t node = result.err.find("setting-node");
    ASSERT_NE(node, std::string::npos) << result.err;
    EXPECT_LT(integer, end);
    EXPECT_LT(end, node);
}

TEST_F(CheckVerbTest, ExplainsARuleInJsonAsItIsListed)
{
    const ToolRun result = run({"check", "--explain", "connection-end", "--format", "json", "-W", "connection-end"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const json document = json::parse(result.out, nullptr, false);
    EXPECT_EQ(document["kind"], "rule");
    EXPECT_EQ(document["rule"], "connection-end");
    EXPECT_EQ(document["severity"], "warning");
    const json all = json::parse(run({"check", "--list-rules", "--format", "json"}).out, nullptr, false);
    const auto listed = std::find_if(all["rules"].begin(), all["rules"].end(),
                                     [](const json& rule) { return rule["rule"] == "connection-end"; });
    ASSERT_NE(listed, all["rules"].end());
    EXPECT_EQ(document["explanation"], (*listed)["explanation"]);
    EXPECT_EQ(document["needs"], (*listed)["needs"]);
}

TEST_F(CheckVerbTest, ListsRulesWithTheirSeverity)
{
    const ToolRun result = run({"check", "--list-rules", "--no", "unused-node"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out.find("RULE "), 0U);
    EXPECT_EQ(count(result.out, "\nunused-node "), 1U);
    EXPECT_EQ(count(result.out, "  off  "), 1U);
}

} // namespace
